// Folders: static queries, creation, free space, plain and filtered listings.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "files/files_support.h"
#include "platform/error.h"
#include "platform/fs.h"
#include "tovfoundation/files.h"

using namespace basalt::literals;
using Halyard::FileUtils::Folder;
using tovtest::TempTree;
using tovtest::U16;
using tovtest::U8;

namespace {

std::set<std::string> Names(const std::vector<UTF16String>& paths) {
  std::set<std::string> out;
  for (const auto& p : paths) out.insert(U8(p));
  return out;
}

std::vector<std::string> FolderPaths(const Halyard::FileUtils::FolderList& folders) {
  std::vector<std::string> out;
  for (const auto& f : folders) out.push_back(U8(f.GetFullPath()));
  return out;
}

}  // namespace

TEST(WideFolder, CreateFolderObjectAcceptsAnyPathEvenEmpty) {
  EXPECT_EQ(Folder::CreateFolderObject(UTF16String()).GetFullPath(), UTF16String());
  EXPECT_EQ(Folder::CreateFolderObject(u"Q:\\nowhere\\"_u16).GetFullPath(), u"Q:\\nowhere\\"_u16);
}

TEST(WideFolder, ExistsOnDiskAndIsFolderNeedAFolder) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("f"), "");
  EXPECT_TRUE(Folder::ExistsOnDisk(temp.Lib()));
  EXPECT_TRUE(Folder::IsFolder(temp.Lib()));
  EXPECT_FALSE(Folder::ExistsOnDisk(temp.Lib("f")));
  EXPECT_FALSE(Folder::IsFolder(temp.Lib("f")));
  EXPECT_FALSE(Folder::IsFolder(temp.Lib("missing")));
}

TEST(WideFolder, CreateOnDiskMakesMissingParents) {
  TempTree temp;
  EXPECT_TRUE(Folder::CreateOnDisk(temp.Lib("new\\deep\\path")));
  EXPECT_TRUE(Folder::IsFolder(temp.Lib("new\\deep\\path")));
}

TEST(WideFolder, CreateOnDiskOnExistingFolderFails) {
  TempTree temp;
  EXPECT_FALSE(Folder::CreateOnDisk(temp.Lib()));
  tovtest::WriteFile(temp.NativeOf("file"), "");
  EXPECT_FALSE(Folder::CreateOnDisk(temp.Lib("file")));
}

TEST(WideFolder, CreateOnDiskRejectsRelativePath) {
  EXPECT_FALSE(Folder::CreateOnDisk(u"relative\\folder"_u16));
  EXPECT_EQ(tovimpl::platform::CreateDirectories(u"relative\\folder"_u16).Error(),
            tovimpl::platform::kErrorBadPathname);
}

TEST(WideFolder, CreateOnDiskThroughAFileFails) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("file"), "");
  EXPECT_FALSE(Folder::CreateOnDisk(temp.Lib("file\\sub")));
}

TEST(WideFolder, GetFreeSpaceOnDiskOfExistingFolder) {
  TempTree temp;
  std::uint32_t error = 12345;
  const std::uint64_t free = Folder::GetFreeSpaceOnDisk(temp.Lib(), &error);
  EXPECT_GT(free, 0u);
  EXPECT_EQ(error, 12345u);  // untouched on success
}

TEST(WideFolder, GetFreeSpaceOnDiskOfMissingDriveIsPathNotFound) {
  std::uint32_t error = 0;
  EXPECT_EQ(Folder::GetFreeSpaceOnDisk(u"Q:\\nope\\deeper"_u16, &error), 0u);
  EXPECT_EQ(error, TOV::kErrPathNotFound);
  EXPECT_EQ(Folder::GetFreeSpaceOnDisk(u"Q:\\nope"_u16, nullptr), 0u);
}

TEST(WideFolder, GetFreeSpaceOnDiskMapsErrorsThroughTheTable) {
  struct Case {
    std::uint32_t platformError;
    std::uint32_t expected;
  };
  static std::uint32_t sError = 0;
  tovimpl::platform::SetFreeSpaceAnswerForTesting(
      [](const UTF16String&) -> tovimpl::platform::Result<std::uint64_t> {
        return tovimpl::platform::Status::Failure(sError);
      });
  for (const Case& c : {Case{2, TOV::kErrPathNotFound}, Case{3, TOV::kErrPathNotFound},
                        Case{5, TOV::kErrAccessDenied}, Case{183, TOV::kErrAlreadyExists},
                        Case{32, TOV::kErrGeneric}, Case{112, TOV::kErrGeneric}}) {
    SCOPED_TRACE(c.platformError);
    sError = c.platformError;
    std::uint32_t error = 0;
    EXPECT_EQ(Folder::GetFreeSpaceOnDisk(u"\\x"_u16, &error), 0u);
    EXPECT_EQ(error, c.expected);
  }
  tovimpl::platform::SetFreeSpaceAnswerForTesting(nullptr);
}

