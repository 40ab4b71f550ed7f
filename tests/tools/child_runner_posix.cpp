// The child runner on POSIX systems: fork, then set up and exec.
#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "child_runner.h"

namespace tovtest {

ChildResult RunChild(const std::string& program, const ChildOptions& options) {
  const ChildStreams streams = StreamsFor(options, "/dev/null");
  std::vector<std::string> argStrings{program};
  argStrings.insert(argStrings.end(), options.args.begin(), options.args.end());
  std::vector<char*> argv;
  for (auto& arg : argStrings) argv.push_back(arg.data());
  argv.push_back(nullptr);

  const pid_t child = ::fork();
  if (child == 0) {
    // Only async-signal-safe calls from here on.
    const int in = ::open(streams.inPath.c_str(), O_RDONLY);
    const int out = ::open(streams.stdoutPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const int err = ::open(streams.errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (in < 0 || out < 0 || err < 0) ::_exit(126);
    ::dup2(in, 0);
    ::dup2(out, 1);
    ::dup2(err, 2);
    if (::chdir(options.workDir.c_str()) != 0) ::_exit(126);
    if (options.fileSizeLimit != 0) {
      ::signal(SIGXFSZ, SIG_IGN);
      const rlimit limit{options.fileSizeLimit, options.fileSizeLimit};
      if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) ::_exit(126);
    }
    if (options.unprivileged && ::geteuid() == 0) {
      if (::setgroups(0, nullptr) != 0 || ::setgid(65534) != 0 || ::setuid(65534) != 0) {
        ::_exit(126);
      }
    }
    ::execv(program.c_str(), argv.data());
    ::_exit(127);
  }
  ChildResult result;
  if (child < 0) return result;
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
  }
  if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
  CollectOutput(options, streams, result);
  return result;
}

}  // namespace tovtest

#include <sys/stat.h>

namespace tovtest {
bool IsPosix() { return true; }
bool MakeFifo(const std::string& path) { return ::mkfifo(path.c_str(), 0644) == 0; }
}  // namespace tovtest
