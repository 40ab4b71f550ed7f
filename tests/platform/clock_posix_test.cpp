// The POSIX clock: the local time of day as text in the locale the
// environment names.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <cstdlib>
#include <string>

#include "basalt/utf.h"
#include "common/environment.h"
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
