// The common exceptions and status codes.
#include "tovfoundation/common.h"

#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <string>

#include "tovfoundation/version.h"

namespace {

TEST(CommonExceptions, WhatTexts) {
  EXPECT_STREQ(TOV::TOVException().what(), "class TOV::TOVException");
  const TOV::TOVVRException error(TOV::kErrInvalidArgument);
  EXPECT_STREQ(error.what(), "class TOV::TOVVRException");
  EXPECT_EQ(error.GetCode(), 0xC0080001u);
  const TOV::TOVException& root = error;
  EXPECT_STREQ(root.what(), "class TOV::TOVVRException");
}

// An implementation object of the library: destroyed through its base.
class CountedImpl : public TOV::Impl {
 public:
  explicit CountedImpl(int& destroyed) : mDestroyed(destroyed) {}
  ~CountedImpl() override { ++mDestroyed; }

 private:
  int& mDestroyed;
};

TEST(CommonImpl, DerivedObjectIsDestroyedThroughTheBase) {
  int destroyed = 0;
  std::unique_ptr<TOV::Impl> impl = std::make_unique<CountedImpl>(destroyed);
  impl.reset();
  EXPECT_EQ(destroyed, 1);
}

TEST(FoundationVersion, IsMajorMinorPatch) {
  const std::string version = TOVFoundation::Version();
  EXPECT_TRUE(std::regex_match(version, std::regex(R"(\d+\.\d+\.\d+)"))) << version;
}

TEST(CommonStatusCodes, ValuesMatchTable) {
  EXPECT_EQ(TOV::kErrInvalidPointer, 0xC0080003u);
  EXPECT_EQ(TOV::kErrCreateFailed, 0xC00B0002u);
  EXPECT_EQ(TOV::kErrSeekBackward, 0xC00C0007u);
  EXPECT_EQ(TOV::kErrAlreadyExists, 0xC00C000Fu);
  EXPECT_EQ(TOV::kErrNoMetadata, 0xC0010003u);
  EXPECT_EQ(TOV::kErrOutOfMemory, 0xC0010005u);
  EXPECT_EQ(TOV::kErrNotFound, 0xC0060002u);
  EXPECT_EQ(TOV::kErrRegistryNoCacheFile, 0xC0140003u);
  EXPECT_EQ(TOV::kErrNoInterface, 0x400D0004u);
}

}  // namespace
