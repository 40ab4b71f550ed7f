// OS layer: memory between two inaccessible pages.
//
// Tests use it to prove that code reads nothing outside its input: text placed
// so that it ends at end() (or starts at begin()) makes any read beyond it
// fault at once.
//
//   tovimpl::platform::GuardedPages pages(2 * 4096);
//   unsigned char* text = pages.end() - length;   // the next byte faults
//
// POSIX: mmap and mprotect(PROT_NONE); Windows: VirtualAlloc and
// VirtualProtect(PAGE_NOACCESS).
#pragma once

#include <cstddef>

namespace tovimpl::platform {

class GuardedPages {
 public:
  // At least `size` readable and writable bytes (rounded up to whole pages)
  // with an inaccessible page on each side. ok() is false when the system
  // refused.
  explicit GuardedPages(std::size_t size);
  ~GuardedPages();
  GuardedPages(const GuardedPages&) = delete;
  GuardedPages& operator=(const GuardedPages&) = delete;

  bool ok() const { return mBegin != nullptr; }
  // The first usable byte, right after the first inaccessible page.
  unsigned char* begin() const { return mBegin; }
  // The first byte of the second inaccessible page.
  unsigned char* end() const { return mEnd; }

 private:
  void* mMapping = nullptr;
  std::size_t mMappingSize = 0;
  unsigned char* mBegin = nullptr;
  unsigned char* mEnd = nullptr;
};

}  // namespace tovimpl::platform
