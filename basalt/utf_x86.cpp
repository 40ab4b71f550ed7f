// The vector UTF kernels for x86-64 processors with AVX2 and with AVX-512.
//
// Each function carries the instruction sets it uses as a target attribute,
// so this file builds with the library's ordinary flags and nothing in it runs
// unless the dispatch chose its level (platform/cpu.h).
//
// UTF-8 → UTF-16 takes ASCII 32 (64) bytes at a time. Other text goes through
// windows of 16 bytes (32 with AVX-512): each byte position is decoded as if
// a character started there, the run of well-formed one- to three-byte
// characters at the window's start is kept (the positions of continuation
// bytes squeezed out), and the window ends before the first other character
// (a four-byte or ill-formed sequence, or one cut by the window's end). Where
// a window cannot start, the scalar step takes one character; that is what
// makes the output identical to the scalar kernel's.
//
// UTF-16 → UTF-8 takes ASCII 32 (64) units at a time and other text in windows
// of eight units (16 with AVX-512): each unit's one to three bytes are built
// in a 32-bit lane, then packed by a table shuffle. Surrogates take the scalar
// step (AVX2: for the window's units; AVX-512: after the units before them).
#include "basalt/utf_internal.h"
#include "basalt/utf_simd_tables.h"

#if defined(__x86_64__)

// clang-format off
#include "platform/simd_target.h"  // before the intrinsics: it sets up the diagnostics
#include <immintrin.h>
// clang-format on

