// The OS layer's calls for processes sharing a file: the lock file, file
// versions and process liveness, on either backend.
#include "platform/interprocess.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "basalt/proplist.h"
#include "foundation_support.h"
#include "platform/error.h"
#include "platform/file.h"
#include "platform/file_replace.h"
#include "platform/system.h"

namespace {

using namespace basalt::literals;
namespace platform = tovimpl::platform;
using foundation_test::TempFolder;

TEST(LockFile, SecondHandleWaitsUntilTheFirstUnlocks) {
  TempFolder temp;
  const UTF16String path = temp.Lib("list.lock");
  const platform::FileHandle first = platform::OpenLockFile(path);
  const platform::FileHandle second = platform::OpenLockFile(path);
  ASSERT_TRUE(first.IsOpen());
  ASSERT_TRUE(second.IsOpen());
  EXPECT_TRUE(foundation_test::Exists(temp.NativeOf("list.lock")));
  ASSERT_TRUE(platform::LockFileExclusive(first));
  std::atomic<bool> entered{false};
  std::thread other([&] {
    EXPECT_TRUE(platform::LockFileExclusive(second));
    entered = true;
    EXPECT_TRUE(platform::UnlockFile(second));
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_FALSE(entered.load());
  EXPECT_TRUE(platform::UnlockFile(first));
  other.join();
  EXPECT_TRUE(entered.load());
  EXPECT_TRUE(platform::CloseHandle(first));
  EXPECT_TRUE(platform::CloseHandle(second));
}

TEST(LockFile, BadHandleFailsWithInvalidHandle) {
  EXPECT_FALSE(platform::LockFileExclusive(platform::FileHandle()));
  EXPECT_EQ(platform::GetLastError(), platform::kErrorInvalidHandle);
  EXPECT_FALSE(platform::UnlockFile(platform::FileHandle::Invalid()));
  EXPECT_EQ(platform::GetLastError(), platform::kErrorInvalidHandle);
}

TEST(LockFile, LockFileInMissingFolderCannotBeOpened) {
  TempFolder temp;
  EXPECT_TRUE(platform::OpenLockFile(temp.Lib("missing\\x.lock")).IsInvalid());
  EXPECT_EQ(platform::GetLastError(), platform::kErrorPathNotFound);
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
  EXPECT_FALSE(platform::GetFileVersion(temp.Lib("none.xml"), &version));
  EXPECT_EQ(platform::GetLastError(), platform::kErrorFileNotFound);
}

TEST(ProcessRunning, ThisProcessRunsAndNumberZeroDoesNot) {
  EXPECT_TRUE(platform::IsProcessRunning(platform::CurrentProcessId()));
  EXPECT_FALSE(platform::IsProcessRunning(0));
}

}  // namespace
