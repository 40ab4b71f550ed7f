// Ports: the RAM port, the file ports, the factories and CVAutoPtr.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <cstring>
#include <string>

#include "platform/error.h"
#include "streams/stream_test_support.h"
#include "tovfoundation/streams.h"

using Halyard::CFilePort;
using Halyard::CFilePortEx;
using Halyard::CPort;
using Halyard::CPortEx;
using Halyard::CStaticRamFilePort;
using Halyard::CVAutoPtr;
using tovtest::Bytes;
using tovtest::TempTree;

namespace {

const Bytes kTen = {0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19};

// Counts destructions of a port.
class CountedPort : public CStaticRamFilePort {
 public:
  CountedPort(void* base, std::uint32_t size, int* deaths)
      : CStaticRamFilePort(base, size, Halyard::kAccessRead, 0), mDeaths(deaths) {}
  ~CountedPort() override { ++*mDeaths; }

 private:
  int* mDeaths;
};

}  // namespace

// --- RAM port ----------------------------------------------------------------

TEST(RamPort, ReadOnlyRamPortReportsSizeAndReadMode) {
  unsigned char data[16] = {};
  CVAutoPtr<CPort> port = CPort::ReadOnlyRamPort(data, 16);
  ASSERT_TRUE(port);
  EXPECT_TRUE(port.Owns());
  EXPECT_EQ(port->Size(), 16u);
  EXPECT_EQ(port->Mode(), Halyard::kAccessRead);
  EXPECT_EQ(port->OwnsResource(), 0);
}

TEST(RamPort, SetSizeDoesNothingAndReturnsZero) {
  unsigned char data[16] = {};
  auto port = CPort::ReadOnlyRamPort(data, 16);
  EXPECT_EQ(port->Size(100), 0u);
  EXPECT_EQ(port->Size(), 16u);
}

TEST(RamPort, StaticRamPortIsReadWrite) {
  unsigned char data[4] = {};
  auto port = CPort::StaticRamPort(data, 4);
  ASSERT_TRUE(port);
  EXPECT_EQ(port->Mode(), Halyard::kAccessReadWrite);
  EXPECT_EQ(port->Size(), 4u);
}

TEST(RamPort, ReadCopiesFromThePosition) {
  Bytes data = kTen;
  CStaticRamFilePort port(data.data(), 10, Halyard::kAccessRead, 0);
  unsigned char out[3] = {};
  EXPECT_EQ(port.Read(4, 3, out), 0u);
  EXPECT_EQ(out[0], 0x14);
  EXPECT_EQ(out[1], 0x15);
  EXPECT_EQ(out[2], 0x16);
}

TEST(RamPort, ReadOnlyPortAcceptsWrites) {
  Bytes data = kTen;
  auto port = CPort::ReadOnlyRamPort(data.data(), 10);
  const unsigned char in[2] = {0xAA, 0xBB};
  EXPECT_EQ(port->Write(8, 2, in), 0u);
  EXPECT_EQ(data[8], 0xAA);
  EXPECT_EQ(data[9], 0xBB);
}

TEST(RamPort, OverlappingTransfersAreMoves) {
  Bytes data = kTen;
  CStaticRamFilePort port(data.data(), 10, Halyard::kAccessReadWrite, 0);
  EXPECT_EQ(port.Write(2, 6, data.data()), 0u);
  const Bytes expected = {0x10, 0x11, 0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x18, 0x19};
  EXPECT_EQ(data, expected);
}

TEST(RamPort, CloseFlushAndSequentialUseTheBase) {
  unsigned char data[4] = {1, 2, 3, 4};
  CStaticRamFilePort port(data, 4, Halyard::kAccessRead, 1);
  EXPECT_EQ(port.OwnsResource(), 1);
  EXPECT_EQ(port.Close(), 0u);
  EXPECT_EQ(port.Flush(), 0u);
  EXPECT_FALSE(port.IsSequential());
  std::int32_t got = 0;
  unsigned char out[2] = {};
  port.ReadSequential(1, 2, got, out);
  EXPECT_EQ(got, 2);
  EXPECT_EQ(out[0], 2);
  EXPECT_EQ(out[1], 3);
}

