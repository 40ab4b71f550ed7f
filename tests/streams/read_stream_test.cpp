// The read stream: buffering, direct reads, positions, typed reads, counting.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include "streams/stream_test_support.h"
#include "tovfoundation/streams.h"

using Halyard::CReadStream;
using Halyard::kHaldBigEndian;
using Halyard::kHaldLittleEndian;
using tovtest::Bytes;
using tovtest::PortCall;
using tovtest::ScriptedPort;

namespace {

Bytes Counting(std::size_t n) {
  Bytes bytes(n);
  for (std::size_t i = 0; i < n; ++i) bytes[i] = static_cast<unsigned char>(i);
  return bytes;
}

std::uint32_t PosOf(const CReadStream& stream) {
  std::uint32_t pos = 0xDEADBEEF;
  EXPECT_EQ(stream.GetPos(&pos), 0u);
  return pos;
}

}  // namespace

// --- the header's examples ------------------------------------------------------

TEST(ReadStream, HeaderExampleReadsLittleEndianShort) {
  unsigned char bytes[4] = {0x12, 0x34, 0x56, 0x78};
  auto ram = Halyard::CPort::ReadOnlyRamPort(bytes, sizeof bytes);
  CReadStream in(*ram, kHaldLittleEndian, 16, 0, 0);
  std::int16_t s = 0;
  EXPECT_EQ(in.ReadShort(&s), 0u);
  EXPECT_EQ(s, 0x3412);
}

// --- buffering -------------------------------------------------------------------

TEST(ReadStream, ReadIntTwiceOverTenBytesWithFourByteBuffer) {
  Bytes data = Counting(10);
  Halyard::CStaticRamFilePort port(data.data(), 10, Halyard::kAccessRead, 0);
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  std::int32_t value = 0;
  EXPECT_EQ(stream.ReadInt(&value), 0u);
  EXPECT_EQ(value, 0x03020100);
  EXPECT_EQ(stream.ReadInt(&value), 0u);
  EXPECT_EQ(value, 0x07060504);
  EXPECT_EQ(PosOf(stream), 8u);
}

TEST(ReadStream, ReadThreeWithOneBufferedRefillsTheBuffer) {
  ScriptedPort port(Counting(10));
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  unsigned char byte = 0;
  for (int i = 0; i < 3; ++i) ASSERT_EQ(stream.ReadByte(&byte), 0u);
  unsigned char out[3] = {};
  EXPECT_EQ(stream.Read(3, out), 0u);  // 3 − 1 = 2 ≤ 4 / 2
  EXPECT_EQ(out[0], 3);
  EXPECT_EQ(out[1], 4);
  EXPECT_EQ(out[2], 5);
  const std::vector<PortCall> expected = {{'r', 0, 4}, {'r', 4, 4}};
  EXPECT_EQ(port.script.calls, expected);
  EXPECT_EQ(PosOf(stream), 6u);
}

TEST(ReadStream, ReadFourWithOneBufferedReadsTheRestStraightAndRefills) {
  ScriptedPort port(Counting(10));
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  unsigned char byte = 0;
  for (int i = 0; i < 3; ++i) ASSERT_EQ(stream.ReadByte(&byte), 0u);
  unsigned char out[4] = {};
  EXPECT_EQ(stream.Read(4, out), 0u);  // 4 − 1 = 3 > 2: straight from the port
  EXPECT_EQ(out[0], 3);
  EXPECT_EQ(out[3], 6);
  const std::vector<PortCall> expected = {{'r', 0, 4}, {'r', 4, 3}, {'r', 7, 3}};
  EXPECT_EQ(port.script.calls, expected);
  EXPECT_EQ(PosOf(stream), 7u);
  // The read-ahead serves the next bytes without the port.
  EXPECT_EQ(stream.Read(3, out), 0u);
  EXPECT_EQ(out[0], 7);
  EXPECT_EQ(out[2], 9);
  EXPECT_EQ(port.script.calls.size(), 3u);
}

