// Modules, "PIPL" resources, identifiers and the waitable signal.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

#include "basalt/utf.h"
#include "common/environment.h"
#include "foundation/platform_helpers_internal.h"
#include "foundation_support.h"
#include "platform/error.h"
#include "platform/guid.h"
#include "platform/module.h"
#include "platform/sync.h"
#include "tovfoundation/foundation.h"

namespace {

using namespace basalt::literals;
using namespace std::chrono_literals;

const char kPlugin[] = TOV_TEST_PLUGIN;
const unsigned char kPiplBytes[16] = {'T', 'O', 'V', 'P', 'I', 'P', 'L', 0, 1, 2, 3, 4, 5, 6, 7, 8};

UTF16String PluginLibraryPath() { return tovtest::Lib(kPlugin); }

// --- modules ----------------------------------------------------------------------

TEST(TOVLoadLibrary, FlagsZeroLoadsAndRunsTheModule) {
  tovtest::SetEnv("TOV_TEST_PLUGIN_RAN", nullptr);
  Halyard::HINSTANCE module = Halyard::TOVLoadLibrary(kPlugin, nullptr, 0);
  ASSERT_NE(module, nullptr);
  EXPECT_STREQ(std::getenv("TOV_TEST_PLUGIN_RAN"), "1");
  auto answer =
      reinterpret_cast<int (*)()>(Halyard::TOVGetProcAddress(module, "TovTestPluginAnswer"));
  ASSERT_NE(answer, nullptr);
  EXPECT_EQ(answer(), 42);
  EXPECT_TRUE(Halyard::TOVUnloadLibrary(module));
}

TEST(TOVLoadLibrary, FlagsOneLoadsAsDataRunningNoCode) {
  tovtest::SetEnv("TOV_TEST_PLUGIN_RAN", nullptr);
  Halyard::HINSTANCE module = Halyard::TOVLoadLibrary(kPlugin, nullptr, 1);
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(std::getenv("TOV_TEST_PLUGIN_RAN"), nullptr);
  EXPECT_EQ(Halyard::TOVGetProcAddress(module, "TovTestPluginAnswer"), nullptr);
  EXPECT_TRUE(Halyard::TOVUnloadLibrary(module));
}

TEST(TOVLoadLibrary, FlagsTwoAndThreeLoadNormally) {
  for (std::uint32_t flags : {2u, 3u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(flags);
    tovtest::SetEnv("TOV_TEST_PLUGIN_RAN", nullptr);
    Halyard::HINSTANCE module = Halyard::TOVLoadLibrary(kPlugin, nullptr, flags);
    ASSERT_NE(module, nullptr);
    EXPECT_NE(Halyard::TOVGetProcAddress(module, "TovTestPluginAnswer"), nullptr);
    EXPECT_TRUE(Halyard::TOVUnloadLibrary(module));
  }
}

TEST(TOVLoadLibrary, WideNameLoadsTheSameModule) {
  const UTF16String name = PluginLibraryPath();
  for (std::uint32_t flags : {0u, 1u}) {
    SCOPED_TRACE(flags);
    Halyard::HINSTANCE module = Halyard::TOVLoadLibraryW(name.c_str(), nullptr, flags);
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(Halyard::TOVGetProcAddress(module, "TovTestPluginAnswer") != nullptr, flags == 0);
    EXPECT_TRUE(Halyard::TOVUnloadLibrary(module));
  }
}

TEST(TOVLoadLibrary, MissingModuleGivesNull) {
  tovtest::TempTree temp;
  const std::string missing = temp.NativeOf("absent.so");
  EXPECT_EQ(Halyard::TOVLoadLibrary(missing.c_str(), nullptr, 0), nullptr);
  EXPECT_EQ(tovimpl::platform::GetLastError(), 126u);
  EXPECT_EQ(Halyard::TOVLoadLibrary(missing.c_str(), nullptr, 1), nullptr);
  EXPECT_EQ(tovimpl::platform::GetLastError(), 2u);
  EXPECT_EQ(Halyard::TOVLoadLibrary(nullptr, nullptr, 0), nullptr);
}

TEST(TOVLoadLibrary, NullNameLoadsNothingInEitherSpelling) {
  tovimpl::platform::SetLastError(0);
  EXPECT_EQ(Halyard::TOVLoadLibrary(nullptr, nullptr, 1), nullptr);
  EXPECT_EQ(Halyard::TOVLoadLibraryW(nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(Halyard::TOVLoadLibraryW(nullptr, nullptr, 1), nullptr);
  // Nothing was asked of the system, so no error was recorded.
  EXPECT_EQ(tovimpl::platform::GetLastError(), 0u);
}

TEST(TOVLoadLibrary, DataLoadOfNonModuleFails) {
  tovtest::TempTree temp;
  tovtest::WriteFile(temp.NativeOf("text.so"), std::string(200, 'x'));
  EXPECT_EQ(Halyard::TOVLoadLibrary(temp.NativeOf("text.so").c_str(), nullptr, 1), nullptr);
  EXPECT_EQ(tovimpl::platform::GetLastError(), tovimpl::platform::kErrorBadExeFormat);
}

TEST(TOVLoadLibrary, UnloadOfNullFails) { EXPECT_FALSE(Halyard::TOVUnloadLibrary(nullptr)); }

TEST(TOVGetProcAddress, UnknownNameGivesNull) {
  Halyard::HINSTANCE module = Halyard::TOVLoadLibrary(kPlugin, nullptr, 0);
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(Halyard::TOVGetProcAddress(module, "NoSuchEntry"), nullptr);
  EXPECT_EQ(tovimpl::platform::GetLastError(), 127u);
  EXPECT_TRUE(Halyard::TOVUnloadLibrary(module));
}

// --- resources --------------------------------------------------------------------

TEST(TOVLoadResource, PiplTypeGivesTheModulesFirstPiplResource) {
  for (std::uint32_t flags : {0u, 1u}) {
    SCOPED_TRACE(flags);
    Halyard::HINSTANCE module = Halyard::TOVLoadLibrary(kPlugin, nullptr, flags);
    ASSERT_NE(module, nullptr);
    UTF16String type = u"PIPL"_u16;
    void* resource = Halyard::TOVLoadResource(module, type);
    ASSERT_NE(resource, nullptr);
    EXPECT_EQ(type, u"PIPL"_u16);
    const void* data = Halyard::TOVGetResourceData(module, resource, type);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(tovimpl::platform::SizeofResource(module, resource), sizeof kPiplBytes);
    EXPECT_EQ(std::memcmp(data, kPiplBytes, sizeof kPiplBytes), 0);
    Halyard::TOVFreeResource(module, resource, const_cast<void*>(data));
    EXPECT_TRUE(Halyard::TOVUnloadLibrary(module));
  }
}

TEST(TOVLoadResource, OtherTypeNamesGiveNullEvenWhenResourcesExist) {
  Halyard::HINSTANCE module = Halyard::TOVLoadLibrary(kPlugin, nullptr, 1);
  ASSERT_NE(module, nullptr);
  // The module does hold a resource of type "ABCD"...
  EXPECT_TRUE(
      tovimpl::platform::FindModuleResource(module, tovimpl::platform::MakeIntResource(1), "ABCD"));
  // ...but only the type "PIPL" is ever taken.
  for (const UTF16String& name :
       {u"ABCD"_u16, u"pipl"_u16, u"PIPL "_u16, u"PIP"_u16, UTF16String(), u"NOPE"_u16}) {
    SCOPED_TRACE(basalt::UTF16to8(name));
    UTF16String type = name;
    EXPECT_EQ(Halyard::TOVLoadResource(module, type), nullptr);
    EXPECT_EQ(type, name);
  }
  EXPECT_TRUE(Halyard::TOVUnloadLibrary(module));
}

TEST(TOVLoadResource, ModuleWithoutPiplGivesNull) {
  // This test program itself has no "PIPL" section.
  Halyard::HINSTANCE self = tovimpl::platform::LoadModule(tovtest::Lib(tovtest::SelfPath()),
                                                          tovimpl::platform::kLoadLibraryAsDatafile)
                                .ValueOr(nullptr);
  ASSERT_NE(self, nullptr);
  UTF16String type = u"PIPL"_u16;
  EXPECT_EQ(Halyard::TOVLoadResource(self, type), nullptr);
  EXPECT_TRUE(Halyard::TOVUnloadLibrary(self));
}

TEST(TOVGetResourceData, NullResourceGivesNull) {
  UTF16String type = u"PIPL"_u16;
  EXPECT_EQ(Halyard::TOVGetResourceData(nullptr, nullptr, type), nullptr);
  Halyard::TOVFreeResource(nullptr, nullptr, nullptr);  // harmless
}

TEST(ModuleLayer, EnumerationHandsTheCallbackTheCallersType) {
  Halyard::HINSTANCE module =
      tovimpl::platform::LoadModule(PluginLibraryPath(), 0).ValueOr(nullptr);
  ASSERT_NE(module, nullptr);
  struct Seen {
    const char* type = nullptr;
    std::vector<std::uintptr_t> names;
  } seen;
  const char type[] = "PIPL";
  EXPECT_TRUE(tovimpl::platform::ForEachResource(
      module, type,
      [](tovimpl::platform::ModuleHandle, const char* t, std::uintptr_t name, std::intptr_t param) {
        auto* into = reinterpret_cast<Seen*>(param);
        into->type = t;
        into->names.push_back(name);
        return true;
      },
      reinterpret_cast<std::intptr_t>(&seen)));
  EXPECT_EQ(seen.type, type);
  EXPECT_EQ(seen.names, std::vector<std::uintptr_t>{1});
  EXPECT_EQ(tovimpl::platform::ForEachResource(module, "ZZZZ", nullptr, 0).Error(),
            tovimpl::platform::kErrorResourceTypeNotFound);
  EXPECT_EQ(
      tovimpl::platform::FindModuleResource(module, tovimpl::platform::MakeIntResource(2), "PIPL")
          .Error(),
      tovimpl::platform::kErrorResourceNameNotFound);
  // Only the low 16 bits of an integer name count.
  EXPECT_TRUE(tovimpl::platform::FindModuleResource(
      module, tovimpl::platform::MakeIntResource(0x10001), "PIPL"));
  EXPECT_TRUE(tovimpl::platform::UnloadModule(module));
}

// --- identifiers ------------------------------------------------------------------

TEST(VGenerateGUID, NullPointerGivesInvalidPointer) {
  EXPECT_EQ(Halyard::VGenerateGUID(nullptr), 0xC0080003u);
}

TEST(VGenerateGUID, FillsVersionFourIdentifiers) {
  std::set<std::vector<unsigned char>> seen;
  for (int i = 0; i < 1000; ++i) {
    Halyard::_VGUID id{};
    ASSERT_EQ(Halyard::VGenerateGUID(&id), 0u);
    EXPECT_EQ(id.Data3 >> 12, 4);
    EXPECT_EQ(id.Data4[0] & 0xC0, 0x80);
    std::vector<unsigned char> bytes(sizeof id);
    std::memcpy(bytes.data(), &id, sizeof id);
    seen.insert(bytes);
  }
  EXPECT_EQ(seen.size(), 1000u);
}

TEST(VGenerateGUID, FailingSourceGivesCreateFailedAndLeavesOutputUntouched) {
  tovimpl::platform::SetRandomSourceForTesting([](void*, std::uint32_t) { return false; });
  Halyard::_VGUID id{0x11223344u, 0x5566, 0x7788, {1, 2, 3, 4, 5, 6, 7, 8}};
  const std::uint32_t status = Halyard::VGenerateGUID(&id);
  tovimpl::platform::SetRandomSourceForTesting(nullptr);
  EXPECT_EQ(status, 0xC00B0002u);
  EXPECT_EQ(id.Data1, 0x11223344u);
  EXPECT_EQ(id.Data2, 0x5566);
  EXPECT_EQ(id.Data3, 0x7788);
  const unsigned char expected[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  EXPECT_EQ(std::memcmp(id.Data4, expected, 8), 0);
}

TEST(VGenerateGUID, FieldsFollowTheRandomBytesInOrder) {
  tovimpl::platform::SetRandomSourceForTesting([](void* bytes, std::uint32_t size) {
    auto* out = static_cast<unsigned char*>(bytes);
    for (std::uint32_t i = 0; i < size; ++i) out[i] = static_cast<unsigned char>(0x10 + i);
    return true;
  });
  Halyard::_VGUID id{};
  const std::uint32_t status = Halyard::VGenerateGUID(&id);
  tovimpl::platform::SetRandomSourceForTesting(nullptr);
  ASSERT_EQ(status, 0u);
  EXPECT_EQ(id.Data1, 0x10111213u);
  EXPECT_EQ(id.Data2, 0x1415);
  EXPECT_EQ(id.Data3, 0x4617);  // version nibble 4
  const unsigned char expected[8] = {0x98, 0x19, 0x1A, 0x1B,
                                     0x1C, 0x1D, 0x1E, 0x1F};  // variant 10xx
  EXPECT_EQ(std::memcmp(id.Data4, expected, 8), 0);
}

// --- WaitableObject -----------------------------------------------------------------

TEST(WaitableObject, ZeroTimeoutOnUnsignalledObjectTimesOutAtOnce) {
  Halyard::WaitableObject object;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(object.WaitForSignal(0), Halyard::kVWaitTimedOut);
  EXPECT_LT(std::chrono::steady_clock::now() - start, 500ms);
}

TEST(WaitableObject, SignalBeforeWaitIsSeenAtOnceThenSecondWaitTimesOut) {
  Halyard::WaitableObject object;
  object.Signal();
  EXPECT_EQ(object.WaitForSignal(0), Halyard::kVWaitSignaled);
  EXPECT_EQ(object.WaitForSignal(0), Halyard::kVWaitTimedOut);
  EXPECT_EQ(object.WaitForSignal(20), Halyard::kVWaitTimedOut);
}

TEST(WaitableObject, SignalsDoNotAddUp) {
  Halyard::WaitableObject object;
  object.Signal();
  object.Signal();
  EXPECT_EQ(object.WaitForSignal(0), Halyard::kVWaitSignaled);
  EXPECT_EQ(object.WaitForSignal(0), Halyard::kVWaitTimedOut);
}

TEST(WaitableObject, ShortTimeoutWaitsAboutThatLong) {
  Halyard::WaitableObject object;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(object.WaitForSignal(50), Halyard::kVWaitTimedOut);
  EXPECT_GE(std::chrono::steady_clock::now() - start, 45ms);
}

TEST(WaitableObject, MinusOneWaitsForeverUntilSignalled) {
  Halyard::WaitableObject object;
  std::thread signaller([&object] {
    std::this_thread::sleep_for(50ms);
    object.Signal();
  });
  EXPECT_EQ(object.WaitForSignal(-1), Halyard::kVWaitSignaled);
  signaller.join();
}

TEST(WaitableObject, OtherNegativeTimeoutsWaitLongNotZero) {
  // -2 is 0xFFFFFFFE ms (about 49.7 days): the wait does not return at once.
  Halyard::WaitableObject object;
  std::thread signaller([&object] {
    std::this_thread::sleep_for(50ms);
    object.Signal();
  });
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(object.WaitForSignal(-2), Halyard::kVWaitSignaled);
  EXPECT_GE(std::chrono::steady_clock::now() - start, 45ms);
  signaller.join();
}

TEST(WaitableObject, OneWaiterReleasedPerSignal) {
  Halyard::WaitableObject object;
  std::atomic<int> released{0};
  std::vector<std::thread> waiters;
  for (int i = 0; i < 4; ++i) {
    waiters.emplace_back([&] {
      if (object.WaitForSignal(5000) == Halyard::kVWaitSignaled) ++released;
    });
  }
  std::this_thread::sleep_for(50ms);
  object.Signal();
  std::this_thread::sleep_for(100ms);
  EXPECT_EQ(released.load(), 1);
  // Signals do not add up, so each next one waits until the last was taken.
  for (int expected = 2; expected <= 4; ++expected) {
    object.Signal();
    const auto deadline = std::chrono::steady_clock::now() + 1500ms;
    while (released.load() < expected && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(1ms);
    }
    EXPECT_EQ(released.load(), expected);
  }
  for (auto& waiter : waiters) waiter.join();
  EXPECT_EQ(released.load(), 4);
}

TEST(WaitableObject, SignalWaitRacesLoseNoSignal) {
  // Ping-pong between two threads: every signal is consumed by exactly one wait.
  Halyard::WaitableObject ping, pong;
  constexpr int kRounds = 2000;
  std::thread other([&] {
    for (int i = 0; i < kRounds; ++i) {
      ASSERT_EQ(ping.WaitForSignal(-1), Halyard::kVWaitSignaled);
      pong.Signal();
    }
  });
  for (int i = 0; i < kRounds; ++i) {
    ping.Signal();
    ASSERT_EQ(pong.WaitForSignal(5000), Halyard::kVWaitSignaled);
  }
  other.join();
  EXPECT_EQ(ping.WaitForSignal(0), Halyard::kVWaitTimedOut);
  EXPECT_EQ(pong.WaitForSignal(0), Halyard::kVWaitTimedOut);
}

TEST(WaitResult, PlatformResultsMapToThreeValues) {
  struct Row {
    std::uint32_t platform;
    Halyard::VWaitResultType result;
  };
  const Row rows[] = {{0, Halyard::kVWaitSignaled},  {258, Halyard::kVWaitTimedOut},
                      {0x80, Halyard::kVWaitFailed}, {0xFFFFFFFFu, Halyard::kVWaitFailed},
                      {1, Halyard::kVWaitFailed},    {257, Halyard::kVWaitFailed}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.platform);
    EXPECT_EQ(tovimpl::foundation::WaitResultFromPlatform(row.platform), row.result);
  }
}

TEST(EventLayer, NullHandleWaitFails) {
  EXPECT_EQ(tovimpl::platform::WaitForEvent(nullptr, 0).Error(), 6u);
  EXPECT_EQ(tovimpl::platform::SignalEvent(nullptr).Error(), 6u);
  EXPECT_EQ(tovimpl::platform::DestroyEvent(nullptr).Error(), 6u);
}

TEST(EventLayer, ManualResetEventStaysSignalledUntilReset) {
  tovimpl::platform::EventHandle event = *tovimpl::platform::NewEvent(true, true);
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(*tovimpl::platform::WaitForEvent(event, 0), tovimpl::platform::kWaitObject0);
  EXPECT_EQ(*tovimpl::platform::WaitForEvent(event, 0), tovimpl::platform::kWaitObject0);
  EXPECT_TRUE(tovimpl::platform::ClearEvent(event));
  EXPECT_EQ(*tovimpl::platform::WaitForEvent(event, 0), tovimpl::platform::kWaitTimeout);
  EXPECT_TRUE(tovimpl::platform::DestroyEvent(event));
}

}  // namespace
