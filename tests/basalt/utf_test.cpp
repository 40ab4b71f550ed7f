// UTF conversions and number text.
#include "basalt/utf.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

using namespace basalt::literals;

namespace {

TEST(BasaltUtf, ValidTextRoundTrips) {
  const UTF8String bytes =
      "Gr\xC3\xBC\xC3\x9F"
      "e \xE4\xB8\x96 \xF0\x9F\x8E\xAC";
  const UTF16String wide = basalt::UTF8to16(bytes);
  EXPECT_EQ(wide, u"Grüße 世 🎬"_u16);
  EXPECT_EQ(basalt::UTF16to8(wide), bytes);
}

TEST(BasaltUtf, EmbeddedNulIsText) {
  const UTF8String bytes("a\0b", 3);
  const UTF16String wide = basalt::UTF8to16(bytes);
  ASSERT_EQ(wide.size(), 3u);
  EXPECT_EQ(wide[1], 0);
  EXPECT_EQ(basalt::UTF16to8(wide), bytes);
}

TEST(BasaltUtf, InvalidUtf8BecomesReplacementPerMaximalSubpart) {
  struct Row {
    std::string input;
    UTF16String expected;
  } rows[] = {
      {"\x80", u"\xFFFD"_u16},                                // stray continuation
      {"\xC0\xAF", u"\xFFFD\xFFFD"_u16},                      // overlong lead never valid
      {"\xE0\x80\xAF", u"\xFFFD\xFFFD\xFFFD"_u16},            // overlong three-byte form
      {"\xED\xA0\x80", u"\xFFFD\xFFFD\xFFFD"_u16},            // encoded surrogate
      {"\xF4\x90\x80\x80", u"\xFFFD\xFFFD\xFFFD\xFFFD"_u16},  // above U+10FFFF
      {"\xE2\x82", u"\xFFFD"_u16},                            // truncated at the end
      {"\xE2\x82x", u"\xFFFDx"_u16},                          // truncated before ASCII
      {"\xF0\x9F\x8E", u"\xFFFD"_u16},                        // truncated four-byte form
      {"\xFF"
       "a",
       u"\xFFFD"
       "a"_u16},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.input.size());
    EXPECT_EQ(basalt::UTF8to16(row.input), row.expected);
  }
}

TEST(BasaltUtf, UnpairedSurrogatesBecomeReplacement) {
  const UTF16String lone = u"a"_u16 + UTF16String(1, 0xD800) + u"b"_u16 + UTF16String(1, 0xDC00);
  EXPECT_EQ(basalt::UTF16to8(lone),
            "a\xEF\xBF\xBD"
            "b\xEF\xBF\xBD");
  const UTF16String highAtEnd(1, 0xDBFF);
  EXPECT_EQ(basalt::UTF16to8(highAtEnd), "\xEF\xBF\xBD");
}

TEST(BasaltUtf, EveryScalarValueRoundTrips) {
  UTF16String all;
  for (std::uint32_t cp = 1; cp <= 0x10FFFF; ++cp) {
    if (cp >= 0xD800 && cp <= 0xDFFF) continue;
    if (cp < 0x10000) {
      all.push_back(static_cast<unsigned short>(cp));
    } else {
      all.push_back(static_cast<unsigned short>(0xD800 + ((cp - 0x10000) >> 10)));
      all.push_back(static_cast<unsigned short>(0xDC00 + ((cp - 0x10000) & 0x3FF)));
    }
  }
  EXPECT_EQ(basalt::UTF8to16(basalt::UTF16to8(all)), all);
}

TEST(BasaltUtf, AsciiToUtf16WidensEachByte) {
  EXPECT_EQ(basalt::AsciiToUTF16("WAVE", 4), u"WAVE"_u16);
  EXPECT_EQ(basalt::AsciiToUTF16("\xE9", 1), UTF16String(1, 0xE9));
  EXPECT_EQ(basalt::AsciiToUTF16("ab", 0), UTF16String());
}

TEST(BasaltNumberToString, TrimsTrailingZerosAndBarePoint) {
  EXPECT_EQ(basalt::NumberToString(2.5, 1, 3), u"2.5"_u16);
  EXPECT_EQ(basalt::NumberToString(2.0, 1, 3), u"2"_u16);
  EXPECT_EQ(basalt::NumberToString(10.0, 1, 0), u"10"_u16);
  EXPECT_EQ(basalt::NumberToString(0.12345, 1, 2), u"0.12"_u16);
  EXPECT_EQ(basalt::NumberToString(0.125, 1, 2), u"0.12"_u16);  // exact binary tie: even
  EXPECT_EQ(basalt::NumberToString(-1.75, 1, 1), u"-1.8"_u16);
  EXPECT_EQ(basalt::NumberToString(-0.001, 1, 2), u"0"_u16);
  EXPECT_EQ(basalt::NumberToString(1234567.0, 1, 2), u"1234567"_u16);  // no grouping
  EXPECT_EQ(basalt::NumberToString(3.5, 3, 1), u"003.5"_u16);
}

TEST(BasaltNumberToString, NonFiniteValues) {
  EXPECT_EQ(basalt::NumberToString(std::numeric_limits<double>::quiet_NaN(), 1, 2), u"nan"_u16);
  EXPECT_EQ(basalt::NumberToString(-std::numeric_limits<double>::infinity(), 1, 2), u"-inf"_u16);
}

}  // namespace
