// Internal face of the folder registrar, for the library's tests and tools.
#pragma once

#include "basalt/strings.h"

namespace tovimpl::foundation {

// The registry key of a (folder, name) pair: the folder with one trailing
// '\' removed, in UTF-8, then "#" and the name when the name is not empty.
UTF8String RegistrarKey(const UTF16String& folder, const UTF16String& name);

// Saves and destroys the registry (as at process exit), so that the next
// RegisterFolder or FindFolder builds it again from the host's cache folder.
// For tests that need several first uses in one process.
void ResetRegistryForTesting();

}  // namespace tovimpl::foundation
