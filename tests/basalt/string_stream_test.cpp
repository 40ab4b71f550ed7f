// The string streams: classic locale, UTF-16 output.
#include "basalt/string_stream.h"

#include <gtest/gtest.h>

#include <string>

using namespace basalt::literals;

namespace {

TEST(BasaltStringStream, UsesClassicLocale) {
  basalt::UTF8StringStream narrow;
  narrow << 1234567 << ' ' << 2.5;
  EXPECT_EQ(narrow.str(), "1234567 2.5");
  basalt::UTF16StringStream wide;
  wide << "Frame " << 3 << u" of "_u16 << 10u;
  EXPECT_EQ(wide.str(), u"Frame 3 of 10"_u16);
  basalt::UTF8InputStringStream in("2.5abc");
  double value = 0;
  in >> value;
  EXPECT_EQ(value, 2.5);
}

}  // namespace
