// tovtool's own OS seam: the few answers the library's public interface does
// not give a command-line program. The library keeps its OS layer (and the
// thread's last-error slot) internal, so the tool reads the system's error
// code itself, right after the library call that failed.
#pragma once

#include <cstdint>
#include <system_error>

namespace tovtool {

// The Windows error code of the last failed system call on this thread, as
// the library's OS layer reports it: GetLastError on Windows, errno mapped
// like the library's POSIX backend maps it elsewhere. Read it at once after
// the failing call.
std::uint32_t LastOsError();

// The Windows error code for an error of std::filesystem or of the C runtime.
std::uint32_t OsErrorOf(const std::error_code& error);

// True when standard error is a terminal (progress is shown only there).
bool StderrIsTerminal();

// Standard input and output carry bytes unchanged (Windows opens them in text
// mode, which turns "\n" into "\r\n" and stops reading at ^Z).
void UseBinaryStandardStreams();

// errno ⇒ the Windows error code, the table of the library's POSIX backend.
std::uint32_t OsErrorFromErrno(int error);

}  // namespace tovtool