TEST(RamPort, CopiesShareTheBlock) {
  Bytes data = kTen;
  CStaticRamFilePort port(data.data(), 10, Halyard::kAccessReadWrite, 0);
  CStaticRamFilePort copy(port);
  const unsigned char in = 0x77;
  copy.Write(0, 1, &in);
  unsigned char out = 0;
  port.Read(0, 1, &out);
  EXPECT_EQ(out, 0x77);
  EXPECT_EQ(copy.Size(), 10u);
}

TEST(Port, ReadSequentialReportsCountEvenWhenTheReadFailed) {
  tovtest::ScriptedPort port(kTen);
  port.script.failReadsFrom = 0;
  port.script.readStatus = TOV::kErrReadFailed;
  std::int32_t got = -1;
  unsigned char out[5] = {};
  port.CPort::ReadSequential(3, 5, got, out);
  EXPECT_EQ(got, 5);
  ASSERT_EQ(port.script.calls.size(), 1u);
  EXPECT_EQ(port.script.calls[0], (tovtest::PortCall{'r', 3, 5}));
}

TEST(PortEx, ReadSequentialSignExtendsTheCount) {
  tovtest::ScriptedPortEx port(kTen);
  port.script.failReadsFrom = 0;
  port.script.readStatus = TOV::kErrReadFailed;
  std::uint64_t got = 0;
  unsigned char out[4] = {};
  port.ReadSequential(0, 4, got, out);
  EXPECT_EQ(got, 4u);
  port.ReadSequential(0, -1, got, out);
  EXPECT_EQ(got, 0xFFFFFFFFFFFFFFFFull);
  EXPECT_EQ(port.Flush(), 0u);
  EXPECT_FALSE(port.IsSequential());
}

// --- CVAutoPtr ---------------------------------------------------------------

TEST(VAutoPtr, DefaultIsEmptyAndNotOwning) {
  CVAutoPtr<CPort> empty;
  EXPECT_FALSE(empty);
  EXPECT_FALSE(empty.Owns());
  EXPECT_EQ(empty.Get(), nullptr);
}

TEST(VAutoPtr, DestroysAnOwnedPort) {
  int deaths = 0;
  unsigned char data[1] = {};
  { CVAutoPtr<CPort> owner(new CountedPort(data, 1, &deaths), true); }
  EXPECT_EQ(deaths, 1);
}

TEST(VAutoPtr, LeavesAPortItDoesNotOwn) {
  int deaths = 0;
  unsigned char data[1] = {};
  CountedPort port(data, 1, &deaths);
  { CVAutoPtr<CPort> viewer(&port, false); }
  EXPECT_EQ(deaths, 0);
}

TEST(VAutoPtr, MoveTransfersOwnership) {
  int deaths = 0;
  unsigned char data[1] = {};
  CVAutoPtr<CPort> first(new CountedPort(data, 1, &deaths), true);
  CPort* raw = first.Get();
  CVAutoPtr<CPort> second(std::move(first));
  EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move): moved-from state is specified
  EXPECT_FALSE(first.Owns());
  EXPECT_EQ(second.Get(), raw);
  CVAutoPtr<CPort> third;
  third = std::move(second);
  EXPECT_EQ(deaths, 0);
  third.Reset();
  EXPECT_EQ(deaths, 1);
  EXPECT_FALSE(third);
}

TEST(VAutoPtr, ReleaseHandsTheObjectOver) {
  int deaths = 0;
  unsigned char data[1] = {};
  CVAutoPtr<CPort> owner(new CountedPort(data, 1, &deaths), true);
  CPort* raw = owner.Release();
  EXPECT_FALSE(owner);
  EXPECT_EQ(deaths, 0);
  delete raw;
  EXPECT_EQ(deaths, 1);
}

// --- file ports ----------------------------------------------------------------

class FilePortTest : public ::testing::Test {
 protected:
  TempTree dir;
};

