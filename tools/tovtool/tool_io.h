// tovtool: the checks the commands make around the library's file work.
//
// The library's contracts leave some failures to the caller on purpose (a
// write stream hides its port's write failures, the file search runs in the
// current directory when it cannot enter the folder, ...). The commands check
// what it does not, with these helpers, and report every failure with the
// path and the reason in the library's own words (Win32ErrorCodeToMessage).
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "tool.h"
#include "tovfoundation/tovfoundation.h"

namespace tovtool {

// The library's message for a Windows error code, without its line break.
std::string OsMessage(std::uint32_t osError);
// The library's message for an error of std::filesystem.
std::string ErrorMessage(const std::error_code& error);

// The path made absolute, with the system's separators, for the library's
// file ports: on Windows they give every path the long-path prefix, which a
// relative path or a '/' does not survive.
std::string AbsolutePath(const std::string& path);

// Throws Failure unless `path` names a regular file (after symbolic links):
// a missing file, a folder, a FIFO or a device is refused, so that nothing
// blocks on a pipe or reads an endless device. Answers the file's size.
std::uint64_t RequireRegularFile(const std::string& path);
// Throws Failure unless `path` names a folder that can be listed and entered.
void RequireReadableFolder(const std::string& path);
// "path: reason" for every folder below `path` that cannot be listed or
// entered (folders reached through symbolic links are not walked).
std::vector<std::string> UnreadableSubfolders(const std::string& path);

// A 64-bit file port of the tool's own that forwards to a CFilePortEx and
// records the first failing status with the OS error behind it, so a command
// learns of write failures that the write stream above it does not report.
class CheckedFilePort : public Halyard::CPortEx {
 public:
  explicit CheckedFilePort(Halyard::AccessMode mode);

  // Opens the file; throws Failure "`failure`: reason", where `failure` is
  // "cannot open PATH" unless given.
  void Open(const std::string& path, const std::string& failure = std::string());

  std::uint32_t Size(std::uint64_t newSize) override;
  std::uint64_t Size() const override;
  std::uint32_t Close() override;
  std::uint32_t Read(std::uint64_t pos, std::int32_t count, void* buffer) const override;
  std::uint32_t Write(std::uint64_t pos, std::int32_t count, const void* buffer) override;
  std::uint32_t Flush() override;

  // The first failing status (0 while everything succeeded) and its OS error.
  std::uint32_t FirstFailure() const { return mStatus; }
  std::uint32_t FirstOsError() const { return mOsError; }
  // "the OS reason" or "status 0x…" for the first failure.
  std::string FailureText() const;

 private:
  std::uint32_t Record(std::uint32_t status) const;

  Halyard::CFilePortEx mFile;
  mutable std::uint32_t mStatus = 0;
  mutable std::uint32_t mOsError = 0;
};

// A file written under a temporary name in its destination's folder and
// renamed into place by Commit, so the destination is either untouched or
// complete. The destructor removes a temporary file that was not committed.
class OutputFile {
 public:
  // Checks the destination (its folder exists; it is a regular file or
  // missing) and picks the temporary name. Throws Failure.
  explicit OutputFile(const std::string& destination);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // The temporary file's path (UTF-8).
  const std::string& TemporaryPath() const { return mTemporary; }
  // Renames the temporary file over the destination; throws Failure.
  void Commit();

 private:
  std::string mDestination;  // as given, for messages
  std::string mTarget;       // the file replaced (symbolic links followed)
  std::string mTemporary;
  std::optional<std::filesystem::perms> mPermissions;  // of the file replaced
  bool mCommitted = false;
};

// Writes a file through `write`, which gets the temporary file's port:
// opens the port, runs `write`, closes the port, and renames the file into
// place only when `write` answered 0 and no port call failed. Throws Failure
// naming `destination` and the first reason otherwise. `expectedSize`, when not
// 0, is checked against the finished file's size.
template <typename WriteFunction>
void WriteFileSafely(const std::string& destination, std::uint64_t expectedSize,
                     WriteFunction&& write);

// Progress of long work on standard error: "\rwriting 42%" while it runs,
// wiped at the end. Shows nothing when standard error is not a terminal or
// the work is small.
class Progress {
 public:
  Progress(const char* what, bool large);
  ~Progress();
  void Show(double fraction);

 private:
  const char* mWhat;
  bool mShown;
  int mLast = -1;
};

// Throws Failure "cannot write DESTINATION: reason" for a failed port or status.
[[noreturn]] void ThrowWriteFailure(const std::string& destination, const CheckedFilePort& port,
                                    std::uint32_t status);
// Checks the finished temporary file's size; throws Failure when it differs.
void CheckWrittenSize(const std::string& destination, const std::string& temporary,
                      std::uint64_t expectedSize);

template <typename WriteFunction>
void WriteFileSafely(const std::string& destination, std::uint64_t expectedSize,
                     WriteFunction&& write) {
  OutputFile output(destination);
  CheckedFilePort port(Halyard::kAccessWrite);
  port.Open(output.TemporaryPath(), "cannot write " + destination);
  const std::uint32_t status = write(port);
  port.Close();
  if (status != 0 || port.FirstFailure() != 0) ThrowWriteFailure(destination, port, status);
  if (expectedSize != 0) CheckWrittenSize(destination, output.TemporaryPath(), expectedSize);
  output.Commit();
}

}  // namespace tovtool
