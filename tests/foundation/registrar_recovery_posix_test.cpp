// The cache-folder registrar clearing leftovers of interrupted saves and
// failing to set a damaged list aside, on POSIX rules: process numbers,
// PATH_MAX, files deleted and folders renamed while a file in them is open,
// control characters in file names.
#include <gtest/gtest.h>
#include <limits.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "basalt/proplist.h"
#include "foundation/registrar_internal.h"
#include "foundation_support.h"
#include "platform/file.h"
#include "registrar_support.h"
#include "tovfoundation/foundation.h"

namespace {

using namespace basalt::literals;
using basalt::proplist::PropList;

namespace platform = tovimpl::platform;

constexpr std::uint32_t kFileNotFound = 2;
constexpr std::uint32_t kPathNotFound = 3;
constexpr std::uint32_t kFilenameExcedRange = 206;

class RegistrarLeftovers : public tovtest::RegistrarFixture {
 protected:
};

// A process number no process has now: a child that has ended.
std::uint32_t EndedProcess() {
  const tovtest::ChildHandle ended = tovtest::StartChild("ChildProcess.NoSuchTest", {});
  EXPECT_GT(ended, 0);
  tovtest::WaitChild(ended);
  return static_cast<std::uint32_t>(ended);
}

TEST_F(RegistrarLeftovers, SavesOfEndedProcessesAreRemovedAndEveryOtherNameIsKept) {
  basalt::proplist::utils::SavePropList(tovtest::Lib(cache.NativeOf("MasterFolderList.xml")),
                                        PropList());
  const std::string dead = std::to_string(EndedProcess());
  const std::string self = std::to_string(::getpid());
  const std::string live = std::to_string(::getppid());
  const std::string list = "MasterFolderList.xml.";
  const std::vector<std::string> removed = {
      list + dead + "-4.tmp",
      list + dead + "-123456.tmp",
      // This process's own number: a save of an earlier process of that number.
      list + self + "-1.tmp",
      // The largest number the name can carry; no process has it.
      list + "4294967295-1.tmp",
  };
  const std::vector<std::string> kept = {
      list + live + "-1.tmp",                     // its process still runs
      list + "0-1.tmp",                           // 0 is no process
      list + dead + ".tmp",                       // no dash
      list + "-1.tmp",                            // no number before the dash
      list + dead + "-.tmp",                      // nothing after the dash
      list + dead + "+-1.tmp",                    // a sign in the number
      list + dead + "x-1.tmp",                    // a letter in the number
      list + dead + "-1x.tmp",                    // a letter after the dash
      list + "4294967296-1.tmp",                  // more than a process number holds
      list + ".tmp",                              // nothing between the list's name and ".tmp"
      "masterfolderlist.xml." + dead + "-1.tmp",  // another spelling of the list's name
      list + dead + "-1.TMP",                     // another spelling of ".tmp"
      "other.tmp",
  };
  for (const auto& name : removed) tovtest::WriteFile(cache.NativeOf(name), "<plist");
  for (const auto& name : kept) tovtest::WriteFile(cache.NativeOf(name), "<plist");
  // A folder named like a save of an ended process is not a save.
  const std::string folder = list + dead + "-2.tmp";
  tovtest::MakeFolder(cache.NativeOf(folder));

  Host(cache.Native());
  LookUpNothing();
  for (const auto& name : removed) EXPECT_FALSE(tovtest::Exists(cache.NativeOf(name))) << name;
  for (const auto& name : kept) EXPECT_TRUE(tovtest::Exists(cache.NativeOf(name))) << name;
  EXPECT_TRUE(tovtest::Exists(cache.NativeOf(folder)));
}

// --- a damaged list that cannot be set aside ---------------------------------------------------

class DamagedListStays : public RegistrarLeftovers {
 protected:
  // Registers a pair with a damaged list in `cacheFolder`: the registration
  // answers its file, the save fails, and the damaged list stays as it was.
  FolderRegistrar::ListReport RegisterOverDamagedList(const std::string& cacheFolder) {
    const std::string listPath = cacheFolder + "/MasterFolderList.xml";
    tovtest::WriteFile(listPath, "damaged");
    Host(cacheFolder);
    UTF16String file;
    EXPECT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, UTF16String(), file), 0u);
    EXPECT_TRUE(tovtest::Exists(tovtest::Native(file)));
    const FolderRegistrar::ListReport report = FolderRegistrar::GetListReport();
    EXPECT_EQ(report.saveStatus, TOV::kErrRegistryNotFound);
    EXPECT_EQ(tovtest::U8(report.saveError), "cannot set the damaged list aside");
    EXPECT_TRUE(report.damagedListSetAside.empty());
    EXPECT_FALSE(report.damagedReason.empty());
    EXPECT_EQ(tovtest::ReadFile(listPath), "damaged");
    // Still there after the save at exit, which fails the same way.
    Restart();
    EXPECT_EQ(tovtest::ReadFile(listPath), "damaged");
    return report;
  }
  static void Restart() { tovimpl::foundation::ResetRegistryForTesting(); }
};

