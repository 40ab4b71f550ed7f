// Win32 backend of the OS layer: process, thread, clock, environment and path spelling.
// Only code that works on every supported Windows version belongs here.
#include <cstdint>
#include <string>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/system.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

std::uint32_t CurrentThreadId() { return static_cast<std::uint32_t>(::GetCurrentThreadId()); }

std::uint32_t CurrentProcessId() { return static_cast<std::uint32_t>(::GetCurrentProcessId()); }

std::uint32_t TickCountMs() { return static_cast<std::uint32_t>(::GetTickCount()); }

void ReleaseFreedMemory() { ::HeapCompact(::GetProcessHeap(), 0); }

Result<UTF16String> GetEnvVar(const UTF16String& name) {
  const std::wstring wideName = win32::Wide(name);
  std::wstring value(64, L'\0');
  for (;;) {
    // A variable set to the empty text answers 0 without an error.
    ::SetLastError(0);
    const DWORD needed =
        ::GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size()));
    if (needed == 0) {
      const DWORD error = ::GetLastError();
      if (error != 0) return Status::Failure(static_cast<ErrorCode>(error));
      return UTF16String();
    }
    if (needed < value.size()) {
      value.resize(needed);
      return win32::FromWide(value);
    }
    // Too small: `needed` counts the terminating NUL.
    value.assign(needed, L'\0');
  }
}

// Windows takes the library's spelling as it is.
UTF16String ToNativeSpelling(UTF16StringView libraryPath) { return UTF16String(libraryPath); }
UTF16String FromNativeSpelling(UTF16StringView nativePath) { return UTF16String(nativePath); }

}  // namespace tovimpl::platform
