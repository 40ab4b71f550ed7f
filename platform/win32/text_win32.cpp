// Win32 backend of the OS layer: text in the system's encodings, and the system's error messages.
// Only code that works on every supported Windows version belongs here.
#include <cerrno>
#include <cstdlib>
#include <cwchar>

#include "platform/error.h"
#include "platform/text.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

UTF16String NarrowToUTF16(std::string_view text) {
  if (text.empty()) return {};
  const int length = static_cast<int>(text.size());
  const int units = ::MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0);
  if (units <= 0) return {};
  std::wstring wide(static_cast<std::size_t>(units), L'\0');
  ::MultiByteToWideChar(CP_ACP, 0, text.data(), length, wide.data(), units);
  return win32::FromWide(wide);
}

std::string UTF16ToNarrow(UTF16StringView text) {
  if (text.empty()) return {};
  const std::wstring wide = win32::Wide(text);
  const int length = static_cast<int>(wide.size());
  const int bytes =
      ::WideCharToMultiByte(CP_ACP, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
  if (bytes <= 0) return {};
  std::string narrow(static_cast<std::size_t>(bytes), '\0');
  ::WideCharToMultiByte(CP_ACP, 0, wide.data(), length, narrow.data(), bytes, nullptr, nullptr);
  return narrow;
}

// The C runtime's wide characters are UTF-16 on Windows, so mbstowcs and
// wcstombs are the conversions themselves, in the calling thread's locale.
// They report an unconvertible character through errno only.
Result<std::size_t> MultiByteToUTF16(char16_t* out, const char* text, std::size_t count) {
  errno = 0;
  const std::size_t converted = std::mbstowcs(reinterpret_cast<wchar_t*>(out), text, count);
  if (converted == kMultiByteError) return Status::Failure(kErrorNoUnicodeTranslation);
  return converted;
}

Result<std::size_t> UTF16ToMultiByte(char* out, const char16_t* text, std::size_t count) {
  errno = 0;
  const std::size_t converted =
      std::wcstombs(out, reinterpret_cast<const wchar_t*>(text), out == nullptr ? 0 : count);
  if (converted == kMultiByteError) return Status::Failure(kErrorNoUnicodeTranslation);
  return converted;
}

std::size_t MaxMultiByteLength() { return MB_CUR_MAX; }

Result<UTF16String> FormatSystemMessage(std::uint32_t code, std::uint32_t languageId) {
  wchar_t* buffer = nullptr;
  const DWORD length = ::FormatMessageW(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
      nullptr, static_cast<DWORD>(code), static_cast<DWORD>(languageId),
      reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
  if (length == 0 || buffer == nullptr) {
    const ErrorCode error = win32::LastErrorOr(kErrorMrMidNotFound);
    if (buffer != nullptr) ::LocalFree(buffer);
    return Status::Failure(error);
  }
  UTF16String text = win32::FromWide(buffer, length);
  ::LocalFree(buffer);
  return text;
}

}  // namespace tovimpl::platform