TEST(ReadStream, FailedDirectReadReturnsThePortStatusAndKeepsTheBuffer) {
  ScriptedPort port(Counting(10));
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  unsigned char byte = 0;
  ASSERT_EQ(stream.ReadByte(&byte), 0u);
  port.script.failReadsFrom = 1;
  port.script.readStatus = 0xC0DE0001u;
  unsigned char out[6] = {};
  EXPECT_EQ(stream.Read(6, out), 0xC0DE0001u);  // 3 available, 3 > 2 go straight: fails
  EXPECT_EQ(PosOf(stream), 1u);
  ASSERT_EQ(stream.ReadByte(&byte), 0u);
  EXPECT_EQ(byte, 1);
}

TEST(ReadStream, RefillIgnoresAFailingRandomAccessPort) {
  ScriptedPort port(Counting(10));
  port.script.failReadsFrom = 0;
  port.script.readStatus = TOV::kErrReadFailed;
  CReadStream stream(port, kHaldLittleEndian, 8, 0, 0);
  unsigned char out[2] = {};
  EXPECT_EQ(stream.Read(2, out), 0u);
  EXPECT_EQ(PosOf(stream), 2u);
}

TEST(ReadStream, ReadPastTheEndAsksForTheWholeRequestAndSucceeds) {
  ScriptedPort port(Counting(4));
  CReadStream stream(port, kHaldLittleEndian, 16, 0, 0);
  unsigned char out[6] = {};
  EXPECT_EQ(stream.Read(6, out), 0u);  // 6 ≤ 16 / 2: through the buffer
  const std::vector<PortCall> expected = {{'r', 0, 6}};
  EXPECT_EQ(port.script.calls, expected);
  EXPECT_EQ(out[3], 3);
  EXPECT_EQ(out[4], 0xEE);  // whatever the port left there
}

TEST(ReadStream, ReadOfZeroBytesSucceeds) {
  ScriptedPort port(Counting(4));
  CReadStream stream(port, kHaldLittleEndian, 8, 0, 0);
  EXPECT_EQ(stream.Read(0, nullptr), 0u);
  EXPECT_EQ(PosOf(stream), 0u);
}

TEST(ReadStream, StartPositionIsWhereReadingBegins) {
  ScriptedPort port(Counting(10));
  CReadStream stream(port, kHaldLittleEndian, 4, 3, 0);
  EXPECT_EQ(PosOf(stream), 3u);
  unsigned char byte = 0;
  EXPECT_EQ(stream.ReadByte(&byte), 0u);
  EXPECT_EQ(byte, 3);
  EXPECT_EQ(port.script.calls[0], (PortCall{'r', 3, 4}));
}

// --- positions ---------------------------------------------------------------------

TEST(ReadStream, GetPosWithNullIsInvalidPointer) {
  ScriptedPort port(Counting(4));
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  EXPECT_EQ(stream.GetPos(nullptr), TOV::kErrInvalidPointer);
}

TEST(ReadStream, SetPosWithinTheBufferedDataKeepsTheBuffer) {
  ScriptedPort port(Counting(10));
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  unsigned char byte = 0;
  ASSERT_EQ(stream.ReadByte(&byte), 0u);
  EXPECT_EQ(stream.SetPos(4), 0u);  // the port position: the end of the buffered data
  EXPECT_EQ(PosOf(stream), 4u);
  EXPECT_EQ(stream.SetPos(0), 0u);
  EXPECT_EQ(stream.ReadByte(&byte), 0u);
  EXPECT_EQ(byte, 0);
  EXPECT_EQ(stream.SetPos(3), 0u);
  EXPECT_EQ(stream.ReadByte(&byte), 0u);
  EXPECT_EQ(byte, 3);
  EXPECT_EQ(port.script.calls.size(), 1u);
}

