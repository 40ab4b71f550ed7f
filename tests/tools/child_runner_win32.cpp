// The child runner on Windows: the C runtime's descriptors 0-2 are pointed at
// the files for the time of a waiting _spawnv, which hands them to the child.
#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <sys/stat.h>

#include <cstdio>

#include "child_runner.h"
#include "common/child_process.h"

namespace tovtest {

ChildResult RunChild(const std::string& program, const ChildOptions& options) {
  const ChildStreams streams = StreamsFor(options, "NUL");
  std::vector<std::string> quoted{QuoteArgument(program)};
  for (const auto& arg : options.args) quoted.push_back(QuoteArgument(arg));
  std::vector<const char*> argv;
  for (const auto& arg : quoted) argv.push_back(arg.c_str());
  argv.push_back(nullptr);

  std::fflush(stdout);
  std::fflush(stderr);
  const int saved[3] = {::_dup(0), ::_dup(1), ::_dup(2)};
  const int in = ::_open(streams.inPath.c_str(), _O_RDONLY | _O_BINARY);
  const int out = ::_open(streams.stdoutPath.c_str(), _O_WRONLY | _O_CREAT | _O_TRUNC | _O_BINARY,
                          _S_IREAD | _S_IWRITE);
  const int err = ::_open(streams.errPath.c_str(), _O_WRONLY | _O_CREAT | _O_TRUNC | _O_BINARY,
                          _S_IREAD | _S_IWRITE);
  ChildResult result;
  char here[4096] = {};
  if (in >= 0 && out >= 0 && err >= 0 && ::_getcwd(here, sizeof here) != nullptr &&
      ::_chdir(options.workDir.c_str()) == 0) {
    ::_dup2(in, 0);
    ::_dup2(out, 1);
    ::_dup2(err, 2);
    const intptr_t code = ::_spawnv(_P_WAIT, program.c_str(), argv.data());
    ::_dup2(saved[0], 0);
    ::_dup2(saved[1], 1);
    ::_dup2(saved[2], 2);
    ::_chdir(here);
    if (code >= 0) result.exitCode = static_cast<int>(code);
  }
  for (int fd : {in, out, err, saved[0], saved[1], saved[2]}) {
    if (fd >= 0) ::_close(fd);
  }
  CollectOutput(options, streams, result);
  return result;
}

}  // namespace tovtest

namespace tovtest {
bool IsPosix() { return false; }
bool MakeFifo(const std::string&) { return false; }
}  // namespace tovtest
