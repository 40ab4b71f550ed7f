// OS layer: event objects, and a memory barrier across the whole process.
//
// The calls mirror CreateEventW, SetEvent, ResetEvent, WaitForSingleObject and
// CloseHandle for unnamed events:
//
//   EventHandle ready = CreateEvent(/*manualReset=*/false, /*initialState=*/false);
//   // thread A                       // thread B
//   SetEvent(ready);                   if (WaitForSingleObject(ready, 1000) == kWaitObject0) ...
//   CloseHandle(ready);
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

namespace tovimpl::platform {

// An event object; null is "no event" (CreateEvent failed).
struct Event;
using EventHandle = Event*;

// Results of WaitForSingleObject.
inline constexpr std::uint32_t kWaitObject0 = 0;
inline constexpr std::uint32_t kWaitTimeout = 258;
inline constexpr std::uint32_t kWaitFailed = 0xFFFFFFFFu;
// A time-out that never runs out.
inline constexpr std::uint32_t kInfinite = 0xFFFFFFFFu;

// CreateEventW (unnamed, default security). Returns null with the last error
// set when the event cannot be made.
EventHandle CreateEvent(bool manualReset, bool initialState);

// SetEvent: signals the event. Null: false, last error 6.
bool SetEvent(EventHandle event);

// ResetEvent: makes the event non-signalled. Null: false, last error 6.
bool ResetEvent(EventHandle event);

// WaitForSingleObject. Waits until the event is signalled or `milliseconds`
// have passed: 0 only looks, kInfinite waits forever, any other value waits at
// most that long (0xFFFFFFFE ms is about 49.7 days). Returns kWaitObject0 when
// signalled (an auto-reset event is reset by this return), kWaitTimeout when
// the time ran out, kWaitFailed with last error 6 for a null handle.
std::uint32_t WaitForSingleObject(EventHandle event, std::uint32_t milliseconds);

// CloseHandle for an event: destroys it. No thread may still wait on it.
// Null: false, last error 6.
bool CloseHandle(EventHandle event);

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
