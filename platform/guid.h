// OS layer: globally unique identifiers.
//
// NewGuid makes a fresh random identifier (RFC 4122 version 4, variant 10xx)
// in the standard GUID layout, or gives the Windows error code of the failure:
//
//   const tovimpl::platform::Result<tovimpl::platform::Guid> id =
//       tovimpl::platform::NewGuid();
//   if (!id) return kErrCreateFailed;            // id.Error(): why
//
// The POSIX backend draws the 122 random bits from the kernel's random source
// (getrandom); the Win32 backend calls the system's CoCreateGuid. The test
// seam and the version-4 layout are portable (platform/guid.cpp).
#pragma once

#include <cstdint>

#include "platform/result.h"

namespace tovimpl::platform {

// The standard GUID layout: Data1, Data2, Data3 and eight bytes.
struct Guid {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};

// A new random version-4 identifier. Fails with the system's code when the
// random source fails (kErrorGenFailure, 31, for the test seam's failure or
// a system answer that carries no Windows code).
Result<Guid> NewGuid();

// The version-4 identifier made of 16 random bytes: Data1, Data2 and Data3
// big-endian from bytes 0-7, Data4 from bytes 8-15, with the version nibble
// set to 4 and the variant bits to 10xx.
Guid GuidFromRandomBytes(const unsigned char (&bytes)[16]);

// Test seam: replaces the random source. `source` fills `size` bytes and
// returns true, or returns false to simulate a failing source. Null restores
// the system's source. Not thread-safe against concurrent NewGuid calls.
using RandomSource = bool (*)(void* bytes, std::uint32_t size);
void SetRandomSourceForTesting(RandomSource source);

// The backend's identifier, without the test seam. Not for use outside
// platform/.
Result<Guid> SystemGuid();

}  // namespace tovimpl::platform
