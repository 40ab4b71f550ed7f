// tovtool base64 encode|decode [FILE]: Base64 through Halyard::Encode/Decode.
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "tool.h"
#include "tool_io.h"
#include "tool_os.h"
#include "tovfoundation/tovfoundation.h"

namespace {

// Whole inputs are held in memory, twice over while they are converted.
constexpr std::uint64_t kMaxInput = std::uint64_t{1} << 30;

std::string ReadStandardInput() {
  std::string data;
  char chunk[65536];
  std::size_t got = 0;
  while ((got = std::fread(chunk, 1, sizeof chunk, stdin)) > 0) {
    data.append(chunk, got);
    if (data.size() > kMaxInput) throw tovtool::Failure("standard input is larger than 1 GiB");
  }
  if (std::ferror(stdin)) throw tovtool::Failure("cannot read standard input");
  return data;
}

std::string ReadFile(const std::string& path) {
  const std::uint64_t size = tovtool::RequireRegularFile(path);
  if (size > kMaxInput) throw tovtool::Failure(path + ": larger than 1 GiB");
  tovtool::CheckedFilePort port(Halyard::kAccessRead);
  port.Open(path);
  std::string data(static_cast<std::size_t>(size), '\0');
  if (size != 0 && port.Read(0, static_cast<std::int32_t>(size), data.data()) != 0) {
    throw tovtool::Failure("cannot read " + path + ": " + port.FailureText());
  }
  return data;
}

std::string ReadAll(const tovtool::Args& args) {
  if (args.size() < 2 || args[1] == "-") return ReadStandardInput();
  return ReadFile(args[1]);
}

// Standard output is checked once more when the tool exits.
void WriteAll(const void* data, std::size_t size) {
  std::cout.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
}

int RunBase64(const tovtool::Args& arguments) {
  tovtool::Args args = arguments;
  tovtool::RejectUnknownOptions(args);
  if (args.empty() || args.size() > 2)
    throw tovtool::UsageError("expected encode or decode and at most one file");
  tovtool::UseBinaryStandardStreams();  // the bytes as they are, CRLFs included
  if (args[0] == "encode") {
    const std::string data = ReadAll(args);
    const UTF16String text = Halyard::Encode(std::vector<unsigned char>(data.begin(), data.end()));
    const UTF8String bytes = basalt::UTF16to8(text);
    WriteAll(bytes.data(), bytes.size());
    return 0;
  }
  if (args[0] == "decode") {
    const std::string data = ReadAll(args);
    const std::vector<unsigned char> bytes = Halyard::Decode(basalt::UTF8to16(data));
    WriteAll(bytes.data(), bytes.size());
    return 0;
  }
  throw tovtool::UsageError("unknown mode '" + args[0] + "' (expected encode or decode)");
}

TOVTOOL_COMMAND({"base64", "encode bytes as Base64 text with CRLF lines, or decode it",
                 "tovtool base64 encode|decode [FILE]\n"
                 "  Reads FILE (or standard input when FILE is missing or '-') and writes the\n"
                 "  result to standard output. encode writes the library's line layout: a CRLF\n"
                 "  after the first four characters, then after every 76. decode ignores every\n"
                 "  character outside the Base64 alphabet. FILE must be a regular file (give\n"
                 "  pipes and devices as standard input); inputs are at most 1 GiB.",
                 RunBase64});

}  // namespace
