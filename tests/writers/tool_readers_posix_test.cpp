// WAVE and BMP files made by the library's writers, read back by readers that
// share no code with it: sox (its header summary and its stat effect),
// libsndfile in this process, ffprobe and ffmpeg, and PIL.
//
// The WAVE table covers every integer and float sample format the readers
// know (8-bit unsigned, 16-, 24- and 32-bit integer, 32-bit float), every
// channel mask from mono to 7.1 and every common rate from 8 kHz to 192 kHz.
// The writer stores a 16-byte format chunk, which carries the channel count
// but no speaker mask: readers see the count and no layout (ffprobe says
// "unknown"). Python's standard `wave` module reads only format tag 1, so the
// float files are read here by sox, libsndfile and ffprobe instead.
//
// A reader that is not installed skips its test with the reason, except under
// CI (the environment variable CI set), where a missing reader is a failure:
// `scripts/install-deps --test-tools` installs them all.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#if TOV_HAVE_SNDFILE
#include <sndfile.h>
#endif

#include "common/child_process.h"
#include "common/temp_tree.h"
#include "tovfoundation/streams.h"
#include "tovfoundation/writers.h"

namespace tovtest {
namespace {

using Bytes = std::vector<std::uint8_t>;

bool UnderCi() {
  const char* ci = std::getenv("CI");
  return ci != nullptr && *ci != '\0';
}

// Skips the test when a reader is missing, or fails it under CI.
#define TOV_REQUIRE_READER(present, why)        \
  do {                                          \
    if (!(present)) {                           \
      if (UnderCi()) FAIL() << (why);           \
      GTEST_SKIP() << (why) << " (CI not set)"; \
    }                                           \
  } while (0)

std::string Quote(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += (c == '\'') ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

bool HasProgram(const std::string& name) {
  std::string output;
  return tovtest::RunCommand("command -v " + Quote(name) + " 2>/dev/null", output) == 0 &&
         !output.empty();
}

bool HasPil() {
  std::string output;
  return tovtest::RunCommand("/usr/bin/python3 -c 'import PIL' 2>/dev/null", output) == 0;
}

Bytes ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// "key=value|key=value" as printed by ffprobe -of compact=p=0.
std::map<std::string, std::string> CompactFields(const std::string& line) {
  std::map<std::string, std::string> fields;
  std::istringstream in(line);
  for (std::string field; std::getline(in, field, '|');) {
    const auto equals = field.find('=');
    if (equals != std::string::npos) fields[field.substr(0, equals)] = field.substr(equals + 1);
  }
  return fields;
}

// The text after "label:" on the first line that starts with `label`.
std::string FieldAfter(const std::vector<std::string>& lines, const std::string& label) {
  for (const auto& line : lines) {
    if (line.rfind(label, 0) != 0) continue;
    const auto colon = line.find(':');
    if (colon == std::string::npos) continue;
    auto value = line.substr(colon + 1);
    value.erase(0, value.find_first_not_of(' '));
    while (!value.empty() && (value.back() == ' ' || value.back() == '\r')) value.pop_back();
    return value;
  }
  return {};
}

// ---------------------------------------------------------------------------
// WAVE files
// ---------------------------------------------------------------------------

struct SampleFormat {
  const char* name;
  Halyard::enumVAudioSampleSize code;
  int bits;
  bool isFloat;
  const char* soxPrecision;
  const char* soxEncoding;
  const char* ffCodec;
  const char* ffSampleFormat;
  int sndfileSubtype;
};

#if TOV_HAVE_SNDFILE
#define TOV_SF(x) x
#else
#define TOV_SF(x) 0
#endif

const SampleFormat kFormats[] = {
    {"u8", Halyard::kVAudioSampleSize8, 8, false, "8-bit", "8-bit Unsigned Integer PCM", "pcm_u8",
     "u8", TOV_SF(SF_FORMAT_PCM_U8)},
    {"s16", Halyard::kVAudioSampleSize16, 16, false, "16-bit", "16-bit Signed Integer PCM",
     "pcm_s16le", "s16", TOV_SF(SF_FORMAT_PCM_16)},
    {"s24", Halyard::kVAudioSampleSize24, 24, false, "24-bit", "24-bit Signed Integer PCM",
     "pcm_s24le", "s32", TOV_SF(SF_FORMAT_PCM_24)},
    {"s32", Halyard::kVAudioSampleSize32, 32, false, "32-bit", "32-bit Signed Integer PCM",
     "pcm_s32le", "s32", TOV_SF(SF_FORMAT_PCM_32)},
    // sox counts a float's precision as its 24-bit significand plus the sign.
    {"f32", Halyard::kVAudioSampleSize32Float, 32, true, "25-bit", "32-bit Floating Point PCM",
     "pcm_f32le", "flt", TOV_SF(SF_FORMAT_FLOAT)},
};

struct ChannelMask {
  const char* name;
  std::uint32_t mask;
  int channels;
};

const ChannelMask kMasks[] = {
    {"mono", 0x4, 1}, {"stereo", 0x3, 2}, {"2.1", 0xB, 3},   {"quad", 0x33, 4},
    {"5.0", 0x37, 5}, {"5.1", 0x3F, 6},   {"6.1", 0x13F, 7}, {"7.1", 0x63F, 8},
};

const std::uint32_t kRates[] = {8000,  11025, 16000, 22050,  32000, 44100,
                                48000, 88200, 96000, 176400, 192000};

constexpr int kFrames = 256;

// One file of the table and the values written into it.
struct WaveCase {
  const SampleFormat* format;
  const ChannelMask* mask;
  std::uint32_t rate;
  std::string path;
  std::vector<std::int32_t> integers;  // integer formats: the values as signed numbers
  std::vector<float> floats;           // the float format
  std::vector<double> normalised;      // every value scaled to [-1, 1)
};

std::string Label(const WaveCase& c) {
  return std::string(c.format->name) + " " + c.mask->name + " " + std::to_string(c.rate) + " Hz";
}

// Deterministic samples: full-scale maximum and minimum on the first channel's
// first two frames, pseudo-random values elsewhere.
void FillSamples(WaveCase& c, Bytes& bytes) {
  std::uint32_t state = c.rate ^ (c.mask->mask << 8) ^ static_cast<std::uint32_t>(c.format->bits);
  const int bits = c.format->bits;
  const int bytesPerSample = bits / 8;
  for (int frame = 0; frame < kFrames; ++frame) {
    for (int channel = 0; channel < c.mask->channels; ++channel) {
      state = state * 1664525u + 1013904223u;
      if (c.format->isFloat) {
        float value = static_cast<float>(static_cast<std::int32_t>(state) / 2147483648.0 * 0.875);
        if (channel == 0 && frame == 0) value = 0.875f;
        if (channel == 0 && frame == 1) value = -0.875f;
        const auto raw = std::bit_cast<std::uint32_t>(value);
        for (int b = 0; b < 4; ++b) bytes.push_back(static_cast<std::uint8_t>(raw >> (8 * b)));
        c.floats.push_back(value);
        c.normalised.push_back(value);
        continue;
      }
      const std::int64_t top = std::int64_t{1} << (bits - 1);
      std::int64_t value = static_cast<std::int32_t>(state) >> (32 - bits);
      if (channel == 0 && frame == 0) value = top - 1;
      if (channel == 0 && frame == 1) value = -top;
      // 8-bit WAVE samples are unsigned, offset by 128.
      const std::uint32_t stored = static_cast<std::uint32_t>(bits == 8 ? value + 128 : value);
      for (int b = 0; b < bytesPerSample; ++b)
        bytes.push_back(static_cast<std::uint8_t>(stored >> (8 * b)));
      c.integers.push_back(static_cast<std::int32_t>(value));
      c.normalised.push_back(static_cast<double>(value) / static_cast<double>(top));
    }
  }
}

// Writes one file through a file port, a little-endian write stream and the
// PCM writer, as an application does.
void WriteWave(WaveCase& c) {
  Bytes samples;
  FillSamples(c, samples);
  const UTF16String path = LibraryPath(c.path);
  auto* port = new Halyard::CFilePort(Halyard::kAccessWrite, 0);
  ASSERT_EQ(port->Open(path.c_str()), 0u) << c.path;
  auto* stream = new Halyard::CWriteStream(port, Halyard::kHaldLittleEndian, 4096, 0, 0);
  TOV::PCMFileWriter writer;
  ASSERT_EQ(writer.BeginWriting(stream, Halyard::AudioInfo{c.mask->mask, c.format->code, c.rate}),
            0u);
  // In several pieces, as a recorder would hand them over.
  const std::uint32_t piece = static_cast<std::uint32_t>(samples.size() / 4);
  for (std::uint32_t offset = 0; offset < samples.size(); offset += piece) {
    std::uint32_t count = std::min<std::uint32_t>(piece, samples.size() - offset);
    ASSERT_EQ(writer.WriteSamples(samples.data() + offset, count), 0u);
  }
  ASSERT_EQ(writer.EndWriting(), 0u);
  ASSERT_EQ(ReadBytes(c.path).size(), 44u + samples.size()) << c.path;
}

// Every file of the table, written once for all the reader tests.
class WaveReaders : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    sFolder = new TempTree("wave-readers");
    for (const auto& format : kFormats) {
      for (const auto& mask : kMasks) {
        for (const std::uint32_t rate : kRates) {
          WaveCase c;
          c.format = &format;
          c.mask = &mask;
          c.rate = rate;
          c.path = sFolder->NativeOf(std::string(format.name) + "-" + mask.name + "-" +
                                     std::to_string(rate) + ".wav");
          WriteWave(c);
          sCases.push_back(std::move(c));
        }
      }
    }
  }
  static void TearDownTestSuite() {
    sCases.clear();
    delete sFolder;
    sFolder = nullptr;
  }

