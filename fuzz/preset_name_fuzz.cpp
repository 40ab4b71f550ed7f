// Fuzzes VGetFormatName, the chunked reader of the writer format name in an
// encoder preset, over arbitrary file contents. The first input byte picks the
// caller's capacity (1 to 256 units, or 300 for the largest names); the rest
// is the file. Checks that a name is only reported when it fits, that nothing
// is written past capacity + 1 units, and that the name ends in a zero.
#include <stdio.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "tovfoundation/writers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const std::uint32_t capacity = data[0] == 0xFF ? 300u : data[0] + 1u;
  std::FILE* file = ::fmemopen(const_cast<std::uint8_t*>(data + 1), size - 1, "rb");
  if (file == nullptr) return 0;

  constexpr unsigned short kCanary = 0xCAFE;
  std::array<unsigned short, 302> name;
  name.fill(kCanary);
  const std::uint32_t status = Halyard::VGetFormatName(file, name.data(), capacity);
  std::fclose(file);

  for (std::size_t i = capacity + 1; i < name.size(); ++i) {
    if (name[i] != kCanary) std::abort();  // written past capacity + 1
  }
  if (status == 0) {
    std::size_t length = 0;
    while (length <= capacity && name[length] != 0) ++length;
    if (length > capacity || length >= Halyard::kMaxFormatNameUnits) std::abort();
  } else {
    if (status != TOV::kErrNotFound && status != TOV::kErrCreateFailed) std::abort();
    if (name[0] != kCanary) std::abort();  // nothing written on failure
  }
  return 0;
}
