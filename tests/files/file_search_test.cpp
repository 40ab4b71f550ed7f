// File search: the list forms, the packed form and its FileList block, and
// the pattern rules.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "files/files_support.h"
#include "platform/fs.h"
#include "tovfoundation/files.h"

using namespace basalt::literals;
using tovtest::TempTree;
using tovtest::U16;
using tovtest::U8;

namespace {

struct CurrentDirectoryGuard {
  std::filesystem::path saved = std::filesystem::current_path();
  ~CurrentDirectoryGuard() { std::filesystem::current_path(saved); }
};

std::set<std::string> Take(std::vector<char*>& out) {
  std::set<std::string> names;
  for (char* p : out) {
    names.insert(p);
    delete[] p;
  }
  out.clear();
  return names;
}

std::set<std::string> Take(std::vector<unsigned short*>& out) {
  std::set<std::string> names;
  for (unsigned short* p : out) {
    names.insert(U8(UTF16String(p)));
    delete[] p;
  }
  out.clear();
  return names;
}

}  // namespace

TEST(FindFiles, PatternFindsFilesDirectlyInFolderNotFolders) {
  TempTree temp;
  CurrentDirectoryGuard guard;
  tovtest::WriteFile(temp.NativeOf("a.prs"), "");
  tovtest::WriteFile(temp.NativeOf("B.PRS"), "");
  tovtest::WriteFile(temp.NativeOf("c.txt"), "");
  tovtest::MakeFolder(temp.NativeOf("folder.prs"));
  tovtest::WriteFile(temp.NativeOf("folder.prs/deep.prs"), "");
  const std::string lib = U8(temp.Lib());
  std::vector<char*> out;
  EXPECT_EQ(Halyard::VUtilsFindFilesFromName(out, lib.c_str(), "*.prs", nullptr), 0u);
  EXPECT_EQ(Take(out), (std::set<std::string>{lib + "\\a.prs", lib + "\\B.PRS"}));
  EXPECT_EQ(std::filesystem::current_path(), guard.saved);  // restored
}

TEST(FindFiles, TrailingBackslashGivesOneSeparator) {
  TempTree temp;
  CurrentDirectoryGuard guard;
  tovtest::WriteFile(temp.NativeOf("a.prs"), "");
  const std::string lib = U8(temp.Lib());
  std::vector<char*> out;
  Halyard::VUtilsFindFilesFromName(out, (lib + "\\").c_str(), "*", nullptr);
  EXPECT_EQ(Take(out), std::set<std::string>{lib + "\\a.prs"});
  const UTF16String wideFolder = temp.Lib() + u"\\"_u16;
  const UTF16String star = u"*"_u16;
  std::vector<unsigned short*> wide;
  Halyard::VUtilsFindFilesFromName(wide, wideFolder.c_str(), star.c_str(), nullptr, true);
  EXPECT_EQ(Take(wide), std::set<std::string>{lib + "\\a.prs"});
}

TEST(FindFiles, WideFormGivesBareNamesWithoutFullPaths) {
  TempTree temp;
  CurrentDirectoryGuard guard;
  tovtest::WriteFile(temp.NativeOf("one.txt"), "");
  tovtest::WriteFile(temp.NativeOf("two.TXT"), "");
  const UTF16String folder = temp.Lib();
  const UTF16String pattern = u"*.txt"_u16;
  std::vector<unsigned short*> out;
  EXPECT_EQ(Halyard::VUtilsFindFilesFromName(out, folder.c_str(), pattern.c_str(), nullptr, false),
            0u);
  EXPECT_EQ(Take(out), (std::set<std::string>{"one.txt", "two.TXT"}));
}

TEST(FindFiles, NullFolderAppendsNothing) {
  std::vector<char*> out;
  EXPECT_EQ(Halyard::VUtilsFindFilesFromName(out, nullptr, "*", nullptr), 0u);
  EXPECT_TRUE(out.empty());
  std::vector<unsigned short*> wide;
  const UTF16String star = u"*"_u16;
  EXPECT_EQ(Halyard::VUtilsFindFilesFromName(wide, nullptr, star.c_str(), nullptr, true), 0u);
  EXPECT_TRUE(wide.empty());
}

