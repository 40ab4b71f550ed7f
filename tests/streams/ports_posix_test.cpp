// File ports on POSIX systems: a narrow path is widened in the thread's
// locale (newlocale and uselocale).
#include <gtest/gtest.h>
#include <locale.h>

#include <string>

#include "basalt/utf.h"
#include "streams/stream_test_support.h"
#include "tovfoundation/streams.h"

using Halyard::CFilePort;
using tovtest::TempTree;

namespace {

class FilePortPosixTest : public ::testing::Test {
 protected:
  TempTree dir;
};

TEST_F(FilePortPosixTest, NarrowPathIsWidenedInTheThreadLocale) {
  locale_t utf8 = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  if (utf8 == nullptr) GTEST_SKIP() << "no C.UTF-8 locale";
  locale_t previous = ::uselocale(utf8);
  const std::string name = "caf\xC3\xA9.bin";  // café.bin in UTF-8
  CFilePort port(Halyard::kAccessWrite, 0);
  const std::string path = dir.NativeOf(name);
  EXPECT_EQ(port.Open(path.c_str()), 0u);
  ::uselocale(previous);
  ::freelocale(utf8);
  EXPECT_TRUE(tovtest::Exists(dir.NativeOf(name)));
  const unsigned short* stored = port.Path();
  ASSERT_NE(stored, nullptr);
  UTF16String text(stored);
  EXPECT_EQ(text.substr(text.size() - 8), basalt::ToUTF16(u"caf\u00e9.bin"));
}

}  // namespace
