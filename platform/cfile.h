// OS layer: the runtime library's buffered files (FILE*) opened by path.
//
// The preset helpers read and write small files through the C runtime's FILE
// streams. Opening one by path is the only step that depends on the system:
// the path arrives in the library's spelling and must be turned into the one
// the system takes. Reading, writing and closing use the standard <cstdio>
// calls directly.
//
// Each call returns its outcome with the Windows error code of a failure
// (result.h): a missing file gives 2, a missing folder on the way 3, a null
// argument 87.
#pragma once

#include <cstdio>

#include "basalt/strings.h"
#include "platform/result.h"

namespace tovimpl::platform {

// Opens the file at the NUL-terminated UTF-16 `path` with the fopen `mode`
// ("rb", "wb", …). Mirrors _wfopen. The open stream, never null on success;
// the caller closes it with std::fclose.
Result<std::FILE*> OpenCFile(const unsigned short* path, const char* mode);

// The same with an 8-bit path in the system code page (UTF-8 on POSIX).
// Mirrors fopen.
Result<std::FILE*> OpenCFileA(const char* path, const char* mode);

// Deletes the file at `path`. Mirrors _wremove.
Status RemoveCFile(const unsigned short* path);

}  // namespace tovimpl::platform