TEST(FindFiles, MissingFolderSearchesTheCurrentDirectory) {
  TempTree temp;
  CurrentDirectoryGuard guard;
  tovtest::WriteFile(temp.NativeOf("here.txt"), "");
  std::filesystem::current_path(temp.Native());
  std::vector<char*> out;
  EXPECT_EQ(Halyard::VUtilsFindFilesFromName(out, "Q:\\missing", "*.txt", nullptr), 0u);
  EXPECT_EQ(Take(out), std::set<std::string>{"Q:\\missing\\here.txt"});
}

TEST(FindFiles, PatternWithFolderPartIsRelativeToFolder) {
  TempTree temp;
  CurrentDirectoryGuard guard;
  tovtest::MakeFolder(temp.NativeOf("sub"));
  tovtest::WriteFile(temp.NativeOf("sub/x.dat"), "");
  const std::string lib = U8(temp.Lib());
  std::vector<char*> out;
  Halyard::VUtilsFindFilesFromName(out, lib.c_str(), "sub\\*.DAT", nullptr);
  EXPECT_EQ(Take(out), std::set<std::string>{lib + "\\x.dat"});  // folder + name, as built
}

TEST(FindFilesPacked, NullSizeDoesNothing) {
  EXPECT_EQ(Halyard::VUtilsFindFilesFromName("Q:\\missing", "*", nullptr, nullptr, 0), 0u);
}

TEST(FindFilesPacked, MissingFolderIsPathNotFound) {
  TempTree temp;
  std::uint32_t size = 99;
  const std::string missing = U8(temp.Lib("missing"));
  EXPECT_EQ(Halyard::VUtilsFindFilesFromName(missing.c_str(), "*", nullptr, &size, 0),
            TOV::kErrPathNotFound);
  EXPECT_EQ(size, 99u);
}

TEST(FindFilesPacked, SizeQueryAndFillAgreeAndLayoutIsByteExact) {
  TempTree temp;
  CurrentDirectoryGuard guard;
  tovtest::WriteFile(temp.NativeOf("a.txt"), "");
  tovtest::WriteFile(temp.NativeOf("bb.txt"), "");
  tovtest::WriteFile(temp.NativeOf("ccc.txt"), "");
  const std::string lib = U8(temp.Lib());
  std::uint32_t size = 0;
  ASSERT_EQ(Halyard::VUtilsFindFilesFromName(lib.c_str(), "*.txt", nullptr, &size, 1), 0u);
  const std::size_t names = 3 * (lib.size() + 1) + (5 + 6 + 7) + 3;  // folder "\" name NUL
  EXPECT_EQ(size, 16u + 8u * 3u + names);
  EXPECT_EQ(std::filesystem::current_path(), guard.saved);

  std::vector<unsigned char> block(size + 8, 0xAB);
  auto* list = reinterpret_cast<Halyard::FileList*>(block.data());
  std::uint32_t size2 = 0;
  ASSERT_EQ(Halyard::VUtilsFindFilesFromName(lib.c_str(), "*.txt", list, &size2, 1), 0u);
  EXPECT_EQ(size2, size);
  ASSERT_EQ(list->count, 3u);
  // The order is the file system's; build the expected block by hand in it.
  std::vector<std::string> order;
  for (std::uint32_t i = 0; i < 3; ++i) order.emplace_back(list->names[i]);
  std::set<std::string> expectedSet{lib + "\\a.txt", lib + "\\bb.txt", lib + "\\ccc.txt"};
  EXPECT_EQ(std::set<std::string>(order.begin(), order.end()), expectedSet);
  std::vector<unsigned char> expected(size + 8, 0xAB);
  const std::uint32_t count = 3;
  std::memcpy(expected.data(), &count, 4);  // bytes 4..7 are not written
  const std::uintptr_t base = reinterpret_cast<std::uintptr_t>(block.data());
  const std::uintptr_t array = base + 16;
  std::memcpy(expected.data() + 8, &array, 8);
  std::size_t text = 16 + 8 * 3;
  for (std::size_t i = 0; i < 3; ++i) {
    const std::uintptr_t at = base + text;
    std::memcpy(expected.data() + 16 + 8 * i, &at, 8);
    std::memcpy(expected.data() + text, order[i].c_str(), order[i].size() + 1);
    text += order[i].size() + 1;
  }
  EXPECT_EQ(text, size);
  EXPECT_EQ(block, expected);
}

