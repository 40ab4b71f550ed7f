// Every frame of a day in the drop-frame formats and every frame of an hour in
// the other formats, through text and back.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "basalt/utf.h"
#include "tovfoundation/time.h"

namespace {

using TOV::FrameRate;
using TOV::Time;
using TOV::Timecode;
namespace FR = TOV::FrameRates;

// A drop-frame label counter written from the counting rule alone: frame
// numbers run 0 .. P-1 in every second, and at second 0 of every minute not
// divisible by ten the numbers 0 .. D-1 are skipped.
class DropFrameCounter {
 public:
  DropFrameCounter(int perSecond, int dropped) : mPerSecond(perSecond), mDropped(dropped) {}

  void Advance() {
    if (++mFrame < mPerSecond) return;
    mFrame = 0;
    if (++mSecond < 60) return;
    mSecond = 0;
    if (++mMinute == 60) {
      mMinute = 0;
      ++mHour;
    }
    if (mMinute % 10 != 0) mFrame = mDropped;
  }

  std::string Label() const {
    char text[32];
    std::snprintf(text, sizeof text, "%02d;%02d;%02d;%02d", mHour, mMinute, mSecond, mFrame);
    return text;
  }

 private:
  int mPerSecond;
  int mDropped;
  int mHour = 0, mMinute = 0, mSecond = 0, mFrame = 0;
};

void CheckWholeDayOfDropFrame(std::uint32_t format, FrameRate rate, int perSecond, int dropped) {
  const std::int64_t framesPerDay = 24 * (6 * (10 * 60 * perSecond - 9 * dropped));
  DropFrameCounter counter(perSecond, dropped);
  Timecode tc(Time(), rate, format);
  int failures = 0;
  for (std::int64_t frame = 0; frame < framesPerDay && failures < 10; ++frame, counter.Advance()) {
    const Time time(frame, rate);
    tc.SetTime(time);
    const UTF16String text = tc.GetString();
    const std::string label = counter.Label();
    if (basalt::UTF16to8(text) != label) {
      ADD_FAILURE() << "frame " << frame << ": " << basalt::UTF16to8(text) << " != " << label;
      ++failures;
    }
    if (Timecode::StringToTime(text, rate, format, false) != time) {
      ADD_FAILURE() << "frame " << frame << ": " << label << " reads back differently";
      ++failures;
    }
  }
  EXPECT_EQ(counter.Label(), "24;00;00;00");
}

TEST(TimecodeExhaustive, EveryFrameOfADayAt2997DropFrameMatchesTheCountingRule) {
  CheckWholeDayOfDropFrame(TOV::kTimecodeFormat_2997DropFrame, FR::kFrameRate_VideoNTSC, 30, 2);
}

TEST(TimecodeExhaustive, EveryFrameOfADayAt5994DropFrameMatchesTheCountingRule) {
  CheckWholeDayOfDropFrame(TOV::kTimecodeFormat_5994DropFrame, FR::kFrameRate_VideoNTSC_HD, 60, 4);
}

void CheckHourRoundTrip(std::uint32_t format, FrameRate rate, std::int64_t framesPerHour) {
  Timecode tc(Time(), rate, format);
  int failures = 0;
  for (std::int64_t frame = 0; frame < framesPerHour && failures < 10; ++frame) {
    const Time time(frame, rate);
    tc.SetTime(time);
    const UTF16String text = tc.GetString();
    const Time back = Timecode::StringToTime(text, rate, format, false);
    if (back != time) {
      ADD_FAILURE() << "format " << format << " frame " << frame << ": " << basalt::UTF16to8(text)
                    << " reads back as " << back;
      ++failures;
    }
  }
}

TEST(TimecodeExhaustive, EveryFrameOfAnHourRoundTripsInTheFixedRateFormats) {
  struct Row {
    std::uint32_t format;
    FrameRate rate;
    std::int64_t perSecond;
  };
  const Row rows[] = {
      {100, FR::kFrameRate_Film24, 24},      {101, FR::kFrameRate_VideoPAL, 25},
      {103, FR::kFrameRate_VideoNTSC, 30},   {104, FR::kFrameRate_Video30, 30},
      {105, FR::kFrameRate_VideoPAL_HD, 50}, {107, FR::kFrameRate_VideoNTSC_HD, 60},
      {108, FR::kFrameRate_Video60, 60},     {110, FR::kFrameRate_23976, 24},
      {201, FrameRate(1000.0), 1000},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.format);
    CheckHourRoundTrip(row.format, row.rate, 3600 * row.perSecond);
  }
}

TEST(TimecodeExhaustive, EveryFrameOfAnHourRoundTripsInOwnRateAtWholeRates) {
  for (const double perSecond : {1.0, 10.0, 15.0, 24.0, 25.0, 30.0, 50.0, 60.0, 100.0, 120.0}) {
    SCOPED_TRACE(perSecond);
    CheckHourRoundTrip(TOV::kTimecodeFormat_OwnRate, FrameRate(perSecond),
                       3600 * static_cast<std::int64_t>(perSecond));
  }
}

}  // namespace
