// The cache-folder registrar, with a fake host answering the cache folder.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "basalt/proplist.h"
#include "basalt/utf.h"
#include "foundation/registrar_internal.h"
#include "foundation_support.h"
#include "registrar_support.h"
#include "tovfoundation/files.h"
#include "tovfoundation/foundation.h"

namespace {

using namespace basalt::literals;
using basalt::proplist::PropList;
using tovtest::U16;
using tovtest::U8;

// Hosts the registrar on a cache folder: the fake host answers `cacheFolder`
// (native spelling) for entry 14, and the registry is rebuilt from scratch.
class Registrar : public tovtest::RegistrarFixture {
 protected:
  std::vector<std::string> CacheFiles() const { return Named(".vpc"); }
};

TEST_F(Registrar, RegisterMakesEmptyCacheFileNamedAfterProcessThreadAndTicks) {
  Host(cache.Native());
  UTF16String file;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"Thumbs"_u16, file), 0u);
  const std::string expectedStart = cache.Native() + "/TOVCache" + std::to_string(::getpid()) + "_";
  const std::string native = tovtest::Native(file);
  EXPECT_EQ(native.rfind(expectedStart, 0), 0u) << native;
  EXPECT_EQ(native.substr(native.size() - 4), ".vpc");
  EXPECT_TRUE(tovtest::Exists(native));
  EXPECT_EQ(tovtest::ReadFile(native), "");
}

TEST_F(Registrar, SamePairTwiceGivesSamePathAndOneFile) {
  Host(cache.Native());
  UTF16String first, second;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"Thumbs"_u16, first), 0u);
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"Thumbs"_u16, second), 0u);
  EXPECT_EQ(first, second);
  EXPECT_EQ(CacheFiles().size(), 1u);
}

TEST_F(Registrar, TrailingBackslashSharesKeyButCaseDoesNot) {
  Host(cache.Native());
  UTF16String plain, slashed, lower;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"n"_u16, plain), 0u);
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media\\"_u16, u"n"_u16, slashed), 0u);
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"c:\\media"_u16, u"n"_u16, lower), 0u);
  EXPECT_EQ(plain, slashed);
  EXPECT_NE(plain, lower);
  EXPECT_EQ(CacheFiles().size(), 2u);
}

TEST_F(Registrar, TwoNamesGetTwoFilesAndEmptyNameIsFolderAlone) {
  Host(cache.Native());
  UTF16String a, b, none;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"A"_u16, a), 0u);
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"B"_u16, b), 0u);
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, UTF16String(), none), 0u);
  EXPECT_NE(a, b);
  EXPECT_NE(a, none);
  const PropList list = ListOnDisk();
  EXPECT_EQ(list.Keys(), (std::vector<UTF8String>{"C:\\Media", "C:\\Media#A", "C:\\Media#B"}));
  UTF16String recorded;
  ASSERT_NE(list.FindChild("C:\\Media"), nullptr);
  EXPECT_TRUE(list.FindChild("C:\\Media")->GetString("CacheFile", recorded));
  EXPECT_EQ(recorded, none);
}

TEST_F(Registrar, KeyRemovesOneTrailingBackslashOnly) {
  struct Row {
    UTF16String folder;
    UTF16String name;
    UTF8String key;
  };
  const Row rows[] = {
      {u"C:\\Media"_u16, u"x"_u16, "C:\\Media#x"},
      {u"C:\\Media\\"_u16, u"x"_u16, "C:\\Media#x"},
      {u"C:\\Media\\\\"_u16, u"x"_u16, "C:\\Media\\#x"},
      {u"C:\\"_u16, u"x"_u16, "C:\\#x"},
      {u"c:\\media"_u16, UTF16String(), "c:\\media"},
      {UTF16String(), u"n"_u16, "#n"},
      {u"D:\\Vidéo"_u16, u"#"_u16, "D:\\Vid\xC3\xA9o##"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.key);
    EXPECT_EQ(tovimpl::foundation::RegistrarKey(row.folder, row.name), row.key);
  }
}

