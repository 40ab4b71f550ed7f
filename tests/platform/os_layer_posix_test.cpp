// The OS layer's shared rules: errno ⇒ Windows error codes, path spelling,
// environment, and the slot the calls with results leave alone.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <thread>

#include "basalt/strings.h"
#include "platform/cfile.h"
#include "platform/error.h"
#include "platform/fs.h"
#include "platform/path.h"
#include "platform/posix/posix_support.h"
#include "platform/system.h"
#include "platform/text.h"

using namespace basalt::literals;
namespace platform = tovimpl::platform;

namespace {

TEST(OsLayerErrors, EnoentSaysFileNotFoundWhenTheParentExists) {
  char folder[] = "/tmp/tov-oslayer-XXXXXX";
  ASSERT_NE(::mkdtemp(folder), nullptr);
  const std::string missingFile = std::string(folder) + "/missing.txt";
  const std::string missingParent = std::string(folder) + "/nope/missing.txt";
  EXPECT_EQ(platform::posix::MapErrno(ENOENT, platform::ExistsAs::kAlreadyExists, missingFile),
            platform::kErrorFileNotFound);
  EXPECT_EQ(platform::posix::MapErrno(ENOENT, platform::ExistsAs::kAlreadyExists, missingParent),
            platform::kErrorPathNotFound);
  ::rmdir(folder);
}

TEST(OsLayerErrors, EexistDependsOnTheOperation) {
  EXPECT_EQ(platform::posix::MapErrno(EEXIST, platform::ExistsAs::kFileExists), 80u);
  EXPECT_EQ(platform::posix::MapErrno(EEXIST, platform::ExistsAs::kAlreadyExists), 183u);
}

TEST(OsLayerErrors, TableRows) {
  struct Row {
    int error;
    std::uint32_t expected;
  } rows[] = {
      {ENOTDIR, 3},  {EACCES, 5},         {EPERM, 5},        {EISDIR, 5},
      {ENOSPC, 112}, {ENAMETOOLONG, 206}, {EWOULDBLOCK, 32}, {EBADF, 6},
      {EINVAL, 87},  {ENOTEMPTY, 145},    {EXDEV, 17},       {ENOMEM, 8},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.error);
    EXPECT_EQ(platform::posix::MapErrno(row.error), row.expected);
  }
}

TEST(OsLayerErrors, EveryOtherRowOfTheTable) {
  struct Row {
    int error;
    std::uint32_t expected;
  } rows[] = {
      {EROFS, 5},    {EDQUOT, 112},    {EFBIG, 223},      {EBUSY, 170},  {ETXTBSY, 170},
      {EMFILE, 4},   {ENFILE, 4},      {EPIPE, 109},      {ELOOP, 1921}, {EMLINK, 1142},
      {ENOSYS, 50},  {EOPNOTSUPP, 50}, {ETIMEDOUT, 1460}, {EIO, 31},     {ESPIPE, 31},
      {EEXIST, 183}, {ENOENT, 2},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.error);
    EXPECT_EQ(platform::posix::MapErrno(row.error), row.expected);
  }
}

TEST(OsLayerErrors, EnoentLooksAtTheParentAsTheSystemWouldFindIt) {
  char folder[] = "/tmp/tov-oslayer-XXXXXX";
  ASSERT_NE(::mkdtemp(folder), nullptr);
  const std::string base = folder;
  const std::string file = base + "/file";
  FILE* made = ::fopen(file.c_str(), "w");
  ASSERT_NE(made, nullptr);
  ::fclose(made);
  const auto map = [](const std::string& path) {
    return platform::posix::MapErrno(ENOENT, platform::ExistsAs::kAlreadyExists, path);
  };
  // Trailing separators belong to the name, not to its parent.
  EXPECT_EQ(map(base + "/missing///"), platform::kErrorFileNotFound);
  // A parent that is a file is no folder.
  EXPECT_EQ(map(file + "/missing"), platform::kErrorPathNotFound);
  // Directly below the root, and names without any separator (the current folder).
  EXPECT_EQ(map("/tov-missing-name"), platform::kErrorFileNotFound);
  EXPECT_EQ(map("missing-here"), platform::kErrorFileNotFound);
  EXPECT_EQ(map("///"), platform::kErrorFileNotFound);
  ::unlink(file.c_str());
  ::rmdir(folder);
}

TEST(OsLayerErrors, AFailureNeverMapsToZero) {
  for (int error = 1; error < 200; ++error) {
    SCOPED_TRACE(error);
    EXPECT_NE(platform::posix::MapErrno(error), 0u);
  }
}

