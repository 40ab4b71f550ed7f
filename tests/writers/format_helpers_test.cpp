// Audio sample sizes, channel masks and colour-space sizes.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tovfoundation/writers.h"

using namespace Halyard;

namespace {

TEST(AudioMode, ChannelCountIsNumberOfSetBits) {
  EXPECT_EQ(TOVAudioModeToNumberOfChannels(0x3F), 6u);
  EXPECT_EQ(TOVAudioModeToNumberOfChannels(0x3), 2u);
  EXPECT_EQ(TOVAudioModeToNumberOfChannels(0x1), 1u);
  EXPECT_EQ(TOVAudioModeToNumberOfChannels(0x80000001u), 2u);
  EXPECT_EQ(TOVAudioModeToNumberOfChannels(0xFFFFFFFFu), 32u);
}

TEST(AudioMode, NoBitsGivesNoChannels) { EXPECT_EQ(TOVAudioModeToNumberOfChannels(0), 0u); }

TEST(AudioSampleSize, BitsPerSampleTable) {
  struct Row {
    std::uint32_t size;
    std::uint32_t bits;
  };
  const Row rows[] = {{1, 8},   {2, 16},  {4, 20}, {8, 24}, {16, 32}, {32, 64},
                      {64, 32}, {128, 8}, {0, 0},  {3, 0},  {256, 0}, {0xFFFFFFFFu, 0}};
  for (const Row& row : rows) {
    SCOPED_TRACE("size " + std::to_string(row.size));
    EXPECT_EQ(TOVAudioSampleSizeToBitsPerSample(static_cast<enumVAudioSampleSize>(row.size)),
              row.bits);
  }
}

TEST(AudioSampleSize, SampleSizeFromBitsTable) {
  struct Row {
    std::uint32_t bits;
    std::uint32_t size;
  };
  const Row rows[] = {{8, 1},  {20, 4}, {24, 8}, {32, 16}, {64, 32}, {16, 2},
                      {12, 2}, {4, 2},  {72, 2}, {0, 2},   {7, 2},   {0xFFFFFFFFu, 2}};
  for (const Row& row : rows) {
    SCOPED_TRACE("bits " + std::to_string(row.bits));
    EXPECT_EQ(static_cast<std::uint32_t>(BitsPerSampleToTOVAudioSampleSize(row.bits)), row.size);
  }
}

TEST(AudioSampleSize, ThirtyTwoBitsMapBackToIntegerNeverFloat) {
  EXPECT_EQ(BitsPerSampleToTOVAudioSampleSize(
                TOVAudioSampleSizeToBitsPerSample(kVAudioSampleSize32Float)),
            kVAudioSampleSize32);
}

TEST(AudioSampleSize, EightBitsMapBackToFirstEightBitCode) {
  EXPECT_EQ(
      BitsPerSampleToTOVAudioSampleSize(TOVAudioSampleSizeToBitsPerSample(kVAudioSampleSize8Alt)),
      kVAudioSampleSize8);
}

TEST(ColourSpace, BytesPerPixelTable) {
  struct Row {
    std::uint32_t code;
    std::uint32_t bytes;
  };
  const Row rows[] = {{0x4, 1},      {0x20, 3},      {0x40, 3},     {0x80, 4},       {0x100, 4},
                      {0x200, 4},    {0x800, 3},     {0x1000, 3},   {0x2000, 3},     {0x4000, 3},
                      {0x10000, 3},  {0x20000, 3},   {0x40000, 3},  {0x80000, 4},    {0x100000, 4},
                      {0x200000, 4}, {0x400000, 4},  {0x800000, 4}, {0x1000000, 4},  {0x8, 0},
                      {0x0, 0},      {0x1, 0},       {0x2, 0},      {0x10, 0},       {0x400, 0},
                      {0x8000, 0},   {0x2000000, 0}, {0x60, 0},     {0xFFFFFFFFu, 0}};
  for (const Row& row : rows) {
    SCOPED_TRACE("colour space " + std::to_string(row.code));
    EXPECT_EQ(VColourSpacetoNumberofBytes(row.code), row.bytes);
  }
}

TEST(ColourSpace, HeaderExamples) {
  EXPECT_EQ(VColourSpacetoNumberofBytes(0x8), 0u);
  EXPECT_EQ(VColourSpacetoNumberofBytes(0x4000), 3u);
  EXPECT_EQ(VColourSpacetoNumberofBytes(0x1000000), 4u);
}

}  // namespace
