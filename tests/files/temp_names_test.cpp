// Automatic names, temporary names and folders, the home folder, and the
// copy, move, delete and trash wrappers.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "basalt/thread.h"
#include "files/files_support.h"
#include "platform/error.h"
#include "tovfoundation/files.h"

using namespace basalt::literals;
namespace PU = Halyard::PathUtilities;
using files_test::ScopedEnv;
using files_test::TempFolder;
using files_test::U16;
using files_test::U8;

namespace {

std::string NativeOf(const UTF16String& lib) { return U8(PU::ToPlatformPath(lib)); }

std::uintmax_t SizeOf(const UTF16String& lib) { return std::filesystem::file_size(NativeOf(lib)); }

}  // namespace

// --- automatic names -------------------------------------------------------------

TEST(AutoFileName, NameIsPrefixProcessThreadTicksExtension) {
  TempFolder temp;
  const UTF16String name = PU::GetAutoFileName(temp.Lib(), u"TOVCache"_u16, u".vpc"_u16);
  const std::string expected = "^" +
                               std::regex_replace(U8(temp.Lib()), std::regex(R"(\\)"), R"(\\)") +
                               R"(\\TOVCache)" + std::to_string(basalt::GetCurrentProcessID()) +
                               "_" + std::to_string(basalt::GetCurrentThreadID()) + R"(_\d+\.vpc$)";
  EXPECT_TRUE(std::regex_match(U8(name), std::regex(expected))) << U8(name);
}

TEST(AutoFileName, LeavesAnEmptyFileAtTheReturnedPath) {
  TempFolder temp;
  const UTF16String name = PU::GetAutoFileName(temp.Lib(), u"p"_u16, u".x"_u16);
  ASSERT_TRUE(std::filesystem::is_regular_file(NativeOf(name)));
  EXPECT_EQ(SizeOf(name), 0u);
}

TEST(AutoFileName, FolderWithOrWithoutTrailingBackslashGivesOneSeparator) {
  TempFolder temp;
  const UTF16String a = PU::GetAutoFileName(temp.Lib(), u"A"_u16, u".t"_u16);
  const UTF16String b = PU::GetAutoFileName(temp.Lib() + u"\\"_u16, u"B"_u16, u".t"_u16);
  EXPECT_EQ(a.substr(0, temp.Lib().size() + 2), temp.Lib() + u"\\A"_u16);
  EXPECT_EQ(b.substr(0, temp.Lib().size() + 2), temp.Lib() + u"\\B"_u16);
}

TEST(AutoFileName, FileOrMissingPathThrowsNotAValidFolderPath) {
  TempFolder temp;
  files_test::WriteFile(temp.NativeOf("file"), "");
  EXPECT_THROW(PU::GetAutoFileName(temp.Lib("file"), u"p"_u16, u".x"_u16), PU::NotAValidFolderPath);
  EXPECT_THROW(PU::GetAutoFileName(temp.Lib("missing"), u"p"_u16, u".x"_u16),
               PU::NotAValidFolderPath);
}

TEST(AutoFileName, UncreatableFileThrowsUnableToCreateFile) {
  if (::geteuid() == 0) GTEST_SKIP() << "root writes into read-only folders";
  TempFolder temp;
  files_test::MakeFolder(temp.NativeOf("ro"));
  ::chmod(temp.NativeOf("ro").c_str(), 0500);
  EXPECT_THROW(PU::GetAutoFileName(temp.Lib("ro"), u"p"_u16, u".x"_u16), PU::UnableToCreateFile);
  ::chmod(temp.NativeOf("ro").c_str(), 0700);
}

TEST(AutoFileName, OverlongNameThrowsUnableToCreateFile) {
  TempFolder temp;
  EXPECT_THROW(PU::GetAutoFileName(temp.Lib(), UTF16String(300, 'p'), u".x"_u16),
               PU::UnableToCreateFile);
}

