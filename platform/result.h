// OS layer: results that carry their error code.
//
// Every call of the OS layer returns what it did together with the Windows
// error code of its failure, so that nothing has to be read back from a
// thread-local slot afterwards:
//
//   Status s = RemoveFile(path);               // s.Error() is 0 on success
//   if (!s) return s.Error();                  // 2, 3, 5, …
//
//   Result<std::uint64_t> size = FileSize(file);
//   if (!size) return size.Error();
//   Use(*size);
//
// Windows error codes are the one error vocabulary of the library (they are
// part of its public contract); the POSIX backend maps errno into them in one
// place (MapErrno in platform/posix/posix_support.h). A failure never carries
// code 0.
#pragma once

#include <cstdint>
#include <type_traits>
#include <utility>

namespace tovimpl::platform {

// A Windows error code: 0 for success, anything else for a failure.
using ErrorCode = std::uint32_t;

// The outcome of a call that returns nothing else.
class [[nodiscard]] Status {
 public:
  constexpr Status() noexcept = default;
  static constexpr Status Ok() noexcept { return Status(); }
  // Caller contract: `code` is not 0.
  static constexpr Status Failure(ErrorCode code) noexcept { return Status(code); }
  // Success when `code` is 0.
  static constexpr Status FromCode(ErrorCode code) noexcept { return Status(code); }

  constexpr bool IsOk() const noexcept { return mError == 0; }
  constexpr explicit operator bool() const noexcept { return mError == 0; }
  constexpr ErrorCode Error() const noexcept { return mError; }

 private:
  explicit constexpr Status(ErrorCode code) noexcept : mError(code) {}
  ErrorCode mError = 0;
};

// A value, or the Windows error code of the failure that kept it from being
// made. A failed result holds a value-initialised T.
template <class T>
class [[nodiscard]] Result {
 public:
  // Success.
  constexpr Result(T value) noexcept(std::is_nothrow_move_constructible_v<T>)  // NOLINT: implicit
      : mValue(std::move(value)) {}
  // Failure; caller contract: `status` is a failure.
  constexpr Result(Status status) noexcept(std::is_nothrow_default_constructible_v<T>)  // NOLINT
      : mValue(), mError(status.Error()) {}
  static constexpr Result Failure(ErrorCode code) { return Result(Status::Failure(code)); }

  constexpr bool IsOk() const noexcept { return mError == 0; }
  constexpr explicit operator bool() const noexcept { return mError == 0; }
  constexpr ErrorCode Error() const noexcept { return mError; }
  constexpr Status ToStatus() const noexcept { return Status::FromCode(mError); }

  // The value; meaningful only on success.
  constexpr T& operator*() & noexcept { return mValue; }
  constexpr const T& operator*() const& noexcept { return mValue; }
  constexpr T&& operator*() && noexcept { return std::move(mValue); }
  constexpr T* operator->() noexcept { return &mValue; }
  constexpr const T* operator->() const noexcept { return &mValue; }
  // The value, or `fallback` on failure.
  constexpr T ValueOr(T fallback) const& { return mError == 0 ? mValue : fallback; }

 private:
  T mValue;
  ErrorCode mError = 0;
};

}  // namespace tovimpl::platform
