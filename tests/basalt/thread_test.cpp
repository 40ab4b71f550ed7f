// Thread and process identifiers and the tick count.
#include "basalt/thread.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

TEST(BasaltThread, IdentifiersAreStable) {
  EXPECT_EQ(basalt::GetCurrentThreadID(), basalt::GetCurrentThreadID());
  EXPECT_NE(basalt::GetCurrentProcessID(), 0u);
  const std::uint32_t first = basalt::GetTickCount();
  const std::uint32_t second = basalt::GetTickCount();
  EXPECT_LE(static_cast<std::uint32_t>(second - first), 1000u);
}

}  // namespace
