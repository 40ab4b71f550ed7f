// tovfoundation streams: IVWriteStream, IVWriteStream2 and CWriteStream, the
// buffered writer over a port.
#pragma once

#include <cstdint>

#include "tovfoundation/common.h"
#include "tovfoundation/streams/port.h"

namespace Halyard {

// ---------------------------------------------------------------------------
// Write stream
// ---------------------------------------------------------------------------

// A buffered writer with a current position (32-bit access). The functions
// are those of CWriteStream (see there).
class TOV_INTERFACE IVWriteStream : public IVUnknown {
 public:
  // Stores the stream position in *pos.
  virtual std::uint32_t GetPos(std::uint32_t* pos) const = 0;
  // Moves the stream position to `pos`.
  virtual std::uint32_t SetPos(std::uint32_t pos) = 0;
  // Writes one byte as given.
  virtual std::uint32_t PutBool(unsigned char value) = 0;
  // Writes one byte.
  virtual std::uint32_t PutByte(unsigned char value) = 0;
  // Writes a 16-bit value in the stream's byte order.
  virtual std::uint32_t PutShort(std::int16_t value) = 0;
  // Writes a 32-bit value in the stream's byte order.
  virtual std::uint32_t PutInt(std::int32_t value) = 0;
  // Writes a 32-bit IEEE value in the stream's byte order.
  virtual std::uint32_t PutFloat(float value) = 0;
  // Writes a 64-bit IEEE value in the stream's byte order.
  virtual std::uint32_t PutDouble(double value) = 0;
  // Writes `count` zero bytes.
  virtual std::uint32_t PutZeroPadding(std::int32_t count) = 0;
  // Writes `count` bytes of `data`.
  virtual std::uint32_t Write(std::uint32_t count, const void* data) = 0;
  // Hands the buffered bytes to the port; `flushPort` non-zero also flushes
  // the port.
  virtual std::uint32_t Flush(unsigned char flushPort) = 0;

 protected:
  // Not for deleting through this interface: use Release.
  ~IVWriteStream() = default;
};

// IVWriteStream with 64-bit positions.
class TOV_INTERFACE IVWriteStream2 : public IVWriteStream {
 public:
  // Stores the full 64-bit stream position in *pos.
  virtual std::uint32_t GetPosW(std::uint64_t* pos) const = 0;
  // Moves the stream to the 64-bit position `pos`.
  virtual std::uint32_t SetPosW(std::uint64_t pos) = 0;
  // Destroys the stream.
  virtual ~IVWriteStream2() = default;
};

namespace detail {
// The state a write stream shares with its copies.
struct WriteStreamState;
}  // namespace detail

// The buffered writer over a CPort or a CPortEx.
//
// The stream writes from `startPos` on through a buffer of `bufferSize` bytes.
// Multi-byte values are stored as they lie with kHaldLittleEndian (1) and
// reversed (most significant byte first) with any other ordering.
//
// Caller contracts:
//   - `bufferSize` must not be 0.
//   - Copies share one state, as with CReadStream: the first destroyed or
//     released destroys it. Release() deletes the object it is called on.
//   - The port must outlive the stream unless the stream owns it.
//
// Deliberate behaviours:
//   - Port write failures are not reported: Write and Flush(0) return 0, the
//     bytes count as written and the position advances. Only the port's own
//     Flush() status surfaces, through Flush(1), SetPos and SetPosW.
//   - Flush(1) on an empty buffer does not reach the port and returns 0.
//   - The count starts at 0: AddRef returns 1; Release destroys the stream
//     whatever the count and returns the decremented count, so Release without
//     AddRef returns 0xFFFFFFFF.
//   - The destructor calls Flush(0): buffered bytes reach the port, but the
//     port's Flush() is only reached through Flush(1) or SetPos.
//   - A write straight to a 32-bit port (a remainder larger than half the
//     buffer) goes to the position truncated to 32 bits; SetPos beyond the
//     port's end is not checked.
//   - PutBool writes the byte as given (PutBool(7) writes 7).
//   - QueryInterface answers TOV::kErrNoInterface.
class TOV_API CWriteStream : public IVWriteStream2 {
 public:
  // Uses the port without owning it; `closePort` non-zero: the destructor
  // calls its Close().
  CWriteStream(CPort& port, HaldByteOrdering order, std::uint32_t bufferSize,
               std::uint32_t startPos, unsigned char closePort);
  // The same over a 64-bit port.
  CWriteStream(CPortEx& port, HaldByteOrdering order, std::uint32_t bufferSize,
               std::uint32_t startPos, unsigned char closePort);
  // Takes ownership of the port (non-null): the destructor closes and deletes it.
  CWriteStream(CPort* port, HaldByteOrdering order, std::uint32_t bufferSize,
               std::uint32_t startPos, unsigned char closePort);
  // The same over a 64-bit port it owns.
  CWriteStream(CPortEx* port, HaldByteOrdering order, std::uint32_t bufferSize,
               std::uint32_t startPos, unsigned char closePort);
  // Shares the other's state (see the caller contracts above).
  CWriteStream(const CWriteStream& other) noexcept;
  // Shares the other's state (see the caller contracts above).
  CWriteStream& operator=(const CWriteStream& other) noexcept;
  // Flush(0), then frees the buffer, closes the port when asked, deletes an
  // owned port.
  ~CWriteStream() override;

