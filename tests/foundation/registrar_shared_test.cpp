// The cache-folder registrar shared by several processes, and when things
// break: damaged lists, full disks, text the list cannot store.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <thread>
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
using tovtest::FakeHost;
using tovtest::TempTree;
using tovtest::U16;
using tovtest::U8;

namespace platform = tovimpl::platform;

constexpr std::uint32_t kDiskFull = 112;

// --- what the child processes do ---------------------------------------------------

// Hosts the registrar on TOV_TEST_CACHE for the rest of the child's life.
void HostChild(FakeHost& host) {
  const char* cacheFolder = std::getenv("TOV_TEST_CACHE");
  ASSERT_NE(cacheFolder, nullptr);
  host.SetFolder(TOV::Paths::kCacheFolderEntry, tovtest::Lib(cacheFolder));
  ASSERT_EQ(TOVFoundation::Initialize(&host), 0u);
}

std::vector<std::pair<UTF16String, UTF16String>> ChildPairs() {
  std::vector<std::pair<UTF16String, UTF16String>> pairs;
  const char* pairsFile = std::getenv("TOV_TEST_PAIRS");
  if (pairsFile == nullptr) return pairs;
  std::istringstream lines(tovtest::ReadFile(pairsFile));
  std::string line;
  while (std::getline(lines, line)) {
    const auto bar = line.find('|');
    pairs.emplace_back(U16(line.substr(0, bar)), U16(line.substr(bar + 1)));
  }
  return pairs;
}

// Registers every pair of TOV_TEST_PAIRS and appends "status|path" to
// TOV_TEST_OUT right after each one, so that a process killed midway has
// reported exactly the registrations that returned.
TEST(ChildProcess, RegistrarRegistersReportingEach) {
  if (!tovtest::IsChild()) GTEST_SKIP() << "runs only as a second process";
  FakeHost host;
  HostChild(host);
  const char* outFile = std::getenv("TOV_TEST_OUT");
  ASSERT_NE(outFile, nullptr);
  std::FILE* out = std::fopen(outFile, "ab");
  ASSERT_NE(out, nullptr);
  for (const auto& [folder, name] : ChildPairs()) {
    UTF16String file;
    const std::uint32_t status = FolderRegistrar::RegisterFolder(folder, name, file);
    std::fprintf(out, "%u|%s\n", status, U8(file).c_str());
    std::fflush(out);
  }
  std::fclose(out);
  TOVFoundation::Terminate(&host);
}

// Looks every pair of TOV_TEST_PAIRS up, over and over, until the file
// TOV_TEST_STOP exists.
TEST(ChildProcess, RegistrarLooksUpUntilStopped) {
  if (!tovtest::IsChild()) GTEST_SKIP() << "runs only as a second process";
  FakeHost host;
  HostChild(host);
  const char* stop = std::getenv("TOV_TEST_STOP");
  ASSERT_NE(stop, nullptr);
  const auto pairs = ChildPairs();
  while (!tovtest::Exists(stop)) {
    for (const auto& [folder, name] : pairs) {
      UTF16String file;
      FolderRegistrar::FindFolder(folder, name, file);
    }
  }
  TOVFoundation::Terminate(&host);
}

// --- the parent's side ------------------------------------------------------------

class SharedRegistrar : public tovtest::RegistrarFixture {
 protected:
  std::map<std::string, std::string> ChildEnv(const std::string& pairs,
                                              const std::string& out) const {
    return {{"TOV_TEST_CACHE", cache.Native()},
            {"TOV_TEST_PAIRS", work.NativeOf(pairs)},
            {"TOV_TEST_OUT", work.NativeOf(out)}};
  }
  // Writes "folder|name" lines for `count` pairs of one writer.
  void WritePairs(const std::string& file, const std::string& writer, int count) const {
    std::string text;
    for (int i = 0; i < count; ++i) {
      text += "C:\\Media\\" + writer + "\\Clip " + std::to_string(i) + "|Thumbs\n";
    }
    tovtest::WriteFile(work.NativeOf(file), text);
  }
  // The "status|path" lines a child reported.
  std::vector<std::string> Reported(const std::string& out) const {
    std::vector<std::string> lines;
    std::istringstream text(tovtest::ReadFile(work.NativeOf(out)));
    std::string line;
    while (std::getline(text, line)) lines.push_back(line);
    return lines;
  }

