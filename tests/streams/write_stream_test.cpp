// The write stream: buffering, direct writes, flushing, positions, typed writes.
#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <vector>

#include "streams/stream_test_support.h"
#include "tovfoundation/streams.h"

using Halyard::CWriteStream;
using Halyard::kHaldBigEndian;
using Halyard::kHaldLittleEndian;
using tovtest::Bytes;
using tovtest::PortCall;
using tovtest::ScriptedPort;
using tovtest::ScriptedPortEx;

namespace {

std::uint64_t PosOf(const CWriteStream& stream) {
  std::uint64_t pos = 0xDEADBEEF;
  EXPECT_EQ(stream.GetPosW(&pos), 0u);
  return pos;
}

// A stream whose PutByte fails from the given call on, to watch which typed
// writes stop at a failure.
class FailingPutByteStream : public CWriteStream {
 public:
  FailingPutByteStream(Halyard::CPort& port, int failFrom)
      : CWriteStream(port, kHaldBigEndian, 16, 0, 0), mFailFrom(failFrom) {}
  std::uint32_t PutByte(unsigned char value) override {
    const int index = calls++;
    if (index >= mFailFrom) return 0xC0DE0000u + static_cast<std::uint32_t>(index);
    return CWriteStream::PutByte(value);
  }
  int calls = 0;

 private:
  int mFailFrom;
};

}  // namespace

// --- the header's example ---------------------------------------------------------

TEST(WriteStream, HeaderExampleWritesBigEndianInt) {
  tovtest::TempTree dir;
  {
    auto port = Halyard::CPort::FilePort(dir.Lib("out.bin").c_str(), Halyard::kAccessWrite);
    ASSERT_TRUE(port);
    CWriteStream out(*port, kHaldBigEndian, 4096, 0, 1);
    EXPECT_EQ(out.PutInt(0x01020304), 0u);
    EXPECT_EQ(out.Flush(1), 0u);
  }
  EXPECT_EQ(tovtest::ReadBytes(dir.NativeOf("out.bin")), (Bytes{1, 2, 3, 4}));
}

// --- typed writes ---------------------------------------------------------------

TEST(WriteStream, PutIntFollowsTheOrdering) {
  struct Row {
    Halyard::HaldByteOrdering order;
    Bytes expected;
  };
  const Row rows[] = {{kHaldBigEndian, {1, 2, 3, 4}},
                      {kHaldLittleEndian, {4, 3, 2, 1}},
                      {static_cast<Halyard::HaldByteOrdering>(-1), {1, 2, 3, 4}}};
  for (const Row& row : rows) {
    SCOPED_TRACE(static_cast<int>(row.order));
    ScriptedPort port;
    {
      CWriteStream stream(port, row.order, 16, 0, 0);
      EXPECT_EQ(stream.PutInt(0x01020304), 0u);
      EXPECT_EQ(stream.FlipBytes(), row.order != kHaldLittleEndian);
    }
    EXPECT_EQ(port.script.data, row.expected);
  }
}

TEST(WriteStream, TypedWritesInBothOrders) {
  ScriptedPort big;
  ScriptedPort little;
  {
    CWriteStream b(big, kHaldBigEndian, 64, 0, 0);
    CWriteStream l(little, kHaldLittleEndian, 64, 0, 0);
    for (CWriteStream* s : {&b, &l}) {
      EXPECT_EQ(s->PutShort(0x0102), 0u);
      EXPECT_EQ(s->PutInt64(0x0102030405060708ll), 0u);
      EXPECT_EQ(s->PutFloat(1.0f), 0u);
      EXPECT_EQ(s->PutDouble(1.0), 0u);
      EXPECT_EQ(s->PutByte(0xAB), 0u);
    }
  }
  EXPECT_EQ(big.script.data, (Bytes{0x01, 0x02, 1,    2,    3, 4, 5, 6, 7, 8, 0x3F, 0x80,
                                    0,    0,    0x3F, 0xF0, 0, 0, 0, 0, 0, 0, 0xAB}));
  EXPECT_EQ(little.script.data, (Bytes{0x02, 0x01, 8, 7, 6, 5, 4, 3, 2,    1,    0,   0,
                                       0x80, 0x3F, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F, 0xAB}));
}

