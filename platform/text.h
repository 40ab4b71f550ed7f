// OS layer: text in the system's encodings, and the system's error messages.
//
// The narrow text of the OS boundary, and two services shaped like the
// C-runtime and Windows calls they stand for:
// - MultiByteToUTF16 / UTF16ToMultiByte / MaxMultiByteLength: the C runtime's
//   mbstowcs / wcstombs / MB_CUR_MAX with UTF-16 on the wide side, in the
//   calling thread's current LC_CTYPE (uselocale or setlocale);
// - FormatSystemMessage: FormatMessageW for a system error code.
// The two services return their outcome with the Windows error code of a
// failure (result.h) and leave the thread's last-error slot alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "basalt/strings.h"
#include "platform/result.h"

namespace tovimpl::platform {

// Narrow (`char`) paths, module names and listed names as the system's narrow
// calls take and give them, to and from UTF-16. Windows: the ANSI code page
// (CP_ACP, as PathFileExistsA, LoadLibraryExA and FindFirstFileA read it);
// a character the code page lacks becomes that code page's default character
// ('?'). POSIX: UTF-8; ill-formed bytes become U+FFFD. Every narrow entry
// point that stands for a narrow system call converts through these two, once.
UTF16String NarrowToUTF16(std::string_view text);
std::string UTF16ToNarrow(UTF16StringView text);

// Windows error codes only these services report.
inline constexpr std::uint32_t kErrorNoUnicodeTranslation = 1113;
inline constexpr std::uint32_t kErrorMrMidNotFound = 317;

// The value the C runtime's mbstowcs and wcstombs answer on failure, (size_t)-1.
inline constexpr std::size_t kMultiByteError = static_cast<std::size_t>(-1);

// The C runtime's mbstowcs with UTF-16 as the wide form. Converts the
// NUL-terminated multibyte `text` in the current LC_CTYPE. With out == nullptr
// measures the whole text and ignores `count`; otherwise writes at most `count`
// code units (never half a surrogate pair) and the NUL when it fits. Gives the
// number of code units converted, the NUL not counted; kErrorNoUnicodeTranslation
// (1113) for an invalid sequence. In a locale whose codeset is ASCII ("C",
// "POSIX") bytes 0x80–0xFF give U+0080–U+00FF.
Result<std::size_t> MultiByteToUTF16(char16_t* out, const char* text, std::size_t count);

// The C runtime's wcstombs with UTF-16 as the wide form. Converts the
// NUL-terminated UTF-16 `text` into the current LC_CTYPE's multibyte form.
// With out == nullptr measures the whole text and ignores `count`; otherwise
// writes at most `count` bytes (never part of a character) and the NUL when it
// fits. Gives the number of bytes written, the NUL not counted;
// kErrorNoUnicodeTranslation (1113) when a character cannot be represented (an
// unpaired surrogate, or above U+00FF in an ASCII-codeset locale).
Result<std::size_t> UTF16ToMultiByte(char* out, const char16_t* text, std::size_t count);

// The C runtime's MB_CUR_MAX: the most bytes one character takes in the
// current LC_CTYPE.
std::size_t MaxMultiByteLength();

// Windows: FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER |
// FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS (0x1300), nullptr,
// code, languageId, …) followed by LocalFree of the system's buffer. Gives the
// system's text for `code`, unchanged (never empty); when the system has no
// text, the system's code for that, kErrorMrMidNotFound (317) when it names
// none. On POSIX the known codes are those MapErrno produces
// (posix_support.h): each maps back to its errno, the text is the "C"-locale
// strerror text and "\r\n"; `languageId` is ignored there; any other code
// gives 317.
Result<UTF16String> FormatSystemMessage(std::uint32_t code, std::uint32_t languageId);

}  // namespace tovimpl::platform
