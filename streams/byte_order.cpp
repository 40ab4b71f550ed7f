// Byte order reversal for the streams and their string and buffer helpers.
#include <cstdint>
#include <utility>

#include "tovfoundation/streams.h"

namespace Halyard {

void Flip(void* data, std::int32_t count) {
  if (data == nullptr || count < 2) return;
  auto* bytes = static_cast<unsigned char*>(data);
  std::int32_t front = 0;
  std::int32_t back = count - 1;
  while (front < back) std::swap(bytes[front++], bytes[back--]);
}

std::uint32_t FlipIntBytes(std::uint32_t value) {
  return ((value & 0x000000FFu) << 24) | ((value & 0x0000FF00u) << 8) |
         ((value & 0x00FF0000u) >> 8) | ((value & 0xFF000000u) >> 24);
}

std::int32_t FlipInteger(std::int32_t value) {
  return static_cast<std::int32_t>(FlipIntBytes(static_cast<std::uint32_t>(value)));
}

std::uint16_t FlipShortBytes(std::uint16_t value) {
  return static_cast<std::uint16_t>(((value & 0x00FFu) << 8) | ((value & 0xFF00u) >> 8));
}

std::int16_t FlipShort(std::int16_t value) {
  return static_cast<std::int16_t>(FlipShortBytes(static_cast<std::uint16_t>(value)));
}

void FlipString(UTF16String& text) {
  for (auto& unit : text) unit = FlipShortBytes(unit);
}

}  // namespace Halyard
