// The vector Base64 kernels for x86-64 processors with AVX2 and with AVX-512
// (BW, VL and VBMI).
//
// Each function carries the instruction sets it uses as a target attribute,
// so this file builds with the library's ordinary flags and nothing in it runs
// unless the dispatch chose its level (platform/cpu.h).
//
// Encoding, one line of 57 bytes at a time: each group's three bytes are laid
// out as b1 b0 b2 b1 in a 32-bit lane, its four 6-bit values cut out of that
// (two multiplies with AVX2, one multishift with AVX-512) and turned into
// characters (an offset per value range with AVX2, one 64-entry table lookup
// with AVX-512), then widened to UTF-16. AVX2 does a line as 24 + 24 + 9 bytes,
// AVX-512 as 48 + 9; neither reads or writes outside the line.
//
// Decoding: 32 (64) code units narrowed to bytes with saturation, so that
// every unit above 0xFF stays outside the alphabet; each byte checked and
// translated (nibble tables with AVX2, a 128-entry table with AVX-512); four
// 6-bit values packed into three bytes with two multiply-adds. When a block
// holds anything but alphabet characters, the whole groups before the first
// such unit are kept, a CRLF found at a group boundary is stepped over, and
// anything else is left to the caller's lenient path.
#include "text/base64_internal.h"

#if defined(__x86_64__)

#include <cstdint>

// clang-format off
#include "platform/simd_target.h"  // before the intrinsics: it sets up the diagnostics
#include <immintrin.h>
// clang-format on

namespace tovimpl::text::base64 {

namespace {

constexpr std::size_t kLineBytes = 57;
constexpr std::size_t kLineUnits = 78;

// --- encoding --------------------------------------------------------------------

// The 6-bit values of the groups laid out as b1 b0 b2 b1 in each 32-bit lane,
// one value per byte in output order.
TOV_TARGET_AVX2 inline __m256i SplitGroups(__m256i laid) {
  const __m256i ac = _mm256_mulhi_epu16(_mm256_and_si256(laid, _mm256_set1_epi32(0x0FC0FC00)),
                                        _mm256_set1_epi32(0x04000040));
  const __m256i bd = _mm256_mullo_epi16(_mm256_and_si256(laid, _mm256_set1_epi32(0x003F03F0)),
                                        _mm256_set1_epi32(0x01000010));
  return _mm256_or_si256(ac, bd);
}

TOV_TARGET_AVX2 inline __m128i SplitGroups(__m128i laid) {
  const __m128i ac =
      _mm_mulhi_epu16(_mm_and_si128(laid, _mm_set1_epi32(0x0FC0FC00)), _mm_set1_epi32(0x04000040));
  const __m128i bd =
      _mm_mullo_epi16(_mm_and_si128(laid, _mm_set1_epi32(0x003F03F0)), _mm_set1_epi32(0x01000010));
  return _mm_or_si128(ac, bd);
}

// Character offsets by value range: slot 13 for 0–25 (+'A'), slot 0 for
// 26–51 (+'a' - 26), slots 1–10 for the digits, 11 for '+', 12 for '/'.
#define TOV_BASE64_OFFSETS 71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 65, 0, 0

TOV_TARGET_AVX2 inline __m256i Characters(__m256i values) {
  const __m256i offsets = _mm256_setr_epi8(TOV_BASE64_OFFSETS, TOV_BASE64_OFFSETS);
  __m256i slot = _mm256_subs_epu8(values, _mm256_set1_epi8(51));
  slot = _mm256_or_si256(slot, _mm256_and_si256(_mm256_cmpgt_epi8(_mm256_set1_epi8(26), values),
                                                _mm256_set1_epi8(13)));
  return _mm256_add_epi8(values, _mm256_shuffle_epi8(offsets, slot));
}

TOV_TARGET_AVX2 inline __m128i Characters(__m128i values) {
  const __m128i offsets = _mm_setr_epi8(TOV_BASE64_OFFSETS);
  __m128i slot = _mm_subs_epu8(values, _mm_set1_epi8(51));
  slot = _mm_or_si128(slot,
                      _mm_and_si128(_mm_cmpgt_epi8(_mm_set1_epi8(26), values), _mm_set1_epi8(13)));
  return _mm_add_epi8(values, _mm_shuffle_epi8(offsets, slot));
}

#undef TOV_BASE64_OFFSETS

// 24 bytes (reads exactly those) into 32 characters.
TOV_TARGET_AVX2 inline void Encode24(const unsigned char* src, unsigned short* dst) {
  const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
  const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 8));
  // The high lane takes bytes 12–23, at offset 4 of the bytes 8–23 loaded.
  const __m256i in = _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
  const __m256i layout = _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10,  //
                                          5, 4, 6, 5, 8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14);
  const __m256i chars = Characters(SplitGroups(_mm256_shuffle_epi8(in, layout)));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst),
                      _mm256_cvtepu8_epi16(_mm256_castsi256_si128(chars)));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 16),
                      _mm256_cvtepu8_epi16(_mm256_extracti128_si256(chars, 1)));
}

