// String utilities: UTF-8/UTF-16/ASCII/system conversions, multibyte text,
// four-character codes, duplication, UTF-16 buffer primitives, the text
// locale and fixed-point text.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "basalt/utf.h"
#include "platform/text.h"
#include "text/text_internal.h"
#include "tovfoundation/text.h"

namespace tovimpl::text {

unsigned short* DuplicateUnits(const unsigned short* text, std::size_t length) {
  // A count no array can hold is an allocation that cannot succeed.
  constexpr std::size_t kMaxUnits = PTRDIFF_MAX / sizeof(unsigned short) - 1;
  if (length > kMaxUnits) throw TOV::TOVVRException(TOV::kErrInvalidArgument);
  auto* copy = new (std::nothrow) unsigned short[length + 1];
  if (copy == nullptr) throw TOV::TOVVRException(TOV::kErrInvalidArgument);
  if (length != 0) std::memcpy(copy, text, length * sizeof(unsigned short));
  copy[length] = 0;
  return copy;
}

}  // namespace tovimpl::text

namespace Halyard::StringUtils {

namespace {
void RequirePointer(const void* pointer) {
  if (pointer == nullptr) throw TOV::TOVVRException(TOV::kErrInvalidArgument);
}

std::locale& HeldLocale() {
  static std::locale held;
  return held;
}
}  // namespace

UTF16String VUTF8ToUTF16(const UTF8String& text) { return basalt::UTF8to16(text); }

std::uint32_t VUTF8ToUTF16(const UTF8String& text, UTF16String& out) {
  out = basalt::UTF8to16(text);
  return TOV::kSuccess;
}

UTF8String VUTF16ToUTF8(const UTF16String& text) { return basalt::UTF16to8(text); }

std::uint32_t VUTF16ToUTF8(const UTF16String& text, UTF8String& out) {
  out = basalt::UTF16to8(text);
  return TOV::kSuccess;
}

UTF16String VAsciiToUTF16(const char* text) {
  if (text == nullptr) return UTF16String();
  return basalt::AsciiToUTF16(text, std::strlen(text));
}

UTF16String PlatformStringToUTF16(const char* text) {
  if (text == nullptr) return UTF16String();
  // The system code page: the one narrow conversion of the OS layer.
  return tovimpl::platform::NarrowToUTF16(text);
}

UTF16String FourCCToUTF16(std::uint32_t code) {
  const char text[5] = {
      static_cast<char>((code >> 24) & 0xFFu), static_cast<char>((code >> 16) & 0xFFu),
      static_cast<char>((code >> 8) & 0xFFu), static_cast<char>(code & 0xFFu), '\0'};
  return VAsciiToUTF16(text);
}

bool isValidFourCCToUTF16(std::uint32_t code) { return (code & 0x80808080u) == 0; }

bool IsAscii(int value) { return static_cast<unsigned int>(value) < 0x80u; }

char* StringDuplicate(const char* text) {
  if (text == nullptr) return nullptr;
  const std::size_t length = std::strlen(text);
  auto* copy = new (std::nothrow) char[length + 1];
  if (copy == nullptr) return nullptr;
  std::memcpy(copy, text, length + 1);
  return copy;
}

unsigned short* StringDuplicate(const unsigned short* text) {
  if (text == nullptr) return nullptr;
  return tovimpl::text::DuplicateUnits(text, VWLen(text));
}

std::size_t VWLen(const unsigned short* text) {
  RequirePointer(text);
  return UTF16String::traits_type::length(text);
}

unsigned short* VWCopy(unsigned short* destination, const unsigned short* source,
                       std::size_t count) {
  RequirePointer(destination);
  RequirePointer(source);
  if (count == 0) count = VWLen(source);
  if (count != 0) std::memmove(destination, source, count * sizeof(unsigned short));
  destination[count] = 0;
  return destination;
}

unsigned short* VWStrcat(unsigned short* destination, const unsigned short* source) {
  RequirePointer(destination);
  RequirePointer(source);
  const std::size_t end = VWLen(destination);
  const std::size_t length = VWLen(source);
  std::memmove(destination + end, source, (length + 1) * sizeof(unsigned short));
  return destination;
}

unsigned char VWIsEqual(const unsigned short* first, const unsigned short* second,
                        unsigned char ignoreCase) {
  RequirePointer(first);
  RequirePointer(second);
  if (ignoreCase == 0) {
    for (std::size_t i = 0;; ++i) {
      if (first[i] != second[i]) return 0;
      if (first[i] == 0) return 1;
    }
  }
  const auto fold = [](unsigned short unit) -> unsigned short {
    return unit >= u'A' && unit <= u'Z' ? static_cast<unsigned short>(unit + (u'a' - u'A')) : unit;
  };
  for (std::size_t i = 0;; ++i) {
    if (fold(first[i]) != fold(second[i])) return 0;
    if (first[i] == 0) return 1;
  }
}

const std::locale& VLocale() { return HeldLocale(); }

void InitVLocale(const std::locale& locale) {
  std::locale& held = HeldLocale();
  if (held == locale) return;
  held = locale;
}

}  // namespace Halyard::StringUtils

