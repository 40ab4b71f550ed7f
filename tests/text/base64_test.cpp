// Base64: the line layout of Encode, the lenient rules of Decode, IsBase64,
// and round trips.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "basalt/utf.h"
#include "tovfoundation/text.h"

using namespace basalt::literals;
using Bytes = std::vector<unsigned char>;

namespace {

Bytes BytesOf(const std::string& text) { return Bytes(text.begin(), text.end()); }

Bytes RandomBytes(std::size_t size, std::uint32_t seed) {
  std::mt19937 engine(seed);
  Bytes bytes(size);
  for (auto& byte : bytes) byte = static_cast<unsigned char>(engine());
  return bytes;
}

// The text split at its CRLF line breaks; the last piece is what follows the
// last break (empty when the text ends with one).
std::vector<UTF16String> Lines(const UTF16String& text) {
  std::vector<UTF16String> lines;
  std::size_t start = 0;
  for (;;) {
    const std::size_t br = text.find(u"\r\n"_u16, start);
    if (br == UTF16String::npos) {
      lines.push_back(text.substr(start));
      return lines;
    }
    lines.push_back(text.substr(start, br - start));
    start = br + 2;
  }
}

// --- Encode ------------------------------------------------------------------------

TEST(Base64Encode, EmptyInputGivesEmptyText) { EXPECT_EQ(Halyard::Encode({}), UTF16String()); }

TEST(Base64Encode, ManGivesOneGroupAndLineBreak) {
  EXPECT_EQ(Halyard::Encode(BytesOf("Man")), u"TWFu\r\n"_u16);
}

TEST(Base64Encode, OneByteGivesFourCharactersAndLineBreak) {
  EXPECT_EQ(Halyard::Encode({0x4D}), u"TQ==\r\n"_u16);
}

TEST(Base64Encode, TwoBytesGiveOnePad) {
  EXPECT_EQ(Halyard::Encode(BytesOf("Ma")), u"TWE=\r\n"_u16);
}

TEST(Base64Encode, ManyBreaksAfterFirstGroupOnly) {
  EXPECT_EQ(Halyard::Encode(BytesOf("Many")), u"TWFu\r\neQ=="_u16);
}

TEST(Base64Encode, SixtyOneBytesGiveLinesOfFourSeventySixAndFour) {
  const UTF16String text = Halyard::Encode(RandomBytes(61, 1));
  const auto lines = Lines(text);
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0].size(), 4u);
  EXPECT_EQ(lines[1].size(), 76u);
  EXPECT_EQ(lines[2].size(), 4u);
  EXPECT_NE(text.substr(text.size() - 2), u"\r\n"_u16);
}

TEST(Base64Encode, TrailingBreakOnlyWhenLastGroupStartsAtMultipleOf57) {
  struct Row {
    std::size_t size;
    bool trailingBreak;
  } rows[] = {
      {1, true},    {3, true},   {4, false},  {57, false},  {58, true},   {60, true},  {61, false},
      {114, false}, {115, true}, {117, true}, {118, false}, {171, false}, {172, true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.size);
    const UTF16String text = Halyard::Encode(RandomBytes(row.size, 2));
    const bool ends = text.size() >= 2 && text.substr(text.size() - 2) == u"\r\n"_u16;
    EXPECT_EQ(ends, row.trailingBreak);
  }
}

TEST(Base64Encode, LineLayoutMatchesGroupOffsets) {
  for (std::size_t size = 1; size <= 400; ++size) {
    SCOPED_TRACE(size);
    const UTF16String text = Halyard::Encode(RandomBytes(size, 3));
    // Expected layout, written from the rule: a break after each group whose
    // starting offset is a multiple of 57.
    std::vector<std::size_t> expected;
    std::size_t inLine = 0;
    for (std::size_t i = 0; i < size; i += 3) {
      inLine += 4;
      if (i % 57 == 0) {
        expected.push_back(inLine);
        inLine = 0;
      }
    }
    expected.push_back(inLine);
    std::vector<std::size_t> actual;
    for (const auto& line : Lines(text)) actual.push_back(line.size());
    EXPECT_EQ(actual, expected);
  }
}

