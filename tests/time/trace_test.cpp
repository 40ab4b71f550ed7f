// Timecode trace lines: exact text through the sink.
#include <gtest/gtest.h>

#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

#include "basalt/utf.h"
#include "tovfoundation/time.h"

namespace {

using namespace basalt::literals;
using TOV::FrameRate;
using TOV::Time;
using TOV::Timecode;
namespace FR = TOV::FrameRates;

std::mutex gLinesLock;
std::vector<std::string> gLines;

void Collect(const char* line) {
  std::lock_guard<std::mutex> lock(gLinesLock);
  gLines.emplace_back(line);
}

// Installs the collecting sink for one test and removes it afterwards.
class TimecodeTrace : public ::testing::Test {
 protected:
  void SetUp() override {
    gLines.clear();
    mPrevious = TOV::SetTimecodeTraceSink(&Collect);
  }
  void TearDown() override { TOV::SetTimecodeTraceSink(mPrevious); }

  std::vector<std::string> Take() {
    std::vector<std::string> lines;
    lines.swap(gLines);
    return lines;
  }

 private:
  TOV::TimecodeTraceSink mPrevious = nullptr;
};

using Lines = std::vector<std::string>;

TEST_F(TimecodeTrace, SetTimeWritesInputAndFields) {
  Timecode tc(Time(), FR::kFrameRate_VideoPAL, 101);
  Take();
  tc.SetTime(Time(1.5));
  EXPECT_EQ(Take(), (Lines{"SetTime(t): inTime: 1.5",
                           "TimeToHMSF(): Exit: mTime: 1.5 mHours: 0 mMinutes: 0 mSeconds: 1 "
                           "mFrames: 12"}));
  tc.SetTime(Time(-0.25));
  EXPECT_EQ(Take(), (Lines{"SetTime(t): inTime: -0.25",
                           "TimeToHMSF(): Exit: mTime: -0.25 mHours: 0 mMinutes: 0 mSeconds: 0 "
                           "mFrames: 6"}));
}

TEST_F(TimecodeTrace, ConstructionWritesTheFields) {
  Timecode frames(Time(2.0), FR::kFrameRate_Film24, 109);
  EXPECT_EQ(Take(), (Lines{"TimeToHMSF(): Exit: mTime: 2 mHours: 0 mMinutes: 0 mSeconds: 0 "
                           "mFrames: 48"}));
  Timecode drop(Time(1800, FR::kFrameRate_VideoNTSC), FR::kFrameRate_VideoNTSC, 102);
  EXPECT_EQ(Take(), (Lines{"TimeToHMSF(): Exit: mTime: 60.06 mHours: 0 mMinutes: 1 mSeconds: 0 "
                           "mFrames: 2"}));
}

TEST_F(TimecodeTrace, DropFrameParsingWritesTheTotal) {
  Timecode::StringToTime(u"00;01;00;02"_u16, FR::kFrameRate_VideoNTSC, 102, false);
  EXPECT_EQ(Take(), (Lines{"HMSFToTime(): Hours: 0 Minutes: 1 Seconds: 0 Frames: 2 Total "
                           "Frames: 1800",
                           "HMSFToTime(): Exit: time: 60.06"}));
}

TEST_F(TimecodeTrace, NonDropParsingWritesOnlyTheExit) {
  Timecode::StringToTime(u"-00:00:01:00"_u16, FR::kFrameRate_VideoPAL, 101, false);
  EXPECT_EQ(Take(), (Lines{"HMSFToTime(): Exit: time: -1"}));
  // Plain frame counts and feet never reach the field conversion.
  Timecode::StringToTime(u"1234"_u16, FR::kFrameRate_VideoPAL, 109, false);
  Timecode::StringToTime(u"1+01"_u16, FR::kFrameRate_VideoPAL, 111, false);
  EXPECT_EQ(Take(), Lines{});
}

TEST_F(TimecodeTrace, SetTimeWithTextParsesThenWritesFields) {
  Timecode tc(Time(), FR::kFrameRate_VideoPAL, 101);
  Take();
  tc.SetTime(u"00:00:02:05"_u16);
  EXPECT_EQ(Take(), (Lines{"HMSFToTime(): Exit: time: 2.2",
                           "TimeToHMSF(): Exit: mTime: 2.2 mHours: 0 mMinutes: 0 mSeconds: 2 "
                           "mFrames: 5"}));
}

TEST_F(TimecodeTrace, IncrementHMSFWritesInputEntryExitAndTime) {
  Timecode tc(Time(1.5), FR::kFrameRate_VideoPAL, 101);
  Take();
  tc.IncrementHMSF(0, 0, 0, 1);
  EXPECT_EQ(Take(), (Lines{"IncrementHMSF(): inHours: 0 inMinutes: 0 inSeconds: 0 inFrames: 1",
                           "IncrementHMSF(): Entry: mHours: 0 mMinutes: 0 mSeconds: 1 mFrames: 12",
                           "IncrementHMSF(): Exit: mHours: 0 mMinutes: 0 mSeconds: 1 mFrames: 13",
                           "HMSFToTime(): Exit: time: 1.52"}));
  Timecode drop(Time(1799, FR::kFrameRate_VideoNTSC), FR::kFrameRate_VideoNTSC, 102);
  Take();
  drop.IncrementHMSF(1, -2, 3, -4);
  EXPECT_EQ(Take(), (Lines{"IncrementHMSF(): inHours: 1 inMinutes: -2 inSeconds: 3 inFrames: -4",
                           "IncrementHMSF(): Entry: mHours: 0 mMinutes: 0 mSeconds: 59 mFrames: 29",
                           "IncrementHMSF(): Exit: mHours: 0 mMinutes: 59 mSeconds: 2 mFrames: 25",
                           "HMSFToTime(): Hours: 0 Minutes: 59 Seconds: 2 Frames: 25 Total Frames: "
                           "106177",
                           "HMSFToTime(): Exit: time: 3542.77"}));
}

TEST_F(TimecodeTrace, IncrementFeetFramesWritesItsInput) {
  Timecode tc(Time(), FR::kFrameRate_Film24, 111);
  Take();
  tc.IncrementFeetFrames(2, -3);
  EXPECT_EQ(Take(), (Lines{"IncrementFeetFrames(): inFeet: 2 inFrames: -3"}));
}

TEST_F(TimecodeTrace, QueriesWriteNothing) {
  Timecode tc(Time(1.0), FR::kFrameRate_VideoPAL, 101);
  Take();
  tc.GetString();
  tc.GetTime();
  tc.SetStyle(Timecode::Style{});
  EXPECT_EQ(Take(), Lines{});
}

TEST(TimecodeTraceSink, InstallReturnsThePreviousSink) {
  const TOV::TimecodeTraceSink before = TOV::SetTimecodeTraceSink(&Collect);
  EXPECT_EQ(TOV::SetTimecodeTraceSink(nullptr), &Collect);
  EXPECT_EQ(TOV::SetTimecodeTraceSink(before), nullptr);
}

}  // namespace
