// The POSIX rules of automatic and temporary names, folders, copies, moves
// and the trash: TMPDIR and /tmp, permission bits, the copy loop's chunks,
// the freedesktop.org trash, a second process made with fork and a second
// file system in /dev/shm.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "files/files_support.h"
#include "platform/error.h"
#include "tovfoundation/files.h"

using namespace basalt::literals;
namespace PU = Halyard::PathUtilities;
using tovtest::ScopedEnv;
using tovtest::TempTree;
using tovtest::U16;
using tovtest::U8;

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

// True when /dev/shm is a writable file system other than the one of `temp`.
bool SecondFileSystem(const TempTree& temp) {
  struct stat a {
  }, b{};
  return ::stat("/dev/shm", &b) == 0 && ::stat(temp.Native().c_str(), &a) == 0 &&
         a.st_dev != b.st_dev && ::access("/dev/shm", W_OK) == 0;
}

// Copies "big" (3 MiB) to "copy" in `temp` through Progress with `log`; what
// the copy returned.
unsigned char CopyBig(const TempTree& temp, ProgressLog& log) {
  tovtest::WriteFile(temp.NativeOf("big"), std::string(3 * 1024 * 1024, 'x'));
  return PU::TOVCopyFileEx(temp.Lib("big"), temp.Lib("copy"), Progress, &log);
}

TEST(AutoFileName, UncreatableFileThrowsUnableToCreateFile) {
  if (::geteuid() == 0) GTEST_SKIP() << "root writes into read-only folders";
  TempTree temp;
  tovtest::MakeFolder(temp.NativeOf("ro"));
  ::chmod(temp.NativeOf("ro").c_str(), 0500);
  EXPECT_THROW(PU::GetAutoFileName(temp.Lib("ro"), u"p"_u16, u".x"_u16), PU::UnableToCreateFile);
  ::chmod(temp.NativeOf("ro").c_str(), 0700);
}

TEST(AutoFileName, TwoProcessesGetDistinctNames) {
  TempTree temp;
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
      EXPECT_EQ(tovtest::PlatformFileSize(U16(line)), 0u);
    }
  }
  EXPECT_EQ(all.size(), 10u);
}

TEST(TempFolder, ComesFromTmpdirWithTrailingBackslash) {
  TempTree temp;
  ScopedEnv tmpdir("TMPDIR", temp.Native().c_str());
  EXPECT_EQ(PU::TOVGetTempFolder(), temp.Lib() + u"\\"_u16);
  EXPECT_EQ(Halyard::PathUtils::GetTempFolder(), U8(temp.Lib()) + "\\");
}

TEST(TempFolder, DefaultsToSlashTmp) {
  ScopedEnv tmpdir("TMPDIR", nullptr);
  EXPECT_EQ(PU::TOVGetTempFolder(), u"\\tmp\\"_u16);
}

TEST(TempFolder, MissingFolderThrows) {
  TempTree temp;
  ScopedEnv tmpdir("TMPDIR", temp.NativeOf("missing").c_str());
  EXPECT_THROW(PU::TOVGetTempFolder(), PU::NotAValidFolderPath);
  EXPECT_THROW(Halyard::PathUtils::GetTempFolder(), Halyard::TOVNotAValidFolderPathException);
  EXPECT_THROW(PU::TOVGetTempFileName(), PU::NotAValidFolderPath);
}

TEST(TempFileName, CreatesUnderscoreTOFileInTempFolder) {
  TempTree temp;
  ScopedEnv tmpdir("TMPDIR", temp.Native().c_str());
  const UTF16String name = PU::TOVGetTempFileName();
  EXPECT_TRUE(std::regex_match(U8(name), std::regex(R"(.*\\_TO[0-9A-F]{1,4}\.tmp$)"))) << U8(name);
  EXPECT_EQ(name.substr(0, temp.Lib().size() + 1), temp.Lib() + u"\\"_u16);
  EXPECT_EQ(tovtest::PlatformFileSize(name), 0u);
  const UTF16String second = PU::TOVGetTempFileName();
  EXPECT_NE(second, name);
  const std::string narrow = Halyard::PathUtils::GetTemporaryFileName();
  EXPECT_TRUE(std::regex_match(narrow, std::regex(R"(.*\\_TO[0-9A-F]{1,4}\.tmp$)"))) << narrow;
  EXPECT_TRUE(tovtest::Exists(tovtest::PlatformPath(U16(narrow))));
}

