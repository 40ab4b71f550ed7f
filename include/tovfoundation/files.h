// tovfoundation files subsystem: path text, file specs (CFileSpec), folders and
// their listings, temporary and automatic names, file search.
//
// Paths are spelled the Windows way on every platform: backslash separators,
// optional drive ("C:"), UNC roots ("\\server\share"), the long-path prefix
// ("\\?\"). The string operations are pure functions that follow the Windows
// rules exactly, so the same text gives the same pieces everywhere:
//
//   using namespace basalt::literals;
//   namespace PU = Halyard::PathUtilities;
//   PU::TOVGetFileName(u"C:\\a\\b\\c.txt"_u16)        == u"c.txt"_u16
//   PU::TOVGetFolderPath(u"C:\\a\\b\\c.txt"_u16)      == u"\\a\\b\\"_u16
//   PU::TOVGetRootOrVolume(u"\\\\srv\\share\\x"_u16)  == u"\\\\srv\\share"_u16
//   PU::ToNormalizedPath(u"\\\\srv\\s"_u16)           == u"\\\\?\\UNC\\srv\\s"_u16
//
// Operations that touch the disk go through the library's OS layer. On POSIX a
// library path "\home\ed\clip.wav" names /home/ed/clip.wav (ToPlatformPath
// gives that spelling to hand to other code); a drive such as "C:" is just the
// first component of a relative path there.
//
// Reporting: the string operations never fail. Folder creation, temporary and
// automatic names throw the exception classes below; file operations answer
// true/false or a status (TOV::kErr...). No other exception leaves the
// subsystem, except std::bad_alloc.
//
// Threads: every function may be called from any thread, with two exceptions
// stated where they are declared: GetAutoFileName serialises its callers with
// a process-wide lock, and VUtilsFindFilesFromName changes the process's
// current directory while it runs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tovfoundation/common.h"

namespace Halyard {

class CReadStream;
class CWriteStream;
class IVServicesManager;

// ---------------------------------------------------------------------------
// Exceptions of the file layer. Each carries no data; what() returns a fixed
// text (the blank before the colon in the two "Unknown exception" texts is
// intended).
// ---------------------------------------------------------------------------

// what() == "TOVFileUtilsException : Unknown exception"
class TOV_API TOVFileUtilsException : public TOV::TOVException {
 public:
  ~TOVFileUtilsException() override;
  const char* what() const noexcept override;
};

// Thrown by the narrow folder class, GetTempFolder and TOVGetPreferencesFolder.
// what() == "TOVFileUtilsException: Folder path is not valid"
class TOV_API TOVNotAValidFolderPathException : public TOVFileUtilsException {
 public:
  ~TOVNotAValidFolderPathException() override;
  const char* what() const noexcept override;
};

// ---------------------------------------------------------------------------
// Halyard::PathUtilities: path text on UTF16String.
// ---------------------------------------------------------------------------
namespace PathUtilities {

// what() == "PathUtilsException : Unknown exception"
class TOV_API PathUtilsException : public TOV::TOVException {
 public:
  ~PathUtilsException() override;
  const char* what() const noexcept override;
};
// Thrown by TOVGetTempFolder, TOVGetTempFileName(folder, name), GetAutoFileName.
// what() == "PathUtilsException: Folder path is not valid"
class TOV_API NotAValidFolderPath : public PathUtilsException {
 public:
  ~NotAValidFolderPath() override;
  const char* what() const noexcept override;
};
// Thrown by GetAutoFileName when its file cannot be created.
// what() == "PathUtilsException: file / directory could not be created"
class TOV_API UnableToCreateFile : public PathUtilsException {
 public:
  ~UnableToCreateFile() override;
  const char* what() const noexcept override;
};
// Thrown by both TOVGetTempFileName.
// what() == "PathUtilsException: Temporary file name could not be obtained"
class TOV_API UnableToGetTempFileName : public PathUtilsException {
 public:
  ~UnableToGetTempFileName() override;
  const char* what() const noexcept override;
};

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

// ---------------------------------------------------------------------------
// Halyard::PathUtils: the same operations on standard strings, for callers
// outside the library. Narrow strings are in the system code page (UTF-8 on
// POSIX); wide strings are Halyard::WideString (UTF-16).
// ---------------------------------------------------------------------------
namespace PathUtils {

// As the PathUtilities namesakes.
TOV_API std::string GetFileExtension(const std::string& path);
TOV_API std::string GetFileName(const std::string& path);
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
// Exists / is a folder. The wide forms first reduce the path to narrow text
// in the thread's multibyte locale, characters it cannot hold becoming '?', and
// ask about that reduced path (kept so on purpose: a non-ASCII path can
// answer false although it exists).
TOV_API bool ExistsOnDisk(const std::string& path);
TOV_API bool ExistsOnDisk(const WideString& path);
TOV_API bool IsFolder(const std::string& path);
TOV_API bool IsFolder(const WideString& path);
// Always false.
TOV_API bool IsAlias(const std::string& path);
TOV_API bool IsAlias(const WideString& path);
// The temporary folder (narrow), ending in '\'. Throws
// Halyard::TOVNotAValidFolderPathException when it does not name an existing path.
TOV_API std::string GetTempFolder();
// Creates a new empty "_TO<hex>.tmp" in GetTempFolder() and returns its path;
// "" when the platform could not make one. Throws as GetTempFolder.
TOV_API std::string GetTemporaryFileName();

}  // namespace PathUtils

// ---------------------------------------------------------------------------
// Folders and their listings.
// ---------------------------------------------------------------------------
namespace FileUtils {

class Folder;
using FileNameList = std::vector<UTF16String>;
using FolderList = std::vector<Folder>;

// A folder named by a wide path, stored as given (no separator added or
// removed). Copyable. Listings report entries in the order the file system
// gives them, never sorted; "." and ".." are skipped; hidden entries are listed.
class TOV_API Folder {
 public:
  // Any path, even "", is accepted; nothing is checked.
  static Folder CreateFolderObject(const UTF16String& path);
  const UTF16String& GetFullPath() const { return mPath; }