  TempTree work;
};

TEST_F(SharedRegistrar, FourRegistrarsAndTwoLookersLoseNothing) {
  constexpr int kWriters = 4;
  constexpr int kPairs = 50;
  for (int w = 0; w < kWriters; ++w)
    WritePairs("pairs" + std::to_string(w), "W" + std::to_string(w), kPairs);
  WritePairs("look", "W0", kPairs);
  auto lookEnv = ChildEnv("look", "unused");
  lookEnv["TOV_TEST_STOP"] = work.NativeOf("stop");
  std::vector<tovtest::ChildHandle> lookers;
  for (int i = 0; i < 2; ++i) {
    lookers.push_back(tovtest::StartChild("ChildProcess.RegistrarLooksUpUntilStopped", lookEnv));
  }
  std::vector<tovtest::ChildHandle> writers;
  for (int w = 0; w < kWriters; ++w) {
    writers.push_back(
        tovtest::StartChild("ChildProcess.RegistrarRegistersReportingEach",
                            ChildEnv("pairs" + std::to_string(w), "out" + std::to_string(w))));
  }
  for (tovtest::ChildHandle child : writers) EXPECT_EQ(tovtest::WaitChild(child), 0);
  tovtest::WriteFile(work.NativeOf("stop"), "");
  for (tovtest::ChildHandle child : lookers) EXPECT_EQ(tovtest::WaitChild(child), 0);

  // A fresh registry (as a new process) finds every pair with the file its
  // registering process received, and no two pairs share a file.
  Host();
  std::set<std::string> files;
  for (int w = 0; w < kWriters; ++w) {
    const auto lines = Reported("out" + std::to_string(w));
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(kPairs));
    for (int i = 0; i < kPairs; ++i) {
      SCOPED_TRACE(lines[i]);
      ASSERT_EQ(lines[i].substr(0, 2), "0|");
      UTF16String found;
      ASSERT_EQ(FolderRegistrar::FindFolder(
                    U16("C:\\Media\\W" + std::to_string(w) + "\\Clip " + std::to_string(i)),
                    u"Thumbs"_u16, found),
                0u);
      EXPECT_EQ(U8(found), lines[i].substr(2));
      files.insert(lines[i].substr(2));
    }
  }
  EXPECT_EQ(files.size(), static_cast<std::size_t>(kWriters * kPairs));
  EXPECT_EQ(Named(".vpc").size(), static_cast<std::size_t>(kWriters * kPairs));
  EXPECT_EQ(ListOnDisk().Size(), static_cast<std::size_t>(kWriters * kPairs));
  EXPECT_TRUE(Named(".tmp").empty());
}

TEST_F(SharedRegistrar, SamePairFromTwoProcessesAtOnceGetsOneFile) {
  tovtest::WriteFile(work.NativeOf("pair"), "C:\\Media\\Shared|Thumbs\n");
  for (int round = 0; round < 20; ++round) {
    SCOPED_TRACE(round);
    TempTree roundCache;
    auto env = ChildEnv("pair", "a" + std::to_string(round));
    env["TOV_TEST_CACHE"] = roundCache.Native();
    auto envB = env;
    envB["TOV_TEST_OUT"] = work.NativeOf("b" + std::to_string(round));
    const tovtest::ChildHandle a =
        tovtest::StartChild("ChildProcess.RegistrarRegistersReportingEach", env);
    const tovtest::ChildHandle b =
        tovtest::StartChild("ChildProcess.RegistrarRegistersReportingEach", envB);
    ASSERT_EQ(tovtest::WaitChild(a), 0);
    ASSERT_EQ(tovtest::WaitChild(b), 0);
    const auto fromA = Reported("a" + std::to_string(round));
    const auto fromB = Reported("b" + std::to_string(round));
    ASSERT_EQ(fromA.size(), 1u);
    ASSERT_EQ(fromB.size(), 1u);
    EXPECT_EQ(fromA[0].substr(0, 2), "0|");
    EXPECT_EQ(fromA[0], fromB[0]);
    int vpc = 0;
    for (const auto& name : tovtest::ListFolder(roundCache.Native())) {
      if (name.size() > 4 && name.substr(name.size() - 4) == ".vpc") ++vpc;
    }
    EXPECT_EQ(vpc, 1);
  }
}

