// Text benchmarks.
//
// Every conversion is measured three ways in the same run: "tov/<op>" is the
// library's public function (the vector path this processor gets),
// "scalar/<op>" the same function with the scalar kernels (the reference
// path, what a processor without AVX2 gets), "peer/<op>" the peer.
//
// base64_encode/<size>: Halyard::Encode of <size> random bytes into a new
//   UTF-16 text with CRLF lines, against OpenSSL's EVP_EncodeBlock writing
//   8-bit text without line breaks into a new buffer. Bytes processed: the
//   input bytes.
// base64_decode/<size>: Halyard::Decode of the text Encode made of <size>
//   random bytes (UTF-16, CRLF lines: clean input), against EVP_DecodeBlock on
//   the same Base64 characters as 8-bit text without line breaks (it accepts
//   no inner whitespace). Bytes processed: the Base64 characters, line breaks
//   not counted, the same number for both.
// memcpy/1MiB: a new 1 MiB buffer filled with memcpy, the machine's copy
//   bandwidth that the report sets the 1 MiB cases against.
// utf8to16/<corpus>/1MiB, utf16to8/<corpus>/1MiB: basalt::UTF8to16 / UTF16to8
//   against glibc's iconv (UTF-8 <=> UTF-16LE, one descriptor, reset per call)
//   into a new buffer. Bytes processed: the input bytes.
//   ascii: the lines of a project's media listing (paths, timecodes, rates).
//   mixed: the same kind of listing in several languages, line by line in
//   turn: English 4 lines in 10, German and French 2 (Latin letters with
//   accents), Russian 2 (Cyrillic), Japanese and Chinese 2 (CJK and kana),
//   with an emoji in three lines of ten. By characters that is 81 %
//   ASCII, 12 % two-byte (accented Latin, Cyrillic), 5.7 % three-byte (CJK,
//   kana, punctuation), 0.6 % four-byte (emoji) characters.
// utf8to16/<n>, utf16to8/<n>: one call on a text of n units (the paths and
//   keys the library converts all day: n = 16, 64, 200), per call; iconv's
//   descriptor is opened once, outside the loop. Items: calls.
#include <benchmark/benchmark.h>
#include <iconv.h>
#include <openssl/evp.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "basalt/utf.h"
#include "basalt/utf_internal.h"
#include "platform/cpu.h"
#include "text/base64_internal.h"
#include "tovfoundation/text.h"

namespace {

constexpr std::size_t kKiB = 1024;
constexpr std::size_t kMiB = 1024 * 1024;

using tovimpl::platform::SimdLevel;
namespace b64 = tovimpl::text::base64;

std::vector<unsigned char> RandomBytes(std::size_t size) {
  std::mt19937 engine(12345);
  std::vector<unsigned char> bytes(size);
  for (auto& byte : bytes) byte = static_cast<unsigned char>(engine());
  return bytes;
}

// --- Base64 encode --------------------------------------------------------------

void TovEncode(benchmark::State& state, std::size_t size) {
  const auto bytes = RandomBytes(size);
  for (auto _ : state) {
    UTF16String text = Halyard::Encode(bytes);
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * size));
}

void ScalarEncode(benchmark::State& state, std::size_t size) {
  const auto bytes = RandomBytes(size);
  const b64::Kernels& scalar = b64::KernelsFor(SimdLevel::kScalar);
  for (auto _ : state) {
    UTF16String text;
    b64::EncodeInto(scalar, bytes.data(), bytes.size(), text);
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * size));
}

void PeerEncode(benchmark::State& state, std::size_t size) {
  const auto bytes = RandomBytes(size);
  const std::size_t outSize = (size + 2) / 3 * 4 + 1;
  for (auto _ : state) {
    std::unique_ptr<unsigned char[]> text(new unsigned char[outSize]);
    const int written = EVP_EncodeBlock(text.get(), bytes.data(), static_cast<int>(size));
    benchmark::DoNotOptimize(written);
    benchmark::DoNotOptimize(text.get());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * size));
}

// --- Base64 decode ----------------------------------------------------------------

std::string BareText(const UTF16String& text) {
  std::string bare;
  for (auto unit : text) {
    if (unit != u'\r' && unit != u'\n') bare.push_back(static_cast<char>(unit));
  }
  return bare;
}

void TovDecode(benchmark::State& state, std::size_t size) {
  const UTF16String text = Halyard::Encode(RandomBytes(size));
  const std::size_t characters = BareText(text).size();
  if (Halyard::Decode(text) != RandomBytes(size)) throw std::logic_error("Decode disagrees");
  for (auto _ : state) {
    std::vector<unsigned char> bytes = Halyard::Decode(text);
    benchmark::DoNotOptimize(bytes.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * characters));
}

