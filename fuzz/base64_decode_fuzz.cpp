// Fuzzes Halyard::Decode with any UTF-16 text (the input's bytes taken as
// little-endian code units, so lone surrogates and every other unit occur).
// Checks the output size bound (also for the text repeated, which crosses the
// decoder's buffer boundaries), that re-encoding the result decodes to the same
// bytes, and that Encode of the input's raw bytes decodes back to them.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "tovfoundation/text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  UTF16String text(size / 2, 0);
  for (std::size_t i = 0; i < text.size(); ++i) {
    text[i] = static_cast<unsigned short>(data[2 * i] | (data[2 * i + 1] << 8));
  }
  const std::vector<unsigned char> bytes = Halyard::Decode(text);
  // At most three bytes per group of four kept characters, a short group included.
  if (bytes.size() > (text.size() + 3) / 4 * 3) std::abort();
  if (Halyard::Decode(Halyard::Encode(bytes)) != bytes) std::abort();

  // Repeated, the text crosses the decoder's internal buffer boundaries.
  UTF16String repeated;
  for (int i = 0; i < 6; ++i) repeated += text;
  const std::vector<unsigned char> more = Halyard::Decode(repeated);
  if (more.size() > (repeated.size() + 3) / 4 * 3) std::abort();
  if (Halyard::Decode(Halyard::Encode(more)) != more) std::abort();

  const std::vector<unsigned char> raw(data, data + size);
  if (Halyard::Decode(Halyard::Encode(raw)) != raw) std::abort();
  return 0;
}
