// tovtool: entry point, help, version and the demo.
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "tool.h"
#include "tool_io.h"
#include "tool_os.h"
#include "tovfoundation/tovfoundation.h"

namespace tovtool {

namespace {
std::vector<Command>& Commands() {
  static std::vector<Command> commands;
  return commands;
}
std::vector<DemoSection>& DemoSections() {
  static std::vector<DemoSection> sections;
  return sections;
}

const Command* FindCommand(const std::string& name) {
  for (const auto& command : Commands()) {
    if (name == command.name) return &command;
  }
  return nullptr;
}

void PrintHelp(std::ostream& out) {
  out << "tovtool " << TOVFoundation::Version()
      << " - the command-line face of the tovfoundation library\n\n"
         "Usage: tovtool COMMAND [ARGS...]\n"
         "       tovtool help COMMAND\n"
         "       tovtool --help | --version\n\nCommands:\n";
  auto commands = Commands();
  std::sort(commands.begin(), commands.end(),
            [](const Command& a, const Command& b) { return std::string(a.name) < b.name; });
  for (const auto& command : commands) {
    std::string name = command.name;
    name.resize(std::max<std::size_t>(name.size() + 2, 12), ' ');
    out << "  " << name << command.summary << '\n';
  }
}

int RunDemo(const Args& args) {
  if (!args.empty()) throw UsageError("demo takes no arguments");
  auto sections = DemoSections();
  std::stable_sort(sections.begin(), sections.end(),
                   [](const DemoSection& a, const DemoSection& b) { return a.order < b.order; });
  std::cout << "tovfoundation " << TOVFoundation::Version() << " demo\n";
  for (const auto& section : sections) {
    std::cout << "\n== " << section.title << " ==\n";
    section.run(std::cout);
  }
  std::cout << "\ndemo finished\n";
  return 0;
}

TOVTOOL_COMMAND({"demo", "walk through what the library can do", "tovtool demo", RunDemo});
}  // namespace

bool RegisterCommand(const Command& command) {
  Commands().push_back(command);
  return true;
}

bool RegisterDemoSection(const DemoSection& section) {
  DemoSections().push_back(section);
  return true;
}

std::optional<std::string> TakeOption(Args& args, const std::string& name) {
  const std::string flag = "--" + name;
  for (std::size_t i = 0; i < args.size(); ++i) {
    if (args[i] == flag) {
      if (i + 1 >= args.size()) throw UsageError("option " + flag + " needs a value");
      std::string value = args[i + 1];
      args.erase(args.begin() + static_cast<std::ptrdiff_t>(i),
                 args.begin() + static_cast<std::ptrdiff_t>(i) + 2);
      return value;
    }
    if (args[i].rfind(flag + "=", 0) == 0) {
      std::string value = args[i].substr(flag.size() + 1);
      args.erase(args.begin() + static_cast<std::ptrdiff_t>(i));
      return value;
    }
  }
  return std::nullopt;
}

bool TakeFlag(Args& args, const std::string& name) {
  const auto found = std::find(args.begin(), args.end(), "--" + name);
  if (found == args.end()) return false;
  args.erase(found);
  return true;
}

namespace {
// The digits of a number after one optional sign: "+" is skipped, "-" kept
// for from_chars; "+-1", "--1" and "" are left with no digits in front.
const char* SkipPlus(const std::string& text) {
  const char* begin = text.data();
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') ++begin;
  return begin;
}
bool StartsWithDigit(const char* begin, const char* end) {
  if (begin != end && *begin == '-') ++begin;
  return begin != end && ((*begin >= '0' && *begin <= '9') || *begin == '.');
}
}  // namespace

std::int64_t ParseInteger(const std::string& text, const std::string& what) {
  std::int64_t value = 0;
  const char* begin = SkipPlus(text);
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(begin, end, value);
  if (result.ec == std::errc::result_out_of_range) {
    throw UsageError(what + " is out of range: '" + text + "'");
  }
  if (!StartsWithDigit(begin, end) || result.ec != std::errc() || result.ptr != end) {
    throw UsageError(what + " must be a whole number, not '" + text + "'");
  }
  return value;
}

std::int64_t ParseInteger(const std::string& text, const std::string& what, std::int64_t min,
                          std::int64_t max) {
  const std::int64_t value = ParseInteger(text, what);
  if (value < min || value > max) {
    throw UsageError(what + " must be " + std::to_string(min) + " to " + std::to_string(max) +
                     ", not '" + text + "'");
  }
  return value;
}

double ParseNumber(const std::string& text, const std::string& what) {
  double value = 0;
  const char* begin = SkipPlus(text);
  const char* end = text.data() + text.size();
  // from_chars would also take "nan" and "inf": a number starts with a digit
  // or a point.
  const auto result = std::from_chars(begin, end, value, std::chars_format::general);
  if (!StartsWithDigit(begin, end) || result.ec != std::errc() || result.ptr != end ||
      !std::isfinite(value)) {
    throw UsageError(what + " must be a finite number, not '" + text + "'");
  }
  return value;
}

std::uint64_t ParseUnsigned(const std::string& text, const std::string& what, std::uint64_t max) {
  const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  const char* begin = text.data() + (hex ? 2 : 0);
  const char* end = text.data() + text.size();
  std::uint64_t value = 0;
  const auto result = std::from_chars(begin, end, value, hex ? 16 : 10);
  if (begin == end || result.ec == std::errc::invalid_argument || result.ptr != end) {
    throw UsageError(what + " must be a whole number (decimal or 0x...), not '" + text + "'");
  }
  if (result.ec == std::errc::result_out_of_range || value > max) {
    throw UsageError(what + " is out of range (at most " + std::to_string(max) + "): '" + text +
                     "'");
  }
  return value;
}

void RejectUnknownOptions(const Args& args) {
  for (const auto& arg : args) {
    if (arg.size() > 2 && arg.rfind("--", 0) == 0) throw UsageError("unknown option " + arg);
  }
}

}  // namespace tovtool

