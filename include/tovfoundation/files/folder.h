// tovfoundation files: folders and their listings, in the wide form
// (Halyard::FileUtils::Folder) and the narrow form (Halyard::Folder).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tovfoundation/common.h"
#include "tovfoundation/files/file_exceptions.h"

namespace Halyard {

// ---------------------------------------------------------------------------
// Folders and their listings.
// ---------------------------------------------------------------------------
namespace FileUtils {

class Folder;
// Full paths of the files of a listing.
using FileNameList = std::vector<UTF16String>;
// Folders of a listing.
using FolderList = std::vector<Folder>;

// A folder named by a wide path, stored as given (no separator added or
// removed). Copyable. Listings report entries in the order the file system
// gives them, never sorted; "." and ".." are skipped; hidden entries are listed.
class TOV_API Folder {
 public:
  // Any path, even "", is accepted; nothing is checked.
  static Folder CreateFolderObject(const UTF16String& path);
  // The path as stored.
  const UTF16String& GetFullPath() const { return mPath; }

  // True only when the path exists and is a folder.
  static bool ExistsOnDisk(const UTF16String& path);
  // True when the path names a folder.
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

}  // namespace FileUtils

class Folder;
// Narrow names of a listing, each a full path.
using NarrowFileNameList = std::vector<std::string>;
// Folders of a narrow listing.
using NarrowFolderList = std::vector<Folder>;

// The narrow folder class. The stored path must not be empty.
//
// Narrow text: every path this class takes or gives, the listed names
// included, is in the system's narrow encoding: the ANSI code page on Windows
// (the encoding of PathFileExistsA, PathIsDirectoryA and the narrow listing
// calls), UTF-8 on POSIX. The filters are compared with that text as it is.
class TOV_API Folder {
 public:
  // Throws TOVNotAValidFolderPathException unless the path is a folder.
  static Folder CreateFolderObject(std::string path);
  // The path as stored.
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

}  // namespace Halyard
