// tovfoundation streams: ports over files on disk, CFilePort (32-bit
// positions) and CFilePortEx (64-bit positions).
#pragma once

#include <cstdint>

#include "tovfoundation/common.h"
#include "tovfoundation/streams/port.h"

namespace Halyard {

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
  // Shares the other port's path and handle (see "Copies" above).
  CFilePort(const CFilePort& other);
  // Leaves this port's record and shares the other's path and handle.
  CFilePort& operator=(const CFilePort& other);
  // Closes the handle, deletes the file when owned (see "Lifecycle" above).
  ~CFilePort() override;

  // Seeks to `newSize` and truncates or extends the file there.
  // kErrSetSizeFailed on failure (when the platform reports an error).
  std::uint32_t Size(std::uint32_t newSize) override;
  // The low 32 bits of the file size; 0 for 0xFFFFFFFF and for a port not open.
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
  // The same with an 8-bit path, widened character by character in the C
  // runtime's current multibyte locale (VUtilsASCIIStrToUnicode) and passed to
  // Open(const unsigned short*). This holds on every platform: on Windows the
  // path is not read in the ANSI code page. Null path: kErrInvalidArgument.
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
  // Starts closed, with no path.
  CFilePortEx(AccessMode mode, unsigned char ownsResource);
  // Shares the other port's path and handle, as CFilePort's copies do.
  CFilePortEx(const CFilePortEx& other);
  // Leaves this port's record and shares the other's path and handle.
  CFilePortEx& operator=(const CFilePortEx& other);
  // Closes the handle, deletes the file when owned, as ~CFilePort.
  ~CFilePortEx() override;

  // Seeks to `newSize` and truncates or extends the file there; the low 32
  // bits of `newSize` on success, kErrSetSizeFailed on failure.
  std::uint32_t Size(std::uint64_t newSize) override;
  // The full file size; 0 when it cannot be read or the port is not open.
  std::uint64_t Size() const override;
  // 0 for a port already closed; kErrCloseFailed as CFilePort::Close.
  std::uint32_t Close() override;
  // Seek (with the high part), then read: kErrReadFailed as CFilePort::Read.
  std::uint32_t Read(std::uint64_t pos, std::int32_t count, void* buffer) const override;
  // Seek (with the high part), then write: kErrWriteFailed on failure.
  std::uint32_t Write(std::uint64_t pos, std::int32_t count, const void* buffer) override;

  // Opens `path` (UTF-16, NUL-terminated) as CFilePort::Open does.
  virtual std::uint32_t Open(const unsigned short* path);
  // The same with an 8-bit path, widened character by character in the C
  // runtime's current multibyte locale on every platform, as
  // CFilePort::Open(const char*).
  virtual std::uint32_t Open(const char* path);

  // The path given to the last Open, null before the first one. Owned by the port.
  const unsigned short* Path() const;

 private:
  detail::FilePortFile* mFile = nullptr;
};

}  // namespace Halyard
