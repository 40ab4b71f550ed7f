// OS layer, shared by both backends: the file-name pattern matcher of the
// folder listing, with the file system's own rules, and the free-space test
// seam in front of the backends' SystemFreeSpace.
#include "platform/fs.h"

#include <cstddef>
#include <cstdint>

#include "platform/fs_backend.h"

namespace tovimpl::platform {

namespace {

// Case folding of the name matcher, independent of the locale as on
// Windows: ASCII, Latin-1, Latin Extended-A, Greek and Cyrillic capitals.
unsigned short FoldCase(unsigned short unit) {
  if (unit < 0x80)
    return (unit >= 'A' && unit <= 'Z') ? static_cast<unsigned short>(unit + 32) : unit;
  if ((unit >= 0xC0 && unit <= 0xDE && unit != 0xD7) ||
      (unit >= 0x391 && unit <= 0x3AB && unit != 0x3A2) || (unit >= 0x410 && unit <= 0x42F)) {
    return static_cast<unsigned short>(unit + 0x20);
  }
  if (unit >= 0x400 && unit <= 0x40F) return static_cast<unsigned short>(unit + 0x50);
  if (unit >= 0x100 && unit <= 0x137 && (unit & 1) == 0)
    return static_cast<unsigned short>(unit + 1);
  if (unit >= 0x139 && unit <= 0x148 && (unit & 1) == 1)
    return static_cast<unsigned short>(unit + 1);
  if (unit >= 0x14A && unit <= 0x177 && (unit & 1) == 0)
    return static_cast<unsigned short>(unit + 1);
  return unit;
}

bool Glob(const unsigned short* p, std::size_t pn, const unsigned short* s, std::size_t sn) {
  std::size_t pi = 0, si = 0, starP = SIZE_MAX, starS = 0;
  while (si < sn) {
    if (pi < pn && (p[pi] == '?' || FoldCase(p[pi]) == FoldCase(s[si]))) {
      ++pi;
      ++si;
    } else if (pi < pn && p[pi] == '*') {
      starP = pi++;
      starS = si;
    } else if (starP != SIZE_MAX) {
      pi = starP + 1;
      si = ++starS;
    } else {
      return false;
    }
  }
  while (pi < pn && p[pi] == '*') ++pi;
  return pi == pn;
}

}  // namespace

bool MatchesPattern(const UTF16String& pattern, const UTF16String& name) {
  if (Glob(pattern.data(), pattern.size(), name.data(), name.size())) return true;
  const bool nameHasDot = name.find('.') != UTF16String::npos;
  const std::size_t n = pattern.size();
  // "x.*" also matches "x"; "*.*" therefore matches every name.
  if (n >= 2 && pattern[n - 2] == '.' && pattern[n - 1] == '*') {
    if (Glob(pattern.data(), n - 2, name.data(), name.size())) return true;
  }
  // "x." matches "x" (a name without an extension).
  if (n >= 2 && pattern[n - 1] == '.' && !nameHasDot) {
    if (Glob(pattern.data(), n - 1, name.data(), name.size())) return true;
  }
  return false;
}

namespace {
FreeSpaceAnswer gFreeSpaceAnswer = nullptr;
}  // namespace

void SetFreeSpaceAnswerForTesting(FreeSpaceAnswer answer) { gFreeSpaceAnswer = answer; }

Result<std::uint64_t> FreeSpace(const UTF16String& path) {
  if (gFreeSpaceAnswer != nullptr) return gFreeSpaceAnswer(path);
  return SystemFreeSpace(path);
}

}  // namespace tovimpl::platform
