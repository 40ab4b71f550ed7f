// Scaffolding of the OS-layer tests: a temporary folder with library paths of
// its entries, and small file helpers. Portable: the library and
// std::filesystem only.
#pragma once

#include <string>

#include "basalt/strings.h"
#include "common/temp_tree.h"

namespace platform_test {

// A fresh folder for one test, removed with its contents afterwards.
class TempFolder {
 public:
  // The folder, native spelling, no trailing separator.
  const std::string& Native() const { return mTree.Native(); }
  std::string NativeOf(const std::string& relative) const { return mTree.NativeOf(relative); }
  // The folder, or an entry below it, as a library path (backslashes).
  UTF16String Lib() const { return tovtest::LibraryPath(Native()); }
  UTF16String Lib(const std::string& relative) const {
    return tovtest::LibraryPath(NativeOf(relative));
  }

 private:
  tovtest::TempTree mTree{"tovplatform"};
};

// UTF-16 library text as UTF-8, and back.
std::string U8(const UTF16String& text);
UTF16String U16(const std::string& text);

// Writes `contents` to the file at the native path (replacing it).
void WriteFile(const std::string& native, const std::string& contents);
// Whether anything exists at the native path.
bool Exists(const std::string& native);
// Writes `bytes` as the whole file (created or truncated).
void WriteFileBytes(const std::string& native, const std::string& bytes);
// The whole file; empty when it cannot be read.
std::string ReadFileBytes(const std::string& native);
// Makes the folder and its missing parents.
void MakeFolder(const std::string& native);

}  // namespace platform_test
