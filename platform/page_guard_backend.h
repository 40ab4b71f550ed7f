// OS layer: what each backend provides behind the portable part of
// page_guard.h (platform/page_guard.cpp). Not for use outside platform/.
#pragma once

#include <cstddef>

namespace tovimpl::platform {

// The size of a page of virtual memory.
std::size_t SystemPageSize();
// `total` bytes of fresh address space, none of it accessible; null when the
// system refused.
void* ReserveNoAccess(std::size_t total);
// Makes `size` bytes from `first` (inside a reservation) readable and writable;
// false when the system refused.
bool AllowReadWrite(void* first, std::size_t size);
// Gives back a whole reservation of `total` bytes that starts at `mapping`.
void ReleaseReserved(void* mapping, std::size_t total);

}  // namespace tovimpl::platform