namespace basalt::utf {

namespace {

// --- UTF-8 → UTF-16 ------------------------------------------------------------

// Stores the lanes of `lanes` (eight code units) that `mask` keeps, in order,
// at `dst` (and scratch values up to eight units on) and advances `dst`.
TOV_TARGET_AVX2 inline void Compact8(unsigned short*& dst, __m128i lanes, unsigned mask) {
  _mm_storeu_si128(
      reinterpret_cast<__m128i*>(dst),
      _mm_shuffle_epi8(
          lanes, _mm_load_si128(reinterpret_cast<const __m128i*>(kLaneCompactions[mask].shuffle))));
  dst += __builtin_popcount(mask);
}

// The 16 bytes at `src`, which start a character: converts the longest run
// of well-formed one- to three-byte characters that starts there and lies
// wholly inside them. Writes the code units at `dst` (and scratch values up
// to 16 units on), advances `dst` and returns the bytes converted; 0 when the
// first character is anything else. `ascii` tells whether all 16 were ASCII.
TOV_TARGET_AVX2 inline unsigned Utf8Window(const unsigned char* src, unsigned short*& dst,
                                           bool& ascii) {
  const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
  const auto high = static_cast<unsigned>(_mm_movemask_epi8(x));
  ascii = high == 0;
  if (ascii) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst), _mm256_cvtepu8_epi16(x));
    dst += 16;
    return 16;
  }
  // Unsigned byte order as signed order, for the range tests.
  const __m128i biased = _mm_xor_si128(x, _mm_set1_epi8(static_cast<char>(0x80)));
  const __m128i cont = _mm_cmpgt_epi8(_mm_set1_epi8(-64), x);                        // 0x80–0xBF
  const __m128i lead2 = _mm_and_si128(_mm_cmpgt_epi8(biased, _mm_set1_epi8(0x41)),   // >= 0xC2
                                      _mm_cmpgt_epi8(_mm_set1_epi8(0x60), biased));  // <= 0xDF
  const __m128i lead3 = _mm_and_si128(_mm_cmpgt_epi8(biased, _mm_set1_epi8(0x5F)),   // >= 0xE0
                                      _mm_cmpgt_epi8(_mm_set1_epi8(0x70), biased));  // <= 0xEF
  // Continuation bytes exactly where the leads before them want them.
  const __m128i wanted =
      _mm_or_si128(_mm_slli_si128(_mm_or_si128(lead2, lead3), 1), _mm_slli_si128(lead3, 2));
  const auto contBits = static_cast<unsigned>(_mm_movemask_epi8(cont));
  const auto m2 = static_cast<unsigned>(_mm_movemask_epi8(lead2));
  const auto m3 = static_cast<unsigned>(_mm_movemask_epi8(lead3));
  const auto wantedBits = static_cast<unsigned>(_mm_movemask_epi8(wanted));

  const __m256i b0 = _mm256_cvtepu8_epi16(x);
  const __m256i b1 =
      _mm256_and_si256(_mm256_cvtepu8_epi16(_mm_srli_si128(x, 1)), _mm256_set1_epi16(0x3F));
  const __m256i b2 =
      _mm256_and_si256(_mm256_cvtepu8_epi16(_mm_srli_si128(x, 2)), _mm256_set1_epi16(0x3F));
  const __m256i v2 =
      _mm256_or_si256(_mm256_slli_epi16(_mm256_and_si256(b0, _mm256_set1_epi16(0x1F)), 6), b1);
  const __m256i v3 =
      _mm256_or_si256(_mm256_or_si256(_mm256_slli_epi16(b0, 12), _mm256_slli_epi16(b1, 6)), b2);
  const __m256i is2 = _mm256_cvtepi8_epi16(lead2);
  const __m256i is3 = _mm256_cvtepi8_epi16(lead3);
  // Three-byte sequences must not be overlong (below U+0800) nor surrogates.
  const __m256i top = _mm256_and_si256(v3, _mm256_set1_epi16(static_cast<short>(0xF800)));
  const __m256i bad = _mm256_and_si256(
      is3, _mm256_or_si256(_mm256_cmpeq_epi16(top, _mm256_setzero_si256()),
                           _mm256_cmpeq_epi16(top, _mm256_set1_epi16(static_cast<short>(0xD800)))));

  // Positions where something is wrong: a byte of none of the four kinds (a
  // non-ASCII byte that is neither a continuation nor a lead), a continuation
  // byte missing or not wanted, a bad three-byte value.
  const unsigned wrong = (high & ~(contBits | m2 | m3)) | (contBits ^ wantedBits) |
                         _pext_u32(static_cast<unsigned>(_mm256_movemask_epi8(bad)), 0x55555555u);
  // A character cut by the window's end is left for the next window.
  unsigned length = (m3 & 0x4000u) != 0 ? 14 : ((m2 | m3) & 0x8000u) != 0 ? 15 : 16;
  if (wrong != 0) {
    // Stop before the first wrong position, and before a character that
    // reaches into it (a wanted continuation there, from a lead one or two
    // bytes back).
    const auto first = static_cast<unsigned>(__builtin_ctz(wrong));
    unsigned cut = first;
    if ((wantedBits >> first) & 1u) cut = (((m2 | m3) >> (first - 1)) & 1u) ? first - 1 : first - 2;
    if (cut < length) length = cut;
    if (length == 0) return 0;
  }

  const __m256i v = _mm256_blendv_epi8(_mm256_blendv_epi8(b0, v2, is2), v3, is3);
  const unsigned keep = ~contBits & ((1u << length) - 1);
  _mm_storeu_si128(
      reinterpret_cast<__m128i*>(dst),
      _mm_shuffle_epi8(_mm256_castsi256_si128(v), _mm_load_si128(reinterpret_cast<const __m128i*>(
                                                      kLaneCompactions[keep & 0xFFu].shuffle))));
  dst += __builtin_popcount(keep & 0xFFu);
  _mm_storeu_si128(
      reinterpret_cast<__m128i*>(dst),
      _mm_shuffle_epi8(
          _mm256_extracti128_si256(v, 1),
          _mm_load_si128(reinterpret_cast<const __m128i*>(kLaneCompactions[keep >> 8].shuffle))));
  dst += __builtin_popcount(keep >> 8);
  return length;
}

// Text that is not all ASCII: windows while they hold other bytes, the scalar
// step where a window cannot start, the scalar kernel for the last 15 bytes.
// Returns false once the piece is done.
TOV_TARGET_AVX2 inline bool Utf8Windows(const unsigned char*& src, const unsigned char* end,
                                        const unsigned char* limit, unsigned short*& dst,
                                        bool final) {
  for (;;) {
    if (src >= limit) return false;
    if (end - src < 16) {
      Utf8To16Scalar(src, end, dst, final);
      return false;
    }
    bool ascii = false;
    const unsigned used = Utf8Window(src, dst, ascii);
    if (used == 0) {
      Utf8To16Step(src, end, dst);
      continue;
    }
    src += used;
    if (ascii) return true;
  }
}

