// Shared helpers of the foundation tests: a fake host (services manager and
// folder table) that records every call, and running this test program again
// as a second process. Temporary folders and files are the shared scaffolding
// (tests/common).
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "basalt/strings.h"
#include "common/child_process.h"
#include "common/temp_tree.h"
#include "common/test_files.h"
#include "tovfoundation/common.h"

namespace tovtest {

// One call the fake host saw.
struct HostCall {
  std::string what;  // "AcquireService", "ReleaseService", "Entry"
  std::string name;  // service name
  std::uint32_t version = 0;
  int entry = -1;             // table entry called
  bool nullBuffer = false;    // the entry got a null buffer
  std::uint32_t countIn = 0;  // the count the entry was handed
};

// A services manager and the host service's 20-entry folder table. Each entry
// answers the text configured for it: first call (null buffer) sets the
// count to the text's length plus one; second call copies at most that many
// units (the text and its NUL). A count can be forced instead.
class FakeHost : public Halyard::IVServicesManager {
 public:
  FakeHost();
  ~FakeHost();

  // --- services manager ---
  std::uint32_t QueryInterface(const Halyard::_VGUID& id, void** out) override;
  std::uint32_t AddRef() override;
  std::uint32_t Release() override;
  std::uint32_t AcquireService(const char* name, std::uint32_t version, void** service) override;
  std::uint32_t ReleaseService(const char* name, std::uint32_t version, void** service) override;

  // The folder answered by an entry (UTF-16 units, may hold a NUL).
  void SetFolder(int entry, const UTF16String& text);
  // Makes the entry's first call report `count` whatever its text.
  void ForceCount(int entry, std::uint32_t count);
  // Makes AcquireService fail with `status` (0: succeed).
  void SetAcquireStatus(std::uint32_t status) { mAcquireStatus = status; }
  // Makes ReleaseService answer `status` (and do nothing else).
  void SetReleaseStatus(std::uint32_t status) { mReleaseStatus = status; }

  std::vector<HostCall> Calls() const;
  void ClearCalls();
  // The entry calls, for one entry.
  std::vector<HostCall> EntryCalls(int entry) const;
  // The last buffer capacity the entry was told (the count of the 2nd call).
  static FakeHost* Current();

  // Used by the table's functions.
  std::uint32_t Answer(int entry, unsigned short* buffer, std::uint32_t* count);

 private:
  void Record(const HostCall& call);
  mutable std::mutex mMutex;
  std::vector<HostCall> mCalls;
  std::map<int, UTF16String> mFolders;
  std::map<int, std::uint32_t> mForcedCounts;
  std::uint32_t mAcquireStatus = 0;
  std::uint32_t mReleaseStatus = 0;
  std::array<void*, 20> mTable{};
};

// Runs this test program again with only `testName` (Suite.Name), with the
// environment variable TOV_FOUNDATION_CHILD=1 and the extra variables given.
// Returns the exit status (or 128 + signal).
int RunChild(const std::string& testName, const std::map<std::string, std::string>& env);
// The same, without waiting: the child (-1 on failure), for WaitChild, which
// returns its exit status (or 128 + signal).
ChildHandle StartChild(const std::string& testName, const std::map<std::string, std::string>& env);
int WaitChild(ChildHandle child);
// True in a program started by RunChild.
bool IsChild();

}  // namespace tovtest
