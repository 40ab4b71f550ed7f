// The OS layer's file calls: dispositions, pointers, sizes, errors.
#include <gtest/gtest.h>

#include <cstdint>

#include "platform/error.h"
#include "platform/file.h"
#include "streams/stream_test_support.h"

namespace platform = tovimpl::platform;
using streamtest::Bytes;
using streamtest::TempDir;

namespace {

class FilePlatformTest : public ::testing::Test {
 protected:
  platform::FileHandle Open(const std::string& name, std::uint32_t disposition,
                            std::uint32_t access = platform::kGenericRead | platform::kGenericWrite,
                            std::uint32_t share = platform::kFileShareRead) {
    return platform::CreateFile(dir.Library(name), access, share, disposition,
                                platform::kFileAttributeNormal);
  }
  TempDir dir;
};

}  // namespace

TEST(FileHandle, NullInvalidAndOpenAreDistinct) {
  constexpr platform::FileHandle null;
  EXPECT_TRUE(null.IsNull());
  EXPECT_FALSE(null.IsOpen());
  EXPECT_TRUE(platform::FileHandle::Invalid().IsInvalid());
  EXPECT_FALSE(platform::FileHandle::Invalid().IsOpen());
  EXPECT_NE(null, platform::FileHandle::Invalid());
  // Descriptor 0 is stored as 1: an open handle.
  EXPECT_TRUE(platform::FileHandle::FromBits(1).IsOpen());
}

TEST_F(FilePlatformTest, CreateNewOnAnExistingFileFailsWithFileExists) {
  streamtest::WriteAll(dir.Native("f.bin"), Bytes{1});
  EXPECT_TRUE(Open("f.bin", platform::kCreateNew).IsInvalid());
  EXPECT_EQ(platform::GetLastError(), platform::kErrorFileExists);
}

TEST_F(FilePlatformTest, CreateNewMakesTheFileAndClearsTheLastError) {
  platform::SetLastError(99);
  platform::FileHandle h = Open("n.bin", platform::kCreateNew);
  ASSERT_TRUE(h.IsOpen());
  EXPECT_EQ(platform::GetLastError(), 0u);
  EXPECT_TRUE(platform::CloseHandle(h));
  EXPECT_TRUE(streamtest::Exists(dir.Native("n.bin")));
}

TEST_F(FilePlatformTest, CreateAlwaysTruncatesAndReportsAlreadyExists) {
  streamtest::WriteAll(dir.Native("f.bin"), Bytes{1, 2, 3});
  platform::FileHandle h = Open("f.bin", platform::kCreateAlways);
  ASSERT_TRUE(h.IsOpen());
  EXPECT_EQ(platform::GetLastError(), platform::kErrorAlreadyExists);
  EXPECT_EQ(platform::GetFileSize(h, nullptr), 0u);
  platform::CloseHandle(h);
  h = Open("g.bin", platform::kCreateAlways);
  EXPECT_EQ(platform::GetLastError(), 0u);
  platform::CloseHandle(h);
}

TEST_F(FilePlatformTest, OpenAlwaysKeepsContentsAndReportsWhetherItExisted) {
  streamtest::WriteAll(dir.Native("f.bin"), Bytes{1, 2, 3});
  platform::FileHandle h = Open("f.bin", platform::kOpenAlways);
  EXPECT_EQ(platform::GetLastError(), platform::kErrorAlreadyExists);
  EXPECT_EQ(platform::GetFileSize(h, nullptr), 3u);
  platform::CloseHandle(h);
  h = Open("new.bin", platform::kOpenAlways);
  EXPECT_TRUE(h.IsOpen());
  EXPECT_EQ(platform::GetLastError(), 0u);
  platform::CloseHandle(h);
}

TEST_F(FilePlatformTest, OpenExistingOnAMissingFileOrFolder) {
  EXPECT_TRUE(Open("missing.bin", platform::kOpenExisting).IsInvalid());
  EXPECT_EQ(platform::GetLastError(), platform::kErrorFileNotFound);
  EXPECT_TRUE(Open("nope\\missing.bin", platform::kOpenExisting).IsInvalid());
  EXPECT_EQ(platform::GetLastError(), platform::kErrorPathNotFound);
}