// The AVX-512 window: 32 bytes at `src` (34 readable), the same contract as
// Utf8Window. The byte classes are mask registers, the 32 positions' values
// one register of 16-bit lanes.
TOV_TARGET_AVX512 inline unsigned Utf8Window32(const unsigned char* src, unsigned short*& dst,
                                               bool& ascii) {
  const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src));
  const std::uint64_t high = _mm256_movepi8_mask(x);
  ascii = high == 0;
  if (ascii) {
    _mm512_storeu_si512(dst, _mm512_cvtepu8_epi16(x));
    dst += 32;
    return 32;
  }
  const std::uint64_t cont =
      _mm256_cmpeq_epi8_mask(_mm256_and_si256(x, _mm256_set1_epi8(static_cast<char>(0xC0))),
                             _mm256_set1_epi8(static_cast<char>(0x80)));
  const std::uint64_t lead2 = _mm256_cmpge_epu8_mask(x, _mm256_set1_epi8(static_cast<char>(0xC2))) &
                              _mm256_cmple_epu8_mask(x, _mm256_set1_epi8(static_cast<char>(0xDF)));
  const __mmask32 lead3 =
      _mm256_cmpeq_epi8_mask(_mm256_and_si256(x, _mm256_set1_epi8(static_cast<char>(0xF0))),
                             _mm256_set1_epi8(static_cast<char>(0xE0)));
  const std::uint64_t m3 = lead3;
  const std::uint64_t wanted = ((lead2 | m3) << 1) | (m3 << 2);

  const __m512i b0 = _mm512_cvtepu8_epi16(x);
  const __m512i b1 = _mm512_and_si512(
      _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + 1))),
      _mm512_set1_epi16(0x3F));
  const __m512i b2 = _mm512_and_si512(
      _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + 2))),
      _mm512_set1_epi16(0x3F));
  const __m512i v2 =
      _mm512_or_si512(_mm512_slli_epi16(_mm512_and_si512(b0, _mm512_set1_epi16(0x1F)), 6), b1);
  const __m512i v3 =
      _mm512_or_si512(_mm512_or_si512(_mm512_slli_epi16(b0, 12), _mm512_slli_epi16(b1, 6)), b2);
  // Three-byte sequences must not be overlong (below U+0800) nor surrogates.
  const __m512i top = _mm512_and_si512(v3, _mm512_set1_epi16(static_cast<short>(0xF800)));
  const std::uint64_t bad =
      _mm512_mask_cmpeq_epi16_mask(lead3, top, _mm512_setzero_si512()) |
      _mm512_mask_cmpeq_epi16_mask(lead3, top, _mm512_set1_epi16(static_cast<short>(0xD800)));

  const std::uint64_t wrong =
      ((high & ~(cont | lead2 | m3)) | ((cont ^ wanted) & 0xFFFFFFFFu) | bad);
  unsigned length = (m3 & 0x40000000u) != 0 ? 30 : ((lead2 | m3) & 0x80000000u) != 0 ? 31 : 32;
  if (wrong != 0) {
    const auto first = static_cast<unsigned>(__builtin_ctzll(wrong));
    unsigned cut = first;
    if ((wanted >> first) & 1u) cut = (((lead2 | m3) >> (first - 1)) & 1u) ? first - 1 : first - 2;
    if (cut < length) length = cut;
    if (length == 0) return 0;
  }

  const __m512i v = _mm512_mask_blend_epi16(
      lead3, _mm512_mask_blend_epi16(static_cast<__mmask32>(lead2), b0, v2), v3);
  const std::uint64_t keep = ~cont & ((std::uint64_t{1} << length) - 1);
  const auto k = static_cast<unsigned>(keep);
  Compact8(dst, _mm512_castsi512_si128(v), k & 0xFFu);
  Compact8(dst, _mm512_extracti32x4_epi32(v, 1), (k >> 8) & 0xFFu);
  Compact8(dst, _mm512_extracti32x4_epi32(v, 2), (k >> 16) & 0xFFu);
  Compact8(dst, _mm512_extracti32x4_epi32(v, 3), k >> 24);
  return length;
}

