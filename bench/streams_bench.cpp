// Ports and byte streams: bulk transfers of 1 MiB and loops of 4-byte values,
// over memory and over a file, next to the plain ways of doing the same work.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "basalt/utf.h"
#include "tovfoundation/streams.h"

namespace {

constexpr std::uint32_t kMiB = 1u << 20;
constexpr std::uint32_t kInts = 1u << 16;  // 256 KiB of 4-byte values per iteration
constexpr std::uint32_t kBuffer = 4096;    // the buffer CFileSpec streams use

// A scratch folder for the file cases, removed at exit.
class Scratch {
 public:
  Scratch() {
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp != nullptr ? tmp : "/tmp") + "/tov-bench-XXXXXX";
    if (::mkdtemp(pattern.data()) != nullptr) mPath = pattern;
  }
  ~Scratch() {
    std::error_code ignored;
    if (!mPath.empty()) std::filesystem::remove_all(mPath, ignored);
  }
  std::string File(const char* name) const { return mPath + "/" + name; }

 private:
  std::string mPath;
};

const Scratch& TheScratch() {
  static Scratch scratch;
  return scratch;
}

std::vector<unsigned char> Pattern(std::size_t n) {
  std::vector<unsigned char> bytes(n);
  for (std::size_t i = 0; i < n; ++i) bytes[i] = static_cast<unsigned char>(i * 131 + 7);
  return bytes;
}

std::string MakeFile(const char* name, std::size_t n) {
  const std::string path = TheScratch().File(name);
  const auto bytes = Pattern(n);
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(n));
  return path;
}

UTF16String Wide(const std::string& path) { return basalt::UTF8to16(path); }

// Opens a file port for a case, or marks the case skipped and returns false.
bool OpenPort(Halyard::CFilePort& port, const std::string& path, benchmark::State& state) {
  if (port.Open(Wide(path).c_str()) == 0) return true;
  state.SkipWithError("open failed");
  return false;
}

// --- bulk over RAM ---------------------------------------------------------------

