// POSIX backend of the OS layer: event objects, the process-wide barrier.
// Events are plain POSIX; the barrier is Linux's membarrier(2), reported unavailable elsewhere.
#if defined(__has_include)
#if __has_include(<linux/membarrier.h>)
#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <unistd.h>
#define TOV_HAVE_MEMBARRIER 1
#endif
#endif

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <new>

#include "platform/error.h"
#include "platform/sync.h"

namespace tovimpl::platform {

struct Event {
  std::mutex mutex;
  std::condition_variable changed;
  bool manualReset = false;
  bool signalled = false;
};

Result<EventHandle> NewEvent(bool manualReset, bool initialState) {
  auto* event = new (std::nothrow) Event;
  if (event == nullptr) return Status::Failure(kErrorNotEnoughMemory);
  event->manualReset = manualReset;
  event->signalled = initialState;
  return event;
}

Status SignalEvent(EventHandle event) {
  if (event == nullptr) return Status::Failure(kErrorInvalidHandle);
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
  return Status::Ok();
}

Status ClearEvent(EventHandle event) {
  if (event == nullptr) return Status::Failure(kErrorInvalidHandle);
  std::lock_guard<std::mutex> lock(event->mutex);
  event->signalled = false;
  return Status::Ok();
}

Result<std::uint32_t> WaitForEvent(EventHandle event, std::uint32_t milliseconds) {
  if (event == nullptr) return Status::Failure(kErrorInvalidHandle);
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

Status DestroyEvent(EventHandle event) {
  if (event == nullptr) return Status::Failure(kErrorInvalidHandle);
  delete event;
  return Status::Ok();
}

#if defined(TOV_HAVE_MEMBARRIER) && defined(SYS_membarrier)
bool ProcessBarrierAvailable() {
  // Registration is needed once per process before the expedited command.
  static const bool available =
      ::syscall(SYS_membarrier, MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED, 0, 0) == 0;
  return available;
}

void ProcessWideBarrier() { ::syscall(SYS_membarrier, MEMBARRIER_CMD_PRIVATE_EXPEDITED, 0, 0); }
#else
bool ProcessBarrierAvailable() { return false; }

void ProcessWideBarrier() {}
#endif

}  // namespace tovimpl::platform
