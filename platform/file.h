// OS layer: files opened by handle.
//
// The calls below have the shape of the Windows file calls they stand for
// (CreateFileW, ReadFile, WriteFile, SetFilePointer, SetFilePointerEx,
// SetEndOfFile, GetFileSize, GetFileSizeEx, FlushFileBuffers, CloseHandle,
// DeleteFileW) and report failures the same way: a failure value is returned
// and a Windows error code is left in the thread's last-error slot
// (platform/error.h). Paths are library paths (UTF-16, Windows spelling).
//
//   FileHandle h = CreateFile(path, kGenericRead, kFileShareRead, kOpenExisting,
//                             kFileFlagSequentialScan);
//   if (h.IsInvalid()) return GetLastError();   // e.g. 2, 3, 5 or 32
//   std::uint32_t got = 0;
//   ReadFile(h, buffer, 100, &got);
//   CloseHandle(h);
//
// Every open the library makes with a share mode goes through CreateFile, so
// that library handles see each other's sharing rules.
//
// Sharing on POSIX. Windows share modes are emulated with flock(2) on the
// descriptor (taken without blocking, after the open and before any truncation):
//   - an open with read access only, whose share mode includes kFileShareRead,
//     takes a shared lock;
//   - every other open with read or write access (write access, or a share
//     mode without kFileShareRead) takes an exclusive lock;
//   - an open with neither read nor write access (attributes only) takes none.
// A lock that cannot be taken fails the open with kErrorSharingViolation (32).
// So two read-only opens that share reading coexist, and a writer excludes
// every other library open of the file, as on Windows when writers share
// reading only.
// Limits of this emulation, by nature of advisory locks:
//   - it binds only code that takes the locks: other programs, and plain
//     open(2) calls, read and write the file freely (a second process can read
//     a file the library holds open for writing, as on Windows, but it can also
//     write it, unlike on Windows);
//   - kFileShareWrite is not honoured: an open with write access always
//     excludes the others, even when every party shares writing;
//   - kFileShareDelete is not emulated: unlinking an open file always succeeds;
//   - on some network file systems flock is local to one machine or a no-op;
//   - locks belong to the open file description: a forked child that has not
//     exec'd shares the parent's lock (descriptors are opened O_CLOEXEC, so an
//     exec'd program never inherits one).
//
// Seeks on POSIX. For regular files a seek only records the new position; the
// next ReadFile or WriteFile transfers there with pread/pwrite, so the ports'
// seek-then-transfer costs one system call. Every call here reports the file
// pointer as on Windows; only the descriptor's kernel offset, which no caller
// sees, lags behind.
#pragma once

#include <cstdint>

#include "basalt/strings.h"

namespace tovimpl::platform {

// An opaque file handle, the value of a Windows HANDLE. Three states:
//   null     (FileHandle{}):           never opened, or closed;
//   invalid  (FileHandle::Invalid()): an open that failed (INVALID_HANDLE_VALUE);
//   open:                              anything else.
// The POSIX backend stores descriptor + 1, so descriptor 0 is a valid handle.
// Bits()/FromBits() move the value through places that may not include this
// header (0 is null, -1 invalid, as with Windows handles).
class FileHandle {
 public:
  constexpr FileHandle() noexcept = default;
  static constexpr FileHandle Invalid() noexcept { return FileHandle(-1); }
  static constexpr FileHandle FromBits(std::intptr_t bits) noexcept { return FileHandle(bits); }

  constexpr std::intptr_t Bits() const noexcept { return mBits; }
  constexpr bool IsNull() const noexcept { return mBits == 0; }
  constexpr bool IsInvalid() const noexcept { return mBits == -1; }
  constexpr bool IsOpen() const noexcept { return mBits != 0 && mBits != -1; }

  friend constexpr bool operator==(FileHandle, FileHandle) noexcept = default;