TEST_F(FilePlatformTest, TruncateExistingNeedsWriteAccess) {
  streamtest::WriteAll(dir.Native("f.bin"), Bytes{1, 2, 3});
  EXPECT_TRUE(Open("f.bin", platform::kTruncateExisting, platform::kGenericRead).IsInvalid());
  EXPECT_EQ(platform::GetLastError(), platform::kErrorInvalidParameter);
  platform::FileHandle h = Open("f.bin", platform::kTruncateExisting);
  ASSERT_TRUE(h.IsOpen());
  EXPECT_EQ(platform::GetFileSize(h, nullptr), 0u);
  platform::CloseHandle(h);
  EXPECT_TRUE(Open("missing.bin", platform::kTruncateExisting).IsInvalid());
  EXPECT_EQ(platform::GetLastError(), platform::kErrorFileNotFound);
}

TEST_F(FilePlatformTest, BadDispositionIsInvalidParameter) {
  EXPECT_TRUE(Open("f.bin", 0).IsInvalid());
  EXPECT_EQ(platform::GetLastError(), platform::kErrorInvalidParameter);
  EXPECT_TRUE(Open("f.bin", 6).IsInvalid());
  EXPECT_FALSE(streamtest::Exists(dir.Native("f.bin")));
}

TEST_F(FilePlatformTest, FolderOpensOnlyWithBackupSemantics) {
  EXPECT_TRUE(platform::CreateFile(dir.Library(""), platform::kGenericRead,
                                   platform::kFileShareRead, platform::kOpenExisting, 0)
                  .IsInvalid());
  EXPECT_EQ(platform::GetLastError(), platform::kErrorAccessDenied);
  platform::FileHandle h =
      platform::CreateFile(dir.Library(""), platform::kGenericRead, platform::kFileShareRead,
                           platform::kOpenExisting, platform::kFileFlagBackupSemantics);
  EXPECT_TRUE(h.IsOpen());
  platform::CloseHandle(h);
}

TEST_F(FilePlatformTest, ReadWriteAndFilePointer) {
  platform::FileHandle h = Open("f.bin", platform::kCreateAlways);
  ASSERT_TRUE(h.IsOpen());
  const unsigned char data[6] = {1, 2, 3, 4, 5, 6};
  std::uint32_t done = 0;
  EXPECT_TRUE(platform::WriteFile(h, data, 6, &done));
  EXPECT_EQ(done, 6u);
  EXPECT_EQ(platform::SetFilePointer(h, 2, nullptr, platform::kFileBegin), 2u);
  unsigned char out[8] = {};
  EXPECT_TRUE(platform::ReadFile(h, out, 8, &done));
  EXPECT_EQ(done, 4u);
  EXPECT_EQ(out[0], 3);
  EXPECT_TRUE(platform::ReadFile(h, out, 8, &done));
  EXPECT_EQ(done, 0u);  // at the end: success with nothing
  EXPECT_EQ(platform::SetFilePointer(h, -1, nullptr, platform::kFileEnd), 5u);
  EXPECT_EQ(platform::SetFilePointer(h, -2, nullptr, platform::kFileCurrent), 3u);
  std::int64_t where = 0;
  EXPECT_TRUE(platform::SetFilePointerEx(h, 0, &where, platform::kFileCurrent));
  EXPECT_EQ(where, 3);
  EXPECT_TRUE(platform::SetEndOfFile(h));
  std::int64_t size = 0;
  EXPECT_TRUE(platform::GetFileSizeEx(h, &size));
  EXPECT_EQ(size, 3);
  EXPECT_TRUE(platform::FlushFileBuffers(h));
  EXPECT_TRUE(platform::CloseHandle(h));
}

TEST_F(FilePlatformTest, NegativeSeekFailsAndKeepsThePointer) {
  platform::FileHandle h = Open("f.bin", platform::kCreateAlways);
  EXPECT_EQ(platform::SetFilePointer(h, 4, nullptr, platform::kFileBegin), 4u);
  EXPECT_EQ(platform::SetFilePointer(h, static_cast<std::int32_t>(0x80000000u), nullptr,
                                     platform::kFileBegin),
            platform::kInvalidSetFilePointer);
  EXPECT_EQ(platform::GetLastError(), platform::kErrorNegativeSeek);
  EXPECT_EQ(platform::SetFilePointer(h, -5, nullptr, platform::kFileCurrent),
            platform::kInvalidSetFilePointer);
  EXPECT_EQ(platform::GetLastError(), platform::kErrorNegativeSeek);
  EXPECT_FALSE(platform::SetFilePointerEx(h, -1, nullptr, platform::kFileBegin));
  EXPECT_EQ(platform::GetLastError(), platform::kErrorNegativeSeek);
  EXPECT_EQ(platform::SetFilePointer(h, 0, nullptr, platform::kFileCurrent), 4u);
  platform::CloseHandle(h);
}