  static std::string AllPaths() {
    std::string paths;
    for (const auto& c : sCases) paths += " " + Quote(c.path);
    return paths;
  }

  static TempTree* sFolder;
  static std::vector<WaveCase> sCases;
};

TempTree* WaveReaders::sFolder = nullptr;
std::vector<WaveCase> WaveReaders::sCases;

TEST_F(WaveReaders, TableCoversEveryFormatMaskAndRate) {
  EXPECT_EQ(sCases.size(), std::size(kFormats) * std::size(kMasks) * std::size(kRates));
}

TEST_F(WaveReaders, SoxInfoReportsChannelsRatePrecisionEncodingAndLength) {
  TOV_REQUIRE_READER(HasProgram("sox"), "sox is not installed");
  std::string output;
  // One sox run prints a block per file, each opened by "Input File". Its
  // note on standard error that a float file's format chunk has no extension
  // part is a warning only: the chunk is 16 bytes on purpose.
  ASSERT_EQ(tovtest::RunCommand("sox --i" + AllPaths() + " 2>/dev/null", output), 0) << output;
  std::vector<std::vector<std::string>> blocks;
  for (const auto& line : Lines(output)) {
    if (line.rfind("Input File", 0) == 0) blocks.emplace_back();
    if (!blocks.empty()) blocks.back().push_back(line);
  }
  ASSERT_EQ(blocks.size(), sCases.size()) << output;
  for (std::size_t i = 0; i < sCases.size(); ++i) {
    const WaveCase& c = sCases[i];
    SCOPED_TRACE(Label(c));
    const auto& block = blocks[i];
    EXPECT_EQ(FieldAfter(block, "Input File"), "'" + c.path + "'");
    EXPECT_EQ(FieldAfter(block, "Channels"), std::to_string(c.mask->channels));
    EXPECT_EQ(FieldAfter(block, "Sample Rate"), std::to_string(c.rate));
    EXPECT_EQ(FieldAfter(block, "Precision"), c.format->soxPrecision);
    EXPECT_EQ(FieldAfter(block, "Sample Encoding"), c.format->soxEncoding);
    EXPECT_NE(FieldAfter(block, "Duration").find("= " + std::to_string(kFrames) + " samples"),
              std::string::npos)
        << FieldAfter(block, "Duration");
  }
}

double Number(const std::string& text) { return text.empty() ? NAN : std::stod(text); }

TEST_F(WaveReaders, SoxStatMeasuresTheSamplesThatWereWritten) {
  TOV_REQUIRE_READER(HasProgram("sox"), "sox is not installed");
  std::string script;
  for (const auto& c : sCases)
    script += "echo '@@'; sox " + Quote(c.path) + " -n stat 2>&1 || echo 'sox failed';";
  std::string output;
  ASSERT_EQ(tovtest::RunCommand("{ " + script + " }", output), 0) << output;
  std::vector<std::vector<std::string>> blocks;
  for (const auto& line : Lines(output)) {
    if (line == "@@")
      blocks.emplace_back();
    else if (!blocks.empty())
      blocks.back().push_back(line);
  }
  ASSERT_EQ(blocks.size(), sCases.size());
  for (std::size_t i = 0; i < sCases.size(); ++i) {
    const WaveCase& c = sCases[i];
    SCOPED_TRACE(Label(c));
    const auto& block = blocks[i];
    double maximum = -2, minimum = 2, squares = 0;
    for (const double v : c.normalised) {
      maximum = std::max(maximum, v);
      minimum = std::min(minimum, v);
      squares += v * v;
    }
    const double rms = std::sqrt(squares / static_cast<double>(c.normalised.size()));
    EXPECT_EQ(FieldAfter(block, "Samples read"), std::to_string(kFrames * c.mask->channels));
    EXPECT_NEAR(Number(FieldAfter(block, "Length (seconds)")),
                static_cast<double>(kFrames) / c.rate, 1e-6);
    // sox prints six decimals.
    EXPECT_NEAR(Number(FieldAfter(block, "Maximum amplitude")), maximum, 2e-6);
    EXPECT_NEAR(Number(FieldAfter(block, "Minimum amplitude")), minimum, 2e-6);
    EXPECT_NEAR(Number(FieldAfter(block, "RMS     amplitude")), rms, 2e-6);
    for (const auto& line : block) EXPECT_EQ(line.find("clipped"), std::string::npos) << line;
  }
}

// One ffprobe run costs tens of milliseconds, so ffprobe reads every format
// with every mask at 48 kHz and every rate in 16-bit stereo and float 7.1;
// sox and libsndfile read the whole table.
TEST_F(WaveReaders, FfprobeReportsCodecSampleFormatRateChannelsAndLength) {
  TOV_REQUIRE_READER(HasProgram("ffprobe"), "ffprobe (Debian ffmpeg) is not installed");
  std::vector<const WaveCase*> picked;
  std::string script;
  for (const auto& c : sCases) {
    const std::string shape = std::string(c.format->name) + " " + c.mask->name;
    if (c.rate != 48000 && shape != "s16 stereo" && shape != "f32 7.1") continue;
    picked.push_back(&c);
    script +=
        "ffprobe -v error -show_entries "
        "stream=codec_name,sample_fmt,sample_rate,channels,channel_layout,bits_per_sample,"
        "duration_ts -of compact=p=0 " +
        Quote(c.path) + " 2>&1 || echo 'ffprobe failed';";
  }
  ASSERT_EQ(picked.size(), std::size(kFormats) * std::size(kMasks) + 2 * (std::size(kRates) - 1));
  std::string output;
  ASSERT_EQ(tovtest::RunCommand("{ " + script + " }", output), 0) << output;
  const auto lines = Lines(output);
  ASSERT_EQ(lines.size(), picked.size()) << output;
  for (std::size_t i = 0; i < picked.size(); ++i) {
    const WaveCase& c = *picked[i];
    SCOPED_TRACE(Label(c));
    auto fields = CompactFields(lines[i]);
    EXPECT_EQ(fields["codec_name"], c.format->ffCodec) << lines[i];
    EXPECT_EQ(fields["sample_fmt"], c.format->ffSampleFormat);
    EXPECT_EQ(fields["sample_rate"], std::to_string(c.rate));
    EXPECT_EQ(fields["channels"], std::to_string(c.mask->channels));
    // The 16-byte format chunk has no speaker mask.
    EXPECT_EQ(fields["channel_layout"], "unknown");
    EXPECT_EQ(fields["bits_per_sample"], std::to_string(c.format->bits));
    EXPECT_EQ(fields["duration_ts"], std::to_string(kFrames));
  }
}

TEST_F(WaveReaders, LibsndfileReadsFormatChannelsRateAndEverySampleValue) {
#if !TOV_HAVE_SNDFILE
  TOV_REQUIRE_READER(false, "built without libsndfile (Debian libsndfile1-dev)");
#else
  for (const auto& c : sCases) {
    SCOPED_TRACE(Label(c));
    SF_INFO info{};
    SNDFILE* file = sf_open(c.path.c_str(), SFM_READ, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    EXPECT_EQ(info.format, SF_FORMAT_WAV | c.format->sndfileSubtype);
    EXPECT_EQ(info.channels, c.mask->channels);
    EXPECT_EQ(info.samplerate, static_cast<int>(c.rate));
    EXPECT_EQ(info.frames, kFrames);
    const std::size_t count = static_cast<std::size_t>(kFrames * c.mask->channels);
    if (c.format->isFloat) {
      std::vector<float> read(count + 8);
      EXPECT_EQ(sf_readf_float(file, read.data(), kFrames + 1), kFrames);
      read.resize(count);
      EXPECT_EQ(read, c.floats);
    } else {
      // libsndfile hands integers over left-justified in 32 bits.
      std::vector<std::int32_t> expected;
      for (const std::int32_t v : c.integers)
        expected.push_back(
            static_cast<std::int32_t>(static_cast<std::uint32_t>(v) << (32 - c.format->bits)));
      std::vector<std::int32_t> read(count + 8);
      EXPECT_EQ(sf_readf_int(file, read.data(), kFrames + 1), kFrames);
      read.resize(count);
      EXPECT_EQ(read, expected);
    }
    sf_close(file);
  }
#endif
}

TEST_F(WaveReaders, PythonWaveReadsIntegerFilesAndRefusesFloat) {
  TOV_REQUIRE_READER(HasProgram("/usr/bin/python3"), "/usr/bin/python3 is not installed");
  const std::string script =
      "import sys, wave\n"
      "for p in sys.argv[1:]:\n"
      "  try:\n"
      "    w = wave.open(p, 'rb')\n"
      "    print(w.getnchannels(), w.getframerate(), w.getsampwidth(), w.getnframes())\n"
      "  except wave.Error as e:\n"
      "    print('refused', e)\n";
  std::string paths;
  std::vector<const WaveCase*> picked;
  for (const auto& c : sCases) {
    if (c.rate != 44100) continue;
    picked.push_back(&c);
    paths += " " + Quote(c.path);
  }
  std::string output;
  ASSERT_EQ(tovtest::RunCommand("/usr/bin/python3 -c " + Quote(script) + paths + " 2>&1", output),
            0)
      << output;
  const auto lines = Lines(output);
  ASSERT_EQ(lines.size(), picked.size()) << output;
  for (std::size_t i = 0; i < picked.size(); ++i) {
    const WaveCase& c = *picked[i];
    SCOPED_TRACE(Label(c));
    if (c.format->isFloat) {
      // The standard module knows format tag 1 only.
      EXPECT_EQ(lines[i], "refused unknown format: 3");
    } else {
      EXPECT_EQ(lines[i], std::to_string(c.mask->channels) + " 44100 " +
                              std::to_string(c.format->bits / 8) + " " + std::to_string(kFrames));
    }
  }
}

// ---------------------------------------------------------------------------
// BMP files
// ---------------------------------------------------------------------------

struct BmpDepth {
  const char* name;
  std::uint32_t colourSpace;
  int bytesPerPixel;
  const char* ffPixelFormat;
};

const BmpDepth kDepths[] = {
    {"8-bit", 0x4, 1, "gray"},  // no colour table: ffmpeg shows grey levels
    {"24-bit", 0x20, 3, "bgr24"},
    {"32-bit", 0x80, 4, "bgra"},
};

// Widths whose rows need padding to 4 bytes at some depth, and some that do not.
const int kWidths[] = {1, 2, 3, 4, 5, 6, 7, 8, 13, 640};
const int kHeights[] = {1, 3};

struct BmpCase {
  const BmpDepth* depth;
  int width;
  int height;
  std::string path;
  Bytes pixels;  // the rows as written, back to back
};

std::string Label(const BmpCase& c) {
  return std::string(c.depth->name) + " " + std::to_string(c.width) + "x" +
         std::to_string(c.height);
}

bool RowsNeedPadding(const BmpCase& c) { return (c.width * c.depth->bytesPerPixel) % 4 != 0; }

void WriteBmp(BmpCase& c) {
  const int rowBytes = c.width * c.depth->bytesPerPixel;
  for (int i = 0; i < rowBytes * c.height; ++i)
    c.pixels.push_back(static_cast<std::uint8_t>(i * 37 + c.width * 11 + c.height));
  const UTF16String path = LibraryPath(c.path);
  TOV::BMPFileWriter writer(path.c_str());
  ASSERT_EQ(writer.SetBMPProperties(Halyard::VSize{c.width, c.height}, c.depth->colourSpace), 0u);
  std::uint32_t unused = 0;
  ASSERT_EQ(writer.WriteBMP(c.pixels.data(), rowBytes, 0, unused), 0u);
  ASSERT_EQ(ReadBytes(c.path).size(), 54u + c.pixels.size()) << c.path;
}

class BmpReaders : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    sFolder = new TempTree("bmp-readers");
    for (const auto& depth : kDepths) {
      for (const int width : kWidths) {
        for (const int height : kHeights) {
          BmpCase c;
          c.depth = &depth;
          c.width = width;
          c.height = height;
          c.path = sFolder->NativeOf(std::string(depth.name) + "-" + std::to_string(width) + "x" +
                                     std::to_string(height) + ".bmp");
          WriteBmp(c);
          sCases.push_back(std::move(c));
        }
      }
    }
  }
  static void TearDownTestSuite() {
    sCases.clear();
    delete sFolder;
    sFolder = nullptr;
  }

