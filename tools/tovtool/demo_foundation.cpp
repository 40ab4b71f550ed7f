// tovtool demo: foundation services — the host's folders, the cache-folder
// registrar and its list file, metadata lists, identifiers and signals.
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <ostream>
#include <random>
#include <sstream>
#include <thread>

#include "tool.h"
#include "tovfoundation/tovfoundation.h"

namespace {

using namespace basalt::literals;

// A host that answers every folder query with a folder below `root`.
class DemoHost : public Halyard::IVServicesManager {
 public:
  explicit DemoHost(const UTF16String& root) {
    sRoot = root;
    mTable[TOV::Paths::kCacheFolderEntry] = reinterpret_cast<void*>(&Cache);
    mTable[TOV::Paths::kCodecsFolderEntry] = reinterpret_cast<void*>(&Codecs);
  }
  std::uint32_t QueryInterface(const Halyard::_VGUID&, void** out) override {
    *out = nullptr;
    return TOV::kErrNoInterface;
  }
  std::uint32_t AddRef() override { return 1; }
  std::uint32_t Release() override { return 1; }
  std::uint32_t AcquireService(const char*, std::uint32_t, void** service) override {
    *service = mTable;
    return 0;
  }
  std::uint32_t ReleaseService(const char*, std::uint32_t, void**) override { return 0; }

 private:
  static std::uint32_t Answer(const UTF16String& text, unsigned short* buffer,
                              std::uint32_t* count) {
    if (buffer == nullptr) {
      *count = static_cast<std::uint32_t>(text.size() + 1);
    } else {
      text.copy(buffer, text.size());
      buffer[text.size()] = 0;
    }
    return 0;
  }
  static std::uint32_t Cache(unsigned short* b, std::uint32_t* c) {
    return Answer(sRoot + u"\\Cache"_u16, b, c);
  }
  static std::uint32_t Codecs(unsigned short* b, std::uint32_t* c) {
    return Answer(sRoot + u"\\Codecs"_u16, b, c);
  }
  static std::uint32_t Nothing(unsigned short*, std::uint32_t* c) {
    *c = 0;
    return 0;
  }
  static inline UTF16String sRoot;
  void* mTable[20] = {reinterpret_cast<void*>(&Nothing), reinterpret_cast<void*>(&Nothing),
                      reinterpret_cast<void*>(&Nothing), reinterpret_cast<void*>(&Nothing),
                      reinterpret_cast<void*>(&Nothing), reinterpret_cast<void*>(&Nothing),
                      reinterpret_cast<void*>(&Nothing), reinterpret_cast<void*>(&Nothing),
                      reinterpret_cast<void*>(&Nothing), reinterpret_cast<void*>(&Nothing),
                      reinterpret_cast<void*>(&Nothing), reinterpret_cast<void*>(&Nothing),
                      reinterpret_cast<void*>(&Nothing), reinterpret_cast<void*>(&Nothing),
                      reinterpret_cast<void*>(&Nothing), reinterpret_cast<void*>(&Nothing),
                      reinterpret_cast<void*>(&Nothing), reinterpret_cast<void*>(&Nothing),
                      reinterpret_cast<void*>(&Nothing), reinterpret_cast<void*>(&Nothing)};
};

std::string Text(const UTF16String& text) { return basalt::UTF16to8(text); }

void DemoFoundation(std::ostream& out) {
  namespace fs = std::filesystem;
  std::random_device seed;
  const fs::path root =
      fs::temp_directory_path() / ("tovtool-demo-" + std::to_string(seed() % 1000000000u));
  fs::create_directories(root);
  UTF16String libraryRoot = basalt::UTF8to16(root.string());
  for (auto& unit : libraryRoot) {
    if (unit == '/') unit = '\\';
  }

  DemoHost host(libraryRoot);
  out << "TOVFoundation::Initialize = " << TOVFoundation::Initialize(&host) << '\n';
  out << "host cache folder: " << Text(TOV::Paths::CacheFolder()) << '\n';
  out << "host codecs folder: " << Text(TOV::Paths::CodecsFolder()) << '\n';
  out << "host readers folder (not answered): \"" << Text(TOV::Paths::ReadersFolder()) << "\"\n";

  UTF16String thumbs, again, waves, found;
  FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"Thumbs"_u16, thumbs);
  FolderRegistrar::RegisterFolder(u"C:\\Media\\"_u16, u"Thumbs"_u16, again);
  FolderRegistrar::RegisterFolder(u"C:\\Media"_u16, u"Waveforms"_u16, waves);
  out << "register C:\\Media + Thumbs   -> " << Text(thumbs) << '\n';
  out << "register C:\\Media\\ + Thumbs  -> " << Text(again) << " (same key)\n";
  out << "register C:\\Media + Waveforms -> " << Text(waves) << '\n';
  const std::uint32_t missing = FolderRegistrar::FindFolder(u"D:\\New"_u16, u"x"_u16, found);
  out << "find D:\\New + x = 0x" << std::hex << std::uppercase << missing << std::dec
      << " (kErrRegistryNotFound)\n";
  std::ifstream list(root / "Cache" / "MasterFolderList.xml");
  std::stringstream listText;
  listText << list.rdbuf();
  out << "MasterFolderList.xml:\n" << listText.str();

  basalt::proplist::PropList properties;
  tovimpl::MetadataList meta(&properties);
  out << "metadata dirty before: " << meta.IsDirty();
  meta.SetValue(u"Title"_u16, u"Clip 1"_u16);
  UTF16String title;
  meta.GetValue(u"Title"_u16, title);
  out << ", after SetValue: " << meta.IsDirty() << ", Title = " << Text(title) << '\n';

  Halyard::_VGUID id{};
  Halyard::VGenerateGUID(&id);
  out << "a new identifier: " << std::hex << std::uppercase << std::setfill('0') << std::setw(8)
      << id.Data1 << '-' << std::setw(4) << id.Data2 << '-' << std::setw(4) << id.Data3 << '-';
  for (int i = 0; i < 8; ++i) {
    out << std::setw(2) << static_cast<int>(id.Data4[i]);
    if (i == 1) out << '-';
  }
  out << std::dec << std::setfill(' ') << '\n';

  Halyard::WaitableObject ready;
  std::thread worker([&ready] {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ready.Signal();
  });
  const auto signalled = ready.WaitForSignal(2000);
  worker.join();
  out << "signal from a worker thread: "
      << (signalled == Halyard::kVWaitSignaled ? "signalled" : "not seen")
      << "; waiting again with 0: "
      << (ready.WaitForSignal(0) == Halyard::kVWaitTimedOut ? "timed out" : "signalled") << '\n';

  TOVFoundation::Terminate(&host);
  // The registry is saved once more when the process ends; the demo's files
  // go now, so the list is written back into a folder that no longer exists
  // and that last save fails quietly.
  std::error_code ignored;
  fs::remove_all(root, ignored);
}

TOVTOOL_DEMO_SECTION({60, "Foundation services: host folders, cache registrar, metadata, signals",
                      DemoFoundation});

}  // namespace
