// POSIX backend of the OS layer: system clock and local time-of-day text.
// Only code that works on every POSIX system the library supports belongs here.
#include <langinfo.h>
#include <locale.h>
#include <time.h>
#include <wchar.h>

#include <cstring>
#include <string>

#include "basalt/utf.h"
#include "platform/clock.h"
#include "platform/error.h"

namespace tovimpl::platform {

SystemTime UtcNow() {
  SystemTime result{};
  SystemTime* out = &result;
  struct timespec now {};
  ::clock_gettime(CLOCK_REALTIME, &now);
  const time_t seconds = now.tv_sec;
  struct tm fields {};
  ::gmtime_r(&seconds, &fields);
  out->year = static_cast<std::uint16_t>(fields.tm_year + 1900);
  out->month = static_cast<std::uint16_t>(fields.tm_mon + 1);
  out->dayOfWeek = static_cast<std::uint16_t>(fields.tm_wday);
  out->day = static_cast<std::uint16_t>(fields.tm_mday);
  out->hour = static_cast<std::uint16_t>(fields.tm_hour);
  out->minute = static_cast<std::uint16_t>(fields.tm_min);
  out->second = static_cast<std::uint16_t>(fields.tm_sec);
  out->milliseconds = static_cast<std::uint16_t>(now.tv_nsec / 1000000);
  return result;
}

namespace {

// Bytes in the locale's own character set ⇒ UTF-16. UTF-8 locales go through
// the library's converter; others through mbrtowc in that locale, a byte that
// does not convert standing for the code point of the same value.
UTF16String LocaleBytesToUTF16(const std::string& bytes, locale_t locale) {
  const char* codeset = ::nl_langinfo_l(CODESET, locale);
  if (codeset != nullptr &&
      (std::strcmp(codeset, "UTF-8") == 0 || std::strcmp(codeset, "utf8") == 0)) {
    return basalt::UTF8to16(bytes);
  }
  UTF16String out;
  const locale_t previous = ::uselocale(locale);
  mbstate_t state{};
  std::size_t at = 0;
  while (at < bytes.size()) {
    wchar_t wide = 0;
    const std::size_t used = ::mbrtowc(&wide, bytes.data() + at, bytes.size() - at, &state);
    if (used == static_cast<std::size_t>(-1) || used == static_cast<std::size_t>(-2) || used == 0) {
      out.push_back(static_cast<unsigned char>(bytes[at]));
      state = mbstate_t{};
      ++at;
      continue;
    }
    const auto code = static_cast<std::uint32_t>(wide);
    if (code >= 0x10000u && code <= 0x10FFFFu) {
      out.push_back(static_cast<unsigned short>(0xD800u + ((code - 0x10000u) >> 10)));
      out.push_back(static_cast<unsigned short>(0xDC00u + ((code - 0x10000u) & 0x3FFu)));
    } else {
      out.push_back(static_cast<unsigned short>(code));
    }
    at += used;
  }
  ::uselocale(previous);
  return out;
}

// The local time of day as UTF-16 text, or nothing on failure.
bool FormatLocalTimeOfDay(UTF16String& text) {
  locale_t locale = ::newlocale(LC_ALL_MASK, "", static_cast<locale_t>(0));
  if (locale == static_cast<locale_t>(0)) {
    locale = ::newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
    if (locale == static_cast<locale_t>(0)) return false;
  }
  ::tzset();
  // The same clock as GetSystemTime (time() may lag it by a scheduler tick).
  struct timespec realtime {};
  ::clock_gettime(CLOCK_REALTIME, &realtime);
  const time_t now = realtime.tv_sec;
  struct tm fields {};
  bool ok = ::localtime_r(&now, &fields) != nullptr;
  if (ok) {
    char bytes[256];
    const std::size_t length = ::strftime_l(bytes, sizeof bytes, "%X", &fields, locale);
    ok = length > 0;
    if (ok) text = LocaleBytesToUTF16(std::string(bytes, length), locale);
  }
  ::freelocale(locale);
  return ok;
}

}  // namespace

Result<UTF16String> LocalTimeOfDayText() {
  UTF16String text;
  if (!FormatLocalTimeOfDay(text)) return Status::Failure(kErrorInvalidParameter);
  return text;
}

}  // namespace tovimpl::platform
