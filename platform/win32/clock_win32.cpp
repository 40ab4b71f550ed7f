// Win32 backend of the OS layer: the system clock and the local time-of-day text.
// Only code that works on every supported Windows version belongs here.
#include "platform/clock.h"
#include "platform/error.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

void GetSystemTime(SystemTime* out) {
  SYSTEMTIME now{};
  ::GetSystemTime(&now);
  out->year = now.wYear;
  out->month = now.wMonth;
  out->dayOfWeek = now.wDayOfWeek;
  out->day = now.wDay;
  out->hour = now.wHour;
  out->minute = now.wMinute;
  out->second = now.wSecond;
  out->milliseconds = now.wMilliseconds;
}

int GetTimeFormatW(unsigned short* buffer, int bufferUnits) {
  if (bufferUnits != 0 && buffer == nullptr) {
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  const int units = ::GetTimeFormatW(LOCALE_SYSTEM_DEFAULT, LOCALE_NOUSEROVERRIDE, nullptr, nullptr,
                                     reinterpret_cast<wchar_t*>(buffer), bufferUnits);
  if (units == 0) win32::KeepFailureCode();
  return units;
}

}  // namespace tovimpl::platform
