// The writers' header writes failing one at a time: the WAVE writer stops its
// final header silently at the first failing write, the BMP writer answers
// that write's status and keeps its stream. The failures are provoked by a
// write stream whose Nth Write fails (typed writes of a derived stream go
// through its Write).
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "tovfoundation/streams.h"
#include "tovfoundation/writers.h"

namespace tovtest {
namespace {

using Bytes = std::vector<std::uint8_t>;

// A 32-bit port over a byte vector the test owns.
class VectorPort : public Halyard::CPort {
 public:
  explicit VectorPort(Bytes& bytes) : CPort(Halyard::kAccessReadWrite, 0), mBytes(bytes) {}
  std::uint32_t Size(std::uint32_t newSize) override {
    mBytes.resize(newSize);
    return 0;
  }
  std::uint32_t Size() const override { return static_cast<std::uint32_t>(mBytes.size()); }
  std::uint32_t Close() override { return 0; }
  std::uint32_t Read(std::uint32_t, std::int32_t, void*) const override { return 0; }
  std::uint32_t Write(std::uint32_t pos, std::int32_t count, const void* buffer) override {
    if (count <= 0) return 0;
    if (mBytes.size() < pos + static_cast<std::size_t>(count)) mBytes.resize(pos + count);
    std::memcpy(mBytes.data() + pos, buffer, static_cast<std::size_t>(count));
    return 0;
  }

 private:
  Bytes& mBytes;
};

constexpr std::uint32_t kDiskFull = TOV::kErrWriteFailed;

// A little-endian stream that owns its port and fails its Nth Write (1-based)
// with kDiskFull; 0 never fails. `*destroyed` is set when it goes.
class FailingStream : public Halyard::CWriteStream {
 public:
  FailingStream(Bytes& bytes, int failAt, bool* destroyed)
      : CWriteStream(new VectorPort(bytes), Halyard::kHaldLittleEndian, 4096, 0, 0),
        mFailAt(failAt),
        mDestroyed(destroyed) {}
  ~FailingStream() override { *mDestroyed = true; }

  std::uint32_t Write(std::uint32_t count, const void* data) override {
    if (++mWrites == mFailAt) return kDiskFull;
    return CWriteStream::Write(count, data);
  }

