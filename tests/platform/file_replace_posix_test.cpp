// The POSIX backend's RenameFile with names relative to the current
// directory: the folder synced for write-through is the current one.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "basalt/strings.h"
#include "platform/error.h"
#include "platform/file_replace.h"
#include "platform/platform_support.h"

using namespace basalt::literals;

namespace {

namespace platform = tovimpl::platform;

TEST(RenameFilePosix, RelativeNamesWithWriteThroughRenameInTheCurrentFolder) {
  platform_test::TempFolder temp;
  platform_test::WriteFileBytes(temp.NativeOf("new"), "new");
  char saved[8192];
  ASSERT_NE(::getcwd(saved, sizeof saved), nullptr);
  ASSERT_EQ(::chdir(temp.Native().c_str()), 0);
  const platform::Status renamed = platform::RenameFile(
      u"new"_u16, u"old"_u16, platform::kRenameReplaceExisting | platform::kRenameWriteThrough);
  ASSERT_EQ(::chdir(saved), 0);
  EXPECT_TRUE(renamed);
  EXPECT_EQ(platform_test::ReadFileBytes(temp.NativeOf("old")), "new");
  EXPECT_FALSE(platform_test::Exists(temp.NativeOf("new")));
}

}  // namespace