TEST_F(DamagedListStays, WhenTheSetAsideNameIsTooLong) {
  // A cache folder path so long that the list's name fits and the name it
  // would be set aside under, 25 characters longer, does not.
  const std::size_t folderLength = PATH_MAX - std::string("/MasterFolderList.xml").size() -
                                   std::string(".damaged-20260101T000000Z").size();
  std::string folder = cache.Native();
  while (folder.size() < folderLength) {
    const std::size_t room = folderLength - folder.size() - 1;
    folder += "/" + std::string(room > 200 ? 200 : room, 'd');
  }
  ASSERT_EQ(folder.size(), folderLength);
  tovtest::MakeFolder(folder);
  const FolderRegistrar::ListReport report = RegisterOverDamagedList(folder);
  EXPECT_EQ(report.saveSystemError, kFilenameExcedRange);
}

// --- save temporary files deleted while they are written ------------------------------------

// Deletes every save temporary file in gSaveFolder on each write, as another
// process's first use would (an open file can be deleted here), remembering
// the names it deleted.
std::string gSaveFolder;
std::set<std::string> gDeleted;
std::uint32_t DeleteSaveTemporariesEveryTime(platform::FileHandle, std::uint32_t) {
  for (const auto& name : tovtest::ListFolder(gSaveFolder)) {
    if (name.size() > 4 && name.substr(name.size() - 4) == ".tmp") {
      if (std::remove((gSaveFolder + "/" + name).c_str()) == 0) gDeleted.insert(name);
    }
  }
  return 0;
}

// Deletes the save temporary files once, on the first write.
std::uint32_t DeleteSaveTemporariesOnce(platform::FileHandle file, std::uint32_t size) {
  platform::SetWriteFaultForTesting(nullptr);
  return DeleteSaveTemporariesEveryTime(file, size);
}

// Another process's first use, finding no list, deletes every ".tmp" file in
// the cache folder; here it strikes once while this process writes its list.
TEST_F(RegistrarLeftovers, SaveWhoseTemporaryFileVanishedOnceIsMadeAgain) {
  Host();
  gSaveFolder = cache.Native();
  gDeleted.clear();
  platform::SetWriteFaultForTesting(DeleteSaveTemporariesOnce);
  UTF16String file;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"n"_u16, file), 0u);
  EXPECT_EQ(gDeleted.size(), 1u);
  EXPECT_EQ(FolderRegistrar::GetListReport().saveStatus, 0u);
  UTF16String recorded;
  ASSERT_NE(ListOnDisk().FindChild("C:\\Media#n"), nullptr);
  ListOnDisk().FindChild("C:\\Media#n")->GetString("CacheFile", recorded);
  EXPECT_EQ(recorded, file);
  EXPECT_TRUE(Named(".tmp").empty());
}

