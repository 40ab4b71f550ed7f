// tovfoundation files: Halyard::PathUtils, the path operations on standard
// strings.
#pragma once

#include <string>

#include "tovfoundation/common.h"
#include "tovfoundation/files/file_exceptions.h"

namespace Halyard {

// ---------------------------------------------------------------------------
// Halyard::PathUtils: the same operations on standard strings, for callers
// outside the library. Narrow strings are in the system's narrow encoding:
// the ANSI code page on Windows (the encoding the narrow Windows calls take),
// UTF-8 on POSIX. Wide strings are Halyard::WideString (UTF-16). The string
// operations work on the narrow text as it is; the questions to the file
// system and the temporary names pass it to the system in that encoding.
// ---------------------------------------------------------------------------
namespace PathUtils {

// As TOVGetFileExtension: "C:\a\b\c.txt" ⇒ ".txt".
TOV_API std::string GetFileExtension(const std::string& path);
// As TOVGetFileName: "C:\a\b\c.txt" ⇒ "c.txt".
TOV_API std::string GetFileName(const std::string& path);
// As TOVGetFolderPath: "C:\a\b\c.txt" ⇒ "\a\b\".
TOV_API std::string GetFolderPath(const std::string& path);
// The file name part alone. Narrow in and out in spite of the W in its name,
// deliberately.
TOV_API std::string GetFileTitleW(const std::string& path);
// GetFolderPath, RemoveTrailingslash, then everything before the last
// component stripped: "C:\a\b\c.txt" ⇒ "b".
TOV_API std::string GetFolderName(const std::string& path);
// The root as far as it can be found. Unlike TOVGetRootOrVolume, a path
// without a root gives what was left when the search stopped:
// "C:c.txt" ⇒ "C:", "a\b" ⇒ "".
TOV_API std::string GetRootOrVolume(const std::string& path);
// "" stays ""; otherwise the extension of the last component is removed.
TOV_API std::string RemoveExtension(const std::string& path);
TOV_API WideString RemoveExtension(const WideString& path);
// One trailing '\' removed unless the path is a root.
TOV_API std::string RemoveTrailingslash(const std::string& path);
TOV_API WideString RemoveTrailingslash(const WideString& path);
// The split rule into four caller buffers (each may be null; each non-null
// one holds at least length + 1 units).
TOV_API void SplitPath(const std::string& path, char* drive, char* folder, char* fileName,
                       char* extension);
TOV_API void SplitPath(const WideString& path, char16_t* drive, char16_t* folder,
                       char16_t* fileName, char16_t* extension);
// Exists / is a folder. The narrow forms take the path in the system's
// narrow encoding: the ANSI code page on Windows (as PathFileExistsA and
// PathIsDirectoryA take it), UTF-8 on POSIX. The wide forms first reduce the
// path to narrow text in the thread's multibyte locale, characters it cannot
// hold becoming '?', and ask about that reduced path (kept so on purpose: a
// non-ASCII path can answer false although it exists).
TOV_API bool ExistsOnDisk(const std::string& path);
TOV_API bool ExistsOnDisk(const WideString& path);
// True when the path names a folder; the path's encoding as for ExistsOnDisk.
TOV_API bool IsFolder(const std::string& path);
TOV_API bool IsFolder(const WideString& path);
// Always false.
TOV_API bool IsAlias(const std::string& path);
TOV_API bool IsAlias(const WideString& path);
// The temporary folder, ending in '\', in the system's narrow encoding (the
// ANSI code page on Windows, UTF-8 on POSIX). Throws
// Halyard::TOVNotAValidFolderPathException when it does not name an existing path.
TOV_API std::string GetTempFolder();
// Creates a new empty "_TO<hex>.tmp" in GetTempFolder() and returns its path;
// "" when the platform could not make one. The path is in the system's
// narrow encoding (the ANSI code page on Windows, UTF-8 on POSIX). Throws as
// GetTempFolder.
TOV_API std::string GetTemporaryFileName();

}  // namespace PathUtils

}  // namespace Halyard
