// The cache-folder registrar when its processes are killed at random moments
// or run out of room (POSIX: SIGKILL and a file-size limit).
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <thread>

#include "basalt/proplist.h"
#include "foundation/registrar_internal.h"
#include "foundation_support.h"
#include "registrar_support.h"
#include "tovfoundation/foundation.h"

namespace {

using namespace basalt::literals;
using basalt::proplist::PropList;
using tovtest::U16;
using tovtest::U8;

// Registers the pairs of TOV_TEST_PAIRS like ChildProcess.
// RegistrarRegistersReportingEach, under a file-size limit of
// TOV_TEST_FSIZE bytes (SIGXFSZ ignored, so writes past it fail with EFBIG),
// then writes "saveStatus|systemError" of the last registration to
// TOV_TEST_OUT.
TEST(ChildProcess, RegistrarRegistersUnderFileSizeLimit) {
  if (!tovtest::IsChild()) GTEST_SKIP() << "runs only as a second process";
  tovtest::FakeHost host;
  host.SetFolder(TOV::Paths::kCacheFolderEntry, tovtest::Lib(std::getenv("TOV_TEST_CACHE")));
  ASSERT_EQ(TOVFoundation::Initialize(&host), 0u);
  ::signal(SIGXFSZ, SIG_IGN);
  const rlimit limit{static_cast<rlim_t>(std::atoll(std::getenv("TOV_TEST_FSIZE"))),
                     static_cast<rlim_t>(std::atoll(std::getenv("TOV_TEST_FSIZE")))};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
  std::istringstream pairs(tovtest::ReadFile(std::getenv("TOV_TEST_PAIRS")));
  std::string line;
  std::uint32_t status = 0;
  while (std::getline(pairs, line)) {
    UTF16String file;
    status |= FolderRegistrar::RegisterFolder(U16(line), UTF16String(), file);
  }
  const FolderRegistrar::ListReport report = FolderRegistrar::GetListReport();
  const std::string out = std::to_string(status) + "|" + std::to_string(report.saveStatus) + "|" +
                          std::to_string(report.saveSystemError);
  // Written before the limit could bite: the report is a few bytes.
  tovtest::WriteFile(std::getenv("TOV_TEST_OUT"), out);
  ::_exit(0);  // no save at exit: the parent looks at the list as the failed save left it
}

class RegistrarCrash : public tovtest::RegistrarFixture {
 protected:
  tovtest::TempTree work;
};

TEST_F(RegistrarCrash, KilledRegistrarsLoseNothingTheyReported) {
  constexpr int kKills = 110;
  std::mt19937 random(20261124);
  std::uniform_int_distribution<int> delayMs(2, 40);
  std::map<std::string, std::string> reported;  // folder -> file
  int kills = 0;
  for (int run = 0; kills < kKills; ++run) {
    std::string pairs;
    for (int i = 0; i < 40; ++i) {
      pairs += "C:\\Run " + std::to_string(run) + "\\Clip " + std::to_string(i) + "|\n";
    }
    const std::string pairsFile = work.NativeOf("pairs" + std::to_string(run));
    const std::string outFile = work.NativeOf("out" + std::to_string(run));
    tovtest::WriteFile(pairsFile, pairs);
    const tovtest::ChildHandle child = tovtest::StartChild(
        "ChildProcess.RegistrarRegistersReportingEach", {{"TOV_TEST_CACHE", cache.Native()},
                                                         {"TOV_TEST_PAIRS", pairsFile},
                                                         {"TOV_TEST_OUT", outFile}});
    ASSERT_GT(child, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(delayMs(random)));
    if (::kill(child, SIGKILL) == 0) ++kills;
    tovtest::WaitChild(child);
    std::istringstream lines(tovtest::ReadFile(outFile));
    std::string line;
    int i = 0;
    while (std::getline(lines, line)) {
      ASSERT_EQ(line.substr(0, 2), "0|") << line;
      reported["C:\\Run " + std::to_string(run) + "\\Clip " + std::to_string(i++)] = line.substr(2);
    }
  }
  ASSERT_GE(kills, kKills);

  // The list always loads; every reported registration is in it with its file.
  PropList list;
  ASSERT_NO_THROW(basalt::proplist::utils::LoadPropList(
      tovtest::Lib(cache.NativeOf("MasterFolderList.xml")), list, 0));
  host.SetFolder(TOV::Paths::kCacheFolderEntry, cache.Lib());
  ASSERT_EQ(TOVFoundation::Initialize(&host), 0u);
  for (const auto& [folder, file] : reported) {
    SCOPED_TRACE(folder);
    UTF16String found;
    ASSERT_EQ(FolderRegistrar::FindFolder(U16(folder), UTF16String(), found), 0u);
    EXPECT_EQ(U8(found), file);
  }
  // After this first use no temporary file of a killed save is left.
  for (const auto& name : tovtest::ListFolder(cache.Native())) {
    EXPECT_EQ(name.find(".tmp"), std::string::npos) << name;
  }
  RecordProperty("registrations_reported", static_cast<int>(reported.size()));
}

TEST_F(RegistrarCrash, FileSizeLimitFailsTheSaveAndKeepsThePreviousList) {
  // A list of a few pairs first, written without a limit.
  host.SetFolder(TOV::Paths::kCacheFolderEntry, cache.Lib());
  ASSERT_EQ(TOVFoundation::Initialize(&host), 0u);
  for (int i = 0; i < 3; ++i) {
    UTF16String file;
    ASSERT_EQ(
        FolderRegistrar::RegisterFolder(U16("C:\\Early " + std::to_string(i)), UTF16String(), file),
        0u);
  }
  tovimpl::foundation::ResetRegistryForTesting();
  const std::string listPath = cache.NativeOf("MasterFolderList.xml");
  const std::string before = tovtest::ReadFile(listPath);

  std::string pairs;
  for (int i = 0; i < 40; ++i)
    pairs += "C:\\A rather long folder name to grow the list " + std::to_string(i) + "\n";
  tovtest::WriteFile(work.NativeOf("pairs"), pairs);
  ASSERT_EQ(tovtest::RunChild("ChildProcess.RegistrarRegistersUnderFileSizeLimit",
                              {{"TOV_TEST_CACHE", cache.Native()},
                               {"TOV_TEST_PAIRS", work.NativeOf("pairs")},
                               {"TOV_TEST_OUT", work.NativeOf("out")},
                               {"TOV_TEST_FSIZE", std::to_string(before.size() + 200)}}),
            0);
  // Every registration answered 0; the save failed with "file too large" or
  // "disk full", and the list on disk is a complete earlier one.
  const std::string out = tovtest::ReadFile(work.NativeOf("out"));
  EXPECT_EQ(out.substr(0, 2), "0|") << out;
  EXPECT_NE(out.find("|3222536193|"), std::string::npos) << out;  // kErrRegistryNotFound
  PropList list;
  ASSERT_NO_THROW(basalt::proplist::utils::LoadPropList(tovtest::Lib(listPath), list, 0));
  EXPECT_GE(list.Size(), 3u);
  EXPECT_LT(list.Size(), 43u);
  for (const auto& name : tovtest::ListFolder(cache.Native())) {
    EXPECT_EQ(name.find(".tmp"), std::string::npos) << name;
  }
}

// The control characters the registrar accepts (tab, line feed, carriage
// return) are stored so that Python's plistlib reads them back exactly too.
TEST_F(RegistrarCrash, AcceptedControlCharactersReadBackExactlyInPlistlib) {
  host.SetFolder(TOV::Paths::kCacheFolderEntry, cache.Lib());
  ASSERT_EQ(TOVFoundation::Initialize(&host), 0u);
  for (const char* name : {"a\tb", "a\nb", "a\rb", "a\r\nb"}) {
    UTF16String file;
    ASSERT_EQ(FolderRegistrar::RegisterFolder(u"C:\\M"_u16, U16(name), file), 0u);
  }
  const std::string script = work.NativeOf("keys.py");
  tovtest::WriteFile(script,
                     "import plistlib, sys\n"
                     "with open(sys.argv[1], 'rb') as f: d = plistlib.load(f)\n"
                     "for k in sorted(d): print(' '.join(str(ord(c)) for c in k))\n");
  const std::string command =
      "/usr/bin/python3 " + script + " '" + cache.NativeOf("MasterFolderList.xml") + "'";
  FILE* pipe = ::popen(command.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::string out;
  char buffer[1024];
  while (std::size_t got = std::fread(buffer, 1, sizeof buffer, pipe)) out.append(buffer, got);
  ASSERT_EQ(::pclose(pipe), 0);
  // The keys, character by character: "C:\M#a", then the characters kept.
  const std::string prefix = "67 58 92 77 35 97 ";
  EXPECT_EQ(out,
            prefix + "9 98\n" + prefix + "10 98\n" + prefix + "13 10 98\n" + prefix + "13 98\n");
}

}  // namespace
