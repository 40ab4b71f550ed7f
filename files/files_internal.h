// Helpers shared by the files subsystem's sources.
#pragma once

#include <string>

#include "basalt/strings.h"
#include "tovfoundation/files.h"

namespace tovimpl::files {

// UTF-16 text reduced to narrow text in the thread's multibyte locale; a
// character the locale cannot hold becomes '?' (U+0080–U+00FF become one byte
// in single-byte locales).
std::string ReduceToNarrow(std::u16string_view text);
// Narrow text in the system code page (UTF-8 on POSIX) as a library path.
UTF16String NarrowToLibrary(const std::string& text);
// A library path as narrow text in the system code page.
std::string LibraryToNarrow(const UTF16String& text);

// Shell answers on a library path.
bool PathFileExists(const UTF16String& path);
bool PathIsDirectory(const UTF16String& path);

// Creates a new empty file, exclusively, with write access and sharing for
// reading; true when made.
bool CreateNewEmptyFile(const UTF16String& path);

}  // namespace tovimpl::files