TEST(Base64Encode, KnownVectors) {
  struct Row {
    const char* input;
    UTF16String expected;
  } rows[] = {
      {"f", u"Zg==\r\n"_u16},         {"fo", u"Zm8=\r\n"_u16},
      {"foo", u"Zm9v\r\n"_u16},       {"foob", u"Zm9v\r\nYg=="_u16},
      {"fooba", u"Zm9v\r\nYmE="_u16}, {"foobar", u"Zm9v\r\nYmFy"_u16},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.input);
    EXPECT_EQ(Halyard::Encode(BytesOf(row.input)), row.expected);
  }
  EXPECT_EQ(Halyard::Encode({0xFB, 0xFF, 0xBF}), u"+/+/\r\n"_u16);
  EXPECT_EQ(Halyard::Encode({0x00, 0x00, 0x00}), u"AAAA\r\n"_u16);
}

// --- Decode ----------------------------------------------------------------------------

TEST(Base64Decode, EmptyTextGivesEmptyVector) {
  EXPECT_TRUE(Halyard::Decode(UTF16String()).empty());
}

TEST(Base64Decode, OnlySpacesAndBreaksGiveEmptyVector) {
  EXPECT_TRUE(Halyard::Decode(u"  \r\n \t\r\n"_u16).empty());
}

TEST(Base64Decode, PaddedSingleByte) { EXPECT_EQ(Halyard::Decode(u"QQ=="_u16), (Bytes{0x41})); }

TEST(Base64Decode, UnpaddedTailIsCompletedWithZeros) {
  EXPECT_EQ(Halyard::Decode(u"QQ"_u16), (Bytes{0x41, 0x00, 0x00}));
  EXPECT_EQ(Halyard::Decode(u"QUI"_u16), (Bytes{0x41, 0x42, 0x00}));
  EXPECT_EQ(Halyard::Decode(u"Q"_u16), (Bytes{0x40, 0x00, 0x00}));
  EXPECT_EQ(Halyard::Decode(u"TWFuQQ"_u16), (Bytes{'M', 'a', 'n', 0x41, 0x00, 0x00}));
}

TEST(Base64Decode, PadInThirdPlaceStillYieldsThirdByte) {
  EXPECT_EQ(Halyard::Decode(u"QQ=B"_u16), (Bytes{0x41, 0xC1}));
}

TEST(Base64Decode, OnePadGivesTwoBytes) {
  EXPECT_EQ(Halyard::Decode(u"QUI="_u16), (Bytes{0x41, 0x42}));
}

TEST(Base64Decode, PadOutsideThirdAndFourthPlaceIsWorth63) {
  // "=" in first place reads as "/" (63).
  EXPECT_EQ(Halyard::Decode(u"=AAA"_u16), Halyard::Decode(u"/AAA"_u16));
  EXPECT_EQ(Halyard::Decode(u"=AAA"_u16), (Bytes{0xFC, 0x00, 0x00}));
  EXPECT_EQ(Halyard::Decode(u"A=AA"_u16), (Bytes{0x03, 0xF0, 0x00}));
  // A pad group in the middle does not end the text.
  EXPECT_EQ(Halyard::Decode(u"QQ==QQ=="_u16), (Bytes{0x41, 0x41}));
}

TEST(Base64Decode, LineBreaksAndSpacesAreIgnored) {
  const Bytes bytes = RandomBytes(300, 4);
  const UTF16String encoded = Halyard::Encode(bytes);
  UTF16String bare;
  for (auto unit : encoded) {
    if (unit != u'\r' && unit != u'\n') bare.push_back(unit);
  }
  ASSERT_EQ(Halyard::Decode(bare), bytes);
  for (std::size_t width : {4u, 76u, 5u, 1u}) {
    SCOPED_TRACE(width);
    UTF16String wrapped;
    for (std::size_t i = 0; i < bare.size(); i += width) {
      wrapped += bare.substr(i, width) + u"\r\n"_u16;
    }
    EXPECT_EQ(Halyard::Decode(wrapped), bytes);
  }
  UTF16String spaced;
  for (std::size_t i = 0; i < bare.size(); i += 4) spaced += bare.substr(i, 4) + u" \t"_u16;
  EXPECT_EQ(Halyard::Decode(spaced), bytes);
}

TEST(Base64Decode, NonAsciiCharactersAreIgnored) {
  EXPECT_EQ(Halyard::Decode(u"TW€Fu🎬"_u16), BytesOf("Man"));
  EXPECT_EQ(Halyard::Decode(u"éTWFuüeQ=="_u16), BytesOf("Many"));
  // Unpaired surrogates and characters whose low byte is an alphabet letter.
  UTF16String odd = u"TW"_u16;
  odd.push_back(0xD800);
  odd.push_back(0x0141);  // Ł, low byte 'A'
  odd.push_back(0xFF46);  // fullwidth letter, low byte 'F'
  odd += u"Fu"_u16;
  EXPECT_EQ(Halyard::Decode(odd), BytesOf("Man"));
}

