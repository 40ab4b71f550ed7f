// TOV::PCMFileWriter: header bytes, statuses and stream ownership.
#include <gtest/gtest.h>

#include <array>
#include <string>

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

// The 44-byte header a writer should produce.
Bytes GoldenHeader(std::uint32_t dataBytes, std::uint16_t tag, std::uint16_t channels,
                   std::uint32_t rate, std::uint32_t byteRate, std::uint16_t blockAlign,
                   std::uint16_t bits) {
  Bytes bytes;
  Append(bytes, "RIFF");
  Append32(bytes, dataBytes + 36);
  Append(bytes, "WAVE");
  Append(bytes, "fmt ");
  Append32(bytes, 16);
  Append16(bytes, tag);
  Append16(bytes, channels);
  Append32(bytes, rate);
  Append32(bytes, byteRate);
  Append16(bytes, blockAlign);
  Append16(bytes, bits);
  Append(bytes, "data");
  Append32(bytes, dataBytes);
  return bytes;
}

// A stream on a MemoryPort it does not own, as a writer gets it.
CWriteStream* StreamOn(MemoryPort& port, HaldByteOrdering order = kHaldLittleEndian,
                       std::uint32_t startPos = 0) {
  return new CWriteStream(static_cast<CPort&>(port), order, 4096, startPos, 0);
}

const unsigned char kSamples[] = {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88};

// Writes a file with `info` and `count` sample bytes into `port`.
void WriteFile(MemoryPort& port, const AudioInfo& info, std::uint32_t count) {
  TOV::PCMFileWriter writer;
  ASSERT_EQ(writer.BeginWriting(StreamOn(port), info), 0u);
  ASSERT_EQ(writer.WriteSamples(kSamples, count), 0u);
  ASSERT_EQ(writer.EndWriting(), 0u);
}

TEST(PCMFileWriter, StereoSixteenBitFileIsGoldenBytes) {
  MemoryPort port;
  WriteFile(port, AudioInfo{0x3, kVAudioSampleSize16, 48000}, 4);
  Bytes golden = GoldenHeader(4, 1, 2, 48000, 192000, 4, 16);
  golden.insert(golden.end(), kSamples, kSamples + 4);
  EXPECT_EQ(port.bytes, golden);
  EXPECT_EQ(port.bytes.size(), 48u);
}

TEST(PCMFileWriter, StereoSixteenBitFileThroughRealFile) {
  TempTree folder;
  const UTF16String path = tovtest::U16(folder.NativeOf("tone.wav"));
  auto* port = new CFilePort(kAccessWrite, 0);
  ASSERT_EQ(port->Open(path.c_str()), 0u);
  auto* stream = new CWriteStream(port, kHaldLittleEndian, 4096, 0, 0);  // owns the port
  TOV::PCMFileWriter writer;
  ASSERT_EQ(writer.BeginWriting(stream, AudioInfo{0x3, kVAudioSampleSize16, 48000}), 0u);
  std::uint32_t count = 4;
  ASSERT_EQ(writer.WriteSamples(kSamples, count), 0u);
  ASSERT_EQ(writer.EndWriting(), 0u);  // destroys the stream, which closes the file

  Bytes golden = GoldenHeader(4, 1, 2, 48000, 192000, 4, 16);
  golden.insert(golden.end(), kSamples, kSamples + 4);
  EXPECT_EQ(tovtest::ReadBytes(folder.NativeOf("tone.wav")), golden);
}

TEST(PCMFileWriter, HeaderFieldsPerSampleSize) {
  struct Row {
    std::uint32_t size;
    std::uint16_t tag;
    std::uint16_t bits;
  };
  const Row rows[] = {{1, 1, 8},   {2, 1, 16},  {4, 1, 20},  {8, 1, 24}, {16, 1, 32},
                      {32, 1, 64}, {64, 3, 32}, {128, 1, 8}, {3, 1, 0}};
  for (const Row& row : rows) {
    SCOPED_TRACE("sample size " + std::to_string(row.size));
    MemoryPort port;
    WriteFile(port, AudioInfo{0x1, static_cast<enumVAudioSampleSize>(row.size), 44100}, 0);
    const Bytes golden = GoldenHeader(0, row.tag, 1, 44100, (row.bits * 44100u) >> 3,
                                      static_cast<std::uint16_t>(row.bits / 8), row.bits);
    EXPECT_EQ(port.bytes, golden);
  }
}