TEST_F(FilePortTest, FilePortForReadingAMissingFileIsEmpty) {
  auto port = CPort::FilePort(dir.Lib("missing.bin").c_str(), Halyard::kAccessRead);
  EXPECT_FALSE(port);
  EXPECT_FALSE(port.Owns());
}

TEST_F(FilePortTest, FilePortReadWriteCreatesAnEmptyFile) {
  auto port = CPort::FilePort(dir.Lib("new.bin").c_str(), Halyard::kAccessReadWrite);
  ASSERT_TRUE(port);
  EXPECT_TRUE(port.Owns());
  EXPECT_EQ(port->Size(), 0u);
  EXPECT_TRUE(tovtest::Exists(dir.NativeOf("new.bin")));
  EXPECT_EQ(port->OwnsResource(), 0);
}

TEST_F(FilePortTest, FilePortWriteTruncatesAnExistingFile) {
  tovtest::WriteBytes(dir.NativeOf("f.bin"), kTen);
  auto port = CPort::FilePort(dir.Lib("f.bin").c_str(), Halyard::kAccessWrite);
  ASSERT_TRUE(port);
  EXPECT_EQ(port->Size(), 0u);
  port.Reset();
  EXPECT_TRUE(tovtest::ReadBytes(dir.NativeOf("f.bin")).empty());
}

TEST_F(FilePortTest, FilePortReadWriteKeepsAnExistingFile) {
  tovtest::WriteBytes(dir.NativeOf("f.bin"), kTen);
  auto port = CPort::FilePort(dir.Lib("f.bin").c_str(), Halyard::kAccessReadWrite);
  ASSERT_TRUE(port);
  EXPECT_EQ(port->Size(), 10u);
}

TEST_F(FilePortTest, FileSurvivesAFactoryPort) {
  { auto port = CPort::FilePort(dir.Lib("keep.bin").c_str(), Halyard::kAccessWrite); }
  EXPECT_TRUE(tovtest::Exists(dir.NativeOf("keep.bin")));
}

TEST_F(FilePortTest, FilePortWithNarrowPath) {
  tovtest::WriteBytes(dir.NativeOf("narrow.bin"), kTen);
  const std::string path = dir.NativeOf("narrow.bin");
  auto port = CPort::FilePort(path.c_str(), Halyard::kAccessRead);
  ASSERT_TRUE(port);
  EXPECT_EQ(port->Size(), 10u);
  auto portEx = CPortEx::FilePort(path.c_str(), Halyard::kAccessRead);
  ASSERT_TRUE(portEx);
  EXPECT_EQ(portEx->Size(), 10u);
  EXPECT_FALSE(CPortEx::FilePort(dir.NativeOf("none").c_str(), Halyard::kAccessRead));
  EXPECT_FALSE(CPort::FilePort(static_cast<const char*>(nullptr), Halyard::kAccessRead));
  EXPECT_FALSE(
      CPortEx::FilePort(static_cast<const unsigned short*>(nullptr), Halyard::kAccessRead));
}

TEST_F(FilePortTest, ModesOtherThanWriteAndReadWriteOpenForReading) {
  tovtest::WriteBytes(dir.NativeOf("f.bin"), kTen);
  CFilePort port(static_cast<Halyard::AccessMode>(7), 0);
  ASSERT_EQ(port.Open(dir.Lib("f.bin").c_str()), 0u);
  const unsigned char in = 1;
  EXPECT_EQ(port.Write(0, 1, &in), TOV::kErrWriteFailed);
  EXPECT_EQ(tovtest::ReadBytes(dir.NativeOf("f.bin")), kTen);
  CFilePort missing(static_cast<Halyard::AccessMode>(-1), 0);
  EXPECT_EQ(missing.Open(dir.Lib("none.bin").c_str()), TOV::kErrOpenFailed);
  EXPECT_FALSE(tovtest::Exists(dir.NativeOf("none.bin")));
}

