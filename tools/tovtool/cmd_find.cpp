// tovtool find FOLDER PATTERN: the files of FOLDER whose names match the
// wildcard PATTERN (Windows rules: case-insensitive, '*' and '?', "*.*" also
// matching names without a dot), one full path per line. Not recursive.
#include <iostream>

#include "tool.h"
#include "tovfoundation/tovfoundation.h"

namespace {

int RunFind(const tovtool::Args& input) {
  tovtool::Args args = input;
  tovtool::RejectUnknownOptions(args);
  if (args.size() != 2) throw tovtool::UsageError("find needs FOLDER and PATTERN");
  std::vector<char*> found;
  Halyard::VUtilsFindFilesFromName(found, args[0].c_str(), args[1].c_str(), nullptr);
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
                 "  without a dot). Folders are not listed and not entered.",
                 RunFind});

}  // namespace
