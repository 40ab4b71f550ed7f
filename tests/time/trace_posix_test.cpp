// Timecode trace lines on POSIX systems: the stderr channel switched by
// TOV_TRACE, checked in a child process, since the variable is read once per
// process.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "tovfoundation/time.h"

namespace {

using TOV::Time;
using TOV::Timecode;
namespace FR = TOV::FrameRates;

// Run in a child process by the tests below.
TEST(TraceChild, DISABLED_WritesLines) {
  TOV::SetTimecodeTraceSink(nullptr);
  Timecode tc(Time(), FR::kFrameRate_VideoPAL, 101);
  tc.SetTime(Time(1.5));
}

std::string ChildStderr(const std::string& environment) {
  char self[4096];
  const ssize_t length = ::readlink("/proc/self/exe", self, sizeof self - 1);
  if (length <= 0) return "(no self path)";
  self[length] = '\0';
  const std::string command = environment + " '" + self +
                              "' --gtest_also_run_disabled_tests "
                              "--gtest_filter=TraceChild.DISABLED_WritesLines 2>&1 >/dev/null";
  FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return "(no child)";
  std::string output;
  char buffer[512];
  std::size_t got;
  while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) output.append(buffer, got);
  ::pclose(pipe);
  return output;
}

TEST(TraceDebugOutput, TovTraceSendsLinesToStderr) {
  const std::string output = ChildStderr("env TOV_TRACE=1");
  EXPECT_NE(output.find("SetTime(t): inTime: 1.5\n"), std::string::npos) << output;
  EXPECT_NE(output.find("TimeToHMSF(): Exit: mTime: 1.5 mHours: 0 mMinutes: 0 mSeconds: 1 "
                        "mFrames: 12\n"),
            std::string::npos)
      << output;
}

TEST(TraceDebugOutput, StderrStaysQuietWithoutTovTrace) {
  EXPECT_EQ(ChildStderr("env -u TOV_TRACE").find("SetTime("), std::string::npos);
  EXPECT_EQ(ChildStderr("env TOV_TRACE=0").find("SetTime("), std::string::npos);
  EXPECT_EQ(ChildStderr("env TOV_TRACE=").find("SetTime("), std::string::npos);
}

}  // namespace