TEST(AutoFileName, NameGrowsAfterCollisionWithinOneTick) {
  TempFolder temp;
  // Occupy every name this thread could get in the next few seconds, so the
  // first candidate collides and a second group is appended.
  const std::string stem = std::to_string(basalt::GetCurrentProcessID()) + "_" +
                           std::to_string(basalt::GetCurrentThreadID()) + "_";
  // Occupy a window of 2000 ticks starting ahead of the clock, then wait until
  // the clock is inside it. Making the files may be slow: a later attempt
  // starts its window as far ahead as the previous one took.
  constexpr std::uint32_t kWindow = 2000;
  std::uint32_t start = 0;
  std::uint32_t margin = 100;
  for (int attempt = 0;; ++attempt) {
    ASSERT_LT(attempt, 5) << "the clock kept outrunning the occupied window";
    const std::uint32_t before = basalt::GetTickCount();
    start = before + margin;
    for (std::uint32_t t = start; t != start + kWindow; ++t) {
      const std::string file = temp.NativeOf("c" + stem + std::to_string(t) + ".v");
      const int fd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
      ASSERT_GE(fd, 0);
      ::close(fd);
    }
    margin = basalt::GetTickCount() - before + 200u;
    while (static_cast<std::int32_t>(basalt::GetTickCount() - start) < 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (basalt::GetTickCount() - start < kWindow - 500u) break;
  }
  const std::uint32_t end = start + kWindow;
  const UTF16String name = PU::GetAutoFileName(temp.Lib(), u"c"_u16, u".v"_u16);
  const std::regex grown(R"(.*\\c)" + stem + R"((\d+))" + stem + R"((\d+)\.v$)");
  std::smatch m;
  const std::string text = U8(name);
  ASSERT_TRUE(std::regex_match(text, m, grown)) << text;
  const std::uint32_t first = static_cast<std::uint32_t>(std::stoul(m[1].str()));
  EXPECT_LT(first - start, end - start);
  EXPECT_TRUE(files_test::Exists(NativeOf(name)));
}

TEST(AutoFileName, EightThreadsGetDistinctNames) {
  TempFolder temp;
  std::vector<std::vector<UTF16String>> perThread(8);
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&, i] {
      for (int k = 0; k < 4; ++k) {
        perThread[static_cast<std::size_t>(i)].push_back(
            PU::GetAutoFileName(temp.Lib(), u"T"_u16, u".tmp"_u16));
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
      }
    });
  }
  for (auto& t : threads) t.join();
  std::set<UTF16String> all;
  for (const auto& names : perThread) {
    for (const auto& name : names) {
      all.insert(name);
      EXPECT_EQ(SizeOf(name), 0u);
    }
  }
  EXPECT_EQ(all.size(), 32u);
}

TEST(AutoFileName, TwoProcessesGetDistinctNames) {
  TempFolder temp;
  std::vector<pid_t> children;
  for (int p = 0; p < 2; ++p) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      int status = 0;
      try {
        std::ofstream out(temp.NativeOf("names" + std::to_string(p)));
        for (int k = 0; k < 5; ++k) {
          out << U8(PU::GetAutoFileName(temp.Lib(), u"P"_u16, u".tmp"_u16)) << '\n';
          ::usleep(2000);
        }
      } catch (...) {
        status = 1;
      }
      ::_exit(status);
    }
    children.push_back(child);
  }
  for (pid_t child : children) {
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  std::set<std::string> all;
  for (int p = 0; p < 2; ++p) {
    std::ifstream in(temp.NativeOf("names" + std::to_string(p)));
    std::string line;
    while (std::getline(in, line)) {
      all.insert(line);
      EXPECT_EQ(std::filesystem::file_size(NativeOf(U16(line))), 0u);
    }
  }
  EXPECT_EQ(all.size(), 10u);
}

// --- temporary folder and names --------------------------------------------------

TEST(TempFolder, ComesFromTmpdirWithTrailingBackslash) {
  TempFolder temp;
  ScopedEnv tmpdir("TMPDIR", temp.Native().c_str());
  EXPECT_EQ(PU::TOVGetTempFolder(), temp.Lib() + u"\\"_u16);
  EXPECT_EQ(Halyard::PathUtils::GetTempFolder(), U8(temp.Lib()) + "\\");
}

TEST(TempFolder, DefaultsToSlashTmp) {
  ScopedEnv tmpdir("TMPDIR", nullptr);
  EXPECT_EQ(PU::TOVGetTempFolder(), u"\\tmp\\"_u16);
}

