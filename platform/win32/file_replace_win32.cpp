// Win32 backend of the OS layer: putting a finished file in place of another.
// Needs only MoveFileExW, which every supported Windows version has.
#include "platform/error.h"
#include "platform/file_replace.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

Status RenameFile(UTF16StringView source, UTF16StringView target, std::uint32_t flags) {
  const std::wstring from = win32::WidePath(source);
  const std::wstring to = win32::WidePath(target);
  // Only the two flags the layer knows reach the system; the rest are ignored,
  // as the header says.
  const DWORD known = flags & (MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
  if (!::MoveFileExW(from.c_str(), to.c_str(), known)) return Status::Failure(win32::LastErrorOr());
  return Status::Ok();
}

}  // namespace tovimpl::platform
