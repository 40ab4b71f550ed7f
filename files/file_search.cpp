// File search by wildcard pattern (three calling forms) and the packed
// FileList block.
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "basalt/utf.h"
#include "files/files_internal.h"
#include "platform/fs.h"
#include "tovfoundation/files.h"

namespace {

namespace platform = tovimpl::platform;

// Runs `pattern` in `folder` for the list forms: enters the folder (ignoring a
// failure), calls sink(name) for each file entry, restores the directory.
template <class Sink>
void SearchFiles(const UTF16String& folder, const UTF16String& pattern, Sink&& sink) {
  const platform::Result<UTF16String> saved = platform::CurrentDirectory();
  (void)platform::ChangeDirectory(folder);
  tovimpl::files::ForEachListed(pattern, [&](const platform::ListingEntry& data) {
    if ((data.attributes & platform::kFileAttributeDirectory) == 0 && !data.name.empty()) {
      sink(data.name);
    }
    return true;
  });
  if (saved) (void)platform::ChangeDirectory(*saved);
}

// The packed form's worker. Names are library paths; see the header for the
// order and for why an interrupted search leaves the directory changed.
std::uint32_t SearchTree(const UTF16String& folder, const UTF16String& pattern, std::uint32_t flags,
                         std::vector<UTF16String>& names) {
  const platform::Result<UTF16String> saved = platform::CurrentDirectory();
  if (!platform::ChangeDirectory(folder)) return TOV::kErrPathNotFound;
  std::uint32_t status = 0;
  const bool finished =
      tovimpl::files::ForEachListed(pattern, [&](const platform::ListingEntry& data) {
        if (flags == 0 && (data.attributes & platform::kFileAttributeDirectory) != 0) {
          UTF16String sub = folder;
          sub.push_back('\\');
          sub += data.name;
          status = SearchTree(sub, pattern, 0, names);
          return static_cast<std::int32_t>(status) >= 0;
        }
        UTF16String entry = folder;
        if (entry.empty() || entry.back() != '\\') entry.push_back('\\');
        entry += data.name;
        names.push_back(std::move(entry));
        return true;
      });
  if (!finished) return status;  // interrupted: the directory stays changed
  if (saved) (void)platform::ChangeDirectory(*saved);
  return status;
}

std::size_t UnitLength(const unsigned short* text) {
  std::size_t n = 0;
  while (text[n] != 0) ++n;
  return n;
}

}  // namespace

namespace Halyard {

std::uint32_t VUtilsFindFilesFromName(std::vector<char*>& out, const char* folder,
                                      const char* pattern, IVServicesManager* /*services*/) {
  if (folder == nullptr || pattern == nullptr) return 0;
  std::string base = folder;
  if (!base.empty() && base.back() == '\\') base.pop_back();
  SearchFiles(tovimpl::files::NarrowToLibrary(base), tovimpl::files::NarrowToLibrary(pattern),
              [&](const UTF16String& name) {
                const std::string narrowName = tovimpl::files::LibraryToNarrow(name);
                char* entry = new char[narrowName.size() + 10 + base.size() + 1];
                std::string full = base + "\\" + narrowName;
                std::memcpy(entry, full.c_str(), full.size() + 1);
                out.push_back(entry);
              });
  return 0;
}

std::uint32_t VUtilsFindFilesFromName(std::vector<unsigned short*>& out,
                                      const unsigned short* folder, const unsigned short* pattern,
                                      IVServicesManager* /*services*/, bool fullPaths) {
  if (folder == nullptr || pattern == nullptr) return 0;
  UTF16String base(folder, UnitLength(folder));
  if (!base.empty() && base.back() == '\\') base.pop_back();
  SearchFiles(base, UTF16String(pattern, UnitLength(pattern)), [&](const UTF16String& name) {
    unsigned short* entry = new unsigned short[name.size() + 10 + base.size() + 1];
    UTF16String text = name;
    if (fullPaths) {
      text = base;
      text.push_back('\\');
      text += name;
    }
    std::memcpy(entry, text.c_str(), (text.size() + 1) * sizeof(unsigned short));
    out.push_back(entry);
  });
  return 0;
}

std::uint32_t VUtilsFindFilesFromName(const char* folder, const char* pattern, FileList* list,
                                      std::uint32_t* size, std::uint32_t flags) {
  if (size == nullptr) return 0;
  if (folder == nullptr || pattern == nullptr) return TOV::kErrPathNotFound;
  std::vector<UTF16String> found;
  const std::uint32_t status = SearchTree(tovimpl::files::NarrowToLibrary(folder),
                                          tovimpl::files::NarrowToLibrary(pattern), flags, found);
  if (status != 0) return status;
  std::vector<std::string> names;
  names.reserve(found.size());
  std::size_t total = 16 + sizeof(char*) * found.size();
  for (const auto& name : found) {
    names.push_back(tovimpl::files::LibraryToNarrow(name));
    total += names.back().size() + 1;
  }
  if (list != nullptr) {
    auto* block = reinterpret_cast<char*>(list);
    list->count = static_cast<std::uint32_t>(names.size());
    list->names = reinterpret_cast<char**>(block + 16);
    char* text = block + 16 + sizeof(char*) * names.size();
    for (std::size_t i = 0; i < names.size(); ++i) {
      list->names[i] = text;
      std::memcpy(text, names[i].c_str(), names[i].size() + 1);
      text += names[i].size() + 1;
    }
  }
  *size = static_cast<std::uint32_t>(total);
  return 0;
}

}  // namespace Halyard
