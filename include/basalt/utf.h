// basalt Unicode conversions between UTF-8 and UTF-16.
//
//   UTF16String wide = basalt::UTF8to16("Grüße");      // 5 code units
//   UTF8String narrow = basalt::UTF16to8(wide);         // the same 7 bytes back
//
// Valid text converts losslessly in both directions. Invalid input never fails:
// each maximal ill-formed subsequence of UTF-8 (overlong forms, encoded
// surrogates, values above U+10FFFF, truncated sequences, stray continuation
// bytes) and each unpaired UTF-16 surrogate becomes one U+FFFD REPLACEMENT
// CHARACTER. NUL code units are ordinary text: the length given is what counts.
// All functions are reentrant.
#pragma once

#include <cstddef>

#include "basalt/strings.h"
#include "tovfoundation/export.h"

namespace basalt {

// UTF-8 → UTF-16.
TOV_API UTF16String UTF8to16(const char* text, std::size_t length);
// UTF-8 → UTF-16, the whole view.
TOV_API UTF16String UTF8to16(std::string_view text);

// UTF-16 → UTF-8.
TOV_API UTF8String UTF16to8(const unsigned short* text, std::size_t length);
// UTF-16 → UTF-8, the whole view.
TOV_API UTF8String UTF16to8(UTF16StringView text);

// Bytes → code units one for one (each byte zero-extended), over exactly
// `length` bytes. Meant for ASCII; bytes 0x80–0xFF become U+0080–U+00FF.
TOV_API UTF16String AsciiToUTF16(const char* text, std::size_t length);

// Prints a double in fixed notation, rounded to at most `maxFractionDigits`
// fraction digits (round-half-even on the exact binary value), then removes
// trailing zeros and a bare decimal point: (2.5, 1, 3) ⇒ "2.5", (2.0, 1, 3)
// ⇒ "2", (0.12345, 1, 2) ⇒ "0.12", (-0.001, 1, 2) ⇒ "0". The integer part is
// zero-padded to at least `minIntegerDigits` digits. `flags` and `reserved` are
// accepted for the callers that pass them and change nothing. Never uses a
// locale: no digit grouping, "." as the point. NaN ⇒ "nan", infinities ⇒ "inf",
// "-inf".
TOV_API UTF16String NumberToString(double value, unsigned minIntegerDigits,
                                   unsigned maxFractionDigits, unsigned flags = 0,
                                   unsigned reserved = 0);

}  // namespace basalt
