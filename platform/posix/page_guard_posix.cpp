// POSIX backend of the OS layer: the page primitives behind GuardedPages.
// Only code that works on every POSIX system the library supports belongs here.
#include <sys/mman.h>
#include <unistd.h>

#include "platform/page_guard_backend.h"

namespace tovimpl::platform {

std::size_t SystemPageSize() { return static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)); }

void* ReserveNoAccess(std::size_t total) {
  void* mapping = ::mmap(nullptr, total, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return mapping == MAP_FAILED ? nullptr : mapping;
}

bool AllowReadWrite(void* first, std::size_t size) {
  return ::mprotect(first, size, PROT_READ | PROT_WRITE) == 0;
}

void ReleaseReserved(void* mapping, std::size_t total) { ::munmap(mapping, total); }

}  // namespace tovimpl::platform
