// POSIX backend of the OS layer: putting a finished file in place of another.
// Needs only rename(2), fsync(2) and O_DIRECTORY (POSIX.1-2008): no Linux-only call.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string>

#include "platform/error.h"
#include "platform/file_replace.h"
#include "platform/posix/posix_support.h"

namespace tovimpl::platform {

namespace {

// Makes a rename durable: fsync of the folder that holds `nativePath`.
void SyncParentFolder(const std::string& nativePath) {
  const auto slash = nativePath.find_last_of('/');
  std::string folder;
  if (slash == std::string::npos)
    folder = ".";
  else if (slash == 0)
    folder = "/";
  else
    folder = nativePath.substr(0, slash);
  const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);
  ::close(fd);
}

}  // namespace

Status RenameFile(UTF16StringView source, UTF16StringView target, std::uint32_t flags) {
  const std::string from = posix::NativePath(source);
  const std::string to = posix::NativePath(target);
  struct stat info {};
  if (::lstat(to.c_str(), &info) == 0) {
    if ((flags & kRenameReplaceExisting) == 0) return Status::Failure(kErrorAlreadyExists);
    if (S_ISDIR(info.st_mode)) return Status::Failure(kErrorAccessDenied);
  }
  if (::rename(from.c_str(), to.c_str()) != 0) {
    const int error = errno;
    // A missing name is the source's fault when the source is not there,
    // else the target's folder is missing.
    struct stat source {};
    const bool sourceThere = ::lstat(from.c_str(), &source) == 0;
    return Status::Failure(
        posix::MapErrno(error, ExistsAs::kAlreadyExists, sourceThere ? to : from));
  }
  if ((flags & kRenameWriteThrough) != 0) SyncParentFolder(to);
  return Status::Ok();
}

}  // namespace tovimpl::platform
