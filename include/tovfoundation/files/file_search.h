// tovfoundation files: file search by pattern and the disk-space check.
#pragma once

#include <cstdint>
#include <vector>

#include "tovfoundation/common.h"

namespace Halyard {

// ---------------------------------------------------------------------------
// File search and the disk-space check.
// ---------------------------------------------------------------------------

// The packed result of the third VUtilsFindFilesFromName, in one block:
//   offset 0  count (32-bit); 4 reserved, not written;
//   offset 8  names == the block's start + 16;
//   offset 16 count pointers into the string area;
//   then the names, NUL-terminated, one after another in list order.
// Size: 16 + 8 × count + Σ (length + 1) on 64-bit platforms.
struct FileList {
  // The number of names.
  std::uint32_t count;
  // Not written.
  std::uint32_t reserved;
  // The block's start + 16: `count` pointers to the names, in list order.
  char** names;
};

// Patterns are matched as Windows matches them: case-insensitive, '*' and
// '?', "*.*" also matching names without a dot, "name.*" matching "name"; a
// pattern may carry a folder part ("sub\*.txt"). 8.3 short names do not exist
// here and are not matched.
//
// These functions change the PROCESS's current directory while they run:
// callers must not run them concurrently with each other or with code that
// relies on the current directory. Returned strings are new[] arrays the caller
// frees with delete[], one by one. `services` is not used.

// Narrow text: the folders, patterns and names of the narrow forms are in the
// system's narrow encoding, the ANSI code page on Windows (the encoding of the
// narrow search and current-directory calls), UTF-8 on POSIX.

// Appends folder + "\" + name for every file (not folder) matching `pattern`
// in `folder`, without descending. Null folder (or null pattern): nothing. A folder that cannot
// be entered is ignored: the pattern is then searched in the current
// directory. Always 0.
TOV_API std::uint32_t VUtilsFindFilesFromName(std::vector<char*>& out, const char* folder,
                                              const char* pattern, IVServicesManager* services);
// As above with UTF-16 text; bare names when `fullPaths` is false.
TOV_API std::uint32_t VUtilsFindFilesFromName(std::vector<unsigned short*>& out,
                                              const unsigned short* folder,
                                              const unsigned short* pattern,
                                              IVServicesManager* services, bool fullPaths);
// The packed form. `flags` 0: files of the whole tree (folders descended, not
// listed); any other value: files and folders of `folder` itself. With flags
// 0 only subfolders whose own names match `pattern` are entered ("*" walks the
// whole tree, "*.txt" only the top folder and folders named *.txt). Each
// subfolder is entered as folder + "\" + name, so `folder` should be
// absolute: a relative one no longer resolves once inside it, and the search
// stops with kErrPathNotFound. Null `size`: 0, nothing done; null `folder` or
// `pattern`: kErrPathNotFound. Else the search runs; a folder that cannot be entered gives
// kErrPathNotFound (size and list untouched). Otherwise *size = the block size
// and, when `list` is not null, the block is written there. Caller contract:
// `list` points to at least the size an earlier call reported; nothing is
// checked. If a subfolder fails, the search stops and the current directory
// stays where it stopped (kept so).
TOV_API std::uint32_t VUtilsFindFilesFromName(const char* folder, const char* pattern,
                                              FileList* list, std::uint32_t* size,
                                              std::uint32_t flags);

// 0 when the folder of `destination` has strictly more than 1.25 × the size of
// `sourceFile` free, else kErrWriteFailed (also for null arguments, a missing
// source, a failed size or free-space query). The free space is asked for the
// destination's folder WITHOUT its drive ("C:\out\x.mp4" ⇒ "\out"), so on
// Windows it is the current drive's; kept so.
TOV_API std::uint32_t CheckReEncodeDiskSpaceRemaining(const unsigned short* sourceFile,
                                                      const unsigned short* destination);

}  // namespace Halyard
