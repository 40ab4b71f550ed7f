// Multibyte text in the thread's current locale: VUtilsASCIIStrToUnicode,
// VUtilsUnicodeToASCIIStr and the OS layer's conversions under them. Every
// test sets its locale with uselocale, never the process's.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "platform/error.h"
#include "platform/text.h"
#include "text/text_test_support.h"
#include "tovfoundation/text.h"

namespace {

using tovtest::ScopedThreadLocale;

constexpr const char* kUtf8Locale = "C.UTF-8";

// --- VUtilsASCIIStrToUnicode ---------------------------------------------------

TEST(MultiByteToUnicode, ThreeByteTextReportsFourWithNul) {
  ScopedThreadLocale locale("C");
  ASSERT_TRUE(locale.ok());
  std::uint32_t length = 0;
  EXPECT_EQ(Halyard::VUtilsASCIIStrToUnicode("abc", nullptr, &length), 0u);
  EXPECT_EQ(length, 4u);
  char16_t buffer[8];
  std::fill(std::begin(buffer), std::end(buffer), u'#');
  EXPECT_EQ(Halyard::VUtilsASCIIStrToUnicode("abc", buffer, &length), 0u);
  EXPECT_EQ(length, 4u);
  EXPECT_EQ(std::u16string(buffer, 4), std::u16string(u"abc\0", 4));
  EXPECT_EQ(buffer[4], u'#');
}

TEST(MultiByteToUnicode, NullArgumentsAreInvalid) {
  std::uint32_t length = 77;
  char16_t buffer[4];
  EXPECT_EQ(Halyard::VUtilsASCIIStrToUnicode(nullptr, buffer, &length), 0xC0080001u);
  EXPECT_EQ(length, 77u);
  EXPECT_EQ(Halyard::VUtilsASCIIStrToUnicode("abc", buffer, nullptr), 0xC0080001u);
}

TEST(MultiByteToUnicode, EmptyTextReportsOneForNul) {
  std::uint32_t length = 0;
  char16_t buffer[2] = {u'#', u'#'};
  EXPECT_EQ(Halyard::VUtilsASCIIStrToUnicode("", buffer, &length), 0u);
  EXPECT_EQ(length, 1u);
  EXPECT_EQ(buffer[0], u'\0');
  EXPECT_EQ(buffer[1], u'#');
}

TEST(MultiByteToUnicode, Utf8LocaleCountsUtf16Units) {
  ScopedThreadLocale locale(kUtf8Locale);
  ASSERT_TRUE(locale.ok());
  // é (2 bytes) is one unit, 世 (3 bytes) one, 🎬 (4 bytes) two.
  const char* text = "\xC3\xA9\xE4\xB8\x96\xF0\x9F\x8E\xAC!";
  std::uint32_t length = 0;
  EXPECT_EQ(Halyard::VUtilsASCIIStrToUnicode(text, nullptr, &length), 0u);
  EXPECT_EQ(length, 6u);
  char16_t buffer[8];
  EXPECT_EQ(Halyard::VUtilsASCIIStrToUnicode(text, buffer, &length), 0u);
  EXPECT_EQ(std::u16string(buffer), u"é世🎬!");
  EXPECT_EQ(Halyard::VUtilsASCIIStrToUnicode(text), u"é世🎬!");
}

TEST(MultiByteToUnicode, InvalidSequenceStoresAllOnesAndFails) {
  ScopedThreadLocale locale(kUtf8Locale);
  ASSERT_TRUE(locale.ok());
  std::uint32_t length = 0;
  EXPECT_EQ(Halyard::VUtilsASCIIStrToUnicode("a\xFF"
                                             "b",
                                             nullptr, &length),
            0xC0080003u);
  EXPECT_EQ(length, 0xFFFFFFFFu);
  EXPECT_EQ(Halyard::VUtilsASCIIStrToUnicode("\xC3", nullptr, &length), 0xC0080003u);
  EXPECT_EQ(length, 0xFFFFFFFFu);
  EXPECT_EQ(Halyard::VUtilsASCIIStrToUnicode("a\xFF"
                                             "b"),
            u"");
}

TEST(MultiByteToUnicode, CLocaleMapsHighBytesToLatin1) {
  for (const char* name : {"C", "POSIX"}) {
    SCOPED_TRACE(name);
    ScopedThreadLocale locale(name);
    ASSERT_TRUE(locale.ok());
    std::uint32_t length = 0;
    char16_t buffer[8];
    EXPECT_EQ(Halyard::VUtilsASCIIStrToUnicode("caf\xE9\x80\xFF", buffer, &length), 0u);
    EXPECT_EQ(length, 7u);
    EXPECT_EQ(std::u16string(buffer), u"caf\u00E9\u0080\u00FF");
  }
}

TEST(MultiByteToUnicode, StringFormGivesTextAndEmptyForNull) {
  ScopedThreadLocale locale("C");
  EXPECT_EQ(Halyard::VUtilsASCIIStrToUnicode("clip"), u"clip");
  EXPECT_EQ(Halyard::VUtilsASCIIStrToUnicode(""), u"");
  EXPECT_EQ(Halyard::VUtilsASCIIStrToUnicode(static_cast<const char*>(nullptr)), u"");
}

// --- VUtilsUnicodeToASCIIStr -----------------------------------------------------------

TEST(UnicodeToMultiByte, ThreeUnitTextReportsThreeWithoutNul) {
  ScopedThreadLocale locale("C");
  ASSERT_TRUE(locale.ok());
  std::uint32_t length = 0;
  EXPECT_EQ(Halyard::VUtilsUnicodeToASCIIStr(u"abc", nullptr, &length), 0u);
  EXPECT_EQ(length, 3u);
  char buffer[8];
  std::memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(Halyard::VUtilsUnicodeToASCIIStr(u"abc", buffer, &length), 0u);
  EXPECT_EQ(length, 3u);
  EXPECT_EQ(std::string(buffer, 5), std::string("abc\0#", 5));
}

TEST(UnicodeToMultiByte, NullArgumentsAreInvalid) {
  std::uint32_t length = 77;
  char buffer[4];
  EXPECT_EQ(Halyard::VUtilsUnicodeToASCIIStr(nullptr, buffer, &length), 0xC0080001u);
  EXPECT_EQ(length, 77u);
  EXPECT_EQ(Halyard::VUtilsUnicodeToASCIIStr(u"abc", buffer, nullptr), 0xC0080001u);
}

TEST(UnicodeToMultiByte, Utf8LocaleWritesUtf8) {
  ScopedThreadLocale locale(kUtf8Locale);
  ASSERT_TRUE(locale.ok());
  std::uint32_t length = 0;
  EXPECT_EQ(Halyard::VUtilsUnicodeToASCIIStr(u"é世🎬!", nullptr, &length), 0u);
  EXPECT_EQ(length, 10u);
  char buffer[16];
  EXPECT_EQ(Halyard::VUtilsUnicodeToASCIIStr(u"é世🎬!", buffer, &length), 0u);
  EXPECT_STREQ(buffer, "\xC3\xA9\xE4\xB8\x96\xF0\x9F\x8E\xAC!");
  EXPECT_EQ(Halyard::VUtilsUnicodeToASCIIStr(u"é世🎬!"), "\xC3\xA9\xE4\xB8\x96\xF0\x9F\x8E\xAC!");
}

TEST(UnicodeToMultiByte, UnrepresentableTextStoresAllOnesAndFails) {
  {
    ScopedThreadLocale locale("C");
    std::uint32_t length = 0;
    EXPECT_EQ(Halyard::VUtilsUnicodeToASCIIStr(u"a\u0100", nullptr, &length), 0xC00B0002u);
    EXPECT_EQ(length, 0xFFFFFFFFu);
    EXPECT_EQ(Halyard::VUtilsUnicodeToASCIIStr(u"a\u0100"), "");
  }
  {
    ScopedThreadLocale locale(kUtf8Locale);
    const char16_t lone[] = {u'a', static_cast<char16_t>(0xD800), u'b', 0};
    std::uint32_t length = 0;
    EXPECT_EQ(Halyard::VUtilsUnicodeToASCIIStr(lone, nullptr, &length), 0xC00B0002u);
    EXPECT_EQ(length, 0xFFFFFFFFu);
  }
}

TEST(UnicodeToMultiByte, CLocaleMapsLatin1ToBytes) {
  ScopedThreadLocale locale("POSIX");
  ASSERT_TRUE(locale.ok());
  EXPECT_EQ(Halyard::VUtilsUnicodeToASCIIStr(u"caf\u00E9\u0080\u00FF"), "caf\xE9\x80\xFF");
}

TEST(UnicodeToMultiByte, StringFormEmptyForNullAndEmpty) {
  EXPECT_EQ(Halyard::VUtilsUnicodeToASCIIStr(static_cast<const char16_t*>(nullptr)), "");
  EXPECT_EQ(Halyard::VUtilsUnicodeToASCIIStr(u""), "");
  std::uint32_t length = 9;
  char buffer[2] = {'#', '#'};
  EXPECT_EQ(Halyard::VUtilsUnicodeToASCIIStr(u"", buffer, &length), 0u);
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(buffer[0], '\0');
}

TEST(MultiByteRoundTrip, EveryByteSurvivesCLocale) {
  ScopedThreadLocale locale("C");
  std::string bytes;
  for (int b = 1; b < 256; ++b) bytes.push_back(static_cast<char>(b));
  const std::u16string wide = Halyard::VUtilsASCIIStrToUnicode(bytes.c_str());
  ASSERT_EQ(wide.size(), 255u);
  for (std::size_t i = 0; i < wide.size(); ++i) EXPECT_EQ(wide[i], i + 1);
  EXPECT_EQ(Halyard::VUtilsUnicodeToASCIIStr(wide.c_str()), bytes);
}

// --- The OS layer underneath -------------------------------------------------------------

TEST(PlatformMultiByte, LimitedCountNeverSplitsSurrogatePair) {
  ScopedThreadLocale locale(kUtf8Locale);
  char16_t buffer[4] = {u'#', u'#', u'#', u'#'};
  // "a🎬": room for two units holds "a" only; the pair needs two more.
  EXPECT_EQ(*tovimpl::platform::MultiByteToUTF16(buffer, "a\xF0\x9F\x8E\xAC", 2), 1u);
  EXPECT_EQ(buffer[0], u'a');
  EXPECT_EQ(buffer[1], u'#');
  EXPECT_EQ(*tovimpl::platform::MultiByteToUTF16(buffer, "a\xF0\x9F\x8E\xAC", 3), 3u);
  EXPECT_EQ(buffer[3], u'#');  // no room for the NUL: none written
}

TEST(PlatformMultiByte, LimitedCountNeverSplitsCharacter) {
  ScopedThreadLocale locale(kUtf8Locale);
  char buffer[4] = {'#', '#', '#', '#'};
  EXPECT_EQ(*tovimpl::platform::UTF16ToMultiByte(buffer, u"a世", 3), 1u);
  EXPECT_EQ(buffer[0], 'a');
  EXPECT_EQ(buffer[1], '#');
}

TEST(PlatformMultiByte, MeasuringGivesTheCountWithoutTheNul) {
  ScopedThreadLocale locale(kUtf8Locale);
  const tovimpl::platform::Result<std::size_t> units =
      tovimpl::platform::MultiByteToUTF16(nullptr, "\xC3\xA9\xF0\x9F\x8E\xAC", 0);
  ASSERT_TRUE(units);
  EXPECT_EQ(*units, 3u);
  const tovimpl::platform::Result<std::size_t> bytes =
      tovimpl::platform::UTF16ToMultiByte(nullptr, u"\u00E9\U0001F3AC", 0);
  ASSERT_TRUE(bytes);
  EXPECT_EQ(*bytes, 6u);
}

TEST(PlatformMultiByte, InvalidSequenceCarriesNoUnicodeTranslation) {
  ScopedThreadLocale locale(kUtf8Locale);
  tovimpl::platform::SetLastError(0);
  const tovimpl::platform::Result<std::size_t> units =
      tovimpl::platform::MultiByteToUTF16(nullptr, "\x80", 0);
  EXPECT_FALSE(units);
  EXPECT_EQ(units.Error(), 1113u);
  EXPECT_EQ(tovimpl::platform::GetLastError(), 0u);  // the slot is left alone
}

TEST(PlatformMultiByte, UnrepresentableCharacterCarriesNoUnicodeTranslation) {
  {
    ScopedThreadLocale locale(kUtf8Locale);
    const char16_t unpaired[] = {u'a', char16_t(0xD800), u'b', 0};
    EXPECT_EQ(tovimpl::platform::UTF16ToMultiByte(nullptr, unpaired, 0).Error(),
              tovimpl::platform::kErrorNoUnicodeTranslation);
  }
  {
    ScopedThreadLocale locale("C");
    char buffer[8] = {};
    EXPECT_EQ(tovimpl::platform::UTF16ToMultiByte(buffer, u"a\u4E16", 8).Error(),
              tovimpl::platform::kErrorNoUnicodeTranslation);
  }
}

TEST(PlatformMultiByte, MaxLengthFollowsThreadLocale) {
  {
    ScopedThreadLocale locale("C");
    EXPECT_EQ(tovimpl::platform::MaxMultiByteLength(), 1u);
  }
  {
    ScopedThreadLocale locale(kUtf8Locale);
    EXPECT_GE(tovimpl::platform::MaxMultiByteLength(), 4u);
  }
}

TEST(PlatformCodePage, IsUtf8) {
  EXPECT_EQ(tovimpl::platform::NarrowToUTF16("d\xC3\xA9j\xC3\xA0"),
            basalt::ToUTF16(u"d\u00E9j\u00E0"));
  EXPECT_EQ(tovimpl::platform::NarrowToUTF16(std::string_view("d\xC3\xA9j", 3)),
            basalt::ToUTF16(u"d\u00E9"));
}

}  // namespace
