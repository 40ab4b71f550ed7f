// POSIX backend of the OS layer: the file system outside of open files.
// Needs Linux for /proc/self/exe (the executable's path); statx and renameat2
// where the C library declares them, else stat and link + rename.
#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "basalt/utf.h"
#include "platform/error.h"
#include "platform/fs.h"
#include "platform/fs_backend.h"
#include "platform/posix/posix_support.h"
#include "platform/system.h"

namespace tovimpl::platform {

namespace {

using posix::LibraryPath;
using posix::NativePath;

// The failure for errno `error` on `native` (see posix::MapErrno).
Status Failed(int error, const std::string& native = std::string(),
              ExistsAs exists = ExistsAs::kAlreadyExists) {
  return Status::Failure(posix::MapErrno(error, exists, native));
}

// Seconds between 1601-01-01 and 1970-01-01.
constexpr std::uint64_t kEpochDifference = 11644473600ull;

std::uint64_t ToFileTime(std::int64_t seconds, std::uint32_t nanoseconds) {
  // Wraps through unsigned arithmetic for times before 1601.
  return (static_cast<std::uint64_t>(seconds) + kEpochDifference) * 10000000ull +
         nanoseconds / 100u;
}

std::string BaseName(const std::string& native) {
  std::string trimmed = native;
  while (trimmed.size() > 1 && trimmed.back() == '/') trimmed.pop_back();
  const auto slash = trimmed.find_last_of('/');
  return slash == std::string::npos ? trimmed : trimmed.substr(slash + 1);
}

std::string ParentOf(const std::string& native) {
  std::string trimmed = native;
  while (trimmed.size() > 1 && trimmed.back() == '/') trimmed.pop_back();
  const auto slash = trimmed.find_last_of('/');
  if (slash == std::string::npos) return ".";
  if (slash == 0) return "/";
  return trimmed.substr(0, slash);
}

std::uint32_t AttributesFromStat(const struct stat& st, const std::string& name) {
  std::uint32_t attributes = 0;
  if (S_ISDIR(st.st_mode)) attributes |= kFileAttributeDirectory;
  if ((st.st_mode & S_IWUSR) == 0) attributes |= kFileAttributeReadOnly;
  if (!name.empty() && name[0] == '.' && name != "." && name != "..") {
    attributes |= kFileAttributeHidden;
  }
  if (attributes == 0) attributes = kFileAttributeNormal;
  return attributes;
}

bool StatFollowing(const std::string& native, struct stat* st) {
  if (::stat(native.c_str(), st) == 0) return true;
  const int error = errno;
  if (::lstat(native.c_str(), st) == 0) return true;  // a dangling link is still an entry
  errno = error;
  return false;
}

}  // namespace

// --- attributes -------------------------------------------------------------

Result<std::uint32_t> ReadAttributes(const UTF16String& path) {
  const std::string native = NativePath(path);
  if (native.empty()) return Status::Failure(kErrorPathNotFound);
  struct stat st {};
  if (!StatFollowing(native, &st)) return Failed(errno, native);
  return AttributesFromStat(st, BaseName(native));
}

Result<FileInfo> ReadFileInfo(const UTF16String& path) {
  const std::string native = NativePath(path);
  if (native.empty()) return Status::Failure(kErrorPathNotFound);
  struct stat st {};
  if (!StatFollowing(native, &st)) return Failed(errno, native);
  FileInfo info{};
  FileInfo* data = &info;
  data->attributes = AttributesFromStat(st, BaseName(native));
  data->size = S_ISDIR(st.st_mode) ? 0 : static_cast<std::uint64_t>(st.st_size);
  data->lastAccessTime =
      ToFileTime(st.st_atim.tv_sec, static_cast<std::uint32_t>(st.st_atim.tv_nsec));
  data->lastWriteTime =
      ToFileTime(st.st_mtim.tv_sec, static_cast<std::uint32_t>(st.st_mtim.tv_nsec));
  data->creationTime = data->lastWriteTime;
#if defined(STATX_BTIME)
  struct statx sx {};
  if (::statx(AT_FDCWD, native.c_str(), 0, STATX_BTIME, &sx) == 0 &&
      (sx.stx_mask & STATX_BTIME) != 0) {
    data->creationTime = ToFileTime(sx.stx_btime.tv_sec, sx.stx_btime.tv_nsec);
  }
#endif
  return info;
}

// --- folders ----------------------------------------------------------------

namespace {

// Creates the absolute folder `native` and every missing parent with `mode`.
// A level that exists as a folder is passed; one that exists as anything else
// fails with 3 (a file stands in the way); other failures map errno.
Status MakeFolderChain(const std::string& native, mode_t mode) {
  std::size_t pos = 1;
  while (pos <= native.size()) {
    std::size_t slash = native.find('/', pos);
    if (slash == std::string::npos) slash = native.size();
    const std::string level = native.substr(0, slash);
    pos = slash + 1;
    if (level.empty() || level.back() == '/') continue;
    if (::mkdir(level.c_str(), mode) != 0) {
      const int error = errno;
      struct stat st {};
      if (error == EEXIST && ::stat(level.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) continue;
      if (error == EEXIST) return Status::Failure(kErrorPathNotFound);
      return Failed(error, level);
    }
  }
  return Status::Ok();
}

}  // namespace

Status CreateDirectories(const UTF16String& path) {
  const std::string native = NativePath(path);
  if (native.empty() || native[0] != '/') return Status::Failure(kErrorBadPathname);
  struct stat st {};
  if (::stat(native.c_str(), &st) == 0) {
    return Status::Failure(S_ISDIR(st.st_mode) ? kErrorAlreadyExists : kErrorFileExists);
  }
  return MakeFolderChain(native, 0777);
}

// --- enumeration ------------------------------------------------------------

namespace {}  // namespace

struct ListingState {
  DIR* dir = nullptr;
  std::string folder;  // native, ends in '/'
  UTF16String pattern;
  bool matchAll = false;
};

namespace {

Status NextEntry(ListingState* state, ListingEntry* data) {
  for (;;) {
    errno = 0;
    const struct dirent* entry = ::readdir(state->dir);
    if (entry == nullptr) {
      return Status::Failure(errno == 0 ? kErrorNoMoreFiles : posix::MapErrno(errno));
    }
    UTF16String name = basalt::UTF8to16(entry->d_name);
    if (!state->matchAll && !MatchesPattern(state->pattern, name)) continue;
    std::uint32_t attributes = 0;
    switch (entry->d_type) {
      case DT_DIR:
        attributes = kFileAttributeDirectory;
        break;
      case DT_REG:
        attributes = kFileAttributeNormal;
        break;
      default: {
        struct stat st {};
        const bool known = StatFollowing(state->folder + entry->d_name, &st);
        attributes = known && S_ISDIR(st.st_mode) ? kFileAttributeDirectory : kFileAttributeNormal;
      }
    }
    const std::string_view raw(entry->d_name);
    if (raw[0] == '.' && raw != "." && raw != "..") {
      attributes = (attributes & ~kFileAttributeNormal) | kFileAttributeHidden;
    }
    data->attributes = attributes;
    data->name = std::move(name);
    return Status::Ok();
  }
}

}  // namespace

Result<ListingHandle> OpenListing(const UTF16String& pattern, ListingEntry* data) {
  std::size_t split = UTF16String::npos;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '\\' || pattern[i] == '/') split = i;
  }
  auto state = std::make_unique<ListingState>();
  UTF16String folderPart;
  if (split == UTF16String::npos) {
    state->pattern = pattern;
  } else {
    folderPart = pattern.substr(0, split + 1);
    state->pattern = pattern.substr(split + 1);
  }
  if (state->pattern.empty()) return Status::Failure(kErrorFileNotFound);
  // A folder part ends in its separator, which the native spelling keeps as '/'.
  std::string nativeFolder = folderPart.empty() ? std::string("./") : NativePath(folderPart);
  if (nativeFolder.empty()) nativeFolder = "./";
  state->folder = nativeFolder;
  state->matchAll = state->pattern.size() == 1 && state->pattern[0] == '*';
  if (state->pattern.size() == 3 && state->pattern[0] == '*' && state->pattern[1] == '.' &&
      state->pattern[2] == '*') {
    state->matchAll = true;
  }
  state->dir = ::opendir(nativeFolder.c_str());
  if (state->dir == nullptr) {
    const int error = errno;
    return Status::Failure(error == ENOENT ? kErrorPathNotFound : posix::MapErrno(error));
  }
  if (!NextEntry(state.get(), data)) {
    ::closedir(state->dir);
    return Status::Failure(kErrorFileNotFound);
  }
  return state.release();
}

