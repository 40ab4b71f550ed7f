// Automatic names, temporary names and folders, the home folder, and the
// copy, move, delete and trash wrappers.
#include <gtest/gtest.h>

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
using tovtest::ScopedEnv;
using tovtest::TempTree;
using tovtest::U8;

// --- automatic names -------------------------------------------------------------

TEST(AutoFileName, NameIsPrefixProcessThreadTicksExtension) {
  TempTree temp;
  const UTF16String name = PU::GetAutoFileName(temp.Lib(), u"TOVCache"_u16, u".vpc"_u16);
  const std::string expected = "^" +
                               std::regex_replace(U8(temp.Lib()), std::regex(R"(\\)"), R"(\\)") +
                               R"(\\TOVCache)" + std::to_string(basalt::GetCurrentProcessID()) +
                               "_" + std::to_string(basalt::GetCurrentThreadID()) + R"(_\d+\.vpc$)";
  EXPECT_TRUE(std::regex_match(U8(name), std::regex(expected))) << U8(name);
}

TEST(AutoFileName, LeavesAnEmptyFileAtTheReturnedPath) {
  TempTree temp;
  const UTF16String name = PU::GetAutoFileName(temp.Lib(), u"p"_u16, u".x"_u16);
  ASSERT_TRUE(std::filesystem::is_regular_file(tovtest::PlatformPath(name)));
  EXPECT_EQ(tovtest::PlatformFileSize(name), 0u);
}

TEST(AutoFileName, FolderWithOrWithoutTrailingBackslashGivesOneSeparator) {
  TempTree temp;
  const UTF16String a = PU::GetAutoFileName(temp.Lib(), u"A"_u16, u".t"_u16);
  const UTF16String b = PU::GetAutoFileName(temp.Lib() + u"\\"_u16, u"B"_u16, u".t"_u16);
  EXPECT_EQ(a.substr(0, temp.Lib().size() + 2), temp.Lib() + u"\\A"_u16);
  EXPECT_EQ(b.substr(0, temp.Lib().size() + 2), temp.Lib() + u"\\B"_u16);
}

TEST(AutoFileName, FileOrMissingPathThrowsNotAValidFolderPath) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("file"), "");
  EXPECT_THROW(PU::GetAutoFileName(temp.Lib("file"), u"p"_u16, u".x"_u16), PU::NotAValidFolderPath);
  EXPECT_THROW(PU::GetAutoFileName(temp.Lib("missing"), u"p"_u16, u".x"_u16),
               PU::NotAValidFolderPath);
}

TEST(AutoFileName, OverlongNameThrowsUnableToCreateFile) {
  TempTree temp;
  EXPECT_THROW(PU::GetAutoFileName(temp.Lib(), UTF16String(300, 'p'), u".x"_u16),
               PU::UnableToCreateFile);
}

TEST(AutoFileName, NameGrowsAfterCollisionWithinOneTick) {
  TempTree temp;
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
      std::ofstream made(file, std::ios::binary);
      ASSERT_TRUE(made.is_open());
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
  EXPECT_TRUE(tovtest::Exists(tovtest::PlatformPath(name)));
}

TEST(AutoFileName, EightThreadsGetDistinctNames) {
  TempTree temp;
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
      EXPECT_EQ(tovtest::PlatformFileSize(name), 0u);
    }
  }
  EXPECT_EQ(all.size(), 32u);
}

// --- temporary folder and names --------------------------------------------------

TEST(TempFileName, NameIsPrefixAndResult) {
  TempTree temp;
  UTF16String name = u"abcdef"_u16;
  PU::TOVGetTempFileName(temp.Lib(), name);
  EXPECT_TRUE(std::regex_match(U8(name), std::regex(R"(.*\\abc[0-9A-F]{1,4}\.tmp$)"))) << U8(name);
  EXPECT_TRUE(tovtest::Exists(tovtest::PlatformPath(name)));
}

TEST(TempFileName, MissingFolderThrowsAndLeavesNameUnchanged) {
  TempTree temp;
  UTF16String name = u"abc"_u16;
  EXPECT_THROW(PU::TOVGetTempFileName(temp.Lib("missing"), name), PU::NotAValidFolderPath);
  EXPECT_EQ(name, u"abc"_u16);
}

