// tovfoundation common types: status codes, the exception root, the private
// implementation base, and the records and interfaces shared by the subsystems.
//
// Reporting policy: ports, streams, writers, text and file operations report
// with a 32-bit status (0 is success, the named codes below otherwise) and never
// let an exception out. Folder creation, temporary and automatic names throw the
// file layer's exceptions; the buffer primitives of the text subsystem throw
// TOV::TOVVRException for null pointers.
//
// Type words: the interface's 32-bit integers are std::uint32_t and std::int32_t,
// its 64-bit ones std::uint64_t and std::int64_t, 16-bit ones std::uint16_t and
// std::int16_t; text is UTF16String (basalt/strings.h).
#pragma once

#include <cstdint>
#include <exception>

#include "basalt/strings.h"
#include "tovfoundation/export.h"

// ---------------------------------------------------------------------------
// Status codes
// ---------------------------------------------------------------------------
namespace TOV {

// A 32-bit status: 0 for success, else one of the kErr codes below.
using Status = std::uint32_t;

// 0: the operation succeeded.
inline constexpr Status kSuccess = 0;
inline constexpr Status kErrInvalidArgument = 0xC0080001u;  // an argument is out of range
inline constexpr Status kErrInvalidPointer =
    0xC0080003u;  // null pointer, zero size, rejected conversion
inline constexpr Status kErrCreateFailed = 0xC00B0002u;      // file or identifier not created
inline constexpr Status kErrOpenFailed = 0xC00C0001u;        // a file could not be opened
inline constexpr Status kErrReadFailed = 0xC00C0002u;        // a read failed
inline constexpr Status kErrWriteFailed = 0xC00C0003u;       // a write failed, or no room
inline constexpr Status kErrGetSizeFailed = 0xC00C0004u;     // a size could not be read
inline constexpr Status kErrSetSizeFailed = 0xC00C0005u;     // a size could not be set
inline constexpr Status kErrStreamState = 0xC00C0006u;       // stream operation in a wrong state
inline constexpr Status kErrSeekBackward = 0xC00C0007u;      // backward seek on a sequential port
inline constexpr Status kErrCloseFailed = 0xC00C0008u;       // a close failed
inline constexpr Status kErrPathNotFound = 0xC00C0009u;      // a path does not exist
inline constexpr Status kErrAccessDenied = 0xC00C000Cu;      // access was refused
inline constexpr Status kErrAlreadyExists = 0xC00C000Fu;     // the item already exists
inline constexpr Status kErrNoMetadata = 0xC0010003u;        // no metadata value
inline constexpr Status kErrOutOfMemory = 0xC0010005u;       // an allocation failed
inline constexpr Status kErrNotFound = 0xC0060002u;          // the item sought is not there
inline constexpr Status kErrRegistryNotFound = 0xC0140001u;  // no such registered cache folder
inline constexpr Status kErrRegistryNoCacheFolder = 0xC0140002u;  // cache folder not made
inline constexpr Status kErrRegistryNoCacheFile = 0xC0140003u;    // no cache file made
inline constexpr Status kErrNoInterface = 0x400D0004u;            // QueryInterface found nothing
// The generic failure some file and writer operations return.
inline constexpr Status kErrGeneric = 0xFFFFFFFFu;

// ---------------------------------------------------------------------------
// Exceptions
// ---------------------------------------------------------------------------

// Root of the library's exceptions. what() == "class TOV::TOVException".
class TOV_API TOVException : public std::exception {
 public:
  TOVException() noexcept = default;
  // The fixed text given above.
  const char* what() const noexcept override;
};

// Carries a 32-bit status code. what() == "class TOV::TOVVRException".
class TOV_API TOVVRException : public TOVException {
 public:
  // An exception carrying `code`.
  explicit TOVVRException(Status code) noexcept : mCode(code) {}
  // The status code given at construction.
  Status GetCode() const noexcept { return mCode; }
  // The fixed text given above, whatever the code.
  const char* what() const noexcept override;

 private:
  Status mCode;
};

// Base of every private implementation object: its only virtual operation is
// the destructor.
class TOV_API Impl {
 public:
  Impl() = default;
  // Copies nothing: the base holds no data.
  Impl(const Impl&) = default;
  // Assigns nothing: the base holds no data.
  Impl& operator=(const Impl&) = default;
  virtual ~Impl();
};

}  // namespace TOV

