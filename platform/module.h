// OS layer: loadable modules and their embedded resources.
//
// Win32: LoadLibraryExW, GetProcAddress, FreeLibrary, EnumResourceNamesA,
// FindResourceA, LoadResource, LockResource, SizeofResource and FreeResource.
// Failures come back with their Windows error code (platform/result.h):
//
//   ModuleHandle plugin = LoadModule(u"plugins\\blur.so"_u16, 0).ValueOr(nullptr);
//   void* entry = FindSymbol(plugin, "PluginMain").ValueOr(nullptr);
//   ResourceHandle found = *FindModuleResource(plugin, MakeIntResource(1), "PIPL");
//   const void* bytes = LockResource(LoadResource(plugin, found));
//   (void)UnloadModule(plugin);   // `bytes` is no longer valid
//
// POSIX model:
//   - A normal load is dlopen(RTLD_NOW | RTLD_LOCAL); the handle is dlopen's.
//   - A load with kLoadLibraryAsDatafile maps the file read-only and runs none
//     of its code (no constructors, no dependencies loaded). The handle is the
//     mapping's address with its lowest bit set, as Windows tags data-file
//     handles, so it can never equal a dlopen handle. FindSymbol on it fails.
//   - Resources of an ELF module are its sections whose names do not begin
//     with '.': the section name is the resource type, and the sections of one
//     type are numbered 1, 2, ... in section-header order (integer resource
//     names; string names never match). The data is read from the module's
//     file, since section headers are not part of the loaded image, and stays
//     valid until the module's last UnloadModule.
#pragma once

#include <cstdint>

#include "basalt/strings.h"
#include "platform/result.h"

namespace tovimpl::platform {

// A loaded module (HMODULE).
using ModuleHandle = void*;
// A found or loaded resource (HRSRC / HGLOBAL).
using ResourceHandle = void*;

// LoadModule flags (the LoadLibraryExW value).
inline constexpr std::uint32_t kLoadLibraryAsDatafile = 2;

// Windows error codes particular to modules.
inline constexpr std::uint32_t kErrorBadExeFormat = 193;
inline constexpr std::uint32_t kErrorResourceDataNotFound = 1812;
inline constexpr std::uint32_t kErrorResourceNameNotFound = 1814;

// MAKEINTRESOURCE: an integer resource name. Only the low 16 bits count.
constexpr std::uintptr_t MakeIntResource(std::uint32_t id) { return id & 0xFFFFu; }

// Loads a module (Win32: LoadLibraryExW, no file handle). `flags` 0 loads and
// runs the module; kLoadLibraryAsDatafile maps it as data. Other flag bits
// are ignored. A name without a separator is searched as the system searches
// libraries. Loading the same module twice gives the same handle; each load
// needs its UnloadModule. Failures: 126 when the module cannot be loaded, 2/3
// when a data file is missing, 193 when a data file is not an ELF file.
Result<ModuleHandle> LoadModule(UTF16StringView libraryPath, std::uint32_t flags);

// The address of an exported symbol. Failures: 127 (also for every data-file
// handle), 6 for a null handle.
Result<void*> FindSymbol(ModuleHandle module, const char* name);

// Drops one load of the module. Failure 6 for a null or unknown data-file
// handle. A dlopen handle that was not loaded here is passed to dlclose as it
// is (the caller vouches for it).
Status UnloadModule(ModuleHandle module);

// ForEachResource's callback: gets the module, the type exactly as the caller
// passed it, the resource's name (an integer name, see MakeIntResource) and
// the caller's value. Returns true to go on, false to stop.
using EnumResourceNameProc = bool (*)(ModuleHandle module, const char* type, std::uintptr_t name,
                                      std::intptr_t param);

// Calls `proc` for each resource of `type`, in order, until it returns false.
// Succeeds when the enumeration ran over at least one resource (also when the
// callback stopped it). Failures: 1813 when the module has no resource of that
// type, 6 for a bad handle.
Status ForEachResource(ModuleHandle module, const char* type, EnumResourceNameProc proc,
                       std::intptr_t param);

// The resource with an integer name (MakeIntResource) and a type name.
// Failures: 1814 when there is no such resource, 1813 when there is no
// resource of that type at all, 6 for a bad handle.
Result<ResourceHandle> FindModuleResource(ModuleHandle module, std::uintptr_t name,
                                          const char* type);

// LoadResource: the loaded resource for a handle from FindModuleResource of
// the same module (the same value on POSIX). Null when `resource` is null.
ResourceHandle LoadResource(ModuleHandle module, ResourceHandle resource);

// LockResource: the address of the resource's bytes (null for null). Valid
// until the module is freed.
const void* LockResource(ResourceHandle resource);

// SizeofResource: the number of bytes of the resource, 0 for null.
std::uint32_t SizeofResource(ModuleHandle module, ResourceHandle resource);

// FreeResource: nothing to free (resources live as long as their module);
// returns false, as the Windows call does.
bool FreeResource(ResourceHandle resource);

}  // namespace tovimpl::platform
