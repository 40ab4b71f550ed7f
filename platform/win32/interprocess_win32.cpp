// Win32 backend of the OS layer: lock files, file versions, process liveness.
// Needs LockFileEx, GetFileInformationByHandle, OpenProcess: Vista and later.
#include <cstdint>

#include "platform/error.h"
#include "platform/interprocess.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

namespace {

HANDLE Native(FileHandle file) { return reinterpret_cast<HANDLE>(file.Bits()); }

}  // namespace

Result<FileHandle> OpenLockFile(const UTF16String& path) {
  const HANDLE handle = ::CreateFileW(win32::WidePath(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return Status::Failure(win32::LastErrorOr());
  return FileHandle::FromBits(reinterpret_cast<std::intptr_t>(handle));
}

Status TakeExclusiveLock(FileHandle lockFile) {
  if (!lockFile.IsOpen()) return Status::Failure(kErrorInvalidHandle);
  OVERLAPPED at{};
  if (!::LockFileEx(Native(lockFile), LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &at)) {
    return Status::Failure(win32::LastErrorOr());
  }
  return Status::Ok();
}

Status ReleaseLock(FileHandle lockFile) {
  if (!lockFile.IsOpen()) return Status::Failure(kErrorInvalidHandle);
  OVERLAPPED at{};
  if (!::UnlockFileEx(Native(lockFile), 0, 1, 0, &at)) return Status::Failure(win32::LastErrorOr());
  return Status::Ok();
}

Status GetFileVersion(const UTF16String& path, FileVersion* version) {
  // Attributes only, shared with everything: it never disturbs another open.
  const HANDLE handle = ::CreateFileW(win32::WidePath(path).c_str(), FILE_READ_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return Status::Failure(win32::LastErrorOr());
  BY_HANDLE_FILE_INFORMATION info{};
  const bool ok = ::GetFileInformationByHandle(handle, &info) != 0;
  const DWORD error = ::GetLastError();
  ::CloseHandle(handle);
  if (!ok) return Status::Failure(error != 0 ? error : ERROR_GEN_FAILURE);
  version->volume = info.dwVolumeSerialNumber;
  version->fileId = (static_cast<std::uint64_t>(info.nFileIndexHigh) << 32) | info.nFileIndexLow;
  version->size = (static_cast<std::uint64_t>(info.nFileSizeHigh) << 32) | info.nFileSizeLow;
  version->writeTime = win32::FileTimeValue(info.ftLastWriteTime);
  version->changeTime = win32::FileTimeValue(info.ftCreationTime);
  version->isFolder = (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  return Status::Ok();
}

bool IsProcessRunning(std::uint32_t processId) {
  if (processId == 0) return false;
  const HANDLE process = ::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId);
  if (process == nullptr) {
    // Denied: it exists but belongs to someone else.
    return ::GetLastError() == ERROR_ACCESS_DENIED;
  }
  DWORD code = 0;
  const bool running = ::GetExitCodeProcess(process, &code) != 0 && code == STILL_ACTIVE;
  ::CloseHandle(process);
  return running;
}

}  // namespace tovimpl::platform
