#include <gtest/gtest.h>

#include "messaging/station_registry_internal.h"
#include "messaging_support.h"
#include "tovfoundation/messaging.h"

namespace {

using tovimpl::messaging::LookUpStationEntry;
using tovtest::Log;
using tovtest::RecordingListener;

namespace Registry = TOV::StationRegistry;
namespace Utils = TOV::StationUtils;

class StationUtilsTest : public ::testing::Test {
 protected:
  void SetUp() override { Registry::Terminate(); }
  void TearDown() override { Registry::Terminate(); }
};

TEST(StationUtils, NoStationIsTheEmptyName) { EXPECT_TRUE(TOV::kNoStation.empty()); }

TEST_F(StationUtilsTest, EveryFunctionOnUnknownNameDoesNothing) {
  Log log;
  RecordingListener listener("L", &log);
  const TOV::Message message(1);
  Utils::AddListener("ghost", &listener);
  Utils::RemoveListener("ghost", &listener);
  Utils::BroadcastMessage("ghost", message);
  Utils::StartBroadcasting("ghost");
  Utils::StopBroadcasting("ghost");
  Utils::RetainStation("ghost");
  Utils::ReleaseStation("ghost");
  Utils::SwitchStation("ghost", "phantom", &listener);
  Utils::PostMessageToUIThread("ghost", message);
  EXPECT_TRUE(log.empty());
  EXPECT_FALSE(LookUpStationEntry("ghost").registered);
  EXPECT_FALSE(LookUpStationEntry("phantom").registered);
  EXPECT_EQ(Registry::FindStation("ghost"), nullptr);
}

TEST_F(StationUtilsTest, AddListenerCreatesStationAndAttaches) {
  Log log;
  RecordingListener listener("L", &log);
  Registry::RegisterStation("news", nullptr);
  Utils::AddListener("news", &listener);
  TOV::Station* station = Registry::FindStation("news");
  ASSERT_NE(station, nullptr);
  EXPECT_TRUE(station->HasListener(&listener));
  EXPECT_TRUE(listener.HasBroadcaster(station));
  Utils::BroadcastMessage("news", TOV::Message(3));
  EXPECT_EQ(log, (Log{"L:3"}));
}

TEST_F(StationUtilsTest, AddNullListenerIsIgnored) {
  Registry::RegisterStation("news", nullptr);
  Utils::AddListener("news", nullptr);
  EXPECT_FALSE(Registry::FindStation("news")->HasListener(nullptr));
}

TEST_F(StationUtilsTest, RemoveListenerUnlinksBothSides) {
  Log log;
  RecordingListener listener("L", &log);
  Registry::RegisterStation("news", nullptr);
  Utils::AddListener("news", &listener);
  TOV::Station* station = Registry::FindStation("news");
  Utils::RemoveListener("news", &listener);
  EXPECT_FALSE(station->HasListener(&listener));
  EXPECT_FALSE(listener.HasBroadcaster(station));
  Utils::BroadcastMessage("news", TOV::Message(3));
  EXPECT_TRUE(log.empty());
}

TEST_F(StationUtilsTest, RemoveNullListenerDoesNothing) {
  Registry::RegisterStation("news", nullptr);
  Utils::RemoveListener("news", nullptr);
  // A null listener is rejected before the lookup: the station is not created.
  EXPECT_FALSE(LookUpStationEntry("news").hasInstance);
}

TEST_F(StationUtilsTest, StopAndStartBroadcastingByName) {
  Log log;
  RecordingListener listener("L", &log);
  Registry::RegisterStation("news", nullptr);
  Utils::AddListener("news", &listener);
  Utils::StopBroadcasting("news");
  EXPECT_FALSE(Registry::FindStation("news")->IsBroadcasting());
  Utils::BroadcastMessage("news", TOV::Message(1));
  EXPECT_TRUE(log.empty());
  Utils::StartBroadcasting("news");
  Utils::BroadcastMessage("news", TOV::Message(2));
  EXPECT_EQ(log, (Log{"L:2"}));
}

TEST_F(StationUtilsTest, RetainAndReleaseByName) {
  Registry::RegisterStation("news", nullptr);
  ASSERT_NE(Registry::FindStation("news"), nullptr);
  Utils::RetainStation("news");
  Utils::RetainStation("news");
  EXPECT_EQ(LookUpStationEntry("news").retainCount, 2);
  Utils::ReleaseStation("news");
  EXPECT_EQ(LookUpStationEntry("news").retainCount, 1);
  Registry::DisposeStation("news");
  EXPECT_TRUE(LookUpStationEntry("news").registered);
  Utils::ReleaseStation("news");
  EXPECT_FALSE(LookUpStationEntry("news").registered);
}

TEST_F(StationUtilsTest, SwitchStationMovesListener) {
  Log log;
  RecordingListener listener("L", &log);
  Registry::RegisterStation("from", nullptr);
  Registry::RegisterStation("to", nullptr);
  Utils::AddListener("from", &listener);
  Utils::SwitchStation("from", "to", &listener);
  TOV::Station* from = Registry::FindStation("from");
  TOV::Station* to = Registry::FindStation("to");
  EXPECT_FALSE(from->HasListener(&listener));
  EXPECT_FALSE(listener.HasBroadcaster(from));
  EXPECT_TRUE(to->HasListener(&listener));
  EXPECT_TRUE(listener.HasBroadcaster(to));
  Utils::BroadcastMessage("from", TOV::Message(1));
  Utils::BroadcastMessage("to", TOV::Message(2));
  EXPECT_EQ(log, (Log{"L:2"}));
}

TEST_F(StationUtilsTest, SwitchStationWithEmptyNameOrNullListenerChangesNothing) {
  Registry::RegisterStation("from", nullptr);
  Registry::RegisterStation("to", nullptr);
  RecordingListener listener("L", nullptr);
  Utils::AddListener("from", &listener);
  TOV::Station* from = Registry::FindStation("from");

  Utils::SwitchStation(TOV::kNoStation, "to", &listener);
  Utils::SwitchStation("from", TOV::kNoStation, &listener);
  Utils::SwitchStation("from", "to", nullptr);
  EXPECT_TRUE(from->HasListener(&listener));
  EXPECT_TRUE(listener.HasBroadcaster(from));
  EXPECT_FALSE(LookUpStationEntry("to").hasInstance);  // never even looked up
}

TEST_F(StationUtilsTest, SwitchStationFromUnknownStillAttachesToTarget) {
  Registry::RegisterStation("to", nullptr);
  RecordingListener listener("L", nullptr);
  Utils::SwitchStation("ghost", "to", &listener);
  EXPECT_TRUE(Registry::FindStation("to")->HasListener(&listener));
}

TEST_F(StationUtilsTest, SwitchStationToUnknownOnlyDetaches) {
  Registry::RegisterStation("from", nullptr);
  RecordingListener listener("L", nullptr);
  Utils::AddListener("from", &listener);
  Utils::SwitchStation("from", "ghost", &listener);
  EXPECT_FALSE(Registry::FindStation("from")->HasListener(&listener));
  EXPECT_FALSE(LookUpStationEntry("ghost").registered);
}

TEST_F(StationUtilsTest, SwitchingToSameStationMovesListenerToFront) {
  Log log;
  RecordingListener first("first", &log), second("second", &log);
  Registry::RegisterStation("same", nullptr);
  Utils::AddListener("same", &first);
  Utils::AddListener("same", &second);
  Utils::BroadcastMessage("same", TOV::Message(1));
  EXPECT_EQ(log, (Log{"second:1", "first:1"}));
  Utils::SwitchStation("same", "same", &first);
  TOV::Station* same = Registry::FindStation("same");
  EXPECT_TRUE(same->HasListener(&first));
  EXPECT_TRUE(first.HasBroadcaster(same));
  Utils::BroadcastMessage("same", TOV::Message(2));
  EXPECT_EQ(log, (Log{"second:1", "first:1", "first:2", "second:2"}));
}

TEST_F(StationUtilsTest, PostMessageToUIThreadDeliversNothingAndRetains) {
  Log log;
  RecordingListener listener("L", &log);
  Registry::RegisterStation("ui", nullptr);
  Utils::AddListener("ui", &listener);
  const TOV::Station* ui = Registry::FindStation("ui");
  Utils::PostMessageToUIThread("ui", TOV::Message(5));
  EXPECT_TRUE(log.empty());
  EXPECT_EQ(LookUpStationEntry("ui").retainCount, 1);
  Utils::PostMessageToUIThread("ui", TOV::Message(6));
  EXPECT_EQ(LookUpStationEntry("ui").retainCount, 2);
  EXPECT_TRUE(log.empty());
  // The retains keep a dispose pending until balanced.
  Registry::DisposeStation("ui");
  EXPECT_TRUE(LookUpStationEntry("ui").disposePending);
  Utils::ReleaseStation("ui");
  Utils::ReleaseStation("ui");
  EXPECT_FALSE(LookUpStationEntry("ui").registered);
  EXPECT_FALSE(listener.HasBroadcaster(ui));  // the deleted station detached itself
}

TEST_F(StationUtilsTest, PostMessageToUIThreadRetainsEvenBeforeCreation) {
  Registry::RegisterStation("ui", nullptr);
  Utils::PostMessageToUIThread("ui", TOV::Message(5));
  const auto state = LookUpStationEntry("ui");
  EXPECT_EQ(state.retainCount, 1);
  EXPECT_FALSE(state.hasInstance);
}

TEST_F(StationUtilsTest, BroadcastByNameRelaysThroughChainedStations) {
  Log log;
  RecordingListener local("local", &log), remote("remote", &log);
  Registry::RegisterStation("source", nullptr);
  Registry::RegisterStation("mirror", nullptr);
  Utils::AddListener("source", &local);
  Utils::AddListener("source", Registry::FindStation("mirror"));
  Utils::AddListener("mirror", &remote);
  Utils::BroadcastMessage("source", TOV::Message(8));
  EXPECT_EQ(log, (Log{"remote:8", "local:8"}));
}

}  // namespace
