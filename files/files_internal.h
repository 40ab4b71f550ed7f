// Helpers shared by the files subsystem's sources.
#pragma once

#include <string>

#include "basalt/strings.h"
#include "platform/fs.h"
#include "tovfoundation/files.h"

namespace tovimpl::files {

// UTF-16 text reduced to narrow text in the thread's multibyte locale; a
// character the locale cannot hold becomes '?' (U+0080–U+00FF become one byte
// in single-byte locales).
std::string ReduceToNarrow(std::u16string_view text);
// Narrow text in the system code page (UTF-8 on POSIX) as a library path.
UTF16String NarrowToLibrary(const std::string& text);
// A library path as narrow text in the system code page.
std::string LibraryToNarrow(const UTF16String& text);

// Shell answers on a library path.
bool PathFileExists(const UTF16String& path);
bool PathIsDirectory(const UTF16String& path);

// Creates a new empty file, exclusively, with write access and sharing for
// reading; true when made.
bool CreateNewEmptyFile(const UTF16String& path);

// Lists `pattern` (platform::OpenListing), calling visit(entry) for each entry
// in file-system order, "." and ".." skipped, until visit returns false; then
// closes the listing. False when the visit stopped it; nothing happens when
// the pattern cannot be listed.
template <class Visit>
bool ForEachListed(const UTF16String& pattern, Visit&& visit) {
  namespace platform = tovimpl::platform;
  platform::ListingEntry data{};
  const platform::ListingHandle handle = platform::OpenListing(pattern, &data).ValueOr(nullptr);
  if (handle == nullptr) return true;
  bool finished = true;
  do {
    const UTF16String& name = data.name;
    const bool dotEntry = (name.size() == 1 && name[0] == '.') ||
                          (name.size() == 2 && name[0] == '.' && name[1] == '.');
    if (dotEntry) continue;
    if (!visit(data)) {
      finished = false;
      break;
    }
  } while (platform::NextListingEntry(handle, &data));
  platform::CloseListing(handle);
  return finished;
}

}  // namespace tovimpl::files
