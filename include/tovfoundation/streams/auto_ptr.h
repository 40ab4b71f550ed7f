// tovfoundation streams: CVAutoPtr, the owning pointer the port factories
// return.
#pragma once

#include <utility>

namespace Halyard {

// ---------------------------------------------------------------------------
// CVAutoPtr: the factories' owning result
// ---------------------------------------------------------------------------

// An owning pointer: when its flag is set it destroys the held object (through
// its virtual destructor) on destruction and on Reset. Movable, not copyable;
// a moved-from pointer is (false, null). The factories return (true, port) on
// success and (false, null) on failure.
template <class T>
class CVAutoPtr {
 public:
  // (false, null).
  CVAutoPtr() noexcept = default;
  // Holds `object`; owns it when `owns` is true and `object` is not null.
  CVAutoPtr(T* object, bool owns) noexcept : mOwns(owns && object != nullptr), mObject(object) {}
  // Takes over the other's object and flag; the other becomes (false, null).
  CVAutoPtr(CVAutoPtr&& other) noexcept
      : mOwns(std::exchange(other.mOwns, false)), mObject(std::exchange(other.mObject, nullptr)) {}
  // Reset, then takes over the other's object and flag.
  CVAutoPtr& operator=(CVAutoPtr&& other) noexcept {
    if (this != &other) {
      Reset();
      mOwns = std::exchange(other.mOwns, false);
      mObject = std::exchange(other.mObject, nullptr);
    }
    return *this;
  }
  CVAutoPtr(const CVAutoPtr&) = delete;
  CVAutoPtr& operator=(const CVAutoPtr&) = delete;
  // Reset: destroys the object when owned.
  ~CVAutoPtr() { Reset(); }

  // The held object, or null.
  T* Get() const noexcept { return mObject; }
  // The held object; it must not be null.
  T* operator->() const noexcept { return mObject; }
  // The held object; it must not be null.
  T& operator*() const noexcept { return *mObject; }
  // True when an object is held.
  explicit operator bool() const noexcept { return mObject != nullptr; }
  // True when this pointer destroys the object.
  bool Owns() const noexcept { return mOwns; }

  // Hands the object to the caller, who then destroys it; this becomes (false, null).
  T* Release() noexcept {
    mOwns = false;
    return std::exchange(mObject, nullptr);
  }
  // Destroys the object when owned; this becomes (false, null).
  void Reset() noexcept {
    T* object = std::exchange(mObject, nullptr);
    if (std::exchange(mOwns, false)) delete object;
  }

 private:
  bool mOwns = false;
  T* mObject = nullptr;
};

}  // namespace Halyard
