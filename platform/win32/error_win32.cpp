// Win32 backend of the OS layer: the thread's last-error slot.
// Only code that works on every supported Windows version belongs here.
#include <cstdint>

#include "platform/error.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

// The library's codes are the system's own, so the slot is the system's.
std::uint32_t GetLastError() { return static_cast<std::uint32_t>(::GetLastError()); }
void SetLastError(std::uint32_t code) { ::SetLastError(static_cast<DWORD>(code)); }

}  // namespace tovimpl::platform
