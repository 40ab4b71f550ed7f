// Settings the POSIX backend reads once per process from the environment:
// TOV_FORCE_SCALAR (the text conversions' vector level) and TOV_TRACE (the
// debugger channel). Each case runs this program again as a child with the
// variable set, and the child's half (a disabled test) reports what it saw.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "common/child_process.h"
#include "platform/cpu.h"
#include "platform/debug.h"

namespace {

namespace platform = tovimpl::platform;

// Runs the child half `test` with `environment` (shell assignments) and
// returns its standard output and error together; "<status N>" when it failed.
std::string RunChild(const std::string& environment, const std::string& test) {
  std::string output;
  const int status =
      tovtest::RunCommand("env " + environment + " '" + tovtest::SelfPath() +
                              "' --gtest_also_run_disabled_tests --gtest_filter=" + test + " 2>&1",
                          output);
  return status == 0 ? output : "<status " + std::to_string(status) + "> " + output;
}

// Run in a child process by the tests below.
TEST(ProcessSettingsChild, DISABLED_ReportTextLevel) {
  std::printf("[level %s / processor %s]\n", platform::SimdLevelName(platform::TextSimdLevel()),
              platform::SimdLevelName(platform::ProcessorSimdLevel()));
}

TEST(ProcessSettings, ScalarIsForcedByAnyValueButEmptyAndZero) {
  const std::string processor = platform::SimdLevelName(platform::ProcessorSimdLevel());
  const std::string natural = "[level " + processor + " / processor " + processor + "]";
  const std::string forced = "[level scalar / processor " + processor + "]";
  const std::string child = "ProcessSettingsChild.DISABLED_ReportTextLevel";
  EXPECT_NE(RunChild("TOV_FORCE_SCALAR=", child).find(natural), std::string::npos);
  EXPECT_NE(RunChild("TOV_FORCE_SCALAR=0", child).find(natural), std::string::npos);
  EXPECT_NE(RunChild("TOV_FORCE_SCALAR=1", child).find(forced), std::string::npos);
  EXPECT_NE(RunChild("-u TOV_FORCE_SCALAR", child).find(natural), std::string::npos);
}

// Run in a child process by the tests below.
TEST(ProcessSettingsChild, DISABLED_WriteTraceLines) {
  platform::OutputDebugStringA(nullptr);  // nothing, and no crash
  platform::OutputDebugStringA("trace line one");
  // A channel that takes nothing: the line is dropped.
  const int saved = ::dup(STDERR_FILENO);
  const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
  if (full >= 0) {
    ::dup2(full, STDERR_FILENO);
    platform::OutputDebugStringA("trace line lost");
    ::dup2(saved, STDERR_FILENO);
    ::close(full);
  }
  ::close(saved);
  platform::OutputDebugStringA("trace line two");
}

TEST(ProcessSettings, TraceLinesGoToStandardErrorOneWriteEach) {
  const std::string child = "ProcessSettingsChild.DISABLED_WriteTraceLines";
  const std::string traced = RunChild("TOV_TRACE=1", child);
  EXPECT_NE(traced.find("trace line one\ntrace line two\n"), std::string::npos) << traced;
  EXPECT_EQ(traced.find("lost"), std::string::npos) << traced;
  EXPECT_EQ(RunChild("TOV_TRACE=0", child).find("trace line"), std::string::npos);
  EXPECT_EQ(RunChild("TOV_TRACE=", child).find("trace line"), std::string::npos);
}

}  // namespace
