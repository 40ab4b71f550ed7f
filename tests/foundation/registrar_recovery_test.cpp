// The cache-folder registrar catching up with lists another process changed
// under it (removed, rewritten with other values), saves that fail, and a
// lock file that cannot be opened.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "basalt/proplist.h"
#include "basalt/utf.h"
#include "foundation/registrar_internal.h"
#include "foundation_support.h"
#include "platform/file.h"
#include "platform/interprocess.h"
#include "registrar_support.h"
#include "tovfoundation/files.h"
#include "tovfoundation/foundation.h"

namespace {

using namespace basalt::literals;
using basalt::proplist::PropList;

namespace platform = tovimpl::platform;

constexpr std::uint32_t kDiskFull = 112;

std::uint32_t FailEveryWrite(platform::FileHandle, std::uint32_t) { return kDiskFull; }

class RegistrarRecovery : public tovtest::RegistrarFixture {
 protected:
  static UTF16String Register(const UTF16String& folder) {
    UTF16String file;
    EXPECT_EQ(FolderRegistrar::RegisterFolder(folder, UTF16String(), file), 0u);
    return file;
  }
  static UTF16String Recorded(const PropList& list, const UTF8String& key) {
    UTF16String file;
    const PropList* child = list.FindChild(key);
    if (child != nullptr) child->GetString("CacheFile", file);
    return file;
  }
};

// --- the list removed by another process ---------------------------------------------

TEST_F(RegistrarRecovery, ListRemovedAfterFirstUseIsWrittenAgainWithWhatThisProcessHolds) {
  Host();
  const UTF16String file = Register(u"C:\\Kept"_u16);
  ASSERT_TRUE(std::remove(ListPath().c_str()) == 0);
  UTF16String found = u"unchanged"_u16;
  EXPECT_EQ(FolderRegistrar::FindFolder(u"C:\\Absent"_u16, UTF16String(), found),
            TOV::kErrRegistryNotFound);
  EXPECT_EQ(found, u"unchanged"_u16);
  // The pair held here is still answered, and nothing is written until exit.
  ASSERT_EQ(FolderRegistrar::FindFolder(u"C:\\Kept"_u16, UTF16String(), found), 0u);
  EXPECT_EQ(found, file);
  EXPECT_FALSE(tovtest::Exists(ListPath()));
  Restart();
  EXPECT_EQ(Recorded(ListOnDisk(), "C:\\Kept"), file);
}

TEST_F(RegistrarRecovery, ListRemovedWhileAnUnsavedPairIsHeldIsWrittenByTheNextSave) {
  Host();
  const UTF16String first = Register(u"C:\\First"_u16);
  platform::SetWriteFaultForTesting(FailEveryWrite);
  const UTF16String unsaved = Register(u"C:\\Unsaved"_u16);
  platform::SetWriteFaultForTesting(nullptr);
  EXPECT_EQ(FolderRegistrar::GetListReport().saveStatus, TOV::kErrRegistryNotFound);
  ASSERT_TRUE(std::remove(ListPath().c_str()) == 0);
  const UTF16String third = Register(u"C:\\Third"_u16);
  EXPECT_EQ(FolderRegistrar::GetListReport().saveStatus, 0u);
  const PropList list = ListOnDisk();
  EXPECT_EQ(list.Keys(), (std::vector<UTF8String>{"C:\\First", "C:\\Third", "C:\\Unsaved"}));
  EXPECT_EQ(Recorded(list, "C:\\First"), first);
  EXPECT_EQ(Recorded(list, "C:\\Unsaved"), unsaved);
  EXPECT_EQ(Recorded(list, "C:\\Third"), third);
}

TEST_F(RegistrarRecovery, EmptyListRemovedAfterFirstUseIsWrittenAgainEmptyAtExit) {
  WriteList(PropList());
  Host();
  LookUpNothing();
  ASSERT_TRUE(std::remove(ListPath().c_str()) == 0);
  LookUpNothing();
  EXPECT_FALSE(tovtest::Exists(ListPath()));
  Restart();
  ASSERT_TRUE(tovtest::Exists(ListPath()));
  EXPECT_TRUE(ListOnDisk().Empty());
}

// --- merging a list another process rewrote ----------------------------------------------

TEST_F(RegistrarRecovery, TextOnDiskWherePairIsHeldKeepsThePairAndUnknownTextIsAdopted) {
  Host();
  const UTF16String mine = Register(u"C:\\Mine"_u16);
  PropList theirs;
  theirs.SetString("C:\\Mine", u"text, not a pair"_u16);
  theirs.SetString("C:\\Text", u"their text"_u16);
  WriteList(theirs);
  const UTF16String later = Register(u"C:\\Later"_u16);
  const PropList list = ListOnDisk();
  EXPECT_EQ(list.Keys(), (std::vector<UTF8String>{"C:\\Later", "C:\\Mine", "C:\\Text"}));
  EXPECT_EQ(Recorded(list, "C:\\Mine"), mine);
  EXPECT_EQ(Recorded(list, "C:\\Later"), later);
  UTF16String text;
  EXPECT_EQ(list.FindChild("C:\\Text"), nullptr);
  ASSERT_TRUE(list.GetString("C:\\Text", text));
  EXPECT_EQ(text, u"their text"_u16);
  UTF16String found;
  ASSERT_EQ(FolderRegistrar::FindFolder(u"C:\\Mine"_u16, UTF16String(), found), 0u);
  EXPECT_EQ(found, mine);
  EXPECT_EQ(FolderRegistrar::FindFolder(u"C:\\Text"_u16, UTF16String(), found),
            TOV::kErrRegistryNotFound);
}

TEST_F(RegistrarRecovery, PairWithoutFileOnDiskKeepsTheFileHeldHere) {
  Host();
  const UTF16String mine = Register(u"C:\\Mine"_u16);
  PropList theirs = ListOnDisk();
  theirs.FindChild("C:\\Mine")->Clear();
  theirs.CreateChild("C:\\Theirs").SetString("CacheFile", u"C:\\Cache\\theirs.vpc"_u16);
  WriteList(theirs);
  Register(u"C:\\Later"_u16);
  const PropList list = ListOnDisk();
  EXPECT_EQ(Recorded(list, "C:\\Mine"), mine);
  EXPECT_EQ(Recorded(list, "C:\\Theirs"), u"C:\\Cache\\theirs.vpc"_u16);
  EXPECT_TRUE(tovtest::Exists(tovtest::Native(mine)));
}

TEST_F(RegistrarRecovery, FileOnDiskFillsAPairLeftWithoutOneHere) {
  // A registration whose cache file could not be made leaves its pair empty
  // here; another process then records a file for it.
  Host();
  UTF16String found;
  FolderRegistrar::FindFolder(u"C:\\x"_u16, UTF16String(), found);
  std::filesystem::remove_all(cache.Native());
  UTF16String file = u"unchanged"_u16;
  EXPECT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Failed"_u16, UTF16String(), file),
            TOV::kErrRegistryNoCacheFile);
  tovtest::MakeFolder(cache.Native());
  PropList theirs;
  theirs.CreateChild("C:\\Failed").SetString("CacheFile", u"C:\\Cache\\theirs.vpc"_u16);
  WriteList(theirs);
  ASSERT_EQ(FolderRegistrar::FindFolder(u"C:\\Failed"_u16, UTF16String(), found), 0u);
  EXPECT_EQ(found, u"C:\\Cache\\theirs.vpc"_u16);
  // Merged on the next save: the pair keeps their file.
  Register(u"C:\\Later"_u16);
  EXPECT_EQ(Recorded(ListOnDisk(), "C:\\Failed"), u"C:\\Cache\\theirs.vpc"_u16);
}

