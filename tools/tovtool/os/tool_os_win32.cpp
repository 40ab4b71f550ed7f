// tovtool's OS seam, Windows.
// Only code that works on every supported Windows version belongs here.
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>

#include "tool_os.h"

namespace tovtool {

std::uint32_t LastOsError() {
  const DWORD code = ::GetLastError();
  return code != 0 ? static_cast<std::uint32_t>(code) : 31;  // ERROR_GEN_FAILURE
}

std::uint32_t OsErrorOf(const std::error_code& error) {
  if (error.category() == std::system_category()) return static_cast<std::uint32_t>(error.value());
  return OsErrorFromErrno(error.value());
}

bool StderrIsTerminal() { return ::_isatty(2) != 0; }

void UseBinaryStandardStreams() {
  std::fflush(stdout);
  ::_setmode(::_fileno(stdin), _O_BINARY);
  ::_setmode(::_fileno(stdout), _O_BINARY);
}

}  // namespace tovtool
