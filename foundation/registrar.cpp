// The cache-folder registrar: one cache file per (folder, name) pair,
// remembered in "MasterFolderList.xml" in the host's cache folder, which every
// process of the application shares.
//
// Within a process the registrar-wide lock serialises the operations and the
// registry's own lock guards its construction and its saves. Between
// processes, "MasterFolderList.xml.lock" beside the list is locked around
// every read-modify-write of the list: a new registration and every save. A
// process remembers which version of the list it last read or wrote
// (platform FileVersion), so it re-reads the list only when another process
// replaced it, and then merges: entries it does not know are adopted, and for
// a key both sides hold with different cache files the one on disk wins.
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "basalt/proplist.h"
#include "basalt/string_stream.h"
#include "basalt/thread.h"
#include "basalt/utf.h"
#include "foundation/registrar_internal.h"
#include "platform/clock.h"
#include "platform/error.h"
#include "platform/file.h"
#include "platform/file_replace.h"
#include "platform/fs.h"
#include "platform/interprocess.h"
#include "tovfoundation/files.h"
#include "tovfoundation/foundation.h"

namespace tovimpl::foundation {

namespace {

using basalt::proplist::PropList;
using namespace basalt::literals;

const char* const kCacheFileKey = "CacheFile";
constexpr std::u16string_view kListName = u"MasterFolderList.xml";

// The save temporary files of the list, "MasterFolderList.xml.<pid>-<n>.tmp":
// the process number, or 0 for any other name.
std::uint32_t SaveTempProcess(const UTF16String& fileName) {
  const std::u16string_view name(reinterpret_cast<const char16_t*>(fileName.data()),
                                 fileName.size());
  const std::u16string_view suffix = u".tmp";
  if (name.size() <= kListName.size() + 1 + suffix.size() ||
      name.substr(0, kListName.size()) != kListName || name[kListName.size()] != u'.' ||
      name.substr(name.size() - suffix.size()) != suffix) {
    return 0;
  }
  const std::u16string_view middle =
      name.substr(kListName.size() + 1, name.size() - kListName.size() - 1 - suffix.size());
  const auto dash = middle.find(u'-');
  if (dash == std::u16string_view::npos || dash == 0 || dash + 1 == middle.size()) return 0;
  std::uint64_t process = 0;
  for (std::size_t i = 0; i < middle.size(); ++i) {
    if (i == dash) continue;
    if (middle[i] < u'0' || middle[i] > u'9') return 0;
    if (i < dash) process = process * 10 + static_cast<std::uint64_t>(middle[i] - u'0');
    if (process > 0xFFFFFFFFu) return 0;
  }
  return static_cast<std::uint32_t>(process);
}

UTF16String Utf16(const std::string& text) { return basalt::UTF8to16(text); }

// The single registry: the property list itself, where it lives, the lock
// that guards its construction and its saves, and what it knows of the list
// file on disk.
class Registry : public PropList {
 public:
  Registry() {
    std::lock_guard<std::recursive_mutex> lock(mLock);
    Build();
  }

  // Saved once more when the process ends (or a test resets it), but only
  // when this process holds something the file lacks, or there is no file.
  // Whether there is one is asked by name: opening the list outside the list
  // lock could make another process's save fail on Windows.
  ~Registry() override {
    std::lock_guard<std::recursive_mutex> lock(mLock);
    if (!mListPath.empty() && (mDirty || !platform::ReadAttributes(mListPath))) {
      static_cast<void>(Save());
    }
    if (mLockFile.IsOpen()) (void)platform::CloseFile(mLockFile);
  }

  Registry(const Registry&) = delete;
  Registry& operator=(const Registry&) = delete;

  const UTF16String& CacheFolder() const { return mCacheFolder; }

