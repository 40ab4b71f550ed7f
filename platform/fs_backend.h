// OS layer: what each backend provides behind the portable part of fs.h
// (platform/fs.cpp). Not for use outside platform/.
#pragma once

#include <cstdint>

#include "basalt/strings.h"
#include "platform/result.h"

namespace tovimpl::platform {

// The system's answer for FreeSpace, without the test seam.
Result<std::uint64_t> SystemFreeSpace(const UTF16String& path);

}  // namespace tovimpl::platform
