// tovfoundation files: automatic and temporary file names, the temporary and
// preferences folders.
#pragma once

#include "tovfoundation/common.h"
#include "tovfoundation/files/file_exceptions.h"

namespace Halyard {

namespace PathUtilities {

// --- Automatic and temporary names ----------------------------------------

// Creates a new empty file named folder\prefix<pid>_<tid>_<ticks>extension and
// returns its path (exactly one '\' before the prefix, whether `folder` ends
// in one or not; `extension` is given with its dot). While a file or folder of
// the candidate's name exists, another "<pid>_<tid>_<ticks>" group is
// APPENDED to the text (the text grows, deliberately):
//   "C:\Cache\TOVCache412_88_907.vpc", after a collision
//   "C:\Cache\TOVCache412_88_907412_88_911.vpc".
// The file is created exclusively (never an existing one), write access, others
// may read; it is closed before returning.
// Throws NotAValidFolderPath when `folder` is not a folder, UnableToCreateFile
// when the creation fails. All callers in the process are serialised by one
// lock; other processes differ by the process identifier.
TOV_API UTF16String GetAutoFileName(const UTF16String& folder, const UTF16String& prefix,
                                    const UTF16String& extension);

// The temporary folder, ending in '\'. POSIX: TMPDIR, else "/tmp", in
// backslash form ("\tmp\"). Throws NotAValidFolderPath when it cannot be had
// or does not exist.
TOV_API UTF16String TOVGetTempFolder();
// Creates a new empty file "_TO<hex>.tmp" in TOVGetTempFolder() (the platform
// scheme: first three characters of the prefix "_TOV_", a unique hexadecimal
// number, ".tmp") and returns its path. Throws NotAValidFolderPath (from
// TOVGetTempFolder) or UnableToGetTempFileName.
TOV_API UTF16String TOVGetTempFileName();
// `name` is the prefix (its first three characters are used) AND receives the
// created file's path. Throws NotAValidFolderPath when nothing exists at
// `folder`, UnableToGetTempFileName when no file can be made there; `name` is
// unchanged when the call throws.
TOV_API void TOVGetTempFileName(const UTF16String& folder, UTF16String& name);

// HOMEDRIVE followed by HOMEPATH ("C:" + "\Users\ed" ⇒ "C:\Users\ed"). When
// neither variable is set, ordinary on POSIX, the value of HOME stands in
// (in backslash form). Throws Halyard::TOVNotAValidFolderPathException when
// the result does not exist.
TOV_API UTF16String TOVGetPreferencesFolder();

}  // namespace PathUtilities

}  // namespace Halyard
