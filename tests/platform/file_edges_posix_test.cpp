// The POSIX backend's file calls at their edges: special files (pipes, FIFOs,
// a device that is always full), the file-size limit, positions past what the
// system can address, names too long for it, and handles that are not open.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <limits>
#include <string>
#include <thread>

#include "platform/error.h"
#include "platform/file.h"
#include "platform/platform_support.h"

using namespace basalt::literals;

namespace {

namespace platform = tovimpl::platform;
using platform_test::TempFolder;
using platform_test::WriteFileBytes;

constexpr std::uint64_t kLastPosition =
    static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());

platform::FileHandle HandleOf(int fd) { return platform::FileHandle::FromBits(fd + 1); }

platform::Result<platform::OpenedFile> Open(const UTF16String& path, std::uint32_t access,
                                            std::uint32_t disposition, std::uint32_t hints = 0) {
  return platform::OpenFile(path, access, platform::kFileShareRead, disposition, hints);
}

// Lowers the file-size limit for the object's lifetime; writes past it fail
// with EFBIG instead of raising SIGXFSZ.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    mOldHandler = ::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &mOld);
    struct rlimit lowered = mOld;
    lowered.rlim_cur = bytes;
    EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &lowered), 0);
  }
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &mOld);
    ::signal(SIGXFSZ, mOldHandler);
  }

 private:
  struct rlimit mOld {};
  void (*mOldHandler)(int) = nullptr;
};

TEST(FileEdges, PathsThatCannotNameAFile) {
  TempFolder temp;
  WriteFileBytes(temp.NativeOf("file"), "x");
  const std::string longName(300, 'n');
  for (std::uint32_t disposition : {platform::kOpenExisting, platform::kOpenAlways}) {
    SCOPED_TRACE(disposition);
    EXPECT_EQ(Open(UTF16String(), platform::kGenericRead, disposition).Error(),
              platform::kErrorPathNotFound);
    EXPECT_EQ(Open(temp.Lib(longName), platform::kGenericRead, disposition).Error(),
              platform::kErrorFilenameExcedRange);
    EXPECT_EQ(Open(temp.Lib("file\\x"), platform::kGenericRead, disposition).Error(),
              platform::kErrorPathNotFound);
    EXPECT_EQ(Open(temp.Lib("none\\x"), platform::kGenericRead, disposition).Error(),
              platform::kErrorPathNotFound);
  }
  EXPECT_EQ(platform::RemoveFile(UTF16String()).Error(), platform::kErrorPathNotFound);
  EXPECT_EQ(platform::RemoveFile(temp.Lib(longName)).Error(), platform::kErrorFilenameExcedRange);
  EXPECT_EQ(platform::RemoveFile(temp.Lib("none\\x")).Error(), platform::kErrorPathNotFound);
  EXPECT_EQ(platform::RemoveFile(temp.Lib("file\\x")).Error(), platform::kErrorPathNotFound);
}

TEST(FileEdges, AFifoOpensWithSizeZeroButCannotBeTruncated) {
  TempFolder temp;
  ASSERT_EQ(::mkfifo(temp.NativeOf("fifo").c_str(), 0600), 0);
  const auto opened = Open(temp.Lib("fifo"), platform::kGenericRead | platform::kGenericWrite,
                           platform::kOpenExisting);
  ASSERT_TRUE(opened);
  EXPECT_EQ(opened->size, 0u);
  EXPECT_TRUE(opened->existed);
  EXPECT_FALSE(opened->isFolder);
  // A FIFO cannot be synced; nothing is lost by that.
  EXPECT_TRUE(platform::FlushFile(opened->handle));
  EXPECT_TRUE(platform::CloseFile(opened->handle));
  EXPECT_EQ(Open(temp.Lib("fifo"), platform::kGenericRead | platform::kGenericWrite,
                 platform::kCreateAlways)
                .Error(),
            platform::kErrorInvalidParameter);
}

