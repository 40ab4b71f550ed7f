// tovtool bars: writes colour bars as a top-down BMP file through TOV::BMPFileWriter.
#include <cstdint>
#include <iostream>
#include <string>
#include <vector>

#include "media_settings.h"
#include "tool.h"
#include "tool_io.h"
#include "tool_os.h"
#include "tovfoundation/tovfoundation.h"

namespace tovtool {

namespace {

// The eight classic bars at 75%, as blue, green, red.
constexpr unsigned char kBars[8][3] = {
    {191, 191, 191}, {0, 191, 191}, {191, 191, 0}, {0, 191, 0},
    {191, 0, 191},   {0, 0, 191},   {191, 0, 0},   {0, 0, 0},
};

int RunBars(const Args& arguments) {
  Args args = arguments;
  BarsSettings settings;
  if (auto value = TakeOption(args, "width")) {
    settings.width = static_cast<std::int32_t>(ParseInteger(*value, "--width", 1, 65535));
  }
  if (auto value = TakeOption(args, "height")) {
    settings.height = static_cast<std::int32_t>(ParseInteger(*value, "--height", 1, 65535));
  }
  if (auto value = TakeOption(args, "colour-space")) {
    const std::uint64_t parsed = ParseUnsigned(*value, "--colour-space", 0xFFFFFFFFull);
    if (Halyard::VColourSpacetoNumberofBytes(static_cast<std::uint32_t>(parsed)) == 0) {
      throw UsageError(
          "--colour-space must be a code with a known pixel size (0x4: 1 byte, "
          "0x20: 3 bytes, 0x80: 4 bytes, ...), not '" +
          *value + "'");
    }
    settings.colourSpace = static_cast<std::uint32_t>(parsed);
  }
  RejectUnknownOptions(args);
  if (args.size() != 1) throw UsageError("expected one output file");
  const std::uint64_t bytes = static_cast<std::uint64_t>(settings.width) * settings.height *
                              Halyard::VColourSpacetoNumberofBytes(settings.colourSpace);
  if (bytes > 0xFFFFFFFFull - 54) throw UsageError("the picture would not fit a BMP file");

  // The writer takes the whole picture in one call, so a large one only gets
  // a notice on a terminal rather than a running percentage.
  const bool notice = StderrIsTerminal() && bytes >= (64u << 20);
  if (notice) std::cerr << "writing " << (bytes >> 20) << " MiB of pixels..." << std::flush;
  try {
    WriteBars(args[0], settings);
  } catch (const Failure&) {
    if (notice) std::cerr << '\n';
    throw;
  }
  if (notice) std::cerr << " done\n";
  std::cout << args[0] << ": " << settings.width << " x " << settings.height << ", "
            << 8 * Halyard::VColourSpacetoNumberofBytes(settings.colourSpace) << " bits per pixel, "
            << (54 + bytes) << " bytes\n";
  return 0;
}

TOVTOOL_COMMAND({"bars", "write colour bars as a top-down BMP file",
                 "tovtool bars OUT.bmp [--width N] [--height N] [--colour-space CODE]\n"
                 "  Defaults: 640 x 480, colour space 0x80 (32 bits per pixel).\n"
                 "  Eight 75% bars, reversed in the bottom quarter. Rows are stored without\n"
                 "  padding to 4 bytes. --width and --height 1 to 65535; --colour-space a\n"
                 "  code with a known pixel size, decimal or 0x.... The picture is written to\n"
                 "  a temporary file in OUT.bmp's folder and renamed over OUT.bmp only when\n"
                 "  every write succeeded: on failure OUT.bmp is left as it was (exit 1).",
                 RunBars});

}  // namespace

std::vector<unsigned char> MakeBars(const BarsSettings& settings) {
  const std::uint32_t bytesPerPixel = Halyard::VColourSpacetoNumberofBytes(settings.colourSpace);
  std::vector<unsigned char> pixels(static_cast<std::size_t>(settings.width) *
                                    static_cast<std::size_t>(settings.height) * bytesPerPixel);
  unsigned char* out = pixels.data();
  for (std::int32_t y = 0; y < settings.height; ++y) {
    for (std::int32_t x = 0; x < settings.width; ++x) {
      // The bottom quarter shows the bars in reverse order, so that which
      // way up the picture lies can be seen.
      std::size_t index = static_cast<std::size_t>(x) * 8 / settings.width;
      if (y >= settings.height - settings.height / 4) index = 7 - index;
      const unsigned char* bar = kBars[index];
      if (bytesPerPixel == 1) {
        *out++ = static_cast<unsigned char>((bar[0] + bar[1] + bar[2]) / 3);
        continue;
      }
      *out++ = bar[0];
      *out++ = bar[1];
      *out++ = bar[2];
      if (bytesPerPixel == 4) *out++ = 255;
    }
  }
  return pixels;
}

void WriteBars(const std::string& path, const BarsSettings& settings) {
  const std::uint32_t bytesPerPixel = Halyard::VColourSpacetoNumberofBytes(settings.colourSpace);
  const std::uint64_t size = 54 + static_cast<std::uint64_t>(settings.width) *
                                      static_cast<std::uint64_t>(settings.height) * bytesPerPixel;
  const std::vector<unsigned char> pixels = MakeBars(settings);
  WriteFileSafely(path, size, [&](CheckedFilePort& port) {
    // The writer adopts the stream and destroys it when it ends; the stream
    // only uses the port, which outlives it.
    auto* stream = new Halyard::CWriteStream(static_cast<Halyard::CPortEx&>(port),
                                             Halyard::kHaldLittleEndian, 1 << 16, 0, 0);
    TOV::BMPFileWriter writer;
    if (const std::uint32_t status = writer.ResetStream(stream); status != 0) {
      stream->Release();
      return status;
    }
    writer.SetBMPProperties(Halyard::VSize{settings.width, settings.height}, settings.colourSpace);
    const auto stride = static_cast<std::int32_t>(settings.width * bytesPerPixel);
    std::uint32_t unused = 0;
    return writer.WriteBMP(pixels.data(), stride, 0, unused);
  });
}

}  // namespace tovtool
