// tovfoundation foundation services: start-up and shutdown, the host's
// folders, the cache-folder registrar, metadata lists, and platform helpers
// for modules, resources, identifiers and events.
//
//   // At start-up, with the host's service provider:
//   TOVFoundation::Initialize(services);            // 0
//   UTF16String cache = TOV::Paths::CacheFolder();   // e.g. "C:\App\Cache"
//
//   // A component caching data about a media folder:
//   UTF16String file;
//   FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"Thumbs"_u16, file);
//   // file == "C:\App\Cache\TOVCache412_88_907.vpc", the same on every later run
//
//   // At shutdown:
//   TOVFoundation::Terminate(services);
//
// Threads: the folder queries may run on any thread once the host service is
// held; Initialize and Terminate must run while no folder query runs. The
// registrar's operations, MetadataList and WaitableObject may be used from any
// thread. The module and resource wrappers keep no state of their own.
#pragma once

#include <cstdint>
#include <vector>

#include "basalt/proplist.h"
#include "tovfoundation/common.h"

// ---------------------------------------------------------------------------
// Start-up and shutdown
// ---------------------------------------------------------------------------
namespace TOVFoundation {

// Acquires the host service through TOV::Paths::Initialize and IGNORES its
// status, deliberately: without the service the folder queries answer "" but
// the library works. Then calls FolderRegistrar::Initialize and returns its
// status (0). `services` may be null (the host service is then not acquired);
// the host keeps ownership.
TOV_API std::uint32_t Initialize(Halyard::IVServicesManager* services);

// Gives the host service back through TOV::Paths::Terminate and does nothing
// else: the folder registrar, the station registry and the string dictionary
// have termination calls of their own, which this does not make.
TOV_API void Terminate(Halyard::IVServicesManager* services);

}  // namespace TOVFoundation

// ---------------------------------------------------------------------------
// The host's folders
// ---------------------------------------------------------------------------
namespace TOV::Paths {

// The service's name and interface version, as acquired and released.
inline constexpr const char* kHostServiceName = "Hald Host Service";
inline constexpr std::uint32_t kHostServiceVersion = 2;  // the host service's version

// A folder entry of the host service's function table: `buffer` (null, or
// room for `*count` UTF-16 units) and the count, read and written by the host.
// The library ignores the return value.
using HostFolderEntry = std::uint32_t (*)(unsigned short* buffer, std::uint32_t* count);

// Positions, counted from 0, of the entries the library calls in the host's
// table (the host fixes the table's layout; it has at least 20 entries).
inline constexpr int kWritersFolderEntry = 4;               // the writers folder
inline constexpr int kCodecsFolderEntry = 5;                // the codecs folder
inline constexpr int kSystemPresetsFolderEntry = 6;         // the system presets folder
inline constexpr int kCacheFolderEntry = 14;                // the cache folder
inline constexpr int kFiltersFolderEntry = 15;              // the filters folder
inline constexpr int kPostEncoderCommandsFolderEntry = 16;  // the post-encoder commands folder
inline constexpr int kReadersFolderEntry = 19;              // the readers folder

// Acquires "Hald Host Service" version 2 from `services`, storing the table in
// the process-wide host-service pointer, and returns the manager's status
// unchanged (0 success; on failure the pointer stays null). When the pointer
// is already set: returns 0 at once and does not call `services` (a second
// initialisation is a no-op). Caller contract: `services` must not be null
// unless the pointer is already set.
TOV_API std::uint32_t Initialize(Halyard::IVServicesManager* services);

// When the host-service pointer is set: calls release-service with the same
// name, version and the pointer's address, then nulls the pointer whatever the
// manager answered. When it is not set: does nothing (`services` is not
// called). Caller contract: `services` must not be null while the pointer is set.
TOV_API void Terminate(Halyard::IVServicesManager* services);

// The folders the host reports, as it reports them (no separator added or
// removed, existence not checked). Each asks its table entry twice: first
// with a null buffer and a count of 0, the host setting the count to the
// units it needs INCLUDING the terminating NUL; then with a buffer of exactly
// that many units and the count raised by one (the extra unit is not there:
// the host must never write more than its first count, deliberately so).
// The text is cut at the first NUL. Without the host service, or when the
// host answers a count of 0 (then no second call is made), the result is "".
// An absurd count makes the buffer allocation fail with std::bad_alloc (the
// size computation saturates, it never wraps).
TOV_API UTF16String CacheFolder();                // entry 14
TOV_API UTF16String CodecsFolder();               // entry 5
TOV_API UTF16String FiltersFolder();              // entry 15
TOV_API UTF16String PostEncoderCommandsFolder();  // entry 16
TOV_API UTF16String ReadersFolder();              // entry 19
TOV_API UTF16String SystemPresetsFolder();        // entry 6
TOV_API UTF16String WritersFolder();              // entry 4

}  // namespace TOV::Paths

