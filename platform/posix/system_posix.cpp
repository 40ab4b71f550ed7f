// POSIX backend of the OS layer: process, thread, clock and environment.
// Needs Linux for SYS_gettid; malloc_trim only with glibc (else nothing).
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>  // first, so that __GLIBC__ is known below
#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include "basalt/utf.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/posix/posix_support.h"
#include "platform/system.h"

namespace tovimpl::platform {

std::uint32_t CurrentThreadId() { return static_cast<std::uint32_t>(::syscall(SYS_gettid)); }

std::uint32_t CurrentProcessId() { return static_cast<std::uint32_t>(::getpid()); }

std::uint32_t TickCountMs() {
  struct timespec ts {};
  ::clock_gettime(CLOCK_MONOTONIC, &ts);
  const std::uint64_t ms = static_cast<std::uint64_t>(ts.tv_sec) * 1000u +
                           static_cast<std::uint64_t>(ts.tv_nsec) / 1000000u;
  return static_cast<std::uint32_t>(ms);
}

void ReleaseFreedMemory() {
#if defined(__GLIBC__)
  ::malloc_trim(0);
#endif
}

Result<UTF16String> GetEnvVar(const UTF16String& name) {
  const char* value = std::getenv(basalt::UTF16to8(name).c_str());
  if (value == nullptr) return Status::Failure(kErrorEnvVarNotFound);
  return basalt::UTF8to16(value);
}

UTF16String ToNativeSpelling(UTF16StringView libraryPath) {
  UTF16String out;
  UTF16StringView rest = libraryPath;
  auto startsWith = [&](const char* prefix) {
    std::size_t n = 0;
    while (prefix[n] != 0) ++n;
    if (rest.size() < n) return false;
    for (std::size_t i = 0; i < n; ++i) {
      if (rest[i] != static_cast<unsigned char>(prefix[i])) return false;
    }
    return true;
  };
  if (startsWith("\\\\?\\UNC\\")) {
    out.append(2, '/');
    rest.remove_prefix(8);
  } else if (startsWith("\\\\?\\")) {
    rest.remove_prefix(4);
  }
  out.reserve(out.size() + rest.size());
  for (unsigned short unit : rest) out.push_back(unit == '\\' ? '/' : unit);
  return out;
}

UTF16String FromNativeSpelling(UTF16StringView nativePath) {
  UTF16String out(nativePath);
  for (auto& unit : out) {
    if (unit == '/') unit = '\\';
  }
  return out;
}

namespace posix {

std::string NativePath(UTF16StringView libraryPath) {
  return basalt::UTF16to8(ToNativeSpelling(libraryPath));
}

UTF16String LibraryPath(const std::string& nativePath) {
  return FromNativeSpelling(basalt::UTF8to16(nativePath));
}

}  // namespace posix
}  // namespace tovimpl::platform
