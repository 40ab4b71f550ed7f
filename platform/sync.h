// OS layer: event objects, and a memory barrier across the whole process.
//
// Unnamed events (Win32: CreateEventW, SetEvent, ResetEvent,
// WaitForSingleObject and CloseHandle):
//
//   EventHandle ready = *NewEvent(/*manualReset=*/false, /*initialState=*/false);
//   // thread A                       // thread B
//   SignalEvent(ready);                if (WaitForEvent(ready, 1000).ValueOr(kWaitFailed) ==
//   kWaitObject0) ... DestroyEvent(ready);
//
// An auto-reset event releases one waiter per SetEvent and resets itself in
// that release; a SetEvent with no waiter leaves it signalled for the next
// wait (setting an already signalled event changes nothing: signals do not
// count up). A manual-reset event stays signalled, releasing every waiter,
// until ResetEvent. The POSIX backend builds an event from a mutex, a
// condition variable and a flag; waits measure their time-out on the
// monotonic clock.
#pragma once

#include <cstdint>

#include "platform/result.h"

namespace tovimpl::platform {

// An event object.
struct Event;
using EventHandle = Event*;

// The outcomes of a wait, with the values of WaitForSingleObject; kWaitFailed
// is what a failed wait stands for in the public interface.
inline constexpr std::uint32_t kWaitObject0 = 0;
inline constexpr std::uint32_t kWaitTimeout = 258;
inline constexpr std::uint32_t kWaitFailed = 0xFFFFFFFFu;
// A time-out that never runs out.
inline constexpr std::uint32_t kInfinite = 0xFFFFFFFFu;

// Makes an event (Win32: CreateEventW, unnamed, default security).
Result<EventHandle> NewEvent(bool manualReset, bool initialState);

// Signals the event. Null: 6.
Status SignalEvent(EventHandle event);

// Makes the event non-signalled. Null: 6.
Status ClearEvent(EventHandle event);

// Waits until the event is signalled or `milliseconds` have passed: 0 only
// looks, kInfinite waits forever, any other value waits at most that long
// (0xFFFFFFFE ms is about 49.7 days). kWaitObject0 when signalled (an
// auto-reset event is reset by this return), kWaitTimeout when the time ran
// out; failure 6 for a null handle.
Result<std::uint32_t> WaitForEvent(EventHandle event, std::uint32_t milliseconds);

// Destroys the event. No thread may still wait on it. Null: 6.
Status DestroyEvent(EventHandle event);

// A process-wide memory barrier: every thread of the process that is running
// at the time executes a full memory barrier (or is ordered as if it did)
// before the call returns. With it, a lock can let one thread enter with plain
// stores and loads and put the cost of ordering on the rare other thread (see
// streams/stream_lock.h). POSIX: membarrier(2) with the private expedited
// command, registered on the first availability query; Win32:
// FlushProcessWriteBuffers.
//
// ProcessBarrierAvailable: whether ProcessWideBarrier works here (false when
// the kernel refuses membarrier, e.g. under a seccomp filter that blocks it, and
// under Wine, whose FlushProcessWriteBuffers does nothing). The
// answer never changes within a process. Thread-safe.
bool ProcessBarrierAvailable();

// Executes the barrier. Only to be called when ProcessBarrierAvailable() is true.
void ProcessWideBarrier();

}  // namespace tovimpl::platform
