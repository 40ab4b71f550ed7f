// OS layer: the system clock and the local time-of-day text.
#pragma once

#include <cstdint>

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

// The current time in UTC (Windows: GetSystemTime). Never fails.
void GetSystemTime(SystemTime* out);

// The current local time of day as text in the time format of the default
// locale, without user overrides and without a date (Windows: GetTimeFormatW
// with LOCALE_SYSTEM_DEFAULT, LOCALE_NOUSEROVERRIDE, no time given, no
// picture). With bufferUnits 0 the buffer is not touched and the result is the
// number of UTF-16 units needed, the terminating NUL included. Otherwise the
// text and a NUL are written and the count including the NUL is returned; 0 on
// failure (last error kErrorInsufficientBuffer when the buffer is too small,
// kErrorInvalidParameter for a null buffer).
// POSIX: strftime_l "%X" in the locale the environment names (newlocale with
// ""; the "C" locale when that one is not installed), the local time zone
// from TZ; the process locale (setlocale) is never touched.
int GetTimeFormatW(unsigned short* buffer, int bufferUnits);

}  // namespace tovimpl::platform
