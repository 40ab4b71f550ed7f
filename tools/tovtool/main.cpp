// tovtool: entry point, help, version and the demo.
#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "tool.h"
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

std::int64_t ParseInteger(const std::string& text, const std::string& what) {
  std::int64_t value = 0;
  const char* begin = text.data();
  const char* end = begin + text.size();
  if (begin != end && *begin == '+') ++begin;
  const auto result = std::from_chars(begin, end, value);
  if (text.empty() || result.ec != std::errc() || result.ptr != end) {
    throw UsageError(what + " must be a whole number, not '" + text + "'");
  }
  return value;
}

double ParseNumber(const std::string& text, const std::string& what) {
  double value = 0;
  const char* begin = text.data();
  const char* end = begin + text.size();
  if (begin != end && *begin == '+') ++begin;
  const auto result = std::from_chars(begin, end, value);
  if (text.empty() || result.ec != std::errc() || result.ptr != end) {
    throw UsageError(what + " must be a number, not '" + text + "'");
  }
  return value;
}

void RejectUnknownOptions(const Args& args) {
  for (const auto& arg : args) {
    if (arg.size() > 2 && arg.rfind("--", 0) == 0) throw UsageError("unknown option " + arg);
  }
}

}  // namespace tovtool

int main(int argc, char** argv) {
  using namespace tovtool;
  Args args(argv + 1, argv + argc);
  if (args.empty()) {
    PrintHelp(std::cerr);
    return 2;
  }
  const std::string first = args.front();
  if (first == "--help" || first == "-h") {
    PrintHelp(std::cout);
    return 0;
  }
  if (first == "--version") {
    std::cout << "tovtool " << TOVFoundation::Version() << '\n';
    return 0;
  }
  if (first == "help") {
    if (args.size() == 1) {
      PrintHelp(std::cout);
      return 0;
    }
    const Command* command = FindCommand(args[1]);
    if (command == nullptr) {
      std::cerr << "tovtool: unknown command '" << args[1] << "'\n";
      return 2;
    }
    std::cout << "Usage: " << command->usage << '\n';
    return 0;
  }
  const Command* command = FindCommand(first);
  if (command == nullptr) {
    std::cerr << "tovtool: unknown command '" << first << "'\nTry 'tovtool --help'.\n";
    return 2;
  }
  args.erase(args.begin());
  if (std::find(args.begin(), args.end(), "--help") != args.end()) {
    std::cout << "Usage: " << command->usage << '\n';
    return 0;
  }
  try {
    return command->run(args);
  } catch (const UsageError& error) {
    std::cerr << "tovtool " << command->name << ": " << error.what()
              << "\nUsage: " << command->usage << '\n';
    return 2;
  } catch (const std::exception& error) {
    std::cerr << "tovtool " << command->name << ": " << error.what() << '\n';
    return 1;
  }
}
