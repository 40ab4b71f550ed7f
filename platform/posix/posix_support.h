// POSIX backend of the OS layer: helpers shared by the backend's files.
// Only code that works on every POSIX system the library supports belongs here.
#pragma once

#include <string>

#include "basalt/strings.h"
#include "platform/error.h"

namespace tovimpl::platform::posix {

// A library path (Windows spelling, UTF-16) as the UTF-8 bytes the system calls take.
std::string NativePath(UTF16StringView libraryPath);
// UTF-8 bytes from the system ⇒ a library path in backslash form.
UTF16String LibraryPath(const std::string& nativePath);

// Maps an errno value to a Windows error code. ENOENT becomes kErrorFileNotFound
// when the parent folder of `nativePath` exists and kErrorPathNotFound
// otherwise (no path given: kErrorFileNotFound). EEXIST is reported as `exists`
// says. Never returns 0.
std::uint32_t MapErrno(int error, ExistsAs exists = ExistsAs::kAlreadyExists,
                       const std::string& nativePath = std::string());

}  // namespace tovimpl::platform::posix
