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
//
// The line layout and the lenient decoding live here; whole lines of output
// and the clean stretches of input go to the kernels of the processor's level
// (text/base64_internal.h), whose scalar versions are below.
#include <array>
#include <bit>
#include <cstring>
#include <stdexcept>

#include "basalt/kernel_choice.h"
#include "text/base64_internal.h"
#include "tovfoundation/text.h"

namespace tovimpl::text::base64 {

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

// Writes the eight characters of six input bytes; reads eight (the two after
// them are ignored, the caller guarantees they can be read).
inline unsigned short* EmitTwoGroups(unsigned short* dst, const unsigned char* src) {
  // Composed byte by byte: compilers turn this into one load and a byte swap.
  const std::uint64_t bits = (std::uint64_t{src[0]} << 56) | (std::uint64_t{src[1]} << 48) |
                             (std::uint64_t{src[2]} << 40) | (std::uint64_t{src[3]} << 32) |
                             (std::uint64_t{src[4]} << 24) | (std::uint64_t{src[5]} << 16) |
                             (std::uint64_t{src[6]} << 8) | std::uint64_t{src[7]};
  const CharPair pairs[4] = {kPairs[(bits >> 52) & 0xFFFu], kPairs[(bits >> 40) & 0xFFFu],
                             kPairs[(bits >> 28) & 0xFFFu], kPairs[(bits >> 16) & 0xFFFu]};
  std::memcpy(dst, pairs, sizeof pairs);
  return dst + 8;
}

inline unsigned short* EmitLineBreak(unsigned short* dst) {
  dst[0] = u'\r';
  dst[1] = u'\n';
  return dst + 2;
}

// Writes one full line: 19 groups (57 bytes) and a line break.
inline unsigned short* EmitLine(unsigned short* dst, const unsigned char* src) {
  for (int k = 0; k < 9; ++k) dst = EmitTwoGroups(dst, src + k * 6);  // reads up to byte 55
  dst = EmitGroup(dst, src + 54);
  return EmitLineBreak(dst);
}

// Output is produced in a small buffer and appended to the result in pieces,
// so the result's memory is written once (sizing a string first fills it).
constexpr std::size_t kLineUnits = kGroupsPerLine * 4 + 2;
constexpr std::size_t kLineBytes = kGroupsPerLine * 3;
constexpr std::size_t kEncodeChunkLines = 64;

// Decoding tables, one per place in a group: for each ASCII character, its
// 6-bit value already placed where it lands in the group's three output bytes
// as they lie in memory (so OR-ing four entries gives the bytes to store), or
// kSpecial for "=" and dropped characters.
constexpr std::uint32_t kSpecial = 0x80000000u;

// The group's 24 bits (a in the top six) as its three bytes in memory order,
// in the low three bytes of a 32-bit word.
constexpr std::uint32_t MemoryOrder(std::uint32_t bits) {
  if constexpr (std::endian::native == std::endian::little) {
    return ((bits >> 16) & 0xFFu) | (bits & 0xFF00u) | ((bits & 0xFFu) << 16);
  } else {
    return bits << 8;
  }
}

struct PlacedTables {
  std::uint32_t place[4][128];
};

constexpr PlacedTables MakePlacedTables() {
  PlacedTables tables{};
  for (unsigned place = 0; place < 4; ++place) {
    const unsigned shift = 18 - 6 * place;
    for (unsigned c = 0; c < 128; ++c) {
      const unsigned char code = kDecode[c];
      tables.place[place][c] = code < 64 ? MemoryOrder(std::uint32_t{code} << shift) : kSpecial;
    }
  }
  return tables;
}
constexpr PlacedTables kPlaced = MakePlacedTables();

constexpr std::size_t kDecodeChunk = 8 * 1024;

// Writes the three bytes of a group, and one byte of garbage after them, with
// a single store.
inline void StoreGroup(unsigned char* dst, std::uint32_t word) { std::memcpy(dst, &word, 4); }

const Kernels& ActiveKernels() {
  static const Kernels& kernels = KernelsFor(tovimpl::platform::TextSimdLevel());
  return kernels;
}

}  // namespace

unsigned short* EncodeLinesScalar(const unsigned char* src, std::size_t lines,
                                  unsigned short* dst) {
  for (std::size_t line = 0; line < lines; ++line) dst = EmitLine(dst, src + line * kLineBytes);
  return dst;
}

void DecodeCleanScalar(const unsigned short*& src, const unsigned short* end, unsigned char*& dst,
                       const unsigned char* limit) {
  // Four alphabet characters in a row (no pad, nothing dropped) are the next
  // group; a CRLF between groups is skipped on the way.
  while (end - src >= 4 && dst < limit) {
    const unsigned short a = src[0];
    const unsigned short b = src[1];
    const unsigned short c = src[2];
    const unsigned short d = src[3];
    if (((a | b | c | d) & 0xFF80u) != 0) break;
    const std::uint32_t word =
        kPlaced.place[0][a] | kPlaced.place[1][b] | kPlaced.place[2][c] | kPlaced.place[3][d];
    if ((word & kSpecial) != 0) {
      if (a == u'\r' && b == u'\n') {
        src += 2;
        continue;
      }
      break;
    }
    StoreGroup(dst, word);
    dst += 3;
    src += 4;
  }
}

