// tovtool preset: the writer format name of an encoder preset file.
//
// The library's preset reader scans a file to its end when it holds no name,
// however large it is. A preset is a small XML file whose Header element comes
// first, so the tool hands the reader at most the first kScanLimit bytes (a
// copy of them when the file is larger) and says so when the name is not in
// them.
#include <array>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "tool.h"
#include "tool_io.h"
#include "tovfoundation/tovfoundation.h"

namespace tovtool {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kScanLimit = 1 << 20;

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

// Whether the UTF-16 little-endian bytes hold "WriterFormatName=" after "<Header".
bool HoldsFormatNameAttribute(const std::vector<unsigned char>& bytes) {
  std::u16string text(bytes.size() / 2, u'\0');
  for (std::size_t i = 0; i < text.size(); ++i) {
    text[i] = static_cast<char16_t>(bytes[2 * i] | (bytes[2 * i + 1] << 8));
  }
  const std::size_t header = text.find(u"<Header");
  return header != std::u16string::npos &&
         text.find(u"WriterFormatName=", header) != std::u16string::npos;
}

// The first `size` bytes of the file in a temporary file of their own,
// removed with this object.
class ScanCopy {
 public:
  explicit ScanCopy(const std::vector<unsigned char>& bytes) {
    std::error_code error;
    const fs::path folder = fs::temp_directory_path(error);
    if (error) throw Failure("no temporary folder: " + ErrorMessage(error));
    std::random_device seed;
    mPath = folder / ("tovtool-preset-" + std::to_string(seed()) + ".tmp");
    std::ofstream out(mPath, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) throw Failure("cannot write a temporary copy in " + folder.string());
  }
  ~ScanCopy() {
    std::error_code ignored;
    fs::remove(mPath, ignored);
  }
  std::string Path() const {
    const std::u8string text = mPath.u8string();
    return std::string(text.begin(), text.end());
  }

 private:
  fs::path mPath;
};

int RunPreset(const Args& arguments) {
  Args args = arguments;
  const auto writer = TakeOption(args, "writer");
  RejectUnknownOptions(args);
  if (args.size() != 1) throw UsageError("expected one preset file");
  const std::string& path = args[0];
  if (writer && writer->empty()) throw UsageError("--writer needs a name");

  const std::uint64_t fileSize = RequireRegularFile(path);
  const std::uint64_t scanned = std::min(fileSize, kScanLimit);
  std::vector<unsigned char> head(static_cast<std::size_t>(scanned));
  {
    CheckedFilePort port(Halyard::kAccessRead);
    port.Open(path);
    if (!head.empty() && port.Read(0, static_cast<std::int32_t>(head.size()), head.data()) != 0) {
      throw Failure("cannot read " + path + ": " + port.FailureText());
    }
  }
  std::optional<ScanCopy> copy;
  if (fileSize > kScanLimit) copy.emplace(head);
  const std::string scanPath = copy ? copy->Path() : AbsolutePath(path);

  std::array<unsigned short, Halyard::kMaxFormatNameUnits + 1> name{};
  const std::uint32_t status =
      Halyard::VGetFormatName(scanPath.c_str(), name.data(), Halyard::kMaxFormatNameUnits);
  if (status == TOV::kErrNotFound && HoldsFormatNameAttribute(head)) {
    throw Failure(path + ": the writer format name is too long (the longest read is " +
                  std::to_string(Halyard::kMaxFormatNameUnits - 1) + " UTF-16 units)");
  }
  if (status == TOV::kErrNotFound && copy) {
    throw Failure(path + ": no writer format name in the first " + std::to_string(kScanLimit) +
                  " bytes (the file has " + std::to_string(fileSize) +
                  "; a preset's header comes first, so the rest is not searched)");
  }
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
        Halyard::VIsPresetFileForThisWriter(scanPath.c_str(), writer16.c_str(), &isForWriter);
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
     "  \"Pellucid Video\" count as \"WRX | W4X\"; \"MPEG\" presets suit \"MPEG2-DVD\").\n"
     "  FILE must be a regular file (a pipe or a device is refused, exit 1); only\n"
     "  its first 1048576 bytes are searched. Names of 260 UTF-16 units or more\n"
     "  are not read (exit 1).",
     RunPreset});

}  // namespace
}  // namespace tovtool
