// POSIX backend of the OS layer: globally unique identifiers.
// Needs getrandom(2) (Linux 3.17, glibc 2.25); there is no fallback source.
#include <sys/random.h>

#include <cerrno>
#include <cstddef>

#include "platform/guid.h"
#include "platform/posix/posix_support.h"

namespace tovimpl::platform {

Result<Guid> SystemGuid() {
  // Short reads and interrupted calls are retried.
  unsigned char bytes[16];
  std::size_t done = 0;
  while (done < sizeof bytes) {
    const ssize_t got = ::getrandom(bytes + done, sizeof bytes - done, 0);
    if (got < 0) {
      if (errno == EINTR) continue;
      return Status::Failure(posix::MapErrno(errno));
    }
    done += static_cast<std::size_t>(got);
  }
  return GuidFromRandomBytes(bytes);
}

}  // namespace tovimpl::platform
