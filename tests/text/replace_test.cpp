// Placeholder replacement (VReplace, VVarArgsReplace, the internal core) and
// number text.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "text/text_internal.h"
#include "tovfoundation/text.h"

using namespace basalt::literals;
namespace SU = Halyard::StringUtils;

namespace {

constexpr unsigned short kSentinel = 0xAAAA;

// Measures with a null output, then fills a buffer of exactly that size plus
// the NUL; checks that both calls agree.
template <typename... Args>
UTF16String Replace(const UTF16String& templ, const char* types, Args... args) {
  std::uint32_t measured = 0xDEAD;
  EXPECT_EQ(SU::VReplace(templ.c_str(), nullptr, &measured, types, args...), 0u);
  std::vector<unsigned short> buffer(std::size_t{measured} + 2, kSentinel);
  std::uint32_t count = 0xDEAD;
  EXPECT_EQ(SU::VReplace(templ.c_str(), buffer.data(), &count, types, args...), 0u);
  EXPECT_EQ(count, measured);
  EXPECT_EQ(buffer[measured], 0);
  EXPECT_EQ(buffer[std::size_t{measured} + 1], kSentinel);
  return UTF16String(buffer.data(), measured);
}

TEST(VReplace, FrameOfExample) {
  std::uint32_t count = 0;
  unsigned short buffer[32];
  EXPECT_EQ(SU::VReplace(u"Frame ^1 of ^2"_u16.c_str(), buffer, &count, "uu", 3u, 10u), 0u);
  EXPECT_EQ(count, 13u);
  EXPECT_EQ(UTF16String(buffer), u"Frame 3 of 10"_u16);
}

TEST(VReplace, NullOutputMeasuresFullCount) {
  std::uint32_t count = 99;
  EXPECT_EQ(SU::VReplace(u"Frame ^1 of ^2"_u16.c_str(), nullptr, &count, "uu", 3u, 10u), 0u);
  EXPECT_EQ(count, 13u);
}

TEST(VReplace, CaretAtEndIsLiteral) { EXPECT_EQ(Replace(u"50^"_u16, ""), u"50^"_u16); }

TEST(VReplace, CaretBeforeLetterIsLiteral) {
  EXPECT_EQ(Replace(u"x^y"_u16, "u", 1u), u"x^y"_u16);
  EXPECT_EQ(Replace(u"^^1"_u16, "u", 7u), u"^7"_u16);
}

TEST(VReplace, CaretBeforeZeroIsLiteralAndZeroConsumed) {
  EXPECT_EQ(Replace(u"a^0b"_u16, "u", 1u), u"a^b"_u16);
  EXPECT_EQ(Replace(u"^00^1"_u16, "u", 5u), u"^5"_u16);
  EXPECT_EQ(Replace(u"^01"_u16, "u", 5u), u"5"_u16);  // leading zeros are digits
}

TEST(VReplace, PlaceholderAboveArgumentCountLeavesPartialUnterminatedOutput) {
  unsigned short buffer[32];
  std::fill(std::begin(buffer), std::end(buffer), kSentinel);
  std::uint32_t count = 99;
  EXPECT_EQ(SU::VReplace(u"Frame ^3 of ^1"_u16.c_str(), buffer, &count, "uu", 3u, 10u),
            0xC0080003u);
  EXPECT_EQ(count, 6u);
  EXPECT_EQ(UTF16String(buffer, 6), u"Frame "_u16);
  EXPECT_EQ(buffer[6], kSentinel);  // no NUL added
}

TEST(VReplace, PartialOutputCountsArgumentsCopiedBefore) {
  unsigned short buffer[32];
  std::fill(std::begin(buffer), std::end(buffer), kSentinel);
  std::uint32_t count = 0;
  EXPECT_EQ(SU::VReplace(u"^1-^2"_u16.c_str(), buffer, &count, "u", 42u), 0xC0080003u);
  EXPECT_EQ(count, 3u);
  EXPECT_EQ(UTF16String(buffer, 3), u"42-"_u16);
  EXPECT_EQ(buffer[3], kSentinel);
}

TEST(VReplace, UnknownTypeLetterFailsBeforeWriting) {
  unsigned short buffer[8];
  std::fill(std::begin(buffer), std::end(buffer), kSentinel);
  std::uint32_t count = 99;
  EXPECT_EQ(SU::VReplace(u"abc ^1"_u16.c_str(), buffer, &count, "ux", 1u, 2u), 0xC0080003u);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(buffer[0], kSentinel);
}

TEST(VReplace, EmptyTemplateOrNullCountTouchesNothing) {
  unsigned short buffer[4] = {kSentinel, kSentinel, kSentinel, kSentinel};
  std::uint32_t count = 99;
  EXPECT_EQ(SU::VReplace(u""_u16.c_str(), buffer, &count, "u", 1u), 0xC0080003u);
  EXPECT_EQ(count, 99u);
  EXPECT_EQ(buffer[0], kSentinel);
  EXPECT_EQ(SU::VReplace(u"abc"_u16.c_str(), buffer, nullptr, "u", 1u), 0xC0080003u);
  EXPECT_EQ(buffer[0], kSentinel);
}

TEST(VReplace, NullTemplateThrowsVRException) {
  std::uint32_t count = 0;
  try {
    SU::VReplace(nullptr, nullptr, &count, "u", 1u);
    FAIL() << "no exception";
  } catch (const TOV::TOVVRException& error) {
    EXPECT_EQ(error.GetCode(), 0xC0080001u);
  }
}

TEST(VReplace, TypeLettersFormatTheirArguments) {
  EXPECT_EQ(Replace(u"^1"_u16, "h", 255u), u"FF"_u16);
  EXPECT_EQ(Replace(u"^1"_u16, "i", -5), u"-5"_u16);
  EXPECT_EQ(Replace(u"^1"_u16, "u", 4000000000u), u"4000000000"_u16);
  EXPECT_EQ(Replace(u"^1"_u16, "i", 1234567), u"1234567"_u16);  // no digit grouping
  EXPECT_EQ(Replace(u"^1"_u16, "d", 2.5), u"2.5"_u16);
  EXPECT_EQ(Replace(u"^1"_u16, "d", 1.0 / 3.0), u"0.333"_u16);
  EXPECT_EQ(Replace(u"^1"_u16, "d", 2.0), u"2"_u16);
  const UTF16String name = u"clip 🎬.wav"_u16;
  EXPECT_EQ(Replace(u"[^1]"_u16, "w", name.c_str()), u"[clip 🎬.wav]"_u16);
  EXPECT_EQ(Replace(u"[^1]"_u16, "w", static_cast<const unsigned short*>(nullptr)), u"[]"_u16);
}

TEST(VReplace, MixedTypesReusedAndUnusedArguments) {
  const UTF16String file = u"a.wav"_u16;
  EXPECT_EQ(Replace(u"^3 ^1 ^3 (^2)"_u16, "idw", 7, 0.5, file.c_str()), u"a.wav 7 a.wav (0.5)"_u16);
  EXPECT_EQ(Replace(u"none"_u16, "uuu", 1u, 2u, 3u), u"none"_u16);
  EXPECT_EQ(Replace(u"^10"_u16, "uuuuuuuuuu", 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 10u), u"10"_u16);
}

TEST(VReplace, NumberAccumulatesWithWrap) {
  // 4294967297 wraps to 1 in 32-bit arithmetic.
  EXPECT_EQ(Replace(u"<^4294967297>"_u16, "u", 8u), u"<8>"_u16);
  // 4294967296 wraps to 0: a literal caret, the digits consumed.
  EXPECT_EQ(Replace(u"<^4294967296>"_u16, "u", 8u), u"<^>"_u16);
}

TEST(VReplace, NonAsciiDigitsAreNotPlaceholderDigits) {
  // U+0661 ARABIC-INDIC DIGIT ONE is text.
  EXPECT_EQ(Replace(u"^\u0661"_u16, "u", 3u), u"^\u0661"_u16);
}

TEST(VReplace, NullTypesMeansNoArguments) {
  std::uint32_t count = 0;
  EXPECT_EQ(SU::VReplace(u"a^1"_u16.c_str(), nullptr, &count, nullptr), 0xC0080003u);
  EXPECT_EQ(SU::VReplace(u"a^"_u16.c_str(), nullptr, &count, nullptr), 0u);
  EXPECT_EQ(count, 2u);
}

std::uint32_t CallVarArgs(const UTF16String& templ, unsigned short* out, std::uint32_t* count,
                          const char* types, ...) {
  std::va_list arguments;
  va_start(arguments, types);
  const std::uint32_t status = SU::VVarArgsReplace(templ.c_str(), out, count, types, arguments);
  va_end(arguments);
  return status;
}

TEST(VVarArgsReplace, TakesArgumentsFromVaList) {
  unsigned short buffer[32];
  std::uint32_t count = 0;
  EXPECT_EQ(CallVarArgs(u"^2/^1"_u16, buffer, &count, "ih", -1, 0xABCu), 0u);
  EXPECT_EQ(UTF16String(buffer), u"ABC/-1"_u16);
  EXPECT_EQ(count, 6u);
}

TEST(ReplaceCore, DrivesScanWithPreparedTexts) {
  const UTF16String args[] = {u"one"_u16, u""_u16};
  std::uint32_t count = 0;
  unsigned short buffer[32];
  EXPECT_EQ(tovimpl::text::ReplaceWithTexts(u"^1|^2|^1"_u16.c_str(), buffer, &count, args, 2), 0u);
  EXPECT_EQ(UTF16String(buffer), u"one||one"_u16);
  EXPECT_EQ(count, 8u);
  EXPECT_EQ(tovimpl::text::ReplaceWithTexts(u"^3"_u16.c_str(), buffer, &count, args, 2), 0xC0080003u);
}

// --- Number text ------------------------------------------------------------------------

TEST(VNumberToUTF16, AtMostPrecisionDigitsTrimmed) {
  struct Row {
    double value;
    unsigned char precision;
    UTF16String expected;
  } rows[] = {
      {2.5, 3, u"2.5"_u16},     {2.0, 3, u"2"_u16},      {0.1239, 2, u"0.12"_u16},
      {10.0, 0, u"10"_u16},     {-1.25, 1, u"-1.2"_u16}, {1234567.891, 2, u"1234567.89"_u16},
      {29.97, 3, u"29.97"_u16}, {0.0, 3, u"0"_u16},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.value);
    EXPECT_EQ(SU::VNumberToUTF16(row.value, row.precision), row.expected);
  }
}

