// basalt string types: UTF16String and UTF8String.
//
// UTF16String is a string of unsigned 16-bit code units. Its c_str() is a
// `const unsigned short*`, so it feeds every interface of the library that takes
// NUL-terminated UTF-16 text directly:
//
//   using namespace basalt::literals;
//   UTF16String path = u"C:\\Media\\clip.wav"_u16;
//   Halyard::PathUtilities::TOVGetFileName(path);  // == u"clip.wav"_u16
//
// UTF8String is std::string holding UTF-8 bytes. Both live in the global
// namespace, as the rest of the interface names them. Storage comes from the
// standard allocator.
//
// Halyard::WideString is the "standard wide string" of the interface:
// std::u16string on every platform, so it is UTF-16 everywhere (wchar_t is 32
// bits on Linux). basalt::ToWide/FromWide move text between the two forms.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <ios>
#include <string>
#include <string_view>

#include "tovfoundation/export.h"

namespace basalt {

// Character traits for unsigned 16-bit code units. The standard library only
// guarantees std::char_traits for the character types, so the library carries
// its own: comparisons are by unsigned code-unit value.
struct UTF16CharTraits {
  // The code unit.
  using char_type = unsigned short;
  // A code unit or eof().
  using int_type = std::uint32_t;
  // Stream offsets.
  using off_type = std::streamoff;
  // Stream positions.
  using pos_type = std::streampos;
  // Conversion state (unused).
  using state_type = std::mbstate_t;
  // Comparisons are total orders.
  using comparison_category = std::strong_ordering;

  // to = from.
  static constexpr void assign(char_type& to, const char_type& from) noexcept { to = from; }
  // a == b.
  static constexpr bool eq(char_type a, char_type b) noexcept { return a == b; }
  // a < b, by unsigned value.
  static constexpr bool lt(char_type a, char_type b) noexcept { return a < b; }

  // Compares `n` units: negative, 0 or positive.
  static constexpr int compare(const char_type* a, const char_type* b, std::size_t n) noexcept {
    for (std::size_t i = 0; i < n; ++i) {
      if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
    }
    return 0;
  }
  // The number of units before the first zero unit.
  static constexpr std::size_t length(const char_type* s) noexcept {
    std::size_t n = 0;
    while (s[n] != 0) ++n;
    return n;
  }
  // The first of `n` units equal to `c`, or null.
  static constexpr const char_type* find(const char_type* s, std::size_t n,
                                         const char_type& c) noexcept {
    for (std::size_t i = 0; i < n; ++i) {
      if (s[i] == c) return s + i;
    }
    return nullptr;
  }
  // Copies `n` units; the ranges may overlap.
  static char_type* move(char_type* to, const char_type* from, std::size_t n) noexcept {
    if (n != 0) std::memmove(to, from, n * sizeof(char_type));
    return to;
  }
  // Copies `n` units; the ranges must not overlap.
  static char_type* copy(char_type* to, const char_type* from, std::size_t n) noexcept {
    // std::copy rather than memcpy: the same code, and GCC's object-size
    // analysis of basic_string growth paths does not misfire on it.
    std::copy(from, from + n, to);
    return to;
  }
  // Sets `n` units to `c`.
  static constexpr char_type* assign(char_type* s, std::size_t n, char_type c) noexcept {
    for (std::size_t i = 0; i < n; ++i) s[i] = c;
    return s;
  }
  // 0xFFFFFFFF, a value no code unit has.
  static constexpr int_type eof() noexcept { return 0xFFFFFFFFu; }
  // `c`, or 0 when `c` is eof().
  static constexpr int_type not_eof(int_type c) noexcept { return c == eof() ? 0 : c; }
  // The code unit of `c`.
  static constexpr char_type to_char_type(int_type c) noexcept { return static_cast<char_type>(c); }
  // `c` as int_type.
  static constexpr int_type to_int_type(char_type c) noexcept { return c; }
  // a == b.
  static constexpr bool eq_int_type(int_type a, int_type b) noexcept { return a == b; }
};

}  // namespace basalt

// UTF-16 text: code units, not characters (a character outside the BMP takes two).
using UTF16String = std::basic_string<unsigned short, basalt::UTF16CharTraits>;
// A view of UTF-16 text.
using UTF16StringView = std::basic_string_view<unsigned short, basalt::UTF16CharTraits>;
// UTF-8 text.
using UTF8String = std::string;

namespace Halyard {
// The interface's "standard wide string": UTF-16 on every platform.
using WideString = std::u16string;
}  // namespace Halyard

namespace basalt {

// UTF-16 text from a char16_t literal or view: u"text"_u16, or ToUTF16(u"text").
inline UTF16String ToUTF16(std::u16string_view text) {
  UTF16String out(text.size(), 0);
  for (std::size_t i = 0; i < text.size(); ++i) out[i] = static_cast<unsigned short>(text[i]);
  return out;
}
// The same code units as a standard wide string.
inline Halyard::WideString ToWide(UTF16StringView text) {
  Halyard::WideString out(text.size(), u'\0');
  for (std::size_t i = 0; i < text.size(); ++i) out[i] = static_cast<char16_t>(text[i]);
  return out;
}
// A standard wide string as UTF16String.
inline UTF16String FromWide(std::u16string_view text) { return ToUTF16(text); }

namespace literals {
// u"abc"_u16 is a UTF16String.
inline UTF16String operator""_u16(const char16_t* text, std::size_t length) {
  return ToUTF16(std::u16string_view(text, length));
}
}  // namespace literals

}  // namespace basalt
