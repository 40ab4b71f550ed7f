// Internal: the re-entrant lock every stream state carries, and its guard.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

namespace tov::streams {

// A re-entrant lock with the nesting depth of its holder: the depth is raised
// after each entry and lowered before each exit.
//
// Streams are locked once per value read or written, and are nearly always
// used by one thread at a time, so the uncontended path is what counts: a
// first entry costs one compare-and-swap, a re-entry (typed reads and writes
// re-enter through Read/Write) none, and the release is a plain store. A
// thread that finds the lock held spins briefly, then yields, then sleeps in
// short steps until it is free; nobody is woken explicitly, so the release
// needs no read-modify-write and no wake-up can be lost.
class StreamLock {
 public:
  void Lock() {
    const std::thread::id me = std::this_thread::get_id();
    if (mOwner.load(std::memory_order_relaxed) == me) {
      ++depth;
      return;
    }
    std::uint32_t expected = 0;
    if (!mHeld.compare_exchange_strong(expected, 1, std::memory_order_acquire,
                                       std::memory_order_relaxed)) {
      LockContended();
    }
    mOwner.store(me, std::memory_order_relaxed);
    ++depth;
  }

  void Unlock() {
    if (--depth != 0) return;
    mOwner.store(std::thread::id(), std::memory_order_relaxed);
    mHeld.store(0, std::memory_order_release);
  }

  // Only the holder reads or writes it.
  std::uint32_t depth = 0;

 private:
  void LockContended() {
    for (unsigned round = 0;; ++round) {
      std::uint32_t expected = 0;
      if (mHeld.load(std::memory_order_relaxed) == 0 &&
          mHeld.compare_exchange_weak(expected, 1, std::memory_order_acquire,
                                      std::memory_order_relaxed)) {
        return;
      }
      if (round < 64) continue;
      if (round < 128) {
        std::this_thread::yield();
      } else {
        std::this_thread::sleep_for(std::chrono::microseconds(20));
      }
    }
  }

  std::atomic<std::uint32_t> mHeld{0};
  std::atomic<std::thread::id> mOwner{};
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

}  // namespace tov::streams
