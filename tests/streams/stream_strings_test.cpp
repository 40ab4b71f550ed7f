// Strings and element arrays through the streams.
#include <gtest/gtest.h>

#include <cstdint>

#include "streams/stream_test_support.h"
#include "tovfoundation/streams.h"

using namespace basalt::literals;
using Halyard::CReadStream;
using Halyard::CWriteStream;
using tovtest::Bytes;
using tovtest::ScriptedPort;

namespace {

Bytes WriteString(Halyard::HaldByteOrdering order, const UTF16String& text,
                  unsigned char terminate) {
  ScriptedPort port;
  {
    CWriteStream stream(port, order, 16, 0, 0);
    EXPECT_EQ(Halyard::VUtilsWriteStringToStream(stream, text, terminate), 0u);
  }
  return port.script.data;
}

Bytes WriteBuffer(Halyard::HaldByteOrdering order, const Bytes& data, std::uint32_t elementSize,
                  std::uint32_t count, std::uint32_t expectedStatus = 0) {
  ScriptedPort port;
  {
    CWriteStream stream(port, order, 16, 0, 0);
    EXPECT_EQ(Halyard::WriteBufferToStream(data.data(), elementSize, count, &stream),
              expectedStatus);
  }
  return port.script.data;
}

}  // namespace

TEST(StreamStrings, WriteStringWithTerminatorBigEndian) {
  EXPECT_EQ(WriteString(Halyard::kHaldBigEndian, u"AB"_u16, 1), (Bytes{0, 0x41, 0, 0x42, 0, 0}));
}

TEST(StreamStrings, WriteStringWithTerminatorLittleEndian) {
  EXPECT_EQ(WriteString(Halyard::kHaldLittleEndian, u"AB"_u16, 1), (Bytes{0x41, 0, 0x42, 0, 0, 0}));
}

TEST(StreamStrings, WriteStringWithoutTerminatorKeepsEmbeddedZeros) {
  UTF16String text = u"A"_u16;
  text.push_back(0);
  text.push_back(0x20AC);
  EXPECT_EQ(WriteString(Halyard::kHaldBigEndian, text, 0), (Bytes{0, 0x41, 0, 0, 0x20, 0xAC}));
  EXPECT_TRUE(WriteString(Halyard::kHaldBigEndian, UTF16String(), 0).empty());
}

TEST(StreamStrings, WriteStringIgnoresPortFailures) {
  ScriptedPort port;
  port.script.writeStatus = TOV::kErrWriteFailed;
  CWriteStream stream(port, Halyard::kHaldBigEndian, 2, 0, 0);
  EXPECT_EQ(Halyard::VUtilsWriteStringToStream(stream, u"ABCDEF"_u16, 1), 0u);
}

TEST(StreamStrings, ReadStringStopsAtMaxUnits) {
  Bytes data = {0, 'A', 0, 'B', 0, 'C', 0, 'D'};
  Halyard::CStaticRamFilePort port(data.data(), 8, Halyard::kAccessRead, 0);
  CReadStream stream(port, Halyard::kHaldBigEndian, 16, 0, 0);
  UTF16String text = u"old"_u16;
  EXPECT_EQ(Halyard::VUtilsReadStringFromStream(stream, text, 3), 0u);
  EXPECT_EQ(text, u"ABC"_u16);
  std::uint32_t pos = 0;
  stream.GetPos(&pos);
  EXPECT_EQ(pos, 6u);  // at D
}

TEST(StreamStrings, ReadStringConsumesTheTerminator) {
  Bytes data = {'A', 0, 0, 0, 'C', 0};
  Halyard::CStaticRamFilePort port(data.data(), 6, Halyard::kAccessRead, 0);
  CReadStream stream(port, Halyard::kHaldLittleEndian, 16, 0, 0);
  UTF16String text;
  EXPECT_EQ(Halyard::VUtilsReadStringFromStream(stream, text, 3), 0u);
  EXPECT_EQ(text, u"A"_u16);
  std::uint32_t pos = 0;
  stream.GetPos(&pos);
  EXPECT_EQ(pos, 4u);  // at C
}

TEST(StreamStrings, ReadStringWithZeroMaxUnitsIsInvalidPointer) {
  Bytes data = {'A', 0};
  Halyard::CStaticRamFilePort port(data.data(), 2, Halyard::kAccessRead, 0);
  CReadStream stream(port, Halyard::kHaldLittleEndian, 16, 0, 0);
  UTF16String text = u"keep"_u16;
  EXPECT_EQ(Halyard::VUtilsReadStringFromStream(stream, text, 0), TOV::kErrInvalidPointer);
  EXPECT_EQ(text, u"keep"_u16);
  std::uint32_t pos = 9;
  stream.GetPos(&pos);
  EXPECT_EQ(pos, 0u);
}

