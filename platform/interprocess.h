// OS layer: what processes sharing one file need — an exclusive lock held on
// a lock file, a way to tell that a file was replaced, and whether a process
// still runs.
//
//   Result<FileHandle> lock = OpenLockFile(u"C:\\Cache\\list.xml.lock"_u16);
//   TakeExclusiveLock(*lock);         // waits for the other processes
//   FileVersion before{};
//   GetFileVersion(u"C:\\Cache\\list.xml"_u16, &before);
//   ...read, change, replace the file...
//   ReleaseLock(*lock);
//   CloseFile(*lock);                 // platform/file.h
//
// The lock binds only processes that take it: it guards a protocol, not the
// file. Its holder is the open lock-file handle, so two handles of one process
// exclude each other too (POSIX flock(2) on separate opens; Windows
// LockFileEx on the first byte). A process that dies releases its lock.
#pragma once

#include <cstdint>

#include "basalt/strings.h"
#include "platform/file.h"
#include "platform/result.h"

namespace tovimpl::platform {

// Opens the lock file at `path`, creating it empty when missing, for reading
// and writing and shared with every other open (no sharing lock is taken, see
// platform/file.h).
Result<FileHandle> OpenLockFile(const UTF16String& path);

// Waits until this handle holds the exclusive lock. Fails when the lock cannot
// be taken (a bad handle: 6; a file system without locks).
Status TakeExclusiveLock(FileHandle lockFile);

// Releases the lock taken with TakeExclusiveLock.
Status ReleaseLock(FileHandle lockFile);

// What distinguishes one state of a file from another: the volume and file
// identity (a file replaced by a rename gets a new one), its size and its
// last-write and change times. Two reads of a file that nobody wrote or
// replaced in between give equal versions.
struct FileVersion {
  std::uint64_t volume = 0;
  std::uint64_t fileId = 0;
  std::uint64_t size = 0;
  std::uint64_t writeTime = 0;   // FILETIME units (100 ns); POSIX: nanoseconds
  std::uint64_t changeTime = 0;  // POSIX: status-change time; Windows: creation time
  bool isFolder = false;

  friend bool operator==(const FileVersion&, const FileVersion&) = default;
};

// The version of the file or folder at `path` into *version. Failure: 2 or 3
// when it does not exist.
Status GetFileVersion(const UTF16String& path, FileVersion* version);

// Whether a process with this identifier exists now. A process identifier can
// be reused, so true may name another program; false is certain.
bool IsProcessRunning(std::uint32_t processId);

}  // namespace tovimpl::platform
