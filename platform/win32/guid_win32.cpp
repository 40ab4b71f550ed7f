// Win32 backend of the OS layer: globally unique identifiers.
// Needs CoCreateGuid (ole32), present on every supported Windows version.
#include <cstring>

#include "platform/error.h"
#include "platform/guid.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

Result<Guid> SystemGuid() {
  GUID made{};
  const HRESULT result = ::CoCreateGuid(&made);
  if (FAILED(result)) {
    // An HRESULT that wraps a Windows error gives that error.
    const bool wrapsError = HRESULT_FACILITY(result) == FACILITY_WIN32;
    return Status::Failure(wrapsError ? static_cast<std::uint32_t>(HRESULT_CODE(result))
                                      : kErrorGenFailure);
  }
  Guid guid{};
  guid.Data1 = made.Data1;
  guid.Data2 = made.Data2;
  guid.Data3 = made.Data3;
  std::memcpy(guid.Data4, made.Data4, sizeof guid.Data4);
  return guid;
}

}  // namespace tovimpl::platform
