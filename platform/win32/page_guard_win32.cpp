// Win32 backend of the OS layer: the page primitives behind GuardedPages.
// Only code that works on every supported Windows version belongs here.
#include "platform/page_guard_backend.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

std::size_t SystemPageSize() {
  SYSTEM_INFO info;
  ::GetSystemInfo(&info);
  return info.dwPageSize;
}

void* ReserveNoAccess(std::size_t total) {
  return ::VirtualAlloc(nullptr, total, MEM_RESERVE | MEM_COMMIT, PAGE_NOACCESS);
}

bool AllowReadWrite(void* first, std::size_t size) {
  DWORD previous = 0;
  return ::VirtualProtect(first, size, PAGE_READWRITE, &previous) != 0;
}

// The whole reservation goes at once, as VirtualFree with MEM_RELEASE takes it.
void ReleaseReserved(void* mapping, std::size_t /*total*/) {
  ::VirtualFree(mapping, 0, MEM_RELEASE);
}

}  // namespace tovimpl::platform