TEST_F(SharedRegistrar, FindSeesWhatAnotherProcessRegisteredAfterFirstUse) {
  Host();
  UTF16String file;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Mine"_u16, UTF16String(), file), 0u);
  // Another process adds a pair to the list.
  PropList list = ListOnDisk();
  list.CreateChild("C:\\Theirs#n").SetString("CacheFile", u"C:\\Cache\\theirs.vpc"_u16);
  basalt::proplist::utils::SavePropList(tovtest::Lib(ListPath()), list);
  UTF16String found;
  ASSERT_EQ(FolderRegistrar::FindFolder(u"C:\\Theirs"_u16, u"n"_u16, found), 0u);
  EXPECT_EQ(found, u"C:\\Cache\\theirs.vpc"_u16);
}

// A lookup that misses reads the list only while it holds the list lock, so
// that it never has the file open while another process replaces it (which
// Windows refuses, and the other process's save would be lost).
TEST_F(SharedRegistrar, LookupReadsTheListOnlyUnderTheListLock) {
  Host();
  UTF16String file;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Mine"_u16, UTF16String(), file), 0u);
  // Another process holds the lock while it adds a pair.
  const platform::Result<platform::FileHandle> lockFile =
      platform::OpenLockFile(tovtest::Lib(ListPath() + ".lock"));
  ASSERT_TRUE(lockFile.IsOk()) << lockFile.Error();
  ASSERT_TRUE(platform::TakeExclusiveLock(*lockFile).IsOk());
  PropList list = ListOnDisk();
  list.CreateChild("C:\\Theirs#n").SetString("CacheFile", u"C:\\Cache\\theirs.vpc"_u16);
  basalt::proplist::utils::SavePropList(tovtest::Lib(ListPath()), list);

  std::atomic<bool> returned{false};
  UTF16String found;
  std::uint32_t status = 1;
  std::thread lookup([&] {
    status = FolderRegistrar::FindFolder(u"C:\\Theirs"_u16, u"n"_u16, found);
    returned = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  EXPECT_FALSE(returned) << "the lookup read the list while another process held the lock";
  ASSERT_TRUE(platform::ReleaseLock(*lockFile).IsOk());
  lookup.join();
  (void)platform::CloseFile(*lockFile);
  EXPECT_EQ(status, 0u);
  EXPECT_EQ(found, u"C:\\Cache\\theirs.vpc"_u16);
}

TEST_F(SharedRegistrar, SaveKeepsEntriesAnotherProcessWroteMeanwhile) {
  Host();
  UTF16String mine;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\One"_u16, UTF16String(), mine), 0u);
  PropList list = ListOnDisk();
  list.CreateChild("C:\\Theirs").SetString("CacheFile", u"C:\\Cache\\theirs.vpc"_u16);
  basalt::proplist::utils::SavePropList(tovtest::Lib(ListPath()), list);
  UTF16String second;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Two"_u16, UTF16String(), second), 0u);
  EXPECT_EQ(ListOnDisk().Keys(), (std::vector<UTF8String>{"C:\\One", "C:\\Theirs", "C:\\Two"}));
}

std::uint32_t FailEveryWrite(platform::FileHandle, std::uint32_t) { return kDiskFull; }

TEST_F(SharedRegistrar, DifferentFileOnDiskWinsAndOwnEmptyFileIsRemoved) {
  Host();
  UTF16String before;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Before"_u16, UTF16String(), before), 0u);
  // This process's save of the pair fails, so only it knows its file...
  platform::SetWriteFaultForTesting(FailEveryWrite);
  UTF16String ours;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"n"_u16, ours), 0u);
  platform::SetWriteFaultForTesting(nullptr);
  ASSERT_TRUE(tovtest::Exists(tovtest::Native(ours)));
  // ...while another process records the same pair with another file.
  PropList list = ListOnDisk();
  list.CreateChild("C:\\Media#n").SetString("CacheFile", u"C:\\Cache\\theirs.vpc"_u16);
  basalt::proplist::utils::SavePropList(tovtest::Lib(ListPath()), list);
  UTF16String other;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Other"_u16, UTF16String(), other), 0u);
  UTF16String found;
  ASSERT_EQ(FolderRegistrar::FindFolder(u"C:\\Media"_u16, u"n"_u16, found), 0u);
  EXPECT_EQ(found, u"C:\\Cache\\theirs.vpc"_u16);
  EXPECT_FALSE(tovtest::Exists(tovtest::Native(ours)));
  UTF16String recorded;
  ASSERT_NE(ListOnDisk().FindChild("C:\\Media#n"), nullptr);
  ListOnDisk().FindChild("C:\\Media#n")->GetString("CacheFile", recorded);
  EXPECT_EQ(recorded, u"C:\\Cache\\theirs.vpc"_u16);
}