  // True only when the path exists and is a folder.
  static bool ExistsOnDisk(const UTF16String& path);
  static bool IsFolder(const UTF16String& path);
  // Creates the folder and every missing parent. False when anything already
  // exists at the path (an existing folder counts as failure, deliberately),
  // and when the creation fails. The path must be absolute ("C:\x", "\\srv\s\x",
  // on POSIX "\tmp\x"); a relative path fails, as on Windows.
  static bool CreateOnDisk(const UTF16String& path);
  // Bytes free to the calling user on the volume holding `path`. On failure 0,
  // and `*error` (when not null) receives kErrPathNotFound (the path or its
  // drive does not exist), kErrAccessDenied, kErrAlreadyExists or kErrGeneric;
  // on success `*error` is untouched.
  static std::uint64_t GetFreeSpaceOnDisk(const UTF16String& path, std::uint32_t* error);

  // The plain listing: both lists are emptied, then every entry of the folder
  // is appended as GetFullPath() + one '\' + name, folders to `folders`,
  // everything else to `files`. A folder that cannot be listed (missing, no
  // access) gives two empty lists and no error.
  void GetContainedFileAndFolderList(FileNameList& files, FolderList& folders) const;
  // The filtered listing. Results are APPENDED (the lists are not emptied).
  //  - titleFilter (UTF-16, may be null): kept files have it somewhere in
  //    their title, ignoring case under basalt::Locale::Native(); "" keeps all.
  //  - extensionFilter (UTF-8, may be null): kept files have exactly this
  //    extension, dot included, case-sensitive: ".dll" keeps "a.dll", drops
  //    "b.DLL"; "dll" keeps nothing.
  //  - not recursive: the files of this folder, and every direct subfolder.
  //  - recursive: first each subfolder's own filtered listing, in listing
  //    order, each subfolder appended to `folders` AFTER what was found inside
  //    it and only when it yielded at least one file; then this folder's files.
  // Filters apply to files only. A missing folder adds nothing.
  void GetContainedFileAndFolderList(const unsigned short* titleFilter, const char* extensionFilter,
                                     FileNameList& files, FolderList& folders,
                                     unsigned char recursive) const;
  // The filtered listing, files only.
  void GetDynamicLoadObjects(const unsigned short* titleFilter, const char* extensionFilter,
                             FileNameList& files, unsigned char recursive) const;