TEST_F(FilePlatformTest, HighPartMovesPastFourGiBAndComesBack) {
  platform::FileHandle h = Open("f.bin", platform::kCreateAlways);
  std::int32_t high = 1;
  EXPECT_EQ(platform::SetFilePointer(h, 5, &high, platform::kFileBegin), 5u);
  EXPECT_EQ(high, 1);
  // Without a high part the new position must fit in 32 bits.
  EXPECT_EQ(platform::SetFilePointer(h, 0, nullptr, platform::kFileCurrent),
            platform::kInvalidSetFilePointer);
  EXPECT_EQ(platform::GetLastError(), platform::kErrorInvalidParameter);
  // A low part of all ones is a success with last error 0.
  platform::SetLastError(5);
  high = 0;
  EXPECT_EQ(platform::SetFilePointer(h, -1, &high, platform::kFileBegin),
            platform::kInvalidSetFilePointer);
  EXPECT_EQ(platform::GetLastError(), 0u);
  EXPECT_EQ(high, 0);
  platform::CloseHandle(h);
}

TEST_F(FilePlatformTest, GetFileSizeGivesTheHighPart) {
  streamtest::MakeSparse(dir.Native("big.bin"), 0x200000003ull, Bytes{});
  platform::FileHandle h = Open("big.bin", platform::kOpenExisting, platform::kGenericRead);
  std::uint32_t high = 0;
  EXPECT_EQ(platform::GetFileSize(h, &high), 3u);
  EXPECT_EQ(high, 2u);
  platform::CloseHandle(h);
}

TEST_F(FilePlatformTest, BadHandlesFailWithInvalidHandle) {
  for (platform::FileHandle h : {platform::FileHandle(), platform::FileHandle::Invalid()}) {
    unsigned char byte = 0;
    std::uint32_t done = 9;
    EXPECT_FALSE(platform::ReadFile(h, &byte, 1, &done));
    EXPECT_EQ(platform::GetLastError(), platform::kErrorInvalidHandle);
    EXPECT_EQ(done, 0u);
    EXPECT_FALSE(platform::WriteFile(h, &byte, 1, &done));
    EXPECT_EQ(platform::SetFilePointer(h, 0, nullptr, platform::kFileBegin),
              platform::kInvalidSetFilePointer);
    EXPECT_EQ(platform::GetLastError(), platform::kErrorInvalidHandle);
    EXPECT_EQ(platform::GetFileSize(h, nullptr), platform::kInvalidFileSize);
    EXPECT_FALSE(platform::SetEndOfFile(h));
    EXPECT_FALSE(platform::FlushFileBuffers(h));
    EXPECT_FALSE(platform::CloseHandle(h));
    EXPECT_EQ(platform::GetLastError(), platform::kErrorInvalidHandle);
  }
}

TEST_F(FilePlatformTest, ReadOnlyHandleRefusesWritesAndTruncation) {
  streamtest::WriteAll(dir.Native("f.bin"), Bytes{1, 2});
  platform::FileHandle h = Open("f.bin", platform::kOpenExisting, platform::kGenericRead);
  const unsigned char byte = 0;
  EXPECT_FALSE(platform::WriteFile(h, &byte, 1, nullptr));
  EXPECT_EQ(platform::GetLastError(), platform::kErrorAccessDenied);
  EXPECT_FALSE(platform::SetEndOfFile(h));
  EXPECT_EQ(platform::GetLastError(), platform::kErrorAccessDenied);
  platform::CloseHandle(h);
}