TEST(TempFileName, FileInsteadOfFolderThrowsUnableToGetTempFileName) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("file"), "");
  UTF16String name = u"abc"_u16;
  EXPECT_THROW(PU::TOVGetTempFileName(temp.Lib("file"), name), PU::UnableToGetTempFileName);
  EXPECT_EQ(name, u"abc"_u16);
}

// --- home folder -------------------------------------------------------------------

TEST(PreferencesFolder, HomeStandsInWhenNeitherVariableIsSet) {
  TempTree temp;
  ScopedEnv drive("HOMEDRIVE", nullptr);
  ScopedEnv path("HOMEPATH", nullptr);
  // HOME as the system spells it (backslashes on Windows, where it is taken as is).
  const std::string spelled = std::filesystem::path(temp.Native()).make_preferred().string();
  ScopedEnv home("HOME", spelled.c_str());
  EXPECT_EQ(PU::TOVGetPreferencesFolder(), temp.Lib());
}

TEST(PreferencesFolder, MissingFolderThrows) {
  TempTree temp;
  ScopedEnv drive("HOMEDRIVE", "");
  ScopedEnv path("HOMEPATH", temp.NativeOf("missing").c_str());
  EXPECT_THROW(PU::TOVGetPreferencesFolder(), Halyard::TOVNotAValidFolderPathException);
}

// --- copy, move, delete ---------------------------------------------------------------

TEST(FileOperations, CopyOverwritesExistingTarget) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("a"), "new contents");
  tovtest::WriteFile(temp.NativeOf("b"), "old and longer contents");
  EXPECT_EQ(PU::TOVCopyFile(temp.Lib("a"), temp.Lib("b")), 1);
  EXPECT_EQ(tovtest::ReadFile(temp.NativeOf("b")), "new contents");
  EXPECT_EQ(PU::TOVCopyFile(temp.Lib("missing"), temp.Lib("c")), 0);
  EXPECT_EQ(PU::TOVCopyFile(temp.Lib("a"), temp.Lib("a")), 0);  // onto itself
  EXPECT_EQ(tovtest::ReadFile(temp.NativeOf("a")), "new contents");
}

TEST(FileOperations, MoveOntoExistingTargetFails) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("a"), "a");
  tovtest::WriteFile(temp.NativeOf("b"), "b");
  EXPECT_EQ(PU::TOVMoveFile(temp.Lib("a"), temp.Lib("b")), 0);
  EXPECT_EQ(tovimpl::platform::GetLastError(), tovimpl::platform::kErrorAlreadyExists);
  EXPECT_EQ(tovtest::ReadFile(temp.NativeOf("b")), "b");
  EXPECT_EQ(PU::TOVMoveFile(temp.Lib("a"), temp.Lib("c")), 1);
  EXPECT_FALSE(tovtest::Exists(temp.NativeOf("a")));
  EXPECT_EQ(tovtest::ReadFile(temp.NativeOf("c")), "a");
}

TEST(FileOperations, MoveRenamesFolders) {
  TempTree temp;
  tovtest::MakeFolder(temp.NativeOf("d1"));
  tovtest::WriteFile(temp.NativeOf("d1/f"), "f");
  EXPECT_EQ(PU::TOVMoveFile(temp.Lib("d1"), temp.Lib("d2")), 1);
  EXPECT_EQ(tovtest::ReadFile(temp.NativeOf("d2/f")), "f");
  EXPECT_EQ(PU::TOVMoveFile(temp.Lib("missing"), temp.Lib("x")), 0);
  EXPECT_EQ(tovimpl::platform::GetLastError(), tovimpl::platform::kErrorFileNotFound);
}

TEST(FileOperations, DeleteOfMissingFileIsTrue) {
  TempTree temp;
  EXPECT_EQ(PU::TOVDeleteFile(temp.Lib("missing")), 1);
  tovtest::WriteFile(temp.NativeOf("f"), "");
  EXPECT_EQ(PU::TOVDeleteFile(temp.Lib("f")), 1);
  EXPECT_FALSE(tovtest::Exists(temp.NativeOf("f")));
  EXPECT_EQ(PU::TOVDeleteFile(temp.Lib()), 0);  // a folder is not deleted
}

// --- trash ------------------------------------------------------------------------------
