// The POSIX backend's identifiers: a null output and a failing random source
// whose own error code is kept.
#include <gtest/gtest.h>

#include <cstdint>

#include "platform/error.h"
#include "platform/guid.h"

namespace {

namespace platform = tovimpl::platform;

TEST(GuidPosix, NullOutputIsAnInvalidPointer) {
  platform::SetLastError(0);
  EXPECT_EQ(platform::CoCreateGuid(nullptr), platform::kEPointer);
  EXPECT_EQ(platform::GetLastError(), platform::kErrorInvalidParameter);
  platform::SetLastError(0);
}

TEST(GuidPosix, AFailingSourceKeepsTheErrorItSet) {
  platform::SetRandomSourceForTesting([](void*, std::uint32_t) {
    platform::SetLastError(platform::kErrorNotEnoughMemory);
    return false;
  });
  platform::SetLastError(0);
  platform::Guid id{};
  id.Data1 = 0x12345678u;
  const std::int32_t result = platform::CoCreateGuid(&id);
  platform::SetRandomSourceForTesting(nullptr);
  EXPECT_EQ(result, platform::kEFail);
  EXPECT_EQ(platform::GetLastError(), platform::kErrorNotEnoughMemory);
  EXPECT_EQ(id.Data1, 0x12345678u);
  platform::SetLastError(0);
}

TEST(GuidPosix, TheKernelSourceGivesDistinctVersionFourIdentifiers) {
  platform::Guid a{}, b{};
  ASSERT_EQ(platform::CoCreateGuid(&a), platform::kSOk);
  ASSERT_EQ(platform::CoCreateGuid(&b), platform::kSOk);
  EXPECT_EQ(a.Data3 >> 12, 4);
  EXPECT_EQ(a.Data4[0] & 0xC0, 0x80);
  EXPECT_FALSE(a.Data1 == b.Data1 && a.Data2 == b.Data2 && a.Data3 == b.Data3);
}

}  // namespace
