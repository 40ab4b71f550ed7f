// POSIX backend of the OS layer: narrow text, C-runtime multibyte text, error messages.
// Needs POSIX.1-2008 thread locales (newlocale, uselocale, nl_langinfo).
#include <langinfo.h>
#include <locale.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "basalt/utf.h"
#include "platform/error.h"
#include "platform/posix/posix_support.h"
#include "platform/text.h"

namespace tovimpl::platform {

UTF16String NarrowToUTF16(std::string_view text) { return basalt::UTF8to16(text); }

std::string UTF16ToNarrow(UTF16StringView text) { return basalt::UTF16to8(text); }

namespace {

// True when the thread's LC_CTYPE codeset is plain ASCII, as in the "C" and
// "POSIX" locales. There every byte is taken as a character of its own value
// (bytes 0x80–0xFF are U+0080–U+00FF), as the Windows runtime's C locale does,
// where the system's mbrtowc would reject them.
bool CodesetIsAscii() {
  const char* codeset = ::nl_langinfo(CODESET);
  if (codeset == nullptr) return false;
  return std::strcmp(codeset, "ANSI_X3.4-1968") == 0 || std::strcmp(codeset, "ASCII") == 0 ||
         std::strcmp(codeset, "US-ASCII") == 0;
}

// The failure of a conversion: a character without a counterpart.
Status NoTranslation() { return Status::Failure(kErrorNoUnicodeTranslation); }

}  // namespace

Result<std::size_t> MultiByteToUTF16(char16_t* out, const char* text, std::size_t count) {
  const bool measuring = out == nullptr;
  std::size_t written = 0;
  const auto* src = reinterpret_cast<const unsigned char*>(text);

  if (CodesetIsAscii()) {
    for (; *src != 0; ++src) {
      if (!measuring) {
        if (written == count) return written;
        out[written] = static_cast<char16_t>(*src);
      }
      ++written;
    }
    if (!measuring && written < count) out[written] = u'\0';
    return written;
  }

  std::mbstate_t state{};
  for (;;) {
    wchar_t wide = 0;
    // MB_LEN_MAX bounds one character; mbrtowc stops at the NUL on its own.
    const std::size_t used =
        std::mbrtowc(&wide, reinterpret_cast<const char*>(src), MB_LEN_MAX, &state);
    if (used == static_cast<std::size_t>(-1) || used == static_cast<std::size_t>(-2)) {
      return NoTranslation();
    }
    if (used == 0) {  // the NUL
      if (!measuring && written < count) out[written] = u'\0';
      return written;
    }
    const auto codePoint = static_cast<std::uint32_t>(wide);
    if (codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF)) {
      return NoTranslation();
    }
    const std::size_t units = codePoint >= 0x10000 ? 2 : 1;
    if (!measuring) {
      if (count - written < units) return written;
      if (units == 2) {
        const std::uint32_t v = codePoint - 0x10000u;
        out[written] = static_cast<char16_t>(0xD800u + (v >> 10));
        out[written + 1] = static_cast<char16_t>(0xDC00u + (v & 0x3FFu));
      } else {
        out[written] = static_cast<char16_t>(codePoint);
      }
    }
    written += units;
    src += used;
  }
}

Result<std::size_t> UTF16ToMultiByte(char* out, const char16_t* text, std::size_t count) {
  const bool measuring = out == nullptr;
  std::size_t written = 0;

  if (CodesetIsAscii()) {
    for (const char16_t* src = text; *src != 0; ++src) {
      if (*src > 0xFF) {
        return NoTranslation();
      }
      if (!measuring) {
        if (written == count) return written;
        out[written] = static_cast<char>(static_cast<unsigned char>(*src));
      }
      ++written;
    }
    if (!measuring && written < count) out[written] = '\0';
    return written;
  }

  std::mbstate_t state{};
  char bytes[MB_LEN_MAX];
  for (const char16_t* src = text; *src != 0;) {
    std::uint32_t codePoint = *src++;
    if (codePoint >= 0xD800 && codePoint <= 0xDFFF) {
      if (codePoint > 0xDBFF || *src < 0xDC00 || *src > 0xDFFF) {
        return NoTranslation();
      }
      codePoint = 0x10000u + ((codePoint - 0xD800u) << 10) + (*src++ - 0xDC00u);
    }
    const std::size_t used = std::wcrtomb(bytes, static_cast<wchar_t>(codePoint), &state);
    if (used == static_cast<std::size_t>(-1)) {
      return NoTranslation();
    }
    if (!measuring) {
      if (count - written < used) return written;
      std::memcpy(out + written, bytes, used);
    }
    written += used;
  }
  if (!measuring && written < count) out[written] = '\0';
  return written;
}

std::size_t MaxMultiByteLength() { return MB_CUR_MAX; }

namespace {

// The errno each Windows code of MapErrno stands for (the first errno mapping
// to it). Codes outside this table have no system text.
int ErrnoForCode(std::uint32_t code) {
  switch (code) {
    case kErrorSuccess:
      return 0;
    case kErrorFileNotFound:
    case kErrorPathNotFound:
      return ENOENT;
    case kErrorAccessDenied:
      return EACCES;
    case kErrorFileExists:
    case kErrorAlreadyExists:
      return EEXIST;
    case kErrorDirNotEmpty:
      return ENOTEMPTY;
    case kErrorDiskFull:
      return ENOSPC;
    case kErrorFileTooLarge:
      return EFBIG;
    case kErrorFilenameExcedRange:
      return ENAMETOOLONG;
    case kErrorSharingViolation:
      return EWOULDBLOCK;
    case kErrorBusy:
      return EBUSY;
    case kErrorInvalidHandle:
      return EBADF;
    case kErrorInvalidParameter:
      return EINVAL;
    case kErrorNotEnoughMemory:
      return ENOMEM;
    case kErrorTooManyOpenFiles:
      return EMFILE;
    case kErrorNotSameDevice:
      return EXDEV;
    case kErrorBrokenPipe:
      return EPIPE;
    case kErrorCantResolveFilename:
      return ELOOP;
    case kErrorTooManyLinks:
      return EMLINK;
    case kErrorNotSupported:
      return EOPNOTSUPP;
    case kErrorTimeout:
      return ETIMEDOUT;
    case kErrorGenFailure:
      return EIO;
    default:
      return -1;
  }
}

// The "C" locale object for strerror_l, made once and kept for the process.
locale_t ClassicLocale() {
  static const locale_t classic = ::newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
  return classic;
}

}  // namespace

Result<UTF16String> FormatSystemMessage(std::uint32_t code, std::uint32_t /*languageId*/) {
  const int error = ErrnoForCode(code);
  const locale_t classic = ClassicLocale();
  if (error < 0 || classic == static_cast<locale_t>(nullptr)) {
    return Status::Failure(kErrorMrMidNotFound);
  }
  const char* message = ::strerror_l(error, classic);
  if (message == nullptr || *message == '\0') return Status::Failure(kErrorMrMidNotFound);
  UTF16String text = basalt::UTF8to16(message);
  text.push_back(u'\r');
  text.push_back(u'\n');
  return text;
}

}  // namespace tovimpl::platform
