// OS layer, file-system calls: results and the Windows error codes they carry.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdlib>
#include <string>

#include "common/environment.h"
#include "platform/error.h"
#include "platform/file.h"
#include "platform/fs.h"
#include "platform/platform_support.h"

using namespace basalt::literals;
namespace platform = tovimpl::platform;
using platform_test::TempFolder;
using platform_test::U8;

namespace {

using tovtest::ScopedEnv;

}  // namespace

TEST(FsLayer, AttributesOfFilesFoldersAndMissingPaths) {
  TempFolder temp;
  platform_test::WriteFile(temp.NativeOf("f"), "");
  platform_test::WriteFile(temp.NativeOf(".h"), "");
  EXPECT_EQ(*platform::ReadAttributes(temp.Lib()), platform::kFileAttributeDirectory);
  EXPECT_EQ(*platform::ReadAttributes(temp.Lib("f")), platform::kFileAttributeNormal);
  EXPECT_EQ(*platform::ReadAttributes(temp.Lib(".h")), platform::kFileAttributeHidden);
  EXPECT_EQ(platform::ReadAttributes(temp.Lib("missing")).Error(), platform::kErrorFileNotFound);
  EXPECT_EQ(platform::ReadAttributes(temp.Lib("missing\\deeper")).Error(),
            platform::kErrorPathNotFound);
}

TEST(FsLayer, FileInfoCarriesSizeAndTimes) {
  TempFolder temp;
  platform_test::WriteFile(temp.NativeOf("f"), "abc");
  const platform::Result<platform::FileInfo> info = platform::ReadFileInfo(temp.Lib("f"));
  ASSERT_TRUE(info);
  EXPECT_EQ(info->size, 3u);
  EXPECT_GT(info->lastWriteTime, 130000000000000000ull);  // after 2012
  EXPECT_LE(info->creationTime, info->lastWriteTime + 10000000ull);
  EXPECT_EQ(platform::ReadFileInfo(temp.Lib("missing")).Error(), platform::kErrorFileNotFound);
}

TEST(FsLayer, CreateDirectoriesCodes) {
  TempFolder temp;
  EXPECT_EQ(platform::CreateDirectories(temp.Lib("a\\b\\c")).Error(), 0u);
  EXPECT_EQ(platform::CreateDirectories(temp.Lib("a\\b\\c")).Error(),
            platform::kErrorAlreadyExists);
  platform_test::WriteFile(temp.NativeOf("file"), "");
  EXPECT_EQ(platform::CreateDirectories(temp.Lib("file")).Error(), platform::kErrorFileExists);
  EXPECT_EQ(platform::CreateDirectories(temp.Lib("file\\x")).Error(), platform::kErrorPathNotFound);
  EXPECT_EQ(platform::CreateDirectories(u"rel"_u16).Error(), platform::kErrorBadPathname);
}

TEST(FsLayer, ListingCodes) {
  TempFolder temp;
  platform_test::WriteFile(temp.NativeOf("x.txt"), "");
  platform::ListingEntry data{};
  EXPECT_EQ(platform::OpenListing(temp.Lib("missing\\*"), &data).Error(),
            platform::kErrorPathNotFound);
  EXPECT_EQ(platform::OpenListing(temp.Lib("*.none"), &data).Error(), platform::kErrorFileNotFound);
  const platform::ListingHandle h =
      platform::OpenListing(temp.Lib("*.TXT"), &data).ValueOr(nullptr);
  ASSERT_NE(h, nullptr);
  EXPECT_EQ(U8(data.name), "x.txt");
  EXPECT_EQ(data.attributes, platform::kFileAttributeNormal);
  EXPECT_EQ(platform::NextListingEntry(h, &data).Error(), platform::kErrorNoMoreFiles);
  platform::CloseListing(h);
}

TEST(FsLayer, ListingIncludesDotEntriesForStar) {
  TempFolder temp;
  platform::ListingEntry data{};
  const platform::ListingHandle h = platform::OpenListing(temp.Lib("*"), &data).ValueOr(nullptr);
  ASSERT_NE(h, nullptr);
  int dots = 0;
  do {
    if (U8(data.name) == "." || U8(data.name) == "..") {
      ++dots;
      EXPECT_EQ(data.attributes, platform::kFileAttributeDirectory);
    }
  } while (platform::NextListingEntry(h, &data));
  platform::CloseListing(h);
  EXPECT_EQ(dots, 2);
}

TEST(FsLayer, CurrentDirectoryRoundTrip) {
  TempFolder temp;
  const platform::Result<UTF16String> saved = platform::CurrentDirectory();
  ASSERT_TRUE(saved);
  EXPECT_TRUE(platform::ChangeDirectory(temp.Lib()));
  EXPECT_EQ(*platform::CurrentDirectory(), temp.Lib());
  EXPECT_EQ(platform::ChangeDirectory(temp.Lib("missing")).Error(), platform::kErrorFileNotFound);
  EXPECT_TRUE(platform::ChangeDirectory(*saved));
}

TEST(FsLayer, TempFileCodes) {
  TempFolder temp;
  EXPECT_EQ(platform::CreateTempFile(temp.Lib("missing"), u"abc"_u16).Error(),
            platform::kErrorDirectory);
  const platform::Result<UTF16String> out = platform::CreateTempFile(temp.Lib(), u"xy"_u16);
  ASSERT_TRUE(out);
  EXPECT_EQ(out->substr(0, temp.Lib().size() + 3), temp.Lib() + u"\\xy"_u16);
  // "xyHHHH.tmp": one to four upper-case hexadecimal digits, not zero.
  const std::string name = U8(out->substr(temp.Lib().size() + 3));
  ASSERT_GT(name.size(), 4u);
  const std::string digits = name.substr(0, name.size() - 4);
  EXPECT_EQ(name.substr(name.size() - 4), ".tmp");
  EXPECT_LE(digits.size(), 4u);
  EXPECT_NE(std::stoul(digits, nullptr, 16), 0u);
}