// The last nine bytes of a line (bytes 48–56) into 12 characters and the line
// break; `line` is the line's first byte.
TOV_TARGET_AVX2 inline void EncodeLineEnd(const unsigned char* line, unsigned short* dst) {
  // Bytes 41–56, so the load ends with the line.
  const __m128i in = _mm_loadu_si128(reinterpret_cast<const __m128i*>(line + 41));
  const __m128i layout = _mm_setr_epi8(8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14, 14, 13, 15, 14);
  const __m128i chars = Characters(SplitGroups(_mm_shuffle_epi8(in, layout)));
  const __m256i units = _mm256_cvtepu8_epi16(chars);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 64), _mm256_castsi256_si128(units));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(dst + 72), _mm256_extracti128_si256(units, 1));
  dst[76] = u'\r';
  dst[77] = u'\n';
}

// --- decoding --------------------------------------------------------------------

// Three bytes per group from the 6-bit values of whole groups, in each
// 32-bit lane as 00 b2 b1 b0 ... read from the top: the byte order in memory
// is then 2, 1, 0 of every lane.
TOV_TARGET_AVX2 inline __m256i JoinGroups(__m256i values) {
  const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
  return _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
}

// Stores the 24 bytes of 32 decoded values (and 8 scratch bytes).
TOV_TARGET_AVX2 inline void StoreJoined(unsigned char* dst, __m256i joined) {
  const __m256i order = _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1,  //
                                         2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
  const __m256i lanes = _mm256_shuffle_epi8(joined, order);
  const __m256i packed =
      _mm256_permutevar8x32_epi32(lanes, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst), packed);
}

// After a block with a unit outside the alphabet at `first`: keeps the whole
// groups before it, steps over a CRLF at a group boundary. False when the
// caller's lenient path must take over at `src`.
inline bool PassBreak(const unsigned short*& src, const unsigned short* end, unsigned char*& dst,
                      unsigned first) {
  const unsigned groups = first / 4;
  src += 4 * groups;
  dst += 3 * groups;
  if (first % 4 != 0 || end - src < 2 || src[0] != u'\r' || src[1] != u'\n') return false;
  src += 2;
  return true;
}

// The nibble tables of the AVX2 check and translation (see DecodeCleanAvx2),
// for one 128-bit lane.
#define TOV_BASE64_BY_HIGH \
  0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10
#define TOV_BASE64_BY_LOW \
  0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A
#define TOV_BASE64_VALUE_OFFSETS 0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0

