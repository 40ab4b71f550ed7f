// tovtool cache: the cache-folder registrar from the command line. The tool
// plays the host: it answers the library's folder queries, the cache folder
// being --cache-folder or the environment variable TOVTOOL_CACHE_FOLDER.
#include <cstdlib>
#include <iostream>
#include <string>

#include "tool.h"
#include "tovfoundation/tovfoundation.h"

namespace tovtool {

namespace {

// A host service whose folder table answers one folder for the cache entry
// and nothing for every other entry.
class ToolHost : public Halyard::IVServicesManager {
 public:
  explicit ToolHost(const std::string& cacheFolder) {
    UTF16String folder = basalt::UTF8to16(cacheFolder);
    for (auto& unit : folder) {
      if (unit == '/') unit = '\\';  // the library spells paths with backslashes
    }
    sCacheFolder = folder;
    for (auto& entry : mTable) entry = reinterpret_cast<void*>(&NoFolder);
    mTable[TOV::Paths::kCacheFolderEntry] = reinterpret_cast<void*>(&CacheEntry);
  }

  std::uint32_t QueryInterface(const Halyard::_VGUID&, void** out) override {
    if (out != nullptr) *out = nullptr;
    return TOV::kErrNoInterface;
  }
  std::uint32_t AddRef() override { return 1; }
  std::uint32_t Release() override { return 1; }
  std::uint32_t AcquireService(const char* name, std::uint32_t version, void** service) override {
    if (std::string(name) != TOV::Paths::kHostServiceName ||
        version != TOV::Paths::kHostServiceVersion) {
      return TOV::kErrNotFound;
    }
    *service = mTable;
    return 0;
  }
  std::uint32_t ReleaseService(const char*, std::uint32_t, void**) override { return 0; }

 private:
  // The host's side of the two-call protocol: the first call learns the
  // units needed, NUL included; the second gets the text.
  static std::uint32_t CacheEntry(unsigned short* buffer, std::uint32_t* count) {
    const auto needed = static_cast<std::uint32_t>(sCacheFolder.size() + 1);
    if (buffer == nullptr) {
      *count = needed;
      return 0;
    }
    if (*count < needed) return 1;
    sCacheFolder.copy(buffer, sCacheFolder.size());
    buffer[sCacheFolder.size()] = 0;
    return 0;
  }
  static std::uint32_t NoFolder(unsigned short*, std::uint32_t* count) {
    *count = 0;
    return 0;
  }

  static inline UTF16String sCacheFolder;
  void* mTable[20] = {};
};

std::string Hex(std::uint32_t status) {
  const char* digits = "0123456789ABCDEF";
  std::string text = "0x";
  for (int shift = 28; shift >= 0; shift -= 4) text += digits[(status >> shift) & 0xF];
  return text;
}

int RunCache(const Args& input) {
  Args args = input;
  std::optional<std::string> cacheFolder = TakeOption(args, "cache-folder");
  RejectUnknownOptions(args);
  if (args.size() != 3 || (args[0] != "register" && args[0] != "find")) {
    throw UsageError("expected 'register' or 'find', a folder and a name");
  }
  if (!cacheFolder) {
    if (const char* fromEnv = std::getenv("TOVTOOL_CACHE_FOLDER"); fromEnv != nullptr && *fromEnv) {
      cacheFolder = fromEnv;
    }
  }
  if (!cacheFolder)
    throw UsageError("no cache folder: give --cache-folder or set TOVTOOL_CACHE_FOLDER");

  ToolHost host(*cacheFolder);
  TOVFoundation::Initialize(&host);
  const UTF16String folder = basalt::UTF8to16(args[1]);
  const UTF16String name = basalt::UTF8to16(args[2]);
  UTF16String cacheFile;
  const bool registering = args[0] == "register";
  const std::uint32_t status = registering
                                   ? FolderRegistrar::RegisterFolder(folder, name, cacheFile)
                                   : FolderRegistrar::FindFolder(folder, name, cacheFile);
  TOVFoundation::Terminate(&host);
  if (status == TOV::kErrRegistryNotFound) {
    std::cerr << "tovtool cache: no cache file is registered for that folder and name\n";
    return 1;
  }
  if (status != 0) {
    std::cerr << "tovtool cache: " << (registering ? "registration" : "lookup") << " failed ("
              << Hex(status) << ")\n";
    return 1;
  }
  std::cout << basalt::UTF16to8(Halyard::PathUtilities::ToPlatformPath(cacheFile)) << '\n';
  return 0;
}

TOVTOOL_COMMAND({"cache", "give a folder and name their cache file, or look it up",
                 "tovtool cache register|find FOLDER NAME [--cache-folder DIR]\n"
                 "  register  prints the pair's cache file, making one the first time\n"
                 "  find      prints the pair's cache file, or fails (exit 1) when none\n"
                 "The cache folder holds MasterFolderList.xml and the cache files; it comes\n"
                 "from --cache-folder or the environment variable TOVTOOL_CACHE_FOLDER.\n"
                 "FOLDER and NAME are keys: \"C:\\Media\" and \"C:\\Media\\\" are the same,\n"
                 "\"c:\\media\" is not. The cache file's path is the last line printed.",
                 RunCache});

}  // namespace

}  // namespace tovtool
