// Identifiers: the version-4 layout, the test seam's failure, and the
// system's own source on each platform.
#include "platform/guid.h"

#include <gtest/gtest.h>

#include <cstring>

#include "platform/error.h"

namespace {

namespace platform = tovimpl::platform;

TEST(Guid, FailingSourceGivesGenFailure) {
  platform::SetRandomSourceForTesting([](void*, std::uint32_t) { return false; });
  const platform::Result<platform::Guid> id = platform::NewGuid();
  platform::SetRandomSourceForTesting(nullptr);
  ASSERT_FALSE(id.IsOk());
  EXPECT_EQ(id.Error(), platform::kErrorGenFailure);
}

TEST(Guid, LayoutSetsVersionFourAndVariantTenOverTheBytesInOrder) {
  const unsigned char bytes[16] = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0xFF, 0x77,
                                   0xFF, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0x01};
  const platform::Guid id = platform::GuidFromRandomBytes(bytes);
  EXPECT_EQ(id.Data1, 0x00112233u);
  EXPECT_EQ(id.Data2, 0x4455);
  EXPECT_EQ(id.Data3, 0x4F77);
  const unsigned char data4[8] = {0xBF, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0x01};
  EXPECT_EQ(std::memcmp(id.Data4, data4, 8), 0);
}

TEST(Guid, SystemSourceGivesDistinctVersionFourIdentifiers) {
  const platform::Result<platform::Guid> a = platform::NewGuid();
  const platform::Result<platform::Guid> b = platform::NewGuid();
  ASSERT_TRUE(a.IsOk()) << a.Error();
  ASSERT_TRUE(b.IsOk()) << b.Error();
  EXPECT_EQ(a->Data3 >> 12, 4);
  EXPECT_EQ(a->Data4[0] & 0xC0, 0x80);
  EXPECT_EQ(b->Data3 >> 12, 4);
  EXPECT_FALSE(a->Data1 == b->Data1 && a->Data2 == b->Data2 && a->Data3 == b->Data3 &&
               std::memcmp(a->Data4, b->Data4, 8) == 0);
}

}  // namespace
