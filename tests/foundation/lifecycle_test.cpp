// Start-up, shutdown and the host folder queries, against a fake host.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation_support.h"
#include "tovfoundation/foundation.h"

namespace {

using namespace basalt::literals;
using tovtest::FakeHost;
using tovtest::HostCall;

class HostFolders : public ::testing::Test {
 protected:
  void TearDown() override { TOV::Paths::Terminate(&host); }
  FakeHost host;
};

struct FolderQuery {
  const char* name;
  UTF16String (*query)();
  int entry;
};

const FolderQuery kQueries[] = {
    {"CacheFolder", TOV::Paths::CacheFolder, 14},
    {"CodecsFolder", TOV::Paths::CodecsFolder, 5},
    {"FiltersFolder", TOV::Paths::FiltersFolder, 15},
    {"PostEncoderCommandsFolder", TOV::Paths::PostEncoderCommandsFolder, 16},
    {"ReadersFolder", TOV::Paths::ReadersFolder, 19},
    {"SystemPresetsFolder", TOV::Paths::SystemPresetsFolder, 6},
    {"WritersFolder", TOV::Paths::WritersFolder, 4},
};

TEST_F(HostFolders, InitializeAcquiresHostServiceVersionTwo) {
  EXPECT_EQ(TOV::Paths::Initialize(&host), 0u);
  const auto calls = host.Calls();
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].what, "AcquireService");
  EXPECT_EQ(calls[0].name, "Hald Host Service");
  EXPECT_EQ(calls[0].version, 2u);
}

TEST_F(HostFolders, SecondInitializeReturnsZeroWithoutCallingManager) {
  ASSERT_EQ(TOV::Paths::Initialize(&host), 0u);
  host.ClearCalls();
  FakeHost other;  // a different manager: must not be touched either
  EXPECT_EQ(TOV::Paths::Initialize(&other), 0u);
  EXPECT_TRUE(host.Calls().empty());
  EXPECT_TRUE(other.Calls().empty());
}

TEST_F(HostFolders, FailedAcquireReturnsManagerStatusAndLeavesQueriesEmpty) {
  host.SetAcquireStatus(0x80004005u);
  host.SetFolder(14, u"C:\\Cache"_u16);
  EXPECT_EQ(TOV::Paths::Initialize(&host), 0x80004005u);
  EXPECT_EQ(TOV::Paths::CacheFolder(), UTF16String());
  // Still not held: a later Initialize asks again.
  host.SetAcquireStatus(0);
  host.ClearCalls();
  EXPECT_EQ(TOV::Paths::Initialize(&host), 0u);
  EXPECT_EQ(host.Calls().size(), 1u);
}

TEST_F(HostFolders, TerminateWithoutInitializeCallsNothing) {
  TOV::Paths::Terminate(&host);
  EXPECT_TRUE(host.Calls().empty());
}

TEST_F(HostFolders, TerminateReleasesOnceAndNullsPointerWhateverManagerSays) {
  ASSERT_EQ(TOV::Paths::Initialize(&host), 0u);
  host.SetReleaseStatus(0xC0000001u);
  host.SetFolder(14, u"C:\\Cache"_u16);
  host.ClearCalls();
  TOV::Paths::Terminate(&host);
  auto calls = host.Calls();
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].what, "ReleaseService");
  EXPECT_EQ(calls[0].name, "Hald Host Service");
  EXPECT_EQ(calls[0].version, 2u);
  EXPECT_EQ(TOV::Paths::CacheFolder(), UTF16String());
  TOV::Paths::Terminate(&host);  // nothing left to release
  EXPECT_EQ(host.Calls().size(), 1u);
}

TEST_F(HostFolders, EveryQueryCallsItsOwnEntryWithTwoCallProtocol) {
  for (const auto& query : kQueries) {
    SCOPED_TRACE(query.name);
    host.SetFolder(query.entry, u"C:\\App\\"_u16 + tovtest::U16(query.name));
  }
  ASSERT_EQ(TOV::Paths::Initialize(&host), 0u);
  for (const auto& query : kQueries) {
    SCOPED_TRACE(query.name);
    host.ClearCalls();
    EXPECT_EQ(query.query(), u"C:\\App\\"_u16 + tovtest::U16(query.name));
    const auto calls = host.Calls();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].entry, query.entry);
    EXPECT_TRUE(calls[0].nullBuffer);
    EXPECT_EQ(calls[0].countIn, 0u);
    EXPECT_EQ(calls[1].entry, query.entry);
    EXPECT_FALSE(calls[1].nullBuffer);
    // The first answer (length + NUL) raised by one.
    const std::uint32_t firstAnswer =
        static_cast<std::uint32_t>(7 + std::string(query.name).size() + 1);
    EXPECT_EQ(calls[1].countIn, firstAnswer + 1);
  }
}

