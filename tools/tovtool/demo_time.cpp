// tovtool demo: time, frame rates and timecode.
#include <ostream>

#include "tool.h"
#include "tovfoundation/tovfoundation.h"

namespace {

void DemoTime(std::ostream& out) {
  using namespace basalt::literals;
  using TOV::Time;
  using TOV::Timecode;
  namespace FR = TOV::FrameRates;

  const Time oneSecond(1.0);
  out << "one second is " << oneSecond.GetTicks() << " ticks; a 29.97 frame is "
      << FR::kFrameRate_VideoNTSC.GetTicksPerFrame() << " ticks, a 48 kHz sample "
      << FR::kFrameRate_Audio48000.GetTicksPerFrame() << '\n';
  out << "24 fps slower than 25 fps: "
      << (FR::kFrameRate_Film24 < FR::kFrameRate_VideoPAL ? "yes" : "no") << '\n';

  Timecode tc(Time(1799, FR::kFrameRate_VideoNTSC), FR::kFrameRate_VideoNTSC,
              TOV::kTimecodeFormat_2997DropFrame);
  out << "frame 1799 at 29.97 drop-frame: " << basalt::UTF16to8(tc.GetString());
  tc.IncrementHMSF(0, 0, 0, 1);
  out << ", one frame on: " << basalt::UTF16to8(tc.GetString()) << " (numbers 0 and 1 dropped)\n";

  const Time parsed = Timecode::StringToTime(u"00;10;00;00"_u16, FR::kFrameRate_VideoNTSC,
                                             TOV::kTimecodeFormat_2997DropFrame, false);
  out << "00;10;00;00 is frame " << parsed.ToFrame64(FR::kFrameRate_VideoNTSC) << ", " << parsed
      << " s\n";

  Timecode film(Time(17, FR::kFrameRate_Film24), FR::kFrameRate_Film24,
                TOV::kTimecodeFormat_FeetFrames16);
  out << "17 frames of 16 mm film: " << basalt::UTF16to8(film.GetString()) << '\n';

  Timecode negative(Time(-1.0), FR::kFrameRate_VideoPAL, TOV::kTimecodeFormat_25);
  out << "minus one second at 25 fps: " << basalt::UTF16to8(negative.GetString());
  Timecode::Style signedStyle;
  signedStyle.showSign = true;
  negative.SetStyle(signedStyle);
  out << " (with sign: " << basalt::UTF16to8(negative.GetString()) << ")\n";

  const Time rejected =
      Timecode::StringToTime(u"12:3a"_u16, FR::kFrameRate_VideoPAL, TOV::kTimecodeFormat_25, false);
  out << "\"12:3a\" is " << (rejected == TOV::kTime_Invalid ? "rejected" : "accepted") << '\n';

  const Halyard::AudioInfo audio{3, Halyard::kVAudioSampleSize16, 48000};
  const Halyard::HaldTimeCode record = Halyard::NumSamplesToHaldTimeCode(audio, 48000);
  out << "48000 samples at 48 kHz as a legacy record: unit " << record.unit << ", " << record.value
      << " ms\n";
  out << "local time of day: " << basalt::UTF16to8(Halyard::TimeUtils::GetSystemTimeAsString())
      << '\n';
}

TOVTOOL_DEMO_SECTION({20, "Time, frame rates and timecode", DemoTime});

}  // namespace
