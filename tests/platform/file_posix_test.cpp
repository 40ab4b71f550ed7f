// The POSIX backend's file calls: what it adds to the system's own rules
// (descriptors, close-on-exec, creation modes, the flock emulation's limits).
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>

#include "platform/error.h"
#include "platform/file.h"
#include "platform/platform_support.h"

namespace {

namespace platform = tovimpl::platform;
using platform_test::WriteFileBytes;

int Descriptor(platform::FileHandle h) { return static_cast<int>(h.Bits() - 1); }

TEST(FilePosix, HandlesAreNeverInheritedByExecutedPrograms) {
  platform_test::TempFolder temp;
  WriteFileBytes(temp.NativeOf("f"), "x");
  const auto opened = platform::OpenFile(temp.Lib("f"), platform::kGenericRead,
                                         platform::kFileShareRead, platform::kOpenExisting, 0);
  ASSERT_TRUE(opened);
  EXPECT_NE(::fcntl(Descriptor(opened->handle), F_GETFD) & FD_CLOEXEC, 0);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
}

TEST(FilePosix, NewFilesGetMode0666LessTheUmask) {
  platform_test::TempFolder temp;
  const mode_t previous = ::umask(022);
  const auto opened =
      platform::OpenFile(temp.Lib("f"), platform::kGenericWrite, 0, platform::kCreateNew, 0);
  ::umask(previous);
  ASSERT_TRUE(opened);
  struct stat st {};
  ASSERT_EQ(::fstat(Descriptor(opened->handle), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0644u);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
}

TEST(FilePosix, AnOpenFileCanBeRemovedAndItsHandleKeepsWorking) {
  platform_test::TempFolder temp;
  WriteFileBytes(temp.NativeOf("f"), "abc");
  const auto opened = platform::OpenFile(temp.Lib("f"), platform::kGenericRead,
                                         platform::kFileShareRead, platform::kOpenExisting, 0);
  ASSERT_TRUE(opened);
  EXPECT_TRUE(platform::RemoveFile(temp.Lib("f")));
  char out[3] = {};
  EXPECT_EQ(*platform::ReadAt(opened->handle, 0, out, 3), 3u);
  EXPECT_EQ(out[2], 'c');
  EXPECT_TRUE(platform::CloseFile(opened->handle));
}

TEST(FilePosix, AttributeOnlyOpensTakeNoLock) {
  platform_test::TempFolder temp;
  WriteFileBytes(temp.NativeOf("f"), "abc");
  const auto writer =
      platform::OpenFile(temp.Lib("f"), platform::kGenericWrite, 0, platform::kOpenExisting, 0);
  ASSERT_TRUE(writer);
  const auto probe = platform::OpenFile(temp.Lib("f"), 0, 0, platform::kOpenExisting, 0);
  ASSERT_TRUE(probe);
  EXPECT_EQ(probe->size, 3u);
  EXPECT_TRUE(platform::CloseFile(probe->handle));
  EXPECT_TRUE(platform::CloseFile(writer->handle));
}

TEST(FilePosix, TheLongPathHintChangesNothing) {
  platform_test::TempFolder temp;
  WriteFileBytes(temp.NativeOf("f"), "abc");
  const auto opened =
      platform::OpenFile(temp.Lib("f"), platform::kGenericRead, platform::kFileShareRead,
                         platform::kOpenExisting, platform::kOpenLongPath);
  ASSERT_TRUE(opened);
  EXPECT_EQ(opened->size, 3u);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
}

}  // namespace
