// The runtime-library files of the OS layer, on every platform: opening by a
// UTF-16 or a narrow path and deleting carry the Windows code of a failure.
#include "platform/cfile.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "platform/error.h"
#include "platform/platform_support.h"

using namespace basalt::literals;
namespace platform = tovimpl::platform;
using platform_test::TempFolder;

namespace {

// The whole stream from its current position.
std::string ReadAll(std::FILE* file) {
  std::string bytes;
  char buffer[64];
  for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, file)) != 0;) {
    bytes.append(buffer, got);
  }
  return bytes;
}

TEST(CFileSeam, OpensAnExistingFileForReading) {
  TempFolder temp;
  platform_test::WriteFileBytes(temp.NativeOf("preset.txt"), "<Header>");
  const UTF16String path = temp.Lib("preset.txt");
  const platform::Result<std::FILE*> file = platform::OpenCFile(path.c_str(), "rb");
  ASSERT_TRUE(file);
  ASSERT_NE(*file, nullptr);
  EXPECT_EQ(ReadAll(*file), "<Header>");
  std::fclose(*file);
}

TEST(CFileSeam, WritingCreatesTheFile) {
  TempFolder temp;
  const UTF16String path = temp.Lib("new.bin");
  const platform::Result<std::FILE*> file = platform::OpenCFile(path.c_str(), "wb");
  ASSERT_TRUE(file);
  EXPECT_EQ(std::fwrite("\x01\x00\x02", 1, 3, *file), 3u);
  std::fclose(*file);
  EXPECT_EQ(platform_test::ReadFileBytes(temp.NativeOf("new.bin")), std::string("\x01\x00\x02", 3));
}

TEST(CFileSeam, MissingFileCarriesFileNotFound) {
  TempFolder temp;
  const UTF16String path = temp.Lib("missing.txt");
  const platform::Result<std::FILE*> file = platform::OpenCFile(path.c_str(), "rb");
  EXPECT_FALSE(file);
  EXPECT_EQ(file.Error(), platform::kErrorFileNotFound);
  EXPECT_EQ(*file, nullptr);
}

TEST(CFileSeam, MissingFolderCarriesPathNotFound) {
  TempFolder temp;
  const UTF16String path = temp.Lib("nowhere/new.bin");
  const platform::Result<std::FILE*> file = platform::OpenCFile(path.c_str(), "wb");
  EXPECT_FALSE(file);
  EXPECT_EQ(file.Error(), platform::kErrorPathNotFound);
}

TEST(CFileSeam, NullArgumentsCarryInvalidParameter) {
  const UTF16String path = u"x"_u16;
  EXPECT_EQ(platform::OpenCFile(nullptr, "rb").Error(), platform::kErrorInvalidParameter);
  EXPECT_EQ(platform::OpenCFile(path.c_str(), nullptr).Error(), platform::kErrorInvalidParameter);
  EXPECT_EQ(platform::OpenCFileA(nullptr, "rb").Error(), platform::kErrorInvalidParameter);
  EXPECT_EQ(platform::OpenCFileA("x", nullptr).Error(), platform::kErrorInvalidParameter);
  EXPECT_EQ(platform::RemoveCFile(nullptr).Error(), platform::kErrorInvalidParameter);
}

TEST(CFileSeam, NarrowPathOpensOrCarriesFileNotFound) {
  TempFolder temp;
  platform_test::WriteFileBytes(temp.NativeOf("narrow.txt"), "abc");
  // The temporary folder's path is plain ASCII on the test machines, the
  // same bytes in every system code page.
  const std::string path = platform_test::U8(temp.Lib("narrow.txt"));
  const platform::Result<std::FILE*> file = platform::OpenCFileA(path.c_str(), "rb");
  ASSERT_TRUE(file);
  EXPECT_EQ(ReadAll(*file), "abc");
  std::fclose(*file);

  const std::string missing = platform_test::U8(temp.Lib("missing.txt"));
  const platform::Result<std::FILE*> none = platform::OpenCFileA(missing.c_str(), "rb");
  EXPECT_FALSE(none);
  EXPECT_EQ(none.Error(), platform::kErrorFileNotFound);
}

TEST(CFileSeam, RemoveDeletesOrCarriesFileNotFound) {
  TempFolder temp;
  platform_test::WriteFileBytes(temp.NativeOf("gone.tmp"), "x");
  const UTF16String path = temp.Lib("gone.tmp");
  const platform::Status removed = platform::RemoveCFile(path.c_str());
  EXPECT_TRUE(removed);
  EXPECT_EQ(removed.Error(), 0u);
  EXPECT_FALSE(platform_test::Exists(temp.NativeOf("gone.tmp")));

  const platform::Status again = platform::RemoveCFile(path.c_str());
  EXPECT_FALSE(again);
  EXPECT_EQ(again.Error(), platform::kErrorFileNotFound);
}

}  // namespace
