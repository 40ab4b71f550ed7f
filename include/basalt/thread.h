// basalt thread and process utilities.
#pragma once

#include <cstdint>

#include "tovfoundation/export.h"

namespace basalt {

// The calling thread's system identifier (POSIX: gettid(), Windows:
// GetCurrentThreadId()).
TOV_API std::uint32_t GetCurrentThreadID();
// The process identifier.
TOV_API std::uint32_t GetCurrentProcessID();
// Milliseconds since an arbitrary start, wrapping at 2^32 (POSIX:
// CLOCK_MONOTONIC; Windows: GetTickCount()).
TOV_API std::uint32_t GetTickCount();

}  // namespace basalt
