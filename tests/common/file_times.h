// File times for the tests: sets a file's last-write time to the
// nanosecond the system keeps (Linux: 1 ns, Windows: 100 ns). One
// implementation per OS family: file_times_posix.cpp (utimensat),
// file_times_win32.cpp (SetFileTime).
#pragma once

#include <cstdint>
#include <string>

namespace tovtest {

// Sets the last-write (and last-access) time of the file at `native` to
// `unixSeconds` + `nanoseconds` after 1970-01-01 00:00:00 UTC. False when the
// system refused.
bool SetModificationTime(const std::string& native, std::int64_t unixSeconds,
                         std::uint32_t nanoseconds);

}  // namespace tovtest