TEST_F(Registrar, EverySuccessfulRegistrationIsSavedAtOnce) {
  Host(cache.Native());
  UTF16String file;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"n"_u16, file), 0u);
  UTF16String recorded;
  const PropList list = ListOnDisk();
  ASSERT_NE(list.FindChild("C:\\Media#n"), nullptr);
  EXPECT_TRUE(list.FindChild("C:\\Media#n")->GetString("CacheFile", recorded));
  EXPECT_EQ(recorded, file);
}

TEST_F(Registrar, FindAfterRestartFindsEarlierAssignments) {
  Host(cache.Native());
  UTF16String a, b;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"A"_u16, a), 0u);
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"E:\\Other\\"_u16, UTF16String(), b), 0u);
  Restart();
  UTF16String foundA, foundB;
  EXPECT_EQ(FolderRegistrar::FindFolder(u"C:\\Media"_u16, u"A"_u16, foundA), 0u);
  EXPECT_EQ(FolderRegistrar::FindFolder(u"E:\\Other"_u16, UTF16String(), foundB), 0u);
  EXPECT_EQ(foundA, a);
  EXPECT_EQ(foundB, b);
}

TEST_F(Registrar, FindNeverRegisteredGivesNotFoundAndLeavesOutputUnchanged) {
  Host(cache.Native());
  UTF16String file = u"unchanged"_u16;
  EXPECT_EQ(FolderRegistrar::FindFolder(u"C:\\Nothing"_u16, u"n"_u16, file),
            TOV::kErrRegistryNotFound);
  EXPECT_EQ(file, u"unchanged"_u16);
  EXPECT_TRUE(CacheFiles().empty());
}

TEST_F(Registrar, FindOnKeyHoldingTextInsteadOfChildGivesNotFound) {
  PropList list;
  list.SetString("C:\\Media#n", u"not a child"_u16);
  list.CreateChild("C:\\Empty#n");  // a child without "CacheFile"
  basalt::proplist::utils::SavePropList(tovtest::Lib(ListPath()), list);
  Host(cache.Native());
  UTF16String file = u"same"_u16;
  EXPECT_EQ(FolderRegistrar::FindFolder(u"C:\\Media"_u16, u"n"_u16, file),
            TOV::kErrRegistryNotFound);
  EXPECT_EQ(FolderRegistrar::FindFolder(u"C:\\Empty"_u16, u"n"_u16, file),
            TOV::kErrRegistryNotFound);
  EXPECT_EQ(file, u"same"_u16);
}

TEST_F(Registrar, UnRegisterRemovesNothing) {
  Host(cache.Native());
  UTF16String file, found;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"n"_u16, file), 0u);
  EXPECT_EQ(FolderRegistrar::UnRegisterFolder(u"C:\\Media"_u16, u"n"_u16), 0u);
  EXPECT_EQ(FolderRegistrar::FindFolder(u"C:\\Media"_u16, u"n"_u16, found), 0u);
  EXPECT_EQ(found, file);
  EXPECT_TRUE(tovtest::Exists(tovtest::Native(file)));
}

TEST_F(Registrar, RecordedPathIsReturnedEvenWhenItsFileIsGone) {
  Host(cache.Native());
  UTF16String file, again;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"n"_u16, file), 0u);
  ::unlink(tovtest::Native(file).c_str());
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"n"_u16, again), 0u);
  EXPECT_EQ(again, file);
  EXPECT_TRUE(CacheFiles().empty());
}

TEST_F(Registrar, InitializeBuildsNothing) {
  Host(cache.NativeOf("not-yet"));
  EXPECT_EQ(FolderRegistrar::Initialize(), 0u);
  EXPECT_FALSE(tovtest::Exists(cache.NativeOf("not-yet")));
}

TEST_F(Registrar, MissingCacheFolderIsCreatedWithItsParents) {
  Host(cache.NativeOf("deep/er/cache"));
  LookUpNothing();
  EXPECT_TRUE(tovtest::Exists(cache.NativeOf("deep/er/cache")));
  UTF16String file;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\x"_u16, UTF16String(), file), 0u);
  EXPECT_TRUE(tovtest::Exists(cache.NativeOf("deep/er/cache/MasterFolderList.xml")));
}

