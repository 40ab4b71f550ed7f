// Folder registrar benchmarks: RegisterFolder of 1,000 and 10,000 new pairs
// (every new pair saves the whole list, so the cost per pair grows with the
// list) and FindFolder on a registry of 10,000 pairs.
//
// On a list of 100,000 pairs (about 15 MB): the first use (loading the list),
// with its peer, the same file read and parsed with pugixml into an
// std::unordered_map of key to cache file; one new registration, its save
// flushed to disk included; and FindFolder of a present pair. The first-use
// case also reports the heap memory the loaded registry holds (registry_MB).
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <pugixml.hpp>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

#include "basalt/proplist.h"
#include "basalt/utf.h"
#include "foundation/registrar_internal.h"
#include "tovfoundation/foundation.h"

namespace {

using namespace basalt::literals;

// A host answering one cache folder.
class BenchHost : public Halyard::IVServicesManager {
 public:
  explicit BenchHost(const std::string& cacheFolder) : mFolder(basalt::UTF8to16(cacheFolder)) {
    for (auto& unit : mFolder) {
      if (unit == '/') unit = '\\';
    }
    sFolder = mFolder;
    for (auto& entry : mTable) entry = reinterpret_cast<void*>(&Cache);
  }
  // Answers this host's folder again (the folder table is shared by every
  // host of the process).
  void Answer() const { sFolder = mFolder; }
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
  static const UTF16String& Folder() { return sFolder; }

 private:
  static std::uint32_t Cache(unsigned short* buffer, std::uint32_t* count) {
    if (buffer == nullptr) {
      *count = static_cast<std::uint32_t>(sFolder.size() + 1);
    } else {
      sFolder.copy(buffer, sFolder.size());
      buffer[sFolder.size()] = 0;
    }
    return 0;
  }
  static inline UTF16String sFolder;
  UTF16String mFolder;
  void* mTable[20] = {};
};

std::string MakeTempFolder() {
  const char* base = std::getenv("TMPDIR");
  std::string pattern = std::string(base != nullptr && *base ? base : "/tmp") + "/tovbench-XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back(0);
  if (::mkdtemp(buffer.data()) == nullptr) std::abort();
  return buffer.data();
}

void RemoveFolder(const std::string& path) {
  if (DIR* dir = ::opendir(path.c_str())) {
    while (dirent* entry = ::readdir(dir)) {
      const std::string name = entry->d_name;
      if (name != "." && name != "..") ::unlink((path + "/" + name).c_str());
    }
    ::closedir(dir);
  }
  ::rmdir(path.c_str());
}

UTF16String PairFolder(int i) {
  return basalt::UTF8to16("C:\\Media\\Project " + std::to_string(i / 100) + "\\Reel " +
                          std::to_string(i % 100));
}

void RegisterNewPairs(benchmark::State& state, int pairs) {
  for (auto _ : state) {
    state.PauseTiming();
    const std::string folder = MakeTempFolder();
    BenchHost host(folder);
    TOVFoundation::Initialize(&host);
    tovimpl::foundation::ResetRegistryForTesting();
    state.ResumeTiming();
    for (int i = 0; i < pairs; ++i) {
      UTF16String file;
      if (FolderRegistrar::RegisterFolder(PairFolder(i), u"Thumbs"_u16, file) != 0) {
        state.SkipWithError("registration failed");
        break;
      }
    }
    state.PauseTiming();
    tovimpl::foundation::ResetRegistryForTesting();
    TOVFoundation::Terminate(&host);
    RemoveFolder(folder);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * pairs);
}

void FindOnRegistry(benchmark::State& state, int pairs) {
  const std::string folder = MakeTempFolder();
  // The list is written directly (registering 10,000 pairs one by one would
  // rewrite it 10,000 times); the first FindFolder loads it.
  basalt::proplist::PropList list;
  for (int i = 0; i < pairs; ++i) {
    list.CreateChild(tovimpl::foundation::RegistrarKey(PairFolder(i), u"Thumbs"_u16))
        .SetString("CacheFile", "C:\\Cache\\TOVCache1_2_" + std::to_string(i) + ".vpc");
  }
  BenchHost host(folder);
  basalt::proplist::utils::SavePropList(BenchHost::Folder() + u"\\MasterFolderList.xml"_u16, list);
  TOVFoundation::Initialize(&host);
  tovimpl::foundation::ResetRegistryForTesting();
  UTF16String file;
  FolderRegistrar::FindFolder(PairFolder(0), u"Thumbs"_u16, file);

  std::vector<UTF16String> keys;
  for (int i = 0; i < pairs; ++i) keys.push_back(PairFolder((i * 7919) % pairs));
  std::size_t next = 0;
  for (auto _ : state) {
    if (FolderRegistrar::FindFolder(keys[next], u"Thumbs"_u16, file) != 0) {
      state.SkipWithError("lookup failed");
      break;
    }
    next = next + 1 == keys.size() ? 0 : next + 1;
  }
  state.SetItemsProcessed(state.iterations());
  tovimpl::foundation::ResetRegistryForTesting();
  TOVFoundation::Terminate(&host);
  RemoveFolder(folder);
}

// --- a list of 100,000 pairs ----------------------------------------------------

constexpr int kLargeList = 100000;

// The cache folder holding the large list, written once.
struct LargeList {
  std::string folder = MakeTempFolder();
  BenchHost host{folder};
  std::string path = folder + "/MasterFolderList.xml";
  LargeList() {
    basalt::proplist::PropList list;
    for (int i = 0; i < kLargeList; ++i) {
      list.CreateChild(tovimpl::foundation::RegistrarKey(PairFolder(i), u"Thumbs"_u16))
          .SetString("CacheFile", basalt::UTF16to8(BenchHost::Folder()) + "\\TOVCache41233_88_" +
                                      std::to_string(1000000 + i) + ".vpc");
    }
    basalt::proplist::utils::SavePropList(BenchHost::Folder() + u"\\MasterFolderList.xml"_u16,
                                          list);
  }
  // Hosts the registrar on this list's folder (the other cases host their
  // own, and repetitions interleave) and drops the registry, so that the next
  // call loads the list.
  void Activate() {
    host.Answer();
    TOVFoundation::Initialize(&host);
    tovimpl::foundation::ResetRegistryForTesting();
  }
  ~LargeList() {
    tovimpl::foundation::ResetRegistryForTesting();
    TOVFoundation::Terminate(&host);
    RemoveFolder(folder);
  }
};

// Made on first use and removed at the end of main, before the library's own
// process-wide objects go.
std::unique_ptr<LargeList> gLarge;
LargeList& Large() {
  if (!gLarge) gLarge = std::make_unique<LargeList>();
  return *gLarge;
}

// The heap bytes in use, in MB: what the registry holds once loaded,
// whatever the allocator keeps cached from earlier iterations.
double HeapInUseMB() { return static_cast<double>(::mallinfo2().uordblks) / 1e6; }

void RegistryFirstUse(benchmark::State& state) {
  double added = 0;
  for (auto _ : state) {
    state.PauseTiming();
    Large().Activate();
    const double before = HeapInUseMB();
    UTF16String file;
    state.ResumeTiming();
    if (FolderRegistrar::FindFolder(PairFolder(kLargeList - 1), u"Thumbs"_u16, file) != 0) {
      state.SkipWithError("lookup failed");
      break;
    }
    state.PauseTiming();
    added = HeapInUseMB() - before;
    state.ResumeTiming();
  }
  state.counters["registry_MB"] = added;
}

void PeerFirstUse(benchmark::State& state) {
  const std::string path = Large().path;
  for (auto _ : state) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    std::string text = bytes.str();
    pugi::xml_document document;
    if (!document.load_buffer_inplace(text.data(), text.size())) {
      state.SkipWithError("parse failed");
      break;
    }
    std::unordered_map<std::string, std::string> map;
    const pugi::xml_node dict = document.child("plist").child("dict");
    for (pugi::xml_node key = dict.child("key"); key; key = key.next_sibling("key")) {
      const pugi::xml_node value = key.next_sibling();
      map.emplace(key.child_value(), value.child("string").child_value());
    }
    benchmark::DoNotOptimize(map.size());
  }
}

