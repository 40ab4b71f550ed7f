// The OS layer's MoveFileEx: putting a finished file in place of another.
#include "platform/file_replace.h"

#include <gtest/gtest.h>

#include "foundation_support.h"
#include "platform/error.h"

namespace {

using foundation_test::ReadFileBytes;
using foundation_test::TempFolder;
using foundation_test::WriteFileBytes;
using tovimpl::platform::kMoveFileReplaceExisting;
using tovimpl::platform::kMoveFileWriteThrough;
using tovimpl::platform::MoveFileEx;

TEST(MoveFileEx, ReplacesExistingTargetWhenAsked) {
  TempFolder temp;
  WriteFileBytes(temp.NativeOf("new"), "new");
  WriteFileBytes(temp.NativeOf("old"), "old");
  EXPECT_TRUE(MoveFileEx(temp.Lib("new"), temp.Lib("old"),
                         kMoveFileReplaceExisting | kMoveFileWriteThrough));
  EXPECT_EQ(ReadFileBytes(temp.NativeOf("old")), "new");
  EXPECT_FALSE(foundation_test::Exists(temp.NativeOf("new")));
}

TEST(MoveFileEx, ExistingTargetWithoutReplaceFailsWith183) {
  TempFolder temp;
  WriteFileBytes(temp.NativeOf("new"), "new");
  WriteFileBytes(temp.NativeOf("old"), "old");
  EXPECT_FALSE(MoveFileEx(temp.Lib("new"), temp.Lib("old"), 0));
  EXPECT_EQ(tovimpl::platform::GetLastError(), 183u);
  EXPECT_EQ(ReadFileBytes(temp.NativeOf("old")), "old");
}

TEST(MoveFileEx, FolderTargetFailsWith5) {
  TempFolder temp;
  WriteFileBytes(temp.NativeOf("new"), "new");
  foundation_test::MakeFolder(temp.NativeOf("dir"));
  EXPECT_FALSE(MoveFileEx(temp.Lib("new"), temp.Lib("dir"), kMoveFileReplaceExisting));
  EXPECT_EQ(tovimpl::platform::GetLastError(), 5u);
}

TEST(MoveFileEx, MissingSourceFailsWith2) {
  TempFolder temp;
  EXPECT_FALSE(MoveFileEx(temp.Lib("absent"), temp.Lib("target"), kMoveFileReplaceExisting));
  EXPECT_EQ(tovimpl::platform::GetLastError(), 2u);
}

TEST(MoveFileEx, MissingTargetFolderFailsWith3) {
  TempFolder temp;
  WriteFileBytes(temp.NativeOf("new"), "new");
  EXPECT_FALSE(MoveFileEx(temp.Lib("new"), temp.Lib("no\\such\\target"), kMoveFileReplaceExisting));
  EXPECT_EQ(tovimpl::platform::GetLastError(), 3u);
}

}  // namespace
