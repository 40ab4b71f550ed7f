// OS layer: the file system outside of open files (platform/file.h has the
// handles and file deletion) — attributes, folders and their listing, the
// current directory, free space, temporary names, copy, move, the trash, the
// executable's path.
//
// Every function takes library paths (Windows spelling, UTF-16) and returns
// its outcome with the Windows error code of a failure (platform/result.h);
// nothing is left in the thread's last error for the caller to read. The
// conventions of the public interface (0xFFFFFFFF for "no attributes", the
// codes the public calls promise) are applied by the portable code that owns
// that interface, not here.
#pragma once

#include <cstdint>

#include "basalt/strings.h"
#include "platform/file.h"
#include "platform/result.h"

namespace tovimpl::platform {

inline constexpr std::uint32_t kFileAttributeReadOnly = 0x1;
inline constexpr std::uint32_t kFileAttributeHidden = 0x2;
inline constexpr std::uint32_t kFileAttributeDirectory = 0x10;
// The answer of CreateDirectories for a relative path.
inline constexpr std::uint32_t kErrorBadPathname = 161;

// The attribute bits of the item at `path` (kFileAttributeDirectory for a
// folder, kFileAttributeNormal for a plain writable file). Links are followed.
// POSIX: a name starting with '.' is hidden; a file the caller cannot write is
// read-only. Win32: GetFileAttributesW.
Result<std::uint32_t> ReadAttributes(const UTF16String& path);

// Attributes, times as FILETIME values (units of 100 ns since 1601-01-01 UTC)
// and size of the item at `path`. POSIX: stat, and statx for the creation
// time, which is the birth time where the file system records one, else the
// last-write time. Win32: GetFileAttributesExW.
struct FileInfo {
  std::uint32_t attributes;
  std::uint64_t creationTime;
  std::uint64_t lastAccessTime;
  std::uint64_t lastWriteTime;
  std::uint64_t size;
};
Result<FileInfo> ReadFileInfo(const UTF16String& path);

// Creates the folder and every missing parent (Win32: SHCreateDirectoryExW
// with no window and no security attributes). Failures: 183 when the folder
// exists, 80 when a file of that name exists, 161 for a relative path, others
// from the system.
Status CreateDirectories(const UTF16String& path);

// A folder listing. `pattern` is a folder part (optional; relative to the
// current directory) and a name pattern matched as Windows matches:
// case-insensitive (ASCII, Latin, Greek and Cyrillic letters, whatever the
// locale), '*' and '?', "*.*" and "x.*" also matching names without a dot,
// "x." matching "x". Entries come in the order the file system gives them,
// "." and ".." included. Win32: FindFirstFileW / FindNextFileW / FindClose.
struct ListingEntry {
  std::uint32_t attributes;
  UTF16String name;
};
struct ListingState;
using ListingHandle = ListingState*;
// Opens the listing and reads its first entry into `*first`. No match: 2 (or
// 3 when the folder part does not exist).
Result<ListingHandle> OpenListing(const UTF16String& pattern, ListingEntry* first);
// The next entry; 18 at the end.
Status NextListingEntry(ListingHandle listing, ListingEntry* entry);
// Ends the listing; null is ignored.
void CloseListing(ListingHandle listing);
// The matcher OpenListing uses, exposed for tests.
bool MatchesPattern(const UTF16String& pattern, const UTF16String& name);

// The current directory, and changing it.
Result<UTF16String> CurrentDirectory();
Status ChangeDirectory(const UTF16String& path);

// The bytes free to the calling user on the volume that holds `path` (POSIX:
// statvfs f_bavail × f_frsize; Win32: GetDiskFreeSpaceExW).
Result<std::uint64_t> FreeSpace(const UTF16String& path);
// Test seam: while set, FreeSpace answers with this function instead of
// asking the system. Null restores the system. Not thread-safe.
using FreeSpaceAnswer = Result<std::uint64_t> (*)(const UTF16String& path);
void SetFreeSpaceAnswerForTesting(FreeSpaceAnswer answer);

// The temporary folder, ending in '\'. POSIX: TMPDIR, else "/tmp", in
// backslash form. Win32: GetTempPathW.
Result<UTF16String> TempDirectory();

// Creates a new empty file folder\PPPhhhh.tmp (PPP the first three units of
// `prefix`, hhhh an upper-case hexadecimal number from 1 to FFFF starting
// from the clock) exclusively (create-new, write access, shared for reading)
// and returns its path. Nothing is made on failure (267 when `folder` is not
// a folder). Win32: GetTempFileNameW with unique 0.
Result<UTF16String> CreateTempFile(const UTF16String& folder, const UTF16String& prefix);

// Copies the file's bytes and permission bits; both files are opened through
// CreateFile (source shared for reading, target unshared). `failIfExists`
// refuses an existing target (80). The progress routine is called before the
// first chunk (reason 1) and after each chunk (reason 0) with null handles;
// answers: 0 continue, 1 cancel (partial target deleted), 2 stop (kept), 3
// quiet. Cancel and stop fail with 1235. `cancel` (may be null) is read before
// each chunk; nonzero cancels. Win32: CopyFileExW.
using CopyProgressRoutine = std::uint32_t (*)(
    std::uint64_t totalFileSize, std::uint64_t totalBytesTransferred, std::uint64_t streamSize,
    std::uint64_t streamBytesTransferred, std::uint32_t streamNumber, std::uint32_t callbackReason,
    void* sourceFile, void* destinationFile, void* data);
Status CopyFileContents(const UTF16String& source, const UTF16String& target,
                        CopyProgressRoutine progress, void* data, const int* cancel,
                        bool failIfExists);

// Renames a file or folder, never replacing an existing target (183). Across
// file systems a file is copied and the source deleted; a folder fails with
// 17. POSIX: renameat2(RENAME_NOREPLACE), else link + unlink. Win32: MoveFileW.
Status MoveNoReplace(const UTF16String& source, const UTF16String& target);

// Moves a file or folder to the user's trash; never a plain delete.
// POSIX: the freedesktop.org trash — $XDG_DATA_HOME/Trash (XDG_DATA_HOME
// defaulting to $HOME/.local/share) when the item lies on the same file system,
// else $topdir/.Trash-$uid on the item's mount; the .trashinfo record is
// created exclusively first. Win32: SHFileOperationW(FO_DELETE, FOF_ALLOWUNDO
// and the silent flags) on one item.
Status MoveToTrash(const UTF16String& path);

// The path of the running executable. POSIX: /proc/self/exe (Linux) in
// backslash form. Win32: GetModuleFileNameW(null).
Result<UTF16String> ExecutablePath();

}  // namespace tovimpl::platform
