// OS layer: putting a finished file in place of another.
//
//   // write "list.xml.tmp" completely and flush it, then:
//   Status s = RenameFile(u"C:\\x\\list.xml.tmp"_u16, u"C:\\x\\list.xml"_u16,
//                         kRenameReplaceExisting | kRenameWriteThrough);
//
// With kRenameReplaceExisting the target is replaced in one step: a reader
// sees the old file or the new one, never a mix and never no file. POSIX:
// rename(2); with kRenameWriteThrough the parent folder is then synced, so
// the new name survives a power cut. Windows: MoveFileExW with
// MOVEFILE_REPLACE_EXISTING / MOVEFILE_WRITE_THROUGH.
#pragma once

#include <cstdint>

#include "basalt/strings.h"
#include "platform/result.h"

namespace tovimpl::platform {

inline constexpr std::uint32_t kRenameReplaceExisting = 1;
inline constexpr std::uint32_t kRenameWriteThrough = 8;

// Renames the file `source` to `target` on the same volume. Without
// kRenameReplaceExisting an existing target fails with 183; with it, an
// existing file is replaced (a folder target fails with 5). Other flag bits
// are ignored. Failure: 2/3 for a missing source, 17 across volumes, 5
// without permission.
Status RenameFile(UTF16StringView source, UTF16StringView target, std::uint32_t flags);

}  // namespace tovimpl::platform
