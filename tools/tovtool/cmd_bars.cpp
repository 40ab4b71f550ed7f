// tovtool bars: writes colour bars as a top-down BMP file through TOV::BMPFileWriter.
#include <cstdint>
#include <iostream>
#include <string>
#include <vector>

#if __has_include(<unistd.h>)
#include <unistd.h>
#define TOVTOOL_ISATTY(fd) ::isatty(fd)
#elif __has_include(<io.h>)
#include <io.h>
#define TOVTOOL_ISATTY(fd) ::_isatty(fd)
#else
#define TOVTOOL_ISATTY(fd) 0
#endif

#include "tool.h"
#include "tovfoundation/tovfoundation.h"

namespace tovtool {

// What `tovtool bars` writes; shared with the writers demo.
struct BarsSettings {
  std::int32_t width = 640;
  std::int32_t height = 480;
  std::uint32_t colourSpace = 0x80;  // 4 bytes per pixel
};

// The pixel rows of the bars, top row first, rows back to back.
std::vector<unsigned char> MakeBars(const BarsSettings& settings);
// Writes the bars to `path`; answers the writer's status.
std::uint32_t WriteBars(const std::string& path, const BarsSettings& settings);

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
    const auto width = ParseInteger(*value, "--width");
    if (width < 1 || width > 65535) throw UsageError("--width must be 1 to 65535");
    settings.width = static_cast<std::int32_t>(width);
  }
  if (auto value = TakeOption(args, "height")) {
    const auto height = ParseInteger(*value, "--height");
    if (height < 1 || height > 65535) throw UsageError("--height must be 1 to 65535");
    settings.height = static_cast<std::int32_t>(height);
  }
  if (auto value = TakeOption(args, "colour-space")) {
    std::size_t used = 0;
    unsigned long long parsed = 0;
    try {
      parsed = std::stoull(*value, &used, 0);
    } catch (const std::exception&) {
      used = 0;
    }
    if (used != value->size() || parsed > 0xFFFFFFFFull ||
        Halyard::VColourSpacetoNumberofBytes(static_cast<std::uint32_t>(parsed)) == 0) {
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
  const bool notice = TOVTOOL_ISATTY(2) != 0 && bytes >= (64u << 20);
  if (notice) std::cerr << "writing " << (bytes >> 20) << " MiB of pixels..." << std::flush;
  const std::uint32_t status = WriteBars(args[0], settings);
  if (notice) std::cerr << " done\n";
  if (status != 0) {
    std::cerr << "tovtool bars: writing " << args[0] << " failed with status 0x" << std::hex
              << std::uppercase << status << std::dec << '\n';
    return 1;
  }
  std::cout << args[0] << ": " << settings.width << " x " << settings.height << ", "
            << 8 * Halyard::VColourSpacetoNumberofBytes(settings.colourSpace) << " bits per pixel, "
            << (54 + bytes) << " bytes\n";
  return 0;
}

TOVTOOL_COMMAND({"bars", "write colour bars as a top-down BMP file",
                 "tovtool bars OUT.bmp [--width N] [--height N] [--colour-space CODE]\n"
                 "  Defaults: 640 x 480, colour space 0x80 (32 bits per pixel).\n"
                 "  Eight 75% bars, reversed in the bottom quarter. Rows are stored without\n"
                 "  padding to 4 bytes.",
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

std::uint32_t WriteBars(const std::string& path, const BarsSettings& settings) {
  const UTF16String path16 = basalt::UTF8to16(path);
  TOV::BMPFileWriter writer;
  std::uint32_t status = writer.OpenNewFile(path16.c_str());
  if (status != 0) return status;
  writer.SetBMPProperties(Halyard::VSize{settings.width, settings.height}, settings.colourSpace);
  const std::vector<unsigned char> pixels = MakeBars(settings);
  const auto stride = static_cast<std::int32_t>(
      settings.width * Halyard::VColourSpacetoNumberofBytes(settings.colourSpace));
  std::uint32_t unused = 0;
  return writer.WriteBMP(pixels.data(), stride, 0, unused);
}

}  // namespace tovtool
