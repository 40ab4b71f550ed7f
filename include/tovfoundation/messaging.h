// tovfoundation messaging: message identifiers, broadcasters and listeners,
// named stations in a process-wide registry, and station utilities by name.
//
// Delivery is synchronous: a broadcaster calls each attached listener on the
// caller's thread before BroadcastMessage returns. A station is a broadcaster
// and a listener at once and relays whatever it hears to its own listeners.
// Stations are found by name through TOV::StationRegistry, which creates them
// lazily, counts retains and disposes of them; TOV::StationUtils applies the
// broadcaster operations by name.
//
// Example:
//
//   namespace TOV {
//   class Message {  // the client defines the message class
//    public:
//     std::uint32_t id;
//   };
//   }  // namespace TOV
//
//   class Printer : public TOV::Listener {
//    public:
//     void ListenToMessage(const TOV::Message& m) override { Print(m.id); }
//   };
//
//   const std::uint32_t kProgress = TOV::HashMessageTypeNameToMessageID("Progress");
//   TOV::StationRegistry::RegisterStation("encoder", nullptr);  // default factory
//   Printer printer;
//   TOV::StationUtils::AddListener("encoder", &printer);         // creates the station
//   TOV::StationUtils::BroadcastMessage("encoder", TOV::Message{kProgress});
//   TOV::StationUtils::RemoveListener("encoder", &printer);
//   TOV::StationRegistry::DisposeStation("encoder");              // deleted at once
//
// Reporting policy: no operation here reports an error. Unknown station names
// make every registry and utility operation a silent no-op (lookups return
// null). Allocation failures throw std::bad_alloc.
//
// Thread safety: Broadcaster and Listener take no lock; attaching, detaching,
// broadcasting and destroying must be serialised by the caller for any one
// broadcaster and its listeners. The station registry is guarded by one
// process-wide re-entrant lock; delivery through a station found in the
// registry runs outside that lock, so a caller keeps a station alive across a
// delivery by retaining it.
#pragma once

#include <cstdint>
#include <list>

#include "tovfoundation/common.h"

namespace TOV {

// ---------------------------------------------------------------------------
// Messages and message identifiers
// ---------------------------------------------------------------------------

// The message handed through broadcasters, listeners and stations. Clients
// define this class; the library only names it, passes it along by constant
// reference, and never copies, stores, inspects or frees it. A message need
// only live for the duration of the call that carries it.
class Message;

// Turns a message type name into a 32-bit message identifier: starting from 0,
// each byte c of the name, read as a signed 8-bit value and sign-extended,
// gives h = h * 5 + c, modulo 2^32. No final mixing, no length term, no case
// folding: identifiers computed by separately built clients agree.
//
//   ""           => 0
//   "a"          => 97
//   "ab"         => 583           (97 * 5 + 98)
//   "\xE9"       => 4294967273    (0xFFFFFFE9: bytes 0x80-0xFF subtract)
//
// Long names wrap silently and different names may collide; nothing detects
// collisions. Pure function, safe from any thread.
// Caller contract: `name` is a non-null, NUL-terminated string (it is read
// without a check; null is undefined).
TOV_API std::uint32_t HashMessageTypeNameToMessageID(const char* name);

class Listener;

// ---------------------------------------------------------------------------
// Broadcaster
// ---------------------------------------------------------------------------

// Delivers messages to the listeners attached to it, newest first.
//
// The link is kept on both sides: the broadcaster lists its listeners and each
// listener lists its broadcasters, so whichever is destroyed first detaches
// itself from the other. Neither side owns the other.
//
// Removal only nulls a listener's entry; the next BroadcastMessage unlinks
// null entries as its walk reaches them. Consequences, all intended:
//  - a listener removed during a delivery (by itself or by another listener)
//    is not called afterwards in that delivery;
//  - a listener added during a delivery lands at the front, behind the walk,
//    and first hears the next broadcast;
//  - adding a listener that is already attached changes nothing, not even its
//    place in the delivery order.
//
// A broadcast nested inside a delivery on the same broadcaster (a listener
// broadcasting again through the broadcaster that called it) delivers to the
// live entries as usual but leaves null entries for the outermost broadcast to
// unlink, so the outer walk never steps onto a freed node.
//
// Not thread-safe; see the file comment. Copy assignment is not provided: a
// broadcaster's links are its identity.
class TOV_API Broadcaster {
 public:
  // Empty, broadcasting, client flag false.
  Broadcaster();
  // A new, empty listener list (listeners are not inherited); both flags are
  // copied from `other`.
  Broadcaster(const Broadcaster& other);
  Broadcaster& operator=(const Broadcaster&) = delete;

