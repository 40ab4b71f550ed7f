// tovtool's OS seam, POSIX systems.
// Only code that works on every POSIX system belongs here.
#include <unistd.h>

#include <cerrno>

#include "tool_os.h"

namespace tovtool {

std::uint32_t LastOsError() { return OsErrorFromErrno(errno); }

std::uint32_t OsErrorOf(const std::error_code& error) { return OsErrorFromErrno(error.value()); }

bool StderrIsTerminal() { return ::isatty(2) != 0; }

void UseBinaryStandardStreams() {}  // POSIX streams are always binary

}  // namespace tovtool
