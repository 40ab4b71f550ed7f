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

namespace tov::platform {

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

// Case folding of MatchesPattern, independent of the locale as the file
// system's own: ASCII, Latin-1, Latin Extended-A, Greek and Cyrillic capitals.
unsigned short FoldCase(unsigned short unit) {
  if (unit < 0x80)
    return (unit >= 'A' && unit <= 'Z') ? static_cast<unsigned short>(unit + 32) : unit;
  if ((unit >= 0xC0 && unit <= 0xDE && unit != 0xD7) ||
      (unit >= 0x391 && unit <= 0x3AB && unit != 0x3A2) || (unit >= 0x410 && unit <= 0x42F)) {
    return static_cast<unsigned short>(unit + 0x20);
  }
  if (unit >= 0x400 && unit <= 0x40F) return static_cast<unsigned short>(unit + 0x50);
  if (unit >= 0x100 && unit <= 0x137 && (unit & 1) == 0)
    return static_cast<unsigned short>(unit + 1);
  if (unit >= 0x139 && unit <= 0x148 && (unit & 1) == 1)
    return static_cast<unsigned short>(unit + 1);
  if (unit >= 0x14A && unit <= 0x177 && (unit & 1) == 0)
    return static_cast<unsigned short>(unit + 1);
  return unit;
}

bool Glob(const unsigned short* p, std::size_t pn, const unsigned short* s, std::size_t sn) {
  std::size_t pi = 0, si = 0, starP = SIZE_MAX, starS = 0;
  while (si < sn) {
    if (pi < pn && (p[pi] == '?' || FoldCase(p[pi]) == FoldCase(s[si]))) {
      ++pi;
      ++si;
    } else if (pi < pn && p[pi] == '*') {
      starP = pi++;
      starS = si;
    } else if (starP != SIZE_MAX) {
      pi = starP + 1;
      si = ++starS;
    } else {
      return false;
    }
  }
  while (pi < pn && p[pi] == '*') ++pi;
  return pi == pn;
}

}  // namespace

// FindFirstFileW matches in the system itself; this is the same rule written
// out, for the tests that check the rule's table on every platform.
bool MatchesPattern(const UTF16String& pattern, const UTF16String& name) {
  if (Glob(pattern.data(), pattern.size(), name.data(), name.size())) return true;
  const bool nameHasDot = name.find('.') != UTF16String::npos;
  const std::size_t n = pattern.size();
  if (n >= 2 && pattern[n - 2] == '.' && pattern[n - 1] == '*') {
    if (Glob(pattern.data(), n - 2, name.data(), name.size())) return true;
  }
  if (n >= 2 && pattern[n - 1] == '.' && !nameHasDot) {
    if (Glob(pattern.data(), n - 1, name.data(), name.size())) return true;
  }
  return false;
}

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

}  // namespace tov::platform
