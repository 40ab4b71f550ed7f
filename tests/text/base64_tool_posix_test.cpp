// tovtool base64 against coreutils: `base64 -d` (line breaks without their
// CRs) reads what `tovtool base64 encode` writes, and the tool decodes it back.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "common/temp_tree.h"
#include "common/test_files.h"

namespace {

#ifdef TOVTOOL_PATH
using tovtest::Bytes;
using tovtest::ReadFile;

Bytes RandomBytes(std::size_t size, std::uint32_t seed) {
  std::mt19937 engine(seed);
  Bytes bytes(size);
  for (auto& byte : bytes) byte = static_cast<unsigned char>(engine());
  return bytes;
}

int RunShell(const std::string& command) { return std::system(command.c_str()); }

TEST(Base64Tool, CoreutilsDecodesToolOutput) {
  const tovtest::TempTree temp("base64_tool");
  const std::string& folder = temp.Native();
  const Bytes bytes = RandomBytes(10000, 5);
  tovtest::WriteBytes(folder + "/input.bin", bytes);
  ASSERT_EQ(RunShell(std::string(TOVTOOL_PATH) + " base64 encode " + folder + "/input.bin > " +
                     folder + "/encoded.txt"),
            0);
  const std::string encoded = ReadFile(folder + "/encoded.txt");
  EXPECT_EQ(encoded.substr(0, 6), std::string(encoded.substr(0, 4)) + "\r\n");
  ASSERT_EQ(
      RunShell("tr -d '\\r' < " + folder + "/encoded.txt | base64 -d > " + folder + "/decoded.bin"),
      0);
  EXPECT_EQ(ReadFile(folder + "/decoded.bin"), std::string(bytes.begin(), bytes.end()));
  // And back through the tool, from standard input.
  ASSERT_EQ(RunShell(std::string(TOVTOOL_PATH) + " base64 decode < " + folder + "/encoded.txt > " +
                     folder + "/again.bin"),
            0);
  EXPECT_EQ(ReadFile(folder + "/again.bin"), std::string(bytes.begin(), bytes.end()));
}
#else
TEST(Base64Tool, CoreutilsDecodesToolOutput) {
  GTEST_SKIP() << "tovtool is not part of this build";
}
#endif

}  // namespace
