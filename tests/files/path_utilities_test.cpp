// Path text operations: the examples of the header, the path table shared
// with the Windows build, the narrow forms and the exception texts.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "basalt/utf.h"
#include "common/child_process.h"
#include "files/files_support.h"
#include "tovfoundation/files.h"

using namespace basalt::literals;
namespace PU = Halyard::PathUtilities;
using tovtest::U16;
using tovtest::U8;

namespace {

struct PathRow {
  int line;
  std::vector<std::string> fields;
};

std::vector<PathRow> LoadTable() {
  std::ifstream in(std::string(TOV_TEST_SOURCE_DIR) + "/files/data/paths.tsv");
  std::vector<PathRow> rows;
  std::string line;
  int number = 0;
  bool header = true;
  while (std::getline(in, line)) {
    ++number;
    if (!line.empty() && line[0] == '#') continue;
    if (header) {
      header = false;
      continue;
    }
    PathRow row{number, {}};
    std::size_t start = 0;
    for (;;) {
      const auto tab = line.find('\t', start);
      row.fields.push_back(line.substr(start, tab - start));
      if (tab == std::string::npos) break;
      start = tab + 1;
    }
    rows.push_back(row);
  }
  return rows;
}

enum Column {
  kPath,
  kDrive,
  kFolder,
  kName,
  kExt,
  kFileName,
  kFolderName,
  kFullFolder,
  kRoot,
  kRemoveBackslash,
  kRemoveExtension,
  kAddBackslash,
  kNormalized,
  kColumns
};

}  // namespace

TEST(PathTable, HoldsAtLeastHundredPathsWithAllColumns) {
  const auto rows = LoadTable();
  EXPECT_GE(rows.size(), 100u);
  for (const auto& row : rows) {
    SCOPED_TRACE("paths.tsv line " + std::to_string(row.line));
    EXPECT_EQ(row.fields.size(), static_cast<std::size_t>(kColumns));
  }
}

TEST(PathTable, EveryOperationGivesTheTabledResult) {
  for (const auto& row : LoadTable()) {
    if (row.fields.size() != kColumns) continue;
    SCOPED_TRACE("paths.tsv line " + std::to_string(row.line) + ": \"" + row.fields[kPath] + "\"");
    const UTF16String path = U16(row.fields[kPath]);
    std::vector<unsigned short> d(path.size() + 1), f(path.size() + 1), n(path.size() + 1),
        e(path.size() + 1);
    PU::SplitPath(path, d.data(), f.data(), n.data(), e.data());
    EXPECT_EQ(U8(UTF16String(d.data())), row.fields[kDrive]);
    EXPECT_EQ(U8(UTF16String(f.data())), row.fields[kFolder]);
    EXPECT_EQ(U8(UTF16String(n.data())), row.fields[kName]);
    EXPECT_EQ(U8(UTF16String(e.data())), row.fields[kExt]);
    EXPECT_EQ(U8(PU::TOVGetFileTitle(path)), row.fields[kName]);
    EXPECT_EQ(U8(PU::TOVGetFileExtension(path)), row.fields[kExt]);
    EXPECT_EQ(U8(PU::TOVGetFolderPath(path)), row.fields[kFolder]);
    EXPECT_EQ(U8(PU::TOVGetFileName(path)), row.fields[kFileName]);
    EXPECT_EQ(U8(PU::TOVGetFolderName(path)), row.fields[kFolderName]);
    EXPECT_EQ(U8(PU::TOVGetFullFolderPath(path)), row.fields[kFullFolder]);
    EXPECT_EQ(U8(PU::TOVGetRootOrVolume(path)), row.fields[kRoot]);
    UTF16String edited = path;
    PU::RemoveTrailingslash(edited);
    EXPECT_EQ(U8(edited), row.fields[kRemoveBackslash]);
    edited = path;
    PU::RemoveExtension(edited);
    EXPECT_EQ(U8(edited), row.fields[kRemoveExtension]);
    edited = path;
    PU::AddTrailingslash(edited);
    EXPECT_EQ(U8(edited), row.fields[kAddBackslash]);
    EXPECT_EQ(U8(PU::ToNormalizedPath(path)), row.fields[kNormalized]);
    EXPECT_EQ(PU::IsNormalizedPath(path), 0);
    EXPECT_EQ(PU::IsAlias(path), 0);
    if (!path.empty() && row.fields[kPath].rfind("\\\\?\\", 0) != 0) {
      EXPECT_EQ(PU::RemovePathNormalization(PU::ToNormalizedPath(path)), path);
    }
    // The narrow forms agree with the wide ones.
    const std::string narrow = row.fields[kPath];
    EXPECT_EQ(Halyard::PathUtils::GetFileExtension(narrow), row.fields[kExt]);
    EXPECT_EQ(Halyard::PathUtils::GetFileName(narrow), row.fields[kFileName]);
    EXPECT_EQ(Halyard::PathUtils::GetFolderPath(narrow), row.fields[kFolder]);
    EXPECT_EQ(Halyard::PathUtils::GetFileTitleW(narrow), row.fields[kName]);
    EXPECT_EQ(Halyard::PathUtils::GetFolderName(narrow), row.fields[kFolderName]);
    EXPECT_EQ(Halyard::PathUtils::RemoveTrailingslash(narrow), row.fields[kRemoveBackslash]);
    EXPECT_EQ(Halyard::PathUtils::RemoveExtension(narrow), row.fields[kRemoveExtension]);
    if (!row.fields[kRoot].empty()) {
      EXPECT_EQ(Halyard::PathUtils::GetRootOrVolume(narrow), row.fields[kRoot]);
    }
  }
}

