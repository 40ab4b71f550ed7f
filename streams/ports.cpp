// Ports: the port bases, the file ports over the OS layer's file handles, the
// RAM port, and the factories.
#include <atomic>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include "platform/error.h"
#include "platform/file.h"
#include "tovfoundation/streams.h"

namespace Halyard {
namespace detail {

// The path and handle of a file port, and the port's file pointer. Copies of a
// port share one record, as they share the handle; the count says how many
// ports hold it.
//
// The file pointer is the port's own: every transfer starts at it and moves it
// on by what was transferred, and a seek that fails leaves it where it was, so
// the transfer that follows happens there (the behaviour of a Windows file
// pointer, which the ports' contract keeps on every platform).
//
// A read-only port keeps the size its open learnt: the port shares reading and
// never writing, and cannot write itself, so nothing the library does can change
// that size while the handle is open.
struct FilePortFile {
  explicit FilePortFile(const unsigned short* text) : path(text) {}
  std::atomic<std::uint32_t> refs{1};
  UTF16String path;
  tovimpl::platform::FileHandle handle;
  std::atomic<std::uint64_t> position{0};
  bool sizeKnown = false;
  std::uint64_t size = 0;
};

}  // namespace detail

namespace {

namespace platform = tovimpl::platform;
using detail::FilePortFile;

void Retain(FilePortFile* file) {
  if (file != nullptr) file->refs.fetch_add(1, std::memory_order_relaxed);
}

// Drops one reference; the last one frees the record. The handle is not closed
// here: closing is the port's business (an Open over a still-open handle
// deliberately leaves that handle open).
void Drop(FilePortFile* file) {
  if (file != nullptr && file->refs.fetch_sub(1, std::memory_order_acq_rel) == 1) delete file;
}

platform::FileHandle HandleOf(const FilePortFile* file) {
  return file == nullptr ? platform::FileHandle() : file->handle;
}

// The ports leave the thread's last error (platform/error.h) as the Windows
// calls their contract is written against leave it: the code of a failed step,
// 0 after a successful seek, 183 after an open that found the file it could
// also have created. Callers read it after a failed port call.
template <class R>
const R& Noted(const R& outcome) {
  if (!outcome) platform::SetLastError(outcome.Error());
  return outcome;
}

// An 8-bit path in the current locale's multibyte encoding as UTF-16. False
// when the bytes are not valid in that encoding.
bool WidenPath(const char* path, UTF16String& out) {
  std::mbstate_t state{};
  const std::size_t length = std::strlen(path);
  out.clear();
  out.reserve(length + 1);
  std::size_t at = 0;
  while (at < length) {
    wchar_t wide = 0;
    const std::size_t used = std::mbrtowc(&wide, path + at, length - at, &state);
    if (used == static_cast<std::size_t>(-1) || used == static_cast<std::size_t>(-2)) {
      return false;
    }
    at += used == 0 ? 1 : used;
    const auto code = static_cast<std::uint32_t>(wide);
    if (sizeof(wchar_t) > 2 && code > 0xFFFFu) {
      const std::uint32_t v = code - 0x10000u;
      out.push_back(static_cast<unsigned short>(0xD800u + (v >> 10)));
      out.push_back(static_cast<unsigned short>(0xDC00u + (v & 0x3FFu)));
    } else {
      out.push_back(static_cast<unsigned short>(code));
    }
  }
  return true;
}

bool Writes(AccessMode mode) { return mode == kAccessWrite || mode == kAccessReadWrite; }

// Opens `path` for a file port of `mode` (kAccessWrite: create or truncate,
// kAccessReadWrite: open or create, anything else: read an existing file).
// Every mode shares reading and never writing. The path is opened in its
// long-path form, so that ports reach paths longer than the system's classic
// limit.

platform::Result<platform::OpenedFile> OpenForMode(const UTF16String& path, AccessMode mode) {
  if (Writes(mode)) {
    return platform::OpenFile(
        path, platform::kGenericRead | platform::kGenericWrite, platform::kFileShareRead,
        mode == kAccessWrite ? platform::kCreateAlways : platform::kOpenAlways,
        platform::kFileFlagRandomAccess | platform::kOpenLongPath);
  }
  return platform::OpenFile(path, platform::kGenericRead, platform::kFileShareRead,
                            platform::kOpenExisting,
                            platform::kFileFlagSequentialScan | platform::kOpenLongPath);
}

// The shared Open of both file ports: replaces the record, opens, stores the handle.
std::uint32_t OpenPortFile(FilePortFile*& file, const unsigned short* path, AccessMode mode) {
  if (path == nullptr) return TOV::kErrInvalidArgument;
  try {
    auto* fresh = new FilePortFile(path);
    Drop(file);  // a handle still open is left open, deliberately
    file = fresh;
    const platform::Result<platform::OpenedFile> opened = Noted(OpenForMode(file->path, mode));
    if (!opened) {
      file->handle = platform::FileHandle::Invalid();
      return TOV::kErrOpenFailed;
    }
    platform::SetLastError(Writes(mode) && opened->existed ? platform::kErrorAlreadyExists
                                                           : platform::kErrorSuccess);
    file->handle = opened->handle;
    file->sizeKnown = !Writes(mode);
    file->size = opened->size;
    return TOV::kSuccess;
  } catch (...) {
    return TOV::kErrOpenFailed;
  }
}

// The file's size: the one its open learnt when the port cannot have changed it.
platform::Result<std::uint64_t> SizeOf(const FilePortFile* file) {
  if (file == nullptr) return platform::Status::Failure(platform::kErrorInvalidHandle);
  if (file->sizeKnown && file->handle.IsOpen()) return file->size;
  return Noted(platform::FileSize(file->handle));
}

std::uint32_t ClosePortFile(FilePortFile* file) {
  if (file == nullptr || file->handle.IsNull()) return TOV::kSuccess;
  try {
    (void)Noted(platform::CloseFile(file->handle));
    file->handle = platform::FileHandle();
    return TOV::kSuccess;
  } catch (...) {
    return TOV::kErrCloseFailed;
  }
}

// The destructor's work: close, delete an owned file, drop the record.
void DestroyFile(FilePortFile*& file, unsigned char ownsResource) {
  if (file == nullptr) return;
  try {
    if (!file->handle.IsNull()) {
      (void)Noted(platform::CloseFile(file->handle));
      file->handle = platform::FileHandle();
    }
    if (ownsResource != 0) (void)Noted(platform::RemoveFile(file->path));
  } catch (...) {
  }
  Drop(std::exchange(file, nullptr));
}

// Where a port's seek to `pos` puts the file pointer, or nothing when it fails.
// The 32-bit port's positions are unsigned 32-bit, but they are handed on as a
// signed 32-bit distance from the start, so 2^31 and more is a position before
// the start: the seek fails (the port cannot reach 2 GiB and beyond). The
// 64-bit port's positions are signed 64-bit distances likewise: 2^63 and more
// fail.
std::optional<std::uint64_t> Seek32(std::uint32_t pos) {
  if (static_cast<std::int32_t>(pos) < 0) return std::nullopt;
  return std::uint64_t{pos};
}

std::optional<std::uint64_t> Seek64(std::uint64_t pos) {
  if (static_cast<std::int64_t>(pos) < 0) return std::nullopt;
  return pos;
}

// Reads or writes `count` bytes after a seek whose failure is remembered but
// does not stop the transfer: it then happens at the file pointer as it was.
// `failure` is the operation's own code. A read that delivers nothing fails.
std::uint32_t Transfer(FilePortFile* file, std::optional<std::uint64_t> target, std::int32_t count,
                       bool reading, void* readTo, const void* writeFrom, std::uint32_t failure) {
  try {
    if (file == nullptr || !file->handle.IsOpen()) {
      platform::SetLastError(platform::kErrorInvalidHandle);
      return failure;
    }
    std::uint32_t result = TOV::kSuccess;
    if (target) {
      file->position.store(*target, std::memory_order_relaxed);
      platform::SetLastError(platform::kErrorSuccess);
    } else {
      platform::SetLastError(platform::kErrorNegativeSeek);
      result = failure;
    }
    const std::uint64_t at = file->position.load(std::memory_order_relaxed);
    const std::uint32_t amount = count < 0 ? 0u : static_cast<std::uint32_t>(count);
    const platform::Result<std::uint32_t> done =
        Noted(reading ? platform::ReadAt(file->handle, at, readTo, amount)
                      : platform::WriteAt(file->handle, at, writeFrom, amount));
    if (!done) return failure;
    file->position.store(at + *done, std::memory_order_relaxed);
    if (reading && *done == 0 && count != 0) return failure;  // nothing left at this position
    return result;
  } catch (...) {
    return failure;
  }
}

// Sets the size through the file pointer, as the ports' contract has it: a
// seek to the new size (failing as the port's seeks fail), then the end of the
// file put there.
std::uint32_t SetSize(FilePortFile* file, std::optional<std::uint64_t> target,
                      std::uint32_t success) {
  try {
    if (file == nullptr || !file->handle.IsOpen()) {
      platform::SetLastError(platform::kErrorInvalidHandle);
      return TOV::kErrSetSizeFailed;
    }
    if (!target) {
      platform::SetLastError(platform::kErrorNegativeSeek);
      return TOV::kErrSetSizeFailed;
    }
    file->position.store(*target, std::memory_order_relaxed);
    platform::SetLastError(platform::kErrorSuccess);
    if (!Noted(platform::SetFileSize(file->handle, *target))) return TOV::kErrSetSizeFailed;
    return success;
  } catch (...) {
    return TOV::kErrSetSizeFailed;
  }
}

// The factories' work: a file port of type `FilePortType` opened on `path`,
// handed out as its base `Port`; an empty pointer when it cannot be made or opened.
template <class Port, class FilePortType, class PathChar>
CVAutoPtr<Port> NewFilePort(const PathChar* path, AccessMode mode) {
  try {
    std::unique_ptr<FilePortType> port(new FilePortType(mode, 0));
    if (port->Open(path) != TOV::kSuccess) return CVAutoPtr<Port>();
    return CVAutoPtr<Port>(port.release(), true);
  } catch (...) {
    return CVAutoPtr<Port>();
  }
}

// A file port's assignment: leave the own record, share the other's.
void ShareFile(FilePortFile*& mine, FilePortFile* other) {
  Retain(other);
  Drop(std::exchange(mine, other));
}

// Open with an 8-bit path, for both file ports: widened in the current locale,
// then handed to the port's own (virtual) UTF-16 Open.
template <class FilePortType>
std::uint32_t OpenNarrow(FilePortType& port, const char* path) {
  if (path == nullptr) return TOV::kErrInvalidArgument;
  try {
    UTF16String wide;
    if (!WidenPath(path, wide)) return TOV::kErrOpenFailed;
    return port.Open(wide.c_str());
  } catch (...) {
    return TOV::kErrOpenFailed;
  }
}

const unsigned short* PathOf(const FilePortFile* file) {
  return file == nullptr ? nullptr : file->path.c_str();
}

}  // namespace

// --- CPort -------------------------------------------------------------------

CPort::CPort(AccessMode mode, unsigned char ownsResource)
    : mMode(mode), mOwnsResource(ownsResource) {}
CPort::CPort(const CPort& other) = default;
CPort& CPort::operator=(const CPort& other) = default;
CPort::~CPort() = default;

std::uint32_t CPort::Flush() { return TOV::kSuccess; }
bool CPort::IsSequential() const { return false; }

void CPort::ReadSequential(std::uint32_t pos, std::int32_t count, std::int32_t& bytesRead,
                           void* buffer) const {
  Read(pos, count, buffer);
  bytesRead = count;
}

AccessMode CPort::Mode() const { return mMode; }
unsigned char CPort::OwnsResource() const { return mOwnsResource; }

CVAutoPtr<CPort> CPort::FilePort(const char* path, AccessMode mode) {
  return NewFilePort<CPort, CFilePort>(path, mode);
}

CVAutoPtr<CPort> CPort::FilePort(const unsigned short* path, AccessMode mode) {
  return NewFilePort<CPort, CFilePort>(path, mode);
}

CVAutoPtr<CPort> CPort::ReadOnlyRamPort(const void* data, std::uint32_t size) {
  auto* port = new (std::nothrow) CStaticRamFilePort(const_cast<void*>(data), size, kAccessRead, 0);
  return CVAutoPtr<CPort>(port, port != nullptr);
}

CVAutoPtr<CPort> CPort::StaticRamPort(void* data, std::uint32_t size) {
  auto* port = new (std::nothrow) CStaticRamFilePort(data, size, kAccessReadWrite, 0);
  return CVAutoPtr<CPort>(port, port != nullptr);
}

// --- CPortEx -----------------------------------------------------------------

CPortEx::CPortEx(AccessMode mode, unsigned char ownsResource)
    : mMode(mode), mOwnsResource(ownsResource) {}
CPortEx::CPortEx(const CPortEx& other) = default;
CPortEx& CPortEx::operator=(const CPortEx& other) = default;
CPortEx::~CPortEx() = default;

std::uint32_t CPortEx::Flush() { return TOV::kSuccess; }
bool CPortEx::IsSequential() const { return false; }

void CPortEx::ReadSequential(std::uint64_t pos, std::int32_t count, std::uint64_t& bytesRead,
                             void* buffer) const {
  Read(pos, count, buffer);
  bytesRead = static_cast<std::uint64_t>(static_cast<std::int64_t>(count));
}

AccessMode CPortEx::Mode() const { return mMode; }
unsigned char CPortEx::OwnsResource() const { return mOwnsResource; }

CVAutoPtr<CPortEx> CPortEx::FilePort(const char* path, AccessMode mode) {
  return NewFilePort<CPortEx, CFilePortEx>(path, mode);
}

CVAutoPtr<CPortEx> CPortEx::FilePort(const unsigned short* path, AccessMode mode) {
  return NewFilePort<CPortEx, CFilePortEx>(path, mode);
}

// --- CFilePort ---------------------------------------------------------------

CFilePort::CFilePort(AccessMode mode, unsigned char ownsResource) : CPort(mode, ownsResource) {}

CFilePort::CFilePort(const CFilePort& other) : CPort(other), mFile(other.mFile) { Retain(mFile); }

CFilePort& CFilePort::operator=(const CFilePort& other) {
  if (this != &other) {
    CPort::operator=(other);
    ShareFile(mFile, other.mFile);
  }
  return *this;
}

CFilePort::~CFilePort() { DestroyFile(mFile, OwnsResource()); }

std::uint32_t CFilePort::Size(std::uint32_t newSize) {
  return SetSize(mFile, Seek32(newSize), newSize);
}

// The low 32 bits of the size; 0 when it cannot be read, and also when those
// bits are 0xFFFFFFFF (the value that doubles as the failure answer of the
// 32-bit size query the port's contract is written against).
std::uint32_t CFilePort::Size() const {
  try {
    if (!HandleOf(mFile).IsOpen()) return 0;
    const platform::Result<std::uint64_t> size = SizeOf(mFile);
    if (!size) return 0;
    const auto low = static_cast<std::uint32_t>(*size);
    if (low != 0xFFFFFFFFu) return low;
    platform::SetLastError(platform::kErrorSuccess);  // a size, not a failure
    return 0;
  } catch (...) {
    return 0;
  }
}

std::uint32_t CFilePort::Close() { return ClosePortFile(mFile); }

std::uint32_t CFilePort::Read(std::uint32_t pos, std::int32_t count, void* buffer) const {
  return Transfer(mFile, Seek32(pos), count, true, buffer, nullptr, TOV::kErrReadFailed);
}

std::uint32_t CFilePort::Write(std::uint32_t pos, std::int32_t count, const void* buffer) {
  return Transfer(mFile, Seek32(pos), count, false, nullptr, buffer, TOV::kErrWriteFailed);
}

std::uint32_t CFilePort::Open(const unsigned short* path) {
  return OpenPortFile(mFile, path, Mode());
}

std::uint32_t CFilePort::Open(const char* path) { return OpenNarrow(*this, path); }

const unsigned short* CFilePort::Path() const { return PathOf(mFile); }

// --- CFilePortEx -------------------------------------------------------------

CFilePortEx::CFilePortEx(AccessMode mode, unsigned char ownsResource)
    : CPortEx(mode, ownsResource) {}

CFilePortEx::CFilePortEx(const CFilePortEx& other) : CPortEx(other), mFile(other.mFile) {
  Retain(mFile);
}

CFilePortEx& CFilePortEx::operator=(const CFilePortEx& other) {
  if (this != &other) {
    CPortEx::operator=(other);
    ShareFile(mFile, other.mFile);
  }
  return *this;
}

CFilePortEx::~CFilePortEx() { DestroyFile(mFile, OwnsResource()); }

std::uint32_t CFilePortEx::Size(std::uint64_t newSize) {
  return SetSize(mFile, Seek64(newSize), static_cast<std::uint32_t>(newSize));
}

// The size; 0 when it cannot be read.
std::uint64_t CFilePortEx::Size() const {
  try {
    return SizeOf(mFile).ValueOr(0);
  } catch (...) {
    return 0;
  }
}

std::uint32_t CFilePortEx::Close() { return ClosePortFile(mFile); }

std::uint32_t CFilePortEx::Read(std::uint64_t pos, std::int32_t count, void* buffer) const {
  return Transfer(mFile, Seek64(pos), count, true, buffer, nullptr, TOV::kErrReadFailed);
}

std::uint32_t CFilePortEx::Write(std::uint64_t pos, std::int32_t count, const void* buffer) {
  return Transfer(mFile, Seek64(pos), count, false, nullptr, buffer, TOV::kErrWriteFailed);
}

std::uint32_t CFilePortEx::Open(const unsigned short* path) {
  return OpenPortFile(mFile, path, Mode());
}

std::uint32_t CFilePortEx::Open(const char* path) { return OpenNarrow(*this, path); }

const unsigned short* CFilePortEx::Path() const { return PathOf(mFile); }

// --- CStaticRamFilePort ------------------------------------------------------

CStaticRamFilePort::CStaticRamFilePort(void* base, std::uint32_t size, AccessMode mode,
                                       unsigned char ownsResource)
    : CPort(mode, ownsResource), mBase(base), mSize(size) {}
CStaticRamFilePort::CStaticRamFilePort(const CStaticRamFilePort& other) = default;
CStaticRamFilePort& CStaticRamFilePort::operator=(const CStaticRamFilePort& other) = default;
CStaticRamFilePort::~CStaticRamFilePort() = default;

std::uint32_t CStaticRamFilePort::Size(std::uint32_t /*newSize*/) { return TOV::kSuccess; }
std::uint32_t CStaticRamFilePort::Size() const { return mSize; }
std::uint32_t CStaticRamFilePort::Close() { return TOV::kSuccess; }

std::uint32_t CStaticRamFilePort::Read(std::uint32_t pos, std::int32_t count, void* buffer) const {
  if (count > 0) {
    std::memmove(buffer, static_cast<const unsigned char*>(mBase) + pos,
                 static_cast<std::size_t>(count));
  }
  return TOV::kSuccess;
}

std::uint32_t CStaticRamFilePort::Write(std::uint32_t pos, std::int32_t count, const void* buffer) {
  if (count > 0) {
    std::memmove(static_cast<unsigned char*>(mBase) + pos, buffer, static_cast<std::size_t>(count));
  }
  return TOV::kSuccess;
}

}  // namespace Halyard
