// POSIX backend of the OS layer: files opened by handle, Windows share modes.
// Needs POSIX.1-2008 with flock(2) (Linux, the BSDs, macOS): no Linux-only call.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <string>

#include "platform/error.h"
#include "platform/file.h"
#include "platform/posix/posix_support.h"

namespace tovimpl::platform {

namespace {

// Handles carry descriptor + 1 so that descriptor 0 is not the null handle.
FileHandle HandleFromDescriptor(int fd) { return FileHandle::FromBits(std::intptr_t{fd} + 1); }

// The descriptor of an open handle, or -1 for null and invalid ones.
int DescriptorOf(FileHandle file) {
  if (!file.IsOpen() || file.Bits() < 1 || file.Bits() > std::numeric_limits<int>::max()) {
    return -1;
  }
  return static_cast<int>(file.Bits() - 1);
}

void CloseKeepingErrno(int fd) {
  const int saved = errno;
  ::close(fd);
  errno = saved;
}

// The flock operation that emulates the share mode of an open, 0 for none.
int LockFor(std::uint32_t access, std::uint32_t shareMode) {
  const bool reads = (access & kGenericRead) != 0;
  const bool writes = (access & kGenericWrite) != 0;
  if (!reads && !writes) return 0;  // attributes only
  if (!writes && (shareMode & kFileShareRead) != 0) return LOCK_SH;
  return LOCK_EX;
}

// Positions past off_t's range cannot be reached.
constexpr std::uint64_t kMaxPosition =
    static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());

std::atomic<WriteFault> gWriteFault{nullptr};

}  // namespace

Result<OpenedFile> OpenFile(UTF16StringView libraryPath, std::uint32_t access, std::uint32_t share,
                            std::uint32_t disposition, std::uint32_t hints) {
  const bool reads = (access & kGenericRead) != 0;
  const bool writes = (access & kGenericWrite) != 0;

  int flags = O_CLOEXEC | O_NOCTTY;
  if (reads && writes)
    flags |= O_RDWR;
  else if (writes)
    flags |= O_WRONLY;
  else
    flags |= O_RDONLY;  // read access, or attributes only

  bool truncate = false;
  bool mayCreate = false;
  switch (disposition) {
    case kCreateNew:
      flags |= O_CREAT | O_EXCL;
      break;
    case kCreateAlways:
      mayCreate = true;
      truncate = true;
      break;
    case kOpenExisting:
      break;
    case kOpenAlways:
      mayCreate = true;
      break;
    case kTruncateExisting:
      if (!writes) return Status::Failure(kErrorInvalidParameter);
      truncate = true;
      break;
    default:
      return Status::Failure(kErrorInvalidParameter);
  }
  const std::string path = posix::NativePath(libraryPath);
  if (path.empty()) return Status::Failure(kErrorPathNotFound);

  // Create-or-open dispositions first try to create exclusively, so that the
  // call knows whether the file existed.
  bool existed = true;
  int fd = -1;
  if (mayCreate) {
    for (int attempt = 0; attempt < 8 && fd < 0; ++attempt) {
      do fd = ::open(path.c_str(), flags | O_CREAT | O_EXCL, 0666);
      while (fd < 0 && errno == EINTR);
      if (fd >= 0) {
        existed = false;
        break;
      }
      if (errno != EEXIST) break;
      do fd = ::open(path.c_str(), flags, 0666);
      while (fd < 0 && errno == EINTR);
      if (fd < 0 && errno != ENOENT) break;  // ENOENT: removed meanwhile, try again
    }
  } else {
    do fd = ::open(path.c_str(), flags, 0666);
    while (fd < 0 && errno == EINTR);
    if (fd >= 0 && disposition == kCreateNew) existed = false;
  }
  if (fd < 0) return Status::Failure(posix::MapErrno(errno, ExistsAs::kFileExists, path));

  // The one fstat of the open: it rules out folders and its size is returned.
  struct stat st {};
  if (::fstat(fd, &st) != 0) {
    const int error = errno;
    CloseKeepingErrno(fd);
    return Status::Failure(posix::MapErrno(error));
  }
  const bool isFolder = S_ISDIR(st.st_mode);
  if (isFolder && (hints & kFileFlagBackupSemantics) == 0) {
    CloseKeepingErrno(fd);
    return Status::Failure(kErrorAccessDenied);
  }

  if (const int lock = LockFor(access, share); lock != 0) {
    int rc;
    do rc = ::flock(fd, lock | LOCK_NB);
    while (rc != 0 && errno == EINTR);
    if (rc != 0) {
      const int error = errno;
      CloseKeepingErrno(fd);
      return Status::Failure(error == EWOULDBLOCK
                                 ? kErrorSharingViolation
                                 : posix::MapErrno(error, ExistsAs::kFileExists, path));
    }
  }

  std::uint64_t size = S_ISREG(st.st_mode) ? static_cast<std::uint64_t>(st.st_size) : 0;
  if (truncate && existed) {
    int rc;
    do rc = ::ftruncate(fd, 0);
    while (rc != 0 && errno == EINTR);
    if (rc != 0) {
      const int error = errno;
      CloseKeepingErrno(fd);
      return Status::Failure(posix::MapErrno(error, ExistsAs::kFileExists, path));
    }
    size = 0;
  }

  OpenedFile opened;
  opened.handle = HandleFromDescriptor(fd);
  opened.size = size;
  opened.existed = existed;
  opened.isFolder = isFolder;
  return opened;
}