TEST(TempFolder, MissingFolderThrows) {
  TempFolder temp;
  ScopedEnv tmpdir("TMPDIR", temp.NativeOf("missing").c_str());
  EXPECT_THROW(PU::TOVGetTempFolder(), PU::NotAValidFolderPath);
  EXPECT_THROW(Halyard::PathUtils::GetTempFolder(), Halyard::TOVNotAValidFolderPathException);
  EXPECT_THROW(PU::TOVGetTempFileName(), PU::NotAValidFolderPath);
}

TEST(TempFileName, CreatesUnderscoreTOFileInTempFolder) {
  TempFolder temp;
  ScopedEnv tmpdir("TMPDIR", temp.Native().c_str());
  const UTF16String name = PU::TOVGetTempFileName();
  EXPECT_TRUE(std::regex_match(U8(name), std::regex(R"(.*\\_TO[0-9A-F]{1,4}\.tmp$)"))) << U8(name);
  EXPECT_EQ(name.substr(0, temp.Lib().size() + 1), temp.Lib() + u"\\"_u16);
  EXPECT_EQ(SizeOf(name), 0u);
  const UTF16String second = PU::TOVGetTempFileName();
  EXPECT_NE(second, name);
  const std::string narrow = Halyard::PathUtils::GetTemporaryFileName();
  EXPECT_TRUE(std::regex_match(narrow, std::regex(R"(.*\\_TO[0-9A-F]{1,4}\.tmp$)"))) << narrow;
  EXPECT_TRUE(files_test::Exists(NativeOf(U16(narrow))));
}

TEST(TempFileName, NameIsPrefixAndResult) {
  TempFolder temp;
  UTF16String name = u"abcdef"_u16;
  PU::TOVGetTempFileName(temp.Lib(), name);
  EXPECT_TRUE(std::regex_match(U8(name), std::regex(R"(.*\\abc[0-9A-F]{1,4}\.tmp$)"))) << U8(name);
  EXPECT_TRUE(files_test::Exists(NativeOf(name)));
}

TEST(TempFileName, MissingFolderThrowsAndLeavesNameUnchanged) {
  TempFolder temp;
  UTF16String name = u"abc"_u16;
  EXPECT_THROW(PU::TOVGetTempFileName(temp.Lib("missing"), name), PU::NotAValidFolderPath);
  EXPECT_EQ(name, u"abc"_u16);
}

TEST(TempFileName, FileInsteadOfFolderThrowsUnableToGetTempFileName) {
  TempFolder temp;
  files_test::WriteFile(temp.NativeOf("file"), "");
  UTF16String name = u"abc"_u16;
  EXPECT_THROW(PU::TOVGetTempFileName(temp.Lib("file"), name), PU::UnableToGetTempFileName);
  EXPECT_EQ(name, u"abc"_u16);
}

// --- home folder -------------------------------------------------------------------

TEST(PreferencesFolder, HomeDriveFollowedByHomePath) {
  TempFolder temp;
  files_test::MakeFolder(temp.NativeOf("C:/Users/ed"));
  const auto saved = std::filesystem::current_path();
  std::filesystem::current_path(temp.Native());  // "C:\Users\ed" is relative on POSIX
  ScopedEnv drive("HOMEDRIVE", "C:");
  ScopedEnv path("HOMEPATH", "\\Users\\ed");
  EXPECT_EQ(PU::TOVGetPreferencesFolder(), u"C:\\Users\\ed"_u16);
  std::filesystem::current_path(saved);
}

TEST(PreferencesFolder, HomeStandsInWhenNeitherVariableIsSet) {
  TempFolder temp;
  ScopedEnv drive("HOMEDRIVE", nullptr);
  ScopedEnv path("HOMEPATH", nullptr);
  // HOME as the system spells it (backslashes on Windows, where it is taken as is).
  const std::string spelled = std::filesystem::path(temp.Native()).make_preferred().string();
  ScopedEnv home("HOME", spelled.c_str());
  EXPECT_EQ(PU::TOVGetPreferencesFolder(), temp.Lib());
}

TEST(PreferencesFolder, MissingFolderThrows) {
  TempFolder temp;
  ScopedEnv drive("HOMEDRIVE", "");
  ScopedEnv path("HOMEPATH", temp.NativeOf("missing").c_str());
  EXPECT_THROW(PU::TOVGetPreferencesFolder(), Halyard::TOVNotAValidFolderPathException);
}

// --- copy, move, delete ---------------------------------------------------------------

