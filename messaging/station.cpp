// Station: a named broadcaster that relays what it hears.
#include "tovfoundation/messaging.h"

namespace TOV {

Station::Station(const UTF8String& name) : Broadcaster(), Listener(), mName(name) {}

Station::~Station() {
  // A consistency lookup of the station's own name; the result is not used.
  // The registry lock is re-entrant, so this is safe while a registry
  // operation deletes the station.
  // A factory that throws from inside it cannot be reported from a
  // destructor, so its exception is dropped here.
  try {
    static_cast<void>(StationRegistry::FindStation(mName));
  } catch (...) {
  }
}

void Station::ListenToMessage(const Message& message) { BroadcastMessage(message); }

}  // namespace TOV
