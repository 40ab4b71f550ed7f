// basalt locales.
#include "basalt/locale.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace basalt {

const std::locale& Locale::Native() {
  static const std::locale native = [] {
    try {
      return std::locale("");
    } catch (const std::runtime_error&) {
      return std::locale::classic();
    }
  }();
  return native;
}

}  // namespace basalt
