// OS layer: process, thread, clock and environment queries.
#pragma once

#include <cstdint>

#include "basalt/strings.h"
#include "platform/result.h"

namespace tovimpl::platform {

// The calling thread's identifier (POSIX: gettid(); Windows: GetCurrentThreadId()).
std::uint32_t CurrentThreadId();
// The process identifier.
std::uint32_t CurrentProcessId();
// Milliseconds since an arbitrary start, truncated to 32 bits (POSIX:
// CLOCK_MONOTONIC; Windows: GetTickCount()).
std::uint32_t TickCountMs();

// Hands memory the process has freed back to the system, after work that
// needed much of it briefly (parsing a large property list): the freed pages
// stop counting as resident. POSIX with the GNU C library: malloc_trim(0);
// other C libraries: nothing. Windows: HeapCompact of the process heap.
void ReleaseFreedMemory();

// The value of an environment variable; kErrorEnvVarNotFound (203) when it is
// not set. A variable set to the empty text gives the empty text. Names and
// values are UTF-16; on POSIX the environment's bytes are read as UTF-8.
Result<UTF16String> GetEnvVar(const UTF16String& name);

}  // namespace tovimpl::platform
