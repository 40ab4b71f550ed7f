// tovtool replace TEMPLATE TYPES ARGS...: placeholder replacement through
// Halyard::StringUtils::VReplace.
#include <cstdint>
#include <iostream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "tool.h"
#include "tovfoundation/tovfoundation.h"

namespace {

namespace SU = Halyard::StringUtils;
constexpr std::size_t kMaxArguments = 16;

std::string StatusText(std::uint32_t status) {
  std::ostringstream text;
  text << "0x" << std::hex << std::uppercase << status;
  return text.str();
}

// Lets VReplace format one argument with its own type letter: "^1" with a
// single argument.
template <typename T>
UTF16String FormatOne(char type, T value) {
  static const UTF16String templ = basalt::UTF8to16("^1");
  const char types[2] = {type, '\0'};
  std::uint32_t length = 0;
  if (SU::VReplace(templ.c_str(), nullptr, &length, types, value) != 0) return UTF16String();
  std::vector<unsigned short> buffer(std::size_t{length} + 1);
  SU::VReplace(templ.c_str(), buffer.data(), &length, types, value);
  return UTF16String(buffer.data(), length);
}

// Decimal (signed) or 0x... hexadecimal (at most 32 bits).
std::int64_t ParseWhole(const std::string& text, const std::string& what) {
  if (text.rfind("0x", 0) == 0 || text.rfind("0X", 0) == 0) {
    return static_cast<std::int64_t>(tovtool::ParseUnsigned(text, what, 0xFFFFFFFFull));
  }
  return tovtool::ParseInteger(text, what);
}

UTF16String ArgumentText(char type, const std::string& text, std::size_t index) {
  const std::string what =
      "argument " + std::to_string(index) + " ('" + std::string(1, type) + "')";
  switch (type) {
    case 'd':
      return FormatOne('d', tovtool::ParseNumber(text, what));
    case 'h':
    case 'u': {
      const std::int64_t value = ParseWhole(text, what);
      if (value < std::numeric_limits<std::int32_t>::min() ||
          value > std::numeric_limits<std::uint32_t>::max()) {
        throw tovtool::UsageError(what + " does not fit in 32 bits: " + text);
      }
      return FormatOne(type, static_cast<std::uint32_t>(value));
    }
    case 'i': {
      const std::int64_t value = ParseWhole(text, what);
      if (value < std::numeric_limits<std::int32_t>::min() ||
          value > std::numeric_limits<std::int32_t>::max()) {
        throw tovtool::UsageError(what + " does not fit in a signed 32-bit integer: " + text);
      }
      return FormatOne('i', static_cast<std::int32_t>(value));
    }
    case 'w':
      return basalt::UTF8to16(text);
    default:
      throw tovtool::UsageError("unknown type letter '" + std::string(1, type) +
                                "' (expected d, h, i, u or w)");
  }
}

int RunReplace(const tovtool::Args& args) {
  if (args.size() < 2) throw tovtool::UsageError("expected TEMPLATE and TYPES");
  const std::string& types = args[1];
  if (args.size() - 2 != types.size()) {
    throw tovtool::UsageError("TYPES names " + std::to_string(types.size()) + " arguments, " +
                              std::to_string(args.size() - 2) + " given");
  }
  if (types.size() > kMaxArguments) {
    throw tovtool::UsageError("at most " + std::to_string(kMaxArguments) + " arguments");
  }
  // Each argument becomes its text as its letter formats it; then all of them
  // go in as text ('w'), so one call shape serves any type string.
  std::vector<UTF16String> texts;
  for (std::size_t i = 0; i < types.size(); ++i)
    texts.push_back(ArgumentText(types[i], args[i + 2], i + 1));
  const unsigned short* p[kMaxArguments] = {};
  for (std::size_t i = 0; i < texts.size(); ++i) p[i] = texts[i].c_str();
  const std::string textTypes(types.size(), 'w');
  const UTF16String templ = basalt::UTF8to16(args[0]);

  std::uint32_t length = 0;
  const auto call = [&](unsigned short* out) {
    return SU::VReplace(templ.c_str(), out, &length, textTypes.c_str(), p[0], p[1], p[2], p[3],
                        p[4], p[5], p[6], p[7], p[8], p[9], p[10], p[11], p[12], p[13], p[14],
                        p[15]);
  };
  std::uint32_t status = call(nullptr);
  std::vector<unsigned short> buffer(std::size_t{length} + 1, 0);
  if (status == 0) status = call(buffer.data());
  if (status != 0) {
    std::cerr << "tovtool replace: status " << StatusText(status);
    if (templ.empty())
      std::cerr << " (empty template)";
    else
      std::cerr << " (placeholder above the argument count after " << length << " code units)";
    std::cerr << '\n';
    return 1;
  }
  std::cout << basalt::UTF16to8(UTF16String(buffer.data(), length)) << '\n';
  return 0;
}

TOVTOOL_COMMAND({"replace", "fill numbered placeholders (^1, ^2, ...) with typed arguments",
                 "tovtool replace TEMPLATE TYPES [ARGS...]\n"
                 "  TYPES has one letter per argument: d double, h 32-bit integer shown in\n"
                 "  hexadecimal, i signed 32-bit integer, u unsigned 32-bit integer, w text.\n"
                 "  Integers may be written in decimal or as 0x... hexadecimal; at most 16\n"
                 "  arguments. Example: tovtool replace 'Frame ^1 of ^2' uu 3 10",
                 RunReplace});

}  // namespace
