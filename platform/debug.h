// OS layer: the debugger output channel.
//
// Windows: OutputDebugStringA, unconditionally. POSIX has no debugger channel;
// the backend writes each line to stderr (with a line end) when the
// environment variable TOV_TRACE is set to a non-empty value other than "0".
// The variable is read once, on first use.
#pragma once

namespace tovimpl::platform {

// Sends one NUL-terminated narrow line to the debugger output channel
// (Windows: OutputDebugStringA). Never fails; text that the channel does not
// take is dropped.
void OutputDebugStringA(const char* text);

// Whether OutputDebugStringA's text goes anywhere, so callers can skip
// building it. Windows: always true. POSIX: TOV_TRACE as above.
bool IsDebugOutputEnabled();

}  // namespace tovimpl::platform
