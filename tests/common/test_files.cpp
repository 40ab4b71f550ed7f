#include "common/test_files.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "basalt/utf.h"
#include "common/temp_tree.h"

namespace tovtest {

namespace fs = std::filesystem;

std::string ReadFile(const std::string& native) {
  std::ifstream in(native, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

Bytes ReadBytes(const std::string& native) {
  std::ifstream in(native, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteFile(const std::string& native, const std::string& contents) {
  std::ofstream out(native, std::ios::binary | std::ios::trunc);
  out << contents;
  if (!out) throw std::runtime_error("cannot write " + native);
}

void WriteBytes(const std::string& native, const Bytes& bytes) {
  std::ofstream out(native, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
}

bool Exists(const std::string& native) {
  std::error_code error;
  return fs::symlink_status(native, error).type() != fs::file_type::not_found && !error;
}

void MakeFolder(const std::string& native) {
  std::error_code ignored;
  fs::create_directories(native, ignored);
}

std::vector<std::string> ListFolder(const std::string& native) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator it(native, error), end; !error && it != end; it.increment(error)) {
    names.push_back(it->path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

UTF16String Lib(const std::string& native) { return LibraryPath(native); }

std::string Native(const UTF16String& library) {
  std::string out = basalt::UTF16to8(library);
  std::replace(out.begin(), out.end(), '\\', '/');
  return out;
}

std::string U8(const UTF16String& text) { return basalt::UTF16to8(text); }
UTF16String U16(const std::string& text) { return basalt::UTF8to16(text); }

}  // namespace tovtest
