// POSIX backend of the OS layer: files opened by handle, Windows share modes.
// Only code that works on every POSIX system the library supports belongs here.
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

// The descriptor of an open handle, or -1 (last error 6) for null and invalid ones.
int DescriptorOf(FileHandle file) {
  if (!file.IsOpen() || file.Bits() < 1 || file.Bits() > std::numeric_limits<int>::max()) {
    SetLastError(kErrorInvalidHandle);
    return -1;
  }
  return static_cast<int>(file.Bits() - 1);
}

// Lazy seeks. The file ports move the file pointer before every transfer, so
// a seek followed by a read or write is the common pair; for regular files the
// seek only records the position here, and the transfer that follows is a
// pread/pwrite at it: one system call instead of two. While a position is
// pending the kernel's offset of the descriptor is stale and nothing may rely
// on it; every call of this file that would (the pointer queries, truncation)
// takes the pending position instead. Descriptors from kTracked on, and those
// of anything but regular files, keep the eager lseek path.
//
// A slot holds 0 for an untracked descriptor (the eager path), 1 for a tracked
// one whose kernel offset is the file pointer, and position + 2 for a pending
// position. Slots are written when a handle is opened or closed and by the
// calls on its handle; the atomics only keep different handles race-free.
constexpr int kTracked = 4096;
constexpr std::int64_t kUntracked = 0;
constexpr std::int64_t kKernelOffset = 1;
constexpr std::int64_t kPendingBase = 2;
constexpr std::int64_t kMaxPending = std::numeric_limits<std::int64_t>::max() - kPendingBase;
std::atomic<std::int64_t> gSlots[kTracked];

std::atomic<std::int64_t>* SlotOf(int fd) { return fd < kTracked ? &gSlots[fd] : nullptr; }

std::int64_t SlotValue(int fd) {
  const auto* slot = SlotOf(fd);
  return slot == nullptr ? kUntracked : slot->load(std::memory_order_relaxed);
}

void SetSlot(int fd, std::int64_t value) {
  if (auto* slot = SlotOf(fd)) slot->store(value, std::memory_order_relaxed);
}

// A pending slot advanced by a transfer of `done` bytes, saturating.
std::int64_t Advanced(std::int64_t slot, std::uint32_t done) {
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  return slot > kMax - done ? kMax : slot + done;
}

// The file pointer of a descriptor: the pending position or the kernel's offset.
bool CurrentPosition(int fd, std::int64_t* position) {
  const std::int64_t slot = SlotValue(fd);
  if (slot >= kPendingBase) {
    *position = slot - kPendingBase;
    return true;
  }
  const off_t here = ::lseek(fd, 0, SEEK_CUR);
  if (here < 0) {
    posix::SetLastErrorFromErrno(errno);
    return false;
  }
  *position = here;
  return true;
}

int CloseKeepingErrno(int fd) {
  const int saved = errno;
  const int rc = ::close(fd);
  errno = saved;
  return rc;
}

// The flock operation that emulates the share mode of an open, 0 for none.
int LockFor(std::uint32_t access, std::uint32_t shareMode) {
  const bool reads = (access & kGenericRead) != 0;
  const bool writes = (access & kGenericWrite) != 0;
  if (!reads && !writes) return 0;  // attributes only
  if (!writes && (shareMode & kFileShareRead) != 0) return LOCK_SH;
  return LOCK_EX;
}

}  // namespace