TEST(FileOperations, CopyOverwritesExistingTarget) {
  TempFolder temp;
  files_test::WriteFile(temp.NativeOf("a"), "new contents");
  files_test::WriteFile(temp.NativeOf("b"), "old and longer contents");
  EXPECT_EQ(PU::TOVCopyFile(temp.Lib("a"), temp.Lib("b")), 1);
  EXPECT_EQ(files_test::ReadFile(temp.NativeOf("b")), "new contents");
  EXPECT_EQ(PU::TOVCopyFile(temp.Lib("missing"), temp.Lib("c")), 0);
  EXPECT_EQ(PU::TOVCopyFile(temp.Lib("a"), temp.Lib("a")), 0);  // onto itself
  EXPECT_EQ(files_test::ReadFile(temp.NativeOf("a")), "new contents");
}

namespace {
struct ProgressLog {
  std::vector<std::pair<std::uint64_t, std::uint32_t>> calls;  // bytes so far, reason
  std::uint32_t answer = PU::kProgressContinue;
  std::size_t answerAt = 0;  // the call that answers `answer`
};

std::uint32_t Progress(std::uint64_t total, std::uint64_t done, std::uint64_t streamSize,
                       std::uint64_t streamDone, std::uint32_t stream, std::uint32_t reason,
                       void* src, void* dst, void* data) {
  auto* log = static_cast<ProgressLog*>(data);
  EXPECT_EQ(total, streamSize);
  EXPECT_EQ(done, streamDone);
  EXPECT_EQ(stream, 1u);
  EXPECT_EQ(src, nullptr);
  EXPECT_EQ(dst, nullptr);
  log->calls.emplace_back(done, reason);
  return log->calls.size() - 1 == log->answerAt ? log->answer : PU::kProgressContinue;
}
}  // namespace

TEST(FileOperations, CopyExReportsProgressPerChunk) {
  TempFolder temp;
  const std::string data(3 * 1024 * 1024 + 5, 'x');
  files_test::WriteFile(temp.NativeOf("big"), data);
  ProgressLog log;
  log.answerAt = 99;
  EXPECT_EQ(PU::TOVCopyFileEx(temp.Lib("big"), temp.Lib("copy"), Progress, &log), 1);
  ASSERT_EQ(log.calls.size(), 5u);
  EXPECT_EQ(log.calls[0], std::make_pair(std::uint64_t{0}, PU::kCallbackStreamSwitch));
  EXPECT_EQ(log.calls.back(),
            std::make_pair(std::uint64_t{data.size()}, PU::kCallbackChunkFinished));
  EXPECT_EQ(files_test::ReadFile(temp.NativeOf("copy")), data);
}

TEST(FileOperations, CopyExCancelDeletesPartialTarget) {
  TempFolder temp;
  files_test::WriteFile(temp.NativeOf("big"), std::string(3 * 1024 * 1024, 'x'));
  ProgressLog log;
  log.answer = PU::kProgressCancel;
  log.answerAt = 1;
  EXPECT_EQ(PU::TOVCopyFileEx(temp.Lib("big"), temp.Lib("copy"), Progress, &log), 0);
  EXPECT_EQ(log.calls.size(), 2u);
  EXPECT_FALSE(files_test::Exists(temp.NativeOf("copy")));
}

TEST(FileOperations, CopyExStopKeepsPartialTarget) {
  TempFolder temp;
  files_test::WriteFile(temp.NativeOf("big"), std::string(3 * 1024 * 1024, 'x'));
  ProgressLog log;
  log.answer = PU::kProgressStop;
  log.answerAt = 1;
  EXPECT_EQ(PU::TOVCopyFileEx(temp.Lib("big"), temp.Lib("copy"), Progress, &log), 0);
  EXPECT_EQ(std::filesystem::file_size(temp.NativeOf("copy")), 1024u * 1024u);
}

TEST(FileOperations, CopyExQuietStopsTheCalls) {
  TempFolder temp;
  files_test::WriteFile(temp.NativeOf("big"), std::string(3 * 1024 * 1024, 'x'));
  ProgressLog log;
  log.answer = PU::kProgressQuiet;
  log.answerAt = 0;
  EXPECT_EQ(PU::TOVCopyFileEx(temp.Lib("big"), temp.Lib("copy"), Progress, &log), 1);
  EXPECT_EQ(log.calls.size(), 1u);
  EXPECT_EQ(std::filesystem::file_size(temp.NativeOf("copy")), 3u * 1024u * 1024u);
}

