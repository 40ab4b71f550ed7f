// The file-system calls of the OS layer, on every platform: the codes their
// results carry, and the free-space test seam in front of the backends.
#include "platform/fs.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "platform/error.h"
#include "platform/platform_support.h"
#include "platform/text.h"

using namespace basalt::literals;
namespace platform = tovimpl::platform;
using platform_test::TempFolder;

namespace {

TEST(FsSeam, AttributesSayFolderOrCarryTheFailure) {
  TempFolder temp;
  const platform::Result<std::uint32_t> folder = platform::ReadAttributes(temp.Lib());
  ASSERT_TRUE(folder);
  EXPECT_NE(*folder & platform::kFileAttributeDirectory, 0u);
  const platform::Result<std::uint32_t> missing = platform::ReadAttributes(temp.Lib("missing"));
  EXPECT_FALSE(missing);
  EXPECT_EQ(missing.Error(), platform::kErrorFileNotFound);
}

TEST(FsSeam, CreateDirectoriesMakesEveryLevelOnce) {
  TempFolder temp;
  EXPECT_TRUE(platform::CreateDirectories(temp.Lib("a\\b\\c")));
  EXPECT_TRUE(platform_test::Exists(temp.NativeOf("a/b/c")));
  EXPECT_EQ(platform::CreateDirectories(temp.Lib("a\\b\\c")).Error(),
            platform::kErrorAlreadyExists);
}

// The codes a move carries agree on both systems: the target's folder
// missing is 3, the source missing is 2, and neither moves anything.
TEST(FsSeam, MoveTellsAMissingTargetFolderFromAMissingSource) {
  TempFolder temp;
  platform_test::WriteFile(temp.NativeOf("clip.wav"), "RIFF");
  EXPECT_EQ(platform::MoveNoReplace(temp.Lib("clip.wav"), temp.Lib("missing\\clip.wav")).Error(),
            platform::kErrorPathNotFound);
  EXPECT_TRUE(platform_test::Exists(temp.NativeOf("clip.wav")));
  EXPECT_EQ(platform::MoveNoReplace(temp.Lib("gone.wav"), temp.Lib("moved.wav")).Error(),
            platform::kErrorFileNotFound);
  EXPECT_FALSE(platform_test::Exists(temp.NativeOf("moved.wav")));
}

TEST(FsSeam, FreeSpaceAnswersThroughTheSeamWhileItIsSet) {
  TempFolder temp;
  static UTF16String asked;
  platform::SetFreeSpaceAnswerForTesting(
      [](const UTF16String& path) -> platform::Result<std::uint64_t> {
        asked = path;
        return std::uint64_t{12345};
      });
  const platform::Result<std::uint64_t> seamed = platform::FreeSpace(temp.Lib());
  platform::SetFreeSpaceAnswerForTesting(nullptr);
  ASSERT_TRUE(seamed);
  EXPECT_EQ(*seamed, 12345u);
  EXPECT_EQ(asked, temp.Lib());
  const platform::Result<std::uint64_t> system = platform::FreeSpace(temp.Lib());
  ASSERT_TRUE(system);
  EXPECT_GT(*system, 0u);
}

TEST(FsSeam, TempFileIsMadeInTheFolderWithThePrefix) {
  TempFolder temp;
  const platform::Result<UTF16String> made = platform::CreateTempFile(temp.Lib(), u"abcdef"_u16);
  ASSERT_TRUE(made);
  EXPECT_EQ(made->substr(0, temp.Lib().size() + 4), temp.Lib() + u"\\abc"_u16);
  EXPECT_TRUE(platform::ReadAttributes(*made));
}

TEST(NarrowText, AsciiIsTheSameOnEveryPlatform) {
  EXPECT_EQ(platform::NarrowToUTF16("C:\\Temp\\a.txt"), u"C:\\Temp\\a.txt"_u16);
  EXPECT_EQ(platform::UTF16ToNarrow(u"C:\\Temp\\a.txt"_u16), "C:\\Temp\\a.txt");
  EXPECT_EQ(platform::UTF16ToNarrow(UTF16String()), "");
}

}  // namespace
