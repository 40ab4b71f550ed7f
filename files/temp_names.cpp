// Automatic names, the platform's temporary names and folders, the home
// folder, and the true/false wrappers of copy, move, delete and trash.
#include <mutex>
#include <string>

#include "basalt/string_stream.h"
#include "basalt/thread.h"
#include "basalt/utf.h"
#include "files/files_internal.h"
#include "platform/error.h"
#include "platform/fs.h"
#include "platform/path.h"
#include "platform/system.h"
#include "tovfoundation/files.h"

namespace {

namespace platform = tovimpl::platform;
using namespace basalt::literals;

constexpr std::size_t kMaxPath = 260;

// The process-wide lock of GetAutoFileName; callers may re-enter from the
// same thread.
std::recursive_mutex& AutoNameLock() {
  static std::recursive_mutex lock;
  return lock;
}

UTF16String EnvOrEmpty(const char16_t* name) {
  auto value = platform::GetEnvVar(basalt::ToUTF16(name));
  if (!value) return {};
  if (value->size() > kMaxPath - 1) value->resize(kMaxPath - 1);
  return *value;
}

}  // namespace

namespace Halyard {
namespace PathUtilities {

UTF16String GetAutoFileName(const UTF16String& folder, const UTF16String& prefix,
                            const UTF16String& extension) {
  std::lock_guard<std::recursive_mutex> guard(AutoNameLock());
  UTF16String base = folder;
  RemoveTrailingslash(base);
  if (!FileUtils::Folder::IsFolder(base)) throw NotAValidFolderPath();
  AddTrailingslash(base);
  base += prefix;
  const std::uint32_t thread = basalt::GetCurrentThreadID();
  const std::uint32_t process = basalt::GetCurrentProcessID();
  // One stream for every round: after a collision the text grows.
  basalt::UTF8StringStream text;
  UTF16String candidate;
  do {
    const std::uint32_t ticks = basalt::GetTickCount();
    text << process << '_' << thread << '_' << ticks;
    candidate = base + basalt::UTF8to16(text.str()) + extension;
  } while (tovimpl::files::PathFileExists(candidate));
  if (!tovimpl::files::CreateNewEmptyFile(candidate)) throw UnableToCreateFile();
  return candidate;
}

UTF16String TOVGetTempFolder() {
  UTF16String folder = platform::TempDirectory().ValueOr({});
  if (folder.size() > kMaxPath - 1) folder.resize(kMaxPath - 1);
  if (folder.empty() || !tovimpl::files::PathFileExists(folder)) throw NotAValidFolderPath();
  return folder;
}

UTF16String TOVGetTempFileName() {
  const UTF16String folder = TOVGetTempFolder();
  platform::Result<UTF16String> made = platform::CreateTempFile(folder, u"_TOV_"_u16);
  if (!made) throw UnableToGetTempFileName();
  UTF16String created = std::move(*made);
  if (created.size() > kMaxPath) created.resize(kMaxPath);
  return created;
}

void TOVGetTempFileName(const UTF16String& folder, UTF16String& name) {
  if (!tovimpl::files::PathFileExists(folder)) throw NotAValidFolderPath();
  platform::Result<UTF16String> made = platform::CreateTempFile(folder, name);
  if (!made) throw UnableToGetTempFileName();
  name = std::move(*made);
}

UTF16String TOVGetPreferencesFolder() {
  const bool haveDrive = platform::GetEnvVar(u"HOMEDRIVE"_u16).IsOk();
  const bool havePath = platform::GetEnvVar(u"HOMEPATH"_u16).IsOk();
  UTF16String folder;
  if (haveDrive || havePath) {
    folder = EnvOrEmpty(u"HOMEDRIVE") + EnvOrEmpty(u"HOMEPATH");
  } else {
    folder = platform::FromNativeSpelling(EnvOrEmpty(u"HOME"));
  }
  if (!tovimpl::files::PathFileExists(folder)) throw TOVNotAValidFolderPathException();
  return folder;
}

namespace {
// 1 on success; 0 with the failure's code left as the thread's last error, as
// the system's copy and move calls leave it.
unsigned char Reported(platform::Status status) {
  if (status) return 1;
  platform::SetLastError(status.Error());
  return 0;
}
}  // namespace

unsigned char TOVCopyFile(const UTF16String& source, const UTF16String& target) {
  return Reported(platform::CopyFileContents(source, target, nullptr, nullptr, nullptr, false));
}

unsigned char TOVCopyFileEx(const UTF16String& source, const UTF16String& target,
                            TOVCopyProgressRoutine progress, void* progressData) {
  int cancel = 0;
  return Reported(
      platform::CopyFileContents(source, target, progress, progressData, &cancel, false));
}

unsigned char TOVMoveFile(const UTF16String& source, const UTF16String& target) {
  return Reported(platform::MoveNoReplace(source, target));
}

unsigned char TOVDeleteFile(const UTF16String& path) {
  if (!tovimpl::files::PathFileExists(path)) return 1;
  return platform::RemoveFile(path) ? 1 : 0;
}

unsigned char TOVMoveToTrash(const UTF16String& path) {
  return Reported(platform::MoveToTrash(path));
}

}  // namespace PathUtilities

namespace PathUtils {

std::string GetTempFolder() {
  std::string folder = tovimpl::files::LibraryToNarrow(platform::TempDirectory().ValueOr({}));
  if (folder.size() > kMaxPath - 1) folder.resize(kMaxPath - 1);
  if (!ExistsOnDisk(folder)) throw TOVNotAValidFolderPathException();
  return folder;
}

std::string GetTemporaryFileName() {
  const std::string folder = GetTempFolder();
  const platform::Result<UTF16String> created =
      platform::CreateTempFile(tovimpl::files::NarrowToLibrary(folder), u"_TOV_"_u16);
  if (!created) return {};
  return tovimpl::files::LibraryToNarrow(*created);
}

}  // namespace PathUtils
}  // namespace Halyard
