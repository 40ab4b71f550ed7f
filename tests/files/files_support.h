// Shared helpers of the files tests: temporary folders, environment, paths.
#pragma once

#include <string>
#include <vector>

#include "basalt/strings.h"
#include "common/temp_tree.h"

namespace files_test {

// A fresh folder under $TMPDIR (or the build tree), removed with everything in
// it when the object goes.
class TempFolder {
 public:
  // The folder, native spelling, no trailing '/'.
  const std::string& Native() const { return mTree.Native(); }
  // The folder as a library path (backslashes), no trailing separator.
  UTF16String Lib() const { return tovtest::LibraryPath(Native()); }
  // A library path of an entry below the folder: Lib() + "\" + relative
  // (relative given with '/' or '\').
  UTF16String Lib(const std::string& relative) const {
    return tovtest::LibraryPath(NativeOf(relative));
  }
  std::string NativeOf(const std::string& relative) const { return mTree.NativeOf(relative); }

 private:
  tovtest::TempTree mTree{"tovfiles"};
};

// Sets (or, with nullptr, unsets) an environment variable for the object's
// lifetime.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value);
  ~ScopedEnv();
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string mName;
  bool mHad = false;
  std::string mOld;
};

// A native path as a library path.
UTF16String Lib(const std::string& native);
// Library path/text as UTF-8 (for messages and comparisons).
std::string U8(const UTF16String& text);
UTF16String U16(const std::string& text);

void WriteFile(const std::string& native, const std::string& contents);
std::string ReadFile(const std::string& native);
void MakeFolder(const std::string& native);
bool Exists(const std::string& native);

}  // namespace files_test