  // Runs `work` while this process holds the list's inter-process lock
  // (re-entrant within the process). Without a list, or when the lock file
  // cannot be opened (a read-only cache folder), `work` runs unlocked: there
  // is then nothing another process could write either.
  template <class Work>
  auto WithListLock(Work&& work) {
    std::lock_guard<std::recursive_mutex> lock(mLock);
    const ListLockHold hold(*this, AcquireListLock());
    return work();
  }

  // Catches up with the list on disk when another process replaced (or
  // removed) it since this process last read or wrote it: adopts what it
  // holds. True when the list on disk had changed.
  //
  // Callers hold the list lock (WithListLock, CatchUpLocked). Reading the list opens it,
  // and on Windows a file that is open anywhere cannot be replaced: a save
  // of another process made meanwhile would fail and lose what it held.
  bool CatchUp() {
    std::lock_guard<std::recursive_mutex> lock(mLock);
    if (mListPath.empty()) return false;
    platform::FileVersion now{};
    const bool exists = platform::GetFileVersion(mListPath, &now).IsOk();
    if (exists == mKnownExists && (!exists || now == mKnown)) return false;
    mKnownExists = exists;
    mKnown = now;
    mDamaged = false;
    if (!exists) {
      // Removed: everything this process holds is now missing from it.
      mDirty = mDirty || !Empty();
      return true;
    }
    PropList disk;
    try {
      basalt::proplist::utils::LoadPropList(mListPath, disk, 0);
    } catch (const std::exception& error) {
      // Kept where it is until a save would replace it; then it is set aside.
      mDamaged = true;
      mReport.damagedReason = Utf16(error.what());
      return true;
    }
    Merge(std::move(disk));
    return true;
  }

  // CatchUp under the list lock, for a lookup or a first use. A process that
  // has never saved does not make the lock file only to read: without one, no
  // process has saved yet, and there is no save to wait for.
  bool CatchUpLocked() {
    std::lock_guard<std::recursive_mutex> lock(mLock);
    const bool lockable = mLockDepth > 0 || mLockFile.IsOpen() ||
                          (!mLockPath.empty() && platform::ReadAttributes(mLockPath));
    const ListLockHold hold(*this, lockable && AcquireListLock());
    return CatchUp();
  }

  // Writes the list: catches up with the file first, sets a damaged file
  // aside, then replaces the file with the union. 0, or kErrRegistryNotFound
  // when the list could not be written (the reason goes to the report).
  std::uint32_t Save() {
    return WithListLock([this]() -> std::uint32_t {
      if (mListPath.empty()) return 0;
      CatchUp();
      if (mDamaged && mKnownExists && !SetDamagedListAside()) return TOV::kErrRegistryNotFound;
      // A process whose first use finds no list deletes every ".tmp" in the
      // cache folder; when that happens before any process made the lock
      // file, it can take this save's temporary file with it. The rename
      // then finds no file, and the save is made again.
      for (int attempt = 1;; ++attempt) {
        try {
          basalt::proplist::utils::SavePropList(mListPath, *this);
          break;
        } catch (const basalt::proplist::PropListError& error) {
          const std::uint32_t code = error.GetSystemError();
          const bool tempVanished =
              code == platform::kErrorFileNotFound || code == platform::kErrorPathNotFound;
          if (!tempVanished || attempt == 3 || !platform::GetFileVersion(mCacheFolder, &mScratch)) {
            return SaveFailed(code, error.what());
          }
        } catch (const std::exception& error) {
          return SaveFailed(platform::kErrorNotEnoughMemory, error.what());
        }
      }
      mKnownExists = platform::GetFileVersion(mListPath, &mKnown).IsOk();
      mDirty = false;
      mReport.saveStatus = 0;
      mReport.saveSystemError = 0;
      mReport.saveError.clear();
      return 0;
    });
  }

  void MarkChanged() { mDirty = true; }

  FolderRegistrar::ListReport& Report() { return mReport; }

 private:
  // First use: find the cache folder, make sure it exists, clear out
  // leftovers of interrupted saves, then load the list.
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
    mLockPath = mListPath + u".lock"_u16;
    mReport.listFile = mListPath;
    PathUtilities::RemoveTrailingslash(mCacheFolder);