TEST(WriteStream, PutBoolWritesTheByteAsGiven) {
  ScriptedPort port;
  {
    CWriteStream stream(port, kHaldLittleEndian, 4, 0, 0);
    EXPECT_EQ(stream.PutBool(7), 0u);
    EXPECT_EQ(stream.PutBool(0), 0u);
  }
  EXPECT_EQ(port.script.data, (Bytes{7, 0}));
}

TEST(WriteStream, PutZeroPaddingOfZeroOrLessWritesNothing) {
  ScriptedPort port;
  {
    CWriteStream stream(port, kHaldLittleEndian, 4, 0, 0);
    EXPECT_EQ(stream.PutZeroPadding(0), 0u);
    EXPECT_EQ(stream.PutZeroPadding(-3), 0u);
    EXPECT_EQ(PosOf(stream), 0u);
  }
  EXPECT_TRUE(port.script.calls.empty());
}

TEST(WriteStream, PutZeroPaddingWritesZeros) {
  ScriptedPort port({9, 9, 9, 9, 9, 9});
  {
    CWriteStream stream(port, kHaldLittleEndian, 4, 1, 0);
    EXPECT_EQ(stream.PutZeroPadding(5), 0u);
  }
  EXPECT_EQ(port.script.data, (Bytes{9, 0, 0, 0, 0, 0}));
}

TEST(WriteStream, ReversedTypedWritesStopAtTheFirstFailure) {
  ScriptedPort port;
  FailingPutByteStream stream(port, 1);
  EXPECT_EQ(stream.PutInt(0x01020304), 0xC0DE0001u);
  EXPECT_EQ(stream.calls, 2);
  EXPECT_EQ(PosOf(stream), 1u);
}

TEST(WriteStream, PutZeroPaddingDoesNotStopAndReturnsTheLastStatus) {
  ScriptedPort port;
  FailingPutByteStream stream(port, 1);
  EXPECT_EQ(stream.PutZeroPadding(4), 0xC0DE0003u);
  EXPECT_EQ(stream.calls, 4);
}

// --- buffering ---------------------------------------------------------------------

TEST(WriteStream, WriteThatFillsTheBufferExactlyDoesNotFlush) {
  ScriptedPort port;
  CWriteStream stream(port, kHaldLittleEndian, 4, 0, 0);
  const unsigned char bytes[5] = {1, 2, 3, 4, 5};
  EXPECT_EQ(stream.Write(4, bytes), 0u);
  EXPECT_TRUE(port.script.calls.empty());
  EXPECT_EQ(stream.PutByte(5), 0u);
  EXPECT_EQ(port.script.calls, (std::vector<PortCall>{{'w', 0, 4}}));
  EXPECT_EQ(port.script.data, (Bytes{1, 2, 3, 4}));
  EXPECT_EQ(PosOf(stream), 5u);
  EXPECT_EQ(stream.Flush(0), 0u);
  EXPECT_EQ(port.script.data, (Bytes{1, 2, 3, 4, 5}));
}

