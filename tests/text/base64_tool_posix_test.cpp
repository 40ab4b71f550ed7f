// tovtool base64 against coreutils: `base64 -d` (line breaks without their
// CRs) reads what `tovtool base64 encode` writes, and the tool decodes it back.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

#ifdef TOVTOOL_PATH
using Bytes = std::vector<unsigned char>;

Bytes RandomBytes(std::size_t size, std::uint32_t seed) {
  std::mt19937 engine(seed);
  Bytes bytes(size);
  for (auto& byte : bytes) byte = static_cast<unsigned char>(engine());
  return bytes;
}

int RunShell(const std::string& command) { return std::system(command.c_str()); }

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

TEST(Base64Tool, CoreutilsDecodesToolOutput) {
  std::string folder = std::string(TOV_TEST_BINARY_DIR) + "/base64_tool_XXXXXX";
  ASSERT_NE(::mkdtemp(folder.data()), nullptr);
  const Bytes bytes = RandomBytes(10000, 5);
  {
    std::ofstream out(folder + "/input.bin", std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
  }
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
  RunShell("rm -rf '" + folder + "'");
}
#else
TEST(Base64Tool, CoreutilsDecodesToolOutput) {
  GTEST_SKIP() << "tovtool is not part of this build";
}
#endif

}  // namespace
