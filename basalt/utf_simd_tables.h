// Shuffle tables of the vector UTF kernels, built at compile time.
#pragma once

#include <array>
#include <cstdint>

namespace basalt::utf {

// For each 8-bit mask of the 16-bit lanes to keep out of eight, the byte
// shuffle that moves the kept lanes to the front in order (the rest zero), and
// how many there are.
struct LaneCompaction {
  alignas(16) std::uint8_t shuffle[16];
  std::uint8_t count;
};

constexpr std::array<LaneCompaction, 256> MakeLaneCompactions() {
  std::array<LaneCompaction, 256> table{};
  for (unsigned mask = 0; mask < 256; ++mask) {
    LaneCompaction& entry = table[mask];
    unsigned out = 0;
    for (unsigned lane = 0; lane < 8; ++lane) {
      if ((mask >> lane) & 1u) {
        entry.shuffle[out++] = static_cast<std::uint8_t>(2 * lane);
        entry.shuffle[out++] = static_cast<std::uint8_t>(2 * lane + 1);
      }
    }
    entry.count = static_cast<std::uint8_t>(out / 2);
    while (out < 16) entry.shuffle[out++] = 0x80;
  }
  return table;
}
inline constexpr std::array<LaneCompaction, 256> kLaneCompactions = MakeLaneCompactions();

// UTF-8 bytes of four code units below U+D800 or above U+DFFF, each unit's
// bytes in its own 32-bit lane (lead byte first): for a key of four bits
// "unit >= 0x80" (low nibble) and four bits "unit >= 0x800" (high nibble), the
// byte shuffle that packs the 1, 2 or 3 bytes of each lane one after the other,
// and the number of bytes.
struct BytePacking {
  alignas(16) std::uint8_t shuffle[16];
  std::uint8_t count;
};

constexpr std::array<BytePacking, 256> MakeBytePackings() {
  std::array<BytePacking, 256> table{};
  for (unsigned key = 0; key < 256; ++key) {
    BytePacking& entry = table[key];
    unsigned out = 0;
    for (unsigned lane = 0; lane < 4; ++lane) {
      const unsigned length = 1 + ((key >> lane) & 1u) + ((key >> (lane + 4)) & 1u);
      for (unsigned b = 0; b < length; ++b)
        entry.shuffle[out++] = static_cast<std::uint8_t>(4 * lane + b);
    }
    entry.count = static_cast<std::uint8_t>(out);
    while (out < 16) entry.shuffle[out++] = 0x80;
  }
  return table;
}
inline constexpr std::array<BytePacking, 256> kBytePackings = MakeBytePackings();

}  // namespace basalt::utf