 private:
  explicit constexpr FileHandle(std::intptr_t bits) noexcept : mBits(bits) {}
  std::intptr_t mBits = 0;
};

// Desired access (combine with |).
inline constexpr std::uint32_t kGenericRead = 0x80000000u;
inline constexpr std::uint32_t kGenericWrite = 0x40000000u;

// Share mode (combine with |; 0 shares nothing).
inline constexpr std::uint32_t kFileShareRead = 1;
inline constexpr std::uint32_t kFileShareWrite = 2;
inline constexpr std::uint32_t kFileShareDelete = 4;

// Creation disposition.
inline constexpr std::uint32_t kCreateNew = 1;         // fail with 80 if the file exists
inline constexpr std::uint32_t kCreateAlways = 2;      // create, or truncate an existing file
inline constexpr std::uint32_t kOpenExisting = 3;      // fail with 2 or 3 if it does not exist
inline constexpr std::uint32_t kOpenAlways = 4;        // open, or create a missing file
inline constexpr std::uint32_t kTruncateExisting = 5;  // open and truncate; needs write access

// Flags and attributes (hints; the POSIX backend honours only the folder flag).
inline constexpr std::uint32_t kFileAttributeNormal = 0x80u;
inline constexpr std::uint32_t kFileFlagBackupSemantics = 0x02000000u;  // allows opening a folder
inline constexpr std::uint32_t kFileFlagSequentialScan = 0x08000000u;
inline constexpr std::uint32_t kFileFlagRandomAccess = 0x10000000u;

// Move methods of SetFilePointer / SetFilePointerEx.
inline constexpr std::uint32_t kFileBegin = 0;
inline constexpr std::uint32_t kFileCurrent = 1;
inline constexpr std::uint32_t kFileEnd = 2;

// The failure value of SetFilePointer and GetFileSize. It is also a valid
// answer (a low part of 0xFFFFFFFF); on success these calls then set the last
// error to 0, so callers test "== kInvalidSetFilePointer && GetLastError() != 0".
inline constexpr std::uint32_t kInvalidSetFilePointer = 0xFFFFFFFFu;
inline constexpr std::uint32_t kInvalidFileSize = 0xFFFFFFFFu;

// CreateFileW. Opens or creates the file and returns its handle, or
// FileHandle::Invalid() with the last error set: 2 file not found, 3 path not
// found, 5 access denied (also for a folder without kFileFlagBackupSemantics),
// 32 sharing violation (see the top of this header), 80 kCreateNew on an
// existing file, 87 a bad disposition (or kTruncateExisting without write
// access). On success the last error is 183 when kCreateAlways or kOpenAlways
// found an existing file and 0 otherwise, as on Windows. Truncation happens
// only after the sharing check passed. Handles are never inherited by programs
// the process starts. New files get mode 0666 less the umask.
FileHandle CreateFile(UTF16StringView libraryPath, std::uint32_t desiredAccess,
                      std::uint32_t shareMode, std::uint32_t creationDisposition,
                      std::uint32_t flagsAndAttributes);

// ReadFile. Reads up to `count` bytes at the file pointer into `buffer` and
// advances the pointer; `*bytesRead` (may be null) gets the number delivered,
// fewer than `count` only at the end of the file (0 at or past the end, which
// is still success). `buffer` must hold `count` bytes. Failure: false, 6 for a
// null or invalid handle, 5 for a handle without read access.
bool ReadFile(FileHandle file, void* buffer, std::uint32_t count, std::uint32_t* bytesRead);

// WriteFile. Writes `count` bytes at the file pointer (extending the file when
// it lies past the end; the gap reads as zeros) and advances the pointer;
// `*bytesWritten` (may be null) gets the number written. Failure: false, 112
// when the disk is full, 6 for a bad handle, 5 without write access.
bool WriteFile(FileHandle file, const void* buffer, std::uint32_t count,
               std::uint32_t* bytesWritten);

// Test seam: while set, WriteFile first asks `fault` about every write; a
// nonzero answer fails that write with the answer as its Windows error code
// (112 for a full disk, say) and writes nothing. Null restores plain writes.
// Set it only while no other thread writes.
using WriteFault = std::uint32_t (*)(FileHandle file, std::uint32_t count);
void SetWriteFaultForTesting(WriteFault fault);

// SetFilePointer. Without `distanceHigh` the distance is the signed 32-bit
// `distance`; with it, the 64-bit value (*distanceHigh << 32) | (uint32)distance,
// and the high part of the new position is stored back in *distanceHigh.
// Returns the low 32 bits of the new position. Failure: kInvalidSetFilePointer,
// the file pointer unchanged, last error 131 for a position before the start
// (so at FILE_BEGIN without a high part, any distance of 2^31 or more is
// negative and fails with 131), 87 when there is no high part and the new
// position does not fit in 32 bits, 6 for a bad handle.
std::uint32_t SetFilePointer(FileHandle file, std::int32_t distance, std::int32_t* distanceHigh,
                             std::uint32_t moveMethod);

// SetFilePointerEx. Moves the file pointer by a signed 64-bit distance; the new
// position goes to *newPosition (may be null). Failure: false, 131 for a
// position before the start, 6 for a bad handle.
bool SetFilePointerEx(FileHandle file, std::int64_t distance, std::int64_t* newPosition,
                      std::uint32_t moveMethod);

// SetEndOfFile. Truncates or extends the file to the file pointer (an extension
// reads as zeros). Failure: false, 5 without write access.
bool SetEndOfFile(FileHandle file);

// GetFileSize. Returns the low 32 bits of the size and stores the high 32 bits
// in *sizeHigh when it is given. Failure: kInvalidFileSize, 6 for a bad handle.
std::uint32_t GetFileSize(FileHandle file, std::uint32_t* sizeHigh);

// GetFileSizeEx. Stores the size in *size. Failure: false.
bool GetFileSizeEx(FileHandle file, std::int64_t* size);

// FlushFileBuffers. Hands the file's written data to the storage device.
bool FlushFileBuffers(FileHandle file);

// CloseHandle. Closes an open handle (its sharing lock goes with it). A null or
// invalid handle fails with 6 and changes nothing.
bool CloseHandle(FileHandle file);

// DeleteFileW. Removes the file. Failure: false, 2/3 when it does not exist,
// 5 for a folder or without permission. On POSIX an open file can be deleted
// (its handles keep working); on Windows that fails unless every open shares
// deletion.
bool DeleteFile(UTF16StringView libraryPath);

}  // namespace tovimpl::platform