TEST_F(FilePlatformTest, ShareModesMapToLocks) {
  streamtest::WriteAll(dir.Native("f.bin"), Bytes{1});
  // Read-only opens that share reading coexist.
  platform::FileHandle a = Open("f.bin", platform::kOpenExisting, platform::kGenericRead);
  platform::FileHandle b = Open("f.bin", platform::kOpenExisting, platform::kGenericRead);
  EXPECT_TRUE(a.IsOpen());
  EXPECT_TRUE(b.IsOpen());
  // A read-only open that shares nothing is exclusive.
  EXPECT_TRUE(Open("f.bin", platform::kOpenExisting, platform::kGenericRead, 0).IsInvalid());
  EXPECT_EQ(platform::GetLastError(), platform::kErrorSharingViolation);
  platform::CloseHandle(a);
  platform::CloseHandle(b);
  platform::FileHandle solo = Open("f.bin", platform::kOpenExisting, platform::kGenericRead, 0);
  ASSERT_TRUE(solo.IsOpen());
  EXPECT_TRUE(Open("f.bin", platform::kOpenExisting, platform::kGenericRead).IsInvalid());
  EXPECT_EQ(platform::GetLastError(), platform::kErrorSharingViolation);
  platform::CloseHandle(solo);
}

TEST_F(FilePlatformTest, DeleteFile) {
  streamtest::WriteAll(dir.Native("f.bin"), Bytes{1});
  EXPECT_TRUE(platform::DeleteFile(dir.Library("f.bin")));
  EXPECT_FALSE(streamtest::Exists(dir.Native("f.bin")));
  EXPECT_FALSE(platform::DeleteFile(dir.Library("f.bin")));
  EXPECT_EQ(platform::GetLastError(), platform::kErrorFileNotFound);
  EXPECT_FALSE(platform::DeleteFile(dir.Library("none\\f.bin")));
  EXPECT_EQ(platform::GetLastError(), platform::kErrorPathNotFound);
  EXPECT_FALSE(platform::DeleteFile(dir.Library("")));
  EXPECT_EQ(platform::GetLastError(), platform::kErrorAccessDenied);
}

// Seeks followed by transfers, in every order the ports and streams use them.

TEST_F(FilePlatformTest, SeekThenSetEndOfFileTruncatesAtTheSoughtPosition) {
  streamtest::WriteAll(dir.Native("f.bin"), Bytes{1, 2, 3, 4, 5, 6, 7, 8});
  platform::FileHandle h = Open("f.bin", platform::kOpenExisting);
  EXPECT_EQ(platform::SetFilePointer(h, 3, nullptr, platform::kFileBegin), 3u);
  EXPECT_TRUE(platform::SetEndOfFile(h));
  EXPECT_EQ(platform::GetFileSize(h, nullptr), 3u);
  EXPECT_EQ(platform::SetFilePointer(h, 0, nullptr, platform::kFileCurrent), 3u);
  platform::CloseHandle(h);
  EXPECT_EQ(streamtest::ReadAll(dir.Native("f.bin")), (Bytes{1, 2, 3}));
}