TEST(PCMFileWriter, FloatSampleSizeWritesTag3And32Bits) {
  MemoryPort port;
  WriteFile(port, AudioInfo{0x3, kVAudioSampleSize32Float, 48000}, 8);
  ASSERT_EQ(port.bytes.size(), 52u);
  EXPECT_EQ(port.bytes[20], 3);   // format tag
  EXPECT_EQ(port.bytes[16], 16);  // the format chunk stays 16 bytes
  EXPECT_EQ(port.bytes[34], 32);  // bits
  EXPECT_EQ(port.bytes[32], 8);   // block align
}

TEST(PCMFileWriter, SampleSize32WritesIntegerTagAnd64Bits) {
  MemoryPort port;
  WriteFile(port, AudioInfo{0x3, kVAudioSampleSize64, 48000}, 0);
  EXPECT_EQ(port.bytes, GoldenHeader(0, 1, 2, 48000, 768000, 16, 64));
}

TEST(PCMFileWriter, SampleSize128Writes8Bits) {
  MemoryPort port;
  WriteFile(port, AudioInfo{0x1, kVAudioSampleSize8Alt, 8000}, 0);
  EXPECT_EQ(port.bytes, GoldenHeader(0, 1, 1, 8000, 8000, 1, 8));
}

TEST(PCMFileWriter, ModeWithoutBitsGivesZeroChannelsByteRateAndBlockAlign) {
  MemoryPort port;
  WriteFile(port, AudioInfo{0, kVAudioSampleSize16, 48000}, 2);
  Bytes golden = GoldenHeader(2, 1, 0, 48000, 0, 0, 16);
  golden.insert(golden.end(), kSamples, kSamples + 2);
  EXPECT_EQ(port.bytes, golden);
}

TEST(PCMFileWriter, ByteRateWrapsIn32Bits) {
  // 64 bits × 32 channels × 4000000 Hz = 8192000000, which wraps to
  // 3897032704 before the shift by 3.
  MemoryPort port;
  WriteFile(port, AudioInfo{0xFFFFFFFFu, kVAudioSampleSize64, 4000000}, 0);
  const std::uint32_t wrapped = (64u * 32u * 4000000u) >> 3;
  EXPECT_EQ(wrapped, 487129088u);
  EXPECT_EQ(port.bytes, GoldenHeader(0, 1, 32, 4000000, wrapped, 256, 64));
}

TEST(PCMFileWriter, OddDataSizeGetsNoPadByte) {
  MemoryPort port;
  WriteFile(port, AudioInfo{0x1, kVAudioSampleSize8, 8000}, 3);
  Bytes golden = GoldenHeader(3, 1, 1, 8000, 8000, 1, 8);
  golden.insert(golden.end(), kSamples, kSamples + 3);
  EXPECT_EQ(port.bytes, golden);
  EXPECT_EQ(port.bytes.size(), 47u);
}

TEST(PCMFileWriter, SizesWrapModulo4GiB) {
  MemoryPort port;
  port.dropFrom = 44;  // the samples only count
  auto* stream = new CWriteStream(static_cast<CPort&>(port), kHaldLittleEndian, 16, 0, 0);
  TOV::PCMFileWriter writer;
  ASSERT_EQ(writer.BeginWriting(stream, AudioInfo{0x3, kVAudioSampleSize16, 48000}), 0u);
  std::array<unsigned char, 16> block{};
  for (int i = 0; i < 3; ++i) {
    std::uint32_t count = 0x60000000u;  // 1.5 GiB: beyond the 16-byte buffer, straight to the port
    ASSERT_EQ(writer.WriteSamples(block.data(), count), 0u);
    EXPECT_EQ(count, 0x60000000u);
  }
  ASSERT_EQ(writer.EndWriting(), 0u);
  // 4.5 GiB of samples: 0x120000000 bytes, recorded as 0x20000000.
  EXPECT_EQ(port.bytes, GoldenHeader(0x20000000u, 1, 2, 48000, 192000, 4, 16));
}

