// Environment variables on POSIX systems.
#include <stdlib.h>

#include "common/environment.h"

namespace tovtest {

void SetEnv(const char* name, const char* value) {
  if (value == nullptr) {
    ::unsetenv(name);
  } else {
    ::setenv(name, value, 1);
  }
}

}  // namespace tovtest
