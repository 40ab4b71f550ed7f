// UTF16String and UTF8String: the literal, the unsigned traits, the wide form.
#include "basalt/strings.h"

#include <gtest/gtest.h>

#include <string>

#include "basalt/utf.h"

using namespace basalt::literals;

namespace {

TEST(BasaltStrings, LiteralGivesCodeUnits) {
  const UTF16String text = u"aé€😀"_u16;
  ASSERT_EQ(text.size(), 5u);
  EXPECT_EQ(text[0], 0x61);
  EXPECT_EQ(text[1], 0xE9);
  EXPECT_EQ(text[2], 0x20AC);
  EXPECT_EQ(text[3], 0xD83D);
  EXPECT_EQ(text[4], 0xDE00);
  EXPECT_EQ(text.c_str()[5], 0);
}

TEST(BasaltStrings, TraitsCompareUnsigned) {
  EXPECT_LT(u"a"_u16, u"\xFFFF"_u16);
  EXPECT_EQ(u"abc"_u16.compare(u"abd"_u16) < 0, true);
  EXPECT_EQ(u"abc"_u16.find(u"c"_u16), 2u);
}

TEST(BasaltStrings, WideRoundTrip) {
  const Halyard::WideString wide = u"C:\\Médias";
  EXPECT_EQ(basalt::ToWide(basalt::FromWide(wide)), wide);
}

}  // namespace
