#include "common/child_process.h"

namespace tovtest {

std::string QuoteArgument(const std::string& text) {
  if (!text.empty() && text.find_first_of(" \t\"") == std::string::npos) return text;
  std::string quoted = "\"";
  std::size_t backslashes = 0;
  for (char c : text) {
    if (c == '\\') {
      ++backslashes;
      continue;
    }
    quoted.append(c == '"' ? backslashes * 2 + 1 : backslashes, '\\');
    backslashes = 0;
    quoted.push_back(c);
  }
  quoted.append(backslashes * 2, '\\');
  quoted.push_back('"');
  return quoted;
}

}  // namespace tovtest
