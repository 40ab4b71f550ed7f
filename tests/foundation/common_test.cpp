// The common exceptions and status codes.
#include "tovfoundation/common.h"

#include <gtest/gtest.h>

namespace {

TEST(CommonExceptions, WhatTexts) {
  EXPECT_STREQ(TOV::TOVException().what(), "class TOV::TOVException");
  const TOV::TOVVRException error(TOV::kErrInvalidArgument);
  EXPECT_STREQ(error.what(), "class TOV::TOVVRException");
  EXPECT_EQ(error.GetCode(), 0xC0080001u);
  const TOV::TOVException& root = error;
  EXPECT_STREQ(root.what(), "class TOV::TOVVRException");
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