TEST_F(FilePortTest, ShortReadSucceedsAndFillsWhatIsThere) {
  tovtest::WriteBytes(dir.NativeOf("f.bin"), kTen);
  auto port = CPort::FilePort(dir.Lib("f.bin").c_str(), Halyard::kAccessRead);
  unsigned char out[10];
  std::memset(out, 0xCC, sizeof out);
  EXPECT_EQ(port->Read(6, 10, out), 0u);
  EXPECT_EQ(out[0], 0x16);
  EXPECT_EQ(out[3], 0x19);
  EXPECT_EQ(out[4], 0xCC);
}

TEST_F(FilePortTest, ReadAtOrPastTheEndFails) {
  tovtest::WriteBytes(dir.NativeOf("f.bin"), kTen);
  auto port = CPort::FilePort(dir.Lib("f.bin").c_str(), Halyard::kAccessRead);
  unsigned char out[4] = {};
  EXPECT_EQ(port->Read(10, 1, out), TOV::kErrReadFailed);
  EXPECT_EQ(port->Read(50, 4, out), TOV::kErrReadFailed);
  EXPECT_EQ(port->Read(10, 0, out), 0u);
  EXPECT_EQ(port->Read(3, 0, out), 0u);
}

TEST_F(FilePortTest, WriteThenReadBack) {
  CFilePort port(Halyard::kAccessWrite, 0);
  ASSERT_EQ(port.Open(dir.Lib("w.bin").c_str()), 0u);
  EXPECT_EQ(port.Write(0, 10, kTen.data()), 0u);
  unsigned char out[2] = {};
  EXPECT_EQ(port.Read(8, 2, out), 0u);
  EXPECT_EQ(out[0], 0x18);
  EXPECT_EQ(out[1], 0x19);
  EXPECT_EQ(port.Flush(), 0u);
  EXPECT_EQ(port.Close(), 0u);
  EXPECT_EQ(tovtest::ReadBytes(dir.NativeOf("w.bin")), kTen);
}

TEST_F(FilePortTest, WritePastTheEndExtendsTheFileWithZeros) {
  CFilePort port(Halyard::kAccessWrite, 0);
  ASSERT_EQ(port.Open(dir.Lib("w.bin").c_str()), 0u);
  const unsigned char in[2] = {0xAB, 0xCD};
  EXPECT_EQ(port.Write(4, 2, in), 0u);
  EXPECT_EQ(port.Size(), 6u);
  port.Close();
  EXPECT_EQ(tovtest::ReadBytes(dir.NativeOf("w.bin")), (Bytes{0, 0, 0, 0, 0xAB, 0xCD}));
}

TEST_F(FilePortTest, OpenNullPathIsInvalidArgumentAndChangesNothing) {
  tovtest::WriteBytes(dir.NativeOf("f.bin"), kTen);
  CFilePort port(Halyard::kAccessRead, 0);
  ASSERT_EQ(port.Open(dir.Lib("f.bin").c_str()), 0u);
  const unsigned short* before = port.Path();
  EXPECT_EQ(port.Open(static_cast<const unsigned short*>(nullptr)), TOV::kErrInvalidArgument);
  EXPECT_EQ(port.Open(static_cast<const char*>(nullptr)), TOV::kErrInvalidArgument);
  EXPECT_EQ(port.Path(), before);
  EXPECT_EQ(port.Size(), 10u);
  CFilePortEx portEx(Halyard::kAccessRead, 0);
  EXPECT_EQ(portEx.Open(static_cast<const unsigned short*>(nullptr)), TOV::kErrInvalidArgument);
  EXPECT_EQ(portEx.Open(static_cast<const char*>(nullptr)), TOV::kErrInvalidArgument);
  EXPECT_EQ(portEx.Path(), nullptr);
}

TEST_F(FilePortTest, PathIsNullBeforeTheFirstOpenAndTheGivenPathAfter) {
  CFilePort port(Halyard::kAccessWrite, 0);
  EXPECT_EQ(port.Path(), nullptr);
  const UTF16String path = dir.Lib("p.bin");
  port.Open(path.c_str());
  ASSERT_NE(port.Path(), nullptr);
  EXPECT_EQ(UTF16String(port.Path()), path);
}

