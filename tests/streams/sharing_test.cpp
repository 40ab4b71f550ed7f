// Sharing: library ports share reading and never writing, between ports of one
// process and across processes.
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>

#include <string>
#include <vector>

#include "platform/error.h"
#include "platform/file.h"
#include "streams/stream_test_support.h"
#include "tovfoundation/streams.h"

extern char** environ;

using Halyard::CFilePort;
using Halyard::CPort;
using streamtest::Bytes;
using streamtest::TempDir;

namespace {

// Runs the probe program and returns its exit status (-1 if it did not exit).
int RunProbe(const std::string& mode, const std::string& path) {
  std::vector<std::string> args = {TOV_SHARE_PROBE, mode, path};
  std::vector<char*> argv;
  for (auto& arg : args) argv.push_back(arg.data());
  argv.push_back(nullptr);
  pid_t child = 0;
  if (::posix_spawn(&child, TOV_SHARE_PROBE, nullptr, nullptr, argv.data(), environ) != 0) {
    return -1;
  }
  int status = 0;
  if (::waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

struct ShareRow {
  const char* name;
  Halyard::AccessMode mode;
};

constexpr ShareRow kModes[] = {
    {"read", Halyard::kAccessRead},
    {"write", Halyard::kAccessWrite},
    {"readwrite", Halyard::kAccessReadWrite},
};

class SharingTest : public ::testing::Test {
 protected:
  void SetUp() override { streamtest::WriteAll(dir.Native("f.bin"), Bytes{1, 2, 3}); }
  TempDir dir;
};

}  // namespace

TEST_F(SharingTest, AnotherProcessCanReadWhileAPortHoldsTheFileInAnyMode) {
  for (const ShareRow& row : kModes) {
    SCOPED_TRACE(row.name);
    streamtest::WriteAll(dir.Native("f.bin"), Bytes{1, 2, 3});
    auto port = CPort::FilePort(dir.Library("f.bin").c_str(), row.mode);
    ASSERT_TRUE(port);
    EXPECT_EQ(RunProbe("plain-read", dir.Native("f.bin")), 0);
  }
}

TEST_F(SharingTest, AnotherProcessCannotOpenForWritingWhileAPortHoldsTheFile) {
  for (const ShareRow& row : kModes) {
    SCOPED_TRACE(row.name);
    auto port = CPort::FilePort(dir.Library("f.bin").c_str(), row.mode);
    ASSERT_TRUE(port);
    EXPECT_EQ(RunProbe("port-write", dir.Native("f.bin")), 1);
  }
  // Once the port is gone, the other process may write.
  EXPECT_EQ(RunProbe("port-write", dir.Native("f.bin")), 0);
}

TEST_F(SharingTest, AnotherProcessCanReadThroughAPortOnlyWhileNoWriterHoldsTheFile) {
  {
    auto reader = CPort::FilePort(dir.Library("f.bin").c_str(), Halyard::kAccessRead);
    ASSERT_TRUE(reader);
    EXPECT_EQ(RunProbe("port-read", dir.Native("f.bin")), 0);
  }
  auto writer = CPort::FilePort(dir.Library("f.bin").c_str(), Halyard::kAccessReadWrite);
  ASSERT_TRUE(writer);
  EXPECT_EQ(RunProbe("port-read", dir.Native("f.bin")), 1);
}

TEST_F(SharingTest, TwoReadOnlyPortsCoexist) {
  auto first = CPort::FilePort(dir.Library("f.bin").c_str(), Halyard::kAccessRead);
  auto second = CPort::FilePort(dir.Library("f.bin").c_str(), Halyard::kAccessRead);
  EXPECT_TRUE(first);
  EXPECT_TRUE(second);
}

TEST_F(SharingTest, ReadOnlyPortCannotOpenAFileAWriterHolds) {
  auto writer = CPort::FilePort(dir.Library("f.bin").c_str(), Halyard::kAccessReadWrite);
  ASSERT_TRUE(writer);
  CFilePort reader(Halyard::kAccessRead, 0);
  EXPECT_EQ(reader.Open(dir.Library("f.bin").c_str()), TOV::kErrOpenFailed);
  EXPECT_EQ(tovimpl::platform::GetLastError(), tovimpl::platform::kErrorSharingViolation);
}

TEST_F(SharingTest, WriterCannotOpenAFileAReaderHoldsAndDoesNotTruncateIt) {
  auto reader = CPort::FilePort(dir.Library("f.bin").c_str(), Halyard::kAccessRead);
  ASSERT_TRUE(reader);
  CFilePort writer(Halyard::kAccessWrite, 0);
  EXPECT_EQ(writer.Open(dir.Library("f.bin").c_str()), TOV::kErrOpenFailed);
  EXPECT_EQ(tovimpl::platform::GetLastError(), tovimpl::platform::kErrorSharingViolation);
  EXPECT_EQ(streamtest::ReadAll(dir.Native("f.bin")), (Bytes{1, 2, 3}));
}

TEST_F(SharingTest, TwoWritersExcludeEachOther) {
  auto first = CPort::FilePort(dir.Library("f.bin").c_str(), Halyard::kAccessReadWrite);
  ASSERT_TRUE(first);
  EXPECT_FALSE(CPort::FilePort(dir.Library("f.bin").c_str(), Halyard::kAccessWrite));
  EXPECT_FALSE(Halyard::CPortEx::FilePort(dir.Library("f.bin").c_str(), Halyard::kAccessReadWrite));
}

TEST_F(SharingTest, ClosingAPortReleasesTheFile) {
  CFilePort writer(Halyard::kAccessReadWrite, 0);
  ASSERT_EQ(writer.Open(dir.Library("f.bin").c_str()), 0u);
  EXPECT_FALSE(CPort::FilePort(dir.Library("f.bin").c_str(), Halyard::kAccessRead));
  writer.Close();
  EXPECT_TRUE(CPort::FilePort(dir.Library("f.bin").c_str(), Halyard::kAccessRead));
}

TEST_F(SharingTest, AttributeOnlyOpensTakeNoLock) {
  auto writer = CPort::FilePort(dir.Library("f.bin").c_str(), Halyard::kAccessReadWrite);
  ASSERT_TRUE(writer);
  namespace platform = tovimpl::platform;
  const platform::Result<platform::OpenedFile> probe =
      platform::OpenFile(dir.Library("f.bin"), 0, 0, platform::kOpenExisting, 0);
  ASSERT_TRUE(probe);
  EXPECT_EQ(probe->size, 3u);
  EXPECT_EQ(platform::FileSize(probe->handle).ValueOr(7), 3u);
  EXPECT_TRUE(platform::CloseFile(probe->handle));
}