void ScalarDecode(benchmark::State& state, std::size_t size) {
  const UTF16String text = Halyard::Encode(RandomBytes(size));
  const std::size_t characters = BareText(text).size();
  const b64::Kernels& scalar = b64::KernelsFor(SimdLevel::kScalar);
  for (auto _ : state) {
    std::vector<unsigned char> bytes;
    b64::DecodeInto(scalar, text.data(), text.size(), bytes);
    benchmark::DoNotOptimize(bytes.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * characters));
}

void PeerDecode(benchmark::State& state, std::size_t size) {
  const std::string bare = BareText(Halyard::Encode(RandomBytes(size)));
  const std::size_t outSize = bare.size() / 4 * 3 + 3;
  for (auto _ : state) {
    std::unique_ptr<unsigned char[]> bytes(new unsigned char[outSize]);
    const int written =
        EVP_DecodeBlock(bytes.get(), reinterpret_cast<const unsigned char*>(bare.data()),
                        static_cast<int>(bare.size()));
    if (written < 0) state.SkipWithError("EVP_DecodeBlock rejected the text");
    benchmark::DoNotOptimize(bytes.get());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bare.size()));
}

// The machine's copy bandwidth, measured as the cases allocate: a new buffer
// per iteration.
void Memcpy(benchmark::State& state, std::size_t size) {
  const auto bytes = RandomBytes(size);
  for (auto _ : state) {
    std::unique_ptr<unsigned char[]> copy(new unsigned char[size]);
    std::memcpy(copy.get(), bytes.data(), size);
    benchmark::DoNotOptimize(copy.get());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * size));
}

// --- UTF corpora -------------------------------------------------------------------

const char* const kAsciiLines[] = {
    "C:\\Media\\Projects\\Summer\\render_final_v2.mov 00:01:23:12 29.97 fps\n",
    "Clip 0042 - Interview, camera B, take 3; audio 48 kHz 24-bit stereo\n",
    "D:\\Footage\\2024-06-18\\A001_C007_0618XY.mxf 23.976 fps 3840x2160\n",
    "Marker \"Sunset over the harbour\" at 00:14:02:05, duration 4 s\n",
};
const char* const kMixedLines[] = {
    // English (4 in 10)
    "C:\\Media\\Projects\\Summer\\render_final_v2.mov 00:01:23:12 29.97 fps\n",
    "Clip 0042 - Interview, camera B, take 3; audio 48 kHz 24-bit stereo\n",
    "Marker \"Sunset over the harbour\" at 00:14:02:05 \xF0\x9F\x8C\x85 duration 4 s\n",
    "D:\\Footage\\2024-06-18\\A001_C007_0618XY.mxf 23.976 fps 3840x2160\n",
    // German, French (2 in 10)
    "Gr\xC3\xBC\xC3\x9F"
    "e aus K\xC3\xB6ln: \xC3\x9C"
    "berblendung f\xC3\xBCr Szene 12, Tonspur \xC3\xA4ndern\n",
    "Caf\xC3\xA9 cr\xC3\xA8me, \xC3\xA9t\xC3\xA9 \xC3\xA0 Montr\xC3\xA9"
    "al \xE2\x80\x94 s\xC3\xA9quence 7, pr\xC3\xAA"
    "te \xF0\x9F\x8E\xAC\n",
    // Russian (2 in 10)
    "\xD0\x9A\xD0\xBB\xD0\xB8\xD0\xBF 12: \xD0\xB8\xD0\xBD\xD1\x82\xD0\xB5\xD1\x80\xD0\xB2\xD1\x8C"
    "\xD1\x8E \xD1\x81 \xD1\x80\xD0\xB5\xD0\xB6\xD0\xB8\xD1\x81\xD1\x81\xD1\x91\xD1\x80\xD0\xBE"
    "\xD0\xBC, \xD0\xBA\xD0\xB0\xD0\xBC\xD0\xB5\xD1\x80\xD0\xB0 \xD0\x91\n",
    "\xD0\x97\xD0\xB0\xD0\xBA\xD0\xB0\xD1\x82 \xD0\xBD\xD0\xB0\xD0\xB4 \xD0\xB3\xD0\xB0\xD0\xB2"
    "\xD0\xB0\xD0\xBD\xD1\x8C\xD1\x8E 00:14:02:05 \xF0\x9F\x8C\x87\n",
    // Japanese, Chinese (2 in 10)
    "\xE6\x9D\xB1\xE4\xBA\xAC\xE3\x81\xAE\xE5\xA4\x9C\xE6\x99\xAF\xE3\x80\x81\xE3\x82\xAB\xE3"
    "\x83\xA1\xE3\x83\xA9"
    "B\xE3\x80\x81\xE3\x83\x86\xE3\x82\xA4\xE3\x82\xAF"
    "3\n",
    "\xE9\xA6\x99\xE6\xB8\xAF\xE6\xB8\xAF\xE5\x8F\xA3\xE6\x97\xA5\xE8\x90\xBD\xEF\xBC\x8C\xE9"
    "\x95\x9C\xE5\xA4\xB4 12\xEF\xBC\x8C\xE6\x97\xB6\xE9\x95\xBF 4 \xE7\xA7\x92\n",
};

