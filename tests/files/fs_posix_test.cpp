// OS layer, file-system calls: results and the Windows error codes they leave.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "files/files_support.h"
#include "platform/error.h"
#include "platform/file.h"
#include "platform/fs.h"

using namespace basalt::literals;
namespace platform = tovimpl::platform;
using files_test::TempFolder;
using files_test::U8;

TEST(FsLayer, AttributesOfFilesFoldersAndMissingPaths) {
  TempFolder temp;
  files_test::WriteFile(temp.NativeOf("f"), "");
  files_test::WriteFile(temp.NativeOf(".h"), "");
  EXPECT_EQ(platform::GetFileAttributes(temp.Lib()), platform::kFileAttributeDirectory);
  EXPECT_EQ(platform::GetFileAttributes(temp.Lib("f")), platform::kFileAttributeNormal);
  EXPECT_EQ(platform::GetFileAttributes(temp.Lib(".h")), platform::kFileAttributeHidden);
  EXPECT_EQ(platform::GetFileAttributes(temp.Lib("missing")), platform::kInvalidFileAttributes);
  EXPECT_EQ(platform::GetLastError(), platform::kErrorFileNotFound);
  EXPECT_EQ(platform::GetFileAttributes(temp.Lib("missing\\deeper")),
            platform::kInvalidFileAttributes);
  EXPECT_EQ(platform::GetLastError(), platform::kErrorPathNotFound);
}

TEST(FsLayer, AttributeDataCarriesSizeAndTimes) {
  TempFolder temp;
  files_test::WriteFile(temp.NativeOf("f"), "abc");
  platform::FileAttributeData data{};
  ASSERT_TRUE(platform::GetFileAttributesEx(temp.Lib("f"), &data));
  EXPECT_EQ(data.size, 3u);
  EXPECT_GT(data.lastWriteTime, 130000000000000000ull);  // after 2012
  EXPECT_LE(data.creationTime, data.lastWriteTime + 10000000ull);
  EXPECT_FALSE(platform::GetFileAttributesEx(temp.Lib("missing"), &data));
  EXPECT_EQ(platform::GetLastError(), platform::kErrorFileNotFound);
}

TEST(FsLayer, CreateDirectoryWithParentsCodes) {
  TempFolder temp;
  EXPECT_EQ(platform::CreateDirectoryWithParents(temp.Lib("a\\b\\c")), 0u);
  EXPECT_EQ(platform::CreateDirectoryWithParents(temp.Lib("a\\b\\c")),
            platform::kErrorAlreadyExists);
  files_test::WriteFile(temp.NativeOf("file"), "");
  EXPECT_EQ(platform::CreateDirectoryWithParents(temp.Lib("file")), platform::kErrorFileExists);
  EXPECT_EQ(platform::CreateDirectoryWithParents(temp.Lib("file\\x")),
            platform::kErrorPathNotFound);
  EXPECT_EQ(platform::CreateDirectoryWithParents(u"rel"_u16), platform::kErrorBadPathname);
  EXPECT_EQ(platform::GetLastError(), platform::kErrorBadPathname);
}

TEST(FsLayer, EnumerationCodes) {
  TempFolder temp;
  files_test::WriteFile(temp.NativeOf("x.txt"), "");
  platform::FindData data{};
  EXPECT_EQ(platform::FindFirstFile(temp.Lib("missing\\*"), &data), nullptr);
  EXPECT_EQ(platform::GetLastError(), platform::kErrorPathNotFound);
  EXPECT_EQ(platform::FindFirstFile(temp.Lib("*.none"), &data), nullptr);
  EXPECT_EQ(platform::GetLastError(), platform::kErrorFileNotFound);
  platform::FindHandle h = platform::FindFirstFile(temp.Lib("*.TXT"), &data);
  ASSERT_NE(h, nullptr);
  EXPECT_EQ(U8(data.name), "x.txt");
  EXPECT_EQ(data.attributes, platform::kFileAttributeNormal);
  EXPECT_FALSE(platform::FindNextFile(h, &data));
  EXPECT_EQ(platform::GetLastError(), platform::kErrorNoMoreFiles);
  EXPECT_TRUE(platform::FindClose(h));
}