TEST_F(RegistrarLeftovers, SaveWhoseTemporaryFileVanishesEveryTimeGivesUpAfterThreeTries) {
  Host(cache.Native());
  const std::string listPath = cache.NativeOf("MasterFolderList.xml");
  UTF16String first, second, third;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\First"_u16, UTF16String(), first), 0u);
  const std::string before = tovtest::ReadFile(listPath);
  gSaveFolder = cache.Native();
  gDeleted.clear();
  platform::SetWriteFaultForTesting(DeleteSaveTemporariesEveryTime);
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Second"_u16, UTF16String(), second), 0u);
  platform::SetWriteFaultForTesting(nullptr);
  EXPECT_EQ(gDeleted.size(), 3u);  // three temporary files, one per try
  const FolderRegistrar::ListReport report = FolderRegistrar::GetListReport();
  EXPECT_EQ(report.saveStatus, TOV::kErrRegistryNotFound);
  EXPECT_EQ(report.saveSystemError, kFileNotFound);
  EXPECT_FALSE(report.saveError.empty());
  EXPECT_EQ(tovtest::ReadFile(listPath), before);
  // The assignment stands and is saved with the next registration.
  UTF16String found;
  ASSERT_EQ(FolderRegistrar::FindFolder(u"C:\\Second"_u16, UTF16String(), found), 0u);
  EXPECT_EQ(found, second);
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Third"_u16, UTF16String(), third), 0u);
  PropList list;
  basalt::proplist::utils::LoadPropList(tovtest::Lib(listPath), list, 0);
  EXPECT_EQ(list.Keys(), (std::vector<UTF8String>{"C:\\First", "C:\\Second", "C:\\Third"}));
}

// --- the cache folder moved away while the list is written ----------------------------------

std::string gMoveFrom;
std::string gMoveTo;
int gMoves = 0;
std::uint32_t MoveCacheFolderAway(platform::FileHandle, std::uint32_t) {
  if (::rename(gMoveFrom.c_str(), gMoveTo.c_str()) == 0) ++gMoves;
  platform::SetWriteFaultForTesting(nullptr);  // once
  return 0;
}

TEST_F(RegistrarLeftovers, SaveIntoACacheFolderMovedAwayIsNotTriedAgain) {
  const std::string folder = cache.NativeOf("cache");
  tovtest::MakeFolder(folder);
  Host(folder);
  LookUpNothing();
  gMoveFrom = folder;
  gMoveTo = cache.NativeOf("moved");
  gMoves = 0;
  platform::SetWriteFaultForTesting(MoveCacheFolderAway);
  UTF16String file;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, UTF16String(), file), 0u);
  EXPECT_EQ(gMoves, 1);
  const FolderRegistrar::ListReport report = FolderRegistrar::GetListReport();
  EXPECT_EQ(report.saveStatus, TOV::kErrRegistryNotFound);
  EXPECT_EQ(report.saveSystemError, kPathNotFound);
  EXPECT_FALSE(tovtest::Exists(folder));
  EXPECT_FALSE(tovtest::Exists(gMoveTo + "/MasterFolderList.xml"));
}

// --- a cache folder the list cannot name -------------------------------------------------------

TEST_F(RegistrarLeftovers, CacheFolderWithAControlCharacterGetsNoCacheFile) {
  const std::string folder = cache.NativeOf("cache\x01");
  Host(folder);
  UTF16String file = u"unchanged"_u16;
  EXPECT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, UTF16String(), file),
            TOV::kErrRegistryNoCacheFile);
  EXPECT_EQ(file, u"unchanged"_u16);
  const std::string refusal = tovtest::U8(FolderRegistrar::GetListReport().refusal);
  EXPECT_EQ(refusal.rfind("the cache file's path holds a character", 0), 0u) << refusal;
  // The file made for the pair is removed again; the folder itself stays.
  ASSERT_TRUE(tovtest::Exists(folder));
  for (const auto& name : tovtest::ListFolder(folder)) {
    EXPECT_EQ(name.find(".vpc"), std::string::npos) << name;
  }
}

}  // namespace