// The end of a line as the encoder writes it: 12 alphabet characters, CR, LF
// (at `src`, 16 units readable). Writes their nine bytes at `dst` (and 7
// scratch bytes) and returns true; returns false and writes nothing when the
// units are anything else.
TOV_TARGET_AVX2 inline bool DecodeLineEnd(const unsigned short* src, unsigned char* dst) {
  const __m128i x = _mm_packus_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(src)),
                                     _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 8)));
  const __m128i nibble = _mm_set1_epi8(0x0F);
  const __m128i high = _mm_and_si128(_mm_srli_epi16(x, 4), nibble);
  const __m128i rejected =
      _mm_and_si128(_mm_shuffle_epi8(_mm_setr_epi8(TOV_BASE64_BY_HIGH), high),
                    _mm_shuffle_epi8(_mm_setr_epi8(TOV_BASE64_BY_LOW), _mm_and_si128(x, nibble)));
  const __m128i lineBreak =
      _mm_cmpeq_epi8(x, _mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, '\r', '\n', 0, 0));
  const auto accepted =
      static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(rejected, _mm_setzero_si128())));
  const auto breaks = static_cast<unsigned>(_mm_movemask_epi8(lineBreak));
  if ((accepted & 0x0FFFu) != 0x0FFFu || (breaks & 0x3000u) != 0x3000u) return false;
  const __m128i slot = _mm_add_epi8(high, _mm_cmpeq_epi8(x, _mm_set1_epi8('/')));
  const __m128i values =
      _mm_add_epi8(x, _mm_shuffle_epi8(_mm_setr_epi8(TOV_BASE64_VALUE_OFFSETS), slot));
  const __m128i joined = _mm_madd_epi16(_mm_maddubs_epi16(values, _mm_set1_epi32(0x01400140)),
                                        _mm_set1_epi32(0x00011000));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(dst),
                   _mm_shuffle_epi8(joined, _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, -1, -1, -1,
                                                          -1, -1, -1, -1)));
  return true;
}

// The alphabet's decoding table for bytes below 0x80: the value, or 0x80.
struct ValueTable {
  alignas(64) std::int8_t value[128];
};

constexpr ValueTable MakeValueTable() {
  ValueTable table{};
  for (auto& v : table.value) v = static_cast<std::int8_t>(0x80);
  const char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (int i = 0; i < 64; ++i)
    table.value[static_cast<unsigned char>(alphabet[i])] = static_cast<std::int8_t>(i);
  return table;
}
constexpr ValueTable kValues = MakeValueTable();

}  // namespace

// --- AVX2 ------------------------------------------------------------------------

TOV_TARGET_AVX2 unsigned short* EncodeLinesAvx2(const unsigned char* src, std::size_t lines,
                                                unsigned short* dst) {
  for (std::size_t line = 0; line < lines; ++line) {
    Encode24(src, dst);
    Encode24(src + 24, dst + 32);
    EncodeLineEnd(src, dst);
    src += kLineBytes;
    dst += kLineUnits;
  }
  return dst;
}

TOV_TARGET_AVX2 void DecodeCleanAvx2(const unsigned short*& src, const unsigned short* end,
                                     unsigned char*& dst, const unsigned char* limit) {
  // Rejection by nibbles: a byte is in the alphabet when the bits its high
  // nibble selects and the bits its low nibble rules out do not meet. Bit 0:
  // high nibble 2 ('+' 2B, '/' 2F); bit 1: 3 (digits 0–9); bit 2: 4 and 6
  // (letters from 1); bit 3: 5 and 7 (letters up to A); bit 4: any other high
  // nibble, which every low nibble rules out.
  const __m256i byHigh = _mm256_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10,
                                          0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10,  //
                                          0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10,
                                          0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10);
  const __m256i byLow = _mm256_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,
                                         0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A,  //
                                         0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,
                                         0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A);
  // Value offsets by high nibble; '/' is moved to slot 1.
  const __m256i offsets =
      _mm256_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0, 0, 16, 19, 4, -65,
                       -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0);
  const __m256i nibble = _mm256_set1_epi8(0x0F);
  while (end - src >= 32 && dst < limit) {
    const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src));
    const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + 16));
    const __m256i x = _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8);
    const __m256i high = _mm256_and_si256(_mm256_srli_epi16(x, 4), nibble);
    const __m256i low = _mm256_and_si256(x, nibble);
    const __m256i rejected =
        _mm256_and_si256(_mm256_shuffle_epi8(byHigh, high), _mm256_shuffle_epi8(byLow, low));
    const auto outside = ~static_cast<std::uint32_t>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi8(rejected, _mm256_setzero_si256())));
    const __m256i slot = _mm256_add_epi8(high, _mm256_cmpeq_epi8(x, _mm256_set1_epi8('/')));
    const __m256i values = _mm256_add_epi8(x, _mm256_shuffle_epi8(offsets, slot));
    StoreJoined(dst, JoinGroups(values));
    if (outside == 0) {
      // Where the encoder's line ends after these 32, take its end too.
      if (end - src >= 48 && DecodeLineEnd(src + 32, dst + 24)) {
        src += 46;
        dst += 33;
        continue;
      }
      src += 32;
      dst += 24;
      continue;
    }
    if (!PassBreak(src, end, dst, static_cast<unsigned>(__builtin_ctz(outside)))) return;
  }
  DecodeCleanScalar(src, end, dst, limit);
}

