// tovfoundation streams: ports, buffered byte streams, byte order helpers.
//
// A port is a store of bytes addressed by absolute position, without buffering
// and without a position of its own: a file (CFilePort, CFilePortEx) or a
// caller's memory block (CStaticRamFilePort). CReadStream and CWriteStream sit
// on a port, keep a current position, buffer small transfers and convert
// multi-byte values to and from the stream's byte order.
//
//   using namespace basalt::literals;
//   Halyard::CVAutoPtr<Halyard::CPort> port =
//       Halyard::CPort::FilePort(u"C:\\Media\\out.bin"_u16.c_str(), Halyard::kAccessWrite);
//   if (!port) return TOV::kErrOpenFailed;
//   Halyard::CWriteStream out(*port, Halyard::kHaldBigEndian, 4096, 0, 1);
//   out.PutInt(0x01020304);          // bytes 01 02 03 04
//   out.Flush(1);
//   // ~CWriteStream flushes what is left and, with closePort 1, closes the port.
//
//   unsigned char bytes[4] = {0x12, 0x34, 0x56, 0x78};
//   auto ram = Halyard::CPort::ReadOnlyRamPort(bytes, sizeof bytes);
//   Halyard::CReadStream in(*ram, Halyard::kHaldLittleEndian, 16, 0, 0);
//   short s = 0;
//   in.ReadShort(&s);                // 0x3412
//
// Reporting: every operation answers a 32-bit status (0 is success, the TOV::kErr
// constants of common.h otherwise) and no exception leaves a port or a stream,
// except std::bad_alloc from a stream constructor. Several failures are
// deliberately reported as success; each is stated at its operation below.
//
// Threads: ports hold no lock; two threads that use one file port at once may
// interleave its seek and transfer. Each stream serialises its operations with
// one re-entrant lock shared by its copies, so one stream may be used from
// several threads; its port is only touched under that lock.
//
// Paths are library paths (Windows spelling, UTF-16 or 8-bit in the current
// locale); on POSIX they are translated for the system.
#pragma once

#include <cstdint>
#include <utility>

#include "basalt/strings.h"
#include "tovfoundation/common.h"

namespace Halyard {

// ---------------------------------------------------------------------------
// CVAutoPtr: the factories' owning result
// ---------------------------------------------------------------------------

// An owning pointer: when its flag is set it destroys the held object (through
// its virtual destructor) on destruction and on Reset. Movable, not copyable;
// a moved-from pointer is (false, null). The factories return (true, port) on
// success and (false, null) on failure.
template <class T>
class CVAutoPtr {
 public:
  CVAutoPtr() noexcept = default;
  CVAutoPtr(T* object, bool owns) noexcept : mOwns(owns && object != nullptr), mObject(object) {}
  CVAutoPtr(CVAutoPtr&& other) noexcept
      : mOwns(std::exchange(other.mOwns, false)), mObject(std::exchange(other.mObject, nullptr)) {}
  CVAutoPtr& operator=(CVAutoPtr&& other) noexcept {
    if (this != &other) {
      Reset();
      mOwns = std::exchange(other.mOwns, false);
      mObject = std::exchange(other.mObject, nullptr);
    }
    return *this;
  }
  CVAutoPtr(const CVAutoPtr&) = delete;
  CVAutoPtr& operator=(const CVAutoPtr&) = delete;
  ~CVAutoPtr() { Reset(); }

  T* Get() const noexcept { return mObject; }
  T* operator->() const noexcept { return mObject; }
  T& operator*() const noexcept { return *mObject; }
  explicit operator bool() const noexcept { return mObject != nullptr; }
  // True when this pointer destroys the object.
  bool Owns() const noexcept { return mOwns; }

  // Hands the object to the caller, who then destroys it; this becomes (false, null).
  T* Release() noexcept {
    mOwns = false;
    return std::exchange(mObject, nullptr);
  }
  // Destroys the object when owned; this becomes (false, null).
  void Reset() noexcept {
    T* object = std::exchange(mObject, nullptr);
    if (std::exchange(mOwns, false)) delete object;
  }