TEST(PathSplit, AccessorsOfTheHeaderExample) {
  const UTF16String path = u"C:\\a\\b\\c.txt"_u16;
  EXPECT_EQ(PU::TOVGetFileExtension(path), u".txt"_u16);
  EXPECT_EQ(PU::TOVGetFileName(path), u"c.txt"_u16);
  EXPECT_EQ(PU::TOVGetFileTitle(path), u"c"_u16);
  EXPECT_EQ(PU::TOVGetFolderPath(path), u"\\a\\b\\"_u16);
  EXPECT_EQ(PU::TOVGetFullFolderPath(path), u"C:\\a\\b\\"_u16);
  EXPECT_EQ(PU::TOVGetFolderName(path), u"b"_u16);
  EXPECT_EQ(PU::TOVGetRootOrVolume(path), u"C:\\"_u16);
}

TEST(PathSplit, FolderPathOfBareNameIsEmpty) {
  EXPECT_EQ(PU::TOVGetFolderPath(u"c.txt"_u16), UTF16String());
}

TEST(PathSplit, ExtensionOfPathWithoutDotIsEmpty) {
  EXPECT_EQ(PU::TOVGetFileExtension(u"C:\\a\\b"_u16), UTF16String());
}

TEST(PathSplit, FullFolderPathKeepsDriveOfDriveRelativePath) {
  EXPECT_EQ(PU::TOVGetFullFolderPath(u"C:\\a\\b\\c.txt"_u16), u"C:\\a\\b\\"_u16);
  EXPECT_EQ(PU::TOVGetFullFolderPath(u"C:c.txt"_u16), u"C:"_u16);
}

TEST(PathSplit, NullBuffersAreSkipped) {
  unsigned short name[16] = {};
  PU::SplitPath(u"C:\\x\\y.z"_u16, nullptr, nullptr, name, nullptr);
  EXPECT_EQ(UTF16String(name), u"y"_u16);
}

TEST(PathEdit, AddTrailingslashCases) {
  UTF16String empty;
  PU::AddTrailingslash(empty);
  EXPECT_EQ(empty, UTF16String());
  UTF16String plain = u"C:\\a"_u16;
  PU::AddTrailingslash(plain);
  EXPECT_EQ(plain, u"C:\\a\\"_u16);
  UTF16String already = u"C:\\a\\"_u16;
  PU::AddTrailingslash(already);
  EXPECT_EQ(already, u"C:\\a\\"_u16);
  UTF16String forward = u"C:/a/"_u16;
  PU::AddTrailingslash(forward);
  EXPECT_EQ(forward, u"C:/a/\\"_u16);
}

