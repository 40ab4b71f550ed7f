// OS layer: files opened by handle.
//
// A file is opened into a handle, then read and written in slices at 64-bit
// positions; every call returns its outcome with the Windows error code of its
// failure (platform/result.h). The handle keeps no position of its own that
// callers rely on: whoever needs a file pointer (the file ports) keeps it.
// Paths are library paths (UTF-16, Windows spelling).
//
//   Result<OpenedFile> opened = OpenFile(path, kGenericRead, kFileShareRead,
//                                        kOpenExisting, kFileFlagSequentialScan);
//   if (!opened) return opened.Error();        // e.g. 2, 3, 5 or 32
//   Result<std::uint32_t> got = ReadAt(opened->handle, 0, buffer, 100);
//   CloseFile(opened->handle);
//
// Every open the library makes with a share mode goes through OpenFile, so
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
// Cost on POSIX: an open is open(2), one fstat(2) (whose answer OpenFile
// returns) and flock(2), plus ftruncate(2) when it truncates an existing file;
// ReadAt and WriteAt are one pread(2)/pwrite(2) each for a transfer the system
// completes at once.
#pragma once

#include <cstdint>

#include "basalt/strings.h"
#include "platform/result.h"

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

// Hints (combine with |; the POSIX backend honours only the folder flag).
inline constexpr std::uint32_t kFileAttributeNormal = 0x80u;
inline constexpr std::uint32_t kFileFlagBackupSemantics = 0x02000000u;  // allows opening a folder
inline constexpr std::uint32_t kFileFlagSequentialScan = 0x08000000u;
inline constexpr std::uint32_t kFileFlagRandomAccess = 0x10000000u;
// Open the path in its long-path form: Windows puts "\\?\" in front of it
// ("\\server\share\x" becomes "\\?\UNC\server\share\x"; a path that already
// has the prefix stays), which lifts the 260-character limit and turns off the
// system's path normalisation. Meaningful for absolute paths only. POSIX
// ignores it.
inline constexpr std::uint32_t kOpenLongPath = 0x00000001u;

// What an open learnt about the file.
struct OpenedFile {
  FileHandle handle;
  std::uint64_t size = 0;  // the size right after the open (0 after a truncation)
  bool existed = false;    // the file was there before the open
  bool isFolder = false;   // only with kFileFlagBackupSemantics
};

// Opens or creates the file. Failure: 2 file not found, 3 path not found, 5
// access denied (also for a folder without kFileFlagBackupSemantics), 32
// sharing violation (see the top of this header), 80 kCreateNew on an
// existing file, 87 a bad disposition (or kTruncateExisting without write
// access). Truncation happens only after the sharing check passed. Handles are
// never inherited by programs the process starts. New files get mode 0666 less
// the umask on POSIX.
Result<OpenedFile> OpenFile(UTF16StringView libraryPath, std::uint32_t access, std::uint32_t share,
                            std::uint32_t disposition, std::uint32_t hints);

// Reads up to `count` bytes at `position` into `buffer` (which holds `count`
// bytes) and returns the number delivered: fewer than `count` only at the end
// of the file, 0 at or past the end (still success). Failure: 6 for a null or
// invalid handle, 5 for a handle without read access. Other threads may read
// the same handle at other positions at the same time.
Result<std::uint32_t> ReadAt(FileHandle file, std::uint64_t position, void* buffer,
                             std::uint32_t count);

// Writes `count` bytes at `position` (extending the file when it lies past the
// end; the gap reads as zeros) and returns the number written. Failure: 112
// when the disk is full, 6 for a bad handle, 5 without write access.
Result<std::uint32_t> WriteAt(FileHandle file, std::uint64_t position, const void* buffer,
                              std::uint32_t count);

// Test seam: while set, WriteAt first asks `fault` about every write; a
// nonzero answer fails that write with the answer as its Windows error code
// (112 for a full disk, say) and writes nothing. Null restores plain writes.
// Set it only while no other thread writes.
using WriteFault = std::uint32_t (*)(FileHandle file, std::uint32_t count);
void SetWriteFaultForTesting(WriteFault fault);

// The file's size now. Failure: 6 for a bad handle.
Result<std::uint64_t> FileSize(FileHandle file);

// Truncates or extends the file to `size` bytes (an extension reads as zeros).
// Failure: 5 without write access, 6 for a bad handle.
Status SetFileSize(FileHandle file, std::uint64_t size);

// Hands the file's written data to the storage device.
Status FlushFile(FileHandle file);

// Closes an open handle (its sharing lock goes with it). A null or invalid
// handle fails with 6 and changes nothing.
Status CloseFile(FileHandle file);

// Removes the file. Failure: 2/3 when it does not exist, 5 for a folder or
// without permission. On POSIX an open file can be removed (its handles keep
// working); on Windows that fails unless every open shares deletion.
Status RemoveFile(UTF16StringView libraryPath);

}  // namespace tovimpl::platform
