// Shared helpers of the writers tests: preset texts as UTF-16LE bytes, golden
// byte arrays, a memory port, and the Python reader check. Temporary folders
// and whole-file reads are the shared scaffolding (tests/common).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "basalt/strings.h"
#include "common/child_process.h"
#include "common/temp_tree.h"
#include "common/test_files.h"
#include "tovfoundation/streams.h"

namespace tovtest {

// `text` as little-endian UTF-16 bytes, with a byte-order mark when asked.
Bytes Utf16LE(std::u16string_view text, bool byteOrderMark = false);

// Little-endian fields appended to a golden byte array.
void Append(Bytes& bytes, std::string_view text);
void Append16(Bytes& bytes, std::uint16_t value);
void Append32(Bytes& bytes, std::uint32_t value);

// /usr/bin/python3 with the given module importable, or an empty string with
// the reason in `why`.
bool PythonHasModule(const std::string& module, std::string& why);
// Runs /usr/bin/python3 -c `script` with `args`; returns its exit status and
// its standard output in `output`.
int RunPython(const std::string& script, const std::vector<std::string>& args, std::string& output);

// The tovtool executable next to the test binary.
std::string TovtoolPath();

}  // namespace tovtest

namespace tovtest {

// A 32-bit port over a growing byte vector that can fail its Flush() and
// reports its own destruction, so tests can see when a stream that owns it
// was destroyed.
class MemoryPort : public Halyard::CPort {
 public:
  explicit MemoryPort(bool* destroyed = nullptr)
      : CPort(Halyard::kAccessReadWrite, 0), mDestroyed(destroyed) {}
  ~MemoryPort() override {
    if (mDestroyed != nullptr) *mDestroyed = true;
  }

  std::uint32_t Size(std::uint32_t newSize) override {
    bytes.resize(newSize);
    return 0;
  }
  std::uint32_t Size() const override { return static_cast<std::uint32_t>(bytes.size()); }
  std::uint32_t Close() override { return 0; }
  std::uint32_t Read(std::uint32_t, std::int32_t, void*) const override { return 0; }
  std::uint32_t Write(std::uint32_t pos, std::int32_t count, const void* buffer) override;
  std::uint32_t Flush() override {
    ++flushes;
    return flushStatus;
  }

  Bytes bytes;
  std::uint32_t flushStatus = 0;  // what Flush() answers
  int flushes = 0;
  // Writes at or beyond this position only count (their bytes are dropped),
  // so tests can push gigabytes through a stream.
  std::uint64_t dropFrom = ~0ull;

 private:
  bool* mDestroyed;
};

}  // namespace tovtest
