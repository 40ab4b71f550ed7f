// Base64: Encode, Decode, IsBase64.
//
// Both directions are defined on 8-bit text that passes through basalt's UTF
// conversions (UTF8to16 after encoding, UTF16to8 before decoding). The code
// here works on UTF-16 directly, which gives identical results:
// - Encode only produces ASCII characters, on which UTF8to16 is the identity
//   widening, so the characters are written as code units right away;
// - Decode keeps only ASCII alphabet characters. UTF16to8 turns a code unit
//   below 0x80 into the same single byte and everything else (other
//   characters, surrogate pairs, unpaired surrogates as U+FFFD) into bytes of
//   0x80 and above, which the filter drops; so filtering the code units
//   directly keeps exactly the same characters in the same order.
#include <array>
#include <cstring>
#include <stdexcept>

#include "tovfoundation/text.h"

namespace Halyard {

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr unsigned short kPad = u'=';
constexpr std::size_t kGroupsPerLine = 19;  // 57 input bytes, 76 characters

// Two output characters for every 12-bit value, as the code units they become.
struct CharPair {
  unsigned short first;
  unsigned short second;
};

constexpr std::array<CharPair, 4096> MakePairTable() {
  std::array<CharPair, 4096> table{};
  for (unsigned value = 0; value < 4096; ++value) {
    table[value] = {static_cast<unsigned short>(kAlphabet[value >> 6]),
                    static_cast<unsigned short>(kAlphabet[value & 63])};
  }
  return table;
}
constexpr std::array<CharPair, 4096> kPairs = MakePairTable();

// Decoding codes per ASCII character: 0–63 for the alphabet, kPadCode for "=",
// kDropCode for everything else.
constexpr unsigned char kPadCode = 0x40;
constexpr unsigned char kDropCode = 0x80;

constexpr std::array<unsigned char, 128> MakeDecodeTable() {
  std::array<unsigned char, 128> table{};
  for (auto& code : table) code = kDropCode;
  for (unsigned char value = 0; value < 64; ++value) {
    table[static_cast<unsigned char>(kAlphabet[value])] = value;
  }
  table['='] = kPadCode;
  return table;
}
constexpr std::array<unsigned char, 128> kDecode = MakeDecodeTable();

inline unsigned char CodeOf(unsigned short unit) { return unit < 128 ? kDecode[unit] : kDropCode; }

// Writes the four characters of three input bytes.
inline unsigned short* EmitGroup(unsigned short* dst, const unsigned char* src) {
  const std::uint32_t bits = (std::uint32_t{src[0]} << 16) | (std::uint32_t{src[1]} << 8) | src[2];
  const CharPair pairs[2] = {kPairs[bits >> 12], kPairs[bits & 0xFFFu]};
  std::memcpy(dst, pairs, sizeof pairs);
  return dst + 4;
}

inline unsigned short* EmitLineBreak(unsigned short* dst) {
  dst[0] = u'\r';
  dst[1] = u'\n';
  return dst + 2;
}

}  // namespace

UTF16String Encode(const std::vector<unsigned char>& bytes) {
  const std::size_t n = bytes.size();
  if (n == 0) return UTF16String();
  // The walk's index is 32 bits wide: beyond that it would never end.
  if (n > 0xFFFFFFFFu) throw std::length_error("string too long");

  const std::size_t groups = (n + 2) / 3;
  const std::size_t lineBreaks = (groups - 1) / kGroupsPerLine + 1;
  UTF16String out(groups * 4 + lineBreaks * 2, 0);

  unsigned short* dst = out.data();
  const unsigned char* src = bytes.data();
  const std::size_t fullGroups = n / 3;
  std::size_t group = 0;
  if (fullGroups > 0) {
    // The group at offset 0 is a line of its own.
    dst = EmitLineBreak(EmitGroup(dst, src));
    group = 1;
    // Then lines of 19 groups, each ending at an offset that is a multiple of 57.
    for (; group + kGroupsPerLine <= fullGroups; group += kGroupsPerLine) {
      const unsigned char* line = src + group * 3;
      for (std::size_t k = 0; k < kGroupsPerLine; ++k) dst = EmitGroup(dst, line + k * 3);
      dst = EmitLineBreak(dst);
    }
    // Fewer than 19 full groups remain; none starts at a multiple of 57.
    for (; group < fullGroups; ++group) dst = EmitGroup(dst, src + group * 3);
  }
  const std::size_t rest = n - fullGroups * 3;
  if (rest != 0) {
    const unsigned char* last = src + group * 3;
    const unsigned char tail[3] = {last[0], static_cast<unsigned char>(rest > 1 ? last[1] : 0), 0};
    EmitGroup(dst, tail);
    dst[3] = kPad;
    if (rest == 1) dst[2] = kPad;
    dst += 4;
    if (group % kGroupsPerLine == 0) dst = EmitLineBreak(dst);
  }
  return out;
}

std::vector<unsigned char> Decode(const UTF16String& text) {
  const std::size_t length = text.size();
  const unsigned short* src = text.data();
  const unsigned short* const end = src + length;
  if (length > 0xFFFFFFFFu) {
    // The group index is 32 bits wide; count what the filter would keep.
    std::size_t kept = 0;
    for (const unsigned short* p = src; p != end; ++p) kept += CodeOf(*p) != kDropCode;
    if (kept > 0xFFFFFFFFu) throw std::length_error("vector<T> too long");
  }

  std::vector<unsigned char> out((length + 3) / 4 * 3);
  unsigned char* dst = out.data();

  for (;;) {
    // Fast path: four alphabet characters in a row (no pad, nothing dropped)
    // are the next group.
    while (end - src >= 4) {
      const unsigned char a = CodeOf(src[0]);
      const unsigned char b = CodeOf(src[1]);
      const unsigned char c = CodeOf(src[2]);
      const unsigned char d = CodeOf(src[3]);
      if (((a | b | c | d) & (kPadCode | kDropCode)) != 0) break;
      const std::uint32_t bits =
          (std::uint32_t{a} << 18) | (std::uint32_t{b} << 12) | (std::uint32_t{c} << 6) | d;
      dst[0] = static_cast<unsigned char>(bits >> 16);
      dst[1] = static_cast<unsigned char>(bits >> 8);
      dst[2] = static_cast<unsigned char>(bits);
      dst += 3;
      src += 4;
    }
    // Slow path: gather the next four kept characters one by one. A short last
    // group is completed with "A" (value 0, not a pad).
    unsigned char codes[4] = {0, 0, 0, 0};
    int gathered = 0;
    while (gathered < 4 && src != end) {
      const unsigned char code = CodeOf(*src++);
      if (code != kDropCode) codes[gathered++] = code;
    }
    if (gathered == 0) break;
    const auto value = [](unsigned char code) -> std::uint32_t {
      return code == kPadCode ? 63u : code;
    };
    const std::uint32_t a = value(codes[0]);
    const std::uint32_t b = value(codes[1]);
    const std::uint32_t c = value(codes[2]);
    const std::uint32_t d = value(codes[3]);
    *dst++ = static_cast<unsigned char>((a << 2) | (b >> 4));
    if (codes[2] != kPadCode) *dst++ = static_cast<unsigned char>((b << 4) | (c >> 2));
    if (codes[3] != kPadCode) *dst++ = static_cast<unsigned char>((c << 6) | d);
    if (gathered < 4) break;
  }
  out.resize(static_cast<std::size_t>(dst - out.data()));
  return out;
}

bool IsBase64(unsigned char character) {
  return character < 128 && kDecode[character] != kDropCode;
}

}  // namespace Halyard
