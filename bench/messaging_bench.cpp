// Messaging benchmarks.
//  tov/broadcast/N and peer/broadcast/N: one message delivered to N receivers,
//    by a TOV::Broadcaster to N listeners and by a boost::signals2::signal to N
//    slots; items processed = deliveries.
//  tov/findstation/10000: FindStation of existing stations in a registry of
//    10,000 names; items processed = lookups.
#include <benchmark/benchmark.h>

#include <boost/signals2/signal.hpp>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tovfoundation/messaging.h"

namespace TOV {

// The benchmark's message: an identifier only.
class Message {
 public:
  explicit Message(std::uint32_t messageID) : id(messageID) {}
  std::uint32_t id;
};

}  // namespace TOV

namespace {

class CountingListener : public TOV::Listener {
 public:
  void ListenToMessage(const TOV::Message& message) override { mSum += message.id; }
  std::uint64_t mSum = 0;
};

// The same work as CountingListener, as a Signals2 slot.
struct CountingSlot {
  std::uint64_t* sum;
  void operator()(const TOV::Message& message) const { *sum += message.id; }
};

void TovBroadcast(benchmark::State& state, int listeners) {
  TOV::Broadcaster broadcaster;
  std::vector<std::unique_ptr<CountingListener>> receivers;
  for (int i = 0; i < listeners; ++i) {
    receivers.push_back(std::make_unique<CountingListener>());
    broadcaster.AddListener(receivers.back().get());
  }
  const TOV::Message message(1);
  for (auto _ : state) {
    broadcaster.BroadcastMessage(message);
    benchmark::ClobberMemory();
  }
  std::uint64_t total = 0;
  for (const auto& receiver : receivers) total += receiver->mSum;
  benchmark::DoNotOptimize(total);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * listeners);
}

void PeerBroadcast(benchmark::State& state, int listeners) {
  boost::signals2::signal<void(const TOV::Message&)> signal;
  std::vector<std::uint64_t> sums(static_cast<std::size_t>(listeners), 0);
  for (int i = 0; i < listeners; ++i)
    signal.connect(CountingSlot{&sums[static_cast<std::size_t>(i)]});
  const TOV::Message message(1);
  for (auto _ : state) {
    signal(message);
    benchmark::ClobberMemory();
  }
  std::uint64_t total = 0;
  for (std::uint64_t sum : sums) total += sum;
  benchmark::DoNotOptimize(total);
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * listeners);
}

void TovFindStation(benchmark::State& state, int stations) {
  TOV::StationRegistry::Terminate();
  std::vector<UTF8String> names;
  names.reserve(static_cast<std::size_t>(stations));
  for (int i = 0; i < stations; ++i) {
    char name[32];
    std::snprintf(name, sizeof name, "encoder.station.%05d", i);
    names.emplace_back(name);
    TOV::StationRegistry::RegisterStation(names.back(), nullptr);
    benchmark::DoNotOptimize(TOV::StationRegistry::FindStation(names.back()));  // create now
  }
  // Visit the names in a scattered order so lookups do not walk one path.
  std::size_t index = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(TOV::StationRegistry::FindStation(names[index]));
    index = (index + 7919) % names.size();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
  TOV::StationRegistry::Terminate();
}

const bool gRegistered = [] {
  for (int listeners : {1, 10, 100}) {
    const std::string op = "broadcast/" + std::to_string(listeners);
    benchmark::RegisterBenchmark(("tov/" + op).c_str(), TovBroadcast, listeners);
    benchmark::RegisterBenchmark(("peer/" + op).c_str(), PeerBroadcast, listeners);
  }
  benchmark::RegisterBenchmark("tov/findstation/10000", TovFindStation, 10000);
  return true;
}();

}  // namespace

BENCHMARK_MAIN();