TEST(Base64Decode, PunctuationIsDropped) {
  EXPECT_EQ(Halyard::Decode(u"T-W_F.u!"_u16), BytesOf("Man"));
}

// The decoding rules written out plainly: UTF-16 to UTF-8, filter, groups of
// four completed with "A", the two pad tests independent.
Bytes ReferenceDecode(const UTF16String& text) {
  const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+";
  std::string kept;
  for (char c : basalt::UTF16to8(text)) {
    if (Halyard::IsBase64(static_cast<unsigned char>(c))) kept.push_back(c);
  }
  Bytes out;
  for (std::uint32_t j = 0; j < kept.size(); j += 4) {
    char group[4];
    std::uint32_t v[4];
    for (int k = 0; k < 4; ++k) {
      group[k] = j + k < kept.size() ? kept[j + k] : 'A';
      const auto at = alphabet.find(group[k]);
      v[k] = at == std::string::npos ? 63u : static_cast<std::uint32_t>(at);
    }
    out.push_back(static_cast<unsigned char>((v[0] << 2) | (v[1] >> 4)));
    if (group[2] != '=') out.push_back(static_cast<unsigned char>((v[1] << 4) | (v[2] >> 2)));
    if (group[3] != '=') out.push_back(static_cast<unsigned char>((v[2] << 6) | v[3]));
  }
  return out;
}

TEST(Base64Decode, AgreesWithPlainRulesOnRandomText) {
  // Mostly alphabet characters, with pads, line breaks, spaces and non-ASCII
  // characters (a surrogate pair, a lone surrogate, units whose low byte is a
  // letter) scattered in; long enough to cross internal buffer boundaries.
  const UTF16String extras = u"==\r\n \r\n-é€Ł\xFF46"_u16 + UTF16String(1, 0xD800) + u"🎬"_u16;
  const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::mt19937 engine(77);
  for (int round = 0; round < 40; ++round) {
    SCOPED_TRACE(round);
    UTF16String text;
    const std::size_t size = engine() % 20000;
    const unsigned extraPercent = engine() % 30;
    while (text.size() < size) {
      if (engine() % 100 < extraPercent)
        text.push_back(extras[engine() % extras.size()]);
      else
        text.push_back(static_cast<unsigned char>(alphabet[engine() % alphabet.size()]));
    }
    EXPECT_EQ(Halyard::Decode(text), ReferenceDecode(text));
  }
}

// --- IsBase64 --------------------------------------------------------------------------------

TEST(Base64IsBase64, AlphabetAndPadOnly) {
  EXPECT_TRUE(Halyard::IsBase64('='));
  EXPECT_FALSE(Halyard::IsBase64(' '));
  EXPECT_FALSE(Halyard::IsBase64('-'));
  EXPECT_FALSE(Halyard::IsBase64('_'));
  int count = 0;
  for (int c = 0; c < 256; ++c) count += Halyard::IsBase64(static_cast<unsigned char>(c));
  EXPECT_EQ(count, 65);
  for (unsigned char c : std::string("AZaz09+/")) EXPECT_TRUE(Halyard::IsBase64(c)) << c;
  for (unsigned char c : std::string("@[`{:\r\n\x80\xC3\xFF")) {
    EXPECT_FALSE(Halyard::IsBase64(c)) << int{c};
  }
}

// --- Round trips -------------------------------------------------------------------------------

TEST(Base64RoundTrip, EveryLengthUpTo300) {
  for (std::size_t size = 0; size <= 300; ++size) {
    SCOPED_TRACE(size);
    const Bytes bytes = RandomBytes(size, static_cast<std::uint32_t>(size) + 100);
    EXPECT_EQ(Halyard::Decode(Halyard::Encode(bytes)), bytes);
  }
}

TEST(Base64RoundTrip, LargeInputs) {
  for (std::size_t size : {4096u, 65537u, 1048576u, 3000001u}) {
    SCOPED_TRACE(size);
    const Bytes bytes = RandomBytes(size, static_cast<std::uint32_t>(size));
    const UTF16String text = Halyard::Encode(bytes);
    const std::size_t groups = (size + 2) / 3;
    EXPECT_EQ(text.size(), groups * 4 + ((groups - 1) / 19 + 1) * 2);
    EXPECT_EQ(Halyard::Decode(text), bytes);
  }
}

}  // namespace
