// Broadcaster operations on stations named in the registry.
#include "tovfoundation/messaging.h"

namespace TOV {

const UTF8String kNoStation;

namespace StationUtils {

// Each function below holds the registry lock only inside FindStation (or the
// registry's own retain and release); the broadcaster operation that follows
// runs unlocked on the caller's thread.

void AddListener(const UTF8String& name, Listener* listener) {
  if (Station* station = StationRegistry::FindStation(name)) station->AddListener(listener);
}

void RemoveListener(const UTF8String& name, Listener* listener) {
  if (listener == nullptr) return;
  if (Station* station = StationRegistry::FindStation(name))
    station->RemoveListener(listener, true);
}

void BroadcastMessage(const UTF8String& name, const Message& message) {
  if (Station* station = StationRegistry::FindStation(name)) station->BroadcastMessage(message);
}

void StartBroadcasting(const UTF8String& name) {
  if (Station* station = StationRegistry::FindStation(name)) station->StartBroadcasting();
}

void StopBroadcasting(const UTF8String& name) {
  if (Station* station = StationRegistry::FindStation(name)) station->StopBroadcasting();
}

void RetainStation(const UTF8String& name) { StationRegistry::RetainStation(name); }

void ReleaseStation(const UTF8String& name) { StationRegistry::ReleaseStation(name); }

void SwitchStation(const UTF8String& fromName, const UTF8String& toName, Listener* listener) {
  if (fromName == kNoStation || toName == kNoStation) return;
  if (listener == nullptr) return;
  // No equal-name shortcut: switching to the same station re-attaches the
  // listener at the front of its delivery order.
  if (Station* from = StationRegistry::FindStation(fromName)) from->RemoveListener(listener, true);
  if (Station* to = StationRegistry::FindStation(toName)) to->AddListener(listener);
}

void PostMessageToUIThread(const UTF8String& name, const Message& /*message*/) {
  // Nothing is queued or delivered: the call only retains the station.
  StationRegistry::RetainStation(name);
}

}  // namespace StationUtils

}  // namespace TOV
