#include "common/temp_tree.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <system_error>

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

// Six letters or digits, different in every call of every process.
std::string RandomSuffix() {
  static thread_local std::mt19937_64 generator = [] {
    std::random_device device;
    const auto now = std::chrono::high_resolution_clock::now().time_since_epoch().count();
    return std::mt19937_64(device() ^ static_cast<std::uint64_t>(now));
  }();
  static const char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
  std::string suffix(6, 'a');
  for (char& c : suffix) c = kLetters[generator() % 36];
  return suffix;
}

}  // namespace

TempTree::TempTree(const std::string& prefix) {
  const char* tmp = std::getenv("TMPDIR");
  const std::string base = (tmp != nullptr && tmp[0] != 0) ? tmp : TOV_TEST_BINARY_DIR;
  // create_directory answers false for a folder that is already there, so
  // two objects (or two processes) never share one.
  for (int attempt = 0; attempt < 100; ++attempt) {
    const fs::path candidate = fs::path(base) / (prefix + "-" + RandomSuffix());
    std::error_code error;
    if (fs::create_directory(candidate, error)) {
      // Forward slashes on every platform, so native paths built by
      // appending "/name" stay in one spelling.
      mNative = fs::canonical(candidate).generic_string();
      return;
    }
    if (error) throw std::runtime_error("cannot make a folder in " + base + ": " + error.message());
  }
  throw std::runtime_error("no fresh folder name in " + base);
}

TempTree::~TempTree() {
  std::error_code ignored;
  OpenUp(mNative);
  fs::remove_all(mNative, ignored);
}

UTF16String TempTree::Lib() const { return LibraryPath(mNative); }
UTF16String TempTree::Lib(const std::string& relative) const {
  return LibraryPath(NativeOf(relative));
}

UTF16String LibraryPath(const std::string& native) {
  UTF16String out = basalt::UTF8to16(native);
  for (auto& unit : out) {
    if (unit == '/') unit = '\\';
  }
  return out;
}

}  // namespace tovtest
