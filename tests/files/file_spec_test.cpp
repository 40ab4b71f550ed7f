// File specs (CFileSpec): the pieces, equality, file operations, times, size,
// streams; the inert older class; the disk-space check.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "common/file_times.h"
#include "files/files_support.h"
#include "platform/fs.h"
#include "tovfoundation/files.h"
#include "tovfoundation/streams.h"

using namespace basalt::literals;
using Halyard::FileUtils::CFileSpec;
using tovtest::TempTree;
using tovtest::U8;

TEST(FileSpec, PiecesOfAFilePath) {
  const CFileSpec spec(u"C:\\Media\\clip.wav"_u16);
  EXPECT_EQ(spec.TOVGetFullPathName(), u"C:\\Media\\clip.wav"_u16);
  EXPECT_EQ(static_cast<UTF16String>(spec), u"C:\\Media\\clip.wav"_u16);
  EXPECT_EQ(spec.TOVGetRoot(), u"C:\\"_u16);
  EXPECT_EQ(spec.TOVGetFolderPath(), u"\\Media"_u16);
  EXPECT_EQ(spec.TOVGetFileTitle(), u"clip"_u16);
  EXPECT_EQ(spec.TOVGetFileName(), u"clip.wav"_u16);
  EXPECT_EQ(spec.TOVGetFileExtension(), u"wav"_u16);
}

TEST(FileSpec, TrailingBackslashLeavesFullPathButNotPieces) {
  CFileSpec spec;
  spec = u"C:\\Media\\Out\\"_u16;
  EXPECT_EQ(spec.TOVGetFullPathName(), u"C:\\Media\\Out"_u16);
  EXPECT_EQ(spec.TOVGetFolderPath(), u"\\Media\\Out"_u16);  // "\Media\Out\" less one '\'
  EXPECT_EQ(spec.TOVGetFileTitle(), UTF16String());
  EXPECT_EQ(spec.TOVGetFileExtension(), UTF16String());
  EXPECT_EQ(spec.TOVGetFileName(), UTF16String());
}

TEST(FileSpec, ExtensionWithoutExtensionIsEmptyNotADot) {
  EXPECT_EQ(CFileSpec(u"C:\\a\\noext"_u16).TOVGetFileExtension(), UTF16String());
  EXPECT_EQ(CFileSpec(u"C:\\a\\dot."_u16).TOVGetFileExtension(), UTF16String());
}

TEST(FileSpec, DefaultIsEmpty) {
  const CFileSpec spec;
  EXPECT_EQ(spec.TOVGetFullPathName(), UTF16String());
  EXPECT_EQ(spec.TOVGetRoot(), UTF16String());
  EXPECT_EQ(spec.TOVGetFileName(), UTF16String());
}

TEST(FileSpec, EqualityIsCaseSensitive) {
  const CFileSpec a(u"C:\\a.txt"_u16);
  const CFileSpec b(u"c:\\A.TXT"_u16);
  EXPECT_FALSE(a == b);
  EXPECT_TRUE(a != b);
  const CFileSpec c(a);
  EXPECT_TRUE(a == c);
  CFileSpec d;
  d = b;
  EXPECT_TRUE(d == b);
  EXPECT_EQ(d.TOVGetFileTitle(), u"A"_u16);
}

TEST(FileSpec, CreateDeleteExists) {
  TempTree temp;
  CFileSpec spec(temp.Lib("new.bin"));
  EXPECT_FALSE(spec.Exists());
  tovtest::WriteFile(temp.NativeOf("new.bin"), "old");
  EXPECT_EQ(spec.CreateNewFile(), 0u);  // truncates an existing file
  EXPECT_EQ(std::filesystem::file_size(temp.NativeOf("new.bin")), 0u);
  EXPECT_TRUE(spec.Exists());
  EXPECT_EQ(spec.DeleteTheFile(), 0u);
  EXPECT_FALSE(spec.Exists());
  EXPECT_EQ(spec.DeleteTheFile(), TOV::kErrGeneric);
  EXPECT_EQ(CFileSpec(temp.Lib("missing\\x.bin")).CreateNewFile(), TOV::kErrCreateFailed);
}

TEST(FileSpec, CreateNewFolderCreatesTheContainingFolder) {
  TempTree temp;
  CFileSpec spec(temp.Lib("a\\b\\file.txt"));
  EXPECT_EQ(spec.CreateNewFolder(), 0u);
  EXPECT_TRUE(std::filesystem::is_directory(temp.NativeOf("a/b")));
  EXPECT_FALSE(tovtest::Exists(temp.NativeOf("a/b/file.txt")));
  EXPECT_EQ(spec.CreateNewFolder(), TOV::kErrGeneric);  // it exists now
}