// Opens the FIFO for writing, which waits for a reader, while another thread
// first interrupts the wait with a signal and then opens the reading end.
platform::Result<platform::OpenedFile> OpenWhileInterrupted(const TempFolder& temp,
                                                            std::uint32_t disposition) {
  const pthread_t opener = ::pthread_self();
  int reader = -1;
  std::thread helper([&] {
    ::usleep(100000);
    ::pthread_kill(opener, SIGUSR1);
    ::usleep(100000);
    reader = ::open(temp.NativeOf("fifo").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  });
  auto opened = Open(temp.Lib("fifo"), platform::kGenericWrite, disposition);
  helper.join();
  if (reader >= 0) ::close(reader);
  return opened;
}

TEST(FileEdges, AnOpenInterruptedByASignalIsRetried) {
  TempFolder temp;
  ASSERT_EQ(::mkfifo(temp.NativeOf("fifo").c_str(), 0600), 0);
  // A handler without SA_RESTART: the waiting open returns EINTR.
  struct sigaction quiet {
  }, previous{};
  quiet.sa_handler = [](int) {};
  sigemptyset(&quiet.sa_mask);
  ASSERT_EQ(::sigaction(SIGUSR1, &quiet, &previous), 0);
  for (std::uint32_t disposition : {platform::kOpenExisting, platform::kOpenAlways}) {
    SCOPED_TRACE(disposition);
    const auto opened = OpenWhileInterrupted(temp, disposition);
    ASSERT_TRUE(opened);
    EXPECT_TRUE(opened->existed);
    EXPECT_EQ(opened->size, 0u);
    EXPECT_TRUE(platform::CloseFile(opened->handle));
  }
  ::sigaction(SIGUSR1, &previous, nullptr);
}

TEST(FileEdges, APipeCannotBeSyncedAndThatIsNoFailure) {
  int fds[2];
  ASSERT_EQ(::pipe(fds), 0);
  EXPECT_TRUE(platform::FlushFile(HandleOf(fds[1])));
  // Positioned transfers need a file that has positions.
  EXPECT_EQ(platform::WriteAt(HandleOf(fds[1]), 0, "ab", 2).Error(), platform::kErrorGenFailure);
  EXPECT_TRUE(platform::CloseFile(HandleOf(fds[1])));
  EXPECT_TRUE(platform::CloseFile(HandleOf(fds[0])));
  // Closed now: the descriptor no longer names anything.
  EXPECT_EQ(platform::CloseFile(HandleOf(fds[0])).Error(), platform::kErrorInvalidHandle);
  EXPECT_EQ(platform::FlushFile(HandleOf(fds[0])).Error(), platform::kErrorInvalidHandle);
  EXPECT_EQ(platform::FileSize(HandleOf(fds[0])).Error(), platform::kErrorInvalidHandle);
}

TEST(FileEdges, AFullDeviceSaysDiskFull) {
  if (::access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full";
  const auto opened = Open(u"\\dev\\full"_u16, platform::kGenericWrite, platform::kOpenExisting);
  ASSERT_TRUE(opened);
  EXPECT_EQ(platform::WriteAt(opened->handle, 0, "abc", 3).Error(), platform::kErrorDiskFull);
  EXPECT_EQ(platform::SetFileSize(opened->handle, 10).Error(), platform::kErrorAccessDenied);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
}

TEST(FileEdges, WritesPastTheFileSizeLimitSayFileTooLarge) {
  TempFolder temp;
  const auto opened =
      Open(temp.Lib("f"), platform::kGenericRead | platform::kGenericWrite, platform::kCreateNew);
  ASSERT_TRUE(opened);
  {
    FileSizeLimit limit(4096);
    EXPECT_EQ(*platform::WriteAt(opened->handle, 0, "abc", 3), 3u);
    EXPECT_EQ(platform::WriteAt(opened->handle, 8192, "abc", 3).Error(),
              platform::kErrorFileTooLarge);
    EXPECT_EQ(platform::SetFileSize(opened->handle, 8192).Error(), platform::kErrorFileTooLarge);
  }
  EXPECT_EQ(*platform::FileSize(opened->handle), 3u);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
}

TEST(FileEdges, PositionsPastTheSystemsRange) {
  TempFolder temp;
  const auto opened =
      Open(temp.Lib("f"), platform::kGenericRead | platform::kGenericWrite, platform::kCreateNew);
  ASSERT_TRUE(opened);
  ASSERT_EQ(*platform::WriteAt(opened->handle, 0, "abc", 3), 3u);
  char out[4] = {};
  // Reading past any possible end delivers nothing, and that is no failure.
  EXPECT_EQ(*platform::ReadAt(opened->handle, kLastPosition + 1, out, 4), 0u);
  EXPECT_EQ(*platform::ReadAt(opened->handle, kLastPosition, out, 4), 0u);
  EXPECT_EQ(*platform::ReadAt(opened->handle, ~std::uint64_t{0}, out, 4), 0u);
  EXPECT_EQ(platform::WriteAt(opened->handle, kLastPosition + 1, "x", 1).Error(),
            platform::kErrorFileTooLarge);
  EXPECT_EQ(platform::SetFileSize(opened->handle, kLastPosition + 1).Error(),
            platform::kErrorInvalidParameter);
  EXPECT_EQ(*platform::FileSize(opened->handle), 3u);
  EXPECT_TRUE(platform::FlushFile(opened->handle));
  EXPECT_TRUE(platform::CloseFile(opened->handle));
}

TEST(FileEdges, AFolderHandleReadsNothing) {
  TempFolder temp;
  const auto folder = Open(temp.Lib(), platform::kGenericRead, platform::kOpenExisting,
                           platform::kFileFlagBackupSemantics);
  ASSERT_TRUE(folder);
  EXPECT_TRUE(folder->isFolder);
  EXPECT_EQ(folder->size, 0u);
  char out[4];
  EXPECT_EQ(platform::ReadAt(folder->handle, 0, out, 4).Error(), platform::kErrorAccessDenied);
  EXPECT_EQ(platform::SetFileSize(folder->handle, 0).Error(), platform::kErrorAccessDenied);
  EXPECT_TRUE(platform::CloseFile(folder->handle));
}

TEST(FileEdges, AWriteOnlyHandleRefusesReads) {
  TempFolder temp;
  WriteFileBytes(temp.NativeOf("f"), "abc");
  const auto opened = Open(temp.Lib("f"), platform::kGenericWrite, platform::kOpenExisting);
  ASSERT_TRUE(opened);
  char out[3];
  EXPECT_EQ(platform::ReadAt(opened->handle, 0, out, 3).Error(), platform::kErrorAccessDenied);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
}

TEST(FileEdges, HandleValuesOutsideTheDescriptorRangeAreInvalid) {
  char byte = 0;
  for (std::intptr_t bits : {std::intptr_t{-5}, std::intptr_t{1} << 40}) {
    SCOPED_TRACE(bits);
    const platform::FileHandle handle = platform::FileHandle::FromBits(bits);
    EXPECT_EQ(platform::ReadAt(handle, 0, &byte, 1).Error(), platform::kErrorInvalidHandle);
    EXPECT_EQ(platform::WriteAt(handle, 0, &byte, 1).Error(), platform::kErrorInvalidHandle);
    EXPECT_EQ(platform::FileSize(handle).Error(), platform::kErrorInvalidHandle);
    EXPECT_EQ(platform::SetFileSize(handle, 0).Error(), platform::kErrorInvalidHandle);
    EXPECT_EQ(platform::FlushFile(handle).Error(), platform::kErrorInvalidHandle);
    EXPECT_EQ(platform::CloseFile(handle).Error(), platform::kErrorInvalidHandle);
  }
}

TEST(FileEdges, OpenAlwaysOnAnExistingFileKeepsItAndCreateAlwaysEmptiesIt) {
  TempFolder temp;
  WriteFileBytes(temp.NativeOf("f"), "abcdef");
  const auto kept = Open(temp.Lib("f"), platform::kGenericRead, platform::kOpenAlways);
  ASSERT_TRUE(kept);
  EXPECT_TRUE(kept->existed);
  EXPECT_EQ(kept->size, 6u);
  EXPECT_TRUE(platform::CloseFile(kept->handle));
  const auto emptied = Open(temp.Lib("f"), platform::kGenericWrite, platform::kCreateAlways);
  ASSERT_TRUE(emptied);
  EXPECT_TRUE(emptied->existed);
  EXPECT_EQ(emptied->size, 0u);
  EXPECT_EQ(*platform::FileSize(emptied->handle), 0u);
  EXPECT_TRUE(platform::CloseFile(emptied->handle));
  // A folder in the way of a create is refused, and stays a folder.
  platform_test::MakeFolder(temp.NativeOf("dir"));
  EXPECT_EQ(Open(temp.Lib("dir"), platform::kGenericWrite, platform::kCreateAlways).Error(),
            platform::kErrorAccessDenied);
  EXPECT_EQ(Open(temp.Lib("dir"), 0, platform::kOpenAlways).Error(), platform::kErrorAccessDenied);
}

}  // namespace
