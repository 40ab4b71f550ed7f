// Property-list files on POSIX systems: a file without read permission, a
// full disk (a file-size limit in a forked child), a saving process killed
// midway, and Python's plistlib reading what the library wrote.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "basalt/proplist.h"
#include "basalt/proplist_test_support.h"
#include "basalt/utf.h"
#include "common/temp_tree.h"
#include "common/test_files.h"

namespace {

using namespace basalt::literals;
using basalt::proplist::PropList;
using basalt::proplist::PropListError;
using basalt::proplist::utils::LoadPropList;
using basalt::proplist::utils::SavePropList;
using tovtest::FailureOf;
using tovtest::PropListFailure;
using tovtest::SamplePropList;
using tovtest::TempTree;

TEST(PropListFile, UnreadableFileCannotBeOpened) {
  if (::geteuid() == 0) GTEST_SKIP() << "running as root: permissions do not stop reading";
  TempTree temp;
  SavePropList(temp.Lib("list.xml"), SamplePropList());
  ::chmod(temp.NativeOf("list.xml").c_str(), 0);
  PropList list;
  EXPECT_EQ(FailureOf([&] { LoadPropList(temp.Lib("list.xml"), list, 0); }),
            (PropListFailure{PropListError::Kind::kOpenFailed, 5u}));
}

// A full disk, simulated with a file-size limit in a child process: the
// write fails, the previous list stays whole and no temporary file is left.
TEST(PropListFile, FullDiskOnSaveLeavesPreviousListIntact) {
  TempTree temp;
  const UTF16String path = temp.Lib("list.xml");
  SavePropList(path, SamplePropList());
  const std::string before = tovtest::ReadFile(temp.NativeOf("list.xml"));

  PropList big;
  for (int i = 0; i < 2000; ++i) big.SetString("key" + std::to_string(i), UTF8String(100, 'x'));
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::signal(SIGXFSZ, SIG_IGN);
    struct rlimit limit {};
    limit.rlim_cur = limit.rlim_max = 4096;
    ::setrlimit(RLIMIT_FSIZE, &limit);
    int code = 1;
    try {
      SavePropList(path, big);
      code = 2;  // the save should not have succeeded
    } catch (const PropListError& error) {
      code =
          (error.GetKind() == PropListError::Kind::kWriteFailed && error.GetSystemError() == 223u)
              ? 0
              : 3;
    }
    ::_exit(code);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(tovtest::ReadFile(temp.NativeOf("list.xml")), before);
  EXPECT_EQ(tovtest::ListFolder(temp.Native()), std::vector<std::string>{"list.xml"});
}

// A process killed while it saves never leaves a partly written list: the
// list is always one of the complete versions.
TEST(PropListFile, SaveKilledMidwayLeavesACompleteList) {
  TempTree temp;
  const UTF16String path = temp.Lib("list.xml");
  PropList first;
  first.SetString("version", u"first"_u16);
  SavePropList(path, first);

  for (int round = 0; round < 8; ++round) {
    SCOPED_TRACE(round);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      PropList big;
      for (int i = 0; i < 20000; ++i) big.SetString("key" + std::to_string(i), UTF8String(64, 'y'));
      for (;;) {
        big.SetString("version", u"big"_u16);
        SavePropList(path, big);
      }
    }
    ::usleep(static_cast<useconds_t>(20000 + round * 15000));
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    PropList back;
    ASSERT_NO_THROW(LoadPropList(path, back, 0));
    UTF8String version;
    ASSERT_TRUE(back.GetString("version", version));
    EXPECT_TRUE(version == "first" || (version == "big" && back.Size() == 20001u)) << version;
  }
}

// Python's standard plistlib reads what SavePropList writes.
TEST(PropListFile, PythonPlistlibReadsTheSameKeysAndValues) {
  TempTree temp;
  PropList list;
  list.SetString("plain", u"value"_u16);
  list.SetString("x<&>\"'", u"a<b>&c\r\nd\te 🎬 Grüße"_u16);
  list.CreateChild("C:\\Media#Thumbs").SetString("CacheFile", u"C:\\Cache\\TOVCache1_2_3.vpc"_u16);
  list.CreateChild("empty");
  SavePropList(temp.Lib("list.xml"), list);

  const std::string script =
      "import plistlib, json, sys\n"
      "with open(sys.argv[1], 'rb') as f: d = plistlib.load(f)\n"
      "sys.stdout.write(json.dumps(d, sort_keys=True, ensure_ascii=True))\n";
  tovtest::WriteFile(temp.NativeOf("read.py"), script);
  const std::string command =
      "/usr/bin/python3 " + temp.NativeOf("read.py") + " " + temp.NativeOf("list.xml");
  FILE* pipe = ::popen(command.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::string out;
  char buffer[4096];
  while (std::size_t got = std::fread(buffer, 1, sizeof buffer, pipe)) out.append(buffer, got);
  ASSERT_EQ(::pclose(pipe), 0) << out;
  EXPECT_EQ(out,
            "{\"C:\\\\Media#Thumbs\": {\"CacheFile\": \"C:\\\\Cache\\\\TOVCache1_2_3.vpc\"}, "
            "\"empty\": {}, \"plain\": \"value\", "
            "\"x<&>\\\"'\": \"a<b>&c\\r\\nd\\te \\ud83c\\udfac Gr\\u00fc\\u00dfe\"}");
}

}  // namespace
