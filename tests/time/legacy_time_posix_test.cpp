// The POSIX rules of the clock's time text: the locale comes from LC_ALL and
// LANG, the time zone from TZ.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <iterator>
#include <optional>
#include <regex>
#include <string>

#include "basalt/utf.h"
#include "platform/clock.h"
#include "tovfoundation/time.h"

namespace {

// Sets environment variables for one test and restores them afterwards, then
// has the C library read TZ again.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value) : mName(name) {
    if (const char* old = std::getenv(name)) mOld = old;
    if (value) {
      ::setenv(name, value, 1);
    } else {
      ::unsetenv(name);
    }
  }
  ~ScopedEnv() {
    if (mOld) {
      ::setenv(mName.c_str(), mOld->c_str(), 1);
    } else {
      ::unsetenv(mName.c_str());
    }
    ::tzset();
  }

 private:
  std::string mName;
  std::optional<std::string> mOld;
};

std::string TimeText() { return basalt::UTF16to8(Halyard::TimeUtils::GetSystemTimeAsString()); }

TEST(LegacyTime, TimeStringUsesTheEnvironmentLocaleTimeFormat) {
  const ScopedEnv lcAll("LC_ALL", "C");
  const ScopedEnv tz("TZ", "UTC0");
  const std::string text = TimeText();
  EXPECT_TRUE(std::regex_match(text, std::regex("[0-2][0-9]:[0-5][0-9]:[0-6][0-9]"))) << text;
}

TEST(LegacyTime, TimeStringFallsBackToCForAnUninstalledLocale) {
  const ScopedEnv lcAll("LC_ALL", "xx_NOWHERE.UTF-8");
  const std::string text = TimeText();
  EXPECT_TRUE(std::regex_match(text, std::regex("[0-2][0-9]:[0-5][0-9]:[0-6][0-9]"))) << text;
}

TEST(LegacyTime, TimeStringIsLocalTimeWhileSystemTimeIsUtc) {
  const ScopedEnv lcAll("LC_ALL", "C.UTF-8");
  const ScopedEnv tz("TZ", "XYZ-5");  // five hours east of UTC
  for (int attempt = 0; attempt < 3; ++attempt) {
    Halyard::VDateTime utc{};
    Halyard::TimeUtils::GetSystemTime(&utc);
    const std::string text = TimeText();
    Halyard::VDateTime after{};
    Halyard::TimeUtils::GetSystemTime(&after);
    if (after.second != utc.second) continue;  // crossed a second; try again
    char expected[16];
    std::snprintf(expected, sizeof expected, "%02d:%02d:%02d", (utc.hour + 5) % 24, utc.minute,
                  utc.second);
    EXPECT_EQ(text, expected);
    return;
  }
  FAIL() << "the clock never stood still for one second";
}

}  // namespace
