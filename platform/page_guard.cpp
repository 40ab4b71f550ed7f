// OS layer, shared by both backends: the layout of GuardedPages (the usable
// pages between two inaccessible ones) over the backends' page primitives.
#include "platform/page_guard.h"

#include "platform/page_guard_backend.h"

namespace tovimpl::platform {

GuardedPages::GuardedPages(std::size_t size) {
  const std::size_t page = SystemPageSize();
  const std::size_t usable = (size + page - 1) / page * page;
  const std::size_t total = usable + 2 * page;
  void* mapping = ReserveNoAccess(total);
  if (mapping == nullptr) return;
  auto* first = static_cast<unsigned char*>(mapping) + page;
  if (usable != 0 && !AllowReadWrite(first, usable)) {
    ReleaseReserved(mapping, total);
    return;
  }
  mMapping = mapping;
  mMappingSize = total;
  mBegin = first;
  mEnd = first + usable;
}

GuardedPages::~GuardedPages() {
  if (mMapping != nullptr) ReleaseReserved(mMapping, mMappingSize);
}

}  // namespace tovimpl::platform
