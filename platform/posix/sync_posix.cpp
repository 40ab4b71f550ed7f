// POSIX backend of the OS layer: event objects.
// Only code that works on every POSIX system the library supports belongs here.
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <new>

#include "platform/error.h"
#include "platform/sync.h"

namespace tov::platform {

struct Event {
  std::mutex mutex;
  std::condition_variable changed;
  bool manualReset = false;
  bool signalled = false;
};

EventHandle CreateEvent(bool manualReset, bool initialState) {
  auto* event = new (std::nothrow) Event;
  if (event == nullptr) {
    SetLastError(kErrorNotEnoughMemory);
    return nullptr;
  }
  event->manualReset = manualReset;
  event->signalled = initialState;
  return event;
}

bool SetEvent(EventHandle event) {
  if (event == nullptr) {
    SetLastError(kErrorInvalidHandle);
    return false;
  }
  {
    std::lock_guard<std::mutex> lock(event->mutex);
    event->signalled = true;
  }
  // An auto-reset event lets one waiter through; waking them all would only
  // make the others go back to sleep.
  if (event->manualReset) {
    event->changed.notify_all();
  } else {
    event->changed.notify_one();
  }
  return true;
}

bool ResetEvent(EventHandle event) {
  if (event == nullptr) {
    SetLastError(kErrorInvalidHandle);
    return false;
  }
  std::lock_guard<std::mutex> lock(event->mutex);
  event->signalled = false;
  return true;
}

std::uint32_t WaitForSingleObject(EventHandle event, std::uint32_t milliseconds) {
  if (event == nullptr) {
    SetLastError(kErrorInvalidHandle);
    return kWaitFailed;
  }
  std::unique_lock<std::mutex> lock(event->mutex);
  const auto isSignalled = [event] { return event->signalled; };
  if (milliseconds == kInfinite) {
    event->changed.wait(lock, isSignalled);
  } else if (!event->changed.wait_for(lock, std::chrono::milliseconds(milliseconds), isSignalled)) {
    return kWaitTimeout;
  }
  if (!event->manualReset) event->signalled = false;
  return kWaitObject0;
}

bool CloseHandle(EventHandle event) {
  if (event == nullptr) {
    SetLastError(kErrorInvalidHandle);
    return false;
  }
  delete event;
  return true;
}

}  // namespace tov::platform
