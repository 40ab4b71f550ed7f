// Win32 backend of the OS layer: helpers shared by the backend's files.
// Only code that works on every supported Windows version belongs here.
//
// The backend's files include the system's headers only through this one: it
// brings in <windows.h> and the shell and COM headers. The OS layer's own
// calls have names no SDK macro takes, so no A/W macro needs removing.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
// The order matters: these need <windows.h> first.
#include <objbase.h>
#include <shellapi.h>
#include <shlobj.h>


#include <cstdint>
#include <string>

#include "basalt/strings.h"
#include "platform/error.h"

namespace tovimpl::platform::win32 {

// The library's UTF-16 code units and the system's wchar_t are both 16 bits on
// Windows: library text is handed to the W functions as it is.
static_assert(sizeof(wchar_t) == sizeof(unsigned short), "wchar_t is UTF-16 on Windows");

// A NUL-terminated copy of `text` the W functions can take.
inline std::wstring Wide(UTF16StringView text) {
  return std::wstring(reinterpret_cast<const wchar_t*>(text.data()), text.size());
}

// A library path as the W functions take it. The system leaves paths with the
// long-path prefix "\\?\" exactly as they are, forward slashes included, and
// the library adds that prefix to every path it opens (ToNormalizedPath); so
// here a prefixed path gets its forward slashes turned into backslashes, the
// normalisation the system applies to every unprefixed path.
inline std::wstring WidePath(UTF16StringView path) {
  std::wstring wide = Wide(path);
  if (wide.size() >= 4 && wide.compare(0, 4, L"\\\\?\\") == 0) {
    for (std::size_t i = 4; i < wide.size(); ++i) {
      if (wide[i] == L'/') wide[i] = L'\\';
    }
  }
  return wide;
}

// System text ⇒ library text.
inline UTF16String FromWide(const wchar_t* text, std::size_t length) {
  return UTF16String(reinterpret_cast<const unsigned short*>(text), length);
}
inline UTF16String FromWide(const wchar_t* text) { return FromWide(text, ::wcslen(text)); }
inline UTF16String FromWide(const std::wstring& text) { return FromWide(text.data(), text.size()); }

// The thread's last error, never 0: what a failed call left, or `fallback`
// when it left nothing.
inline std::uint32_t LastErrorOr(std::uint32_t fallback = kErrorGenFailure) {
  const DWORD error = ::GetLastError();
  return error != 0 ? static_cast<std::uint32_t>(error) : fallback;
}

// Makes sure a failure leaves a non-zero last error.
inline void KeepFailureCode(std::uint32_t fallback = kErrorGenFailure) {
  ::SetLastError(static_cast<DWORD>(LastErrorOr(fallback)));
}

// A FILETIME as one 64-bit count of 100 ns units since 1601-01-01 UTC.
inline std::uint64_t FileTimeValue(const FILETIME& time) {
  return (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

}  // namespace tovimpl::platform::win32
