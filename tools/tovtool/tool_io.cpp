// tovtool: checked inputs and outputs around the library's file work.
#include "tool_io.h"

#include <cerrno>
#include <filesystem>
#include <iostream>
#include <random>
#include <sstream>

#include "tool_os.h"

namespace tovtool {

namespace fs = std::filesystem;

namespace {

std::string Hex(std::uint32_t status) {
  std::ostringstream text;
  text << "status 0x" << std::hex << std::uppercase << status;
  return text.str();
}

fs::path NativePath(const std::string& path) {
  return fs::path(reinterpret_cast<const char8_t*>(path.c_str()));
}

std::string Utf8(const fs::path& path) {
  const std::u8string text = path.u8string();
  return std::string(text.begin(), text.end());
}

}  // namespace

std::uint32_t OsErrorFromErrno(int error) {
  switch (error) {
    case ENOENT:
      return 2;
    case ENOTDIR:
      return 3;
    case EACCES:
    case EPERM:
    case EISDIR:
    case EROFS:
      return 5;
    case EEXIST:
      return 183;
    case ENOTEMPTY:
      return 145;
    case ENOSPC:
      return 112;
    case EFBIG:
      return 223;
    case ENAMETOOLONG:
      return 206;
    case EBUSY:
      return 170;
    case EBADF:
      return 6;
    case EINVAL:
      return 87;
    case ENOMEM:
      return 8;
    case EMFILE:
    case ENFILE:
      return 4;
    case EXDEV:
      return 17;
    case EPIPE:
      return 109;
    case ELOOP:
      return 1921;
    default:
      return 31;
  }
}

std::string OsMessage(std::uint32_t osError) {
  std::string text = basalt::UTF16to8(Halyard::Win32ErrorCodeToMessage(osError));
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ')) {
    text.pop_back();
  }
  return text;
}

std::string ErrorMessage(const std::error_code& error) { return OsMessage(OsErrorOf(error)); }

std::string AbsolutePath(const std::string& path) {
  std::error_code error;
  fs::path absolute = fs::absolute(NativePath(path), error);
  return error ? path : Utf8(absolute.make_preferred());
}

std::uint64_t RequireRegularFile(const std::string& path) {
  if (path.empty()) throw UsageError("the file name is empty");
  std::error_code error;
  const fs::file_status status = fs::status(NativePath(path), error);
  if (error) throw Failure(path + ": " + ErrorMessage(error));
  if (fs::is_directory(status)) throw Failure(path + ": is a folder, not a file");
  if (!fs::is_regular_file(status)) {
    throw Failure(path +
                  ": not a regular file (a pipe or a device); give a regular file, or "
                  "copy the data into one first");
  }
  const std::uint64_t size = fs::file_size(NativePath(path), error);
  if (error) throw Failure(path + ": " + ErrorMessage(error));
  return size;
}

void RequireReadableFolder(const std::string& path) {
  if (path.empty()) throw UsageError("the folder name is empty");
  std::error_code error;
  const fs::file_status status = fs::status(NativePath(path), error);
  if (error) throw Failure(path + ": " + ErrorMessage(error));
  if (!fs::is_directory(status)) throw Failure(path + ": not a folder");
  fs::directory_iterator entries(NativePath(path), error);
  if (error) throw Failure(path + ": cannot list the folder: " + ErrorMessage(error));
  // Reaching "." inside needs the right to enter the folder (search permission).
  (void)fs::status(NativePath(path) / ".", error);
  if (error) throw Failure(path + ": cannot enter the folder: " + ErrorMessage(error));
}

std::vector<std::string> UnreadableSubfolders(const std::string& path) {
  std::vector<std::string> unreadable;
  std::error_code error;
  fs::recursive_directory_iterator walk(NativePath(path),
                                        fs::directory_options::skip_permission_denied, error);
  const fs::recursive_directory_iterator end;
  while (!error && walk != end) {
    const fs::path entry = walk->path();
    std::error_code entryError;
    if (walk->is_directory(entryError) && !walk->is_symlink(entryError)) {
      std::error_code listError;
      fs::directory_iterator probe(entry, listError);
      if (!listError) (void)fs::status(entry / ".", listError);
      if (listError) unreadable.push_back(Utf8(entry) + ": " + ErrorMessage(listError));
    }
    walk.increment(error);
  }
  if (error) unreadable.push_back(path + ": " + ErrorMessage(error));
  return unreadable;
}

// ---------------------------------------------------------------------------

CheckedFilePort::CheckedFilePort(Halyard::AccessMode mode)
    : Halyard::CPortEx(mode, 0), mFile(mode, 0) {}

void CheckedFilePort::Open(const std::string& path, const std::string& failure) {
  const UTF16String path16 = basalt::UTF8to16(AbsolutePath(path));
  errno = 0;
  const std::uint32_t status = mFile.Open(path16.c_str());
  if (status != 0) {
    const std::uint32_t osError = LastOsError();
    throw Failure((failure.empty() ? "cannot open " + path : failure) + ": " + OsMessage(osError));
  }
}

std::uint32_t CheckedFilePort::Record(std::uint32_t status) const {
  if (status != 0 && mStatus == 0) {
    mStatus = status;
    mOsError = LastOsError();
  }
  return status;
}

