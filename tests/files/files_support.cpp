// The files suite's hermetic environment.
#include "files/files_support.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "tovfoundation/files.h"

namespace tovtest {

std::string PlatformPath(const UTF16String& lib) {
  return U8(Halyard::PathUtilities::ToPlatformPath(lib));
}

std::uintmax_t PlatformFileSize(const UTF16String& lib) {
  return std::filesystem::file_size(PlatformPath(lib));
}

namespace {

// Every test process of the suite runs with its own HOME, TMPDIR and
// XDG_DATA_HOME under the build tree, and without HOMEDRIVE/HOMEPATH, so no
// test can reach the user's real folders or trash.
class HermeticEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    SetEnv("TMPDIR", nullptr);  // the tree itself goes under the build tree
    mRoot = std::make_unique<TempTree>("tovfiles-env");
    const std::string& root = mRoot->Native();
    MakeFolder(root + "/home/.local/share");
    MakeFolder(root + "/tmp");
    SetEnv("HOME", (root + "/home").c_str());
    SetEnv("XDG_DATA_HOME", (root + "/home/.local/share").c_str());
    SetEnv("TMPDIR", (root + "/tmp").c_str());
    SetEnv("HOMEDRIVE", nullptr);
    SetEnv("HOMEPATH", nullptr);
  }
  void TearDown() override { mRoot.reset(); }

 private:
  std::unique_ptr<TempTree> mRoot;
};

[[maybe_unused]] ::testing::Environment* const gHermetic =
    ::testing::AddGlobalTestEnvironment(new HermeticEnvironment);

}  // namespace

}  // namespace tovtest