  static TempTree* sFolder;
  static std::vector<BmpCase> sCases;
};

TempTree* BmpReaders::sFolder = nullptr;
std::vector<BmpCase> BmpReaders::sCases;

TEST_F(BmpReaders, FfprobeReportsCodecDimensionsAndPixelFormatAtEveryWidth) {
  TOV_REQUIRE_READER(HasProgram("ffprobe"), "ffprobe (Debian ffmpeg) is not installed");
  std::string script;
  for (const auto& c : sCases)
    script +=
        "ffprobe -v error -show_entries stream=codec_name,width,height,pix_fmt "
        "-of compact=p=0 " +
        Quote(c.path) + " 2>/dev/null || echo 'ffprobe failed';";
  std::string output;
  ASSERT_EQ(tovtest::RunCommand("{ " + script + " }", output), 0) << output;
  const auto lines = Lines(output);
  ASSERT_EQ(lines.size(), sCases.size()) << output;
  for (std::size_t i = 0; i < sCases.size(); ++i) {
    const BmpCase& c = sCases[i];
    SCOPED_TRACE(Label(c));
    auto fields = CompactFields(lines[i]);
    EXPECT_EQ(fields["codec_name"], "bmp") << lines[i];
    EXPECT_EQ(fields["width"], std::to_string(c.width));
    EXPECT_EQ(fields["height"], std::to_string(c.height));
    EXPECT_EQ(fields["pix_fmt"], c.depth->ffPixelFormat);
  }
}

