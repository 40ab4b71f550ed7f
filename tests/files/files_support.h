// The files suite's helpers are the shared test scaffolding (tests/common);
// files_support.cpp gives every process of the suite a hermetic environment.
#pragma once

#include <cstdint>
#include <string>

#include "basalt/strings.h"
#include "common/environment.h"
#include "common/temp_tree.h"
#include "common/test_files.h"

namespace tovtest {

// A library path in the platform's own spelling, as the library makes it
// (PathUtilities::ToPlatformPath), in UTF-8.
std::string PlatformPath(const UTF16String& lib);
// The size of the file at a library path.
std::uintmax_t PlatformFileSize(const UTF16String& lib);

}  // namespace tovtest