TEST_F(FilePortTest, OwningPortDeletesItsFileWhenDestroyedEvenAfterClose) {
  {
    CFilePort port(Halyard::kAccessWrite, 1);
    ASSERT_EQ(port.Open(dir.Lib("owned.bin").c_str()), 0u);
    port.Write(0, 10, kTen.data());
    EXPECT_EQ(port.Close(), 0u);
    EXPECT_TRUE(tovtest::Exists(dir.NativeOf("owned.bin")));
  }
  EXPECT_FALSE(tovtest::Exists(dir.NativeOf("owned.bin")));
  {
    CFilePortEx port(Halyard::kAccessWrite, 1);
    ASSERT_EQ(port.Open(dir.Lib("owned64.bin").c_str()), 0u);
  }
  EXPECT_FALSE(tovtest::Exists(dir.NativeOf("owned64.bin")));
}

TEST_F(FilePortTest, SizeOfAPortWhoseOpenFailedIsZero) {
  CFilePort port(Halyard::kAccessRead, 0);
  EXPECT_EQ(port.Size(), 0u);
  EXPECT_EQ(port.Open(dir.Lib("missing.bin").c_str()), TOV::kErrOpenFailed);
  EXPECT_EQ(port.Size(), 0u);
  EXPECT_EQ(tovimpl::platform::GetLastError(), tovimpl::platform::kErrorFileNotFound);
  CFilePortEx portEx(Halyard::kAccessRead, 0);
  EXPECT_EQ(portEx.Open(dir.Lib("missing.bin").c_str()), TOV::kErrOpenFailed);
  EXPECT_EQ(portEx.Size(), 0u);
}

TEST_F(FilePortTest, OpenInAMissingFolderFails) {
  CFilePort port(Halyard::kAccessWrite, 0);
  EXPECT_EQ(port.Open(dir.Lib("no\\such\\f.bin").c_str()), TOV::kErrOpenFailed);
  EXPECT_EQ(tovimpl::platform::GetLastError(), tovimpl::platform::kErrorPathNotFound);
}

TEST_F(FilePortTest, OpenOfAnEmptyPathFails) {
  CFilePort port(Halyard::kAccessReadWrite, 0);
  const unsigned short empty[1] = {0};
  EXPECT_EQ(port.Open(empty), TOV::kErrOpenFailed);
  EXPECT_EQ(port.Size(), 0u);
  ASSERT_NE(port.Path(), nullptr);
  EXPECT_TRUE(UTF16String(port.Path()).empty());
  EXPECT_EQ(port.Open(""), TOV::kErrOpenFailed);
}

TEST_F(FilePortTest, ReadAndWriteOnAClosedPortFail) {
  CFilePort port(Halyard::kAccessReadWrite, 0);
  unsigned char byte = 0;
  EXPECT_EQ(port.Read(0, 1, &byte), TOV::kErrReadFailed);
  EXPECT_EQ(port.Write(0, 1, &byte), TOV::kErrWriteFailed);
  EXPECT_EQ(port.Size(5), TOV::kErrSetSizeFailed);
  EXPECT_EQ(port.Close(), 0u);
}

TEST_F(FilePortTest, CloseTwiceReturnsZero) {
  CFilePort port(Halyard::kAccessWrite, 0);
  ASSERT_EQ(port.Open(dir.Lib("c.bin").c_str()), 0u);
  EXPECT_EQ(port.Close(), 0u);
  EXPECT_EQ(port.Close(), 0u);
  EXPECT_EQ(port.Size(), 0u);
}

TEST_F(FilePortTest, ReopenAfterClose) {
  tovtest::WriteBytes(dir.NativeOf("a.bin"), kTen);
  tovtest::WriteBytes(dir.NativeOf("b.bin"), Bytes{1, 2});
  CFilePort port(Halyard::kAccessRead, 0);
  ASSERT_EQ(port.Open(dir.Lib("a.bin").c_str()), 0u);
  EXPECT_EQ(port.Size(), 10u);
  port.Close();
  ASSERT_EQ(port.Open(dir.Lib("b.bin").c_str()), 0u);
  EXPECT_EQ(port.Size(), 2u);
}

