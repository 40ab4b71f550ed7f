// Ports: the port bases, the file ports over the OS layer's file handles, the
// RAM port, and the factories.
#include <atomic>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <new>
#include <utility>

#include "platform/error.h"
#include "platform/file.h"
#include "tovfoundation/streams.h"

namespace Halyard {
namespace detail {

// The path and handle of a file port. Copies of a port share one record; the
// count says how many ports hold it.
struct FilePortFile {
  explicit FilePortFile(const unsigned short* text) : path(text) {}
  std::atomic<std::uint32_t> refs{1};
  UTF16String path;
  tovimpl::platform::FileHandle handle;
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

// The long-path form of a path: "\\?\" is put in front, "\\server\share"
// becomes "\\?\UNC\server\share", a path that already has the prefix stays.
UTF16String LongPathForm(UTF16StringView path) {
  static constexpr unsigned short kPrefix[] = {'\\', '\\', '?', '\\'};
  const UTF16StringView prefix(kPrefix, 4);
  if (path.substr(0, 4) == prefix) return UTF16String(path);
  UTF16String out(prefix);
  if (path.size() >= 2 && path[0] == '\\' && path[1] == '\\') {
    static constexpr unsigned short kUnc[] = {'U', 'N', 'C'};
    out.append(kUnc, 3);
    out.append(path.substr(1));
  } else {
    out.append(path);
  }
  return out;
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

// Opens `path` for a file port of `mode` (kAccessWrite: create or truncate,
// kAccessReadWrite: open or create, anything else: read an existing file).
// Every mode shares reading and never writing.
platform::FileHandle OpenForMode(const UTF16String& path, AccessMode mode) {
  const UTF16String target = LongPathForm(path);
  if (mode == kAccessWrite || mode == kAccessReadWrite) {
    return platform::CreateFile(
        target, platform::kGenericRead | platform::kGenericWrite, platform::kFileShareRead,
        mode == kAccessWrite ? platform::kCreateAlways : platform::kOpenAlways,
        platform::kFileFlagRandomAccess);
  }
  return platform::CreateFile(target, platform::kGenericRead, platform::kFileShareRead,
                              platform::kOpenExisting, platform::kFileFlagSequentialScan);
}

// The shared Open of both file ports: replaces the record, opens, stores the handle.
std::uint32_t OpenFile(FilePortFile*& file, const unsigned short* path, AccessMode mode) {
  if (path == nullptr) return TOV::kErrInvalidArgument;
  try {
    auto* fresh = new FilePortFile(path);
    Drop(file);  // a handle still open is left open, deliberately
    file = fresh;
    file->handle = OpenForMode(file->path, mode);
    if (file->handle.IsInvalid()) {
      return platform::GetLastError() != 0 ? TOV::kErrOpenFailed : TOV::kSuccess;
    }
    return TOV::kSuccess;
  } catch (...) {
    return TOV::kErrOpenFailed;
  }
}

std::uint32_t CloseFile(FilePortFile* file) {
  if (file == nullptr || file->handle.IsNull()) return TOV::kSuccess;
  try {
    platform::CloseHandle(file->handle);
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
      platform::CloseHandle(file->handle);
      file->handle = platform::FileHandle();
    }
    if (ownsResource != 0) platform::DeleteFile(file->path);
  } catch (...) {
  }
  Drop(std::exchange(file, nullptr));
}

// Reads or writes `count` bytes after a seek whose failure is remembered but
// does not stop the transfer. `failure` is the operation's own code.
template <class Seek>
std::uint32_t Transfer(platform::FileHandle handle, Seek seek, std::int32_t count, bool reading,
                       void* readTo, const void* writeFrom, std::uint32_t failure) {
  try {
    std::uint32_t result = TOV::kSuccess;
    if (!seek(handle) && platform::GetLastError() != 0) result = failure;
    const std::uint32_t amount = count < 0 ? 0u : static_cast<std::uint32_t>(count);
    std::uint32_t done = 0;
    const bool ok = reading ? platform::ReadFile(handle, readTo, amount, &done)
                            : platform::WriteFile(handle, writeFrom, amount, &done);
    if (!ok) {
      result = platform::GetLastError() != 0 ? failure : TOV::kSuccess;
    } else if (reading && done == 0 && count != 0) {
      result = failure;  // nothing left at this position
    }
    return result;
  } catch (...) {
    return failure;
  }
}

// The seek of the 32-bit port: no high part, so 2^31 and more is a negative distance.
auto Seek32(std::uint32_t pos) {
  return [pos](platform::FileHandle handle) {
    return platform::SetFilePointer(handle, static_cast<std::int32_t>(pos), nullptr,
                                    platform::kFileBegin) != platform::kInvalidSetFilePointer;
  };
}

// The seek of the 64-bit port: the high 32 bits go with it.
auto Seek64(std::uint64_t pos) {
  return [pos](platform::FileHandle handle) {
    auto high = static_cast<std::int32_t>(static_cast<std::uint32_t>(pos >> 32));
    return platform::SetFilePointer(
               handle, static_cast<std::int32_t>(static_cast<std::uint32_t>(pos)), &high,
               platform::kFileBegin) != platform::kInvalidSetFilePointer;
  };
}

template <class Seek>
std::uint32_t SetSize(platform::FileHandle handle, Seek seek, std::uint32_t success) {
  try {
    if (!seek(handle) && platform::GetLastError() != 0) return TOV::kErrSetSizeFailed;
    if (!platform::SetEndOfFile(handle) && platform::GetLastError() != 0) {
      return TOV::kErrSetSizeFailed;
    }
    return success;
  } catch (...) {
    return TOV::kErrSetSizeFailed;
  }
}

template <class Port>
CVAutoPtr<Port> MakeFilePort(Port* port, std::uint32_t status) {
  if (status == TOV::kSuccess) return CVAutoPtr<Port>(port, true);
  delete port;
  return CVAutoPtr<Port>();
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
  try {
    auto* port = new CFilePort(mode, 0);
    return MakeFilePort<CPort>(port, port->Open(path));
  } catch (...) {
    return CVAutoPtr<CPort>();
  }
}

CVAutoPtr<CPort> CPort::FilePort(const unsigned short* path, AccessMode mode) {
  try {
    auto* port = new CFilePort(mode, 0);
    return MakeFilePort<CPort>(port, port->Open(path));
  } catch (...) {
    return CVAutoPtr<CPort>();
  }
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
  try {
    auto* port = new CFilePortEx(mode, 0);
    return MakeFilePort<CPortEx>(port, port->Open(path));
  } catch (...) {
    return CVAutoPtr<CPortEx>();
  }
}

CVAutoPtr<CPortEx> CPortEx::FilePort(const unsigned short* path, AccessMode mode) {
  try {
    auto* port = new CFilePortEx(mode, 0);
    return MakeFilePort<CPortEx>(port, port->Open(path));
  } catch (...) {
    return CVAutoPtr<CPortEx>();
  }
}

// --- CFilePort ---------------------------------------------------------------

CFilePort::CFilePort(AccessMode mode, unsigned char ownsResource) : CPort(mode, ownsResource) {}

CFilePort::CFilePort(const CFilePort& other) : CPort(other), mFile(other.mFile) { Retain(mFile); }

CFilePort& CFilePort::operator=(const CFilePort& other) {
  if (this != &other) {
    CPort::operator=(other);
    Retain(other.mFile);
    Drop(std::exchange(mFile, other.mFile));
  }
  return *this;
}

CFilePort::~CFilePort() { DestroyFile(mFile, OwnsResource()); }

std::uint32_t CFilePort::Size(std::uint32_t newSize) {
  return SetSize(HandleOf(mFile), Seek32(newSize), newSize);
}

std::uint32_t CFilePort::Size() const {
  try {
    const platform::FileHandle handle = HandleOf(mFile);
    if (!handle.IsOpen()) return 0;
    const std::uint32_t size = platform::GetFileSize(handle, nullptr);
    return size == platform::kInvalidFileSize ? 0 : size;
  } catch (...) {
    return 0;
  }
}

std::uint32_t CFilePort::Close() { return CloseFile(mFile); }

std::uint32_t CFilePort::Read(std::uint32_t pos, std::int32_t count, void* buffer) const {
  return Transfer(HandleOf(mFile), Seek32(pos), count, true, buffer, nullptr, TOV::kErrReadFailed);
}

std::uint32_t CFilePort::Write(std::uint32_t pos, std::int32_t count, const void* buffer) {
  return Transfer(HandleOf(mFile), Seek32(pos), count, false, nullptr, buffer,
                  TOV::kErrWriteFailed);
}

std::uint32_t CFilePort::Open(const unsigned short* path) { return OpenFile(mFile, path, Mode()); }

std::uint32_t CFilePort::Open(const char* path) {
  if (path == nullptr) return TOV::kErrInvalidArgument;
  try {
    UTF16String wide;
    if (!WidenPath(path, wide)) return TOV::kErrOpenFailed;
    return Open(wide.c_str());
  } catch (...) {
    return TOV::kErrOpenFailed;
  }
}

const unsigned short* CFilePort::Path() const {
  return mFile == nullptr ? nullptr : mFile->path.c_str();
}

// --- CFilePortEx -------------------------------------------------------------

CFilePortEx::CFilePortEx(AccessMode mode, unsigned char ownsResource)
    : CPortEx(mode, ownsResource) {}

CFilePortEx::CFilePortEx(const CFilePortEx& other) : CPortEx(other), mFile(other.mFile) {
  Retain(mFile);
}

CFilePortEx& CFilePortEx::operator=(const CFilePortEx& other) {
  if (this != &other) {
    CPortEx::operator=(other);
    Retain(other.mFile);
    Drop(std::exchange(mFile, other.mFile));
  }
  return *this;
}

CFilePortEx::~CFilePortEx() { DestroyFile(mFile, OwnsResource()); }

std::uint32_t CFilePortEx::Size(std::uint64_t newSize) {
  return SetSize(HandleOf(mFile), Seek64(newSize), static_cast<std::uint32_t>(newSize));
}

std::uint64_t CFilePortEx::Size() const {
  try {
    const platform::FileHandle handle = HandleOf(mFile);
    std::int64_t size = 0;
    // Asked twice, the first answer discarded: harmless, and kept.
    platform::GetFileSizeEx(handle, &size);
    if (!platform::GetFileSizeEx(handle, &size)) return 0;
    return static_cast<std::uint64_t>(size);
  } catch (...) {
    return 0;
  }
}

std::uint32_t CFilePortEx::Close() { return CloseFile(mFile); }

std::uint32_t CFilePortEx::Read(std::uint64_t pos, std::int32_t count, void* buffer) const {
  return Transfer(HandleOf(mFile), Seek64(pos), count, true, buffer, nullptr, TOV::kErrReadFailed);
}

std::uint32_t CFilePortEx::Write(std::uint64_t pos, std::int32_t count, const void* buffer) {
  return Transfer(HandleOf(mFile), Seek64(pos), count, false, nullptr, buffer,
                  TOV::kErrWriteFailed);
}

std::uint32_t CFilePortEx::Open(const unsigned short* path) {
  return OpenFile(mFile, path, Mode());
}

std::uint32_t CFilePortEx::Open(const char* path) {
  if (path == nullptr) return TOV::kErrInvalidArgument;
  try {
    UTF16String wide;
    if (!WidenPath(path, wide)) return TOV::kErrOpenFailed;
    return Open(wide.c_str());
  } catch (...) {
    return TOV::kErrOpenFailed;
  }
}

const unsigned short* CFilePortEx::Path() const {
  return mFile == nullptr ? nullptr : mFile->path.c_str();
}

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
