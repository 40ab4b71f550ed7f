// OS layer: path spelling.
//
// The library spells every path in the Windows dialect on every platform:
// backslash separators, optional drive letters, the long-path prefix "\\?\".
// These helpers translate between that spelling and the one the operating
// system takes. On Windows both directions are the identity. On POSIX the
// native spelling is UTF-8 with "/" separators:
//   "\\?\UNC\server\share\x" ⇒ "//server/share/x"
//   "\\?\C:\x"               ⇒ "C:/x"   (the prefix is stripped)
//   "\tmp\a\b.txt"           ⇒ "/tmp/a/b.txt"
// and paths coming back from the system turn every "/" into "\".
#pragma once

#include <string>

#include "basalt/strings.h"

namespace tovimpl::platform {

// A path in the library's spelling ⇒ the operating system's spelling, UTF-16.
UTF16String ToNativeSpelling(UTF16StringView libraryPath);
// A path in the operating system's spelling ⇒ the library's spelling.
UTF16String FromNativeSpelling(UTF16StringView nativePath);

}  // namespace tovimpl::platform