TOV_TARGET_AVX512 inline bool Utf8Windows32(const unsigned char*& src, const unsigned char* end,
                                            const unsigned char* limit, unsigned short*& dst,
                                            bool final) {
  for (;;) {
    if (src >= limit) return false;
    bool ascii = false;
    unsigned used = 0;
    if (end - src >= 34) {
      used = Utf8Window32(src, dst, ascii);
    } else if (end - src >= 16) {
      used = Utf8Window(src, dst, ascii);
    } else {
      Utf8To16Scalar(src, end, dst, final);
      return false;
    }
    if (used == 0) {
      Utf8To16Step(src, end, dst);
      continue;
    }
    src += used;
    if (ascii) return true;
  }
}

// --- UTF-16 → UTF-8 ------------------------------------------------------------

// The eight units at `src`. Without surrogates among them, writes their UTF-8
// bytes at `dst` (and scratch values up to 28 bytes on), advances `dst` and
// returns true; otherwise returns false and writes nothing.
TOV_TARGET_AVX2 inline bool Utf16Window(const unsigned short* src, unsigned char*& dst) {
  const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
  if (_mm_testz_si128(units, _mm_set1_epi16(static_cast<short>(0xFF80)))) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(dst), _mm_packus_epi16(units, units));
    dst += 8;
    return true;
  }
  const __m128i surrogate =
      _mm_cmpeq_epi16(_mm_and_si128(units, _mm_set1_epi16(static_cast<short>(0xF800))),
                      _mm_set1_epi16(static_cast<short>(0xD800)));
  if (!_mm_testz_si128(surrogate, surrogate)) return false;
  const __m256i w = _mm256_cvtepu16_epi32(units);
  const __m256i two = _mm256_cmpgt_epi32(w, _mm256_set1_epi32(0x7F));
  const __m256i three = _mm256_cmpgt_epi32(w, _mm256_set1_epi32(0x7FF));
  const __m256i mark = _mm256_set1_epi32(0x80);
  const __m256i low6 = _mm256_or_si256(_mm256_and_si256(w, _mm256_set1_epi32(0x3F)), mark);
  const __m256i mid6 =
      _mm256_or_si256(_mm256_and_si256(_mm256_srli_epi32(w, 6), _mm256_set1_epi32(0x3F)), mark);
  const __m256i w2 =
      _mm256_or_si256(_mm256_or_si256(_mm256_srli_epi32(w, 6), _mm256_set1_epi32(0xC0)),
                      _mm256_slli_epi32(low6, 8));
  const __m256i w3 = _mm256_or_si256(
      _mm256_or_si256(_mm256_or_si256(_mm256_srli_epi32(w, 12), _mm256_set1_epi32(0xE0)),
                      _mm256_slli_epi32(mid6, 8)),
      _mm256_slli_epi32(low6, 16));
  const __m256i v = _mm256_blendv_epi8(_mm256_blendv_epi8(w, w2, two), w3, three);
  const unsigned m2 = static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(two)));
  const unsigned m3 = static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(three)));
  const BytePacking& low = kBytePackings[(m2 & 0xFu) | ((m3 & 0xFu) << 4)];
  const BytePacking& high = kBytePackings[(m2 >> 4) | ((m3 >> 4) << 4)];
  _mm_storeu_si128(reinterpret_cast<__m128i*>(dst),
                   _mm_shuffle_epi8(_mm256_castsi256_si128(v),
                                    _mm_load_si128(reinterpret_cast<const __m128i*>(low.shuffle))));
  dst += low.count;
  _mm_storeu_si128(
      reinterpret_cast<__m128i*>(dst),
      _mm_shuffle_epi8(_mm256_extracti128_si256(v, 1),
                       _mm_load_si128(reinterpret_cast<const __m128i*>(high.shuffle))));
  dst += high.count;
  return true;
}