 private:
  bool mOwns = false;
  T* mObject = nullptr;
};

// ---------------------------------------------------------------------------
// Ports
// ---------------------------------------------------------------------------

class CPortEx;

// A random-access byte store with 32-bit positions and sizes. Abstract.
//
// Copies (copy construction and assignment of every port class) copy the
// fields member by member, so a file port's copy shares its path and handle.
class TOV_API CPort {
 public:
  // `mode` is fixed for the port's life. `ownsResource`: for a file port, the
  // destructor deletes the file from disk; a RAM port stores it and ignores it.
  CPort(AccessMode mode, unsigned char ownsResource);
  CPort(const CPort& other);
  CPort& operator=(const CPort& other);
  virtual ~CPort();

  // Sets the store's length. Success returns a value that carries no meaning
  // (not necessarily 0): callers test only for TOV::kErrSetSizeFailed.
  virtual std::uint32_t Size(std::uint32_t newSize) = 0;
  // The store's current length.
  virtual std::uint32_t Size() const = 0;
  virtual std::uint32_t Close() = 0;
  // Reads `count` bytes at `pos` into `buffer`, which must hold `count` bytes
  // (`count` must not be negative).
  virtual std::uint32_t Read(std::uint32_t pos, std::int32_t count, void* buffer) const = 0;
  // Writes `count` bytes from `buffer` at `pos`.
  virtual std::uint32_t Write(std::uint32_t pos, std::int32_t count, const void* buffer) = 0;
  // Base: returns 0.
  virtual std::uint32_t Flush();
  // Base: false. A sequential port is never asked to move backwards by a stream.
  virtual bool IsSequential() const;
  // Base: calls this port's Read(pos, count, buffer), ignores its status and
  // sets `bytesRead` to `count`, even when the read failed (deliberate).
  virtual void ReadSequential(std::uint32_t pos, std::int32_t count, std::int32_t& bytesRead,
                              void* buffer) const;

  AccessMode Mode() const;
  unsigned char OwnsResource() const;

  // Factories. Never throw; on any failure the result is (false, null) and the
  // open status is not passed back. The ports they make own no file
  // (ownsResource 0): the file survives the port.
  // A CFilePort(mode, 0) opened with the 8-bit path.
  static CVAutoPtr<CPort> FilePort(const char* path, AccessMode mode);
  // A CFilePort(mode, 0) opened with the UTF-16 path.
  static CVAutoPtr<CPort> FilePort(const unsigned short* path, AccessMode mode);
  // A CStaticRamFilePort over `data` with kAccessRead (its Write still writes:
  // RAM ports check nothing). `data` is not owned and must outlive the port.
  static CVAutoPtr<CPort> ReadOnlyRamPort(const void* data, std::uint32_t size);
  // A CStaticRamFilePort over `data` with kAccessReadWrite.
  static CVAutoPtr<CPort> StaticRamPort(void* data, std::uint32_t size);

 private:
  AccessMode mMode;
  unsigned char mOwnsResource;
};

// The 64-bit twin of CPort: positions and sizes are 64-bit. There is no RAM
// port of this kind.
class TOV_API CPortEx {
 public:
  CPortEx(AccessMode mode, unsigned char ownsResource);
  CPortEx(const CPortEx& other);
  CPortEx& operator=(const CPortEx& other);
  virtual ~CPortEx();

  virtual std::uint32_t Size(std::uint64_t newSize) = 0;
  virtual std::uint64_t Size() const = 0;
  virtual std::uint32_t Close() = 0;
  virtual std::uint32_t Read(std::uint64_t pos, std::int32_t count, void* buffer) const = 0;
  virtual std::uint32_t Write(std::uint64_t pos, std::int32_t count, const void* buffer) = 0;
  virtual std::uint32_t Flush();
  virtual bool IsSequential() const;
  // Base: Read, status ignored, `bytesRead` = `count` sign-extended.
  virtual void ReadSequential(std::uint64_t pos, std::int32_t count, std::uint64_t& bytesRead,
                              void* buffer) const;

  AccessMode Mode() const;
  unsigned char OwnsResource() const;

  // A CFilePortEx(mode, 0) opened with the path; (false, null) on any failure.
  static CVAutoPtr<CPortEx> FilePort(const char* path, AccessMode mode);
  static CVAutoPtr<CPortEx> FilePort(const unsigned short* path, AccessMode mode);