TEST_F(SharedRegistrar, ProcessThatOnlyLooksUpNeverRewritesTheList) {
  Host();
  UTF16String file;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"n"_u16, file), 0u);
  Restart();
  platform::FileVersion before{};
  ASSERT_TRUE(platform::GetFileVersion(tovtest::Lib(ListPath()), &before));
  UTF16String found;
  ASSERT_EQ(FolderRegistrar::FindFolder(u"C:\\Media"_u16, u"n"_u16, found), 0u);
  EXPECT_EQ(FolderRegistrar::FindFolder(u"C:\\Absent"_u16, u"n"_u16, found),
            TOV::kErrRegistryNotFound);
  Restart();
  platform::FileVersion after{};
  ASSERT_TRUE(platform::GetFileVersion(tovtest::Lib(ListPath()), &after));
  EXPECT_EQ(after, before);  // the same file, never replaced
}

// --- a full disk -------------------------------------------------------------------

TEST_F(SharedRegistrar, FullDiskLeavesPreviousListIntactAndIsReported) {
  Host();
  UTF16String first;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\First"_u16, UTF16String(), first), 0u);
  EXPECT_EQ(FolderRegistrar::GetListReport().saveStatus, 0u);
  const std::string listBefore = tovtest::ReadFile(ListPath());

  platform::SetWriteFaultForTesting(FailEveryWrite);
  UTF16String second;
  // The registration itself still answers 0 with its file.
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Second"_u16, UTF16String(), second), 0u);
  const FolderRegistrar::ListReport report = FolderRegistrar::GetListReport();
  EXPECT_EQ(report.saveStatus, TOV::kErrRegistryNotFound);
  EXPECT_EQ(report.saveSystemError, kDiskFull);
  EXPECT_FALSE(report.saveError.empty());
  EXPECT_EQ(tovtest::ReadFile(ListPath()), listBefore);
  EXPECT_TRUE(Named(".tmp").empty());

  // Room again: the next save writes everything, the earlier pair included.
  platform::SetWriteFaultForTesting(nullptr);
  UTF16String third;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Third"_u16, UTF16String(), third), 0u);
  EXPECT_EQ(FolderRegistrar::GetListReport().saveStatus, 0u);
  EXPECT_EQ(FolderRegistrar::GetListReport().saveSystemError, 0u);
  EXPECT_EQ(ListOnDisk().Keys(), (std::vector<UTF8String>{"C:\\First", "C:\\Second", "C:\\Third"}));
}

TEST_F(SharedRegistrar, FailedSaveIsRetriedAtExit) {
  Host();
  platform::SetWriteFaultForTesting(FailEveryWrite);
  UTF16String file;
  ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Late"_u16, UTF16String(), file), 0u);
  EXPECT_FALSE(tovtest::Exists(ListPath()));
  platform::SetWriteFaultForTesting(nullptr);
  Restart();
  ASSERT_NE(ListOnDisk().FindChild("C:\\Late"), nullptr);
}

// --- damaged lists ---------------------------------------------------------------------

struct Damage {
  const char* name;
  std::string bytes;  // empty with folder: a folder stands in the list's place
  bool folder = false;
};

