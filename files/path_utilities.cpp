// Path text operations, the file layer's exceptions, and the narrow path
// operations for callers outside the library.
#include <algorithm>
#include <climits>
#include <cwchar>
#include <string>

#include "basalt/utf.h"
#include "files/files_internal.h"
#include "files/path_rules.h"
#include "platform/fs.h"
#include "platform/path.h"
#include "platform/system.h"
#include "platform/text.h"
#include "tovfoundation/files.h"

namespace {
template <class S, class C>
void CopyPiece(const S& piece, C* buffer) {
  if (buffer == nullptr) return;
  std::copy(piece.begin(), piece.end(), buffer);
  buffer[piece.size()] = 0;
}
}  // namespace

namespace Halyard {

TOVFileUtilsException::~TOVFileUtilsException() = default;
const char* TOVFileUtilsException::what() const noexcept {
  return "TOVFileUtilsException : Unknown exception";
}
TOVNotAValidFolderPathException::~TOVNotAValidFolderPathException() = default;
const char* TOVNotAValidFolderPathException::what() const noexcept {
  return "TOVFileUtilsException: Folder path is not valid";
}

namespace PathUtilities {

PathUtilsException::~PathUtilsException() = default;
const char* PathUtilsException::what() const noexcept {
  return "PathUtilsException : Unknown exception";
}
NotAValidFolderPath::~NotAValidFolderPath() = default;
const char* NotAValidFolderPath::what() const noexcept {
  return "PathUtilsException: Folder path is not valid";
}
UnableToCreateFile::~UnableToCreateFile() = default;
const char* UnableToCreateFile::what() const noexcept {
  return "PathUtilsException: file / directory could not be created";
}
UnableToGetTempFileName::~UnableToGetTempFileName() = default;
const char* UnableToGetTempFileName::what() const noexcept {
  return "PathUtilsException: Temporary file name could not be obtained";
}

namespace {

UTF16String FromUnits(const unsigned short* text, std::size_t limit) {
  if (text == nullptr) return {};
  std::size_t n = 0;
  while (text[n] != 0 && n < limit) ++n;
  return UTF16String(text, n);
}

constexpr std::size_t kMaxPath = 260;

}  // namespace

void SplitPath(const UTF16String& path, unsigned short* drive, unsigned short* folder,
               unsigned short* fileName, unsigned short* extension) {
  const auto parts = tovimpl::files::Split(path);
  CopyPiece(parts.drive, drive);
  CopyPiece(parts.folder, folder);
  CopyPiece(parts.fileName, fileName);
  CopyPiece(parts.extension, extension);
}

UTF16String TOVGetFileExtension(const UTF16String& path) {
  return tovimpl::files::Split(path).extension;
}

UTF16String TOVGetFileName(const UTF16String& path) {
  auto parts = tovimpl::files::Split(path);
  return parts.fileName + parts.extension;
}

UTF16String TOVGetFileTitle(const UTF16String& path) {
  return tovimpl::files::Split(path).fileName;
}

UTF16String TOVGetFolderPath(const UTF16String& path) { return tovimpl::files::Split(path).folder; }

UTF16String TOVGetFullFolderPath(const UTF16String& path) {
  auto parts = tovimpl::files::Split(path);
  return parts.drive + parts.folder;
}

UTF16String TOVGetFolderName(const UTF16String& path) {
  UTF16String folder = TOVGetFolderPath(path);
  tovimpl::files::RemoveBackslash(folder);
  tovimpl::files::StripPath(folder);
  return folder;
}

UTF16String TOVGetRootOrVolume(const UTF16String& path) {
  UTF16String copy = path;
  if (!tovimpl::files::StripToRoot(copy)) return {};
  return copy;
}

UTF16String TOVGetRootOrVolume() {
  using namespace basalt::literals;
  auto value = tovimpl::platform::GetEnvVar(u"HOMEDRIVE"_u16);
  if (!value) return {};
  if (value->size() > kMaxPath - 1) value->resize(kMaxPath - 1);
  return *value;
}

void AddTrailingslash(UTF16String& path) { tovimpl::files::AddBackslash(path); }

void RemoveTrailingslash(UTF16String& path) { tovimpl::files::RemoveBackslash(path); }

void RemoveExtension(UTF16String& path) {
  if (path.empty()) return;
  tovimpl::files::RemoveExtension(path);
}

UTF16String MakePath(const unsigned short* drive, const unsigned short* folder,
                     const unsigned short* fileName, const unsigned short* extension) {
  constexpr std::size_t kPiece = 256;  // a 257-unit buffer holds 256 units
  UTF16String driveText;
  UTF16String folderText;
  if (folder == nullptr) {
    if (drive != nullptr) driveText = FromUnits(drive, SIZE_MAX);
  } else if (drive == nullptr) {
    UTF16String withSlash = FromUnits(folder, SIZE_MAX);
    AddTrailingslash(withSlash);
    auto parts = tovimpl::files::Split(withSlash);
    if (!parts.drive.empty()) {
      driveText = parts.drive;
      folderText = parts.folder.substr(0, kPiece);
    } else {
      folderText = FromUnits(folder, SIZE_MAX);
    }
  } else {
    driveText = FromUnits(drive, SIZE_MAX);
    folderText = FromUnits(folder, SIZE_MAX);
  }
  UTF16String nameText = FromUnits(fileName, SIZE_MAX);
  UTF16String extensionText;
  if (extension == nullptr) {
    if (fileName != nullptr) {
      auto parts = tovimpl::files::Split(nameText);
      if (!parts.extension.empty()) {
        nameText = parts.fileName.substr(0, kPiece);
        extensionText = parts.extension.substr(0, kPiece);
      }
    }
  } else {
    extensionText = FromUnits(extension, SIZE_MAX);
  }
  UTF16String composed = tovimpl::files::Compose(driveText, folderText, nameText, extensionText);
  if (composed.size() > kMaxPath) composed.resize(kMaxPath);
  return composed;
}

unsigned char ExistsOnDisk(const UTF16String& path) {
  return tovimpl::files::PathFileExists(path) ? 1 : 0;
}

unsigned char IsFolder(const UTF16String& path) {
  return tovimpl::files::PathIsDirectory(path) ? 1 : 0;
}

unsigned char IsAlias(const UTF16String& /*path*/) { return 0; }

namespace {
const UTF16String& LongPrefix() {
  static const UTF16String prefix = basalt::ToUTF16(u"\\\\?\\");
  return prefix;
}
const UTF16String& LongUncPrefix() {
  static const UTF16String prefix = basalt::ToUTF16(u"\\\\?\\UNC");
  return prefix;
}
bool StartsWith(const UTF16String& text, const UTF16String& prefix) {
  return text.size() >= prefix.size() && text.compare(0, prefix.size(), prefix) == 0;
}
}  // namespace

UTF16String ToNormalizedPath(const UTF16String& path) {
  if (!path.empty() && StartsWith(path, LongPrefix())) return path;
  if (path.size() >= 2 && path[0] == '\\' && path[1] == '\\') {
    return LongUncPrefix() + path.substr(1);
  }
  return LongPrefix() + path;
}

UTF16String RemovePathNormalization(const UTF16String& path) {
  if (StartsWith(path, LongUncPrefix())) return UTF16String(1, '\\') + path.substr(7);
  if (StartsWith(path, LongPrefix())) return path.substr(4);
  return path;
}

unsigned char IsNormalizedPath(const UTF16String& path) {
  if (path.empty()) return 0;
  const UTF16String drive = tovimpl::files::Split(path).drive;
  // An empty drive is found at position 0 too, so this never holds.
  return (path.find(drive) != 0 && path.find(LongPrefix()) == 0) ? 1 : 0;
}

UTF16String GetModuleName() {
  UTF16String path = tovimpl::platform::ExecutablePath().ValueOr({});
  if (path.size() > kMaxPath - 1) path.resize(kMaxPath - 1);
  std::size_t end = path.size();
  std::size_t start = 0;
  for (std::size_t i = path.size(); i > 0; --i) {
    const unsigned short c = path[i - 1];
    if (c == '\\') {
      start = i;
      break;
    }
    if (c == '.' && end == path.size()) end = i - 1;
  }
  if (end < start) end = start;
  return path.substr(start, end - start);
}

UTF16String ToPlatformPath(const UTF16String& path) {
  return tovimpl::platform::ToNativeSpelling(path);
}

}  // namespace PathUtilities

namespace PathUtils {

namespace {
// Narrow scratch pieces, never truncated.
tovimpl::files::SplitParts<std::string> SplitNarrow(const std::string& path) {
  return tovimpl::files::Split(path);
}
}  // namespace

std::string GetFileExtension(const std::string& path) { return SplitNarrow(path).extension; }

std::string GetFileName(const std::string& path) {
  auto parts = SplitNarrow(path);
  return parts.fileName + parts.extension;
}

std::string GetFolderPath(const std::string& path) { return SplitNarrow(path).folder; }

std::string GetFileTitleW(const std::string& path) { return SplitNarrow(path).fileName; }

std::string GetFolderName(const std::string& path) {
  std::string folder = RemoveTrailingslash(GetFolderPath(path));
  tovimpl::files::StripPath(folder);
  return folder;
}

std::string GetRootOrVolume(const std::string& path) {
  std::string copy = path;
  tovimpl::files::StripToRoot(copy);
  return copy;
}

std::string RemoveExtension(const std::string& path) {
  if (path.empty()) return path;
  std::string copy = path;
  tovimpl::files::RemoveExtension(copy);
  return copy;
}

WideString RemoveExtension(const WideString& path) {
  if (path.empty()) return path;
  WideString copy = path;
  tovimpl::files::RemoveExtension(copy);
  return copy;
}

std::string RemoveTrailingslash(const std::string& path) {
  std::string copy = path;
  tovimpl::files::RemoveBackslash(copy);
  return copy;
}

WideString RemoveTrailingslash(const WideString& path) {
  WideString copy = path;
  tovimpl::files::RemoveBackslash(copy);
  return copy;
}

void SplitPath(const std::string& path, char* drive, char* folder, char* fileName,
               char* extension) {
  auto parts = tovimpl::files::Split(path);
  CopyPiece(parts.drive, drive);
  CopyPiece(parts.folder, folder);
  CopyPiece(parts.fileName, fileName);
  CopyPiece(parts.extension, extension);
}

void SplitPath(const WideString& path, char16_t* drive, char16_t* folder, char16_t* fileName,
               char16_t* extension) {
  auto parts = tovimpl::files::Split(path);
  CopyPiece(parts.drive, drive);
  CopyPiece(parts.folder, folder);
  CopyPiece(parts.fileName, fileName);
  CopyPiece(parts.extension, extension);
}

bool ExistsOnDisk(const std::string& path) {
  return tovimpl::files::PathFileExists(tovimpl::files::NarrowToLibrary(path));
}
bool ExistsOnDisk(const WideString& path) {
  return ExistsOnDisk(tovimpl::files::ReduceToNarrow(path));
}
bool IsFolder(const std::string& path) {
  return tovimpl::files::PathIsDirectory(tovimpl::files::NarrowToLibrary(path));
}
bool IsFolder(const WideString& path) { return IsFolder(tovimpl::files::ReduceToNarrow(path)); }
bool IsAlias(const std::string& /*path*/) { return false; }
bool IsAlias(const WideString& /*path*/) { return false; }

}  // namespace PathUtils
}  // namespace Halyard