 private:
  AccessMode mMode;
  unsigned char mOwnsResource;
};

namespace detail {
// The path and handle of a file port, shared by its copies (counted).
struct FilePortFile;
}  // namespace detail

// A file on disk with 32-bit positions.
//
// Opening (Open): mode kAccessWrite creates the file or truncates it, mode
// kAccessReadWrite opens it or creates it, any other mode opens an existing
// file read-only. Every open shares reading and never writing: other readers
// are admitted, other writers refused (on POSIX between library ports and
// across processes through advisory locks; a plain open(2) elsewhere is not
// stopped). The path is given the long-path prefix before it is opened.
//
// Deliberate behaviours, kept on purpose:
//   - Read: a short read (fewer bytes than asked, but some) succeeds and the
//     number delivered is not reported; reading 1+ bytes at or past the end
//     returns kErrReadFailed; a read of 0 bytes returns 0. Bound requests by Size().
//   - A failed platform call whose last error is 0 counts as success.
//   - The seek of Read/Write passes no high part: a position of 2^31 or more is
//     a negative distance, the seek fails, the transfer still happens at the
//     unchanged file position, and the call returns kErrReadFailed/kErrWriteFailed.
//     Use CFilePortEx for files of 2 GiB or more.
//   - Size() is the low 32 bits of the file size, with 0xFFFFFFFF turned into
//     0; it is 0 for a port never opened or whose Open failed.
//   - Size(newSize) leaves the file position at newSize; its success value is
//     not a status.
//   - Open on a port whose handle is still open does not close that handle
//     (it stays open until the process ends, or until a copy that still
//     shares it closes it): Close before opening again.
//   - Writing past the end extends the file.
//
// Lifecycle: created closed. Open, Close, Open again. The destructor closes the
// handle, deletes the file when ownsResource is set (even when the port was
// closed before, not when it was never opened), and frees the path.
//
// Copies share the path and the handle (one counted record): Close through any
// of them closes it for all, and destroying one closes it for all; the record
// is freed with the last copy. Each copy keeps its own ownsResource flag, so a
// copy of an owning port deletes the file again when destroyed. Open on a copy
// gives that copy a new record and leaves the others on the old one.
class TOV_API CFilePort : public CPort {
 public:
  // Starts closed, with no path.
  CFilePort(AccessMode mode, unsigned char ownsResource);
  CFilePort(const CFilePort& other);
  CFilePort& operator=(const CFilePort& other);
  ~CFilePort() override;

  // Seeks to `newSize` and truncates or extends the file there.
  // kErrSetSizeFailed on failure (when the platform reports an error).
  std::uint32_t Size(std::uint32_t newSize) override;
  std::uint32_t Size() const override;
  // 0 for a port already closed. kErrCloseFailed only when the close raised an
  // exception (the handle then stays as it was).
  std::uint32_t Close() override;
  // Seek, then read: kErrReadFailed as described above.
  std::uint32_t Read(std::uint32_t pos, std::int32_t count, void* buffer) const override;
  // Seek, then write: kErrWriteFailed when the write failed or the seek failed.
  std::uint32_t Write(std::uint32_t pos, std::int32_t count, const void* buffer) override;

  // Opens `path` (UTF-16, NUL-terminated) as the mode says. Null path:
  // kErrInvalidArgument and nothing changes. kErrOpenFailed when the file could
  // not be opened (missing for kAccessRead, held by a writer, no permission...).
  virtual std::uint32_t Open(const unsigned short* path);
  // The same with an 8-bit path in the current locale's multibyte encoding,
  // widened and passed to Open(const unsigned short*).
  virtual std::uint32_t Open(const char* path);

  // The path given to the last Open, null before the first one. Owned by the port.
  const unsigned short* Path() const;

 private:
  detail::FilePortFile* mFile = nullptr;
};

// A file on disk with 64-bit positions. As CFilePort, but positions of 2 GiB
// and more work (the seek passes the high part), Size() reports the full size
// (0 when it cannot be read), and Size(newSize) returns the low 32 bits of
// `newSize` on success (not a status).
class TOV_API CFilePortEx : public CPortEx {
 public:
  CFilePortEx(AccessMode mode, unsigned char ownsResource);
  CFilePortEx(const CFilePortEx& other);
  CFilePortEx& operator=(const CFilePortEx& other);
  ~CFilePortEx() override;

  std::uint32_t Size(std::uint64_t newSize) override;
  std::uint64_t Size() const override;
  std::uint32_t Close() override;
  std::uint32_t Read(std::uint64_t pos, std::int32_t count, void* buffer) const override;
  std::uint32_t Write(std::uint64_t pos, std::int32_t count, const void* buffer) override;