std::vector<Damage> Damages() {
  PropList sample;
  sample.CreateChild("C:\\Old#n").SetString("CacheFile", u"C:\\Cache\\old.vpc"_u16);
  const std::string good = basalt::proplist::utils::FormatPropList(sample);
  std::string binary;
  for (int i = 0; i < 1000; ++i) binary.push_back(static_cast<char>((i * 7919) & 0xFF));
  std::string nul = good;
  nul.insert(nul.find("C:\\Old"), std::string(1, '\0'));
  std::string utf16 = "\xFF\xFE";
  for (char c : good) {
    utf16.push_back(c);
    utf16.push_back('\0');
  }
  std::string deep = "<?xml version=\"1.0\"?><plist><dict>";
  for (int i = 0; i < 1001; ++i) deep += "<key>k</key><dict>";
  for (int i = 0; i < 1001; ++i) deep += "</dict>";
  deep += "</dict></plist>";
  const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n";
  return {
      {"truncated", good.substr(0, good.size() / 2)},
      {"empty", ""},
      {"binary", binary},
      {"nul byte", nul},
      {"utf-16", utf16},
      {"nested over 1000 levels", deep},
      {"integer value", head + "<dict><key>k</key><integer>1</integer></dict></plist>\n"},
      {"array value", head + "<dict><key>k</key><array/></dict></plist>\n"},
      {"folder in its place", "", true},
      {"other root element", "<?xml version=\"1.0\"?><html><dict/></html>"},
      {"key without value", head + "<dict><key>k</key></dict></plist>\n"},
      {"text not utf-8", head + "<dict><key>k</key><string>\xC3(</string></dict></plist>\n"},
      {"two dicts", head + "<dict/><dict/></plist>\n"},
  };
}

TEST_F(SharedRegistrar, DamagedListIsSetAsideIntactBeforeItIsReplaced) {
  const std::regex setAsideName(R"(MasterFolderList\.xml\.damaged-\d{8}T\d{6}Z(-\d+)?)");
  for (const Damage& damage : Damages()) {
    SCOPED_TRACE(damage.name);
    TempTree roundCache;
    const std::string list = roundCache.NativeOf("MasterFolderList.xml");
    if (damage.folder) {
      tovtest::MakeFolder(list);
      tovtest::WriteFile(list + "/inside", "kept");
    } else {
      tovtest::WriteFile(list, damage.bytes);
    }
    host.SetFolder(TOV::Paths::kCacheFolderEntry, roundCache.Lib());
    ASSERT_EQ(TOVFoundation::Initialize(&host), 0u);
    UTF16String file;
    EXPECT_EQ(FolderRegistrar::FindFolder(u"C:\\Old"_u16, u"n"_u16, file),
              TOV::kErrRegistryNotFound);
    EXPECT_FALSE(FolderRegistrar::GetListReport().damagedReason.empty());
    ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\New"_u16, UTF16String(), file), 0u);

    const FolderRegistrar::ListReport report = FolderRegistrar::GetListReport();
    EXPECT_EQ(report.saveStatus, 0u);
    ASSERT_FALSE(report.damagedListSetAside.empty());
    const std::string aside = tovtest::Native(report.damagedListSetAside);
    const std::string asideName = aside.substr(aside.find_last_of('/') + 1);
    EXPECT_TRUE(std::regex_match(asideName, setAsideName)) << asideName;
    if (damage.folder) {
      EXPECT_EQ(tovtest::ReadFile(aside + "/inside"), "kept");
    } else {
      EXPECT_EQ(tovtest::ReadFile(aside), damage.bytes);
    }
    PropList saved;
    basalt::proplist::utils::LoadPropList(tovtest::Lib(list), saved, 0);
    EXPECT_EQ(saved.Keys(), (std::vector<UTF8String>{"C:\\New"}));
    Restart();
  }
}