TEST_F(Registrar, CacheFolderGivenWithTrailingBackslashWorks) {
  host.SetFolder(TOV::Paths::kCacheFolderEntry, cache.Lib() + u"\\"_u16);
  ASSERT_EQ(TOVFoundation::Initialize(&host), 0u);
  UTF16String file;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\x"_u16, UTF16String(), file), 0u);
  EXPECT_EQ(tovtest::Native(file).rfind(cache.Native() + "/TOVCache", 0), 0u);
  EXPECT_TRUE(tovtest::Exists(ListPath()));
}

TEST_F(Registrar, TmpFilesDirectlyInCacheFolderAreDeletedWhenListIsMissing) {
  tovtest::WriteFile(cache.NativeOf("a.tmp"), "x");
  tovtest::WriteFile(cache.NativeOf("MasterFolderList.xml.1-1.tmp"), "<plist");
  tovtest::WriteFile(cache.NativeOf("keep.txt"), "x");
  tovtest::WriteFile(cache.NativeOf("upper.TMP"), "x");
  tovtest::MakeFolder(cache.NativeOf("sub"));
  tovtest::WriteFile(cache.NativeOf("sub/b.tmp"), "x");
  Host(cache.Native());
  UTF16String found;
  FolderRegistrar::FindFolder(u"C:\\x"_u16, UTF16String(), found);
  EXPECT_EQ(tovtest::ListFolder(cache.Native()),
            (std::vector<std::string>{"keep.txt", "sub", "upper.TMP"}));
  EXPECT_TRUE(tovtest::Exists(cache.NativeOf("sub/b.tmp")));
}

TEST_F(Registrar, TmpFilesAreKeptWhenListExists) {
  basalt::proplist::utils::SavePropList(tovtest::Lib(ListPath()), PropList());
  tovtest::WriteFile(cache.NativeOf("a.tmp"), "x");
  Host(cache.Native());
  UTF16String found;
  FolderRegistrar::FindFolder(u"C:\\x"_u16, UTF16String(), found);
  EXPECT_TRUE(tovtest::Exists(cache.NativeOf("a.tmp")));
}

TEST_F(Registrar, CacheFolderThatIsAFileGivesNoCacheFile) {
  tovtest::WriteFile(cache.NativeOf("file"), "x");
  Host(cache.NativeOf("file"));
  UTF16String file = u"unchanged"_u16;
  EXPECT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"n"_u16, file),
            TOV::kErrRegistryNoCacheFile);
  EXPECT_EQ(file, u"unchanged"_u16);
  // The child made before asking for a file stays, empty.
  EXPECT_EQ(FolderRegistrar::FindFolder(u"C:\\Media"_u16, u"n"_u16, file),
            TOV::kErrRegistryNotFound);
  EXPECT_EQ(tovtest::ReadFile(cache.NativeOf("file")), "x");
}

TEST_F(Registrar, EmptyChildLeftByFailureIsSavedWithNextSuccess) {
  // The cache folder vanishes between first use and the registration, so
  // the file cannot be made; once it is back, the next pair is saved along
  // with the empty child.
  Host(cache.NativeOf("c"));
  UTF16String found, file;
  FolderRegistrar::FindFolder(u"C:\\x"_u16, UTF16String(), found);
  ASSERT_TRUE(std::filesystem::remove(cache.NativeOf("c")));
  EXPECT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Failed"_u16, UTF16String(), file),
            TOV::kErrRegistryNoCacheFile);
  tovtest::MakeFolder(cache.NativeOf("c"));
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Works"_u16, UTF16String(), file), 0u);
  PropList list;
  basalt::proplist::utils::LoadPropList(tovtest::Lib(cache.NativeOf("c/MasterFolderList.xml")),
                                        list, 0);
  EXPECT_EQ(list.Keys(), (std::vector<UTF8String>{"C:\\Failed", "C:\\Works"}));
  ASSERT_NE(list.FindChild("C:\\Failed"), nullptr);
  EXPECT_TRUE(list.FindChild("C:\\Failed")->Empty());
}

