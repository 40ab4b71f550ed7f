// The shared exception root and the private implementation base.
#include "tovfoundation/common.h"

namespace TOV {

const char* TOVException::what() const noexcept { return "class TOV::TOVException"; }

const char* TOVVRException::what() const noexcept { return "class TOV::TOVVRException"; }

Impl::~Impl() = default;

}  // namespace TOV

#include "tovfoundation/version.h"

namespace TOVFoundation {
const char* Version() { return TOV_VERSION_STRING; }
}  // namespace TOVFoundation
