// Writing 256 MiB of 16-bit stereo samples as a WAVE file: PCMFileWriter on a
// file write stream against libsndfile's sf_write_raw, same bytes, same blocks.
#include <benchmark/benchmark.h>
#include <sndfile.h>
#include <stdlib.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "basalt/utf.h"
#include "tovfoundation/streams.h"
#include "tovfoundation/writers.h"

namespace {

constexpr std::uint64_t kTotalBytes = 256ull << 20;
constexpr std::uint32_t kBlockBytes = 64u << 10;
// The write stream's buffer: one block, as tovtool tone uses, so that each
// block reaches the file in one port write.
constexpr std::uint32_t kStreamBufferBytes = 64u << 10;

// A scratch folder for the output files, removed by main: $TOV_BENCH_DIR when
// set, else /dev/shm (a RAM file system keeps disk write-back, which both
// sides would pay alike, from drowning the writers' own cost), else $TMPDIR
// or /tmp.
const std::string& ScratchFolder() {
  static const std::string folder = [] {
    std::string base = "/tmp";
    if (const char* dir = std::getenv("TOV_BENCH_DIR"); dir != nullptr && *dir != 0) {
      base = dir;
    } else if (std::filesystem::is_directory("/dev/shm")) {
      base = "/dev/shm";
    } else if (const char* tmp = std::getenv("TMPDIR"); tmp != nullptr && *tmp != 0) {
      base = tmp;
    }
    std::string pattern = base + "/tov-writers-bench-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    return pattern;
  }();
  return folder;
}

const std::vector<unsigned char>& Block() {
  static const std::vector<unsigned char> block = [] {
    std::vector<unsigned char> bytes(kBlockBytes);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i * 7);
    return bytes;
  }();
  return block;
}

void BM_TovWavWrite(benchmark::State& state) {
  const std::string path = ScratchFolder() + "/tov.wav";
  const UTF16String path16 = basalt::UTF8to16(path);
  const auto& block = Block();
  for (auto _ : state) {
    auto* port = new Halyard::CFilePort(Halyard::kAccessWrite, 0);
    if (port->Open(path16.c_str()) != 0) {
      delete port;
      state.SkipWithError("cannot open the output file");
      return;
    }
    auto* stream =
        new Halyard::CWriteStream(port, Halyard::kHaldLittleEndian, kStreamBufferBytes, 0, 0);
    TOV::PCMFileWriter writer;
    writer.BeginWriting(stream, Halyard::AudioInfo{0x3, Halyard::kVAudioSampleSize16, 48000});
    for (std::uint64_t written = 0; written < kTotalBytes; written += kBlockBytes) {
      std::uint32_t count = kBlockBytes;
      writer.WriteSamples(block.data(), count);
    }
    if (writer.EndWriting() != 0) state.SkipWithError("EndWriting failed");
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kTotalBytes));
}

void BM_PeerWavWrite(benchmark::State& state) {
  const std::string path = ScratchFolder() + "/peer.wav";
  const auto& block = Block();
  for (auto _ : state) {
    SF_INFO info{};
    info.samplerate = 48000;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (file == nullptr) {
      state.SkipWithError("sf_open failed");
      return;
    }
    for (std::uint64_t written = 0; written < kTotalBytes; written += kBlockBytes) {
      sf_write_raw(file, block.data(), kBlockBytes);
    }
    sf_close(file);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kTotalBytes));
}

BENCHMARK(BM_TovWavWrite)->Name("tov/wav_write/256MiB")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PeerWavWrite)->Name("peer/wav_write/256MiB")->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  std::error_code ignored;
  std::filesystem::remove_all(ScratchFolder(), ignored);
  return 0;
}
