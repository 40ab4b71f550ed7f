// The Windows path rules as pure functions over any string of code units:
// the runtime library's split and compose rules and the shell's root,
// backslash, strip and extension rules. Both the UTF-16 and the narrow path
// operations are built on them, so the two always agree.
#pragma once

#include <cstddef>
#include <string>

namespace tovimpl::files {

template <class S>
struct SplitParts {
  S drive;
  S folder;
  S fileName;
  S extension;
};

template <class C>
constexpr bool IsSeparator(C c) {
  return c == C('\\') || c == C('/');
}

// The split rule: drive "X:", folder up to the last '\' or '/', file name up to
// its last '.', extension from that dot.
template <class S>
SplitParts<S> Split(const S& path) {
  using C = typename S::value_type;
  SplitParts<S> parts;
  std::size_t pos = 0;
  if (path.size() >= 2 && path[1] == C(':')) {
    parts.drive = path.substr(0, 2);
    pos = 2;
  }
  std::size_t nameStart = pos;
  for (std::size_t i = pos; i < path.size(); ++i) {
    if (IsSeparator(path[i])) nameStart = i + 1;
  }
  parts.folder = path.substr(pos, nameStart - pos);
  std::size_t dot = S::npos;
  for (std::size_t i = nameStart; i < path.size(); ++i) {
    if (path[i] == C('.')) dot = i;
  }
  if (dot == S::npos) {
    parts.fileName = path.substr(nameStart);
  } else {
    parts.fileName = path.substr(nameStart, dot - nameStart);
    parts.extension = path.substr(dot);
  }
  return parts;
}

// The compose rule: the drive's first unit and ':', the folder with a
// separator added when it lacks one, the name, the extension with a '.' added
// when it lacks one. Empty pieces are left out.
template <class S>
S Compose(const S& drive, const S& folder, const S& fileName, const S& extension) {
  using C = typename S::value_type;
  S out;
  if (!drive.empty()) {
    out.push_back(drive[0]);
    out.push_back(C(':'));
  }
  if (!folder.empty()) {
    out += folder;
    if (!IsSeparator(folder.back())) out.push_back(C('\\'));
  }
  out += fileName;
  if (!extension.empty()) {
    if (extension[0] != C('.')) out.push_back(C('.'));
    out += extension;
  }
  return out;
}

// A root: "\", "X:\", or "\\" followed by at most one more '\' (a server, or a
// server and a share).
template <class S>
bool IsRoot(const S& path) {
  using C = typename S::value_type;
  if (path.empty()) return false;
  if (path[0] == C('\\')) {
    if (path.size() == 1) return true;
    if (path[1] != C('\\')) return false;
    std::size_t slashes = 0;
    for (std::size_t i = 2; i < path.size(); ++i) {
      if (path[i] == C('\\')) ++slashes;
    }
    return slashes <= 1;
  }
  return path.size() == 3 && path[1] == C(':') && path[2] == C('\\');
}

// One trailing '\' removed unless the path is a root.
template <class S>
void RemoveBackslash(S& path) {
  using C = typename S::value_type;
  if (!path.empty() && path.back() == C('\\') && !IsRoot(path)) path.pop_back();
}

// Appends '\' unless the path is empty or already ends in '\'.
template <class S>
void AddBackslash(S& path) {
  using C = typename S::value_type;
  if (!path.empty() && path.back() != C('\\')) path.push_back(C('\\'));
}

// Keeps only the last component; a trailing separator stays with it
// ("C:\dir\" ⇒ "dir\").
template <class S>
void StripPath(S& path) {
  using C = typename S::value_type;
  std::size_t start = 0;
  for (std::size_t i = 0; i + 1 < path.size(); ++i) {
    const C c = path[i];
    if ((c == C('\\') || c == C('/') || c == C(':')) && !IsSeparator(path[i + 1])) start = i + 1;
  }
  path.erase(0, start);
}

// Position of the extension's dot in the last component, or npos. A '\' or a
// blank after a dot cancels it.
template <class S>
std::size_t FindExtension(const S& path) {
  using C = typename S::value_type;
  std::size_t dot = S::npos;
  for (std::size_t i = 0; i < path.size(); ++i) {
    const C c = path[i];
    if (c == C('\\') || c == C(' ')) {
      dot = S::npos;
    } else if (c == C('.')) {
      dot = i;
    }
  }
  return dot;
}

template <class S>
void RemoveExtension(S& path) {
  const std::size_t dot = FindExtension(path);
  if (dot != S::npos) path.resize(dot);
}

// Removes the last component and its separator, keeping a root's separator
// ("C:\a" ⇒ "C:\", "\a" ⇒ "\", "C:a" ⇒ "C:"). True when anything was removed.
template <class S>
bool RemoveFileSpec(S& path) {
  using C = typename S::value_type;
  const std::size_t before = path.size();
  const std::size_t start = (path.size() >= 2 && path[1] == C(':')) ? 2 : 0;
  std::size_t last = S::npos;
  for (std::size_t i = start; i < path.size(); ++i) {
    if (path[i] == C('\\')) last = i;
  }
  if (last == S::npos) {
    path.resize(start);
  } else if (last == start) {
    path.resize(last + 1);
  } else if (start == 0 && last == 1) {
    path.resize(2);  // "\\server" ⇒ "\\"
  } else {
    path.resize(last);
  }
  return path.size() != before;
}

// Reduces the path to its root. False (the path then holds what was left) when
// no root is reached.
template <class S>
bool StripToRoot(S& path) {
  while (!IsRoot(path)) {
    if (!RemoveFileSpec(path)) return false;
  }
  return true;
}

}  // namespace tovimpl::files