TEST(ReadStream, SetPosOneBeyondTheCachedSizeFailsOnRandomAccessPort) {
  ScriptedPort port(Counting(10));
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  EXPECT_EQ(stream.SetPos(11), TOV::kErrReadFailed);
  EXPECT_EQ(PosOf(stream), 0u);
  EXPECT_EQ(stream.SetPos(10), 0u);
  EXPECT_EQ(PosOf(stream), 10u);
  EXPECT_EQ(stream.SetPos(6), 0u);
  unsigned char byte = 0;
  EXPECT_EQ(stream.ReadByte(&byte), 0u);
  EXPECT_EQ(byte, 6);
}

TEST(ReadStream, SetPosChecksTheCachedSizeButGetSizeAsksAgain) {
  ScriptedPort port(Counting(10));
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  port.sizeOverride = 20;
  std::uint32_t size = 0;
  EXPECT_EQ(stream.GetSize(&size), 0u);
  EXPECT_EQ(size, 20u);
  EXPECT_EQ(stream.SetPos(15), TOV::kErrReadFailed);
}

TEST(ReadStream, SequentialPortRefusesBackwardSeeks) {
  ScriptedPort port(Counting(20));
  port.script.sequential = true;
  CReadStream stream(port, kHaldLittleEndian, 4, 8, 0);
  unsigned char byte = 0;
  ASSERT_EQ(stream.ReadByte(&byte), 0u);
  EXPECT_EQ(byte, 8);
  EXPECT_EQ(port.script.calls[0], (PortCall{'s', 8, 4}));
  EXPECT_EQ(stream.SetPos(8), 0u);  // still inside the buffer
  EXPECT_EQ(stream.SetPos(7), TOV::kErrSeekBackward);
}

TEST(ReadStream, SequentialPortSeeksForwardByReading) {
  ScriptedPort port(Counting(20));
  port.script.sequential = true;
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  EXPECT_EQ(stream.SetPos(10), 0u);
  const std::vector<PortCall> expected = {{'r', 0, 4}, {'r', 4, 4}, {'r', 8, 2}};
  EXPECT_EQ(port.script.calls, expected);
  EXPECT_EQ(PosOf(stream), 10u);
  unsigned char byte = 0;
  EXPECT_EQ(stream.ReadByte(&byte), 0u);
  EXPECT_EQ(byte, 10);
  // Beyond the cached size is no obstacle for a sequential port.
  EXPECT_EQ(stream.SetPos(30), 0u);
}

TEST(ReadStream, SequentialForwardSeekReturnsTheFirstPortFailure) {
  ScriptedPort port(Counting(20));
  port.script.sequential = true;
  port.script.failReadsFrom = 1;
  port.script.readStatus = 0xC0DE0002u;
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  EXPECT_EQ(stream.SetPos(10), 0xC0DE0002u);
  EXPECT_EQ(port.script.calls.size(), 2u);
  EXPECT_EQ(PosOf(stream), 4u);
}

TEST(ReadStream, SequentialRefillTakesTheBytesThePortReports) {
  ScriptedPort port(Counting(20));
  port.script.sequential = true;
  port.script.sequentialGot = 2;
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  unsigned char byte = 0;
  ASSERT_EQ(stream.ReadByte(&byte), 0u);
  EXPECT_EQ(PosOf(stream), 1u);
  ASSERT_EQ(stream.ReadByte(&byte), 0u);
  ASSERT_EQ(stream.ReadByte(&byte), 0u);
  EXPECT_EQ(byte, 2);
  const std::vector<PortCall> expected = {{'s', 0, 4}, {'s', 2, 4}};
  EXPECT_EQ(port.script.calls, expected);
}

TEST(ReadStream, SequentialPortThatDeliversNothingFailsTheRead) {
  ScriptedPort port(Counting(20));
  port.script.sequential = true;
  port.script.sequentialGot = 0;
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  unsigned char byte = 0x55;
  EXPECT_EQ(stream.ReadByte(&byte), TOV::kErrReadFailed);
  EXPECT_EQ(byte, 0x55);
}

