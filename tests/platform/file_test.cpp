// The OS layer's file calls on every backend: dispositions, what an open
// learns, transfers at positions, sizes, sharing, errors.
#include "platform/file.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "platform/error.h"
#include "platform/platform_support.h"

namespace {

namespace platform = tovimpl::platform;
using platform_test::Exists;
using platform_test::ReadFileBytes;
using platform_test::WriteFileBytes;

class FileCalls : public ::testing::Test {
 protected:
  platform::Result<platform::OpenedFile> Open(const std::string& name, std::uint32_t disposition,
                                              std::uint32_t access = platform::kGenericRead |
                                                                     platform::kGenericWrite,
                                              std::uint32_t share = platform::kFileShareRead) {
    return platform::OpenFile(temp.Lib(name), access, share, disposition,
                              platform::kFileAttributeNormal);
  }
  platform_test::TempFolder temp;
};

TEST(FileHandle, NullInvalidAndOpenAreDistinct) {
  constexpr platform::FileHandle null;
  EXPECT_TRUE(null.IsNull());
  EXPECT_FALSE(null.IsOpen());
  EXPECT_TRUE(platform::FileHandle::Invalid().IsInvalid());
  EXPECT_FALSE(platform::FileHandle::Invalid().IsOpen());
  EXPECT_NE(null, platform::FileHandle::Invalid());
  EXPECT_TRUE(platform::FileHandle::FromBits(1).IsOpen());
}

TEST_F(FileCalls, CreateNewOnAnExistingFileFailsWithFileExists) {
  WriteFileBytes(temp.NativeOf("f.bin"), "\x01");
  const auto opened = Open("f.bin", platform::kCreateNew);
  EXPECT_FALSE(opened);
  EXPECT_EQ(opened.Error(), platform::kErrorFileExists);
  EXPECT_TRUE(opened->handle.IsNull());
}

TEST_F(FileCalls, CreateNewMakesAnEmptyFileThatDidNotExist) {
  const auto opened = Open("n.bin", platform::kCreateNew);
  ASSERT_TRUE(opened);
  EXPECT_EQ(opened.Error(), 0u);
  EXPECT_TRUE(opened->handle.IsOpen());
  EXPECT_FALSE(opened->existed);
  EXPECT_EQ(opened->size, 0u);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
  EXPECT_TRUE(Exists(temp.NativeOf("n.bin")));
}

TEST_F(FileCalls, CreateAlwaysTruncatesAndSaysTheFileExisted) {
  WriteFileBytes(temp.NativeOf("f.bin"), "abc");
  auto opened = Open("f.bin", platform::kCreateAlways);
  ASSERT_TRUE(opened);
  EXPECT_TRUE(opened->existed);
  EXPECT_EQ(opened->size, 0u);
  EXPECT_EQ(*platform::FileSize(opened->handle), 0u);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
  opened = Open("g.bin", platform::kCreateAlways);
  ASSERT_TRUE(opened);
  EXPECT_FALSE(opened->existed);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
}

TEST_F(FileCalls, OpenAlwaysKeepsContentsAndSaysWhetherItExisted) {
  WriteFileBytes(temp.NativeOf("f.bin"), "abc");
  auto opened = Open("f.bin", platform::kOpenAlways);
  ASSERT_TRUE(opened);
  EXPECT_TRUE(opened->existed);
  EXPECT_EQ(opened->size, 3u);
  EXPECT_EQ(*platform::FileSize(opened->handle), 3u);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
  opened = Open("new.bin", platform::kOpenAlways);
  ASSERT_TRUE(opened);
  EXPECT_FALSE(opened->existed);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
}

TEST_F(FileCalls, OpenExistingOnAMissingFileOrFolder) {
  EXPECT_EQ(Open("missing.bin", platform::kOpenExisting).Error(), platform::kErrorFileNotFound);
  EXPECT_EQ(Open("nope\\missing.bin", platform::kOpenExisting).Error(),
            platform::kErrorPathNotFound);
}

TEST_F(FileCalls, TruncateExistingNeedsWriteAccess) {
  WriteFileBytes(temp.NativeOf("f.bin"), "abc");
  EXPECT_EQ(Open("f.bin", platform::kTruncateExisting, platform::kGenericRead).Error(),
            platform::kErrorInvalidParameter);
  const auto opened = Open("f.bin", platform::kTruncateExisting);
  ASSERT_TRUE(opened);
  EXPECT_EQ(opened->size, 0u);
  EXPECT_EQ(*platform::FileSize(opened->handle), 0u);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
  EXPECT_EQ(Open("missing.bin", platform::kTruncateExisting).Error(), platform::kErrorFileNotFound);
}

TEST_F(FileCalls, BadDispositionIsInvalidParameterAndCreatesNothing) {
  EXPECT_EQ(Open("f.bin", 0).Error(), platform::kErrorInvalidParameter);
  EXPECT_EQ(Open("f.bin", 6).Error(), platform::kErrorInvalidParameter);
  EXPECT_FALSE(Exists(temp.NativeOf("f.bin")));
}

TEST_F(FileCalls, FolderOpensOnlyWithBackupSemantics) {
  EXPECT_EQ(platform::OpenFile(temp.Lib(), platform::kGenericRead, platform::kFileShareRead,
                               platform::kOpenExisting, 0)
                .Error(),
            platform::kErrorAccessDenied);
  const auto opened =
      platform::OpenFile(temp.Lib(), platform::kGenericRead, platform::kFileShareRead,
                         platform::kOpenExisting, platform::kFileFlagBackupSemantics);
  ASSERT_TRUE(opened);
  EXPECT_TRUE(opened->isFolder);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
}

TEST_F(FileCalls, ReadAtAndWriteAtTransferAtTheirPositions) {
  const auto opened = Open("f.bin", platform::kCreateAlways);
  ASSERT_TRUE(opened);
  const platform::FileHandle h = opened->handle;
  const unsigned char data[6] = {1, 2, 3, 4, 5, 6};
  EXPECT_EQ(*platform::WriteAt(h, 0, data, 6), 6u);
  unsigned char out[8] = {};
  EXPECT_EQ(*platform::ReadAt(h, 2, out, 8), 4u);  // short only at the end
  EXPECT_EQ(out[0], 3);
  EXPECT_EQ(out[3], 6);
  const auto atEnd = platform::ReadAt(h, 6, out, 8);
  EXPECT_TRUE(atEnd);  // at the end: success with nothing
  EXPECT_EQ(*atEnd, 0u);
  EXPECT_EQ(*platform::ReadAt(h, 100, out, 8), 0u);
  const unsigned char mark = 0xAA;
  EXPECT_EQ(*platform::WriteAt(h, 1, &mark, 1), 1u);
  EXPECT_EQ(*platform::ReadAt(h, 0, out, 3), 3u);
  EXPECT_EQ(out[1], 0xAA);
  EXPECT_EQ(out[2], 3);
  EXPECT_TRUE(platform::SetFileSize(h, 3));
  EXPECT_EQ(*platform::FileSize(h), 3u);
  EXPECT_TRUE(platform::FlushFile(h));
  EXPECT_TRUE(platform::CloseFile(h));
  EXPECT_EQ(ReadFileBytes(temp.NativeOf("f.bin")), std::string("\x01\xAA\x03", 3));
}

TEST_F(FileCalls, WriteAtPastTheEndLeavesAZeroGap) {
  const auto opened = Open("f.bin", platform::kCreateAlways);
  ASSERT_TRUE(opened);
  const unsigned char byte = 9;
  EXPECT_EQ(*platform::WriteAt(opened->handle, 4, &byte, 1), 1u);
  EXPECT_EQ(*platform::FileSize(opened->handle), 5u);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
  EXPECT_EQ(ReadFileBytes(temp.NativeOf("f.bin")), std::string("\0\0\0\0\x09", 5));
}

TEST_F(FileCalls, SetFileSizeExtendsWithZeros) {
  const auto opened = Open("f.bin", platform::kCreateAlways);
  ASSERT_TRUE(opened);
  EXPECT_TRUE(platform::SetFileSize(opened->handle, 4));
  EXPECT_EQ(*platform::FileSize(opened->handle), 4u);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
  EXPECT_EQ(ReadFileBytes(temp.NativeOf("f.bin")), std::string(4, '\0'));
}

TEST_F(FileCalls, BadHandlesFailWithInvalidHandle) {
  for (platform::FileHandle h : {platform::FileHandle(), platform::FileHandle::Invalid()}) {
    unsigned char byte = 0;
    EXPECT_EQ(platform::ReadAt(h, 0, &byte, 1).Error(), platform::kErrorInvalidHandle);
    EXPECT_EQ(platform::WriteAt(h, 0, &byte, 1).Error(), platform::kErrorInvalidHandle);
    EXPECT_EQ(platform::FileSize(h).Error(), platform::kErrorInvalidHandle);
    EXPECT_EQ(platform::SetFileSize(h, 0).Error(), platform::kErrorInvalidHandle);
    EXPECT_EQ(platform::FlushFile(h).Error(), platform::kErrorInvalidHandle);
    EXPECT_EQ(platform::CloseFile(h).Error(), platform::kErrorInvalidHandle);
  }
}

TEST_F(FileCalls, ReadOnlyHandleRefusesWrites) {
  WriteFileBytes(temp.NativeOf("f.bin"), "ab");
  const auto opened = Open("f.bin", platform::kOpenExisting, platform::kGenericRead);
  ASSERT_TRUE(opened);
  const unsigned char byte = 0;
  EXPECT_EQ(platform::WriteAt(opened->handle, 0, &byte, 1).Error(), platform::kErrorAccessDenied);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
  EXPECT_EQ(ReadFileBytes(temp.NativeOf("f.bin")), "ab");
}

TEST_F(FileCalls, ReadOnlyHandleRefusesToChangeTheSize) {
  WriteFileBytes(temp.NativeOf("f.bin"), "ab");
  const auto opened = Open("f.bin", platform::kOpenExisting, platform::kGenericRead);
  ASSERT_TRUE(opened);
  EXPECT_EQ(platform::SetFileSize(opened->handle, 0).Error(), platform::kErrorAccessDenied);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
}

TEST_F(FileCalls, ReadOnlyOpensThatShareReadingCoexistAndAnExclusiveOneDoesNot) {
  WriteFileBytes(temp.NativeOf("f.bin"), "a");
  const auto a = Open("f.bin", platform::kOpenExisting, platform::kGenericRead);
  const auto b = Open("f.bin", platform::kOpenExisting, platform::kGenericRead);
  ASSERT_TRUE(a);
  ASSERT_TRUE(b);
  EXPECT_EQ(Open("f.bin", platform::kOpenExisting, platform::kGenericRead, 0).Error(),
            platform::kErrorSharingViolation);
  EXPECT_TRUE(platform::CloseFile(a->handle));
  EXPECT_TRUE(platform::CloseFile(b->handle));
  const auto solo = Open("f.bin", platform::kOpenExisting, platform::kGenericRead, 0);
  ASSERT_TRUE(solo);
  EXPECT_EQ(Open("f.bin", platform::kOpenExisting, platform::kGenericRead).Error(),
            platform::kErrorSharingViolation);
  EXPECT_TRUE(platform::CloseFile(solo->handle));
}

TEST_F(FileCalls, TwoHandlesReadTheirOwnPositions) {
  WriteFileBytes(temp.NativeOf("f.bin"), std::string("\0\1\2\3\4\5", 6));
  const auto a = Open("f.bin", platform::kOpenExisting, platform::kGenericRead);
  const auto b = Open("f.bin", platform::kOpenExisting, platform::kGenericRead);
  ASSERT_TRUE(a);
  ASSERT_TRUE(b);
  unsigned char fromA = 0;
  unsigned char fromB = 0;
  EXPECT_EQ(*platform::ReadAt(a->handle, 4, &fromA, 1), 1u);
  EXPECT_EQ(*platform::ReadAt(b->handle, 1, &fromB, 1), 1u);
  EXPECT_EQ(fromA, 4);
  EXPECT_EQ(fromB, 1);
  EXPECT_TRUE(platform::CloseFile(a->handle));
  EXPECT_TRUE(platform::CloseFile(b->handle));
}

TEST_F(FileCalls, RemoveFileAndItsFailures) {
  WriteFileBytes(temp.NativeOf("f.bin"), "a");
  EXPECT_TRUE(platform::RemoveFile(temp.Lib("f.bin")));
  EXPECT_FALSE(Exists(temp.NativeOf("f.bin")));
  EXPECT_EQ(platform::RemoveFile(temp.Lib("f.bin")).Error(), platform::kErrorFileNotFound);
  EXPECT_EQ(platform::RemoveFile(temp.Lib("none\\f.bin")).Error(), platform::kErrorPathNotFound);
  EXPECT_EQ(platform::RemoveFile(temp.Lib()).Error(), platform::kErrorAccessDenied);
}

std::uint32_t FullDisk(platform::FileHandle, std::uint32_t) { return platform::kErrorDiskFull; }

TEST_F(FileCalls, WriteFaultSeamFailsWritesWithItsCodeAndWritesNothing) {
  const auto opened = Open("f.bin", platform::kCreateAlways);
  ASSERT_TRUE(opened);
  const unsigned char byte = 1;
  platform::SetWriteFaultForTesting(FullDisk);
  const auto failed = platform::WriteAt(opened->handle, 0, &byte, 1);
  platform::SetWriteFaultForTesting(nullptr);
  EXPECT_EQ(failed.Error(), platform::kErrorDiskFull);
  EXPECT_EQ(*platform::FileSize(opened->handle), 0u);
  EXPECT_EQ(*platform::WriteAt(opened->handle, 0, &byte, 1), 1u);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
}

TEST_F(FileCalls, LongPathHintOpensAnAbsolutePath) {
  WriteFileBytes(temp.NativeOf("f.bin"), "xyz");
  const auto opened = platform::OpenFile(
      temp.Lib("f.bin"), platform::kGenericRead, platform::kFileShareRead, platform::kOpenExisting,
      platform::kFileFlagSequentialScan | platform::kOpenLongPath);
  ASSERT_TRUE(opened);
  EXPECT_EQ(opened->size, 3u);
  EXPECT_TRUE(platform::CloseFile(opened->handle));
}

}  // namespace
