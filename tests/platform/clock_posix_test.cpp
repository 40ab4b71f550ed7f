// The POSIX clock: the local time of day as text in the locale the
// environment names.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdlib>
#include <string>

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