TEST(PathEdit, RemoveTrailingslashKeepsRoots) {
  for (const char* root : {"C:\\", "\\", "\\\\srv\\share", "\\\\srv"}) {
    SCOPED_TRACE(root);
    UTF16String path = U16(root);
    PU::RemoveTrailingslash(path);
    EXPECT_EQ(U8(path), root);
  }
  UTF16String path = u"C:\\a\\\\"_u16;
  PU::RemoveTrailingslash(path);
  EXPECT_EQ(path, u"C:\\a\\"_u16);  // one at a time
}

TEST(PathEdit, RemoveExtensionLeavesEmptyPathAlone) {
  UTF16String empty;
  PU::RemoveExtension(empty);
  EXPECT_TRUE(empty.empty());
  UTF16String dotted = u"C:\\a.b\\c"_u16;
  PU::RemoveExtension(dotted);
  EXPECT_EQ(dotted, u"C:\\a.b\\c"_u16);
}

TEST(PathCompose, MakePathSteps) {
  const UTF16String media = u"C:\\Media"_u16;
  const UTF16String clip = u"clip"_u16;
  const UTF16String wav = u".wav"_u16;
  EXPECT_EQ(PU::MakePath(nullptr, media.c_str(), clip.c_str(), wav.c_str()),
            u"C:\\Media\\clip.wav"_u16);
  const UTF16String d = u"D"_u16, x = u"x"_u16, f = u"f"_u16, txt = u"txt"_u16;
  EXPECT_EQ(PU::MakePath(d.c_str(), x.c_str(), f.c_str(), txt.c_str()), u"D:x\\f.txt"_u16);
  // Only the drive's first character is used.
  const UTF16String longDrive = u"E:\\ignored"_u16;
  EXPECT_EQ(PU::MakePath(longDrive.c_str(), x.c_str(), nullptr, nullptr), u"E:x\\"_u16);
  // No folder: the drive stays, the folder is empty.
  EXPECT_EQ(PU::MakePath(d.c_str(), nullptr, f.c_str(), nullptr), u"D:f"_u16);
  EXPECT_EQ(PU::MakePath(nullptr, nullptr, nullptr, nullptr), UTF16String());
  // A file name with its own extension is split; its folder part is dropped.
  const UTF16String nested = u"sub\\name.ext"_u16;
  EXPECT_EQ(PU::MakePath(nullptr, media.c_str(), nested.c_str(), nullptr),
            u"C:\\Media\\name.ext"_u16);
  // A folder without a drive is used unchanged.
  const UTF16String rel = u"a/b/"_u16;
  EXPECT_EQ(PU::MakePath(nullptr, rel.c_str(), f.c_str(), nullptr), u"a/b/f"_u16);
}

TEST(PathCompose, MakePathCutsAt260Units) {
  const UTF16String drive = u"C"_u16;
  const UTF16String longFolder = UTF16String(400, 'a');
  EXPECT_EQ(PU::MakePath(drive.c_str(), longFolder.c_str(), nullptr, nullptr),
            u"C:"_u16 + UTF16String(258, 'a'));
  // A folder split for its drive keeps 256 units of directory, then gets its separator.
  const UTF16String folder = u"C:\\"_u16 + longFolder;
  EXPECT_EQ(PU::MakePath(nullptr, folder.c_str(), nullptr, nullptr),
            u"C:\\"_u16 + UTF16String(255, 'a') + u"\\"_u16);
}

TEST(LongPathPrefix, ToNormalizedPathCases) {
  EXPECT_EQ(PU::ToNormalizedPath(u"C:\\x"_u16), u"\\\\?\\C:\\x"_u16);
  EXPECT_EQ(PU::ToNormalizedPath(u"\\\\?\\C:\\x"_u16), u"\\\\?\\C:\\x"_u16);
  EXPECT_EQ(PU::ToNormalizedPath(u"\\\\srv\\s"_u16), u"\\\\?\\UNC\\srv\\s"_u16);
  EXPECT_EQ(PU::ToNormalizedPath(UTF16String()), u"\\\\?\\"_u16);
}

