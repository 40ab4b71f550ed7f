// Win32 backend of the OS layer: the file system outside of open files.
// Only code that works on every supported Windows version belongs here.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/error.h"
#include "platform/file.h"
#include "platform/fs.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

// --- attributes ---------------------------------------------------------------

std::uint32_t GetFileAttributes(const UTF16String& path) {
  const DWORD attributes = ::GetFileAttributesW(win32::WidePath(path).c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) win32::KeepFailureCode(kErrorFileNotFound);
  return static_cast<std::uint32_t>(attributes);
}

bool GetFileAttributesEx(const UTF16String& path, FileAttributeData* data) {
  WIN32_FILE_ATTRIBUTE_DATA found{};
  if (!::GetFileAttributesExW(win32::WidePath(path).c_str(), GetFileExInfoStandard, &found)) {
    win32::KeepFailureCode(kErrorFileNotFound);
    return false;
  }
  data->attributes = found.dwFileAttributes;
  data->creationTime = win32::FileTimeValue(found.ftCreationTime);
  data->lastAccessTime = win32::FileTimeValue(found.ftLastAccessTime);
  data->lastWriteTime = win32::FileTimeValue(found.ftLastWriteTime);
  data->size = (static_cast<std::uint64_t>(found.nFileSizeHigh) << 32) | found.nFileSizeLow;
  return true;
}

// --- folders ----------------------------------------------------------------

std::uint32_t CreateDirectoryWithParents(const UTF16String& path) {
  // The shell splits the path at backslashes only.
  std::wstring wide = win32::WidePath(path);
  for (wchar_t& unit : wide) {
    if (unit == L'/') unit = L'\\';
  }
  const int result = ::SHCreateDirectoryExW(nullptr, wide.c_str(), nullptr);
  ::SetLastError(static_cast<DWORD>(result));
  return static_cast<std::uint32_t>(result);
}

// --- enumeration ------------------------------------------------------------

namespace {

void Fill(const WIN32_FIND_DATAW& found, FindData* data) {
  data->attributes = found.dwFileAttributes;
  data->name = win32::FromWide(found.cFileName);
}

}  // namespace

// FindFirstFileW matches in the system itself; this is the same rule written
// out, for the tests that check the rule's table on every platform.

FindHandle FindFirstFile(const UTF16String& pattern, FindData* data) {
  WIN32_FIND_DATAW found{};
  const HANDLE handle = ::FindFirstFileW(win32::WidePath(pattern).c_str(), &found);
  if (handle == INVALID_HANDLE_VALUE) {
    win32::KeepFailureCode(kErrorFileNotFound);
    return nullptr;
  }
  Fill(found, data);
  return handle;
}

bool FindNextFile(FindHandle handle, FindData* data) {
  if (handle == nullptr) {
    ::SetLastError(ERROR_INVALID_HANDLE);
    return false;
  }
  WIN32_FIND_DATAW found{};
  if (!::FindNextFileW(static_cast<HANDLE>(handle), &found)) {
    win32::KeepFailureCode(kErrorNoMoreFiles);
    return false;
  }
  Fill(found, data);
  return true;
}

bool FindClose(FindHandle handle) {
  if (handle == nullptr) {
    ::SetLastError(ERROR_INVALID_HANDLE);
    return false;
  }
  if (!::FindClose(static_cast<HANDLE>(handle))) {
    win32::KeepFailureCode(kErrorInvalidHandle);
    return false;
  }
  return true;
}

// --- current directory --------------------------------------------------------

std::optional<UTF16String> GetCurrentDirectory() {
  std::vector<wchar_t> buffer(MAX_PATH + 1);
  for (;;) {
    const DWORD length = ::GetCurrentDirectoryW(static_cast<DWORD>(buffer.size()), buffer.data());
    if (length == 0) {
      win32::KeepFailureCode();
      return std::nullopt;
    }
    if (length < buffer.size()) return win32::FromWide(buffer.data(), length);
    buffer.resize(length);  // too small: `length` counts the NUL
  }
}

bool SetCurrentDirectory(const UTF16String& path) {
  if (!::SetCurrentDirectoryW(win32::WidePath(path).c_str())) {
    win32::KeepFailureCode(kErrorPathNotFound);
    return false;
  }
  return true;
}

