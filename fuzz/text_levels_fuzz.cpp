// Fuzzes the UTF conversions' kernel levels against each other: the input's
// bytes as UTF-8 (UTF8to16), and as little-endian UTF-16 units (UTF16to8),
// whole and from each of the first three offsets, through every level the
// processor runs (platform/cpu.h). Any difference from the scalar kernels'
// output aborts. The input repeated crosses the conversions' pieces.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "basalt/utf_internal.h"
#include "platform/cpu.h"

namespace {

using tovimpl::platform::SimdLevel;

void CheckUtf8(const char* text, std::size_t length) {
  UTF16String expected;
  UTF16String actual;
  basalt::utf::UTF8to16Into(basalt::utf::KernelsFor(SimdLevel::kScalar), text, length, expected);
  for (SimdLevel level : {SimdLevel::kAvx2, SimdLevel::kAvx512}) {
    if (tovimpl::platform::ProcessorSimdLevel() < level) break;
    basalt::utf::UTF8to16Into(basalt::utf::KernelsFor(level), text, length, actual);
    if (actual != expected) std::abort();
  }
}

void CheckUtf16(const unsigned short* text, std::size_t length) {
  UTF8String expected;
  UTF8String actual;
  basalt::utf::UTF16to8Into(basalt::utf::KernelsFor(SimdLevel::kScalar), text, length, expected);
  for (SimdLevel level : {SimdLevel::kAvx2, SimdLevel::kAvx512}) {
    if (tovimpl::platform::ProcessorSimdLevel() < level) break;
    basalt::utf::UTF16to8Into(basalt::utf::KernelsFor(level), text, length, actual);
    if (actual != expected) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  UTF16String units(size / 2, 0);
  for (std::size_t i = 0; i < units.size(); ++i) {
    units[i] = static_cast<unsigned short>(data[2 * i] | (data[2 * i + 1] << 8));
  }
  for (std::size_t offset = 0; offset < 3; ++offset) {
    if (offset <= bytes.size()) CheckUtf8(bytes.data() + offset, bytes.size() - offset);
    if (offset <= units.size()) CheckUtf16(units.data() + offset, units.size() - offset);
  }
  if (size <= 4096) {
    std::string repeated;
    UTF16String repeatedUnits;
    for (int i = 0; i < 8; ++i) {
      repeated += bytes;
      repeatedUnits += units;
    }
    CheckUtf8(repeated.data(), repeated.size());
    CheckUtf16(repeatedUnits.data(), repeatedUnits.size());
  }
  return 0;
}