template <std::size_t N>
std::string Corpus(const char* const (&lines)[N], std::size_t size) {
  std::string text;
  for (std::size_t i = 0; text.size() < size; ++i) text += lines[i % N];
  // Cut at a line end, then pad with spaces, so no character is split.
  text.resize(text.rfind('\n', size - 1) + 1);
  text.resize(size, ' ');
  return text;
}

std::string AsciiCorpus() { return Corpus(kAsciiLines, kMiB); }
std::string MixedCorpus() { return Corpus(kMixedLines, kMiB); }

// A text of `units` UTF-16 units as the library meets them: a path.
std::string PathText(std::size_t units) {
  const std::string path =
      "C:\\Users\\editor\\Documents\\Projects\\Summer 2024\\Media\\Interviews\\Camera B\\"
      "A001_C007_0618XY_take3_final_render_v2_graded_with_audio_stereo_mix.mov|"
      "Caches\\Media Cache Files\\Conformed Audio\\A001_C007_0618XY 48000.cfa|"
      "Preferences\\Profile-editor\\Layouts\\Editing (modified).xml|Export\\H.264\\YouTube "
      "1080p.epr";
  return path.substr(0, units);
}

// Converts with iconv into a new buffer of `capacity` bytes.
std::size_t Iconv(iconv_t cd, const char* in, std::size_t inSize, std::size_t capacity) {
  std::unique_ptr<char[]> out(new char[capacity]);
  char* src = const_cast<char*>(in);
  char* dst = out.get();
  std::size_t left = inSize;
  std::size_t room = capacity;
  iconv(cd, nullptr, nullptr, nullptr, nullptr);
  if (iconv(cd, &src, &left, &dst, &room) == static_cast<std::size_t>(-1)) {
    throw std::runtime_error("iconv failed");
  }
  benchmark::DoNotOptimize(out.get());
  return capacity - room;
}

// --- UTF-8 → UTF-16 ----------------------------------------------------------------

void TovUtf8To16(benchmark::State& state, std::string text) {
  for (auto _ : state) {
    UTF16String wide = basalt::UTF8to16(text);
    benchmark::DoNotOptimize(wide.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void ScalarUtf8To16(benchmark::State& state, std::string text) {
  const auto& scalar = basalt::utf::KernelsFor(SimdLevel::kScalar);
  for (auto _ : state) {
    UTF16String wide;
    basalt::utf::UTF8to16Into(scalar, text.data(), text.size(), wide);
    benchmark::DoNotOptimize(wide.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void PeerUtf8To16(benchmark::State& state, std::string text) {
  iconv_t cd = iconv_open("UTF-16LE", "UTF-8");
  for (auto _ : state) {
    benchmark::DoNotOptimize(Iconv(cd, text.data(), text.size(), text.size() * 2));
  }
  iconv_close(cd);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

// --- UTF-16 → UTF-8 ----------------------------------------------------------------

void TovUtf16To8(benchmark::State& state, std::string utf8) {
  const UTF16String wide = basalt::UTF8to16(utf8);
  for (auto _ : state) {
    UTF8String text = basalt::UTF16to8(wide);
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * wide.size() * 2));
}

void ScalarUtf16To8(benchmark::State& state, std::string utf8) {
  const UTF16String wide = basalt::UTF8to16(utf8);
  const auto& scalar = basalt::utf::KernelsFor(SimdLevel::kScalar);
  for (auto _ : state) {
    UTF8String text;
    basalt::utf::UTF16to8Into(scalar, wide.data(), wide.size(), text);
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * wide.size() * 2));
}

void PeerUtf16To8(benchmark::State& state, std::string utf8) {
  const UTF16String wide = basalt::UTF8to16(utf8);
  iconv_t cd = iconv_open("UTF-8", "UTF-16LE");
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        Iconv(cd, reinterpret_cast<const char*>(wide.data()), wide.size() * 2, wide.size() * 3));
  }
  iconv_close(cd);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * wide.size() * 2));
}

// Short texts count calls, not bytes.
#define TOV_PER_CALL(Case)                                                  \
  void Case##Call(benchmark::State& state, std::size_t units) {             \
    Case(state, PathText(units));                                           \
    state.SetBytesProcessed(0);                                             \
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations())); \
  }
TOV_PER_CALL(TovUtf8To16)
TOV_PER_CALL(ScalarUtf8To16)
TOV_PER_CALL(PeerUtf8To16)
TOV_PER_CALL(TovUtf16To8)
TOV_PER_CALL(ScalarUtf16To8)
TOV_PER_CALL(PeerUtf16To8)
#undef TOV_PER_CALL

}  // namespace