Status NextListingEntry(ListingHandle listing, ListingEntry* entry) {
  if (listing == nullptr) return Status::Failure(kErrorInvalidHandle);
  return NextEntry(listing, entry);
}

void CloseListing(ListingHandle listing) {
  if (listing == nullptr) return;
  ::closedir(listing->dir);
  delete listing;
}

// --- current directory --------------------------------------------------------

Result<UTF16String> CurrentDirectory() {
  std::vector<char> buffer(PATH_MAX);
  while (::getcwd(buffer.data(), buffer.size()) == nullptr) {
    if (errno != ERANGE) return Failed(errno);
    buffer.resize(buffer.size() * 2);
  }
  return LibraryPath(buffer.data());
}

Status ChangeDirectory(const UTF16String& path) {
  const std::string native = NativePath(path);
  if (native.empty()) return Status::Failure(kErrorPathNotFound);
  if (::chdir(native.c_str()) != 0) return Failed(errno, native);
  return Status::Ok();
}

// --- free space ---------------------------------------------------------------

Result<std::uint64_t> SystemFreeSpace(const UTF16String& path) {
  const std::string native = NativePath(path);
  if (native.empty()) return Status::Failure(kErrorPathNotFound);
  struct statvfs vfs {};
  if (::statvfs(native.c_str(), &vfs) != 0) {
    const int error = errno;
    return Status::Failure(error == ENOENT ? kErrorPathNotFound : posix::MapErrno(error));
  }
  return static_cast<std::uint64_t>(vfs.f_bavail) * static_cast<std::uint64_t>(vfs.f_frsize);
}

