// TOV::BMPFileWriter: header bytes, statuses and stream ownership.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tovfoundation/streams.h"
#include "tovfoundation/writers.h"
#include "writers/writers_support.h"

using namespace Halyard;
using tovtest::Append;
using tovtest::Append16;
using tovtest::Append32;
using tovtest::Bytes;
using tovtest::MemoryPort;
using tovtest::TempTree;

namespace {

Bytes GoldenHeaders(std::uint32_t fileSize, std::int32_t width, std::int32_t heightField,
                    std::uint16_t bits, std::uint32_t imageSize) {
  Bytes bytes;
  Append(bytes, "BM");
  Append32(bytes, fileSize);
  Append16(bytes, 0);
  Append16(bytes, 0);
  Append32(bytes, 54);
  Append32(bytes, 40);
  Append32(bytes, static_cast<std::uint32_t>(width));
  Append32(bytes, static_cast<std::uint32_t>(heightField));
  Append16(bytes, 1);
  Append16(bytes, bits);
  Append32(bytes, 0);
  Append32(bytes, imageSize);
  for (int i = 0; i < 4; ++i) Append32(bytes, 0);
  return bytes;
}

CWriteStream* StreamOn(MemoryPort& port, HaldByteOrdering order = kHaldLittleEndian) {
  return new CWriteStream(static_cast<CPort&>(port), order, 4096, 0, 0);
}

std::vector<unsigned char> Pixels(std::size_t count) {
  std::vector<unsigned char> pixels(count);
  for (std::size_t i = 0; i < count; ++i) pixels[i] = static_cast<unsigned char>(i + 1);
  return pixels;
}

std::uint32_t Write(TOV::BMPFileWriter& writer, const std::vector<unsigned char>& pixels,
                    std::int32_t stride) {
  std::uint32_t unused = 0;
  return writer.WriteBMP(pixels.data(), stride, 0, unused);
}

TEST(BMPFileWriter, TwoByTwo32BitIsGoldenBytes) {
  MemoryPort port;
  TOV::BMPFileWriter writer;
  ASSERT_EQ(writer.ResetStream(StreamOn(port)), 0u);
  EXPECT_EQ(writer.SetBMPProperties(VSize{2, 2}, 0x80), 0u);
  const auto pixels = Pixels(16);
  EXPECT_EQ(Write(writer, pixels, 8), 0u);
  Bytes golden = GoldenHeaders(70, 2, -2, 32, 16);
  golden.insert(golden.end(), pixels.begin(), pixels.end());
  EXPECT_EQ(port.bytes, golden);
  EXPECT_EQ(port.bytes.size(), 70u);
}

TEST(BMPFileWriter, TwoByTwo32BitThroughRealFile) {
  TempTree folder;
  const UTF16String path = tovtest::U16(folder.NativeOf("bars.bmp"));
  const auto pixels = Pixels(16);
  {
    TOV::BMPFileWriter writer(path.c_str());
    EXPECT_EQ(writer.SetBMPProperties(VSize{2, 2}, 0x80), 0u);
    EXPECT_EQ(Write(writer, pixels, 8), 0u);
  }
  Bytes golden = GoldenHeaders(70, 2, -2, 32, 16);
  golden.insert(golden.end(), pixels.begin(), pixels.end());
  EXPECT_EQ(tovtest::ReadBytes(folder.NativeOf("bars.bmp")), golden);
}

TEST(BMPFileWriter, ThreeByOne24BitRowsAreNotPadded) {
  MemoryPort port;
  TOV::BMPFileWriter writer;
  ASSERT_EQ(writer.ResetStream(StreamOn(port)), 0u);
  writer.SetBMPProperties(VSize{3, 1}, 0x20);
  const auto pixels = Pixels(9);
  EXPECT_EQ(Write(writer, pixels, 9), 0u);
  Bytes golden = GoldenHeaders(63, 3, -1, 24, 9);
  golden.insert(golden.end(), pixels.begin(), pixels.end());
  EXPECT_EQ(port.bytes, golden);
}

TEST(BMPFileWriter, UnpaddedRowsFollowEachOther) {
  // 3 × 2 pixels of 3 bytes: 9-byte rows, taken from a source with 12-byte
  // strides and written back to back.
  MemoryPort port;
  TOV::BMPFileWriter writer;
  ASSERT_EQ(writer.ResetStream(StreamOn(port)), 0u);
  writer.SetBMPProperties(VSize{3, 2}, 0x40);
  const auto pixels = Pixels(24);
  EXPECT_EQ(Write(writer, pixels, 12), 0u);
  Bytes golden = GoldenHeaders(72, 3, -2, 24, 18);
  golden.insert(golden.end(), pixels.begin(), pixels.begin() + 9);
  golden.insert(golden.end(), pixels.begin() + 12, pixels.begin() + 21);
  EXPECT_EQ(port.bytes, golden);
}

TEST(BMPFileWriter, NegativeStrideWalksSourceUpwards) {
  MemoryPort port;
  TOV::BMPFileWriter writer;
  ASSERT_EQ(writer.ResetStream(StreamOn(port)), 0u);
  writer.SetBMPProperties(VSize{1, 3}, 0x4);  // 1 byte per pixel
  const unsigned char source[] = {10, 20, 30};
  std::uint32_t unused = 0;
  EXPECT_EQ(writer.WriteBMP(source + 2, -1, 0, unused), 0u);
  Bytes golden = GoldenHeaders(57, 1, -3, 8, 3);
  golden.insert(golden.end(), {30, 20, 10});
  EXPECT_EQ(port.bytes, golden);
}

TEST(BMPFileWriter, UnknownColourSpaceGives54ByteFile) {
  MemoryPort port;
  TOV::BMPFileWriter writer;
  ASSERT_EQ(writer.ResetStream(StreamOn(port)), 0u);
  writer.SetBMPProperties(VSize{4, 4}, 0x8);
  const auto pixels = Pixels(64);
  EXPECT_EQ(Write(writer, pixels, 16), 0u);
  EXPECT_EQ(port.bytes, GoldenHeaders(54, 4, -4, 0, 0));
}

TEST(BMPFileWriter, WriteBeforeSetPropertiesFails) {
  MemoryPort port;
  TOV::BMPFileWriter writer;
  ASSERT_EQ(writer.ResetStream(StreamOn(port)), 0u);
  const auto pixels = Pixels(16);
  EXPECT_EQ(Write(writer, pixels, 8), TOV::kErrGeneric);
  EXPECT_EQ(writer.EndWriting(), 0u);
  EXPECT_TRUE(port.bytes.empty());
}

TEST(BMPFileWriter, ZeroWidthOrHeightFails) {
  for (const VSize size : {VSize{0, 2}, VSize{2, 0}}) {
    SCOPED_TRACE(std::to_string(size.width) + " x " + std::to_string(size.height));
    MemoryPort port;
    TOV::BMPFileWriter writer;
    ASSERT_EQ(writer.ResetStream(StreamOn(port)), 0u);
    writer.SetBMPProperties(size, 0x80);
    const auto pixels = Pixels(16);
    EXPECT_EQ(Write(writer, pixels, 8), TOV::kErrGeneric);
  }
}

TEST(BMPFileWriter, WriteWithoutStreamFails) {
  TOV::BMPFileWriter writer;
  writer.SetBMPProperties(VSize{2, 2}, 0x80);
  const auto pixels = Pixels(16);
  EXPECT_EQ(Write(writer, pixels, 8), TOV::kErrGeneric);
}

TEST(BMPFileWriter, OpenNewFileTwiceFails) {
  TempTree folder;
  const UTF16String first = tovtest::U16(folder.NativeOf("a.bmp"));
  const UTF16String second = tovtest::U16(folder.NativeOf("b.bmp"));
  TOV::BMPFileWriter writer;
  EXPECT_EQ(writer.OpenNewFile(first.c_str()), 0u);
  EXPECT_EQ(writer.OpenNewFile(second.c_str()), TOV::kErrGeneric);
  EXPECT_EQ(writer.EndWriting(), 0u);
  EXPECT_TRUE(tovtest::ReadBytes(folder.NativeOf("a.bmp")).empty());
  EXPECT_FALSE(std::filesystem::exists(folder.NativeOf("b.bmp")));
}

TEST(BMPFileWriter, OpenNewFileTruncatesExistingFile) {
  TempTree folder;
  tovtest::WriteBytes(folder.NativeOf("old.bmp"), Bytes(500, 7));
  const UTF16String path = tovtest::U16(folder.NativeOf("old.bmp"));
  TOV::BMPFileWriter writer;
  EXPECT_EQ(writer.OpenNewFile(path.c_str()), 0u);
  writer.SetBMPProperties(VSize{1, 1}, 0x80);
  const auto pixels = Pixels(4);
  EXPECT_EQ(Write(writer, pixels, 4), 0u);
  EXPECT_EQ(tovtest::ReadBytes(folder.NativeOf("old.bmp")).size(), 58u);
}

TEST(BMPFileWriter, OpenNewFileInMissingFolderFails) {
  // The port of a failed open is not destroyed; the sanitizer runs suppress
  // exactly that leak.
  TempTree folder;
  const UTF16String path = tovtest::U16(folder.NativeOf("missing/x.bmp"));
  TOV::BMPFileWriter writer;
  EXPECT_EQ(writer.OpenNewFile(path.c_str()), TOV::kErrOpenFailed);
  writer.SetBMPProperties(VSize{1, 1}, 0x80);
  const auto pixels = Pixels(4);
  EXPECT_EQ(Write(writer, pixels, 4), TOV::kErrGeneric);  // no stream
}

TEST(BMPFileWriter, OpenNewFileWithNullPathIsInvalidArgument) {
  TOV::BMPFileWriter writer;
  EXPECT_EQ(writer.OpenNewFile(nullptr), TOV::kErrInvalidArgument);
}

TEST(BMPFileWriter, ConstructorWithPathIgnoresFailure) {
  TempTree folder;
  const UTF16String path = tovtest::U16(folder.NativeOf("missing/x.bmp"));
  TOV::BMPFileWriter writer(path.c_str());
  MemoryPort port;
  EXPECT_EQ(writer.ResetStream(StreamOn(port)), 0u);  // nothing held after the failure
}

TEST(BMPFileWriter, ResetStreamNullIsInvalidPointer) {
  TOV::BMPFileWriter writer;
  EXPECT_EQ(writer.ResetStream(nullptr), TOV::kErrInvalidPointer);
}

TEST(BMPFileWriter, ResetStreamBigEndianFails) {
  MemoryPort port;
  CWriteStream* stream = StreamOn(port, kHaldBigEndian);
  TOV::BMPFileWriter writer;
  EXPECT_EQ(writer.ResetStream(stream), TOV::kErrGeneric);
  EXPECT_EQ(stream->AddRef(), 1u);  // not taken
  stream->Release();
}

TEST(BMPFileWriter, ResetStreamWhileHoldingOneFails) {
  MemoryPort first;
  MemoryPort second;
  CWriteStream* other = StreamOn(second);
  TOV::BMPFileWriter writer;
  ASSERT_EQ(writer.ResetStream(StreamOn(first)), 0u);
  EXPECT_EQ(writer.ResetStream(other), TOV::kErrGeneric);
  EXPECT_EQ(other->AddRef(), 1u);
  other->Release();
}

TEST(BMPFileWriter, ResetStreamAfterOpenNewFileFails) {
  TempTree folder;
  const UTF16String path = tovtest::U16(folder.NativeOf("a.bmp"));
  MemoryPort port;
  CWriteStream* stream = StreamOn(port);
  TOV::BMPFileWriter writer(path.c_str());
  EXPECT_EQ(writer.ResetStream(stream), TOV::kErrGeneric);
  stream->Release();
}

TEST(BMPFileWriter, AdoptedStreamIsDestroyedByEndWriting) {
  bool destroyed = false;
  auto* stream = new CWriteStream(new MemoryPort(&destroyed), kHaldLittleEndian, 64, 0, 0);
  TOV::BMPFileWriter writer;
  ASSERT_EQ(writer.ResetStream(stream), 0u);
  EXPECT_FALSE(destroyed);
  EXPECT_EQ(writer.EndWriting(), 0u);
  EXPECT_TRUE(destroyed);
  EXPECT_EQ(writer.EndWriting(), 0u);  // no stream any more
}

TEST(BMPFileWriter, WriteBMPEndsWritingAndDestroysStream) {
  bool destroyed = false;
  auto* stream = new CWriteStream(new MemoryPort(&destroyed), kHaldLittleEndian, 64, 0, 0);
  TOV::BMPFileWriter writer;
  ASSERT_EQ(writer.ResetStream(stream), 0u);
  writer.SetBMPProperties(VSize{1, 1}, 0x80);
  const auto pixels = Pixels(4);
  EXPECT_EQ(Write(writer, pixels, 4), 0u);
  EXPECT_TRUE(destroyed);
  EXPECT_EQ(Write(writer, pixels, 4), TOV::kErrGeneric);  // nothing held any more
}

TEST(BMPFileWriter, DestructorDestroysStream) {
  bool destroyed = false;
  {
    auto* stream = new CWriteStream(new MemoryPort(&destroyed), kHaldLittleEndian, 64, 0, 0);
    TOV::BMPFileWriter writer;
    ASSERT_EQ(writer.ResetStream(stream), 0u);
  }
  EXPECT_TRUE(destroyed);
}

TEST(BMPFileWriter, WriteBMPReturnsFlushStatus) {
  bool destroyed = false;
  auto* port = new MemoryPort(&destroyed);
  port->flushStatus = TOV::kErrWriteFailed;
  TOV::BMPFileWriter writer;
  ASSERT_EQ(writer.ResetStream(new CWriteStream(port, kHaldLittleEndian, 4096, 0, 0)), 0u);
  writer.SetBMPProperties(VSize{1, 1}, 0x80);
  const auto pixels = Pixels(4);
  EXPECT_EQ(Write(writer, pixels, 4), TOV::kErrWriteFailed);
  EXPECT_TRUE(destroyed);  // released even when the flush failed
}

TEST(BMPFileWriter, EndWritingOnEmptyBufferDoesNotReachPort) {
  MemoryPort port;
  port.flushStatus = TOV::kErrWriteFailed;
  TOV::BMPFileWriter writer;
  ASSERT_EQ(writer.ResetStream(StreamOn(port)), 0u);
  EXPECT_EQ(writer.EndWriting(), 0u);
  EXPECT_EQ(port.flushes, 0);
}

TEST(BMPFileWriter, SecondImageKeepsFirstImageSizes) {
  TOV::BMPFileWriter writer;
  MemoryPort first;
  ASSERT_EQ(writer.ResetStream(StreamOn(first)), 0u);
  writer.SetBMPProperties(VSize{2, 2}, 0x80);
  const auto pixels = Pixels(64);
  ASSERT_EQ(Write(writer, pixels, 8), 0u);

  MemoryPort second;
  ASSERT_EQ(writer.ResetStream(StreamOn(second)), 0u);
  writer.SetBMPProperties(VSize{4, 1}, 0x20);
  ASSERT_EQ(Write(writer, pixels, 12), 0u);
  Bytes golden = GoldenHeaders(70, 4, -1, 24, 16);  // sizes of the 2 × 2 image
  golden.insert(golden.end(), pixels.begin(), pixels.begin() + 12);
  EXPECT_EQ(second.bytes, golden);
}

// A stream whose typed writes fail once armed.
class FailingStream : public CWriteStream {
 public:
  explicit FailingStream(CPort& port) : CWriteStream(port, kHaldLittleEndian, 64, 0, 0) {}
  std::uint32_t PutInt(std::int32_t value) override {
    if (++puts == failAt) return TOV::kErrWriteFailed;
    return CWriteStream::PutInt(value);
  }
  std::uint32_t PutShort(std::int16_t value) override {
    if (++puts == failAt) return TOV::kErrWriteFailed;
    return CWriteStream::PutShort(value);
  }
  int puts = 0;
  int failAt = 0;
};

TEST(BMPFileWriter, FailingHeaderWriteIsReturnedAndStreamKept) {
  MemoryPort port;
  auto* stream = new FailingStream(port);
  stream->failAt = 7;  // the information header's width
  TOV::BMPFileWriter writer;
  ASSERT_EQ(writer.ResetStream(stream), 0u);
  writer.SetBMPProperties(VSize{1, 1}, 0x80);
  const auto pixels = Pixels(4);
  EXPECT_EQ(Write(writer, pixels, 4), TOV::kErrWriteFailed);
  EXPECT_EQ(writer.EndWriting(), 0u);  // still held
  Bytes golden = GoldenHeaders(58, 1, -1, 32, 4);
  golden.resize(18);  // file header and information header size only
  EXPECT_EQ(port.bytes, golden);
}

}  // namespace