  // Removes this broadcaster from the broadcaster list of every listener still
  // attached, then frees its own list.
  // Caller contract: not destroyed from inside its own BroadcastMessage.
  virtual ~Broadcaster();

  // Delivers `message` to the attached listeners, front to back (the reverse
  // of the order of attachment), calling ProcessMessage on each listener whose
  // listening flag is set and skipping the others. Does nothing while the
  // broadcasting flag is clear (null entries then stay in place).
  //
  // Exceptions: one derived from std::exception thrown by a listener is
  // caught and discarded, and delivery goes on with the next listener. An
  // exception of any other type leaves BroadcastMessage and ends the delivery.
  virtual void BroadcastMessage(const Message& message);

  // Attaches `listener` at the front of the delivery order and appends this
  // broadcaster to the listener's own list. Null, or a listener already
  // attached: nothing happens.
  void AddListener(Listener* listener);

  // Nulls the first entry holding `listener` (the node is unlinked by the next
  // broadcast). With `unlinkListener` true, also removes every entry of this
  // broadcaster from the listener's list; with false the listener's side is
  // left as it is, so removing and re-adding that way lists this broadcaster
  // twice on the listener's side (harmless: both destructors cope).
  // Caller contract: with `unlinkListener` true, `listener` is not null.
  // Caller contract: after a removal with false, the listener still names
  // this broadcaster, so it must be destroyed (or unlinked with true, or
  // re-added) before this broadcaster is; otherwise the listener's destructor
  // reaches a destroyed broadcaster (undefined). Dying listeners use false.
  // A listener that is not attached: nothing happens on this side.
  void RemoveListener(Listener* listener, bool unlinkListener);

  // True if an entry holds exactly this pointer. A destroyed listener's entry
  // is null, so its dead pointer answers false. HasListener(nullptr) is true
  // while a removed entry waits for the next broadcast to unlink it.
  bool HasListener(const Listener* listener) const;

  // The broadcasting flag (set after construction).
  void StartBroadcasting() { mBroadcasting = true; }
  // Clears the broadcasting flag.
  void StopBroadcasting() { mBroadcasting = false; }
  // The broadcasting flag.
  bool IsBroadcasting() const { return mBroadcasting; }

  // A flag the library carries for its clients: false after default
  // construction, copied by the copy constructor, read by no operation here.
  void SetClientFlag(bool value) { mClientFlag = value; }
  // The client flag.
  bool GetClientFlag() const { return mClientFlag; }

 private:
  friend class Listener;

  std::list<Listener*> mListeners;  // non-owning; null = removed, not yet unlinked
  bool mBroadcasting;
  bool mClientFlag;
  std::uint32_t mDeliveryDepth;  // broadcasts of this broadcaster under way
};

// ---------------------------------------------------------------------------
// Listener
// ---------------------------------------------------------------------------

// Receives messages through ListenToMessage, which every concrete listener
// supplies. A broadcaster skips a listener whose listening flag is clear.
//
// Not thread-safe; see the file comment. Copy assignment is not provided.
class TOV_API Listener {
 public:
  // Attached to nothing, listening.
  Listener();
  // Attached to nothing (a copy hears nothing until attached); the listening
  // flag is copied.
  Listener(const Listener& other);
  Listener& operator=(const Listener&) = delete;

