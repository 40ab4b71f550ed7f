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
Result<std::FILE*> OpenNative(const std::string& native, const char* mode) {
  std::FILE* file = std::fopen(native.c_str(), mode);
  if (file == nullptr)
    return Status::Failure(posix::MapErrno(errno, ExistsAs::kFileExists, native));
  return file;
}
}  // namespace

Result<std::FILE*> OpenCFile(const unsigned short* path, const char* mode) {
  if (path == nullptr || mode == nullptr) return Status::Failure(kErrorInvalidParameter);
  return OpenNative(posix::NativePath(UTF16StringView(path)), mode);
}

Result<std::FILE*> OpenCFileA(const char* path, const char* mode) {
  if (path == nullptr || mode == nullptr) return Status::Failure(kErrorInvalidParameter);
  // The system code page is UTF-8 here; the path is still in the library's
  // spelling, so it takes the same translation as a UTF-16 one.
  return OpenNative(posix::NativePath(basalt::UTF8to16(path)), mode);
}

Status RemoveCFile(const unsigned short* path) {
  if (path == nullptr) return Status::Failure(kErrorInvalidParameter);
  const std::string native = posix::NativePath(UTF16StringView(path));
  if (std::remove(native.c_str()) != 0) {
    return Status::Failure(posix::MapErrno(errno, ExistsAs::kAlreadyExists, native));
  }
  return Status::Ok();
}

}  // namespace tovimpl::platform