// --- temporary names ------------------------------------------------------------

Result<UTF16String> TempDirectory() {
  const char* value = std::getenv("TMPDIR");
  std::string native = (value != nullptr && value[0] != 0) ? value : "/tmp";
  UTF16String path = LibraryPath(native);
  if (path.empty() || path.back() != '\\') path.push_back('\\');
  return path;
}

namespace {
// Creates an empty file that must not exist yet.
Status CreateNewEmpty(const UTF16String& path) {
  const Result<OpenedFile> file =
      OpenFile(path, kGenericWrite, kFileShareRead, kCreateNew, kFileAttributeNormal);
  if (!file) return Status::Failure(file.Error());
  (void)CloseFile(file->handle);
  return Status::Ok();
}
}  // namespace

Result<UTF16String> CreateTempFile(const UTF16String& folder, const UTF16String& prefix) {
  struct stat st {};
  const std::string nativeFolder = NativePath(folder);
  if (nativeFolder.empty() || ::stat(nativeFolder.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
    return Status::Failure(kErrorDirectory);
  }
  UTF16String base = folder;
  if (base.back() != '\\' && base.back() != '/') base.push_back('\\');
  base += prefix.substr(0, 3);
  std::uint32_t unique = (TickCountMs() ^ CurrentProcessId()) & 0xFFFFu;
  for (std::uint32_t attempt = 0; attempt < 0xFFFFu; ++attempt) {
    if (unique == 0) unique = 1;
    static const char kHex[] = "0123456789ABCDEF";
    std::string hex;
    for (std::uint32_t v = unique; v != 0; v >>= 4) hex.insert(hex.begin(), kHex[v & 0xF]);
    UTF16String candidate = base + basalt::UTF8to16(hex + ".tmp");
    const Status made = CreateNewEmpty(candidate);
    if (made) return candidate;
    if (made.Error() != kErrorFileExists) return made;
    unique = (unique + 1) & 0xFFFFu;
  }
  return Status::Failure(kErrorFileExists);
}

// --- copy, move, delete -----------------------------------------------------------

namespace {

struct Handle {
  FileHandle file;
  ~Handle() {
    if (file.IsOpen()) (void)CloseFile(file);
  }
};

// Copies `sourcePath` to `targetPath`, whose native forms are `source` and
// `target`. A target left half-written is removed.
Status CopyNative(const UTF16String& sourcePath, const std::string& source,
                  const UTF16String& targetPath, const std::string& target,
                  CopyProgressRoutine progress, void* data, const int* cancel, bool failIfExists) {
  struct stat sst {};
  if (::stat(source.c_str(), &sst) != 0) return Failed(errno, source, ExistsAs::kFileExists);
  if (S_ISDIR(sst.st_mode)) return Status::Failure(kErrorAccessDenied);
  struct stat tst {};
  if (::stat(target.c_str(), &tst) == 0 && tst.st_dev == sst.st_dev && tst.st_ino == sst.st_ino) {
    return Status::Failure(kErrorSharingViolation);  // a file copied onto itself
  }
  Handle in;
  const Result<OpenedFile> opened =
      OpenFile(sourcePath, kGenericRead, kFileShareRead, kOpenExisting, kFileFlagSequentialScan);
  if (!opened) return opened.ToStatus();
  in.file = opened->handle;
  Handle out;
  const Result<OpenedFile> created =
      OpenFile(targetPath, kGenericWrite, 0, failIfExists ? kCreateNew : kCreateAlways,
               kFileFlagSequentialScan);
  if (!created) return created.ToStatus();
  out.file = created->handle;
  (void)::chmod(target.c_str(), sst.st_mode & 07777);
  // Gives up with `error`, first closing and deleting the target when asked.
  auto abandon = [&](ErrorCode error, bool removeTarget) {
    if (removeTarget) {
      if (out.file.IsOpen()) (void)CloseFile(out.file);
      out.file = FileHandle();
      ::unlink(target.c_str());
    }
    return Status::Failure(error);
  };
  const std::uint64_t total = static_cast<std::uint64_t>(sst.st_size);
  std::uint64_t done = 0;
  bool quiet = progress == nullptr;
  // The progress routine's answer: 0 to go on, 1 to cancel (target deleted),
  // 2 to stop (target kept), 3 to go on without further calls.
  auto ask = [&](std::uint32_t reason) -> Status {
    if (quiet) return Status::Ok();
    const std::uint32_t answer =
        progress(total, done, total, done, 1, reason, nullptr, nullptr, data);
    if (answer == 3) quiet = true;
    if (answer == 1 || answer == 2) return abandon(kErrorRequestAborted, answer == 1);
    return Status::Ok();
  };
  if (const Status go = ask(1); !go) return go;
  std::vector<char> buffer(1 << 20);
  for (;;) {
    if (cancel != nullptr && *cancel != 0) return abandon(kErrorRequestAborted, true);
    const Result<std::uint32_t> got =
        ReadAt(in.file, done, buffer.data(), static_cast<std::uint32_t>(buffer.size()));
    if (!got) return abandon(got.Error(), true);
    if (*got == 0) break;
    const Result<std::uint32_t> written = WriteAt(out.file, done, buffer.data(), *got);
    if (!written || *written != *got) {
      return abandon(written ? kErrorWriteFault : written.Error(), true);
    }
    done += *got;
    if (const Status go = ask(0); !go) return go;
  }
  const Status closed = CloseFile(out.file);
  out.file = FileHandle();
  if (!closed) return abandon(closed.Error(), true);
  return Status::Ok();
}

}  // namespace

Status CopyFileContents(const UTF16String& source, const UTF16String& target,
                        CopyProgressRoutine progress, void* data, const int* cancel,
                        bool failIfExists) {
  const std::string nativeSource = NativePath(source);
  const std::string nativeTarget = NativePath(target);
  if (nativeSource.empty() || nativeTarget.empty()) return Status::Failure(kErrorPathNotFound);
  return CopyNative(source, nativeSource, target, nativeTarget, progress, data, cancel,
                    failIfExists);
}

namespace {

// rename without replacing; errno on failure.
bool RenameNoReplace(const std::string& from, const std::string& to) {
#if defined(RENAME_NOREPLACE)
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP) return false;
#endif
  struct stat st {};
  if (::lstat(from.c_str(), &st) != 0) return false;
  if (!S_ISDIR(st.st_mode)) {
    if (::link(from.c_str(), to.c_str()) == 0) {
      ::unlink(from.c_str());
      return true;
    }
    if (errno != EPERM && errno != ENOTSUP && errno != EMLINK) return false;
  }
  // No links here: check, then rename (a race with another creator remains).
  struct stat tst {};
  if (::lstat(to.c_str(), &tst) == 0) {
    errno = EEXIST;
    return false;
  }
  return ::rename(from.c_str(), to.c_str()) == 0;
}

}  // namespace