TEST(StreamStrings, ReadStringThatFillsMaxUnitsNeedsNoTerminator) {
  Bytes data = {'X', 0, 'Y', 0};
  Halyard::CStaticRamFilePort port(data.data(), 4, Halyard::kAccessRead, 0);
  CReadStream stream(port, Halyard::kHaldLittleEndian, 16, 0, 0);
  UTF16String text;
  EXPECT_EQ(Halyard::VUtilsReadStringFromStream(stream, text, 2), 0u);
  EXPECT_EQ(text, u"XY"_u16);
}

TEST(StreamStrings, ReadStringRepeatsTheLastUnitAtTheEndOfTheData) {
  // A 2-byte buffer sends every 2-byte read straight to the port, so reads past
  // the end fail and the last unit is appended again.
  tovtest::TempTree dir;
  tovtest::WriteBytes(dir.NativeOf("s.bin"), Bytes{'A', 0, 'B', 0});
  auto port = Halyard::CPort::FilePort(dir.Lib("s.bin").c_str(), Halyard::kAccessRead);
  ASSERT_TRUE(port);
  CReadStream stream(*port, Halyard::kHaldLittleEndian, 2, 0, 0);
  UTF16String text;
  EXPECT_EQ(Halyard::VUtilsReadStringFromStream(stream, text, 5), 0u);
  EXPECT_EQ(text, u"ABBBB"_u16);
}

TEST(StreamStrings, ReadStringFromAStreamThatFailsAtOnceIsEmpty) {
  ScriptedPort port({'A', 0});
  port.script.failReadsFrom = 0;
  port.script.readStatus = TOV::kErrReadFailed;
  CReadStream stream(port, Halyard::kHaldLittleEndian, 2, 0, 0);
  UTF16String text = u"old"_u16;
  EXPECT_EQ(Halyard::VUtilsReadStringFromStream(stream, text, 4), 0u);
  EXPECT_TRUE(text.empty());
}

TEST(StreamStrings, WriteBufferReversesSixteenBitElementsForBigEndian) {
  const Bytes data = {0x02, 0x01, 0x04, 0x03};
  EXPECT_EQ(WriteBuffer(Halyard::kHaldBigEndian, data, 2, 2), (Bytes{1, 2, 3, 4}));
}

TEST(StreamStrings, WriteBufferKeepsLittleEndianAndSingleBytes) {
  const Bytes data = {0x02, 0x01, 0x04, 0x03};
  EXPECT_EQ(WriteBuffer(Halyard::kHaldLittleEndian, data, 2, 2), data);
  EXPECT_EQ(WriteBuffer(Halyard::kHaldBigEndian, data, 1, 4), data);
}

TEST(StreamStrings, WriteBufferOddElementsHaveAZeroMiddleByte) {
  const Bytes data = {1, 2, 3, 4, 5, 6};
  EXPECT_EQ(WriteBuffer(Halyard::kHaldBigEndian, data, 3, 2), (Bytes{3, 0, 1, 6, 0, 4}));
  const Bytes four = {1, 2, 3, 4, 5, 6, 7, 8};
  EXPECT_EQ(WriteBuffer(Halyard::kHaldBigEndian, four, 4, 2), (Bytes{4, 3, 2, 1, 8, 7, 6, 5}));
}

TEST(StreamStrings, WriteBufferRejectsEmptyAndNullArguments) {
  const Bytes data = {1, 2};
  EXPECT_TRUE(WriteBuffer(Halyard::kHaldBigEndian, data, 2, 0, TOV::kErrInvalidPointer).empty());
  EXPECT_TRUE(WriteBuffer(Halyard::kHaldBigEndian, data, 0, 1, TOV::kErrInvalidPointer).empty());
  // 0x80000000 × 2 wraps to 0 in 32 bits.
  EXPECT_TRUE(
      WriteBuffer(Halyard::kHaldBigEndian, data, 0x80000000u, 2, TOV::kErrInvalidPointer).empty());
  ScriptedPort port;
  CWriteStream stream(port, Halyard::kHaldBigEndian, 16, 0, 0);
  EXPECT_EQ(Halyard::WriteBufferToStream(nullptr, 2, 1, &stream), TOV::kErrInvalidPointer);
  EXPECT_EQ(Halyard::WriteBufferToStream(data.data(), 2, 1, nullptr), TOV::kErrInvalidPointer);
}