    if (!FileUtils::Folder::ExistsOnDisk(mCacheFolder) &&
        !FileUtils::Folder::CreateOnDisk(mCacheFolder)) {
      const std::uint32_t error = platform::GetLastError();
      mReport.cacheFolderSystemError = error != 0 ? error : platform::kErrorPathNotFound;
      return TOV::kErrRegistryNoCacheFolder;
    }
    if (!PathUtilities::ExistsOnDisk(mListPath)) {
      // No list: any ".tmp" file directly in the cache folder is the remains
      // of a save that never finished. Once processes have shared the list,
      // its lock is held here, so that no save is under way meanwhile.
      const bool shared = PathUtilities::ExistsOnDisk(mLockPath);
      const ListLockHold hold(*this, shared && AcquireListLock());
      FileUtils::FileNameList files;
      FileUtils::FolderList folders;
      const UTF16String everyTitle;
      FileUtils::Folder::CreateFolderObject(mCacheFolder)
          .GetContainedFileAndFolderList(everyTitle.c_str(), ".tmp", files, folders, 0);
      for (const UTF16String& file : files) PathUtilities::TOVDeleteFile(file);
      return 0;
    }
    RemoveDeadSaves();
    CatchUpLocked();
    return 0;
  }

  // Temporary files of saves whose process is gone, with the list present.
  void RemoveDeadSaves() {
    UTF16String pattern = mCacheFolder;
    Halyard::PathUtilities::AddTrailingslash(pattern);
    const std::size_t folderLength = pattern.size();
    pattern += u"MasterFolderList.xml.*.tmp"_u16;
    platform::ListingEntry found{};
    const platform::ListingHandle search = platform::OpenListing(pattern, &found).ValueOr(nullptr);
    if (search == nullptr) return;
    do {
      if ((found.attributes & platform::kFileAttributeDirectory) == 0 &&
          SaveTempProcess(found.name) != 0 && !SaveOfRunningProcess(found.name)) {
        (void)platform::RemoveFile(pattern.substr(0, folderLength) + found.name);
      }
    } while (platform::NextListingEntry(search, &found));
    platform::CloseListing(search);
  }

  // A save temporary file of another process that still runs.
  static bool SaveOfRunningProcess(const UTF16String& fileName) {
    const std::uint32_t process = SaveTempProcess(fileName);
    return process != 0 && process != basalt::GetCurrentProcessID() &&
           platform::IsProcessRunning(process);
  }

  // Releases, when it goes, one level of the inter-process lock it was
  // given (`locked` false: nothing was taken).
  class ListLockHold {
   public:
    ListLockHold(Registry& registry, bool locked) : mRegistry(registry), mLocked(locked) {}
    ~ListLockHold() {
      if (mLocked && --mRegistry.mLockDepth == 0) {
        (void)platform::ReleaseLock(mRegistry.mLockFile);
      }
    }
    ListLockHold(const ListLockHold&) = delete;
    ListLockHold& operator=(const ListLockHold&) = delete;

   private:
    Registry& mRegistry;
    bool mLocked;
  };

  bool AcquireListLock() {
    if (mLockPath.empty()) return false;
    if (mLockDepth > 0) {
      ++mLockDepth;
      return true;
    }
    if (!mLockFile.IsOpen()) {
      const platform::Result<platform::FileHandle> opened = platform::OpenLockFile(mLockPath);
      if (!opened) return false;
      mLockFile = *opened;
    }
    if (!platform::TakeExclusiveLock(mLockFile)) return false;
    mLockDepth = 1;
    return true;
  }

