// The temporary folder every test suite uses: one fresh folder per object,
// under $TMPDIR when it is set and otherwise under the build tree, removed
// with everything in it (read-only and unreadable folders included) when the
// object goes. Tests never touch the user's real folders.
//
//   tovtest::TempTree temp;                      // e.g. <build>/tovtest-k3x9q2
//   WriteFile(temp.NativeOf("a.txt"), "x");      // <folder>/a.txt
//   Halyard::PathUtilities::ExistsOnDisk(temp.Lib("a.txt"));   // <folder>\a.txt
#pragma once

#include <string>

#include "basalt/strings.h"

namespace tovtest {

class TempTree {
 public:
  // `prefix` starts the folder's name, e.g. "streams" gives "streams-ab12cd".
  explicit TempTree(const std::string& prefix = "tovtest");
  ~TempTree();
  TempTree(const TempTree&) = delete;
  TempTree& operator=(const TempTree&) = delete;

  // The folder, native spelling with '/' on every platform, canonical, no
  // trailing separator.
  const std::string& Native() const { return mNative; }
  // A native path below the folder (`relative` uses '/').
  std::string NativeOf(const std::string& relative) const { return mNative + "/" + relative; }
  // The folder and the paths below it in the library's spelling (UTF-16,
  // backslashes), no trailing separator.
  UTF16String Lib() const;
  UTF16String Lib(const std::string& relative) const;

 private:
  std::string mNative;
};

// A native path in the library's spelling: UTF-16, '/' turned into '\'.
UTF16String LibraryPath(const std::string& native);

}  // namespace tovtest
