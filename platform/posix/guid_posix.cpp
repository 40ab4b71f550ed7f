// POSIX backend of the OS layer: globally unique identifiers.
// Needs getrandom(2) (Linux 3.17, glibc 2.25); there is no fallback source.
#include <sys/random.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/error.h"
#include "platform/guid.h"
#include "platform/posix/posix_support.h"

namespace tovimpl::platform {

namespace {

std::atomic<RandomSource> gRandomSource{nullptr};

// Fills the buffer from the kernel's random source, retrying short reads and
// interrupted calls.
bool KernelRandom(void* bytes, std::uint32_t size) {
  auto* out = static_cast<unsigned char*>(bytes);
  std::size_t done = 0;
  while (done < size) {
    const ssize_t got = ::getrandom(out + done, size - done, 0);
    if (got < 0) {
      if (errno == EINTR) continue;
      posix::SetLastErrorFromErrno(errno);
      return false;
    }
    done += static_cast<std::size_t>(got);
  }
  return true;
}

}  // namespace

std::int32_t CoCreateGuid(Guid* guid) {
  if (guid == nullptr) {
    SetLastError(kErrorInvalidParameter);
    return kEPointer;
  }
  unsigned char bytes[16];
  const RandomSource source = gRandomSource.load();
  const bool ok =
      source != nullptr ? source(bytes, sizeof bytes) : KernelRandom(bytes, sizeof bytes);
  if (!ok) {
    if (GetLastError() == 0) SetLastError(kErrorGenFailure);
    return kEFail;
  }
  // The version nibble says "random" (4); the variant bits say RFC 4122 (10xx).
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0Fu) | 0x40u);
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3Fu) | 0x80u);
  Guid made{};
  made.Data1 = (std::uint32_t{bytes[0]} << 24) | (std::uint32_t{bytes[1]} << 16) |
               (std::uint32_t{bytes[2]} << 8) | std::uint32_t{bytes[3]};
  made.Data2 = static_cast<std::uint16_t>((bytes[4] << 8) | bytes[5]);
  made.Data3 = static_cast<std::uint16_t>((bytes[6] << 8) | bytes[7]);
  std::memcpy(made.Data4, bytes + 8, 8);
  *guid = made;
  return kSOk;
}

void SetRandomSourceForTesting(RandomSource source) { gRandomSource.store(source); }

}  // namespace tovimpl::platform