TEST(PCMFileWriter, RiffSizeWrapsNearMaximum) {
  MemoryPort port;
  port.dropFrom = 44;
  auto* stream = new CWriteStream(static_cast<CPort&>(port), kHaldLittleEndian, 16, 0, 0);
  TOV::PCMFileWriter writer;
  ASSERT_EQ(writer.BeginWriting(stream, AudioInfo{0x1, kVAudioSampleSize8, 8000}), 0u);
  std::array<unsigned char, 16> block{};
  std::uint32_t count = 0x7FFFFFF0u;
  ASSERT_EQ(writer.WriteSamples(block.data(), count), 0u);
  ASSERT_EQ(writer.WriteSamples(block.data(), count), 0u);  // 0xFFFFFFE0 in all
  ASSERT_EQ(writer.EndWriting(), 0u);
  ASSERT_EQ(port.bytes.size(), 44u);
  EXPECT_EQ(port.bytes[4] | port.bytes[5] << 8 | port.bytes[6] << 16 |
                static_cast<std::uint32_t>(port.bytes[7]) << 24,
            0x00000004u);  // 0xFFFFFFE0 + 36 wraps
  EXPECT_EQ(port.bytes[40] | port.bytes[41] << 8 | port.bytes[42] << 16 |
                static_cast<std::uint32_t>(port.bytes[43]) << 24,
            0xFFFFFFE0u);
}

TEST(PCMFileWriter, HeaderGoesAtStreamPosition) {
  MemoryPort port;
  port.bytes.assign(100, 0xAB);
  TOV::PCMFileWriter writer;
  ASSERT_EQ(writer.BeginWriting(StreamOn(port, kHaldLittleEndian, 100),
                                AudioInfo{0x3, kVAudioSampleSize16, 48000}),
            0u);
  std::uint32_t count = 4;
  ASSERT_EQ(writer.WriteSamples(kSamples, count), 0u);
  ASSERT_EQ(writer.EndWriting(), 0u);

  Bytes golden(100, 0xAB);
  const Bytes header = GoldenHeader(4, 1, 2, 48000, 192000, 4, 16);
  golden.insert(golden.end(), header.begin(), header.end());  // bytes 100-143
  golden.insert(golden.end(), kSamples, kSamples + 4);        // from 144
  EXPECT_EQ(port.bytes, golden);
}

TEST(PCMFileWriter, PlaceholderHeaderIsZeros) {
  MemoryPort port;
  auto* stream = StreamOn(port);
  TOV::PCMFileWriter writer;
  ASSERT_EQ(writer.BeginWriting(stream, AudioInfo{0x3, kVAudioSampleSize16, 48000}), 0u);
  std::uint32_t count = 4;
  ASSERT_EQ(writer.WriteSamples(kSamples, count), 0u);
  ASSERT_EQ(stream->Flush(0), 0u);
  Bytes expected(44, 0);
  expected.insert(expected.end(), kSamples, kSamples + 4);
  EXPECT_EQ(port.bytes, expected);
  EXPECT_EQ(writer.EndWriting(), 0u);
}

TEST(PCMFileWriter, BigEndianStreamIsRefused) {
  MemoryPort port;
  CWriteStream* stream = StreamOn(port, kHaldBigEndian);
  TOV::PCMFileWriter writer;
  EXPECT_EQ(writer.BeginWriting(stream, AudioInfo{0x3, kVAudioSampleSize16, 48000}),
            TOV::kErrGeneric);
  std::uint32_t count = 4;
  EXPECT_EQ(writer.WriteSamples(kSamples, count), 0u);  // does nothing
  EXPECT_EQ(writer.EndWriting(), 0u);
  EXPECT_EQ(stream->Flush(0), 0u);
  EXPECT_TRUE(port.bytes.empty());
  EXPECT_EQ(stream->AddRef(), 1u);  // never AddRef'd by the writer
  stream->Release();
}

