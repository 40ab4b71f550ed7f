// Sharing: library ports share reading and never writing, between ports of one
// process and across processes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/child_process.h"
#include "platform/error.h"
#include "platform/file.h"
#include "streams/stream_test_support.h"
#include "tovfoundation/streams.h"

using Halyard::CFilePort;
using Halyard::CPort;
using tovtest::Bytes;
using tovtest::TempTree;

namespace {

// Runs the probe program and returns its exit status (-1 if it did not run).
int RunProbe(const std::string& mode, const std::string& path) {
  return tovtest::WaitProcess(tovtest::StartProcess(TOV_SHARE_PROBE, {mode, path}));
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
  void SetUp() override { tovtest::WriteBytes(dir.NativeOf("f.bin"), Bytes{1, 2, 3}); }
  TempTree dir;
};

}  // namespace

TEST_F(SharingTest, AnotherProcessCanReadWhileAPortHoldsTheFileInAnyMode) {
  for (const ShareRow& row : kModes) {
    SCOPED_TRACE(row.name);
    tovtest::WriteBytes(dir.NativeOf("f.bin"), Bytes{1, 2, 3});
    auto port = CPort::FilePort(dir.Lib("f.bin").c_str(), row.mode);
    ASSERT_TRUE(port);
    EXPECT_EQ(RunProbe("plain-read", dir.NativeOf("f.bin")), 0);
  }
}

TEST_F(SharingTest, AnotherProcessCannotOpenForWritingWhileAPortHoldsTheFile) {
  for (const ShareRow& row : kModes) {
    SCOPED_TRACE(row.name);
    auto port = CPort::FilePort(dir.Lib("f.bin").c_str(), row.mode);
    ASSERT_TRUE(port);
    EXPECT_EQ(RunProbe("port-write", dir.NativeOf("f.bin")), 1);
  }
  // Once the port is gone, the other process may write.
  EXPECT_EQ(RunProbe("port-write", dir.NativeOf("f.bin")), 0);
}

TEST_F(SharingTest, AnotherProcessCanReadThroughAPortOnlyWhileNoWriterHoldsTheFile) {
  {
    auto reader = CPort::FilePort(dir.Lib("f.bin").c_str(), Halyard::kAccessRead);
    ASSERT_TRUE(reader);
    EXPECT_EQ(RunProbe("port-read", dir.NativeOf("f.bin")), 0);
  }
  auto writer = CPort::FilePort(dir.Lib("f.bin").c_str(), Halyard::kAccessReadWrite);
  ASSERT_TRUE(writer);
  EXPECT_EQ(RunProbe("port-read", dir.NativeOf("f.bin")), 1);
}

TEST_F(SharingTest, TwoReadOnlyPortsCoexist) {
  auto first = CPort::FilePort(dir.Lib("f.bin").c_str(), Halyard::kAccessRead);
  auto second = CPort::FilePort(dir.Lib("f.bin").c_str(), Halyard::kAccessRead);
  EXPECT_TRUE(first);
  EXPECT_TRUE(second);
}

TEST_F(SharingTest, ReadOnlyPortCannotOpenAFileAWriterHolds) {
  auto writer = CPort::FilePort(dir.Lib("f.bin").c_str(), Halyard::kAccessReadWrite);
  ASSERT_TRUE(writer);
  CFilePort reader(Halyard::kAccessRead, 0);
  EXPECT_EQ(reader.Open(dir.Lib("f.bin").c_str()), TOV::kErrOpenFailed);
  EXPECT_EQ(tovimpl::platform::GetLastError(), tovimpl::platform::kErrorSharingViolation);
}

TEST_F(SharingTest, WriterCannotOpenAFileAReaderHoldsAndDoesNotTruncateIt) {
  auto reader = CPort::FilePort(dir.Lib("f.bin").c_str(), Halyard::kAccessRead);
  ASSERT_TRUE(reader);
  CFilePort writer(Halyard::kAccessWrite, 0);
  EXPECT_EQ(writer.Open(dir.Lib("f.bin").c_str()), TOV::kErrOpenFailed);
  EXPECT_EQ(tovimpl::platform::GetLastError(), tovimpl::platform::kErrorSharingViolation);
  EXPECT_EQ(tovtest::ReadBytes(dir.NativeOf("f.bin")), (Bytes{1, 2, 3}));
}

TEST_F(SharingTest, TwoWritersExcludeEachOther) {
  auto first = CPort::FilePort(dir.Lib("f.bin").c_str(), Halyard::kAccessReadWrite);
  ASSERT_TRUE(first);
  EXPECT_FALSE(CPort::FilePort(dir.Lib("f.bin").c_str(), Halyard::kAccessWrite));
  EXPECT_FALSE(Halyard::CPortEx::FilePort(dir.Lib("f.bin").c_str(), Halyard::kAccessReadWrite));
}

TEST_F(SharingTest, ClosingAPortReleasesTheFile) {
  CFilePort writer(Halyard::kAccessReadWrite, 0);
  ASSERT_EQ(writer.Open(dir.Lib("f.bin").c_str()), 0u);
  EXPECT_FALSE(CPort::FilePort(dir.Lib("f.bin").c_str(), Halyard::kAccessRead));
  writer.Close();
  EXPECT_TRUE(CPort::FilePort(dir.Lib("f.bin").c_str(), Halyard::kAccessRead));
}

TEST_F(SharingTest, AttributeOnlyOpensTakeNoLock) {
  auto writer = CPort::FilePort(dir.Lib("f.bin").c_str(), Halyard::kAccessReadWrite);
  ASSERT_TRUE(writer);
  namespace platform = tovimpl::platform;
  const platform::Result<platform::OpenedFile> probe =
      platform::OpenFile(dir.Lib("f.bin"), 0, 0, platform::kOpenExisting, 0);
  ASSERT_TRUE(probe);
  EXPECT_EQ(probe->size, 3u);
  EXPECT_EQ(platform::FileSize(probe->handle).ValueOr(7), 3u);
  EXPECT_TRUE(platform::CloseFile(probe->handle));
}
