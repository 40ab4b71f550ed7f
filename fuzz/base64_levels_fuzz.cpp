// Fuzzes Base64's kernel levels against each other: the input's bytes
// encoded, and the input as little-endian UTF-16 units decoded, through every
// level the processor runs (platform/cpu.h). The first byte also chooses a
// rewrite that steers the decoder's input towards the encoder's layout (the
// units mapped into the alphabet, with CRLF where the encoder puts them), so
// the clean fast paths and their exits are reached often. Any difference from
// the scalar kernels' output aborts.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "platform/cpu.h"
#include "text/base64_internal.h"

namespace {

using tovimpl::platform::SimdLevel;
namespace b64 = tovimpl::text::base64;

void CheckEncode(const unsigned char* bytes, std::size_t n) {
  UTF16String expected;
  UTF16String actual;
  b64::EncodeInto(b64::KernelsFor(SimdLevel::kScalar), bytes, n, expected);
  for (SimdLevel level : {SimdLevel::kAvx2, SimdLevel::kAvx512}) {
    if (tovimpl::platform::ProcessorSimdLevel() < level) break;
    b64::EncodeInto(b64::KernelsFor(level), bytes, n, actual);
    if (actual != expected) std::abort();
  }
}

void CheckDecode(const UTF16String& text) {
  std::vector<unsigned char> expected;
  std::vector<unsigned char> actual;
  b64::DecodeInto(b64::KernelsFor(SimdLevel::kScalar), text.data(), text.size(), expected);
  for (SimdLevel level : {SimdLevel::kAvx2, SimdLevel::kAvx512}) {
    if (tovimpl::platform::ProcessorSimdLevel() < level) break;
    b64::DecodeInto(b64::KernelsFor(level), text.data(), text.size(), actual);
    if (actual != expected) std::abort();
  }
}

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  CheckEncode(data, size);
  if (size == 0) return 0;
  UTF16String text((size - 1) / 2, 0);
  for (std::size_t i = 0; i < text.size(); ++i) {
    text[i] = static_cast<unsigned short>(data[1 + 2 * i] | (data[2 + 2 * i] << 8));
  }
  CheckDecode(text);
  // Steered: units below 0xC000 become alphabet characters, the others keep
  // their value (a rare unexpected unit); CRLF after the first four
  // characters and then after every 76, as the encoder writes them.
  if (data[0] & 1u) {
    UTF16String steered;
    std::size_t column = 0;
    std::size_t lineLength = 4;
    for (unsigned short unit : text) {
      steered.push_back(unit < 0xC000 ? static_cast<unsigned short>(kAlphabet[unit % 64]) : unit);
      if (++column == lineLength) {
        steered.push_back(u'\r');
        steered.push_back(u'\n');
        column = 0;
        lineLength = 76;
      }
    }
    if (data[0] & 2u) steered.append(1 + (data[0] >> 7), u'=');
    CheckDecode(steered);
  }
  return 0;
}