// ---------------------------------------------------------------------------
// The cache-folder registrar
// ---------------------------------------------------------------------------
// Gives every (folder, name) pair its own cache file in the host's cache
// folder and remembers the assignment across runs in the file
// "MasterFolderList.xml" there (a property list: one child list per pair,
// holding the file's path under "CacheFile").
//
// Key of a pair: the folder with one trailing '\' removed, then "#" and the
// name when the name is not empty. No case folding: "C:\Media" and
// "C:\Media\" share a key; "c:\media" has its own.
//
// The registry is built on the first RegisterFolder or FindFolder (not by
// Initialize): it asks TOV::Paths::CacheFolder(), creates that folder when it
// is missing, deletes the ".tmp" files directly in it when the list file is
// missing (leftovers of interrupted saves), otherwise loads the list (a list
// that cannot be read is ignored: the registry starts empty). It is saved
// after every new assignment and once more at process exit.
//
// Several processes share one list. Every read-modify-write of the list runs
// under an inter-process lock held on "MasterFolderList.xml.lock" beside it,
// and every save replaces the list atomically (a temporary file, flushed to
// disk, renamed over the list), so a process killed at any moment leaves
// either the old list or the new one. On top of what a single process does:
//   - A save first re-reads the list when another process replaced it since
//     this process last read or wrote it, and writes the union. Entries on
//     disk that this process does not know are kept and adopted.
//   - For a key both hold with different cache files, the one already on disk
//     wins: this process adopts it, and removes its own file if that is still
//     empty. A pair this process has a file for and the disk has none keeps
//     its file.
//   - RegisterFolder for a pair it does not hold decides under the lock, after
//     catching up with the list, so two processes registering the same pair at
//     once get the same file.
//   - FindFolder that misses re-reads the list when it changed on disk, so a
//     pair another process registered since is found. It reads the list (and
//     asks for its version) only under the inter-process lock, as first use
//     does: on Windows a file cannot be replaced while another process has it
//     open, so a reader outside the lock would make a save fail. A process
//     that has never saved does not create the lock file only to look up.
//   - On Windows, a save whose replace is refused because a program outside
//     the library (a virus scanner, the search indexer) has the list open for
//     a moment tries again for about a second before it reports the failure.
//   - The save at exit writes only when this process holds something the file
//     lacks (or there is no file): a process that only looked pairs up never
//     rewrites the list.
//   - A list that exists but cannot be loaded (damaged, truncated, not a
//     property list, a folder in its place, unreadable) is never overwritten:
//     before the first save that would replace it, it is renamed to
//     "MasterFolderList.xml.damaged-<UTC time>" (e.g. ".damaged-20261124T093015Z",
//     then "-2", "-3", ... so that no earlier one is overwritten). Nothing is
//     printed; GetListReport tells.
//   - At first use, temporary files of earlier saves
//     ("MasterFolderList.xml.<process>-<n>.tmp") whose process no longer runs
//     are deleted whether or not the list exists; those of running processes
//     are left alone.
//   - Text the list cannot store exactly (see basalt::proplist::utils::
//     IsStorableText: the control characters U+0001-U+001F other than tab,
//     line feed and carriage return, NUL, U+FFFE, U+FFFF) would come back
//     different after a restart, so the pair would never be found again:
//     RegisterFolder refuses such a folder or name (and a cache folder whose
//     path holds one) with kErrRegistryNoCacheFile, leaving `cacheFile`
//     unchanged, and the report says why. FindFolder simply misses.
//
// Locks: a registrar-wide lock serialises the operations; the registry's own
// lock guards its construction and every save; the inter-process lock comes
// last. The first is always taken before the second.
namespace FolderRegistrar {

// Takes and releases the registrar-wide lock; returns 0. Needs nothing from
// the host and builds nothing.
TOV_API std::uint32_t Initialize();

// Gives the pair's cache file path in `cacheFile` and returns 0:
//   - a pair registered before gets its recorded path back (whether or not
//     the file still exists: it is not checked);
//   - a new pair gets a new empty file from
//     GetAutoFileName(cache folder, "TOVCache", ".vpc"), recorded and saved.
//     The save's outcome does not change the result: 0 even when the list
//     could not be written.
// kErrRegistryNoCacheFile, `cacheFile` unchanged, when no file can be made
// (no cache folder, or it is a file). The pair's child list is created before
// the file is asked for, so after such a failure an empty entry stays in the
// list (it is saved with the next successful registration).
TOV_API std::uint32_t RegisterFolder(const UTF16String& folder, const UTF16String& name,
                                     UTF16String& cacheFile);

// Looks the pair up without creating anything: 0 with the path in
// `cacheFile`, or kErrRegistryNotFound with `cacheFile` unchanged (never
// registered, or an entry without a file).
TOV_API std::uint32_t FindFolder(const UTF16String& folder, const UTF16String& name,
                                 UTF16String& cacheFile);

// Takes and releases the registrar-wide lock and returns 0. Removes NOTHING,
// deliberately: a registration lasts as long as the list file, and FindFolder
// still finds the pair afterwards.
TOV_API std::uint32_t UnRegisterFolder(const UTF16String& folder, const UTF16String& name);

// What happened to the list file in this process, for callers that need more
// than the statuses above (which stay as they are: RegisterFolder answers 0
// even when only its save failed).
struct ListReport {
  // The list file's full path; empty before first use, or without a cache
  // folder (nothing is then ever written).
  UTF16String listFile;
  // The Windows error code of the failed creation when the cache folder did
  // not exist and could not be made at first use (no cache file can then be
  // made); 0 otherwise.
  std::uint32_t cacheFolderSystemError = 0;
  // The latest save: 0 when it wrote the list (or none was tried yet),
  // kErrRegistryNotFound when the list could not be written.
  std::uint32_t saveStatus = 0;
  // The Windows error code of that failed save (112 disk full, 5 access
  // denied, ...; Halyard::Win32ErrorCodeToMessage gives its text), and the
  // failure in words. 0 and empty after a successful save.
  std::uint32_t saveSystemError = 0;
  // The failure of that save in words; empty after a successful save.
  UTF16String saveError;
  // The full path a damaged list was moved to by this process (the latest
  // one); empty when none was set aside.
  UTF16String damagedListSetAside;
  // Why the list read last could not be loaded; empty when it loaded.
  UTF16String damagedReason;
  // Why the latest RegisterFolder refused the pair with
  // kErrRegistryNoCacheFile for text the list cannot store; empty otherwise.
  UTF16String refusal;
};

// The report of this process's registry. Builds nothing: before first use
// every field is empty or 0. Thread-safe.
TOV_API ListReport GetListReport();

}  // namespace FolderRegistrar

