// Win32 backend of the OS layer: helpers shared by the backend's files.
// Only code that works on every supported Windows version belongs here.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "basalt/strings.h"
#include "platform/error.h"

namespace tov::platform::win32 {

// The library's UTF-16 code units and the system's wchar_t are both 16 bits on
// Windows: library text is handed to the W functions as it is.
static_assert(sizeof(wchar_t) == sizeof(unsigned short), "wchar_t is UTF-16 on Windows");

// A NUL-terminated copy of `text` the W functions can take.
inline std::wstring Wide(UTF16StringView text) {
  return std::wstring(reinterpret_cast<const wchar_t*>(text.data()), text.size());
}

// System text ⇒ library text.
inline UTF16String FromWide(const wchar_t* text, std::size_t length) {
  return UTF16String(reinterpret_cast<const unsigned short*>(text), length);
}
inline UTF16String FromWide(const std::wstring& text) { return FromWide(text.data(), text.size()); }

// The thread's last error, never 0: what a failed call left, or
// kErrorGenFailure when it left nothing.
inline std::uint32_t LastErrorOr(std::uint32_t fallback = kErrorGenFailure) {
  const DWORD error = ::GetLastError();
  return error != 0 ? static_cast<std::uint32_t>(error) : fallback;
}

// Makes sure a failure leaves a non-zero last error.
inline void KeepFailureCode(std::uint32_t fallback = kErrorGenFailure) {
  ::SetLastError(static_cast<DWORD>(LastErrorOr(fallback)));
}

}  // namespace tov::platform::win32
