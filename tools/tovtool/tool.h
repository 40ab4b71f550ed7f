// tovtool: the command-line face of tovfoundation.
//
// Each sub-command lives in its own file and registers itself with
// TOVTOOL_COMMAND; each subsystem adds a section to `tovtool demo` with
// TOVTOOL_DEMO_SECTION.
//
// The exit status is the tool's contract with scripts, the same for every
// command: 0 only when all the work was done and all output written; 1 when
// the work failed (the reason on stderr, naming the file); 2 for bad usage
// (the usage on stderr). Commands report bad usage by throwing UsageError and
// failures by throwing Failure (or by returning 1 after writing to stderr);
// main checks standard output before it exits, so a command that returns 0
// whose output could not be written still exits 1.
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

inline constexpr int kExitSuccess = 0;
inline constexpr int kExitFailure = 1;
inline constexpr int kExitUsage = 2;

// Bad usage: printed with the command's usage, exit code 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The work failed: printed as "tovtool COMMAND: what", exit code 1.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Option parsing helpers shared by the commands.
// Removes "--name VALUE" or "--name=VALUE" from args and returns VALUE.
std::optional<std::string> TakeOption(Args& args, const std::string& name);
// Removes the flag "--name" from args and tells whether it was there.
bool TakeFlag(Args& args, const std::string& name);
// Parses a whole decimal integer (an optional sign, digits, nothing else, in
// 64 bits), or throws UsageError naming `what`.
std::int64_t ParseInteger(const std::string& text, const std::string& what);
// The same, and throws UsageError unless min <= value <= max.
std::int64_t ParseInteger(const std::string& text, const std::string& what, std::int64_t min,
                          std::int64_t max);
// Parses a finite decimal number ("1.5", "-2e3"; no NaN, no infinity, nothing
// after it), or throws UsageError naming `what`.
double ParseNumber(const std::string& text, const std::string& what);
// Parses a whole number written in decimal or as 0x... hexadecimal, from 0 to
// `max`, or throws UsageError naming `what`.
std::uint64_t ParseUnsigned(const std::string& text, const std::string& what, std::uint64_t max);
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