// Text that is not all ASCII: windows of eight units, the scalar steps over
// the next eight where a window holds a surrogate, the scalar kernel for the
// last seven units.
TOV_TARGET_AVX2 inline void Utf16WindowOrSteps(const unsigned short*& src,
                                               const unsigned short* end,
                                               const unsigned short* limit, unsigned char*& dst,
                                               bool final) {
  if (end - src < 8) {
    Utf16To8Scalar(src, end, dst, final);
    return;
  }
  if (Utf16Window(src, dst)) {
    src += 8;
    return;
  }
  const unsigned short* const resume = src + 8;
  do {
    Utf16To8Step(src, end, dst);
  } while (src < resume && src < limit);
}

// Stores the UTF-8 bytes of four units laid out one unit per 32-bit lane
// (see BytePacking) at `dst` (and scratch values up to 16 bytes on) and
// advances `dst`.
TOV_TARGET_AVX2 inline void PackBytes(unsigned char*& dst, __m128i lanes, unsigned key) {
  const BytePacking& packing = kBytePackings[key];
  _mm_storeu_si128(
      reinterpret_cast<__m128i*>(dst),
      _mm_shuffle_epi8(lanes, _mm_load_si128(reinterpret_cast<const __m128i*>(packing.shuffle))));
  dst += packing.count;
}

// The AVX-512 window: 16 units at `src`. Converts the units before the first
// surrogate among them (all 16 when there is none), writing their bytes at
// `dst` (and scratch values up to 52 bytes on), advances `dst` and returns
// how many units it took. `ascii` tells whether all 16 were ASCII.
TOV_TARGET_AVX512 inline unsigned Utf16Window16(const unsigned short* src, unsigned char*& dst,
                                                bool& ascii) {
  const __m256i units = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src));
  ascii = _mm256_test_epi16_mask(units, _mm256_set1_epi16(static_cast<short>(0xFF80))) == 0;
  if (ascii) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), _mm256_cvtepi16_epi8(units));
    dst += 16;
    return 16;
  }
  const unsigned surrogates = _mm256_cmpeq_epi16_mask(
      _mm256_and_si256(units, _mm256_set1_epi16(static_cast<short>(0xF800))),
      _mm256_set1_epi16(static_cast<short>(0xD800)));
  const unsigned count = surrogates != 0 ? static_cast<unsigned>(__builtin_ctz(surrogates)) : 16;
  if (count == 0) return 0;
  const __m512i w = _mm512_cvtepu16_epi32(units);
  const __mmask16 two = _mm512_cmpgt_epu32_mask(w, _mm512_set1_epi32(0x7F));
  const __mmask16 three = _mm512_cmpgt_epu32_mask(w, _mm512_set1_epi32(0x7FF));
  const __m512i mark = _mm512_set1_epi32(0x80);
  const __m512i low6 = _mm512_or_si512(_mm512_and_si512(w, _mm512_set1_epi32(0x3F)), mark);
  const __m512i mid6 =
      _mm512_or_si512(_mm512_and_si512(_mm512_srli_epi32(w, 6), _mm512_set1_epi32(0x3F)), mark);
  const __m512i w2 =
      _mm512_or_si512(_mm512_or_si512(_mm512_srli_epi32(w, 6), _mm512_set1_epi32(0xC0)),
                      _mm512_slli_epi32(low6, 8));
  const __m512i w3 = _mm512_or_si512(
      _mm512_or_si512(_mm512_or_si512(_mm512_srli_epi32(w, 12), _mm512_set1_epi32(0xE0)),
                      _mm512_slli_epi32(mid6, 8)),
      _mm512_slli_epi32(low6, 16));
  const __m512i v = _mm512_mask_blend_epi32(three, _mm512_mask_blend_epi32(two, w, w2), w3);
  const unsigned m2 = two;
  const unsigned m3 = three;
  unsigned char* const start = dst;
  const auto key = [&](unsigned group) {
    return ((m2 >> (4 * group)) & 0xFu) | (((m3 >> (4 * group)) & 0xFu) << 4);
  };
  PackBytes(dst, _mm512_castsi512_si128(v), key(0));
  PackBytes(dst, _mm512_extracti32x4_epi32(v, 1), key(1));
  PackBytes(dst, _mm512_extracti32x4_epi32(v, 2), key(2));
  PackBytes(dst, _mm512_extracti32x4_epi32(v, 3), key(3));
  if (count < 16) {
    // The bytes of the units before the surrogate are a prefix of those written.
    const unsigned before = (1u << count) - 1;
    dst = start + count + static_cast<unsigned>(__builtin_popcount(m2 & before)) +
          static_cast<unsigned>(__builtin_popcount(m3 & before));
  }
  return count;
}

}  // namespace