TEST(PCMFileWriter, BigEndianStreamDropsHeldStreamWithoutReleasingIt) {
  bool destroyed = false;
  auto* first = new CWriteStream(new MemoryPort(&destroyed), kHaldLittleEndian, 64, 0, 0);
  MemoryPort other;
  CWriteStream* bigEndian = StreamOn(other, kHaldBigEndian);
  {
    TOV::PCMFileWriter writer;
    ASSERT_EQ(writer.BeginWriting(first, AudioInfo{0x3, kVAudioSampleSize16, 48000}), 0u);
    EXPECT_EQ(writer.BeginWriting(bigEndian, AudioInfo{0x3, kVAudioSampleSize16, 48000}),
              TOV::kErrGeneric);
    std::uint32_t count = 4;
    EXPECT_EQ(writer.WriteSamples(kSamples, count), 0u);
  }
  EXPECT_FALSE(destroyed);         // the first stream is left to its caller
  EXPECT_EQ(first->AddRef(), 2u);  // one reference from the writer, one now
  first->Release();
  EXPECT_TRUE(destroyed);
  bigEndian->Release();
}

TEST(PCMFileWriter, NullStreamIsInvalidArgument) {
  TOV::PCMFileWriter writer;
  EXPECT_EQ(writer.BeginWriting(nullptr, AudioInfo{0x3, kVAudioSampleSize16, 48000}),
            TOV::kErrInvalidArgument);
  std::uint32_t count = 4;
  EXPECT_EQ(writer.WriteSamples(kSamples, count), 0u);
  EXPECT_EQ(writer.EndWriting(), 0u);
}

TEST(PCMFileWriter, EndWritingWithoutBeginReturnsZero) {
  TOV::PCMFileWriter writer;
  EXPECT_EQ(writer.EndWriting(), 0u);
  std::uint32_t count = 4;
  EXPECT_EQ(writer.WriteSamples(kSamples, count), 0u);
}

TEST(PCMFileWriter, EndWritingReleasesAndDestroysStream) {
  bool destroyed = false;
  auto* stream = new CWriteStream(new MemoryPort(&destroyed), kHaldLittleEndian, 64, 0, 0);
  TOV::PCMFileWriter writer;
  ASSERT_EQ(writer.BeginWriting(stream, AudioInfo{0x3, kVAudioSampleSize16, 48000}), 0u);
  EXPECT_FALSE(destroyed);
  EXPECT_EQ(writer.EndWriting(), 0u);
  EXPECT_TRUE(destroyed);
  EXPECT_EQ(writer.EndWriting(), 0u);  // idle again
}

TEST(PCMFileWriter, SecondBeginWritingReplacesStreamWithoutReleasingFirst) {
  bool firstDestroyed = false;
  bool secondDestroyed = false;
  auto* firstPort = new MemoryPort(&firstDestroyed);
  auto* secondPort = new MemoryPort(&secondDestroyed);
  auto* first = new CWriteStream(firstPort, kHaldLittleEndian, 64, 0, 0);
  auto* second = new CWriteStream(secondPort, kHaldLittleEndian, 64, 0, 0);
  TOV::PCMFileWriter writer;
  ASSERT_EQ(writer.BeginWriting(first, AudioInfo{0x3, kVAudioSampleSize16, 48000}), 0u);
  ASSERT_EQ(writer.BeginWriting(second, AudioInfo{0x1, kVAudioSampleSize8, 8000}), 0u);
  std::uint32_t count = 2;
  ASSERT_EQ(writer.WriteSamples(kSamples, count), 0u);
  ASSERT_EQ(second->Flush(0), 0u);
  const Bytes secondBytes = secondPort->bytes;  // still 44 zeros and the samples
  EXPECT_EQ(writer.EndWriting(), 0u);
  EXPECT_TRUE(secondDestroyed);
  EXPECT_FALSE(firstDestroyed);

  Bytes expected(44, 0);
  expected.insert(expected.end(), kSamples, kSamples + 2);
  EXPECT_EQ(secondBytes, expected);
  ASSERT_EQ(first->Flush(0), 0u);
  EXPECT_EQ(firstPort->bytes, Bytes(44, 0));  // the first file keeps its placeholder
  EXPECT_EQ(first->AddRef(), 2u);
  first->Release();
  EXPECT_TRUE(firstDestroyed);
}

