// The host's string dictionary (with a recording services manager) and OS
// error messages.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "basalt/localizer.h"
#include "tovfoundation/text.h"

using namespace basalt::literals;

namespace {

// A services manager that records every call and counts references.
class FakeServicesManager : public Halyard::IVServicesManager {
 public:
  std::uint32_t QueryInterface(const Halyard::_VGUID&, void** out) override {
    *out = nullptr;
    return TOV::kErrNoInterface;
  }
  std::uint32_t AddRef() override { return ++references; }
  std::uint32_t Release() override {
    ++releases;
    return --references;
  }
  std::uint32_t AcquireService(const char* name, std::uint32_t version, void** service) override {
    calls.push_back({"acquire", name, version, service});
    if (acquireStatus == 0) *service = serviceToHandOut;
    return acquireStatus;
  }
  std::uint32_t ReleaseService(const char* name, std::uint32_t version, void** service) override {
    calls.push_back({"release", name, version, service});
    return releaseStatus;
  }

  struct Call {
    std::string operation;
    std::string name;
    std::uint32_t version;
    void** service;
  };
  std::vector<Call> calls;
  std::uint32_t references = 1;  // the host's own
  std::uint32_t releases = 0;
  std::uint32_t acquireStatus = 0;
  std::uint32_t releaseStatus = 0;
  void* serviceToHandOut = nullptr;
};

// Stands in for the host's dictionary service.
int gFakeDictionary = 0;

// The process-wide pointer is shared: this test runs first in the executable
// (and alone when ctest runs it).
TEST(ZStringDict, GetDictionaryBeforeInitialisationIsNull) {
  EXPECT_EQ(TOV::GetDictionary(), nullptr);
}

TEST(ZStringDict, FailingLookupThrowsAndReleasesReference) {
  FakeServicesManager services;
  services.acquireStatus = 0x80004005u;
  Halyard::TOVZStringService* const before = TOV::GetDictionary();
  try {
    TOV::InitZStringDict(Halyard::CVSmartI<Halyard::IVServicesManager>(&services));
    FAIL() << "no exception";
  } catch (const TOV::eZStringDictInitFail& error) {
    EXPECT_STREQ(error.what(), "Failed to initialize ZString Dictionary");
    const TOV::TOVException& root = error;
    EXPECT_STREQ(root.what(), "Failed to initialize ZString Dictionary");
  }
  EXPECT_EQ(services.references, 1u);
  EXPECT_EQ(services.releases, 1u);
  ASSERT_EQ(services.calls.size(), 1u);
  EXPECT_EQ(services.calls[0].operation, "acquire");
  EXPECT_EQ(services.calls[0].name, "TOV ZString Service");
  EXPECT_EQ(services.calls[0].version, 0u);
  EXPECT_EQ(TOV::GetDictionary(), before);
}

TEST(ZStringDict, InitStoresServiceAndReleasesManager) {
  FakeServicesManager services;
  services.serviceToHandOut = &gFakeDictionary;
  Halyard::CVSmartI<Halyard::IVServicesManager> pointer(&services);
  EXPECT_EQ(services.references, 2u);
  EXPECT_EQ(TOV::InitZStringDict(std::move(pointer)), 0u);
  EXPECT_EQ(services.references, 1u);
  EXPECT_EQ(services.releases, 1u);
  ASSERT_EQ(services.calls.size(), 1u);
  EXPECT_EQ(services.calls[0].name, "TOV ZString Service");
  EXPECT_EQ(services.calls[0].version, 0u);
  EXPECT_EQ(static_cast<void*>(TOV::GetDictionary()), static_cast<void*>(&gFakeDictionary));
}

TEST(ZStringDict, InitWithCopyLeavesCallerReference) {
  FakeServicesManager services;
  services.serviceToHandOut = &gFakeDictionary;
  Halyard::CVSmartI<Halyard::IVServicesManager> pointer(&services);
  EXPECT_EQ(TOV::InitZStringDict(pointer), 0u);
  EXPECT_EQ(services.references, 2u);  // the caller's copy still holds one
  pointer.Clear();
  EXPECT_EQ(services.references, 1u);
}

TEST(ZStringDict, TerminateReleasesServiceButKeepsPointer) {
  FakeServicesManager services;
  services.serviceToHandOut = &gFakeDictionary;
  ASSERT_EQ(TOV::InitZStringDict(Halyard::CVSmartI<Halyard::IVServicesManager>(&services)), 0u);
  services.calls.clear();
  services.releaseStatus = 0x1234u;
  EXPECT_EQ(TOV::TerminateZStringDict(Halyard::CVSmartI<Halyard::IVServicesManager>(&services)),
            0x1234u);
  EXPECT_EQ(services.references, 1u);
  EXPECT_EQ(services.releases, 2u);
  ASSERT_EQ(services.calls.size(), 1u);
  EXPECT_EQ(services.calls[0].operation, "release");
  EXPECT_EQ(services.calls[0].name, "TOV ZString Service");
  EXPECT_EQ(services.calls[0].version, 0u);
  // The host receives the address of the stored pointer; the library itself
  // does not clear it.
  ASSERT_NE(services.calls[0].service, nullptr);
  EXPECT_EQ(*services.calls[0].service, static_cast<void*>(&gFakeDictionary));
  EXPECT_EQ(static_cast<void*>(TOV::GetDictionary()), static_cast<void*>(&gFakeDictionary));
  // A host that clears it through the address is seen by GetDictionary.
  *services.calls[0].service = nullptr;
  EXPECT_EQ(TOV::GetDictionary(), nullptr);
}

TEST(SmartInterface, CopyMoveAndAssignCountReferences) {
  FakeServicesManager services;
  {
    Halyard::CVSmartI<Halyard::IVServicesManager> a(&services);
    Halyard::CVSmartI<Halyard::IVServicesManager> b(a);
    EXPECT_EQ(services.references, 3u);
    Halyard::CVSmartI<Halyard::IVServicesManager> c(std::move(b));
    EXPECT_FALSE(b);
    EXPECT_TRUE(c);
    EXPECT_EQ(services.references, 3u);
    c = Halyard::CVSmartI<Halyard::IVServicesManager>();
    EXPECT_EQ(services.references, 2u);
    EXPECT_EQ(a.get(), &services);
  }
  EXPECT_EQ(services.references, 1u);
}

// --- OS error messages ---------------------------------------------------------------

TEST(ErrorMessage, UnknownCodeGivesLocalisedFallback) {
  basalt::config::Localizer::ClearTranslations();
  EXPECT_EQ(Halyard::Win32ErrorCodeToMessage(0xDEADBEEF),
            u"There was an error converting this Win32 error to a message!"_u16);
}

TEST(ErrorMessage, FallbackFollowsInstalledTranslation) {
  basalt::config::Localizer::SetTranslation("$$$/TOV/Common/WinOSErrorConversionFailed",
                                            u"Fehlermeldung nicht verfügbar"_u16);
  EXPECT_EQ(Halyard::Win32ErrorCodeToMessage(0xDEADBEEF), u"Fehlermeldung nicht verfügbar"_u16);
  basalt::config::Localizer::ClearTranslations();
}

}  // namespace
