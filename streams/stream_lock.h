// Internal: the re-entrant lock every stream state carries, and its guard.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

#include "platform/sync.h"

namespace tovimpl::streams {

// A re-entrant lock with the nesting depth of its holder: the depth is raised
// after each entry and lowered before each exit.
//
// Streams are locked once per value read or written, and nearly always by one
// thread for their whole life, so that case is what the lock is built for. The
// first thread that locks a stream becomes its bias thread; while no other
// thread has locked it, the bias thread enters with a plain store and a plain
// load and leaves with a plain store: no read-modify-write instruction and no
// fence, which would cost as much as a whole typed read.
//
// The first time another thread locks the stream it revokes the bias, once and
// for good: it takes the shared lock word, raises the revoked flag, executes a
// process-wide memory barrier (platform::ProcessWideBarrier) and waits until
// the bias thread is outside. The barrier is what makes the bias thread's
// store-then-load safe without a fence of its own: after it, either the bias
// thread's "inside" store is visible to the revoker, or the bias thread's next
// load sees the revoked flag. From then on every thread, the former bias thread
// included, enters through the lock word (one compare-and-swap, as before).
// Where the OS offers no such barrier the lock is never biased.
//
// A thread that finds the lock word held spins briefly, then yields, then
// sleeps in short steps until it is free; nobody is woken explicitly, so the
// release is a plain store and no wake-up can be lost.
class StreamLock {
 public:
  void Lock() {
    const std::thread::id me = std::this_thread::get_id();
    if (mOwner.load(std::memory_order_relaxed) == me) {
      ++depth;
      return;
    }
    if (IsBiasThread(me)) {
      mBiasInside.store(1, std::memory_order_relaxed);
      // Only the compiler must keep the store before the load; the revoker's
      // process-wide barrier orders them for the processor.
      std::atomic_signal_fence(std::memory_order_seq_cst);
      if (mRevoked.load(std::memory_order_acquire) == 0) {
        mEnteredByBias = true;
        mOwner.store(me, std::memory_order_relaxed);
        ++depth;
        return;
      }
      mBiasInside.store(0, std::memory_order_release);
    }
    LockWord();
    mEnteredByBias = false;
    mOwner.store(me, std::memory_order_relaxed);
    ++depth;
  }

  void Unlock() {
    if (--depth != 0) return;
    mOwner.store(std::thread::id(), std::memory_order_relaxed);
    if (mEnteredByBias) {
      mBiasInside.store(0, std::memory_order_release);
    } else {
      mHeld.store(0, std::memory_order_release);
    }
  }

  // Whether the lock has left its biased state (for tests and diagnostics).
  bool Revoked() const { return mRevoked.load(std::memory_order_acquire) != 0; }

  // Only the holder reads or writes it.
  std::uint32_t depth = 0;

 private:
  // True when `me` is, or has just become, the bias thread.
  bool IsBiasThread(std::thread::id me) {
    const std::thread::id bias = mBias.load(std::memory_order_relaxed);
    if (bias == me) return true;
    return bias == std::thread::id() && ClaimBias(me);
  }

  // The slow paths stay out of line, so that the many small functions that
  // take the lock keep a short fast path.
  [[gnu::noinline]] bool ClaimBias(std::thread::id me) {
    if (!platform::ProcessBarrierAvailable()) return false;
    std::thread::id none;
    return mBias.compare_exchange_strong(none, me, std::memory_order_relaxed);
  }

  [[gnu::noinline]] void LockWord() {
    std::uint32_t expected = 0;
    if (!mHeld.compare_exchange_strong(expected, 1, std::memory_order_acquire,
                                       std::memory_order_relaxed)) {
      LockWordContended();
    }
    if (mRevoked.load(std::memory_order_relaxed) == 0 && platform::ProcessBarrierAvailable()) {
      Revoke();
    }
  }

  // Runs while holding the lock word, so at most one thread revokes, and every
  // later holder of the word sees the flag raised.
  void Revoke() {
    mRevoked.store(1, std::memory_order_relaxed);
    platform::ProcessWideBarrier();
    for (unsigned round = 0; mBiasInside.load(std::memory_order_acquire) != 0; ++round) {
      Pause(round);
    }
  }

  void LockWordContended() {
    for (unsigned round = 0;; ++round) {
      std::uint32_t expected = 0;
      if (mHeld.load(std::memory_order_relaxed) == 0 &&
          mHeld.compare_exchange_weak(expected, 1, std::memory_order_acquire,
                                      std::memory_order_relaxed)) {
        return;
      }
      Pause(round);
    }
  }

  static void Pause(unsigned round) {
    if (round < 64) return;
    if (round < 128) {
      std::this_thread::yield();
    } else {
      std::this_thread::sleep_for(std::chrono::microseconds(20));
    }
  }

  std::atomic<std::uint32_t> mHeld{0};        // the lock word
  std::atomic<std::uint32_t> mBiasInside{0};  // the bias thread holds the lock
  std::atomic<std::uint32_t> mRevoked{0};     // the bias is gone for good
  std::atomic<std::thread::id> mBias{};       // the bias thread, once there is one
  std::atomic<std::thread::id> mOwner{};      // the holder, for re-entry
  bool mEnteredByBias = false;                // only the holder reads or writes it
};

class StreamGuard {
 public:
  explicit StreamGuard(StreamLock& lock) : mLock(lock) { mLock.Lock(); }
  ~StreamGuard() { mLock.Unlock(); }
  StreamGuard(const StreamGuard&) = delete;
  StreamGuard& operator=(const StreamGuard&) = delete;

 private:
  StreamLock& mLock;
};

}  // namespace tovimpl::streams
