// Win32 backend of the OS layer: globally unique identifiers.
// Only code that works on every supported Windows version belongs here.
#include <atomic>
#include <cstring>

#include "platform/error.h"
#include "platform/guid.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

namespace {
std::atomic<RandomSource> gRandomSource{nullptr};
}  // namespace

std::int32_t CoCreateGuid(Guid* guid) {
  if (guid == nullptr) {
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return kEPointer;
  }
  const RandomSource source = gRandomSource.load();
  if (source == nullptr) {
    GUID made{};
    const HRESULT result = ::CoCreateGuid(&made);
    if (FAILED(result)) {
      win32::KeepFailureCode();
      return static_cast<std::int32_t>(result);
    }
    guid->Data1 = made.Data1;
    guid->Data2 = made.Data2;
    guid->Data3 = made.Data3;
    std::memcpy(guid->Data4, made.Data4, sizeof guid->Data4);
    return kSOk;
  }
  // The test seam: the same version-4 layout from the given bytes.
  unsigned char bytes[16];
  if (!source(bytes, sizeof bytes)) {
    win32::KeepFailureCode();
    return kEFail;
  }
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0Fu) | 0x40u);
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3Fu) | 0x80u);
  guid->Data1 = (std::uint32_t{bytes[0]} << 24) | (std::uint32_t{bytes[1]} << 16) |
                (std::uint32_t{bytes[2]} << 8) | bytes[3];
  guid->Data2 = static_cast<std::uint16_t>((bytes[4] << 8) | bytes[5]);
  guid->Data3 = static_cast<std::uint16_t>((bytes[6] << 8) | bytes[7]);
  std::memcpy(guid->Data4, bytes + 8, 8);
  return kSOk;
}

void SetRandomSourceForTesting(RandomSource source) { gRandomSource.store(source); }

}  // namespace tovimpl::platform
