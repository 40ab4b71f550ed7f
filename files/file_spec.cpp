// File specs (CFileSpec): the working wide class and the inert older one, plus
// the disk-space check built on them.
#include <new>

#include "basalt/utf.h"
#include "files/files_internal.h"
#include "platform/file.h"
#include "platform/fs.h"
#include "tovfoundation/files.h"
#include "tovfoundation/streams.h"

namespace {

namespace platform = tovimpl::platform;

constexpr std::uint32_t kAttributesUnreadable = 6;
constexpr std::uint32_t kFileReadAttributes = 0x80;  // access that reads attributes only
constexpr std::uint32_t kStreamBufferSize = 4096;

// FILETIME (100 ns since 1601-01-01 UTC) ⇒ a UTC calendar record.
void FileTimeToDateTime(std::uint64_t fileTime, Halyard::VDateTime* out) {
  const std::uint64_t totalMs = fileTime / 10000u;
  const std::uint64_t ms = totalMs % 1000u;
  const std::uint64_t totalSeconds = totalMs / 1000u;
  const std::uint64_t secondsOfDay = totalSeconds % 86400u;
  // Days since 1601-01-01 shifted to a 0000-03-01 era for the civil calendar.
  const std::int64_t days = static_cast<std::int64_t>(totalSeconds / 86400u) + 584694;
  // Days since 0000-03-01 ⇒ year, month, day (proleptic Gregorian).
  const std::int64_t era = days / 146097;
  const std::int64_t dayOfEra = days - era * 146097;
  const std::int64_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t mp = (5 * dayOfYear + 2) / 153;
  const std::int64_t day = dayOfYear - (153 * mp + 2) / 5 + 1;
  const std::int64_t month = mp < 10 ? mp + 3 : mp - 9;
  const std::int64_t year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
  out->year = static_cast<std::uint16_t>(year);
  out->milliseconds = static_cast<std::uint16_t>(ms);
  out->kind = 2;
  out->day = static_cast<std::uint8_t>(day);
  out->month = static_cast<std::uint8_t>(month);
  out->hour = static_cast<std::uint8_t>(secondsOfDay / 3600u);
  out->minute = static_cast<std::uint8_t>(secondsOfDay / 60u % 60u);
  out->second = static_cast<std::uint8_t>(secondsOfDay % 60u);
}

}  // namespace

namespace tovimpl::files {

bool CreateNewEmptyFile(const UTF16String& path) {
  const platform::Result<platform::OpenedFile> file =
      platform::OpenFile(path, platform::kGenericWrite, platform::kFileShareRead,
                         platform::kCreateNew, platform::kFileFlagRandomAccess);
  if (!file) return false;
  (void)platform::CloseFile(file->handle);
  return true;
}

}  // namespace tovimpl::files