TEST_F(RegistrarRecovery, PairLeftWithoutFileGetsOneWhenRegisteredAgain) {
  Host();
  UTF16String found;
  FolderRegistrar::FindFolder(u"C:\\x"_u16, UTF16String(), found);
  std::filesystem::remove_all(cache.Native());
  UTF16String file = u"unchanged"_u16;
  EXPECT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, UTF16String(), file),
            TOV::kErrRegistryNoCacheFile);
  EXPECT_EQ(file, u"unchanged"_u16);
  tovtest::MakeFolder(cache.Native());
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, UTF16String(), file), 0u);
  EXPECT_TRUE(tovtest::Exists(tovtest::Native(file)));
  EXPECT_EQ(Recorded(ListOnDisk(), "C:\\Media"), file);
  UTF16String again;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, UTF16String(), again), 0u);
  EXPECT_EQ(again, file);
}

TEST_F(RegistrarRecovery, PairWithoutFileOnBothSidesStaysWithoutOne) {
  Host();
  UTF16String found;
  FolderRegistrar::FindFolder(u"C:\\x"_u16, UTF16String(), found);
  std::filesystem::remove_all(cache.Native());
  UTF16String file;
  EXPECT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Failed"_u16, UTF16String(), file),
            TOV::kErrRegistryNoCacheFile);
  tovtest::MakeFolder(cache.Native());
  PropList theirs;
  theirs.CreateChild("C:\\Failed");
  WriteList(theirs);
  Register(u"C:\\Later"_u16);
  const PropList list = ListOnDisk();
  EXPECT_EQ(list.Keys(), (std::vector<UTF8String>{"C:\\Failed", "C:\\Later"}));
  ASSERT_NE(list.FindChild("C:\\Failed"), nullptr);
  EXPECT_TRUE(list.FindChild("C:\\Failed")->Empty());
}

