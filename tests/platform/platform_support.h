// What the OS-layer tests share: a temporary folder and whole-file helpers,
// built on the library's test fixture and std::filesystem only, so that the
// portable tests compile unchanged for every backend.
#pragma once

#include <string>

#include "basalt/strings.h"
#include "common/temp_tree.h"

namespace platform_test {

// A fresh folder for one test, removed with its contents afterwards.
class TempFolder {
 public:
  TempFolder() : mTree("platform") {}
  // A native path below the folder ("/" separators), and the same in the
  // library's spelling.
  std::string NativeOf(const std::string& relative) const { return mTree.NativeOf(relative); }
  UTF16String Lib() const { return tovtest::LibraryPath(mTree.Native()); }
  UTF16String Lib(const std::string& relative) const {
    return tovtest::LibraryPath(mTree.NativeOf(relative));
  }

 private:
  tovtest::TempTree mTree;
};

// Paths below are native and ASCII.
// Writes `bytes` as the whole file (created or truncated).
void WriteFileBytes(const std::string& native, const std::string& bytes);
// The whole file; empty when it cannot be read.
std::string ReadFileBytes(const std::string& native);
bool Exists(const std::string& native);
void MakeFolder(const std::string& native);

}  // namespace platform_test
