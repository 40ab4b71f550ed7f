// Byte order helpers.
#include <gtest/gtest.h>

#include <cstdint>

#include "tovfoundation/streams.h"

using namespace basalt::literals;

TEST(ByteOrder, FlipIntBytesReversesFourBytes) {
  EXPECT_EQ(Halyard::FlipIntBytes(0x11223344u), 0x44332211u);
  EXPECT_EQ(Halyard::FlipIntBytes(0xFF000000u), 0x000000FFu);
}

TEST(ByteOrder, FlipIntegerReversesSignedValues) {
  EXPECT_EQ(Halyard::FlipInteger(0x11223344), 0x44332211);
  EXPECT_EQ(Halyard::FlipInteger(-2), static_cast<std::int32_t>(0xFEFFFFFFu));
}

TEST(ByteOrder, FlipShortBytesSwapsTwoBytes) {
  EXPECT_EQ(Halyard::FlipShortBytes(0x1234), 0x3412);
  EXPECT_EQ(Halyard::FlipShortBytes(0xFF00), 0x00FF);
}

TEST(ByteOrder, FlipShortSwapsSignedValues) {
  EXPECT_EQ(Halyard::FlipShort(0x1234), 0x3412);
  EXPECT_EQ(Halyard::FlipShort(-2), static_cast<std::int16_t>(0xFEFF));
}

TEST(ByteOrder, FlipReversesThreeBytes) {
  unsigned char bytes[3] = {1, 2, 3};
  Halyard::Flip(bytes, 3);
  EXPECT_EQ(bytes[0], 3);
  EXPECT_EQ(bytes[1], 2);
  EXPECT_EQ(bytes[2], 1);
}

TEST(ByteOrder, FlipOfOneOrZeroBytesChangesNothing) {
  unsigned char bytes[2] = {1, 2};
  Halyard::Flip(bytes, 1);
  Halyard::Flip(bytes, 0);
  Halyard::Flip(bytes, -5);
  EXPECT_EQ(bytes[0], 1);
  EXPECT_EQ(bytes[1], 2);
}

TEST(ByteOrder, FlipReversesEvenCounts) {
  unsigned char bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  Halyard::Flip(bytes, 8);
  const unsigned char expected[8] = {8, 7, 6, 5, 4, 3, 2, 1};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(bytes[i], expected[i]) << i;
}

TEST(ByteOrder, FlipStringSwapsEveryUnit) {
  UTF16String text = u"AB"_u16;
  text.push_back(0x1234);
  Halyard::FlipString(text);
  ASSERT_EQ(text.size(), 3u);
  EXPECT_EQ(text[0], 0x4100);
  EXPECT_EQ(text[1], 0x4200);
  EXPECT_EQ(text[2], 0x3412);
}

TEST(ByteOrder, FlipStringOfEmptyTextStaysEmpty) {
  UTF16String text;
  Halyard::FlipString(text);
  EXPECT_TRUE(text.empty());
}
