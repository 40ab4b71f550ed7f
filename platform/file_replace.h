// OS layer: putting a finished file in place of another.
//
// MoveFileEx mirrors MoveFileExW for files on one volume:
//
//   // write "list.xml.tmp" completely and flush it, then:
//   MoveFileEx(u"C:\\x\\list.xml.tmp"_u16, u"C:\\x\\list.xml"_u16,
//              kMoveFileReplaceExisting | kMoveFileWriteThrough);
//
// With kMoveFileReplaceExisting the target is replaced in one step: a reader
// sees the old file or the new one, never a mix and never no file. POSIX:
// rename(2); with kMoveFileWriteThrough the parent folder is then synced, so
// the new name survives a power cut.
#pragma once

#include <cstdint>

#include "basalt/strings.h"

namespace tovimpl::platform {

inline constexpr std::uint32_t kMoveFileReplaceExisting = 1;
inline constexpr std::uint32_t kMoveFileWriteThrough = 8;

// MoveFileExW. Renames `source` to `target` on the same volume. Without
// kMoveFileReplaceExisting an existing target fails with 183; with it, an
// existing file is replaced (a folder target fails with 5). Other flag bits
// are ignored. Failure: false with the last error set (2/3 for a missing
// source, 17 across volumes, 5 without permission).
bool MoveFileEx(UTF16StringView source, UTF16StringView target, std::uint32_t flags);

}  // namespace tovimpl::platform
