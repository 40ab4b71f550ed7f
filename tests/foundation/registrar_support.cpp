#include "registrar_support.h"

#include "foundation/registrar_internal.h"
#include "platform/file.h"
#include "tovfoundation/foundation.h"

namespace tovtest {

using namespace basalt::literals;

void RegistrarFixture::SetUp() { tovimpl::foundation::ResetRegistryForTesting(); }

void RegistrarFixture::TearDown() {
  tovimpl::platform::SetWriteFaultForTesting(nullptr);
  tovimpl::foundation::ResetRegistryForTesting();
  TOVFoundation::Terminate(&host);
}

void RegistrarFixture::Host(const std::string& cacheFolder) {
  host.SetFolder(TOV::Paths::kCacheFolderEntry, Lib(cacheFolder));
  ASSERT_EQ(TOVFoundation::Initialize(&host), 0u);
}

void RegistrarFixture::LookUpNothing() {
  UTF16String found;
  EXPECT_EQ(FolderRegistrar::FindFolder(u"C:\\x"_u16, UTF16String(), found),
            TOV::kErrRegistryNotFound);
}

void RegistrarFixture::Restart() { tovimpl::foundation::ResetRegistryForTesting(); }

basalt::proplist::PropList RegistrarFixture::ListOnDisk() const {
  basalt::proplist::PropList list;
  basalt::proplist::utils::LoadPropList(Lib(ListPath()), list, 0);
  return list;
}

void RegistrarFixture::WriteList(const basalt::proplist::PropList& list) const {
  basalt::proplist::utils::SavePropList(Lib(ListPath()), list);
}

std::vector<std::string> RegistrarFixture::Named(const std::string& ending) const {
  std::vector<std::string> names;
  for (const auto& name : ListFolder(cache.Native())) {
    if (name.size() >= ending.size() &&
        name.compare(name.size() - ending.size(), ending.size(), ending) == 0) {
      names.push_back(name);
    }
  }
  return names;
}

}  // namespace tovtest