  virtual std::uint32_t Open(const unsigned short* path);
  virtual std::uint32_t Open(const char* path);

  const unsigned short* Path() const;

 private:
  detail::FilePortFile* mFile = nullptr;
};

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
  CStaticRamFilePort(void* base, std::uint32_t size, AccessMode mode, unsigned char ownsResource);
  CStaticRamFilePort(const CStaticRamFilePort& other);
  CStaticRamFilePort& operator=(const CStaticRamFilePort& other);
  ~CStaticRamFilePort() override;

  std::uint32_t Size(std::uint32_t newSize) override;
  std::uint32_t Size() const override;
  std::uint32_t Close() override;
  std::uint32_t Read(std::uint32_t pos, std::int32_t count, void* buffer) const override;
  std::uint32_t Write(std::uint32_t pos, std::int32_t count, const void* buffer) override;

 private:
  void* mBase;
  std::uint32_t mSize;
};

// ---------------------------------------------------------------------------
// Byte order helpers
// ---------------------------------------------------------------------------

// Reverses `count` bytes in place: the first with the last, the second with
// the second-to-last, and so on. A count of 0, 1 or less changes nothing.
// Flip of 01 02 03 ⇒ 03 02 01.
TOV_API void Flip(void* data, std::int32_t count);
// FlipIntBytes(0x11223344) == 0x44332211.
TOV_API std::uint32_t FlipIntBytes(std::uint32_t value);
TOV_API std::int32_t FlipInteger(std::int32_t value);
// FlipShortBytes(0x1234) == 0x3412.
TOV_API std::uint16_t FlipShortBytes(std::uint16_t value);
TOV_API std::int16_t FlipShort(std::int16_t value);
// Swaps the two bytes of every code unit of `text` in place.
TOV_API void FlipString(UTF16String& text);

// ---------------------------------------------------------------------------
// Read stream
// ---------------------------------------------------------------------------

// A buffered reader with a current position. Positions and sizes are 32-bit.
// The functions are those of CReadStream (see there).
class IVReadStream : public IVUnknown {
 public:
  virtual std::uint32_t GetPos(std::uint32_t* pos) const = 0;
  virtual std::uint32_t SetPos(std::uint32_t pos) = 0;
  virtual std::uint32_t ReadBool(unsigned char* value) const = 0;
  virtual std::uint32_t ReadByte(unsigned char* value) const = 0;
  virtual std::uint32_t ReadShort(std::int16_t* value) const = 0;
  virtual std::uint32_t ReadInt(std::int32_t* value) const = 0;
  virtual std::uint32_t ReadFloat(float* value) const = 0;
  virtual std::uint32_t ReadDouble(double* value) const = 0;
  virtual std::uint32_t GetSize(std::uint32_t* size) const = 0;
  virtual std::uint32_t Read(std::uint32_t count, const void* buffer) const = 0;
  virtual std::uint32_t Skip(std::uint32_t count) = 0;
  virtual std::uint32_t PutBackByte(unsigned char value) = 0;
  virtual std::uint32_t PeekByte(unsigned char* value) = 0;
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
  CReadStream(const CReadStream& other) noexcept;
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
  std::uint32_t ReadByte(unsigned char* value) const override;
  std::uint32_t ReadShort(std::int16_t* value) const override;
  std::uint32_t ReadInt(std::int32_t* value) const override;
  std::uint32_t ReadFloat(float* value) const override;
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

// ---------------------------------------------------------------------------
// Write stream
// ---------------------------------------------------------------------------

// A buffered writer with a current position (32-bit access). The functions
// are those of CWriteStream (see there).
class IVWriteStream : public IVUnknown {
 public:
  virtual std::uint32_t GetPos(std::uint32_t* pos) const = 0;
  virtual std::uint32_t SetPos(std::uint32_t pos) = 0;
  virtual std::uint32_t PutBool(unsigned char value) = 0;
  virtual std::uint32_t PutByte(unsigned char value) = 0;
  virtual std::uint32_t PutShort(std::int16_t value) = 0;
  virtual std::uint32_t PutInt(std::int32_t value) = 0;
  virtual std::uint32_t PutFloat(float value) = 0;
  virtual std::uint32_t PutDouble(double value) = 0;
  virtual std::uint32_t PutZeroPadding(std::int32_t count) = 0;
  virtual std::uint32_t Write(std::uint32_t count, const void* data) = 0;
  virtual std::uint32_t Flush(unsigned char flushPort) = 0;

