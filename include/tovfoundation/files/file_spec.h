// tovfoundation files: file specs, a path taken apart once
// (Halyard::FileUtils::CFileSpec), and the older inert shell
// (Halyard::CFileSpec).
#pragma once

#include <cstdint>
#include <string>

#include "tovfoundation/common.h"

namespace Halyard {

class CReadStream;
class CWriteStream;

namespace FileUtils {

// A path taken apart once. Fields are computed from the path as given:
//   "C:\Media\clip.wav" ⇒ full path "C:\Media\clip.wav", root "C:\",
//     TOVGetFolderPath() "\Media", title "clip", TOVGetFileName() "clip.wav",
//     TOVGetFileExtension() "wav" (no dot, unlike PathUtilities).
//   "C:\Media\Out\" ⇒ full path "C:\Media\Out" (one trailing '\' removed), but
//     folder path "\Media\Out\" and empty title and extension (taken from the
//     path WITH its separator).
// Equality compares full paths code unit by code unit: "C:\a.txt" != "c:\A.TXT".
// File operations report by status and never throw; one object is for one
// thread at a time.
class TOV_API CFileSpec {
 public:
  // The empty spec: every field "".
  CFileSpec();
  // Fills root, folder path, title, extension, then the full path; a path
  // exception while doing so ends construction quietly, later fields empty.
  CFileSpec(const UTF16String& path);  // NOLINT(google-explicit-constructor): part of the interface
  // Copies every field.
  CFileSpec(const CFileSpec& other);
  // Copies every field.
  CFileSpec& operator=(const CFileSpec& other);
  // Takes the path apart anew, as the constructor from a path.
  CFileSpec& operator=(const UTF16String& path);
  // Destroys the fields; nothing on disk is touched.
  virtual ~CFileSpec();

  // True when the full paths are equal, code unit by code unit.
  virtual bool operator==(const CFileSpec& other) const;
  // The negation of operator==.
  virtual bool operator!=(const CFileSpec& other) const;
  // The full path.
  virtual operator UTF16String() const;  // NOLINT(google-explicit-constructor): the full path

  // The full path (one trailing '\' removed).
  UTF16String TOVGetFullPathName() const { return mFullPath; }
  // The root: "C:\", "\\srv\share", "\" (POSIX), or "".
  UTF16String TOVGetRoot() const { return mRoot; }
  // The folder path with one trailing '\' removed: "\Media\" ⇒ "\Media".
  UTF16String TOVGetFolderPath() const;
  // The file name without its extension: "clip".
  UTF16String TOVGetFileTitle() const { return mTitle; }
  // Title and extension: "clip.wav".
  UTF16String TOVGetFileName() const;
  // The extension WITHOUT its dot: "wav"; "" when there is none.
  UTF16String TOVGetFileExtension() const;

  // Creates or truncates the file (read/write, others may read) and closes it.
  // 0, or kErrCreateFailed.
  std::uint32_t CreateNewFile();
  // Creates the folder that CONTAINS the file (root + folder path, composed
  // with MakePath) with Folder::CreateOnDisk. A root without a drive letter
  // ("\" on POSIX, "\\srv\share") is left out of the composition: as a
  // drive it would give the meaningless "\:". Answers 0, kErrGeneric when CreateOnDisk says false
  // (it already exists, for one), kErrCreateFailed on a path exception.
  std::uint32_t CreateNewFolder();
  // 0, or kErrGeneric.
  std::uint32_t DeleteTheFile();
  // True when something exists at the full path.
  bool Exists();
  // The creation or last-write time in UTC (kind 2). 0, or 6 when the file's
  // attributes cannot be read (then *out is untouched). Caller contract: `out`
  // is not null. POSIX: the creation time is the birth time where the file
  // system records one, else the last-write time.
  std::uint32_t GetCreationTime(VDateTime* out);
  // The last-write time in UTC; as GetCreationTime.
  std::uint32_t GetModificationTime(VDateTime* out);
  // Null `out`: kErrInvalidPointer. Else *out = 0, then the file is opened
  // for reading with NO sharing (so this fails while any port holds the file,
  // as on Windows): kErrGetSizeFailed when it cannot be opened or sized, else 0
  // and the size.
  std::uint32_t GetFileSize(std::uint64_t* out);
  // A new stream over a new file port on the full path (read: the file must
  // exist; write: created or truncated), 4096-byte buffer, the stream owning
  // the port. The caller owns the stream (delete it or Release it). Null when
  // the path is empty or the file cannot be opened.
  CReadStream* OpenReadStream(HaldByteOrdering order);
  // A new write stream over a new port on the full path; the file is created
  // or truncated. The caller owns the stream. Null when the path is empty or
  // the file cannot be opened.
  CWriteStream* OpenWriteStream(HaldByteOrdering order);

 private:
  UTF16String mFullPath;
  UTF16String mRoot;
  UTF16String mFolderPath;
  UTF16String mTitle;
  UTF16String mExtension;
};

}  // namespace FileUtils

// The older file spec class: an inert shell kept for its interface. Every
// object holds the empty path whatever it was made from, and its accessors
// answer "". Do not complete it.
class TOV_API CFileSpec {
 public:
  // The empty path.
  CFileSpec();
  // The empty path; the other is not read.
  CFileSpec(const CFileSpec& other);
  // The empty path; `path` is ignored, whatever its encoding.
  explicit CFileSpec(const std::string& path);
  // The empty path; `path` is ignored.
  explicit CFileSpec(const WideString& path);
  // Destroys the (empty) path.
  virtual ~CFileSpec();
  // All three return *this unchanged.
  CFileSpec& operator=(const CFileSpec& other);
  CFileSpec& operator=(const WideString& path);
  CFileSpec& operator=(const std::string& path);

  // True when both paths are equal; two shells always are.
  virtual bool operator==(const CFileSpec& other) const;
  // The negation of operator==.
  virtual bool operator!=(const CFileSpec& other) const;
  // The path: "".
  virtual operator WideString() const;  // NOLINT(google-explicit-constructor)
  // The path as NUL-terminated UTF-16: "".
  virtual operator const char16_t*() const;  // NOLINT(google-explicit-constructor)

  // The path: "".
  WideString GetFullPathNameW() const { return mPath; }
  // The path in narrow form: "".
  std::string GetFullPathNameA() const;
  // "" (narrow).
  std::string GetFileExtensionA() const { return {}; }
  // "".
  WideString GetFileExtensionW() const { return {}; }
  // "" (narrow).
  std::string GetFileNameA() const { return {}; }
  // "".
  WideString GetFileNameW() const { return {}; }
  // "" (narrow).
  std::string GetFileTitleA() const { return {}; }
  // "".
  WideString GetFileTitleW() const { return {}; }
  // "" (narrow).
  std::string GetFolderPathA() const { return {}; }
  // "".
  WideString GetFolderPathW() const { return {}; }
  // "" (narrow).
  std::string GetRootA() const { return {}; }
  // "".
  WideString GetRootW() const { return {}; }
  // "" and the arguments untouched.
  static WideString GetTempFileNameW(WideString& folder, WideString& prefix);
  // "".
  static WideString GetTempFolder();
  // Tries to create the empty path: kErrCreateFailed.
  std::uint32_t CreateNewFile();
  // kErrGeneric, nothing done.
  std::uint32_t CreateNewFolder() { return TOV::kErrGeneric; }
  // Always false.
  bool Exists() { return false; }

 private:
  WideString mPath;
};

}  // namespace Halyard
