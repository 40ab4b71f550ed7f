// The OS layer's calls for processes sharing a file: the lock file, file
// versions and process liveness, on either backend.
#include "platform/interprocess.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "basalt/proplist.h"
#include "platform/error.h"
#include "platform/file.h"
#include "platform/file_replace.h"
#include "platform/platform_support.h"
#include "platform/system.h"

namespace {

using namespace basalt::literals;
namespace platform = tovimpl::platform;
using platform_test::TempFolder;

TEST(LockFile, SecondHandleWaitsUntilTheFirstUnlocks) {
  TempFolder temp;
  const UTF16String path = temp.Lib("list.lock");
  const platform::Result<platform::FileHandle> opened = platform::OpenLockFile(path);
  const platform::Result<platform::FileHandle> openedAgain = platform::OpenLockFile(path);
  ASSERT_TRUE(opened);
  ASSERT_TRUE(openedAgain);
  const platform::FileHandle first = *opened;
  const platform::FileHandle second = *openedAgain;
  EXPECT_TRUE(first.IsOpen());
  EXPECT_TRUE(second.IsOpen());
  EXPECT_TRUE(platform_test::Exists(temp.NativeOf("list.lock")));
  ASSERT_TRUE(platform::TakeExclusiveLock(first));
  std::atomic<bool> entered{false};
  std::thread other([&] {
    EXPECT_TRUE(platform::TakeExclusiveLock(second));
    entered = true;
    EXPECT_TRUE(platform::ReleaseLock(second));
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_FALSE(entered.load());
  EXPECT_TRUE(platform::ReleaseLock(first));
  other.join();
  EXPECT_TRUE(entered.load());
  EXPECT_TRUE(platform::CloseFile(first));
  EXPECT_TRUE(platform::CloseFile(second));
}

TEST(LockFile, BadHandleFailsWithInvalidHandle) {
  EXPECT_EQ(platform::TakeExclusiveLock(platform::FileHandle()).Error(),
            platform::kErrorInvalidHandle);
  EXPECT_EQ(platform::ReleaseLock(platform::FileHandle::Invalid()).Error(),
            platform::kErrorInvalidHandle);
}

TEST(LockFile, LockFileInMissingFolderCannotBeOpened) {
  TempFolder temp;
  const platform::Result<platform::FileHandle> opened =
      platform::OpenLockFile(temp.Lib("missing\\x.lock"));
  EXPECT_FALSE(opened);
  EXPECT_EQ(opened.Error(), platform::kErrorPathNotFound);
}

TEST(FileVersionTest, SameUntilTheFileIsReplaced) {
  TempFolder temp;
  const UTF16String path = temp.Lib("list.xml");
  basalt::proplist::PropList list;
  basalt::proplist::utils::SavePropList(path, list);
  platform::FileVersion first{};
  platform::FileVersion again{};
  ASSERT_TRUE(platform::GetFileVersion(path, &first));
  ASSERT_TRUE(platform::GetFileVersion(path, &again));
  EXPECT_EQ(first, again);
  EXPECT_FALSE(first.isFolder);
  list.SetString("k", u"v"_u16);
  basalt::proplist::utils::SavePropList(path, list);  // a new file renamed over the old
  platform::FileVersion replaced{};
  ASSERT_TRUE(platform::GetFileVersion(path, &replaced));
  EXPECT_NE(replaced, first);
  platform::FileVersion folder{};
  ASSERT_TRUE(platform::GetFileVersion(temp.Lib(), &folder));
  EXPECT_TRUE(folder.isFolder);
}

TEST(FileVersionTest, MissingFileFailsWithFileNotFound) {
  TempFolder temp;
  platform::FileVersion version{};
  EXPECT_EQ(platform::GetFileVersion(temp.Lib("none.xml"), &version).Error(),
            platform::kErrorFileNotFound);
}

TEST(ProcessRunning, ThisProcessRunsAndNumberZeroDoesNot) {
  EXPECT_TRUE(platform::IsProcessRunning(platform::CurrentProcessId()));
  EXPECT_FALSE(platform::IsProcessRunning(0));
}

}  // namespace
