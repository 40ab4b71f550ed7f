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
  UTF16String folder = platform::GetTempPath();
  if (folder.size() > kMaxPath - 1) folder.resize(kMaxPath - 1);
  if (folder.empty() || !tovimpl::files::PathFileExists(folder)) throw NotAValidFolderPath();
  return folder;
}

UTF16String TOVGetTempFileName() {
  const UTF16String folder = TOVGetTempFolder();
  UTF16String created;
  if (platform::GetTempFileName(folder, u"_TOV_"_u16, &created) == 0) {
    throw UnableToGetTempFileName();
  }
  if (created.size() > kMaxPath) created.resize(kMaxPath);
  return created;
}

void TOVGetTempFileName(const UTF16String& folder, UTF16String& name) {
  if (!tovimpl::files::PathFileExists(folder)) throw NotAValidFolderPath();
  UTF16String created;
  if (platform::GetTempFileName(folder, name, &created) == 0) throw UnableToGetTempFileName();
  name = created;
}

UTF16String TOVGetPreferencesFolder() {
  const bool haveDrive = platform::GetEnvVar(u"HOMEDRIVE"_u16).has_value();
  const bool havePath = platform::GetEnvVar(u"HOMEPATH"_u16).has_value();
  UTF16String folder;
  if (haveDrive || havePath) {
    folder = EnvOrEmpty(u"HOMEDRIVE") + EnvOrEmpty(u"HOMEPATH");
  } else {
    folder = platform::FromNativeSpelling(EnvOrEmpty(u"HOME"));
  }
  if (!tovimpl::files::PathFileExists(folder)) throw TOVNotAValidFolderPathException();
  return folder;
}

unsigned char TOVCopyFile(const UTF16String& source, const UTF16String& target) {
  return platform::CopyFileEx(source, target, nullptr, nullptr, nullptr, false) ? 1 : 0;
}

unsigned char TOVCopyFileEx(const UTF16String& source, const UTF16String& target,
                            TOVCopyProgressRoutine progress, void* progressData) {
  int cancel = 0;
  return platform::CopyFileEx(source, target, progress, progressData, &cancel, false) ? 1 : 0;
}

unsigned char TOVMoveFile(const UTF16String& source, const UTF16String& target) {
  return platform::MoveFile(source, target) ? 1 : 0;
}

unsigned char TOVDeleteFile(const UTF16String& path) {
  if (!tovimpl::files::PathFileExists(path)) return 1;
  return platform::RemoveFile(path) ? 1 : 0;
}

unsigned char TOVMoveToTrash(const UTF16String& path) {
  return platform::MoveToTrash(path) == 0 ? 1 : 0;
}

}  // namespace PathUtilities

namespace PathUtils {

std::string GetTempFolder() {
  std::string folder = tovimpl::files::LibraryToNarrow(platform::GetTempPath());
  if (folder.size() > kMaxPath - 1) folder.resize(kMaxPath - 1);
  if (!ExistsOnDisk(folder)) throw TOVNotAValidFolderPathException();
  return folder;
}

std::string GetTemporaryFileName() {
  const std::string folder = GetTempFolder();
  UTF16String created;
  if (platform::GetTempFileName(tovimpl::files::NarrowToLibrary(folder), u"_TOV_"_u16, &created) == 0) {
    return {};
  }
  return tovimpl::files::LibraryToNarrow(created);
}

}  // namespace PathUtils
}  // namespace Halyard
