// String utilities: UTF and system conversions, four-character codes, IsAscii,
// duplication, the UTF-16 buffer primitives, the text locale and fixed-point text.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <locale>
#include <memory>

#include "text/text_internal.h"
#include "tovfoundation/text.h"

using namespace basalt::literals;
namespace SU = Halyard::StringUtils;

namespace {

// --- UTF conversions ---------------------------------------------------------

TEST(StringUtilsConversions, Utf8ToUtf16MatchesBasalt) {
  const UTF8String bytes =
      "Gr\xC3\xBC\xC3\x9F"
      "e \xF0\x9F\x8E\xAC";
  EXPECT_EQ(SU::VUTF8ToUTF16(bytes), u"Grüße 🎬"_u16);
  EXPECT_EQ(SU::VUTF8ToUTF16(UTF8String()), UTF16String());
}

TEST(StringUtilsConversions, Utf8ToUtf16FillFormReplacesWholeTarget) {
  UTF16String target = u"old content that is longer"_u16;
  EXPECT_EQ(SU::VUTF8ToUTF16("new", target), 0u);
  EXPECT_EQ(target, u"new"_u16);
  EXPECT_EQ(SU::VUTF8ToUTF16("", target), 0u);
  EXPECT_EQ(target, UTF16String());
}

TEST(StringUtilsConversions, Utf16ToUtf8MatchesBasalt) {
  EXPECT_EQ(SU::VUTF16ToUTF8(u"Grüße 🎬"_u16),
            "Gr\xC3\xBC\xC3\x9F"
            "e \xF0\x9F\x8E\xAC");
  // An unpaired surrogate becomes U+FFFD.
  EXPECT_EQ(SU::VUTF16ToUTF8(UTF16String(1, 0xD800)), "\xEF\xBF\xBD");
}

TEST(StringUtilsConversions, Utf16ToUtf8FillFormReplacesWholeTarget) {
  UTF8String target = "previous";
  EXPECT_EQ(SU::VUTF16ToUTF8(u"é"_u16, target), 0u);
  EXPECT_EQ(target, "\xC3\xA9");
}

TEST(StringUtilsConversions, AsciiToUtf16WidensEachByteUpToNul) {
  EXPECT_EQ(SU::VAsciiToUTF16("WAVE"), u"WAVE"_u16);
  EXPECT_EQ(SU::VAsciiToUTF16("caf\xE9"), u"café"_u16);  // 0xE9 ⇒ U+00E9
  EXPECT_EQ(SU::VAsciiToUTF16(""), UTF16String());
  EXPECT_EQ(SU::VAsciiToUTF16(nullptr), UTF16String());
}

// --- Four-character codes and IsAscii ---------------------------------------------

TEST(StringUtilsFourCC, WaveCodeGivesWave) {
  EXPECT_EQ(SU::FourCCToUTF16(0x57415645), u"WAVE"_u16);
}

TEST(StringUtilsFourCC, ZeroTopByteGivesEmptyText) {
  EXPECT_EQ(SU::FourCCToUTF16(0x00415645), UTF16String());
}

TEST(StringUtilsFourCC, ZeroByteEndsTextEarly) {
  EXPECT_EQ(SU::FourCCToUTF16(0x41420043), u"AB"_u16);
  EXPECT_EQ(SU::FourCCToUTF16(0x20202020), u"    "_u16);
  EXPECT_EQ(SU::FourCCToUTF16(0xE9000000), u"é"_u16);
}

TEST(StringUtilsFourCC, ValidOnlyWhenEveryByteBelow0x80) {
  struct Row {
    std::uint32_t code;
    bool valid;
  } rows[] = {
      {0x57415645, true},  {0x00000000, true},  {0x7F7F7F7F, true},  {0x80415645, false},
      {0x57805645, false}, {0x57418045, false}, {0x57415680, false}, {0xFFFFFFFF, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.code);
    EXPECT_EQ(SU::isValidFourCCToUTF16(row.code), row.valid);
  }
}

TEST(StringUtilsIsAscii, UnsignedRangeZeroTo127) {
  EXPECT_FALSE(SU::IsAscii(-1));
  EXPECT_TRUE(SU::IsAscii(127));
  EXPECT_FALSE(SU::IsAscii(128));
  EXPECT_TRUE(SU::IsAscii(0));
  EXPECT_FALSE(SU::IsAscii(std::numeric_limits<int>::min()));
  EXPECT_FALSE(SU::IsAscii(std::numeric_limits<int>::max()));
}

// --- Duplication ----------------------------------------------------------------------

TEST(StringUtilsDuplicate, NarrowCopyIsNewAndTerminated) {
  const char text[] = "clip.wav";
  std::unique_ptr<char[]> copy(SU::StringDuplicate(text));
  ASSERT_NE(copy, nullptr);
  EXPECT_NE(copy.get(), text);
  EXPECT_STREQ(copy.get(), "clip.wav");
  std::unique_ptr<char[]> empty(SU::StringDuplicate(""));
  ASSERT_NE(empty, nullptr);
  EXPECT_EQ(empty[0], '\0');
}

TEST(StringUtilsDuplicate, NullGivesNull) {
  EXPECT_EQ(SU::StringDuplicate(static_cast<const char*>(nullptr)), nullptr);
  EXPECT_EQ(SU::StringDuplicate(static_cast<const unsigned short*>(nullptr)), nullptr);
}

TEST(StringUtilsDuplicate, Utf16CopyIsNewAndTerminated) {
  const UTF16String text = u"Médias 🎬"_u16;
  std::unique_ptr<unsigned short[]> copy(SU::StringDuplicate(text.c_str()));
  ASSERT_NE(copy, nullptr);
  EXPECT_NE(copy.get(), text.c_str());
  EXPECT_EQ(UTF16String(copy.get()), text);
  EXPECT_EQ(copy[text.size()], 0);
}

TEST(StringUtilsDuplicate, Utf16ImpossibleSizeThrowsVRException) {
  const unsigned short unit = u'a';
  try {
    std::unique_ptr<unsigned short[]> copy(
        tovimpl::text::DuplicateUnits(&unit, std::numeric_limits<std::size_t>::max() / 2));
    FAIL() << "no exception";
  } catch (const TOV::TOVVRException& error) {
    EXPECT_EQ(error.GetCode(), TOV::kErrInvalidArgument);
  }
}

TEST(StringUtilsDuplicate, Utf16AllocationFailureThrowsVRException) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "sanitizer allocators report impossible allocations instead of failing them";
#else
  const unsigned short unit = u'a';
  try {
    // A valid array size no machine has memory for: nothrow new answers nullptr.
    std::unique_ptr<unsigned short[]> copy(tovimpl::text::DuplicateUnits(
        &unit, static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) / 4));
    FAIL() << "no exception";
  } catch (const TOV::TOVVRException& error) {
    EXPECT_EQ(error.GetCode(), TOV::kErrInvalidArgument);
  }