namespace Halyard {
namespace FileUtils {

namespace PU = PathUtilities;

CFileSpec::CFileSpec() = default;

CFileSpec::CFileSpec(const UTF16String& path) { *this = path; }

CFileSpec::CFileSpec(const CFileSpec& other) { *this = other; }

CFileSpec& CFileSpec::operator=(const CFileSpec& other) {
  if (this == &other) return *this;
  try {
    mFullPath = other.mFullPath;
    PU::RemoveTrailingslash(mFullPath);
    mRoot = other.mRoot;
    mFolderPath = other.mFolderPath;
    mTitle = other.mTitle;
    mExtension = other.mExtension;
  } catch (const PU::PathUtilsException&) {
  }
  return *this;
}

CFileSpec& CFileSpec::operator=(const UTF16String& path) {
  // Each step may end the assignment quietly on a path exception; the pieces
  // come from the path as given, the full path last.
  try {
    mRoot = PU::TOVGetRootOrVolume(path);
    mFolderPath = PU::TOVGetFolderPath(path);
    mTitle = PU::TOVGetFileTitle(path);
    mExtension = PU::TOVGetFileExtension(path);
    UTF16String full = path;
    PU::RemoveTrailingslash(full);
    mFullPath = full;
  } catch (const PU::PathUtilsException&) {
  }
  return *this;
}

CFileSpec::~CFileSpec() = default;

bool CFileSpec::operator==(const CFileSpec& other) const { return mFullPath == other.mFullPath; }

bool CFileSpec::operator!=(const CFileSpec& other) const { return !(*this == other); }

CFileSpec::operator UTF16String() const { return mFullPath; }

UTF16String CFileSpec::TOVGetFolderPath() const {
  try {
    UTF16String folder = mFolderPath;
    PU::RemoveTrailingslash(folder);
    return folder;
  } catch (const PU::PathUtilsException&) {
    return {};
  }
}

UTF16String CFileSpec::TOVGetFileName() const { return mTitle + mExtension; }

UTF16String CFileSpec::TOVGetFileExtension() const {
  if (mExtension.size() <= 1) return {};
  return mExtension.substr(1);
}

std::uint32_t CFileSpec::CreateNewFile() {
  const platform::Result<platform::OpenedFile> file = platform::OpenFile(
      mFullPath, platform::kGenericRead | platform::kGenericWrite, platform::kFileShareRead,
      platform::kCreateAlways, platform::kFileFlagRandomAccess);
  if (!file) return TOV::kErrCreateFailed;
  (void)platform::CloseFile(file->handle);
  return 0;
}

std::uint32_t CFileSpec::CreateNewFolder() {
  try {
    // A root without a drive letter ("\", "\\srv\share") would compose as the
    // drive "\:"; the folder path alone names the folder then.
    const bool hasDrive = mRoot.size() >= 2 && mRoot[1] == ':';
    const UTF16String folder =
        PU::MakePath(hasDrive ? mRoot.c_str() : nullptr, mFolderPath.c_str(), nullptr, nullptr);
    return Folder::CreateOnDisk(folder) ? 0 : TOV::kErrGeneric;
  } catch (const PU::PathUtilsException&) {
    return TOV::kErrCreateFailed;
  }
}

std::uint32_t CFileSpec::DeleteTheFile() {
  return platform::RemoveFile(mFullPath) ? 0 : TOV::kErrGeneric;
}

bool CFileSpec::Exists() {
  try {
    return PU::ExistsOnDisk(mFullPath) != 0;
  } catch (const PU::PathUtilsException&) {
    return false;
  }
}

std::uint32_t CFileSpec::GetCreationTime(VDateTime* out) {
  const platform::Result<platform::FileInfo> info = platform::ReadFileInfo(mFullPath);
  if (!info) return kAttributesUnreadable;
  FileTimeToDateTime(info->creationTime, out);
  return 0;
}

std::uint32_t CFileSpec::GetModificationTime(VDateTime* out) {
  const platform::Result<platform::FileInfo> info = platform::ReadFileInfo(mFullPath);
  if (!info) return kAttributesUnreadable;
  FileTimeToDateTime(info->lastWriteTime, out);
  return 0;
}

std::uint32_t CFileSpec::GetFileSize(std::uint64_t* out) {
  if (out == nullptr) return TOV::kErrInvalidPointer;
  *out = 0;
  const platform::Result<platform::OpenedFile> file =
      platform::OpenFile(mFullPath, platform::kGenericRead, 0, platform::kOpenExisting, 0);
  if (!file) return TOV::kErrGetSizeFailed;
  (void)platform::CloseFile(file->handle);
  *out = file->size;
  return 0;
}

CReadStream* CFileSpec::OpenReadStream(HaldByteOrdering order) {
  if (mFullPath.empty()) return nullptr;
  auto* port = new (std::nothrow) CFilePort(kAccessRead, 0);
  if (port == nullptr) return nullptr;
  if (port->Open(mFullPath.c_str()) != 0) {
    delete port;
    return nullptr;
  }
  auto* stream = new (std::nothrow) CReadStream(port, order, kStreamBufferSize, 0, 0);
  if (stream == nullptr) delete port;
  return stream;
}

CWriteStream* CFileSpec::OpenWriteStream(HaldByteOrdering order) {
  if (mFullPath.empty()) return nullptr;
  auto* port = new (std::nothrow) CFilePort(kAccessWrite, 0);
  if (port == nullptr) return nullptr;
  if (port->Open(mFullPath.c_str()) != 0) {
    delete port;
    return nullptr;
  }
  auto* stream =
      new (std::nothrow) CWriteStream(static_cast<CPort*>(port), order, kStreamBufferSize, 0, 0);
  if (stream == nullptr) delete port;
  return stream;
}

}  // namespace FileUtils

// --- the inert older class ----------------------------------------------------------

CFileSpec::CFileSpec() = default;
CFileSpec::CFileSpec(const CFileSpec& /*other*/) {}
CFileSpec::CFileSpec(const std::string& /*path*/) {}
CFileSpec::CFileSpec(const WideString& /*path*/) {}
CFileSpec::~CFileSpec() = default;

CFileSpec& CFileSpec::operator=(const CFileSpec& /*other*/) { return *this; }
CFileSpec& CFileSpec::operator=(const WideString& /*path*/) { return *this; }
CFileSpec& CFileSpec::operator=(const std::string& path) {
  (void)tovimpl::files::NarrowToLibrary(path);  // converted and discarded, as the interface does
  return *this;
}

bool CFileSpec::operator==(const CFileSpec& other) const { return mPath == other.mPath; }
bool CFileSpec::operator!=(const CFileSpec& other) const { return !(*this == other); }
CFileSpec::operator WideString() const { return mPath; }
CFileSpec::operator const char16_t*() const { return mPath.c_str(); }

std::string CFileSpec::GetFullPathNameA() const { return tovimpl::files::ReduceToNarrow(mPath); }

WideString CFileSpec::GetTempFileNameW(WideString& /*folder*/, WideString& /*prefix*/) {
  return {};
}
WideString CFileSpec::GetTempFolder() { return {}; }

std::uint32_t CFileSpec::CreateNewFile() {
  FileUtils::CFileSpec spec(basalt::FromWide(mPath));
  return spec.CreateNewFile();
}

// --- the disk-space check -------------------------------------------------------------

std::uint32_t CheckReEncodeDiskSpaceRemaining(const unsigned short* sourceFile,
                                              const unsigned short* destination) {
  if (sourceFile == nullptr || destination == nullptr) return TOV::kErrWriteFailed;
  const FileUtils::CFileSpec spec{UTF16String(destination)};
  const UTF16String folder = spec.TOVGetFolderPath();
  const platform::Result<platform::OpenedFile> source = platform::OpenFile(
      UTF16String(sourceFile), kFileReadAttributes, 0, platform::kOpenExisting, 0);
  if (!source) return TOV::kErrWriteFailed;
  std::uint32_t status = TOV::kErrWriteFailed;
  const platform::Result<std::uint64_t> available = platform::FreeSpace(folder);
  if (available && static_cast<double>(*available) > static_cast<double>(source->size) * 1.25) {
    status = 0;
  }
  (void)platform::CloseFile(source->handle);
  return status;
}

}  // namespace Halyard