void RegisterOneIntoLarge(benchmark::State& state) {
  Large().Activate();
  UTF16String file;
  FolderRegistrar::FindFolder(PairFolder(0), u"Thumbs"_u16, file);
  // New pairs in every repetition.
  static int next = kLargeList;
  for (auto _ : state) {
    if (FolderRegistrar::RegisterFolder(PairFolder(next++), u"Thumbs"_u16, file) != 0 ||
        FolderRegistrar::GetListReport().saveStatus != 0) {
      state.SkipWithError("registration failed");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations());
}

void FindInLarge(benchmark::State& state) {
  Large().Activate();
  UTF16String file;
  FolderRegistrar::FindFolder(PairFolder(0), u"Thumbs"_u16, file);
  std::vector<UTF16String> keys;
  for (int i = 0; i < 4096; ++i) keys.push_back(PairFolder((i * 7919) % kLargeList));
  std::size_t next = 0;
  for (auto _ : state) {
    if (FolderRegistrar::FindFolder(keys[next], u"Thumbs"_u16, file) != 0) {
      state.SkipWithError("lookup failed");
      break;
    }
    next = (next + 1) & 4095;
  }
  state.SetItemsProcessed(state.iterations());
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::RegisterBenchmark("tov/registry_first_use/100k", RegistryFirstUse)
      ->Iterations(5)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
  benchmark::RegisterBenchmark("peer/registry_first_use/100k", PeerFirstUse)
      ->Iterations(5)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
  benchmark::RegisterBenchmark("tov/register_one/100k", RegisterOneIntoLarge)
      ->Iterations(10)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
  benchmark::RegisterBenchmark("tov/find_folder/100k", FindInLarge);
  for (int pairs : {1000, 10000}) {
    benchmark::RegisterBenchmark(
        ("tov/register_folder/" + std::to_string(pairs)).c_str(),
        [pairs](benchmark::State& state) { RegisterNewPairs(state, pairs); })
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
  }
  benchmark::RegisterBenchmark("tov/find_folder/10000",
                               [](benchmark::State& state) { FindOnRegistry(state, 10000); });
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  gLarge.reset();
  benchmark::Shutdown();
  return 0;
}
