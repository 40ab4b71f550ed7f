// tovtool demo: the media writers and the format helpers.
#include <chrono>
#include <filesystem>
#include <iomanip>
#include <ostream>
#include <string>
#include <system_error>

#include "media_settings.h"
#include "tool.h"
#include "tovfoundation/tovfoundation.h"

namespace tovtool {

namespace {

// Runs `write` and shows the file it wrote, or why it could not.
template <typename Write>
void ShowFile(std::ostream& out, const std::filesystem::path& path, Write&& write) {
  out << "  " << path.string() << ": ";
  try {
    write();
  } catch (const Failure& failure) {
    out << "failed: " << failure.what() << "\n";
    return;
  }
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  out << size << " bytes\n";
}

void DemoWriters(std::ostream& out) {
  out << "5.1 surround mask 0x3F has " << Halyard::TOVAudioModeToNumberOfChannels(0x3F)
      << " channels; sample size 64 (float) has "
      << Halyard::TOVAudioSampleSizeToBitsPerSample(Halyard::kVAudioSampleSize32Float)
      << " bits, and 32 bits map back to sample size "
      << Halyard::BitsPerSampleToTOVAudioSampleSize(32) << "\n";
  out << "colour space 0x80 has " << Halyard::VColourSpacetoNumberofBytes(0x80)
      << " bytes per pixel, 0x20 has " << Halyard::VColourSpacetoNumberofBytes(0x20) << "\n";

  std::error_code error;
  const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
  const std::filesystem::path folder =
      std::filesystem::temp_directory_path(error) / ("tovtool-demo-" + std::to_string(stamp));
  if (error || !std::filesystem::create_directories(folder, error)) {
    out << "cannot make a temporary folder: " << error.message() << "\n";
    return;
  }
  out << "writing into " << folder.string() << " (left there for you to open):\n";

  ToneSettings tone;
  tone.seconds = 0.5;
  const auto wav = folder / "tone-440Hz.wav";
  ShowFile(out, wav, [&] { WriteTone(wav.string(), tone, nullptr); });

  BarsSettings bars;
  bars.width = 320;
  bars.height = 180;
  const auto bmp = folder / "bars-320x180.bmp";
  ShowFile(out, bmp, [&] { WriteBars(bmp.string(), bars); });

  using namespace basalt::literals;
  const UTF16String preset =
      u"\xFEFF<Preset><Header WriterFormatName=\"Pellucid Video\"/></Preset>"_u16;
  for (const UTF16String& writer : {u"WRX | W4X"_u16, u"MPEG2-DVD"_u16}) {
    unsigned char isForWriter = 0;
    const std::uint32_t status = Halyard::VIsPresetForThisWriter(
        preset.c_str(), static_cast<std::uint32_t>(preset.size()), writer.c_str(), &isForWriter);
    out << "a \"Pellucid Video\" preset is for writer \"" << basalt::UTF16to8(writer) << "\": ";
    if (status != 0) {
      out << "unknown (status 0x" << std::hex << std::uppercase << status << std::dec << ")\n";
    } else {
      out << (isForWriter ? "yes" : "no") << "\n";
    }
  }
}

TOVTOOL_DEMO_SECTION({40, "Media writers and format helpers", DemoWriters});

}  // namespace
}  // namespace tovtool
