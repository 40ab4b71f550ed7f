// tovfoundation streams: IVReadStream and CReadStream, the buffered reader
// over a port.
#pragma once

#include <cstdint>

#include "tovfoundation/common.h"
#include "tovfoundation/streams/port.h"

namespace Halyard {

// Read stream
// ---------------------------------------------------------------------------

// A buffered reader with a current position. Positions and sizes are 32-bit.
// The functions are those of CReadStream (see there).
class TOV_INTERFACE IVReadStream : public IVUnknown {
 public:
  // Stores the stream position in *pos.
  virtual std::uint32_t GetPos(std::uint32_t* pos) const = 0;
  // Moves the stream position to `pos`.
  virtual std::uint32_t SetPos(std::uint32_t pos) = 0;
  // Reads one byte as a flag: 1 for non-zero, else 0.
  virtual std::uint32_t ReadBool(unsigned char* value) const = 0;
  // Reads one byte.
  virtual std::uint32_t ReadByte(unsigned char* value) const = 0;
  // Reads a 16-bit value in the stream's byte order.
  virtual std::uint32_t ReadShort(std::int16_t* value) const = 0;
  // Reads a 32-bit value in the stream's byte order.
  virtual std::uint32_t ReadInt(std::int32_t* value) const = 0;
  // Reads a 32-bit IEEE value in the stream's byte order.
  virtual std::uint32_t ReadFloat(float* value) const = 0;
  // Reads a 64-bit IEEE value in the stream's byte order.
  virtual std::uint32_t ReadDouble(double* value) const = 0;
  // Stores the size of the data behind the stream in *size.
  virtual std::uint32_t GetSize(std::uint32_t* size) const = 0;
  // Copies `count` bytes into `buffer`.
  virtual std::uint32_t Read(std::uint32_t count, const void* buffer) const = 0;
  // Advances the position by `count` bytes.
  virtual std::uint32_t Skip(std::uint32_t count) = 0;
  // Steps back over the last byte read, replacing it with `value`.
  virtual std::uint32_t PutBackByte(unsigned char value) = 0;
  // The next byte, without consuming it.
  virtual std::uint32_t PeekByte(unsigned char* value) = 0;
  // Destroys the stream.
  virtual ~IVReadStream() = default;
};

namespace detail {
struct ReadStreamState;
struct WriteStreamState;
}  // namespace detail

// The buffered reader over a CPort.
//
// The stream reads from `startPos` on, through a buffer of `bufferSize` bytes;
// it asks the port for its size once, at construction (the cached size).
// Multi-byte values are taken as they lie with kHaldLittleEndian (1) and
// reversed with any other ordering.
//
// Caller contracts:
//   - Bound reads by GetSize: a read that runs past the end of the port asks
//     the port for the whole remaining request, a random-access port's failure
//     is ignored, and the read reports success with undefined bytes beyond the
//     end. A RAM port checks nothing, so such a read over a RAM port reads
//     outside its block: undefined behaviour.
//   - `bufferSize` must not be 0.
//   - Copies (copy construction and assignment) share one state: the first of
//     them that is destroyed, or released, destroys it; the others must not be
//     used or destroyed afterwards. Release() deletes the object it is called
//     on, so only a stream made with new may be released, and then not destroyed.
//   - The port must outlive the stream unless the stream owns it.
//
// Deliberate behaviours:
//   - Release destroys the stream at once, whatever count remains; AddRef does
//     not keep a stream alive. The count starts at 1: AddRef returns 2, the next
//     Release returns 1 and destroys.
//   - GetSize asks the port anew; SetPos checks against the size cached at
//     construction.
//   - Skip beyond the end reports success (it ignores SetPos's status).
//   - ReadBool and PeekByte store 0 after a failed read; the other typed reads
//     leave their output unchanged then.
//   - ReadInt(std::int64_t*) stores only with kHaldLittleEndian; with any other
//     ordering it consumes 8 bytes, leaves the output unchanged and returns 0.
//   - PutBackByte replaces the byte before the cursor with the given one; at the
//     start of the buffer (right after construction, after SetPos outside the
//     buffer) it does nothing. It always returns 0.
//   - QueryInterface answers TOV::kErrNoInterface for every identifier.
class TOV_API CReadStream : public IVReadStream {
 public:
  // Uses `port` without owning it. With `closePort` non-zero the destructor
  // calls port.Close().
  CReadStream(CPort& port, HaldByteOrdering order, std::uint32_t bufferSize, std::uint32_t startPos,
              unsigned char closePort);
  // Takes ownership of `port` (non-null): the destructor closes and deletes it.
  CReadStream(CPort* port, HaldByteOrdering order, std::uint32_t bufferSize, std::uint32_t startPos,
              unsigned char closePort);
  // Shares the other's state (see the caller contracts above).
  CReadStream(const CReadStream& other) noexcept;
  // Shares the other's state (see the caller contracts above).
  CReadStream& operator=(const CReadStream& other) noexcept;
  // Frees the buffer, closes the port when asked, deletes an owned port.
  ~CReadStream() override;

