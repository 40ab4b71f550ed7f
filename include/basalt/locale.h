// basalt locales.
#pragma once

#include <locale>

#include "tovfoundation/export.h"

namespace basalt {

// The library's locales.
struct TOV_API Locale {
  // The user's native locale: the one the environment names (LC_ALL, LC_CTYPE,
  // LANG), or the classic locale when that name is unknown to the system. Made
  // once per process, without ever changing the process's global locale.
  static const std::locale& Native();
};

}  // namespace basalt