TEST(FindFilesPacked, FlagsZeroListsFilesOfTheWholeTree) {
  TempTree temp;
  CurrentDirectoryGuard guard;
  tovtest::MakeFolder(temp.NativeOf("d1/d2"));
  tovtest::WriteFile(temp.NativeOf("top"), "");
  tovtest::WriteFile(temp.NativeOf("d1/mid"), "");
  tovtest::WriteFile(temp.NativeOf("d1/d2/low"), "");
  const std::string lib = U8(temp.Lib());
  std::uint32_t size = 0;
  ASSERT_EQ(Halyard::VUtilsFindFilesFromName(lib.c_str(), "*", nullptr, &size, 0), 0u);
  std::vector<unsigned char> block(size);
  auto* list = reinterpret_cast<Halyard::FileList*>(block.data());
  ASSERT_EQ(Halyard::VUtilsFindFilesFromName(lib.c_str(), "*", list, &size, 0), 0u);
  std::set<std::string> found;
  for (std::uint32_t i = 0; i < list->count; ++i) found.insert(list->names[i]);
  EXPECT_EQ(found,
            (std::set<std::string>{lib + "\\top", lib + "\\d1\\mid", lib + "\\d1\\d2\\low"}));
  EXPECT_EQ(std::filesystem::current_path(), guard.saved);
}

TEST(FindFilesPacked, OtherFlagsListFilesAndFoldersWithoutDescending) {
  TempTree temp;
  CurrentDirectoryGuard guard;
  tovtest::MakeFolder(temp.NativeOf("d1"));
  tovtest::WriteFile(temp.NativeOf("top"), "");
  tovtest::WriteFile(temp.NativeOf("d1/mid"), "");
  const std::string lib = U8(temp.Lib()) + "\\";  // trailing separator: not doubled
  std::uint32_t size = 0;
  ASSERT_EQ(Halyard::VUtilsFindFilesFromName(lib.c_str(), "*", nullptr, &size, 7), 0u);
  std::vector<unsigned char> block(size);
  auto* list = reinterpret_cast<Halyard::FileList*>(block.data());
  ASSERT_EQ(Halyard::VUtilsFindFilesFromName(lib.c_str(), "*", list, &size, 7), 0u);
  std::set<std::string> found;
  for (std::uint32_t i = 0; i < list->count; ++i) found.insert(list->names[i]);
  EXPECT_EQ(found, (std::set<std::string>{lib + "top", lib + "d1"}));
}

TEST(FindFilesPacked, FailedSubfolderStopsAndLeavesDirectoryChanged) {
  TempTree temp;
  CurrentDirectoryGuard guard;
  tovtest::MakeFolder(temp.NativeOf("rel/sub"));
  tovtest::WriteFile(temp.NativeOf("rel/sub/f"), "");
  std::filesystem::current_path(temp.Native());
  // A relative folder: once inside "rel", "rel\sub" no longer resolves, the
  // subfolder search fails and the directory stays in "rel".
  std::uint32_t size = 5;
  EXPECT_EQ(Halyard::VUtilsFindFilesFromName("rel", "*", nullptr, &size, 0), TOV::kErrPathNotFound);
  EXPECT_EQ(size, 5u);
  EXPECT_EQ(std::filesystem::current_path(), std::filesystem::path(temp.NativeOf("rel")));
}

TEST(SearchPattern, MatchesAsWindowsDoes) {
  struct Row {
    const char* pattern;
    const char* name;
    bool match;
  };
  const Row rows[] = {
      {"*", "anything", true},  {"*.*", "noext", true},     {"*.*", "a.b", true},
      {"*.prs", "A.PRS", true}, {"*.prs", "a.prsx", false}, {"a?c", "abc", true},
      {"a?c", "ac", false},     {"x.*", "x", true},         {"x.*", "x.y", true},
      {"x.*", "xy", false},     {"x.", "x", true},          {"*.", "noext", true},
      {"*.", "a.b", false},     {"*a*", "BAnana", true},    {"*.txt", ".txt", true},
      {"abc", "ABC", true},     {"abc", "abcd", false},     {"??", "ab", true},
      {"??", "abc", false},     {"*z", "abc", false},       {"ä*", "Äpfel", true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.pattern) + " ~ " + row.name);
    EXPECT_EQ(tovimpl::platform::MatchesPattern(U16(row.pattern), U16(row.name)), row.match);
  }
}
