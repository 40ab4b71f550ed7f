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

Result<EventHandle> NewEvent(bool manualReset, bool initialState) {
  const HANDLE event =
      ::CreateEventW(nullptr, manualReset ? TRUE : FALSE, initialState ? TRUE : FALSE, nullptr);
  if (event == nullptr) return Status::Failure(win32::LastErrorOr());
  return reinterpret_cast<EventHandle>(event);
}

Status SignalEvent(EventHandle event) {
  if (event == nullptr) return Status::Failure(kErrorInvalidHandle);
  if (!::SetEvent(Native(event))) return Status::Failure(win32::LastErrorOr(kErrorInvalidHandle));
  return Status::Ok();
}

Status ClearEvent(EventHandle event) {
  if (event == nullptr) return Status::Failure(kErrorInvalidHandle);
  if (!::ResetEvent(Native(event))) return Status::Failure(win32::LastErrorOr(kErrorInvalidHandle));
  return Status::Ok();
}

Result<std::uint32_t> WaitForEvent(EventHandle event, std::uint32_t milliseconds) {
  if (event == nullptr) return Status::Failure(kErrorInvalidHandle);
  const DWORD result = ::WaitForSingleObject(Native(event), milliseconds);
  if (result == WAIT_FAILED) return Status::Failure(win32::LastErrorOr(kErrorInvalidHandle));
  return static_cast<std::uint32_t>(result);
}

Status DestroyEvent(EventHandle event) {
  if (event == nullptr) return Status::Failure(kErrorInvalidHandle);
  if (!::CloseHandle(Native(event))) {
    return Status::Failure(win32::LastErrorOr(kErrorInvalidHandle));
  }
  return Status::Ok();
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
