// Win32 backend of the OS layer: the system clock and the local time-of-day text.
// Only code that works on every supported Windows version belongs here.
#include <string>

#include "platform/clock.h"
#include "platform/error.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

SystemTime UtcNow() {
  SYSTEMTIME now{};
  ::GetSystemTime(&now);
  SystemTime fields{};
  SystemTime* out = &fields;
  out->year = now.wYear;
  out->month = now.wMonth;
  out->dayOfWeek = now.wDayOfWeek;
  out->day = now.wDay;
  out->hour = now.wHour;
  out->minute = now.wMinute;
  out->second = now.wSecond;
  out->milliseconds = now.wMilliseconds;
  return fields;
}

Result<UTF16String> LocalTimeOfDayText() {
  const int needed =
      ::GetTimeFormatW(LOCALE_SYSTEM_DEFAULT, LOCALE_NOUSEROVERRIDE, nullptr, nullptr, nullptr, 0);
  if (needed <= 0) return Status::Failure(win32::LastErrorOr());
  std::wstring text(static_cast<std::size_t>(needed), L'\0');
  const int units = ::GetTimeFormatW(LOCALE_SYSTEM_DEFAULT, LOCALE_NOUSEROVERRIDE, nullptr, nullptr,
                                     text.data(), needed);
  if (units <= 0) return Status::Failure(win32::LastErrorOr());
  return win32::FromWide(text.c_str());
}

}  // namespace tovimpl::platform
