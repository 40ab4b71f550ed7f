#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "messaging_support.h"
#include "tovfoundation/messaging.h"

namespace {

using tovtest::Log;
using tovtest::RecordingListener;

TEST(Broadcaster, DefaultsBroadcastingWithClientFlagClear) {
  TOV::Broadcaster broadcaster;
  EXPECT_TRUE(broadcaster.IsBroadcasting());
  EXPECT_FALSE(broadcaster.GetClientFlag());
}

TEST(Listener, DefaultsListeningAndAttachedToNothing) {
  RecordingListener listener("L", nullptr);
  TOV::Broadcaster broadcaster;
  EXPECT_TRUE(listener.IsListening());
  EXPECT_FALSE(listener.HasBroadcaster(&broadcaster));
}

TEST(Broadcaster, DeliversNewestFirst) {
  Log log;
  RecordingListener first("first", &log), second("second", &log), third("third", &log);
  TOV::Broadcaster broadcaster;
  broadcaster.AddListener(&first);
  broadcaster.AddListener(&second);
  broadcaster.AddListener(&third);
  broadcaster.BroadcastMessage(TOV::Message(7));
  EXPECT_EQ(log, (Log{"third:7", "second:7", "first:7"}));
}

TEST(Broadcaster, AddLinksBothSides) {
  RecordingListener listener("L", nullptr);
  TOV::Broadcaster broadcaster;
  broadcaster.AddListener(&listener);
  EXPECT_TRUE(broadcaster.HasListener(&listener));
  EXPECT_TRUE(listener.HasBroadcaster(&broadcaster));
}

TEST(Broadcaster, AddNullIsIgnored) {
  TOV::Broadcaster broadcaster;
  broadcaster.AddListener(nullptr);
  EXPECT_FALSE(broadcaster.HasListener(nullptr));
  broadcaster.BroadcastMessage(TOV::Message(1));  // nothing to call, nothing to crash on
}

TEST(Broadcaster, AddingTwiceChangesNothingNotEvenOrder) {
  Log log;
  RecordingListener a("a", &log), b("b", &log);
  TOV::Broadcaster broadcaster;
  broadcaster.AddListener(&a);
  broadcaster.AddListener(&b);
  broadcaster.AddListener(&a);  // already attached: stays behind b
  broadcaster.BroadcastMessage(TOV::Message(1));
  EXPECT_EQ(log, (Log{"b:1", "a:1"}));
  EXPECT_EQ(a.Heard(), 1);
}

TEST(Broadcaster, StoppedBroadcasterCallsNobody) {
  Log log;
  RecordingListener a("a", &log);
  TOV::Broadcaster broadcaster;
  broadcaster.AddListener(&a);
  broadcaster.StopBroadcasting();
  EXPECT_FALSE(broadcaster.IsBroadcasting());
  broadcaster.BroadcastMessage(TOV::Message(1));
  EXPECT_TRUE(log.empty());
  broadcaster.StartBroadcasting();
  broadcaster.BroadcastMessage(TOV::Message(2));
  EXPECT_EQ(log, (Log{"a:2"}));
}

// A removed entry stays as a null node until a broadcast walks over it;
// HasListener(nullptr) shows whether one is waiting.
TEST(Broadcaster, StoppedBroadcastLeavesNullEntriesForTheNextBroadcast) {
  Log log;
  RecordingListener a("a", &log), b("b", &log);
  TOV::Broadcaster broadcaster;
  broadcaster.AddListener(&a);
  broadcaster.AddListener(&b);
  EXPECT_FALSE(broadcaster.HasListener(nullptr));
  broadcaster.RemoveListener(&b, true);
  EXPECT_TRUE(broadcaster.HasListener(nullptr));
  broadcaster.StopBroadcasting();
  broadcaster.BroadcastMessage(TOV::Message(1));
  EXPECT_TRUE(log.empty());
  EXPECT_TRUE(broadcaster.HasListener(nullptr));  // still waiting
  EXPECT_FALSE(broadcaster.HasListener(&b));
  broadcaster.StartBroadcasting();
  broadcaster.BroadcastMessage(TOV::Message(2));
  EXPECT_EQ(log, (Log{"a:2"}));
  EXPECT_FALSE(broadcaster.HasListener(nullptr));  // swept
}

TEST(Broadcaster, NotListeningListenerIsSkipped) {
  Log log;
  RecordingListener a("a", &log), b("b", &log);
  TOV::Broadcaster broadcaster;
  broadcaster.AddListener(&a);
  broadcaster.AddListener(&b);
  b.StopListening();
  broadcaster.BroadcastMessage(TOV::Message(3));
  EXPECT_EQ(log, (Log{"a:3"}));
  b.StartListening();
  broadcaster.BroadcastMessage(TOV::Message(4));
  EXPECT_EQ(log, (Log{"a:3", "b:4", "a:4"}));
}

TEST(Broadcaster, RemoveWithUnlinkDetachesBothSides) {
  RecordingListener listener("L", nullptr);
  TOV::Broadcaster broadcaster;
  broadcaster.AddListener(&listener);
  broadcaster.RemoveListener(&listener, true);
  EXPECT_FALSE(broadcaster.HasListener(&listener));
  EXPECT_FALSE(listener.HasBroadcaster(&broadcaster));
  broadcaster.BroadcastMessage(TOV::Message(1));
  EXPECT_EQ(listener.Heard(), 0);
}

TEST(Broadcaster, RemoveWithoutUnlinkLeavesListenerSide) {
  // The broadcaster must outlive a listener removed this way.
  TOV::Broadcaster broadcaster;
  RecordingListener listener("L", nullptr);
  broadcaster.AddListener(&listener);
  broadcaster.RemoveListener(&listener, false);
  EXPECT_FALSE(broadcaster.HasListener(&listener));
  EXPECT_TRUE(listener.HasBroadcaster(&broadcaster));
}

TEST(Broadcaster, RemoveUnattachedListenerChangesNothing) {
  Log log;
  RecordingListener a("a", &log), stranger("stranger", &log);
  TOV::Broadcaster broadcaster;
  broadcaster.AddListener(&a);
  broadcaster.RemoveListener(&stranger, true);
  broadcaster.RemoveListener(&stranger, false);
  EXPECT_TRUE(broadcaster.HasListener(&a));
  broadcaster.BroadcastMessage(TOV::Message(1));
  EXPECT_EQ(log, (Log{"a:1"}));
}

TEST(Broadcaster, ReAddAfterRemoveWithoutUnlinkListsBroadcasterTwice) {
  Log log;
  TOV::Broadcaster broadcaster;
  {
    RecordingListener listener("L", &log);
    broadcaster.AddListener(&listener);
    broadcaster.RemoveListener(&listener, false);
    broadcaster.AddListener(&listener);  // a fresh entry at the front
    EXPECT_TRUE(broadcaster.HasListener(&listener));
    broadcaster.BroadcastMessage(TOV::Message(5));
    EXPECT_EQ(log, (Log{"L:5"}));
    // One unlinking removal takes every copy off the listener's side.
    broadcaster.RemoveListener(&listener, true);
    EXPECT_FALSE(listener.HasBroadcaster(&broadcaster));
    broadcaster.AddListener(&listener);
    broadcaster.RemoveListener(&listener, false);
    broadcaster.AddListener(&listener);
    // The listener now lists the broadcaster twice; its destructor copes.
  }
  EXPECT_TRUE(broadcaster.HasListener(nullptr));  // the dead listener's entries
  broadcaster.BroadcastMessage(TOV::Message(6));
  EXPECT_EQ(log, (Log{"L:5"}));
  EXPECT_FALSE(broadcaster.HasListener(nullptr));
}

TEST(Broadcaster, ListenerTwiceListedSurvivesBroadcasterDestruction) {
  RecordingListener listener("L", nullptr);
  {
    TOV::Broadcaster broadcaster;
    broadcaster.AddListener(&listener);
    broadcaster.RemoveListener(&listener, false);
    broadcaster.AddListener(&listener);
  }
  // Destroyed broadcaster removed every copy of itself from the listener.
  TOV::Broadcaster other;
  EXPECT_FALSE(listener.HasBroadcaster(&other));
  other.AddListener(&listener);
  other.BroadcastMessage(TOV::Message(1));
  EXPECT_EQ(listener.Heard(), 1);
}

TEST(Broadcaster, ListenerRemovingItselfDuringDeliveryIsNotCalledAgain) {
  Log log;
  TOV::Broadcaster broadcaster;
  RecordingListener a("a", &log), b("b", &log), c("c", &log);
  broadcaster.AddListener(&a);
  broadcaster.AddListener(&b);
  broadcaster.AddListener(&c);
  b.SetAction([&](const TOV::Message&) { broadcaster.RemoveListener(&b, true); });
  broadcaster.BroadcastMessage(TOV::Message(1));
  broadcaster.BroadcastMessage(TOV::Message(2));
  EXPECT_EQ(log, (Log{"c:1", "b:1", "a:1", "c:2", "a:2"}));
  EXPECT_FALSE(b.HasBroadcaster(&broadcaster));
}

TEST(Broadcaster, ListenerRemovedByAnotherDuringDeliveryIsNotCalled) {
  Log log;
  TOV::Broadcaster broadcaster;
  RecordingListener a("a", &log), b("b", &log), c("c", &log);
  broadcaster.AddListener(&a);
  broadcaster.AddListener(&b);
  broadcaster.AddListener(&c);
  c.SetAction([&](const TOV::Message&) { broadcaster.RemoveListener(&a, true); });
  broadcaster.BroadcastMessage(TOV::Message(1));
  EXPECT_EQ(log, (Log{"c:1", "b:1"}));
}

TEST(Broadcaster, ListenerDestroyedByAnotherDuringDeliveryIsNotCalled) {
  Log log;
  TOV::Broadcaster broadcaster;
  auto a = std::make_unique<RecordingListener>("a", &log);
  RecordingListener b("b", &log);
  broadcaster.AddListener(a.get());
  broadcaster.AddListener(&b);
  b.SetAction([&](const TOV::Message&) { a.reset(); });
  broadcaster.BroadcastMessage(TOV::Message(1));
  EXPECT_EQ(log, (Log{"b:1"}));
}

TEST(Broadcaster, ListenerAddedDuringDeliveryFirstHearsNextBroadcast) {
  Log log;
  TOV::Broadcaster broadcaster;
  RecordingListener a("a", &log), b("b", &log), late("late", &log);
  broadcaster.AddListener(&a);
  broadcaster.AddListener(&b);
  a.SetAction([&](const TOV::Message&) { broadcaster.AddListener(&late); });
  broadcaster.BroadcastMessage(TOV::Message(1));
  EXPECT_EQ(log, (Log{"b:1", "a:1"}));
  broadcaster.BroadcastMessage(TOV::Message(2));
  EXPECT_EQ(log, (Log{"b:1", "a:1", "late:2", "b:2", "a:2"}));
}

TEST(Broadcaster, StandardExceptionIsSwallowedAndDeliveryGoesOn) {
  Log log;
  TOV::Broadcaster broadcaster;
  RecordingListener a("a", &log), thrower("thrower", &log), c("c", &log);
  broadcaster.AddListener(&a);
  broadcaster.AddListener(&thrower);
  broadcaster.AddListener(&c);
  thrower.SetAction([](const TOV::Message&) { throw std::runtime_error("listener failed"); });
  EXPECT_NO_THROW(broadcaster.BroadcastMessage(TOV::Message(1)));
  EXPECT_EQ(log, (Log{"c:1", "thrower:1", "a:1"}));
}

TEST(Broadcaster, LibraryExceptionCountsAsStandard) {
  Log log;
  TOV::Broadcaster broadcaster;
  RecordingListener a("a", &log), thrower("thrower", &log);
  broadcaster.AddListener(&a);
  broadcaster.AddListener(&thrower);
  thrower.SetAction([](const TOV::Message&) { throw TOV::TOVVRException(TOV::kErrNotFound); });
  EXPECT_NO_THROW(broadcaster.BroadcastMessage(TOV::Message(1)));
  EXPECT_EQ(log, (Log{"thrower:1", "a:1"}));
}

TEST(Broadcaster, NonStandardExceptionEndsDeliveryAndLeaves) {
  Log log;
  TOV::Broadcaster broadcaster;
  RecordingListener a("a", &log), thrower("thrower", &log), c("c", &log);
  broadcaster.AddListener(&a);
  broadcaster.AddListener(&thrower);
  broadcaster.AddListener(&c);
  thrower.SetAction([](const TOV::Message&) { throw 42; });
  try {
    broadcaster.BroadcastMessage(TOV::Message(1));
    FAIL() << "the integer should have left BroadcastMessage";
  } catch (int value) {
    EXPECT_EQ(value, 42);
  }
  EXPECT_EQ(log, (Log{"c:1", "thrower:1"}));
  // The broadcaster is still usable afterwards.
  thrower.SetAction(nullptr);
  broadcaster.BroadcastMessage(TOV::Message(2));
  EXPECT_EQ(log, (Log{"c:1", "thrower:1", "c:2", "thrower:2", "a:2"}));
}

TEST(Broadcaster, DestroyedListenerLeavesNullEntrySweptByNextBroadcast) {
  Log log;
  TOV::Broadcaster broadcaster;
  RecordingListener a("a", &log);
  auto doomed = std::make_unique<RecordingListener>("doomed", &log);
  const TOV::Listener* deadPointer = doomed.get();
  broadcaster.AddListener(&a);
  broadcaster.AddListener(doomed.get());
  doomed.reset();
  EXPECT_FALSE(broadcaster.HasListener(deadPointer));
  EXPECT_TRUE(broadcaster.HasListener(nullptr));
  broadcaster.BroadcastMessage(TOV::Message(1));
  EXPECT_EQ(log, (Log{"a:1"}));
  EXPECT_FALSE(broadcaster.HasListener(deadPointer));
  EXPECT_FALSE(broadcaster.HasListener(nullptr));
}

TEST(Broadcaster, DestroyedBroadcasterDetachesFromListeners) {
  RecordingListener a("a", nullptr), b("b", nullptr);
  const TOV::Broadcaster* deadPointer = nullptr;
  {
    TOV::Broadcaster broadcaster;
    deadPointer = &broadcaster;
    broadcaster.AddListener(&a);
    broadcaster.AddListener(&b);
    EXPECT_TRUE(a.HasBroadcaster(deadPointer));
  }
  EXPECT_FALSE(a.HasBroadcaster(deadPointer));
  EXPECT_FALSE(b.HasBroadcaster(deadPointer));
}

TEST(Broadcaster, ListenerOnSeveralBroadcastersDetachesFromAll) {
  Log log;
  TOV::Broadcaster one, two;
  RecordingListener survivor("survivor", &log);
  one.AddListener(&survivor);
  two.AddListener(&survivor);
  {
    RecordingListener l("l", &log);
    one.AddListener(&l);
    two.AddListener(&l);
  }
  one.BroadcastMessage(TOV::Message(1));
  two.BroadcastMessage(TOV::Message(2));
  EXPECT_EQ(log, (Log{"survivor:1", "survivor:2"}));
}

TEST(Broadcaster, CopyHasNoListenersAndCopiesFlags) {
  Log log;
  TOV::Broadcaster original;
  RecordingListener a("a", &log);
  original.AddListener(&a);
  original.StopBroadcasting();
  original.SetClientFlag(true);
  TOV::Broadcaster copy(original);
  EXPECT_FALSE(copy.HasListener(&a));
  EXPECT_FALSE(copy.IsBroadcasting());
  EXPECT_TRUE(copy.GetClientFlag());
  EXPECT_FALSE(a.HasBroadcaster(&copy));
  copy.StartBroadcasting();
  copy.BroadcastMessage(TOV::Message(1));
  EXPECT_TRUE(log.empty());
}

TEST(Listener, CopyIsAttachedToNothingAndCopiesListeningFlag) {
  Log log;
  TOV::Broadcaster broadcaster;
  RecordingListener original("original", &log);
  broadcaster.AddListener(&original);
  original.StopListening();
  RecordingListener copy(original);
  EXPECT_FALSE(copy.HasBroadcaster(&broadcaster));
  EXPECT_FALSE(broadcaster.HasListener(&copy));
  EXPECT_FALSE(copy.IsListening());
  copy.StartListening();
  original.StartListening();
  broadcaster.BroadcastMessage(TOV::Message(1));
  EXPECT_EQ(original.Heard(), 1);
  EXPECT_EQ(copy.Heard(), 0);
  broadcaster.AddListener(&copy);
  broadcaster.BroadcastMessage(TOV::Message(2));
  EXPECT_EQ(copy.Heard(), 1);
}

// MessageDispatch may filter: this listener only passes even identifiers on.
class EvenOnlyListener : public tovtest::RecordingListener {
 public:
  using RecordingListener::RecordingListener;