FileHandle CreateFile(UTF16StringView libraryPath, std::uint32_t desiredAccess,
                      std::uint32_t shareMode, std::uint32_t creationDisposition,
                      std::uint32_t flagsAndAttributes) {
  const std::string path = posix::NativePath(libraryPath);
  const bool reads = (desiredAccess & kGenericRead) != 0;
  const bool writes = (desiredAccess & kGenericWrite) != 0;

  int flags = O_CLOEXEC | O_NOCTTY;
  if (reads && writes)
    flags |= O_RDWR;
  else if (writes)
    flags |= O_WRONLY;
  else
    flags |= O_RDONLY;  // read access, or attributes only

  bool truncate = false;
  bool mayCreate = false;
  switch (creationDisposition) {
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
      if (!writes) {
        SetLastError(kErrorInvalidParameter);
        return FileHandle::Invalid();
      }
      truncate = true;
      break;
    default:
      SetLastError(kErrorInvalidParameter);
      return FileHandle::Invalid();
  }
  if (path.empty()) {
    SetLastError(kErrorPathNotFound);
    return FileHandle::Invalid();
  }

  // Create-or-open dispositions first try to create exclusively, so that the
  // call knows whether the file existed (Windows then reports 183).
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
    if (fd >= 0 && creationDisposition == kCreateNew) existed = false;
  }
  if (fd < 0) {
    posix::SetLastErrorFromErrno(errno, ExistsAs::kFileExists, path);
    return FileHandle::Invalid();
  }

  struct stat st {};
  if (::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode) &&
      (flagsAndAttributes & kFileFlagBackupSemantics) == 0) {
    CloseKeepingErrno(fd);
    SetLastError(kErrorAccessDenied);
    return FileHandle::Invalid();
  }

  if (const int lock = LockFor(desiredAccess, shareMode); lock != 0) {
    int rc;
    do rc = ::flock(fd, lock | LOCK_NB);
    while (rc != 0 && errno == EINTR);
    if (rc != 0) {
      const int error = errno;
      CloseKeepingErrno(fd);
      SetLastError(error == EWOULDBLOCK ? kErrorSharingViolation
                                        : posix::MapErrno(error, ExistsAs::kFileExists, path));
      return FileHandle::Invalid();
    }
  }

  if (truncate && existed) {
    int rc;
    do rc = ::ftruncate(fd, 0);
    while (rc != 0 && errno == EINTR);
    if (rc != 0) {
      const int error = errno;
      CloseKeepingErrno(fd);
      posix::SetLastErrorFromErrno(error, ExistsAs::kFileExists, path);
      return FileHandle::Invalid();
    }
  }

  struct stat opened {};
  const bool regular = ::fstat(fd, &opened) == 0 && S_ISREG(opened.st_mode);
  SetSlot(fd, regular ? kKernelOffset : kUntracked);

  const bool reportsExisting =
      existed && (creationDisposition == kCreateAlways || creationDisposition == kOpenAlways);
  SetLastError(reportsExisting ? kErrorAlreadyExists : kErrorSuccess);
  return HandleFromDescriptor(fd);
}

bool ReadFile(FileHandle file, void* buffer, std::uint32_t count, std::uint32_t* bytesRead) {
  if (bytesRead != nullptr) *bytesRead = 0;
  const int fd = DescriptorOf(file);
  if (fd < 0) return false;
  auto* out = static_cast<unsigned char*>(buffer);
  const std::int64_t slot = SlotValue(fd);
  const bool pending = slot >= kPendingBase;
  std::uint32_t done = 0;
  bool ok = true;
  while (done < count) {
    const ssize_t got = pending ? ::pread(fd, out + done, count - done,
                                          static_cast<off_t>(slot - kPendingBase + done))
                                : ::read(fd, out + done, count - done);
    if (got < 0) {
      if (errno == EINTR) continue;
      posix::SetLastErrorFromErrno(errno == EBADF ? EACCES : errno);
      ok = false;
      break;
    }
    if (got == 0) break;  // end of file
    done += static_cast<std::uint32_t>(got);
  }
  if (pending) SetSlot(fd, Advanced(slot, done));
  if (bytesRead != nullptr) *bytesRead = done;
  return ok;
}

namespace {
std::atomic<WriteFault> gWriteFault{nullptr};
}  // namespace

void SetWriteFaultForTesting(WriteFault fault) { gWriteFault.store(fault); }

