// posix_spawn over the runtime's _spawnve: the child runs the program with
// the given arguments and environment, and waitpid (sys/wait.h) collects it.
// Only the forms the tests use: no file actions, no attributes.
#pragma once

#include <errno.h>
#include <process.h>
#include <sys/types.h>

#include <string>
#include <vector>

typedef struct {
  int unused;
} posix_spawn_file_actions_t;
typedef struct {
  int unused;
} posix_spawnattr_t;

// The runtime joins the arguments with blanks: quote those that need it.
inline std::string tov_compat_quote(const char* argument) {
  std::string text(argument);
  if (!text.empty() && text.find_first_of(" \t\"") == std::string::npos) return text;
  std::string quoted = "\"";
  std::size_t backslashes = 0;
  for (char c : text) {
    if (c == '\\') {
      ++backslashes;
      continue;
    }
    if (c == '"')
      quoted.append(backslashes * 2 + 1, '\\');
    else
      quoted.append(backslashes, '\\');
    backslashes = 0;
    quoted.push_back(c);
  }
  quoted.append(backslashes * 2, '\\');
  quoted.push_back('"');
  return quoted;
}

inline int posix_spawn(pid_t* child, const char* path, const posix_spawn_file_actions_t*,
                       const posix_spawnattr_t*, char* const argv[], char* const envp[]) {
  std::vector<std::string> quoted;
  for (char* const* arg = argv; *arg != nullptr; ++arg) quoted.push_back(tov_compat_quote(*arg));
  std::vector<const char*> args;
  for (const std::string& arg : quoted) args.push_back(arg.c_str());
  args.push_back(nullptr);
  const intptr_t handle = ::_spawnve(_P_NOWAIT, path, args.data(), envp);
  if (handle == -1) return errno;
  if (child != nullptr) *child = static_cast<pid_t>(handle);
  return 0;
}
