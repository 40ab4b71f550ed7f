// OS layer: globally unique identifiers.
//
// CoCreateGuid makes a fresh random identifier (RFC 4122 version 4, variant
// 10xx) in the standard GUID layout:
//
//   tovimpl::platform::Guid id{};
//   if (tovimpl::platform::CoCreateGuid(&id) != 0) return kErrCreateFailed;
//
// The POSIX backend draws the 122 random bits from the kernel's random source
// (getrandom); the Win32 backend calls CoCreateGuid itself.
#pragma once

#include <cstdint>

namespace tovimpl::platform {

// The standard GUID layout: Data1, Data2, Data3 and eight bytes.
struct Guid {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};

// HRESULT values CoCreateGuid answers.
inline constexpr std::int32_t kSOk = 0;
inline constexpr std::int32_t kEFail = static_cast<std::int32_t>(0x80004005u);
inline constexpr std::int32_t kEPointer = static_cast<std::int32_t>(0x80004003u);

// CoCreateGuid. Fills *guid with a new random version-4 identifier and returns
// kSOk. A null pointer gives kEPointer. When the random source fails, returns
// kEFail, sets the last error, and leaves *guid untouched.
std::int32_t CoCreateGuid(Guid* guid);

// Test seam: replaces the random source. `source` fills `size` bytes and
// returns true, or returns false to simulate a failing source. Null restores
// the kernel's source. Not thread-safe against concurrent CoCreateGuid calls.
using RandomSource = bool (*)(void* bytes, std::uint32_t size);
void SetRandomSourceForTesting(RandomSource source);

}  // namespace tovimpl::platform
