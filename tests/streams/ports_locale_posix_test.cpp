// File ports on POSIX systems: narrow paths the thread's UTF-8 locale rejects,
// and narrow paths with characters beyond the Basic Multilingual Plane.
#include <gtest/gtest.h>
#include <locale.h>

#include <string>

#include "basalt/utf.h"
#include "streams/stream_test_support.h"
#include "tovfoundation/streams.h"

using Halyard::CFilePort;
using Halyard::CFilePortEx;
using tovtest::TempTree;

namespace {

// Switches the calling thread to C.UTF-8 for the lifetime of the object.
class Utf8Thread {
 public:
  Utf8Thread() : mLocale(::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {
    if (mLocale != nullptr) mPrevious = ::uselocale(mLocale);
  }
  ~Utf8Thread() {
    if (mLocale == nullptr) return;
    ::uselocale(mPrevious);
    ::freelocale(mLocale);
  }
  Utf8Thread(const Utf8Thread&) = delete;
  Utf8Thread& operator=(const Utf8Thread&) = delete;
  bool Active() const { return mLocale != nullptr; }

 private:
  locale_t mLocale;
  locale_t mPrevious = nullptr;
};

class PortLocalePosixTest : public ::testing::Test {
 protected:
  TempTree dir{"ports-locale"};
};

TEST_F(PortLocalePosixTest, InvalidMultibyteNarrowPathFailsToOpenAndCreatesNothing) {
  Utf8Thread utf8;
  if (!utf8.Active()) GTEST_SKIP() << "no C.UTF-8 locale";
  const std::string bad = dir.NativeOf("bad\xFF.bin");
  CFilePort port(Halyard::kAccessWrite, 0);
  EXPECT_EQ(port.Open(bad.c_str()), TOV::kErrOpenFailed);
  EXPECT_EQ(port.Path(), nullptr);
  CFilePortEx portEx(Halyard::kAccessWrite, 0);
  EXPECT_EQ(portEx.Open(bad.c_str()), TOV::kErrOpenFailed);
  EXPECT_EQ(portEx.Path(), nullptr);
  EXPECT_FALSE(tovtest::Exists(bad));
}

TEST_F(PortLocalePosixTest, TruncatedMultibyteNarrowPathFailsToOpen) {
  Utf8Thread utf8;
  if (!utf8.Active()) GTEST_SKIP() << "no C.UTF-8 locale";
  // The first two bytes of a three-byte sequence end the path.
  const std::string cut = dir.NativeOf("cut\xE2\x82");
  CFilePortEx port(Halyard::kAccessReadWrite, 0);
  EXPECT_EQ(port.Open(cut.c_str()), TOV::kErrOpenFailed);
  EXPECT_FALSE(tovtest::Exists(cut));
}

TEST_F(PortLocalePosixTest, CharacterBeyondTheBmpBecomesASurrogatePair) {
  Utf8Thread utf8;
  if (!utf8.Active()) GTEST_SKIP() << "no C.UTF-8 locale";
  const std::string name = "note\xF0\x9D\x84\x9E.bin";  // U+1D11E in UTF-8
  const std::string path = dir.NativeOf(name);
  CFilePortEx port(Halyard::kAccessWrite, 0);
  ASSERT_EQ(port.Open(path.c_str()), 0u);
  const unsigned char data[3] = {1, 2, 3};
  EXPECT_EQ(port.Write(0, 3, data), 0u);
  EXPECT_EQ(port.Close(), 0u);
  EXPECT_EQ(tovtest::ReadBytes(path), (tovtest::Bytes{1, 2, 3}));
  ASSERT_NE(port.Path(), nullptr);
  const UTF16String stored(port.Path());
  ASSERT_GE(stored.size(), 10u);
  const UTF16String tail = stored.substr(stored.size() - 10);
  EXPECT_EQ(tail[4], 0xD834u);
  EXPECT_EQ(tail[5], 0xDD1Eu);
  EXPECT_EQ(tail, basalt::ToUTF16(u"note\U0001D11E.bin"));
}

}  // namespace
