// The path dialect check: every path of the files suite's table goes through
// the library's portable path functions and through the system's own
// (_wsplitpath, _wmakepath, PathRemoveBackslashW, PathStripToRootW,
// PathStripPathW, PathRemoveExtensionW), and every difference is reported.
//
// Under Wine the system's functions are themselves a reimplementation. Where
// a row disagrees and Windows' documented behaviour sides with the library,
// the row is listed in kWineDeviations below (and in docs/windows.md): it is
// still printed, but does not fail the check.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "basalt/strings.h"
#include "basalt/utf.h"
#include "tovfoundation/files.h"

// The system's declarations, without <windows.h> (its macros would rename
// the library's functions).
extern "C" __declspec(dllimport) wchar_t* __stdcall PathRemoveBackslashW(wchar_t* path);
extern "C" __declspec(dllimport) int __stdcall PathStripToRootW(wchar_t* path);
extern "C" __declspec(dllimport) void __stdcall PathStripPathW(wchar_t* path);
extern "C" __declspec(dllimport) void __stdcall PathRemoveExtensionW(wchar_t* path);

namespace PU = Halyard::PathUtilities;

namespace {

struct Row {
  int line;
  std::string path;
};

std::vector<Row> LoadPaths() {
  std::ifstream in(std::string(TOV_TEST_SOURCE_DIR) + "/files/data/paths.tsv");
  std::vector<Row> rows;
  std::string line;
  int number = 0;
  bool header = true;
  while (std::getline(in, line)) {
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty() && line[0] == '#') continue;
    if (header) {
      header = false;
      continue;
    }
    rows.push_back({number, line.substr(0, line.find('\t'))});
  }
  return rows;
}

std::wstring W(const UTF16String& text) {
  return std::wstring(reinterpret_cast<const wchar_t*>(text.c_str()), text.size());
}
UTF16String U(const std::wstring& text) {
  return UTF16String(reinterpret_cast<const unsigned short*>(text.c_str()), text.size());
}
UTF16String U(const wchar_t* text) { return U(std::wstring(text)); }
std::string Show(const UTF16String& text) { return "\"" + basalt::UTF16to8(text) + "\""; }

// The system's answers, each on a copy of (length + 1) units, as the library
// sizes its own scratch buffers.
struct SystemSplit {
  UTF16String drive, folder, name, ext;
};
SystemSplit SystemSplitPath(const UTF16String& path) {
  const std::size_t size = path.size() + 1;
  std::wstring drive(size + 3, L'\0'), dir(size, L'\0'), name(size, L'\0'), ext(size, L'\0');
  ::_wsplitpath(W(path).c_str(), drive.data(), dir.data(), name.data(), ext.data());
  return {U(drive.c_str()), U(dir.c_str()), U(name.c_str()), U(ext.c_str())};
}
UTF16String SystemRemoveBackslash(const UTF16String& path) {
  std::wstring copy = W(path);
  copy.push_back(L'\0');
  PathRemoveBackslashW(copy.data());
  return U(copy.c_str());
}
UTF16String SystemRoot(const UTF16String& path) {
  std::wstring copy = W(path);
  copy.push_back(L'\0');
  return PathStripToRootW(copy.data()) ? U(copy.c_str()) : UTF16String();
}
UTF16String SystemFolderName(const UTF16String& folder) {
  std::wstring copy = W(folder);
  copy.push_back(L'\0');
  PathRemoveBackslashW(copy.data());
  PathStripPathW(copy.data());
  return U(copy.c_str());
}
UTF16String SystemRemoveExtension(const UTF16String& path) {
  if (path.empty()) return path;
  std::wstring copy = W(path);
  copy.push_back(L'\0');
  PathRemoveExtensionW(copy.data());
  return U(copy.c_str());
}
UTF16String SystemMakePath(const SystemSplit& parts) {
  wchar_t buffer[261 * 4] = {};
  ::_wmakepath(buffer, W(parts.drive).c_str(), W(parts.folder).c_str(), W(parts.name).c_str(),
               W(parts.ext).c_str());
  return U(buffer);
}

// Rows where Wine's function departs from Windows' documented behaviour and
// the library follows Windows: (function, path as UTF-8).
//   - PathStripToRootW on "\\?\C:..." : Windows takes "\\" followed by a
//     server and a share name as a root, so "\\?\C:" is one; Wine's function
//     gives up on the "\\?\" prefix and answers failure.
//   - PathStripToRootW on "::\a": Windows' drive rule looks only at the ":\"
//     after the first character, so "::\" is a root; Wine answers failure.
const std::set<std::pair<std::string, std::string>> kWineDeviations = {
    {"PathStripToRootW", R"(\\?\C:\x)"},
    {"PathStripToRootW", R"(\\?\C:\)"},
    {"PathStripToRootW", R"(\\?\C:\x\y.z)"},
    {"PathStripToRootW", R"(::\a)"},
};

}  // namespace

TEST(PathDialect, PortableFunctionsAgreeWithTheSystemsOwn) {
  const auto rows = LoadPaths();
  ASSERT_GE(rows.size(), 100u);
  int differences = 0;
  int tolerated = 0;
  for (const Row& row : rows) {
    const UTF16String path = basalt::UTF8to16(row.path);
    auto compare = [&](const char* function, const UTF16String& ours, const UTF16String& system) {
      if (ours == system) return;
      const bool known = kWineDeviations.count({function, row.path}) != 0;
      std::printf("paths.tsv line %d %s(%s): library %s, system %s%s\n", row.line, function,
                  Show(path).c_str(), Show(ours).c_str(), Show(system).c_str(),
                  known ? " (known Wine deviation)" : "");
      if (known) {
        ++tolerated;
      } else {
        ++differences;
        ADD_FAILURE() << "paths.tsv line " << row.line << " " << function << "(" << Show(path)
                      << "): library " << Show(ours) << ", system " << Show(system);
      }
    };

    std::vector<unsigned short> drive(path.size() + 4), folder(path.size() + 1),
        name(path.size() + 1), ext(path.size() + 1);
    PU::SplitPath(path, drive.data(), folder.data(), name.data(), ext.data());
    const SystemSplit system = SystemSplitPath(path);
    compare("_wsplitpath drive", UTF16String(drive.data()), system.drive);
    compare("_wsplitpath dir", UTF16String(folder.data()), system.folder);
    compare("_wsplitpath fname", UTF16String(name.data()), system.name);
    compare("_wsplitpath ext", UTF16String(ext.data()), system.ext);

    UTF16String trimmed = path;
    PU::RemoveTrailingslash(trimmed);
    compare("PathRemoveBackslashW", trimmed, SystemRemoveBackslash(path));

    compare("PathStripToRootW", PU::TOVGetRootOrVolume(path), SystemRoot(path));
    compare("PathStripPathW", PU::TOVGetFolderName(path), SystemFolderName(system.folder));

    UTF16String stem = path;
    PU::RemoveExtension(stem);
    compare("PathRemoveExtensionW", stem, SystemRemoveExtension(path));

    compare("_wmakepath",
            PU::MakePath(system.drive.c_str(), system.folder.c_str(), system.name.c_str(),
                         system.ext.c_str()),
            SystemMakePath(system));
  }
  std::printf("%zu paths: %d differences, %d known Wine deviations\n", rows.size(), differences,
              tolerated);
}