TEST_F(RegistrarRecovery, CatchingUpWithAListHoldingEverythingHeldHereDoesNotRewriteIt) {
  Host();
  const UTF16String mine = Register(u"C:\\Mine"_u16);
  PropList theirs = ListOnDisk();
  theirs.CreateChild("C:\\Theirs").SetString("CacheFile", u"C:\\Cache\\theirs.vpc"_u16);
  WriteList(theirs);
  const std::string written = tovtest::ReadFile(ListPath());
  UTF16String found;
  ASSERT_EQ(FolderRegistrar::FindFolder(u"C:\\Theirs"_u16, UTF16String(), found), 0u);
  EXPECT_EQ(found, u"C:\\Cache\\theirs.vpc"_u16);
  ASSERT_EQ(FolderRegistrar::FindFolder(u"C:\\Mine"_u16, UTF16String(), found), 0u);
  EXPECT_EQ(found, mine);
  platform::FileVersion before{};
  ASSERT_TRUE(platform::GetFileVersion(tovtest::Lib(ListPath()), &before));
  Restart();  // nothing held here is missing from the list: no save at exit
  platform::FileVersion after{};
  ASSERT_TRUE(platform::GetFileVersion(tovtest::Lib(ListPath()), &after));
  EXPECT_EQ(after, before);
  EXPECT_EQ(tovtest::ReadFile(ListPath()), written);
}

TEST_F(RegistrarRecovery, UnsavedPairOutlivesCatchingUpAndIsWrittenAtExit) {
  Host();
  const UTF16String before = Register(u"C:\\Before"_u16);
  platform::SetWriteFaultForTesting(FailEveryWrite);
  const UTF16String unsaved = Register(u"C:\\Unsaved"_u16);
  platform::SetWriteFaultForTesting(nullptr);
  PropList theirs = ListOnDisk();
  theirs.CreateChild("C:\\Theirs").SetString("CacheFile", u"C:\\Cache\\theirs.vpc"_u16);
  WriteList(theirs);
  UTF16String found;
  ASSERT_EQ(FolderRegistrar::FindFolder(u"C:\\Theirs"_u16, UTF16String(), found), 0u);
  ASSERT_EQ(FolderRegistrar::FindFolder(u"C:\\Unsaved"_u16, UTF16String(), found), 0u);
  EXPECT_EQ(found, unsaved);
  EXPECT_EQ(ListOnDisk().Keys(), (std::vector<UTF8String>{"C:\\Before", "C:\\Theirs"}));
  Restart();
  const PropList list = ListOnDisk();
  EXPECT_EQ(list.Keys(), (std::vector<UTF8String>{"C:\\Before", "C:\\Theirs", "C:\\Unsaved"}));
  EXPECT_EQ(Recorded(list, "C:\\Before"), before);
  EXPECT_EQ(Recorded(list, "C:\\Unsaved"), unsaved);
  EXPECT_EQ(Recorded(list, "C:\\Theirs"), u"C:\\Cache\\theirs.vpc"_u16);
}

