// tovtool: the command-line face of tovfoundation.
//
// Each sub-command lives in its own file and registers itself with
// TOVTOOL_COMMAND; each subsystem adds a section to `tovtool demo` with
// TOVTOOL_DEMO_SECTION. Commands report bad usage by throwing UsageError
// (exit code 2) and other failures by returning a non-zero exit code after
// writing to stderr.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tovtool {

using Args = std::vector<std::string>;

struct Command {
  const char* name;
  const char* summary;  // one line for `tovtool --help`
  const char* usage;    // full usage text for `tovtool help NAME`
  int (*run)(const Args& args);
};

struct DemoSection {
  int order;  // sections run in ascending order
  const char* title;
  void (*run)(std::ostream& out);
};

bool RegisterCommand(const Command& command);
bool RegisterDemoSection(const DemoSection& section);

// Bad usage: printed with the command's usage, exit code 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Option parsing helpers shared by the commands.
// Removes "--name VALUE" or "--name=VALUE" from args and returns VALUE.
std::optional<std::string> TakeOption(Args& args, const std::string& name);
// Removes the flag "--name" from args and tells whether it was there.
bool TakeFlag(Args& args, const std::string& name);
// Parses a whole decimal integer, or throws UsageError naming `what`.
std::int64_t ParseInteger(const std::string& text, const std::string& what);
// Parses a floating-point number, or throws UsageError naming `what`.
double ParseNumber(const std::string& text, const std::string& what);
// Throws UsageError if an argument starting with "--" is left.
void RejectUnknownOptions(const Args& args);

}  // namespace tovtool

#define TOVTOOL_CONCAT2(a, b) a##b
#define TOVTOOL_CONCAT(a, b) TOVTOOL_CONCAT2(a, b)
#define TOVTOOL_COMMAND(...)                                   \
  static const bool TOVTOOL_CONCAT(tovtoolCommand, __LINE__) = \
      ::tovtool::RegisterCommand(__VA_ARGS__)
#define TOVTOOL_DEMO_SECTION(...)                           \
  static const bool TOVTOOL_CONCAT(tovtoolDemo, __LINE__) = \
      ::tovtool::RegisterDemoSection(__VA_ARGS__)
