// Fuzz target for timecode text: Timecode::StringToTime and Timecode::SetTime
// with text, in every format code (and an unknown one), every style and every
// predefined rate (plus the sentinel, a fractional and a negative rate), then
// GetString, IncrementHMSF and IncrementFeetFrames on the result.
//
// Input: byte 0 picks the format, byte 1 the style flags, byte 2 the rate,
// bytes 3-10 four 16-bit increments; the rest is UTF-16 text (two bytes per
// code unit, little-endian).
//
// Run (fuzz preset): build/fuzz/bin/fuzz_timecode -max_total_time=120 CORPUS_COPY
// with CORPUS_COPY a scratch copy of fuzz/corpus/timecode.
#include <cstddef>
#include <cstdint>

#include "tovfoundation/time.h"

namespace {

using TOV::FrameRate;
using TOV::Time;
using TOV::Timecode;
namespace FR = TOV::FrameRates;

const std::uint32_t kFormats[] = {100, 101, 102, 103, 104, 105, 106, 107,
                                  108, 109, 110, 111, 112, 200, 201, 7};

const FrameRate kRates[] = {
    FR::kFrameRate_Zero,       FR::kFrameRate_Video15,     FR::kFrameRate_23976,
    FR::kFrameRate_Film24,     FR::kFrameRate_VideoPAL,    FR::kFrameRate_VideoNTSC,
    FR::kFrameRate_Video30,    FR::kFrameRate_VideoPAL_HD, FR::kFrameRate_VideoNTSC_HD,
    FR::kFrameRate_Video60,    FR::kFrameRate_Video100,    FR::kFrameRate_Audio22050,
    FR::kFrameRate_Audio32000, FR::kFrameRate_Audio44100,  FR::kFrameRate_Audio48000,
    FR::kFrameRate_Audio88200, FR::kFrameRate_Audio96000,  FR::kFrameRate_Audio192000,
    FrameRate(29.97),          FrameRate(-25.0),           FrameRate(0.3)};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 11) return 0;
  const std::uint32_t format = kFormats[data[0] % std::size(kFormats)];
  const FrameRate rate = kRates[data[2] % std::size(kRates)];
  Timecode::Style style;
  style.showHours = (data[1] & 1) ? 1 : (data[1] & 2) ? 0 : 7;
  style.noLeadingZeros = (data[1] & 4) != 0;
  style.showSign = (data[1] & 8) != 0;
  style.subtractOneFrame = (data[1] & 16) != 0;
  std::int16_t steps[4];
  for (int i = 0; i < 4; ++i) {
    steps[i] = static_cast<std::int16_t>(data[3 + 2 * i] | (data[4 + 2 * i] << 8));
  }
  UTF16String text;
  for (std::size_t at = 11; at + 1 < size; at += 2) {
    text.push_back(static_cast<unsigned short>(data[at] | (data[at + 1] << 8)));
  }

  const Time parsed = Timecode::StringToTime(text, rate, format, style.subtractOneFrame);
  Timecode tc(Time(), rate, format, style);
  tc.SetTime(text);
  // SetTime takes one frame off what the parser added, so GetTime gives it back.
  if (tc.GetTime() != parsed) __builtin_trap();
  (void)tc.GetString();
  tc.IncrementHMSF(steps[0], steps[1], steps[2], steps[3]);
  (void)tc.GetString();
  tc.IncrementFeetFrames(steps[0], steps[3]);
  (void)tc.GetString();
  tc.SetFormat(kFormats[data[1] % std::size(kFormats)], rate);
  (void)tc.GetString();
  const Timecode copy(tc);
  (void)copy.GetString();
  return 0;
}