std::string CheckedFilePort::FailureText() const {
  if (mStatus == 0) return "no failure";
  if (mOsError != 0) return OsMessage(mOsError);
  return Hex(mStatus);
}

std::uint32_t CheckedFilePort::Size(std::uint64_t newSize) {
  const std::uint32_t result = mFile.Size(newSize);
  // Success answers a value that is not a status; only this one is a failure.
  if (result == TOV::kErrSetSizeFailed) Record(result);
  return result;
}

std::uint64_t CheckedFilePort::Size() const { return mFile.Size(); }

std::uint32_t CheckedFilePort::Close() { return Record(mFile.Close()); }

std::uint32_t CheckedFilePort::Read(std::uint64_t pos, std::int32_t count, void* buffer) const {
  return Record(mFile.Read(pos, count, buffer));
}

std::uint32_t CheckedFilePort::Write(std::uint64_t pos, std::int32_t count, const void* buffer) {
  errno = 0;
  return Record(mFile.Write(pos, count, buffer));
}

std::uint32_t CheckedFilePort::Flush() { return Record(mFile.Flush()); }

// ---------------------------------------------------------------------------

[[noreturn]] void ThrowWriteFailure(const std::string& destination, const CheckedFilePort& port,
                                    std::uint32_t status) {
  throw Failure("cannot write " + destination + ": " +
                (port.FirstFailure() != 0 ? port.FailureText() : Hex(status)) +
                " (the file was left as it was)");
}

void CheckWrittenSize(const std::string& destination, const std::string& temporary,
                      std::uint64_t expectedSize) {
  std::error_code error;
  const std::uint64_t size = fs::file_size(NativePath(temporary), error);
  if (error) throw Failure("cannot write " + destination + ": " + ErrorMessage(error));
  if (size != expectedSize) {
    throw Failure("cannot write " + destination + ": only " + std::to_string(size) + " of " +
                  std::to_string(expectedSize) +
                  " bytes were written (the file was left as it was)");
  }
}

OutputFile::OutputFile(const std::string& destination) : mDestination(destination) {
  if (destination.empty()) throw UsageError("the output file name is empty");
  fs::path target = NativePath(destination);
  std::error_code error;
  // A symbolic link is followed: the file it names is the one replaced.
  if (fs::is_symlink(fs::symlink_status(target, error))) {
    target = fs::weakly_canonical(target, error);
    if (error) throw Failure(destination + ": " + ErrorMessage(error));
  }
  const fs::file_status status = fs::status(target, error);
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    throw Failure(destination + ": " +
                  (fs::is_directory(status) ? "is a folder" : "not a regular file") +
                  "; give the name of a file to write");
  }
  fs::path folder = target.parent_path();
  if (folder.empty()) folder = ".";
  folder = fs::absolute(folder, error).make_preferred();
  const fs::file_status folderStatus = fs::status(folder, error);
  if (error) throw Failure(destination + ": " + ErrorMessage(error));
  if (!fs::is_directory(folderStatus)) {
    throw Failure(destination + ": " + Utf8(target.parent_path()) + " is not a folder");
  }
  // The new file takes the permissions of the one it replaces.
  if (fs::exists(status)) mPermissions = status.permissions();
  // A name of the tool's own beside the destination, so that the rename stays
  // on one file system.
  std::random_device seed;
  std::mt19937 engine(seed());
  for (int attempt = 0; attempt < 100 && mTemporary.empty(); ++attempt) {
    std::ostringstream name;
    name << '.' << Utf8(target.filename()) << ".tovtool-" << std::hex << engine() << ".tmp";
    const fs::path candidate = folder / name.str();
    if (!fs::exists(fs::symlink_status(candidate, error))) mTemporary = Utf8(candidate);
  }
  if (mTemporary.empty()) throw Failure(destination + ": no free temporary name in its folder");
  mTarget = Utf8(target);
}

OutputFile::~OutputFile() {
  if (!mCommitted) {
    std::error_code ignored;
    fs::remove(NativePath(mTemporary), ignored);
  }
}

void OutputFile::Commit() {
  std::error_code error;
  if (mPermissions) fs::permissions(NativePath(mTemporary), *mPermissions, error);
  if (error) {
    throw Failure("cannot give the new " + mDestination +
                  " the old file's permissions: " + ErrorMessage(error));
  }
  fs::rename(NativePath(mTemporary), NativePath(mTarget), error);
  if (error)
    throw Failure("cannot move the new file into place as " + mDestination + ": " +
                  ErrorMessage(error));
  mCommitted = true;
}

// ---------------------------------------------------------------------------

Progress::Progress(const char* what, bool large)
    : mWhat(what), mShown(large && StderrIsTerminal()) {}

Progress::~Progress() {
  if (mShown && mLast >= 0) std::cerr << "\r                              \r" << std::flush;
}

void Progress::Show(double fraction) {
  if (!mShown) return;
  const int percent = static_cast<int>(fraction * 100.0);
  if (percent == mLast) return;
  mLast = percent;
  std::cerr << '\r' << mWhat << ' ' << percent << '%' << std::flush;
}

}  // namespace tovtool
