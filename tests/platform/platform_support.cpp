#include "platform/platform_support.h"

#include <filesystem>
#include <fstream>

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

}  // namespace platform_test
