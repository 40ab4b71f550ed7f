// POSIX backend of the OS layer: runtime-library files opened by path.
// Only code that works on every POSIX system belongs here.
#include <cerrno>
#include <cstdio>
#include <string>

#include "basalt/utf.h"
#include "platform/cfile.h"
#include "platform/posix/posix_support.h"

namespace tovimpl::platform {

namespace {
std::FILE* OpenNative(const std::string& native, const char* mode) {
  std::FILE* file = std::fopen(native.c_str(), mode);
  if (file == nullptr) posix::SetLastErrorFromErrno(errno, ExistsAs::kFileExists, native);
  return file;
}
}  // namespace

std::FILE* OpenCFile(const unsigned short* path, const char* mode) {
  if (path == nullptr || mode == nullptr) {
    SetLastError(kErrorInvalidParameter);
    return nullptr;
  }
  return OpenNative(posix::NativePath(UTF16StringView(path)), mode);
}

std::FILE* OpenCFileA(const char* path, const char* mode) {
  if (path == nullptr || mode == nullptr) {
    SetLastError(kErrorInvalidParameter);
    return nullptr;
  }
  // The system code page is UTF-8 here; the path is still in the library's
  // spelling, so it takes the same translation as a UTF-16 one.
  return OpenNative(posix::NativePath(basalt::UTF8to16(path)), mode);
}

bool RemoveCFile(const unsigned short* path) {
  if (path == nullptr) {
    SetLastError(kErrorInvalidParameter);
    return false;
  }
  const std::string native = posix::NativePath(UTF16StringView(path));
  if (std::remove(native.c_str()) != 0) {
    posix::SetLastErrorFromErrno(errno, ExistsAs::kAlreadyExists, native);
    return false;
  }
  return true;
}

}  // namespace tovimpl::platform