class OwnFileLosesToTheirs : public RegistrarRecovery {
 protected:
  // Registers "C:\Media" without saving it, lets `change` touch the cache
  // file made here, then lets another process record another file for the
  // pair and makes this process merge: the disk's file wins.
  template <class Change>
  std::string Run(Change change) {
    Host();
    Register(u"C:\\Before"_u16);
    platform::SetWriteFaultForTesting(FailEveryWrite);
    const UTF16String ours = Register(u"C:\\Media"_u16);
    platform::SetWriteFaultForTesting(nullptr);
    const std::string native = tovtest::Native(ours);
    change(native);
    PropList list = ListOnDisk();
    list.CreateChild("C:\\Media").SetString("CacheFile", u"C:\\Cache\\theirs.vpc"_u16);
    WriteList(list);
    Register(u"C:\\After"_u16);
    UTF16String found;
    EXPECT_EQ(FolderRegistrar::FindFolder(u"C:\\Media"_u16, UTF16String(), found), 0u);
    EXPECT_EQ(found, u"C:\\Cache\\theirs.vpc"_u16);
    EXPECT_EQ(Recorded(ListOnDisk(), "C:\\Media"), u"C:\\Cache\\theirs.vpc"_u16);
    return native;
  }
};

TEST_F(OwnFileLosesToTheirs, OwnFileAlreadyWrittenToIsKept) {
  const std::string native = Run([](const std::string& file) { tovtest::WriteFile(file, "data"); });
  EXPECT_EQ(tovtest::ReadFile(native), "data");
}

TEST_F(OwnFileLosesToTheirs, OwnFileAlreadyGoneIsLeftGone) {
  const std::string native = Run([](const std::string& file) { std::remove(file.c_str()); });
  EXPECT_FALSE(tovtest::Exists(native));
}

TEST_F(OwnFileLosesToTheirs, FolderInPlaceOfOwnFileIsKept) {
  const std::string native = Run([](const std::string& file) {
    std::remove(file.c_str());
    tovtest::MakeFolder(file);
  });
  EXPECT_TRUE(std::filesystem::is_directory(native));
}

// --- the lock file --------------------------------------------------------------------------

TEST_F(RegistrarRecovery, LockFileThatCannotBeOpenedLeavesTheListWorkingUnlocked) {
  // A folder where the lock file belongs: the leftovers of earlier saves are
  // still cleared at first use, and registrations are still saved.
  tovtest::MakeFolder(ListPath() + ".lock");
  tovtest::WriteFile(cache.NativeOf("MasterFolderList.xml.1-1.tmp"), "<plist");
  tovtest::WriteFile(cache.NativeOf("other.tmp"), "x");
  Host();
  LookUpNothing();
  EXPECT_EQ(tovtest::ListFolder(cache.Native()),
            (std::vector<std::string>{"MasterFolderList.xml.lock"}));
  const UTF16String file = Register(u"C:\\Media"_u16);
  EXPECT_EQ(FolderRegistrar::GetListReport().saveStatus, 0u);
  EXPECT_EQ(Recorded(ListOnDisk(), "C:\\Media"), file);
  EXPECT_TRUE(std::filesystem::is_directory(ListPath() + ".lock"));
}

// --- the report ---------------------------------------------------------------------------

TEST_F(RegistrarRecovery, ReportBeforeFirstUseIsEmpty) {
  Host();
  const FolderRegistrar::ListReport report = FolderRegistrar::GetListReport();
  EXPECT_TRUE(report.listFile.empty());
  EXPECT_EQ(report.cacheFolderSystemError, 0u);
  EXPECT_EQ(report.saveStatus, 0u);
  EXPECT_EQ(report.saveSystemError, 0u);
  EXPECT_TRUE(report.saveError.empty());
  EXPECT_TRUE(report.damagedListSetAside.empty());
  EXPECT_TRUE(report.damagedReason.empty());
  EXPECT_TRUE(report.refusal.empty());
  // First use names the list.
  UTF16String found;
  FolderRegistrar::FindFolder(u"C:\\x"_u16, UTF16String(), found);
  EXPECT_EQ(tovtest::Native(FolderRegistrar::GetListReport().listFile), ListPath());
}

}  // namespace