TEST(VNumberToHexUTF16, UpperCaseNoPrefixNoPadding) {
  EXPECT_EQ(SU::VNumberToHexUTF16(255), u"FF"_u16);
  EXPECT_EQ(SU::VNumberToHexUTF16(0), u"0"_u16);
  EXPECT_EQ(SU::VNumberToHexUTF16(16), u"10"_u16);
  EXPECT_EQ(SU::VNumberToHexUTF16(-1), u"FFFFFFFF"_u16);
  EXPECT_EQ(SU::VNumberToHexUTF16(std::numeric_limits<std::int32_t>::min()), u"80000000"_u16);
  EXPECT_EQ(SU::VNumberToHexUTF16(0x0ABCDEF1), u"ABCDEF1"_u16);
}

TEST(VUTF16ToNumber, ReadsLeadingDouble) {
  EXPECT_EQ(SU::VUTF16ToNumber(u"2.5"_u16), 2.5);
  EXPECT_EQ(SU::VUTF16ToNumber(u"abc"_u16), 0.0);
  EXPECT_EQ(SU::VUTF16ToNumber(u""_u16), 0.0);
  EXPECT_EQ(SU::VUTF16ToNumber(u"2.5 seconds"_u16), 2.5);
  EXPECT_EQ(SU::VUTF16ToNumber(u"  -12e2"_u16), -1200.0);
  EXPECT_EQ(SU::VUTF16ToNumber(u"1,5"_u16), 1.0);  // classic locale: "," ends the number
}

}  // namespace
