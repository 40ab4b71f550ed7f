// Helpers shared by the text tests.
#pragma once

#include <locale.h>

#include <string>

namespace tovtest {

// Makes `name` the calling thread's locale (uselocale) for the object's
// lifetime; the process locale is never touched.
class ScopedThreadLocale {
 public:
  explicit ScopedThreadLocale(const char* name)
      : mLocale(::newlocale(LC_ALL_MASK, name, static_cast<locale_t>(nullptr))) {
    if (mLocale != static_cast<locale_t>(nullptr)) mPrevious = ::uselocale(mLocale);
  }
  ~ScopedThreadLocale() {
    if (mLocale != static_cast<locale_t>(nullptr)) {
      ::uselocale(mPrevious);
      ::freelocale(mLocale);
    }
  }
  ScopedThreadLocale(const ScopedThreadLocale&) = delete;
  ScopedThreadLocale& operator=(const ScopedThreadLocale&) = delete;

  bool ok() const { return mLocale != static_cast<locale_t>(nullptr); }

 private:
  locale_t mLocale;
  locale_t mPrevious = static_cast<locale_t>(nullptr);
};

}  // namespace tovtest