TEST(PreferencesFolder, HomeDriveFollowedByHomePath) {
  TempTree temp;
  tovtest::MakeFolder(temp.NativeOf("C:/Users/ed"));
  const auto saved = std::filesystem::current_path();
  std::filesystem::current_path(temp.Native());  // "C:\Users\ed" is relative on POSIX
  ScopedEnv drive("HOMEDRIVE", "C:");
  ScopedEnv path("HOMEPATH", "\\Users\\ed");
  EXPECT_EQ(PU::TOVGetPreferencesFolder(), u"C:\\Users\\ed"_u16);
  std::filesystem::current_path(saved);
}

TEST(FileOperations, CopyExReportsProgressPerChunk) {
  TempTree temp;
  const std::string data(3 * 1024 * 1024 + 5, 'x');
  tovtest::WriteFile(temp.NativeOf("big"), data);
  ProgressLog log;
  log.answerAt = 99;
  EXPECT_EQ(PU::TOVCopyFileEx(temp.Lib("big"), temp.Lib("copy"), Progress, &log), 1);
  ASSERT_EQ(log.calls.size(), 5u);
  EXPECT_EQ(log.calls[0], std::make_pair(std::uint64_t{0}, PU::kCallbackStreamSwitch));
  EXPECT_EQ(log.calls.back(),
            std::make_pair(std::uint64_t{data.size()}, PU::kCallbackChunkFinished));
  EXPECT_EQ(tovtest::ReadFile(temp.NativeOf("copy")), data);
}

TEST(FileOperations, CopyExCancelDeletesPartialTarget) {
  TempTree temp;
  ProgressLog log{{}, PU::kProgressCancel, 1};
  EXPECT_EQ(CopyBig(temp, log), 0);
  EXPECT_EQ(log.calls.size(), 2u);
  EXPECT_FALSE(tovtest::Exists(temp.NativeOf("copy")));
}

TEST(FileOperations, CopyExStopKeepsPartialTarget) {
  TempTree temp;
  ProgressLog log{{}, PU::kProgressStop, 1};
  EXPECT_EQ(CopyBig(temp, log), 0);
  EXPECT_EQ(std::filesystem::file_size(temp.NativeOf("copy")), 1024u * 1024u);
}

TEST(FileOperations, CopyExQuietStopsTheCalls) {
  TempTree temp;
  ProgressLog log{{}, PU::kProgressQuiet, 0};
  EXPECT_EQ(CopyBig(temp, log), 1);
  EXPECT_EQ(log.calls.size(), 1u);
  EXPECT_EQ(std::filesystem::file_size(temp.NativeOf("copy")), 3u * 1024u * 1024u);
}

TEST(FileOperations, MoveAcrossFileSystemsCopiesFilesAndRefusesFolders) {
  TempTree temp;
  if (!SecondFileSystem(temp)) GTEST_SKIP() << "no second writable file system";
  char pattern[] = "/dev/shm/tovfiles-XXXXXX";
  ASSERT_NE(::mkdtemp(pattern), nullptr);
  const std::string other = pattern;
  tovtest::WriteFile(temp.NativeOf("f"), "payload");
  EXPECT_EQ(PU::TOVMoveFile(temp.Lib("f"), tovtest::Lib(other + "/f")), 1);
  EXPECT_FALSE(tovtest::Exists(temp.NativeOf("f")));
  EXPECT_EQ(tovtest::ReadFile(other + "/f"), "payload");
  tovtest::MakeFolder(temp.NativeOf("dir"));
  EXPECT_EQ(PU::TOVMoveFile(temp.Lib("dir"), tovtest::Lib(other + "/dir")), 0);
  EXPECT_EQ(tovimpl::platform::GetLastError(), tovimpl::platform::kErrorNotSameDevice);
  std::filesystem::remove_all(other);
}

