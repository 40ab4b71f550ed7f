// Environment variables on Windows: _putenv_s changes the runtime's copy and
// the process's environment block, which GetEnvironmentVariableW reads.
#include <stdlib.h>

#include "common/environment.h"

namespace tovtest {

void SetEnv(const char* name, const char* value) {
  ::_putenv_s(name, value != nullptr ? value : "");
}

}  // namespace tovtest