  // Returns TOV::kErrNoInterface; `out` is not touched.
  std::uint32_t QueryInterface(const _VGUID& id, void** out) override;
  // Count + 1; returns the new count.
  std::uint32_t AddRef() override;
  // Count − 1, then `delete this`; returns the decremented count.
  std::uint32_t Release() override;

  // The stream position truncated to 32 bits. Null `pos`: TOV::kErrInvalidArgument.
  std::uint32_t GetPos(std::uint32_t* pos) const override;
  // To the current position: 0, the buffer kept. Elsewhere: Flush(1) first
  // (its non-zero status is returned), then the position moves.
  std::uint32_t SetPos(std::uint32_t pos) override;
  // Writes the byte as given (PutBool(7) writes 7).
  std::uint32_t PutBool(unsigned char value) override;
  // Writes one byte.
  std::uint32_t PutByte(unsigned char value) override;
  // 16 bits in the stream's byte order.
  std::uint32_t PutShort(std::int16_t value) override;
  // 32 bits in the stream's byte order.
  std::uint32_t PutInt(std::int32_t value) override;
  // A 32-bit IEEE value in the stream's byte order.
  std::uint32_t PutFloat(float value) override;
  // A 64-bit IEEE value in the stream's byte order.
  std::uint32_t PutDouble(double value) override;
  // `count` zero bytes; nothing for count <= 0. Returns the last PutByte's status.
  std::uint32_t PutZeroPadding(std::int32_t count) override;
  // Buffers `count` bytes of `data`. A write that fills the buffer exactly does
  // not flush it; when it overflows, the buffer is flushed and a remainder
  // larger than half the buffer goes straight to the port.
  std::uint32_t Write(std::uint32_t count, const void* data) override;
  // Writes the buffered bytes to the port; with `flushPort` non-zero (and only
  // when there were bytes) then calls the port's Flush() and returns its status.
  std::uint32_t Flush(unsigned char flushPort) override;
  // The full stream position. Null `pos`: TOV::kErrInvalidArgument.
  std::uint32_t GetPosW(std::uint64_t* pos) const override;
  // As SetPos, with a 64-bit position.
  std::uint32_t SetPosW(std::uint64_t pos) override;

  // 8 bytes.
  std::uint32_t PutInt64(std::int64_t value);
  // True when multi-byte values are reversed (ordering other than 1).
  bool FlipBytes() const;

 private:
  detail::WriteStreamState* mState;
};

}  // namespace Halyard
