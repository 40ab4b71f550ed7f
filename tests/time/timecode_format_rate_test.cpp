// The rate each timecode format counts at.
#include <gtest/gtest.h>

#include "tovfoundation/time.h"

namespace {

using TOV::FrameRate;
using TOV::Timecode;
namespace FR = TOV::FrameRates;

TEST(TimecodeFormatRate, FixedFormatsGiveTheirNominalRate) {
  const FrameRate own = FR::kFrameRate_Film24;
  EXPECT_EQ(Timecode::GetFormatFrameRate(TOV::kTimecodeFormat_25, own), FR::kFrameRate_VideoPAL);
  EXPECT_EQ(Timecode::GetFormatFrameRate(TOV::kTimecodeFormat_2997DropFrame, own),
            FR::kFrameRate_VideoNTSC);
  EXPECT_EQ(Timecode::GetFormatFrameRate(TOV::kTimecodeFormat_5994NonDrop, own),
            FR::kFrameRate_VideoNTSC_HD);
  EXPECT_EQ(Timecode::GetFormatFrameRate(TOV::kTimecodeFormat_Milliseconds, own),
            FrameRate(1000.0));
}

TEST(TimecodeFormatRate, CountingFormatsGiveTheCallersRate) {
  const FrameRate own = FR::kFrameRate_VideoPAL_HD;
  EXPECT_EQ(Timecode::GetFormatFrameRate(TOV::kTimecodeFormat_Frames, own), own);
  EXPECT_EQ(Timecode::GetFormatFrameRate(TOV::kTimecodeFormat_FeetFrames16, own), own);
  EXPECT_EQ(Timecode::GetFormatFrameRate(TOV::kTimecodeFormat_OwnRate, own), own);
}

TEST(TimecodeFormatRate, UnknownFormatHasNoRate) {
  EXPECT_EQ(Timecode::GetFormatFrameRate(999, FR::kFrameRate_Film24), FrameRate());
}

}  // namespace
