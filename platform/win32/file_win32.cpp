// Win32 backend of the OS layer: files opened by handle.
// Only code that works on every supported Windows version belongs here.
#include <atomic>
#include <cstdint>

#include "platform/error.h"
#include "platform/file.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

namespace {

// A FileHandle holds the HANDLE's value: null is null, INVALID_HANDLE_VALUE (-1)
// is invalid.
HANDLE Native(FileHandle file) { return reinterpret_cast<HANDLE>(file.Bits()); }
FileHandle Wrap(HANDLE handle) {
  return FileHandle::FromBits(reinterpret_cast<std::intptr_t>(handle));
}

// Null and invalid handles fail as the system fails them, without asking it.
bool Usable(FileHandle file) {
  if (file.IsOpen()) return true;
  ::SetLastError(ERROR_INVALID_HANDLE);
  return false;
}

}  // namespace

FileHandle CreateFile(UTF16StringView libraryPath, std::uint32_t desiredAccess,
                      std::uint32_t shareMode, std::uint32_t creationDisposition,
                      std::uint32_t flagsAndAttributes) {
  // Truncating needs write access: refused before the system is asked, as
  // the call's contract says.
  if (creationDisposition == TRUNCATE_EXISTING && (desiredAccess & GENERIC_WRITE) == 0) {
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return FileHandle::Invalid();
  }
  const std::wstring path = win32::WidePath(libraryPath);
  // Handles are not inherited by programs the process starts (no security
  // attributes: bInheritHandle false).
  const HANDLE handle = ::CreateFileW(path.c_str(), desiredAccess, shareMode, nullptr,
                                      creationDisposition, flagsAndAttributes, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    win32::KeepFailureCode();
    return FileHandle::Invalid();
  }
  return Wrap(handle);
}

bool ReadFile(FileHandle file, void* buffer, std::uint32_t count, std::uint32_t* bytesRead) {
  if (bytesRead != nullptr) *bytesRead = 0;
  if (!Usable(file)) return false;
  DWORD got = 0;
  if (!::ReadFile(Native(file), buffer, count, &got, nullptr)) {
    win32::KeepFailureCode(kErrorReadFault);
    return false;
  }
  if (bytesRead != nullptr) *bytesRead = got;
  return true;
}

namespace {
std::atomic<WriteFault> gWriteFault{nullptr};
}  // namespace

void SetWriteFaultForTesting(WriteFault fault) { gWriteFault.store(fault); }

bool WriteFile(FileHandle file, const void* buffer, std::uint32_t count,
               std::uint32_t* bytesWritten) {
  if (bytesWritten != nullptr) *bytesWritten = 0;
  if (!Usable(file)) return false;
  if (const WriteFault fault = gWriteFault.load(std::memory_order_relaxed)) {
    if (const std::uint32_t error = fault(file, count)) {
      ::SetLastError(error);
      return false;
    }
  }
  DWORD put = 0;
  if (!::WriteFile(Native(file), buffer, count, &put, nullptr)) {
    win32::KeepFailureCode(kErrorWriteFault);
    return false;
  }
  if (bytesWritten != nullptr) *bytesWritten = put;
  return true;
}

std::uint32_t SetFilePointer(FileHandle file, std::int32_t distance, std::int32_t* distanceHigh,
                             std::uint32_t moveMethod) {
  if (!Usable(file)) return kInvalidSetFilePointer;
  if (distanceHigh == nullptr) {
    // Without a high part the new position must fit in 32 bits; otherwise the
    // call fails and the file pointer stays where it was.
    LARGE_INTEGER zero{};
    LARGE_INTEGER before{};
    LARGE_INTEGER after{};
    LARGE_INTEGER move{};
    move.QuadPart = distance;
    if (!::SetFilePointerEx(Native(file), zero, &before, FILE_CURRENT) ||
        !::SetFilePointerEx(Native(file), move, &after, moveMethod)) {
      win32::KeepFailureCode();
      return kInvalidSetFilePointer;
    }
    if (after.QuadPart > 0xFFFFFFFFll) {
      ::SetFilePointerEx(Native(file), before, nullptr, FILE_BEGIN);
      ::SetLastError(ERROR_INVALID_PARAMETER);
      return kInvalidSetFilePointer;
    }
    ::SetLastError(0);
    return static_cast<std::uint32_t>(after.QuadPart);
  }
  LONG high = distanceHigh != nullptr ? static_cast<LONG>(*distanceHigh) : 0;
  // The call answers 0xFFFFFFFF both for failure and for a low part of
  // 0xFFFFFFFF; the last error tells them apart, so it starts at 0.
  ::SetLastError(0);
  const DWORD low = ::SetFilePointer(Native(file), static_cast<LONG>(distance),
                                     distanceHigh != nullptr ? &high : nullptr, moveMethod);
  if (low == INVALID_SET_FILE_POINTER && ::GetLastError() != 0) return kInvalidSetFilePointer;
  if (distanceHigh != nullptr) *distanceHigh = static_cast<std::int32_t>(high);
  return static_cast<std::uint32_t>(low);
}

bool SetFilePointerEx(FileHandle file, std::int64_t distance, std::int64_t* newPosition,
                      std::uint32_t moveMethod) {
  if (!Usable(file)) return false;
  LARGE_INTEGER move{};
  move.QuadPart = distance;
  LARGE_INTEGER position{};
  if (!::SetFilePointerEx(Native(file), move, &position, moveMethod)) {
    win32::KeepFailureCode();
    return false;
  }
  if (newPosition != nullptr) *newPosition = position.QuadPart;
  return true;
}

bool SetEndOfFile(FileHandle file) {
  if (!Usable(file)) return false;
  if (!::SetEndOfFile(Native(file))) {
    win32::KeepFailureCode();
    return false;
  }
  return true;
}

std::uint32_t GetFileSize(FileHandle file, std::uint32_t* sizeHigh) {
  if (!Usable(file)) return kInvalidFileSize;
  DWORD high = 0;
  ::SetLastError(0);
  const DWORD low = ::GetFileSize(Native(file), &high);
  if (low == INVALID_FILE_SIZE && ::GetLastError() != 0) return kInvalidFileSize;
  if (sizeHigh != nullptr) *sizeHigh = high;
  return static_cast<std::uint32_t>(low);
}

bool GetFileSizeEx(FileHandle file, std::int64_t* size) {
  if (!Usable(file)) return false;
  LARGE_INTEGER value{};
  if (!::GetFileSizeEx(Native(file), &value)) {
    win32::KeepFailureCode();
    return false;
  }
  if (size != nullptr) *size = value.QuadPart;
  return true;
}

bool FlushFileBuffers(FileHandle file) {
  if (!Usable(file)) return false;
  if (!::FlushFileBuffers(Native(file))) {
    win32::KeepFailureCode();
    return false;
  }
  return true;
}

bool CloseHandle(FileHandle file) {
  if (!Usable(file)) return false;
  if (!::CloseHandle(Native(file))) {
    win32::KeepFailureCode(kErrorInvalidHandle);
    return false;
  }
  return true;
}

bool DeleteFile(UTF16StringView libraryPath) {
  const std::wstring path = win32::WidePath(libraryPath);
  if (!::DeleteFileW(path.c_str())) {
    win32::KeepFailureCode();
    return false;
  }
  return true;
}

}  // namespace tovimpl::platform
