// Shared helpers of the streams tests: sparse files, and a scripted port that
// records its calls and fails on request. Temporary folders and whole-file
// reads and writes are the shared scaffolding (tests/common).
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "basalt/strings.h"
#include "common/temp_tree.h"
#include "common/test_files.h"
#include "tovfoundation/streams.h"

namespace tovtest {

// A sparse file of `size` bytes with `tail` written at its end.
void MakeSparse(const std::string& nativePath, std::uint64_t size, const Bytes& tail);

// One call a scripted port received.
struct PortCall {
  char op;  // 'r' Read, 'w' Write, 'f' Flush, 'c' Close, 's' ReadSequential
  std::uint64_t pos;
  std::int32_t count;
  bool operator==(const PortCall&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const PortCall& call) {
    return out << call.op << "(" << call.pos << ", " << call.count << ")";
  }
};

// Port behaviour shared by the 32- and 64-bit scripted ports.
struct PortScript {
  Bytes data;  // the store; writes grow it
  std::vector<PortCall> calls;
  std::uint32_t readStatus = 0;   // returned by failing reads
  int failReadsFrom = -1;         // reads with index >= this fail (-1: none)
  std::uint32_t writeStatus = 0;  // every write returns it (and stores nothing when non-zero)
  std::uint32_t flushStatus = 0;
  bool sequential = false;
  int sequentialGot = -1;  // bytesRead reported by ReadSequential (-1: count)
  int reads = 0;
  bool* destroyed = nullptr;             // set to true by the destructor
  std::vector<PortCall>* log = nullptr;  // receives the calls too (may outlive the port)

  void Record(const PortCall& call) {
    calls.push_back(call);
    if (log != nullptr) log->push_back(call);
  }

  std::uint32_t DoRead(std::uint64_t pos, std::int32_t count, void* buffer);
  std::uint32_t DoWrite(std::uint64_t pos, std::int32_t count, const void* buffer);
};

class ScriptedPort : public Halyard::CPort {
 public:
  explicit ScriptedPort(Bytes data = {});
  ~ScriptedPort() override;
  std::uint32_t Size(std::uint32_t newSize) override;
  std::uint32_t Size() const override;
  std::uint32_t Close() override;
  std::uint32_t Read(std::uint32_t pos, std::int32_t count, void* buffer) const override;
  std::uint32_t Write(std::uint32_t pos, std::int32_t count, const void* buffer) override;
  std::uint32_t Flush() override;
  bool IsSequential() const override;
  void ReadSequential(std::uint32_t pos, std::int32_t count, std::int32_t& bytesRead,
                      void* buffer) const override;

  mutable PortScript script;
  std::uint32_t sizeOverride = 0xFFFFFFFFu;  // reported by Size() unless 0xFFFFFFFF
};

class ScriptedPortEx : public Halyard::CPortEx {
 public:
  explicit ScriptedPortEx(Bytes data = {});
  ~ScriptedPortEx() override;
  std::uint32_t Size(std::uint64_t newSize) override;
  std::uint64_t Size() const override;
  std::uint32_t Close() override;
  std::uint32_t Read(std::uint64_t pos, std::int32_t count, void* buffer) const override;
  std::uint32_t Write(std::uint64_t pos, std::int32_t count, const void* buffer) override;
  std::uint32_t Flush() override;

  mutable PortScript script;
};

}  // namespace tovtest
