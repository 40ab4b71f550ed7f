// Internal view of the station registry, for the library's own tests and
// tools; not part of the exported interface.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tovfoundation/messaging.h"

namespace tovimpl::messaging {

// What the registry holds for one name.
struct StationEntryState {
  bool registered = false;   // an entry exists
  bool hasInstance = false;  // its station has been created (or was given)
  std::int32_t retainCount = 0;
  bool disposePending = false;
};

// The entry for `name`, read under the registry lock.
StationEntryState LookUpStationEntry(const UTF8String& name);

// The registry lock's depth count as the calling code sees it: 0 outside any
// registry operation, 1 inside a factory or a station destructor run by one
// operation, more when those re-enter the registry.
std::int32_t RegistryLockDepth();

// Hands a station to the registry's list of stations awaiting deletion; the
// next DisposeStation that deletes a station deletes them too, and Terminate
// deletes whatever is left. The registry takes ownership; null is ignored.
void DeferStationDeletion(TOV::Station* station);

// Number of stations awaiting deletion.
std::size_t StationsAwaitingDeletion();

}  // namespace tovimpl::messaging