TEST_F(Registrar, WithoutHostServiceNoCacheFileCanBeMade) {
  ASSERT_EQ(TOVFoundation::Initialize(nullptr), 0u);
  UTF16String file = u"unchanged"_u16;
  EXPECT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"n"_u16, file),
            TOV::kErrRegistryNoCacheFile);
  EXPECT_EQ(FolderRegistrar::FindFolder(u"C:\\Media"_u16, u"n"_u16, file),
            TOV::kErrRegistryNotFound);
  EXPECT_EQ(file, u"unchanged"_u16);
  Restart();  // nothing is written anywhere: the list has no name
  EXPECT_FALSE(tovtest::Exists("MasterFolderList.xml"));
}

// --- damaged list files: ignored, the registry starts empty ---------------------

class DamagedList : public Registrar {
 protected:
  void ExpectStartsEmptyAndRecovers() {
    Host(cache.Native());
    UTF16String file = u"unchanged"_u16;
    EXPECT_EQ(FolderRegistrar::FindFolder(u"C:\\Media"_u16, u"n"_u16, file),
              TOV::kErrRegistryNotFound);
    EXPECT_EQ(file, u"unchanged"_u16);
    ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"n"_u16, file), 0u);
    EXPECT_TRUE(tovtest::Exists(tovtest::Native(file)));
  }
};

TEST_F(DamagedList, TruncatedListIsIgnored) {
  PropList list;
  list.CreateChild("C:\\Media#n").SetString("CacheFile", u"C:\\old.vpc"_u16);
  const std::string text = basalt::proplist::utils::FormatPropList(list);
  tovtest::WriteFile(ListPath(), text.substr(0, text.size() / 2));
  ExpectStartsEmptyAndRecovers();
  EXPECT_NO_THROW(ListOnDisk());  // rewritten whole by the registration
}

TEST_F(DamagedList, RandomBytesListIsIgnored) {
  std::string bytes;
  for (int i = 0; i < 1000; ++i) bytes.push_back(static_cast<char>((i * 7919) & 0xFF));
  tovtest::WriteFile(ListPath(), bytes);
  ExpectStartsEmptyAndRecovers();
}

TEST_F(DamagedList, EmptyListIsIgnored) {
  tovtest::WriteFile(ListPath(), "");
  tovtest::WriteFile(cache.NativeOf("left.tmp"), "");
  ExpectStartsEmptyAndRecovers();
  // The list existed, so leftovers were not cleared.
  EXPECT_TRUE(tovtest::Exists(cache.NativeOf("left.tmp")));
}

TEST_F(DamagedList, UnreadableListIsIgnored) {
  basalt::proplist::utils::SavePropList(tovtest::Lib(ListPath()), PropList());
  std::filesystem::permissions(ListPath(), std::filesystem::perms::none);
  if (std::ifstream(ListPath()).is_open()) {
    GTEST_SKIP() << "permissions do not stop reading here (root, or no permission bits)";
  }
  ExpectStartsEmptyAndRecovers();
}

TEST_F(DamagedList, FolderInPlaceOfListIsIgnoredAndFailedSavesStillSucceed) {
  // The list cannot be opened (a folder stands there) and no save can
  // replace it: registrations still answer 0 and stay in memory.
  tovtest::MakeFolder(ListPath());
  tovtest::WriteFile(ListPath() + "/inside", "x");
  ExpectStartsEmptyAndRecovers();
  UTF16String first, again;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"n"_u16, first), 0u);
  ASSERT_EQ(FolderRegistrar::FindFolder(u"C:\\Media"_u16, u"n"_u16, again), 0u);
  EXPECT_EQ(again, first);
}

// --- threads ------------------------------------------------------------------

