// Exported wrappers over the OS layer: modules, "PIPL" resources, identifiers
// and the waitable signal.
#include <cstdint>
#include <cstring>

#include "basalt/utf.h"
#include "foundation/platform_helpers_internal.h"
#include "platform/guid.h"
#include "platform/module.h"
#include "platform/sync.h"
#include "tovfoundation/foundation.h"

namespace tovimpl::foundation {

namespace {

const char kPiplType[] = "PIPL";

// What the enumeration recorded.
struct FirstPipl {
  std::uintptr_t name = 0;
  bool found = false;
};

// The enumeration callback: takes the first resource, and only when the type
// it is handed is exactly "PIPL" (terminating NUL included); otherwise lets
// the enumeration go on.
bool TakeFirstPipl(platform::ModuleHandle /*module*/, const char* type, std::uintptr_t name,
                   std::intptr_t param) {
  if (std::memcmp(type, kPiplType, sizeof kPiplType) != 0) return true;
  auto* recorded = reinterpret_cast<FirstPipl*>(param);
  recorded->name = name;
  recorded->found = true;
  return false;
}

}  // namespace

Halyard::VWaitResultType WaitResultFromPlatform(std::uint32_t result) {
  switch (result) {
    case platform::kWaitObject0:
      return Halyard::kVWaitSignaled;
    case platform::kWaitTimeout:
      return Halyard::kVWaitTimedOut;
    default:
      return Halyard::kVWaitFailed;
  }
}

}  // namespace tovimpl::foundation

namespace Halyard {

namespace platform = tovimpl::platform;

HINSTANCE TOVLoadLibrary(const char* fileName, void* /*reserved*/, std::uint32_t flags) {
  if (fileName == nullptr) return nullptr;
  const UTF16String name = basalt::UTF8to16(fileName);
  return platform::LoadLibraryEx(name, flags == 1 ? platform::kLoadLibraryAsDatafile : 0);
}

HINSTANCE TOVLoadLibraryW(const unsigned short* fileName, void* /*reserved*/, std::uint32_t flags) {
  if (fileName == nullptr) return nullptr;
  return platform::LoadLibraryEx(UTF16StringView(fileName),
                                 flags == 1 ? platform::kLoadLibraryAsDatafile : 0);
}

bool TOVUnloadLibrary(HINSTANCE module) { return platform::FreeLibrary(module); }

void* TOVGetProcAddress(HINSTANCE module, const char* name) {
  return platform::GetProcAddress(module, name);
}

void* TOVLoadResource(HINSTANCE module, UTF16String& type) {
  const UTF8String typeName = basalt::UTF16to8(type);
  tovimpl::foundation::FirstPipl recorded;
  platform::EnumResourceNames(module, typeName.c_str(), tovimpl::foundation::TakeFirstPipl,
                              reinterpret_cast<std::intptr_t>(&recorded));
  if (!recorded.found) return nullptr;
  // Looked up by the low 16 bits of the name, as an integer identifier.
  platform::ResourceHandle resource = platform::FindResource(
      module, platform::MakeIntResource(static_cast<std::uint32_t>(recorded.name)), "PIPL");
  if (resource == nullptr) return nullptr;
  return platform::LoadResource(module, resource);
}

void* TOVGetResourceData(HINSTANCE /*module*/, void* resource, UTF16String& /*type*/) {
  return const_cast<void*>(platform::LockResource(resource));
}

void TOVFreeResource(HINSTANCE /*module*/, void* resource, void* /*data*/) {
  platform::FreeResource(resource);
}

std::uint32_t VGenerateGUID(_VGUID* guid) {
  if (guid == nullptr) return TOV::kErrInvalidPointer;
  platform::Guid made{};
  if (platform::CoCreateGuid(&made) != platform::kSOk) return TOV::kErrCreateFailed;
  guid->Data1 = made.Data1;
  guid->Data2 = made.Data2;
  guid->Data3 = made.Data3;
  std::memcpy(guid->Data4, made.Data4, sizeof guid->Data4);
  return 0;
}

WaitableObject::WaitableObject() : mEvent(platform::CreateEvent(false, false)) {}

WaitableObject::~WaitableObject() {
  if (mEvent != nullptr) platform::CloseHandle(static_cast<platform::EventHandle>(mEvent));
}

void WaitableObject::Signal() { platform::SetEvent(static_cast<platform::EventHandle>(mEvent)); }

VWaitResultType WaitableObject::WaitForSignal(std::int32_t milliseconds) {
  const std::uint32_t result = platform::WaitForSingleObject(
      static_cast<platform::EventHandle>(mEvent), static_cast<std::uint32_t>(milliseconds));
  return tovimpl::foundation::WaitResultFromPlatform(result);
}

}  // namespace Halyard