// ---------------------------------------------------------------------------
// Metadata
// ---------------------------------------------------------------------------
namespace tovimpl {

// The metadata key "DateModified". No operation of the library reads it.
TOV_API extern const UTF8String kMetadataKeyDateModified;

// A thread-safe text key/value view onto a property list that remembers
// whether it was changed. Keys are converted to UTF-8 and compared exactly
// (case matters: "Title" and "title" are two keys).
//
//   basalt::proplist::PropList list;
//   tovimpl::MetadataList meta(&list);
//   meta.SetValue(u"Title"_u16, u"Clip"_u16);    // 0; IsDirty() true from now on
//   UTF16String title;
//   meta.GetValue(u"Title"_u16, title);          // 0, title == "Clip"
//
// The list is NOT owned and must outlive this object; nobody may change it
// behind this object's back while others use it. A null list is allowed: then
// GetValue and SetValue answer kErrNoMetadata and IsDirty stays false.
// The lock is recursive.
class TOV_API MetadataList {
 public:
  explicit MetadataList(basalt::proplist::PropList* list);
  ~MetadataList();
  MetadataList(const MetadataList&) = delete;
  MetadataList& operator=(const MetadataList&) = delete;

  // 0 with the text under `key` in `value`; kErrNoMetadata, `value` unchanged,
  // when there is no list or no text under the key.
  std::uint32_t GetValue(const UTF16String& key, UTF16String& value) const;
  // Stores `value` under `key`, marks the list dirty and returns 0;
  // kErrNoMetadata (and nothing changes) when there is no list.
  std::uint32_t SetValue(const UTF16String& key, const UTF16String& value);
  // True once any SetValue succeeded. Never cleared by this class.
  bool IsDirty() const;

 private:
  struct State;
  State* mState;
};

// Caller-side function objects of the folder metadata search; the library only
// stores or passes references to them.
class TOV_INTERFACE FolderMetadataGeneratorFunc {
 public:
  virtual ~FolderMetadataGeneratorFunc() = default;
};
class TOV_INTERFACE FileFilterFunc {
 public:
  virtual ~FileFilterFunc() = default;
};

// The interface of a search over a folder's files. In this library the search
// is EMPTY, deliberately: both GetFileList overloads return 0 at once and
// touch nothing, so clients link and run while the search itself comes from
// elsewhere. The constructor keeps its arguments (the second string and the
// flag have no meaning here and are stored unchanged); `generator` must
// outlive the object.
class TOV_API FolderMetadataSearch {
 public:
  FolderMetadataSearch(const UTF16String& folder, const UTF16String& second, bool flag,
                       FolderMetadataGeneratorFunc& generator);
  virtual ~FolderMetadataSearch();
  FolderMetadataSearch(const FolderMetadataSearch&) = delete;
  FolderMetadataSearch& operator=(const FolderMetadataSearch&) = delete;

