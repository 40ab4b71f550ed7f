// The Win32 backend's file calls: the long-path form it adds on request, and
// the sharing rules the system itself enforces.
#include <gtest/gtest.h>

#include <string>

#include "platform/error.h"
#include "platform/file.h"
#include "platform/platform_support.h"

namespace {

namespace platform = tovimpl::platform;

TEST(FileWin32, LongPathHintReachesAPathPastTheClassicLimit) {
  platform_test::TempFolder temp;
  std::string relative;
  for (int i = 0; i < 6; ++i) {
    relative += std::string(50, static_cast<char>('a' + i));
    platform_test::MakeFolder(temp.NativeOf(relative));
    relative += '/';
  }
  relative += "f.bin";
  const UTF16String path = temp.Lib(relative);
  ASSERT_GT(path.size(), 260u);
  const auto created = platform::OpenFile(path, platform::kGenericWrite, 0, platform::kCreateNew,
                                          platform::kOpenLongPath);
  ASSERT_TRUE(created) << created.Error();
  const char bytes[2] = {'h', 'i'};
  EXPECT_EQ(*platform::WriteAt(created->handle, 0, bytes, 2), 2u);
  EXPECT_TRUE(platform::CloseFile(created->handle));
  const auto opened = platform::OpenFile(path, platform::kGenericRead, platform::kFileShareRead,
                                         platform::kOpenExisting, platform::kOpenLongPath);
  ASSERT_TRUE(opened);
  EXPECT_EQ(opened->size, 2u);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
}

TEST(FileWin32, AnOpenFileCannotBeRemovedUnlessItsOpenSharesDeletion) {
  platform_test::TempFolder temp;
  platform_test::WriteFileBytes(temp.NativeOf("f"), "abc");
  const auto opened = platform::OpenFile(temp.Lib("f"), platform::kGenericRead,
                                         platform::kFileShareRead, platform::kOpenExisting, 0);
  ASSERT_TRUE(opened);
  EXPECT_EQ(platform::RemoveFile(temp.Lib("f")).Error(), platform::kErrorSharingViolation);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
  EXPECT_TRUE(platform::RemoveFile(temp.Lib("f")));
}

}  // namespace
