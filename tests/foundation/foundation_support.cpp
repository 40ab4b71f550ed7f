// Shared helpers of the foundation tests.
#include "foundation_support.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "basalt/utf.h"

namespace tovtest {

namespace {

FakeHost* gCurrent = nullptr;

template <int N>
std::uint32_t Entry(unsigned short* buffer, std::uint32_t* count) {
  return FakeHost::Current()->Answer(N, buffer, count);
}

template <int... N>
std::array<void*, 20> MakeTable(std::integer_sequence<int, N...>) {
  return {reinterpret_cast<void*>(&Entry<N>)...};
}

}  // namespace

FakeHost::FakeHost() {
  mTable = MakeTable(std::make_integer_sequence<int, 20>());
  gCurrent = this;
}

FakeHost::~FakeHost() {
  if (gCurrent == this) gCurrent = nullptr;
}

FakeHost* FakeHost::Current() { return gCurrent; }

std::uint32_t FakeHost::QueryInterface(const Halyard::_VGUID&, void** out) {
  if (out != nullptr) *out = nullptr;
  Record({"QueryInterface", "", 0, -1, false, 0});
  return TOV::kErrNoInterface;
}
std::uint32_t FakeHost::AddRef() {
  Record({"AddRef", "", 0, -1, false, 0});
  return 1;
}
std::uint32_t FakeHost::Release() {
  Record({"Release", "", 0, -1, false, 0});
  return 1;
}

std::uint32_t FakeHost::AcquireService(const char* name, std::uint32_t version, void** service) {
  Record({"AcquireService", name, version, -1, false, 0});
  if (mAcquireStatus != 0) return mAcquireStatus;
  *service = mTable.data();
  return 0;
}

std::uint32_t FakeHost::ReleaseService(const char* name, std::uint32_t version, void** service) {
  Record({"ReleaseService", name, version, -1, service == nullptr, 0});
  return mReleaseStatus;
}

void FakeHost::SetFolder(int entry, const UTF16String& text) {
  std::lock_guard<std::mutex> lock(mMutex);
  mFolders[entry] = text;
}

void FakeHost::ForceCount(int entry, std::uint32_t count) {
  std::lock_guard<std::mutex> lock(mMutex);
  mForcedCounts[entry] = count;
}

std::vector<HostCall> FakeHost::Calls() const {
  std::lock_guard<std::mutex> lock(mMutex);
  return mCalls;
}

void FakeHost::ClearCalls() {
  std::lock_guard<std::mutex> lock(mMutex);
  mCalls.clear();
}

std::vector<HostCall> FakeHost::EntryCalls(int entry) const {
  std::vector<HostCall> out;
  for (const auto& call : Calls()) {
    if (call.what == "Entry" && call.entry == entry) out.push_back(call);
  }
  return out;
}

void FakeHost::Record(const HostCall& call) {
  std::lock_guard<std::mutex> lock(mMutex);
  mCalls.push_back(call);
}

std::uint32_t FakeHost::Answer(int entry, unsigned short* buffer, std::uint32_t* count) {
  Record({"Entry", "", 0, entry, buffer == nullptr, *count});
  UTF16String text;
  std::uint32_t needed = 0;
  {
    std::lock_guard<std::mutex> lock(mMutex);
    auto found = mFolders.find(entry);
    if (found != mFolders.end()) text = found->second;
    needed = text.empty() ? 0 : static_cast<std::uint32_t>(text.size() + 1);
    auto forced = mForcedCounts.find(entry);
    if (forced != mForcedCounts.end()) needed = forced->second;
  }
  if (buffer == nullptr) {
    *count = needed;
    return 0;
  }
  // Writes the text and its NUL, never more than the first count said.
  text.push_back(0);
  const std::size_t units = std::min<std::size_t>(text.size(), needed);
  for (std::size_t i = 0; i < units; ++i) buffer[i] = text[i];
  return 0;
}

// ---------------------------------------------------------------------------

ChildHandle StartChild(const std::string& testName, const std::map<std::string, std::string>& env) {
  std::map<std::string, std::string> childEnv = env;
  childEnv["TOV_FOUNDATION_CHILD"] = "1";
  return StartProcess(SelfPath(), {"--gtest_filter=" + testName, "--gtest_brief=1"}, childEnv);
}

int WaitChild(ChildHandle child) { return WaitProcess(child); }

int RunChild(const std::string& testName, const std::map<std::string, std::string>& env) {
  return WaitChild(StartChild(testName, env));
}

bool IsChild() {
  const char* value = std::getenv("TOV_FOUNDATION_CHILD");
  return value != nullptr && std::strcmp(value, "1") == 0;
}

}  // namespace tovtest
