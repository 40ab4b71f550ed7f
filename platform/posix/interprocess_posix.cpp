// POSIX backend of the OS layer: lock files, file versions, process liveness.
// Needs flock(2) and POSIX.1-2008 stat times (st_mtim, st_ctim): no Linux-only call.
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

#include "platform/error.h"
#include "platform/interprocess.h"
#include "platform/posix/posix_support.h"

namespace tovimpl::platform {

namespace {

// File handles hold descriptor + 1 (platform/file.h); -1 for null and invalid ones.
int DescriptorOf(FileHandle file) { return file.IsOpen() ? static_cast<int>(file.Bits() - 1) : -1; }

std::uint64_t Nanoseconds(const struct timespec& time) {
  return static_cast<std::uint64_t>(time.tv_sec) * 1000000000u +
         static_cast<std::uint64_t>(time.tv_nsec);
}

Status Flock(FileHandle lockFile, int operation) {
  const int fd = DescriptorOf(lockFile);
  if (fd < 0) return Status::Failure(kErrorInvalidHandle);
  while (::flock(fd, operation) != 0) {
    if (errno == EINTR) continue;
    return Status::Failure(posix::MapErrno(errno));
  }
  return Status::Ok();
}

}  // namespace

Result<FileHandle> OpenLockFile(const UTF16String& path) {
  const std::string native = posix::NativePath(path);
  int fd = -1;
  do {
    fd = ::open(native.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  } while (fd < 0 && errno == EINTR);
  if (fd < 0) return Status::Failure(posix::MapErrno(errno, ExistsAs::kAlreadyExists, native));
  return FileHandle::FromBits(static_cast<std::intptr_t>(fd) + 1);
}

Status TakeExclusiveLock(FileHandle lockFile) { return Flock(lockFile, LOCK_EX); }

Status ReleaseLock(FileHandle lockFile) { return Flock(lockFile, LOCK_UN); }

Status GetFileVersion(const UTF16String& path, FileVersion* version) {
  const std::string native = posix::NativePath(path);
  struct stat info {};
  if (::stat(native.c_str(), &info) != 0) {
    return Status::Failure(posix::MapErrno(errno, ExistsAs::kAlreadyExists, native));
  }
  version->volume = static_cast<std::uint64_t>(info.st_dev);
  version->fileId = static_cast<std::uint64_t>(info.st_ino);
  version->size = static_cast<std::uint64_t>(info.st_size);
  version->writeTime = Nanoseconds(info.st_mtim);
  version->changeTime = Nanoseconds(info.st_ctim);
  version->isFolder = S_ISDIR(info.st_mode);
  return Status::Ok();
}

bool IsProcessRunning(std::uint32_t processId) {
  if (processId == 0 || processId > 0x7FFFFFFFu) return false;
  // Signal 0 checks only: EPERM means it exists but belongs to someone else.
  return ::kill(static_cast<pid_t>(processId), 0) == 0 || errno == EPERM;
}

}  // namespace tovimpl::platform