TEST_F(FilePortTest, OpenOverAnOpenHandleLeavesThatHandleOpen) {
  CFilePort port(Halyard::kAccessWrite, 0);
  ASSERT_EQ(port.Open(dir.Lib("first.bin").c_str()), 0u);
  ASSERT_EQ(port.Open(dir.Lib("second.bin").c_str()), 0u);
  // The first file is still held for writing: another writer is refused.
  CFilePort other(Halyard::kAccessReadWrite, 0);
  EXPECT_EQ(other.Open(dir.Lib("first.bin").c_str()), TOV::kErrOpenFailed);
  EXPECT_EQ(tovimpl::platform::GetLastError(), tovimpl::platform::kErrorSharingViolation);
}

TEST_F(FilePortTest, SetSizeTruncatesAndExtends) {
  tovtest::WriteBytes(dir.NativeOf("f.bin"), kTen);
  CFilePort port(Halyard::kAccessReadWrite, 0);
  ASSERT_EQ(port.Open(dir.Lib("f.bin").c_str()), 0u);
  EXPECT_NE(port.Size(4), TOV::kErrSetSizeFailed);
  EXPECT_EQ(port.Size(), 4u);
  EXPECT_NE(port.Size(6), TOV::kErrSetSizeFailed);
  EXPECT_EQ(port.Size(), 6u);
  port.Close();
  EXPECT_EQ(tovtest::ReadBytes(dir.NativeOf("f.bin")), (Bytes{0x10, 0x11, 0x12, 0x13, 0, 0}));
}

TEST_F(FilePortTest, SetSizeLeavesTheFilePositionAtTheNewSize) {
  // A write at 2^31 cannot seek on the 32-bit port, so it lands at the file
  // position, which Size(6) left at 6.
  tovtest::WriteBytes(dir.NativeOf("f.bin"), kTen);
  CFilePort port(Halyard::kAccessReadWrite, 0);
  ASSERT_EQ(port.Open(dir.Lib("f.bin").c_str()), 0u);
  port.Size(6);
  const unsigned char in[2] = {0xAA, 0xBB};
  EXPECT_EQ(port.Write(0x80000000u, 2, in), TOV::kErrWriteFailed);
  port.Close();
  EXPECT_EQ(tovtest::ReadBytes(dir.NativeOf("f.bin")),
            (Bytes{0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0xAA, 0xBB}));
}

TEST_F(FilePortTest, SetSizeOnAReadOnlyPortFails) {
  tovtest::WriteBytes(dir.NativeOf("f.bin"), kTen);
  CFilePort port(Halyard::kAccessRead, 0);
  ASSERT_EQ(port.Open(dir.Lib("f.bin").c_str()), 0u);
  EXPECT_EQ(port.Size(4), TOV::kErrSetSizeFailed);
  EXPECT_EQ(port.Size(), 10u);
}

TEST_F(FilePortTest, SixtyFourBitSetSizeReturnsTheLowPartOfTheSize) {
  CFilePortEx port(Halyard::kAccessWrite, 0);
  ASSERT_EQ(port.Open(dir.Lib("f.bin").c_str()), 0u);
  EXPECT_EQ(port.Size(std::uint64_t{7}), 7u);
  EXPECT_EQ(port.Size(), 7u);
  CFilePortEx closed(Halyard::kAccessWrite, 0);
  EXPECT_EQ(closed.Size(std::uint64_t{7}), TOV::kErrSetSizeFailed);
}

