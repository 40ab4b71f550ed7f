// tovtool preset: the writer format name of an encoder preset file.
#include <array>
#include <iostream>
#include <string>

#include "tool.h"
#include "tovfoundation/tovfoundation.h"

namespace tovtool {
namespace {

std::string StatusText(std::uint32_t status) {
  switch (status) {
    case TOV::kErrOpenFailed:
      return "cannot open the file";
    case TOV::kErrNotFound:
      return "no writer format name in the file";
    case TOV::kErrCreateFailed:
      return "cannot read the file";
    case TOV::kErrInvalidPointer:
      return "invalid argument";
    default:
      return "failed";
  }
}

int RunPreset(const Args& arguments) {
  Args args = arguments;
  const auto writer = TakeOption(args, "writer");
  RejectUnknownOptions(args);
  if (args.size() != 1) throw UsageError("expected one preset file");
  const std::string& path = args[0];

  std::array<unsigned short, Halyard::kMaxFormatNameUnits + 1> name{};
  const std::uint32_t status =
      Halyard::VGetFormatName(path.c_str(), name.data(), Halyard::kMaxFormatNameUnits);
  if (status != 0) {
    std::cerr << "tovtool preset: " << path << ": " << StatusText(status) << " (status 0x"
              << std::hex << std::uppercase << status << std::dec << ")\n";
    return 1;
  }
  std::cout << "writer format name: " << basalt::UTF16to8(UTF16StringView(name.data())) << '\n';
  if (writer) {
    const UTF16String writer16 = basalt::UTF8to16(*writer);
    unsigned char isForWriter = 0;
    const std::uint32_t decided =
        Halyard::VIsPresetFileForThisWriter(path.c_str(), writer16.c_str(), &isForWriter);
    if (decided != 0) {
      std::cerr << "tovtool preset: " << path << ": " << StatusText(decided) << '\n';
      return 1;
    }
    std::cout << "for writer " << *writer << ": " << (isForWriter ? "yes" : "no") << '\n';
  }
  return 0;
}

TOVTOOL_COMMAND(
    {"preset", "show the writer format name of an encoder preset",
     "tovtool preset FILE [--writer NAME]\n"
     "  Prints the WriterFormatName of the preset's Header element and, with\n"
     "  --writer, whether the preset belongs to that writer (older names such as\n"
     "  \"Pellucid Video\" count as \"WRX | W4X\"; \"MPEG\" presets suit \"MPEG2-DVD\").",
     RunPreset});

}  // namespace
}  // namespace tovtool
