// The child runner's portable part: the paths of the child's standard streams
// and the reading of what it wrote.
#include "child_runner.h"
#include "common/test_files.h"

namespace tovtest {

ChildStreams StreamsFor(const ChildOptions& options, const std::string& nullDevice) {
  ChildStreams streams;
  streams.outPath = options.captureDir + "/child.out";
  streams.errPath = options.captureDir + "/child.err";
  streams.inPath = options.stdinPath.empty() ? nullDevice : options.stdinPath;
  streams.stdoutPath = options.stdoutPath.empty() ? streams.outPath : options.stdoutPath;
  return streams;
}

void CollectOutput(const ChildOptions& options, const ChildStreams& streams, ChildResult& result) {
  if (options.stdoutPath.empty()) result.out = ReadFile(streams.outPath);
  result.err = ReadFile(streams.errPath);
}

}  // namespace tovtest
