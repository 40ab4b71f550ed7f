// The cache-folder registrar: one cache file per (folder, name) pair,
// remembered in "MasterFolderList.xml" in the host's cache folder.
#include <cstdint>
#include <memory>
#include <mutex>

#include "basalt/proplist.h"
#include "basalt/utf.h"
#include "foundation/registrar_internal.h"
#include "tovfoundation/files.h"
#include "tovfoundation/foundation.h"

namespace tov::foundation {

namespace {

using basalt::proplist::PropList;
using namespace basalt::literals;

const char* const kCacheFileKey = "CacheFile";

// The single registry: the property list itself, where it lives, and the
// lock that guards its construction and its saves.
class Registry : public PropList {
 public:
  Registry() {
    std::lock_guard<std::recursive_mutex> lock(mLock);
    Build();
  }

  // Saved once more when the process ends (or a test resets it).
  ~Registry() override { Save(); }

  Registry(const Registry&) = delete;
  Registry& operator=(const Registry&) = delete;

  // Writes the list; 0, or kErrRegistryNotFound when the save failed.
  std::uint32_t Save() {
    std::lock_guard<std::recursive_mutex> lock(mLock);
    if (mListPath.empty()) return 0;
    try {
      basalt::proplist::utils::SavePropList(mListPath, *this);
    } catch (...) {
      return TOV::kErrRegistryNotFound;
    }
    return 0;
  }

  const UTF16String& CacheFolder() const { return mCacheFolder; }

 private:
  // First use: find the cache folder, make sure it exists, then either clear
  // out leftovers of interrupted saves or load the list.
  std::uint32_t Build() {
    using namespace Halyard;
    mCacheFolder = TOV::Paths::CacheFolder();
    // Without a cache folder there is nowhere to keep the list: it stays
    // unnamed and is never saved (a bare name would land in the current
    // directory).
    if (mCacheFolder.empty()) return TOV::kErrRegistryNoCacheFolder;
    mListPath = mCacheFolder;
    PathUtilities::AddTrailingslash(mListPath);
    mListPath += u"MasterFolderList.xml"_u16;
    PathUtilities::RemoveTrailingslash(mCacheFolder);

    if (!FileUtils::Folder::ExistsOnDisk(mCacheFolder) &&
        !FileUtils::Folder::CreateOnDisk(mCacheFolder)) {
      return TOV::kErrRegistryNoCacheFolder;
    }
    if (!PathUtilities::ExistsOnDisk(mListPath)) {
      // No list: any ".tmp" file directly in the cache folder is the remains
      // of a save that never finished.
      FileUtils::FileNameList files;
      FileUtils::FolderList folders;
      const UTF16String everyTitle;
      FileUtils::Folder::CreateFolderObject(mCacheFolder)
          .GetContainedFileAndFolderList(everyTitle.c_str(), ".tmp", files, folders, 0);
      for (const UTF16String& file : files) PathUtilities::TOVDeleteFile(file);
    } else {
      try {
        basalt::proplist::utils::LoadPropList(mListPath, *this, 0);
      } catch (...) {
        // An unreadable list is not fatal: the registry starts empty.
      }
    }
    return 0;
  }

  UTF16String mListPath;
  UTF16String mCacheFolder;
  std::recursive_mutex mLock;
};

// The registrar-wide lock: serialises the four operations.
std::recursive_mutex& RegistrarLock() {
  static std::recursive_mutex lock;
  return lock;
}

// The short lock through which the single registry is reached, and its home.
std::mutex gAccessLock;
std::unique_ptr<Registry>& RegistrySlot() {
  static std::unique_ptr<Registry> registry;
  return registry;
}

Registry& GetRegistry() {
  std::lock_guard<std::mutex> lock(gAccessLock);
  auto& slot = RegistrySlot();
  if (!slot) slot = std::make_unique<Registry>();
  return *slot;
}

}  // namespace

UTF8String RegistrarKey(const UTF16String& folder, const UTF16String& name) {
  UTF16String trimmed = folder;
  Halyard::PathUtilities::RemoveTrailingslash(trimmed);
  UTF8String key = basalt::UTF16to8(trimmed);
  if (!name.empty()) {
    key += '#';
    key += basalt::UTF16to8(name);
  }
  return key;
}

void ResetRegistryForTesting() {
  std::lock_guard<std::recursive_mutex> registrar(RegistrarLock());
  std::unique_ptr<Registry> old;
  {
    std::lock_guard<std::mutex> lock(gAccessLock);
    old = std::move(RegistrySlot());
  }
  old.reset();
}

}  // namespace tov::foundation

namespace FolderRegistrar {

using tov::foundation::GetRegistry;
using tov::foundation::RegistrarKey;
using tov::foundation::RegistrarLock;

std::uint32_t Initialize() {
  std::lock_guard<std::recursive_mutex> lock(RegistrarLock());
  return 0;
}

std::uint32_t RegisterFolder(const UTF16String& folder, const UTF16String& name,
                             UTF16String& cacheFile) {
  std::lock_guard<std::recursive_mutex> lock(RegistrarLock());
  auto& registry = GetRegistry();
  const UTF8String key = RegistrarKey(folder, name);
  basalt::proplist::PropList* child = registry.FindChild(key);
  if (child == nullptr) child = &registry.CreateChild(key);

  UTF16String recorded;
  if (child->GetString(tov::foundation::kCacheFileKey, recorded)) {
    cacheFile = recorded;
    return 0;
  }
  UTF16String made;
  try {
    using namespace basalt::literals;
    made = Halyard::PathUtilities::GetAutoFileName(registry.CacheFolder(), u"TOVCache"_u16,
                                                   u".vpc"_u16);
  } catch (const Halyard::PathUtilities::PathUtilsException&) {
    return TOV::kErrRegistryNoCacheFile;
  }
  if (made.empty()) return TOV::kErrRegistryNoCacheFile;
  child->SetString(tov::foundation::kCacheFileKey, made);
  // The assignment stands even when the list cannot be written now.
  static_cast<void>(registry.Save());
  cacheFile = made;
  return 0;
}

std::uint32_t FindFolder(const UTF16String& folder, const UTF16String& name,
                         UTF16String& cacheFile) {
  std::lock_guard<std::recursive_mutex> lock(RegistrarLock());
  auto& registry = GetRegistry();
  const basalt::proplist::PropList* child = registry.FindChild(RegistrarKey(folder, name));
  if (child == nullptr) return TOV::kErrRegistryNotFound;
  return child->GetString(tov::foundation::kCacheFileKey, cacheFile) ? 0
                                                                     : TOV::kErrRegistryNotFound;
}

std::uint32_t UnRegisterFolder(const UTF16String& /*folder*/, const UTF16String& /*name*/) {
  std::lock_guard<std::recursive_mutex> lock(RegistrarLock());
  return 0;
}

}  // namespace FolderRegistrar
