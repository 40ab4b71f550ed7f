// Time arithmetic, Timecode text in every format, and the drop-frame cases
// against FFmpeg's av_timecode_make_string / av_timecode_init_from_string.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

extern "C" {
#include <libavutil/log.h>
#include <libavutil/timecode.h>
}

#include "basalt/utf.h"
#include "tovfoundation/time.h"

namespace {

using TOV::FrameRate;
using TOV::Time;
using TOV::Timecode;
namespace FR = TOV::FrameRates;

// Frame numbers spread over a day, the same for ours and the peer.
std::vector<std::int64_t> FrameNumbers(std::int64_t framesPerDay) {
  std::vector<std::int64_t> frames;
  std::uint64_t state = 88172645463325252ull;
  for (int i = 0; i < 4096; ++i) {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    frames.push_back(static_cast<std::int64_t>(state % static_cast<std::uint64_t>(framesPerDay)));
  }
  return frames;
}

struct Case {
  std::uint32_t format;
  FrameRate rate;
  int avNum, avDen;  // the peer's rate; 0 when the peer has no such format
  std::int64_t framesPerDay;
};

Case DropCase(bool hd) {
  return hd ? Case{102 + 4, FR::kFrameRate_VideoNTSC_HD, 60000, 1001, 24 * 215784}
            : Case{102, FR::kFrameRate_VideoNTSC, 30000, 1001, 24 * 107892};
}

std::vector<UTF16String> Texts(const Case& c) {
  std::vector<UTF16String> texts;
  Timecode tc(Time(), c.rate, c.format);
  for (const std::int64_t frame : FrameNumbers(c.framesPerDay)) {
    tc.SetTime(Time(frame, c.rate));
    texts.push_back(tc.GetString());
  }
  return texts;
}

void TovGetString(benchmark::State& state, Case c) {
  const auto frames = FrameNumbers(c.framesPerDay);
  Timecode tc(Time(), c.rate, c.format);
  std::size_t i = 0;
  for (auto _ : state) {
    tc.SetTime(Time(frames[i++ & 4095], c.rate));
    UTF16String text = tc.GetString();
    benchmark::DoNotOptimize(text.data());
  }
  state.SetItemsProcessed(state.iterations());
}

void TovParse(benchmark::State& state, Case c) {
  const auto texts = Texts(c);
  std::size_t i = 0;
  for (auto _ : state) {
    const Time t = Timecode::StringToTime(texts[i++ & 4095], c.rate, c.format, false);
    benchmark::DoNotOptimize(t);
  }
  state.SetItemsProcessed(state.iterations());
}

void PeerGetString(benchmark::State& state, Case c) {
  const auto frames = FrameNumbers(c.framesPerDay);
  AVTimecode tc;
  if (av_timecode_init(&tc, AVRational{c.avNum, c.avDen}, AV_TIMECODE_FLAG_DROPFRAME, 0, nullptr) !=
      0) {
    state.SkipWithError("av_timecode_init failed");
    return;
  }
  char buffer[AV_TIMECODE_STR_SIZE];
  std::size_t i = 0;
  for (auto _ : state) {
    // The peer writes into a caller buffer; copying into a string keeps the
    // work comparable with ours, which returns a string.
    std::string text(av_timecode_make_string(&tc, buffer, static_cast<int>(frames[i++ & 4095])));
    benchmark::DoNotOptimize(text.data());
  }
  state.SetItemsProcessed(state.iterations());
}

void PeerParse(benchmark::State& state, Case c) {
  std::vector<std::string> texts;
  for (const UTF16String& text : Texts(c)) {
    // The peer's syntax is hh:mm:ss;ff: only the last separator marks drop-frame.
    std::string peerText = basalt::UTF16to8(text);
    peerText[2] = ':';
    peerText[5] = ':';
    texts.push_back(peerText);
  }
  std::size_t i = 0;
  for (auto _ : state) {
    AVTimecode tc;
    const int status = av_timecode_init_from_string(&tc, AVRational{c.avNum, c.avDen},
                                                    texts[i++ & 4095].c_str(), nullptr);
    if (status != 0) {
      state.SkipWithError("av_timecode_init_from_string rejected the text");
      return;
    }
    benchmark::DoNotOptimize(tc.start);
  }
  state.SetItemsProcessed(state.iterations());
}

void TimeArithmetic(benchmark::State& state) {
  Time t(1.0);
  const Time step(0.04);
  for (auto _ : state) {
    t += step;
    t = t * 3 / 3u;
    t.AlignToFrame(FR::kFrameRate_VideoNTSC);
    benchmark::DoNotOptimize(t.ToFrame64(FR::kFrameRate_Film24));
  }
  state.SetItemsProcessed(state.iterations());
}

void RegisterAll() {
  for (const bool hd : {false, true}) {
    const Case c = DropCase(hd);
    const std::string name = hd ? "5994df" : "2997df";
    benchmark::RegisterBenchmark(("tov/timecode_getstring/" + name).c_str(), TovGetString, c);
    benchmark::RegisterBenchmark(("peer/timecode_getstring/" + name).c_str(), PeerGetString, c);
    benchmark::RegisterBenchmark(("tov/timecode_parse/" + name).c_str(), TovParse, c);
    benchmark::RegisterBenchmark(("peer/timecode_parse/" + name).c_str(), PeerParse, c);
  }
  struct Named {
    const char* name;
    Case c;
  };
  const Named others[] = {
      {"24", {100, FR::kFrameRate_Film24, 0, 0, 24 * 86400}},
      {"25", {101, FR::kFrameRate_VideoPAL, 0, 0, 25 * 86400}},
      {"2997nd", {103, FR::kFrameRate_VideoNTSC, 0, 0, 30 * 86400}},
      {"30", {104, FR::kFrameRate_Video30, 0, 0, 30 * 86400}},
      {"50", {105, FR::kFrameRate_VideoPAL_HD, 0, 0, 50 * 86400}},
      {"5994nd", {107, FR::kFrameRate_VideoNTSC_HD, 0, 0, 60 * 86400}},
      {"60", {108, FR::kFrameRate_Video60, 0, 0, 60 * 86400}},
      {"frames", {109, FR::kFrameRate_VideoPAL, 0, 0, 25 * 86400}},
      {"23976", {110, FR::kFrameRate_23976, 0, 0, 24 * 86400}},
      {"feet40", {111, FR::kFrameRate_Film24, 0, 0, 24 * 86400}},
      {"feet16", {112, FR::kFrameRate_Film24, 0, 0, 24 * 86400}},
      {"own", {200, FR::kFrameRate_VideoPAL, 0, 0, 25 * 86400}},
      {"ms", {201, FrameRate(1000.0), 0, 0, 1000 * 86400}},
  };
  for (const Named& other : others) {
    benchmark::RegisterBenchmark((std::string("tov/timecode_getstring/") + other.name).c_str(),
                                 TovGetString, other.c);
    benchmark::RegisterBenchmark((std::string("tov/timecode_parse/") + other.name).c_str(),
                                 TovParse, other.c);
  }
  benchmark::RegisterBenchmark("tov/time_arithmetic", TimeArithmetic);
}

}  // namespace

int main(int argc, char** argv) {
  av_log_set_level(AV_LOG_QUIET);
  RegisterAll();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