// --- free space ---------------------------------------------------------------

namespace {
FreeSpaceAnswer gFreeSpaceAnswer = nullptr;
}

void SetFreeSpaceAnswerForTesting(FreeSpaceAnswer answer) { gFreeSpaceAnswer = answer; }

bool GetDiskFreeSpaceEx(const UTF16String& path, std::uint64_t* freeBytesAvailable) {
  if (gFreeSpaceAnswer != nullptr) return gFreeSpaceAnswer(path, freeBytesAvailable);
  ULARGE_INTEGER available{};
  if (!::GetDiskFreeSpaceExW(win32::WidePath(path).c_str(), &available, nullptr, nullptr)) {
    win32::KeepFailureCode(kErrorPathNotFound);
    return false;
  }
  *freeBytesAvailable = available.QuadPart;
  return true;
}

// --- temporary names ------------------------------------------------------------

UTF16String GetTempPath() {
  std::vector<wchar_t> buffer(MAX_PATH + 1);
  for (;;) {
    const DWORD length = ::GetTempPathW(static_cast<DWORD>(buffer.size()), buffer.data());
    if (length == 0) {
      win32::KeepFailureCode();
      return {};
    }
    if (length < buffer.size()) return win32::FromWide(buffer.data(), length);
    buffer.resize(length + 1);
  }
}

std::uint32_t GetTempFileName(const UTF16String& folder, const UTF16String& prefix,
                              UTF16String* out) {
  wchar_t buffer[MAX_PATH + 1] = {};
  const UINT unique = ::GetTempFileNameW(win32::WidePath(folder).c_str(),
                                         win32::WidePath(prefix).c_str(), 0, buffer);
  if (unique == 0) {
    win32::KeepFailureCode(kErrorDirectory);
    return 0;
  }
  *out = win32::FromWide(buffer);
  return static_cast<std::uint32_t>(unique);
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

bool CopyFileEx(const UTF16String& source, const UTF16String& target, CopyProgressRoutine progress,
                void* data, const int* cancel, bool failIfExists) {
  ProgressRelay relay{progress, data};
  // BOOL is an int: the caller's flag is read by the system as it is.
  BOOL* cancelFlag = const_cast<BOOL*>(reinterpret_cast<const BOOL*>(cancel));
  if (!::CopyFileExW(win32::WidePath(source).c_str(), win32::WidePath(target).c_str(),
                     progress != nullptr ? RelayProgress : nullptr,
                     progress != nullptr ? &relay : nullptr, cancelFlag,
                     failIfExists ? COPY_FILE_FAIL_IF_EXISTS : 0)) {
    win32::KeepFailureCode();
    return false;
  }
  ::SetLastError(0);
  return true;
}

bool MoveFile(const UTF16String& source, const UTF16String& target) {
  if (!::MoveFileW(win32::WidePath(source).c_str(), win32::WidePath(target).c_str())) {
    win32::KeepFailureCode();
    return false;
  }
  return true;
}

std::uint32_t MoveToTrash(const UTF16String& path) {
  // The source list ends in two NULs.
  std::wstring from = win32::WidePath(path);
  from.push_back(L'\0');
  SHFILEOPSTRUCTW operation{};
  operation.hwnd = nullptr;
  operation.wFunc = FO_DELETE;
  operation.pFrom = from.c_str();
  operation.pTo = nullptr;
  operation.fFlags = FOF_SILENT | FOF_NOCONFIRMATION | FOF_ALLOWUNDO | FOF_NOERRORUI;
  const int result = ::SHFileOperationW(&operation);
  if (result != 0) ::SetLastError(static_cast<DWORD>(result));
  return static_cast<std::uint32_t>(result);
}

// --- the executable ----------------------------------------------------------------

UTF16String GetModuleFileName() {
  std::vector<wchar_t> buffer(MAX_PATH + 1);
  for (;;) {
    const DWORD length =
        ::GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    if (length == 0) {
      win32::KeepFailureCode();
      return {};
    }
    if (length < buffer.size()) return win32::FromWide(buffer.data(), length);
    buffer.resize(buffer.size() * 2);  // truncated
  }
}

}  // namespace tovimpl::platform
