// File times on Windows: FILETIME counts 100 ns from 1601-01-01 UTC.
#include <windows.h>

#include <vector>

#include "common/file_times.h"

namespace tovtest {

bool SetModificationTime(const std::string& native, std::int64_t unixSeconds,
                         std::uint32_t nanoseconds) {
  const int units = ::MultiByteToWideChar(CP_UTF8, 0, native.c_str(), -1, nullptr, 0);
  if (units <= 0) return false;
  std::vector<wchar_t> path(static_cast<std::size_t>(units));
  ::MultiByteToWideChar(CP_UTF8, 0, native.c_str(), -1, path.data(), units);
  HANDLE file = ::CreateFileW(path.data(), FILE_WRITE_ATTRIBUTES,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  const std::uint64_t ticks =
      static_cast<std::uint64_t>(unixSeconds + 11644473600LL) * 10000000u + nanoseconds / 100u;
  FILETIME time;
  time.dwLowDateTime = static_cast<DWORD>(ticks);
  time.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
  const bool ok = ::SetFileTime(file, nullptr, &time, &time) != 0;
  ::CloseHandle(file);
  return ok;
}

}  // namespace tovtest
