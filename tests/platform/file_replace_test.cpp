// The OS layer's RenameFile: putting a finished file in place of another.
#include "platform/file_replace.h"

#include <gtest/gtest.h>

#include "platform/error.h"
#include "platform/platform_support.h"

namespace {

using platform_test::ReadFileBytes;
using platform_test::TempFolder;
using platform_test::WriteFileBytes;
using tovimpl::platform::kRenameReplaceExisting;
using tovimpl::platform::kRenameWriteThrough;
using tovimpl::platform::RenameFile;

TEST(RenameFile, ReplacesExistingTargetWhenAsked) {
  TempFolder temp;
  WriteFileBytes(temp.NativeOf("new"), "new");
  WriteFileBytes(temp.NativeOf("old"), "old");
  EXPECT_TRUE(
      RenameFile(temp.Lib("new"), temp.Lib("old"), kRenameReplaceExisting | kRenameWriteThrough));
  EXPECT_EQ(ReadFileBytes(temp.NativeOf("old")), "new");
  EXPECT_FALSE(platform_test::Exists(temp.NativeOf("new")));
}

TEST(RenameFile, ExistingTargetWithoutReplaceFailsWith183) {
  TempFolder temp;
  WriteFileBytes(temp.NativeOf("new"), "new");
  WriteFileBytes(temp.NativeOf("old"), "old");
  EXPECT_EQ(RenameFile(temp.Lib("new"), temp.Lib("old"), 0).Error(), 183u);
  EXPECT_EQ(ReadFileBytes(temp.NativeOf("old")), "old");
}

TEST(RenameFile, FolderTargetFailsWith5) {
  TempFolder temp;
  WriteFileBytes(temp.NativeOf("new"), "new");
  platform_test::MakeFolder(temp.NativeOf("dir"));
  EXPECT_EQ(RenameFile(temp.Lib("new"), temp.Lib("dir"), kRenameReplaceExisting).Error(), 5u);
}

TEST(RenameFile, MissingSourceFailsWith2) {
  TempFolder temp;
  EXPECT_EQ(RenameFile(temp.Lib("absent"), temp.Lib("target"), kRenameReplaceExisting).Error(), 2u);
}

TEST(RenameFile, MissingTargetFolderFailsWith3) {
  TempFolder temp;
  WriteFileBytes(temp.NativeOf("new"), "new");
  EXPECT_EQ(
      RenameFile(temp.Lib("new"), temp.Lib("no\\such\\target"), kRenameReplaceExisting).Error(),
      3u);
}

}  // namespace
