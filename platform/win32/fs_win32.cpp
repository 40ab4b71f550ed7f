// Win32 backend of the OS layer: the file system outside of open files.
// Only code that works on every supported Windows version belongs here.
#include <cstdint>
#include <string>
#include <vector>

#include "platform/error.h"
#include "platform/file.h"
#include "platform/fs.h"
#include "platform/fs_backend.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

namespace {

// The failure the last system call left, or `fallback` when it left none.
Status LastFailure(ErrorCode fallback = kErrorGenFailure) {
  return Status::Failure(win32::LastErrorOr(fallback));
}

}  // namespace

// --- attributes ---------------------------------------------------------------

Result<std::uint32_t> ReadAttributes(const UTF16String& path) {
  const DWORD attributes = ::GetFileAttributesW(win32::WidePath(path).c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return LastFailure(kErrorFileNotFound);
  return static_cast<std::uint32_t>(attributes);
}

Result<FileInfo> ReadFileInfo(const UTF16String& path) {
  WIN32_FILE_ATTRIBUTE_DATA found{};
  if (!::GetFileAttributesExW(win32::WidePath(path).c_str(), GetFileExInfoStandard, &found)) {
    return LastFailure(kErrorFileNotFound);
  }
  FileInfo info{};
  info.attributes = found.dwFileAttributes;
  info.creationTime = win32::FileTimeValue(found.ftCreationTime);
  info.lastAccessTime = win32::FileTimeValue(found.ftLastAccessTime);
  info.lastWriteTime = win32::FileTimeValue(found.ftLastWriteTime);
  info.size = (static_cast<std::uint64_t>(found.nFileSizeHigh) << 32) | found.nFileSizeLow;
  return info;
}

// --- folders ----------------------------------------------------------------

Status CreateDirectories(const UTF16String& path) {
  // The shell splits the path at backslashes only.
  std::wstring wide = win32::WidePath(path);
  for (wchar_t& unit : wide) {
    if (unit == L'/') unit = L'\\';
  }
  return Status::FromCode(
      static_cast<ErrorCode>(::SHCreateDirectoryExW(nullptr, wide.c_str(), nullptr)));
}

// --- listing ------------------------------------------------------------------

struct ListingState {
  HANDLE find;
};

namespace {

void Fill(const WIN32_FIND_DATAW& found, ListingEntry* entry) {
  entry->attributes = found.dwFileAttributes;
  entry->name = win32::FromWide(found.cFileName);
}

}  // namespace

// FindFirstFileW matches in the system itself; MatchesPattern (platform/fs.cpp)
// is the same rule written out, for the tests that check the rule's table on
// every platform.

Result<ListingHandle> OpenListing(const UTF16String& pattern, ListingEntry* first) {
  WIN32_FIND_DATAW found{};
  const HANDLE find = ::FindFirstFileW(win32::WidePath(pattern).c_str(), &found);
  if (find == INVALID_HANDLE_VALUE) return LastFailure(kErrorFileNotFound);
  Fill(found, first);
  return new ListingState{find};
}

Status NextListingEntry(ListingHandle listing, ListingEntry* entry) {
  if (listing == nullptr) return Status::Failure(kErrorInvalidHandle);
  WIN32_FIND_DATAW found{};
  if (!::FindNextFileW(listing->find, &found)) return LastFailure(kErrorNoMoreFiles);
  Fill(found, entry);
  return Status::Ok();
}

void CloseListing(ListingHandle listing) {
  if (listing == nullptr) return;
  ::FindClose(listing->find);
  delete listing;
}

// --- current directory --------------------------------------------------------

Result<UTF16String> CurrentDirectory() {
  std::vector<wchar_t> buffer(MAX_PATH + 1);
  for (;;) {
    const DWORD length = ::GetCurrentDirectoryW(static_cast<DWORD>(buffer.size()), buffer.data());
    if (length == 0) return LastFailure();
    if (length < buffer.size()) return win32::FromWide(buffer.data(), length);
    buffer.resize(length);  // too small: `length` counts the NUL
  }
}

Status ChangeDirectory(const UTF16String& path) {
  if (!::SetCurrentDirectoryW(win32::WidePath(path).c_str())) {
    return LastFailure(kErrorPathNotFound);
  }
  return Status::Ok();
}

// --- free space ---------------------------------------------------------------

Result<std::uint64_t> SystemFreeSpace(const UTF16String& path) {
  ULARGE_INTEGER available{};
  if (!::GetDiskFreeSpaceExW(win32::WidePath(path).c_str(), &available, nullptr, nullptr)) {
    return LastFailure(kErrorPathNotFound);
  }
  return static_cast<std::uint64_t>(available.QuadPart);
}

// --- temporary names ------------------------------------------------------------

Result<UTF16String> TempDirectory() {
  std::vector<wchar_t> buffer(MAX_PATH + 1);
  for (;;) {
    const DWORD length = ::GetTempPathW(static_cast<DWORD>(buffer.size()), buffer.data());
    if (length == 0) return LastFailure();
    if (length < buffer.size()) return win32::FromWide(buffer.data(), length);
    buffer.resize(length + 1);
  }
}

Result<UTF16String> CreateTempFile(const UTF16String& folder, const UTF16String& prefix) {
  wchar_t buffer[MAX_PATH + 1] = {};
  const UINT unique = ::GetTempFileNameW(win32::WidePath(folder).c_str(),
                                         win32::WidePath(prefix).c_str(), 0, buffer);
  if (unique == 0) return LastFailure(kErrorDirectory);
  return win32::FromWide(buffer);
}

// --- copy and move ------------------------------------------------------------------

namespace {

struct ProgressRelay {
  CopyProgressRoutine progress;
  void* data;
};

DWORD CALLBACK RelayProgress(LARGE_INTEGER totalFileSize, LARGE_INTEGER totalBytesTransferred,
                             LARGE_INTEGER streamSize, LARGE_INTEGER streamBytesTransferred,
                             DWORD streamNumber, DWORD callbackReason, HANDLE sourceFile,
                             HANDLE destinationFile, LPVOID data) {
  const auto* relay = static_cast<const ProgressRelay*>(data);
  return relay->progress(static_cast<std::uint64_t>(totalFileSize.QuadPart),
                         static_cast<std::uint64_t>(totalBytesTransferred.QuadPart),
                         static_cast<std::uint64_t>(streamSize.QuadPart),
                         static_cast<std::uint64_t>(streamBytesTransferred.QuadPart), streamNumber,
                         callbackReason, sourceFile, destinationFile, relay->data);
}

}  // namespace

Status CopyFileContents(const UTF16String& source, const UTF16String& target,
                        CopyProgressRoutine progress, void* data, const int* cancel,
                        bool failIfExists) {
  ProgressRelay relay{progress, data};
  // BOOL is an int: the caller's flag is read by the system as it is.
  BOOL* cancelFlag = const_cast<BOOL*>(reinterpret_cast<const BOOL*>(cancel));
  if (!::CopyFileExW(win32::WidePath(source).c_str(), win32::WidePath(target).c_str(),
                     progress != nullptr ? RelayProgress : nullptr,
                     progress != nullptr ? &relay : nullptr, cancelFlag,
                     failIfExists ? COPY_FILE_FAIL_IF_EXISTS : 0)) {
    return LastFailure();
  }
  return Status::Ok();
}

Status MoveNoReplace(const UTF16String& source, const UTF16String& target) {
  if (!::MoveFileW(win32::WidePath(source).c_str(), win32::WidePath(target).c_str())) {
    return LastFailure();
  }
  return Status::Ok();
}

Status MoveToTrash(const UTF16String& path) {
  // The source list ends in two NULs.
  std::wstring from = win32::WidePath(path);
  from.push_back(L'\0');
  SHFILEOPSTRUCTW operation{};
  operation.hwnd = nullptr;
  operation.wFunc = FO_DELETE;
  operation.pFrom = from.c_str();
  operation.pTo = nullptr;
  operation.fFlags = FOF_SILENT | FOF_NOCONFIRMATION | FOF_ALLOWUNDO | FOF_NOERRORUI;
  return Status::FromCode(static_cast<ErrorCode>(::SHFileOperationW(&operation)));
}

// --- the executable ----------------------------------------------------------------

Result<UTF16String> ExecutablePath() {
  std::vector<wchar_t> buffer(MAX_PATH + 1);
  for (;;) {
    const DWORD length =
        ::GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    if (length == 0) return LastFailure();
    if (length < buffer.size()) return win32::FromWide(buffer.data(), length);
    buffer.resize(buffer.size() * 2);  // truncated
  }
}

}  // namespace tovimpl::platform
