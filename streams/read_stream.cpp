// The buffered read stream over a CPort.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <typeinfo>

#include "streams/stream_lock.h"
#include "tovfoundation/streams.h"

namespace Halyard {
namespace detail {

// The state a read stream and its copies share. Buffer offsets stand for the
// pointers into the buffer: the cursor is the next byte handed out, dataEnd one
// past the last valid byte. The stream position is portPos − (dataEnd − cursor).
struct ReadStreamState {
  std::uint32_t refs = 1;
  std::unique_ptr<unsigned char[]> buffer;
  std::uint32_t capacity = 0;
  std::uint32_t cursor = 0;
  std::uint32_t dataEnd = 0;
  HaldByteOrdering order = kHaldLittleEndian;
  CPort* port = nullptr;
  std::uint32_t portPos = 0;   // the port position that corresponds to dataEnd
  std::uint32_t portSize = 0;  // the port's size, read once at construction
  unsigned char closePort = 0;
  unsigned char ownsPort = 0;
  tovimpl::streams::StreamLock lock;
};

}  // namespace detail

namespace {

using tovimpl::streams::StreamGuard;

// Typed reads of a few bytes that the buffer already holds take them here,
// without the virtual call through Read (same result: Read starts with this
// very case); everything else, and every read of a class derived from
// CReadStream (which may override Read), goes through Read.
std::uint32_t ReadSmall(const CReadStream& stream, detail::ReadStreamState& s, std::uint32_t count,
                        void* out) {
  if (typeid(stream) == typeid(CReadStream) && std::uint64_t{s.cursor} + count <= s.dataEnd) {
    std::memcpy(out, s.buffer.get() + s.cursor, count);
    s.cursor += count;
    return TOV::kSuccess;
  }
  return stream.Read(count, out);
}

detail::ReadStreamState* NewState(CPort* port, HaldByteOrdering order, std::uint32_t bufferSize,
                                  std::uint32_t startPos, unsigned char closePort,
                                  unsigned char ownsPort) {
  auto state = std::make_unique<detail::ReadStreamState>();
  state->buffer = std::make_unique<unsigned char[]>(bufferSize);
  state->capacity = bufferSize;
  state->order = order;
  state->port = port;
  state->portPos = startPos;
  state->portSize = port->Size();
  state->closePort = closePort;
  state->ownsPort = ownsPort;
  return state.release();
}

void DestroyState(detail::ReadStreamState* state) {
  if (state == nullptr) return;
  state->buffer.reset();
  if (state->closePort != 0) state->port->Close();
  if (state->ownsPort != 0) {
    state->port->Close();
    delete state->port;
  }
  delete state;
}

// FlipBytes for operations that hold the lock already.
bool Reversed(const detail::ReadStreamState& state) { return state.order != kHaldLittleEndian; }

void CopyBytes(void* to, const void* from, std::uint32_t count) {
  if (count != 0) std::memcpy(to, from, count);
}

}  // namespace

CReadStream::CReadStream(CPort& port, HaldByteOrdering order, std::uint32_t bufferSize,
                         std::uint32_t startPos, unsigned char closePort)
    : mState(NewState(&port, order, bufferSize, startPos, closePort, 0)) {}

CReadStream::CReadStream(CPort* port, HaldByteOrdering order, std::uint32_t bufferSize,
                         std::uint32_t startPos, unsigned char closePort)
    : mState(NewState(port, order, bufferSize, startPos, closePort, 1)) {}

CReadStream::CReadStream(const CReadStream& other) noexcept : mState(other.mState) {}

CReadStream& CReadStream::operator=(const CReadStream& other) noexcept {
  // The state this stream held goes as if this stream were destroyed.
  if (mState != other.mState) {
    DestroyState(mState);
    mState = other.mState;
  }
  return *this;
}

CReadStream::~CReadStream() { DestroyState(mState); }

std::uint32_t CReadStream::QueryInterface(const _VGUID& /*id*/, void** /*out*/) {
  return TOV::kErrNoInterface;
}

std::uint32_t CReadStream::AddRef() {
  StreamGuard guard(mState->lock);
  return ++mState->refs;
}

std::uint32_t CReadStream::Release() {
  std::uint32_t count;
  {
    StreamGuard guard(mState->lock);
    count = --mState->refs;
  }
  delete this;
  return count;
}

std::uint32_t CReadStream::GetPos(std::uint32_t* pos) const {
  StreamGuard guard(mState->lock);
  if (pos == nullptr) return TOV::kErrInvalidPointer;
  *pos = mState->portPos - (mState->dataEnd - mState->cursor);
  return TOV::kSuccess;
}

std::uint32_t CReadStream::SetPos(std::uint32_t pos) {
  StreamGuard guard(mState->lock);
  detail::ReadStreamState& s = *mState;
  const std::uint32_t first = s.portPos - s.dataEnd;
  if (first <= pos && pos <= s.portPos) {
    s.cursor = pos - first;
    return TOV::kSuccess;
  }
  if (s.port->IsSequential()) {
    if (pos < s.portPos) return TOV::kErrSeekBackward;
    while (s.portPos < pos) {
      const std::uint32_t amount = std::min(s.capacity, pos - s.portPos);
      const std::uint32_t status =
          s.port->Read(s.portPos, static_cast<std::int32_t>(amount), s.buffer.get());
      if (status != TOV::kSuccess) return status;
      s.portPos += amount;
    }
  } else {
    if (pos > s.portSize) return TOV::kErrReadFailed;
    s.portPos = pos;
  }
  s.cursor = 0;
  s.dataEnd = 0;
  return TOV::kSuccess;
}

std::uint32_t CReadStream::ReadBool(unsigned char* value) const {
  StreamGuard guard(mState->lock);
  unsigned char byte = 0;
  const std::uint32_t status = ReadByte(&byte);
  *value = byte != 0 ? 1 : 0;
  return status;
}

std::uint32_t CReadStream::ReadByte(unsigned char* value) const {
  StreamGuard guard(mState->lock);
  unsigned char byte = 0;
  const std::uint32_t status = ReadSmall(*this, *mState, 1, &byte);
  if (status == TOV::kSuccess) *value = byte;
  return status;
}

std::uint32_t CReadStream::ReadShort(std::int16_t* value) const {
  StreamGuard guard(mState->lock);
  std::int16_t raw = 0;
  const std::uint32_t status = ReadSmall(*this, *mState, 2, &raw);
  if (status == TOV::kSuccess) *value = Reversed(*mState) ? FlipShort(raw) : raw;
  return status;
}

std::uint32_t CReadStream::ReadInt(std::int32_t* value) const {
  StreamGuard guard(mState->lock);
  std::int32_t raw = 0;
  const std::uint32_t status = ReadSmall(*this, *mState, 4, &raw);
  if (status == TOV::kSuccess) *value = Reversed(*mState) ? FlipInteger(raw) : raw;
  return status;
}

std::uint32_t CReadStream::ReadFloat(float* value) const {
  StreamGuard guard(mState->lock);
  float raw = 0;
  const std::uint32_t status = ReadSmall(*this, *mState, 4, &raw);
  if (status == TOV::kSuccess) {
    if (Reversed(*mState)) Flip(&raw, 4);
    *value = raw;
  }
  return status;
}

std::uint32_t CReadStream::ReadDouble(double* value) const {
  StreamGuard guard(mState->lock);
  double raw = 0;
  const std::uint32_t status = ReadSmall(*this, *mState, 8, &raw);
  if (status == TOV::kSuccess) {
    if (Reversed(*mState)) Flip(&raw, 8);
    *value = raw;
  }
  return status;
}

std::uint32_t CReadStream::ReadInt(std::int64_t* value) const {
  StreamGuard guard(mState->lock);
  std::int64_t raw = 0;
  const std::uint32_t status = ReadSmall(*this, *mState, 8, &raw);
  // Only the platform's own order stores the value; any other consumes the
  // bytes and reports success without storing (kept deliberately).
  if (status == TOV::kSuccess && !Reversed(*mState)) *value = raw;
  return status;
}

std::uint32_t CReadStream::GetSize(std::uint32_t* size) const {
  StreamGuard guard(mState->lock);
  const std::uint32_t current = mState->port->Size();
  if (size != nullptr) *size = current;
  return TOV::kSuccess;
}

std::uint32_t CReadStream::Read(std::uint32_t count, const void* buffer) const {
  StreamGuard guard(mState->lock);
  detail::ReadStreamState& s = *mState;
  auto* out = static_cast<unsigned char*>(const_cast<void*>(buffer));
  unsigned char* const start = s.buffer.get();

  if (std::uint64_t{s.cursor} + count <= s.dataEnd) {
    CopyBytes(out, start + s.cursor, count);
    s.cursor += count;
    return TOV::kSuccess;
  }
  if (s.cursor > s.dataEnd) return TOV::kErrStreamState;

  const std::uint32_t available = s.dataEnd - s.cursor;
  CopyBytes(out, start + s.cursor, available);
  std::uint32_t remaining = count - available;
  if (remaining > s.capacity / 2) {
    // Large requests bypass the buffer.
    const std::uint32_t status =
        s.port->Read(s.portPos, static_cast<std::int32_t>(remaining), out + available);
    if (status != TOV::kSuccess) return status;
    s.portPos += remaining;
    remaining = 0;
  }

  // Refill as far as the port's data reaches, also after a direct read
  // (read-ahead). The max asks for the whole remaining request even when it
  // runs past the end of the port (callers bound their reads by GetSize).
  s.cursor = 0;
  std::uint32_t fill = std::min(std::max(remaining, s.portSize - s.portPos), s.capacity);
  if (s.port->IsSequential()) {
    std::int32_t got = 0;
    s.port->ReadSequential(s.portPos, static_cast<std::int32_t>(fill), got, start);
    // A port that claims more than it was asked for cannot overfill the buffer.
    fill = got < 0 ? 0u : std::min(static_cast<std::uint32_t>(got), fill);
  } else {
    s.port->Read(s.portPos, static_cast<std::int32_t>(fill), start);
  }
  s.dataEnd = fill;
  s.portPos += fill;

  if (remaining == 0) return TOV::kSuccess;
  // A sequential port that delivers nothing would be asked again forever.
  if (fill == 0) return TOV::kErrReadFailed;
  return Read(remaining, out + available);
}

std::uint32_t CReadStream::Skip(std::uint32_t count) {
  StreamGuard guard(mState->lock);
  if (std::uint64_t{mState->cursor} + count <= mState->dataEnd) {
    mState->cursor += count;
    return TOV::kSuccess;
  }
  std::uint32_t pos = 0;
  const std::uint32_t status = GetPos(&pos);
  SetPos(pos + count);  // its status is ignored: a skip past the end succeeds
  return status;
}

std::uint32_t CReadStream::PutBackByte(unsigned char value) {
  StreamGuard guard(mState->lock);
  if (mState->cursor > 0) {
    --mState->cursor;
    mState->buffer[mState->cursor] = value;
  }
  return TOV::kSuccess;
}

std::uint32_t CReadStream::PeekByte(unsigned char* value) {
  StreamGuard guard(mState->lock);
  unsigned char byte = 0;
  std::uint32_t status = ReadByte(&byte);
  if (status == TOV::kSuccess) status = PutBackByte(byte);
  *value = byte;
  return status;
}

bool CReadStream::FlipBytes() const {
  StreamGuard guard(mState->lock);
  return Reversed(*mState);
}

}  // namespace Halyard