TEST(FsLayer, TempFileSkipsTakenNumbers) {
  TempFolder temp;
  const platform::Result<UTF16String> first = platform::CreateTempFile(temp.Lib(), u"p"_u16);
  const platform::Result<UTF16String> second = platform::CreateTempFile(temp.Lib(), u"p"_u16);
  ASSERT_TRUE(first);
  ASSERT_TRUE(second);
  EXPECT_NE(*first, *second);
}

TEST(FsLayer, CopyFailIfExistsSaysFileExists) {
  TempFolder temp;
  platform_test::WriteFile(temp.NativeOf("a"), "a");
  platform_test::WriteFile(temp.NativeOf("b"), "b");
  EXPECT_EQ(
      platform::CopyFileContents(temp.Lib("a"), temp.Lib("b"), nullptr, nullptr, nullptr, true)
          .Error(),
      platform::kErrorFileExists);
  int cancel = 1;
  EXPECT_EQ(
      platform::CopyFileContents(temp.Lib("a"), temp.Lib("c"), nullptr, nullptr, &cancel, false)
          .Error(),
      platform::kErrorRequestAborted);
  EXPECT_FALSE(platform_test::Exists(temp.NativeOf("c")));
}

TEST(FsLayer, CopySucceedsWithTheContents) {
  TempFolder temp;
  platform_test::WriteFile(temp.NativeOf("a"), "contents");
  const platform::Status copied =
      platform::CopyFileContents(temp.Lib("a"), temp.Lib("b"), nullptr, nullptr, nullptr, true);
  EXPECT_TRUE(copied);
  EXPECT_EQ(copied.Error(), 0u);
  EXPECT_EQ(platform_test::ReadFileBytes(temp.NativeOf("b")), "contents");
}

TEST(FsLayer, CopyOfMissingSourceCarriesFileNotFound) {
  TempFolder temp;
  EXPECT_EQ(platform::CopyFileContents(temp.Lib("missing"), temp.Lib("b"), nullptr, nullptr,
                                       nullptr, false)
                .Error(),
            platform::kErrorFileNotFound);
  EXPECT_FALSE(platform_test::Exists(temp.NativeOf("b")));
}

TEST(FsLayer, CopyOntoItselfIsASharingViolation) {
  TempFolder temp;
  platform_test::WriteFile(temp.NativeOf("a"), "a");
  EXPECT_EQ(
      platform::CopyFileContents(temp.Lib("a"), temp.Lib("a"), nullptr, nullptr, nullptr, false)
          .Error(),
      platform::kErrorSharingViolation);
  EXPECT_EQ(platform_test::ReadFileBytes(temp.NativeOf("a")), "a");
}

// A progress routine answering what `data` points to.
std::uint32_t Answer(std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint32_t,
                     std::uint32_t, void*, void*, void* data) {
  return *static_cast<const std::uint32_t*>(data);
}

TEST(FsLayer, CopyCancelledByProgressDeletesTheTarget) {
  TempFolder temp;
  platform_test::WriteFile(temp.NativeOf("a"), "a");
  std::uint32_t cancel = 1;
  EXPECT_EQ(
      platform::CopyFileContents(temp.Lib("a"), temp.Lib("b"), Answer, &cancel, nullptr, false)
          .Error(),
      platform::kErrorRequestAborted);
  EXPECT_FALSE(platform_test::Exists(temp.NativeOf("b")));
}

TEST(FsLayer, CopyStoppedByProgressKeepsTheTarget) {
  TempFolder temp;
  platform_test::WriteFile(temp.NativeOf("a"), "a");
  std::uint32_t stop = 2;
  EXPECT_EQ(platform::CopyFileContents(temp.Lib("a"), temp.Lib("b"), Answer, &stop, nullptr, false)
                .Error(),
            platform::kErrorRequestAborted);
  EXPECT_TRUE(platform_test::Exists(temp.NativeOf("b")));
}

TEST(FsLayer, CopyOfFolderIsAccessDenied) {
  TempFolder temp;
  EXPECT_EQ(platform::CopyFileContents(temp.Lib(), temp.Lib("c"), nullptr, nullptr, nullptr, false)
                .Error(),
            platform::kErrorAccessDenied);
}

TEST(FsLayer, TempDirectoryEndsInBackslash) {
  ScopedEnv tmpdir("TMPDIR", "/some/where/");
  EXPECT_EQ(*platform::TempDirectory(), u"\\some\\where\\"_u16);
  ScopedEnv empty("TMPDIR", "");
  EXPECT_EQ(*platform::TempDirectory(), u"\\tmp\\"_u16);
}

TEST(FsLayer, ExecutablePathIsTheTestExecutable) {
  const std::string path = U8(*platform::ExecutablePath());
  EXPECT_EQ(path.substr(path.rfind('\\') + 1), "tovtests_platform");
  EXPECT_EQ(path[0], '\\');
}

TEST(FsLayer, TrashOfMissingItemReportsFileNotFound) {
  TempFolder temp;
  ScopedEnv xdg("XDG_DATA_HOME", temp.NativeOf("data").c_str());
  EXPECT_EQ(platform::MoveToTrash(temp.Lib("missing")).Error(), platform::kErrorFileNotFound);
}
