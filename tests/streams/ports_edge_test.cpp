// Ports: assignment of the 64-bit file port and the RAM port.
#include <gtest/gtest.h>

#include <cstdint>

#include "streams/stream_test_support.h"
#include "tovfoundation/streams.h"

using Halyard::CFilePortEx;
using Halyard::CStaticRamFilePort;
using tovtest::Bytes;
using tovtest::TempTree;

namespace {

class PortAssignTest : public ::testing::Test {
 protected:
  TempTree dir{"ports-edge"};
};

TEST_F(PortAssignTest, AssignedSixtyFourBitPortSharesTheHandleModeAndPath) {
  tovtest::WriteBytes(dir.NativeOf("a.bin"), Bytes{1, 2, 3});
  tovtest::WriteBytes(dir.NativeOf("b.bin"), Bytes{4, 5, 6, 7, 8});
  CFilePortEx source(Halyard::kAccessRead, 0);
  ASSERT_EQ(source.Open(dir.Lib("b.bin").c_str()), 0u);
  CFilePortEx target(Halyard::kAccessReadWrite, 0);
  ASSERT_EQ(target.Open(dir.Lib("a.bin").c_str()), 0u);
  ASSERT_EQ(target.Close(), 0u);
  target = source;
  EXPECT_EQ(target.Mode(), Halyard::kAccessRead);
  EXPECT_EQ(target.Path(), source.Path());
  EXPECT_EQ(target.Size(), 5u);
  unsigned char byte = 0;
  EXPECT_EQ(target.Read(4, 1, &byte), 0u);
  EXPECT_EQ(byte, 8);
  // One handle: closing it through the copy closes it for the source too.
  EXPECT_EQ(target.Close(), 0u);
  EXPECT_EQ(source.Size(), 0u);
  EXPECT_EQ(source.Read(0, 1, &byte), TOV::kErrReadFailed);
}

TEST_F(PortAssignTest, SelfAssignedSixtyFourBitPortKeepsItsFile) {
  tovtest::WriteBytes(dir.NativeOf("s.bin"), Bytes{9, 8, 7});
  CFilePortEx port(Halyard::kAccessRead, 0);
  ASSERT_EQ(port.Open(dir.Lib("s.bin").c_str()), 0u);
  CFilePortEx& same = port;
  port = same;
  EXPECT_EQ(port.Size(), 3u);
  unsigned char byte = 0;
  EXPECT_EQ(port.Read(0, 1, &byte), 0u);
  EXPECT_EQ(byte, 9);
}

TEST_F(PortAssignTest, AssignedSixtyFourBitPortReleasesTheFileItHeld) {
  tovtest::WriteBytes(dir.NativeOf("a.bin"), Bytes{1, 2, 3});
  CFilePortEx empty(Halyard::kAccessWrite, 0);
  CFilePortEx port(Halyard::kAccessRead, 0);
  ASSERT_EQ(port.Open(dir.Lib("a.bin").c_str()), 0u);
  ASSERT_EQ(port.Close(), 0u);
  port = empty;
  EXPECT_EQ(port.Path(), nullptr);
  EXPECT_EQ(port.Mode(), Halyard::kAccessWrite);
  EXPECT_EQ(port.Size(), 0u);
}

TEST(RamPortAssign, AssignedRamPortUsesTheOtherBlock) {
  unsigned char first[4] = {1, 2, 3, 4};
  unsigned char second[2] = {0xAA, 0xBB};
  CStaticRamFilePort port(first, 4, Halyard::kAccessReadWrite, 0);
  const CStaticRamFilePort other(second, 2, Halyard::kAccessRead, 0);
  port = other;
  EXPECT_EQ(port.Size(), 2u);
  EXPECT_EQ(port.Mode(), Halyard::kAccessRead);
  unsigned char byte = 0;
  EXPECT_EQ(port.Read(1, 1, &byte), 0u);
  EXPECT_EQ(byte, 0xBB);
  EXPECT_EQ(port.Write(0, 1, &byte), 0u);
  EXPECT_EQ(second[0], 0xBB);
  EXPECT_EQ(first[0], 1);
}

}  // namespace