 private:
  explicit Folder(const UTF16String& path) : mPath(path) {}
  UTF16String mPath;
};

// A path taken apart once. Fields are computed from the path as given:
//   "C:\Media\clip.wav" ⇒ full path "C:\Media\clip.wav", root "C:\",
//     TOVGetFolderPath() "\Media", title "clip", TOVGetFileName() "clip.wav",
//     TOVGetFileExtension() "wav" (no dot, unlike PathUtilities).
//   "C:\Media\Out\" ⇒ full path "C:\Media\Out" (one trailing '\' removed), but
//     folder path "\Media\Out\" and empty title and extension (taken from the
//     path WITH its separator).
// Equality compares full paths code unit by code unit: "C:\a.txt" != "c:\A.TXT".
// File operations report by status and never throw; one object is for one
// thread at a time.
class TOV_API CFileSpec {
 public:
  CFileSpec();
  // Fills root, folder path, title, extension, then the full path; a path
  // exception while doing so ends construction quietly, later fields empty.
  CFileSpec(const UTF16String& path);  // NOLINT(google-explicit-constructor): part of the interface
  CFileSpec(const CFileSpec& other);
  CFileSpec& operator=(const CFileSpec& other);
  CFileSpec& operator=(const UTF16String& path);
  virtual ~CFileSpec();

  virtual bool operator==(const CFileSpec& other) const;
  virtual bool operator!=(const CFileSpec& other) const;
  virtual operator UTF16String() const;  // NOLINT(google-explicit-constructor): the full path

  UTF16String TOVGetFullPathName() const { return mFullPath; }
  UTF16String TOVGetRoot() const { return mRoot; }
  // The folder path with one trailing '\' removed: "\Media\" ⇒ "\Media".
  UTF16String TOVGetFolderPath() const;
  UTF16String TOVGetFileTitle() const { return mTitle; }
  // Title and extension: "clip.wav".
  UTF16String TOVGetFileName() const;
  // The extension WITHOUT its dot: "wav"; "" when there is none.
  UTF16String TOVGetFileExtension() const;

  // Creates or truncates the file (read/write, others may read) and closes it.
  // 0, or kErrCreateFailed.
  std::uint32_t CreateNewFile();
  // Creates the folder that CONTAINS the file (root + folder path, composed
  // with MakePath) with Folder::CreateOnDisk. A root without a drive letter
  // ("\" on POSIX, "\\srv\share") is left out of the composition: as a
  // drive it would give the meaningless "\:". Answers 0, kErrGeneric when CreateOnDisk says false
  // (it already exists, for one), kErrCreateFailed on a path exception.
  std::uint32_t CreateNewFolder();
  // 0, or kErrGeneric.
  std::uint32_t DeleteTheFile();
  bool Exists();
  // The creation or last-write time in UTC (kind 2). 0, or 6 when the file's
  // attributes cannot be read (then *out is untouched). Caller contract: `out`
  // is not null. POSIX: the creation time is the birth time where the file
  // system records one, else the last-write time.
  std::uint32_t GetCreationTime(VDateTime* out);
  std::uint32_t GetModificationTime(VDateTime* out);
  // Null `out`: kErrInvalidPointer. Else *out = 0, then the file is opened
  // for reading with NO sharing (so this fails while any port holds the file,
  // as on Windows): kErrGetSizeFailed when it cannot be opened or sized, else 0
  // and the size.
  std::uint32_t GetFileSize(std::uint64_t* out);
  // A new stream over a new file port on the full path (read: the file must
  // exist; write: created or truncated), 4096-byte buffer, the stream owning
  // the port. The caller owns the stream (delete it or Release it). Null when
  // the path is empty or the file cannot be opened.
  CReadStream* OpenReadStream(HaldByteOrdering order);
  CWriteStream* OpenWriteStream(HaldByteOrdering order);

