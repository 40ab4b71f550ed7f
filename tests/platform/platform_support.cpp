#include "platform/platform_support.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace platform_test {

void WriteFileBytes(const std::string& native, const std::string& bytes) {
  std::ofstream out(std::filesystem::path(native), std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string ReadFileBytes(const std::string& native) {
  std::ifstream in(std::filesystem::path(native), std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

bool Exists(const std::string& native) {
  std::error_code ignored;
  return std::filesystem::exists(std::filesystem::path(native), ignored);
}

void MakeFolder(const std::string& native) {
  std::error_code ignored;
  std::filesystem::create_directories(std::filesystem::path(native), ignored);
}

}  // namespace platform_test
