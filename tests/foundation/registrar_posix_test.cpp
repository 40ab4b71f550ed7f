// The registrar's list across processes, read back by Python's plistlib
// (/usr/bin/python3 on the host).
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "foundation/registrar_internal.h"
#include "foundation_support.h"

namespace {

using tovtest::TempTree;
using tovtest::U16;

TEST(RegistrarRestart, SecondProcessFindsFirstProcessAssignmentsAndPlistlibAgrees) {
  TempTree temp;
  const std::string cacheFolder = temp.NativeOf("cache");
  tovtest::WriteFile(temp.NativeOf("pairs"),
                     "C:\\Media|Thumbs\nC:\\Media\\|Thumbs\nD:\\Clips ✓|\n"
                     "c:\\media|Thumbs\nE:\\<&>|\"q\"\n");
  const std::map<std::string, std::string> env{{"TOV_TEST_CACHE", cacheFolder},
                                               {"TOV_TEST_PAIRS", temp.NativeOf("pairs")},
                                               {"TOV_TEST_OUT", temp.NativeOf("registered")}};
  ASSERT_EQ(tovtest::RunChild("ChildProcess.RegistrarRegisters", env), 0);
  auto findEnv = env;
  findEnv["TOV_TEST_OUT"] = temp.NativeOf("found");
  ASSERT_EQ(tovtest::RunChild("ChildProcess.RegistrarFinds", findEnv), 0);

  const std::string registered = tovtest::ReadFile(temp.NativeOf("registered"));
  EXPECT_EQ(tovtest::ReadFile(temp.NativeOf("found")), registered);
  std::istringstream lines(registered);
  std::string line;
  std::set<std::string> files;
  while (std::getline(lines, line)) {
    EXPECT_EQ(line.substr(0, 2), "0|") << line;
    files.insert(line.substr(2));
  }
  EXPECT_EQ(files.size(), 4u);  // the first two pairs share a key

  // Python's plistlib reads the list: the same keys and "CacheFile" values.
  const std::string script =
      "import plistlib, sys\n"
      "with open(sys.argv[1], 'rb') as f: d = plistlib.load(f)\n"
      "for k in sorted(d): sys.stdout.write(k + '|' + d[k]['CacheFile'] + '\\n')\n";
  tovtest::WriteFile(temp.NativeOf("read.py"), script);
  const std::string command = "/usr/bin/python3 " + temp.NativeOf("read.py") + " '" + cacheFolder +
                              "/MasterFolderList.xml'";
  FILE* pipe = ::popen(command.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::string out;
  char buffer[4096];
  while (std::size_t got = std::fread(buffer, 1, sizeof buffer, pipe)) out.append(buffer, got);
  ASSERT_EQ(::pclose(pipe), 0);

  std::istringstream pairs(tovtest::ReadFile(temp.NativeOf("pairs")));
  std::istringstream results(registered);
  std::set<std::string> expected;
  std::string pair, result;
  while (std::getline(pairs, pair) && std::getline(results, result)) {
    const auto bar = pair.find('|');
    const std::string key =
        tovimpl::foundation::RegistrarKey(U16(pair.substr(0, bar)), U16(pair.substr(bar + 1)));
    expected.insert(key + "|" + result.substr(2));
  }
  std::set<std::string> seen;
  std::istringstream outLines(out);
  while (std::getline(outLines, line)) seen.insert(line);
  EXPECT_EQ(seen.size(), 4u);  // "C:\Media" and "C:\Media\" share a key
  for (const auto& entry : seen) EXPECT_EQ(expected.count(entry), 1u) << entry;
}

}  // namespace
