// tovtool tone: writes a sine test tone as a WAVE file through TOV::PCMFileWriter.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <numbers>
#include <string>
#include <vector>

#include "media_settings.h"
#include "tool.h"
#include "tool_io.h"
#include "tovfoundation/tovfoundation.h"

namespace tovtool {

namespace {

// One sample of `value` (−1…1) in the layout of `sampleSize`, little-endian.
void EncodeSample(double value, Halyard::enumVAudioSampleSize sampleSize, unsigned char* out) {
  auto putInteger = [out](std::int64_t sample, int bytes) {
    const auto bits = static_cast<std::uint64_t>(sample);
    for (int i = 0; i < bytes; ++i) out[i] = static_cast<unsigned char>(bits >> (8 * i));
  };
  switch (sampleSize) {
    case Halyard::kVAudioSampleSize8:
    case Halyard::kVAudioSampleSize8Alt:  // 8-bit WAVE samples are unsigned
      out[0] = static_cast<unsigned char>(128 + std::lround(value * 127.0));
      break;
    case Halyard::kVAudioSampleSize20:  // 20 significant bits in a 3-byte container
      putInteger(std::llround(value * 524287.0) * 16, 3);
      break;
    case Halyard::kVAudioSampleSize24:
      putInteger(std::llround(value * 8388607.0), 3);
      break;
    case Halyard::kVAudioSampleSize32:
      putInteger(std::llround(value * 2147483647.0), 4);
      break;
    case Halyard::kVAudioSampleSize64:
      putInteger(std::llround(value * 9.2233720368547748e18 * 0.999999), 8);
      break;
    case Halyard::kVAudioSampleSize32Float: {
      const float sample = static_cast<float>(value);
      std::uint32_t bits = 0;
      std::memcpy(&bits, &sample, sizeof bits);
      putInteger(bits, 4);
      break;
    }
    default:
      putInteger(std::lround(value * 32767.0), 2);
      break;
  }
}

// Bytes one sample takes in the file.
std::uint32_t ContainerBytes(Halyard::enumVAudioSampleSize sampleSize) {
  const std::uint32_t bits = Halyard::TOVAudioSampleSizeToBitsPerSample(sampleSize);
  return (bits + 7) / 8;
}

int RunTone(const Args& arguments) {
  Args args = arguments;
  ToneSettings settings;
  if (auto value = TakeOption(args, "rate")) {
    settings.sampleRate = static_cast<std::uint32_t>(ParseInteger(*value, "--rate", 1, 1000000));
  }
  const auto mask = TakeOption(args, "mask");
  const auto channels = TakeOption(args, "channels");
  if (mask && channels) throw UsageError("give either --mask or --channels");
  if (mask) {
    const std::uint64_t parsed = ParseUnsigned(*mask, "--mask", 0xFFFFFFFFull);
    if (parsed == 0) throw UsageError("--mask must be a non-zero channel mask such as 0x3");
    settings.audioMode = static_cast<std::uint32_t>(parsed);
  }
  if (channels) {
    const auto count = ParseInteger(*channels, "--channels", 1, 32);
    settings.audioMode = count == 32 ? 0xFFFFFFFFu : ((1u << count) - 1u);
  }
  const auto bits = TakeOption(args, "bits");
  const auto sampleSize = TakeOption(args, "sample-size");
  const bool isFloat = TakeFlag(args, "float");
  if ((bits ? 1 : 0) + (sampleSize ? 1 : 0) + (isFloat ? 1 : 0) > 1) {
    throw UsageError("give only one of --bits, --sample-size and --float");
  }
  if (bits) {
    const auto value = ParseInteger(*bits, "--bits");
    if (value != 8 && value != 16 && value != 20 && value != 24 && value != 32 && value != 64) {
      throw UsageError("--bits must be 8, 16, 20, 24, 32 or 64");
    }
    settings.sampleSize =
        Halyard::BitsPerSampleToTOVAudioSampleSize(static_cast<std::uint32_t>(value));
  }
  if (sampleSize) {
    const auto value = ParseUnsigned(*sampleSize, "--sample-size", 0xFFFFFFFFull);
    if (Halyard::TOVAudioSampleSizeToBitsPerSample(
            static_cast<Halyard::enumVAudioSampleSize>(value)) == 0) {
      throw UsageError("--sample-size must be one of 1, 2, 4, 8, 16, 32, 64, 128");
    }
    settings.sampleSize = static_cast<Halyard::enumVAudioSampleSize>(value);
  }
  if (isFloat) settings.sampleSize = Halyard::kVAudioSampleSize32Float;
  if (auto value = TakeOption(args, "seconds")) {
    settings.seconds = ParseNumber(*value, "--seconds");
    if (settings.seconds < 0.0 || settings.seconds > 86400.0) {
      throw UsageError("--seconds must be 0 to 86400");
    }
  }
  if (auto value = TakeOption(args, "frequency")) {
    settings.frequency = ParseNumber(*value, "--frequency");
    if (settings.frequency <= 0.0 || settings.frequency > 1e6) {
      throw UsageError("--frequency must be above 0 and at most 1000000");
    }
  }
  RejectUnknownOptions(args);
  if (args.size() != 1) throw UsageError("expected one output file");

  const std::uint64_t frames =
      static_cast<std::uint64_t>(std::llround(settings.seconds * settings.sampleRate));
  const std::uint64_t bytes = ToneDataBytes(settings);
  if (bytes > 0xFFFFFFFFull - 36) {
    throw UsageError("the tone would not fit a WAVE file (4 GiB); make it shorter");
  }
  {
    Progress progress("writing", bytes >= (8u << 20));
    WriteTone(args[0], settings, &progress);
  }
  std::cout << args[0] << ": " << frames << " frames, "
            << Halyard::TOVAudioModeToNumberOfChannels(settings.audioMode) << " channels, "
            << Halyard::TOVAudioSampleSizeToBitsPerSample(settings.sampleSize) << " bits"
            << (settings.sampleSize == Halyard::kVAudioSampleSize32Float ? " float" : "") << ", "
            << settings.sampleRate << " Hz, " << (44 + bytes) << " bytes\n";
  return 0;
}

TOVTOOL_COMMAND({"tone", "write a sine test tone as a WAVE file",
                 "tovtool tone OUT.wav [--rate HZ] [--channels N | --mask MASK]\n"
                 "                    [--bits N | --sample-size CODE | --float]\n"
                 "                    [--seconds S] [--frequency HZ]\n"
                 "  Defaults: 48000 Hz, stereo (mask 0x3), 16 bits, 1 second, 440 Hz.\n"
                 "  --rate 1 to 1000000; --channels 1 to 32; --mask a non-zero 32-bit mask\n"
                 "  (decimal or 0x...); --bits 8, 16, 20, 24, 32 or 64; --sample-size 1, 2, 4,\n"
                 "  8, 16, 32, 64 or 128; --float writes 32-bit IEEE float; --seconds 0 to\n"
                 "  86400; --frequency above 0, at most 1000000. The file must stay below 4 GiB.\n"
                 "  The tone is written to a temporary file in OUT.wav's folder and renamed\n"
                 "  over OUT.wav only when every write succeeded: on failure OUT.wav is left\n"
                 "  as it was (exit 1).",
                 RunTone});

}  // namespace

std::uint64_t ToneDataBytes(const ToneSettings& settings) {
  const auto frames =
      static_cast<std::uint64_t>(std::llround(settings.seconds * settings.sampleRate));
  return frames * Halyard::TOVAudioModeToNumberOfChannels(settings.audioMode) *
         ContainerBytes(settings.sampleSize);
}

void WriteTone(const std::string& path, const ToneSettings& settings, Progress* progress) {
  WriteFileSafely(path, 44 + ToneDataBytes(settings), [&](CheckedFilePort& port) {
    // The writer owns the stream and destroys it at EndWriting; the stream
    // only uses the port, which outlives it.
    auto* stream = new Halyard::CWriteStream(static_cast<Halyard::CPortEx&>(port),
                                             Halyard::kHaldLittleEndian, 1 << 16, 0, 0);
    const Halyard::AudioInfo info{settings.audioMode, settings.sampleSize, settings.sampleRate};
    TOV::PCMFileWriter writer;
    std::uint32_t status = writer.BeginWriting(stream, info);
    if (status != 0) {
      writer.EndWriting();  // hands the stream back to be destroyed
      return status;
    }
    const std::uint32_t channels = Halyard::TOVAudioModeToNumberOfChannels(settings.audioMode);
    const std::uint32_t sampleBytes = ContainerBytes(settings.sampleSize);
    const std::uint32_t frameBytes = channels * sampleBytes;
    const std::uint64_t frames =
        static_cast<std::uint64_t>(std::llround(settings.seconds * settings.sampleRate));
    constexpr std::uint64_t kBlockFrames = 4096;
    std::vector<unsigned char> block(static_cast<std::size_t>(kBlockFrames * frameBytes));
    const double step = 2.0 * std::numbers::pi * settings.frequency / settings.sampleRate;
    for (std::uint64_t first = 0; first < frames && frameBytes != 0; first += kBlockFrames) {
      const std::uint64_t count = std::min(kBlockFrames, frames - first);
      unsigned char* out = block.data();
      for (std::uint64_t frame = first; frame < first + count; ++frame) {
        const double value = 0.5 * std::sin(step * static_cast<double>(frame));
        for (std::uint32_t channel = 0; channel < channels; ++channel) {
          EncodeSample(value, settings.sampleSize, out);
          out += sampleBytes;
        }
      }
      auto bytes = static_cast<std::uint32_t>(count * frameBytes);
      status = writer.WriteSamples(block.data(), bytes);
      // The stream hides the port's failures: stop at the first one the port saw.
      if (status != 0 || port.FirstFailure() != 0) {
        writer.EndWriting();
        return status;
      }
      if (progress != nullptr) progress->Show(static_cast<double>(first + count) / frames);
    }
    return writer.EndWriting();
  });
}

}  // namespace tovtool
