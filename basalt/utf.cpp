// basalt Unicode conversions and number text.
#include "basalt/utf.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <system_error>

namespace basalt {

namespace {
constexpr unsigned short kReplacement = 0xFFFD;

inline bool IsContinuation(unsigned char byte) { return (byte & 0xC0u) == 0x80u; }
}  // namespace

UTF16String UTF8to16(const char* text, std::size_t length) {
  UTF16String out;
  if (length == 0) return out;
  // A UTF-8 text never needs more code units than it has bytes.
  out.resize(length);
  unsigned short* dst = out.data();
  const auto* src = reinterpret_cast<const unsigned char*>(text);
  const unsigned char* const end = src + length;
  while (src < end) {
    // ASCII runs, eight bytes at a time.
    while (end - src >= 8) {
      std::uint64_t block;
      std::memcpy(&block, src, 8);
      if ((block & 0x8080808080808080ull) != 0) break;
      for (int i = 0; i < 8; ++i) dst[i] = src[i];
      dst += 8;
      src += 8;
    }
    if (src >= end) break;
    const unsigned char lead = *src;
    if (lead < 0x80) {
      *dst++ = lead;
      ++src;
      continue;
    }
    // Multi-byte sequences; each maximal ill-formed subpart becomes one U+FFFD.
    const std::size_t avail = static_cast<std::size_t>(end - src);
    if (lead >= 0xC2 && lead <= 0xDF) {
      if (avail >= 2 && IsContinuation(src[1])) {
        *dst++ = static_cast<unsigned short>(((lead & 0x1Fu) << 6) | (src[1] & 0x3Fu));
        src += 2;
      } else {
        *dst++ = kReplacement;
        src += 1;
      }
      continue;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
      const unsigned char lo = lead == 0xE0 ? 0xA0 : 0x80;
      const unsigned char hi = lead == 0xED ? 0x9F : 0xBF;
      if (avail < 2 || src[1] < lo || src[1] > hi) {
        *dst++ = kReplacement;
        src += 1;
      } else if (avail < 3 || !IsContinuation(src[2])) {
        *dst++ = kReplacement;
        src += 2;
      } else {
        *dst++ = static_cast<unsigned short>(((lead & 0x0Fu) << 12) | ((src[1] & 0x3Fu) << 6) |
                                             (src[2] & 0x3Fu));
        src += 3;
      }
      continue;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
      const unsigned char lo = lead == 0xF0 ? 0x90 : 0x80;
      const unsigned char hi = lead == 0xF4 ? 0x8F : 0xBF;
      if (avail < 2 || src[1] < lo || src[1] > hi) {
        *dst++ = kReplacement;
        src += 1;
      } else if (avail < 3 || !IsContinuation(src[2])) {
        *dst++ = kReplacement;
        src += 2;
      } else if (avail < 4 || !IsContinuation(src[3])) {
        *dst++ = kReplacement;
        src += 3;
      } else {
        const std::uint32_t cp = ((lead & 0x07u) << 18) | ((src[1] & 0x3Fu) << 12) |
                                 ((src[2] & 0x3Fu) << 6) | (src[3] & 0x3Fu);
        const std::uint32_t v = cp - 0x10000u;
        *dst++ = static_cast<unsigned short>(0xD800u + (v >> 10));
        *dst++ = static_cast<unsigned short>(0xDC00u + (v & 0x3FFu));
        src += 4;
      }
      continue;
    }
    // 0x80–0xC1 and 0xF5–0xFF never start a sequence.
    *dst++ = kReplacement;
    src += 1;
  }
  out.resize(static_cast<std::size_t>(dst - out.data()));
  return out;
}

UTF16String UTF8to16(std::string_view text) { return UTF8to16(text.data(), text.size()); }

UTF8String UTF16to8(const unsigned short* text, std::size_t length) {
  UTF8String out;
  if (length == 0) return out;
  // At most three bytes per code unit (a surrogate pair gives four for two).
  out.resize(length * 3);
  auto* dst = reinterpret_cast<unsigned char*>(out.data());
  const unsigned short* src = text;
  const unsigned short* const end = text + length;
  while (src < end) {
    while (end - src >= 4) {
      std::uint64_t block;
      std::memcpy(&block, src, 8);
      if ((block & 0xFF80FF80FF80FF80ull) != 0) break;
      dst[0] = static_cast<unsigned char>(src[0]);
      dst[1] = static_cast<unsigned char>(src[1]);
      dst[2] = static_cast<unsigned char>(src[2]);
      dst[3] = static_cast<unsigned char>(src[3]);
      dst += 4;
      src += 4;
    }
    if (src >= end) break;
    std::uint32_t cp = *src++;
    if (cp < 0x80) {
      *dst++ = static_cast<unsigned char>(cp);
      continue;
    }
    if (cp < 0x800) {
      *dst++ = static_cast<unsigned char>(0xC0u | (cp >> 6));
      *dst++ = static_cast<unsigned char>(0x80u | (cp & 0x3Fu));
      continue;
    }
    if (cp >= 0xD800 && cp <= 0xDFFF) {
      if (cp <= 0xDBFF && src < end && *src >= 0xDC00 && *src <= 0xDFFF) {
        cp = 0x10000u + ((cp - 0xD800u) << 10) + (*src - 0xDC00u);
        ++src;
        *dst++ = static_cast<unsigned char>(0xF0u | (cp >> 18));
        *dst++ = static_cast<unsigned char>(0x80u | ((cp >> 12) & 0x3Fu));
        *dst++ = static_cast<unsigned char>(0x80u | ((cp >> 6) & 0x3Fu));
        *dst++ = static_cast<unsigned char>(0x80u | (cp & 0x3Fu));
        continue;
      }
      cp = kReplacement;
    }
    *dst++ = static_cast<unsigned char>(0xE0u | (cp >> 12));
    *dst++ = static_cast<unsigned char>(0x80u | ((cp >> 6) & 0x3Fu));
    *dst++ = static_cast<unsigned char>(0x80u | (cp & 0x3Fu));
  }
  out.resize(static_cast<std::size_t>(dst - reinterpret_cast<unsigned char*>(out.data())));
  return out;
}

UTF8String UTF16to8(UTF16StringView text) { return UTF16to8(text.data(), text.size()); }

UTF16String AsciiToUTF16(const char* text, std::size_t length) {
  UTF16String out(length, 0);
  for (std::size_t i = 0; i < length; ++i) {
    out[i] = static_cast<unsigned char>(text[i]);
  }
  return out;
}

UTF16String NumberToString(double value, unsigned minIntegerDigits, unsigned maxFractionDigits,
                           unsigned /*flags*/, unsigned /*reserved*/) {
  if (std::isnan(value)) return AsciiToUTF16("nan", 3);
  if (std::isinf(value)) return value < 0 ? AsciiToUTF16("-inf", 4) : AsciiToUTF16("inf", 3);
  // Enough for any double in fixed notation with up to 1074 fraction digits.
  if (maxFractionDigits > 1074) maxFractionDigits = 1074;
  char buffer[1500];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed,
                                    static_cast<int>(maxFractionDigits));
  std::string text(buffer, result.ptr);
  if (text.find('.') != std::string::npos) {
    while (text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
  }
  bool negative = !text.empty() && text[0] == '-';
  std::string digits = negative ? text.substr(1) : text;
  if (digits.find_first_not_of("0.") == std::string::npos) negative = false;  // no "-0"
  const std::size_t point = digits.find('.');
  const std::size_t integerDigits = point == std::string::npos ? digits.size() : point;
  if (integerDigits < minIntegerDigits) digits.insert(0, minIntegerDigits - integerDigits, '0');
  if (negative) digits.insert(0, 1, '-');
  return AsciiToUTF16(digits.data(), digits.size());
}

}  // namespace basalt
