// The host's string dictionary and operating-system error messages.
#include <utility>

#include "basalt/localizer.h"
#include "platform/text.h"
#include "tovfoundation/text.h"

namespace TOV {

namespace {
constexpr char kZStringServiceName[] = "TOV ZString Service";

// The host's dictionary service, filled in by its acquire operation. The
// library stores the pointer and never owns the service.
void* gDictionary = nullptr;
}  // namespace

const char* eZStringDictInitFail::what() const noexcept {
  return "Failed to initialize ZString Dictionary";
}

std::uint32_t InitZStringDict(Halyard::CVSmartI<Halyard::IVServicesManager> services) {
  const std::uint32_t status = services->AcquireService(kZStringServiceName, 0, &gDictionary);
  if (status != 0) throw eZStringDictInitFail();  // `services` releases as it goes
  services.Clear();
  return kSuccess;
}

std::uint32_t TerminateZStringDict(Halyard::CVSmartI<Halyard::IVServicesManager> services) {
  const std::uint32_t status = services->ReleaseService(kZStringServiceName, 0, &gDictionary);
  services.Clear();
  return status;
}

Halyard::TOVZStringService* GetDictionary() {
  return static_cast<Halyard::TOVZStringService*>(gDictionary);
}

}  // namespace TOV

namespace Halyard {

UTF16String Win32ErrorCodeToMessage(std::uint32_t code) {
  // The user's default language: LANG_NEUTRAL with SUBLANG_DEFAULT.
  constexpr std::uint32_t kDefaultLanguage = 0x400;
  tovimpl::platform::Result<UTF16String> message =
      tovimpl::platform::FormatSystemMessage(code, kDefaultLanguage);
  if (message) return std::move(*message);
  return basalt::config::Localizer::Lookup(
      "$$$/TOV/Common/WinOSErrorConversionFailed=There was an error converting this Win32 error "
      "to a message!");
}

}  // namespace Halyard
