// Win32 backend of the OS layer: the runtime library's buffered files opened by path.
// Only code that works on every supported Windows version belongs here.
#include <cerrno>
#include <cstdio>
#include <string>

#include "platform/cfile.h"
#include "platform/error.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

namespace {

// The runtime reports through errno and, for the system's own failures, the
// last error; a failure never leaves the last error at 0.
void KeepRuntimeFailure() {
  if (::GetLastError() != 0) return;
  switch (errno) {
    case ENOENT:
      ::SetLastError(ERROR_FILE_NOT_FOUND);
      break;
    case EACCES:
      ::SetLastError(ERROR_ACCESS_DENIED);
      break;
    case EEXIST:
      ::SetLastError(ERROR_FILE_EXISTS);
      break;
    case EINVAL:
      ::SetLastError(ERROR_INVALID_PARAMETER);
      break;
    case EMFILE:
      ::SetLastError(ERROR_TOO_MANY_OPEN_FILES);
      break;
    default:
      ::SetLastError(ERROR_GEN_FAILURE);
      break;
  }
}

}  // namespace

std::FILE* OpenCFile(const unsigned short* path, const char* mode) {
  if (path == nullptr || mode == nullptr) {
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  const std::wstring wideMode(mode, mode + std::char_traits<char>::length(mode));
  ::SetLastError(0);
  const std::wstring widePath = win32::WidePath(UTF16StringView(path));
  std::FILE* file = ::_wfopen(widePath.c_str(), wideMode.c_str());
  if (file == nullptr) KeepRuntimeFailure();
  return file;
}

std::FILE* OpenCFileA(const char* path, const char* mode) {
  if (path == nullptr || mode == nullptr) {
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  ::SetLastError(0);
  std::FILE* file = std::fopen(path, mode);
  if (file == nullptr) KeepRuntimeFailure();
  return file;
}

bool RemoveCFile(const unsigned short* path) {
  if (path == nullptr) {
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return false;
  }
  ::SetLastError(0);
  if (::_wremove(win32::WidePath(UTF16StringView(path)).c_str()) == 0) return true;
  KeepRuntimeFailure();
  return false;
}

}  // namespace tovimpl::platform