TEST(FileSpec, ModificationTimeIsUtc) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("f"), "");
  // 2021-03-04 05:06:07.890 UTC
  ASSERT_TRUE(tovtest::SetModificationTime(temp.NativeOf("f"), 1614834367, 890000000));
  Halyard::VDateTime t{};
  EXPECT_EQ(CFileSpec(temp.Lib("f")).GetModificationTime(&t), 0u);
  EXPECT_EQ(t.year, 2021);
  EXPECT_EQ(t.month, 3);
  EXPECT_EQ(t.day, 4);
  EXPECT_EQ(t.hour, 5);
  EXPECT_EQ(t.minute, 6);
  EXPECT_EQ(t.second, 7);
  EXPECT_EQ(t.milliseconds, 890);
  EXPECT_EQ(t.kind, 2);
}

TEST(FileSpec, CreationTimeIsRecentForANewFile) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("f"), "");
  Halyard::VDateTime t{};
  EXPECT_EQ(CFileSpec(temp.Lib("f")).GetCreationTime(&t), 0u);
  EXPECT_GE(t.year, 2024);
  EXPECT_EQ(t.kind, 2);
  EXPECT_GE(t.month, 1);
  EXPECT_LE(t.month, 12);
}

TEST(FileSpec, TimesOfMissingFileAnswerSixAndLeaveOutput) {
  TempTree temp;
  Halyard::VDateTime t{};
  t.year = 1999;
  EXPECT_EQ(CFileSpec(temp.Lib("missing")).GetCreationTime(&t), 6u);
  EXPECT_EQ(CFileSpec(temp.Lib("missing")).GetModificationTime(&t), 6u);
  EXPECT_EQ(t.year, 1999);
}

TEST(FileSpec, GetFileSizeOfMissingFileIsZeroAndFails) {
  TempTree temp;
  std::uint64_t size = 77;
  EXPECT_EQ(CFileSpec(temp.Lib("missing")).GetFileSize(&size), TOV::kErrGetSizeFailed);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(CFileSpec(temp.Lib("missing")).GetFileSize(nullptr), TOV::kErrInvalidPointer);
}

TEST(FileSpec, GetFileSizeReadsSize) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("f"), "12345");
  std::uint64_t size = 0;
  EXPECT_EQ(CFileSpec(temp.Lib("f")).GetFileSize(&size), 0u);
  EXPECT_EQ(size, 5u);
}

TEST(FileSpec, GetFileSizeFailsWhileAPortHoldsTheFile) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("f"), "12345");
  Halyard::CFilePort port(Halyard::kAccessRead, 0);
  const UTF16String path = temp.Lib("f");
  ASSERT_EQ(port.Open(path.c_str()), 0u);
  std::uint64_t size = 9;
  EXPECT_EQ(CFileSpec(path).GetFileSize(&size), TOV::kErrGetSizeFailed);
  EXPECT_EQ(size, 0u);
  port.Close();
  EXPECT_EQ(CFileSpec(path).GetFileSize(&size), 0u);
  EXPECT_EQ(size, 5u);
}

TEST(FileSpec, OpenReadStreamOfMissingFileIsNull) {
  TempTree temp;
  EXPECT_EQ(CFileSpec(temp.Lib("missing")).OpenReadStream(Halyard::kHaldLittleEndian), nullptr);
  EXPECT_EQ(CFileSpec().OpenReadStream(Halyard::kHaldLittleEndian), nullptr);
  EXPECT_EQ(CFileSpec().OpenWriteStream(Halyard::kHaldLittleEndian), nullptr);
}

TEST(FileSpec, OpenWriteStreamTruncatesAndStreamsRoundTrip) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("f"), "previous longer contents");
  CFileSpec spec(temp.Lib("f"));
  {
    std::unique_ptr<Halyard::CWriteStream> out(spec.OpenWriteStream(Halyard::kHaldBigEndian));
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(std::filesystem::file_size(temp.NativeOf("f")), 0u);
    out->PutInt(static_cast<std::int32_t>(0x01020304));
  }
  EXPECT_EQ(tovtest::ReadFile(temp.NativeOf("f")), std::string("\x01\x02\x03\x04", 4));
  std::unique_ptr<Halyard::CReadStream> in(spec.OpenReadStream(Halyard::kHaldLittleEndian));
  ASSERT_NE(in, nullptr);
  std::int32_t value = 0;
  EXPECT_EQ(in->ReadInt(&value), 0u);
  EXPECT_EQ(value, 0x04030201);
}

// --- the inert older class ----------------------------------------------------------