Status MoveNoReplace(const UTF16String& source, const UTF16String& target) {
  const std::string from = NativePath(source);
  const std::string to = NativePath(target);
  if (from.empty() || to.empty()) return Status::Failure(kErrorPathNotFound);
  if (RenameNoReplace(from, to)) return Status::Ok();
  const int error = errno;
  if (error == ENOENT) {
    // With the source in place, what is missing is the target's folder: 3,
    // as Windows answers; a missing source is 2 (or 3 without its folder).
    struct stat there {};
    if (::lstat(from.c_str(), &there) == 0) return Status::Failure(kErrorPathNotFound);
    return Failed(error, from);
  }
  if (error != EXDEV) return Failed(error, to);
  struct stat st {};
  if (::lstat(from.c_str(), &st) != 0 || S_ISDIR(st.st_mode)) {
    return Status::Failure(kErrorNotSameDevice);
  }
  if (const Status copied = CopyNative(source, from, target, to, nullptr, nullptr, nullptr, true);
      !copied) {
    return Status::Failure(copied.Error() == kErrorFileExists ? kErrorAlreadyExists
                                                              : copied.Error());
  }
  if (::unlink(from.c_str()) != 0) {
    const int unlinkError = errno;
    ::unlink(to.c_str());
    return Failed(unlinkError, from);
  }
  return Status::Ok();
}

