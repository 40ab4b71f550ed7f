// The files suite's helpers are the shared test scaffolding (tests/common);
// files_support.cpp gives every process of the suite a hermetic environment.
#pragma once

#include "common/environment.h"
#include "common/temp_tree.h"
#include "common/test_files.h"

// The names the OS-layer tests of this folder still spell the older way.
namespace files_test {
using TempFolder = tovtest::TempTree;
using tovtest::Exists;
using tovtest::Lib;
using tovtest::MakeFolder;
using tovtest::ReadFile;
using tovtest::ScopedEnv;
using tovtest::U16;
using tovtest::U8;
using tovtest::WriteFile;
}  // namespace files_test
