// The POSIX backend's process-sharing calls: locks on handles that are not
// open, liveness of ended processes and of identifiers past pid_t's range,
// and which fields tell two file versions apart.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>

#include "platform/error.h"
#include "platform/file.h"
#include "platform/interprocess.h"
#include "platform/platform_support.h"

namespace {

namespace platform = tovimpl::platform;
using platform_test::TempFolder;

TEST(InterprocessPosix, LockingAClosedHandleFailsWithInvalidHandle) {
  TempFolder temp;
  const auto lock = platform::OpenLockFile(temp.Lib("l.lock"));
  ASSERT_TRUE(lock);
  ASSERT_TRUE(platform::CloseFile(*lock));
  EXPECT_EQ(platform::TakeExclusiveLock(*lock).Error(), platform::kErrorInvalidHandle);
  EXPECT_EQ(platform::ReleaseLock(*lock).Error(), platform::kErrorInvalidHandle);
  EXPECT_EQ(platform::ReleaseLock(platform::FileHandle::Invalid()).Error(),
            platform::kErrorInvalidHandle);
}

TEST(InterprocessPosix, LockFileNameTooLongCannotBeOpened) {
  TempFolder temp;
  EXPECT_EQ(platform::OpenLockFile(temp.Lib(std::string(300, 'l'))).Error(),
            platform::kErrorFilenameExcedRange);
}

TEST(InterprocessPosix, AnEndedProcessIsNotRunning) {
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) ::_exit(0);
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_FALSE(platform::IsProcessRunning(static_cast<std::uint32_t>(child)));
}

TEST(InterprocessPosix, IdentifiersPastThePidRangeNeverRun) {
  EXPECT_FALSE(platform::IsProcessRunning(0x80000000u));
  EXPECT_FALSE(platform::IsProcessRunning(0xFFFFFFFFu));
  // Process 1 always exists.
  EXPECT_TRUE(platform::IsProcessRunning(1));
}

TEST(InterprocessPosix, EveryFieldTellsVersionsApart) {
  TempFolder temp;
  platform_test::WriteFileBytes(temp.NativeOf("f"), "abc");
  platform::FileVersion base{};
  ASSERT_TRUE(platform::GetFileVersion(temp.Lib("f"), &base));
  EXPECT_EQ(base.size, 3u);
  EXPECT_FALSE(base.isFolder);
  platform::FileVersion folder{};
  ASSERT_TRUE(platform::GetFileVersion(temp.Lib(), &folder));
  EXPECT_TRUE(folder.isFolder);
  EXPECT_EQ(base.volume, folder.volume);
  for (int field = 0; field < 6; ++field) {
    SCOPED_TRACE(field);
    platform::FileVersion other = base;
    switch (field) {
      case 0:
        other.volume += 1;
        break;
      case 1:
        other.fileId += 1;
        break;
      case 2:
        other.size += 1;
        break;
      case 3:
        other.writeTime += 1;
        break;
      case 4:
        other.changeTime += 1;
        break;
      default:
        other.isFolder = !other.isFolder;
        break;
    }
    EXPECT_FALSE(other == base);
  }
  platform::FileVersion same = base;
  EXPECT_TRUE(same == base);
}

}  // namespace
