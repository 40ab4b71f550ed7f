// String utilities on POSIX systems: the platform's narrow text is UTF-8.
#include <gtest/gtest.h>

#include "tovfoundation/text.h"

using namespace basalt::literals;
namespace SU = Halyard::StringUtils;

namespace {

TEST(StringUtilsConversions, PlatformStringIsUtf8OnPosix) {
  EXPECT_EQ(SU::PlatformStringToUTF16("C:\\M\xC3\xA9"
                                      "dias \xE4\xB8\x96"),
            u"C:\\Médias 世"_u16);
  EXPECT_EQ(SU::PlatformStringToUTF16(""), UTF16String());
  EXPECT_EQ(SU::PlatformStringToUTF16(nullptr), UTF16String());
  EXPECT_EQ(SU::PlatformStringToUTF16("a\xFF"
                                      "b"),
            u"a\xFFFD"
            "b"_u16);
}

}  // namespace