TEST(Trash, FileGoesToHomeTrashWithInfoRecord) {
  TempTree temp;
  ScopedEnv xdg("XDG_DATA_HOME", temp.NativeOf("data").c_str());
  tovtest::WriteFile(temp.NativeOf("my file.txt"), "bytes");
  EXPECT_EQ(PU::TOVMoveToTrash(temp.Lib("my file.txt")), 1);
  EXPECT_FALSE(tovtest::Exists(temp.NativeOf("my file.txt")));
  EXPECT_EQ(tovtest::ReadFile(temp.NativeOf("data/Trash/files/my file.txt")), "bytes");
  const std::string info =
      tovtest::ReadFile(temp.NativeOf("data/Trash/info/my file.txt.trashinfo"));
  const std::regex record(
      "\\[Trash Info\\]\nPath=" + temp.Native() +
      "/my%20file\\.txt\nDeletionDate=\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\n");
  EXPECT_TRUE(std::regex_match(info, record)) << info;
}

TEST(Trash, SameNameTwiceGetsUniqueNames) {
  TempTree temp;
  ScopedEnv xdg("XDG_DATA_HOME", temp.NativeOf("data").c_str());
  tovtest::WriteFile(temp.NativeOf("a"), "1");
  EXPECT_EQ(PU::TOVMoveToTrash(temp.Lib("a")), 1);
  tovtest::WriteFile(temp.NativeOf("a"), "2");
  EXPECT_EQ(PU::TOVMoveToTrash(temp.Lib("a")), 1);
  EXPECT_EQ(tovtest::ReadFile(temp.NativeOf("data/Trash/files/a")), "1");
  EXPECT_EQ(tovtest::ReadFile(temp.NativeOf("data/Trash/files/a.2")), "2");
  EXPECT_TRUE(tovtest::Exists(temp.NativeOf("data/Trash/info/a.2.trashinfo")));
}

TEST(Trash, FoldersAreTrashedToo) {
  TempTree temp;
  ScopedEnv xdg("XDG_DATA_HOME", temp.NativeOf("data").c_str());
  tovtest::MakeFolder(temp.NativeOf("dir/sub"));
  EXPECT_EQ(PU::TOVMoveToTrash(temp.Lib("dir")), 1);
  EXPECT_TRUE(std::filesystem::is_directory(temp.NativeOf("data/Trash/files/dir/sub")));
}

TEST(Trash, MissingItemIsFalseAndLeavesNoRecord) {
  TempTree temp;
  ScopedEnv xdg("XDG_DATA_HOME", temp.NativeOf("data").c_str());
  EXPECT_EQ(PU::TOVMoveToTrash(temp.Lib("missing")), 0);
  EXPECT_FALSE(tovtest::Exists(temp.NativeOf("data/Trash/info/missing.trashinfo")));
}

TEST(Trash, HomeTrashFromHomeWhenDataHomeUnset) {
  TempTree temp;
  ScopedEnv xdg("XDG_DATA_HOME", nullptr);
  ScopedEnv home("HOME", temp.Native().c_str());
  tovtest::WriteFile(temp.NativeOf("f"), "");
  EXPECT_EQ(PU::TOVMoveToTrash(temp.Lib("f")), 1);
  EXPECT_TRUE(tovtest::Exists(temp.NativeOf(".local/share/Trash/files/f")));
}

TEST(Trash, OtherFileSystemUsesTopFolderTrash) {
  TempTree temp;
  if (!SecondFileSystem(temp)) GTEST_SKIP() << "no second writable file system";
  const std::string topTrash = "/dev/shm/.Trash-" + std::to_string(::getuid());
  const bool hadTopTrash = tovtest::Exists(topTrash);
  char pattern[] = "/dev/shm/tovfiles-XXXXXX";
  ASSERT_NE(::mkdtemp(pattern), nullptr);
  const std::string other = pattern;
  const std::string leaf = other.substr(other.rfind('/') + 1);
  ScopedEnv xdg("XDG_DATA_HOME", temp.NativeOf("data").c_str());
  tovtest::WriteFile(other + "/f", "x");
  EXPECT_EQ(PU::TOVMoveToTrash(tovtest::Lib(other + "/f")), 1);
  EXPECT_EQ(tovtest::ReadFile(topTrash + "/files/f"), "x");
  const std::string info = tovtest::ReadFile(topTrash + "/info/f.trashinfo");
  EXPECT_NE(info.find("Path=" + leaf + "/f\n"), std::string::npos) << info;  // relative to the top
  std::filesystem::remove(topTrash + "/files/f");
  std::filesystem::remove(topTrash + "/info/f.trashinfo");
  if (!hadTopTrash) std::filesystem::remove_all(topTrash);
  std::filesystem::remove_all(other);
}

}  // namespace
