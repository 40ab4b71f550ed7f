// basalt Unicode conversions and number text.
#include "basalt/utf.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <system_error>

#include "basalt/kernel_choice.h"
#include "basalt/utf_internal.h"

namespace basalt {

namespace utf {

// The scalar kernels: the reference every vector kernel is checked against.

void Utf8To16Scalar(const unsigned char*& src, const unsigned char* end, unsigned short*& dst,
                    bool final) {
  Utf8To16Loop(src, end, dst, final);
}

void Utf16To8Scalar(const unsigned short*& src, const unsigned short* end, unsigned char*& dst,
                    bool final) {
  Utf16To8Loop(src, end, dst, final);
}

constexpr Kernels kScalarKernels{Utf8To16Scalar, Utf16To8Scalar};

const Kernels& KernelsFor(tovimpl::platform::SimdLevel level) {
#if defined(__x86_64__)
  static constexpr Kernels kAvx2{Utf8To16Avx2, Utf16To8Avx2};
  static constexpr Kernels kAvx512{Utf8To16Avx512, Utf16To8Avx512};
  return ChooseKernels(level, kScalarKernels, kAvx2, kAvx512);
#else
  (void)level;
  return kScalarKernels;
#endif
}

namespace {

// Input taken per piece: the piece's output lands in a buffer on the stack
// (in the first-level cache) and is appended to the result from there, so the
// result is allocated once, at its final size for texts of up to one piece,
// and its memory is written once.
constexpr std::size_t kPieceBytes = 4096;  // UTF-8 → UTF-16
constexpr std::size_t kPieceUnits = 2048;  // UTF-16 → UTF-8

const Kernels& ActiveKernels() {
  static const Kernels& kernels = KernelsFor(tovimpl::platform::TextSimdLevel());
  return kernels;
}

}  // namespace

namespace {

// Texts longer than the short ones: piece by piece through a buffer on the
// stack (kept out of the short path's frame).
[[gnu::noinline]] void PiecesUtf8To16(const Kernels& kernels, const unsigned char* src,
                                      const unsigned char* end, UTF16String& out) {
  unsigned short buffer[kPieceBytes + kKernelSlack];
  // A UTF-8 text never needs more code units than it has bytes.
  const auto length = static_cast<std::size_t>(end - src);
  if (length > kPieceBytes) out.reserve(length);
  while (src < end) {
    const bool final = static_cast<std::size_t>(end - src) <= kPieceBytes;
    const unsigned char* const pieceEnd = final ? end : src + kPieceBytes;
    unsigned short* dst = buffer;
    kernels.toUtf16(src, pieceEnd, dst, final);
    out.append(buffer, static_cast<std::size_t>(dst - buffer));
  }
}

[[gnu::noinline]] void PiecesUtf16To8(const Kernels& kernels, const unsigned short* src,
                                      const unsigned short* end, UTF8String& out) {
  unsigned char buffer[3 * kPieceUnits + kKernelSlack];
  // At most three bytes per code unit (a surrogate pair gives four for two).
  const auto length = static_cast<std::size_t>(end - src);
  if (length > kPieceUnits) out.reserve(3 * length);
  while (src < end) {
    const bool final = static_cast<std::size_t>(end - src) <= kPieceUnits;
    const unsigned short* const pieceEnd = final ? end : src + kPieceUnits;
    unsigned char* dst = buffer;
    kernels.toUtf8(src, pieceEnd, dst, final);
    out.append(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(dst - buffer));
  }
}

// Short texts: the scalar loop straight into the result, which it never
// writes beyond.
[[gnu::always_inline]] inline void ShortUtf8To16(const char* text, std::size_t length,
                                                 UTF16String& out) {
  const auto* src = reinterpret_cast<const unsigned char*>(text);
  out.resize(length);
  unsigned short* dst = out.data();
  Utf8To16Loop(src, src + length, dst, true);
  out.resize(static_cast<std::size_t>(dst - out.data()));
}

[[gnu::always_inline]] inline void ShortUtf16To8(const unsigned short* text, std::size_t length,
                                                 UTF8String& out) {
  out.resize(3 * length);
  auto* dst = reinterpret_cast<unsigned char*>(out.data());
  Utf16To8Loop(text, text + length, dst, true);
  out.resize(static_cast<std::size_t>(dst - reinterpret_cast<unsigned char*>(out.data())));
}

}  // namespace

void UTF8to16Into(const Kernels& kernels, const char* text, std::size_t length, UTF16String& out) {
  out.clear();
  if (length == 0) return;
  if (length < kShortBytes) {
    ShortUtf8To16(text, length, out);
    return;
  }
  const auto* src = reinterpret_cast<const unsigned char*>(text);
  PiecesUtf8To16(kernels, src, src + length, out);
}

void UTF16to8Into(const Kernels& kernels, const unsigned short* text, std::size_t length,
                  UTF8String& out) {
  out.clear();
  if (length == 0) return;
  if (length < kShortUnits) {
    ShortUtf16To8(text, length, out);
    return;
  }
  PiecesUtf16To8(kernels, text, text + length, out);
}

}  // namespace utf

// Short texts never ask for the kernel level (their path ignores the kernels).
UTF16String UTF8to16(const char* text, std::size_t length) {
  UTF16String out;
  utf::UTF8to16Into(length < utf::kShortBytes ? utf::kScalarKernels : utf::ActiveKernels(), text,
                    length, out);
  return out;
}

UTF16String UTF8to16(std::string_view text) {
  UTF16String out;
  utf::UTF8to16Into(text.size() < utf::kShortBytes ? utf::kScalarKernels : utf::ActiveKernels(),
                    text.data(), text.size(), out);
  return out;
}

UTF8String UTF16to8(const unsigned short* text, std::size_t length) {
  UTF8String out;
  utf::UTF16to8Into(length < utf::kShortUnits ? utf::kScalarKernels : utf::ActiveKernels(), text,
                    length, out);
  return out;
}

UTF8String UTF16to8(UTF16StringView text) {
  UTF8String out;
  utf::UTF16to8Into(text.size() < utf::kShortUnits ? utf::kScalarKernels : utf::ActiveKernels(),
                    text.data(), text.size(), out);
  return out;
}

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
