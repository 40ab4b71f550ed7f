// tovfoundation streams: byte order helpers.
#pragma once

#include <cstdint>

#include "tovfoundation/common.h"

namespace Halyard {

// ---------------------------------------------------------------------------
// Byte order helpers
// ---------------------------------------------------------------------------

// Reverses `count` bytes in place: the first with the last, the second with
// the second-to-last, and so on. A count of 0, 1 or less changes nothing.
// Flip of 01 02 03 ⇒ 03 02 01.
TOV_API void Flip(void* data, std::int32_t count);
// FlipIntBytes(0x11223344) == 0x44332211.
TOV_API std::uint32_t FlipIntBytes(std::uint32_t value);
// The signed form of FlipIntBytes.
TOV_API std::int32_t FlipInteger(std::int32_t value);
// FlipShortBytes(0x1234) == 0x3412.
TOV_API std::uint16_t FlipShortBytes(std::uint16_t value);
// The signed form of FlipShortBytes.
TOV_API std::int16_t FlipShort(std::int16_t value);
// Swaps the two bytes of every code unit of `text` in place.
TOV_API void FlipString(UTF16String& text);

}  // namespace Halyard
