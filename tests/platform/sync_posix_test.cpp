// The POSIX backend's events and guarded pages: a manual-reset event wakes
// every waiter, null handles are refused, and guarded pages of no usable
// bytes or of more than the system gives.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <thread>
#include <vector>

#include "platform/error.h"
#include "platform/page_guard.h"
#include "platform/sync.h"

namespace {

namespace platform = tovimpl::platform;

TEST(EventPosix, AManualResetSignalReleasesEveryWaiter) {
  const platform::EventHandle event = *platform::NewEvent(true, false);
  std::atomic<int> released{0};
  std::vector<std::thread> waiters;
  for (int i = 0; i < 3; ++i) {
    waiters.emplace_back([&] {
      if (platform::WaitForEvent(event, platform::kInfinite).ValueOr(platform::kWaitFailed) ==
          platform::kWaitObject0) {
        ++released;
      }
    });
  }
  ::usleep(20000);
  ASSERT_TRUE(platform::SignalEvent(event));
  for (std::thread& waiter : waiters) waiter.join();
  EXPECT_EQ(released.load(), 3);
  // Still signalled until it is cleared.
  EXPECT_EQ(*platform::WaitForEvent(event, 0), platform::kWaitObject0);
  ASSERT_TRUE(platform::ClearEvent(event));
  EXPECT_EQ(*platform::WaitForEvent(event, 0), platform::kWaitTimeout);
  EXPECT_TRUE(platform::DestroyEvent(event));
}

TEST(EventPosix, NullEventsAreInvalidHandles) {
  EXPECT_EQ(platform::SignalEvent(nullptr).Error(), platform::kErrorInvalidHandle);
  EXPECT_EQ(platform::ClearEvent(nullptr).Error(), platform::kErrorInvalidHandle);
  EXPECT_EQ(platform::WaitForEvent(nullptr, 0).Error(), platform::kErrorInvalidHandle);
  EXPECT_EQ(platform::DestroyEvent(nullptr).Error(), platform::kErrorInvalidHandle);
}

TEST(GuardedPagesPosix, NoUsableBytesIsTwoGuardPagesBackToBack) {
  const platform::GuardedPages pages(0);
  ASSERT_TRUE(pages.ok());
  EXPECT_EQ(pages.begin(), pages.end());
}

TEST(GuardedPagesPosix, SizesRoundUpToWholePages) {
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  const platform::GuardedPages pages(page + 1);
  ASSERT_TRUE(pages.ok());
  EXPECT_EQ(static_cast<std::size_t>(pages.end() - pages.begin()), 2 * page);
  pages.begin()[0] = 1;
  pages.end()[-1] = 2;
  EXPECT_EQ(pages.end()[-1], 2);
}

TEST(GuardedPagesPosix, MoreThanTheAddressSpaceIsRefused) {
  const platform::GuardedPages pages(std::size_t{1} << 62);
  EXPECT_FALSE(pages.ok());
  EXPECT_EQ(pages.begin(), nullptr);
}

TEST(GuardedPagesPosix, MoreThanTheSystemCanBackIsRefused) {
  // Address space of this size can be reserved inaccessible, but not made
  // writable: the system will not promise that much memory.
  // (Under the "always overcommit" policy the system promises anything.)
  FILE* policy = ::fopen("/proc/sys/vm/overcommit_memory", "r");
  const int mode = policy != nullptr ? std::fgetc(policy) : EOF;
  if (policy != nullptr) ::fclose(policy);
  if (mode != '0' && mode != '2') GTEST_SKIP() << "memory is overcommitted without limit";
  const platform::GuardedPages pages(std::size_t{1} << 45);
  EXPECT_FALSE(pages.ok());
}

}  // namespace