namespace Halyard {

namespace {
// The length the buffer forms report for text the runtime cannot convert: its
// error value, all ones in 32 bits.
constexpr std::uint32_t kConversionFailed = 0xFFFFFFFFu;
}  // namespace

std::uint32_t VUtilsASCIIStrToUnicode(const char* source, char16_t* destination,
                                      std::uint32_t* length) {
  if (source == nullptr || length == nullptr) return TOV::kErrInvalidArgument;
  const tovimpl::platform::Result<std::size_t> measured =
      tovimpl::platform::MultiByteToUTF16(nullptr, source, 0);
  if (!measured) {
    *length = kConversionFailed;
    return TOV::kErrInvalidPointer;
  }
  const auto units = static_cast<std::uint32_t>(*measured);
  *length = units + 1u;
  if (destination == nullptr) return TOV::kSuccess;
  const tovimpl::platform::Result<std::size_t> converted =
      tovimpl::platform::MultiByteToUTF16(destination, source, std::size_t{units} + 1u);
  return converted ? TOV::kSuccess : TOV::kErrInvalidPointer;
}

WideString VUtilsASCIIStrToUnicode(const char* source) {
  if (source == nullptr) return WideString();
  std::uint32_t length = 0;
  if (VUtilsASCIIStrToUnicode(source, nullptr, &length) != TOV::kSuccess) return WideString();
  // One spare unit beyond the measured count and its NUL.
  WideString buffer(std::size_t{length} + 1u, u'\0');
  if (VUtilsASCIIStrToUnicode(source, buffer.data(), &length) != TOV::kSuccess) {
    return WideString();
  }
  buffer.resize(std::char_traits<char16_t>::length(buffer.c_str()));
  return buffer;
}

std::uint32_t VUtilsUnicodeToASCIIStr(const char16_t* source, char* destination,
                                      std::uint32_t* length) {
  if (source == nullptr || length == nullptr) return TOV::kErrInvalidArgument;
  // Bound of the measuring call; like the runtime's wcstombs, measuring
  // converts the whole text whatever the bound says.
  const std::size_t bound =
      tovimpl::platform::MaxMultiByteLength() * std::char_traits<char16_t>::length(source);
  const tovimpl::platform::Result<std::size_t> measured =
      tovimpl::platform::UTF16ToMultiByte(nullptr, source, bound);
  *length = measured ? static_cast<std::uint32_t>(*measured) : kConversionFailed;
  if (!measured) return TOV::kErrCreateFailed;
  if (destination == nullptr) return TOV::kSuccess;
  const tovimpl::platform::Result<std::size_t> converted =
      tovimpl::platform::UTF16ToMultiByte(destination, source, std::size_t{*length} + 1u);
  return converted ? TOV::kSuccess : TOV::kErrCreateFailed;
}

std::string VUtilsUnicodeToASCIIStr(const char16_t* source) {
  if (source == nullptr) return std::string();
  std::uint32_t length = 0;
  if (VUtilsUnicodeToASCIIStr(source, nullptr, &length) != TOV::kSuccess || length == 0) {
    return std::string();
  }
  std::string buffer(std::size_t{length} + 1u, '\0');
  if (VUtilsUnicodeToASCIIStr(source, buffer.data(), &length) != TOV::kSuccess) {
    return std::string();
  }
  buffer.resize(std::strlen(buffer.c_str()));
  return buffer;
}

void ConvertFloatToString(char* destination, double value, int decimals) {
  if (decimals < 0) decimals = 0;
  char format[32];
  std::snprintf(format, sizeof format, "%%.%df", decimals);
  // The caller sizes the destination (see the header); no bound is known here.
  const int written = std::sprintf(destination, format, value);
  if (written <= 0 || decimals <= 1) return;
  std::size_t end = static_cast<std::size_t>(written);
  int removable = decimals - 1;
  while (removable > 0 && end > 0 && destination[end - 1] == '0') {
    --end;
    --removable;
  }
  destination[end] = '\0';
}

}  // namespace Halyard
