#include "common/temp_tree.h"

#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "basalt/utf.h"

namespace tovtest {

namespace {

namespace fs = std::filesystem;

// Gives the owner full access to `folder` and every folder below it, so that
// removal cannot stop at a folder a test made read-only or unreadable.
void OpenUp(const fs::path& folder) {
  std::error_code ignored;
  fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ignored);
  for (fs::directory_iterator it(folder, ignored), end; !ignored && it != end;
       it.increment(ignored)) {
    if (it->symlink_status(ignored).type() == fs::file_type::directory) OpenUp(it->path());
  }
}

}  // namespace

TempTree::TempTree(const std::string& prefix) {
  const char* tmp = std::getenv("TMPDIR");
  const std::string base = (tmp != nullptr && tmp[0] != 0) ? tmp : TOV_TEST_BINARY_DIR;
  const std::string pattern = base + "/" + prefix + "-XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back(0);
  if (::mkdtemp(buffer.data()) == nullptr) throw std::runtime_error("mkdtemp failed: " + pattern);
  // Forward slashes on every platform, so native paths built by appending
  // "/name" stay in one spelling.
  mNative = fs::canonical(buffer.data()).generic_string();
}

TempTree::~TempTree() {
  std::error_code ignored;
  OpenUp(mNative);
  fs::remove_all(mNative, ignored);
}

UTF16String LibraryPath(const std::string& native) {
  UTF16String out = basalt::UTF8to16(native);
  for (auto& unit : out) {
    if (unit == '/') unit = '\\';
  }
  return out;
}

}  // namespace tovtest