  // Returns 0; `files` is left as it was.
  std::uint32_t GetFileList(FileFilterFunc& filter, std::vector<UTF16String>& files);

 protected:
  // Returns 0; nothing is touched.
  std::uint32_t GetFileList(const UTF16String& folder, FileFilterFunc& filter,
                            std::vector<UTF16String>& files);

 private:
  class Implementation;
  Implementation* mImpl;
};

}  // namespace tovimpl

// ---------------------------------------------------------------------------
// Platform helpers
// ---------------------------------------------------------------------------
// Thin wrappers with a fixed translation of arguments and results; they never
// throw and keep no state. On POSIX:
//   - a module handle is a dlopen handle, or for a data-only load the address
//     of a read-only mapping of the file with its lowest bit set; a data-only
//     load runs none of the module's code;
//   - a module's "PIPL" resources are the data of its ELF sections named
//     "PIPL" (integer identifiers 1, 2, ... in section order), read from the
//     module's file and valid until the module is unloaded;
//   - identifiers are random version-4 GUIDs from the kernel's random source;
//   - WaitableObject's event is a mutex, a condition variable and a flag.
namespace Halyard {

// A loaded module; null means failure.
using HINSTANCE = void*;

// Loads a module: flags exactly 1 loads it as data only (mapped, no code
// run, no entry points); every other value (2 and 3 included) loads it
// normally. `reserved` is ignored. Null on failure. `fileName` is in the
// system's narrow encoding: the ANSI code page on Windows (as LoadLibraryExA
// takes it), UTF-8 on POSIX.
TOV_API HINSTANCE TOVLoadLibrary(const char* fileName, void* reserved, std::uint32_t flags);
// The same with a NUL-terminated UTF-16 file name.
TOV_API HINSTANCE TOVLoadLibraryW(const unsigned short* fileName, void* reserved,
                                  std::uint32_t flags);
// Unloads one load of the module; true on success (false for null).
TOV_API bool TOVUnloadLibrary(HINSTANCE module);
// The address of an exported entry point, or null (always null for a module
// loaded as data). `name` is the entry point's name as exported (ASCII).
TOV_API void* TOVGetProcAddress(HINSTANCE module, const char* name);

// The module's first resource of type "PIPL", loaded, or null. The type name
// must be exactly "PIPL" (case-sensitive): any other name gives null, even
// when the module has resources of that type, deliberately. The resource is
// looked up by the low 16 bits of its name as an integer identifier. `type`
// is not changed.
TOV_API void* TOVLoadResource(HINSTANCE module, UTF16String& type);
// The resource's bytes (null for null); `module` and `type` are ignored. The
// bytes stay valid until the module is unloaded.
TOV_API void* TOVGetResourceData(HINSTANCE module, void* resource, UTF16String& type);
// Releases a loaded resource (nothing to do on current platforms); the module
// and the data pointer are ignored.
TOV_API void TOVFreeResource(HINSTANCE module, void* resource, void* data);

// Fills *guid with a new identifier: 0; kErrInvalidPointer for null;
// kErrCreateFailed with *guid untouched when none could be made.
TOV_API std::uint32_t VGenerateGUID(_VGUID* guid);

// Results of WaitableObject::WaitForSignal.
enum VWaitResultType : std::int32_t {
  kVWaitSignaled = 0,  // signalled within the time-out
  kVWaitTimedOut = 1,  // the time-out ran out first
  kVWaitFailed = 2,    // anything else (no event)
};

// A one-shot signal between threads: an auto-reset event, non-signalled at
// first. Signal releases one waiter (or the next one to wait), and that
// release resets it; signals do not add up. Any thread may Signal while
// another waits. No thread may be waiting when the object is destroyed.
class TOV_API WaitableObject {
 public:
  WaitableObject();
  ~WaitableObject();
  WaitableObject(const WaitableObject&) = delete;
  WaitableObject& operator=(const WaitableObject&) = delete;

  // Sets the signal: releases one waiter, or the next thread to wait.
  void Signal();
  // Waits at most `milliseconds`, taken as UNSIGNED 32-bit: 0 only looks,
  // -1 waits forever, and other negative values wait very long (-2 is about
  // 49.7 days), as the platform takes them.
  VWaitResultType WaitForSignal(std::int32_t milliseconds);

 private:
  void* mEvent;
};

}  // namespace Halyard
