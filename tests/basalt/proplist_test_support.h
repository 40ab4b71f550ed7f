// Shared helpers of the property-list tests: the list the file tests save and
// load, and what a failed load or save raised.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>

#include "basalt/proplist.h"
#include "basalt/utf.h"

namespace tovtest {

// A string at the top and a child that holds a path.
inline basalt::proplist::PropList SamplePropList() {
  using namespace basalt::literals;
  basalt::proplist::PropList list;
  list.SetString("Name", u"Clip 1"_u16);
  list.CreateChild("Cache").SetString("CacheFile", u"C:\\Cache\\TOVCache1_2_3.vpc"_u16);
  return list;
}

// The kind of a PropListError and the system error behind it.
struct PropListFailure {
  basalt::proplist::PropListError::Kind kind;
  std::uint32_t systemError;
  bool operator==(const PropListFailure& other) const {
    return kind == other.kind && systemError == other.systemError;
  }
  friend std::ostream& operator<<(std::ostream& out, const PropListFailure& failure) {
    return out << "kind " << static_cast<int>(failure.kind) << ", system error "
               << failure.systemError;
  }
};

// Runs `action`; what the PropListError it raised says, or nothing when it
// raised none.
template <class Action>
std::optional<PropListFailure> FailureOf(Action&& action) {
  try {
    action();
  } catch (const basalt::proplist::PropListError& error) {
    return PropListFailure{error.GetKind(), error.GetSystemError()};
  }
  return std::nullopt;
}

}  // namespace tovtest
