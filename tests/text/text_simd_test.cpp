// The vector paths of the text conversions against the scalar path.
//
// Every kernel set the processor supports (AVX2, AVX-512) must give exactly
// what the scalar kernels give: the same UTF-16 units, UTF-8 bytes, Base64
// characters and decoded bytes, for valid and invalid input alike. The
// differential tests draw ten million inputs of 0 to 512 bytes (UTF-8 and
// bytes to encode; 0 to 256 units of UTF-16 and Base64 text) per path from a seeded generator named
// in the test: windows at random offsets into a large pool of text built from tokens (ASCII runs,
// one- to four-byte characters, runs of one script, ill-formed sequences, lone surrogates; encoder
// output with random damage for the decoder). Builds with sanitizers and the Windows build under
// Wine define TOV_TEXT_SIMD_REDUCED_CASES and draw one million, which still crosses every window
// and line position many times. Then every line-break position, every position of an unexpected
// unit, and inputs that end where an inaccessible page begins.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "basalt/utf.h"
#include "basalt/utf_internal.h"
#include "platform/cpu.h"
#include "platform/page_guard.h"
#include "text/base64_internal.h"
#include "tovfoundation/text.h"

namespace {

using tovimpl::platform::SimdLevel;
using Bytes = std::vector<unsigned char>;

#if defined(TOV_TEXT_SIMD_REDUCED_CASES)
constexpr std::size_t kCases = 1'000'000;
#else
constexpr std::size_t kCases = 10'000'000;
#endif
// Inputs of 0 to 512 bytes: 512 bytes of UTF-8 or Base64 input, 256 units of
// UTF-16.
constexpr std::size_t kMaxBytes = 512;
constexpr std::size_t kMaxUnits = 256;

// The vector levels this processor can run.
std::vector<SimdLevel> VectorLevels() {
  std::vector<SimdLevel> levels;
  const SimdLevel top = tovimpl::platform::ProcessorSimdLevel();
  if (top >= SimdLevel::kAvx2) levels.push_back(SimdLevel::kAvx2);
  if (top >= SimdLevel::kAvx512) levels.push_back(SimdLevel::kAvx512);
  return levels;
}

// splitmix64: fast, and the same sequence on every platform.
class Random {
 public:
  explicit Random(std::uint64_t seed) : mState(seed) {}
  std::uint64_t Next() {
    std::uint64_t z = (mState += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }
  // Uniform in [0, n).
  std::uint32_t Below(std::uint32_t n) {
    return static_cast<std::uint32_t>(((Next() >> 32) * n) >> 32);
  }
  bool OneIn(std::uint32_t n) { return Below(n) == 0; }

 private:
  std::uint64_t mState;
};

// --- text pools ---------------------------------------------------------------------

void AppendUtf8(std::string& out, std::uint32_t cp) {
  if (cp < 0x80) {
    out.push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

std::uint32_t TwoByteCp(Random& r) { return 0x80 + r.Below(0x800 - 0x80); }
std::uint32_t ThreeByteCp(Random& r) {
  for (;;) {
    const std::uint32_t cp = 0x800 + r.Below(0x10000 - 0x800);
    if (cp < 0xD800 || cp > 0xDFFF) return cp;
  }
}
std::uint32_t FourByteCp(Random& r) { return 0x10000 + r.Below(0x110000 - 0x10000); }

// Ill-formed UTF-8: stray and truncated sequences, overlong forms, encoded
// surrogates, values above U+10FFFF, bytes that never occur.
void AppendIllFormed(std::string& out, Random& r) {
  std::string valid;
  switch (r.Below(8)) {
    case 0:  // a stray continuation byte
      out.push_back(static_cast<char>(0x80 + r.Below(0x40)));
      break;
    case 1:  // a sequence cut short
      AppendUtf8(valid, r.OneIn(2) ? ThreeByteCp(r) : FourByteCp(r));
      out.append(valid, 0, 1 + r.Below(static_cast<std::uint32_t>(valid.size() - 1)));
      break;
    case 2:  // overlong two-byte form
      out.push_back(static_cast<char>(0xC0 + r.Below(2)));
      out.push_back(static_cast<char>(0x80 + r.Below(0x40)));
      break;
    case 3:  // overlong three-byte form
      out.push_back(static_cast<char>(0xE0));
      out.push_back(static_cast<char>(0x80 + r.Below(0x20)));
      out.push_back(static_cast<char>(0x80 + r.Below(0x40)));
      break;
    case 4:  // an encoded surrogate
      out.push_back(static_cast<char>(0xED));
      out.push_back(static_cast<char>(0xA0 + r.Below(0x20)));
      out.push_back(static_cast<char>(0x80 + r.Below(0x40)));
      break;
    case 5:  // above U+10FFFF, or an overlong four-byte form
      out.push_back(static_cast<char>(r.OneIn(2) ? 0xF4 : 0xF0));
      out.push_back(static_cast<char>(r.OneIn(2) ? 0x90 + r.Below(0x30) : 0x80 + r.Below(0x10)));
      out.push_back(static_cast<char>(0x80 + r.Below(0x40)));
      out.push_back(static_cast<char>(0x80 + r.Below(0x40)));
      break;
    case 6:  // bytes that never occur
      out.push_back(static_cast<char>(0xF5 + r.Below(11)));
      break;
    default:  // any byte at all
      out.push_back(static_cast<char>(r.Below(256)));
      break;
  }
}

std::string Utf8Pool(std::uint64_t seed, std::size_t size) {
  Random r(seed);
  std::string text;
  while (text.size() < size) {
    const std::uint32_t pick = r.Below(100);
    if (pick < 35) {
      const std::uint32_t run = 1 + r.Below(r.OneIn(4) ? 120 : 24);
      for (std::uint32_t i = 0; i < run; ++i) text.push_back(static_cast<char>(r.Below(128)));
    } else if (pick < 52) {
      for (std::uint32_t n = 1 + r.Below(8); n > 0; --n) AppendUtf8(text, TwoByteCp(r));
    } else if (pick < 68) {
      for (std::uint32_t n = 1 + r.Below(8); n > 0; --n) AppendUtf8(text, ThreeByteCp(r));
    } else if (pick < 72) {
      AppendUtf8(text, FourByteCp(r));
    } else if (pick < 90) {  // a run of one script: Latin-1, Cyrillic, CJK
      const std::uint32_t base = r.OneIn(3) ? 0xA0 : r.OneIn(2) ? 0x400 : 0x4E00;
      const std::uint32_t run = 2 + r.Below(30);
      for (std::uint32_t i = 0; i < run; ++i) {
        AppendUtf8(text, r.OneIn(6) ? 0x20 : base + r.Below(0x60));
      }
    } else if (pick < 95) {  // characters at the edges of each length
      static constexpr std::uint32_t kEdges[] = {0x7F,   0x80,   0x7FF,  0x800,   0xD7FF,
                                                 0xE000, 0xFFFD, 0xFFFF, 0x10000, 0x10FFFF};
      AppendUtf8(text, kEdges[r.Below(10)]);
    } else {
      AppendIllFormed(text, r);
    }
  }
  text.resize(size);
  return text;
}

UTF16String Utf16Pool(std::uint64_t seed, std::size_t size) {
  Random r(seed);
  UTF16String text;
  const auto unit = [&](std::uint32_t u) { text.push_back(static_cast<unsigned short>(u)); };
  while (text.size() < size) {
    const std::uint32_t pick = r.Below(100);
    if (pick < 35) {
      const std::uint32_t run = 1 + r.Below(r.OneIn(4) ? 120 : 24);
      for (std::uint32_t i = 0; i < run; ++i) unit(r.Below(128));
    } else if (pick < 55) {
      for (std::uint32_t n = 1 + r.Below(8); n > 0; --n) unit(TwoByteCp(r));
    } else if (pick < 70) {
      for (std::uint32_t n = 1 + r.Below(8); n > 0; --n) unit(ThreeByteCp(r));
    } else if (pick < 75) {  // a surrogate pair
      const std::uint32_t v = FourByteCp(r) - 0x10000;
      unit(0xD800 + (v >> 10));
      unit(0xDC00 + (v & 0x3FF));
    } else if (pick < 92) {
      const std::uint32_t base = r.OneIn(3) ? 0xA0 : r.OneIn(2) ? 0x400 : 0x4E00;
      const std::uint32_t run = 2 + r.Below(30);
      for (std::uint32_t i = 0; i < run; ++i) unit(r.OneIn(6) ? 0x20 : base + r.Below(0x60));
    } else if (pick < 95) {  // an unpaired surrogate
      unit(0xD800 + r.Below(0x800));
    } else if (pick < 95) {
      static constexpr std::uint32_t kEdges[] = {0x7F,   0x80,   0x7FF,  0x800,  0xD7FF,
                                                 0xDBFF, 0xDC00, 0xE000, 0xFFFD, 0xFFFF};
      unit(kEdges[r.Below(10)]);
    } else {
      unit(r.Below(0x10000));
    }
  }
  text.resize(size);
  return text;
}

// Encoder output (its CRLF layout) of random bytes.
UTF16String Base64Pool(std::uint64_t seed, std::size_t bytes) {
  Random r(seed);
  Bytes data(bytes);
  for (auto& b : data) b = static_cast<unsigned char>(r.Next());
  return Halyard::Encode(data);
}

// Units a Base64 text may hold that its clean stretches do not.
constexpr unsigned short kUnexpected[] = {u'=',   u'\r',  u'\n',  u' ',   u'\t',  u'-',
                                          u'_',   u'.',   0x0000, 0x007F, 0x0080, 0x00C1,
                                          0x0141, 0x2B00, 0xD800, 0xDC41, 0xFF0B, 0xFFFF};

// --- comparing one input ---------------------------------------------------------

template <typename Text>
bool Same(const Text& a, const Text& b) {
  return a.size() == b.size() &&
         (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0);
}

struct Utf8Case {
  UTF16String expected, actual;
  bool Check(const basalt::utf::Kernels& scalar,
             const std::vector<const basalt::utf::Kernels*>& vector, const char* text,
             std::size_t length, std::string& failure) {
    basalt::utf::UTF8to16Into(scalar, text, length, expected);
    for (std::size_t k = 0; k < vector.size(); ++k) {
      basalt::utf::UTF8to16Into(*vector[k], text, length, actual);
      if (!Same(actual, expected)) {
        failure = "level " + std::to_string(k + 1) + ", length " + std::to_string(length);
        return false;
      }
    }
    return true;
  }
};

struct Utf16Case {
  UTF8String expected, actual;
  bool Check(const basalt::utf::Kernels& scalar,
             const std::vector<const basalt::utf::Kernels*>& vector, const unsigned short* text,
             std::size_t length, std::string& failure) {
    basalt::utf::UTF16to8Into(scalar, text, length, expected);
    for (std::size_t k = 0; k < vector.size(); ++k) {
      basalt::utf::UTF16to8Into(*vector[k], text, length, actual);
      if (!Same(actual, expected)) {
        failure = "level " + std::to_string(k + 1) + ", length " + std::to_string(length);
        return false;
      }
    }
    return true;
  }
};

namespace b64 = tovimpl::text::base64;

struct EncodeCase {
  UTF16String expected, actual;
  bool Check(const b64::Kernels& scalar, const std::vector<const b64::Kernels*>& vector,
             const unsigned char* bytes, std::size_t length, std::string& failure) {
    b64::EncodeInto(scalar, bytes, length, expected);
    for (std::size_t k = 0; k < vector.size(); ++k) {
      b64::EncodeInto(*vector[k], bytes, length, actual);
      if (!Same(actual, expected)) {
        failure = "level " + std::to_string(k + 1) + ", length " + std::to_string(length);
        return false;
      }
    }
    return true;
  }
};

struct DecodeCase {
  Bytes expected, actual;
  bool Check(const b64::Kernels& scalar, const std::vector<const b64::Kernels*>& vector,
             const unsigned short* text, std::size_t length, std::string& failure) {
    b64::DecodeInto(scalar, text, length, expected);
    for (std::size_t k = 0; k < vector.size(); ++k) {
      b64::DecodeInto(*vector[k], text, length, actual);
      if (!Same(actual, expected)) {
        failure = "level " + std::to_string(k + 1) + ", length " + std::to_string(length);
        return false;
      }
    }
    return true;
  }
};

std::vector<const basalt::utf::Kernels*> UtfVectorKernels() {
  std::vector<const basalt::utf::Kernels*> kernels;
  for (SimdLevel level : VectorLevels()) kernels.push_back(&basalt::utf::KernelsFor(level));
  return kernels;
}
const basalt::utf::Kernels& UtfScalar() { return basalt::utf::KernelsFor(SimdLevel::kScalar); }

std::vector<const b64::Kernels*> Base64VectorKernels() {
  std::vector<const b64::Kernels*> kernels;
  for (SimdLevel level : VectorLevels()) kernels.push_back(&b64::KernelsFor(level));
  return kernels;
}
const b64::Kernels& Base64Scalar() { return b64::KernelsFor(SimdLevel::kScalar); }

#define SKIP_WITHOUT_VECTOR_LEVELS()                                                \
  if (VectorLevels().empty()) GTEST_SKIP() << "this processor has no vector level"; \
  static_assert(true)

// --- the dispatch ------------------------------------------------------------------

TEST(TextSimdDispatch, LevelIsTheProcessorsUnlessForcedScalar) {
  const char* forced = std::getenv("TOV_FORCE_SCALAR");
  const bool scalar = forced != nullptr && forced[0] != '\0' && std::strcmp(forced, "0") != 0;
  const SimdLevel level = tovimpl::platform::TextSimdLevel();
  std::printf("text conversions: %s (processor: %s)\n", tovimpl::platform::SimdLevelName(level),
              tovimpl::platform::SimdLevelName(tovimpl::platform::ProcessorSimdLevel()));
#if defined(TOV_FORCE_SCALAR)
  const bool built = true;
#else
  const bool built = false;
#endif
  EXPECT_EQ(level, built || scalar ? SimdLevel::kScalar : tovimpl::platform::ProcessorSimdLevel());
}

// --- ten million random inputs per path --------------------------------------------

TEST(TextSimdDifferential, Utf8To16Seed5EED0001) {
  SKIP_WITHOUT_VECTOR_LEVELS();
  const std::string pool = Utf8Pool(0x5EED0001, 1 << 20);
  const auto vector = UtfVectorKernels();
  Random r(0x5EED0001);
  Utf8Case check;
  std::string failure;
  for (std::size_t i = 0; i < kCases; ++i) {
    const std::size_t length = r.Below(kMaxBytes + 1);
    const std::size_t offset = r.Below(static_cast<std::uint32_t>(pool.size() - length));
    if (!check.Check(UtfScalar(), vector, pool.data() + offset, length, failure)) {
      FAIL() << "case " << i << " at offset " << offset << ": " << failure;
    }
  }
}

TEST(TextSimdDifferential, Utf16To8Seed5EED0002) {
  SKIP_WITHOUT_VECTOR_LEVELS();
  const UTF16String pool = Utf16Pool(0x5EED0002, 1 << 20);
  const auto vector = UtfVectorKernels();
  Random r(0x5EED0002);
  Utf16Case check;
  std::string failure;
  for (std::size_t i = 0; i < kCases; ++i) {
    const std::size_t length = r.Below(kMaxUnits + 1);
    const std::size_t offset = r.Below(static_cast<std::uint32_t>(pool.size() - length));
    if (!check.Check(UtfScalar(), vector, pool.data() + offset, length, failure)) {
      FAIL() << "case " << i << " at offset " << offset << ": " << failure;
    }
  }
}

TEST(TextSimdDifferential, Base64EncodeSeed5EED0003) {
  SKIP_WITHOUT_VECTOR_LEVELS();
  Random r(0x5EED0003);
  Bytes pool(1 << 20);
  for (auto& b : pool) b = static_cast<unsigned char>(r.Next());
  const auto vector = Base64VectorKernels();
  EncodeCase check;
  std::string failure;
  for (std::size_t i = 0; i < kCases; ++i) {
    const std::size_t length = r.Below(kMaxBytes + 1);
    const std::size_t offset = r.Below(static_cast<std::uint32_t>(pool.size() - length));
    if (!check.Check(Base64Scalar(), vector, pool.data() + offset, length, failure)) {
      FAIL() << "case " << i << " at offset " << offset << ": " << failure;
    }
  }
}

TEST(TextSimdDifferential, Base64DecodeSeed5EED0004) {
  SKIP_WITHOUT_VECTOR_LEVELS();
  const UTF16String pool = Base64Pool(0x5EED0004, 3 << 18);
  const auto vector = Base64VectorKernels();
  Random r(0x5EED0004);
  DecodeCase check;
  UTF16String text;
  std::string failure;
  for (std::size_t i = 0; i < kCases; ++i) {
    const std::size_t length = r.Below(kMaxUnits + 1);
    const std::size_t offset = r.Below(static_cast<std::uint32_t>(pool.size() - length));
    // Half the inputs are clean encoder output (from any offset), the others
    // carry one to three unexpected units or end with pads.
    const unsigned short* input = pool.data() + offset;
    std::size_t inputLength = length;
    if (length != 0 && r.OneIn(2)) {
      text.assign(input, length);
      const std::uint32_t damage = 1 + r.Below(3);
      for (std::uint32_t d = 0; d < damage; ++d) {
        text[r.Below(static_cast<std::uint32_t>(length))] =
            r.OneIn(4) ? static_cast<unsigned short>(r.Next())
                       : kUnexpected[r.Below(sizeof kUnexpected / sizeof kUnexpected[0])];
      }
      if (r.OneIn(4)) text.append(1 + r.Below(2), u'=');
      input = text.data();
      inputLength = text.size();
    }
    if (!check.Check(Base64Scalar(), vector, input, inputLength, failure)) {
      FAIL() << "case " << i << " at offset " << offset << ": " << failure;
    }
  }
}

// --- every position --------------------------------------------------------------

TEST(TextSimdPositions, Base64EncodeEveryLengthAndLineBreak) {
  SKIP_WITHOUT_VECTOR_LEVELS();
  Random r(0x5EED0005);
  Bytes bytes(57 * 40 + 3);
  for (auto& b : bytes) b = static_cast<unsigned char>(r.Next());
  EncodeCase check;
  std::string failure;
  // Every length up to 40 lines: each line break falls at every place of a
  // kernel's block.
  for (std::size_t length = 0; length <= bytes.size(); ++length) {
    ASSERT_TRUE(check.Check(Base64Scalar(), Base64VectorKernels(), bytes.data(), length, failure))
        << failure;
  }
}

TEST(TextSimdPositions, Base64DecodeEveryUnexpectedUnitAtEveryPosition) {
  SKIP_WITHOUT_VECTOR_LEVELS();
  const UTF16String clean = Base64Pool(0x5EED0006, 300);  // 406 units, five line breaks
  DecodeCase check;
  std::string failure;
  for (std::size_t at = 0; at < clean.size(); ++at) {
    for (unsigned short unit : kUnexpected) {
      UTF16String text = clean;
      text[at] = unit;
      ASSERT_TRUE(
          check.Check(Base64Scalar(), Base64VectorKernels(), text.data(), text.size(), failure))
          << failure << ", unit " << unit << " at " << at;
      // Inserted rather than replacing: shifts the group alignment from there on.
      text = clean;
      text.insert(at, 1, unit);
      ASSERT_TRUE(
          check.Check(Base64Scalar(), Base64VectorKernels(), text.data(), text.size(), failure))
          << failure << ", unit " << unit << " inserted at " << at;
    }
    // Cut short there.
    ASSERT_TRUE(check.Check(Base64Scalar(), Base64VectorKernels(), clean.data(), at, failure))
        << failure;
  }
}

TEST(TextSimdPositions, Utf8To16EveryIllFormedByteAtEveryPosition) {
  SKIP_WITHOUT_VECTOR_LEVELS();
  // Mixed well-formed text of 1- to 4-byte characters, 200 bytes or so.
  std::string clean;
  Random r(0x5EED0007);
  while (clean.size() < 200) {
    const std::uint32_t pick = r.Below(5);
    AppendUtf8(clean, pick == 0   ? TwoByteCp(r)
                      : pick == 1 ? ThreeByteCp(r)
                      : pick == 2 ? FourByteCp(r)
                                  : 0x20 + r.Below(0x5F));
  }
  static constexpr unsigned char kBad[] = {0x80, 0xBF, 0xC0, 0xC1, 0xC2, 0xDF, 0xE0,
                                           0xED, 0xEF, 0xF0, 0xF4, 0xF5, 0xFF, 0x00};
  Utf8Case check;
  std::string failure;
  for (std::size_t at = 0; at < clean.size(); ++at) {
    for (unsigned char bad : kBad) {
      std::string text = clean;
      text[at] = static_cast<char>(bad);
      ASSERT_TRUE(check.Check(UtfScalar(), UtfVectorKernels(), text.data(), text.size(), failure))
          << failure << ", byte " << int{bad} << " at " << at;
    }
    ASSERT_TRUE(check.Check(UtfScalar(), UtfVectorKernels(), clean.data(), at, failure)) << failure;
    ASSERT_TRUE(
        check.Check(UtfScalar(), UtfVectorKernels(), clean.data() + at, clean.size() - at, failure))
        << failure;
  }
}

TEST(TextSimdPositions, Utf16To8EveryLoneSurrogateAtEveryPosition) {
  SKIP_WITHOUT_VECTOR_LEVELS();
  UTF16String clean;
  Random r(0x5EED0008);
  while (clean.size() < 200) {
    const std::uint32_t pick = r.Below(5);
    if (pick == 2) {
      const std::uint32_t v = FourByteCp(r) - 0x10000;
      clean.push_back(static_cast<unsigned short>(0xD800 + (v >> 10)));
      clean.push_back(static_cast<unsigned short>(0xDC00 + (v & 0x3FF)));
    } else {
      clean.push_back(static_cast<unsigned short>(pick == 0   ? TwoByteCp(r)
                                                  : pick == 1 ? ThreeByteCp(r)
                                                              : 0x20 + r.Below(0x5F)));
    }
  }
  static constexpr unsigned short kOdd[] = {0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xD7FF, 0xE000,
                                            0xFFFF, 0x007F, 0x0080, 0x07FF, 0x0800, 0x0000};
  Utf16Case check;
  std::string failure;
  for (std::size_t at = 0; at < clean.size(); ++at) {
    for (unsigned short odd : kOdd) {
      UTF16String text = clean;
      text[at] = odd;
      ASSERT_TRUE(check.Check(UtfScalar(), UtfVectorKernels(), text.data(), text.size(), failure))
          << failure << ", unit " << odd << " at " << at;
    }
    ASSERT_TRUE(check.Check(UtfScalar(), UtfVectorKernels(), clean.data(), at, failure)) << failure;
  }
}

// Long texts cross the pieces the conversions cut their input into.
TEST(TextSimdPositions, LongTextsAcrossPieces) {
  SKIP_WITHOUT_VECTOR_LEVELS();
  const std::string utf8 = Utf8Pool(0x5EED0009, 100'000);
  const UTF16String utf16 = Utf16Pool(0x5EED000A, 100'000);
  const UTF16String base64 = Base64Pool(0x5EED000B, 100'000);
  Utf8Case c8;
  Utf16Case c16;
  DecodeCase cd;
  std::string failure;
  for (std::size_t cut = 0; cut < 8; ++cut) {
    ASSERT_TRUE(
        c8.Check(UtfScalar(), UtfVectorKernels(), utf8.data() + cut, utf8.size() - cut, failure))
        << failure;
    ASSERT_TRUE(
        c16.Check(UtfScalar(), UtfVectorKernels(), utf16.data() + cut, utf16.size() - cut, failure))
        << failure;
    ASSERT_TRUE(cd.Check(Base64Scalar(), Base64VectorKernels(), base64.data() + cut,
                         base64.size() - cut, failure))
        << failure;
  }
}

// --- no read past the end ------------------------------------------------------------

// Inputs of every length up to 300 that end where an inaccessible page
// begins, and that start right after one, through every level's kernels.
TEST(TextSimdBounds, NoLevelReadsOutsideItsInput) {
  tovimpl::platform::GuardedPages pages(64 * 1024);
  ASSERT_TRUE(pages.ok());
  const std::string utf8 = Utf8Pool(0x5EED000C, 400);
  const UTF16String utf16 = Utf16Pool(0x5EED000D, 400);
  const UTF16String base64 = Base64Pool(0x5EED000E, 300);
  std::vector<SimdLevel> levels = VectorLevels();
  levels.insert(levels.begin(), SimdLevel::kScalar);
  UTF16String units;
  UTF8String bytes;
  UTF16String text;
  Bytes decoded;
  std::vector<unsigned short> scratchUnits(300 + basalt::utf::kKernelSlack);
  std::vector<unsigned char> scratchBytes(3 * 300 + basalt::utf::kKernelSlack);
  for (SimdLevel level : levels) {
    SCOPED_TRACE(tovimpl::platform::SimdLevelName(level));
    const auto& utf = basalt::utf::KernelsFor(level);
    const auto& b64k = b64::KernelsFor(level);
    for (std::size_t length = 0; length <= 300; ++length) {
      for (const bool atEnd : {true, false}) {
        unsigned char* place = atEnd ? pages.end() - length : pages.begin();
        std::memcpy(place, utf8.data(), length);
        basalt::utf::UTF8to16Into(utf, reinterpret_cast<const char*>(place), length, units);
        {  // the kernel itself, which short texts do not reach through the conversion
          const unsigned char* src = place;
          unsigned short* dst = scratchUnits.data();
          utf.toUtf16(src, place + length, dst, true);
        }
        b64::EncodeInto(b64k, place, length, text);

        auto* wide =
            reinterpret_cast<unsigned short*>(atEnd ? pages.end() - 2 * length : pages.begin());
        std::memcpy(wide, utf16.data(), 2 * length);
        basalt::utf::UTF16to8Into(utf, wide, length, bytes);
        {
          const unsigned short* src = wide;
          unsigned char* dst = scratchBytes.data();
          utf.toUtf8(src, wide + length, dst, true);
        }
        std::memcpy(wide, base64.data(), 2 * length);
        b64::DecodeInto(b64k, wide, length, decoded);
      }
    }
  }
}

}  // namespace
