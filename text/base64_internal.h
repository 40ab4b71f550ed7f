// Internal parts of Base64: the kernels of each instruction-set level.
//
// Encode and Decode keep the line layout and the lenient decoding in one place
// (text/base64.cpp) and hand the bulk of the work to two kernels: whole lines
// of the encoder's output, and the clean stretches of a decoder's input. The
// scalar kernels are the reference; every other kernel gives the same result
// for every input. Tests and benchmarks reach each set through KernelsFor and
// the *Into entry points.
#pragma once

#include <cstddef>
#include <vector>

#include "basalt/strings.h"
#include "platform/cpu.h"

namespace tovimpl::text::base64 {

// Encodes `lines` whole lines: each 57 bytes from `src` become 76 characters
// and "\r\n", 78 code units at `dst`. Returns the end of what it wrote; reads
// and writes nothing beyond those lines.
using EncodeLinesKernel = unsigned short* (*)(const unsigned char* src, std::size_t lines,
                                              unsigned short* dst);

// Decodes the clean stretch at `src`: groups of four alphabet characters, and
// "\r\n" pairs between groups. Stops before the first group that holds
// anything else (a pad, a line break elsewhere, any other character), when
// fewer than four units are left, or once `dst` has reached `limit`; leaves
// `src` and `dst` after what it did. May write scratch bytes up to
// kDecodeSlack past `limit`.
inline constexpr std::size_t kDecodeSlack = 128;
using DecodeCleanKernel = void (*)(const unsigned short*& src, const unsigned short* end,
                                   unsigned char*& dst, const unsigned char* limit);

struct Kernels {
  EncodeLinesKernel encodeLines;
  DecodeCleanKernel decodeClean;
};

// The kernels of one level. Only call those the processor supports
// (tovimpl::platform::ProcessorSimdLevel() at or above the level).
const Kernels& KernelsFor(tovimpl::platform::SimdLevel level);

// Halyard::Encode and Halyard::Decode with the given kernels, into `out` (its
// content replaced, its capacity reused).
void EncodeInto(const Kernels& kernels, const unsigned char* bytes, std::size_t n,
                UTF16String& out);
void DecodeInto(const Kernels& kernels, const unsigned short* text, std::size_t length,
                std::vector<unsigned char>& out);

// The level kernels.
unsigned short* EncodeLinesScalar(const unsigned char* src, std::size_t lines, unsigned short* dst);
void DecodeCleanScalar(const unsigned short*& src, const unsigned short* end, unsigned char*& dst,
                       const unsigned char* limit);
unsigned short* EncodeLinesAvx2(const unsigned char* src, std::size_t lines, unsigned short* dst);
void DecodeCleanAvx2(const unsigned short*& src, const unsigned short* end, unsigned char*& dst,
                     const unsigned char* limit);
unsigned short* EncodeLinesAvx512(const unsigned char* src, std::size_t lines, unsigned short* dst);
void DecodeCleanAvx512(const unsigned short*& src, const unsigned short* end, unsigned char*& dst,
                       const unsigned char* limit);

}  // namespace tovimpl::text::base64