namespace tovtool {
namespace {

// Every byte for standard output must have reached it: a failed write (a full
// disk, /dev/full, a closed pipe) turns a successful run into exit code 1.
int CheckStandardOutput(int status) {
  errno = 0;
  std::cout.flush();  // with synchronised streams, flushes stdout too
  int error = errno;
  const bool flushed = std::fflush(stdout) == 0;
  if (error == 0) error = errno;
  if (flushed && !std::ferror(stdout) && std::cout.good()) return status;
  std::cerr << "tovtool: cannot write standard output";
  if (error != 0) std::cerr << ": " << OsMessage(OsErrorFromErrno(error));
  std::cerr << '\n';
  return status == kExitSuccess ? kExitFailure : status;
}

constexpr const char* kShortUsage =
    "Usage: tovtool COMMAND [ARGS...]\n"
    "Try 'tovtool --help'.\n";

bool AsksForHelp(const Args& args) {
  return std::any_of(args.begin(), args.end(),
                     [](const std::string& arg) { return arg == "-h" || arg == "--help"; });
}

int Run(Args args) {
  if (args.empty()) {
    PrintHelp(std::cerr);
    return kExitUsage;
  }
  const std::string first = args.front();
  if (first == "--help" || first == "-h") {
    PrintHelp(std::cout);
    return kExitSuccess;
  }
  if (first == "--version") {
    if (args.size() != 1) {
      std::cerr << "tovtool: --version takes no arguments\n" << kShortUsage;
      return kExitUsage;
    }
    std::cout << "tovtool " << TOVFoundation::Version() << '\n';
    return kExitSuccess;
  }
  if (first == "help") {
    if (args.size() == 1) {
      PrintHelp(std::cout);
      return kExitSuccess;
    }
    const Command* command = args.size() == 2 ? FindCommand(args[1]) : nullptr;
    if (command == nullptr) {
      std::cerr << "tovtool: unknown command '" << args[1] << "'\n" << kShortUsage;
      return kExitUsage;
    }
    std::cout << "Usage: " << command->usage << '\n';
    return kExitSuccess;
  }
  const Command* command = FindCommand(first);
  if (command == nullptr) {
    std::cerr << "tovtool: unknown command '" << first << "'\n" << kShortUsage;
    return kExitUsage;
  }
  args.erase(args.begin());
  if (AsksForHelp(args)) {
    std::cout << "Usage: " << command->usage << '\n';
    return kExitSuccess;
  }
  try {
    return command->run(args);
  } catch (const UsageError& error) {
    std::cerr << "tovtool " << command->name << ": " << error.what()
              << "\nUsage: " << command->usage << '\n';
    return kExitUsage;
  } catch (const Failure& error) {
    std::cerr << "tovtool " << command->name << ": " << error.what() << '\n';
    return kExitFailure;
  } catch (const std::bad_alloc&) {
    std::cerr << "tovtool " << command->name << ": not enough memory\n";
    return kExitFailure;
  } catch (const std::exception& error) {
    std::cerr << "tovtool " << command->name << ": " << error.what() << '\n';
    return kExitFailure;
  }
}

}  // namespace
}  // namespace tovtool

int main(int argc, char** argv) {
  using namespace tovtool;
  return CheckStandardOutput(Run(Args(argv + 1, argv + argc)));
}