TEST(PCMFileWriter, FailedFlushKeepsStateForRetry) {
  bool destroyed = false;
  auto* port = new MemoryPort(&destroyed);
  port->flushStatus = TOV::kErrWriteFailed;
  auto* stream = new CWriteStream(port, kHaldLittleEndian, 4096, 0, 0);
  TOV::PCMFileWriter writer;
  ASSERT_EQ(writer.BeginWriting(stream, AudioInfo{0x3, kVAudioSampleSize16, 48000}), 0u);
  std::uint32_t count = 4;
  ASSERT_EQ(writer.WriteSamples(kSamples, count), 0u);
  EXPECT_EQ(writer.EndWriting(), TOV::kErrWriteFailed);
  EXPECT_FALSE(destroyed);

  // The writer still writes: more samples go after the first ones.
  ASSERT_EQ(writer.WriteSamples(kSamples + 4, count), 0u);
  port->flushStatus = 0;
  EXPECT_EQ(writer.EndWriting(), 0u);
  EXPECT_TRUE(destroyed);
}

TEST(PCMFileWriter, RetriedEndWritingWritesFinalSizes) {
  MemoryPort port;
  port.flushStatus = TOV::kErrWriteFailed;
  TOV::PCMFileWriter writer;
  ASSERT_EQ(writer.BeginWriting(StreamOn(port), AudioInfo{0x3, kVAudioSampleSize16, 48000}), 0u);
  std::uint32_t count = 4;
  ASSERT_EQ(writer.WriteSamples(kSamples, count), 0u);
  EXPECT_EQ(writer.EndWriting(), TOV::kErrWriteFailed);
  port.flushStatus = 0;
  EXPECT_EQ(writer.EndWriting(), 0u);
  // The failed attempt could not move back (SetPos flushes first, and that
  // flush failed), so its header went after the samples; the retry puts the
  // final header in place.
  const Bytes header = GoldenHeader(4, 1, 2, 48000, 192000, 4, 16);
  Bytes golden = header;
  golden.insert(golden.end(), kSamples, kSamples + 4);
  golden.insert(golden.end(), header.begin(), header.end());
  EXPECT_EQ(port.bytes, golden);
}

TEST(PCMFileWriter, DestructorFinishesOpenFile) {
  bool destroyed = false;
  auto* port = new MemoryPort(&destroyed);
  {
    auto* stream = new CWriteStream(static_cast<CPort&>(*port), kHaldLittleEndian, 4096, 0, 0);
    TOV::PCMFileWriter writer;
    ASSERT_EQ(writer.BeginWriting(stream, AudioInfo{0x3, kVAudioSampleSize16, 48000}), 0u);
    std::uint32_t count = 4;
    ASSERT_EQ(writer.WriteSamples(kSamples, count), 0u);
  }
  Bytes golden = GoldenHeader(4, 1, 2, 48000, 192000, 4, 16);
  golden.insert(golden.end(), kSamples, kSamples + 4);
  EXPECT_EQ(port->bytes, golden);
  EXPECT_EQ(port->flushes, 2);  // moving back to the header, then the final flush
  delete port;
  EXPECT_TRUE(destroyed);
}

TEST(PCMFileWriter, DestructorDestroysStream) {
  bool destroyed = false;
  {
    auto* stream = new CWriteStream(new MemoryPort(&destroyed), kHaldLittleEndian, 64, 0, 0);
    TOV::PCMFileWriter writer;
    ASSERT_EQ(writer.BeginWriting(stream, AudioInfo{0x3, kVAudioSampleSize16, 48000}), 0u);
  }
  EXPECT_TRUE(destroyed);
}