TEST_F(FilePortTest, CopiesShareThePathAndTheHandle) {
  tovtest::WriteBytes(dir.NativeOf("f.bin"), kTen);
  CFilePort port(Halyard::kAccessRead, 0);
  ASSERT_EQ(port.Open(dir.Lib("f.bin").c_str()), 0u);
  CFilePort copy(port);
  EXPECT_EQ(copy.Path(), port.Path());
  unsigned char byte = 0;
  EXPECT_EQ(copy.Read(9, 1, &byte), 0u);
  EXPECT_EQ(byte, 0x19);
  EXPECT_EQ(copy.Close(), 0u);
  EXPECT_EQ(port.Size(), 0u);  // closed for both
  EXPECT_EQ(port.Read(0, 1, &byte), TOV::kErrReadFailed);
  CFilePort assigned(Halyard::kAccessWrite, 0);
  assigned = port;
  EXPECT_EQ(assigned.Path(), port.Path());
  EXPECT_EQ(assigned.Mode(), Halyard::kAccessRead);
}

TEST_F(FilePortTest, DestroyingOneCopyClosesTheHandleForAll) {
  tovtest::WriteBytes(dir.NativeOf("f.bin"), kTen);
  CFilePortEx port(Halyard::kAccessRead, 0);
  ASSERT_EQ(port.Open(dir.Lib("f.bin").c_str()), 0u);
  { CFilePortEx copy(port); }
  EXPECT_EQ(port.Size(), 0u);
  ASSERT_NE(port.Path(), nullptr);
  EXPECT_EQ(UTF16String(port.Path()), dir.Lib("f.bin"));
}

TEST_F(FilePortTest, OpenOnACopyLeavesTheOtherOnItsFile) {
  tovtest::WriteBytes(dir.NativeOf("a.bin"), kTen);
  tovtest::WriteBytes(dir.NativeOf("b.bin"), Bytes{1, 2, 3});
  CFilePort port(Halyard::kAccessRead, 0);
  ASSERT_EQ(port.Open(dir.Lib("a.bin").c_str()), 0u);
  CFilePort copy(port);
  ASSERT_EQ(copy.Open(dir.Lib("b.bin").c_str()), 0u);
  EXPECT_EQ(port.Size(), 10u);
  EXPECT_EQ(copy.Size(), 3u);
}

TEST_F(FilePortTest, LongPathPrefixedPathsOpen) {
  tovtest::WriteBytes(dir.NativeOf("f.bin"), kTen);
  UTF16String path = basalt::ToUTF16(u"\\\\?\\") + dir.Lib("f.bin");
  auto port = CPort::FilePort(path.c_str(), Halyard::kAccessRead);
  ASSERT_TRUE(port);
  EXPECT_EQ(port->Size(), 10u);
}

// --- large files: sparse ----------------------------------------------------

TEST_F(FilePortTest, ThirtyTwoBitPortAtTwoGiBSeeksNowhereAndReadsAtTheFilePosition) {
  const std::uint64_t size = 0x80000010ull;
  tovtest::MakeSparse(dir.NativeOf("big.bin"), size,
                      Bytes{0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7, 0xA8, 0xA9, 0xAA, 0xAB,
                            0xAC, 0xAD, 0xAE, 0xAF});
  CFilePort port(Halyard::kAccessReadWrite, 0);
  ASSERT_EQ(port.Open(dir.Lib("big.bin").c_str()), 0u);
  EXPECT_EQ(port.Size(), 0x80000010u);
  // Below 2^31 the seek works.
  unsigned char out[4] = {0xCC, 0xCC, 0xCC, 0xCC};
  EXPECT_EQ(port.Read(0x7FFFFFFEu, 2, out), 0u);
  EXPECT_EQ(out[0], 0);
  // At 2^31 the distance is negative: the seek fails (131), the read happens
  // at the unchanged position 0x80000000 (after the previous read) and the
  // call reports kErrReadFailed.
  std::memset(out, 0xCC, sizeof out);
  EXPECT_EQ(port.Read(0x80000004u, 4, out), TOV::kErrReadFailed);
  EXPECT_EQ(tovimpl::platform::GetLastError(), tovimpl::platform::kErrorNegativeSeek);
  EXPECT_EQ(out[0], 0xA0);
  EXPECT_EQ(out[3], 0xA3);
  // A write at 2^31 lands at the file position too (now 0x80000004).
  const unsigned char in[2] = {0x55, 0x66};
  EXPECT_EQ(port.Write(0x80000000u, 2, in), TOV::kErrWriteFailed);
  port.Close();
  CFilePortEx check(Halyard::kAccessRead, 0);
  ASSERT_EQ(check.Open(dir.Lib("big.bin").c_str()), 0u);
  unsigned char back[4] = {};
  EXPECT_EQ(check.Read(0x80000002ull, 4, back), 0u);
  EXPECT_EQ(back[0], 0xA2);
  EXPECT_EQ(back[1], 0xA3);
  EXPECT_EQ(back[2], 0x55);
  EXPECT_EQ(back[3], 0x66);
}