#endif
}

// --- UTF-16 buffer primitives ------------------------------------------------------------

TEST(StringUtilsPrimitives, LenCountsUnitsBeforeNul) {
  EXPECT_EQ(SU::VWLen(u"abc"_u16.c_str()), 3u);
  EXPECT_EQ(SU::VWLen(u""_u16.c_str()), 0u);
  EXPECT_EQ(SU::VWLen(u"🎬"_u16.c_str()), 2u);  // a surrogate pair is two units
}

TEST(StringUtilsPrimitives, CopyWithCountZeroCopiesWholeSource) {
  unsigned short buffer[16];
  std::fill(std::begin(buffer), std::end(buffer), 0xAAAA);
  const UTF16String source = u"source"_u16;
  EXPECT_EQ(SU::VWCopy(buffer, source.c_str(), 0), buffer);
  EXPECT_EQ(UTF16String(buffer), source);
  EXPECT_EQ(buffer[6], 0);
  EXPECT_EQ(buffer[7], 0xAAAA);
}

TEST(StringUtilsPrimitives, CopyWithCountTwoCopiesTwoUnitsAndTerminates) {
  unsigned short buffer[16];
  std::fill(std::begin(buffer), std::end(buffer), 0xAAAA);
  EXPECT_EQ(SU::VWCopy(buffer, u"longer"_u16.c_str(), 2), buffer);
  EXPECT_EQ(buffer[0], u'l');
  EXPECT_EQ(buffer[1], u'o');
  EXPECT_EQ(buffer[2], 0);
  EXPECT_EQ(buffer[3], 0xAAAA);
}

TEST(StringUtilsPrimitives, CopyOfEmptySourceGivesEmptyText) {
  unsigned short buffer[4] = {u'x', u'y', u'z', 0};
  SU::VWCopy(buffer, u""_u16.c_str(), 0);
  EXPECT_EQ(buffer[0], 0);
  EXPECT_EQ(buffer[1], u'y');
}

TEST(StringUtilsPrimitives, StrcatAppendsAtNul) {
  unsigned short buffer[16];
  std::fill(std::begin(buffer), std::end(buffer), 0xAAAA);
  SU::VWCopy(buffer, u"ab"_u16.c_str(), 0);
  EXPECT_EQ(SU::VWStrcat(buffer, u"cd"_u16.c_str()), buffer);
  EXPECT_EQ(UTF16String(buffer), u"abcd"_u16);
  EXPECT_EQ(buffer[5], 0xAAAA);
  SU::VWStrcat(buffer, u""_u16.c_str());
  EXPECT_EQ(UTF16String(buffer), u"abcd"_u16);
}

TEST(StringUtilsPrimitives, IsEqualExactComparesEveryUnit) {
  EXPECT_EQ(SU::VWIsEqual(u"abc"_u16.c_str(), u"abc"_u16.c_str(), 0), 1);
  EXPECT_EQ(SU::VWIsEqual(u"abc"_u16.c_str(), u"ABC"_u16.c_str(), 0), 0);
  EXPECT_EQ(SU::VWIsEqual(u"abc"_u16.c_str(), u"abcd"_u16.c_str(), 0), 0);
  EXPECT_EQ(SU::VWIsEqual(u"abcd"_u16.c_str(), u"abc"_u16.c_str(), 0), 0);
  EXPECT_EQ(SU::VWIsEqual(u""_u16.c_str(), u""_u16.c_str(), 0), 1);
}

