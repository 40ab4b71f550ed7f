// Win32 backend of the OS layer: files opened by handle.
// Needs CreateFileW, positioned ReadFile/WriteFile, SetFileInformationByHandle: Vista and later.
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

// The long-path form of a path: "\\?\" is put in front, "\\server\share"
// becomes "\\?\UNC\server\share", a path that already has the prefix stays.
UTF16String LongPathForm(UTF16StringView path) {
  static constexpr unsigned short kPrefix[] = {'\\', '\\', '?', '\\'};
  const UTF16StringView prefix(kPrefix, 4);
  if (path.substr(0, 4) == prefix) return UTF16String(path);
  UTF16String out(prefix);
  if (path.size() >= 2 && path[0] == '\\' && path[1] == '\\') {
    static constexpr unsigned short kUnc[] = {'U', 'N', 'C'};
    out.append(kUnc, 3);
    out.append(path.substr(1));
  } else {
    out.append(path);
  }
  return out;
}

// An OVERLAPPED that names a position of a synchronous handle.
OVERLAPPED At(std::uint64_t position) {
  OVERLAPPED at{};
  at.Offset = static_cast<DWORD>(position);
  at.OffsetHigh = static_cast<DWORD>(position >> 32);
  return at;
}

std::atomic<WriteFault> gWriteFault{nullptr};

}  // namespace

Result<OpenedFile> OpenFile(UTF16StringView libraryPath, std::uint32_t access, std::uint32_t share,
                            std::uint32_t disposition, std::uint32_t hints) {
  // Truncating needs write access: refused before the system is asked, as
  // the call's contract says.
  if (disposition == TRUNCATE_EXISTING && (access & GENERIC_WRITE) == 0) {
    return Status::Failure(kErrorInvalidParameter);
  }
  const std::wstring path = win32::WidePath(
      (hints & kOpenLongPath) != 0 ? UTF16StringView(LongPathForm(libraryPath)) : libraryPath);
  // Handles are not inherited by programs the process starts (no security
  // attributes: bInheritHandle false).
  const HANDLE handle = ::CreateFileW(path.c_str(), access, share, nullptr, disposition,
                                      hints & ~kOpenLongPath, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return Status::Failure(win32::LastErrorOr());
  const bool existed = disposition == OPEN_EXISTING || disposition == TRUNCATE_EXISTING ||
                       ((disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS) &&
                        ::GetLastError() == ERROR_ALREADY_EXISTS);
  OpenedFile opened;
  opened.handle = Wrap(handle);
  opened.existed = existed;
  BY_HANDLE_FILE_INFORMATION info{};
  if (::GetFileInformationByHandle(handle, &info)) {
    opened.isFolder = (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (!opened.isFolder) {
      opened.size = (static_cast<std::uint64_t>(info.nFileSizeHigh) << 32) | info.nFileSizeLow;
    }
  }
  return opened;
}

Result<std::uint32_t> ReadAt(FileHandle file, std::uint64_t position, void* buffer,
                             std::uint32_t count) {
  if (!file.IsOpen()) return Status::Failure(kErrorInvalidHandle);
  OVERLAPPED at = At(position);
  DWORD got = 0;
  if (!::ReadFile(Native(file), buffer, count, &got, &at)) {
    // Reading at or past the end reports ERROR_HANDLE_EOF with a position given.
    if (::GetLastError() == ERROR_HANDLE_EOF) return std::uint32_t{0};
    return Status::Failure(win32::LastErrorOr(kErrorReadFault));
  }
  return static_cast<std::uint32_t>(got);
}

void SetWriteFaultForTesting(WriteFault fault) { gWriteFault.store(fault); }

Result<std::uint32_t> WriteAt(FileHandle file, std::uint64_t position, const void* buffer,
                              std::uint32_t count) {
  if (!file.IsOpen()) return Status::Failure(kErrorInvalidHandle);
  if (const WriteFault fault = gWriteFault.load(std::memory_order_relaxed)) {
    if (const std::uint32_t error = fault(file, count)) return Status::Failure(error);
  }
  OVERLAPPED at = At(position);
  DWORD put = 0;
  if (!::WriteFile(Native(file), buffer, count, &put, &at)) {
    return Status::Failure(win32::LastErrorOr(kErrorWriteFault));
  }
  return static_cast<std::uint32_t>(put);
}

Result<std::uint64_t> FileSize(FileHandle file) {
  if (!file.IsOpen()) return Status::Failure(kErrorInvalidHandle);
  LARGE_INTEGER value{};
  if (!::GetFileSizeEx(Native(file), &value)) return Status::Failure(win32::LastErrorOr());
  return static_cast<std::uint64_t>(value.QuadPart);
}

Status SetFileSize(FileHandle file, std::uint64_t size) {
  if (!file.IsOpen()) return Status::Failure(kErrorInvalidHandle);
  FILE_END_OF_FILE_INFO end{};
  end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
  if (!::SetFileInformationByHandle(Native(file), FileEndOfFileInfo, &end, sizeof end)) {
    return Status::Failure(win32::LastErrorOr());
  }
  return Status::Ok();
}

Status FlushFile(FileHandle file) {
  if (!file.IsOpen()) return Status::Failure(kErrorInvalidHandle);
  if (!::FlushFileBuffers(Native(file))) return Status::Failure(win32::LastErrorOr());
  return Status::Ok();
}

Status CloseFile(FileHandle file) {
  if (!file.IsOpen()) return Status::Failure(kErrorInvalidHandle);
  if (!::CloseHandle(Native(file))) return Status::Failure(win32::LastErrorOr(kErrorInvalidHandle));
  return Status::Ok();
}

Status RemoveFile(UTF16StringView libraryPath) {
  const std::wstring path = win32::WidePath(libraryPath);
  if (!::DeleteFileW(path.c_str())) return Status::Failure(win32::LastErrorOr());
  return Status::Ok();
}

}  // namespace tovimpl::platform
