// Fuzzes the path text operations on random UTF-16 text (the input's bytes
// taken two at a time, little-endian): every split, compose, edit, root and
// long-path operation, wide and narrow, and the listing pattern matcher. Checks
// the invariants that hold for every input: the split pieces put back together
// give the path, RemovePathNormalization undoes ToNormalizedPath, editing
// never lengthens a path by more than one unit, IsNormalizedPath is false.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "basalt/utf.h"
#include "platform/fs.h"
#include "tovfoundation/files.h"

namespace PU = Halyard::PathUtilities;

namespace {
void Check(bool condition) {
  if (!condition) std::abort();
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  UTF16String path;
  for (std::size_t i = 0; i + 1 < size; i += 2) {
    const unsigned short unit = static_cast<unsigned short>(data[i] | (data[i + 1] << 8));
    if (unit == 0) continue;  // paths are NUL-terminated text
    path.push_back(unit);
  }

  std::vector<unsigned short> d(path.size() + 1), f(path.size() + 1), n(path.size() + 1),
      e(path.size() + 1);
  PU::SplitPath(path, d.data(), f.data(), n.data(), e.data());
  const UTF16String pieces =
      UTF16String(d.data()) + UTF16String(f.data()) + UTF16String(n.data()) + UTF16String(e.data());
  Check(pieces == path);
  Check(PU::TOVGetFileName(path) == UTF16String(n.data()) + UTF16String(e.data()));
  Check(PU::TOVGetFullFolderPath(path) == UTF16String(d.data()) + UTF16String(f.data()));
  (void)PU::TOVGetFolderName(path);
  const UTF16String root = PU::TOVGetRootOrVolume(path);
  Check(root.size() <= path.size());

  UTF16String edited = path;
  PU::AddTrailingslash(edited);
  Check(edited.size() <= path.size() + 1);
  edited = path;
  PU::RemoveTrailingslash(edited);
  Check(edited.size() + 1 >= path.size() && edited.size() <= path.size());
  edited = path;
  PU::RemoveExtension(edited);
  Check(edited.size() <= path.size());

  const UTF16String longForm = PU::ToNormalizedPath(path);
  const bool prefixed =
      path.size() >= 4 && path[0] == '\\' && path[1] == '\\' && path[2] == '?' && path[3] == '\\';
  // A relative path starting "UNC" reads back as a network path: "UNC\x" ⇒
  // "\\?\UNC\x" ⇒ "\\x". Every other path comes back unchanged.
  const bool uncLike = path.size() >= 3 && path[0] == 'U' && path[1] == 'N' && path[2] == 'C';
  if (!path.empty() && !prefixed && !uncLike) Check(PU::RemovePathNormalization(longForm) == path);
  (void)PU::RemovePathNormalization(path);
  Check(PU::IsNormalizedPath(path) == 0);
  Check(PU::IsAlias(path) == 0);
  (void)PU::ToPlatformPath(path);

  // Compose from the path split three ways.
  const std::size_t third = path.size() / 3;
  const UTF16String a = path.substr(0, third);
  const UTF16String b = path.substr(third, third);
  const UTF16String c = path.substr(2 * third);
  Check(PU::MakePath(a.c_str(), b.c_str(), c.c_str(), nullptr).size() <= 260);
  Check(PU::MakePath(nullptr, a.c_str(), b.c_str(), c.c_str()).size() <= 260);
  Check(PU::MakePath(nullptr, path.c_str(), nullptr, nullptr).size() <= 260);

  // The narrow forms on the UTF-8 spelling.
  const std::string narrow = basalt::UTF16to8(path);
  (void)Halyard::PathUtils::GetFolderName(narrow);
  (void)Halyard::PathUtils::GetRootOrVolume(narrow);
  (void)Halyard::PathUtils::RemoveExtension(narrow);
  (void)Halyard::PathUtils::RemoveTrailingslash(narrow);
  (void)Halyard::PathUtils::GetFileTitleW(narrow);

  // The listing's name matcher, the first half as pattern.
  (void)tovimpl::platform::MatchesPattern(path.substr(0, path.size() / 2),
                                      path.substr(path.size() / 2));
  return 0;
}