const Kernels& KernelsFor(tovimpl::platform::SimdLevel level) {
  static constexpr Kernels kScalar{EncodeLinesScalar, DecodeCleanScalar};
#if defined(__x86_64__)
  static constexpr Kernels kAvx2{EncodeLinesAvx2, DecodeCleanAvx2};
  static constexpr Kernels kAvx512{EncodeLinesAvx512, DecodeCleanAvx512};
  return basalt::ChooseKernels(level, kScalar, kAvx2, kAvx512);
#else
  (void)level;
  return kScalar;
#endif
}

void EncodeInto(const Kernels& kernels, const unsigned char* bytes, std::size_t n,
                UTF16String& out) {
  out.clear();
  if (n == 0) return;
  // The walk's index is 32 bits wide: beyond that it would never end.
  if (n > 0xFFFFFFFFu) throw std::length_error("string too long");

  const std::size_t groups = (n + 2) / 3;
  const std::size_t lineBreaks = (groups - 1) / kGroupsPerLine + 1;
  out.reserve(groups * 4 + lineBreaks * 2);

  unsigned short chunk[kEncodeChunkLines * kLineUnits];
  unsigned short* const chunkEnd = chunk + kEncodeChunkLines * kLineUnits;
  unsigned short* dst = chunk;
  const auto flush = [&] {
    out.append(chunk, static_cast<std::size_t>(dst - chunk));
    dst = chunk;
  };

  const unsigned char* src = bytes;
  const std::size_t fullGroups = n / 3;
  std::size_t group = 0;
  if (fullGroups > 0) {
    // The group at offset 0 is a line of its own.
    dst = EmitLineBreak(EmitGroup(dst, src));
    group = 1;
    // Then lines of 19 groups, each ending at an offset that is a multiple of 57.
    std::size_t lines = (fullGroups - group) / kGroupsPerLine;
    while (lines > 0) {
      std::size_t room = static_cast<std::size_t>(chunkEnd - dst) / kLineUnits;
      if (room == 0) {
        flush();
        room = kEncodeChunkLines;
      }
      const std::size_t now = lines < room ? lines : room;
      dst = kernels.encodeLines(src + group * 3, now, dst);
      group += now * kGroupsPerLine;
      lines -= now;
    }
    // Fewer than 19 full groups remain; none starts at a multiple of 57.
    if (chunkEnd - dst < static_cast<std::ptrdiff_t>(kLineUnits)) flush();
    for (; group < fullGroups; ++group) dst = EmitGroup(dst, src + group * 3);
  }
  const std::size_t rest = n - fullGroups * 3;
  if (rest != 0) {
    if (chunkEnd - dst < static_cast<std::ptrdiff_t>(kLineUnits)) flush();
    const unsigned char* last = src + group * 3;
    const unsigned char tail[3] = {last[0], static_cast<unsigned char>(rest > 1 ? last[1] : 0), 0};
    EmitGroup(dst, tail);
    dst[3] = kPad;
    if (rest == 1) dst[2] = kPad;
    dst += 4;
    if (group % kGroupsPerLine == 0) dst = EmitLineBreak(dst);
  }
  flush();
}

void DecodeInto(const Kernels& kernels, const unsigned short* text, std::size_t length,
                std::vector<unsigned char>& out) {
  out.clear();
  const unsigned short* src = text;
  const unsigned short* const end = src + length;
  if (length > 0xFFFFFFFFu) {
    // The group index is 32 bits wide; count what the filter would keep.
    std::size_t kept = 0;
    for (const unsigned short* p = src; p != end; ++p) kept += CodeOf(*p) != kDropCode;
    if (kept > 0xFFFFFFFFu) throw std::length_error("vector<T> too long");
  }

  out.reserve((length + 3) / 4 * 3);
  // The kernels stop once kDecodeChunk bytes are used and may write scratch
  // bytes beyond; the slow path flushes before a group when the chunk is full.
  unsigned char chunk[kDecodeChunk + kDecodeSlack];
  unsigned char* dst = chunk;
  const auto flush = [&] {
    out.insert(out.end(), chunk, dst);
    dst = chunk;
  };

  for (;;) {
    // Fast path: the kernel takes the clean groups and the CRLFs between them.
    kernels.decodeClean(src, end, dst, chunk + kDecodeChunk);
    if (dst >= chunk + kDecodeChunk) {
      flush();
      continue;
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
  flush();
}

}  // namespace tovimpl::text::base64

namespace Halyard {

UTF16String Encode(const std::vector<unsigned char>& bytes) {
  UTF16String text;
  tovimpl::text::base64::EncodeInto(tovimpl::text::base64::ActiveKernels(), bytes.data(),
                                    bytes.size(), text);
  return text;
}

std::vector<unsigned char> Decode(const UTF16String& text) {
  std::vector<unsigned char> bytes;
  tovimpl::text::base64::DecodeInto(tovimpl::text::base64::ActiveKernels(), text.data(),
                                    text.size(), bytes);
  return bytes;
}

bool IsBase64(unsigned char character) {
  return character < 128 &&
         tovimpl::text::base64::kDecode[character] != tovimpl::text::base64::kDropCode;
}

}  // namespace Halyard