TEST(StringUtilsPrimitives, IsEqualIgnoreCaseFoldsOnlyAsciiLetters) {
  EXPECT_EQ(SU::VWIsEqual(u"ABC"_u16.c_str(), u"abc"_u16.c_str(), 1), 1);
  EXPECT_EQ(SU::VWIsEqual(u"Clip.WAV"_u16.c_str(), u"clip.wav"_u16.c_str(), 7), 1);
  EXPECT_EQ(SU::VWIsEqual(u"É"_u16.c_str(), u"é"_u16.c_str(), 1), 0);
  EXPECT_EQ(SU::VWIsEqual(u"ÀB"_u16.c_str(), u"àb"_u16.c_str(), 1), 0);
  EXPECT_EQ(SU::VWIsEqual(u"abc"_u16.c_str(), u"ABCD"_u16.c_str(), 1), 0);
  // '@' and '[' sit next to 'A' and 'Z' and are not folded.
  EXPECT_EQ(SU::VWIsEqual(u"@["_u16.c_str(), u"`{"_u16.c_str(), 1), 0);
}

TEST(StringUtilsPrimitives, NullPointersThrowVRException) {
  unsigned short buffer[4] = {0};
  const UTF16String a = u"a"_u16;
  const unsigned short* text = a.c_str();
  const auto expectThrow = [](auto&& call) {
    try {
      call();
      ADD_FAILURE() << "no exception";
    } catch (const TOV::TOVVRException& error) {
      EXPECT_EQ(error.GetCode(), 0xC0080001u);
    }
  };
  expectThrow([] { SU::VWLen(nullptr); });
  expectThrow([&] { SU::VWCopy(nullptr, text, 0); });
  expectThrow([&] { SU::VWCopy(buffer, nullptr, 1); });
  expectThrow([&] { SU::VWStrcat(nullptr, text); });
  expectThrow([&] { SU::VWStrcat(buffer, nullptr); });
  expectThrow([&] { SU::VWIsEqual(nullptr, text, 0); });
  expectThrow([&] { SU::VWIsEqual(text, nullptr, 1); });
}

// --- The text locale -------------------------------------------------------------------------

TEST(StringUtilsLocale, InitReplacesHeldLocaleAndSameIsNoOp) {
  const std::locale original = SU::VLocale();
  const std::locale classic = std::locale::classic();
  SU::InitVLocale(classic);
  EXPECT_TRUE(SU::VLocale() == classic);
  const std::locale* held = &SU::VLocale();
  SU::InitVLocale(SU::VLocale());  // the held one: nothing happens
  EXPECT_EQ(&SU::VLocale(), held);
  EXPECT_TRUE(SU::VLocale() == classic);
  const std::locale withFacet(classic, new std::numpunct<char>());
  SU::InitVLocale(withFacet);
  EXPECT_TRUE(SU::VLocale() == withFacet);
  EXPECT_FALSE(SU::VLocale() == classic);
  SU::InitVLocale(original);
  EXPECT_TRUE(SU::VLocale() == original);
}

// --- Fixed-point text ------------------------------------------------------------------------

TEST(StringUtilsFloat, TrailingZerosRemovedKeepingOneFractionDigit) {
  struct Row {
    double value;
    int decimals;
    const char* expected;
  } rows[] = {
      {1.5, 3, "1.5"},      {2.0, 3, "2.0"},
      {10.0, 4, "10.0"},    {10.0, 0, "10"},
      {10.0, 1, "10.0"},    {2.25, 1, "2.2"},
      {2.75, 1, "2.8"},     {0.125, 2, "0.12"},
      {3.14159, 2, "3.14"}, {100.0, 2, "100.0"},
      {-1.5, 3, "-1.5"},    {0.0, 5, "0.0"},
      {1.05, 3, "1.05"},    {1234.5678, 6, "1234.5678"},
      {1.2, -3, "1"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.value) + " with " + std::to_string(row.decimals));
    char buffer[64];
    std::memset(buffer, 'X', sizeof buffer);
    Halyard::ConvertFloatToString(buffer, row.value, row.decimals);
    EXPECT_STREQ(buffer, row.expected);
  }
}

TEST(StringUtilsFloat, RemovesAtMostDecimalsMinusOneZeros) {
  // "100.00" with two decimals: one zero may go, the integer's zeros stay.
  char buffer[64];
  Halyard::ConvertFloatToString(buffer, 100.0, 2);
  EXPECT_STREQ(buffer, "100.0");
  Halyard::ConvertFloatToString(buffer, 0.5, 8);
  EXPECT_STREQ(buffer, "0.5");
}

}  // namespace
