// OS layer: error codes.
//
// Windows error codes are the library's one error vocabulary. The OS layer's
// calls return a Status or a Result (platform/result.h), which carry their
// code with them; only LoadResource, which the public resource wrapper
// mirrors, still leaves its code in the calling thread's last-error slot.
// The slot is where public interfaces written against the Windows calls (the
// file ports, the copy and move functions) leave theirs: portable code sets
// it from a Result's code where the public contract says so. The POSIX backend maps errno
// through one table (MapErrno); the Win32 backend reads and writes the
// system's own slot. A failure never leaves 0 there: several algorithms of the
// library treat "last error 0" as success.
#pragma once

#include <cstdint>

namespace tovimpl::platform {

// Windows error codes the library's status logic looks at.
inline constexpr std::uint32_t kErrorSuccess = 0;
inline constexpr std::uint32_t kErrorFileNotFound = 2;
inline constexpr std::uint32_t kErrorPathNotFound = 3;
inline constexpr std::uint32_t kErrorTooManyOpenFiles = 4;
inline constexpr std::uint32_t kErrorAccessDenied = 5;
inline constexpr std::uint32_t kErrorInvalidHandle = 6;
inline constexpr std::uint32_t kErrorNotEnoughMemory = 8;
inline constexpr std::uint32_t kErrorNotSameDevice = 17;
inline constexpr std::uint32_t kErrorNoMoreFiles = 18;
inline constexpr std::uint32_t kErrorWriteFault = 29;
inline constexpr std::uint32_t kErrorReadFault = 30;
inline constexpr std::uint32_t kErrorGenFailure = 31;
inline constexpr std::uint32_t kErrorSharingViolation = 32;
inline constexpr std::uint32_t kErrorNotSupported = 50;
inline constexpr std::uint32_t kErrorFileExists = 80;
inline constexpr std::uint32_t kErrorInvalidParameter = 87;
inline constexpr std::uint32_t kErrorBrokenPipe = 109;
inline constexpr std::uint32_t kErrorDiskFull = 112;
inline constexpr std::uint32_t kErrorInsufficientBuffer = 122;
inline constexpr std::uint32_t kErrorModNotFound = 126;
inline constexpr std::uint32_t kErrorProcNotFound = 127;
inline constexpr std::uint32_t kErrorNegativeSeek = 131;
inline constexpr std::uint32_t kErrorDirNotEmpty = 145;
inline constexpr std::uint32_t kErrorBusy = 170;
inline constexpr std::uint32_t kErrorAlreadyExists = 183;
inline constexpr std::uint32_t kErrorEnvVarNotFound = 203;
inline constexpr std::uint32_t kErrorFilenameExcedRange = 206;
inline constexpr std::uint32_t kErrorDirectory = 267;
inline constexpr std::uint32_t kErrorTooManyLinks = 1142;
inline constexpr std::uint32_t kErrorCantResolveFilename = 1921;
inline constexpr std::uint32_t kErrorTimeout = 1460;
inline constexpr std::uint32_t kErrorResourceTypeNotFound = 1813;
inline constexpr std::uint32_t kErrorFileTooLarge = 223;
inline constexpr std::uint32_t kErrorRequestAborted = 1235;

// The calling thread's last error.
std::uint32_t GetLastError();
void SetLastError(std::uint32_t code);

// How an EEXIST is reported: create-new opens and fail-if-exists copies say
// kErrorFileExists (80); folder creation and moves say kErrorAlreadyExists (183).
enum class ExistsAs { kFileExists, kAlreadyExists };

}  // namespace tovimpl::platform