TEST(PCMFileWriter, DestructorLeavesStreamAloneWhenFlushFails) {
  bool destroyed = false;
  auto* port = new MemoryPort(&destroyed);
  port->flushStatus = TOV::kErrWriteFailed;
  auto* stream = new CWriteStream(port, kHaldLittleEndian, 64, 0, 0);
  {
    TOV::PCMFileWriter writer;
    ASSERT_EQ(writer.BeginWriting(stream, AudioInfo{0x3, kVAudioSampleSize16, 48000}), 0u);
  }
  EXPECT_FALSE(destroyed);
  EXPECT_EQ(stream->AddRef(), 2u);  // the writer's reference was not released
  stream->Release();
  EXPECT_TRUE(destroyed);
}

// A stream whose writes fail once armed, to see statuses pass through.
class FailingStream : public CWriteStream {
 public:
  explicit FailingStream(CPort& port) : CWriteStream(port, kHaldLittleEndian, 64, 0, 0) {}
  std::uint32_t Write(std::uint32_t count, const void* data) override {
    if (failWrites) return TOV::kErrWriteFailed;
    return CWriteStream::Write(count, data);
  }
  std::uint32_t GetPos(std::uint32_t* pos) const override {
    if (failGetPos) return TOV::kErrInvalidArgument;
    return CWriteStream::GetPos(pos);
  }
  bool failWrites = false;
  bool failGetPos = false;
};

TEST(PCMFileWriter, FailedSampleWriteIsReturnedAndNotCounted) {
  MemoryPort port;
  auto* stream = new FailingStream(port);
  TOV::PCMFileWriter writer;
  ASSERT_EQ(writer.BeginWriting(stream, AudioInfo{0x3, kVAudioSampleSize16, 48000}), 0u);
  std::uint32_t count = 4;
  ASSERT_EQ(writer.WriteSamples(kSamples, count), 0u);
  stream->failWrites = true;
  EXPECT_EQ(writer.WriteSamples(kSamples, count), TOV::kErrWriteFailed);
  EXPECT_EQ(count, 4u);
  stream->failWrites = false;
  ASSERT_EQ(writer.EndWriting(), 0u);
  Bytes golden = GoldenHeader(4, 1, 2, 48000, 192000, 4, 16);
  golden.insert(golden.end(), kSamples, kSamples + 4);
  EXPECT_EQ(port.bytes, golden);
}

TEST(PCMFileWriter, FailedPlaceholderWriteIsReturned) {
  MemoryPort port;
  auto* stream = new FailingStream(port);
  stream->failWrites = true;
  TOV::PCMFileWriter writer;
  EXPECT_EQ(writer.BeginWriting(stream, AudioInfo{0x3, kVAudioSampleSize16, 48000}),
            TOV::kErrWriteFailed);
  stream->failWrites = false;
  EXPECT_EQ(writer.EndWriting(), 0u);  // the stream was held: the header goes out now
  EXPECT_EQ(port.bytes, GoldenHeader(0, 1, 2, 48000, 192000, 4, 16));
}

TEST(PCMFileWriter, HeaderWritesStopSilentlyAtFirstFailure) {
  MemoryPort port;
  auto* stream = new FailingStream(port);
  TOV::PCMFileWriter writer;
  ASSERT_EQ(writer.BeginWriting(stream, AudioInfo{0x3, kVAudioSampleSize16, 48000}), 0u);
  std::uint32_t count = 4;
  ASSERT_EQ(writer.WriteSamples(kSamples, count), 0u);
  stream->failWrites = true;  // every header write fails; the flush still succeeds
  EXPECT_EQ(writer.EndWriting(), 0u);
  Bytes expected(44, 0);
  expected.insert(expected.end(), kSamples, kSamples + 4);
  EXPECT_EQ(port.bytes, expected);
}

TEST(PCMFileWriter, FailedGetPosIsReturned) {
  MemoryPort port;
  auto* stream = new FailingStream(port);
  stream->failGetPos = true;
  TOV::PCMFileWriter writer;
  EXPECT_EQ(writer.BeginWriting(stream, AudioInfo{0x3, kVAudioSampleSize16, 48000}),
            TOV::kErrInvalidArgument);
  EXPECT_TRUE(port.bytes.empty());
  stream->failGetPos = false;
  EXPECT_EQ(writer.EndWriting(), 0u);  // still held: releases (destroys) it
}

}  // namespace
