// Win32 backend of the OS layer: memory between two inaccessible pages.
// Only code that works on every supported Windows version belongs here.
#include "platform/page_guard.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

GuardedPages::GuardedPages(std::size_t size) {
  SYSTEM_INFO info;
  ::GetSystemInfo(&info);
  const std::size_t page = info.dwPageSize;
  const std::size_t usable = (size + page - 1) / page * page;
  const std::size_t total = usable + 2 * page;
  void* mapping = ::VirtualAlloc(nullptr, total, MEM_RESERVE | MEM_COMMIT, PAGE_NOACCESS);
  if (mapping == nullptr) return;
  auto* first = static_cast<unsigned char*>(mapping) + page;
  DWORD previous = 0;
  if (usable != 0 && ::VirtualProtect(first, usable, PAGE_READWRITE, &previous) == 0) {
    ::VirtualFree(mapping, 0, MEM_RELEASE);
    return;
  }
  mMapping = mapping;
  mMappingSize = total;
  mBegin = first;
  mEnd = first + usable;
}

GuardedPages::~GuardedPages() {
  if (mMapping != nullptr) ::VirtualFree(mMapping, 0, MEM_RELEASE);
}

}  // namespace tovimpl::platform