 private:
  UTF16String mFullPath;
  UTF16String mRoot;
  UTF16String mFolderPath;
  UTF16String mTitle;
  UTF16String mExtension;
};

}  // namespace FileUtils

// The narrow folder class. The stored path must not be empty.
class Folder;
using NarrowFileNameList = std::vector<std::string>;
using NarrowFolderList = std::vector<Folder>;

class TOV_API Folder {
 public:
  // Throws TOVNotAValidFolderPathException unless the path is a folder.
  static Folder CreateFolderObject(std::string path);
  const std::string& GetFullPath() const { return mPath; }

  // Exists and is a folder.
  static bool ExistsOnDisk(const std::string& path);
  // Is a folder.
  static bool IsFolder(const std::string& path);
  // False when the path exists; else creates it with its parents (absolute
  // paths only, as the wide form).
  static bool CreateOnDisk(const std::string& path);

  // The plain listing (lists emptied first; entries joined with exactly one
  // '\'). Throws TOVNotAValidFolderPathException when the path is not a folder.
  void GetContainedFileAndFolderList(NarrowFileNameList& files, NarrowFolderList& folders) const;
  // The plain listing, files kept only when their extension (dot included)
  // equals `extensionFilter` ignoring ASCII case: ".dll" keeps "a.dll" and
  // "b.DLL". Every direct subfolder is kept. Never recursive.
  void GetContainedFileAndFolderList(const std::string& extensionFilter, NarrowFileNameList& files,
                                     NarrowFolderList& folders) const;
  // The filtered listing of the wide class with a title filter only (ASCII
  // case-insensitive substring of the title; null keeps all). Appends.
  void GetContainedFileAndFolderList(const char* titleFilter, NarrowFileNameList& files,
                                     NarrowFolderList& folders, unsigned char recursive) const;

 private:
  // Throws for "". For an existing folder it asks a second time whether it is
  // a folder and throws if the answer changed (kept on purpose). A missing
  // path or an existing file is accepted.
  explicit Folder(const std::string& path);
  std::string mPath;
};

// The older file spec class: an inert shell kept for its interface. Every
// object holds the empty path whatever it was made from, and its accessors
// answer "". Do not complete it.
class TOV_API CFileSpec {
 public:
  CFileSpec();
  CFileSpec(const CFileSpec& other);
  explicit CFileSpec(const std::string& path);
  explicit CFileSpec(const WideString& path);
  virtual ~CFileSpec();
  // All three return *this unchanged.
  CFileSpec& operator=(const CFileSpec& other);
  CFileSpec& operator=(const WideString& path);
  CFileSpec& operator=(const std::string& path);

  virtual bool operator==(const CFileSpec& other) const;
  virtual bool operator!=(const CFileSpec& other) const;
  virtual operator WideString() const;       // NOLINT(google-explicit-constructor)
  virtual operator const char16_t*() const;  // NOLINT(google-explicit-constructor)

  WideString GetFullPathNameW() const { return mPath; }
  std::string GetFullPathNameA() const;
  std::string GetFileExtensionA() const { return {}; }
  WideString GetFileExtensionW() const { return {}; }
  std::string GetFileNameA() const { return {}; }
  WideString GetFileNameW() const { return {}; }
  std::string GetFileTitleA() const { return {}; }
  WideString GetFileTitleW() const { return {}; }
  std::string GetFolderPathA() const { return {}; }
  WideString GetFolderPathW() const { return {}; }
  std::string GetRootA() const { return {}; }
  WideString GetRootW() const { return {}; }
  // "" and the arguments untouched.
  static WideString GetTempFileNameW(WideString& folder, WideString& prefix);
  static WideString GetTempFolder();
  // Tries to create the empty path: kErrCreateFailed.
  std::uint32_t CreateNewFile();
  // kErrGeneric, nothing done.
  std::uint32_t CreateNewFolder() { return TOV::kErrGeneric; }
  bool Exists() { return false; }

 private:
  WideString mPath;
};

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
  std::uint32_t count;
  std::uint32_t reserved;
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