// --- AVX2 ------------------------------------------------------------------------

TOV_TARGET_AVX2 void Utf8To16Avx2(const unsigned char*& src, const unsigned char* end,
                                  unsigned short*& dst, bool final) {
  const unsigned char* const limit = StartLimit(src, end, final, 4);
  do {
    while (end - src >= 32) {
      const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src));
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst),
                          _mm256_cvtepu8_epi16(_mm256_castsi256_si128(x)));
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 16),
                          _mm256_cvtepu8_epi16(_mm256_extracti128_si256(x, 1)));
      const auto high = static_cast<unsigned>(_mm256_movemask_epi8(x));
      if (high != 0) {
        // The ASCII bytes before the first other one are done.
        const int ascii = __builtin_ctz(high);
        src += ascii;
        dst += ascii;
        break;
      }
      src += 32;
      dst += 32;
    }
  } while (Utf8Windows(src, end, limit, dst, final));
}

TOV_TARGET_AVX2 void Utf16To8Avx2(const unsigned short*& src, const unsigned short* end,
                                  unsigned char*& dst, bool final) {
  const unsigned short* const limit = StartLimit(src, end, final, 2);
  const __m256i nonAscii = _mm256_set1_epi16(static_cast<short>(0xFF80));
  while (src < limit) {
    while (end - src >= 32) {
      const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src));
      const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + 16));
      if (!_mm256_testz_si256(_mm256_or_si256(a, b), nonAscii)) break;
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst),
                          _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8));
      src += 32;
      dst += 32;
    }
    if (src >= limit) break;
    Utf16WindowOrSteps(src, end, limit, dst, final);
  }
}

// --- AVX-512 -----------------------------------------------------------------------

TOV_TARGET_AVX512 void Utf8To16Avx512(const unsigned char*& src, const unsigned char* end,
                                      unsigned short*& dst, bool final) {
  const unsigned char* const limit = StartLimit(src, end, final, 4);
  do {
    while (end - src >= 64) {
      const __m512i x = _mm512_loadu_si512(src);
      _mm512_storeu_si512(dst, _mm512_cvtepu8_epi16(_mm512_castsi512_si256(x)));
      _mm512_storeu_si512(dst + 32, _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(x, 1)));
      const std::uint64_t high = _mm512_movepi8_mask(x);
      if (high != 0) {
        const int ascii = __builtin_ctzll(high);
        src += ascii;
        dst += ascii;
        break;
      }
      src += 64;
      dst += 64;
    }
  } while (Utf8Windows32(src, end, limit, dst, final));
}

TOV_TARGET_AVX512 void Utf16To8Avx512(const unsigned short*& src, const unsigned short* end,
                                      unsigned char*& dst, bool final) {
  const unsigned short* const limit = StartLimit(src, end, final, 2);
  const __m512i nonAscii = _mm512_set1_epi16(static_cast<short>(0xFF80));
  for (;;) {
    while (end - src >= 64) {
      const __m512i a = _mm512_loadu_si512(src);
      const __m512i b = _mm512_loadu_si512(src + 32);
      if (_mm512_test_epi16_mask(_mm512_or_si512(a, b), nonAscii) != 0) break;
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst), _mm512_cvtepi16_epi8(a));
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 32), _mm512_cvtepi16_epi8(b));
      src += 64;
      dst += 64;
    }
    // Windows while they hold other units; the scalar step for a surrogate,
    // the scalar kernel for the last 15 units.
    for (;;) {
      if (src >= limit) return;
      if (end - src < 16) {
        Utf16To8Scalar(src, end, dst, final);
        return;
      }
      bool ascii = false;
      const unsigned used = Utf16Window16(src, dst, ascii);
      if (used == 0) {
        Utf16To8Step(src, end, dst);
        continue;
      }
      src += used;
      if (ascii) break;
    }
  }
}

}  // namespace basalt::utf

#endif  // __x86_64__
