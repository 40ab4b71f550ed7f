// Internal parts of basalt's UTF conversions: the conversion kernels of each
// instruction-set level and the one step both directions fall back to.
//
// UTF8to16 and UTF16to8 cut their input into pieces, let the kernel of the
// process's level (tovimpl::platform::TextSimdLevel) convert each piece into a
// buffer on the stack, and append the buffer to the result. The scalar kernel
// is the reference: every other kernel produces the same code units or bytes
// for every input, invalid sequences included. Tests and benchmarks reach each
// kernel set through KernelsFor and the *Into entry points.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "basalt/strings.h"
#include "platform/cpu.h"

namespace basalt::utf {

inline constexpr unsigned short kReplacement = 0xFFFD;

// A kernel converts from `src` towards `end`, writing at `dst`, and leaves
// both pointers after what it did. With `final` it converts everything; without
// it, it stops before a sequence that might continue past `end` (the last three
// bytes of UTF-8, the last unit of UTF-16), which the next piece starts with.
// The destination holds at least (end - src) code units (UTF-8 → UTF-16) or
// 3 * (end - src) bytes (UTF-16 → UTF-8), plus kKernelSlack; a kernel may
// write scratch values into the slack, never beyond it.
inline constexpr std::size_t kKernelSlack = 64;
using Utf8To16Kernel = void (*)(const unsigned char*& src, const unsigned char* end,
                                unsigned short*& dst, bool final);
using Utf16To8Kernel = void (*)(const unsigned short*& src, const unsigned short* end,
                                unsigned char*& dst, bool final);

// Texts shorter than these take the scalar loop straight into the result
// whatever the level: below them a vector kernel's set-up costs more than it
// saves.
inline constexpr std::size_t kShortBytes = 64;
inline constexpr std::size_t kShortUnits = 48;

struct Kernels {
  Utf8To16Kernel toUtf16;
  Utf16To8Kernel toUtf8;
};

// The kernels of one level. Only call those the processor supports
// (tovimpl::platform::ProcessorSimdLevel() at or above the level).
const Kernels& KernelsFor(tovimpl::platform::SimdLevel level);

// UTF8to16 and UTF16to8 with the given kernels, into `out` (its content
// replaced, its capacity reused).
void UTF8to16Into(const Kernels& kernels, const char* text, std::size_t length, UTF16String& out);
void UTF16to8Into(const Kernels& kernels, const unsigned short* text, std::size_t length,
                  UTF8String& out);

// The level kernels, defined in their own files.
void Utf8To16Scalar(const unsigned char*& src, const unsigned char* end, unsigned short*& dst,
                    bool final);
void Utf16To8Scalar(const unsigned short*& src, const unsigned short* end, unsigned char*& dst,
                    bool final);
void Utf8To16Avx2(const unsigned char*& src, const unsigned char* end, unsigned short*& dst,
                  bool final);
void Utf16To8Avx2(const unsigned short*& src, const unsigned short* end, unsigned char*& dst,
                  bool final);
void Utf8To16Avx512(const unsigned char*& src, const unsigned char* end, unsigned short*& dst,
                    bool final);
void Utf16To8Avx512(const unsigned short*& src, const unsigned short* end, unsigned char*& dst,
                    bool final);

inline bool IsContinuation(unsigned char byte) { return (byte & 0xC0u) == 0x80u; }

// Converts the one character that starts at `src` (src < end), or the maximal
// ill-formed subsequence there into one U+FFFD. Always inlined: it is the
// scalar kernel's loop body.
[[gnu::always_inline]] inline void Utf8To16Step(const unsigned char*& src, const unsigned char* end,
                                                unsigned short*& dst) {
  const unsigned char lead = *src;
  if (lead < 0x80) {
    *dst++ = lead;
    ++src;
    return;
  }
  const std::size_t avail = static_cast<std::size_t>(end - src);
  if (lead >= 0xC2 && lead <= 0xDF) {
    if (avail >= 2 && IsContinuation(src[1])) {
      *dst++ = static_cast<unsigned short>(((lead & 0x1Fu) << 6) | (src[1] & 0x3Fu));
      src += 2;
    } else {
      *dst++ = kReplacement;
      src += 1;
    }
    return;
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
    return;
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
    return;
  }
  // 0x80–0xC1 and 0xF5–0xFF never start a sequence.
  *dst++ = kReplacement;
  src += 1;
}

// Converts the code unit at `src` (src < end), with the next one when the two
// are a surrogate pair; an unpaired surrogate becomes U+FFFD.
[[gnu::always_inline]] inline void Utf16To8Step(const unsigned short*& src,
                                                const unsigned short* end, unsigned char*& dst) {
  std::uint32_t cp = *src++;
  if (cp < 0x80) {
    *dst++ = static_cast<unsigned char>(cp);
    return;
  }
  if (cp < 0x800) {
    *dst++ = static_cast<unsigned char>(0xC0u | (cp >> 6));
    *dst++ = static_cast<unsigned char>(0x80u | (cp & 0x3Fu));
    return;
  }
  if (cp >= 0xD800 && cp <= 0xDFFF) {
    if (cp <= 0xDBFF && src < end && *src >= 0xDC00 && *src <= 0xDFFF) {
      cp = 0x10000u + ((cp - 0xD800u) << 10) + (*src - 0xDC00u);
      ++src;
      *dst++ = static_cast<unsigned char>(0xF0u | (cp >> 18));
      *dst++ = static_cast<unsigned char>(0x80u | ((cp >> 12) & 0x3Fu));
      *dst++ = static_cast<unsigned char>(0x80u | ((cp >> 6) & 0x3Fu));
      *dst++ = static_cast<unsigned char>(0x80u | (cp & 0x3Fu));
      return;
    }
    cp = kReplacement;
  }
  *dst++ = static_cast<unsigned char>(0xE0u | (cp >> 12));
  *dst++ = static_cast<unsigned char>(0x80u | ((cp >> 6) & 0x3Fu));
  *dst++ = static_cast<unsigned char>(0x80u | (cp & 0x3Fu));
}

// Where a kernel may start a character: everywhere before `end` for the final
// piece, else only where the longest sequence still fits.
template <typename Unit>
inline const Unit* StartLimit(const Unit* src, const Unit* end, bool final,
                              std::ptrdiff_t longest) {
  if (final) return end;
  return end - src >= longest ? end - (longest - 1) : src;
}

// The scalar kernels' loops, inlined where short texts are converted.
[[gnu::always_inline]] inline void Utf8To16Loop(const unsigned char*& src, const unsigned char* end,
                                                unsigned short*& dst, bool final) {
  const unsigned char* const limit = StartLimit(src, end, final, 4);
  while (src < limit) {
    // ASCII runs, eight bytes at a time.
    while (end - src >= 8) {
      std::uint64_t block;
      std::memcpy(&block, src, 8);
      if ((block & 0x8080808080808080ull) != 0) break;
      for (int i = 0; i < 8; ++i) dst[i] = src[i];
      dst += 8;
      src += 8;
    }
    if (src >= limit) break;
    Utf8To16Step(src, end, dst);
  }
}

[[gnu::always_inline]] inline void Utf16To8Loop(const unsigned short*& src,
                                                const unsigned short* end, unsigned char*& dst,
                                                bool final) {
  const unsigned short* const limit = StartLimit(src, end, final, 2);
  while (src < limit) {
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
    if (src >= limit) break;
    Utf16To8Step(src, end, dst);
  }
}

}  // namespace basalt::utf
