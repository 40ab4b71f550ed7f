// Internal pieces of the platform helpers, for the library's tests.
#pragma once

#include <cstdint>

#include "tovfoundation/foundation.h"

namespace tovimpl::foundation {

// The wait result for a WaitForSingleObject answer: 0 ⇒ kVWaitSignaled,
// 258 ⇒ kVWaitTimedOut, anything else ⇒ kVWaitFailed.
Halyard::VWaitResultType WaitResultFromPlatform(std::uint32_t result);

}  // namespace tovimpl::foundation
