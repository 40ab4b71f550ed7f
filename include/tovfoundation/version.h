// tovfoundation version.
#pragma once

#include "tovfoundation/export.h"

namespace TOVFoundation {
// The library's version, "major.minor.patch".
TOV_API const char* Version();
}  // namespace TOVFoundation
