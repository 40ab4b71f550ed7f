// tovfoundation files: copying, moving, deleting and trashing files.
#pragma once

#include <cstdint>

#include "tovfoundation/common.h"

namespace Halyard {

namespace PathUtilities {

// --- File operations: true/false, never throw -------------------------------

// Copies a file, overwriting an existing target.
TOV_API unsigned char TOVCopyFile(const UTF16String& source, const UTF16String& target);

// Answers of a copy progress routine.
inline constexpr std::uint32_t kProgressContinue = 0;  // go on
inline constexpr std::uint32_t kProgressCancel = 1;    // stop; the partial target is deleted
inline constexpr std::uint32_t kProgressStop = 2;      // stop; the partial target is kept
inline constexpr std::uint32_t kProgressQuiet = 3;     // go on without further calls
// Why the routine is called.
inline constexpr std::uint32_t kCallbackChunkFinished = 0;  // a chunk was written
inline constexpr std::uint32_t kCallbackStreamSwitch = 1;   // before the first chunk
// A copy progress routine: total size, bytes copied so far, the same two
// figures for the current stream (a file has one), the stream number (1), the
// reason, two handles that are always null in this library, and the caller's
// data. It answers one of kProgress*.
using TOVCopyProgressRoutine = std::uint32_t (*)(
    std::uint64_t totalFileSize, std::uint64_t totalBytesTransferred, std::uint64_t streamSize,
    std::uint64_t streamBytesTransferred, std::uint32_t streamNumber, std::uint32_t callbackReason,
    void* sourceFile, void* destinationFile, void* data);
// Copies a file, overwriting an existing target, calling `progress` (may be
// null) once before the first chunk and after every chunk with `progressData`.
// A cancel or stop answer fails the copy (false).
TOV_API unsigned char TOVCopyFileEx(const UTF16String& source, const UTF16String& target,
                                    TOVCopyProgressRoutine progress, void* progressData);
// Moves or renames a file or folder. Never overwrites: an existing target
// fails. Across file systems a file is copied and the source deleted; a
// folder fails.
TOV_API unsigned char TOVMoveFile(const UTF16String& source, const UTF16String& target);
// True when nothing exists at the path, when the file is deleted, and when the
// delete fails while the platform's last error is 0; false otherwise (a folder
// is never deleted).
TOV_API unsigned char TOVDeleteFile(const UTF16String& path);
// Moves a file or folder to the user's trash. POSIX: the freedesktop.org
// trash (the home trash under $XDG_DATA_HOME, else ~/.local/share, when the
// item is on the same file system, else $topdir/.Trash-$uid). False when the
// item cannot be trashed; never falls back to a plain delete.
TOV_API unsigned char TOVMoveToTrash(const UTF16String& path);

}  // namespace PathUtilities

}  // namespace Halyard
