// tovfoundation files: Halyard::PathUtilities, path text on UTF16String.
// Pure string operations (splitting, editing, composing, the long-path
// prefix) and the questions that ask the file system about one path.
#pragma once

#include "tovfoundation/common.h"

namespace Halyard {

// ---------------------------------------------------------------------------
// Halyard::PathUtilities: path text on UTF16String.
// ---------------------------------------------------------------------------
namespace PathUtilities {

// --- Splitting ------------------------------------------------------------
// The split rule: drive = the first two characters when the second is ':',
// else empty; folder = everything after the drive up to and including the
// last '\' or '/'; file name = what follows, up to its last '.'; extension =
// from that dot (included) to the end. Dots in folder names do not count.
//   "C:\a\b\c.txt" ⇒ "C:" "\a\b\" "c" ".txt"
//   "\\?\C:\x"     ⇒ ""   "\\?\C:\" "x" ""     (the prefix is no drive)
//   "a.b\c"        ⇒ ""   "a.b\"  "c" ""
//
// SplitPath fills caller buffers with NUL-terminated pieces; each buffer may be
// null and is then skipped. Caller contract: each non-null buffer holds at
// least (length of path + 1) units.
TOV_API void SplitPath(const UTF16String& path, unsigned short* drive, unsigned short* folder,
                       unsigned short* fileName, unsigned short* extension);

// "C:\a\b\c.txt" ⇒ ".txt"; "C:\a\b" ⇒ "" (the dot is kept).
TOV_API UTF16String TOVGetFileExtension(const UTF16String& path);
// "C:\a\b\c.txt" ⇒ "c.txt"
TOV_API UTF16String TOVGetFileName(const UTF16String& path);
// "C:\a\b\c.txt" ⇒ "c"
TOV_API UTF16String TOVGetFileTitle(const UTF16String& path);
// The folder without the drive, separator kept: "C:\a\b\c.txt" ⇒ "\a\b\";
// "c.txt" ⇒ "".
TOV_API UTF16String TOVGetFolderPath(const UTF16String& path);
// Drive and folder: "C:\a\b\c.txt" ⇒ "C:\a\b\"; "C:c.txt" ⇒ "C:".
TOV_API UTF16String TOVGetFullFolderPath(const UTF16String& path);
// The last folder name: TOVGetFolderPath, one trailing '\' removed (roots keep
// theirs), everything before the last component stripped.
//   "C:\a\b\c.txt" ⇒ "b";  "C:\c.txt" ⇒ "\";  "c.txt" ⇒ ""
TOV_API UTF16String TOVGetFolderName(const UTF16String& path);
// The root of the path, "" when it has none a root can be found in:
//   "C:\a\b" ⇒ "C:\";  "\\srv\share\x" ⇒ "\\srv\share";  "\a" ⇒ "\";
//   "a\b" ⇒ "";  "C:c.txt" ⇒ "".
// A root is "\", "X:\", or "\\" followed by a server and at most one share name.
TOV_API UTF16String TOVGetRootOrVolume(const UTF16String& path);
// Without an argument: the value of the environment variable HOMEDRIVE
// (at most 259 units), or "" when it is not set.
TOV_API UTF16String TOVGetRootOrVolume();

// --- Editing in place -----------------------------------------------------
// "" stays ""; "C:\a" ⇒ "C:\a\"; "C:\a\" stays. Only '\' counts as a
// separator here, deliberately: "C:/a/" ⇒ "C:/a/\".
TOV_API void AddTrailingslash(UTF16String& path);
// Removes one trailing '\' unless the path is a root:
//   "C:\a\" ⇒ "C:\a";  "C:\a\\" ⇒ "C:\a\";  "C:\" and "\" stay;  "C:/a/" stays.
TOV_API void RemoveTrailingslash(UTF16String& path);
// Removes the extension of the last component: "C:\a.b\c.txt" ⇒ "C:\a.b\c";
// "C:\a.b\c" stays; "x.tar.gz" ⇒ "x.tar". A blank after the last dot means
// there is no extension ("a.b c" stays), as in the Windows shell.
TOV_API void RemoveExtension(UTF16String& path);

// --- Composing ------------------------------------------------------------
// Composes drive, folder, file name and extension (each NUL-terminated UTF-16,
// each may be null):
//   1. folder null ⇒ folder "" and, when the drive is null too, drive "".
//   2. else drive null ⇒ the folder (with a trailing '\') is split; when it
//      has a drive, that drive and the rest replace drive and folder.
//   3. extension null ⇒ when a file name is given and has an extension of its
//      own, the name is split into file name and extension (any folder part of
//      the name is dropped).
//   4. the pieces are joined: the drive's FIRST character and ':', the folder
//      (a '\' added unless it ends in '\' or '/'), the file name, the extension
//      (a '.' added unless it starts with one).
// The result is cut to 260 units; the folder to 256 and the name and extension
// to 256 each in steps 2 and 3.
//   MakePath(null, "C:\Media", "clip", ".wav") ⇒ "C:\Media\clip.wav"
//   MakePath("D", "x", "f", "txt")              ⇒ "D:x\f.txt"
TOV_API UTF16String MakePath(const unsigned short* drive, const unsigned short* folder,
                             const unsigned short* fileName, const unsigned short* extension);

// --- Asking the file system -----------------------------------------------
// True when something (file or folder) exists at the path.
TOV_API unsigned char ExistsOnDisk(const UTF16String& path);
// True when the path names a folder.
TOV_API unsigned char IsFolder(const UTF16String& path);
// Always false: shortcuts and links are not recognised, by design.
TOV_API unsigned char IsAlias(const UTF16String& path);

// --- The long-path prefix "\\?\" ------------------------------------------
// Adds the prefix, whatever the length:
//   "C:\x" ⇒ "\\?\C:\x";  "\\srv\s" ⇒ "\\?\UNC\srv\s";  "\\?\C:\x" stays;
//   "" ⇒ "\\?\" (deliberately).
TOV_API UTF16String ToNormalizedPath(const UTF16String& path);
// Removes it: "\\?\UNC\srv\s" ⇒ "\\srv\s";  "\\?\C:\x" ⇒ "C:\x";  "\\?\" ⇒ "";
// anything else stays.
// It undoes ToNormalizedPath for every non-empty path that is not prefixed
// already, except a relative path starting with "UNC", which the prefix turns
// into a network path: "UNC\x" ⇒ "\\?\UNC\x" ⇒ "\\x" (the rules are kept as
// they are).
TOV_API UTF16String RemovePathNormalization(const UTF16String& path);
// False for EVERY input, including prefixed paths: the test it makes can never
// succeed. This is intended and kept; do not use it to detect the prefix.
TOV_API unsigned char IsNormalizedPath(const UTF16String& path);

// The host executable's name without folder and extension (the last dot of the
// name ends it): "C:\Apps\Encoder.exe" ⇒ "Encoder"; "render.final.exe" ⇒
// "render.final"; on POSIX "/opt/app-1.2/bin/tovtool" ⇒ "tovtool". The
// executable's path is cut to 259 units first.
TOV_API UTF16String GetModuleName();

// The path as the operating system spells it, for handing library paths to
// other code. Windows: unchanged. POSIX: '\' becomes '/', "\\?\" is dropped and
// "\\?\UNC\" becomes "//": "\tmp\a.txt" ⇒ "/tmp/a.txt".
TOV_API UTF16String ToPlatformPath(const UTF16String& path);

}  // namespace PathUtilities

}  // namespace Halyard