TEST(WriteStream, OverflowingWriteFlushesAndSendsALargeRemainderStraight) {
  ScriptedPort port;
  CWriteStream stream(port, kHaldLittleEndian, 4, 0, 0);
  const unsigned char bytes[7] = {1, 2, 3, 4, 5, 6, 7};
  EXPECT_EQ(stream.PutByte(1), 0u);
  EXPECT_EQ(stream.Write(6, bytes + 1), 0u);  // 3 stored, 4 flushed, 3 > 2 straight
  const std::vector<PortCall> expected = {{'w', 0, 4}, {'w', 4, 3}};
  EXPECT_EQ(port.script.calls, expected);
  EXPECT_EQ(port.script.data, (Bytes{1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(PosOf(stream), 7u);
}

TEST(WriteStream, OverflowingWriteBuffersASmallRemainder) {
  ScriptedPort port;
  CWriteStream stream(port, kHaldLittleEndian, 4, 0, 0);
  const unsigned char bytes[5] = {1, 2, 3, 4, 5};
  EXPECT_EQ(stream.PutByte(0), 0u);
  EXPECT_EQ(stream.Write(5, bytes), 0u);  // 3 stored, 4 flushed, 2 ≤ 2 buffered
  EXPECT_EQ(port.script.calls, (std::vector<PortCall>{{'w', 0, 4}}));
  EXPECT_EQ(PosOf(stream), 6u);
  EXPECT_EQ(stream.Flush(0), 0u);
  EXPECT_EQ(port.script.data, (Bytes{0, 1, 2, 3, 4, 5}));
}

TEST(WriteStream, GetPosWCountsBufferedAndFlushedBytes) {
  ScriptedPort port;
  CWriteStream stream(port, kHaldLittleEndian, 8, 100, 0);
  const unsigned char bytes[5] = {1, 2, 3, 4, 5};
  EXPECT_EQ(stream.Write(5, bytes), 0u);
  EXPECT_EQ(PosOf(stream), 105u);
  EXPECT_EQ(stream.Flush(0), 0u);
  EXPECT_EQ(PosOf(stream), 105u);
  std::uint32_t pos32 = 0;
  EXPECT_EQ(stream.GetPos(&pos32), 0u);
  EXPECT_EQ(pos32, 105u);
  EXPECT_EQ(port.script.calls, (std::vector<PortCall>{{'w', 100, 5}}));
}

TEST(WriteStream, GetPosWithNullIsInvalidArgument) {
  ScriptedPort port;
  CWriteStream stream(port, kHaldLittleEndian, 8, 0, 0);
  EXPECT_EQ(stream.GetPos(nullptr), TOV::kErrInvalidArgument);
  EXPECT_EQ(stream.GetPosW(nullptr), TOV::kErrInvalidArgument);
}

// --- flushing and positions ------------------------------------------------------------

TEST(WriteStream, FlushOneOnAnEmptyBufferDoesNotReachThePort) {
  ScriptedPort port;
  port.script.flushStatus = 0xC0DE0003u;
  CWriteStream stream(port, kHaldLittleEndian, 8, 0, 0);
  EXPECT_EQ(stream.Flush(1), 0u);
  EXPECT_TRUE(port.script.calls.empty());
}

TEST(WriteStream, FlushOneWritesThenFlushesThePortAndReturnsItsStatus) {
  ScriptedPort port;
  port.script.flushStatus = 0xC0DE0003u;
  CWriteStream stream(port, kHaldLittleEndian, 8, 0, 0);
  stream.PutByte(1);
  EXPECT_EQ(stream.Flush(1), 0xC0DE0003u);
  EXPECT_EQ(port.script.calls, (std::vector<PortCall>{{'w', 0, 1}, {'f', 0, 0}}));
}

TEST(WriteStream, FailingPortWritesAreNotReported) {
  ScriptedPort port;
  port.script.writeStatus = TOV::kErrWriteFailed;
  CWriteStream stream(port, kHaldLittleEndian, 4, 0, 0);
  const unsigned char bytes[9] = {};
  EXPECT_EQ(stream.Write(3, bytes), 0u);
  EXPECT_EQ(stream.Flush(0), 0u);
  EXPECT_EQ(stream.Write(9, bytes), 0u);  // overflow with a direct remainder
  EXPECT_EQ(PosOf(stream), 12u);
  EXPECT_EQ(stream.Flush(1), 0u);  // empty: nothing reaches the port
  stream.PutByte(1);
  EXPECT_EQ(stream.Flush(1), 0u);  // the port's Flush answers 0
  EXPECT_TRUE(port.script.data.empty());
}

TEST(WriteStream, SetPosToTheCurrentPositionDoesNotFlush) {
  ScriptedPort port;
  CWriteStream stream(port, kHaldLittleEndian, 8, 0, 0);
  stream.PutByte(1);
  EXPECT_EQ(stream.SetPos(1), 0u);
  EXPECT_EQ(stream.SetPosW(1), 0u);
  EXPECT_TRUE(port.script.calls.empty());
}

TEST(WriteStream, SetPosElsewhereFlushesFirst) {
  ScriptedPort port({0, 0, 0, 0, 0, 0});
  {
    CWriteStream stream(port, kHaldLittleEndian, 8, 0, 0);
    stream.PutByte(1);
    EXPECT_EQ(stream.SetPos(4), 0u);
    EXPECT_EQ(port.script.calls, (std::vector<PortCall>{{'w', 0, 1}, {'f', 0, 0}}));
    EXPECT_EQ(PosOf(stream), 4u);
    stream.PutByte(4);
    EXPECT_EQ(stream.SetPosW(2), 0u);
    stream.PutByte(2);
  }
  EXPECT_EQ(port.script.data, (Bytes{1, 0, 2, 0, 4, 0}));
}

TEST(WriteStream, SetPosReturnsAFailingPortFlushAndKeepsThePosition) {
  ScriptedPort port;
  port.script.flushStatus = 0xC0DE0004u;
  CWriteStream stream(port, kHaldLittleEndian, 8, 0, 0);
  stream.PutByte(1);
  EXPECT_EQ(stream.SetPos(10), 0xC0DE0004u);
  EXPECT_EQ(PosOf(stream), 1u);
  stream.PutByte(2);
  EXPECT_EQ(stream.SetPosW(10), 0xC0DE0004u);
  EXPECT_EQ(PosOf(stream), 2u);
  // With nothing buffered, moving succeeds: Flush(1) does not reach the port.
  EXPECT_EQ(stream.SetPos(10), 0u);
  EXPECT_EQ(PosOf(stream), 10u);
}

TEST(WriteStream, DestructorFlushesWithoutFlushingThePort) {
  ScriptedPort port;
  {
    CWriteStream stream(port, kHaldLittleEndian, 8, 0, 0);
    stream.PutByte(1);
  }
  EXPECT_EQ(port.script.calls, (std::vector<PortCall>{{'w', 0, 1}}));
}

TEST(WriteStream, ThirtyTwoBitPortGetsTheTruncatedPosition) {
  ScriptedPort port;
  port.script.writeStatus = TOV::kErrWriteFailed;  // store nothing
  CWriteStream stream(port, kHaldLittleEndian, 4, 0, 0);
  EXPECT_EQ(stream.SetPosW(0x100000002ull), 0u);
  std::uint32_t pos32 = 0;
  EXPECT_EQ(stream.GetPos(&pos32), 0u);
  EXPECT_EQ(pos32, 2u);
  const unsigned char bytes[8] = {};
  EXPECT_EQ(stream.Write(8, bytes), 0u);  // 4 buffered and flushed, 4 straight
  const std::vector<PortCall> expected = {{'w', 2, 4}, {'w', 6, 4}};
  EXPECT_EQ(port.script.calls, expected);
  EXPECT_EQ(PosOf(stream), 0x10000000Aull);
}

TEST(WriteStream, SixtyFourBitPortGetsTheFullPosition) {
  ScriptedPortEx port;
  port.script.writeStatus = TOV::kErrWriteFailed;
  CWriteStream stream(port, kHaldLittleEndian, 4, 0, 0);
  EXPECT_EQ(stream.SetPosW(0x100000002ull), 0u);
  const unsigned char bytes[8] = {};
  EXPECT_EQ(stream.Write(8, bytes), 0u);
  const std::vector<PortCall> expected = {{'w', 0x100000002ull, 4}, {'w', 0x100000006ull, 4}};
  EXPECT_EQ(port.script.calls, expected);
}

// --- interface and lifetime --------------------------------------------------------------

TEST(WriteStream, QueryInterfaceReturnsNoInterface) {
  ScriptedPort port;
  CWriteStream stream(port, kHaldLittleEndian, 4, 0, 0);
  const Halyard::_VGUID id = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
  void* out = nullptr;
  EXPECT_EQ(stream.QueryInterface(id, &out), TOV::kErrNoInterface);
  EXPECT_EQ(out, nullptr);
}

TEST(WriteStream, ReleaseWithoutAddRefReturnsAllOnes) {
  ScriptedPort port;
  auto* stream = new CWriteStream(port, kHaldLittleEndian, 4, 0, 0);
  stream->PutByte(3);
  EXPECT_EQ(stream->Release(), 0xFFFFFFFFu);
  EXPECT_EQ(port.script.data, (Bytes{3}));  // destroyed, and flushed on the way
}

TEST(WriteStream, AddRefStartsAtOneAndReleaseDestroysAnyway) {
  bool destroyed = false;
  auto* port = new ScriptedPortEx();
  port->script.destroyed = &destroyed;
  auto* stream = new CWriteStream(port, kHaldLittleEndian, 4, 0, 0);
  EXPECT_EQ(stream->AddRef(), 1u);
  EXPECT_EQ(stream->AddRef(), 2u);
  EXPECT_EQ(stream->Release(), 1u);
  EXPECT_TRUE(destroyed);
}

TEST(WriteStream, OwnedPortIsFlushedClosedAndDeleted) {
  bool destroyed = false;
  std::vector<PortCall> log;
  auto* port = new ScriptedPort();
  port->script.destroyed = &destroyed;
  port->script.log = &log;
  {
    CWriteStream stream(port, kHaldLittleEndian, 4, 0, 1);
    stream.PutByte(1);
  }
  EXPECT_TRUE(destroyed);
  EXPECT_EQ(log, (std::vector<PortCall>{{'w', 0, 1}, {'c', 0, 0}, {'c', 0, 0}}));
}

TEST(WriteStream, ClosePortFlagClosesABorrowedPort) {
  ScriptedPortEx port;
  { CWriteStream stream(port, kHaldLittleEndian, 4, 0, 1); }
  EXPECT_EQ(port.script.calls, (std::vector<PortCall>{{'c', 0, 0}}));
}

TEST(WriteStream, CopiesShareOneState) {
  ScriptedPort port;
  CWriteStream stream(port, kHaldLittleEndian, 8, 0, 0);
  alignas(CWriteStream) unsigned char storage[sizeof(CWriteStream)];
  auto* copy = new (storage) CWriteStream(stream);  // never destroyed: the original is
  copy->PutByte(1);
  stream.PutByte(2);
  EXPECT_EQ(PosOf(*copy), 2u);
  EXPECT_EQ(copy->AddRef(), 1u);
  EXPECT_EQ(stream.AddRef(), 2u);
}

TEST(WriteStream, AssignmentFlushesAndDestroysTheTargetsState) {
  ScriptedPort first;
  ScriptedPort second;
  CWriteStream source(second, kHaldLittleEndian, 8, 0, 0);
  alignas(CWriteStream) unsigned char storage[sizeof(CWriteStream)];
  auto* target = new (storage) CWriteStream(first, kHaldLittleEndian, 8, 0, 1);
  target->PutByte(7);
  *target = source;  // `first` gets the buffered byte and is closed
  EXPECT_EQ(first.script.calls, (std::vector<PortCall>{{'w', 0, 1}, {'c', 0, 0}}));
  target->PutByte(9);
  EXPECT_EQ(PosOf(source), 1u);
  // `target` is not destroyed: `source` destroys the shared state.
}

TEST(WriteStream, OverAFilePortWritesGoldenBytes) {
  tovtest::TempTree dir;
  {
    Halyard::CFilePort port(Halyard::kAccessWrite, 0);
    ASSERT_EQ(port.Open(dir.Lib("out.bin").c_str()), 0u);
    CWriteStream stream(port, kHaldBigEndian, 4, 0, 1);
    stream.PutShort(0x0102);
    stream.PutInt(0x03040506);
    stream.PutZeroPadding(2);
    stream.SetPos(0);
    stream.PutByte(0xFF);
  }
  EXPECT_EQ(tovtest::ReadBytes(dir.NativeOf("out.bin")), (Bytes{0xFF, 2, 3, 4, 5, 6, 0, 0}));
}

TEST(WriteStream, OverASixtyFourBitFilePortWritesPastFourGiB) {
  tovtest::TempTree dir;
  {
    auto port = Halyard::CPortEx::FilePort(dir.Lib("big.bin").c_str(), Halyard::kAccessWrite);
    ASSERT_TRUE(port);
    CWriteStream stream(port.Release(), kHaldLittleEndian, 4, 0, 0);
    EXPECT_EQ(stream.SetPosW(0x100000000ull), 0u);
    EXPECT_EQ(stream.PutInt(0x04030201), 0u);
    EXPECT_EQ(stream.Flush(1), 0u);
  }
  Halyard::CFilePortEx check(Halyard::kAccessRead, 0);
  ASSERT_EQ(check.Open(dir.Lib("big.bin").c_str()), 0u);
  EXPECT_EQ(check.Size(), 0x100000004ull);
  unsigned char back[4] = {};
  EXPECT_EQ(check.Read(0x100000000ull, 4, back), 0u);
  EXPECT_EQ(back[0], 1);
  EXPECT_EQ(back[3], 4);
}
