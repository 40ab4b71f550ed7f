// Whole-file reads and writes, folder queries and path spellings for the test
// suites, on native paths ('/' works on every platform). Portable: built on
// std::filesystem and the standard streams.
#pragma once

#include <string>
#include <vector>

#include "basalt/strings.h"

namespace tovtest {

using Bytes = std::vector<unsigned char>;

// The file's bytes; empty when it cannot be read.
std::string ReadFile(const std::string& native);
Bytes ReadBytes(const std::string& native);
// Replaces the file with `contents`; WriteFile throws std::runtime_error when
// the file cannot be written.
void WriteFile(const std::string& native, const std::string& contents);
void WriteBytes(const std::string& native, const Bytes& bytes);

// True when an entry of any kind (a broken link included) is at `native`.
bool Exists(const std::string& native);
// Makes the folder and any missing folder above it.
void MakeFolder(const std::string& native);
// Names of the entries of a folder (not "." or ".."), sorted.
std::vector<std::string> ListFolder(const std::string& native);

// A native path as a library path (UTF-16, backslashes), and back ('/').
UTF16String Lib(const std::string& native);
std::string Native(const UTF16String& library);
// Library text as UTF-8 and back (for messages and comparisons).
std::string U8(const UTF16String& text);
UTF16String U16(const std::string& text);

}  // namespace tovtest
