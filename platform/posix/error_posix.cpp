// POSIX backend of the OS layer: errno ⇒ Windows error codes, and the
// thread's last-error slot. Only code that works on every POSIX system belongs here.
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <string>

#include "platform/error.h"
#include "platform/posix/posix_support.h"

namespace tovimpl::platform {

namespace {
thread_local std::uint32_t tLastError = 0;

bool ParentFolderExists(const std::string& path) {
  std::size_t end = path.size();
  while (end > 0 && path[end - 1] == '/') --end;
  const std::size_t slash = end == 0 ? std::string::npos : path.rfind('/', end - 1);
  const std::string parent = slash == std::string::npos ? std::string(1, '.')
                             : slash == 0               ? std::string(1, '/')
                                                        : path.substr(0, slash);
  struct stat st {};
  return ::stat(parent.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}
}  // namespace

std::uint32_t GetLastError() { return tLastError; }
void SetLastError(std::uint32_t code) { tLastError = code; }

namespace posix {

std::uint32_t MapErrno(int error, ExistsAs exists, const std::string& nativePath) {
  switch (error) {
    case ENOENT:
      if (nativePath.empty() || ParentFolderExists(nativePath)) return kErrorFileNotFound;
      return kErrorPathNotFound;
    case ENOTDIR:
      return kErrorPathNotFound;
    case EACCES:
    case EPERM:
    case EISDIR:
    case EROFS:
      return kErrorAccessDenied;
    case EEXIST:
      return exists == ExistsAs::kFileExists ? kErrorFileExists : kErrorAlreadyExists;
    case ENOTEMPTY:
      return kErrorDirNotEmpty;
    case ENOSPC:
    case EDQUOT:
      return kErrorDiskFull;
    case EFBIG:
      return kErrorFileTooLarge;
    case ENAMETOOLONG:
      return kErrorFilenameExcedRange;
    case EWOULDBLOCK:
      return kErrorSharingViolation;
    case EBUSY:
    case ETXTBSY:
      return kErrorBusy;
    case EBADF:
      return kErrorInvalidHandle;
    case EINVAL:
      return kErrorInvalidParameter;
    case ENOMEM:
      return kErrorNotEnoughMemory;
    case EMFILE:
    case ENFILE:
      return kErrorTooManyOpenFiles;
    case EXDEV:
      return kErrorNotSameDevice;
    case EPIPE:
      return kErrorBrokenPipe;
    case ELOOP:
      return kErrorCantResolveFilename;
    case EMLINK:
      return kErrorTooManyLinks;
    case ENOSYS:
    case EOPNOTSUPP:
      return kErrorNotSupported;
    case ETIMEDOUT:
      return kErrorTimeout;
    case EIO:
      return kErrorGenFailure;
    default:
      return kErrorGenFailure;
  }
}

}  // namespace posix
}  // namespace tovimpl::platform
