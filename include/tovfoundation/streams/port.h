// tovfoundation streams: the abstract ports CPort (32-bit positions) and
// CPortEx (64-bit positions).
#pragma once

#include <cstdint>

#include "tovfoundation/common.h"
#include "tovfoundation/streams/auto_ptr.h"

namespace Halyard {

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
  // Copies mode and flag (see the class comment for what a copy shares).
  CPort(const CPort& other);
  // Copies mode and flag, member by member.
  CPort& operator=(const CPort& other);
  // Releases what the port holds; a derived file port closes its handle.
  virtual ~CPort();

  // Sets the store's length. Success returns a value that carries no meaning
  // (not necessarily 0): callers test only for TOV::kErrSetSizeFailed.
  virtual std::uint32_t Size(std::uint32_t newSize) = 0;
  // The store's current length.
  virtual std::uint32_t Size() const = 0;
  // Ends the port's use of its store (a file port closes its handle).
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

  // The access mode given at construction.
  AccessMode Mode() const;
  // The ownsResource flag given at construction.
  unsigned char OwnsResource() const;

  // Factories. Never throw; on any failure the result is (false, null) and the
  // open status is not passed back. The ports they make own no file
  // (ownsResource 0): the file survives the port.
  // A CFilePort(mode, 0) opened with the 8-bit path through
  // CFilePort::Open(const char*): the path is widened character by character
  // in the C runtime's current multibyte locale, on every platform.
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
  // As CPort(mode, ownsResource).
  CPortEx(AccessMode mode, unsigned char ownsResource);
  // Copies mode and flag; a file port's copy shares its path and handle.
  CPortEx(const CPortEx& other);
  // Copies mode and flag, member by member.
  CPortEx& operator=(const CPortEx& other);
  // Releases what the port holds; a derived file port closes its handle.
  virtual ~CPortEx();

  // Sets the store's length; callers test only for TOV::kErrSetSizeFailed.
  virtual std::uint32_t Size(std::uint64_t newSize) = 0;
  // The store's current length.
  virtual std::uint64_t Size() const = 0;
  // Ends the port's use of its store (a file port closes its handle).
  virtual std::uint32_t Close() = 0;
  // Reads `count` bytes at `pos` into `buffer`, which must hold `count` bytes
  // (`count` must not be negative).
  virtual std::uint32_t Read(std::uint64_t pos, std::int32_t count, void* buffer) const = 0;
  // Writes `count` bytes from `buffer` at `pos`.
  virtual std::uint32_t Write(std::uint64_t pos, std::int32_t count, const void* buffer) = 0;
  // Base: returns 0.
  virtual std::uint32_t Flush();
  // Base: false. A sequential port is never asked to move backwards by a stream.
  virtual bool IsSequential() const;
  // Base: Read, status ignored, `bytesRead` = `count` sign-extended.
  virtual void ReadSequential(std::uint64_t pos, std::int32_t count, std::uint64_t& bytesRead,
                              void* buffer) const;

  // The access mode given at construction.
  AccessMode Mode() const;
  // The ownsResource flag given at construction.
  unsigned char OwnsResource() const;

  // A CFilePortEx(mode, 0) opened with the 8-bit path (widened character by
  // character in the C runtime's current multibyte locale, on every
  // platform); (false, null) on any failure.
  static CVAutoPtr<CPortEx> FilePort(const char* path, AccessMode mode);
  // A CFilePortEx(mode, 0) opened with the UTF-16 path; (false, null) on any
  // failure.
  static CVAutoPtr<CPortEx> FilePort(const unsigned short* path, AccessMode mode);

 private:
  AccessMode mMode;
  unsigned char mOwnsResource;
};

}  // namespace Halyard
