// OS layer: the system clock and the local time-of-day text.
#pragma once

#include <cstdint>

#include "basalt/strings.h"
#include "platform/result.h"

namespace tovimpl::platform {

// The fields of a calendar time, laid out like the Windows SYSTEMTIME.
struct SystemTime {
  std::uint16_t year;
  std::uint16_t month;      // 1–12
  std::uint16_t dayOfWeek;  // 0 = Sunday
  std::uint16_t day;        // 1–31
  std::uint16_t hour;
  std::uint16_t minute;
  std::uint16_t second;
  std::uint16_t milliseconds;
};

// The current time in UTC. Never fails. Win32: GetSystemTime.
SystemTime UtcNow();

// The current local time of day as text in the time format of the default
// locale, without user overrides and without a date. Win32: GetTimeFormatW
// with LOCALE_SYSTEM_DEFAULT, LOCALE_NOUSEROVERRIDE, no time given, no
// picture. POSIX: strftime_l "%X" in the locale the environment names
// (newlocale with ""; the "C" locale when that one is not installed), the
// local time zone from TZ; the process locale (setlocale) is never touched.
Result<UTF16String> LocalTimeOfDayText();

}  // namespace tovimpl::platform