TEST_F(FilePortTest, ThirtyTwoBitPortSizeAtFourGiBIsTheLowPart) {
  tovtest::MakeSparse(dir.NativeOf("big.bin"), 0x100000010ull, Bytes{1});
  CFilePort port(Halyard::kAccessRead, 0);
  ASSERT_EQ(port.Open(dir.Lib("big.bin").c_str()), 0u);
  EXPECT_EQ(port.Size(), 0x10u);
  // Positions of 4 GiB and more cannot be named; 0xFFFFFFF0 is a negative seek.
  unsigned char out[2] = {0xCC, 0xCC};
  EXPECT_EQ(port.Read(0xFFFFFFF0u, 2, out), TOV::kErrReadFailed);
  EXPECT_EQ(tovimpl::platform::GetLastError(), tovimpl::platform::kErrorNegativeSeek);
  EXPECT_EQ(out[0], 0);  // read at position 0 of the sparse file
}

TEST_F(FilePortTest, ThirtyTwoBitPortSizeOfAllOnesBecomesZero) {
  tovtest::MakeSparse(dir.NativeOf("big.bin"), 0xFFFFFFFFull, Bytes{1});
  CFilePort port(Halyard::kAccessRead, 0);
  ASSERT_EQ(port.Open(dir.Lib("big.bin").c_str()), 0u);
  EXPECT_EQ(port.Size(), 0u);
  CFilePortEx portEx(Halyard::kAccessRead, 0);
  ASSERT_EQ(portEx.Open(dir.Lib("big.bin").c_str()), 0u);
  EXPECT_EQ(portEx.Size(), 0xFFFFFFFFull);
}

TEST_F(FilePortTest, SixtyFourBitPortReadsAndWritesPastFourGiB) {
  tovtest::MakeSparse(dir.NativeOf("big.bin"), 0x100000008ull, Bytes{1, 2, 3, 4, 5, 6, 7, 8});
  CFilePortEx port(Halyard::kAccessReadWrite, 0);
  ASSERT_EQ(port.Open(dir.Lib("big.bin").c_str()), 0u);
  EXPECT_EQ(port.Size(), 0x100000008ull);
  unsigned char out[8] = {};
  EXPECT_EQ(port.Read(0x100000000ull, 8, out), 0u);
  EXPECT_EQ(out[0], 1);
  EXPECT_EQ(out[7], 8);
  const unsigned char in[4] = {0xDE, 0xAD, 0xBE, 0xEF};
  EXPECT_EQ(port.Write(0x100000010ull, 4, in), 0u);
  EXPECT_EQ(port.Size(), 0x100000014ull);
  unsigned char back[6] = {};
  EXPECT_EQ(port.Read(0x10000000Eull, 6, back), 0u);
  EXPECT_EQ(back[0], 0);
  EXPECT_EQ(back[2], 0xDE);
  EXPECT_EQ(back[5], 0xEF);
  // A low part of 0xFFFFFFFF is a valid position, not a failed seek.
  EXPECT_EQ(port.Write(0xFFFFFFFFull, 1, in), 0u);
  EXPECT_EQ(port.Read(0xFFFFFFFFull, 1, back), 0u);
  EXPECT_EQ(back[0], 0xDE);
  EXPECT_EQ(port.Read(0x100000014ull, 1, back), TOV::kErrReadFailed);
  EXPECT_EQ(port.Size(std::uint64_t{0x100000002ull}), 2u);
  EXPECT_EQ(port.Size(), 0x100000002ull);
}