TEST(ReadStream, SkipWithinTheBufferAndBeyondIt) {
  ScriptedPort port(Counting(10));
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  unsigned char byte = 0;
  ASSERT_EQ(stream.ReadByte(&byte), 0u);
  EXPECT_EQ(stream.Skip(2), 0u);
  EXPECT_EQ(PosOf(stream), 3u);
  EXPECT_EQ(stream.Skip(3), 0u);
  EXPECT_EQ(PosOf(stream), 6u);
  ASSERT_EQ(stream.ReadByte(&byte), 0u);
  EXPECT_EQ(byte, 6);
}

TEST(ReadStream, SkipBeyondTheEndReportsSuccessAndStays) {
  ScriptedPort port(Counting(10));
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  EXPECT_EQ(stream.Skip(20), 0u);
  EXPECT_EQ(PosOf(stream), 0u);
}

// --- put back and peek ---------------------------------------------------------------

TEST(ReadStream, PutBackByteRightAfterConstructionChangesNothing) {
  ScriptedPort port(Counting(4));
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  EXPECT_EQ(stream.PutBackByte(0x99), 0u);
  EXPECT_EQ(PosOf(stream), 0u);
  unsigned char byte = 0;
  EXPECT_EQ(stream.ReadByte(&byte), 0u);
  EXPECT_EQ(byte, 0);
}

TEST(ReadStream, PutBackByteReplacesTheByteBeforeTheCursor) {
  ScriptedPort port(Counting(4));
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  unsigned char byte = 0;
  ASSERT_EQ(stream.ReadByte(&byte), 0u);
  ASSERT_EQ(stream.ReadByte(&byte), 0u);
  EXPECT_EQ(stream.PutBackByte(0x99), 0u);
  EXPECT_EQ(PosOf(stream), 1u);
  EXPECT_EQ(stream.ReadByte(&byte), 0u);
  EXPECT_EQ(byte, 0x99);
  EXPECT_EQ(port.script.data[1], 1);  // the port is not touched
}

TEST(ReadStream, PeekByteTwiceReturnsSameByte) {
  ScriptedPort port(Counting(4));
  CReadStream stream(port, kHaldLittleEndian, 4, 2, 0);
  unsigned char first = 0;
  unsigned char second = 0;
  EXPECT_EQ(stream.PeekByte(&first), 0u);
  EXPECT_EQ(stream.PeekByte(&second), 0u);
  EXPECT_EQ(first, 2);
  EXPECT_EQ(second, 2);
  EXPECT_EQ(PosOf(stream), 2u);
}

TEST(ReadStream, PeekByteWithAOneByteBufferConsumesTheByte) {
  ScriptedPort port(Counting(4));
  CReadStream stream(port, kHaldLittleEndian, 1, 0, 0);
  unsigned char first = 9;
  unsigned char second = 9;
  EXPECT_EQ(stream.PeekByte(&first), 0u);
  EXPECT_EQ(PosOf(stream), 1u);
  EXPECT_EQ(stream.PeekByte(&second), 0u);
  EXPECT_EQ(first, 0);
  EXPECT_EQ(second, 1);
}

TEST(ReadStream, PeekByteStoresZeroAfterAFailedRead) {
  ScriptedPort port(Counting(4));
  port.script.sequential = true;
  port.script.sequentialGot = 0;
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  unsigned char byte = 0x55;
  EXPECT_EQ(stream.PeekByte(&byte), TOV::kErrReadFailed);
  EXPECT_EQ(byte, 0);
}

// --- typed reads -------------------------------------------------------------------