 private:
  int mFailAt;
  int mWrites = 0;
  bool* mDestroyed;
};

void Append(Bytes& bytes, const char* text) { bytes.insert(bytes.end(), text, text + 4); }
void Append16(Bytes& bytes, std::uint16_t v) {
  bytes.push_back(static_cast<std::uint8_t>(v));
  bytes.push_back(static_cast<std::uint8_t>(v >> 8));
}
void Append32(Bytes& bytes, std::uint32_t v) {
  for (int shift = 0; shift < 32; shift += 8)
    bytes.push_back(static_cast<std::uint8_t>(v >> shift));
}

const unsigned char kSamples[4] = {1, 2, 3, 4};

// Header offsets at which each of the WAVE writer's 13 header writes starts.
const std::size_t kWaveFieldStarts[] = {0, 4, 8, 12, 16, 20, 22, 24, 28, 32, 34, 36, 40};

TEST(PCMFileWriterFailures, HeaderStopsAtTheFirstFailingWriteAndTheFileStillEnds) {
  Bytes golden;
  Append(golden, "RIFF");
  Append32(golden, 4 + 36);
  Append(golden, "WAVE");
  Append(golden, "fmt ");
  Append32(golden, 16);
  Append16(golden, 1);
  Append16(golden, 2);
  Append32(golden, 48000);
  Append32(golden, 192000);
  Append16(golden, 4);
  Append16(golden, 16);
  Append(golden, "data");
  Append32(golden, 4);
  ASSERT_EQ(golden.size(), 44u);

  for (std::size_t field = 0; field < std::size(kWaveFieldStarts); ++field) {
    SCOPED_TRACE("header write " + std::to_string(field + 1) + " fails");
    Bytes bytes;
    bool destroyed = false;
    // Write 1 is the placeholder, write 2 the samples; the header follows.
    auto* stream = new FailingStream(bytes, static_cast<int>(field) + 3, &destroyed);
    TOV::PCMFileWriter writer;
    ASSERT_EQ(
        writer.BeginWriting(stream, Halyard::AudioInfo{0x3, Halyard::kVAudioSampleSize16, 48000}),
        0u);
    std::uint32_t count = 4;
    ASSERT_EQ(writer.WriteSamples(kSamples, count), 0u);
    // The header reports nothing: EndWriting answers the flush, which succeeds.
    EXPECT_EQ(writer.EndWriting(), 0u);
    EXPECT_TRUE(destroyed);
    ASSERT_EQ(bytes.size(), 48u);
    Bytes expected(golden.begin(), golden.begin() + kWaveFieldStarts[field]);
    expected.resize(44, 0);  // the placeholder's zeros stay from there on
    expected.insert(expected.end(), kSamples, kSamples + 4);
    EXPECT_EQ(bytes, expected);
  }
}

TEST(PCMFileWriterFailures, FailingSampleWriteIsAnsweredAndNotCounted) {
  Bytes bytes;
  bool destroyed = false;
  auto* stream = new FailingStream(bytes, 2, &destroyed);
  TOV::PCMFileWriter writer;
  ASSERT_EQ(writer.BeginWriting(stream, Halyard::AudioInfo{0x4, Halyard::kVAudioSampleSize8, 8000}),
            0u);
  std::uint32_t count = 4;
  EXPECT_EQ(writer.WriteSamples(kSamples, count), kDiskFull);
  EXPECT_EQ(count, 4u);
  EXPECT_EQ(writer.WriteSamples(kSamples, count), 0u);
  ASSERT_EQ(writer.EndWriting(), 0u);
  ASSERT_EQ(bytes.size(), 48u);
  // Only the second batch counts: data size 4, RIFF size 40.
  EXPECT_EQ(bytes[4], 40u);
  EXPECT_EQ(bytes[40], 4u);
}

TEST(PCMFileWriterFailures, FailingPlaceholderWriteIsAnswered) {
  Bytes bytes;
  bool destroyed = false;
  auto* stream = new FailingStream(bytes, 1, &destroyed);
  TOV::PCMFileWriter writer;
  EXPECT_EQ(
      writer.BeginWriting(stream, Halyard::AudioInfo{0x3, Halyard::kVAudioSampleSize16, 44100}),
      kDiskFull);
  EXPECT_EQ(writer.EndWriting(), 0u);
  EXPECT_TRUE(destroyed);
}

// Offsets at which each of the BMP writer's 16 header writes starts.
const std::size_t kBmpFieldStarts[] = {0, 2, 6, 8, 10, 14, 18, 22, 26, 28, 30, 34, 38, 42, 46, 50};

TEST(BMPFileWriterFailures, FirstFailingHeaderWriteIsAnsweredAndTheStreamKept) {
  const unsigned char pixels[2 * 2 * 4] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  Bytes golden;
  golden.push_back('B');
  golden.push_back('M');
  Append32(golden, 70);
  Append16(golden, 0);
  Append16(golden, 0);
  Append32(golden, 54);
  Append32(golden, 40);
  Append32(golden, 2);
  Append32(golden, static_cast<std::uint32_t>(-2));
  Append16(golden, 1);
  Append16(golden, 32);
  Append32(golden, 0);
  Append32(golden, 16);
  for (int i = 0; i < 4; ++i) Append32(golden, 0);
  ASSERT_EQ(golden.size(), 54u);

  for (std::size_t field = 0; field < std::size(kBmpFieldStarts); ++field) {
    SCOPED_TRACE("header write " + std::to_string(field + 1) + " fails");
    Bytes bytes;
    bool destroyed = false;
    auto* stream = new FailingStream(bytes, static_cast<int>(field) + 1, &destroyed);
    {
      TOV::BMPFileWriter writer;
      ASSERT_EQ(writer.ResetStream(stream), 0u);
      ASSERT_EQ(writer.SetBMPProperties(Halyard::VSize{2, 2}, 0x80), 0u);
      std::uint32_t unused = 0;
      EXPECT_EQ(writer.WriteBMP(pixels, 8, 0, unused), kDiskFull);
      EXPECT_FALSE(destroyed);  // kept until EndWriting
      // A second stream is refused while the first is held.
      EXPECT_EQ(writer.ResetStream(stream), TOV::kErrGeneric);
    }
    EXPECT_TRUE(destroyed);  // the destructor ends the writing
    EXPECT_EQ(bytes, Bytes(golden.begin(), golden.begin() + kBmpFieldStarts[field]));
  }
}

TEST(BMPFileWriterFailures, FailingRowWritesAreNotDetected) {
  const unsigned char pixels[3 * 2 * 3] = {};
  Bytes bytes;
  bool destroyed = false;
  // The headers take writes 1 to 16; the first row is write 17.
  auto* stream = new FailingStream(bytes, 17, &destroyed);
  TOV::BMPFileWriter writer;
  ASSERT_EQ(writer.ResetStream(stream), 0u);
  ASSERT_EQ(writer.SetBMPProperties(Halyard::VSize{3, 2}, 0x20), 0u);
  std::uint32_t unused = 0;
  EXPECT_EQ(writer.WriteBMP(pixels, 9, 0, unused), 0u);
  EXPECT_TRUE(destroyed);
  // The second row follows the headers directly: 54 + 9 bytes.
  EXPECT_EQ(bytes.size(), 63u);
}

}  // namespace
}  // namespace tovtest
