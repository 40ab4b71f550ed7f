// Win32 backend of the OS layer: the debugger output channel.
// Only code that works on every supported Windows version belongs here.
#include "platform/debug.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

void OutputDebugStringA(const char* text) {
  if (text != nullptr) ::OutputDebugStringA(text);
}

// The channel always exists on Windows; whether a debugger listens is its business.
bool IsDebugOutputEnabled() { return true; }

}  // namespace tovimpl::platform
