// Message type names to message identifiers.
#include <cstdint>

#include "tovfoundation/messaging.h"

namespace TOV {

std::uint32_t HashMessageTypeNameToMessageID(const char* name) {
  // Each byte counts as a signed 8-bit value; the sign extension and the
  // multiply-add are done in unsigned 32-bit arithmetic, which wraps modulo
  // 2^32 exactly as the identifier definition requires.
  std::uint32_t hash = 0;
  for (const char* p = name; *p != '\0'; ++p) {
    const auto byte = static_cast<std::int32_t>(static_cast<signed char>(*p));
    hash = hash * 5u + static_cast<std::uint32_t>(byte);
  }
  return hash;
}

}  // namespace TOV
