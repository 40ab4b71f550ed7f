// Recursive filtered listing of a generated tree of 100,000 files (100
// folders of 10 subfolders of 100 files; nine in ten end in ".dat"), by the
// library's Folder listing and by find(1) run as a subprocess on the same
// tree in the same run: `find ROOT -type f -name '*.dat'` with its output
// sent to /dev/null. Both cases count the 100,000 files examined as items and
// are timed by the wall clock (the subprocess's CPU time is not the parent's).
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "basalt/utf.h"
#include "tovfoundation/files.h"

extern char** environ;

namespace {

constexpr int kTop = 100;
constexpr int kSub = 10;
constexpr int kFiles = 100;
constexpr std::int64_t kTotal = static_cast<std::int64_t>(kTop) * kSub * kFiles;

// The generated tree, made once and removed at exit.
class Tree {
 public:
  Tree() {
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern =
        std::string(tmp != nullptr && tmp[0] != 0 ? tmp : "/tmp") + "/tovfiles-bench-XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back(0);
    if (::mkdtemp(buffer.data()) == nullptr) std::abort();
    mRoot = buffer.data();
    for (int t = 0; t < kTop; ++t) {
      const std::string top = mRoot + "/d" + std::to_string(t);
      ::mkdir(top.c_str(), 0755);
      for (int s = 0; s < kSub; ++s) {
        const std::string sub = top + "/s" + std::to_string(s);
        ::mkdir(sub.c_str(), 0755);
        for (int f = 0; f < kFiles; ++f) {
          const std::string file =
              sub + "/clip" + std::to_string(f) + (f % 10 == 9 ? ".txt" : ".dat");
          const int fd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
          if (fd >= 0) ::close(fd);
        }
      }
    }
  }
  ~Tree() {
    std::error_code ignored;
    std::filesystem::remove_all(mRoot, ignored);
  }
  const std::string& Root() const { return mRoot; }

 private:
  std::string mRoot;
};

const Tree& TheTree() {
  static const Tree tree;
  return tree;
}

void TovListingRecursive(benchmark::State& state) {
  const UTF16String root = basalt::UTF8to16(TheTree().Root());
  const auto folder = Halyard::FileUtils::Folder::CreateFolderObject(root);
  std::size_t found = 0;
  for (auto _ : state) {
    Halyard::FileUtils::FileNameList files;
    Halyard::FileUtils::FolderList folders;
    folder.GetContainedFileAndFolderList(nullptr, ".dat", files, folders, 1);
    found = files.size();
    benchmark::DoNotOptimize(files.data());
  }
  if (found != static_cast<std::size_t>(kTotal / 10 * 9)) state.SkipWithError("wrong count");
  state.SetItemsProcessed(state.iterations() * kTotal);
}

void PeerListingRecursive(benchmark::State& state) {
  const std::string root = TheTree().Root();
  for (auto _ : state) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    std::vector<std::string> argv = {"find", root, "-type", "f", "-name", "*.dat"};
    std::vector<char*> args;
    for (auto& a : argv) args.push_back(a.data());
    args.push_back(nullptr);
    pid_t pid = 0;
    if (posix_spawnp(&pid, "find", &actions, nullptr, args.data(), environ) != 0) {
      state.SkipWithError("find could not be started");
      posix_spawn_file_actions_destroy(&actions);
      break;
    }
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    ::waitpid(pid, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) state.SkipWithError("find failed");
  }
  state.SetItemsProcessed(state.iterations() * kTotal);
}

BENCHMARK(TovListingRecursive)
    ->Name("tov/listing_recursive/100k")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(PeerListingRecursive)
    ->Name("peer/listing_recursive/100k")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