TEST(WideFolderListing, PlainListingSplitsFilesAndFolders) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("a.txt"), "");
  tovtest::WriteFile(temp.NativeOf(".hidden"), "");
  tovtest::MakeFolder(temp.NativeOf("sub"));
  tovtest::WriteFile(temp.NativeOf("sub/inner.txt"), "");
  std::vector<UTF16String> files{u"stale"_u16};
  Halyard::FileUtils::FolderList folders{Folder::CreateFolderObject(u"stale"_u16)};
  Folder::CreateFolderObject(temp.Lib()).GetContainedFileAndFolderList(files, folders);
  EXPECT_EQ(Names(files), (std::set<std::string>{U8(temp.Lib("a.txt")), U8(temp.Lib(".hidden"))}));
  EXPECT_EQ(FolderPaths(folders), std::vector<std::string>{U8(temp.Lib("sub"))});
}

TEST(WideFolderListing, TrailingSeparatorGivesSameEntriesWithOneSeparator) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("a.txt"), "");
  std::vector<UTF16String> plain, slashed;
  Halyard::FileUtils::FolderList f1, f2;
  Folder::CreateFolderObject(temp.Lib()).GetContainedFileAndFolderList(plain, f1);
  Folder::CreateFolderObject(temp.Lib() + u"\\"_u16).GetContainedFileAndFolderList(slashed, f2);
  ASSERT_EQ(plain.size(), 1u);
  EXPECT_EQ(plain, slashed);
  EXPECT_EQ(plain[0], temp.Lib() + u"\\a.txt"_u16);
}

TEST(WideFolderListing, MissingFolderListsNothing) {
  TempTree temp;
  std::vector<UTF16String> files{u"x"_u16};
  Halyard::FileUtils::FolderList folders;
  Folder::CreateFolderObject(temp.Lib("missing")).GetContainedFileAndFolderList(files, folders);
  EXPECT_TRUE(files.empty());
  EXPECT_TRUE(folders.empty());
  Folder::CreateFolderObject(temp.Lib("missing"))
      .GetContainedFileAndFolderList(nullptr, nullptr, files, folders, 1);
  EXPECT_TRUE(files.empty());
}

TEST(WideFolderListing, ExtensionFilterIsCaseSensitiveWithDot) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("a.dll"), "");
  tovtest::WriteFile(temp.NativeOf("b.DLL"), "");
  tovtest::WriteFile(temp.NativeOf("c.txt"), "");
  const Folder folder = Folder::CreateFolderObject(temp.Lib());
  std::vector<UTF16String> files;
  Halyard::FileUtils::FolderList folders;
  folder.GetContainedFileAndFolderList(nullptr, ".dll", files, folders, 0);
  EXPECT_EQ(Names(files), std::set<std::string>{U8(temp.Lib("a.dll"))});
  files.clear();
  folder.GetContainedFileAndFolderList(nullptr, "dll", files, folders, 0);
  EXPECT_TRUE(files.empty());
}

TEST(WideFolderListing, TitleFilterIsCaseInsensitiveSubstring) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("MyEncoder.dll"), "");
  tovtest::WriteFile(temp.NativeOf("Other.dll"), "");
  tovtest::WriteFile(temp.NativeOf("enc"), "");
  const Folder folder = Folder::CreateFolderObject(temp.Lib());
  std::vector<UTF16String> files;
  Halyard::FileUtils::FolderList folders;
  const UTF16String enc = u"enc"_u16;
  folder.GetContainedFileAndFolderList(enc.c_str(), nullptr, files, folders, 0);
  EXPECT_EQ(Names(files),
            (std::set<std::string>{U8(temp.Lib("MyEncoder.dll")), U8(temp.Lib("enc"))}));
  files.clear();
  const UTF16String empty;
  folder.GetContainedFileAndFolderList(empty.c_str(), nullptr, files, folders, 0);
  EXPECT_EQ(files.size(), 3u);
  files.clear();
  folder.GetContainedFileAndFolderList(enc.c_str(), ".dll", files, folders, 0);
  EXPECT_EQ(Names(files), std::set<std::string>{U8(temp.Lib("MyEncoder.dll"))});
}

