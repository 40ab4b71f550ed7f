// The README's tour, "Time and timecode", as a program the tests build and run.
#include <iostream>

#include "tovfoundation/tovfoundation.h"

using namespace basalt::literals;

int main() {
  // [readme]
  using namespace TOV;
  Time start(1.5);                                             // 1.5 s
  Time end = start + Time(48, FrameRates::kFrameRate_Film24);  // + 48 frames
  Timecode tc(end, FrameRates::kFrameRate_VideoNTSC, kTimecodeFormat_2997DropFrame);
  std::cout << basalt::UTF16to8(tc.GetString()) << '\n';  // prints 00;00;03;14
  Time t = Timecode::StringToTime(u"00;01;00;02"_u16, FrameRates::kFrameRate_VideoNTSC,
                                  kTimecodeFormat_2997DropFrame, false);
  std::cout << t.ToFrame64(FrameRates::kFrameRate_VideoNTSC) << '\n';  // prints 1800
  // [/readme]
}
