// tovtool find FOLDER PATTERN: the files of FOLDER whose names match the
// wildcard PATTERN (Windows rules: case-insensitive, '*' and '?', "*.*" also
// matching names without a dot), one full path per line. Not recursive.
//
// The library's search runs in the current directory when it cannot enter the
// folder, and takes a pattern with a path in it relative to the folder, so the
// folder and the pattern are checked first.
#include <iostream>
#include <string>
#include <vector>

#include "tool.h"
#include "tool_io.h"
#include "tovfoundation/tovfoundation.h"

namespace {

int RunFind(const tovtool::Args& input) {
  tovtool::Args args = input;
  tovtool::RejectUnknownOptions(args);
  if (args.size() != 2) throw tovtool::UsageError("find needs FOLDER and PATTERN");
  const std::string& folder = args[0];
  const std::string& pattern = args[1];
  if (pattern.empty()) throw tovtool::UsageError("the pattern is empty");
  if (pattern.find_first_of("/\\:") != std::string::npos) {
    throw tovtool::UsageError("the pattern is a file name, without a folder: '" + pattern + "'");
  }
  tovtool::RequireReadableFolder(folder);
  std::vector<char*> found;
  Halyard::VUtilsFindFilesFromName(found, folder.c_str(), pattern.c_str(), nullptr);
  for (char* path : found) {
    std::cout << basalt::UTF16to8(Halyard::PathUtilities::ToPlatformPath(basalt::UTF8to16(path)))
              << '\n';
    delete[] path;
  }
  return 0;
}

TOVTOOL_COMMAND({"find", "list the files of a folder matching a wildcard pattern",
                 "tovtool find FOLDER PATTERN\n"
                 "  Prints the full path of every file directly in FOLDER whose name matches\n"
                 "  PATTERN ('*' and '?', case-insensitive; \"*.*\" also matches names\n"
                 "  without a dot). Folders are not listed and not entered. FOLDER must be a\n"
                 "  folder that can be listed (exit 1 otherwise); PATTERN is a non-empty name\n"
                 "  without '/', '\\' or ':' (exit 2 otherwise).",
                 RunFind});

}  // namespace
