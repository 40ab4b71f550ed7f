// The README's tour, "Foundation services", as a program the tests build and
// run.
#include <cstdint>
#include <filesystem>
#include <iostream>

#include "tovfoundation/tovfoundation.h"

using namespace basalt::literals;

// The cache folder the host below names is removed when the program ends.
struct RemoveCacheFolder {
  ~RemoveCacheFolder() {
    const UTF16String folder = Halyard::PathUtilities::ToPlatformPath(
        Halyard::PathUtilities::TOVGetTempFolder() + u"AppCache"_u16);
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::path(std::u16string(folder.begin(), folder.end())),
                                ignored);
  }
} removeCacheFolder;

// [readme]
// A minimal host: its service provider hands out the "Hald Host Service", a
// table of folder queries; this one answers the cache folder and no other.
class Host : public Halyard::IVServicesManager {
 public:
  Host() {
    for (auto& entry : mTable) entry = reinterpret_cast<void*>(&NoFolder);
    mTable[TOV::Paths::kCacheFolderEntry] = reinterpret_cast<void*>(&CacheFolder);
  }
  std::uint32_t QueryInterface(const Halyard::_VGUID&, void** out) override {
    *out = nullptr;
    return TOV::kErrNoInterface;
  }
  std::uint32_t AddRef() override { return 1; }
  std::uint32_t Release() override { return 1; }
  std::uint32_t AcquireService(const char* name, std::uint32_t version, void** service) override {
    if (std::string(name) != TOV::Paths::kHostServiceName ||
        version != TOV::Paths::kHostServiceVersion)
      return TOV::kErrNotFound;
    *service = mTable;
    return 0;
  }
  std::uint32_t ReleaseService(const char*, std::uint32_t, void**) override { return 0; }

 private:
  // A folder query: first asked for the units needed (NUL included), then for the text.
  static std::uint32_t CacheFolder(unsigned short* buffer, std::uint32_t* count) {
    static const UTF16String folder = Halyard::PathUtilities::TOVGetTempFolder() + u"AppCache"_u16;
    if (buffer == nullptr) {
      *count = static_cast<std::uint32_t>(folder.size() + 1);
    } else {
      folder.copy(buffer, folder.size());
      buffer[folder.size()] = 0;
    }
    return 0;
  }
  static std::uint32_t NoFolder(unsigned short*, std::uint32_t* count) {
    *count = 0;
    return 0;
  }
  void* mTable[20] = {};
};

int main() {
  Host host;
  Halyard::IVServicesManager* services = &host;
  TOVFoundation::Initialize(services);
  UTF16String cacheFile, again;
  FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"Thumbs"_u16, cacheFile);
  FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"Thumbs"_u16, again);
  std::cout << (cacheFile == again ? "same" : "different") << '\n';  // prints same
  // and the same cache file for the same pair on every later run
  TOVFoundation::Terminate(services);
}
// [/readme]
