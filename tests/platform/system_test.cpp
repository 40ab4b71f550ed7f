// The environment query of the OS layer, on every platform: a set variable
// gives its value, a missing one carries ERROR_ENVVAR_NOT_FOUND.
#include "platform/system.h"

#include <gtest/gtest.h>

#include "basalt/strings.h"
#include "common/environment.h"
#include "platform/error.h"

using namespace basalt::literals;
namespace platform = tovimpl::platform;

namespace {

TEST(SystemSeam, SetVariableGivesItsValue) {
  const tovtest::ScopedEnv env("TOV_PLATFORM_ENV_TEST", "C:\\Users\\ed");
  const platform::Result<UTF16String> value = platform::GetEnvVar(u"TOV_PLATFORM_ENV_TEST"_u16);
  ASSERT_TRUE(value);
  EXPECT_EQ(value.Error(), 0u);
  EXPECT_EQ(*value, u"C:\\Users\\ed"_u16);
}

TEST(SystemSeam, MissingVariableCarriesError203) {
  const tovtest::ScopedEnv env("TOV_PLATFORM_ENV_TEST", nullptr);
  const platform::Result<UTF16String> value = platform::GetEnvVar(u"TOV_PLATFORM_ENV_TEST"_u16);
  EXPECT_FALSE(value);
  EXPECT_EQ(value.Error(), platform::kErrorEnvVarNotFound);
  EXPECT_EQ(value.Error(), 203u);
  EXPECT_TRUE(value->empty());
}

}  // namespace