TEST(ReadStream, ReadShortFollowsTheOrdering) {
  unsigned char bytes[2] = {0x12, 0x34};
  struct Row {
    Halyard::HaldByteOrdering order;
    std::int16_t expected;
  };
  const Row rows[] = {{kHaldLittleEndian, 0x3412},
                      {kHaldBigEndian, 0x1234},
                      {static_cast<Halyard::HaldByteOrdering>(7), 0x1234}};
  for (const Row& row : rows) {
    SCOPED_TRACE(static_cast<int>(row.order));
    Halyard::CStaticRamFilePort port(bytes, 2, Halyard::kAccessRead, 0);
    CReadStream stream(port, row.order, 4, 0, 0);
    std::int16_t value = 0;
    EXPECT_EQ(stream.ReadShort(&value), 0u);
    EXPECT_EQ(value, row.expected);
    EXPECT_EQ(stream.FlipBytes(), row.order != kHaldLittleEndian);
  }
}

TEST(ReadStream, ReadIntFollowsTheOrdering) {
  unsigned char bytes[4] = {0x01, 0x02, 0x03, 0x04};
  Halyard::CStaticRamFilePort port(bytes, 4, Halyard::kAccessRead, 0);
  CReadStream big(port, kHaldBigEndian, 4, 0, 0);
  std::int32_t value = 0;
  EXPECT_EQ(big.ReadInt(&value), 0u);
  EXPECT_EQ(value, 0x01020304);
  CReadStream little(port, kHaldLittleEndian, 4, 0, 0);
  EXPECT_EQ(little.ReadInt(&value), 0u);
  EXPECT_EQ(value, 0x04030201);
}

TEST(ReadStream, ReadFloatAndDoubleBigEndian) {
  unsigned char bytes[12] = {0x3F, 0x80, 0, 0, 0x40, 0x09, 0x21, 0xFB, 0x54, 0x44, 0x2D, 0x18};
  Halyard::CStaticRamFilePort port(bytes, 12, Halyard::kAccessRead, 0);
  CReadStream stream(port, kHaldBigEndian, 16, 0, 0);
  float f = 0;
  double d = 0;
  EXPECT_EQ(stream.ReadFloat(&f), 0u);
  EXPECT_EQ(f, 1.0f);
  EXPECT_EQ(stream.ReadDouble(&d), 0u);
  EXPECT_EQ(d, 3.141592653589793);
}

TEST(ReadStream, ReadFloatAndDoubleLittleEndian) {
  unsigned char bytes[12] = {0, 0, 0x80, 0x3F, 0, 0, 0, 0, 0, 0, 0xF0, 0xBF};
  Halyard::CStaticRamFilePort port(bytes, 12, Halyard::kAccessRead, 0);
  CReadStream stream(port, kHaldLittleEndian, 16, 0, 0);
  float f = 0;
  double d = 0;
  EXPECT_EQ(stream.ReadFloat(&f), 0u);
  EXPECT_EQ(f, 1.0f);
  EXPECT_EQ(stream.ReadDouble(&d), 0u);
  EXPECT_EQ(d, -1.0);
}

TEST(ReadStream, ReadInt64StoresInLittleEndian) {
  unsigned char bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  Halyard::CStaticRamFilePort port(bytes, 8, Halyard::kAccessRead, 0);
  CReadStream stream(port, kHaldLittleEndian, 16, 0, 0);
  std::int64_t value = 0;
  EXPECT_EQ(stream.ReadInt(&value), 0u);
  EXPECT_EQ(value, 0x0807060504030201ll);
}

TEST(ReadStream, ReadInt64WithBigEndianReturnsZeroAndLeavesOutputUnchanged) {
  unsigned char bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  Halyard::CStaticRamFilePort port(bytes, 8, Halyard::kAccessRead, 0);
  CReadStream stream(port, kHaldBigEndian, 16, 0, 0);
  std::int64_t value = 42;
  EXPECT_EQ(stream.ReadInt(&value), 0u);
  EXPECT_EQ(value, 42);
  EXPECT_EQ(PosOf(stream), 8u);
}

