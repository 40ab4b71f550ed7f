// Shared helpers of the streams tests (see stream_test_support.h).
#include "streams/stream_test_support.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include "basalt/utf.h"

namespace tovtest {

void MakeSparse(const std::string& nativePath, std::uint64_t size, const Bytes& tail) {
  std::error_code error;
  {
    std::ofstream create(nativePath, std::ios::binary | std::ios::trunc);
    if (!create) throw std::runtime_error("cannot create " + nativePath);
  }
  // Growing a file by its size leaves a hole where the system can.
  std::filesystem::resize_file(nativePath, size, error);
  if (error) throw std::runtime_error("sparse file not made: " + error.message());
  if (tail.empty()) return;
  std::fstream out(nativePath, std::ios::binary | std::ios::in | std::ios::out);
  out.seekp(static_cast<std::streamoff>(size - tail.size()));
  out.write(reinterpret_cast<const char*>(tail.data()), static_cast<std::streamsize>(tail.size()));
  if (!out.flush()) throw std::runtime_error("sparse file's tail not written");
}

std::uint32_t PortScript::DoRead(std::uint64_t pos, std::int32_t count, void* buffer) {
  const int index = reads++;
  if (failReadsFrom >= 0 && index >= failReadsFrom) return readStatus;
  auto* out = static_cast<unsigned char*>(buffer);
  for (std::int32_t i = 0; i < count; ++i) {
    const std::uint64_t at = pos + static_cast<std::uint64_t>(i);
    out[i] = at < data.size() ? data[at] : 0xEE;  // 0xEE marks bytes past the end
  }
  return 0;
}

std::uint32_t PortScript::DoWrite(std::uint64_t pos, std::int32_t count, const void* buffer) {
  if (writeStatus != 0) return writeStatus;
  const auto* in = static_cast<const unsigned char*>(buffer);
  if (data.size() < pos + static_cast<std::uint64_t>(count)) data.resize(pos + count);
  std::memcpy(data.data() + pos, in, static_cast<std::size_t>(count));
  return 0;
}

ScriptedPort::ScriptedPort(Bytes data) : CPort(Halyard::kAccessReadWrite, 0) {
  script.data = std::move(data);
}
ScriptedPort::~ScriptedPort() {
  if (script.destroyed != nullptr) *script.destroyed = true;
}
std::uint32_t ScriptedPort::Size(std::uint32_t newSize) {
  script.data.resize(newSize);
  return 0;
}
std::uint32_t ScriptedPort::Size() const {
  return sizeOverride != 0xFFFFFFFFu ? sizeOverride
                                     : static_cast<std::uint32_t>(script.data.size());
}
std::uint32_t ScriptedPort::Close() {
  script.Record({'c', 0, 0});
  return 0;
}
std::uint32_t ScriptedPort::Read(std::uint32_t pos, std::int32_t count, void* buffer) const {
  script.Record({'r', pos, count});
  return script.DoRead(pos, count, buffer);
}
std::uint32_t ScriptedPort::Write(std::uint32_t pos, std::int32_t count, const void* buffer) {
  script.Record({'w', pos, count});
  return script.DoWrite(pos, count, buffer);
}
std::uint32_t ScriptedPort::Flush() {
  script.Record({'f', 0, 0});
  return script.flushStatus;
}
bool ScriptedPort::IsSequential() const { return script.sequential; }
void ScriptedPort::ReadSequential(std::uint32_t pos, std::int32_t count, std::int32_t& bytesRead,
                                  void* buffer) const {
  script.Record({'s', pos, count});
  script.DoRead(pos, count, buffer);
  bytesRead = script.sequentialGot >= 0 ? std::min(script.sequentialGot, count) : count;
}

ScriptedPortEx::ScriptedPortEx(Bytes data) : CPortEx(Halyard::kAccessReadWrite, 0) {
  script.data = std::move(data);
}
ScriptedPortEx::~ScriptedPortEx() {
  if (script.destroyed != nullptr) *script.destroyed = true;
}
std::uint32_t ScriptedPortEx::Size(std::uint64_t newSize) {
  script.data.resize(newSize);
  return 0;
}
std::uint64_t ScriptedPortEx::Size() const { return script.data.size(); }
std::uint32_t ScriptedPortEx::Close() {
  script.Record({'c', 0, 0});
  return 0;
}
std::uint32_t ScriptedPortEx::Read(std::uint64_t pos, std::int32_t count, void* buffer) const {
  script.Record({'r', pos, count});
  return script.DoRead(pos, count, buffer);
}
std::uint32_t ScriptedPortEx::Write(std::uint64_t pos, std::int32_t count, const void* buffer) {
  script.Record({'w', pos, count});
  return script.DoWrite(pos, count, buffer);
}
std::uint32_t ScriptedPortEx::Flush() {
  script.Record({'f', 0, 0});
  return script.flushStatus;
}

}  // namespace tovtest
