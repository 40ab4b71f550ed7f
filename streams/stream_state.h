// Internal: the lock every stream state carries, and its guard.
#pragma once

#include <cstdint>
#include <mutex>

namespace tov::streams {

// A re-entrant lock with the depth of its current holder's nesting: the depth
// is raised after each entry and lowered before each exit.
struct StreamLock {
  std::recursive_mutex mutex;
  std::uint32_t depth = 0;
};

class StreamGuard {
 public:
  explicit StreamGuard(StreamLock& lock) : mLock(lock) {
    mLock.mutex.lock();
    ++mLock.depth;
  }
  ~StreamGuard() {
    --mLock.depth;
    mLock.mutex.unlock();
  }
  StreamGuard(const StreamGuard&) = delete;
  StreamGuard& operator=(const StreamGuard&) = delete;

 private:
  StreamLock& mLock;
};

}  // namespace tov::streams