TEST(FileOperations, MoveOntoExistingTargetFails) {
  TempFolder temp;
  files_test::WriteFile(temp.NativeOf("a"), "a");
  files_test::WriteFile(temp.NativeOf("b"), "b");
  EXPECT_EQ(PU::TOVMoveFile(temp.Lib("a"), temp.Lib("b")), 0);
  EXPECT_EQ(tovimpl::platform::GetLastError(), tovimpl::platform::kErrorAlreadyExists);
  EXPECT_EQ(files_test::ReadFile(temp.NativeOf("b")), "b");
  EXPECT_EQ(PU::TOVMoveFile(temp.Lib("a"), temp.Lib("c")), 1);
  EXPECT_FALSE(files_test::Exists(temp.NativeOf("a")));
  EXPECT_EQ(files_test::ReadFile(temp.NativeOf("c")), "a");
}

TEST(FileOperations, MoveRenamesFolders) {
  TempFolder temp;
  files_test::MakeFolder(temp.NativeOf("d1"));
  files_test::WriteFile(temp.NativeOf("d1/f"), "f");
  EXPECT_EQ(PU::TOVMoveFile(temp.Lib("d1"), temp.Lib("d2")), 1);
  EXPECT_EQ(files_test::ReadFile(temp.NativeOf("d2/f")), "f");
  EXPECT_EQ(PU::TOVMoveFile(temp.Lib("missing"), temp.Lib("x")), 0);
  EXPECT_EQ(tovimpl::platform::GetLastError(), tovimpl::platform::kErrorFileNotFound);
}

TEST(FileOperations, MoveAcrossFileSystemsCopiesFilesAndRefusesFolders) {
  TempFolder temp;
  struct stat a {
  }, b{};
  if (::stat("/dev/shm", &b) != 0 || ::stat(temp.Native().c_str(), &a) != 0 ||
      a.st_dev == b.st_dev || ::access("/dev/shm", W_OK) != 0) {
    GTEST_SKIP() << "no second writable file system";
  }
  char pattern[] = "/dev/shm/tovfiles-XXXXXX";
  ASSERT_NE(::mkdtemp(pattern), nullptr);
  const std::string other = pattern;
  files_test::WriteFile(temp.NativeOf("f"), "payload");
  EXPECT_EQ(PU::TOVMoveFile(temp.Lib("f"), files_test::Lib(other + "/f")), 1);
  EXPECT_FALSE(files_test::Exists(temp.NativeOf("f")));
  EXPECT_EQ(files_test::ReadFile(other + "/f"), "payload");
  files_test::MakeFolder(temp.NativeOf("dir"));
  EXPECT_EQ(PU::TOVMoveFile(temp.Lib("dir"), files_test::Lib(other + "/dir")), 0);
  EXPECT_EQ(tovimpl::platform::GetLastError(), tovimpl::platform::kErrorNotSameDevice);
  std::filesystem::remove_all(other);
}

TEST(FileOperations, DeleteOfMissingFileIsTrue) {
  TempFolder temp;
  EXPECT_EQ(PU::TOVDeleteFile(temp.Lib("missing")), 1);
  files_test::WriteFile(temp.NativeOf("f"), "");
  EXPECT_EQ(PU::TOVDeleteFile(temp.Lib("f")), 1);
  EXPECT_FALSE(files_test::Exists(temp.NativeOf("f")));
  EXPECT_EQ(PU::TOVDeleteFile(temp.Lib()), 0);  // a folder is not deleted
}

// --- trash ------------------------------------------------------------------------------

TEST(Trash, FileGoesToHomeTrashWithInfoRecord) {
  TempFolder temp;
  ScopedEnv xdg("XDG_DATA_HOME", temp.NativeOf("data").c_str());
  files_test::WriteFile(temp.NativeOf("my file.txt"), "bytes");
  EXPECT_EQ(PU::TOVMoveToTrash(temp.Lib("my file.txt")), 1);
  EXPECT_FALSE(files_test::Exists(temp.NativeOf("my file.txt")));
  EXPECT_EQ(files_test::ReadFile(temp.NativeOf("data/Trash/files/my file.txt")), "bytes");
  const std::string info =
      files_test::ReadFile(temp.NativeOf("data/Trash/info/my file.txt.trashinfo"));
  const std::regex record(
      "\\[Trash Info\\]\nPath=" + temp.Native() +
      "/my%20file\\.txt\nDeletionDate=\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\n");
  EXPECT_TRUE(std::regex_match(info, record)) << info;
}

