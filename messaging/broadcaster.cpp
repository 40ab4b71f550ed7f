// Broadcaster and Listener: the two sides of a synchronous notification link.
#include <exception>
#include <iterator>

#include "tovfoundation/messaging.h"

namespace TOV {

namespace {

// Counts a broadcaster's deliveries under way, also when a listener's
// exception leaves BroadcastMessage.
class DeliveryScope {
 public:
  explicit DeliveryScope(std::uint32_t& depth) : mDepth(depth) { ++mDepth; }
  DeliveryScope(const DeliveryScope&) = delete;
  DeliveryScope& operator=(const DeliveryScope&) = delete;
  ~DeliveryScope() { --mDepth; }

 private:
  std::uint32_t& mDepth;
};

}  // namespace

// --- Broadcaster -----------------------------------------------------------

Broadcaster::Broadcaster() : mBroadcasting(true), mClientFlag(false), mDeliveryDepth(0) {}

Broadcaster::Broadcaster(const Broadcaster& other)
    : mBroadcasting(other.mBroadcasting), mClientFlag(other.mClientFlag), mDeliveryDepth(0) {}

Broadcaster::~Broadcaster() {
  for (Listener* listener : mListeners) {
    if (listener != nullptr) listener->RemoveAllOf(this);
  }
}

void Broadcaster::AddListener(Listener* listener) {
  if (listener == nullptr || HasListener(listener)) return;
  // Newest first: the most recently attached listener hears a message first.
  mListeners.push_front(listener);
  try {
    listener->AppendBroadcaster(this);
  } catch (...) {
    mListeners.pop_front();  // keep both sides consistent if the node allocation fails
    throw;
  }
}

void Broadcaster::RemoveListener(Listener* listener, bool unlinkListener) {
  for (Listener*& entry : mListeners) {
    if (entry == listener && entry != nullptr) {
      entry = nullptr;  // unlinked by the next broadcast
      break;
    }
  }
  if (unlinkListener) listener->RemoveAllOf(this);
}

bool Broadcaster::HasListener(const Listener* listener) const {
  for (const Listener* entry : mListeners) {
    if (entry == listener) return true;
  }
  return false;
}

void Broadcaster::BroadcastMessage(const Message& message) {
  if (!mBroadcasting) return;
  // Only the outermost delivery unlinks null entries: a nested delivery on
  // this broadcaster must not free the node the outer walk stands on.
  const bool sweep = mDeliveryDepth == 0;
  DeliveryScope scope(mDeliveryDepth);
  auto node = mListeners.begin();
  while (node != mListeners.end()) {
    Listener* listener = *node;
    if (listener == nullptr) {
      node = sweep ? mListeners.erase(node) : std::next(node);
      continue;
    }
    if (listener->mListening) {
      try {
        listener->ProcessMessage(message);
      } catch (const std::exception&) {
        // A listener's standard exception does not stop delivery to the
        // others; anything else propagates and ends the delivery.
      }
    }
    // Taken only now: listeners added during the call sit in front of this
    // node, and a removed one has left its (null) node in place.
    ++node;
  }
}

// --- Listener --------------------------------------------------------------

Listener::Listener() : mListening(true) {}

Listener::Listener(const Listener& other) : mListening(other.mListening) {}

Listener::~Listener() {
  // Each broadcaster nulls its entry for this listener; the list may name a
  // broadcaster twice, and each visit nulls at most one live entry.
  for (Broadcaster* broadcaster : mBroadcasters) broadcaster->RemoveListener(this, false);
}

void Listener::MessageDispatch(const Message& message) { ListenToMessage(message); }

bool Listener::HasBroadcaster(const Broadcaster* broadcaster) const {
  for (const Broadcaster* entry : mBroadcasters) {
    if (entry == broadcaster) return true;
  }
  return false;
}

void Listener::AppendBroadcaster(Broadcaster* broadcaster) { mBroadcasters.push_back(broadcaster); }

void Listener::RemoveAllOf(const Broadcaster* broadcaster) {
  mBroadcasters.remove_if([broadcaster](const Broadcaster* entry) { return entry == broadcaster; });
}

}  // namespace TOV
