// Child processes on Windows, through the C runtime: _spawnve joins the
// arguments with blanks into one command line, so each is quoted the way the
// child's runtime splits them again. Narrow paths are in the ANSI code page,
// as the runtime and GetModuleFileNameA take them.
#include <process.h>
#include <stdlib.h>
#include <windows.h>

#include <cstdio>

#include "common/child_process.h"

namespace tovtest {

std::string SelfPath() {
  char path[MAX_PATH * 4] = {};
  const DWORD length = ::GetModuleFileNameA(nullptr, path, sizeof path);
  return length > 0 && length < sizeof path ? std::string(path, length) : std::string();
}

ChildHandle StartProcess(const std::string& program, const std::vector<std::string>& args,
                         const std::map<std::string, std::string>& env) {
  std::vector<std::string> variables;
  for (char** entry = _environ; entry != nullptr && *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (env.count(text.substr(0, text.find('='))) == 0) variables.push_back(text);
  }
  for (const auto& [name, value] : env) variables.push_back(name + "=" + value);
  std::vector<const char*> envp;
  for (const auto& text : variables) envp.push_back(text.c_str());
  envp.push_back(nullptr);

  std::vector<std::string> words{QuoteArgument(program)};
  for (const auto& arg : args) words.push_back(QuoteArgument(arg));
  std::vector<const char*> argv;
  for (const auto& word : words) argv.push_back(word.c_str());
  argv.push_back(nullptr);
  return ::_spawnve(_P_NOWAIT, program.c_str(), argv.data(), envp.data());
}

int WaitProcess(ChildHandle child) {
  if (child == -1) return -1;
  int code = 0;
  if (::_cwait(&code, child, 0) == -1) return -1;
  return code;
}

int RunCommand(const std::string& command, std::string& output) {
  output.clear();
  std::FILE* pipe = ::_popen(command.c_str(), "rb");
  if (pipe == nullptr) return -1;
  char buffer[4096];
  std::size_t got = 0;
  while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) output.append(buffer, got);
  return ::_pclose(pipe);
}

}  // namespace tovtest
