// tovtool base64 encode|decode [FILE]: Base64 through Halyard::Encode/Decode.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "tool.h"
#include "tovfoundation/tovfoundation.h"

namespace {

std::string ReadAll(const tovtool::Args& args) {
  if (args.size() < 2 || args[1] == "-") {
    std::string data;
    char chunk[65536];
    std::size_t got = 0;
    while ((got = std::fread(chunk, 1, sizeof chunk, stdin)) > 0) data.append(chunk, got);
    if (std::ferror(stdin)) throw std::runtime_error("cannot read standard input");
    return data;
  }
  std::ifstream in(args[1], std::ios::binary);
  if (!in) throw std::runtime_error("cannot open '" + args[1] + "'");
  std::string data((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (in.bad()) throw std::runtime_error("cannot read '" + args[1] + "'");
  return data;
}

void WriteAll(const void* data, std::size_t size) {
  if (size != 0 && std::fwrite(data, 1, size, stdout) != size) {
    throw std::runtime_error("cannot write standard output");
  }
  if (std::fflush(stdout) != 0) throw std::runtime_error("cannot write standard output");
}

int RunBase64(const tovtool::Args& arguments) {
  tovtool::Args args = arguments;
  tovtool::RejectUnknownOptions(args);
  if (args.empty() || args.size() > 2)
    throw tovtool::UsageError("expected encode or decode and at most one file");
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
                 "  character outside the Base64 alphabet.",
                 RunBase64});

}  // namespace