bool WriteFile(FileHandle file, const void* buffer, std::uint32_t count,
               std::uint32_t* bytesWritten) {
  if (bytesWritten != nullptr) *bytesWritten = 0;
  const int fd = DescriptorOf(file);
  if (fd < 0) return false;
  if (const WriteFault fault = gWriteFault.load(std::memory_order_relaxed)) {
    if (const std::uint32_t error = fault(file, count)) {
      SetLastError(error);
      return false;
    }
  }
  const auto* in = static_cast<const unsigned char*>(buffer);
  const std::int64_t slot = SlotValue(fd);
  const bool pending = slot >= kPendingBase;
  std::uint32_t done = 0;
  bool ok = true;
  while (done < count) {
    const ssize_t put = pending ? ::pwrite(fd, in + done, count - done,
                                           static_cast<off_t>(slot - kPendingBase + done))
                                : ::write(fd, in + done, count - done);
    if (put < 0) {
      if (errno == EINTR) continue;
      posix::SetLastErrorFromErrno(errno == EBADF ? EACCES : errno);
      ok = false;
      break;
    }
    if (put == 0) {  // no progress: report it rather than retry forever
      SetLastError(kErrorWriteFault);
      ok = false;
      break;
    }
    done += static_cast<std::uint32_t>(put);
  }
  if (pending) SetSlot(fd, Advanced(slot, done));
  if (bytesWritten != nullptr) *bytesWritten = done;
  return ok;
}

namespace {

// Moves the file pointer to base(method) + distance. Returns false with the last
// error set when the target lies before the start (131) or cannot be reached.
bool MovePointer(int fd, std::int64_t distance, std::uint32_t moveMethod, std::int64_t* result,
                 bool fitsIn32Bits) {
  std::int64_t base = 0;
  if (moveMethod == kFileCurrent) {
    if (!CurrentPosition(fd, &base)) return false;
  } else if (moveMethod == kFileEnd) {
    struct stat st {};
    if (::fstat(fd, &st) != 0) {
      posix::SetLastErrorFromErrno(errno);
      return false;
    }
    base = st.st_size;
  } else if (moveMethod != kFileBegin) {
    SetLastError(kErrorInvalidParameter);
    return false;
  }
  // Wrap through unsigned arithmetic; a sum past the signed range is refused.
  const std::uint64_t sum = static_cast<std::uint64_t>(base) + static_cast<std::uint64_t>(distance);
  const auto target = static_cast<std::int64_t>(sum);
  if ((distance > 0 && target < base) || target < 0) {
    SetLastError(kErrorNegativeSeek);
    return false;
  }
  if (fitsIn32Bits && target > std::int64_t{0xFFFFFFFF}) {
    SetLastError(kErrorInvalidParameter);
    return false;
  }
  const std::int64_t slot = SlotValue(fd);
  if (slot != kUntracked && target <= kMaxPending) {
    SetSlot(fd, target + kPendingBase);  // applied by the next transfer
  } else {
    if (::lseek(fd, static_cast<off_t>(target), SEEK_SET) < 0) {
      posix::SetLastErrorFromErrno(errno);
      return false;
    }
    if (slot != kUntracked) SetSlot(fd, kKernelOffset);
  }
  *result = target;
  return true;
}

}  // namespace

std::uint32_t SetFilePointer(FileHandle file, std::int32_t distance, std::int32_t* distanceHigh,
                             std::uint32_t moveMethod) {
  const int fd = DescriptorOf(file);
  if (fd < 0) return kInvalidSetFilePointer;
  std::int64_t move = distance;
  if (distanceHigh != nullptr) {
    const std::uint64_t bits =
        (static_cast<std::uint64_t>(static_cast<std::uint32_t>(*distanceHigh)) << 32) |
        static_cast<std::uint32_t>(distance);
    move = static_cast<std::int64_t>(bits);
  }
  std::int64_t target = 0;
  if (!MovePointer(fd, move, moveMethod, &target, distanceHigh == nullptr)) {
    return kInvalidSetFilePointer;
  }
  const auto low = static_cast<std::uint32_t>(static_cast<std::uint64_t>(target));
  if (distanceHigh != nullptr) {
    *distanceHigh = static_cast<std::int32_t>(
        static_cast<std::uint32_t>(static_cast<std::uint64_t>(target) >> 32));
  }
  if (low == kInvalidSetFilePointer) SetLastError(kErrorSuccess);
  return low;
}

