// The POSIX clock: the local time of day as text in the locale the
// environment names.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "basalt/utf.h"
#include "common/child_process.h"
#include "common/environment.h"
#include "common/temp_tree.h"
#include "platform/clock.h"

namespace platform = tovimpl::platform;

namespace {

using tovtest::ScopedEnv;

TEST(ClockLayer, TimeOfDayTextIsHoursMinutesSecondsInTheCLocale) {
  const ScopedEnv lcAll("LC_ALL", "C");
  const platform::Result<UTF16String> text = platform::LocalTimeOfDayText();
  ASSERT_TRUE(text);
  ASSERT_EQ(text->size(), 8u);  // "hh:mm:ss", no NUL
  EXPECT_EQ((*text)[2], u':');
  EXPECT_EQ((*text)[5], u':');
}

// The text strftime gives now for "%X" in the C locale, in UTC.
std::string UtcTimeOfDay() {
  const time_t now = ::time(nullptr);
  struct tm fields {};
  ::gmtime_r(&now, &fields);
  char bytes[32];
  return std::string(bytes, ::strftime(bytes, sizeof bytes, "%X", &fields));
}

TEST(ClockLayer, TimeOfDayFollowsTheTimeZoneTheEnvironmentNames) {
  const ScopedEnv lcAll("LC_ALL", "C");
  const ScopedEnv tz("TZ", "UTC0");
  // Two tries, in case the second changes between the two readings.
  for (int attempt = 0;; ++attempt) {
    const std::string before = UtcTimeOfDay();
    const platform::Result<UTF16String> text = platform::LocalTimeOfDayText();
    ASSERT_TRUE(text);
    if (basalt::UTF16to8(*text) == before || attempt == 1) {
      EXPECT_EQ(basalt::UTF16to8(*text), before);
      break;
    }
  }
}

TEST(ClockLayer, AUtf8LocaleGivesTheSameDigits) {
  const ScopedEnv lcAll("LC_ALL", "C.UTF-8");
  const platform::Result<UTF16String> text = platform::LocalTimeOfDayText();
  ASSERT_TRUE(text);
  ASSERT_EQ(text->size(), 8u);
  EXPECT_EQ((*text)[2], u':');
}

TEST(ClockLayer, ALocaleThatIsNotInstalledFallsBackToC) {
  const ScopedEnv lcAll("LC_ALL", "xx_NOWHERE.bogus-charset");
  const platform::Result<UTF16String> text = platform::LocalTimeOfDayText();
  ASSERT_TRUE(text);
  ASSERT_EQ(text->size(), 8u);  // "hh:mm:ss", as in the C locale
  EXPECT_EQ((*text)[5], u':');
}

// The code units of `text` as the child half prints them.
std::string Units(const UTF16String& text) {
  std::string out = "[units";
  char unit[8];
  for (unsigned short u : text) {
    std::snprintf(unit, sizeof unit, " %x", u);
    out += unit;
  }
  return out + "]";
}

// Run in a child process by ForeignCharsetLocale below.
TEST(ForeignCharsetChild, DISABLED_PrintTimeOfDay) {
  const platform::Result<UTF16String> text = platform::LocalTimeOfDayText();
  ASSERT_TRUE(text);
  std::printf("%s\n", Units(*text).c_str());
}

// A locale whose time of day is "ä" + hh:mm:ss + U+10000, in the GB18030
// character set, made with localedef in a folder of its own (LOCPATH).
class ForeignCharsetLocale : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string output;
    if (tovtest::RunCommand("command -v localedef", output) != 0) {
      GTEST_SKIP() << "localedef is not installed";
    }
    const std::string source = mFolder.NativeOf("definition");
    FILE* file = ::fopen(source.c_str(), "w");
    ASSERT_NE(file, nullptr);
    ::fputs(
        "LC_CTYPE\ncopy \"POSIX\"\nEND LC_CTYPE\n"
        "LC_TIME\n"
        "abday \"Sun\";\"Mon\";\"Tue\";\"Wed\";\"Thu\";\"Fri\";\"Sat\"\n"
        "day \"Sunday\";\"Monday\";\"Tuesday\";\"Wednesday\";\"Thursday\";\"Friday\";"
        "\"Saturday\"\n"
        "abmon \"Jan\";\"Feb\";\"Mar\";\"Apr\";\"May\";\"Jun\";\"Jul\";\"Aug\";\"Sep\";"
        "\"Oct\";\"Nov\";\"Dec\"\n"
        "mon \"January\";\"February\";\"March\";\"April\";\"May\";\"June\";\"July\";"
        "\"August\";\"September\";\"October\";\"November\";\"December\"\n"
        "am_pm \"AM\";\"PM\"\n"
        "d_t_fmt \"%a %b %e %H:%M:%S %Y\"\n"
        "d_fmt \"%m/%d/%y\"\n"
        "t_fmt \"<U00E4>%H:%M:%S<U00010000>\"\n"
        "t_fmt_ampm \"%I:%M:%S %p\"\n"
        "END LC_TIME\n",
        file);
    ::fclose(file);
    // localedef warns about the categories left out and still writes the locale.
    tovtest::RunCommand(
        "localedef -c -i '" + source + "' -f GB18030 '" + mFolder.NativeOf("xx_XX") + "' 2>&1",
        output);
    if (!FileExists(mFolder.NativeOf("xx_XX/LC_TIME"))) {
      GTEST_SKIP() << "localedef made no locale: " << output;
    }
  }
  static bool FileExists(const std::string& path) {
    FILE* file = ::fopen(path.c_str(), "r");
    if (file != nullptr) ::fclose(file);
    return file != nullptr;
  }
  // Runs the child half with `environment` (besides the locale folder and
  // the time zone) and expects its text, trying twice in case the second
  // changes meanwhile. In a child, because glibc keeps the locale search
  // path LOCPATH names for the rest of the process.
  template <typename Expected>
  void ExpectText(const std::string& environment, Expected expected) {
    const std::string command = "env " + environment + " LOCPATH='" + mFolder.Native() +
                                "' TZ=UTC0 ASAN_OPTIONS=detect_leaks=0 '" + tovtest::SelfPath() +
                                "' --gtest_also_run_disabled_tests "
                                "--gtest_filter=ForeignCharsetChild.DISABLED_PrintTimeOfDay";
    for (int attempt = 0;; ++attempt) {
      const std::string wanted = Units(expected(UtcTimeOfDay()));
      std::string output;
      tovtest::RunCommand(command, output);
      if (output.find(wanted) != std::string::npos || attempt == 1) {
        EXPECT_NE(output.find(wanted), std::string::npos) << wanted << "\n" << output;
        return;
      }
    }
  }
  tovtest::TempTree mFolder{"tovlocale"};
};

