// Child processes on POSIX systems.
#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "common/child_process.h"

extern char** environ;

namespace tovtest {

std::string SelfPath() {
  std::error_code error;
  const auto path = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::string("/proc/self/exe") : path.string();
}

ChildHandle StartProcess(const std::string& program, const std::vector<std::string>& args,
                         const std::map<std::string, std::string>& env) {
  std::vector<std::string> variables;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (env.count(text.substr(0, text.find('='))) == 0) variables.push_back(text);
  }
  for (const auto& [name, value] : env) variables.push_back(name + "=" + value);
  std::vector<char*> envp;
  for (auto& text : variables) envp.push_back(text.data());
  envp.push_back(nullptr);

  std::vector<std::string> words{program};
  words.insert(words.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (auto& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  pid_t child = 0;
  if (::posix_spawn(&child, program.c_str(), nullptr, nullptr, argv.data(), envp.data()) != 0) {
    return -1;
  }
  return static_cast<ChildHandle>(child);
}

int WaitProcess(ChildHandle child) {
  if (child < 0) return -1;
  int status = 0;
  while (::waitpid(static_cast<pid_t>(child), &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  if (WIFEXITED(status)) return WEXITSTATUS(status);
  if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
  return -1;
}

int RunCommand(const std::string& command, std::string& output) {
  output.clear();
  std::FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return -1;
  char buffer[4096];
  std::size_t got = 0;
  while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) output.append(buffer, got);
  const int status = ::pclose(pipe);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace tovtest