TEST(Trash, SameNameTwiceGetsUniqueNames) {
  TempFolder temp;
  ScopedEnv xdg("XDG_DATA_HOME", temp.NativeOf("data").c_str());
  files_test::WriteFile(temp.NativeOf("a"), "1");
  EXPECT_EQ(PU::TOVMoveToTrash(temp.Lib("a")), 1);
  files_test::WriteFile(temp.NativeOf("a"), "2");
  EXPECT_EQ(PU::TOVMoveToTrash(temp.Lib("a")), 1);
  EXPECT_EQ(files_test::ReadFile(temp.NativeOf("data/Trash/files/a")), "1");
  EXPECT_EQ(files_test::ReadFile(temp.NativeOf("data/Trash/files/a.2")), "2");
  EXPECT_TRUE(files_test::Exists(temp.NativeOf("data/Trash/info/a.2.trashinfo")));
}

TEST(Trash, FoldersAreTrashedToo) {
  TempFolder temp;
  ScopedEnv xdg("XDG_DATA_HOME", temp.NativeOf("data").c_str());
  files_test::MakeFolder(temp.NativeOf("dir/sub"));
  EXPECT_EQ(PU::TOVMoveToTrash(temp.Lib("dir")), 1);
  EXPECT_TRUE(std::filesystem::is_directory(temp.NativeOf("data/Trash/files/dir/sub")));
}

TEST(Trash, MissingItemIsFalseAndLeavesNoRecord) {
  TempFolder temp;
  ScopedEnv xdg("XDG_DATA_HOME", temp.NativeOf("data").c_str());
  EXPECT_EQ(PU::TOVMoveToTrash(temp.Lib("missing")), 0);
  EXPECT_FALSE(files_test::Exists(temp.NativeOf("data/Trash/info/missing.trashinfo")));
}

TEST(Trash, HomeTrashFromHomeWhenDataHomeUnset) {
  TempFolder temp;
  ScopedEnv xdg("XDG_DATA_HOME", nullptr);
  ScopedEnv home("HOME", temp.Native().c_str());
  files_test::WriteFile(temp.NativeOf("f"), "");
  EXPECT_EQ(PU::TOVMoveToTrash(temp.Lib("f")), 1);
  EXPECT_TRUE(files_test::Exists(temp.NativeOf(".local/share/Trash/files/f")));
}

TEST(Trash, OtherFileSystemUsesTopFolderTrash) {
  TempFolder temp;
  struct stat a {
  }, b{};
  if (::stat("/dev/shm", &b) != 0 || ::stat(temp.Native().c_str(), &a) != 0 ||
      a.st_dev == b.st_dev || ::access("/dev/shm", W_OK) != 0) {
    GTEST_SKIP() << "no second writable file system";
  }
  const std::string topTrash = "/dev/shm/.Trash-" + std::to_string(::getuid());
  const bool hadTopTrash = files_test::Exists(topTrash);
  char pattern[] = "/dev/shm/tovfiles-XXXXXX";
  ASSERT_NE(::mkdtemp(pattern), nullptr);
  const std::string other = pattern;
  const std::string leaf = other.substr(other.rfind('/') + 1);
  ScopedEnv xdg("XDG_DATA_HOME", temp.NativeOf("data").c_str());
  files_test::WriteFile(other + "/f", "x");
  EXPECT_EQ(PU::TOVMoveToTrash(files_test::Lib(other + "/f")), 1);
  EXPECT_EQ(files_test::ReadFile(topTrash + "/files/f"), "x");
  const std::string info = files_test::ReadFile(topTrash + "/info/f.trashinfo");
  EXPECT_NE(info.find("Path=" + leaf + "/f\n"), std::string::npos) << info;  // relative to the top
  std::filesystem::remove(topTrash + "/files/f");
  std::filesystem::remove(topTrash + "/info/f.trashinfo");
  if (!hadTopTrash) std::filesystem::remove_all(topTrash);
  std::filesystem::remove_all(other);
}