TEST(LongPathPrefix, RemovePathNormalizationCases) {
  EXPECT_EQ(PU::RemovePathNormalization(u"\\\\?\\UNC\\srv\\share"_u16), u"\\\\srv\\share"_u16);
  EXPECT_EQ(PU::RemovePathNormalization(u"\\\\?\\C:\\x"_u16), u"C:\\x"_u16);
  EXPECT_EQ(PU::RemovePathNormalization(u"\\\\?\\"_u16), UTF16String());
  EXPECT_EQ(PU::RemovePathNormalization(u"C:\\x"_u16), u"C:\\x"_u16);
}

TEST(LongPathPrefix, RelativePathStartingWithUncDoesNotRoundTrip) {
  EXPECT_EQ(PU::ToNormalizedPath(u"UNC\\x"_u16), u"\\\\?\\UNC\\x"_u16);
  EXPECT_EQ(PU::RemovePathNormalization(PU::ToNormalizedPath(u"UNC\\x"_u16)), u"\\\\x"_u16);
}

TEST(LongPathPrefix, IsNormalizedPathIsFalseForEveryInput) {
  EXPECT_EQ(PU::IsNormalizedPath(UTF16String()), 0);
  EXPECT_EQ(PU::IsNormalizedPath(u"C:\\x"_u16), 0);
  EXPECT_EQ(PU::IsNormalizedPath(u"\\\\?\\C:\\x"_u16), 0);
  EXPECT_EQ(PU::IsNormalizedPath(u"\\\\?\\UNC\\srv\\s"_u16), 0);
}

TEST(PathQueries, IsAliasIsAlwaysFalse) {
  tovtest::TempTree temp;
  std::error_code ignored;  // where no link can be made, "link" is simply missing
  std::filesystem::create_directory_symlink(temp.Native(), temp.NativeOf("link"), ignored);
  EXPECT_EQ(PU::IsAlias(temp.Lib("link")), 0);
  EXPECT_FALSE(Halyard::PathUtils::IsAlias(std::string("x")));
  EXPECT_FALSE(Halyard::PathUtils::IsAlias(std::u16string(u"x")));
}

TEST(PathQueries, ExistsOnDiskAndIsFolder) {
  tovtest::TempTree temp;
  tovtest::WriteFile(temp.NativeOf("f.txt"), "x");
  EXPECT_EQ(PU::ExistsOnDisk(temp.Lib()), 1);
  EXPECT_EQ(PU::IsFolder(temp.Lib()), 1);
  EXPECT_EQ(PU::ExistsOnDisk(temp.Lib("f.txt")), 1);
  EXPECT_EQ(PU::IsFolder(temp.Lib("f.txt")), 0);
  EXPECT_EQ(PU::ExistsOnDisk(temp.Lib("missing")), 0);
  EXPECT_EQ(PU::IsFolder(temp.Lib("missing")), 0);
  // Long-path prefixed and forward-slash spellings name the same entries.
  EXPECT_EQ(PU::ExistsOnDisk(PU::ToNormalizedPath(temp.Lib("f.txt"))), 1);
  EXPECT_TRUE(Halyard::PathUtils::ExistsOnDisk(temp.NativeOf("f.txt")));
  EXPECT_TRUE(Halyard::PathUtils::IsFolder(temp.Native()));
  EXPECT_FALSE(Halyard::PathUtils::IsFolder(temp.NativeOf("f.txt")));
}

TEST(PathProcess, GetModuleNameIsTheExecutablesTitle) {
  EXPECT_EQ(PU::GetModuleName(), u"tovtests_files"_u16);
}

// Writes the module name into the file TOVTEST_MODULE_NAME_FILE names, for
// ModuleNameStopsAtTheLastDotOfTheName, which runs a copy of this executable
// under another name.
TEST(PathProcess, ModuleNameProbe) {
  const UTF16String name = PU::GetModuleName();
  EXPECT_FALSE(name.empty());
  if (const char* file = std::getenv("TOVTEST_MODULE_NAME_FILE"))
    tovtest::WriteFile(file, U8(name));
}

