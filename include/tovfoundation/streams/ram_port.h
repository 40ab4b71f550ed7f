// tovfoundation streams: CStaticRamFilePort, a port over a caller's memory
// block.
#pragma once

#include <cstdint>

#include "tovfoundation/common.h"
#include "tovfoundation/streams/port.h"

namespace Halyard {

// A port over a caller's memory block of `size` bytes. The block is not owned
// and must outlive the port.
//
// Caller contract: Read and Write check neither the position against the size
// nor the access mode (a read-only RAM port accepts writes): a transfer outside
// the block is undefined behaviour. The streams bound their accesses when their
// callers bound reads by GetSize. Transfers are overlap-safe moves and return 0.
// Size() is the construction size; Size(newSize) does nothing and returns 0;
// Close() returns 0.
class TOV_API CStaticRamFilePort : public CPort {
 public:
  // A port over the `size` bytes at `base`; `ownsResource` is stored and
  // ignored (the block is never freed by the port).
  CStaticRamFilePort(void* base, std::uint32_t size, AccessMode mode, unsigned char ownsResource);
  // Refers to the same block.
  CStaticRamFilePort(const CStaticRamFilePort& other);
  // Refers to the other port's block.
  CStaticRamFilePort& operator=(const CStaticRamFilePort& other);
  // Leaves the block alone.
  ~CStaticRamFilePort() override;

  // Does nothing; returns 0.
  std::uint32_t Size(std::uint32_t newSize) override;
  // The construction size.
  std::uint32_t Size() const override;
  // Returns 0.
  std::uint32_t Close() override;
  // Copies `count` bytes at `pos` out of the block; 0. Unchecked (see above).
  std::uint32_t Read(std::uint32_t pos, std::int32_t count, void* buffer) const override;
  // Copies `count` bytes into the block at `pos`; 0. Unchecked (see above).
  std::uint32_t Write(std::uint32_t pos, std::int32_t count, const void* buffer) override;

 private:
  void* mBase;
  std::uint32_t mSize;
};

}  // namespace Halyard
