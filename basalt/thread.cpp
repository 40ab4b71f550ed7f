// basalt thread and process utilities, answered by the OS layer.
#include "basalt/thread.h"

#include "platform/system.h"

namespace basalt {

std::uint32_t GetCurrentThreadID() { return tov::platform::CurrentThreadId(); }
std::uint32_t GetCurrentProcessID() { return tov::platform::CurrentProcessId(); }
std::uint32_t GetTickCount() { return tov::platform::TickCountMs(); }

}  // namespace basalt
