// Audio sample sizes, channel masks and colour-space sizes.
#include <bit>

#include "tovfoundation/writers.h"

namespace Halyard {

std::uint32_t TOVAudioModeToNumberOfChannels(std::uint32_t mode) {
  return static_cast<std::uint32_t>(std::popcount(mode));
}

std::uint32_t TOVAudioSampleSizeToBitsPerSample(enumVAudioSampleSize size) {
  switch (static_cast<std::uint32_t>(size)) {
    case 1:
      return 8;
    case 2:
      return 16;
    case 4:
      return 20;
    case 8:
      return 24;
    case 16:
      return 32;
    case 32:
      return 64;
    case 64:
      return 32;  // 32-bit float
    case 128:
      return 8;
    default:
      return 0;
  }
}

enumVAudioSampleSize BitsPerSampleToTOVAudioSampleSize(std::uint32_t bits) {
  switch (bits) {
    case 8:
      return kVAudioSampleSize8;
    case 20:
      return kVAudioSampleSize20;
    case 24:
      return kVAudioSampleSize24;
    case 32:
      return kVAudioSampleSize32;
    case 64:
      return kVAudioSampleSize64;
    default:
      return kVAudioSampleSize16;
  }
}

std::uint32_t VColourSpacetoNumberofBytes(std::uint32_t colourSpace) {
  switch (colourSpace) {
    case 0x4:
      return 1;
    case 0x20:
    case 0x40:
    case 0x800:
    case 0x1000:
    case 0x2000:
    case 0x4000:
    case 0x10000:
    case 0x20000:
    case 0x40000:
      return 3;
    case 0x80:
    case 0x100:
    case 0x200:
    case 0x80000:
    case 0x100000:
    case 0x200000:
    case 0x400000:
    case 0x800000:
    case 0x1000000:
      return 4;
    default:
      return 0;
  }
}

}  // namespace Halyard
