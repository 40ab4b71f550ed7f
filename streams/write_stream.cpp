// The buffered write stream over a CPort or a CPortEx.
#include <cstdint>
#include <cstring>
#include <memory>
#include <typeinfo>

#include "streams/stream_lock.h"
#include "tovfoundation/streams.h"

namespace Halyard {
namespace detail {

// The state a write stream and its copies share. The cursor is the offset in
// the buffer where the next byte goes; the stream position is
// position + cursor. Exactly one of port32 and port64 is set.
struct WriteStreamState {
  std::uint32_t refs = 0;
  std::unique_ptr<unsigned char[]> buffer;
  std::uint32_t capacity = 0;
  std::uint32_t cursor = 0;
  HaldByteOrdering order = kHaldLittleEndian;
  CPort* port32 = nullptr;
  CPortEx* port64 = nullptr;
  std::uint64_t position = 0;  // the port position of the buffer's first byte
  unsigned char closePort = 0;
  unsigned char ownsPort = 0;
  tovimpl::streams::StreamLock lock;

  // The port's Write at `pos`; a 32-bit port gets the position truncated.
  std::uint32_t PortWrite(std::uint64_t pos, std::uint32_t count, const void* data) const {
    const auto amount = static_cast<std::int32_t>(count);
    if (port32 != nullptr) return port32->Write(static_cast<std::uint32_t>(pos), amount, data);
    return port64->Write(pos, amount, data);
  }
  std::uint32_t PortFlush() const { return port32 != nullptr ? port32->Flush() : port64->Flush(); }
  std::uint32_t PortClose() const { return port32 != nullptr ? port32->Close() : port64->Close(); }
};

}  // namespace detail

namespace {

using tovimpl::streams::StreamGuard;

detail::WriteStreamState* NewState(CPort* port32, CPortEx* port64, HaldByteOrdering order,
                                   std::uint32_t bufferSize, std::uint32_t startPos,
                                   unsigned char closePort, unsigned char ownsPort) {
  auto state = std::make_unique<detail::WriteStreamState>();
  state->buffer = std::make_unique<unsigned char[]>(bufferSize);
  state->capacity = bufferSize;
  state->order = order;
  state->port32 = port32;
  state->port64 = port64;
  state->position = startPos;
  state->closePort = closePort;
  state->ownsPort = ownsPort;
  return state.release();
}

// The end of SetPos and SetPosW once the buffer was flushed with
// `flushStatus`: a failed flush leaves the position where it was.
std::uint32_t MoveAfterFlush(detail::WriteStreamState& state, std::uint32_t flushStatus,
                             std::uint64_t pos) {
  if (flushStatus != TOV::kSuccess) return flushStatus;
  state.cursor = 0;
  state.position = pos;
  return TOV::kSuccess;
}

void DestroyState(detail::WriteStreamState* state) {
  if (state == nullptr) return;
  state->buffer.reset();
  if (state->closePort != 0) state->PortClose();
  if (state->ownsPort != 0) {
    state->PortClose();
    delete state->port32;
    delete state->port64;
  }
  delete state;
}

// FlipBytes for operations that hold the lock already.
bool Reversed(const detail::WriteStreamState& state) { return state.order != kHaldLittleEndian; }

// Writes the bytes of a value most significant first, one PutByte each,
// stopping at the first failure. Kept out of line: the byte-order case of the
// typed writes should not weigh on their common case.
template <class Unsigned>
[[gnu::noinline]] std::uint32_t PutReversed(CWriteStream& stream, Unsigned value) {
  for (int shift = static_cast<int>(sizeof(Unsigned) * 8) - 8; shift >= 0; shift -= 8) {
    const std::uint32_t status = stream.PutByte(static_cast<unsigned char>(value >> shift));
    if (status != TOV::kSuccess) return status;
  }
  return TOV::kSuccess;
}

// Typed writes of a few bytes that fit in the buffer are stored here, without
// the virtual call through Write (same result: Write starts with this very
// case); everything else, and every write of a class derived from CWriteStream
// (which may override Write), goes through Write.
std::uint32_t WriteSmall(CWriteStream& stream, detail::WriteStreamState& s, std::uint32_t count,
                         const void* data) {
  if (typeid(stream) == typeid(CWriteStream) && std::uint64_t{s.cursor} + count <= s.capacity) {
    std::memcpy(s.buffer.get() + s.cursor, data, count);
    s.cursor += count;
    return TOV::kSuccess;
  }
  return stream.Write(count, data);
}

}  // namespace

CWriteStream::CWriteStream(CPort& port, HaldByteOrdering order, std::uint32_t bufferSize,
                           std::uint32_t startPos, unsigned char closePort)
    : mState(NewState(&port, nullptr, order, bufferSize, startPos, closePort, 0)) {}

CWriteStream::CWriteStream(CPortEx& port, HaldByteOrdering order, std::uint32_t bufferSize,
                           std::uint32_t startPos, unsigned char closePort)
    : mState(NewState(nullptr, &port, order, bufferSize, startPos, closePort, 0)) {}

CWriteStream::CWriteStream(CPort* port, HaldByteOrdering order, std::uint32_t bufferSize,
                           std::uint32_t startPos, unsigned char closePort)
    : mState(NewState(port, nullptr, order, bufferSize, startPos, closePort, 1)) {}

CWriteStream::CWriteStream(CPortEx* port, HaldByteOrdering order, std::uint32_t bufferSize,
                           std::uint32_t startPos, unsigned char closePort)
    : mState(NewState(nullptr, port, order, bufferSize, startPos, closePort, 1)) {}

CWriteStream::CWriteStream(const CWriteStream& other) noexcept : mState(other.mState) {}

CWriteStream& CWriteStream::operator=(const CWriteStream& other) noexcept {
  // The state this stream held goes as if this stream were destroyed.
  if (mState != other.mState) {
    try {
      Flush(0);
    } catch (...) {
    }
    DestroyState(mState);
    mState = other.mState;
  }
  return *this;
}

CWriteStream::~CWriteStream() {
  try {
    Flush(0);
  } catch (...) {
  }
  DestroyState(mState);
}

std::uint32_t CWriteStream::QueryInterface(const _VGUID& /*id*/, void** /*out*/) {
  return TOV::kErrNoInterface;
}

std::uint32_t CWriteStream::AddRef() {
  StreamGuard guard(mState->lock);
  return ++mState->refs;
}

std::uint32_t CWriteStream::Release() {
  std::uint32_t count;
  {
    StreamGuard guard(mState->lock);
    count = --mState->refs;  // 0 − 1 wraps to 0xFFFFFFFF
  }
  delete this;
  return count;
}

std::uint32_t CWriteStream::GetPos(std::uint32_t* pos) const {
  StreamGuard guard(mState->lock);
  if (pos == nullptr) return TOV::kErrInvalidArgument;
  *pos = static_cast<std::uint32_t>(mState->position + mState->cursor);
  return TOV::kSuccess;
}

std::uint32_t CWriteStream::GetPosW(std::uint64_t* pos) const {
  StreamGuard guard(mState->lock);
  if (pos == nullptr) return TOV::kErrInvalidArgument;
  *pos = mState->position + mState->cursor;
  return TOV::kSuccess;
}

std::uint32_t CWriteStream::SetPos(std::uint32_t pos) {
  StreamGuard guard(mState->lock);
  std::uint32_t current = 0;
  GetPos(&current);
  if (current == pos) return TOV::kSuccess;
  return MoveAfterFlush(*mState, Flush(1), pos);
}

std::uint32_t CWriteStream::SetPosW(std::uint64_t pos) {
  StreamGuard guard(mState->lock);
  std::uint64_t current = 0;
  GetPosW(&current);
  if (current == pos) return TOV::kSuccess;
  return MoveAfterFlush(*mState, Flush(1), pos);
}

std::uint32_t CWriteStream::PutBool(unsigned char value) {
  StreamGuard guard(mState->lock);
  return PutByte(value);
}

std::uint32_t CWriteStream::PutByte(unsigned char value) {
  StreamGuard guard(mState->lock);
  return WriteSmall(*this, *mState, 1, &value);
}

std::uint32_t CWriteStream::PutShort(std::int16_t value) {
  StreamGuard guard(mState->lock);
  if (!Reversed(*mState)) return WriteSmall(*this, *mState, 2, &value);
  return PutReversed(*this, static_cast<std::uint16_t>(value));
}

std::uint32_t CWriteStream::PutInt(std::int32_t value) {
  StreamGuard guard(mState->lock);
  if (!Reversed(*mState)) return WriteSmall(*this, *mState, 4, &value);
  return PutReversed(*this, static_cast<std::uint32_t>(value));
}

std::uint32_t CWriteStream::PutInt64(std::int64_t value) {
  StreamGuard guard(mState->lock);
  if (!Reversed(*mState)) return WriteSmall(*this, *mState, 8, &value);
  return PutReversed(*this, static_cast<std::uint64_t>(value));
}

std::uint32_t CWriteStream::PutFloat(float value) {
  StreamGuard guard(mState->lock);
  float copy = value;
  if (Reversed(*mState)) Flip(&copy, 4);
  return WriteSmall(*this, *mState, 4, &copy);
}

std::uint32_t CWriteStream::PutDouble(double value) {
  StreamGuard guard(mState->lock);
  double copy = value;
  if (Reversed(*mState)) Flip(&copy, 8);
  return WriteSmall(*this, *mState, 8, &copy);
}

std::uint32_t CWriteStream::PutZeroPadding(std::int32_t count) {
  StreamGuard guard(mState->lock);
  std::uint32_t status = TOV::kSuccess;
  for (std::int32_t i = 0; i < count; ++i) status = PutByte(0);  // no stop at a failure
  return status;
}

std::uint32_t CWriteStream::Write(std::uint32_t count, const void* data) {
  StreamGuard guard(mState->lock);
  detail::WriteStreamState& s = *mState;
  const auto* in = static_cast<const unsigned char*>(data);
  unsigned char* const start = s.buffer.get();

  if (std::uint64_t{s.cursor} + count <= s.capacity) {
    if (count != 0) std::memcpy(start + s.cursor, in, count);
    s.cursor += count;
    return TOV::kSuccess;
  }
  const std::uint32_t fits = s.capacity - s.cursor;
  if (fits != 0) std::memcpy(start + s.cursor, in, fits);
  s.cursor = s.capacity;
  const std::uint32_t status = Flush(0);
  if (status != TOV::kSuccess) return status;

  const std::uint32_t remaining = count - fits;
  if (remaining > s.capacity / 2) {
    // Large remainders go straight to the port; its status is not reported.
    s.PortWrite(s.position, remaining, in + fits);
    s.position += remaining;
    return TOV::kSuccess;
  }
  if (remaining != 0) return Write(remaining, in + fits);
  return TOV::kSuccess;
}

std::uint32_t CWriteStream::Flush(unsigned char flushPort) {
  StreamGuard guard(mState->lock);
  detail::WriteStreamState& s = *mState;
  if (s.cursor == 0) return TOV::kSuccess;            // an empty buffer never reaches the port
  s.PortWrite(s.position, s.cursor, s.buffer.get());  // its status is not reported
  s.position += s.cursor;
  s.cursor = 0;
  if (flushPort != 0) return s.PortFlush();
  return TOV::kSuccess;
}

bool CWriteStream::FlipBytes() const {
  StreamGuard guard(mState->lock);
  return Reversed(*mState);
}

}  // namespace Halyard
