// basalt thread and process utilities, answered by the OS layer.
#include "basalt/thread.h"

#include "platform/system.h"

namespace basalt {

std::uint32_t GetCurrentThreadID() { return tovimpl::platform::CurrentThreadId(); }
std::uint32_t GetCurrentProcessID() { return tovimpl::platform::CurrentProcessId(); }
std::uint32_t GetTickCount() { return tovimpl::platform::TickCountMs(); }

}  // namespace basalt
