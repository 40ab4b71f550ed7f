// OS layer: the runtime library's buffered files (FILE*) opened by path.
//
// The preset helpers read and write small files through the C runtime's FILE
// streams. Opening one by path is the only step that depends on the system:
// the path arrives in the library's spelling and must be turned into the one
// the system takes. Reading, writing and closing use the standard <cstdio>
// calls directly.
//
// Failures leave a Windows error code as the thread's last error.
#pragma once

#include <cstdio>

#include "basalt/strings.h"

namespace tovimpl::platform {

// Opens the file at the NUL-terminated UTF-16 `path` with the fopen `mode`
// ("rb", "wb", …). Mirrors _wfopen. Null on failure.
std::FILE* OpenCFile(const unsigned short* path, const char* mode);

// The same with an 8-bit path in the system code page (UTF-8 on POSIX).
// Mirrors fopen.
std::FILE* OpenCFileA(const char* path, const char* mode);

// Deletes the file at `path`. Mirrors _wremove; true when it succeeded.
bool RemoveCFile(const unsigned short* path);

}  // namespace tovimpl::platform
