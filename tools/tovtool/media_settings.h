// What `tovtool tone` and `tovtool bars` write, and the writers they share
// with the writers demo (cmd_tone.cpp, cmd_bars.cpp).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tovfoundation/tovfoundation.h"

namespace tovtool {

class Progress;

// A sine tone: 440 Hz, one second, 16-bit stereo at 48 kHz unless changed.
struct ToneSettings {
  std::uint32_t sampleRate = 48000;
  std::uint32_t audioMode = 0x3;  // stereo
  Halyard::enumVAudioSampleSize sampleSize = Halyard::kVAudioSampleSize16;
  double seconds = 1.0;
  double frequency = 440.0;
};

// The bytes of the tone's samples (the file has 44 more).
std::uint64_t ToneDataBytes(const ToneSettings& settings);

// Writes the tone to `path` through a temporary file that replaces `path`
// only when every write succeeded; throws Failure naming the file and the
// reason otherwise. `progress` is told the fraction written when not null.
void WriteTone(const std::string& path, const ToneSettings& settings, Progress* progress);

// Colour bars: 640 x 480, 4 bytes per pixel unless changed.
struct BarsSettings {
  std::int32_t width = 640;
  std::int32_t height = 480;
  std::uint32_t colourSpace = 0x80;  // 4 bytes per pixel
};

// The pixel rows of the bars, top row first, rows back to back.
std::vector<unsigned char> MakeBars(const BarsSettings& settings);

// Writes the bars to `path` through a temporary file that replaces `path`
// only when every write succeeded; throws Failure naming the file and the
// reason otherwise.
void WriteBars(const std::string& path, const BarsSettings& settings);

}  // namespace tovtool