  // Returns TOV::kErrNoInterface; `out` is not touched.
  std::uint32_t QueryInterface(const _VGUID& id, void** out) override;
  // Count + 1; returns the new count.
  std::uint32_t AddRef() override;
  // Count − 1, then `delete this`; returns the decremented count.
  std::uint32_t Release() override;

  // The stream position. Null `pos`: TOV::kErrInvalidPointer.
  std::uint32_t GetPos(std::uint32_t* pos) const override;
  // Moves the position. Within the buffered data (up to and including its end)
  // the buffer is kept. Otherwise, on a random-access port: a position beyond
  // the cached size gives kErrReadFailed, any other empties the buffer; on a
  // sequential port: a position behind the data fetched gives kErrSeekBackward,
  // one ahead is reached by reading forward (a port status is returned).
  std::uint32_t SetPos(std::uint32_t pos) override;
  // One byte; stores 1 for non-zero, else 0 (also after a failed read).
  std::uint32_t ReadBool(unsigned char* value) const override;
  // One byte; the output is unchanged after a failed read.
  std::uint32_t ReadByte(unsigned char* value) const override;
  // 16 bits in the stream's byte order; unchanged output after a failed read.
  std::uint32_t ReadShort(std::int16_t* value) const override;
  // 32 bits in the stream's byte order; unchanged output after a failed read.
  std::uint32_t ReadInt(std::int32_t* value) const override;
  // A 32-bit IEEE value in the stream's byte order; unchanged output after
  // a failed read.
  std::uint32_t ReadFloat(float* value) const override;
  // A 64-bit IEEE value in the stream's byte order; unchanged output after
  // a failed read.
  std::uint32_t ReadDouble(double* value) const override;
  // Stores the port's Size() as it is now. Always 0.
  std::uint32_t GetSize(std::uint32_t* size) const override;
  // Copies `count` bytes to `buffer` (writable memory of `count` bytes, despite
  // the const). A request larger than half the buffer is read straight from
  // the port, and the buffer is then refilled as far as the port's data
  // reaches (read-ahead). Returns a port status from a direct read,
  // kErrStreamState when the stream is in a broken state, or kErrReadFailed
  // when a sequential port delivers nothing for a refill the request needs (a
  // sequential port that reports more bytes than asked counts as delivering
  // what was asked).
  std::uint32_t Read(std::uint32_t count, const void* buffer) const override;
  // Advances the position by `count`; returns 0 even when the target is beyond
  // the end.
  std::uint32_t Skip(std::uint32_t count) override;
  // Replaces the byte before the cursor with `value` and steps back over it;
  // nothing at the start of the buffer. Returns 0.
  std::uint32_t PutBackByte(unsigned char value) override;
  // The next byte, not consumed; 0 and the read's status when there is none.
  // ReadByte, then PutBackByte of the byte read. With a buffer of 1 byte, a
  // read that finds the buffer empty goes straight to the port and leaves
  // nothing to step back into, so there PeekByte consumes the byte.
  std::uint32_t PeekByte(unsigned char* value) override;

  // 8 bytes; see the deliberate behaviours above.
  std::uint32_t ReadInt(std::int64_t* value) const;
  // True when multi-byte values are reversed (ordering other than 1).
  bool FlipBytes() const;

 private:
  detail::ReadStreamState* mState;
};

}  // namespace Halyard
