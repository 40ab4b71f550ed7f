// Legacy time records: sample and frame count conversions, system clock.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "basalt/utf.h"
#include "tovfoundation/time.h"

namespace {

using Halyard::AudioInfo;
using Halyard::HaldTimeCode;
using Halyard::VideoInfo;

AudioInfo Audio(std::uint32_t rate) { return AudioInfo{3, Halyard::kVAudioSampleSize16, rate}; }
VideoInfo Video(std::uint32_t numerator, std::uint32_t denominator) {
  return VideoInfo{{1920, 1080}, numerator, denominator};
}

TEST(LegacyTime, SamplesToMilliseconds) {
  const HaldTimeCode second = Halyard::NumSamplesToHaldTimeCode(Audio(48000), 48000);
  EXPECT_EQ(second.unit, 0u);
  EXPECT_EQ(second.value, 1000u);
  EXPECT_EQ(Halyard::NumSamplesToHaldTimeCode(Audio(48000), 47999).value, 999u);
  EXPECT_EQ(Halyard::NumSamplesToHaldTimeCode(Audio(48000), -47999).value,
            static_cast<std::uint32_t>(-999));
}

TEST(LegacyTime, SamplesToMillisecondsRoundsTheRateThroughSinglePrecision) {
  // 16777217 is 16777216 in single precision: 16777216 samples are exactly 1000 ms.
  EXPECT_EQ(Halyard::NumSamplesToHaldTimeCode(Audio(16777217), 16777216).value, 1000u);
}

TEST(LegacyTime, SamplesToMillisecondsKeepsTheLow32Bits) {
  // 2^32 + 5 milliseconds at 1000 samples per second.
  const HaldTimeCode tc =
      Halyard::NumSamplesToHaldTimeCode(Audio(1000), (std::int64_t{1} << 32) + 5);
  EXPECT_EQ(tc.value, 5u);
}

TEST(LegacyTime, ZeroSampleRateGivesZero) {
  const HaldTimeCode tc = Halyard::NumSamplesToHaldTimeCode(Audio(0), 48000);
  EXPECT_EQ(tc.unit, 0u);
  EXPECT_EQ(tc.value, 0u);
}

TEST(LegacyTime, RecordToSamples) {
  EXPECT_EQ(Halyard::HaldTimeCodeToNumSamples(Audio(44100), HaldTimeCode{0, 1000}), 44100);
  EXPECT_EQ(Halyard::HaldTimeCodeToNumSamples(Audio(44100), HaldTimeCode{1, 10000000}), 44100);
  EXPECT_EQ(Halyard::HaldTimeCodeToNumSamples(
                Audio(44100), HaldTimeCode{1, static_cast<std::uint64_t>(-10000000)}),
            -44100);
  // Unit 0 reads the low 32 bits only.
  EXPECT_EQ(Halyard::HaldTimeCodeToNumSamples(Audio(44100), HaldTimeCode{0, 0xABCD000003E8ull}),
            44100);
  // Truncated, not rounded: 1 ms at 44100 is 44.1 samples.
  EXPECT_EQ(Halyard::HaldTimeCodeToNumSamples(Audio(44100), HaldTimeCode{0, 1}), 44);
  EXPECT_EQ(Halyard::HaldTimeCodeToNumSamples(Audio(0), HaldTimeCode{0, 1000}), 0);
}

TEST(LegacyTime, UnitThreePassesTheLow32BitsAndUnitTwoGivesZero) {
  const HaldTimeCode count{3, 0x1234567890ull};
  EXPECT_EQ(Halyard::HaldTimeCodeToNumSamples(Audio(48000), count), 0x34567890);
  EXPECT_EQ(Halyard::HaldTimeCodeToNumFrames(Video(30, 1), count), 0x34567890u);
  EXPECT_EQ(Halyard::HaldTimeCodeToNumSamples(Audio(48000), HaldTimeCode{2, 1000}), 0);
  EXPECT_EQ(Halyard::HaldTimeCodeToNumFrames(Video(30, 1), HaldTimeCode{2, 1000}), 0u);
  EXPECT_EQ(Halyard::HaldTimeCodeToNumSamples(Audio(48000), HaldTimeCode{7, 1000}), 0);
  EXPECT_EQ(Halyard::HaldTimeCodeToNumFrames(Video(30, 1), HaldTimeCode{0xFFFFFFFF, 1000}), 0u);
}

TEST(LegacyTime, RecordToFramesRoundsHalfUp) {
  EXPECT_EQ(Halyard::HaldTimeCodeToNumFrames(Video(4000, 1), HaldTimeCode{0, 2}), 1u);
  EXPECT_EQ(Halyard::HaldTimeCodeToNumFrames(Video(4000, 1), HaldTimeCode{0, 1}), 0u);
  // Q = 30000 / 1001 in single precision (29.970029830932617).
  EXPECT_EQ(Halyard::HaldTimeCodeToNumFrames(Video(30000, 1001), HaldTimeCode{0, 1000}), 33367u);
  EXPECT_EQ(Halyard::HaldTimeCodeToNumFrames(Video(30000, 1001), HaldTimeCode{1, 10000000}),
            static_cast<std::uint32_t>(3336666682153ull));
}

TEST(LegacyTime, RecordToFramesNarrowsTo32Bits) {
  // 4294967295 × 1000 / 0.5 = 8589934590000 frames ⇒ low 32 bits.
  EXPECT_EQ(Halyard::HaldTimeCodeToNumFrames(Video(1, 2), HaldTimeCode{0, 0xFFFFFFFFull}),
            static_cast<std::uint32_t>(8589934590000ull));
  // A negative unit-1 value keeps the low bits of the negative count.
  EXPECT_EQ(Halyard::HaldTimeCodeToNumFrames(
                Video(1, 1), HaldTimeCode{1, static_cast<std::uint64_t>(std::int64_t{-1})}),
            static_cast<std::uint32_t>(-9999999));
}

TEST(LegacyTime, ZeroFrameRatePairGivesZero) {
  EXPECT_EQ(Halyard::HaldTimeCodeToNumFrames(Video(0, 1), HaldTimeCode{0, 1000}), 0u);
  EXPECT_EQ(Halyard::HaldTimeCodeToNumFrames(Video(0, 0), HaldTimeCode{1, 1000}), 0u);
  EXPECT_EQ(Halyard::HaldTimeCodeToNumFrames(Video(30, 0), HaldTimeCode{0, 1000}), 0u);
}

TEST(LegacyTime, GetSystemTimeWithNullDoesNothing) { Halyard::TimeUtils::GetSystemTime(nullptr); }

TEST(LegacyTime, GetSystemTimeFillsUtcFields) {
  Halyard::VDateTime now;
  std::memset(&now, 0xAB, sizeof now);
  // The system clock itself, read precisely: std::time may come from a
  // coarse clock a few milliseconds behind, and miss a second that just began.
  const std::time_t before = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  Halyard::TimeUtils::GetSystemTime(&now);
  const std::time_t after = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  EXPECT_EQ(now.kind, 2);
  EXPECT_LT(now.milliseconds, 1000);
  bool matched = false;
  for (std::time_t t = before; t <= after; ++t) {
    const std::tm utc = *std::gmtime(&t);  // this test's thread is the only caller
    matched = matched || (now.year == utc.tm_year + 1900 && now.month == utc.tm_mon + 1 &&
                          now.day == utc.tm_mday && now.hour == utc.tm_hour &&
                          now.minute == utc.tm_min && now.second == utc.tm_sec);
  }
  EXPECT_TRUE(matched) << now.year << "-" << int(now.month) << "-" << int(now.day) << " "
                       << int(now.hour) << ":" << int(now.minute) << ":" << int(now.second);
}

}  // namespace