TEST(OsLayerErrors, LastErrorIsPerThread) {
  platform::SetLastError(5);
  EXPECT_EQ(platform::GetLastError(), 5u);
  std::uint32_t other = 0;
  std::thread([&] { other = platform::GetLastError(); }).join();
  EXPECT_EQ(other, 0u);
  EXPECT_EQ(platform::GetLastError(), 5u);
  platform::SetLastError(0);
}

TEST(OsLayerPaths, NativeSpellingUsesSlashesAndDropsTheLongPathPrefix) {
  EXPECT_EQ(platform::ToNativeSpelling(u"\\tmp\\a\\b.txt"_u16), u"/tmp/a/b.txt"_u16);
  EXPECT_EQ(platform::ToNativeSpelling(u"\\\\?\\C:\\x"_u16), u"C:/x"_u16);
  EXPECT_EQ(platform::ToNativeSpelling(u"\\\\?\\UNC\\server\\share\\x"_u16),
            u"//server/share/x"_u16);
  EXPECT_EQ(platform::ToNativeSpelling(u"relative/mixed\\path"_u16), u"relative/mixed/path"_u16);
  EXPECT_EQ(platform::ToNativeSpelling(u""_u16), u""_u16);
}

TEST(OsLayerPaths, PathsFromTheSystemComeBackWithBackslashes) {
  EXPECT_EQ(platform::FromNativeSpelling(u"/opt/app-1.2/bin/tovtool"_u16),
            u"\\opt\\app-1.2\\bin\\tovtool"_u16);
  EXPECT_EQ(platform::posix::NativePath(u"\\tmp\\Grüße"_u16),
            "/tmp/Gr\xC3\xBC\xC3\x9F"
            "e");
  EXPECT_EQ(platform::posix::LibraryPath("/tmp/Gr\xC3\xBC\xC3\x9F"
                                         "e"),
            u"\\tmp\\Grüße"_u16);
}

TEST(OsLayerEnvironment, ReadsSetVariablesAndReportsMissingOnes) {
  ::setenv("TOV_OSLAYER_TEST", "wert\xC3\xA4", 1);
  const auto value = platform::GetEnvVar(u"TOV_OSLAYER_TEST"_u16);
  ASSERT_TRUE(value);
  EXPECT_EQ(*value, u"wertä"_u16);
  ::setenv("TOV_OSLAYER_TEST", "", 1);
  const auto empty = platform::GetEnvVar(u"TOV_OSLAYER_TEST"_u16);
  ASSERT_TRUE(empty);
  EXPECT_TRUE(empty->empty());
  ::unsetenv("TOV_OSLAYER_TEST");
  EXPECT_EQ(platform::GetEnvVar(u"TOV_OSLAYER_TEST"_u16).Error(), platform::kErrorEnvVarNotFound);
}

// The calls whose results carry their code do not write the slot, so a code
// a caller left there survives their failures.
TEST(OsLayerErrors, FailuresCarriedInResultsLeaveTheSlotAlone) {
  ::unsetenv("TOV_OSLAYER_TEST");
  const UTF16String missing = u"\\tmp\\tov-oslayer-no-such-folder\\x"_u16;
  platform::SetLastError(platform::kErrorBusy);
  EXPECT_EQ(platform::GetEnvVar(u"TOV_OSLAYER_TEST"_u16).Error(), 203u);
  EXPECT_EQ(platform::OpenCFile(missing.c_str(), "rb").Error(), platform::kErrorPathNotFound);
  EXPECT_EQ(platform::RemoveCFile(missing.c_str()).Error(), platform::kErrorPathNotFound);
  EXPECT_EQ(platform::FormatSystemMessage(0xDEADBEEF, 0x400).Error(), 317u);
  EXPECT_EQ(
      platform::CopyFileContents(missing, missing + u"2"_u16, nullptr, nullptr, nullptr, false)
          .Error(),
      platform::kErrorPathNotFound);
  EXPECT_EQ(platform::GetLastError(), platform::kErrorBusy);
  platform::SetLastError(0);
}

TEST(OsLayerSystem, TickCountIsMonotonicMilliseconds) {
  const std::uint32_t before = platform::TickCountMs();
  ::usleep(20000);
  const std::uint32_t elapsed = platform::TickCountMs() - before;
  EXPECT_GE(elapsed, 19u);
  EXPECT_LT(elapsed, 2000u);
  EXPECT_EQ(platform::CurrentProcessId(), static_cast<std::uint32_t>(::getpid()));
}

}  // namespace