 protected:
  void MessageDispatch(const TOV::Message& message) override {
    if (message.id % 2 == 0) RecordingListener::MessageDispatch(message);
  }
};

TEST(Listener, MessageDispatchOverrideFilters) {
  Log log;
  TOV::Broadcaster broadcaster;
  EvenOnlyListener even("even", &log);
  broadcaster.AddListener(&even);
  for (std::uint32_t id = 1; id <= 4; ++id) broadcaster.BroadcastMessage(TOV::Message(id));
  EXPECT_EQ(log, (Log{"even:2", "even:4"}));
  even.ProcessMessage(TOV::Message(6));
  even.ProcessMessage(TOV::Message(7));
  EXPECT_EQ(log, (Log{"even:2", "even:4", "even:6"}));
}

TEST(Listener, ProcessMessageCallsListenToMessage) {
  Log log;
  RecordingListener l("l", &log);
  l.ProcessMessage(TOV::Message(9));
  EXPECT_EQ(log, (Log{"l:9"}));
}

// A listener that broadcasts again through the broadcaster that called it,
// after another listener behind it removed itself: the nested delivery skips
// the null entry and the outer walk still finishes on valid nodes.
TEST(Broadcaster, NestedBroadcastWithRemovalKeepsOuterWalkValid) {
  Log log;
  TOV::Broadcaster broadcaster;
  RecordingListener a("a", &log), b("b", &log), c("c", &log);
  broadcaster.AddListener(&a);
  broadcaster.AddListener(&b);
  broadcaster.AddListener(&c);
  b.SetAction([&](const TOV::Message& m) {
    if (m.id == 1) {
      broadcaster.RemoveListener(&b, true);
      broadcaster.BroadcastMessage(TOV::Message(2));
    }
  });
  broadcaster.BroadcastMessage(TOV::Message(1));
  EXPECT_EQ(log, (Log{"c:1", "b:1", "c:2", "a:2", "a:1"}));
  broadcaster.BroadcastMessage(TOV::Message(3));
  EXPECT_EQ(log.back(), "a:3");
  EXPECT_EQ(log.size(), 7u);
}

TEST(Listener, ListenerDestroyingItselfDuringDeliveryDoesNotStopOthers) {
  Log log;
  TOV::Broadcaster broadcaster;
  RecordingListener a("a", &log);
  auto* self = new RecordingListener("self", &log);
  broadcaster.AddListener(&a);
  broadcaster.AddListener(self);
  self->SetAction([self](const TOV::Message&) { delete self; });
  broadcaster.BroadcastMessage(TOV::Message(1));
  broadcaster.BroadcastMessage(TOV::Message(2));
  EXPECT_EQ(log, (Log{"self:1", "a:1", "a:2"}));
}

}  // namespace