bool SetFilePointerEx(FileHandle file, std::int64_t distance, std::int64_t* newPosition,
                      std::uint32_t moveMethod) {
  const int fd = DescriptorOf(file);
  if (fd < 0) return false;
  std::int64_t target = 0;
  if (!MovePointer(fd, distance, moveMethod, &target, false)) return false;
  if (newPosition != nullptr) *newPosition = target;
  return true;
}

bool SetEndOfFile(FileHandle file) {
  const int fd = DescriptorOf(file);
  if (fd < 0) return false;
  std::int64_t here = 0;
  if (!CurrentPosition(fd, &here)) return false;
  int rc;
  do rc = ::ftruncate(fd, static_cast<off_t>(here));
  while (rc != 0 && errno == EINTR);
  if (rc != 0) {
    // A descriptor without write access reports EINVAL or EBADF: access denied.
    posix::SetLastErrorFromErrno(errno == EINVAL || errno == EBADF ? EACCES : errno);
    return false;
  }
  return true;
}

std::uint32_t GetFileSize(FileHandle file, std::uint32_t* sizeHigh) {
  std::int64_t size = 0;
  if (!GetFileSizeEx(file, &size)) return kInvalidFileSize;
  const auto bits = static_cast<std::uint64_t>(size);
  if (sizeHigh != nullptr) *sizeHigh = static_cast<std::uint32_t>(bits >> 32);
  const auto low = static_cast<std::uint32_t>(bits);
  if (low == kInvalidFileSize) SetLastError(kErrorSuccess);
  return low;
}

bool GetFileSizeEx(FileHandle file, std::int64_t* size) {
  const int fd = DescriptorOf(file);
  if (fd < 0) return false;
  struct stat st {};
  if (::fstat(fd, &st) != 0) {
    posix::SetLastErrorFromErrno(errno);
    return false;
  }
  if (size != nullptr) *size = st.st_size;
  return true;
}

bool FlushFileBuffers(FileHandle file) {
  const int fd = DescriptorOf(file);
  if (fd < 0) return false;
  if (::fsync(fd) != 0) {
    // Some descriptors (pipes, special files) cannot be synced; nothing is lost.
    if (errno == EINVAL || errno == EROFS) return true;
    posix::SetLastErrorFromErrno(errno);
    return false;
  }
  return true;
}

bool CloseHandle(FileHandle file) {
  const int fd = DescriptorOf(file);
  if (fd < 0) return false;
  // The slot is cleared before the descriptor can be given to another open.
  SetSlot(fd, kUntracked);
  // The descriptor is released even when close reports an error (EINTR, EIO):
  // retrying could close a descriptor another thread has just been given.
  if (::close(fd) != 0 && errno != EINTR) {
    posix::SetLastErrorFromErrno(errno);
    return false;
  }
  return true;
}

bool DeleteFile(UTF16StringView libraryPath) {
  const std::string path = posix::NativePath(libraryPath);
  if (path.empty()) {
    SetLastError(kErrorPathNotFound);
    return false;
  }
  struct stat st {};
  if (::lstat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
    SetLastError(kErrorAccessDenied);
    return false;
  }
  if (::unlink(path.c_str()) != 0) {
    posix::SetLastErrorFromErrno(errno, ExistsAs::kFileExists, path);
    return false;
  }
  return true;
}

}  // namespace tovimpl::platform
