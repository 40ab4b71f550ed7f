// Several threads using the registry at once. Each thread delivers only
// through stations it has retained and no two threads drive the same
// station's listener list; registry operations on shared names run freely.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "messaging/station_registry_internal.h"
#include "messaging_support.h"
#include "tovfoundation/messaging.h"

namespace {

using tovtest::RecordingListener;

namespace Registry = TOV::StationRegistry;
namespace Utils = TOV::StationUtils;

std::atomic<int> gCreated{0};
std::atomic<int> gDestroyed{0};

// Looks itself and a shared name up from its destructor (on top of the base
// class's own lookup), and registers a name there.
class SelfCheckingStation : public TOV::Station {
 public:
  explicit SelfCheckingStation(const UTF8String& name) : TOV::Station(name) { ++gCreated; }
  ~SelfCheckingStation() override {
    static_cast<void>(TOV::StationRegistry::FindStation(GetName()));
    static_cast<void>(TOV::StationRegistry::FindStation("shared-0"));
    TOV::StationRegistry::RegisterStation("registered-by-destructor", nullptr);
    ++gDestroyed;
  }
};

TOV::Station* SelfCheckingFactory(const UTF8String& name) {
  // Re-enters the registry from under its lock (not for its own name, which
  // would recurse).
  if (name != "shared-1") static_cast<void>(TOV::StationRegistry::FindStation("shared-1"));
  return new SelfCheckingStation(name);
}

constexpr int kThreads = 4;
constexpr int kRounds = 150;
constexpr int kSharedNames = 3;

void Worker(int index, std::atomic<int>* failures) {
  RecordingListener listener("worker" + std::to_string(index), nullptr);
  int expectedHeard = 0;
  for (int round = 0; round < kRounds; ++round) {
    // A private station, driven only by this thread.
    const UTF8String own = Registry::UniqueStationID();
    Registry::RegisterStation(own, &SelfCheckingFactory);
    Registry::RetainStation(own);
    Utils::AddListener(own, &listener);
    Utils::BroadcastMessage(own, TOV::Message(static_cast<std::uint32_t>(round)));
    ++expectedHeard;
    Registry::DisposeStation(own);  // retained: pending
    Utils::BroadcastMessage(own, TOV::Message(static_cast<std::uint32_t>(round)));
    ++expectedHeard;
    Utils::RemoveListener(own, &listener);
    Registry::ReleaseStation(own);  // 1 -> 0 with a pending dispose: deleted here
    if (Registry::FindStation(own) != nullptr) ++*failures;

    // Shared names: registry operations only, never a delivery.
    const UTF8String shared = "shared-" + std::to_string(round % kSharedNames);
    Registry::RegisterStation(shared, &SelfCheckingFactory);
    static_cast<void>(Registry::FindStation(shared));
    Registry::RetainStation(shared);
    Registry::ReleaseStation(shared);
    if (round % 7 == index) Registry::DisposeStation(shared);
    static_cast<void>(Registry::RegisterUniqueStation());
  }
  if (listener.Heard() != expectedHeard) ++*failures;
}

TEST(StationConcurrency, ThreadsRegisterFindRetainReleaseAndDisposeAtOnce) {
  Registry::Terminate();
  gCreated = 0;
  gDestroyed = 0;
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back(Worker, i, &failures);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures.load(), 0);
  EXPECT_EQ(tovimpl::messaging::RegistryLockDepth(), 0);
  // Each thread's private stations are gone; shared ones die with Terminate.
  Registry::Terminate();
  EXPECT_EQ(gCreated.load(), gDestroyed.load());
  EXPECT_GE(gCreated.load(), kThreads * kRounds);
  Registry::Terminate();  // whatever the destructors registered
}

TEST(StationConcurrency, UniqueStationIDsAreDistinctAcrossThreads) {
  constexpr int kPerThread = 500;
  std::vector<std::vector<UTF8String>> names(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&names, i] {
      for (int n = 0; n < kPerThread; ++n) names[i].push_back(Registry::UniqueStationID());
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::vector<UTF8String> all;
  for (const auto& list : names) all.insert(all.end(), list.begin(), list.end());
  std::sort(all.begin(), all.end());
  EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());
  EXPECT_EQ(all.size(), static_cast<std::size_t>(kThreads * kPerThread));
}

TEST(StationConcurrency, TerminateWhileOthersLookUpIsSafe) {
  Registry::Terminate();
  std::atomic<bool> stop{false};
  std::vector<std::thread> threads;
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([&stop, i] {
      int round = 0;
      while (!stop.load()) {
        const UTF8String name = "churn-" + std::to_string(i) + "-" + std::to_string(round++ % 5);
        Registry::RegisterStation(name, &SelfCheckingFactory);
        static_cast<void>(Registry::FindStation(name));  // never dereferenced
        Registry::RetainStation(name);
        Registry::ReleaseStation(name);
      }
    });
  }
  for (int i = 0; i < 50; ++i) Registry::Terminate();
  stop = true;
  for (std::thread& thread : threads) thread.join();
  Registry::Terminate();
  Registry::Terminate();
  EXPECT_EQ(tovimpl::messaging::RegistryLockDepth(), 0);
}

}  // namespace