TEST_F(Registrar, EightThreadsRegisteringDistinctPairsGetDistinctFiles) {
  Host(cache.Native());
  constexpr int kThreads = 8;
  constexpr int kPairs = 100;
  std::vector<std::vector<UTF16String>> results(kThreads, std::vector<UTF16String>(kPairs));
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &results] {
      for (int i = 0; i < kPairs; ++i) {
        const UTF16String folder = U16("C:\\Media\\T" + std::to_string(t));
        const UTF16String name = U16("n" + std::to_string(i));
        EXPECT_EQ(FolderRegistrar::RegisterFolder(folder, name, results[t][i]), 0u);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  std::set<UTF16String> distinct;
  for (const auto& perThread : results) {
    for (const auto& file : perThread) {
      distinct.insert(file);
      EXPECT_TRUE(tovtest::Exists(tovtest::Native(file))) << U8(file);
    }
  }
  EXPECT_EQ(distinct.size(), static_cast<std::size_t>(kThreads * kPairs));
  EXPECT_EQ(CacheFiles().size(), static_cast<std::size_t>(kThreads * kPairs));

  Restart();
  for (int t = 0; t < kThreads; ++t) {
    for (int i = 0; i < kPairs; ++i) {
      UTF16String found;
      ASSERT_EQ(FolderRegistrar::FindFolder(U16("C:\\Media\\T" + std::to_string(t)),
                                            U16("n" + std::to_string(i)), found),
                0u);
      EXPECT_EQ(found, results[t][i]);
    }
  }
}

// --- a second process ------------------------------------------------------------

// Run by RunChild: registers or finds the pairs listed in TOV_TEST_PAIRS
// ("folder|name" per line) in the cache folder TOV_TEST_CACHE, writing
// "status|path" per line to TOV_TEST_OUT.
void ChildWork(bool registering) {
  const char* cacheFolder = std::getenv("TOV_TEST_CACHE");
  const char* pairsFile = std::getenv("TOV_TEST_PAIRS");
  const char* outFile = std::getenv("TOV_TEST_OUT");
  ASSERT_NE(cacheFolder, nullptr);
  ASSERT_NE(pairsFile, nullptr);
  ASSERT_NE(outFile, nullptr);
  tovtest::FakeHost host;
  host.SetFolder(TOV::Paths::kCacheFolderEntry, tovtest::Lib(cacheFolder));
  ASSERT_EQ(TOVFoundation::Initialize(&host), 0u);
  std::istringstream pairs(tovtest::ReadFile(pairsFile));
  std::ostringstream out;
  std::string line;
  while (std::getline(pairs, line)) {
    const auto bar = line.find('|');
    const UTF16String folder = U16(line.substr(0, bar));
    const UTF16String name = U16(line.substr(bar + 1));
    UTF16String file;
    const std::uint32_t status = registering ? FolderRegistrar::RegisterFolder(folder, name, file)
                                             : FolderRegistrar::FindFolder(folder, name, file);
    out << status << '|' << U8(file) << '\n';
  }
  tovtest::WriteFile(outFile, out.str());
  TOVFoundation::Terminate(&host);
  // The registry is saved once more at exit; this process ends here.
}

TEST(ChildProcess, RegistrarRegisters) {
  if (!tovtest::IsChild()) GTEST_SKIP() << "runs only as a second process";
  ChildWork(true);
}

TEST(ChildProcess, RegistrarFinds) {
  if (!tovtest::IsChild()) GTEST_SKIP() << "runs only as a second process";
  ChildWork(false);
}

}  // namespace

namespace {

TEST_F(Registrar, RegistryIsSavedOnceMoreWhenItEnds) {
  // Only looked up, never changed: the list did not exist, and the final
  // save (at process exit, here at the reset) writes it.
  Host(cache.Native());
  LookUpNothing();
  EXPECT_FALSE(tovtest::Exists(ListPath()));
  Restart();
  ASSERT_TRUE(tovtest::Exists(ListPath()));
  EXPECT_TRUE(ListOnDisk().Empty());
}

}  // namespace