// One test, as making the locale takes seconds.
TEST_F(ForeignCharsetLocale, TextIsConvertedFromTheLocalesCharacterSet) {
  ExpectText("LC_ALL=xx_XX", [](const std::string& time) {
    UTF16String text(1, 0xE4);
    text += basalt::UTF8to16(time);
    text.push_back(0xD800);  // U+10000 as a surrogate pair
    text.push_back(0xDC00);
    return text;
  });
  // Read with the character set of the C locale, bytes that do not convert
  // stand for the code point of their own value: "ä" is 81 30 8A 31 and
  // U+10000 is 90 30 81 30 in GB18030.
  ExpectText("-u LC_ALL -u LANG LC_CTYPE=C LC_TIME=xx_XX", [](const std::string& time) {
    UTF16String text = {0x81, '0', 0x8A, '1'};
    text += basalt::UTF8to16(time);
    text += UTF16String{0x90, '0', 0x81, '0'};
    return text;
  });
}

TEST(ClockLayer, UtcNowHasCalendarFields) {
  const platform::SystemTime now = platform::UtcNow();
  EXPECT_GE(now.year, 2024);
  EXPECT_GE(now.month, 1);
  EXPECT_LE(now.month, 12);
  EXPECT_GE(now.day, 1);
  EXPECT_LE(now.day, 31);
  EXPECT_LE(now.dayOfWeek, 6);
  EXPECT_LE(now.hour, 23);
  EXPECT_LE(now.milliseconds, 999);
}

}  // namespace