BENCHMARK_CAPTURE(TovEncode, 1KiB, kKiB)->Name("tov/base64_encode/1KiB");
BENCHMARK_CAPTURE(ScalarEncode, 1KiB, kKiB)->Name("scalar/base64_encode/1KiB");
BENCHMARK_CAPTURE(PeerEncode, 1KiB, kKiB)->Name("peer/base64_encode/1KiB");
BENCHMARK_CAPTURE(TovEncode, 1MiB, kMiB)->Name("tov/base64_encode/1MiB");
BENCHMARK_CAPTURE(ScalarEncode, 1MiB, kMiB)->Name("scalar/base64_encode/1MiB");
BENCHMARK_CAPTURE(PeerEncode, 1MiB, kMiB)->Name("peer/base64_encode/1MiB");
BENCHMARK_CAPTURE(TovDecode, 1KiB, kKiB)->Name("tov/base64_decode/1KiB");
BENCHMARK_CAPTURE(ScalarDecode, 1KiB, kKiB)->Name("scalar/base64_decode/1KiB");
BENCHMARK_CAPTURE(PeerDecode, 1KiB, kKiB)->Name("peer/base64_decode/1KiB");
BENCHMARK_CAPTURE(TovDecode, 1MiB, kMiB)->Name("tov/base64_decode/1MiB");
BENCHMARK_CAPTURE(ScalarDecode, 1MiB, kMiB)->Name("scalar/base64_decode/1MiB");
BENCHMARK_CAPTURE(PeerDecode, 1MiB, kMiB)->Name("peer/base64_decode/1MiB");
BENCHMARK_CAPTURE(Memcpy, 1MiB, kMiB)->Name("memcpy/1MiB");

BENCHMARK_CAPTURE(TovUtf8To16, ascii, AsciiCorpus())->Name("tov/utf8to16/ascii/1MiB");
BENCHMARK_CAPTURE(ScalarUtf8To16, ascii, AsciiCorpus())->Name("scalar/utf8to16/ascii/1MiB");
BENCHMARK_CAPTURE(PeerUtf8To16, ascii, AsciiCorpus())->Name("peer/utf8to16/ascii/1MiB");
BENCHMARK_CAPTURE(TovUtf8To16, mixed, MixedCorpus())->Name("tov/utf8to16/mixed/1MiB");
BENCHMARK_CAPTURE(ScalarUtf8To16, mixed, MixedCorpus())->Name("scalar/utf8to16/mixed/1MiB");
BENCHMARK_CAPTURE(PeerUtf8To16, mixed, MixedCorpus())->Name("peer/utf8to16/mixed/1MiB");
BENCHMARK_CAPTURE(TovUtf16To8, ascii, AsciiCorpus())->Name("tov/utf16to8/ascii/1MiB");
BENCHMARK_CAPTURE(ScalarUtf16To8, ascii, AsciiCorpus())->Name("scalar/utf16to8/ascii/1MiB");
BENCHMARK_CAPTURE(PeerUtf16To8, ascii, AsciiCorpus())->Name("peer/utf16to8/ascii/1MiB");
BENCHMARK_CAPTURE(TovUtf16To8, mixed, MixedCorpus())->Name("tov/utf16to8/mixed/1MiB");
BENCHMARK_CAPTURE(ScalarUtf16To8, mixed, MixedCorpus())->Name("scalar/utf16to8/mixed/1MiB");
BENCHMARK_CAPTURE(PeerUtf16To8, mixed, MixedCorpus())->Name("peer/utf16to8/mixed/1MiB");

#define TOV_SHORT_TEXT_CASES(units)                                                        \
  BENCHMARK_CAPTURE(TovUtf8To16Call, u##units, units)->Name("tov/utf8to16/" #units);       \
  BENCHMARK_CAPTURE(ScalarUtf8To16Call, u##units, units)->Name("scalar/utf8to16/" #units); \
  BENCHMARK_CAPTURE(PeerUtf8To16Call, u##units, units)->Name("peer/utf8to16/" #units);     \
  BENCHMARK_CAPTURE(TovUtf16To8Call, u##units, units)->Name("tov/utf16to8/" #units);       \
  BENCHMARK_CAPTURE(ScalarUtf16To8Call, u##units, units)->Name("scalar/utf16to8/" #units); \
  BENCHMARK_CAPTURE(PeerUtf16To8Call, u##units, units)->Name("peer/utf16to8/" #units)
TOV_SHORT_TEXT_CASES(16);
TOV_SHORT_TEXT_CASES(64);
TOV_SHORT_TEXT_CASES(200);

BENCHMARK_MAIN();
