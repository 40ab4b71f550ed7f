#include "writers/writers_support.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "basalt/utf.h"

namespace tovtest {

Bytes Utf16LE(std::u16string_view text, bool byteOrderMark) {
  Bytes bytes;
  if (byteOrderMark) Append16(bytes, 0xFEFF);
  for (const char16_t unit : text) Append16(bytes, static_cast<std::uint16_t>(unit));
  return bytes;
}

void Append(Bytes& bytes, std::string_view text) {
  bytes.insert(bytes.end(), text.begin(), text.end());
}

void Append16(Bytes& bytes, std::uint16_t value) {
  bytes.push_back(static_cast<std::uint8_t>(value & 0xFF));
  bytes.push_back(static_cast<std::uint8_t>(value >> 8));
}

void Append32(Bytes& bytes, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8)
    bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

namespace {
std::string Quote(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'')
      quoted += "'\\''";
    else
      quoted += c;
  }
  return quoted + "'";
}
}  // namespace

bool PythonHasModule(const std::string& module, std::string& why) {
  if (!std::filesystem::exists("/usr/bin/python3")) {
    why = "/usr/bin/python3 is missing";
    return false;
  }
  std::string output;
  if (RunCommand("/usr/bin/python3 -c " + Quote("import " + module) + " 2>&1", output) != 0) {
    why = "/usr/bin/python3 cannot import " + module + ": " + output;
    return false;
  }
  return true;
}

int RunPython(const std::string& script, const std::vector<std::string>& args,
              std::string& output) {
  std::string command = "/usr/bin/python3 -c " + Quote(script);
  for (const auto& arg : args) command += " " + Quote(arg);
  return RunCommand(command + " 2>&1", output);
}

std::string TovtoolPath() { return TOV_TEST_BINARY_DIR "/bin/tovtool"; }

}  // namespace tovtest

namespace tovtest {

std::uint32_t MemoryPort::Write(std::uint32_t pos, std::int32_t count, const void* buffer) {
  if (count <= 0 || pos >= dropFrom) return 0;
  const std::size_t end = static_cast<std::size_t>(pos) + static_cast<std::size_t>(count);
  if (bytes.size() < end) bytes.resize(end);
  std::memcpy(bytes.data() + pos, buffer, static_cast<std::size_t>(count));
  return 0;
}

}  // namespace tovtest
