#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>

#include "messaging_support.h"
#include "tovfoundation/messaging.h"

namespace {

// The plain definition, written with 64-bit signed arithmetic and reduced
// modulo 2^32 at each step.
std::uint32_t ReferenceHash(const std::string& name) {
  std::int64_t h = 0;
  for (char ch : name) {
    std::int64_t c = static_cast<unsigned char>(ch);
    if (c >= 128) c -= 256;
    h = (h * 5 + c) % 4294967296LL;
    if (h < 0) h += 4294967296LL;
  }
  return static_cast<std::uint32_t>(h);
}

TEST(MessageID, WorkedValues) {
  struct Row {
    const char* name;
    std::uint32_t id;
  };
  const Row rows[] = {
      {"", 0u}, {"a", 97u}, {"ab", 583u}, {"\xE9", 4294967273u}, {"abc", 583u * 5u + 99u},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(TOV::HashMessageTypeNameToMessageID(row.name), row.id);
  }
}

TEST(MessageID, EmptyNameIsZero) { EXPECT_EQ(TOV::HashMessageTypeNameToMessageID(""), 0u); }

TEST(MessageID, HighBytesSubtract) {
  // 0xFF is -1: "\xFF\xFF" gives -1 * 5 - 1 = -6, i.e. 2^32 - 6.
  EXPECT_EQ(TOV::HashMessageTypeNameToMessageID("\xFF"), 0xFFFFFFFFu);
  EXPECT_EQ(TOV::HashMessageTypeNameToMessageID("\xFF\xFF"), 4294967290u);
  // 0x80 is -128.
  EXPECT_EQ(TOV::HashMessageTypeNameToMessageID("\x80"), 4294967168u);
  // "a" then 0xE9: 97 * 5 - 23 = 462.
  EXPECT_EQ(TOV::HashMessageTypeNameToMessageID("a\xE9"), 462u);
}

TEST(MessageID, LongNamesWrapModulo2To32) {
  const std::string name(40, 'z');  // 5^40 far exceeds 2^32
  EXPECT_EQ(TOV::HashMessageTypeNameToMessageID(name.c_str()), ReferenceHash(name));
  // Fourteen 'z' bytes already overflow 32 bits.
  std::uint64_t wide = 0;
  for (int i = 0; i < 14; ++i) wide = wide * 5 + 'z';
  EXPECT_GT(wide, 0xFFFFFFFFull);
  EXPECT_EQ(TOV::HashMessageTypeNameToMessageID(std::string(14, 'z').c_str()),
            static_cast<std::uint32_t>(wide & 0xFFFFFFFFull));
}

TEST(MessageID, CollisionsAreNotAvoided) {
  // "a" followed by x and "b" followed by x - 5 collide: 97*5+70 == 98*5+65.
  EXPECT_EQ(TOV::HashMessageTypeNameToMessageID("aF"), TOV::HashMessageTypeNameToMessageID("bA"));
  EXPECT_EQ(TOV::HashMessageTypeNameToMessageID("aF"), 555u);
}

TEST(MessageID, CaseIsNotFolded) {
  EXPECT_EQ(TOV::HashMessageTypeNameToMessageID("A"), 65u);
  EXPECT_NE(TOV::HashMessageTypeNameToMessageID("A"), TOV::HashMessageTypeNameToMessageID("a"));
}

TEST(MessageID, SameNameSameIdentifierEveryCall) {
  const std::uint32_t first = TOV::HashMessageTypeNameToMessageID("EncoderProgress");
  for (int i = 0; i < 5; ++i)
    EXPECT_EQ(TOV::HashMessageTypeNameToMessageID("EncoderProgress"), first);
  EXPECT_EQ(first, ReferenceHash("EncoderProgress"));
}

TEST(MessageID, MatchesReferenceOnRandomByteStrings) {
  std::mt19937 random(20261122u);
  std::uniform_int_distribution<int> length(0, 64);
  std::uniform_int_distribution<int> byte(1, 255);  // no NUL inside a name
  for (int round = 0; round < 2000; ++round) {
    std::string name(static_cast<std::size_t>(length(random)), '\0');
    for (char& ch : name) ch = static_cast<char>(byte(random));
    SCOPED_TRACE(round);
    ASSERT_EQ(TOV::HashMessageTypeNameToMessageID(name.c_str()), ReferenceHash(name));
  }
}

}  // namespace