TEST_F(HostFolders, EveryQueryIsEmptyBeforeInitializeAndAfterTerminate) {
  for (const auto& query : kQueries) host.SetFolder(query.entry, u"C:\\x"_u16);
  for (const auto& query : kQueries) {
    SCOPED_TRACE(query.name);
    EXPECT_EQ(query.query(), UTF16String());
  }
  ASSERT_EQ(TOV::Paths::Initialize(&host), 0u);
  TOV::Paths::Terminate(&host);
  host.ClearCalls();
  for (const auto& query : kQueries) {
    SCOPED_TRACE(query.name);
    EXPECT_EQ(query.query(), UTF16String());
  }
  EXPECT_TRUE(host.Calls().empty());
}

TEST_F(HostFolders, CountOfZeroGivesEmptyStringWithoutSecondCall) {
  host.SetFolder(14, u"C:\\Cache"_u16);
  host.ForceCount(14, 0);
  ASSERT_EQ(TOV::Paths::Initialize(&host), 0u);
  host.ClearCalls();
  EXPECT_EQ(TOV::Paths::CacheFolder(), UTF16String());
  EXPECT_EQ(host.EntryCalls(14).size(), 1u);
}

TEST_F(HostFolders, EmbeddedNulCutsThePath) {
  UTF16String text = u"C:\\a"_u16;
  text.push_back(0);
  text += u"hidden"_u16;
  host.SetFolder(5, text);
  ASSERT_EQ(TOV::Paths::Initialize(&host), 0u);
  EXPECT_EQ(TOV::Paths::CodecsFolder(), u"C:\\a"_u16);
}

TEST_F(HostFolders, PathIsReturnedAsReportedWithoutSeparatorChanges) {
  host.SetFolder(14, u"C:\\Cache\\"_u16);
  host.SetFolder(5, u"relative/codecs"_u16);
  ASSERT_EQ(TOV::Paths::Initialize(&host), 0u);
  EXPECT_EQ(TOV::Paths::CacheFolder(), u"C:\\Cache\\"_u16);
  EXPECT_EQ(TOV::Paths::CodecsFolder(), u"relative/codecs"_u16);
}

TEST_F(HostFolders, ShortCountTakesOnlyTheUnitsAllocated) {
  // The host claims 3 units (with NUL) for a longer path: only what fits in
  // the buffer is written, and the text ends at the buffer's end.
  host.SetFolder(14, u"ABCDEFG"_u16);
  host.ForceCount(14, 3);
  ASSERT_EQ(TOV::Paths::Initialize(&host), 0u);
  EXPECT_EQ(TOV::Paths::CacheFolder(), u"ABC"_u16);
}

TEST_F(HostFolders, NonAsciiPathSurvives) {
  host.SetFolder(19, u"D:\\Lecteurs ✓ 🎬"_u16);
  ASSERT_EQ(TOV::Paths::Initialize(&host), 0u);
  EXPECT_EQ(TOV::Paths::ReadersFolder(), u"D:\\Lecteurs ✓ 🎬"_u16);
}

// --- TOVFoundation -----------------------------------------------------------

TEST_F(HostFolders, FoundationInitializeAcquiresThenReturnsRegistrarStatus) {
  EXPECT_EQ(TOVFoundation::Initialize(&host), 0u);
  const auto calls = host.Calls();
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].what, "AcquireService");
}

TEST_F(HostFolders, FoundationInitializeIgnoresFailedAcquire) {
  host.SetAcquireStatus(0xC0000022u);
  EXPECT_EQ(TOVFoundation::Initialize(&host), 0u);
  EXPECT_EQ(TOV::Paths::CacheFolder(), UTF16String());
}

TEST_F(HostFolders, FoundationTerminateOnlyReleasesTheHostService) {
  ASSERT_EQ(TOVFoundation::Initialize(&host), 0u);
  host.ClearCalls();
  TOVFoundation::Terminate(&host);
  const auto calls = host.Calls();
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].what, "ReleaseService");
  // The registrar keeps working: it was not terminated.
  EXPECT_EQ(FolderRegistrar::Initialize(), 0u);
}

TEST_F(HostFolders, FoundationWithoutServicesManagerTouchesNoHostService) {
  host.SetFolder(TOV::Paths::kCacheFolderEntry, u"C:\\Cache"_u16);
  ASSERT_EQ(TOVFoundation::Initialize(&host), 0u);
  host.ClearCalls();
  // Without a services manager the held service is neither released nor
  // replaced, and the folder queries still answer.
  EXPECT_EQ(TOVFoundation::Initialize(nullptr), 0u);
  TOVFoundation::Terminate(nullptr);
  EXPECT_TRUE(host.Calls().empty());
  EXPECT_EQ(TOV::Paths::CacheFolder(), u"C:\\Cache"_u16);
}

}  // namespace
