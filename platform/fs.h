// OS layer: the file system outside of open files (platform/file.h has the
// handles and DeleteFile) — attributes, folders and
// their enumeration, the current directory, free space, temporary names, copy,
// move, delete, file times, the trash, the executable's path.
//
// Every function takes library paths (Windows spelling, UTF-16), is shaped
// like the Windows call named in its comment, and reports failure the Windows
// way: a failure value and a Windows error code in the thread's last error
// (platform/error.h), never 0.
#pragma once

#include <cstdint>
#include <optional>

#include "basalt/strings.h"
#include "platform/file.h"

namespace tovimpl::platform {

inline constexpr std::uint32_t kInvalidFileAttributes = 0xFFFFFFFFu;
inline constexpr std::uint32_t kFileAttributeReadOnly = 0x1;
inline constexpr std::uint32_t kFileAttributeHidden = 0x2;
inline constexpr std::uint32_t kFileAttributeDirectory = 0x10;
// SHCreateDirectoryExW's answer for a relative path.
inline constexpr std::uint32_t kErrorBadPathname = 161;

// GetFileAttributesW: the attribute bits (kFileAttributeDirectory for a
// folder, kFileAttributeNormal for a plain writable file), or
// kInvalidFileAttributes. POSIX: links are followed; a name starting with '.'
// is hidden; a file the caller cannot write is read-only.
std::uint32_t GetFileAttributes(const UTF16String& path);

// GetFileAttributesExW: attributes, times as FILETIME values (units of 100 ns
// since 1601-01-01 UTC) and size. POSIX: statx; the creation time is the birth
// time where the file system records one, else the last-write time.
struct FileAttributeData {
  std::uint32_t attributes;
  std::uint64_t creationTime;
  std::uint64_t lastAccessTime;
  std::uint64_t lastWriteTime;
  std::uint64_t size;
};
bool GetFileAttributesEx(const UTF16String& path, FileAttributeData* data);

// SHCreateDirectoryExW (no window, no security attributes): creates the folder
// and every missing parent. Returns 0, or a Windows error code: 183 when the
// folder exists, 80 when a file of that name exists, 161 for a relative path,
// others from the mapping table. Also stored as the last error.
std::uint32_t CreateDirectoryWithParents(const UTF16String& path);

// FindFirstFileW / FindNextFileW / FindClose. `pattern` is a folder part
// (optional; relative to the current directory) and a name pattern matched as
// Windows matches: case-insensitive (ASCII, Latin, Greek and Cyrillic letters, whatever the
// locale), '*' and '?', "*.*" and "x.*" also
// matching names without a dot, "x." matching "x". Entries come in the order
// the file system gives them, "." and ".." included. No match: null handle,
// last error 2 (or 3 when the folder part does not exist).
struct FindData {
  std::uint32_t attributes;
  UTF16String name;
};
using FindHandle = void*;
FindHandle FindFirstFile(const UTF16String& pattern, FindData* data);
// False and last error 18 at the end.
bool FindNextFile(FindHandle handle, FindData* data);
bool FindClose(FindHandle handle);
// The matcher FindFirstFile uses, exposed for tests.
bool MatchesPattern(const UTF16String& pattern, const UTF16String& name);

// GetCurrentDirectoryW / SetCurrentDirectoryW.
std::optional<UTF16String> GetCurrentDirectory();
bool SetCurrentDirectory(const UTF16String& path);

// GetDiskFreeSpaceExW: the bytes free to the calling user on the volume that
// holds `path` (statvfs f_bavail × f_frsize).
bool GetDiskFreeSpaceEx(const UTF16String& path, std::uint64_t* freeBytesAvailable);
// Test seam: while set, GetDiskFreeSpaceEx answers with this function instead
// of asking the system. Null restores the system. Not thread-safe.
using FreeSpaceAnswer = bool (*)(const UTF16String& path, std::uint64_t* freeBytesAvailable);
void SetFreeSpaceAnswerForTesting(FreeSpaceAnswer answer);

// GetTempPathW: the temporary folder ending in '\'. POSIX: TMPDIR, else
// "/tmp", in backslash form. Empty on failure.
UTF16String GetTempPath();
// GetTempFileNameW with unique 0: creates a new empty file folder\PPPhhhh.tmp
// (PPP the first three units of `prefix`, hhhh an upper-case hexadecimal
// number from 1 to FFFF starting from the clock) exclusively through
// CreateFile (kCreateNew, write access, shared for reading), and stores its
// path in `*out`. Returns the number, or 0 on failure (no file made).
std::uint32_t GetTempFileName(const UTF16String& folder, const UTF16String& prefix,
                              UTF16String* out);

// CopyFileExW: copies the file's bytes and permission bits; both files are
// opened through CreateFile (source shared for reading, target unshared). `failIfExists`
// refuses an existing target (80). The progress routine is called before the
// first chunk (reason 1) and after each chunk (reason 0) with null handles;
// answers: 0 continue, 1 cancel (partial target deleted), 2 stop (kept), 3
// quiet. Cancel and stop fail with 1235. `cancel` (may be null) is read before
// each chunk; nonzero cancels.
using CopyProgressRoutine = std::uint32_t (*)(
    std::uint64_t totalFileSize, std::uint64_t totalBytesTransferred, std::uint64_t streamSize,
    std::uint64_t streamBytesTransferred, std::uint32_t streamNumber, std::uint32_t callbackReason,
    void* sourceFile, void* destinationFile, void* data);
bool CopyFileEx(const UTF16String& source, const UTF16String& target, CopyProgressRoutine progress,
                void* data, const int* cancel, bool failIfExists);

// MoveFileW: renames a file or folder, never replacing an existing target
// (183). Across file systems a file is copied and the source deleted; a folder
// fails with 17. POSIX: renameat2(RENAME_NOREPLACE), else link + unlink.
bool MoveFile(const UTF16String& source, const UTF16String& target);

// SHFileOperationW(FO_DELETE, FOF_ALLOWUNDO | silent flags) on one item:
// moves a file or folder to the user's trash. Returns 0, or a nonzero code.
// POSIX: the freedesktop.org trash — $XDG_DATA_HOME/Trash (XDG_DATA_HOME
// defaulting to $HOME/.local/share) when the item lies on the same file system,
// else $topdir/.Trash-$uid on the item's mount; the .trashinfo record is
// created exclusively first; never a plain delete.
std::uint32_t MoveToTrash(const UTF16String& path);

// GetModuleFileNameW(null): the path of the running executable. POSIX:
// /proc/self/exe in backslash form. Empty on failure.
UTF16String GetModuleFileName();

}  // namespace tovimpl::platform