// --- trash ------------------------------------------------------------------------

namespace {

std::string PercentEncode(const std::string& path) {
  static const char kHex[] = "0123456789ABCDEF";
  std::string out;
  for (unsigned char c : path) {
    const bool plain = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                       c == '-' || c == '_' || c == '.' || c == '~' || c == '/';
    if (plain) {
      out.push_back(static_cast<char>(c));
    } else {
      out.push_back('%');
      out.push_back(kHex[c >> 4]);
      out.push_back(kHex[c & 0xF]);
    }
  }
  return out;
}

// The nearest existing folder at or above `native`.
std::string ExistingAncestor(std::string native) {
  struct stat st {};
  while (::stat(native.c_str(), &st) != 0) {
    if (native == "/" || native.empty()) return "/";
    native = ParentOf(native);
  }
  return native;
}

// The mount point holding `folder` (an existing absolute folder).
std::string MountPointOf(const std::string& folder) {
  struct stat st {};
  if (::stat(folder.c_str(), &st) != 0) return "/";
  std::string current = folder;
  while (current != "/") {
    const std::string parent = ParentOf(current);
    struct stat pst {};
    if (::stat(parent.c_str(), &pst) != 0 || pst.st_dev != st.st_dev) break;
    current = parent;
  }
  return current;
}

std::string AbsoluteOf(const std::string& native) {
  // The item itself is not resolved (a link is trashed as a link); its folder is.
  char resolved[PATH_MAX];
  const std::string parent = ParentOf(native);
  if (::realpath(parent.c_str(), resolved) == nullptr) return std::string();
  std::string out = resolved;
  if (out.back() != '/') out.push_back('/');
  return out + BaseName(native);
}

}  // namespace