TEST_F(SharedRegistrar, SecondDamagedListNeverOverwritesTheFirst) {
  Host();
  std::set<std::string> asides;
  for (int round = 0; round < 3; ++round) {
    tovtest::WriteFile(ListPath(), "damaged " + std::to_string(round));
    Restart();
    UTF16String file;
    ASSERT_EQ(
        FolderRegistrar::RegisterFolder(U16("C:\\R" + std::to_string(round)), UTF16String(), file),
        0u);
    asides.insert(tovtest::Native(FolderRegistrar::GetListReport().damagedListSetAside));
  }
  ASSERT_EQ(asides.size(), 3u);
  std::set<std::string> contents;
  for (const auto& aside : asides) contents.insert(tovtest::ReadFile(aside));
  EXPECT_EQ(contents, (std::set<std::string>{"damaged 0", "damaged 1", "damaged 2"}));
}

TEST_F(SharedRegistrar, DamagedListIsLeftAloneByAProcessThatOnlyLooksUp) {
  tovtest::WriteFile(ListPath(), "<plist");
  Host();
  UTF16String file;
  EXPECT_EQ(FolderRegistrar::FindFolder(u"C:\\x"_u16, UTF16String(), file),
            TOV::kErrRegistryNotFound);
  Restart();
  EXPECT_EQ(tovtest::ReadFile(ListPath()), "<plist");
  EXPECT_TRUE(Named(".vpc").empty());
}

// --- text the list cannot store ---------------------------------------------------------

TEST_F(SharedRegistrar, ControlCharactersAreRefusedOrRoundTripAcrossARestart) {
  Host();
  std::map<char16_t, UTF16String> registered;
  for (char16_t c = 1; c < 0x20; ++c) {
    SCOPED_TRACE(static_cast<int>(c));
    const UTF16String folder = u"C:\\Media\\a"_u16 + UTF16String(1, c) + u"b"_u16;
    const UTF16String name = u"n"_u16 + UTF16String(1, c);
    UTF16String file = u"unchanged"_u16;
    const std::uint32_t status = FolderRegistrar::RegisterFolder(folder, name, file);
    if (c == u'\t' || c == u'\n' || c == u'\r') {
      ASSERT_EQ(status, 0u);
      EXPECT_TRUE(FolderRegistrar::GetListReport().refusal.empty());
      registered[c] = file;
    } else {
      EXPECT_EQ(status, TOV::kErrRegistryNoCacheFile);
      EXPECT_EQ(file, u"unchanged"_u16);
      EXPECT_FALSE(FolderRegistrar::GetListReport().refusal.empty());
      EXPECT_EQ(FolderRegistrar::FindFolder(folder, name, file), TOV::kErrRegistryNotFound);
    }
    // A control character in the name alone is refused the same way.
    UTF16String other = u"unchanged"_u16;
    const std::uint32_t nameOnly =
        FolderRegistrar::RegisterFolder(u"C:\\Plain"_u16, u"x"_u16 + UTF16String(1, c), other);
    EXPECT_EQ(nameOnly == 0u, c == u'\t' || c == u'\n' || c == u'\r');
  }
  EXPECT_EQ(Named(".vpc").size(), 6u);
  Restart();
  for (const auto& [c, file] : registered) {
    SCOPED_TRACE(static_cast<int>(c));
    UTF16String found;
    ASSERT_EQ(FolderRegistrar::FindFolder(u"C:\\Media\\a"_u16 + UTF16String(1, c) + u"b"_u16,
                                          u"n"_u16 + UTF16String(1, c), found),
              0u);
    EXPECT_EQ(found, file);
    UTF16String again;
    ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\Media\\a"_u16 + UTF16String(1, c) + u"b"_u16,
                                              u"n"_u16 + UTF16String(1, c), again),
              0u);
    EXPECT_EQ(again, file);
  }
  EXPECT_EQ(Named(".vpc").size(), 6u);
}

TEST_F(SharedRegistrar, NulAndNonCharactersAreRefused) {
  Host();
  for (const unsigned short unit : {0x0000, 0xFFFE, 0xFFFF}) {
    UTF16String folder = u"C:\\Media"_u16;
    folder.push_back(unit);
    UTF16String file = u"unchanged"_u16;
    EXPECT_EQ(FolderRegistrar::RegisterFolder(folder, UTF16String(), file),
              TOV::kErrRegistryNoCacheFile);
    EXPECT_EQ(file, u"unchanged"_u16);
  }
  EXPECT_TRUE(Named(".vpc").empty());
}

}  // namespace
