// Child processes for the tests: another program, or this test program again
// with a filter naming one test. One implementation per OS family:
// child_process_posix.cpp (posix_spawn, waitpid), child_process_win32.cpp
// (the runtime's _spawnve and _cwait); RunCommand uses popen or _popen.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tovtest {

// A started child; -1 when it could not be started.
using ChildHandle = std::intptr_t;

// This test program's own file.
std::string SelfPath();

// Starts `program` with `args` (after the program name) and this process's
// environment, where `env` adds or replaces variables. Does not wait.
ChildHandle StartProcess(const std::string& program, const std::vector<std::string>& args,
                         const std::map<std::string, std::string>& env = {});

// Waits for the child to end: its exit status, 128 + the signal that ended
// it (POSIX), or -1 for a child that was not started.
int WaitProcess(ChildHandle child);

// Runs `command` through the system's shell (sh -c on POSIX, cmd /c on
// Windows) and collects its standard output into `output`: its exit status,
// or -1 when it could not be run or did not exit normally.
int RunCommand(const std::string& command, std::string& output);

// `text` as one argument of a Windows command line: quoted, with its quotes
// and the backslashes before them escaped, when it holds a blank or a quote
// (or is empty); unchanged otherwise. The runtime's _spawn functions join
// their arguments with blanks, so each must be quoted this way.
std::string QuoteArgument(const std::string& text);

}  // namespace tovtest