Status MoveToTrash(const UTF16String& path) {
  const auto fail = [](ErrorCode code) { return Status::Failure(code); };
  const std::string native = NativePath(path);
  if (native.empty()) return fail(kErrorPathNotFound);
  struct stat item {};
  if (::lstat(native.c_str(), &item) != 0) return Failed(errno, native);
  const std::string absolute = AbsoluteOf(native);
  if (absolute.empty()) return fail(kErrorPathNotFound);

  // Choose the trash: the home trash on the same file system, else the top
  // folder's own.
  std::string dataHome;
  if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg != nullptr && xdg[0] == '/') {
    dataHome = xdg;
  } else if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/') {
    dataHome = std::string(home) + "/.local/share";
  }
  std::string trash;
  std::string recordedPath = absolute;
  struct stat dataStat {};
  if (!dataHome.empty() && ::stat(ExistingAncestor(dataHome).c_str(), &dataStat) == 0 &&
      dataStat.st_dev == item.st_dev) {
    trash = dataHome + "/Trash";
  } else {
    const std::string top = MountPointOf(ParentOf(absolute));
    trash = (top == "/" ? std::string() : top) + "/.Trash-" + std::to_string(::getuid());
    recordedPath = absolute.substr(top == "/" ? 1 : top.size() + 1);
    struct stat tst {};
    // lstat: a link in its place is no folder, and is refused with the rest.
    if (::lstat(trash.c_str(), &tst) == 0 && (!S_ISDIR(tst.st_mode) || tst.st_uid != ::getuid())) {
      return fail(kErrorAccessDenied);  // not a trash this user may trust
    }
  }
  if (const Status made = MakeFolderChain(trash + "/files", 0700); !made) return made;
  if (const Status made = MakeFolderChain(trash + "/info", 0700); !made) return made;

  // The record first, created exclusively under a name free in both folders.
  const std::string base = BaseName(absolute);
  std::string name;
  std::string infoPath;
  for (unsigned n = 1;; ++n) {
    if (n > 100000) return fail(kErrorFileExists);
    name = n == 1 ? base : base + "." + std::to_string(n);
    infoPath = trash + "/info/" + name + ".trashinfo";
    const int fd = ::open(infoPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) {
      if (errno == EEXIST) continue;
      return Failed(errno, infoPath, ExistsAs::kFileExists);
    }
    struct stat existing {};
    if (::lstat((trash + "/files/" + name).c_str(), &existing) == 0) {
      ::close(fd);
      ::unlink(infoPath.c_str());
      continue;
    }
    char date[32];
    const std::time_t now = std::time(nullptr);
    struct tm local {};
    ::localtime_r(&now, &local);
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
    const std::string record =
        "[Trash Info]\nPath=" + PercentEncode(recordedPath) + "\nDeletionDate=" + date + "\n";
    const bool written =
        ::write(fd, record.data(), record.size()) == static_cast<ssize_t>(record.size());
    const bool closed = ::close(fd) == 0;
    if (!written || !closed) {
      ::unlink(infoPath.c_str());
      return fail(kErrorWriteFault);
    }
    break;
  }
  if (!RenameNoReplace(native, trash + "/files/" + name)) {
    const int error = errno;
    ::unlink(infoPath.c_str());
    return Failed(error, native);
  }
  return Status::Ok();
}

// --- the executable ----------------------------------------------------------------

Result<UTF16String> ExecutablePath() {
  std::vector<char> buffer(PATH_MAX);
  for (;;) {
    const ssize_t n = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (n < 0) return Failed(errno);
    if (static_cast<std::size_t>(n) < buffer.size()) {
      return LibraryPath(std::string(buffer.data(), static_cast<std::size_t>(n)));
    }
    buffer.resize(buffer.size() * 2);
  }
}

}  // namespace tovimpl::platform