Result<std::uint32_t> ReadAt(FileHandle file, std::uint64_t position, void* buffer,
                             std::uint32_t count) {
  const int fd = DescriptorOf(file);
  if (fd < 0) return Status::Failure(kErrorInvalidHandle);
  if (position > kMaxPosition) return std::uint32_t{0};  // past any possible end
  auto* out = static_cast<unsigned char*>(buffer);
  std::uint32_t done = 0;
  while (done < count) {
    const std::uint64_t at = position + done;
    if (at > kMaxPosition) break;
    const ssize_t got = ::pread(fd, out + done, count - done, static_cast<off_t>(at));
    if (got < 0) {
      if (errno == EINTR) continue;
      // A descriptor opened without read access reports EBADF: access denied.
      return Status::Failure(posix::MapErrno(errno == EBADF ? EACCES : errno));
    }
    if (got == 0) break;  // end of file
    done += static_cast<std::uint32_t>(got);
  }
  return done;
}

void SetWriteFaultForTesting(WriteFault fault) { gWriteFault.store(fault); }

Result<std::uint32_t> WriteAt(FileHandle file, std::uint64_t position, const void* buffer,
                              std::uint32_t count) {
  const int fd = DescriptorOf(file);
  if (fd < 0) return Status::Failure(kErrorInvalidHandle);
  if (const WriteFault fault = gWriteFault.load(std::memory_order_relaxed)) {
    if (const std::uint32_t error = fault(file, count)) return Status::Failure(error);
  }
  const auto* in = static_cast<const unsigned char*>(buffer);
  std::uint32_t done = 0;
  while (done < count) {
    const std::uint64_t at = position + done;
    if (at > kMaxPosition) return Status::Failure(kErrorFileTooLarge);
    const ssize_t put = ::pwrite(fd, in + done, count - done, static_cast<off_t>(at));
    if (put < 0) {
      if (errno == EINTR) continue;
      // A descriptor opened without write access reports EBADF: access denied.
      return Status::Failure(posix::MapErrno(errno == EBADF ? EACCES : errno));
    }
    if (put == 0) return Status::Failure(kErrorWriteFault);  // no progress: do not spin
    done += static_cast<std::uint32_t>(put);
  }
  return done;
}

Result<std::uint64_t> FileSize(FileHandle file) {
  const int fd = DescriptorOf(file);
  if (fd < 0) return Status::Failure(kErrorInvalidHandle);
  struct stat st {};
  if (::fstat(fd, &st) != 0) return Status::Failure(posix::MapErrno(errno));
  return static_cast<std::uint64_t>(st.st_size);
}

Status SetFileSize(FileHandle file, std::uint64_t size) {
  const int fd = DescriptorOf(file);
  if (fd < 0) return Status::Failure(kErrorInvalidHandle);
  if (size > kMaxPosition) return Status::Failure(kErrorInvalidParameter);
  int rc;
  do rc = ::ftruncate(fd, static_cast<off_t>(size));
  while (rc != 0 && errno == EINTR);
  if (rc != 0) {
    // A descriptor without write access reports EINVAL or EBADF: access denied.
    return Status::Failure(posix::MapErrno(errno == EINVAL || errno == EBADF ? EACCES : errno));
  }
  return Status::Ok();
}

Status FlushFile(FileHandle file) {
  const int fd = DescriptorOf(file);
  if (fd < 0) return Status::Failure(kErrorInvalidHandle);
  if (::fsync(fd) != 0) {
    // Some descriptors (pipes, special files) cannot be synced; nothing is lost.
    if (errno == EINVAL || errno == EROFS) return Status::Ok();
    return Status::Failure(posix::MapErrno(errno));
  }
  return Status::Ok();
}

Status CloseFile(FileHandle file) {
  const int fd = DescriptorOf(file);
  if (fd < 0) return Status::Failure(kErrorInvalidHandle);
  // The descriptor is released even when close reports an error (EINTR, EIO):
  // retrying could close a descriptor another thread has just been given.
  if (::close(fd) != 0 && errno != EINTR) return Status::Failure(posix::MapErrno(errno));
  return Status::Ok();
}

Status RemoveFile(UTF16StringView libraryPath) {
  const std::string path = posix::NativePath(libraryPath);
  if (path.empty()) return Status::Failure(kErrorPathNotFound);
  struct stat st {};
  if (::lstat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
    return Status::Failure(kErrorAccessDenied);
  }
  if (::unlink(path.c_str()) != 0) {
    return Status::Failure(posix::MapErrno(errno, ExistsAs::kFileExists, path));
  }
  return Status::Ok();
}

}  // namespace tovimpl::platform