namespace tovimpl::files {

std::string ReduceToNarrow(std::u16string_view text) {
  std::string out;
  std::mbstate_t state{};
  char bytes[MB_LEN_MAX];
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t cp = text[i];
    if (cp >= 0xD800 && cp < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
        text[i + 1] < 0xE000) {
      cp = 0x10000 + ((cp - 0xD800) << 10) + (text[i + 1] - 0xDC00);
      ++i;
    }
    const std::size_t n = std::wcrtomb(bytes, static_cast<wchar_t>(cp), &state);
    if (n == static_cast<std::size_t>(-1)) {
      state = std::mbstate_t{};
      if (cp <= 0xFF && MB_CUR_MAX == 1) {
        out.push_back(static_cast<char>(cp));
      } else {
        out.push_back('?');
      }
    } else {
      out.append(bytes, n);
    }
  }
  return out;
}

UTF16String NarrowToLibrary(const std::string& text) {
  return tovimpl::platform::NarrowToUTF16(text);
}

std::string LibraryToNarrow(const UTF16String& text) {
  return tovimpl::platform::UTF16ToNarrow(text);
}

bool PathFileExists(const UTF16String& path) {
  return tovimpl::platform::ReadAttributes(path).IsOk();
}

bool PathIsDirectory(const UTF16String& path) {
  const auto attributes = tovimpl::platform::ReadAttributes(path);
  return attributes && (*attributes & tovimpl::platform::kFileAttributeDirectory) != 0;
}

}  // namespace tovimpl::files
