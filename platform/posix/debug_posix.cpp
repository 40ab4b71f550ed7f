// POSIX backend of the OS layer: the debugger output channel (stderr on request).
// Only code that works on every POSIX system the library supports belongs here.
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/debug.h"

namespace tovimpl::platform {

namespace {

bool ReadTraceSetting() {
  const char* value = std::getenv("TOV_TRACE");
  return value != nullptr && value[0] != '\0' && std::strcmp(value, "0") != 0;
}

}  // namespace

bool IsDebugOutputEnabled() {
  static const bool enabled = ReadTraceSetting();
  return enabled;
}

void OutputDebugStringA(const char* text) {
  if (text == nullptr || !IsDebugOutputEnabled()) return;
  // One write per line, so lines of several threads do not interleave.
  std::string line(text);
  line.push_back('\n');
  const char* data = line.data();
  std::size_t left = line.size();
  while (left > 0) {
    const ssize_t written = ::write(STDERR_FILENO, data, left);
    if (written <= 0) return;
    data += written;
    left -= static_cast<std::size_t>(written);
  }
}

}  // namespace tovimpl::platform