 protected:
  ~IVWriteStream() = default;
};

// IVWriteStream with 64-bit positions.
class IVWriteStream2 : public IVWriteStream {
 public:
  virtual std::uint32_t GetPosW(std::uint64_t* pos) const = 0;
  virtual std::uint32_t SetPosW(std::uint64_t pos) = 0;
  virtual ~IVWriteStream2() = default;
};

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
  CWriteStream(CPortEx& port, HaldByteOrdering order, std::uint32_t bufferSize,
               std::uint32_t startPos, unsigned char closePort);
  // Takes ownership of the port (non-null): the destructor closes and deletes it.
  CWriteStream(CPort* port, HaldByteOrdering order, std::uint32_t bufferSize,
               std::uint32_t startPos, unsigned char closePort);
  CWriteStream(CPortEx* port, HaldByteOrdering order, std::uint32_t bufferSize,
               std::uint32_t startPos, unsigned char closePort);
  CWriteStream(const CWriteStream& other) noexcept;
  CWriteStream& operator=(const CWriteStream& other) noexcept;
  // Flush(0), then frees the buffer, closes the port when asked, deletes an
  // owned port.
  ~CWriteStream() override;

  std::uint32_t QueryInterface(const _VGUID& id, void** out) override;
  std::uint32_t AddRef() override;
  std::uint32_t Release() override;

  // The stream position truncated to 32 bits. Null `pos`: TOV::kErrInvalidArgument.
  std::uint32_t GetPos(std::uint32_t* pos) const override;
  // To the current position: 0, the buffer kept. Elsewhere: Flush(1) first
  // (its non-zero status is returned), then the position moves.
  std::uint32_t SetPos(std::uint32_t pos) override;
  std::uint32_t PutBool(unsigned char value) override;
  std::uint32_t PutByte(unsigned char value) override;
  std::uint32_t PutShort(std::int16_t value) override;
  std::uint32_t PutInt(std::int32_t value) override;
  std::uint32_t PutFloat(float value) override;
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
  std::uint32_t SetPosW(std::uint64_t pos) override;

  // 8 bytes.
  std::uint32_t PutInt64(std::int64_t value);
  // True when multi-byte values are reversed (ordering other than 1).
  bool FlipBytes() const;

 private:
  detail::WriteStreamState* mState;
};

// ---------------------------------------------------------------------------
// Stream string and buffer helpers
// ---------------------------------------------------------------------------

// Writes every code unit of `text` (embedded zero units included) with
// PutShort, then a zero unit when `terminate` is non-zero. No length prefix.
// The write statuses are not examined: always returns 0.
// "AB", terminate, big-endian ⇒ 00 41 00 42 00 00.
TOV_API std::uint32_t VUtilsWriteStringToStream(CWriteStream& stream, const UTF16String& text,
                                                unsigned char terminate);

// Reads units with ReadShort until a zero unit (consumed) or until `maxUnits`
// units were read, and replaces `text` with the units before the first zero.
// `maxUnits` 0: TOV::kErrInvalidPointer and `text` unchanged; otherwise 0.
// Deliberately, read statuses are ignored: at the end of the data the last unit
// read is appended again and again until `maxUnits` units were taken (a stream
// that fails from the start gives the empty text). Bound `maxUnits` by the data
// left (GetSize − GetPos) / 2 to read only what is there.
// Units A B C D, maxUnits 3 ⇒ "ABC", the stream left at D; A 0 C ⇒ "A", left at C.
TOV_API std::uint32_t VUtilsReadStringFromStream(CReadStream& stream, UTF16String& text,
                                                 std::uint32_t maxUnits);

// Writes `count` elements of `elementSize` bytes, each reversed when the
// stream is big-endian and the size is above 1 (so 16-bit values 0x0102,
// 0x0304 lying as 02 01 04 03 go out as 01 02 03 04). The middle byte of an
// element of odd size is not carried over: it is written as 0.
// Returns the stream's Write status; TOV::kErrInvalidPointer for a null `data`,
// a null `stream` or elementSize × count (32-bit, wrapping) of 0;
// TOV::kErrOutOfMemory when the reversed copy cannot be allocated.
TOV_API std::uint32_t WriteBufferToStream(const void* data, std::uint32_t elementSize,
                                          std::uint32_t count, CWriteStream* stream);

}  // namespace Halyard
