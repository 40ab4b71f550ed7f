// Folders: static queries, creation on disk, free space, and the plain and
// filtered listings of the wide and narrow folder classes.
#include <locale>
#include <string>
#include <utility>

#include "basalt/locale.h"
#include "basalt/utf.h"
#include "files/files_internal.h"
#include "files/path_rules.h"
#include "platform/error.h"
#include "platform/fs.h"
#include "tovfoundation/files.h"

namespace {

namespace platform = tovimpl::platform;

// Enumerates the entries of `folder` (a library path), calling
// sink(name, isFolder) for each in file-system order, "." and ".." skipped.
// Nothing happens when the folder cannot be listed.
template <class Sink>
void EnumerateFolder(const UTF16String& folder, Sink&& sink) {
  UTF16String pattern = folder;
  tovimpl::files::RemoveBackslash(pattern);
  pattern.push_back('\\');
  pattern.push_back('*');
  tovimpl::files::ForEachListed(pattern, [&](const platform::ListingEntry& data) {
    sink(data.name, (data.attributes & platform::kFileAttributeDirectory) != 0);
    return true;
  });
}

// Lower-case copy under the native locale, unit by unit.
UTF16String LowerNative(const UTF16String& text) {
  const auto& facet = std::use_facet<std::ctype<wchar_t>>(basalt::Locale::Native());
  UTF16String out(text);
  for (auto& unit : out) {
    if (unit >= 0xD800 && unit < 0xE000) continue;  // surrogates stay as they are
    unit = static_cast<unsigned short>(facet.tolower(static_cast<wchar_t>(unit)));
  }
  return out;
}

char LowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c; }

bool EqualIgnoringAsciiCase(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (LowerAscii(a[i]) != LowerAscii(b[i])) return false;
  }
  return true;
}

bool ContainsIgnoringAsciiCase(const std::string& text, const std::string& piece) {
  if (piece.empty()) return true;
  if (piece.size() > text.size()) return false;
  for (std::size_t i = 0; i + piece.size() <= text.size(); ++i) {
    std::size_t k = 0;
    while (k < piece.size() && LowerAscii(text[i + k]) == LowerAscii(piece[k])) ++k;
    if (k == piece.size()) return true;
  }
  return false;
}

}  // namespace