  // Adopts what the list on disk holds. Keys this process does not know are
  // copied; for a key both hold, the disk's cache file wins over a different
  // one made here (which is removed when it is still empty); a pair this
  // process has a file for and the disk has none keeps it.
  void Merge(PropList&& disk) {
    if (Empty()) {
      static_cast<PropList&>(*this) = std::move(disk);
      mDirty = false;
      return;
    }
    bool keptOwn = false;
    for (const UTF8String& key : disk.Keys()) {
      const PropList* theirs = disk.FindChild(key);
      PropList* ours = FindChild(key);
      if (theirs == nullptr) {
        // A text where a pair belongs (not a cache file): a pair held here
        // stays; otherwise the disk's text is taken as it is.
        if (ours != nullptr) {
          keptOwn = true;
        } else {
          UTF8String text;
          disk.GetString(key, text);
          SetString(key, text);
        }
        continue;
      }
      if (ours == nullptr) {
        CreateChild(key) = *theirs;
        continue;
      }
      UTF16String theirFile;
      UTF16String ourFile;
      const bool theyHave = theirs->GetString(kCacheFileKey, theirFile);
      const bool weHave = ours->GetString(kCacheFileKey, ourFile);
      if (theyHave && (!weHave || ourFile != theirFile)) {
        if (weHave) RemoveIfEmpty(ourFile);
        *ours = *theirs;
      } else if (weHave && !theyHave) {
        keptOwn = true;
      }
    }
    // Every key on disk is now held here too.
    mDirty = keptOwn || Size() > disk.Size();
  }

  static void RemoveIfEmpty(const UTF16String& file) {
    const platform::Result<platform::FileInfo> info = platform::ReadFileInfo(file);
    if (info && info->size == 0 && (info->attributes & platform::kFileAttributeDirectory) == 0) {
      (void)platform::RemoveFile(file);
    }
  }

  // Moves the damaged list out of the way, under a name never used before:
  // "MasterFolderList.xml.damaged-<UTC time>", then "-2", "-3", ...
  bool SetDamagedListAside() {
    const platform::SystemTime now = platform::UtcNow();
    basalt::UTF8StringStream stamp;
    const auto two = [&](unsigned value) {
      if (value < 10) stamp << '0';
      stamp << value;
    };
    stamp << ".damaged-" << now.year;
    two(now.month);
    two(now.day);
    stamp << 'T';
    two(now.hour);
    two(now.minute);
    two(now.second);
    stamp << 'Z';
    const UTF16String base = mListPath + Utf16(stamp.str());
    for (unsigned attempt = 1; attempt < 10000; ++attempt) {
      UTF16String target = base;
      if (attempt > 1) target += Utf16(std::string(1, '-').append(std::to_string(attempt)));
      const platform::Status moved = platform::RenameFile(mListPath, target, 0);
      if (moved) {
        mReport.damagedListSetAside = target;
        mDamaged = false;
        mKnownExists = false;
        return true;
      }
      const std::uint32_t error = moved.Error();
      if (error != platform::kErrorAlreadyExists && error != platform::kErrorFileExists) {
        SaveFailed(error, "cannot set the damaged list aside");
        return false;
      }
    }
    SaveFailed(platform::kErrorAlreadyExists, "cannot set the damaged list aside");
    return false;
  }

  std::uint32_t SaveFailed(std::uint32_t systemError, const char* what) {
    mReport.saveStatus = TOV::kErrRegistryNotFound;
    mReport.saveSystemError = systemError;
    mReport.saveError = Utf16(what);
    return TOV::kErrRegistryNotFound;
  }

  UTF16String mListPath;
  UTF16String mCacheFolder;
  std::recursive_mutex mLock;

