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

// The code of a failed runtime call. The runtime reports through errno and,
// for the system's own failures, the last error, which the caller cleared
// before the call: that code wins; otherwise errno is translated.
ErrorCode RuntimeFailure() {
  const DWORD system = ::GetLastError();
  if (system != 0) return static_cast<ErrorCode>(system);
  switch (errno) {
    case ENOENT:
      return kErrorFileNotFound;
    case EACCES:
      return kErrorAccessDenied;
    case EEXIST:
      return kErrorFileExists;
    case EINVAL:
      return kErrorInvalidParameter;
    case EMFILE:
      return kErrorTooManyOpenFiles;
    default:
      return kErrorGenFailure;
  }
}

}  // namespace

Result<std::FILE*> OpenCFile(const unsigned short* path, const char* mode) {
  if (path == nullptr || mode == nullptr) return Status::Failure(kErrorInvalidParameter);
  const std::wstring wideMode(mode, mode + std::char_traits<char>::length(mode));
  const std::wstring widePath = win32::WidePath(UTF16StringView(path));
  ::SetLastError(0);
  std::FILE* file = ::_wfopen(widePath.c_str(), wideMode.c_str());
  if (file == nullptr) return Status::Failure(RuntimeFailure());
  return file;
}

Result<std::FILE*> OpenCFileA(const char* path, const char* mode) {
  if (path == nullptr || mode == nullptr) return Status::Failure(kErrorInvalidParameter);
  ::SetLastError(0);
  std::FILE* file = std::fopen(path, mode);
  if (file == nullptr) return Status::Failure(RuntimeFailure());
  return file;
}

Status RemoveCFile(const unsigned short* path) {
  if (path == nullptr) return Status::Failure(kErrorInvalidParameter);
  const std::wstring widePath = win32::WidePath(UTF16StringView(path));
  ::SetLastError(0);
  if (::_wremove(widePath.c_str()) == 0) return Status::Ok();
  return Status::Failure(RuntimeFailure());
}

}  // namespace tovimpl::platform