// --- AVX-512 ---------------------------------------------------------------------

TOV_TARGET_AVX512 unsigned short* EncodeLinesAvx512(const unsigned char* src, std::size_t lines,
                                                    unsigned short* dst) {
  // Group g's bytes 3g .. 3g+2 as 3g+1, 3g, 3g+2, 3g+1.
  alignas(64) std::uint8_t layoutBytes[64];
  for (int g = 0; g < 16; ++g) {
    layoutBytes[4 * g] = static_cast<std::uint8_t>(3 * g + 1);
    layoutBytes[4 * g + 1] = static_cast<std::uint8_t>(3 * g);
    layoutBytes[4 * g + 2] = static_cast<std::uint8_t>(3 * g + 2);
    layoutBytes[4 * g + 3] = static_cast<std::uint8_t>(3 * g + 1);
  }
  const __m512i layout = _mm512_load_si512(layoutBytes);
  // Bit offsets of a, b, c, d in each lane laid out as b1 b0 b2 b1.
  const __m512i shifts = _mm512_set1_epi64(0x3036242A1016040All);
  const __m512i alphabet =
      _mm512_loadu_si512("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
  for (std::size_t line = 0; line < lines; ++line) {
    const __m512i in = _mm512_maskz_loadu_epi8(0x0000FFFFFFFFFFFFull, src);
    const __m512i values =
        _mm512_multishift_epi64_epi8(shifts, _mm512_permutexvar_epi8(layout, in));
    const __m512i chars = _mm512_permutexvar_epi8(values, alphabet);
    _mm512_storeu_si512(dst, _mm512_cvtepu8_epi16(_mm512_castsi512_si256(chars)));
    _mm512_storeu_si512(dst + 32, _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(chars, 1)));
    EncodeLineEnd(src, dst);
    src += kLineBytes;
    dst += kLineUnits;
  }
  return dst;
}

TOV_TARGET_AVX512 void DecodeCleanAvx512(const unsigned short*& src, const unsigned short* end,
                                         unsigned char*& dst, const unsigned char* limit) {
  const __m512i values0 = _mm512_load_si512(kValues.value);
  const __m512i values1 = _mm512_load_si512(kValues.value + 64);
  const __m512i inOrder = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);
  alignas(64) std::uint8_t orderBytes[64] = {};
  for (int g = 0; g < 16; ++g) {
    orderBytes[3 * g] = static_cast<std::uint8_t>(4 * g + 2);
    orderBytes[3 * g + 1] = static_cast<std::uint8_t>(4 * g + 1);
    orderBytes[3 * g + 2] = static_cast<std::uint8_t>(4 * g);
  }
  const __m512i order = _mm512_load_si512(orderBytes);
  while (end - src >= 64 && dst < limit) {
    const __m512i a = _mm512_loadu_si512(src);
    const __m512i b = _mm512_loadu_si512(src + 32);
    const __m512i x = _mm512_permutexvar_epi64(inOrder, _mm512_packus_epi16(a, b));
    const __m512i values = _mm512_permutex2var_epi8(values0, x, values1);
    const std::uint64_t outside = _mm512_movepi8_mask(_mm512_or_si512(x, values));
    const __m512i pairs = _mm512_maddubs_epi16(values, _mm512_set1_epi32(0x01400140));
    const __m512i joined = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
    _mm512_storeu_si512(dst, _mm512_permutexvar_epi8(order, joined));
    if (outside == 0) {
      // A whole line of the encoder's is these 64 and its end.
      if (end - src >= 80 && DecodeLineEnd(src + 64, dst + 48)) {
        src += 78;
        dst += 57;
        continue;
      }
      src += 64;
      dst += 48;
      continue;
    }
    if (!PassBreak(src, end, dst, static_cast<unsigned>(__builtin_ctzll(outside)))) return;
  }
  DecodeCleanAvx2(src, end, dst, limit);
}

#undef TOV_BASE64_BY_HIGH
#undef TOV_BASE64_BY_LOW
#undef TOV_BASE64_VALUE_OFFSETS

}  // namespace tovimpl::text::base64

#endif  // __x86_64__
