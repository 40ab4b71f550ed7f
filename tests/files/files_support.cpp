// Shared helpers of the files tests.
#include "files/files_support.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "basalt/utf.h"

namespace files_test {

ScopedEnv::ScopedEnv(const char* name, const char* value) : mName(name) {
  if (const char* old = std::getenv(name)) {
    mHad = true;
    mOld = old;
  }
  if (value == nullptr) {
    ::unsetenv(name);
  } else {
    ::setenv(name, value, 1);
  }
}

ScopedEnv::~ScopedEnv() {
  if (mHad) {
    ::setenv(mName.c_str(), mOld.c_str(), 1);
  } else {
    ::unsetenv(mName.c_str());
  }
}

UTF16String Lib(const std::string& native) { return tovtest::LibraryPath(native); }

std::string U8(const UTF16String& text) { return basalt::UTF16to8(text); }
UTF16String U16(const std::string& text) { return basalt::UTF8to16(text); }

void WriteFile(const std::string& native, const std::string& contents) {
  std::ofstream out(native, std::ios::binary | std::ios::trunc);
  out << contents;
  if (!out) throw std::runtime_error("cannot write " + native);
}

std::string ReadFile(const std::string& native) {
  std::ifstream in(native, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

void MakeFolder(const std::string& native) { std::filesystem::create_directories(native); }

bool Exists(const std::string& native) {
  struct stat st {};
  return ::lstat(native.c_str(), &st) == 0;
}

}  // namespace files_test

namespace {

// Every test process of the suite runs with its own HOME, TMPDIR and
// XDG_DATA_HOME under the build tree, and without HOMEDRIVE/HOMEPATH, so no
// test can reach the user's real folders or trash.
class HermeticEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    std::string pattern = std::string(TOV_TEST_BINARY_DIR) + "/tovfiles-env-XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back(0);
    if (::mkdtemp(buffer.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    mRoot = buffer.data();
    std::filesystem::create_directories(mRoot + "/home/.local/share");
    std::filesystem::create_directories(mRoot + "/tmp");
    ::setenv("HOME", (mRoot + "/home").c_str(), 1);
    ::setenv("XDG_DATA_HOME", (mRoot + "/home/.local/share").c_str(), 1);
    ::setenv("TMPDIR", (mRoot + "/tmp").c_str(), 1);
    ::unsetenv("HOMEDRIVE");
    ::unsetenv("HOMEPATH");
  }
  void TearDown() override {
    std::error_code ignored;
    std::filesystem::remove_all(mRoot, ignored);
  }

 private:
  std::string mRoot;
};

[[maybe_unused]] ::testing::Environment* const gHermetic =
    ::testing::AddGlobalTestEnvironment(new HermeticEnvironment);

}  // namespace
