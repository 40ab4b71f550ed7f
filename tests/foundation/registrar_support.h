// The fixture every registrar suite starts from: a fake host answering a
// temporary cache folder, the registry rebuilt from scratch before and after
// each test, and the list file read and written as another process would.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "basalt/proplist.h"
#include "foundation_support.h"

namespace tovtest {

class RegistrarFixture : public ::testing::Test {
 protected:
  void SetUp() override;
  // Also clears the OS layer's write fault a test may have left set.
  void TearDown() override;

  // Initialises the library with the fake host answering `cacheFolder`
  // (native spelling) for the cache-folder entry; without one, `cache`.
  void Host(const std::string& cacheFolder);
  void Host() { Host(cache.Native()); }
  // Looks up a pair nobody registered, which misses (the registry's first
  // use, when nothing came before).
  static void LookUpNothing();
  // As at a restart: the registry is saved, dropped and built again on next use.
  static void Restart();

  std::string ListPath() const { return cache.NativeOf("MasterFolderList.xml"); }
  basalt::proplist::PropList ListOnDisk() const;
  // Writes the list as another process would.
  void WriteList(const basalt::proplist::PropList& list) const;
  // The names in the cache folder that end in `ending` (".vpc", ".tmp").
  std::vector<std::string> Named(const std::string& ending) const;

  FakeHost host;
  TempTree cache;
};

}  // namespace tovtest
