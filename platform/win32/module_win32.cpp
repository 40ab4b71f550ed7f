// Win32 backend of the OS layer: loadable modules and their embedded resources.
// Only code that works on every supported Windows version belongs here.
#include <cstdint>
#include <map>
#include <mutex>

#include "platform/error.h"
#include "platform/module.h"
#include "platform/win32/win32_support.h"

namespace tovimpl::platform {

namespace {

HMODULE Native(ModuleHandle module) { return static_cast<HMODULE>(module); }

// What EnumResourceNamesA's callback needs to call the layer's callback.
struct EnumRelay {
  EnumResourceNameProc proc;
  const char* type;  // as the caller passed it
  std::intptr_t param;
  bool ran;
};

BOOL CALLBACK RelayResourceName(HMODULE module, LPCSTR /*type*/, LPSTR name, LONG_PTR param) {
  auto* relay = reinterpret_cast<EnumRelay*>(param);
  relay->ran = true;
  return relay->proc(module, relay->type, reinterpret_cast<std::uintptr_t>(name), relay->param)
             ? TRUE
             : FALSE;
}

// LoadResource's answers and the FindResource handles they came from, so
// SizeofResource takes either (the layer's callers hold the loaded one).
std::mutex gLoadedLock;
std::map<HGLOBAL, HRSRC> gLoadedFrom;

}  // namespace

Result<ModuleHandle> LoadModule(UTF16StringView libraryPath, std::uint32_t flags) {
  const HMODULE module = ::LoadLibraryExW(win32::WidePath(libraryPath).c_str(), nullptr,
                                          flags & kLoadLibraryAsDatafile);
  if (module == nullptr) return Status::Failure(win32::LastErrorOr(kErrorModNotFound));
  return static_cast<ModuleHandle>(module);
}

Result<void*> FindSymbol(ModuleHandle module, const char* name) {
  if (module == nullptr) return Status::Failure(kErrorInvalidHandle);
  const FARPROC entry = ::GetProcAddress(Native(module), name);
  if (entry == nullptr) return Status::Failure(win32::LastErrorOr(kErrorProcNotFound));
  return reinterpret_cast<void*>(entry);
}

Status UnloadModule(ModuleHandle module) {
  if (module == nullptr) return Status::Failure(kErrorInvalidHandle);
  if (!::FreeLibrary(Native(module))) {
    return Status::Failure(win32::LastErrorOr(kErrorInvalidHandle));
  }
  return Status::Ok();
}

Status ForEachResource(ModuleHandle module, const char* type, EnumResourceNameProc proc,
                       std::intptr_t param) {
  if (module == nullptr) return Status::Failure(kErrorInvalidHandle);
  EnumRelay relay{proc, type, param, false};
  const BOOL finished = ::EnumResourceNamesA(Native(module), type, RelayResourceName,
                                             reinterpret_cast<LONG_PTR>(&relay));
  // The system answers FALSE also when the callback stopped the enumeration;
  // the layer counts that as a run.
  if (finished || relay.ran) return Status::Ok();
  return Status::Failure(win32::LastErrorOr(kErrorResourceTypeNotFound));
}

Result<ResourceHandle> FindModuleResource(ModuleHandle module, std::uintptr_t name,
                                          const char* type) {
  if (module == nullptr) return Status::Failure(kErrorInvalidHandle);
  const HRSRC found = ::FindResourceA(Native(module), MAKEINTRESOURCEA(name & 0xFFFFu), type);
  if (found == nullptr) return Status::Failure(win32::LastErrorOr(kErrorResourceNameNotFound));
  return static_cast<ResourceHandle>(found);
}

ResourceHandle LoadResource(ModuleHandle module, ResourceHandle resource) {
  if (resource == nullptr) return nullptr;
  const HGLOBAL loaded = ::LoadResource(Native(module), static_cast<HRSRC>(resource));
  if (loaded == nullptr) {
    win32::KeepFailureCode(kErrorResourceDataNotFound);
    return nullptr;
  }
  std::lock_guard<std::mutex> guard(gLoadedLock);
  gLoadedFrom[loaded] = static_cast<HRSRC>(resource);
  return loaded;
}

const void* LockResource(ResourceHandle resource) {
  if (resource == nullptr) return nullptr;
  return ::LockResource(static_cast<HGLOBAL>(resource));
}

// Takes the handle FindResource gave, as the system does, or the one
// LoadResource made from it.
std::uint32_t SizeofResource(ModuleHandle module, ResourceHandle resource) {
  if (resource == nullptr) return 0;
  HRSRC found = static_cast<HRSRC>(resource);
  {
    std::lock_guard<std::mutex> guard(gLoadedLock);
    const auto loaded = gLoadedFrom.find(static_cast<HGLOBAL>(resource));
    if (loaded != gLoadedFrom.end()) found = loaded->second;
  }
  return static_cast<std::uint32_t>(::SizeofResource(Native(module), found));
}

// Resources live as long as their module; the system's FreeResource is a
// no-op that answers FALSE.
bool FreeResource(ResourceHandle resource) {
  return ::FreeResource(static_cast<HGLOBAL>(resource)) != FALSE;
}

}  // namespace tovimpl::platform
