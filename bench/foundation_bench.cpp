// Folder registrar benchmarks: RegisterFolder of 1,000 and 10,000 new pairs
// (every new pair saves the whole list, so the cost per pair grows with the
// list) and FindFolder on a registry of 10,000 pairs.
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
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
  explicit BenchHost(const std::string& cacheFolder) {
    sFolder = basalt::UTF8to16(cacheFolder);
    for (auto& unit : sFolder) {
      if (unit == '/') unit = '\\';
    }
    for (auto& entry : mTable) entry = reinterpret_cast<void*>(&Cache);
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
    tov::foundation::ResetRegistryForTesting();
    state.ResumeTiming();
    for (int i = 0; i < pairs; ++i) {
      UTF16String file;
      if (FolderRegistrar::RegisterFolder(PairFolder(i), u"Thumbs"_u16, file) != 0) {
        state.SkipWithError("registration failed");
        break;
      }
    }
    state.PauseTiming();
    tov::foundation::ResetRegistryForTesting();
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
    list.CreateChild(tov::foundation::RegistrarKey(PairFolder(i), u"Thumbs"_u16))
        .SetString("CacheFile", "C:\\Cache\\TOVCache1_2_" + std::to_string(i) + ".vpc");
  }
  BenchHost host(folder);
  basalt::proplist::utils::SavePropList(BenchHost::Folder() + u"\\MasterFolderList.xml"_u16, list);
  TOVFoundation::Initialize(&host);
  tov::foundation::ResetRegistryForTesting();
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
  tov::foundation::ResetRegistryForTesting();
  TOVFoundation::Terminate(&host);
  RemoveFolder(folder);
}

}  // namespace

int main(int argc, char** argv) {
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
  benchmark::Shutdown();
  return 0;
}