namespace Halyard {
namespace FileUtils {

Folder Folder::CreateFolderObject(const UTF16String& path) { return Folder(path); }

bool Folder::ExistsOnDisk(const UTF16String& path) {
  try {
    return PathUtilities::ExistsOnDisk(path) != 0 && PathUtilities::IsFolder(path) != 0;
  } catch (const PathUtilities::PathUtilsException&) {
    return false;
  }
}

bool Folder::IsFolder(const UTF16String& path) { return ExistsOnDisk(path); }

bool Folder::CreateOnDisk(const UTF16String& path) {
  try {
    if (PathUtilities::ExistsOnDisk(path) != 0) return false;
    return platform::CreateDirectories(path).IsOk();
  } catch (const PathUtilities::PathUtilsException&) {
    return false;
  }
}

std::uint64_t Folder::GetFreeSpaceOnDisk(const UTF16String& path, std::uint32_t* error) {
  const platform::Result<std::uint64_t> available = platform::FreeSpace(path);
  if (available) return *available;
  if (error != nullptr) {
    switch (available.Error()) {
      case platform::kErrorFileNotFound:
      case platform::kErrorPathNotFound:
        *error = TOV::kErrPathNotFound;
        break;
      case platform::kErrorAccessDenied:
        *error = TOV::kErrAccessDenied;
        break;
      case platform::kErrorAlreadyExists:
        *error = TOV::kErrAlreadyExists;
        break;
      default:
        *error = TOV::kErrGeneric;
        break;
    }
  }
  return 0;
}

void Folder::GetContainedFileAndFolderList(FileNameList& files, FolderList& folders) const {
  files.clear();
  folders.clear();
  UTF16String base = mPath;
  PathUtilities::AddTrailingslash(base);
  EnumerateFolder(mPath, [&](const UTF16String& name, bool isFolder) {
    if (isFolder) {
      folders.push_back(Folder(base + name));
    } else {
      files.push_back(base + name);
    }
  });
}

void Folder::GetContainedFileAndFolderList(const unsigned short* titleFilter,
                                           const char* extensionFilter, FileNameList& files,
                                           FolderList& folders, unsigned char recursive) const {
  std::size_t mark = files.size();
  FileNameList ownFiles;
  FolderList ownFolders;
  GetContainedFileAndFolderList(ownFiles, ownFolders);
  if (recursive == 0) {
    folders.insert(folders.end(), ownFolders.begin(), ownFolders.end());
  } else {
    for (const Folder& sub : ownFolders) {
      sub.GetContainedFileAndFolderList(titleFilter, extensionFilter, files, folders, recursive);
      if (files.size() > mark) {
        folders.push_back(sub);
        mark = files.size();
      }
    }
  }
  UTF16String extension;
  if (extensionFilter != nullptr) extension = basalt::UTF8to16(extensionFilter);
  UTF16String title;
  if (titleFilter != nullptr) title = LowerNative(UTF16String(titleFilter));
  for (UTF16String& file : ownFiles) {
    if (titleFilter != nullptr &&
        LowerNative(PathUtilities::TOVGetFileTitle(file)).find(title) == UTF16String::npos) {
      continue;
    }
    if (extensionFilter != nullptr && PathUtilities::TOVGetFileExtension(file) != extension) {
      continue;
    }
    files.push_back(std::move(file));
  }
}

void Folder::GetDynamicLoadObjects(const unsigned short* titleFilter, const char* extensionFilter,
                                   FileNameList& files, unsigned char recursive) const {
  FolderList ignored;
  GetContainedFileAndFolderList(titleFilter, extensionFilter, files, ignored, recursive);
}

}  // namespace FileUtils

// --- the narrow folder ------------------------------------------------------------

namespace {
// The narrow plain listing without the folder check.
void ListNarrow(const std::string& path, NarrowFileNameList& files,
                std::vector<std::string>& folders) {
  files.clear();
  folders.clear();
  std::string base = PathUtils::RemoveTrailingslash(path);
  if (base.empty() || base.back() != '\\') base.push_back('\\');
  EnumerateFolder(tovimpl::files::NarrowToLibrary(path),
                  [&](const UTF16String& name, bool isFolder) {
                    std::string entry = base + tovimpl::files::LibraryToNarrow(name);
                    if (isFolder) {
                      folders.push_back(std::move(entry));
                    } else {
                      files.push_back(std::move(entry));
                    }
                  });
}
}  // namespace

Folder::Folder(const std::string& path) : mPath(path) {
  if (path.empty()) throw TOVNotAValidFolderPathException();
  if (PathUtils::ExistsOnDisk(path) && PathUtils::IsFolder(path)) {
    // Asked again: the entry may have changed since.
    if (!PathUtils::IsFolder(path)) throw TOVNotAValidFolderPathException();
  }
}

Folder Folder::CreateFolderObject(std::string path) {
  if (!PathUtils::IsFolder(path)) throw TOVNotAValidFolderPathException();
  return Folder(path);
}

bool Folder::ExistsOnDisk(const std::string& path) {
  return PathUtils::ExistsOnDisk(path) && PathUtils::IsFolder(path);
}

bool Folder::IsFolder(const std::string& path) { return PathUtils::IsFolder(path); }

bool Folder::CreateOnDisk(const std::string& path) {
  if (PathUtils::ExistsOnDisk(path)) return false;
  return platform::CreateDirectories(tovimpl::files::NarrowToLibrary(path)).IsOk();
}

void Folder::GetContainedFileAndFolderList(NarrowFileNameList& files,
                                           NarrowFolderList& folders) const {
  if (!PathUtils::IsFolder(mPath)) throw TOVNotAValidFolderPathException();
  std::vector<std::string> folderPaths;
  ListNarrow(mPath, files, folderPaths);
  folders.clear();
  for (auto& path : folderPaths) folders.push_back(Folder(path));
}

void Folder::GetContainedFileAndFolderList(const std::string& extensionFilter,
                                           NarrowFileNameList& files,
                                           NarrowFolderList& folders) const {
  NarrowFileNameList all;
  GetContainedFileAndFolderList(all, folders);
  files.clear();
  for (auto& file : all) {
    if (EqualIgnoringAsciiCase(PathUtils::GetFileExtension(file), extensionFilter)) {
      files.push_back(std::move(file));
    }
  }
}

void Folder::GetContainedFileAndFolderList(const char* titleFilter, NarrowFileNameList& files,
                                           NarrowFolderList& folders,
                                           unsigned char recursive) const {
  std::size_t mark = files.size();
  NarrowFileNameList ownFiles;
  std::vector<std::string> ownFolders;
  ListNarrow(mPath, ownFiles, ownFolders);
  for (const auto& path : ownFolders) {
    Folder sub(path);
    if (recursive == 0) {
      folders.push_back(sub);
      continue;
    }
    sub.GetContainedFileAndFolderList(titleFilter, files, folders, recursive);
    if (files.size() > mark) {
      folders.push_back(sub);
      mark = files.size();
    }
  }
  for (auto& file : ownFiles) {
    if (titleFilter != nullptr &&
        !ContainsIgnoringAsciiCase(PathUtils::GetFileTitleW(file), titleFilter)) {
      continue;
    }
    files.push_back(std::move(file));
  }
}

}  // namespace Halyard