TEST(PathProcess, ModuleNameStopsAtTheLastDotOfTheName) {
  tovtest::TempTree temp;
  tovtest::MakeFolder(temp.NativeOf("app-1.2/bin"));
  const std::string copy = temp.NativeOf("app-1.2/bin/render.final.exe");
  std::filesystem::copy_file(tovtest::SelfPath(), copy);
  std::filesystem::permissions(copy, std::filesystem::perms::owner_all);
  const tovtest::ChildHandle child =
      tovtest::StartProcess(copy, {"--gtest_filter=PathProcess.ModuleNameProbe"},
                            {{"TOVTEST_MODULE_NAME_FILE", temp.NativeOf("module.txt")}});
  ASSERT_NE(child, -1);
  EXPECT_EQ(tovtest::WaitProcess(child), 0);
  EXPECT_EQ(tovtest::ReadFile(temp.NativeOf("module.txt")), "render.final");
}

TEST(PathProcess, RootOrVolumeWithoutArgumentIsHomeDrive) {
  {
    tovtest::ScopedEnv drive("HOMEDRIVE", "Q:");
    EXPECT_EQ(PU::TOVGetRootOrVolume(), u"Q:"_u16);
  }
  tovtest::ScopedEnv none("HOMEDRIVE", nullptr);
  EXPECT_EQ(PU::TOVGetRootOrVolume(), UTF16String());
}

TEST(PathNarrow, RootOrVolumeKeepsWhatWasLeft) {
  EXPECT_EQ(Halyard::PathUtils::GetRootOrVolume("C:\\a\\b"), "C:\\");
  EXPECT_EQ(Halyard::PathUtils::GetRootOrVolume("C:c.txt"), "C:");
  EXPECT_EQ(PU::TOVGetRootOrVolume(u"C:c.txt"_u16), UTF16String());
}

TEST(PathNarrow, SplitPathIntoBuffers) {
  char drive[8], folder[16], name[16], ext[8];
  Halyard::PathUtils::SplitPath(std::string("C:\\a\\b.c"), drive, folder, name, ext);
  EXPECT_STREQ(drive, "C:");
  EXPECT_STREQ(folder, "\\a\\");
  EXPECT_STREQ(name, "b");
  EXPECT_STREQ(ext, ".c");
  char16_t wname[16];
  Halyard::PathUtils::SplitPath(std::u16string(u"C:\\a\\b.c"), nullptr, nullptr, wname, nullptr);
  EXPECT_EQ(std::u16string(wname), u"b");
  EXPECT_EQ(Halyard::PathUtils::RemoveExtension(std::u16string(u"x.y")), u"x");
  EXPECT_EQ(Halyard::PathUtils::RemoveExtension(std::u16string()), u"");
  EXPECT_EQ(Halyard::PathUtils::RemoveTrailingslash(std::u16string(u"C:\\a\\")), u"C:\\a");
}

TEST(FileLayerExceptions, WhatTextsAreFixed) {
  EXPECT_STREQ(TOV::TOVException().what(), "class TOV::TOVException");
  EXPECT_STREQ(Halyard::TOVFileUtilsException().what(),
               "TOVFileUtilsException : Unknown exception");
  EXPECT_STREQ(Halyard::TOVNotAValidFolderPathException().what(),
               "TOVFileUtilsException: Folder path is not valid");
  EXPECT_STREQ(PU::PathUtilsException().what(), "PathUtilsException : Unknown exception");
  EXPECT_STREQ(PU::NotAValidFolderPath().what(), "PathUtilsException: Folder path is not valid");
  EXPECT_STREQ(PU::UnableToCreateFile().what(),
               "PathUtilsException: file / directory could not be created");
  EXPECT_STREQ(PU::UnableToGetTempFileName().what(),
               "PathUtilsException: Temporary file name could not be obtained");
}

TEST(FileLayerExceptions, ClassesDeriveAsDeclared) {
  try {
    throw PU::UnableToGetTempFileName();
  } catch (const PU::PathUtilsException& e) {
    const TOV::TOVException& root = e;
    EXPECT_STREQ(root.what(), "PathUtilsException: Temporary file name could not be obtained");
  }
  try {
    throw Halyard::TOVNotAValidFolderPathException();
  } catch (const Halyard::TOVFileUtilsException& e) {
    const std::exception& root = e;
    EXPECT_STREQ(root.what(), "TOVFileUtilsException: Folder path is not valid");
  }
}
