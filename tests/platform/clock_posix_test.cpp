// The POSIX clock: the local time of day as text in the locale the
// environment names.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdlib>
#include <string>

#include "platform/clock.h"

namespace platform = tovimpl::platform;

namespace {

// Sets an environment variable for the object's lifetime.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value) : mName(name) {
    if (const char* old = std::getenv(name)) {
      mHad = true;
      mOld = old;
    }
    ::setenv(name, value, 1);
  }
  ~ScopedEnv() {
    if (mHad) {
      ::setenv(mName.c_str(), mOld.c_str(), 1);
    } else {
      ::unsetenv(mName.c_str());
    }
  }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string mName;
  std::string mOld;
  bool mHad = false;
};

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
