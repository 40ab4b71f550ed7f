// Timecode trace lines: the sink hook and the debugger output channel.
#pragma once

#include <string>

namespace tovimpl::time {

// Whether a trace line would go anywhere (a sink is installed or the
// platform's debugger output takes text). Cheap: callers test it before
// formatting a line.
bool TraceWanted();

// Hands one finished line to the sink (if any) and to the debugger output.
void EmitTrace(const std::string& line);

}  // namespace tovimpl::time
