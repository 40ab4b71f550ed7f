// Runs a program as a child process, the way a user's shell would: in a given
// folder, with standard input from a file, standard output and error captured
// (or standard output sent to a given file), optionally under a file-size
// limit or without root's privileges. One implementation per OS family.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tovtest {

struct ChildOptions {
  std::vector<std::string> args;  // after the program name
  std::string workDir;            // the child's current directory
  std::string captureDir;         // where the captured output files go
  std::string stdinPath;          // empty: the null device
  std::string stdoutPath;         // empty: captured into ChildResult::out
  // POSIX only: RLIMIT_FSIZE in bytes (0: none), with SIGXFSZ ignored, so a
  // write beyond it fails with EFBIG as on a full disk.
  std::uint64_t fileSizeLimit = 0;
  // POSIX only: when the tests run as root, the child runs as the unprivileged
  // user 65534, so file permissions apply to it.
  bool unprivileged = false;
};

struct ChildResult {
  int exitCode = -1;  // -1 when the child did not exit normally
  int signal = 0;     // the signal that ended it, 0 if none
  std::string out;
  std::string err;
};

ChildResult RunChild(const std::string& program, const ChildOptions& options);

// For the implementations of RunChild: where the child's standard streams go
// (`nullDevice` stands for an empty stdinPath), and taking what it wrote.
struct ChildStreams {
  std::string inPath;      // standard input
  std::string stdoutPath;  // standard output
  std::string outPath;     // the capture file of standard output
  std::string errPath;     // the capture file of standard error
};
ChildStreams StreamsFor(const ChildOptions& options, const std::string& nullDevice);
// Reads the capture files into `result` (standard output only when captured).
void CollectOutput(const ChildOptions& options, const ChildStreams& streams, ChildResult& result);

}  // namespace tovtest

namespace tovtest {
// True on POSIX systems (FIFOs, /dev/full, file-size limits, permissions).
bool IsPosix();
// Makes a FIFO at `path`; false where the system has none (Windows).
bool MakeFifo(const std::string& path);
}  // namespace tovtest
