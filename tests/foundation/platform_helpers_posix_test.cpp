// The POSIX backend's module handles: a data-file load is a tagged handle
// that can be freed once.
#include <gtest/gtest.h>

#include <cstdint>

#include "foundation_support.h"
#include "platform/error.h"
#include "platform/module.h"
#include "tovfoundation/foundation.h"

namespace {

UTF16String PluginLibraryPath() { return tovtest::Lib(TOV_TEST_PLUGIN); }

TEST(ModuleLayer, DataFileHandlesAreTaggedAndFreedOnce) {
  Halyard::HINSTANCE module =
      tovimpl::platform::LoadModule(PluginLibraryPath(), tovimpl::platform::kLoadLibraryAsDatafile)
          .ValueOr(nullptr);
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(module) & 1u, 1u);
  EXPECT_TRUE(tovimpl::platform::UnloadModule(module));
  EXPECT_EQ(tovimpl::platform::UnloadModule(module).Error(), 6u);
}

}  // namespace
