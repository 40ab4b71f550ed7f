// The process-wide station registry: names to lazily created, reference
// counted stations, under one re-entrant lock.
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "messaging/station_registry_internal.h"
#include "tovfoundation/messaging.h"

namespace TOV {

namespace {

using StationRegistry::StationFactory;

struct Entry {
  StationFactory factory = nullptr;  // null for a station handed in at registration
  std::unique_ptr<Station> instance;
  std::int32_t retainCount = 0;
  bool disposePending = false;
};

// std::string compares through char_traits<char>::compare, which orders bytes
// as unsigned values and a prefix before the longer string.
using Table = std::map<UTF8String, Entry>;

struct Registry {
  std::recursive_mutex lock;
  std::int32_t lockDepth = 0;  // read and written only while `lock` is held
  Table table;
  std::vector<std::unique_ptr<Station>> awaitingDeletion;
};

// Created on first use and never destroyed, so stations destroyed during
// static destruction (whose destructors look themselves up) still find it.
Registry& TheRegistry() {
  static Registry* const registry = new Registry;
  return *registry;
}

// Holds the registry lock for one operation and keeps the depth count:
// incremented right after entering, decremented right before leaving, also
// when an exception leaves the operation.
class RegistryLock {
 public:
  explicit RegistryLock(Registry& registry) : mRegistry(registry) {
    mRegistry.lock.lock();
    ++mRegistry.lockDepth;
  }
  RegistryLock(const RegistryLock&) = delete;
  RegistryLock& operator=(const RegistryLock&) = delete;
  ~RegistryLock() {
    --mRegistry.lockDepth;
    mRegistry.lock.unlock();
  }

 private:
  Registry& mRegistry;
};

Station* DefaultFactory(const UTF8String& name) { return new Station(name); }

// Adds one entry unless the name is taken; true if it was added.
bool AddEntry(Registry& registry, const UTF8String& name, StationFactory factory,
              std::unique_ptr<Station>& instance) {
  auto [where, added] = registry.table.try_emplace(name);
  if (!added) return false;
  where->second.factory = factory;
  where->second.instance = std::move(instance);
  return true;
}

// Erases the entry and then deletes its station, still under the lock (the
// station's destructor may re-enter the registry and must find the entry gone).
void EraseAndDelete(Registry& registry, Table::iterator where) {
  std::unique_ptr<Station> doomed = std::move(where->second.instance);
  registry.table.erase(where);
  doomed.reset();
}

std::int32_t AddWrapping(std::int32_t value, std::int32_t delta) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(value) +
                                   static_cast<std::uint32_t>(delta));
}

std::atomic<std::uint32_t> gUniqueStationCounter{0};

}  // namespace

namespace StationRegistry {

void RegisterStation(const UTF8String& name, StationFactory factory) {
  Registry& registry = TheRegistry();
  RegistryLock guard(registry);
  std::unique_ptr<Station> none;
  AddEntry(registry, name, factory != nullptr ? factory : &DefaultFactory, none);
}

void RegisterStation(Station* station) {
  if (station == nullptr) return;
  Registry& registry = TheRegistry();
  RegistryLock guard(registry);
  std::unique_ptr<Station> owned(station);
  if (!AddEntry(registry, station->GetName(), nullptr, owned)) {
    // The name is taken: the caller keeps its station.
    static_cast<void>(owned.release());
  }
}

UTF8String UniqueStationID() {
  const std::uint32_t number = gUniqueStationCounter.fetch_add(1, std::memory_order_relaxed) + 1u;
  return "Station #" + std::to_string(number);
}

UTF8String RegisterUniqueStation() {
  UTF8String name = UniqueStationID();
  RegisterStation(name, nullptr);
  return name;
}

Station* FindStation(const UTF8String& name) {
  Registry& registry = TheRegistry();
  RegistryLock guard(registry);
  auto where = registry.table.find(name);
  if (where == registry.table.end()) return nullptr;
  Entry& entry = where->second;
  if (entry.instance == nullptr && entry.factory != nullptr) {
    // The factory runs under the lock and may re-enter the registry; it must
    // not erase its own entry (the station it returns would then be lost).
    const UTF8String entryName = where->first;  // the factory may reshape the table
    std::unique_ptr<Station> created(entry.factory(entryName));
    auto again = registry.table.find(entryName);
    if (again == registry.table.end()) return nullptr;
    if (again->second.instance == nullptr) again->second.instance = std::move(created);
    return again->second.instance.get();
  }
  return entry.instance.get();
}

void RetainStation(const UTF8String& name) {
  Registry& registry = TheRegistry();
  RegistryLock guard(registry);
  auto where = registry.table.find(name);
  if (where == registry.table.end()) return;
  where->second.retainCount = AddWrapping(where->second.retainCount, 1);
}

void ReleaseStation(const UTF8String& name) {
  Registry& registry = TheRegistry();
  RegistryLock guard(registry);
  auto where = registry.table.find(name);
  if (where == registry.table.end() || where->second.instance == nullptr) return;
  const std::int32_t before = where->second.retainCount;
  where->second.retainCount = AddWrapping(before, -1);
  if (before == 1 && where->second.disposePending) EraseAndDelete(registry, where);
}

void DisposeStation(const UTF8String& name) {
  Registry& registry = TheRegistry();
  RegistryLock guard(registry);
  auto where = registry.table.find(name);
  if (where == registry.table.end() || where->second.instance == nullptr) return;
  if (where->second.retainCount > 0) {
    where->second.disposePending = true;
    return;
  }
  EraseAndDelete(registry, where);
  // Taken out first: a destructor below may re-enter the registry.
  std::vector<std::unique_ptr<Station>> waiting = std::move(registry.awaitingDeletion);
  registry.awaitingDeletion.clear();
  waiting.clear();
}

void Terminate() {
  Registry& registry = TheRegistry();
  Table table;
  std::vector<std::unique_ptr<Station>> waiting;
  {
    RegistryLock guard(registry);
    table.swap(registry.table);
    waiting.swap(registry.awaitingDeletion);
  }
  // Outside the lock, in name order (the map's order); each destructor may
  // look itself up and finds the registry empty.
  for (auto& [name, entry] : table) entry.instance.reset();
  table.clear();
  waiting.clear();
}

}  // namespace StationRegistry

}  // namespace TOV

namespace tovimpl::messaging {

StationEntryState LookUpStationEntry(const UTF8String& name) {
  TOV::Registry& registry = TOV::TheRegistry();
  TOV::RegistryLock guard(registry);
  StationEntryState state;
  auto where = registry.table.find(name);
  if (where == registry.table.end()) return state;
  state.registered = true;
  state.hasInstance = where->second.instance != nullptr;
  state.retainCount = where->second.retainCount;
  state.disposePending = where->second.disposePending;
  return state;
}

std::int32_t RegistryLockDepth() {
  TOV::Registry& registry = TOV::TheRegistry();
  TOV::RegistryLock guard(registry);
  return registry.lockDepth - 1;  // not counting this call's own entry
}

void DeferStationDeletion(TOV::Station* station) {
  if (station == nullptr) return;
  TOV::Registry& registry = TOV::TheRegistry();
  TOV::RegistryLock guard(registry);
  registry.awaitingDeletion.emplace_back(station);
}

std::size_t StationsAwaitingDeletion() {
  TOV::Registry& registry = TOV::TheRegistry();
  TOV::RegistryLock guard(registry);
  return registry.awaitingDeletion.size();
}

}  // namespace tovimpl::messaging
