// POSIX backend of the OS layer: memory between two inaccessible pages.
// Only code that works on every POSIX system the library supports belongs here.
#include <sys/mman.h>
#include <unistd.h>

#include "platform/page_guard.h"

namespace tovimpl::platform {

GuardedPages::GuardedPages(std::size_t size) {
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  const std::size_t usable = (size + page - 1) / page * page;
  const std::size_t total = usable + 2 * page;
  void* mapping = ::mmap(nullptr, total, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapping == MAP_FAILED) return;
  auto* first = static_cast<unsigned char*>(mapping) + page;
  if (usable != 0 && ::mprotect(first, usable, PROT_READ | PROT_WRITE) != 0) {
    ::munmap(mapping, total);
    return;
  }
  mMapping = mapping;
  mMappingSize = total;
  mBegin = first;
  mEnd = first + usable;
}

GuardedPages::~GuardedPages() {
  if (mMapping != nullptr) ::munmap(mMapping, mMappingSize);
}

}  // namespace tovimpl::platform
