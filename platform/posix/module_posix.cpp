// POSIX backend of the OS layer: loadable modules and their resources.
// Needs Linux and glibc: <elf.h>, dlinfo(RTLD_DI_LINKMAP) and /proc/self/exe.
#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/error.h"
#include "platform/module.h"
#include "platform/posix/posix_support.h"

namespace tovimpl::platform {

namespace {

// One resource: a section of the module's file.
struct Resource {
  std::string type;
  std::uint32_t id = 0;
  const unsigned char* data = nullptr;  // into `owned` or into a data-file mapping
  std::uint32_t size = 0;
  std::vector<unsigned char> owned;
};

// What the layer keeps per module handle.
struct ModuleState {
  bool isDataFile = false;
  void* mapping = nullptr;
  std::size_t mappingSize = 0;
  int loads = 0;
  bool resourcesRead = false;
  std::vector<std::unique_ptr<Resource>> resources;
};

std::mutex& TableMutex() {
  static std::mutex mutex;
  return mutex;
}
std::map<ModuleHandle, ModuleState>& Table() {
  static std::map<ModuleHandle, ModuleState> table;
  return table;
}

bool IsDataFileHandle(ModuleHandle module) {
  return (reinterpret_cast<std::uintptr_t>(module) & 1u) != 0;
}

// Reads `size` bytes at `offset` of the module's image; false when out of range.
using ByteReader = std::function<bool(std::uint64_t offset, void* out, std::size_t size)>;

template <typename Ehdr, typename Shdr>
bool ReadSections(const ByteReader& read, std::uint64_t fileSize, bool copyData,
                  const unsigned char* mappedBase, std::vector<std::unique_ptr<Resource>>& out) {
  Ehdr header{};
  if (!read(0, &header, sizeof header)) return false;
  if (header.e_shoff == 0 || header.e_shentsize != sizeof(Shdr)) return true;  // no sections
  std::uint64_t count = header.e_shnum;
  std::uint64_t namesIndex = header.e_shstrndx;
  Shdr first{};
  if (!read(header.e_shoff, &first, sizeof first)) return false;
  // Many sections: the real count and name-table index live in section 0.
  if (count == 0) count = first.sh_size;
  if (namesIndex == SHN_XINDEX) namesIndex = first.sh_link;
  if (count > fileSize / sizeof(Shdr) || namesIndex >= count) return false;

  std::vector<Shdr> sections(static_cast<std::size_t>(count));
  if (!read(header.e_shoff, sections.data(), sections.size() * sizeof(Shdr))) return false;
  const Shdr& namesSection = sections[static_cast<std::size_t>(namesIndex)];
  if (namesSection.sh_size > fileSize) return false;
  std::string names(static_cast<std::size_t>(namesSection.sh_size), '\0');
  if (!read(namesSection.sh_offset, names.data(), names.size())) return false;

  std::map<std::string, std::uint32_t> perType;
  for (const Shdr& section : sections) {
    if (section.sh_name >= names.size() || section.sh_type == SHT_NOBITS) continue;
    const std::string name(names.c_str() + section.sh_name);
    if (name.empty() || name[0] == '.') continue;
    if (section.sh_size > 0xFFFFFFFFu || section.sh_size > fileSize ||
        section.sh_offset > fileSize - section.sh_size) {
      continue;  // a damaged header: the section is not offered
    }
    auto resource = std::make_unique<Resource>();
    resource->type = name;
    resource->id = ++perType[name];
    resource->size = static_cast<std::uint32_t>(section.sh_size);
    if (copyData) {
      resource->owned.resize(resource->size);
      if (resource->size != 0 && !read(section.sh_offset, resource->owned.data(), resource->size)) {
        continue;
      }
      resource->data = resource->owned.data();
    } else {
      resource->data = mappedBase + section.sh_offset;
    }
    out.push_back(std::move(resource));
  }
  return true;
}

// Reads the resource table of an ELF image. A file that is not ELF of this
// machine's byte order simply has no resources.
void ReadResources(const ByteReader& read, std::uint64_t fileSize, bool copyData,
                   const unsigned char* mappedBase, std::vector<std::unique_ptr<Resource>>& out) {
  unsigned char ident[EI_NIDENT];
  if (!read(0, ident, sizeof ident) || std::memcmp(ident, ELFMAG, SELFMAG) != 0) return;
  const unsigned char hostOrder =
      (std::endian::native == std::endian::little) ? ELFDATA2LSB : ELFDATA2MSB;
  if (ident[EI_DATA] != hostOrder) return;
  bool ok = false;
  if (ident[EI_CLASS] == ELFCLASS64) {
    ok = ReadSections<Elf64_Ehdr, Elf64_Shdr>(read, fileSize, copyData, mappedBase, out);
  } else if (ident[EI_CLASS] == ELFCLASS32) {
    ok = ReadSections<Elf32_Ehdr, Elf32_Shdr>(read, fileSize, copyData, mappedBase, out);
  }
  if (!ok) out.clear();
}

// The file a dlopen handle was loaded from.
std::string ModuleFilePath(ModuleHandle module) {
  struct link_map* map = nullptr;
  if (::dlinfo(module, RTLD_DI_LINKMAP, &map) != 0 || map == nullptr) return std::string();
  if (map->l_name == nullptr || map->l_name[0] == '\0') return "/proc/self/exe";
  return map->l_name;
}

// Makes sure the state's resources are read. Called under the table lock.
void EnsureResources(ModuleHandle module, ModuleState& state) {
  if (state.resourcesRead) return;
  state.resourcesRead = true;
  if (state.isDataFile) {
    const auto* base = static_cast<const unsigned char*>(state.mapping);
    const std::size_t size = state.mappingSize;
    ByteReader read = [base, size](std::uint64_t offset, void* out, std::size_t count) {
      if (offset > size || count > size - offset) return false;
      std::memcpy(out, base + offset, count);
      return true;
    };
    ReadResources(read, size, false, base, state.resources);
    return;
  }
  const std::string path = ModuleFilePath(module);
  if (path.empty()) return;
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return;
  struct stat info {};
  if (::fstat(fd, &info) == 0 && info.st_size > 0) {
    const auto size = static_cast<std::uint64_t>(info.st_size);
    ByteReader read = [fd, size](std::uint64_t offset, void* out, std::size_t count) {
      if (offset > size || count > size - offset) return false;
      auto* bytes = static_cast<unsigned char*>(out);
      std::size_t done = 0;
      while (done < count) {
        const ssize_t got =
            ::pread(fd, bytes + done, count - done, static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        done += static_cast<std::size_t>(got);
      }
      return true;
    };
    ReadResources(read, size, true, nullptr, state.resources);
  }
  ::close(fd);
}

// The state of a handle for resource queries, created on first use for
// dlopen handles the layer did not load itself. Null for an unknown data-file
// handle. Called under the table lock.
ModuleState* StateFor(ModuleHandle module) {
  if (module == nullptr) return nullptr;
  auto found = Table().find(module);
  if (found != Table().end()) return &found->second;
  if (IsDataFileHandle(module)) return nullptr;
  return &Table()[module];
}

Result<ModuleHandle> MapDataFile(UTF16StringView libraryPath) {
  const std::string path = posix::NativePath(libraryPath);
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return Status::Failure(posix::MapErrno(errno, ExistsAs::kAlreadyExists, path));
  struct stat info {};
  if (::fstat(fd, &info) != 0) {
    const int error = errno;
    ::close(fd);
    return Status::Failure(posix::MapErrno(error));
  }
  if (S_ISDIR(info.st_mode)) {
    ::close(fd);
    return Status::Failure(kErrorAccessDenied);
  }
  unsigned char magic[SELFMAG] = {};
  if (info.st_size < static_cast<off_t>(sizeof(Elf32_Ehdr)) ||
      ::pread(fd, magic, SELFMAG, 0) != SELFMAG || std::memcmp(magic, ELFMAG, SELFMAG) != 0) {
    ::close(fd);
    return Status::Failure(kErrorBadExeFormat);
  }
  const auto size = static_cast<std::size_t>(info.st_size);
  void* mapping = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
  const int mapError = errno;
  ::close(fd);
  if (mapping == MAP_FAILED) return Status::Failure(posix::MapErrno(mapError));
  auto* handle = static_cast<unsigned char*>(mapping) + 1;
  std::lock_guard<std::mutex> lock(TableMutex());
  ModuleState& state = Table()[handle];
  state.isDataFile = true;
  state.mapping = mapping;
  state.mappingSize = size;
  state.loads = 1;
  return static_cast<ModuleHandle>(handle);
}

}  // namespace

Result<ModuleHandle> LoadModule(UTF16StringView libraryPath, std::uint32_t flags) {
  if ((flags & kLoadLibraryAsDatafile) != 0) return MapDataFile(libraryPath);
  const std::string path = posix::NativePath(libraryPath);
  // dlopen may run the module's constructors, which may load modules in turn:
  // the table lock is taken only afterwards.
  void* module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) return Status::Failure(kErrorModNotFound);
  std::lock_guard<std::mutex> lock(TableMutex());
  ++Table()[module].loads;
  return module;
}

Result<void*> FindSymbol(ModuleHandle module, const char* name) {
  if (module == nullptr) return Status::Failure(kErrorInvalidHandle);
  if (IsDataFileHandle(module) || name == nullptr) return Status::Failure(kErrorProcNotFound);
  void* address = ::dlsym(module, name);
  if (address == nullptr) return Status::Failure(kErrorProcNotFound);
  return address;
}

Status UnloadModule(ModuleHandle module) {
  if (module == nullptr) return Status::Failure(kErrorInvalidHandle);
  void* unmapAddress = nullptr;
  std::size_t unmapSize = 0;
  {
    std::lock_guard<std::mutex> lock(TableMutex());
    auto found = Table().find(module);
    if (found == Table().end()) {
      if (IsDataFileHandle(module)) return Status::Failure(kErrorInvalidHandle);
    } else if (--found->second.loads <= 0) {
      unmapAddress = found->second.mapping;
      unmapSize = found->second.mappingSize;
      Table().erase(found);
    }
  }
  if (IsDataFileHandle(module)) {
    if (unmapAddress != nullptr) ::munmap(unmapAddress, unmapSize);
    return Status::Ok();
  }
  if (::dlclose(module) != 0) return Status::Failure(kErrorInvalidHandle);
  return Status::Ok();
}

Status ForEachResource(ModuleHandle module, const char* type, EnumResourceNameProc proc,
                       std::intptr_t param) {
  std::vector<std::uintptr_t> names;
  {
    std::lock_guard<std::mutex> lock(TableMutex());
    ModuleState* state = StateFor(module);
    if (state == nullptr) return Status::Failure(kErrorInvalidHandle);
    EnsureResources(module, *state);
    for (const auto& resource : state->resources) {
      if (type != nullptr && resource->type == type) names.push_back(resource->id);
    }
  }
  if (names.empty()) return Status::Failure(kErrorResourceTypeNotFound);
  // The callbacks run without the table lock: they may call back into the layer.
  for (std::uintptr_t name : names) {
    if (proc == nullptr || !proc(module, type, name, param)) break;
  }
  return Status::Ok();
}

Result<ResourceHandle> FindModuleResource(ModuleHandle module, std::uintptr_t name,
                                          const char* type) {
  std::lock_guard<std::mutex> lock(TableMutex());
  ModuleState* state = StateFor(module);
  if (state == nullptr) return Status::Failure(kErrorInvalidHandle);
  EnsureResources(module, *state);
  bool typeSeen = false;
  for (const auto& resource : state->resources) {
    if (type == nullptr || resource->type != type) continue;
    typeSeen = true;
    if (resource->id == name) return static_cast<ResourceHandle>(resource.get());
  }
  return Status::Failure(typeSeen ? kErrorResourceNameNotFound : kErrorResourceTypeNotFound);
}

ResourceHandle LoadResource(ModuleHandle /*module*/, ResourceHandle resource) {
  if (resource == nullptr) SetLastError(kErrorResourceDataNotFound);
  return resource;
}

const void* LockResource(ResourceHandle resource) {
  if (resource == nullptr) return nullptr;
  return static_cast<const Resource*>(resource)->data;
}

std::uint32_t SizeofResource(ModuleHandle /*module*/, ResourceHandle resource) {
  if (resource == nullptr) return 0;
  return static_cast<const Resource*>(resource)->size;
}

bool FreeResource(ResourceHandle /*resource*/) { return false; }

}  // namespace tovimpl::platform