void TovBulkReadRam(benchmark::State& state) {
  auto source = Pattern(kMiB);
  std::vector<unsigned char> target(kMiB);
  Halyard::CStaticRamFilePort port(source.data(), kMiB, Halyard::kAccessRead, 0);
  Halyard::CReadStream stream(port, Halyard::kHaldLittleEndian, kBuffer, 0, 0);
  for (auto _ : state) {
    stream.SetPos(0);
    stream.Read(kMiB, target.data());
    benchmark::DoNotOptimize(target.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kMiB);
}
BENCHMARK(TovBulkReadRam)->Name("tov/bulk_read_ram/1MiB");

void PeerBulkReadRam(benchmark::State& state) {
  auto source = Pattern(kMiB);
  std::vector<unsigned char> target(kMiB);
  for (auto _ : state) {
    std::memcpy(target.data(), source.data(), kMiB);
    benchmark::DoNotOptimize(target.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kMiB);
}
BENCHMARK(PeerBulkReadRam)->Name("peer/bulk_read_ram/1MiB");

void TovBulkWriteRam(benchmark::State& state) {
  auto source = Pattern(kMiB);
  std::vector<unsigned char> target(kMiB);
  Halyard::CStaticRamFilePort port(target.data(), kMiB, Halyard::kAccessReadWrite, 0);
  Halyard::CWriteStream stream(port, Halyard::kHaldLittleEndian, kBuffer, 0, 0);
  for (auto _ : state) {
    stream.SetPos(0);
    stream.Write(kMiB, source.data());
    benchmark::DoNotOptimize(target.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kMiB);
}
BENCHMARK(TovBulkWriteRam)->Name("tov/bulk_write_ram/1MiB");

void PeerBulkWriteRam(benchmark::State& state) {
  auto source = Pattern(kMiB);
  std::vector<unsigned char> target(kMiB);
  for (auto _ : state) {
    std::memcpy(target.data(), source.data(), kMiB);
    benchmark::DoNotOptimize(target.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kMiB);
}
BENCHMARK(PeerBulkWriteRam)->Name("peer/bulk_write_ram/1MiB");

// --- bulk over a file --------------------------------------------------------------

void TovBulkReadFile(benchmark::State& state) {
  const std::string path = MakeFile("bulk_read.bin", kMiB);
  std::vector<unsigned char> target(kMiB);
  Halyard::CFilePort port(Halyard::kAccessRead, 0);
  if (!OpenPort(port, path, state)) return;
  Halyard::CReadStream stream(port, Halyard::kHaldLittleEndian, kBuffer, 0, 1);
  for (auto _ : state) {
    stream.SetPos(0);
    stream.Read(kMiB, target.data());
    benchmark::DoNotOptimize(target.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kMiB);
}
BENCHMARK(TovBulkReadFile)->Name("tov/bulk_read_file/1MiB");

void PeerBulkReadFile(benchmark::State& state) {
  const std::string path = MakeFile("bulk_read_peer.bin", kMiB);
  std::vector<unsigned char> target(kMiB);
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  for (auto _ : state) {
    ::lseek(fd, 0, SEEK_SET);
    benchmark::DoNotOptimize(::read(fd, target.data(), kMiB));
  }
  ::close(fd);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kMiB);
}
BENCHMARK(PeerBulkReadFile)->Name("peer/bulk_read_file/1MiB");

// The file cases overwrite a file that one 1 MiB write created. How a file's
// pages were first written decides how the page cache holds them (a file first
// written in one large write gets large folios), and that alone moves the cost
// of every later overwrite by 10-15 %. So both sides start from a file laid out
// the same way and measure only their own writes; writing a new file, layout
// included, is the bulk_write_new_file case below.
void TovBulkWriteFile(benchmark::State& state) {
  const auto source = Pattern(kMiB);
  const std::string path = MakeFile("bulk_write.bin", kMiB);
  Halyard::CFilePort port(Halyard::kAccessReadWrite, 0);
  if (!OpenPort(port, path, state)) return;
  Halyard::CWriteStream stream(port, Halyard::kHaldLittleEndian, kBuffer, 0, 1);
  for (auto _ : state) {
    stream.SetPos(0);
    stream.Write(kMiB, source.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kMiB);
}
BENCHMARK(TovBulkWriteFile)->Name("tov/bulk_write_file/1MiB");

void PeerBulkWriteFile(benchmark::State& state) {
  const auto source = Pattern(kMiB);
  const std::string path = MakeFile("bulk_write_peer.bin", kMiB);
  const int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
  for (auto _ : state) {
    ::lseek(fd, 0, SEEK_SET);
    benchmark::DoNotOptimize(::write(fd, source.data(), kMiB));
  }
  ::close(fd);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kMiB);
}
BENCHMARK(PeerBulkWriteFile)->Name("peer/bulk_write_file/1MiB");

// A 1 MiB Write on an empty stream buffer reaches the file as two writes: the
// buffer filled and flushed (4 KiB), then the rest straight from the caller.
// The peer here makes those same two system calls, which shows what the split
// itself costs in the kernel against the single write above.
BENCHMARK(TovBulkWriteFile)->Name("tov/bulk_write_file_split/1MiB");

void PeerBulkWriteFileSplit(benchmark::State& state) {
  const auto source = Pattern(kMiB);
  std::vector<unsigned char> buffer(kBuffer);
  const std::string path = MakeFile("bulk_write_split_peer.bin", kMiB);
  const int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
  for (auto _ : state) {
    std::memcpy(buffer.data(), source.data(), kBuffer);
    benchmark::DoNotOptimize(::pwrite(fd, buffer.data(), kBuffer, 0));
    benchmark::DoNotOptimize(::pwrite(fd, source.data() + kBuffer, kMiB - kBuffer, kBuffer));
  }
  ::close(fd);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kMiB);
}
BENCHMARK(PeerBulkWriteFileSplit)->Name("peer/bulk_write_file_split/1MiB");

// A new 16 MiB file written in 1 MiB writes, as an encoder writes its output:
// every write allocates its pages, so the layout each side's writes give the
// page cache is part of what is measured. The truncation that empties the file
// before each pass is not timed.
constexpr std::uint32_t kNewFileMiB = 16;

void TovBulkWriteNewFile(benchmark::State& state) {
  const auto source = Pattern(kMiB);
  Halyard::CFilePort port(Halyard::kAccessWrite, 0);
  if (!OpenPort(port, TheScratch().File("bulk_write_new.bin"), state)) return;
  Halyard::CWriteStream stream(port, Halyard::kHaldLittleEndian, kBuffer, 0, 1);
  for (auto _ : state) {
    state.PauseTiming();
    port.Size(0);
    state.ResumeTiming();
    stream.SetPos(0);
    for (std::uint32_t i = 0; i < kNewFileMiB; ++i) stream.Write(kMiB, source.data());
    stream.Flush(0);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kNewFileMiB * kMiB);
}
BENCHMARK(TovBulkWriteNewFile)->Name("tov/bulk_write_new_file/16MiB");

void PeerBulkWriteNewFile(benchmark::State& state) {
  const auto source = Pattern(kMiB);
  const std::string path = TheScratch().File("bulk_write_new_peer.bin");
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  for (auto _ : state) {
    state.PauseTiming();
    benchmark::DoNotOptimize(::ftruncate(fd, 0));
    state.ResumeTiming();
    ::lseek(fd, 0, SEEK_SET);
    for (std::uint32_t i = 0; i < kNewFileMiB; ++i) {
      benchmark::DoNotOptimize(::write(fd, source.data(), kMiB));
    }
  }
  ::close(fd);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kNewFileMiB * kMiB);
}
BENCHMARK(PeerBulkWriteNewFile)->Name("peer/bulk_write_new_file/16MiB");

// The same new file written as the stream's port receives it: per MiB, the
// buffer's 4 KiB, then the rest straight from the caller.
BENCHMARK(TovBulkWriteNewFile)->Name("tov/bulk_write_new_file_split/16MiB");

void PeerBulkWriteNewFileSplit(benchmark::State& state) {
  const auto source = Pattern(kMiB);
  std::vector<unsigned char> buffer(kBuffer);
  const std::string path = TheScratch().File("bulk_write_new_split_peer.bin");
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  for (auto _ : state) {
    state.PauseTiming();
    benchmark::DoNotOptimize(::ftruncate(fd, 0));
    state.ResumeTiming();
    for (std::uint32_t i = 0; i < kNewFileMiB; ++i) {
      const off_t at = static_cast<off_t>(i) * kMiB;
      std::memcpy(buffer.data(), source.data(), kBuffer);
      benchmark::DoNotOptimize(::pwrite(fd, buffer.data(), kBuffer, at));
      benchmark::DoNotOptimize(::pwrite(fd, source.data() + kBuffer, kMiB - kBuffer, at + kBuffer));
    }
  }
  ::close(fd);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kNewFileMiB * kMiB);
}
BENCHMARK(PeerBulkWriteNewFileSplit)->Name("peer/bulk_write_new_file_split/16MiB");

// --- 4-byte values over RAM -----------------------------------------------------------

void TovReadIntRam(benchmark::State& state) {
  auto source = Pattern(kInts * 4);
  Halyard::CStaticRamFilePort port(source.data(), kInts * 4, Halyard::kAccessRead, 0);
  Halyard::CReadStream stream(port, Halyard::kHaldLittleEndian, kBuffer, 0, 0);
  for (auto _ : state) {
    stream.SetPos(0);
    std::int32_t sum = 0;
    for (std::uint32_t i = 0; i < kInts; ++i) {
      std::int32_t value = 0;
      stream.ReadInt(&value);
      sum += value;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kInts * 4);
}
BENCHMARK(TovReadIntRam)->Name("tov/readint_ram/4B");

void PeerReadIntRam(benchmark::State& state) {
  const auto source = Pattern(kInts * 4);
  std::istringstream in(std::string(source.begin(), source.end()), std::ios::binary);
  for (auto _ : state) {
    in.clear();
    in.seekg(0);
    std::int32_t sum = 0;
    for (std::uint32_t i = 0; i < kInts; ++i) {
      std::int32_t value = 0;
      in.read(reinterpret_cast<char*>(&value), 4);
      sum += value;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kInts * 4);
}
BENCHMARK(PeerReadIntRam)->Name("peer/readint_ram/4B");

void TovPutIntRam(benchmark::State& state) {
  std::vector<unsigned char> target(kInts * 4);
  Halyard::CStaticRamFilePort port(target.data(), kInts * 4, Halyard::kAccessReadWrite, 0);
  Halyard::CWriteStream stream(port, Halyard::kHaldLittleEndian, kBuffer, 0, 0);
  for (auto _ : state) {
    stream.SetPos(0);
    for (std::uint32_t i = 0; i < kInts; ++i) stream.PutInt(static_cast<std::int32_t>(i));
    stream.Flush(0);
    benchmark::DoNotOptimize(target.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kInts * 4);
}
BENCHMARK(TovPutIntRam)->Name("tov/putint_ram/4B");

void PeerPutIntRam(benchmark::State& state) {
  std::ostringstream out(std::ios::binary);
  out.str(std::string(kInts * 4, '\0'));
  for (auto _ : state) {
    out.seekp(0);
    for (std::uint32_t i = 0; i < kInts; ++i) {
      const auto value = static_cast<std::int32_t>(i);
      out.write(reinterpret_cast<const char*>(&value), 4);
    }
    benchmark::DoNotOptimize(out.tellp());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kInts * 4);
}
BENCHMARK(PeerPutIntRam)->Name("peer/putint_ram/4B");

// --- 4-byte values over a file ----------------------------------------------------------

void TovReadIntFile(benchmark::State& state) {
  const std::string path = MakeFile("ints.bin", kInts * 4);
  Halyard::CFilePort port(Halyard::kAccessRead, 0);
  if (!OpenPort(port, path, state)) return;
  Halyard::CReadStream stream(port, Halyard::kHaldLittleEndian, kBuffer, 0, 1);
  for (auto _ : state) {
    stream.SetPos(0);
    std::int32_t sum = 0;
    for (std::uint32_t i = 0; i < kInts; ++i) {
      std::int32_t value = 0;
      stream.ReadInt(&value);
      sum += value;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kInts * 4);
}
BENCHMARK(TovReadIntFile)->Name("tov/readint_file/4B");

void PeerReadIntFile(benchmark::State& state) {
  const std::string path = MakeFile("ints_peer.bin", kInts * 4);
  std::ifstream in(path, std::ios::binary);
  for (auto _ : state) {
    in.clear();
    in.seekg(0);
    std::int32_t sum = 0;
    for (std::uint32_t i = 0; i < kInts; ++i) {
      std::int32_t value = 0;
      in.read(reinterpret_cast<char*>(&value), 4);
      sum += value;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kInts * 4);
}
BENCHMARK(PeerReadIntFile)->Name("peer/readint_file/4B");

void TovPutIntFile(benchmark::State& state) {
  Halyard::CFilePort port(Halyard::kAccessWrite, 0);
  if (!OpenPort(port, TheScratch().File("put.bin"), state)) return;
  Halyard::CWriteStream stream(port, Halyard::kHaldLittleEndian, kBuffer, 0, 1);
  for (auto _ : state) {
    stream.SetPos(0);
    for (std::uint32_t i = 0; i < kInts; ++i) stream.PutInt(static_cast<std::int32_t>(i));
    stream.Flush(0);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kInts * 4);
}
BENCHMARK(TovPutIntFile)->Name("tov/putint_file/4B");

void PeerPutIntFile(benchmark::State& state) {
  std::ofstream out(TheScratch().File("put_peer.bin"), std::ios::binary | std::ios::trunc);
  for (auto _ : state) {
    out.seekp(0);
    for (std::uint32_t i = 0; i < kInts; ++i) {
      const auto value = static_cast<std::int32_t>(i);
      out.write(reinterpret_cast<const char*>(&value), 4);
    }
    out.flush();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kInts * 4);
}
BENCHMARK(PeerPutIntFile)->Name("peer/putint_file/4B");

}  // namespace

BENCHMARK_MAIN();