TEST(InertFileSpec, EveryAccessorIsEmptyWhateverTheArgument) {
  Halyard::CFileSpec fromWide(std::u16string(u"C:\\Media\\clip.wav"));
  Halyard::CFileSpec fromNarrow(std::string("C:\\Media\\clip.wav"));
  for (Halyard::CFileSpec* spec : {&fromWide, &fromNarrow}) {
    *spec = std::string("C:\\x");
    *spec = std::u16string(u"C:\\x");
    EXPECT_EQ(spec->GetFullPathNameW(), u"");
    EXPECT_EQ(spec->GetFullPathNameA(), "");
    EXPECT_EQ(static_cast<Halyard::WideString>(*spec), u"");
    EXPECT_EQ(std::u16string(static_cast<const char16_t*>(*spec)), u"");
    EXPECT_EQ(spec->GetFileExtensionA(), "");
    EXPECT_EQ(spec->GetFileExtensionW(), u"");
    EXPECT_EQ(spec->GetFileNameA(), "");
    EXPECT_EQ(spec->GetFileNameW(), u"");
    EXPECT_EQ(spec->GetFileTitleA(), "");
    EXPECT_EQ(spec->GetFileTitleW(), u"");
    EXPECT_EQ(spec->GetFolderPathA(), "");
    EXPECT_EQ(spec->GetFolderPathW(), u"");
    EXPECT_EQ(spec->GetRootA(), "");
    EXPECT_EQ(spec->GetRootW(), u"");
    EXPECT_FALSE(spec->Exists());
    EXPECT_EQ(spec->CreateNewFolder(), TOV::kErrGeneric);
    EXPECT_EQ(spec->CreateNewFile(), TOV::kErrCreateFailed);
  }
  EXPECT_TRUE(fromWide == fromNarrow);
  EXPECT_FALSE(fromWide != fromNarrow);
  std::u16string folder = u"f", prefix = u"p";
  EXPECT_EQ(Halyard::CFileSpec::GetTempFileNameW(folder, prefix), u"");
  EXPECT_EQ(folder, u"f");
  EXPECT_EQ(prefix, u"p");
  EXPECT_EQ(Halyard::CFileSpec::GetTempFolder(), u"");
}

// --- the disk-space check ------------------------------------------------------------

namespace {
std::uint64_t gFreeAnswer = 0;
UTF16String gAskedFor;
tovimpl::platform::Result<std::uint64_t> FakeFree(const UTF16String& path) {
  gAskedFor = path;
  return gFreeAnswer;
}
struct FreeSpaceSeam {
  FreeSpaceSeam() { tovimpl::platform::SetFreeSpaceAnswerForTesting(FakeFree); }
  ~FreeSpaceSeam() { tovimpl::platform::SetFreeSpaceAnswerForTesting(nullptr); }
};
}  // namespace

TEST(DiskSpaceCheck, NeedsStrictlyMoreThanOneAndAQuarterTimesTheSource) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("src"), std::string(100, 's'));
  FreeSpaceSeam seam;
  const UTF16String src = temp.Lib("src");
  const UTF16String dst = u"C:\\out\\dest\\x.mp4"_u16;
  gFreeAnswer = 125;
  EXPECT_EQ(Halyard::CheckReEncodeDiskSpaceRemaining(src.c_str(), dst.c_str()),
            TOV::kErrWriteFailed);
  gFreeAnswer = 126;
  EXPECT_EQ(Halyard::CheckReEncodeDiskSpaceRemaining(src.c_str(), dst.c_str()), 0u);
  // Asked for the destination's folder without drive and trailing separator.
  EXPECT_EQ(gAskedFor, u"\\out\\dest"_u16);
}

TEST(DiskSpaceCheck, MissingSourceOrNullArgumentsFail) {
  TempTree temp;
  FreeSpaceSeam seam;
  gFreeAnswer = 1u << 30;
  const UTF16String missing = temp.Lib("missing");
  const UTF16String dst = temp.Lib("out.bin");
  EXPECT_EQ(Halyard::CheckReEncodeDiskSpaceRemaining(missing.c_str(), dst.c_str()),
            TOV::kErrWriteFailed);
  EXPECT_EQ(Halyard::CheckReEncodeDiskSpaceRemaining(nullptr, dst.c_str()), TOV::kErrWriteFailed);
  EXPECT_EQ(Halyard::CheckReEncodeDiskSpaceRemaining(dst.c_str(), nullptr), TOV::kErrWriteFailed);
}

TEST(DiskSpaceCheck, RealFreeSpaceOfExistingFolder) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("src"), "tiny");
  const UTF16String src = temp.Lib("src");
  const UTF16String dst = temp.Lib("out.bin");
  EXPECT_EQ(Halyard::CheckReEncodeDiskSpaceRemaining(src.c_str(), dst.c_str()), 0u);
  const UTF16String missingFolder = temp.Lib("nope\\out.bin");
  EXPECT_EQ(Halyard::CheckReEncodeDiskSpaceRemaining(src.c_str(), missingFolder.c_str()),
            TOV::kErrWriteFailed);
}
