// The POSIX backend's file-system calls at their edges: links, special files,
// hidden and read-only items, names too long for the system, a current
// directory that is gone, copies that are stopped or fail, moves across file
// systems, and the trash's choice of folder and names.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "common/environment.h"
#include "platform/error.h"
#include "platform/file.h"
#include "platform/fs.h"
#include "platform/platform_support.h"

using namespace basalt::literals;

namespace {

namespace platform = tovimpl::platform;
using platform_test::Exists;
using platform_test::ReadFileBytes;
using platform_test::TempFolder;
using platform_test::U8;
using platform_test::WriteFile;
using tovtest::ScopedEnv;

// A name longer than any file system allows for one component.
const std::string kLongName(300, 'n');

// Changes the current directory for the object's lifetime.
class InFolder {
 public:
  explicit InFolder(const std::string& native) {
    char buffer[8192];
    if (::getcwd(buffer, sizeof buffer) != nullptr) mSaved = buffer;
    EXPECT_EQ(::chdir(native.c_str()), 0);
  }
  ~InFolder() { EXPECT_EQ(::chdir(mSaved.c_str()), 0); }

 private:
  std::string mSaved;
};

// Every entry of a listing as "name:attributes".
std::vector<std::string> ListAll(const UTF16String& pattern) {
  std::vector<std::string> out;
  platform::ListingEntry entry{};
  const auto opened = platform::OpenListing(pattern, &entry);
  if (!opened) return {"<" + std::to_string(opened.Error()) + ">"};
  do {
    const std::string name = U8(entry.name);
    if (name != "." && name != "..") out.push_back(name + ":" + std::to_string(entry.attributes));
  } while (platform::NextListingEntry(*opened, &entry));
  platform::CloseListing(*opened);
  std::sort(out.begin(), out.end());
  return out;
}

// --- attributes and file information --------------------------------------------

TEST(FsEdges, ReadOnlyHiddenAndFolderBitsCombine) {
  TempFolder temp;
  WriteFile(temp.NativeOf("ro"), "");
  ASSERT_EQ(::chmod(temp.NativeOf("ro").c_str(), 0444), 0);
  WriteFile(temp.NativeOf(".hro"), "");
  ASSERT_EQ(::chmod(temp.NativeOf(".hro").c_str(), 0444), 0);
  platform_test::MakeFolder(temp.NativeOf(".dir"));
  EXPECT_EQ(*platform::ReadAttributes(temp.Lib("ro")), platform::kFileAttributeReadOnly);
  EXPECT_EQ(*platform::ReadAttributes(temp.Lib(".hro")),
            platform::kFileAttributeReadOnly | platform::kFileAttributeHidden);
  EXPECT_EQ(*platform::ReadAttributes(temp.Lib(".dir")),
            platform::kFileAttributeDirectory | platform::kFileAttributeHidden);
  // A trailing separator names the folder itself; "." and ".." are not hidden.
  EXPECT_EQ(*platform::ReadAttributes(temp.Lib(".dir\\")),
            platform::kFileAttributeDirectory | platform::kFileAttributeHidden);
  EXPECT_EQ(*platform::ReadAttributes(temp.Lib(".dir\\.")), platform::kFileAttributeDirectory);
  EXPECT_EQ(*platform::ReadAttributes(temp.Lib(".dir\\..")), platform::kFileAttributeDirectory);
  EXPECT_EQ(*platform::ReadAttributes(u"\\"_u16), platform::kFileAttributeDirectory);
}

TEST(FsEdges, RelativeNamesAreReadInTheCurrentDirectory) {
  TempFolder temp;
  WriteFile(temp.NativeOf(".rel"), "12345");
  InFolder inside(temp.Native());
  EXPECT_EQ(*platform::ReadAttributes(u".rel"_u16), platform::kFileAttributeHidden);
  EXPECT_EQ(platform::ReadFileInfo(u".rel"_u16)->size, 5u);
  EXPECT_EQ(platform::ReadAttributes(u"none"_u16).Error(), platform::kErrorFileNotFound);
}

TEST(FsEdges, WithoutABirthTimeCreationIsTheLastWrite) {
  // The process file system records no birth times.
  const auto info = platform::ReadFileInfo(u"\\proc\\self"_u16);
  ASSERT_TRUE(info);
  EXPECT_EQ(info->attributes & platform::kFileAttributeDirectory,
            platform::kFileAttributeDirectory);
  EXPECT_EQ(info->creationTime, info->lastWriteTime);
}

TEST(FsEdges, ADanglingLinkIsStillAnEntry) {
  TempFolder temp;
  ASSERT_EQ(::symlink(temp.NativeOf("nowhere").c_str(), temp.NativeOf("link").c_str()), 0);
  EXPECT_EQ(*platform::ReadAttributes(temp.Lib("link")), platform::kFileAttributeNormal);
  const auto info = platform::ReadFileInfo(temp.Lib("link"));
  ASSERT_TRUE(info);
  EXPECT_EQ(info->attributes, platform::kFileAttributeNormal);
  // A link to a folder is the folder.
  platform_test::MakeFolder(temp.NativeOf("dir"));
  ASSERT_EQ(::symlink(temp.NativeOf("dir").c_str(), temp.NativeOf("dirlink").c_str()), 0);
  EXPECT_EQ(*platform::ReadAttributes(temp.Lib("dirlink")), platform::kFileAttributeDirectory);
}

TEST(FsEdges, EmptyAndOverlongPathsFailWithTheirCodes) {
  TempFolder temp;
  EXPECT_EQ(platform::ReadAttributes(UTF16String()).Error(), platform::kErrorPathNotFound);
  EXPECT_EQ(platform::ReadFileInfo(UTF16String()).Error(), platform::kErrorPathNotFound);
  EXPECT_EQ(platform::ChangeDirectory(UTF16String()).Error(), platform::kErrorPathNotFound);
  EXPECT_EQ(platform::FreeSpace(UTF16String()).Error(), platform::kErrorPathNotFound);
  EXPECT_EQ(platform::CreateDirectories(UTF16String()).Error(), platform::kErrorBadPathname);
  EXPECT_EQ(platform::MoveToTrash(UTF16String()).Error(), platform::kErrorPathNotFound);
  EXPECT_EQ(platform::MoveNoReplace(UTF16String(), temp.Lib("x")).Error(),
            platform::kErrorPathNotFound);
  EXPECT_EQ(platform::MoveNoReplace(temp.Lib("x"), UTF16String()).Error(),
            platform::kErrorPathNotFound);
  EXPECT_EQ(
      platform::CopyFileContents(UTF16String(), temp.Lib("x"), nullptr, nullptr, nullptr, false)
          .Error(),
      platform::kErrorPathNotFound);
  EXPECT_EQ(
      platform::CopyFileContents(temp.Lib("x"), UTF16String(), nullptr, nullptr, nullptr, false)
          .Error(),
      platform::kErrorPathNotFound);

  const UTF16String tooLong = temp.Lib(kLongName);
  EXPECT_EQ(platform::ReadAttributes(tooLong).Error(), platform::kErrorFilenameExcedRange);
  EXPECT_EQ(platform::ReadFileInfo(tooLong).Error(), platform::kErrorFilenameExcedRange);
  EXPECT_EQ(platform::ChangeDirectory(tooLong).Error(), platform::kErrorFilenameExcedRange);
  EXPECT_EQ(platform::FreeSpace(tooLong).Error(), platform::kErrorFilenameExcedRange);
  EXPECT_EQ(platform::CreateDirectories(tooLong).Error(), platform::kErrorFilenameExcedRange);
  EXPECT_EQ(platform::MoveToTrash(tooLong).Error(), platform::kErrorFilenameExcedRange);
}

TEST(FsEdges, TimesBefore1970AreCountedFrom1601) {
  TempFolder temp;
  WriteFile(temp.NativeOf("old"), "x");
  // 1938-04-24 22:13:20 UTC, one billion seconds before 1970, plus 500 ns.
  const struct timespec times[2] = {{-1000000000, 500}, {-1000000000, 500}};
  ASSERT_EQ(::utimensat(AT_FDCWD, temp.NativeOf("old").c_str(), times, 0), 0);
  const auto info = platform::ReadFileInfo(temp.Lib("old"));
  ASSERT_TRUE(info);
  EXPECT_EQ(info->lastWriteTime, (11644473600ull - 1000000000ull) * 10000000ull + 5u);
  EXPECT_EQ(info->lastAccessTime, info->lastWriteTime);
  EXPECT_EQ(info->size, 1u);
}

TEST(FsEdges, FolderInfoHasSizeZero) {
  TempFolder temp;
  const auto info = platform::ReadFileInfo(temp.Lib());
  ASSERT_TRUE(info);
  EXPECT_EQ(info->attributes, platform::kFileAttributeDirectory);
  EXPECT_EQ(info->size, 0u);
}

// --- folders ----------------------------------------------------------------------

TEST(FsEdges, DoubledAndTrailingSeparatorsAreSkippedWhileCreating) {
  TempFolder temp;
  EXPECT_TRUE(platform::CreateDirectories(temp.Lib("a\\\\b\\")));
  struct stat st {};
  ASSERT_EQ(::stat(temp.NativeOf("a/b").c_str(), &st), 0);
  EXPECT_TRUE(S_ISDIR(st.st_mode));
}

TEST(FsEdges, CreatingThroughLinksAndTheirBreaks) {
  TempFolder temp;
  platform_test::MakeFolder(temp.NativeOf("real"));
  ASSERT_EQ(::symlink(temp.NativeOf("real").c_str(), temp.NativeOf("via").c_str()), 0);
  // A link to a folder is passed like the folder.
  EXPECT_TRUE(platform::CreateDirectories(temp.Lib("via\\inner")));
  EXPECT_TRUE(Exists(temp.NativeOf("real/inner")));
  // A dangling link stands in the way like a file.
  ASSERT_EQ(::symlink(temp.NativeOf("nowhere").c_str(), temp.NativeOf("broken").c_str()), 0);
  EXPECT_EQ(platform::CreateDirectories(temp.Lib("broken\\inner")).Error(),
            platform::kErrorPathNotFound);
  // A level too long for the system.
  EXPECT_EQ(platform::CreateDirectories(temp.Lib("ok\\" + kLongName + "\\x")).Error(),
            platform::kErrorFilenameExcedRange);
}

// --- listing ------------------------------------------------------------------------

TEST(FsEdges, ListingTellsFoldersLinksSpecialFilesAndHiddenNames) {
  TempFolder temp;
  WriteFile(temp.NativeOf("plain"), "");
  WriteFile(temp.NativeOf(".hidden"), "");
  platform_test::MakeFolder(temp.NativeOf("dir"));
  platform_test::MakeFolder(temp.NativeOf(".hdir"));
  ASSERT_EQ(::symlink(temp.NativeOf("dir").c_str(), temp.NativeOf("dirlink").c_str()), 0);
  ASSERT_EQ(::symlink(temp.NativeOf("nowhere").c_str(), temp.NativeOf("dangling").c_str()), 0);
  ASSERT_EQ(::mkfifo(temp.NativeOf("fifo").c_str(), 0600), 0);
  const std::string dir = std::to_string(platform::kFileAttributeDirectory);
  const std::string normal = std::to_string(platform::kFileAttributeNormal);
  const std::string hidden = std::to_string(platform::kFileAttributeHidden);
  const std::string hiddenDir =
      std::to_string(platform::kFileAttributeDirectory | platform::kFileAttributeHidden);
  const std::vector<std::string> expected = {
      ".hdir:" + hiddenDir, ".hidden:" + hidden, "dangling:" + normal, "dir:" + dir,
      "dirlink:" + dir,     "fifo:" + normal,    "plain:" + normal,
  };
  EXPECT_EQ(ListAll(temp.Lib("*")), expected);
  EXPECT_EQ(ListAll(temp.Lib("*.*")), expected);
  EXPECT_EQ(ListAll(temp.Lib("plain")), std::vector<std::string>{"plain:" + normal});
  EXPECT_EQ(ListAll(temp.Lib("f")), std::vector<std::string>{"<2>"});
  EXPECT_EQ(ListAll(temp.Lib("d*.*")),
            (std::vector<std::string>{"dangling:" + normal, "dir:" + dir, "dirlink:" + dir}));
  EXPECT_EQ(ListAll(temp.Lib("*f*")), std::vector<std::string>{"fifo:" + normal});
  EXPECT_EQ(ListAll(temp.Lib("*.h")), std::vector<std::string>{"<2>"});
  // A folder part with forward slashes and a trailing separator of its own.
  EXPECT_EQ(ListAll(tovtest::LibraryPath(temp.Native()) + u"/p?ain"_u16),
            std::vector<std::string>{"plain:" + normal});
}

TEST(FsEdges, ListingWithoutAFolderPartReadsTheCurrentDirectory) {
  TempFolder temp;
  WriteFile(temp.NativeOf("here.txt"), "");
  InFolder inside(temp.Native());
  const std::vector<std::string> expected{"here.txt:" +
                                          std::to_string(platform::kFileAttributeNormal)};
  EXPECT_EQ(ListAll(u"*.txt"_u16), expected);
  // A folder part that names no folder at all once the long-path prefix is gone.
  EXPECT_EQ(ListAll(u"\\\\?\\*.txt"_u16), expected);
}

TEST(FsEdges, ListingFailures) {
  TempFolder temp;
  WriteFile(temp.NativeOf("file"), "");
  platform::ListingEntry entry{};
  // No name pattern after the folder part.
  EXPECT_EQ(platform::OpenListing(temp.Lib() + u"\\"_u16, &entry).Error(),
            platform::kErrorFileNotFound);
  EXPECT_EQ(platform::OpenListing(UTF16String(), &entry).Error(), platform::kErrorFileNotFound);
  // A file where the folder should be.
  EXPECT_EQ(platform::OpenListing(temp.Lib("file\\*"), &entry).Error(),
            platform::kErrorPathNotFound);
  EXPECT_EQ(platform::OpenListing(temp.Lib(kLongName + "\\*"), &entry).Error(),
            platform::kErrorFilenameExcedRange);
  EXPECT_EQ(platform::NextListingEntry(nullptr, &entry).Error(), platform::kErrorInvalidHandle);
  platform::CloseListing(nullptr);  // ignored
}

// --- the pattern matcher ----------------------------------------------------------

TEST(FsEdges, PatternMatcherFollowsTheFileSystemsRules) {
  const struct {
    const char16_t* pattern;
    const char16_t* name;
    bool matches;
  } rows[] = {
      {u"*", u"anything", true},
      {u"*.*", u"nodot", true},
      {u"a*.*", u"abc", true},
      {u"a*.*", u"bbc", false},
      {u"x.", u"x", true},
      {u"x.", u"x.y", false},
      {u"y.", u"x", false},
      {u"*.", u"y.z", false},
      {u"?", u"", false},
      {u"a?c", u"abc", true},
      {u"a?c", u"ac", false},
      {u"*b*", u"aaa", false},
      {u"a*b*c", u"axxbyyc", true},
      {u"a*b", u"ab", true},
      {u"**", u"", true},
      {u"", u"", true},
      {u"", u"a", false},
      {u"ABC", u"abc", true},
      {u"\u00C4\u00D6", u"\u00E4\u00F6", true},  // Latin-1
      {u"\u00D7", u"\u00F7", false},             // the multiplication sign has no lower case
      {u"\u0391\u03A9", u"\u03B1\u03C9", true},  // Greek
      {u"\u03A2", u"\u03C2", false},             // no capital final sigma
      {u"\u0416\u042F", u"\u0436\u044F", true},  // Cyrillic
      {u"\u0401\u040E", u"\u0451\u045E", true},  // Cyrillic with marks
      {u"\u0100\u0136", u"\u0101\u0137", true},  // Latin Extended-A, even capitals
      {u"\u0139\u0147", u"\u013A\u0148", true},  // odd capitals
      {u"\u014A\u0176", u"\u014B\u0177", true},  // even capitals again
      {u"\u0101", u"\u0100", true},              // both fold to the small letter
      {u"\u0138", u"\u0139", false},
      {u"\u0178", u"\u00FF", false},  // outside the folded ranges
      {u"\u4E2D", u"\u4E2D", true},
      {u"\u00B5", u"\u00B5", true},  // below the folded Latin-1 range
      {u"\u00B5", u"\u03BC", false},
  };
  for (const auto& row : rows) {
    const UTF16String pattern = basalt::ToUTF16(row.pattern);
    const UTF16String name = basalt::ToUTF16(row.name);
    SCOPED_TRACE(U8(pattern) + " ~ " + U8(name));
    EXPECT_EQ(platform::MatchesPattern(pattern, name), row.matches);
  }
}

// --- current directory -------------------------------------------------------------

TEST(FsEdges, ACurrentDirectoryThatIsGoneCannotBeRead) {
  TempFolder temp;
  platform_test::MakeFolder(temp.NativeOf("doomed"));
  {
    InFolder inside(temp.NativeOf("doomed"));
    ASSERT_EQ(::rmdir(temp.NativeOf("doomed").c_str()), 0);
    EXPECT_EQ(platform::CurrentDirectory().Error(), platform::kErrorFileNotFound);
  }
  EXPECT_TRUE(platform::CurrentDirectory());
}

TEST(FsEdges, ACurrentDirectoryLongerThanPathMaxIsRead) {
  TempFolder temp;
  const std::string level(200, 'd');
  InFolder inside(temp.Native());
  int depth = 0;
  for (; depth < 25; ++depth) {
    ASSERT_EQ(::mkdir(level.c_str(), 0700), 0);
    ASSERT_EQ(::chdir(level.c_str()), 0);
  }
  const auto current = platform::CurrentDirectory();
  ASSERT_TRUE(current);
  EXPECT_GT(current->size(), 5000u);
  EXPECT_EQ(current->substr(0, temp.Lib().size()), temp.Lib());
  EXPECT_EQ(U8(current->substr(current->size() - 201)), "\\" + level);
  // Undo level by level: the whole path is too long for one call.
  for (; depth > 0; --depth) {
    ASSERT_EQ(::chdir(".."), 0);
    ASSERT_EQ(::rmdir(level.c_str()), 0);
  }
}

TEST(FsEdges, ChangingIntoAFileIsPathNotFound) {
  TempFolder temp;
  WriteFile(temp.NativeOf("file"), "");
  EXPECT_EQ(platform::ChangeDirectory(temp.Lib("file")).Error(), platform::kErrorPathNotFound);
}

// --- free space and temporary names ------------------------------------------------

TEST(FsEdges, FreeSpaceOfTheSystemAndItsFailures) {
  TempFolder temp;
  WriteFile(temp.NativeOf("file"), "");
  const auto free = platform::FreeSpace(temp.Lib());
  ASSERT_TRUE(free);
  EXPECT_GT(*free, 0u);
  EXPECT_EQ(platform::FreeSpace(temp.Lib("missing")).Error(), platform::kErrorPathNotFound);
  EXPECT_EQ(platform::FreeSpace(temp.Lib("file\\x")).Error(), platform::kErrorPathNotFound);
}

TEST(FsEdges, TempDirectoryDefaultsAndKeepsOneTrailingSeparator) {
  {
    ScopedEnv unset("TMPDIR", nullptr);
    EXPECT_EQ(*platform::TempDirectory(), u"\\tmp\\"_u16);
  }
  ScopedEnv root("TMPDIR", "/");
  EXPECT_EQ(*platform::TempDirectory(), u"\\"_u16);
}

TEST(FsEdges, TempFileNeedsAnExistingFolder) {
  TempFolder temp;
  WriteFile(temp.NativeOf("file"), "");
  EXPECT_EQ(platform::CreateTempFile(UTF16String(), u"abc"_u16).Error(), platform::kErrorDirectory);
  EXPECT_EQ(platform::CreateTempFile(temp.Lib("file"), u"abc"_u16).Error(),
            platform::kErrorDirectory);
}

TEST(FsEdges, TempFileTakesThreeUnitsOfThePrefixAndKeepsTheFoldersSeparator) {
  TempFolder temp;
  for (const UTF16String& folder : {temp.Lib() + u"\\"_u16, temp.Lib() + u"/"_u16}) {
    const auto made = platform::CreateTempFile(folder, u"prefix"_u16);
    ASSERT_TRUE(made);
    EXPECT_EQ(made->substr(0, folder.size() + 3), folder + u"pre"_u16);
    EXPECT_TRUE(Exists(temp.NativeOf(U8(made->substr(folder.size())))));
  }
}

TEST(FsEdges, TempFileWhenEveryNumberIsTakenSaysFileExists) {
  TempFolder temp;
  static const char kHex[] = "0123456789ABCDEF";
  for (unsigned number = 1; number <= 0xFFFF; ++number) {
    std::string hex;
    for (unsigned v = number; v != 0; v >>= 4) hex.insert(hex.begin(), kHex[v & 0xF]);
    const int fd = ::open(temp.NativeOf("t" + hex + ".tmp").c_str(), O_CREAT | O_WRONLY, 0600);
    ASSERT_GE(fd, 0);
    ::close(fd);
  }
  EXPECT_EQ(platform::CreateTempFile(temp.Lib(), u"t"_u16).Error(), platform::kErrorFileExists);
  // Number 0 is never used.
  EXPECT_FALSE(Exists(temp.NativeOf("t0.tmp")));
}

TEST(FsEdges, TempFileInAFolderAtTheLengthLimitFails) {
  TempFolder temp;
  // A folder whose path leaves no room for a file name below it.
  const std::string level(200, 'l');
  std::string native = temp.Native();
  InFolder inside(temp.Native());
  int depth = 0;
  while (native.size() + 1 + level.size() < PATH_MAX - 8) {
    ASSERT_EQ(::mkdir(level.c_str(), 0700), 0);
    ASSERT_EQ(::chdir(level.c_str()), 0);
    native += "/" + level;
    ++depth;
  }
  const std::string tail(PATH_MAX - 2 - native.size(), 't');
  ASSERT_EQ(::mkdir(tail.c_str(), 0700), 0);
  native += "/" + tail;  // PATH_MAX - 1 bytes: still a valid path
  EXPECT_EQ(platform::CreateTempFile(tovtest::LibraryPath(native), u"abc"_u16).Error(),
            platform::kErrorFilenameExcedRange);
  ASSERT_EQ(::rmdir(tail.c_str()), 0);
  for (; depth > 0; --depth) {
    ASSERT_EQ(::chdir(".."), 0);
    ASSERT_EQ(::rmdir(level.c_str()), 0);
  }
}

// --- copies ---------------------------------------------------------------------------

struct ProgressLog {
  std::vector<std::uint32_t> reasons;
  std::vector<std::uint64_t> done;
  std::uint32_t answer = 0;
  std::uint32_t answerAfter = 0;  // calls answered 0 before `answer`
};

std::uint32_t Progress(std::uint64_t total, std::uint64_t transferred, std::uint64_t streamSize,
                       std::uint64_t streamTransferred, std::uint32_t stream, std::uint32_t reason,
                       void* source, void* target, void* data) {
  auto* log = static_cast<ProgressLog*>(data);
  EXPECT_EQ(total, streamSize);
  EXPECT_EQ(transferred, streamTransferred);
  EXPECT_EQ(stream, 1u);
  EXPECT_EQ(source, nullptr);
  EXPECT_EQ(target, nullptr);
  log->reasons.push_back(reason);
  log->done.push_back(transferred);
  return log->reasons.size() > log->answerAfter ? log->answer : 0;
}

class FsCopy : public ::testing::Test {
 protected:
  void SetUp() override {
    // Three chunks of the copy's 1 MiB buffer, the last one short.
    big.assign((2u << 20) + 123, '\0');
    for (std::size_t i = 0; i < big.size(); ++i) big[i] = static_cast<char>(i * 7);
    platform_test::WriteFileBytes(temp.NativeOf("big"), big);
  }
  platform::Status Copy(ProgressLog* log, const int* cancel = nullptr) {
    return platform::CopyFileContents(temp.Lib("big"), temp.Lib("copy"),
                                      log == nullptr ? nullptr : Progress, log, cancel, false);
  }
  TempFolder temp;
  std::string big;
};

TEST_F(FsCopy, ProgressIsReportedBeforeTheFirstChunkAndAfterEach) {
  ProgressLog log;
  const int keepGoing = 0;
  ASSERT_TRUE(Copy(&log, &keepGoing));
  EXPECT_EQ(log.reasons, (std::vector<std::uint32_t>{1, 0, 0, 0}));
  EXPECT_EQ(log.done, (std::vector<std::uint64_t>{0, 1u << 20, 2u << 20, big.size()}));
  EXPECT_EQ(ReadFileBytes(temp.NativeOf("copy")), big);
}

TEST_F(FsCopy, QuietStopsTheReportsAndTheCopyGoesOn) {
  ProgressLog log;
  log.answer = 3;
  ASSERT_TRUE(Copy(&log));
  EXPECT_EQ(log.reasons, std::vector<std::uint32_t>{1});
  EXPECT_EQ(ReadFileBytes(temp.NativeOf("copy")), big);
}

TEST_F(FsCopy, CancelDeletesThePartialTarget) {
  ProgressLog log;
  log.answer = 1;
  log.answerAfter = 2;
  EXPECT_EQ(Copy(&log).Error(), platform::kErrorRequestAborted);
  EXPECT_EQ(log.reasons, (std::vector<std::uint32_t>{1, 0, 0}));
  EXPECT_FALSE(Exists(temp.NativeOf("copy")));
  // Cancelled before the first chunk.
  ProgressLog first;
  first.answer = 1;
  EXPECT_EQ(Copy(&first).Error(), platform::kErrorRequestAborted);
  EXPECT_FALSE(Exists(temp.NativeOf("copy")));
}

TEST_F(FsCopy, StopKeepsWhatWasCopied) {
  ProgressLog log;
  log.answer = 2;
  log.answerAfter = 1;
  EXPECT_EQ(Copy(&log).Error(), platform::kErrorRequestAborted);
  EXPECT_EQ(ReadFileBytes(temp.NativeOf("copy")), big.substr(0, 1u << 20));
}

TEST_F(FsCopy, PermissionBitsGoWithTheBytes) {
  ASSERT_EQ(::chmod(temp.NativeOf("big").c_str(), 0640), 0);
  ASSERT_TRUE(Copy(nullptr));
  struct stat st {};
  ASSERT_EQ(::stat(temp.NativeOf("copy").c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0640u);
}

std::uint32_t DiskFull(platform::FileHandle, std::uint32_t) { return platform::kErrorDiskFull; }

TEST_F(FsCopy, AFailedWriteDeletesThePartialTarget) {
  platform::SetWriteFaultForTesting(DiskFull);
  const platform::Status copied = Copy(nullptr);
  platform::SetWriteFaultForTesting(nullptr);
  EXPECT_EQ(copied.Error(), platform::kErrorDiskFull);
  EXPECT_FALSE(Exists(temp.NativeOf("copy")));
}

TEST_F(FsCopy, MissingSourceCopyOntoItselfAndMissingTargetFolder) {
  EXPECT_EQ(platform::CopyFileContents(temp.Lib("none"), temp.Lib("copy"), nullptr, nullptr,
                                       nullptr, false)
                .Error(),
            platform::kErrorFileNotFound);
  EXPECT_EQ(
      platform::CopyFileContents(temp.Lib("big"), temp.Lib("big"), nullptr, nullptr, nullptr, false)
          .Error(),
      platform::kErrorSharingViolation);
  ASSERT_EQ(::link(temp.NativeOf("big").c_str(), temp.NativeOf("hard").c_str()), 0);
  EXPECT_EQ(platform::CopyFileContents(temp.Lib("big"), temp.Lib("hard"), nullptr, nullptr, nullptr,
                                       false)
                .Error(),
            platform::kErrorSharingViolation);
  EXPECT_EQ(platform::CopyFileContents(temp.Lib("big"), temp.Lib("no\\copy"), nullptr, nullptr,
                                       nullptr, false)
                .Error(),
            platform::kErrorPathNotFound);
  EXPECT_EQ(ReadFileBytes(temp.NativeOf("big")), big);
}

TEST_F(FsCopy, ASourceHeldExclusivelyIsASharingViolation) {
  const auto held =
      platform::OpenFile(temp.Lib("big"), platform::kGenericWrite, 0, platform::kOpenExisting, 0);
  ASSERT_TRUE(held);
  EXPECT_EQ(Copy(nullptr).Error(), platform::kErrorSharingViolation);
  EXPECT_TRUE(platform::CloseFile(held->handle));
}

TEST_F(FsCopy, AnUnreadableSourceFailsAndLeavesNoTarget) {
  // The process's own memory file opens, but reading at address 0 fails.
  const UTF16String memory = u"\\proc\\self\\mem"_u16;
  const platform::Status copied =
      platform::CopyFileContents(memory, temp.Lib("copy"), nullptr, nullptr, nullptr, false);
  EXPECT_EQ(copied.Error(), platform::kErrorGenFailure);
  EXPECT_FALSE(Exists(temp.NativeOf("copy")));
}

// --- moves ------------------------------------------------------------------------------

TEST(FsEdges, MoveRenamesAndNeverReplaces) {
  TempFolder temp;
  WriteFile(temp.NativeOf("a"), "a");
  WriteFile(temp.NativeOf("b"), "b");
  EXPECT_EQ(platform::MoveNoReplace(temp.Lib("a"), temp.Lib("b")).Error(),
            platform::kErrorAlreadyExists);
  EXPECT_TRUE(platform::MoveNoReplace(temp.Lib("a"), temp.Lib("c")));
  EXPECT_EQ(ReadFileBytes(temp.NativeOf("c")), "a");
  EXPECT_EQ(platform::MoveNoReplace(temp.Lib("a"), temp.Lib("d")).Error(),
            platform::kErrorFileNotFound);
  EXPECT_EQ(platform::MoveNoReplace(temp.Lib("c"), temp.Lib("b\\d")).Error(),
            platform::kErrorPathNotFound);
}

// A folder on another file system than the temporary folder, when there is one.
bool OtherFileSystem(const TempFolder& temp, const std::string& candidate) {
  struct stat a {
  }, b{};
  return ::stat(candidate.c_str(), &b) == 0 && S_ISDIR(b.st_mode) &&
         ::access(candidate.c_str(), W_OK) == 0 && ::stat(temp.Native().c_str(), &a) == 0 &&
         a.st_dev != b.st_dev;
}

TEST(FsEdges, MoveAcrossFileSystemsCopiesFilesButNotFolders) {
  TempFolder here;
  if (!OtherFileSystem(here, "/dev/shm")) GTEST_SKIP() << "no second file system";
  std::unique_ptr<TempFolder> there;
  {
    ScopedEnv tmpdir("TMPDIR", "/dev/shm");
    there = std::make_unique<TempFolder>();
  }
  WriteFile(here.NativeOf("file"), "contents");
  ASSERT_EQ(::chmod(here.NativeOf("file").c_str(), 0600), 0);
  EXPECT_TRUE(platform::MoveNoReplace(here.Lib("file"), there->Lib("moved")));
  EXPECT_FALSE(Exists(here.NativeOf("file")));
  EXPECT_EQ(ReadFileBytes(there->NativeOf("moved")), "contents");
  // An existing target is never replaced.
  WriteFile(here.NativeOf("again"), "again");
  EXPECT_EQ(platform::MoveNoReplace(here.Lib("again"), there->Lib("moved")).Error(),
            platform::kErrorAlreadyExists);
  EXPECT_EQ(ReadFileBytes(there->NativeOf("moved")), "contents");
  EXPECT_EQ(ReadFileBytes(here.NativeOf("again")), "again");
  // A copy that fails leaves the source where it was.
  WriteFile(here.NativeOf("kept"), "kept");
  platform::SetWriteFaultForTesting(
      [](platform::FileHandle, std::uint32_t) { return platform::kErrorDiskFull; });
  const platform::Status full = platform::MoveNoReplace(here.Lib("kept"), there->Lib("kept"));
  platform::SetWriteFaultForTesting(nullptr);
  EXPECT_EQ(full.Error(), platform::kErrorDiskFull);
  EXPECT_EQ(ReadFileBytes(here.NativeOf("kept")), "kept");
  EXPECT_FALSE(Exists(there->NativeOf("kept")));
  // Folders do not move across.
  platform_test::MakeFolder(here.NativeOf("dir"));
  EXPECT_EQ(platform::MoveNoReplace(here.Lib("dir"), there->Lib("dir")).Error(),
            platform::kErrorNotSameDevice);
  EXPECT_TRUE(Exists(here.NativeOf("dir")));
}

// --- the trash ---------------------------------------------------------------------------

TEST(FsEdges, TrashKeepsARecordWithTheEncodedPathAndNumbersRepeatedNames) {
  TempFolder temp;
  ScopedEnv xdg("XDG_DATA_HOME", temp.NativeOf("data").c_str());
  const std::string name = "a b%\xC3\xA4~-_.txt";
  WriteFile(temp.NativeOf(name), "1");
  ASSERT_TRUE(platform::MoveToTrash(temp.Lib(name)));
  EXPECT_FALSE(Exists(temp.NativeOf(name)));
  EXPECT_EQ(ReadFileBytes(temp.NativeOf("data/Trash/files/" + name)), "1");
  const std::string record = ReadFileBytes(temp.NativeOf("data/Trash/info/" + name + ".trashinfo"));
  EXPECT_EQ(record.substr(0, 19), "[Trash Info]\nPath=/");
  EXPECT_NE(record.find("/a%20b%25%C3%A4~-_.txt\nDeletionDate="), std::string::npos) << record;
  EXPECT_EQ(record.back(), '\n');

  // The same name again gets ".2"; a name taken only among the files is skipped too.
  WriteFile(temp.NativeOf(name), "2");
  WriteFile(temp.NativeOf("data/Trash/files/" + name + ".2"), "stray");
  ASSERT_TRUE(platform::MoveToTrash(temp.Lib(name)));
  EXPECT_EQ(ReadFileBytes(temp.NativeOf("data/Trash/files/" + name + ".3")), "2");
  EXPECT_TRUE(Exists(temp.NativeOf("data/Trash/info/" + name + ".3.trashinfo")));
  EXPECT_FALSE(Exists(temp.NativeOf("data/Trash/info/" + name + ".2.trashinfo")));
}

TEST(FsEdges, TrashFallsBackToHomeAndMovesFoldersAndLinks) {
  TempFolder temp;
  ScopedEnv xdg("XDG_DATA_HOME", "relative/is/ignored");
  ScopedEnv home("HOME", temp.NativeOf("home").c_str());
  platform_test::MakeFolder(temp.NativeOf("dir/inner"));
  ASSERT_TRUE(platform::MoveToTrash(temp.Lib("dir")));
  EXPECT_TRUE(Exists(temp.NativeOf("home/.local/share/Trash/files/dir/inner")));
  ASSERT_EQ(::symlink("nowhere", temp.NativeOf("link").c_str()), 0);
  ASSERT_TRUE(platform::MoveToTrash(temp.Lib("link")));
  char target[32] = {};
  EXPECT_EQ(::readlink(temp.NativeOf("home/.local/share/Trash/files/link").c_str(), target,
                       sizeof target - 1),
            7);
  EXPECT_STREQ(target, "nowhere");
}

TEST(FsEdges, TrashThatCannotBeMadeFailsAndLeavesTheItem) {
  TempFolder temp;
  ScopedEnv xdg("XDG_DATA_HOME", temp.NativeOf("data").c_str());
  WriteFile(temp.NativeOf("item"), "");
  platform_test::MakeFolder(temp.NativeOf("data"));
  WriteFile(temp.NativeOf("data/Trash"), "a file in the way");
  EXPECT_EQ(platform::MoveToTrash(temp.Lib("item")).Error(), platform::kErrorPathNotFound);
  ASSERT_EQ(::unlink(temp.NativeOf("data/Trash").c_str()), 0);
  platform_test::MakeFolder(temp.NativeOf("data/Trash/files"));
  WriteFile(temp.NativeOf("data/Trash/info"), "a file in the way");
  EXPECT_EQ(platform::MoveToTrash(temp.Lib("item")).Error(), platform::kErrorPathNotFound);
  EXPECT_TRUE(Exists(temp.NativeOf("item")));
}

TEST(FsEdges, TheFolderHoldingTheTrashCannotGoIntoIt) {
  TempFolder temp;
  ScopedEnv xdg("XDG_DATA_HOME", temp.NativeOf("outer/data").c_str());
  platform_test::MakeFolder(temp.NativeOf("outer/data"));
  EXPECT_EQ(platform::MoveToTrash(temp.Lib("outer")).Error(), platform::kErrorInvalidParameter);
  EXPECT_TRUE(Exists(temp.NativeOf("outer/data/Trash/files")));
  // No record is left for an item that did not move.
  EXPECT_FALSE(Exists(temp.NativeOf("outer/data/Trash/info/outer.trashinfo")));
}

TEST(FsEdges, TrashTakesARelativeName) {
  TempFolder temp;
  ScopedEnv xdg("XDG_DATA_HOME", temp.NativeOf("data").c_str());
  WriteFile(temp.NativeOf("item"), "i");
  InFolder inside(temp.Native());
  ASSERT_TRUE(platform::MoveToTrash(u"item"_u16));
  EXPECT_EQ(ReadFileBytes(temp.NativeOf("data/Trash/files/item")), "i");
  const std::string record = ReadFileBytes(temp.NativeOf("data/Trash/info/item.trashinfo"));
  EXPECT_NE(record.find("\nPath=" + temp.Native() + "/item\n"), std::string::npos) << record;
}

TEST(FsEdges, TrashRecordNameTooLongFailsAndLeavesTheItem) {
  TempFolder temp;
  ScopedEnv xdg("XDG_DATA_HOME", temp.NativeOf("data").c_str());
  // Fits as a file name, not with ".trashinfo" after it.
  const std::string name(250, 'r');
  WriteFile(temp.NativeOf(name), "");
  EXPECT_EQ(platform::MoveToTrash(temp.Lib(name)).Error(), platform::kErrorFilenameExcedRange);
  EXPECT_TRUE(Exists(temp.NativeOf(name)));
}

TEST(FsEdges, TrashOnAnotherFileSystemIsThatMountsOwn) {
  TempFolder data;
  if (!OtherFileSystem(data, "/dev/shm")) GTEST_SKIP() << "no second file system";
  const std::string top = "/dev/shm/.Trash-" + std::to_string(::getuid());
  if (Exists(top)) GTEST_SKIP() << top << " exists already";
  std::unique_ptr<TempFolder> there;
  {
    ScopedEnv tmpdir("TMPDIR", "/dev/shm");
    there = std::make_unique<TempFolder>();
  }
  // No data home at all: the mount's own trash.
  ScopedEnv noXdg("XDG_DATA_HOME", nullptr);
  ScopedEnv home("HOME", "relative/home");
  const std::string relative = there->Native().substr(std::string("/dev/shm/").size());

  // Something else than a folder of this user in its place is not trusted.
  ASSERT_EQ(::symlink(there->Native().c_str(), top.c_str()), 0);
  WriteFile(there->NativeOf("item"), "x");
  EXPECT_EQ(platform::MoveToTrash(there->Lib("item")).Error(), platform::kErrorAccessDenied);
  ASSERT_EQ(::unlink(top.c_str()), 0);
  WriteFile(top, "");
  EXPECT_EQ(platform::MoveToTrash(there->Lib("item")).Error(), platform::kErrorAccessDenied);
  ASSERT_EQ(::unlink(top.c_str()), 0);
  if (::geteuid() == 0) {
    // A folder of another user.
    ASSERT_EQ(::mkdir(top.c_str(), 0700), 0);
    ASSERT_EQ(::chown(top.c_str(), 4242, 4242), 0);
    EXPECT_EQ(platform::MoveToTrash(there->Lib("item")).Error(), platform::kErrorAccessDenied);
    ASSERT_EQ(::rmdir(top.c_str()), 0);
  }

  ASSERT_TRUE(platform::MoveToTrash(there->Lib("item")));
  EXPECT_EQ(ReadFileBytes(top + "/files/item"), "x");
  const std::string record = ReadFileBytes(top + "/info/item.trashinfo");
  // The path is recorded relative to the mount.
  EXPECT_NE(record.find("\nPath=" + relative + "/item\n"), std::string::npos) << record;
  {
    // A data home on another file system, none of whose folders exist yet
    // below the root.
    const std::string missing = "/tov-missing-" + std::to_string(::getpid());
    ScopedEnv xdg("XDG_DATA_HOME", (missing + "/data//").c_str());
    WriteFile(there->NativeOf("second"), "y");
    ASSERT_TRUE(platform::MoveToTrash(there->Lib("second")));
    EXPECT_EQ(ReadFileBytes(top + "/files/second"), "y");
    EXPECT_FALSE(Exists(missing));
  }
  ::unlink((top + "/files/item").c_str());
  ::unlink((top + "/files/second").c_str());
  ::unlink((top + "/info/item.trashinfo").c_str());
  ::unlink((top + "/info/second.trashinfo").c_str());
  ::rmdir((top + "/files").c_str());
  ::rmdir((top + "/info").c_str());
  ::rmdir(top.c_str());
}

}  // namespace