TEST_F(BmpReaders, FfmpegDecodesEveryPixelOfUnpaddedRows) {
  TOV_REQUIRE_READER(HasProgram("ffmpeg"), "ffmpeg is not installed");
  for (const auto& c : sCases) {
    SCOPED_TRACE(Label(c));
    const std::string raw = c.path + ".raw";
    std::string output;
    // The decoder notes rows without 4-byte alignment and reads them as they are.
    ASSERT_EQ(tovtest::RunCommand("ffmpeg -nostdin -v error -i " + Quote(c.path) +
                                      " -f rawvideo -pix_fmt " + c.depth->ffPixelFormat + " -y " +
                                      Quote(raw) + " 2>&1",
                                  output),
              0)
        << output;
    EXPECT_EQ(ReadBytes(raw), c.pixels);
  }
}

// PIL reads 32-bit images at every width and 24-bit images whose rows need no
// padding, pixel for pixel, and a 24-bit image of one row at any width (only
// the rows before the last need their padding). It refuses, as truncated,
// 24-bit images of several rows that would need padding, and every 8-bit image
// (it expects a colour table).
TEST_F(BmpReaders, PilReadsAlignedRowsAndRefusesUnpaddedOrTablelessImages) {
  TOV_REQUIRE_READER(HasPil(), "PIL (Debian python3-pil) is not importable by /usr/bin/python3");
  const std::string script =
      "import sys\n"
      "from PIL import Image\n"
      "for p in sys.argv[1:]:\n"
      "  try:\n"
      "    im = Image.open(p)\n"
      "    im.load()\n"
      "    rgb = im.convert('RGB')\n"
      "    print(im.format, im.size[0], im.size[1], "
      "' '.join('%02x%02x%02x' % rgb.getpixel((x, y)) "
      "for y in range(im.size[1]) for x in range(im.size[0])))\n"
      "  except OSError as e:\n"
      "    print('refused', e)\n";
  std::string paths;
  for (const auto& c : sCases) paths += " " + Quote(c.path);
  std::string output;
  ASSERT_EQ(tovtest::RunCommand("/usr/bin/python3 -c " + Quote(script) + paths + " 2>&1", output),
            0)
      << output;
  const auto lines = Lines(output);
  ASSERT_EQ(lines.size(), sCases.size()) << output;
  int read = 0, refused = 0;
  for (std::size_t i = 0; i < sCases.size(); ++i) {
    const BmpCase& c = sCases[i];
    SCOPED_TRACE(Label(c));
    if (c.depth->bytesPerPixel == 1 || (RowsNeedPadding(c) && c.height > 1)) {
      EXPECT_EQ(lines[i].rfind("refused image file is truncated", 0), 0u) << lines[i];
      ++refused;
      continue;
    }
    // Pixels are stored blue, green, red (and a fourth byte PIL drops).
    std::string expected = "BMP " + std::to_string(c.width) + " " + std::to_string(c.height) + " ";
    char hex[8];
    for (std::size_t p = 0; p + 2 < c.pixels.size(); p += c.depth->bytesPerPixel) {
      std::snprintf(hex, sizeof hex, "%02x%02x%02x", c.pixels[p + 2], c.pixels[p + 1], c.pixels[p]);
      expected += hex;
      expected += ' ';
    }
    expected.pop_back();
    EXPECT_EQ(lines[i], expected);
    ++read;
  }
  // 32-bit: all 10 widths at both heights; 24-bit: widths 4, 8 and 640 at
  // both heights and the other 7 widths at height 1.
  EXPECT_EQ(read, 20 + 6 + 7);
  EXPECT_EQ(refused, 20 + 7);
}

}  // namespace
}  // namespace tovtest