  UTF16String mLockPath;
  platform::FileHandle mLockFile;
  int mLockDepth = 0;
  // The version of the list this process last read or wrote.
  bool mKnownExists = false;
  platform::FileVersion mKnown{};
  platform::FileVersion mScratch{};
  // The file at mKnown could not be loaded and is still in place.
  bool mDamaged = false;
  // This process holds something the file lacks.
  bool mDirty = false;
  FolderRegistrar::ListReport mReport;
};

// The registrar-wide lock: serialises the operations.
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

Registry* ExistingRegistry() {
  std::lock_guard<std::mutex> lock(gAccessLock);
  return RegistrySlot().get();
}

// Text the list file cannot carry exactly comes back different after a
// restart; a pair keyed by it would get a new cache file on every run.
bool Refuse(Registry& registry, const UTF8String& text, const char* what) {
  if (basalt::proplist::utils::IsStorableText(text)) return false;
  registry.Report().refusal =
      Utf16(std::string(what) +
            " holds a character the list file cannot store (a control character other than "
            "tab, line feed and carriage return, U+FFFE or U+FFFF)");
  return true;
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

}  // namespace tovimpl::foundation

namespace FolderRegistrar {

using tovimpl::foundation::GetRegistry;
using tovimpl::foundation::RegistrarKey;
using tovimpl::foundation::RegistrarLock;

std::uint32_t Initialize() {
  std::lock_guard<std::recursive_mutex> lock(RegistrarLock());
  return 0;
}

std::uint32_t RegisterFolder(const UTF16String& folder, const UTF16String& name,
                             UTF16String& cacheFile) {
  std::lock_guard<std::recursive_mutex> lock(RegistrarLock());
  auto& registry = GetRegistry();
  const UTF8String key = RegistrarKey(folder, name);
  registry.Report().refusal.clear();
  if (tovimpl::foundation::Refuse(registry, key, "the folder or name")) {
    return TOV::kErrRegistryNoCacheFile;
  }
  UTF16String recorded;
  if (const auto* known = registry.FindChild(key);
      known != nullptr && known->GetString(tovimpl::foundation::kCacheFileKey, recorded)) {
    cacheFile = recorded;
    return 0;
  }
  // Decided under the inter-process lock, after catching up with the list:
  // two processes registering one pair get one file.
  return registry.WithListLock([&]() -> std::uint32_t {
    registry.CatchUp();
    basalt::proplist::PropList* child = registry.FindChild(key);
    if (child == nullptr) {
      child = &registry.CreateChild(key);
      registry.MarkChanged();
    }
    UTF16String existing;
    if (child->GetString(tovimpl::foundation::kCacheFileKey, existing)) {
      cacheFile = existing;
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
    if (tovimpl::foundation::Refuse(registry, basalt::UTF16to8(made), "the cache file's path")) {
      Halyard::PathUtilities::TOVDeleteFile(made);
      return TOV::kErrRegistryNoCacheFile;
    }
    child->SetString(tovimpl::foundation::kCacheFileKey, made);
    registry.MarkChanged();
    // The assignment stands even when the list cannot be written now; the
    // report tells why.
    static_cast<void>(registry.Save());
    cacheFile = made;
    return 0;
  });
}

std::uint32_t FindFolder(const UTF16String& folder, const UTF16String& name,
                         UTF16String& cacheFile) {
  std::lock_guard<std::recursive_mutex> lock(RegistrarLock());
  auto& registry = GetRegistry();
  const UTF8String key = RegistrarKey(folder, name);
  const auto lookUp = [&] {
    const basalt::proplist::PropList* child = registry.FindChild(key);
    return child != nullptr && child->GetString(tovimpl::foundation::kCacheFileKey, cacheFile);
  };
  if (lookUp()) return 0;
  // Another process may have registered it since this one read the list.
  if (registry.CatchUpLocked() && lookUp()) return 0;
  return TOV::kErrRegistryNotFound;
}

std::uint32_t UnRegisterFolder(const UTF16String& /*folder*/, const UTF16String& /*name*/) {
  std::lock_guard<std::recursive_mutex> lock(RegistrarLock());
  return 0;
}

ListReport GetListReport() {
  std::lock_guard<std::recursive_mutex> lock(RegistrarLock());
  tovimpl::foundation::Registry* registry = tovimpl::foundation::ExistingRegistry();
  return registry != nullptr ? registry->Report() : ListReport();
}

}  // namespace FolderRegistrar