TEST(FsLayer, EnumerationIncludesDotEntriesForStar) {
  TempFolder temp;
  platform::FindData data{};
  platform::FindHandle h = platform::FindFirstFile(temp.Lib("*"), &data);
  ASSERT_NE(h, nullptr);
  int dots = 0;
  do {
    if (U8(data.name) == "." || U8(data.name) == "..") {
      ++dots;
      EXPECT_EQ(data.attributes, platform::kFileAttributeDirectory);
    }
  } while (platform::FindNextFile(h, &data));
  platform::FindClose(h);
  EXPECT_EQ(dots, 2);
}

TEST(FsLayer, CurrentDirectoryRoundTrip) {
  TempFolder temp;
  const auto saved = platform::GetCurrentDirectory();
  ASSERT_TRUE(saved.has_value());
  EXPECT_TRUE(platform::SetCurrentDirectory(temp.Lib()));
  EXPECT_EQ(platform::GetCurrentDirectory(), temp.Lib());
  EXPECT_FALSE(platform::SetCurrentDirectory(temp.Lib("missing")));
  EXPECT_EQ(platform::GetLastError(), platform::kErrorFileNotFound);
  EXPECT_TRUE(platform::SetCurrentDirectory(*saved));
}

TEST(FsLayer, TempFileNameCodes) {
  TempFolder temp;
  UTF16String out;
  EXPECT_EQ(platform::GetTempFileName(temp.Lib("missing"), u"abc"_u16, &out), 0u);
  EXPECT_EQ(platform::GetLastError(), platform::kErrorDirectory);
  const std::uint32_t unique = platform::GetTempFileName(temp.Lib(), u"xy"_u16, &out);
  EXPECT_NE(unique, 0u);
  EXPECT_LE(unique, 0xFFFFu);
  EXPECT_EQ(out.substr(0, temp.Lib().size() + 3), temp.Lib() + u"\\xy"_u16);
}

TEST(FsLayer, TempFileNameSkipsTakenNumbers) {
  TempFolder temp;
  UTF16String first, second;
  ASSERT_NE(platform::GetTempFileName(temp.Lib(), u"p"_u16, &first), 0u);
  ASSERT_NE(platform::GetTempFileName(temp.Lib(), u"p"_u16, &second), 0u);
  EXPECT_NE(first, second);
}

TEST(FsLayer, CopyFailIfExistsSaysFileExists) {
  TempFolder temp;
  files_test::WriteFile(temp.NativeOf("a"), "a");
  files_test::WriteFile(temp.NativeOf("b"), "b");
  EXPECT_FALSE(platform::CopyFileEx(temp.Lib("a"), temp.Lib("b"), nullptr, nullptr, nullptr, true));
  EXPECT_EQ(platform::GetLastError(), platform::kErrorFileExists);
  int cancel = 1;
  EXPECT_FALSE(
      platform::CopyFileEx(temp.Lib("a"), temp.Lib("c"), nullptr, nullptr, &cancel, false));
  EXPECT_EQ(platform::GetLastError(), platform::kErrorRequestAborted);
  EXPECT_FALSE(files_test::Exists(temp.NativeOf("c")));
}

TEST(FsLayer, CopyOfFolderIsAccessDenied) {
  TempFolder temp;
  EXPECT_FALSE(platform::CopyFileEx(temp.Lib(), temp.Lib("c"), nullptr, nullptr, nullptr, false));
  EXPECT_EQ(platform::GetLastError(), platform::kErrorAccessDenied);
}

TEST(FsLayer, TempPathEndsInBackslash) {
  files_test::ScopedEnv tmpdir("TMPDIR", "/some/where/");
  EXPECT_EQ(platform::GetTempPath(), u"\\some\\where\\"_u16);
  files_test::ScopedEnv empty("TMPDIR", "");
  EXPECT_EQ(platform::GetTempPath(), u"\\tmp\\"_u16);
}

TEST(FsLayer, ModuleFileNameIsTheTestExecutable) {
  const std::string path = U8(platform::GetModuleFileName());
  EXPECT_EQ(path.substr(path.rfind('\\') + 1), "tovtests_files");
  EXPECT_EQ(path[0], '\\');
}

TEST(FsLayer, TrashOfMissingItemReportsFileNotFound) {
  TempFolder temp;
  files_test::ScopedEnv xdg("XDG_DATA_HOME", temp.NativeOf("data").c_str());
  EXPECT_EQ(platform::MoveToTrash(temp.Lib("missing")), platform::kErrorFileNotFound);
}
