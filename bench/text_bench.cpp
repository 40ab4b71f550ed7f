// Text benchmarks.
//
// base64_encode/<size>: Halyard::Encode of <size> random bytes into a new
//   UTF-16 text with CRLF lines, against OpenSSL's EVP_EncodeBlock writing
//   8-bit text without line breaks into a new buffer. Bytes processed: the
//   input bytes.
// base64_decode/<size>: Halyard::Decode of the text Encode made of <size>
//   random bytes (UTF-16, CRLF lines), against EVP_DecodeBlock on the same
//   Base64 characters as 8-bit text without line breaks (it accepts no inner
//   whitespace). Bytes processed: the Base64 characters, line breaks not
//   counted, the same number for both.
// utf8to16/1MiB, utf16to8/1MiB: basalt::UTF8to16 / UTF16to8 against glibc's
//   iconv (UTF-8 <=> UTF-16LE) on 1 MiB of mixed text (ASCII, Latin, Greek,
//   CJK, emoji). Bytes processed: the input bytes.
// Every case produces a new output buffer per iteration, as a caller needs.
#include <benchmark/benchmark.h>
#include <iconv.h>
#include <openssl/evp.h>

#include <cstdint>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "basalt/utf.h"
#include "tovfoundation/text.h"

namespace {

constexpr std::size_t kKiB = 1024;
constexpr std::size_t kMiB = 1024 * 1024;

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

// --- UTF conversions ---------------------------------------------------------------

std::string MixedUtf8(std::size_t size) {
  const std::string sample =
      "Clip 0042 \xE2\x80\x94 Gr\xC3\xBC\xC3\x9F"
      "e aus K\xC3\xB6ln, caf\xC3\xA9 cr\xC3\xA8me. "
      "\xCE\x9A\xCE\xB1\xCE\xBB\xCE\xB7\xCE\xBC\xCE\xAD\xCF\x81\xCE\xB1 "
      "\xE6\x9D\xB1\xE4\xBA\xAC\xE3\x81\xAE\xE6\x98\xA0\xE7\x94\xBB\xE7\xA5\xAD "
      "\xF0\x9F\x8E\xAC C:\\Media\\Projects\\Summer\\render_final_v2.mov 29.97 fps\n";
  std::string text;
  while (text.size() + sample.size() <= size) text += sample;
  while (text.size() < size) text.push_back('.');
  return text;
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

void TovUtf8To16(benchmark::State& state) {
  const std::string text = MixedUtf8(kMiB);
  for (auto _ : state) {
    UTF16String wide = basalt::UTF8to16(text);
    benchmark::DoNotOptimize(wide.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void PeerUtf8To16(benchmark::State& state) {
  const std::string text = MixedUtf8(kMiB);
  iconv_t cd = iconv_open("UTF-16LE", "UTF-8");
  for (auto _ : state) {
    benchmark::DoNotOptimize(Iconv(cd, text.data(), text.size(), text.size() * 2));
  }
  iconv_close(cd);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void TovUtf16To8(benchmark::State& state) {
  const UTF16String wide = basalt::UTF8to16(MixedUtf8(kMiB));
  for (auto _ : state) {
    UTF8String text = basalt::UTF16to8(wide);
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * wide.size() * 2));
}

void PeerUtf16To8(benchmark::State& state) {
  const UTF16String wide = basalt::UTF8to16(MixedUtf8(kMiB));
  iconv_t cd = iconv_open("UTF-8", "UTF-16LE");
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        Iconv(cd, reinterpret_cast<const char*>(wide.data()), wide.size() * 2, wide.size() * 3));
  }
  iconv_close(cd);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * wide.size() * 2));
}

}  // namespace

BENCHMARK_CAPTURE(TovEncode, 1KiB, kKiB)->Name("tov/base64_encode/1KiB");
BENCHMARK_CAPTURE(PeerEncode, 1KiB, kKiB)->Name("peer/base64_encode/1KiB");
BENCHMARK_CAPTURE(TovEncode, 1MiB, kMiB)->Name("tov/base64_encode/1MiB");
BENCHMARK_CAPTURE(PeerEncode, 1MiB, kMiB)->Name("peer/base64_encode/1MiB");
BENCHMARK_CAPTURE(TovDecode, 1KiB, kKiB)->Name("tov/base64_decode/1KiB");
BENCHMARK_CAPTURE(PeerDecode, 1KiB, kKiB)->Name("peer/base64_decode/1KiB");
BENCHMARK_CAPTURE(TovDecode, 1MiB, kMiB)->Name("tov/base64_decode/1MiB");
BENCHMARK_CAPTURE(PeerDecode, 1MiB, kMiB)->Name("peer/base64_decode/1MiB");
BENCHMARK(TovUtf8To16)->Name("tov/utf8to16/1MiB");
BENCHMARK(PeerUtf8To16)->Name("peer/utf8to16/1MiB");
BENCHMARK(TovUtf16To8)->Name("tov/utf16to8/1MiB");
BENCHMARK(PeerUtf16To8)->Name("peer/utf16to8/1MiB");

BENCHMARK_MAIN();