TEST(ReadStream, ReadBoolStoresOneForNonZero) {
  unsigned char bytes[2] = {7, 0};
  Halyard::CStaticRamFilePort port(bytes, 2, Halyard::kAccessRead, 0);
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  unsigned char value = 9;
  EXPECT_EQ(stream.ReadBool(&value), 0u);
  EXPECT_EQ(value, 1);
  EXPECT_EQ(stream.ReadBool(&value), 0u);
  EXPECT_EQ(value, 0);
}

TEST(ReadStream, FailedTypedReadsLeaveOutputsAloneButReadBoolStoresZero) {
  // A 1-byte buffer sends every read straight to the port, which fails.
  ScriptedPort port(Counting(16));
  port.script.failReadsFrom = 0;
  port.script.readStatus = TOV::kErrReadFailed;
  CReadStream stream(port, kHaldLittleEndian, 1, 0, 0);
  unsigned char byte = 0x55;
  std::int16_t s = 0x55;
  std::int32_t i = 0x55;
  std::int64_t l = 0x55;
  float f = 5.5f;
  double d = 5.5;
  EXPECT_EQ(stream.ReadShort(&s), TOV::kErrReadFailed);
  EXPECT_EQ(stream.ReadInt(&i), TOV::kErrReadFailed);
  EXPECT_EQ(stream.ReadInt(&l), TOV::kErrReadFailed);
  EXPECT_EQ(stream.ReadFloat(&f), TOV::kErrReadFailed);
  EXPECT_EQ(stream.ReadDouble(&d), TOV::kErrReadFailed);
  EXPECT_EQ(s, 0x55);
  EXPECT_EQ(i, 0x55);
  EXPECT_EQ(l, 0x55);
  EXPECT_EQ(f, 5.5f);
  EXPECT_EQ(d, 5.5);
  // One byte over a 1-byte buffer goes through the refill, whose failure is
  // ignored; a 2-byte read goes straight and fails.
  ScriptedPort seq(Counting(4));
  seq.script.sequential = true;
  seq.script.sequentialGot = 0;
  CReadStream empty(seq, kHaldLittleEndian, 4, 0, 0);
  EXPECT_EQ(empty.ReadByte(&byte), TOV::kErrReadFailed);
  EXPECT_EQ(byte, 0x55);
  EXPECT_EQ(empty.ReadBool(&byte), TOV::kErrReadFailed);
  EXPECT_EQ(byte, 0);
}

// --- interface and lifetime -----------------------------------------------------------

TEST(ReadStream, QueryInterfaceOfAnyIdentifierReturnsNoInterface) {
  ScriptedPort port(Counting(4));
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  const Halyard::_VGUID ids[] = {{0, 0, 0, {0}},
                                 {0xFFFFFFFFu, 0xFFFF, 0xFFFF, {1, 2, 3, 4, 5, 6, 7, 8}}};
  for (const auto& id : ids) {
    void* out = &port;
    EXPECT_EQ(stream.QueryInterface(id, &out), TOV::kErrNoInterface);
    EXPECT_EQ(out, &port);
  }
}

TEST(ReadStream, AddRefReturnsTwoAndReleaseReturnsOneAndDestroys) {
  bool destroyed = false;
  auto* port = new ScriptedPort(Counting(4));
  port->script.destroyed = &destroyed;
  auto* stream = new CReadStream(port, kHaldLittleEndian, 4, 0, 0);
  EXPECT_EQ(stream->AddRef(), 2u);
  EXPECT_FALSE(destroyed);
  EXPECT_EQ(stream->Release(), 1u);
  EXPECT_TRUE(destroyed);
}

TEST(ReadStream, OwnedPortIsClosedTwiceWithClosePortAndDeleted) {
  bool destroyed = false;
  auto* port = new ScriptedPort(Counting(4));
  port->script.destroyed = &destroyed;
  std::vector<PortCall> log;
  port->script.log = &log;
  { CReadStream stream(port, kHaldLittleEndian, 4, 0, 1); }
  EXPECT_TRUE(destroyed);
  EXPECT_EQ(log, (std::vector<PortCall>{{'c', 0, 0}, {'c', 0, 0}}));
}

