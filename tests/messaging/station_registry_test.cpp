#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>

#include "messaging/station_registry_internal.h"
#include "messaging_support.h"
#include "tovfoundation/messaging.h"

namespace {

using tovimpl::messaging::LookUpStationEntry;
using tovimpl::messaging::RegistryLockDepth;
using tovtest::Log;
using tovtest::RecordingListener;

namespace Registry = TOV::StationRegistry;

// Where the stations below record their destruction and what they saw then.
Log* gDestroyed = nullptr;
std::int32_t gDepthInDestructor = -1;
int gFactoryCalls = 0;
std::int32_t gDepthInFactory = -1;

class TrackedStation : public TOV::Station {
 public:
  explicit TrackedStation(const UTF8String& name) : TOV::Station(name) {}
  ~TrackedStation() override {
    gDepthInDestructor = RegistryLockDepth();
    if (gDestroyed != nullptr) gDestroyed->push_back(GetName());
  }
};

TOV::Station* TrackedFactory(const UTF8String& name) {
  ++gFactoryCalls;
  gDepthInFactory = RegistryLockDepth();
  return new TrackedStation(name);
}

TOV::Station* OtherFactory(const UTF8String& name) {
  ++gFactoryCalls;
  return new TOV::Station(name + "-other");
}

TOV::Station* NullFactory(const UTF8String&) {
  ++gFactoryCalls;
  return nullptr;
}

TOV::Station* ThrowingFactory(const UTF8String&) {
  ++gFactoryCalls;
  throw std::runtime_error("no station today");
}

// Every test starts and ends with an empty registry.
class StationRegistryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Registry::Terminate();
    gDestroyed = &mDestroyed;
    gDepthInDestructor = -1;
    gFactoryCalls = 0;
    gDepthInFactory = -1;
  }
  void TearDown() override {
    Registry::Terminate();
    gDestroyed = nullptr;
  }

  Log mDestroyed;
};

// --- Station ------------------------------------------------------------------

TEST_F(StationRegistryTest, StationKeepsItsNameAndBothFlags) {
  TOV::Station station("encoder");
  EXPECT_EQ(station.GetName(), "encoder");
  EXPECT_TRUE(station.IsBroadcasting());
  EXPECT_TRUE(station.IsListening());
}

TEST_F(StationRegistryTest, StationRebroadcastsWhatItHears) {
  Log log;
  TOV::Station station("relay");
  RecordingListener a("a", &log), b("b", &log);
  station.AddListener(&a);
  station.AddListener(&b);
  station.ProcessMessage(TOV::Message(4));
  EXPECT_EQ(log, (Log{"b:4", "a:4"}));
}

TEST_F(StationRegistryTest, StationAttachedToStationRelaysTraffic) {
  Log log;
  TOV::Station upstream("upstream"), downstream("downstream");
  RecordingListener near("near", &log), far("far", &log);
  upstream.AddListener(&near);
  upstream.AddListener(&downstream);
  downstream.AddListener(&far);
  upstream.BroadcastMessage(TOV::Message(1));
  EXPECT_EQ(log, (Log{"far:1", "near:1"}));
}

TEST_F(StationRegistryTest, StoppedStationDoesNotRelay) {
  Log log;
  TOV::Station upstream("upstream"), downstream("downstream");
  RecordingListener far("far", &log);
  upstream.AddListener(&downstream);
  downstream.AddListener(&far);
  downstream.StopBroadcasting();
  upstream.BroadcastMessage(TOV::Message(1));
  EXPECT_TRUE(log.empty());
}

// Intended: the destructor's lookup of its own name creates the registered
// station if nobody has looked it up yet.
TEST_F(StationRegistryTest, StationDestructorLooksUpItsOwnName) {
  Registry::RegisterStation("lookup", &TrackedFactory);
  EXPECT_FALSE(LookUpStationEntry("lookup").hasInstance);
  { TOV::Station standalone("lookup"); }
  EXPECT_EQ(gFactoryCalls, 1);
  EXPECT_TRUE(LookUpStationEntry("lookup").hasInstance);
}

// --- UniqueStationID ------------------------------------------------------------

