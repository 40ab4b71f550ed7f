// The Win32 backend's multibyte text and system messages: the C runtime's own
// conversions and FormatMessageW, with the failure's code carried in the result.
//
// The library's headers come first: the system's macros would rename their
// functions.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "basalt/strings.h"
#include "platform/error.h"
#include "platform/text.h"

// The backend's own way in to the system's headers.
#include "platform/win32/win32_support.h"

namespace platform = tovimpl::platform;

namespace {

// The tests run in the runtime's "C" locale: the program never calls setlocale.

TEST(Win32MultiByte, AsciiTextConvertsBothWays) {
  const platform::Result<std::size_t> units = platform::MultiByteToUTF16(nullptr, "abc", 0);
  ASSERT_TRUE(units);
  EXPECT_EQ(*units, 3u);
  char16_t wide[8] = {u'#', u'#', u'#', u'#', u'#', u'#', u'#', u'#'};
  const platform::Result<std::size_t> converted = platform::MultiByteToUTF16(wide, "abc", 4);
  ASSERT_TRUE(converted);
  EXPECT_EQ(*converted, 3u);
  EXPECT_EQ(std::u16string(wide, 4), std::u16string(u"abc\0", 4));

  char narrow[8] = {};
  const platform::Result<std::size_t> bytes = platform::UTF16ToMultiByte(narrow, u"xyz", 8);
  ASSERT_TRUE(bytes);
  EXPECT_EQ(*bytes, 3u);
  EXPECT_EQ(std::string(narrow), "xyz");
}

TEST(Win32MultiByte, CharacterOutsideTheLocaleCarriesNoUnicodeTranslation) {
  char narrow[8] = {};
  const platform::Result<std::size_t> bytes =
      platform::UTF16ToMultiByte(narrow, u"a\u4E16", sizeof narrow);
  EXPECT_FALSE(bytes);
  EXPECT_EQ(bytes.Error(), platform::kErrorNoUnicodeTranslation);
  EXPECT_EQ(bytes.Error(), static_cast<std::uint32_t>(ERROR_NO_UNICODE_TRANSLATION));
}

TEST(Win32Message, KnownCodeGivesTheSystemsText) {
  wchar_t* buffer = nullptr;
  const DWORD length = ::FormatMessageW(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
      nullptr, ERROR_FILE_NOT_FOUND, 0x400, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
  ASSERT_GT(length, 0u);
  const std::wstring expected(buffer, length);
  ::LocalFree(buffer);

  const platform::Result<UTF16String> text = platform::FormatSystemMessage(2, 0x400);
  ASSERT_TRUE(text);
  EXPECT_EQ(text->size(), expected.size());
  EXPECT_EQ(std::wstring(text->begin(), text->end()), expected);
}

TEST(Win32Message, UnknownCodeCarriesError317) {
  const platform::Result<UTF16String> text = platform::FormatSystemMessage(0xDEADBEEF, 0x400);
  EXPECT_FALSE(text);
  EXPECT_EQ(text.Error(), platform::kErrorMrMidNotFound);
  EXPECT_EQ(text.Error(), static_cast<std::uint32_t>(ERROR_MR_MID_NOT_FOUND));
  EXPECT_TRUE(text->empty());
}

}  // namespace