TEST_F(FilePlatformTest, TransfersAfterASeekStartThereAndAdvanceThePointer) {
  streamtest::WriteAll(dir.Native("f.bin"), Bytes{0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
  platform::FileHandle h = Open("f.bin", platform::kOpenExisting);
  EXPECT_EQ(platform::SetFilePointer(h, 6, nullptr, platform::kFileBegin), 6u);
  unsigned char two[2] = {};
  std::uint32_t done = 0;
  EXPECT_TRUE(platform::ReadFile(h, two, 2, &done));
  EXPECT_EQ(done, 2u);
  EXPECT_EQ(two[0], 6);
  EXPECT_EQ(two[1], 7);
  EXPECT_EQ(platform::SetFilePointer(h, 0, nullptr, platform::kFileCurrent), 8u);
  const unsigned char mark[2] = {0xAA, 0xBB};
  EXPECT_TRUE(platform::WriteFile(h, mark, 2, &done));  // continues at 8
  EXPECT_EQ(platform::SetFilePointer(h, -9, nullptr, platform::kFileCurrent), 1u);
  EXPECT_TRUE(platform::WriteFile(h, mark, 1, &done));
  EXPECT_TRUE(platform::ReadFile(h, two, 2, &done));  // continues at 2
  EXPECT_EQ(two[0], 2);
  EXPECT_EQ(two[1], 3);
  platform::CloseHandle(h);
  EXPECT_EQ(streamtest::ReadAll(dir.Native("f.bin")),
            (Bytes{0, 0xAA, 2, 3, 4, 5, 6, 7, 0xAA, 0xBB}));
}

TEST_F(FilePlatformTest, WriteAfterASeekPastTheEndLeavesAZeroGap) {
  platform::FileHandle h = Open("f.bin", platform::kCreateAlways);
  EXPECT_EQ(platform::SetFilePointer(h, 4, nullptr, platform::kFileBegin), 4u);
  const unsigned char byte = 9;
  EXPECT_TRUE(platform::WriteFile(h, &byte, 1, nullptr));
  EXPECT_EQ(platform::GetFileSize(h, nullptr), 5u);
  EXPECT_EQ(platform::SetFilePointer(h, 0, nullptr, platform::kFileEnd), 5u);
  platform::CloseHandle(h);
  EXPECT_EQ(streamtest::ReadAll(dir.Native("f.bin")), (Bytes{0, 0, 0, 0, 9}));
}

TEST_F(FilePlatformTest, FailedSeekKeepsTheSoughtPositionForTheNextTransfer) {
  streamtest::WriteAll(dir.Native("f.bin"), Bytes{0, 1, 2, 3, 4, 5});
  platform::FileHandle h = Open("f.bin", platform::kOpenExisting);
  EXPECT_EQ(platform::SetFilePointer(h, 4, nullptr, platform::kFileBegin), 4u);
  EXPECT_EQ(platform::SetFilePointer(h, -5, nullptr, platform::kFileCurrent),
            platform::kInvalidSetFilePointer);
  EXPECT_EQ(platform::GetLastError(), platform::kErrorNegativeSeek);
  unsigned char byte = 0;
  EXPECT_TRUE(platform::ReadFile(h, &byte, 1, nullptr));
  EXPECT_EQ(byte, 4);
  platform::CloseHandle(h);
}

TEST_F(FilePlatformTest, TwoHandlesOnOneFileKeepTheirOwnPointers) {
  streamtest::WriteAll(dir.Native("f.bin"), Bytes{0, 1, 2, 3, 4, 5});
  platform::FileHandle a = Open("f.bin", platform::kOpenExisting, platform::kGenericRead);
  platform::FileHandle b = Open("f.bin", platform::kOpenExisting, platform::kGenericRead);
  EXPECT_EQ(platform::SetFilePointer(a, 4, nullptr, platform::kFileBegin), 4u);
  EXPECT_EQ(platform::SetFilePointer(b, 1, nullptr, platform::kFileBegin), 1u);
  unsigned char fromA = 0;
  unsigned char fromB = 0;
  EXPECT_TRUE(platform::ReadFile(a, &fromA, 1, nullptr));
  EXPECT_TRUE(platform::ReadFile(b, &fromB, 1, nullptr));
  EXPECT_EQ(fromA, 4);
  EXPECT_EQ(fromB, 1);
  EXPECT_EQ(platform::SetFilePointer(a, 0, nullptr, platform::kFileCurrent), 5u);
  EXPECT_EQ(platform::SetFilePointer(b, 0, nullptr, platform::kFileCurrent), 2u);
  platform::CloseHandle(a);
  platform::CloseHandle(b);
}

TEST_F(FilePlatformTest, AHandleOpenedAfterAnotherClosedStartsAtTheBeginning) {
  streamtest::WriteAll(dir.Native("a.bin"), Bytes{0, 1, 2, 3, 4, 5});
  streamtest::WriteAll(dir.Native("b.bin"), Bytes{7, 8});
  platform::FileHandle a = Open("a.bin", platform::kOpenExisting);
  EXPECT_EQ(platform::SetFilePointer(a, 5, nullptr, platform::kFileBegin), 5u);
  platform::CloseHandle(a);  // closed with a seek not yet used by any transfer
  platform::FileHandle b = Open("b.bin", platform::kOpenExisting);
  EXPECT_EQ(platform::SetFilePointer(b, 0, nullptr, platform::kFileCurrent), 0u);
  unsigned char byte = 0;
  EXPECT_TRUE(platform::ReadFile(b, &byte, 1, nullptr));
  EXPECT_EQ(byte, 7);
  platform::CloseHandle(b);
}