  // Asks each broadcaster in its list to null its entry (RemoveListener with
  // false), then frees its own list.
  // Caller contract: not destroyed while one of its broadcasters is being
  // destroyed on another thread; from inside its own ListenToMessage is fine.
  virtual ~Listener();

 protected:
  // Called by ProcessMessage. By default passes the message to
  // ListenToMessage; a subclass may override it to filter or redirect.
  virtual void MessageDispatch(const Message& message);

 public:
  // What a concrete listener does with a message.
  virtual void ListenToMessage(const Message& message) = 0;

  // Calls MessageDispatch with the message (not virtual).
  void ProcessMessage(const Message& message) { MessageDispatch(message); }

  // True if this listener's list holds `broadcaster`.
  bool HasBroadcaster(const Broadcaster* broadcaster) const;

  // The listening flag (set after construction); broadcasters skip a listener
  // whose flag is clear.
  void StartListening() { mListening = true; }
  // Clears the listening flag.
  void StopListening() { mListening = false; }
  // The listening flag.
  bool IsListening() const { return mListening; }

 private:
  friend class Broadcaster;

  void AppendBroadcaster(Broadcaster* broadcaster);
  void RemoveAllOf(const Broadcaster* broadcaster);

  std::list<Broadcaster*> mBroadcasters;  // non-owning; may hold one twice
  bool mListening;
};

// ---------------------------------------------------------------------------
// Station
// ---------------------------------------------------------------------------

// A named relay: whatever a station hears (as a listener) it broadcasts to its
// own listeners, so attaching station B to station A relays A's traffic to B's
// listeners. Stations are usually created and owned by the StationRegistry.
//
// The destructor looks the station's own name up with FindStation and ignores
// the result. This is intended, and it has a visible effect: destroying a
// station that the registry does not own (for example one on the stack) whose
// name is registered with a factory but not yet created makes the registry
// create its instance. Safe inside registry operations: the lock is re-entrant.
// An exception thrown by a factory during that lookup is dropped (it cannot
// leave a destructor).
//
// Caller contract: stations must not be linked into a cycle (a station
// attached, directly or through other stations, to itself); a broadcast would
// then relay forever.
class TOV_API Station : public Broadcaster, public Listener {
 public:
  // Both flags set; the name is copied and fixed for the station's life.
  explicit Station(const UTF8String& name);
  Station(const Station&) = delete;
  Station& operator=(const Station&) = delete;
  ~Station() override;

  // Broadcasts `message` to this station's listeners.
  void ListenToMessage(const Message& message) override;

  // The station's name, as given at construction.
  const UTF8String& GetName() const { return mName; }