// ---------------------------------------------------------------------------
// Shared records
// ---------------------------------------------------------------------------
namespace Halyard {

// How a file port opens its file.
enum AccessMode : std::int32_t {
  kAccessRead = 0,       // read only; the file must exist
  kAccessWrite = 1,      // write; create or truncate (file ports may also read back)
  kAccessReadWrite = 2,  // read and write; open or create
};

// Byte order of a stream. kHaldLittleEndian stores multi-byte values as they
// lie in memory; any other value (kHaldBigEndian among them) reverses them.
enum HaldByteOrdering : std::int32_t {
  kHaldBigEndian = 0,
  kHaldLittleEndian = 1,
};

// A calendar date-time record, filled from file times and the system clock.
struct VDateTime {
  std::uint16_t year;          // the full year, e.g. 2026
  std::uint16_t milliseconds;  // 0–999
  std::int32_t kind;           // 2: the time is in UTC
  std::uint8_t day;            // 1–31
  std::uint8_t month;          // 1–12
  std::uint8_t hour;           // 0–23
  std::uint8_t minute;         // 0–59
  std::uint8_t second;         // 0–59
};

// A 128-bit identifier in the standard GUID layout.
struct _VGUID {
  std::uint32_t Data1;    // the first 32 bits
  std::uint16_t Data2;    // the next 16 bits
  std::uint16_t Data3;    // the next 16 bits
  std::uint8_t Data4[8];  // the last 64 bits, byte by byte
};

// A legacy time record of the media plug-in interfaces: a unit code and a
// 64-bit value whose reading depends on the unit (0 milliseconds, low 32 bits;
// 1 units of 100 ns, all 64 bits signed; 3 a count of frames or samples, low
// 32 bits; anything else is not converted).
struct HaldTimeCode {
  std::uint32_t unit;   // 0 milliseconds, 1 units of 100 ns, 3 frames or samples
  std::uint64_t value;  // the time in that unit
};

// Audio sample sizes (one bit each; any 32-bit value may be stored).
enum enumVAudioSampleSize : std::uint32_t {
  kVAudioSampleSize8 = 1,
  kVAudioSampleSize16 = 2,
  kVAudioSampleSize20 = 4,
  kVAudioSampleSize24 = 8,
  kVAudioSampleSize32 = 16,  // 32-bit integer
  kVAudioSampleSize64 = 32,
  kVAudioSampleSize32Float = 64,  // 32-bit IEEE float
  kVAudioSampleSize8Alt = 128,    // a second 8-bit code
};

// The audio format record of the plug-in interface: a channel mask (one bit
// per channel), the sample size and the sample rate.
struct AudioInfo {
  std::uint32_t audioMode;          // the channel mask, one bit per channel
  enumVAudioSampleSize sampleSize;  // one of the sample size bits
  std::uint32_t sampleRate;         // samples per second
};

// A plain pair of 32-bit width and height.
struct VSize {
  std::int32_t width;   // the width
  std::int32_t height;  // the height
};

// The video format record of the plug-in interface: the frame size and the
// frame-rate pair (frames per second = frameRateNumerator / frameRateDenominator).
struct VideoInfo {
  VSize size;                          // the frame size in pixels
  std::uint32_t frameRateNumerator;    // frames per second, numerator
  std::uint32_t frameRateDenominator;  // frames per second, denominator
};

// The interface root. QueryInterface answers with a status, AddRef and Release
// with the new reference count.
class TOV_INTERFACE IVUnknown {
 public:
  // Asks for the interface `id`: 0 and the interface in *out, or a status.
  virtual std::uint32_t QueryInterface(const _VGUID& id, void** out) = 0;
  // Adds a reference; returns the new count.
  virtual std::uint32_t AddRef() = 0;
  // Drops a reference; returns the new count.
  virtual std::uint32_t Release() = 0;

 protected:
  // Not for deleting through this interface: use Release.
  ~IVUnknown() = default;
};

// The host's reference-counted service provider. The operations stand in this
// order: three reference-counting operations (the third releases a
// reference), acquire-service and release-service. Both service operations
// take the service name (8-bit, NUL-terminated), the interface version, and the
// address of a pointer-sized variable that receives (or holds) the service;
// they answer a 32-bit status, 0 for success. The host owns the object.
class TOV_INTERFACE IVServicesManager {
 public:
  // Asks for the interface `id`: 0 and the interface in *out, or a status.
  virtual std::uint32_t QueryInterface(const _VGUID& id, void** out) = 0;
  // Adds a reference; returns the new count.
  virtual std::uint32_t AddRef() = 0;
  // Drops a reference; returns the new count.
  virtual std::uint32_t Release() = 0;
  // Stores the service `name` (ASCII) of `version` in *service; 0 on success.
  virtual std::uint32_t AcquireService(const char* name, std::uint32_t version, void** service) = 0;
  // Hands back a service acquired with AcquireService; 0 on success.
  virtual std::uint32_t ReleaseService(const char* name, std::uint32_t version, void** service) = 0;

 protected:
  // The host destroys the object, never a caller through this interface.
  ~IVServicesManager() = default;
};

}  // namespace Halyard