TEST(ReadStream, OwnedPortIsClosedOnceWithoutClosePort) {
  bool destroyed = false;
  auto* port = new ScriptedPort(Counting(4));
  port->script.destroyed = &destroyed;
  std::vector<PortCall> log;
  port->script.log = &log;
  { CReadStream stream(port, kHaldLittleEndian, 4, 0, 0); }
  EXPECT_TRUE(destroyed);
  EXPECT_EQ(log, (std::vector<PortCall>{{'c', 0, 0}}));
}

TEST(ReadStream, ClosePortFlagClosesABorrowedPort) {
  ScriptedPort port(Counting(4));
  { CReadStream stream(port, kHaldLittleEndian, 4, 0, 1); }
  EXPECT_EQ(port.script.calls, (std::vector<PortCall>{{'c', 0, 0}}));
  ScriptedPort kept(Counting(4));
  { CReadStream stream(kept, kHaldLittleEndian, 4, 0, 0); }
  EXPECT_TRUE(kept.script.calls.empty());
}

TEST(ReadStream, CopiesShareOneState) {
  ScriptedPort port(Counting(10));
  CReadStream stream(port, kHaldLittleEndian, 4, 0, 0);
  // The copy is never destroyed: the original destroys the shared state.
  alignas(CReadStream) unsigned char storage[sizeof(CReadStream)];
  auto* copy = new (storage) CReadStream(stream);
  unsigned char byte = 0;
  ASSERT_EQ(copy->ReadByte(&byte), 0u);
  ASSERT_EQ(copy->ReadByte(&byte), 0u);
  EXPECT_EQ(PosOf(stream), 2u);
  EXPECT_EQ(stream.AddRef(), 2u);
  EXPECT_EQ(copy->AddRef(), 3u);
}

TEST(ReadStream, AssignmentDestroysTheTargetsStateAndSharesTheSource) {
  ScriptedPort first(Counting(4));
  ScriptedPort second(Counting(8));
  CReadStream source(second, kHaldLittleEndian, 4, 2, 0);
  alignas(CReadStream) unsigned char storage[sizeof(CReadStream)];
  auto* target = new (storage) CReadStream(first, kHaldLittleEndian, 4, 0, 1);
  *target = source;  // closes `first` (closePort) as its state goes
  EXPECT_EQ(first.script.calls, (std::vector<PortCall>{{'c', 0, 0}}));
  EXPECT_EQ(PosOf(*target), 2u);
  unsigned char byte = 0;
  ASSERT_EQ(target->ReadByte(&byte), 0u);
  EXPECT_EQ(byte, 2);
  EXPECT_EQ(PosOf(source), 3u);
  // `target` is not destroyed: `source` destroys the shared state.
}

TEST(ReadStream, OverAFilePortReadsGoldenBytes) {
  tovtest::TempTree dir;
  tovtest::WriteBytes(dir.NativeOf("in.bin"), Bytes{0x00, 0x01, 0x12, 0x34, 0x56, 0x78, 0xFF});
  auto port = Halyard::CPort::FilePort(dir.Lib("in.bin").c_str(), Halyard::kAccessRead);
  ASSERT_TRUE(port);
  CReadStream stream(port.Release(), kHaldBigEndian, 4096, 0, 0);
  std::int16_t s = 0;
  std::int32_t i = 0;
  unsigned char b = 0;
  EXPECT_EQ(stream.ReadShort(&s), 0u);
  EXPECT_EQ(s, 0x0001);
  EXPECT_EQ(stream.ReadInt(&i), 0u);
  EXPECT_EQ(i, 0x12345678);
  EXPECT_EQ(stream.ReadByte(&b), 0u);
  EXPECT_EQ(b, 0xFF);
  std::uint32_t size = 0;
  EXPECT_EQ(stream.GetSize(&size), 0u);
  EXPECT_EQ(size, 7u);
}
