// Narrow text at the OS boundary on POSIX: narrow paths and module names are
// UTF-8, in every narrow entry point alike.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/platform_support.h"
#include "platform/text.h"
#include "tovfoundation/files.h"

using namespace basalt::literals;
namespace platform = tovimpl::platform;
using platform_test::TempFolder;
using platform_test::U8;

namespace {

TEST(NarrowText, IsUtf8BothWays) {
  EXPECT_EQ(platform::NarrowToUTF16("Gr\xC3\xBC\xC3\x9F"
                                    "e"),
            u"Gr\u00FC\u00DFe"_u16);
  EXPECT_EQ(platform::UTF16ToNarrow(u"Gr\u00FC\u00DFe"_u16),
            "Gr\xC3\xBC\xC3\x9F"
            "e");
  EXPECT_EQ(platform::NarrowToUTF16(""), UTF16String());
  // A byte that is not UTF-8 stands for U+FFFD.
  EXPECT_EQ(platform::NarrowToUTF16("\xFC"), u"\uFFFD"_u16);
}

TEST(NarrowText, PathQueriesTakeUtf8Names) {
  TempFolder temp;
  platform_test::WriteFile(temp.NativeOf("\xC3\xBC"), "");
  const std::string utf8 = U8(temp.Lib()) + "\\\xC3\xBC";
  const std::string latin1 = U8(temp.Lib()) + "\\\xFC";
  EXPECT_TRUE(Halyard::PathUtils::ExistsOnDisk(utf8));
  EXPECT_FALSE(Halyard::PathUtils::ExistsOnDisk(latin1));
  EXPECT_FALSE(Halyard::PathUtils::IsFolder(utf8));
}

TEST(NarrowText, FolderQueriesAndListingUseUtf8Names) {
  TempFolder temp;
  platform_test::WriteFile(temp.NativeOf("\xC3\xBC.txt"), "");
  const std::string base = U8(temp.Lib());
  ASSERT_TRUE(Halyard::Folder::CreateOnDisk(base + "\\\xC3\xA9t\xC3\xA9"));
  EXPECT_TRUE(platform_test::Exists(temp.NativeOf("\xC3\xA9t\xC3\xA9")));
  EXPECT_TRUE(Halyard::Folder::ExistsOnDisk(base + "\\\xC3\xA9t\xC3\xA9"));
  EXPECT_TRUE(Halyard::Folder::IsFolder(base + "\\\xC3\xA9t\xC3\xA9"));
  EXPECT_FALSE(Halyard::Folder::IsFolder(base + "\\\xE9t\xE9"));

  Halyard::NarrowFileNameList files;
  Halyard::NarrowFolderList folders;
  Halyard::Folder::CreateFolderObject(base).GetContainedFileAndFolderList(files, folders);
  EXPECT_EQ(files, std::vector<std::string>{base + "\\\xC3\xBC.txt"});
  ASSERT_EQ(folders.size(), 1u);
  EXPECT_EQ(folders[0].GetFullPath(), base + "\\\xC3\xA9t\xC3\xA9");
}

}  // namespace
