#include "platform/platform_support.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "basalt/utf.h"

namespace platform_test {

namespace {
// A UTF-8 native path as the file system library takes it on every platform.
std::filesystem::path Path(const std::string& native) {
  return std::filesystem::path(std::u8string(native.begin(), native.end()));
}
}  // namespace

std::string U8(const UTF16String& text) { return basalt::UTF16to8(text); }

UTF16String U16(const std::string& text) { return basalt::UTF8to16(text); }

void WriteFile(const std::string& native, const std::string& contents) {
  std::ofstream out(Path(native), std::ios::binary | std::ios::trunc);
  out << contents;
}

bool Exists(const std::string& native) {
  std::error_code error;
  return std::filesystem::exists(Path(native), error);
}

void WriteFileBytes(const std::string& native, const std::string& bytes) {
  std::ofstream out(Path(native), std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string ReadFileBytes(const std::string& native) {
  std::ifstream in(Path(native), std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void MakeFolder(const std::string& native) {
  std::error_code ignored;
  std::filesystem::create_directories(Path(native), ignored);
}

}  // namespace platform_test
