// The POSIX rules of path text: the POSIX spelling of library paths, and
// narrow paths in the thread's locale.
#include <gtest/gtest.h>
#include <locale.h>

#include <string>

#include "basalt/utf.h"
#include "files/files_support.h"
#include "tovfoundation/files.h"

using namespace basalt::literals;
namespace PU = Halyard::PathUtilities;

TEST(PathQueries, WideExistsOnDiskTestsThePathReducedToNarrow) {
  tovtest::TempTree temp;
  // In the "C" locale 'é' (U+00E9) reduces to the single byte 0xE9, which is
  // not the UTF-8 name the file system holds: the reduced path is not found.
  tovtest::WriteFile(temp.NativeOf("caf\xC3\xA9"), "x");
  const std::u16string wide = basalt::ToWide(temp.Lib("caf\xC3\xA9"));
  locale_t c = ::newlocale(LC_ALL_MASK, "C", nullptr);
  locale_t old = ::uselocale(c);
  EXPECT_FALSE(Halyard::PathUtils::ExistsOnDisk(wide));
  EXPECT_EQ(PU::ExistsOnDisk(temp.Lib("caf\xC3\xA9")), 1);  // the UTF-16 query finds it
  ::uselocale(old);
  ::freelocale(c);
  tovtest::WriteFile(temp.NativeOf("plain"), "x");
  EXPECT_TRUE(Halyard::PathUtils::ExistsOnDisk(basalt::ToWide(temp.Lib("plain"))));
  EXPECT_FALSE(Halyard::PathUtils::IsFolder(basalt::ToWide(temp.Lib("plain"))));
  EXPECT_TRUE(Halyard::PathUtils::IsFolder(basalt::ToWide(temp.Lib())));
}

TEST(PathProcess, ToPlatformPathGivesPosixSpelling) {
  EXPECT_EQ(PU::ToPlatformPath(u"\\tmp\\a.txt"_u16), u"/tmp/a.txt"_u16);
  EXPECT_EQ(PU::ToPlatformPath(u"\\\\?\\UNC\\srv\\s"_u16), u"//srv/s"_u16);
  EXPECT_EQ(PU::ToPlatformPath(u"\\\\?\\C:\\x"_u16), u"C:/x"_u16);
}
