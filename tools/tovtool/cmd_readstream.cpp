// tovtool readstream: reads typed values from a file through a read stream.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

#include "tool.h"
#include "tool_io.h"
#include "tovfoundation/tovfoundation.h"

namespace {

constexpr const char* kUsage =
    "tovtool readstream FILE [--type byte|short|int|int64|float|double|string]\n"
    "                        [--order big|little] [--offset N] [--count N]\n"
    "  Opens FILE read-only and reads COUNT values of TYPE (default: 16 bytes)\n"
    "  from OFFSET on, in the given byte order (default: little). A string is\n"
    "  UTF-16 units up to a zero unit, at most COUNT units. Reads stop at the\n"
    "  end of the file. FILE must be a regular file of any size (a pipe or a\n"
    "  device is refused, exit 1); OFFSET is 0 to the file's size, COUNT 1 to\n"
    "  1000000.";

std::uint32_t WidthOf(const std::string& type) {
  if (type == "byte") return 1;
  if (type == "short") return 2;
  if (type == "int" || type == "float") return 4;
  if (type == "int64" || type == "double") return 8;
  if (type == "string") return 2;
  throw tovtool::UsageError("unknown --type " + type);
}

int RunReadStream(const tovtool::Args& given) {
  tovtool::Args args = given;
  const std::string type = tovtool::TakeOption(args, "type").value_or("byte");
  const std::string order = tovtool::TakeOption(args, "order").value_or("little");
  const auto offsetText = tovtool::TakeOption(args, "offset");
  const auto countText = tovtool::TakeOption(args, "count");
  tovtool::RejectUnknownOptions(args);
  if (args.size() != 1) throw tovtool::UsageError("readstream takes one FILE");
  if (order != "big" && order != "little") throw tovtool::UsageError("--order is big or little");
  const std::uint32_t width = WidthOf(type);
  const std::int64_t offset =
      offsetText ? tovtool::ParseInteger(*offsetText, "--offset", 0, INT64_MAX) : 0;
  const std::int64_t count =
      countText ? tovtool::ParseInteger(*countText, "--count", 1, 1000000) : 16;

  const std::string& path = args[0];
  const std::uint64_t fileSize = tovtool::RequireRegularFile(path);
  if (static_cast<std::uint64_t>(offset) > fileSize) {
    throw tovtool::Failure(path + ": offset " + std::to_string(offset) + " is beyond the end (" +
                           std::to_string(fileSize) + " bytes)");
  }
  // The bytes the values can come from, read at the offset through the 64-bit
  // file port (files of any size, offsets past 4 GiB included), and handed to
  // the stream through the library's RAM port.
  tovtool::CheckedFilePort port(Halyard::kAccessRead);
  port.Open(path);
  const auto base = static_cast<std::uint64_t>(offset);
  const auto wanted = static_cast<std::uint32_t>(
      std::min<std::uint64_t>(fileSize - base, static_cast<std::uint64_t>(count) * width));
  std::vector<unsigned char> bytes(wanted);
  if (wanted != 0) port.Read(base, static_cast<std::int32_t>(wanted), bytes.data());
  const auto checkRead = [&port, &path] {
    if (port.FirstFailure() != 0) {
      throw tovtool::Failure("cannot read " + path + ": " + port.FailureText());
    }
  };
  checkRead();
  Halyard::CStaticRamFilePort held(bytes.data(), wanted, Halyard::kAccessRead, 0);
  const auto ordering = order == "big" ? Halyard::kHaldBigEndian : Halyard::kHaldLittleEndian;
  Halyard::CReadStream stream(held, ordering, 4096, 0, 0);
  std::uint32_t size = 0;
  stream.GetSize(&size);
  // Reads stay within the bytes read: the stream's callers bound them by its size.
  std::uint32_t pos = 0;
  const auto n = std::min<std::uint32_t>(size / width, static_cast<std::uint32_t>(count));

  if (type == "string") {
    if (n == 0) {
      std::cout << "\n";
      return 0;
    }
    UTF16String text;
    Halyard::VUtilsReadStringFromStream(stream, text, n);
    checkRead();
    std::cout << basalt::UTF16to8(text) << '\n';
    return 0;
  }
  for (std::uint32_t i = 0; i < n; ++i) {
    stream.GetPos(&pos);
    std::cout << std::setw(10) << base + pos << "  ";
    if (type == "byte") {
      unsigned char v = 0;
      stream.ReadByte(&v);
      std::cout << "0x" << std::hex << std::setw(2) << std::setfill('0') << int{v} << std::dec
                << std::setfill(' ') << "  " << int{v};
    } else if (type == "short") {
      std::int16_t v = 0;
      stream.ReadShort(&v);
      std::cout << v;
    } else if (type == "int") {
      std::int32_t v = 0;
      stream.ReadInt(&v);
      std::cout << v;
    } else if (type == "int64") {
      std::int64_t v = 0;
      if (ordering == Halyard::kHaldLittleEndian) {
        stream.ReadInt(&v);
      } else {
        // The 64-bit read stores only in little-endian order: reverse by hand.
        unsigned char bytes[8] = {};
        stream.Read(8, bytes);
        Halyard::Flip(bytes, 8);
        std::memcpy(&v, bytes, 8);
      }
      std::cout << v;
    } else if (type == "float") {
      float v = 0;
      stream.ReadFloat(&v);
      std::cout << v;
    } else {
      double v = 0;
      stream.ReadDouble(&v);
      std::cout << v;
    }
    std::cout << '\n';
    checkRead();
  }
  return 0;
}

TOVTOOL_COMMAND({"readstream", "read typed values from a file through a read stream", kUsage,
                 RunReadStream});

}  // namespace