 private:
  UTF8String mName;
};

// The name that means "no station": the empty string.
TOV_API extern const UTF8String kNoStation;

// ---------------------------------------------------------------------------
// Station registry
// ---------------------------------------------------------------------------

// A process-wide table from station name (compared byte-wise) to station,
// created on first use. Each entry holds an optional factory, the station
// (owned by the registry; created by the first FindStation), a signed 32-bit
// retain count starting at 0, and a dispose-pending flag.
//
// Every operation except UniqueStationID runs under one process-wide
// re-entrant lock, held for the whole operation, including a factory call in
// FindStation and the deletion of a station in ReleaseStation and
// DisposeStation: factories and station destructors may call back into the
// registry from the same thread. The lock is released also when an exception
// (from a factory, or an allocation) leaves an operation.
//
// Delivery through a returned station pointer is not guarded: the pointer
// stays valid only while the station is retained (or otherwise known not to
// be disposed on another thread).
namespace StationRegistry {

// Makes a new station for `name`; the registry takes ownership of the result.
// May return null (FindStation then answers null and tries again next time).
using StationFactory = Station* (*)(const UTF8String& name);

// Registers `name` with `factory`; no station is created yet. A null factory
// means the default one, which makes a plain TOV::Station with that name.
// A name already registered keeps its first registration; this call is then
// ignored.
TOV_API void RegisterStation(const UTF8String& name, StationFactory factory);

// Registers an existing station under its own name; the registry takes
// ownership. Null: ignored. If the name is already registered, the station is
// neither registered nor deleted: the caller keeps ownership and must delete
// it (check with FindStation(name) == station if unsure).
TOV_API void RegisterStation(Station* station);

// "Station #" followed by the decimal value of a process-wide unsigned 32-bit
// counter, incremented before formatting: the first call in a process gives
// "Station #1", the next "Station #2". The counter is atomic (it is not under
// the registry lock), is never reset (not even by Terminate) and wraps to 0
// after 4294967295.
TOV_API UTF8String UniqueStationID();

// Registers UniqueStationID() with the default factory and returns the name.
TOV_API UTF8String RegisterUniqueStation();

// The station registered as `name`, created by its factory on the first call.
// Null if the name is not registered (or the factory returned null).
TOV_API Station* FindStation(const UTF8String& name);

// Adds 1 to the retain count of `name`, whether or not its station exists.
// Unknown name: nothing.
TOV_API void RetainStation(const UTF8String& name);

// If `name` has a station, subtracts 1 from its retain count; if the count was
// exactly 1 and a dispose is pending, the entry is erased and the station
// deleted. Without a station (never looked up) nothing changes. The count is
// not clamped: releasing more often than retaining makes it negative.
TOV_API void ReleaseStation(const UTF8String& name);

// If `name` has a station: with a retain count of 0 or less, erases the entry
// and deletes the station at once; with a positive count, marks a dispose
// pending and the release that takes the count from 1 to 0 deletes it. A name
// never looked up (no station yet) is left as it is.
TOV_API void DisposeStation(const UTF8String& name);

// Empties the registry under the lock, then deletes the stations outside it,
// in name order. All names are forgotten: later lookups answer null. For the
// host to call once at shut-down; the library never calls it. Stations still
// referenced by callers become dangling.
TOV_API void Terminate();

}  // namespace StationRegistry

// ---------------------------------------------------------------------------
// Station utilities
// ---------------------------------------------------------------------------

// Broadcaster operations by station name. Each looks the station up with
// StationRegistry::FindStation (creating a registered station on demand),
// holding the registry lock only for the lookup, and applies the operation
// after the lock is released, on the caller's thread. An unknown name makes
// every function a silent no-op.
namespace StationUtils {

// The station's AddListener (a null listener is ignored there).
TOV_API void AddListener(const UTF8String& name, Listener* listener);
// Null listener: nothing. Otherwise the station's RemoveListener with
// unlinking, so neither side lists the other afterwards.
TOV_API void RemoveListener(const UTF8String& name, Listener* listener);
// The station's BroadcastMessage.
TOV_API void BroadcastMessage(const UTF8String& name, const Message& message);
// Sets the station's broadcasting flag.
TOV_API void StartBroadcasting(const UTF8String& name);
// Clears it: later broadcasts reach nobody until started again.
TOV_API void StopBroadcasting(const UTF8String& name);
// StationRegistry::RetainStation.
TOV_API void RetainStation(const UTF8String& name);
// StationRegistry::ReleaseStation.
TOV_API void ReleaseStation(const UTF8String& name);

// Moves `listener` from station `fromName` to station `toName`: removes it
// from the first (unlinking both sides) and adds it to the second. Either name
// empty (kNoStation), or a null listener: nothing. An unknown name skips only
// its own half.
// There is deliberately no test for equal names: switching a listener to the
// station it is on detaches and re-attaches it, which moves it to the front of
// that station's delivery order.
TOV_API void SwitchStation(const UTF8String& fromName, const UTF8String& toName,
                           Listener* listener);

// Posts nothing. Its only effect is StationRegistry::RetainStation(name): the
// message is ignored and no delivery happens, on any thread. This is intended;
// each call raises the retain count by one, and a caller must balance it with
// ReleaseStation if the station is ever to be disposed.
TOV_API void PostMessageToUIThread(const UTF8String& name, const Message& message);

}  // namespace StationUtils

}  // namespace TOV
