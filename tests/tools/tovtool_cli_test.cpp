// tovtool as a new user and a script meet it: every sub-command with good and
// bad input, one row per case. A row names its arguments, the set-up it needs,
// the exit status it must give (0 all done, 1 failed, 2 bad usage), a text
// that stderr (or stdout) must contain, and files that must or must not exist
// afterwards. After every row no temporary file of the tool is left behind.
//
// Rows marked kPosix need what only POSIX systems give the test (FIFOs,
// /dev/full, /dev/zero, file-size limits, permissions); the Windows build runs
// the others.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "child_runner.h"
#include "common/environment.h"
#include "common/temp_tree.h"

namespace {

namespace fs = std::filesystem;

// Set-up and conditions of a row.
enum Flags : unsigned {
  kPortable = 0,
  kPosix = 1 << 0,       // needs POSIX: skipped on Windows
  kFullDisk = 1 << 1,    // a file-size limit of 32768 bytes stands for a full disk
  kStdoutFull = 1 << 2,  // standard output is /dev/full
  kFifo = 1 << 3,        // work/fifo is a FIFO
  kLocked = 1 << 4,      // work/locked is a folder nobody may read, the child unprivileged
  kBig = 1 << 5,         // work/big is a sparse 5 GiB file
  kExisting = 1 << 6,    // out.wav and out.bmp hold "old" and must keep it on failure
  kUnreadable = 1 << 7,  // work/in.bin may not be read, the child unprivileged
  kStdoutHas = 1 << 8,   // `has` is looked for in stdout rather than stderr
  kReadOnly = 1 << 9,    // work/ro is a folder nobody may write in, the child unprivileged
  kLargeList = 1 << 10,  // cachedir holds a list of 600 pairs (over 32768 bytes)
  kDamaged = 1 << 11,    // cachedir holds a list that is not a property list
};

struct Row {
  const char* name;
  std::vector<std::string> args;
  int exitCode;
  const char* has;  // alternatives separated by '|'; "" checks nothing
  unsigned flags = kPortable;
  std::vector<std::string> mustExist = {};
  std::vector<std::string> mustNotExist = {};
};

constexpr unsigned kFull = kPosix | kFullDisk;
constexpr unsigned kDevFull = kPosix | kStdoutFull;
const char* const kNoFile = "No such file|cannot find|not found";
const char* const kDenied = "Permission denied|Access is denied";

// clang-format off
const std::vector<Row>& Rows() {
  static const std::vector<Row> rows = {
    // The tool itself.
    {"no arguments", {}, 2, "Usage: tovtool COMMAND"},
    {"--help", {"--help"}, 0, "Commands:", kStdoutHas},
    {"-h", {"-h"}, 0, "Commands:", kStdoutHas},
    {"help of an unknown command", {"help", "nosuch"}, 2, "unknown command 'nosuch'"},
    {"unknown command", {"nosuch"}, 2, "unknown command 'nosuch'"},
    {"--version with an argument", {"--version", "x"}, 2, "takes no arguments"},
    {"help example can be pasted", {"help", "timecode"}, 0, "'00:01:00;02'", kStdoutHas},
    {"demo with an argument", {"demo", "x"}, 2, "demo takes no arguments"},
    {"demo -h", {"demo", "-h"}, 0, "Usage: tovtool demo", kStdoutHas},

    // timecode
    {"timecode rate above the tick rate", {"timecode", "--rate", "1e12", "--seconds", "1"}, 2, "--rate must be 1 to 254016000000"},
    {"timecode rate 0", {"timecode", "--rate", "0", "--seconds", "1"}, 2, "--rate must be"},
    {"timecode rate nan", {"timecode", "--rate", "nan", "--seconds", "1"}, 2, "finite number"},
    {"timecode rate with trailing text", {"timecode", "--rate", "25fps", "--seconds", "1"}, 2, "finite number"},
    {"timecode rate of one tick per frame", {"timecode", "--rate", "254016000000", "--seconds", "1"}, 0, "ticks:   254016000000", kStdoutHas},
    {"timecode seconds nan", {"timecode", "--seconds", "nan"}, 2, "finite number, not 'nan'"},
    {"timecode seconds infinity", {"timecode", "--seconds", "inf"}, 2, "finite number"},
    {"timecode seconds overflow", {"timecode", "--seconds", "1e400"}, 2, "finite number"},
    {"timecode seconds beyond 100 hours", {"timecode", "--seconds", "360001"}, 2, "-360000 to 360000"},
    {"timecode seconds with trailing text", {"timecode", "--seconds", "1x"}, 2, "finite number"},
    {"timecode frames of INT64_MAX", {"timecode", "--frames", "9223372036854775807"}, 2, "beyond the time range"},
    {"timecode frames beyond 64 bits", {"timecode", "--frames", "99999999999999999999"}, 2, "out of range"},
    {"timecode frames not whole", {"timecode", "--frames", "12.5"}, 2, "whole number"},
    {"timecode frames with two signs", {"timecode", "--frames", "+-5"}, 2, "whole number"},
    {"timecode ticks beyond 100 hours", {"timecode", "--ticks", "91445760000000001"}, 2, "--ticks must be"},
    {"timecode step that would wrap", {"timecode", "--seconds", "1", "--step", "2147483647:0:0:0"}, 2, "--step must be -1000000 to 1000000"},
    {"timecode step with three fields", {"timecode", "--seconds", "1", "--step", "1:2:3"}, 2, "needs 4 numbers"},
    {"timecode feet step beyond the range", {"timecode", "--format", "feet40", "--seconds", "1", "--step-feet", "1000000:0"}, 2, "time range"},
    {"timecode unknown format", {"timecode", "--format", "nosuch", "0"}, 2, "whole number"},
    {"timecode two inputs", {"timecode", "--seconds", "1", "--frames", "2"}, 2, "exactly one"},
    {"timecode rejected text", {"timecode", "12:3a"}, 1, "is not valid"},
    {"timecode unknown option", {"timecode", "--bogus", "1"}, 2, "unknown option --bogus"},
    {"timecode one second", {"timecode", "--seconds", "1"}, 0, "00;00;00;29", kStdoutHas},
    {"timecode frames at the edge", {"timecode", "--format", "24", "--frames", "8640000"}, 0, "frames:  8640000", kStdoutHas},
    {"timecode -h after arguments", {"timecode", "--seconds", "1", "-h"}, 0, "Usage: tovtool timecode", kStdoutHas},

    // tone
    {"tone -h writes no file", {"tone", "-h"}, 0, "Usage: tovtool tone", kStdoutHas, {}, {"-h"}},
    {"tone --help writes no file", {"tone", "--help"}, 0, "Usage: tovtool tone", kStdoutHas, {}, {"--help"}},
    {"tone writes the file", {"tone", "out.wav"}, 0, "192044 bytes", kStdoutHas, {"out.wav"}},
    {"tone on a full disk", {"tone", "out.wav"}, 1, "cannot write out.wav: File too large", kFull, {}, {"out.wav"}},
    {"tone on a full disk keeps the old file", {"tone", "out.wav"}, 1, "File too large", kFull | kExisting, {"out.wav"}},
    {"tone replaces an old file", {"tone", "out.wav", "--seconds", "0"}, 0, "44 bytes", kStdoutHas | kExisting, {"out.wav"}},
    {"tone rate 0", {"tone", "out.wav", "--rate", "0"}, 2, "--rate must be 1 to 1000000", kPortable, {}, {"out.wav"}},
    {"tone rate not whole", {"tone", "out.wav", "--rate", "48000.5"}, 2, "whole number", kPortable, {}, {"out.wav"}},
    {"tone 33 channels", {"tone", "out.wav", "--channels", "33"}, 2, "--channels must be 1 to 32"},
    {"tone mask 0", {"tone", "out.wav", "--mask", "0"}, 2, "non-zero"},
    {"tone mask beyond 32 bits", {"tone", "out.wav", "--mask", "0x100000000"}, 2, "out of range"},
    {"tone 12 bits", {"tone", "out.wav", "--bits", "12"}, 2, "--bits must be"},
    {"tone sample size 3", {"tone", "out.wav", "--sample-size", "3"}, 2, "--sample-size must be"},
    {"tone negative seconds", {"tone", "out.wav", "--seconds", "-1"}, 2, "--seconds must be 0 to 86400"},
    {"tone seconds nan", {"tone", "out.wav", "--seconds", "nan"}, 2, "finite number"},
    {"tone frequency infinity", {"tone", "out.wav", "--frequency", "inf"}, 2, "finite number"},
    {"tone too large for WAVE", {"tone", "out.wav", "--seconds", "86400", "--rate", "1000000", "--channels", "32"}, 2, "would not fit"},
    {"tone without a file", {"tone"}, 2, "expected one output file"},
    {"tone into a missing folder", {"tone", "missing/out.wav"}, 1, kNoFile},
    {"tone onto a folder", {"tone", "sub"}, 1, "is a folder"},
    {"tone under a file", {"tone", "in.bin/out.wav"}, 1, "in.bin is not a folder|not a directory|cannot find|not found"},
    {"tone into a subfolder", {"tone", "sub/new.wav", "--seconds", "0.5"}, 0, "96044 bytes", kStdoutHas, {"sub/new.wav"}},
    {"tone into a folder it may not write", {"tone", "ro/out.wav"}, 1, "cannot write ro/out.wav: Permission denied", kPosix | kReadOnly, {}, {"ro/out.wav"}},

    // bars
    {"bars -h writes no file", {"bars", "-h"}, 0, "Usage: tovtool bars", kStdoutHas, {}, {"-h"}},
    {"bars writes the file", {"bars", "out.bmp"}, 0, "1228854 bytes", kStdoutHas, {"out.bmp"}},
    {"bars on a full disk", {"bars", "out.bmp"}, 1, "cannot write out.bmp: File too large", kFull, {}, {"out.bmp"}},
    {"bars on a full disk keeps the old file", {"bars", "out.bmp"}, 1, "File too large", kFull | kExisting, {"out.bmp"}},
    {"bars width 0", {"bars", "out.bmp", "--width", "0"}, 2, "--width must be 1 to 65535"},
    {"bars width 65536", {"bars", "out.bmp", "--width", "65536"}, 2, "--width must be 1 to 65535"},
    {"bars height not a number", {"bars", "out.bmp", "--height", "abc"}, 2, "whole number"},
    {"bars unknown colour space", {"bars", "out.bmp", "--colour-space", "0x8"}, 2, "--colour-space must be"},
    {"bars colour space without digits", {"bars", "out.bmp", "--colour-space", "0x"}, 2, "whole number"},
    {"bars onto a folder", {"bars", "sub"}, 1, "is a folder"},
    {"bars into a folder it may not write", {"bars", "ro/out.bmp"}, 1, "cannot write ro/out.bmp: Permission denied", kPosix | kReadOnly, {}, {"ro/out.bmp"}},
    {"bars two files", {"bars", "a.bmp", "b.bmp"}, 2, "expected one output file"},

    // find
    {"find in a missing folder", {"find", "nope", "*"}, 1, kNoFile},
    {"find in a file", {"find", "in.bin", "*"}, 1, "not a folder"},
    {"find with an empty pattern", {"find", ".", ""}, 2, "the pattern is empty"},
    {"find with a folder in the pattern", {"find", ".", "../*"}, 2, "without a folder"},
    {"find with an empty folder", {"find", "", "*"}, 2, "the folder name is empty"},
    {"find with one argument", {"find", "sub"}, 2, "FOLDER and PATTERN"},
    {"find in a folder it may not read", {"find", "locked", "*"}, 1, kDenied, kPosix | kLocked},
    {"find the files", {"find", "sub", "a*"}, 0, "a.txt", kStdoutHas},

    // ls
    {"ls a folder it may not read", {"ls", "locked"}, 1, "Permission denied", kPosix | kLocked},
    {"ls recursive over a folder it may not read", {"ls", ".", "--recursive"}, 1, "cannot read", kPosix | kLocked},
    {"ls a missing folder", {"ls", "nope"}, 1, kNoFile},
    {"ls a file", {"ls", "in.bin"}, 1, "not a folder"},
    {"ls without a folder", {"ls"}, 2, "ls needs one FOLDER"},
    {"ls unknown option", {"ls", "sub", "--bogus"}, 2, "unknown option"},
    {"ls a folder", {"ls", "sub"}, 0, "a.txt", kStdoutHas},

    // readstream
    {"readstream a missing file", {"readstream", "nope"}, 1, kNoFile},
    {"readstream a FIFO", {"readstream", "fifo"}, 1, "not a regular file", kPosix | kFifo},
    {"readstream a device", {"readstream", "/dev/zero"}, 1, "not a regular file", kPosix},
    {"readstream a folder", {"readstream", "sub"}, 1, "is a folder"},
    {"readstream a file it may not read", {"readstream", "in.bin"}, 1, "cannot open in.bin: Permission denied", kPosix | kUnreadable},
    {"readstream offset beyond the end", {"readstream", "in.bin", "--offset", "17"}, 1, "beyond the end (16 bytes)"},
    {"readstream negative offset", {"readstream", "in.bin", "--offset", "-1"}, 2, "--offset must be"},
    {"readstream count 0", {"readstream", "in.bin", "--count", "0"}, 2, "--count must be 1 to 1000000"},
    {"readstream unknown type", {"readstream", "in.bin", "--type", "word"}, 2, "unknown --type"},
    {"readstream unknown order", {"readstream", "in.bin", "--order", "middle"}, 2, "big or little"},
    {"readstream past 4 GiB", {"readstream", "big", "--offset", "4294967300", "--count", "1"}, 0, "4294967300  0x00", kPosix | kBig | kStdoutHas},
    {"readstream in a subfolder", {"readstream", "sub/a.txt", "--count", "1"}, 0, "0x61", kStdoutHas},
    {"readstream bytes", {"readstream", "in.bin", "--offset", "2", "--count", "1"}, 0, "0x02", kStdoutHas},

    // preset
    {"preset a device", {"preset", "/dev/zero"}, 1, "not a regular file", kPosix},
    {"preset a FIFO", {"preset", "fifo"}, 1, "not a regular file", kPosix | kFifo},
    {"preset a 5 GiB file", {"preset", "big"}, 1, "no writer format name in the first 1048576 bytes", kPosix | kBig},
    {"preset a name of 300 units", {"preset", "long.xml"}, 1, "too long"},
    {"preset without a name", {"preset", "none.xml"}, 1, "no writer format name in the file"},
    {"preset a missing file", {"preset", "nope"}, 1, kNoFile},
    {"preset a folder", {"preset", "sub"}, 1, "is a folder"},
    {"preset without a file", {"preset"}, 2, "expected one preset file"},
    {"preset an empty writer", {"preset", "ok.xml", "--writer="}, 2, "--writer needs a name"},
    {"preset the name", {"preset", "ok.xml", "--writer", "MPEG2-DVD"}, 0, "for writer MPEG2-DVD: yes", kStdoutHas},

    // base64
    {"base64 of a folder", {"base64", "encode", "sub"}, 1, "is a folder"},
    {"base64 of a missing file", {"base64", "encode", "nope"}, 1, kNoFile},
    {"base64 of a FIFO", {"base64", "encode", "fifo"}, 1, "not a regular file", kPosix | kFifo},
    {"base64 without a mode", {"base64"}, 2, "expected encode or decode"},
    {"base64 unknown mode", {"base64", "frob"}, 2, "unknown mode 'frob'"},
    {"base64 two files", {"base64", "encode", "a", "b"}, 2, "at most one file"},
    {"base64 writes CRLF lines unchanged", {"base64", "encode", "man.bin"}, 0, "TWFu\r\n", kStdoutHas},
    {"base64 of a file", {"base64", "encode", "in.bin"}, 0, "AAECAw==|AAEC", kStdoutHas},

    // replace
    {"replace a negative hexadecimal", {"replace", "^1", "u", "0x-1"}, 2, "whole number"},
    {"replace a double nan", {"replace", "^1", "d", "nan"}, 2, "finite number"},
    {"replace beyond 32 bits", {"replace", "^1", "u", "4294967296"}, 2, "does not fit in 32 bits"},
    {"replace signed beyond 31 bits", {"replace", "^1", "i", "2147483648"}, 2, "does not fit"},
    {"replace unknown type letter", {"replace", "^1", "x", "1"}, 2, "unknown type letter"},
    {"replace argument count", {"replace", "^1", "uu", "1"}, 2, "TYPES names 2 arguments, 1 given"},
    {"replace a placeholder without argument", {"replace", "^3", "u", "1"}, 1, "placeholder above the argument count"},
    {"replace without arguments", {"replace"}, 2, "expected TEMPLATE and TYPES"},
    {"replace the placeholders", {"replace", "Frame ^1 of ^2", "uu", "3", "10"}, 0, "Frame 3 of 10", kStdoutHas},

    // cache
    {"cache without arguments", {"cache"}, 2, "expected 'register' or 'find'"},
    {"cache -h", {"cache", "-h"}, 0, "Usage: tovtool cache", kStdoutHas},
    {"cache unknown action", {"cache", "bogus", "a", "b", "--cache-folder", "cachedir"}, 2, "expected 'register' or 'find'"},
    {"cache without a cache folder", {"cache", "register", "C:\\Media", "Thumbs"}, 2, "no cache folder"},
    {"cache find of nothing registered", {"cache", "find", "C:\\Media", "Thumbs", "--cache-folder", "cachedir"}, 1, "no cache file is registered"},
    {"cache register", {"cache", "register", "C:\\Media", "Thumbs", "--cache-folder", "cachedir"}, 0, "TOVCache", kStdoutHas},

    // Standard output that cannot be written: every command exits 1.
    {"stdout full: --help", {"--help"}, 1, "cannot write standard output", kDevFull},
    {"stdout full: help", {"help", "timecode"}, 1, "cannot write standard output", kDevFull},
    {"stdout full: --version", {"--version"}, 1, "cannot write standard output", kDevFull},
    {"stdout full: demo", {"demo"}, 1, "cannot write standard output", kDevFull},
    {"stdout full: timecode", {"timecode", "--seconds", "1"}, 1, "No space left on device", kDevFull},
    {"stdout full: tone", {"tone", "out.wav"}, 1, "cannot write standard output", kDevFull},
    {"stdout full: bars", {"bars", "out.bmp"}, 1, "cannot write standard output", kDevFull},
    {"stdout full: find", {"find", "sub", "*"}, 1, "cannot write standard output", kDevFull},
    {"stdout full: ls", {"ls", "sub"}, 1, "cannot write standard output", kDevFull},
    {"stdout full: readstream", {"readstream", "in.bin"}, 1, "cannot write standard output", kDevFull},
    {"stdout full: preset", {"preset", "ok.xml"}, 1, "cannot write standard output", kDevFull},
    {"stdout full: base64", {"base64", "encode", "in.bin"}, 1, "cannot write standard output", kDevFull},
    {"stdout full: replace", {"replace", "^1", "u", "1"}, 1, "cannot write standard output", kDevFull},
    {"cache register on a full disk", {"cache", "register", "C:\\New", "Thumbs", "--cache-folder", "cachedir"}, 1, "could not be saved: File too large|could not be saved: There is not enough space", kFull | kLargeList},
    {"cache register sets a damaged list aside", {"cache", "register", "C:\\Media", "Thumbs", "--cache-folder", "cachedir"}, 0, "it was set aside as", kDamaged},
    {"cache find on a damaged list leaves it", {"cache", "find", "C:\\Media", "Thumbs", "--cache-folder", "cachedir"}, 1, "it is left as it is", kDamaged, {"cachedir/MasterFolderList.xml"}},
    {"cache folder under a file", {"cache", "register", "C:\\Media", "Thumbs", "--cache-folder", "in.bin/cache"}, 1, "cannot be created"},
    {"cache refuses a control character", {"cache", "register", "C:\\Media\x01", "Thumbs", "--cache-folder", "cachedir"}, 1, "cannot store", kPosix},
    {"stdout full: cache", {"cache", "register", "C:\\Media", "Thumbs", "--cache-folder", "cachedir"}, 1, "cannot write standard output", kDevFull},
    {"stdout full: usage still 2", {"tone"}, 2, "expected one output file", kDevFull},
  };
  return rows;
}
// clang-format on

void WriteFile(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string Utf16le(const std::u16string& text) {
  std::string bytes;
  for (char16_t unit : text) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  }
  return bytes;
}

bool HasAny(const std::string& text, const std::string& alternatives) {
  std::size_t start = 0;
  while (true) {
    const std::size_t bar = alternatives.find('|', start);
    const std::string one = alternatives.substr(start, bar - start);
    if (text.find(one) != std::string::npos) return true;
    if (bar == std::string::npos) return false;
    start = bar + 1;
  }
}

bool OnWindows() { return !tovtest::IsPosix(); }

// Whether every folder above `tool` and `folder` lets other users through.
bool OthersCanReach(const std::string& tool, const std::string& folder) {
  for (const std::string& start : {tool, folder}) {
    for (fs::path at = fs::path(start).parent_path(); !at.empty() && at != at.root_path();
         at = at.parent_path()) {
      std::error_code error;
      const fs::perms perms = fs::status(at, error).permissions();
      if (error || (perms & fs::perms::others_exec) == fs::perms::none) return false;
    }
  }
  return true;
}

// The work folder every row starts from.
void SetUp(const std::string& work, unsigned flags) {
  fs::create_directories(work + "/sub");
  fs::create_directories(work + "/cachedir");
  std::string bytes;
  for (int i = 0; i < 16; ++i) bytes.push_back(static_cast<char>(i));
  WriteFile(work + "/in.bin", bytes);
  WriteFile(work + "/sub/a.txt", "a\n");
  WriteFile(work + "/man.bin", "Man");
  WriteFile(work + "/sub/b.wav", "b\n");
  WriteFile(work + "/ok.xml",
            Utf16le(u"\uFEFF<Preset><Header WriterFormatName=\"MPEG\"/></Preset>"));
  WriteFile(work + "/long.xml", Utf16le(u"<Preset><Header WriterFormatName=\"" +
                                        std::u16string(300, u'A') + u"\"/></Preset>"));
  WriteFile(work + "/none.xml", Utf16le(u"<Preset><Body/></Preset>"));
  // The child may run as another user: let it into the folders and files.
  for (const auto& entry : fs::recursive_directory_iterator(work)) {
    fs::permissions(entry.path(), entry.is_directory()
                                      ? fs::perms::all
                                      : fs::perms::owner_read | fs::perms::owner_write |
                                            fs::perms::group_read | fs::perms::others_read);
  }
  fs::permissions(work, fs::perms::all);
  if (flags & kFifo) {
    ASSERT_TRUE(tovtest::MakeFifo(work + "/fifo"));
  }
  if (flags & kLocked) {
    fs::create_directories(work + "/locked/inner");
    WriteFile(work + "/locked/inner/x.txt", "x");
    fs::permissions(work + "/locked", fs::perms::none);
  }
  if (flags & kUnreadable) fs::permissions(work + "/in.bin", fs::perms::none);
  if (flags & kReadOnly) {
    fs::create_directories(work + "/ro");
    fs::permissions(work + "/ro", fs::perms::owner_read | fs::perms::owner_exec |
                                      fs::perms::group_read | fs::perms::group_exec |
                                      fs::perms::others_read | fs::perms::others_exec);
  }
  if (flags & kBig) {
    WriteFile(work + "/big", "");
    fs::resize_file(work + "/big", std::uint64_t{5} << 30);
  }
  if (flags & kLargeList) {
    std::string list =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n";
    for (int i = 100; i < 700; ++i) {
      list +=
          "\t<key>C:\\Media\\Folder " + std::to_string(i) +
          "#Thumbs</key>\n\t<dict>\n\t\t<key>CacheFile</key>\n\t\t<string>C:\\Cache\\TOVCache1_2_" +
          std::to_string(i) + ".vpc</string>\n\t</dict>\n";
    }
    WriteFile(work + "/cachedir/MasterFolderList.xml", list + "</dict>\n</plist>\n");
    fs::permissions(work + "/cachedir/MasterFolderList.xml", fs::perms::all);
  }
  if (flags & kDamaged) {
    WriteFile(work + "/cachedir/MasterFolderList.xml", "not a list");
    fs::permissions(work + "/cachedir/MasterFolderList.xml", fs::perms::all);
  }
  if (flags & kExisting) {
    WriteFile(work + "/out.wav", "old");
    WriteFile(work + "/out.bmp", "old");
    fs::permissions(work + "/out.wav", fs::perms::all);
    fs::permissions(work + "/out.bmp", fs::perms::all);
  }
}

void RunRow(const Row& row) {
  SCOPED_TRACE(row.name);
  tovtest::TempTree tree("tools");
  fs::permissions(tree.Native(), fs::perms::all);
  const std::string work = tree.NativeOf("work");
  SetUp(work, row.flags);
  // What the tool leaves in the temporary folder (the demo's files) goes
  // into the row's own tree, not the user's.
  fs::create_directories(tree.NativeOf("tmp"));
  fs::permissions(tree.NativeOf("tmp"), fs::perms::all);
  const tovtest::ScopedEnv tmpdir("TMPDIR", tree.NativeOf("tmp").c_str());
  const tovtest::ScopedEnv tmp("TMP", tree.NativeOf("tmp").c_str());

  tovtest::ChildOptions options;
  options.args = row.args;
  options.workDir = work;
  options.captureDir = tree.Native();
  if (row.flags & kFullDisk) options.fileSizeLimit = 32768;
  if (row.flags & kStdoutFull) options.stdoutPath = "/dev/full";
  options.unprivileged = (row.flags & (kLocked | kUnreadable | kReadOnly)) != 0;
  if (options.unprivileged && !OthersCanReach(TOVTOOL_PATH, tree.Native())) {
    // Run as root, the row drops to an unprivileged user, who must be able to
    // reach the tool and the work folder (a build tree under a private home
    // folder is out of its reach).
    std::cout << "row '" << row.name << "' not run: the tool or " << tree.Native()
              << " lies in a folder other users cannot enter\n";
    return;
  }
  const tovtest::ChildResult result = tovtest::RunChild(TOVTOOL_PATH, options);

  EXPECT_EQ(result.signal, 0) << "killed by a signal";
  EXPECT_EQ(result.exitCode, row.exitCode)
      << "stdout: " << result.out << "\nstderr: " << result.err;
  const std::string& where = (row.flags & kStdoutHas) ? result.out : result.err;
  if (row.has[0] != '\0') {
    EXPECT_TRUE(HasAny(where, row.has)) << "expected '" << row.has << "' in "
                                        << ((row.flags & kStdoutHas) ? "stdout" : "stderr") << ":\n"
                                        << where;
  }
  // Usage goes to stderr with the usage text; failures name their reason there.
  if (row.exitCode == 2) {
    EXPECT_NE(result.err.find("sage"), std::string::npos) << result.err;
  }
  if (row.exitCode != 0) {
    EXPECT_FALSE(result.err.empty());
  }
  for (const auto& name : row.mustExist) {
    EXPECT_TRUE(fs::exists(work + "/" + name)) << name << " should exist";
  }
  for (const auto& name : row.mustNotExist) {
    EXPECT_FALSE(fs::exists(work + "/" + name)) << name << " should not exist";
  }
  if ((row.flags & kExisting) && row.exitCode != 0) {
    EXPECT_EQ(ReadFile(work + "/out.wav"), "old");
    EXPECT_EQ(ReadFile(work + "/out.bmp"), "old");
  }
  if (row.flags & kLocked) fs::permissions(work + "/locked", fs::perms::all);
  for (const auto& entry : fs::recursive_directory_iterator(work)) {
    EXPECT_EQ(entry.path().filename().string().find(".tovtool-"), std::string::npos)
        << "temporary file left behind: " << entry.path();
  }
}

std::string Group(const Row& row) {
  if (row.flags & kStdoutFull) return "stdout";
  if (row.args.empty()) return "tool";
  const std::string& first = row.args[0];
  static const std::set<std::string> commands = {"timecode", "tone",       "bars",   "find",
                                                 "ls",       "readstream", "preset", "base64",
                                                 "replace",  "cache"};
  return commands.count(first) ? first : "tool";
}

void RunGroup(const std::string& group) {
  // Scripts may have set it; rows that want a cache folder name one.
  tovtest::SetEnv("TOVTOOL_CACHE_FOLDER", nullptr);
  int run = 0;
  for (const Row& row : Rows()) {
    if (Group(row) != group) continue;
    if (OnWindows() && (row.flags & kPosix)) continue;
    RunRow(row);
    ++run;
  }
  EXPECT_GT(run, 0);
}

TEST(TovtoolCli, TableCoversEveryCommand) {
  std::map<std::string, int> bad;
  for (const Row& row : Rows()) {
    if (row.exitCode != 0 && !(row.flags & kStdoutFull)) ++bad[Group(row)];
  }
  EXPECT_GE(Rows().size(), 80u);
  for (const char* command : {"timecode", "tone", "bars", "find", "ls", "readstream", "preset",
                              "base64", "replace", "cache"}) {
    EXPECT_GE(bad[command], 4) << command;
  }
}

TEST(TovtoolCli, Tool) { RunGroup("tool"); }
TEST(TovtoolCli, Timecode) { RunGroup("timecode"); }
TEST(TovtoolCli, Tone) { RunGroup("tone"); }
TEST(TovtoolCli, Bars) { RunGroup("bars"); }
TEST(TovtoolCli, Find) { RunGroup("find"); }
TEST(TovtoolCli, Ls) { RunGroup("ls"); }
TEST(TovtoolCli, Readstream) { RunGroup("readstream"); }
TEST(TovtoolCli, Preset) { RunGroup("preset"); }
TEST(TovtoolCli, Base64) { RunGroup("base64"); }
TEST(TovtoolCli, Replace) { RunGroup("replace"); }
TEST(TovtoolCli, Cache) { RunGroup("cache"); }
TEST(TovtoolCli, StandardOutputFull) {
  if (OnWindows()) GTEST_SKIP() << "/dev/full is a POSIX device";
  RunGroup("stdout");
}

}  // namespace
