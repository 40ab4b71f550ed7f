// Win32 backend of the OS layer: event objects, the process-wide barrier.
// Only code that works on every supported Windows version belongs here.
#include "platform/error.h"
#include "platform/sync.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

// An EventHandle is the system's event HANDLE itself; Event is never defined.
namespace {
HANDLE Native(EventHandle event) { return reinterpret_cast<HANDLE>(event); }
}  // namespace

EventHandle CreateEvent(bool manualReset, bool initialState) {
  const HANDLE event =
      ::CreateEventW(nullptr, manualReset ? TRUE : FALSE, initialState ? TRUE : FALSE, nullptr);
  if (event == nullptr) {
    win32::KeepFailureCode();
    return nullptr;
  }
  return reinterpret_cast<EventHandle>(event);
}

bool SetEvent(EventHandle event) {
  if (event == nullptr) {
    ::SetLastError(ERROR_INVALID_HANDLE);
    return false;
  }
  if (!::SetEvent(Native(event))) {
    win32::KeepFailureCode(kErrorInvalidHandle);
    return false;
  }
  return true;
}

bool ResetEvent(EventHandle event) {
  if (event == nullptr) {
    ::SetLastError(ERROR_INVALID_HANDLE);
    return false;
  }
  if (!::ResetEvent(Native(event))) {
    win32::KeepFailureCode(kErrorInvalidHandle);
    return false;
  }
  return true;
}

std::uint32_t WaitForSingleObject(EventHandle event, std::uint32_t milliseconds) {
  if (event == nullptr) {
    ::SetLastError(ERROR_INVALID_HANDLE);
    return kWaitFailed;
  }
  const DWORD result = ::WaitForSingleObject(Native(event), milliseconds);
  if (result == WAIT_FAILED) win32::KeepFailureCode(kErrorInvalidHandle);
  return static_cast<std::uint32_t>(result);
}

bool CloseHandle(EventHandle event) {
  if (event == nullptr) {
    ::SetLastError(ERROR_INVALID_HANDLE);
    return false;
  }
  if (!::CloseHandle(Native(event))) {
    win32::KeepFailureCode(kErrorInvalidHandle);
    return false;
  }
  return true;
}

bool ProcessBarrierAvailable() {
  // Wine implements FlushProcessWriteBuffers as a stub that does nothing
  // (Wine 8), so under Wine the barrier is reported unavailable; Wine shows
  // itself by an export of its ntdll that Windows' ntdll does not have.
  static const bool available = [] {
    const HMODULE ntdll = ::GetModuleHandleW(L"ntdll.dll");
    return ntdll == nullptr || ::GetProcAddress(ntdll, "wine_get_version") == nullptr;
  }();
  return available;
}

void ProcessWideBarrier() { ::FlushProcessWriteBuffers(); }

}  // namespace tovimpl::platform