TEST(StationRegistryUniqueID, FirstCallInProcessIsStationNumberOne) {
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";  // a freshly started process
  EXPECT_EXIT(
      {
        const bool ok = Registry::UniqueStationID() == "Station #1" &&
                        Registry::UniqueStationID() == "Station #2";
        std::exit(ok ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST_F(StationRegistryTest, UniqueStationIDCountsUpByOne) {
  const UTF8String first = Registry::UniqueStationID();
  const UTF8String second = Registry::UniqueStationID();
  ASSERT_EQ(first.rfind("Station #", 0), 0u);
  ASSERT_EQ(second.rfind("Station #", 0), 0u);
  const unsigned long a = std::stoul(first.substr(9));
  const unsigned long b = std::stoul(second.substr(9));
  EXPECT_EQ(b, a + 1);
  EXPECT_FALSE(LookUpStationEntry(first).registered);  // only a name, nothing registered
}

TEST_F(StationRegistryTest, UniqueStationIDIsNotResetByTerminate) {
  const unsigned long before = std::stoul(Registry::UniqueStationID().substr(9));
  Registry::Terminate();
  EXPECT_EQ(std::stoul(Registry::UniqueStationID().substr(9)), before + 1);
}

TEST_F(StationRegistryTest, RegisterUniqueStationRegistersWithDefaultFactory) {
  const UTF8String name = Registry::RegisterUniqueStation();
  ASSERT_EQ(name.rfind("Station #", 0), 0u);
  const auto state = LookUpStationEntry(name);
  EXPECT_TRUE(state.registered);
  EXPECT_FALSE(state.hasInstance);
  TOV::Station* station = Registry::FindStation(name);
  ASSERT_NE(station, nullptr);
  EXPECT_EQ(station->GetName(), name);
  EXPECT_NE(Registry::RegisterUniqueStation(), name);
}

// --- Registration and lookup -------------------------------------------------

TEST_F(StationRegistryTest, RegisteringCreatesNothingUntilFound) {
  Registry::RegisterStation("lazy", &TrackedFactory);
  EXPECT_EQ(gFactoryCalls, 0);
  const auto state = LookUpStationEntry("lazy");
  EXPECT_TRUE(state.registered);
  EXPECT_FALSE(state.hasInstance);
  EXPECT_EQ(state.retainCount, 0);
  EXPECT_FALSE(state.disposePending);
}

TEST_F(StationRegistryTest, FindStationCreatesOnceAndReturnsSamePointer) {
  Registry::RegisterStation("lazy", &TrackedFactory);
  TOV::Station* first = Registry::FindStation("lazy");
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->GetName(), "lazy");
  EXPECT_EQ(Registry::FindStation("lazy"), first);
  EXPECT_EQ(Registry::FindStation("lazy"), first);
  EXPECT_EQ(gFactoryCalls, 1);
}

TEST_F(StationRegistryTest, FactoryRunsUnderTheLock) {
  Registry::RegisterStation("locked", &TrackedFactory);
  EXPECT_EQ(RegistryLockDepth(), 0);
  ASSERT_NE(Registry::FindStation("locked"), nullptr);
  EXPECT_EQ(gDepthInFactory, 1);
  EXPECT_EQ(RegistryLockDepth(), 0);
}

TEST_F(StationRegistryTest, NullFactoryMeansDefaultStation) {
  Registry::RegisterStation("plain", nullptr);
  TOV::Station* station = Registry::FindStation("plain");
  ASSERT_NE(station, nullptr);
  EXPECT_EQ(station->GetName(), "plain");
}

TEST_F(StationRegistryTest, FactoryGetsTheRegisteredName) {
  Registry::RegisterStation("named", &OtherFactory);
  TOV::Station* station = Registry::FindStation("named");
  ASSERT_NE(station, nullptr);
  EXPECT_EQ(station->GetName(), "named-other");
}

TEST_F(StationRegistryTest, FindUnknownNameIsNull) {
  EXPECT_EQ(Registry::FindStation("nobody"), nullptr);
  EXPECT_EQ(Registry::FindStation(""), nullptr);
  EXPECT_FALSE(LookUpStationEntry("nobody").registered);
}

TEST_F(StationRegistryTest, FactoryReturningNullIsAskedAgainNextTime) {
  Registry::RegisterStation("empty", &NullFactory);
  EXPECT_EQ(Registry::FindStation("empty"), nullptr);
  EXPECT_EQ(Registry::FindStation("empty"), nullptr);
  EXPECT_EQ(gFactoryCalls, 2);
  EXPECT_TRUE(LookUpStationEntry("empty").registered);
}

TEST_F(StationRegistryTest, ThrowingFactoryLeavesTheLockReleased) {
  Registry::RegisterStation("broken", &ThrowingFactory);
  EXPECT_THROW(Registry::FindStation("broken"), std::runtime_error);
  EXPECT_EQ(RegistryLockDepth(), 0);
  EXPECT_FALSE(LookUpStationEntry("broken").hasInstance);
  // Another thread can take the lock: it was really released.
  TOV::Station* found = nullptr;
  std::thread other([&] {
    Registry::RegisterStation("fine", nullptr);
    found = Registry::FindStation("fine");
  });
  other.join();
  EXPECT_NE(found, nullptr);
}

TEST_F(StationRegistryTest, RegisteringSameNameTwiceKeepsFirst) {
  Registry::RegisterStation("twice", &TrackedFactory);
  Registry::RegisterStation("twice", &OtherFactory);
  TOV::Station* station = Registry::FindStation("twice");
  ASSERT_NE(station, nullptr);
  EXPECT_EQ(station->GetName(), "twice");  // TrackedFactory's, not "twice-other"
  EXPECT_EQ(gFactoryCalls, 1);
}

TEST_F(StationRegistryTest, RegisterInstanceHandsOwnershipToRegistry) {
  auto* station = new TrackedStation("given");
  Registry::RegisterStation(station);
  EXPECT_TRUE(LookUpStationEntry("given").hasInstance);
  EXPECT_EQ(Registry::FindStation("given"), station);
  Registry::DisposeStation("given");
  EXPECT_EQ(mDestroyed, (Log{"given"}));
  EXPECT_EQ(Registry::FindStation("given"), nullptr);
}

TEST_F(StationRegistryTest, RegisterNullInstanceIsIgnored) {
  Registry::RegisterStation(static_cast<TOV::Station*>(nullptr));
  EXPECT_FALSE(LookUpStationEntry("").registered);
}

TEST_F(StationRegistryTest, DuplicateInstanceIsNeitherRegisteredNorDeleted) {
  Registry::RegisterStation("taken", &TrackedFactory);
  auto* late = new TrackedStation("taken");
  Registry::RegisterStation(late);
  EXPECT_TRUE(mDestroyed.empty());                        // not deleted
  EXPECT_FALSE(LookUpStationEntry("taken").hasInstance);  // not registered either
  TOV::Station* registered = Registry::FindStation("taken");
  EXPECT_NE(registered, late);
  delete late;  // the caller still owns it
  EXPECT_EQ(mDestroyed, (Log{"taken"}));
}

TEST_F(StationRegistryTest, InstanceEntryAfterDisposalIsGone) {
  Registry::RegisterStation(new TOV::Station("given"));
  Registry::DisposeStation("given");
  EXPECT_FALSE(LookUpStationEntry("given").registered);
}

// --- Retain, release, dispose ---------------------------------------------------

TEST_F(StationRegistryTest, RetainCountsEvenWithoutInstance) {
  Registry::RegisterStation("counted", &TrackedFactory);
  Registry::RetainStation("counted");
  Registry::RetainStation("counted");
  EXPECT_EQ(LookUpStationEntry("counted").retainCount, 2);
  EXPECT_EQ(gFactoryCalls, 0);
}

TEST_F(StationRegistryTest, RetainTwiceDisposeReleaseTwiceDeletesOnLastRelease) {
  Registry::RegisterStation("shared", &TrackedFactory);
  TOV::Station* station = Registry::FindStation("shared");
  ASSERT_NE(station, nullptr);
  Registry::RetainStation("shared");
  Registry::RetainStation("shared");
  Registry::DisposeStation("shared");
  auto state = LookUpStationEntry("shared");
  EXPECT_TRUE(state.disposePending);
  EXPECT_EQ(state.retainCount, 2);
  EXPECT_TRUE(mDestroyed.empty());

  Registry::ReleaseStation("shared");
  EXPECT_TRUE(mDestroyed.empty());  // still alive
  EXPECT_EQ(Registry::FindStation("shared"), station);
  EXPECT_EQ(LookUpStationEntry("shared").retainCount, 1);

  Registry::ReleaseStation("shared");
  EXPECT_EQ(mDestroyed, (Log{"shared"}));
  EXPECT_FALSE(LookUpStationEntry("shared").registered);
  EXPECT_EQ(Registry::FindStation("shared"), nullptr);
}

TEST_F(StationRegistryTest, DisposeWithZeroCountDeletesAtOnce) {
  Registry::RegisterStation("brief", &TrackedFactory);
  ASSERT_NE(Registry::FindStation("brief"), nullptr);
  Registry::DisposeStation("brief");
  EXPECT_EQ(mDestroyed, (Log{"brief"}));
  EXPECT_FALSE(LookUpStationEntry("brief").registered);
}

TEST_F(StationRegistryTest, DisposeWithNegativeCountDeletesAtOnce) {
  Registry::RegisterStation("overreleased", &TrackedFactory);
  ASSERT_NE(Registry::FindStation("overreleased"), nullptr);
  Registry::ReleaseStation("overreleased");
  EXPECT_EQ(LookUpStationEntry("overreleased").retainCount, -1);
  Registry::DisposeStation("overreleased");
  EXPECT_EQ(mDestroyed, (Log{"overreleased"}));
}

TEST_F(StationRegistryTest, DisposeOfNeverLookedUpNameDoesNothing) {
  Registry::RegisterStation("dormant", &TrackedFactory);
  Registry::DisposeStation("dormant");
  const auto state = LookUpStationEntry("dormant");
  EXPECT_TRUE(state.registered);
  EXPECT_FALSE(state.hasInstance);
  EXPECT_FALSE(state.disposePending);
  EXPECT_NE(Registry::FindStation("dormant"), nullptr);
}

TEST_F(StationRegistryTest, StationDeletedByDisposeRunsUnderTheLockAndFindsItselfGone) {
  Registry::RegisterStation("inside", &TrackedFactory);
  ASSERT_NE(Registry::FindStation("inside"), nullptr);
  Registry::DisposeStation("inside");
  EXPECT_EQ(gDepthInDestructor, 1);
  EXPECT_EQ(RegistryLockDepth(), 0);
  EXPECT_EQ(gFactoryCalls, 1);  // the destructor's lookup did not re-create it
}

TEST_F(StationRegistryTest, ReleaseWithoutInstanceChangesNothing) {
  Registry::RegisterStation("dormant", &TrackedFactory);
  Registry::RetainStation("dormant");
  Registry::ReleaseStation("dormant");
  Registry::ReleaseStation("dormant");
  EXPECT_EQ(LookUpStationEntry("dormant").retainCount, 1);
}

TEST_F(StationRegistryTest, ReleaseMayGoNegative) {
  Registry::RegisterStation("negative", nullptr);
  ASSERT_NE(Registry::FindStation("negative"), nullptr);
  for (int i = 0; i < 3; ++i) Registry::ReleaseStation("negative");
  EXPECT_EQ(LookUpStationEntry("negative").retainCount, -3);
  EXPECT_TRUE(LookUpStationEntry("negative").hasInstance);
}

TEST_F(StationRegistryTest, ReleaseToZeroWithoutPendingDisposeKeepsStation) {
  Registry::RegisterStation("kept", &TrackedFactory);
  ASSERT_NE(Registry::FindStation("kept"), nullptr);
  Registry::RetainStation("kept");
  Registry::ReleaseStation("kept");
  EXPECT_TRUE(mDestroyed.empty());
  EXPECT_EQ(LookUpStationEntry("kept").retainCount, 0);
  Registry::DisposeStation("kept");
  EXPECT_EQ(mDestroyed, (Log{"kept"}));
}

// The pending dispose fires only on the release that finds exactly 1.
TEST_F(StationRegistryTest, PendingDisposeFiresOnlyWhenCountWasExactlyOne) {
  Registry::RegisterStation("exact", &TrackedFactory);
  ASSERT_NE(Registry::FindStation("exact"), nullptr);
  Registry::RetainStation("exact");
  Registry::DisposeStation("exact");  // pending
  Registry::ReleaseStation("exact");  // 1 -> 0: deleted
  EXPECT_EQ(mDestroyed, (Log{"exact"}));

  Registry::RegisterStation("missed", &TrackedFactory);
  ASSERT_NE(Registry::FindStation("missed"), nullptr);
  Registry::RetainStation("missed");
  Registry::DisposeStation("missed");  // pending with count 1
  Registry::RetainStation("missed");   // 2
  Registry::ReleaseStation("missed");  // 2 -> 1: alive
  EXPECT_EQ(mDestroyed, (Log{"exact"}));
  Registry::ReleaseStation("missed");  // 1 -> 0: deleted
  EXPECT_EQ(mDestroyed, (Log{"exact", "missed"}));
}

TEST_F(StationRegistryTest, UnknownNamesAreSilentNoOps) {
  Registry::RetainStation("ghost");
  Registry::ReleaseStation("ghost");
  Registry::DisposeStation("ghost");
  EXPECT_FALSE(LookUpStationEntry("ghost").registered);
  EXPECT_EQ(Registry::FindStation("ghost"), nullptr);
}

TEST_F(StationRegistryTest, DisposeAlsoDeletesStationsAwaitingDeletion) {
  tovimpl::messaging::DeferStationDeletion(new TrackedStation("waiting-1"));
  tovimpl::messaging::DeferStationDeletion(new TrackedStation("waiting-2"));
  tovimpl::messaging::DeferStationDeletion(nullptr);
  EXPECT_EQ(tovimpl::messaging::StationsAwaitingDeletion(), 2u);
  Registry::RegisterStation("trigger", &TrackedFactory);
  Registry::DisposeStation("trigger");  // no instance: nothing happens
  EXPECT_EQ(tovimpl::messaging::StationsAwaitingDeletion(), 2u);
  ASSERT_NE(Registry::FindStation("trigger"), nullptr);
  Registry::DisposeStation("trigger");
  EXPECT_EQ(mDestroyed, (Log{"trigger", "waiting-1", "waiting-2"}));
  EXPECT_EQ(tovimpl::messaging::StationsAwaitingDeletion(), 0u);
}

// --- Terminate ------------------------------------------------------------------

TEST_F(StationRegistryTest, TerminateForgetsEveryName) {
  Registry::RegisterStation("one", nullptr);
  Registry::RegisterStation("two", nullptr);
  ASSERT_NE(Registry::FindStation("one"), nullptr);
  Registry::Terminate();
  EXPECT_EQ(Registry::FindStation("one"), nullptr);
  EXPECT_EQ(Registry::FindStation("two"), nullptr);
  EXPECT_FALSE(LookUpStationEntry("two").registered);
}

TEST_F(StationRegistryTest, TerminateDeletesInByteWiseNameOrderOutsideTheLock) {
  const char* names[] = {"b", "\xC3\xA9", "ab", "B", "a", "ba"};
  for (const char* name : names) {
    Registry::RegisterStation(name, &TrackedFactory);
    ASSERT_NE(Registry::FindStation(name), nullptr);
  }
  Registry::RegisterStation("never-created", &TrackedFactory);
  Registry::Terminate();
  EXPECT_EQ(mDestroyed, (Log{"B", "a", "ab", "b", "ba", "\xC3\xA9"}));
  EXPECT_EQ(gDepthInDestructor, 0);
}

TEST_F(StationRegistryTest, TerminateDeletesStationsAwaitingDeletion) {
  tovimpl::messaging::DeferStationDeletion(new TrackedStation("left-over"));
  Registry::Terminate();
  EXPECT_EQ(mDestroyed, (Log{"left-over"}));
  EXPECT_EQ(tovimpl::messaging::StationsAwaitingDeletion(), 0u);
}

TEST_F(StationRegistryTest, RegistryWorksAgainAfterTerminate) {
  Registry::RegisterStation("phoenix", nullptr);
  ASSERT_NE(Registry::FindStation("phoenix"), nullptr);
  Registry::Terminate();
  Registry::RegisterStation("phoenix", &TrackedFactory);
  EXPECT_NE(Registry::FindStation("phoenix"), nullptr);
  EXPECT_EQ(gFactoryCalls, 1);
}

// --- Re-entrance ---------------------------------------------------------------

// A station whose destructor registers and looks up other stations.
class ReentrantStation : public TOV::Station {
 public:
  explicit ReentrantStation(const UTF8String& name) : TOV::Station(name) {}
  ~ReentrantStation() override {
    TOV::StationRegistry::RegisterStation("successor", nullptr);
    mSuccessor = TOV::StationRegistry::FindStation("successor");
    gDepthInDestructor = RegistryLockDepth();
  }
  static TOV::Station* mSuccessor;
};
TOV::Station* ReentrantStation::mSuccessor = nullptr;

TOV::Station* ReentrantFactory(const UTF8String& name) {
  // Factories run under the lock and may look other stations up.
  TOV::StationRegistry::RegisterStation("helper", nullptr);
  static_cast<void>(TOV::StationRegistry::FindStation("helper"));
  return new ReentrantStation(name);
}

TEST_F(StationRegistryTest, FactoriesAndDestructorsMayReenterTheRegistry) {
  ReentrantStation::mSuccessor = nullptr;
  Registry::RegisterStation("reentrant", &ReentrantFactory);
  ASSERT_NE(Registry::FindStation("reentrant"), nullptr);
  EXPECT_TRUE(LookUpStationEntry("helper").hasInstance);
  Registry::DisposeStation("reentrant");
  EXPECT_EQ(gDepthInDestructor, 1);
  EXPECT_NE(ReentrantStation::mSuccessor, nullptr);
  EXPECT_EQ(Registry::FindStation("successor"), ReentrantStation::mSuccessor);
  EXPECT_FALSE(LookUpStationEntry("reentrant").registered);
}

}  // namespace
