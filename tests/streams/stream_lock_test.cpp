// The re-entrant lock of a stream state: depth, the bias of the first thread,
// its revocation by another thread, and mutual exclusion in every mode.
#include "streams/stream_lock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>
#include <vector>

#include "platform/sync.h"

using tovimpl::streams::StreamGuard;
using tovimpl::streams::StreamLock;

TEST(StreamLock, ReentryRaisesAndLowersTheDepth) {
  StreamLock lock;
  lock.Lock();
  EXPECT_EQ(lock.depth, 1u);
  lock.Lock();
  EXPECT_EQ(lock.depth, 2u);
  lock.Unlock();
  EXPECT_EQ(lock.depth, 1u);
  lock.Unlock();
  EXPECT_EQ(lock.depth, 0u);
}

TEST(StreamLock, OneThreadAloneNeverRevokesTheBias) {
  StreamLock lock;
  for (int i = 0; i < 1000; ++i) {
    StreamGuard outer(lock);
    StreamGuard inner(lock);
  }
  EXPECT_FALSE(lock.Revoked());
}

TEST(StreamLock, TheFirstThreadToLockIsTheBiasThreadNotTheCreator) {
  StreamLock lock;  // made here, used only by another thread
  std::thread user([&lock] {
    for (int i = 0; i < 100; ++i) StreamGuard guard(lock);
  });
  user.join();
  EXPECT_FALSE(lock.Revoked());
}

TEST(StreamLock, ASecondThreadRevokesTheBiasWhereTheSystemAllows) {
  StreamLock lock;
  { StreamGuard guard(lock); }
  std::thread other([&lock] { StreamGuard guard(lock); });
  other.join();
  EXPECT_EQ(lock.Revoked(), tovimpl::platform::ProcessBarrierAvailable());
  // The former bias thread still enters and leaves.
  {
    StreamGuard guard(lock);
    EXPECT_EQ(lock.depth, 1u);
  }
  EXPECT_EQ(lock.depth, 0u);
}

TEST(StreamLock, RevocationWaitsUntilTheBiasThreadLeaves) {
  StreamLock lock;
  lock.Lock();  // this thread becomes the bias thread and stays inside
  std::atomic<bool> entered{false};
  std::thread other([&] {
    StreamGuard guard(lock);
    entered.store(true);
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_FALSE(entered.load());
  lock.Unlock();
  other.join();
  EXPECT_TRUE(entered.load());
}

TEST(StreamLock, ReentryByTheBiasThreadDuringRevocationKeepsItsHold) {
  StreamLock lock;
  lock.Lock();
  std::atomic<bool> entered{false};
  std::thread other([&] {
    StreamGuard guard(lock);
    entered.store(true);
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  lock.Lock();  // re-entry while the other thread waits
  EXPECT_EQ(lock.depth, 2u);
  lock.Unlock();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(entered.load());
  lock.Unlock();
  other.join();
  EXPECT_TRUE(entered.load());
}

// Plain (non-atomic) counters changed only under the lock come out exact, while
// the bias thread keeps working as the others arrive and revoke its bias.
TEST(StreamLock, CountersChangedUnderTheLockComeOutExact) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 20000;
  StreamLock lock;
  std::uint64_t counter = 0;
  std::uint64_t shadow = 0;
  auto work = [&] {
    for (int i = 0; i < kRounds; ++i) {
      StreamGuard outer(lock);
      ++counter;
      StreamGuard inner(lock);
      shadow += 2;
    }
  };
  { StreamGuard first(lock); }  // bias to this thread
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) threads.emplace_back(work);
  work();
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(counter, std::uint64_t{kThreads + 1} * kRounds);
  EXPECT_EQ(shadow, 2 * counter);
}

// Many fresh locks, each revoked while its bias thread is busy with it: the
// moment of revocation falls at a different point of the bias thread's
// store-then-load each time.
TEST(StreamLock, RevocationRacingTheBiasThreadLosesNoUpdate) {
  constexpr int kLocks = 200;
  constexpr int kRounds = 2000;
  for (int n = 0; n < kLocks; ++n) {
    StreamLock lock;
    std::uint64_t counter = 0;
    std::atomic<bool> biased{false};
    std::thread bias([&] {
      for (int i = 0; i < kRounds; ++i) {
        StreamGuard guard(lock);
        ++counter;
        if (i == 0) biased.store(true);
      }
    });
    while (!biased.load()) std::this_thread::yield();
    for (int i = 0; i < kRounds; ++i) {
      StreamGuard guard(lock);
      ++counter;
    }
    bias.join();
    ASSERT_EQ(counter, std::uint64_t{2} * kRounds) << "lock " << n;
  }
}
