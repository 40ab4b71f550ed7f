// The localizer: default texts and translations.
#include "basalt/localizer.h"

#include <gtest/gtest.h>

using namespace basalt::literals;

namespace {

TEST(BasaltLocalizer, LookupGivesDefaultUnlessTranslated) {
  basalt::config::Localizer::ClearTranslations();
  EXPECT_EQ(basalt::config::Localizer::Lookup("$$$/Test/Key=Default text"), u"Default text"_u16);
  EXPECT_EQ(basalt::config::Localizer::Lookup("$$$/Test/Key=a=b"), u"a=b"_u16);
  EXPECT_EQ(basalt::config::Localizer::Lookup("$$$/Test/NoDefault"), u"$$$/Test/NoDefault"_u16);
  basalt::config::Localizer::SetTranslation("$$$/Test/Key", u"Standardtext"_u16);
  EXPECT_EQ(basalt::config::Localizer::Lookup("$$$/Test/Key=Default text"), u"Standardtext"_u16);
  basalt::config::Localizer::ClearTranslations();
  EXPECT_EQ(basalt::config::Localizer::Lookup("$$$/Test/Key=Default text"), u"Default text"_u16);
}

}  // namespace
