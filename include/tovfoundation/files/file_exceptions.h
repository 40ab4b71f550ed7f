// tovfoundation files: the exceptions of the file layer and of the path
// utilities.
#pragma once

#include "tovfoundation/common.h"

namespace Halyard {

// ---------------------------------------------------------------------------
// Exceptions of the file layer. Each carries no data; what() returns a fixed
// text (the blank before the colon in the two "Unknown exception" texts is
// intended).
// ---------------------------------------------------------------------------

// what() == "TOVFileUtilsException : Unknown exception"
class TOV_API TOVFileUtilsException : public TOV::TOVException {
 public:
  ~TOVFileUtilsException() override;
  // The fixed text given above.
  const char* what() const noexcept override;
};

// Thrown by the narrow folder class, GetTempFolder and TOVGetPreferencesFolder.
// what() == "TOVFileUtilsException: Folder path is not valid"
class TOV_API TOVNotAValidFolderPathException : public TOVFileUtilsException {
 public:
  ~TOVNotAValidFolderPathException() override;
  // The fixed text given above.
  const char* what() const noexcept override;
};

namespace PathUtilities {

// what() == "PathUtilsException : Unknown exception"
class TOV_API PathUtilsException : public TOV::TOVException {
 public:
  ~PathUtilsException() override;
  // The fixed text given above.
  const char* what() const noexcept override;
};
// Thrown by TOVGetTempFolder, TOVGetTempFileName(folder, name), GetAutoFileName.
// what() == "PathUtilsException: Folder path is not valid"
class TOV_API NotAValidFolderPath : public PathUtilsException {
 public:
  ~NotAValidFolderPath() override;
  // The fixed text given above.
  const char* what() const noexcept override;
};
// Thrown by GetAutoFileName when its file cannot be created.
// what() == "PathUtilsException: file / directory could not be created"
class TOV_API UnableToCreateFile : public PathUtilsException {
 public:
  ~UnableToCreateFile() override;
  // The fixed text given above.
  const char* what() const noexcept override;
};
// Thrown by both TOVGetTempFileName.
// what() == "PathUtilsException: Temporary file name could not be obtained"
class TOV_API UnableToGetTempFileName : public PathUtilsException {
 public:
  ~UnableToGetTempFileName() override;
  // The fixed text given above.
  const char* what() const noexcept override;
};

}  // namespace PathUtilities

}  // namespace Halyard
