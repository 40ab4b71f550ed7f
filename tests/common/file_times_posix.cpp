// File times on POSIX systems.
#include <fcntl.h>
#include <sys/stat.h>

#include "common/file_times.h"

namespace tovtest {

bool SetModificationTime(const std::string& native, std::int64_t unixSeconds,
                         std::uint32_t nanoseconds) {
  struct timespec times[2] = {};
  times[0].tv_sec = times[1].tv_sec = static_cast<time_t>(unixSeconds);
  times[0].tv_nsec = times[1].tv_nsec = static_cast<long>(nanoseconds);
  return ::utimensat(AT_FDCWD, native.c_str(), times, 0) == 0;
}

}  // namespace tovtest
