// Exported wrappers over the OS layer: modules, "PIPL" resources, identifiers
// and the waitable signal.
#include <cstdint>
#include <cstring>
#include <string>

#include "basalt/utf.h"
#include "foundation/platform_helpers_internal.h"
#include "platform/error.h"
#include "platform/guid.h"
#include "platform/module.h"
#include "platform/sync.h"
#include "platform/text.h"
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

// The value of `result`, or `fallback` with the failure's code left as the
// thread's last error, as the system's module calls leave it.
template <class T>
T ValueOrLastError(platform::Result<T> result, T fallback) {
  if (result) return *std::move(result);
  platform::SetLastError(result.Error());
  return fallback;
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
  const UTF16String name = platform::NarrowToUTF16(fileName);
  return tovimpl::foundation::ValueOrLastError(
      platform::LoadModule(name, flags == 1 ? platform::kLoadLibraryAsDatafile : 0), HINSTANCE{});
}

HINSTANCE TOVLoadLibraryW(const unsigned short* fileName, void* /*reserved*/, std::uint32_t flags) {
  if (fileName == nullptr) return nullptr;
  return tovimpl::foundation::ValueOrLastError(
      platform::LoadModule(UTF16StringView(fileName),
                           flags == 1 ? platform::kLoadLibraryAsDatafile : 0),
      HINSTANCE{});
}

bool TOVUnloadLibrary(HINSTANCE module) {
  const platform::Status unloaded = platform::UnloadModule(module);
  if (!unloaded) platform::SetLastError(unloaded.Error());
  return unloaded.IsOk();
}

void* TOVGetProcAddress(HINSTANCE module, const char* name) {
  return tovimpl::foundation::ValueOrLastError(platform::FindSymbol(module, name),
                                               static_cast<void*>(nullptr));
}

void* TOVLoadResource(HINSTANCE module, UTF16String& type) {
  // The type is narrow text, as the system's resource calls take it.
  const std::string typeName = platform::UTF16ToNarrow(type);
  tovimpl::foundation::FirstPipl recorded;
  (void)platform::ForEachResource(module, typeName.c_str(), tovimpl::foundation::TakeFirstPipl,
                                  reinterpret_cast<std::intptr_t>(&recorded));
  if (!recorded.found) return nullptr;
  // Looked up by the low 16 bits of the name, as an integer identifier.
  const platform::ResourceHandle resource =
      platform::FindModuleResource(
          module, platform::MakeIntResource(static_cast<std::uint32_t>(recorded.name)), "PIPL")
          .ValueOr(nullptr);
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
  const platform::Result<platform::Guid> made = platform::NewGuid();
  if (!made) return TOV::kErrCreateFailed;
  guid->Data1 = made->Data1;
  guid->Data2 = made->Data2;
  guid->Data3 = made->Data3;
  std::memcpy(guid->Data4, made->Data4, sizeof guid->Data4);
  return 0;
}

WaitableObject::WaitableObject() : mEvent(platform::NewEvent(false, false).ValueOr(nullptr)) {}

WaitableObject::~WaitableObject() {
  if (mEvent != nullptr) (void)platform::DestroyEvent(static_cast<platform::EventHandle>(mEvent));
}

void WaitableObject::Signal() {
  (void)platform::SignalEvent(static_cast<platform::EventHandle>(mEvent));
}

VWaitResultType WaitableObject::WaitForSignal(std::int32_t milliseconds) {
  const platform::Result<std::uint32_t> result = platform::WaitForEvent(
      static_cast<platform::EventHandle>(mEvent), static_cast<std::uint32_t>(milliseconds));
  return tovimpl::foundation::WaitResultFromPlatform(result.ValueOr(platform::kWaitFailed));
}

}  // namespace Halyard
