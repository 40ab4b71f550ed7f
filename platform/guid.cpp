// OS layer, portable part: the identifier layout and the random-source test
// seam; the system's own source is in the backends (SystemGuid).
#include "platform/guid.h"

#include <atomic>
#include <cstring>

#include "platform/error.h"

namespace tovimpl::platform {

namespace {
std::atomic<RandomSource> gRandomSource{nullptr};
}  // namespace

Guid GuidFromRandomBytes(const unsigned char (&bytes)[16]) {
  Guid made{};
  made.Data1 = (std::uint32_t{bytes[0]} << 24) | (std::uint32_t{bytes[1]} << 16) |
               (std::uint32_t{bytes[2]} << 8) | std::uint32_t{bytes[3]};
  made.Data2 = static_cast<std::uint16_t>((bytes[4] << 8) | bytes[5]);
  // The version nibble says "random" (4); the variant bits say RFC 4122 (10xx).
  made.Data3 = static_cast<std::uint16_t>((((bytes[6] & 0x0Fu) | 0x40u) << 8) | bytes[7]);
  std::memcpy(made.Data4, bytes + 8, 8);
  made.Data4[0] = static_cast<std::uint8_t>((made.Data4[0] & 0x3Fu) | 0x80u);
  return made;
}

Result<Guid> NewGuid() {
  const RandomSource source = gRandomSource.load();
  if (source == nullptr) return SystemGuid();
  unsigned char bytes[16];
  if (!source(bytes, sizeof bytes)) return Status::Failure(kErrorGenFailure);
  return GuidFromRandomBytes(bytes);
}

void SetRandomSourceForTesting(RandomSource source) { gRandomSource.store(source); }

}  // namespace tovimpl::platform
