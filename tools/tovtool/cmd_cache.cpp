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
  const FolderRegistrar::ListReport report = FolderRegistrar::GetListReport();
  TOVFoundation::Terminate(&host);
  const auto text = [](const UTF16String& wide) { return basalt::UTF16to8(wide); };
  const auto osText = [](std::uint32_t code) {
    std::string message = basalt::UTF16to8(Halyard::Win32ErrorCodeToMessage(code));
    while (!message.empty() && (message.back() == '\n' || message.back() == '\r')) {
      message.pop_back();
    }
    return message + " (error " + std::to_string(code) + ")";
  };
  const std::string listFile = text(Halyard::PathUtilities::ToPlatformPath(report.listFile));

  // What happened to the list, whatever the outcome of the operation.
  if (!report.damagedListSetAside.empty()) {
    std::cerr << "tovtool cache: warning: " << listFile << " could not be read ("
              << text(report.damagedReason) << "); it was set aside as "
              << text(Halyard::PathUtilities::ToPlatformPath(report.damagedListSetAside))
              << " and a new list was started\n";
  } else if (!report.damagedReason.empty()) {
    std::cerr << "tovtool cache: warning: " << listFile << " could not be read ("
              << text(report.damagedReason) << "); it is left as it is\n";
  }
  if (status == TOV::kErrRegistryNotFound) {
    std::cerr << "tovtool cache: no cache file is registered for that folder and name\n";
    return 1;
  }
  if (status != 0) {
    std::cerr << "tovtool cache: " << (registering ? "registration" : "lookup") << " failed ("
              << Hex(status) << "): ";
    if (!report.refusal.empty()) {
      std::cerr << text(report.refusal) << '\n';
    } else if (report.cacheFolderSystemError != 0) {
      std::cerr << "the cache folder " << *cacheFolder
                << " cannot be created: " << osText(report.cacheFolderSystemError) << '\n';
    } else if (report.listFile.empty()) {
      std::cerr << "there is no cache folder\n";
    } else {
      std::cerr << "no cache file can be made in " << *cacheFolder
                << " (is it a folder you can write to?)\n";
    }
    return 1;
  }
  if (report.saveStatus != 0) {
    std::cerr << "tovtool cache: the list " << listFile
              << " could not be saved: " << osText(report.saveSystemError)
              << "; the registration is not recorded\n";
    return 1;
  }
  std::cout << text(Halyard::PathUtilities::ToPlatformPath(cacheFile)) << '\n';
  return 0;
}

TOVTOOL_COMMAND({"cache", "give a folder and name their cache file, or look it up",
                 "tovtool cache register|find FOLDER NAME [--cache-folder DIR]\n"
                 "  register  prints the pair's cache file, making one the first time\n"
                 "  find      prints the pair's cache file, or fails (exit 1) when none\n"
                 "The cache folder holds MasterFolderList.xml and the cache files; it comes\n"
                 "from --cache-folder or the environment variable TOVTOOL_CACHE_FOLDER.\n"
                 "FOLDER and NAME are keys: \"C:\\Media\" and \"C:\\Media\\\" are the same,\n"
                 "\"c:\\media\" is not. The cache file's path is the last line printed.\n"
                 "Exit status: 0 done; 1 failed (no such pair, the cache folder cannot be\n"
                 "made, the list cannot be saved: the reason goes to stderr); 2 bad usage.\n"
                 "A damaged list is set aside under a new name (a warning says which)\n"
                 "before a registration replaces it.",
                 RunCache});

}  // namespace

}  // namespace tovtool