TEST(WideFolderListing, FilteredListingAppendsAndListsDirectSubfoldersWhenNotRecursive) {
  TempTree temp;
  tovtest::MakeFolder(temp.NativeOf("empty"));
  tovtest::MakeFolder(temp.NativeOf("full"));
  tovtest::WriteFile(temp.NativeOf("full/x.dll"), "");
  tovtest::WriteFile(temp.NativeOf("y.dll"), "");
  std::vector<UTF16String> files{u"kept"_u16};
  Halyard::FileUtils::FolderList folders;
  Folder::CreateFolderObject(temp.Lib())
      .GetContainedFileAndFolderList(nullptr, ".dll", files, folders, 0);
  ASSERT_EQ(files.size(), 2u);
  EXPECT_EQ(files[0], u"kept"_u16);
  EXPECT_EQ(files[1], temp.Lib("y.dll"));
  auto paths = FolderPaths(folders);
  std::sort(paths.begin(), paths.end());
  EXPECT_EQ(paths, (std::vector<std::string>{U8(temp.Lib("empty")), U8(temp.Lib("full"))}));
}

TEST(WideFolderListing, RecursiveListingReportsOnlySubfoldersThatYieldedFiles) {
  TempTree temp;
  tovtest::MakeFolder(temp.NativeOf("empty"));
  tovtest::MakeFolder(temp.NativeOf("nomatch"));
  tovtest::WriteFile(temp.NativeOf("nomatch/readme.txt"), "");
  tovtest::MakeFolder(temp.NativeOf("a/b"));
  tovtest::WriteFile(temp.NativeOf("a/b/deep.dll"), "");
  tovtest::WriteFile(temp.NativeOf("a/mid.dll"), "");
  tovtest::WriteFile(temp.NativeOf("top.dll"), "");
  std::vector<UTF16String> files;
  Halyard::FileUtils::FolderList folders;
  Folder::CreateFolderObject(temp.Lib())
      .GetContainedFileAndFolderList(nullptr, ".dll", files, folders, 1);
  // Files of a folder come after everything found below it.
  ASSERT_EQ(files.size(), 3u);
  EXPECT_EQ(files[0], temp.Lib("a\\b\\deep.dll"));
  EXPECT_EQ(files[1], temp.Lib("a\\mid.dll"));
  EXPECT_EQ(files[2], temp.Lib("top.dll"));
  // A reported subfolder comes after the folders reported from inside it.
  EXPECT_EQ(FolderPaths(folders),
            (std::vector<std::string>{U8(temp.Lib("a\\b")), U8(temp.Lib("a"))}));
}

TEST(WideFolderListing, RecursiveOrderFollowsTheFileSystemBetweenSiblings) {
  TempTree temp;
  for (const char* name : {"s1", "s2", "s3"}) {
    tovtest::MakeFolder(temp.NativeOf(name));
    tovtest::WriteFile(temp.NativeOf(std::string(name) + "/f.txt"), "");
  }
  std::vector<UTF16String> files;
  Halyard::FileUtils::FolderList plainFolders;
  const Folder root = Folder::CreateFolderObject(temp.Lib());
  root.GetContainedFileAndFolderList(files, plainFolders);
  files.clear();
  Halyard::FileUtils::FolderList folders;
  root.GetContainedFileAndFolderList(nullptr, nullptr, files, folders, 1);
  // Same order as the plain listing gives the subfolders; each subfolder's
  // file precedes it.
  ASSERT_EQ(folders.size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(folders[i].GetFullPath(), plainFolders[i].GetFullPath());
    EXPECT_EQ(files[i], plainFolders[i].GetFullPath() + u"\\f.txt"_u16);
  }
}

TEST(WideFolderListing, GetDynamicLoadObjectsFillsFilesOnly) {
  TempTree temp;
  tovtest::MakeFolder(temp.NativeOf("plugins"));
  tovtest::WriteFile(temp.NativeOf("plugins/Enc.prm"), "");
  tovtest::WriteFile(temp.NativeOf("plugins/Dec.prm"), "");
  std::vector<UTF16String> files;
  const UTF16String title = u"ENC"_u16;
  Folder::CreateFolderObject(temp.Lib()).GetDynamicLoadObjects(title.c_str(), ".prm", files, 1);
  EXPECT_EQ(files, std::vector<UTF16String>{temp.Lib("plugins\\Enc.prm")});
}

// --- the narrow folder ------------------------------------------------------

TEST(NarrowFolder, CreateFolderObjectThrowsUnlessFolder) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("f"), "");
  EXPECT_NO_THROW(Halyard::Folder::CreateFolderObject(temp.Native()));
  EXPECT_THROW(Halyard::Folder::CreateFolderObject(temp.NativeOf("f")),
               Halyard::TOVNotAValidFolderPathException);
  EXPECT_THROW(Halyard::Folder::CreateFolderObject(temp.NativeOf("missing")),
               Halyard::TOVNotAValidFolderPathException);
  EXPECT_THROW(Halyard::Folder::CreateFolderObject(""), Halyard::TOVNotAValidFolderPathException);
}

TEST(NarrowFolder, StaticQueries) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("f"), "");
  // Narrow paths in the library's spelling (backslashes), as on Windows.
  EXPECT_TRUE(Halyard::Folder::ExistsOnDisk(U8(temp.Lib())));
  EXPECT_FALSE(Halyard::Folder::ExistsOnDisk(U8(temp.Lib("f"))));
  EXPECT_TRUE(Halyard::Folder::IsFolder(U8(temp.Lib())));
  EXPECT_FALSE(Halyard::Folder::IsFolder(U8(temp.Lib("f"))));
  EXPECT_FALSE(Halyard::Folder::CreateOnDisk(U8(temp.Lib())));
  EXPECT_TRUE(Halyard::Folder::CreateOnDisk(U8(temp.Lib("x/y/z"))));
  EXPECT_TRUE(Halyard::Folder::IsFolder(U8(temp.Lib("x/y/z"))));
}

TEST(NarrowFolder, PlainListingOfNonFolderThrows) {
  TempTree temp;
  auto folder = Halyard::Folder::CreateFolderObject(temp.Native());
  std::filesystem::remove(temp.Native());
  std::vector<std::string> files;
  Halyard::NarrowFolderList folders;
  EXPECT_THROW(folder.GetContainedFileAndFolderList(files, folders),
               Halyard::TOVNotAValidFolderPathException);
}

TEST(NarrowFolder, PlainListingJoinsWithExactlyOneBackslash) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("a.txt"), "");
  tovtest::MakeFolder(temp.NativeOf("sub"));
  const std::string lib = U8(temp.Lib());
  for (const std::string& stored : {lib, lib + "\\"}) {
    SCOPED_TRACE(stored);
    auto folder = Halyard::Folder::CreateFolderObject(stored);
    std::vector<std::string> files;
    Halyard::NarrowFolderList folders;
    folder.GetContainedFileAndFolderList(files, folders);
    EXPECT_EQ(files, std::vector<std::string>{lib + "\\a.txt"});
    ASSERT_EQ(folders.size(), 1u);
    EXPECT_EQ(folders[0].GetFullPath(), lib + "\\sub");
  }
}

TEST(NarrowFolder, ExtensionFilterIgnoresCaseAndKeepsAllSubfolders) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("a.dll"), "");
  tovtest::WriteFile(temp.NativeOf("b.DLL"), "");
  tovtest::WriteFile(temp.NativeOf("c.txt"), "");
  tovtest::MakeFolder(temp.NativeOf("sub"));
  tovtest::WriteFile(temp.NativeOf("sub/d.dll"), "");
  std::vector<std::string> files;
  Halyard::NarrowFolderList folders;
  Halyard::Folder::CreateFolderObject(U8(temp.Lib()))
      .GetContainedFileAndFolderList(std::string(".dll"), files, folders);
  std::sort(files.begin(), files.end());
  const std::string lib = U8(temp.Lib());
  EXPECT_EQ(files,
            (std::vector<std::string>{lib + "\\a.dll", lib + "\\b.DLL"}));  // never recursive
  ASSERT_EQ(folders.size(), 1u);
}

TEST(NarrowFolder, TitleFilterListingRecursesLikeTheWideOne) {
  TempTree temp;
  tovtest::MakeFolder(temp.NativeOf("a"));
  tovtest::MakeFolder(temp.NativeOf("none"));
  tovtest::WriteFile(temp.NativeOf("a/MyEncoder.dll"), "");
  tovtest::WriteFile(temp.NativeOf("none/other"), "");
  tovtest::WriteFile(temp.NativeOf("ENCODE.txt"), "");
  std::vector<std::string> files{"kept"};
  Halyard::NarrowFolderList folders;
  Halyard::Folder::CreateFolderObject(U8(temp.Lib()))
      .GetContainedFileAndFolderList("enc", files, folders, 1);
  const std::string lib = U8(temp.Lib());
  EXPECT_EQ(files,
            (std::vector<std::string>{"kept", lib + "\\a\\MyEncoder.dll", lib + "\\ENCODE.txt"}));
  ASSERT_EQ(folders.size(), 1u);
  EXPECT_EQ(folders[0].GetFullPath(), lib + "\\a");
  files.clear();
  folders.clear();
  Halyard::Folder::CreateFolderObject(U8(temp.Lib()))
      .GetContainedFileAndFolderList(static_cast<const char*>(nullptr), files, folders, 0);
  EXPECT_EQ(files.size(), 1u);
  EXPECT_EQ(folders.size(), 2u);
}
