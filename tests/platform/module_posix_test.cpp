// The POSIX backend's modules: the resource table read from ELF section
// headers (64- and 32-bit files built here, sound and damaged), data-file
// loads, dlopen loads and the answers for bad handles.
#include <dlfcn.h>
#include <elf.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "platform/error.h"
#include "platform/module.h"
#include "platform/platform_support.h"

namespace {

namespace platform = tovimpl::platform;
using platform_test::TempFolder;

// One section of a file built by ElfImage.
struct Section {
  std::string name;
  std::string bytes;
  std::uint32_t type = SHT_PROGBITS;
};

// An ELF file of class `Ehdr`/`Shdr` holding `sections` after a null section
// and before the section-name table, which comes last. `tweak` may damage the
// headers before they are written.
template <typename Ehdr, typename Shdr>
std::string ElfImage(unsigned char elfClass, const std::vector<Section>& sections,
                     const std::function<void(Ehdr&, std::vector<Shdr>&)>& tweak = {}) {
  std::string names(1, '\0');
  std::vector<std::size_t> nameAt;
  for (const Section& section : sections) {
    nameAt.push_back(names.size());
    names += section.name;
    names.push_back('\0');
  }
  const std::size_t tableName = names.size();
  names += ".shstrtab";
  names.push_back('\0');

  std::string body(sizeof(Ehdr), '\0');
  std::vector<Shdr> headers(1);
  headers[0] = Shdr{};
  for (std::size_t i = 0; i < sections.size(); ++i) {
    Shdr header{};
    header.sh_name = static_cast<decltype(header.sh_name)>(nameAt[i]);
    header.sh_type = sections[i].type;
    header.sh_offset = body.size();
    header.sh_size = sections[i].bytes.size();
    if (sections[i].type != SHT_NOBITS) body += sections[i].bytes;
    headers.push_back(header);
  }
  Shdr table{};
  table.sh_name = static_cast<decltype(table.sh_name)>(tableName);
  table.sh_type = SHT_STRTAB;
  table.sh_offset = body.size();
  table.sh_size = names.size();
  body += names;
  headers.push_back(table);
  while (body.size() % 8 != 0) body.push_back('\0');

  Ehdr header{};
  std::memcpy(header.e_ident, ELFMAG, SELFMAG);
  header.e_ident[EI_CLASS] = elfClass;
  header.e_ident[EI_DATA] = ELFDATA2LSB;
  header.e_ident[EI_VERSION] = EV_CURRENT;
  header.e_type = ET_DYN;
  header.e_version = EV_CURRENT;
  header.e_ehsize = sizeof(Ehdr);
  header.e_shoff = body.size();
  header.e_shentsize = sizeof(Shdr);
  header.e_shnum = static_cast<std::uint16_t>(headers.size());
  header.e_shstrndx = static_cast<std::uint16_t>(headers.size() - 1);
  if (tweak) tweak(header, headers);
  std::memcpy(body.data(), &header, sizeof header);
  body.append(reinterpret_cast<const char*>(headers.data()), headers.size() * sizeof(Shdr));
  return body;
}

std::string Elf64(const std::vector<Section>& sections,
                  const std::function<void(Elf64_Ehdr&, std::vector<Elf64_Shdr>&)>& tweak = {}) {
  return ElfImage<Elf64_Ehdr, Elf64_Shdr>(ELFCLASS64, sections, tweak);
}

std::string Elf32(const std::vector<Section>& sections,
                  const std::function<void(Elf32_Ehdr&, std::vector<Elf32_Shdr>&)>& tweak = {}) {
  return ElfImage<Elf32_Ehdr, Elf32_Shdr>(ELFCLASS32, sections, tweak);
}

// Sections of every kind the reader tells apart.
std::vector<Section> MixedSections() {
  return {
      {"PIPL", "first"},   {".text", "code"}, {"ABCD", "abcd"},
      {"PIPL", "second!"}, {"EMPT", ""},      {"BSS1", "zzzz", SHT_NOBITS},
  };
}

// The bytes of resource `id` of `type` in the file loaded as data, or "<code>"
// with the failure's code.
class ModuleFile {
 public:
  explicit ModuleFile(const std::string& image) {
    platform_test::WriteFileBytes(mTemp.NativeOf("m.so"), image);
    const auto loaded = platform::LoadModule(mTemp.Lib("m.so"), platform::kLoadLibraryAsDatafile);
    mError = loaded.Error();
    mModule = loaded.ValueOr(nullptr);
  }
  ~ModuleFile() {
    if (mModule != nullptr) (void)platform::UnloadModule(mModule);
  }
  platform::ModuleHandle Module() const { return mModule; }
  std::uint32_t LoadError() const { return mError; }

  std::string Resource(std::uint32_t id, const char* type) const {
    const auto found = platform::FindModuleResource(mModule, platform::MakeIntResource(id), type);
    if (!found) return "<" + std::to_string(found.Error()) + ">";
    const platform::ResourceHandle loaded = platform::LoadResource(mModule, *found);
    const auto* data = static_cast<const char*>(platform::LockResource(loaded));
    return std::string(data, platform::SizeofResource(mModule, loaded));
  }

  std::vector<std::uintptr_t> Names(const char* type, std::uint32_t* error) const {
    std::vector<std::uintptr_t> names;
    const platform::Status status = platform::ForEachResource(
        mModule, type,
        [](platform::ModuleHandle, const char*, std::uintptr_t name, std::intptr_t param) {
          reinterpret_cast<std::vector<std::uintptr_t>*>(param)->push_back(name);
          return true;
        },
        reinterpret_cast<std::intptr_t>(&names));
    *error = status.Error();
    return names;
  }

 private:
  TempFolder mTemp;
  platform::ModuleHandle mModule = nullptr;
  std::uint32_t mError = 0;
};

TEST(ModuleResources, SectionsOfA64BitFileAreNumberedPerType) {
  const ModuleFile file(Elf64(MixedSections()));
  ASSERT_NE(file.Module(), nullptr);
  EXPECT_EQ(file.Resource(1, "PIPL"), "first");
  EXPECT_EQ(file.Resource(2, "PIPL"), "second!");
  EXPECT_EQ(file.Resource(1, "ABCD"), "abcd");
  EXPECT_EQ(file.Resource(1, "EMPT"), "");
  EXPECT_EQ(file.Resource(3, "PIPL"), "<1814>");
  // Names starting with '.', sections without file bytes and the name table
  // are not resources.
  EXPECT_EQ(file.Resource(1, ".text"), "<1813>");
  EXPECT_EQ(file.Resource(1, "BSS1"), "<1813>");
  EXPECT_EQ(file.Resource(1, ".shstrtab"), "<1813>");
  EXPECT_EQ(file.Resource(1, nullptr), "<1813>");
  std::uint32_t error = 0;
  EXPECT_EQ(file.Names("PIPL", &error), (std::vector<std::uintptr_t>{1, 2}));
  EXPECT_EQ(error, 0u);
  EXPECT_TRUE(file.Names("NONE", &error).empty());
  EXPECT_EQ(error, platform::kErrorResourceTypeNotFound);
  EXPECT_TRUE(file.Names(nullptr, &error).empty());
  EXPECT_EQ(error, platform::kErrorResourceTypeNotFound);
}

TEST(ModuleResources, SectionsOfA32BitFileAreReadTheSameWay) {
  const ModuleFile file(Elf32(MixedSections()));
  ASSERT_NE(file.Module(), nullptr);
  EXPECT_EQ(file.Resource(1, "PIPL"), "first");
  EXPECT_EQ(file.Resource(2, "PIPL"), "second!");
  EXPECT_EQ(file.Resource(1, "ABCD"), "abcd");
  EXPECT_EQ(file.Resource(1, "BSS1"), "<1813>");
  EXPECT_EQ(file.Resource(2, "ABCD"), "<1814>");
}

TEST(ModuleResources, DataPointsIntoTheMappingUntilTheModuleIsFreed) {
  const ModuleFile file(Elf64({{"DATA", "mapped bytes"}}));
  const auto found =
      platform::FindModuleResource(file.Module(), platform::MakeIntResource(1), "DATA");
  ASSERT_TRUE(found);
  const void* first = platform::LockResource(*found);
  // A second query reads nothing again: the same resource comes back.
  EXPECT_EQ(platform::LockResource(
                *platform::FindModuleResource(file.Module(), platform::MakeIntResource(1), "DATA")),
            first);
  EXPECT_EQ(std::memcmp(first, "mapped bytes", 12), 0);
}

TEST(ModuleResources, ManySectionsFormKeepsCountAndNameIndexInSectionZero) {
  const ModuleFile file(Elf64(MixedSections(), [](Elf64_Ehdr& header, std::vector<Elf64_Shdr>& s) {
    s[0].sh_size = header.e_shnum;
    s[0].sh_link = header.e_shstrndx;
    header.e_shnum = 0;
    header.e_shstrndx = SHN_XINDEX;
  }));
  EXPECT_EQ(file.Resource(2, "PIPL"), "second!");
  const ModuleFile file32(
      Elf32(MixedSections(), [](Elf32_Ehdr& header, std::vector<Elf32_Shdr>& s) {
        s[0].sh_size = header.e_shnum;
        s[0].sh_link = header.e_shstrndx;
        header.e_shnum = 0;
        header.e_shstrndx = SHN_XINDEX;
      }));
  EXPECT_EQ(file32.Resource(1, "ABCD"), "abcd");
}

TEST(ModuleResources, DamagedSectionHeadersOfferNoResourcesAtAll) {
  using Tweak = std::function<void(Elf64_Ehdr&, std::vector<Elf64_Shdr>&)>;
  const struct {
    const char* what;
    Tweak tweak;
  } cases[] = {
      {"no section table", [](Elf64_Ehdr& h, std::vector<Elf64_Shdr>&) { h.e_shoff = 0; }},
      {"foreign entry size", [](Elf64_Ehdr& h, std::vector<Elf64_Shdr>&) { h.e_shentsize = 40; }},
      {"table past the end", [](Elf64_Ehdr& h, std::vector<Elf64_Shdr>&) { h.e_shoff = 1u << 20; }},
      {"table cut short", [](Elf64_Ehdr& h, std::vector<Elf64_Shdr>&) { h.e_shoff += 64 * 2; }},
      {"more sections than bytes",
       [](Elf64_Ehdr& h, std::vector<Elf64_Shdr>&) { h.e_shnum = 9999; }},
      {"name table index out of range",
       [](Elf64_Ehdr& h, std::vector<Elf64_Shdr>&) { h.e_shstrndx = h.e_shnum; }},
      {"name table larger than the file",
       [](Elf64_Ehdr& h, std::vector<Elf64_Shdr>& s) { s[h.e_shstrndx].sh_size = 1u << 20; }},
      {"name table past the end",
       [](Elf64_Ehdr& h, std::vector<Elf64_Shdr>& s) { s[h.e_shstrndx].sh_offset = 1u << 20; }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const ModuleFile file(Elf64(MixedSections(), c.tweak));
    ASSERT_NE(file.Module(), nullptr);  // still a data file, only without resources
    EXPECT_EQ(file.Resource(1, "PIPL"), "<1813>");
  }
}

TEST(ModuleResources, ADamagedSectionIsLeftOutAndTheOthersStay) {
  const ModuleFile file(Elf64({{"PIPL", "one"},
                               {"BADN", "x"},
                               {"HUGE", "y"},
                               {"PAST", "z"},
                               {"WIDE", "w"},
                               {"PIPL", "two"}},
                              [](Elf64_Ehdr&, std::vector<Elf64_Shdr>& s) {
                                s[2].sh_name = 0xFFFFFF;        // name outside the name table
                                s[3].sh_size = 1u << 24;        // more bytes than the file
                                s[4].sh_offset = 1u << 24;      // bytes past the end
                                s[5].sh_size = 0x100000000ull;  // more than a resource can hold
                              }));
  EXPECT_EQ(file.Resource(1, "PIPL"), "one");
  EXPECT_EQ(file.Resource(2, "PIPL"), "two");
  EXPECT_EQ(file.Resource(1, "HUGE"), "<1813>");
  EXPECT_EQ(file.Resource(1, "PAST"), "<1813>");
  EXPECT_EQ(file.Resource(1, "WIDE"), "<1813>");
  const ModuleFile file32(
      Elf32({{"PIPL", "one"}, {"HUGE", "y"}},
            [](Elf32_Ehdr&, std::vector<Elf32_Shdr>& s) { s[2].sh_size = 1u << 24; }));
  EXPECT_EQ(file32.Resource(1, "PIPL"), "one");
  EXPECT_EQ(file32.Resource(1, "HUGE"), "<1813>");
}

TEST(ModuleResources, FilesOfAnotherByteOrderOrClassHaveNoResources) {
  std::string bigEndian = Elf64(MixedSections());
  bigEndian[EI_DATA] = ELFDATA2MSB;
  const ModuleFile foreignOrder(bigEndian);
  ASSERT_NE(foreignOrder.Module(), nullptr);
  EXPECT_EQ(foreignOrder.Resource(1, "PIPL"), "<1813>");
  std::string unknownClass = Elf64(MixedSections());
  unknownClass[EI_CLASS] = 7;
  const ModuleFile foreignClass(unknownClass);
  ASSERT_NE(foreignClass.Module(), nullptr);
  EXPECT_EQ(foreignClass.Resource(1, "PIPL"), "<1813>");
}

TEST(ModuleDataFile, WhatIsNotAnElfFileIsABadFormat) {
  const ModuleFile text("this is plain text, long enough to hold an ELF header if it were one");
  EXPECT_EQ(text.Module(), nullptr);
  EXPECT_EQ(text.LoadError(), platform::kErrorBadExeFormat);
  const ModuleFile shortFile(std::string(ELFMAG) + "\x02\x01");
  EXPECT_EQ(shortFile.LoadError(), platform::kErrorBadExeFormat);
  // Long enough for a 32-bit header, too short for the 64-bit one it claims.
  std::string cut = Elf64(MixedSections()).substr(0, 60);
  const ModuleFile cutShort(cut);
  ASSERT_NE(cutShort.Module(), nullptr);
  EXPECT_EQ(cutShort.Resource(1, "PIPL"), "<1813>");
  const ModuleFile empty("");
  EXPECT_EQ(empty.LoadError(), platform::kErrorBadExeFormat);
}

TEST(ModuleDataFile, MissingFilesAndFoldersGiveTheirCodes) {
  TempFolder temp;
  EXPECT_EQ(platform::LoadModule(temp.Lib("none.so"), platform::kLoadLibraryAsDatafile).Error(),
            platform::kErrorFileNotFound);
  EXPECT_EQ(
      platform::LoadModule(temp.Lib("no\\where.so"), platform::kLoadLibraryAsDatafile).Error(),
      platform::kErrorPathNotFound);
  EXPECT_EQ(platform::LoadModule(temp.Lib(), platform::kLoadLibraryAsDatafile).Error(),
            platform::kErrorAccessDenied);
  // Other flag bits load normally, and a file that is no module cannot be loaded.
  platform_test::WriteFileBytes(temp.NativeOf("t.so"), "text");
  EXPECT_EQ(platform::LoadModule(temp.Lib("t.so"), 0x8).Error(), platform::kErrorModNotFound);
}

TEST(ModuleDataFile, HasNoSymbols) {
  ModuleFile file(Elf64(MixedSections()));
  ASSERT_NE(file.Module(), nullptr);
  EXPECT_EQ(platform::FindSymbol(file.Module(), "main").Error(), platform::kErrorProcNotFound);
}

TEST(ModuleHandles, NullAndUnknownDataFileHandlesAreInvalid) {
  auto* unknown = reinterpret_cast<platform::ModuleHandle>(std::uintptr_t{0x1001});
  for (platform::ModuleHandle bad : {static_cast<platform::ModuleHandle>(nullptr), unknown}) {
    SCOPED_TRACE(bad == nullptr ? "null" : "unknown");
    EXPECT_EQ(platform::UnloadModule(bad).Error(), platform::kErrorInvalidHandle);
    EXPECT_EQ(platform::ForEachResource(bad, "PIPL", nullptr, 0).Error(),
              platform::kErrorInvalidHandle);
    EXPECT_EQ(platform::FindModuleResource(bad, platform::MakeIntResource(1), "PIPL").Error(),
              platform::kErrorInvalidHandle);
  }
  EXPECT_EQ(platform::FindSymbol(nullptr, "x").Error(), platform::kErrorInvalidHandle);
}

TEST(ModuleHandles, NullResourcesGiveNothing) {
  platform::SetLastError(0);
  EXPECT_EQ(platform::LoadResource(nullptr, nullptr), nullptr);
  EXPECT_EQ(platform::GetLastError(), platform::kErrorResourceDataNotFound);
  EXPECT_EQ(platform::LockResource(nullptr), nullptr);
  EXPECT_EQ(platform::SizeofResource(nullptr, nullptr), 0u);
  EXPECT_FALSE(platform::FreeResource(nullptr));
  platform::SetLastError(0);
}

#if defined(TOV_TEST_PLUGIN)
UTF16String PluginPath() { return tovtest::LibraryPath(TOV_TEST_PLUGIN); }

TEST(ModuleLoad, LoadingTwiceGivesOneHandleThatNeedsTwoUnloads) {
  const auto first = platform::LoadModule(PluginPath(), 0);
  const auto second = platform::LoadModule(PluginPath(), 0);
  ASSERT_TRUE(first);
  ASSERT_TRUE(second);
  EXPECT_EQ(*first, *second);
  EXPECT_EQ(platform::FindSymbol(*first, nullptr).Error(), platform::kErrorProcNotFound);
  EXPECT_EQ(platform::FindSymbol(*first, "no_such_symbol_here").Error(),
            platform::kErrorProcNotFound);
  const auto answer = platform::FindSymbol(*first, "TovTestPluginAnswer");
  ASSERT_TRUE(answer);
  EXPECT_EQ(reinterpret_cast<int (*)()>(*answer)(), 42);
  EXPECT_TRUE(platform::UnloadModule(*first));
  // Still loaded: its resources are read from its file.
  const auto found = platform::FindModuleResource(*second, platform::MakeIntResource(1), "ABCD");
  ASSERT_TRUE(found);
  EXPECT_EQ(std::string(static_cast<const char*>(platform::LockResource(*found)),
                        platform::SizeofResource(*second, *found)),
            "abcd");
  EXPECT_TRUE(platform::UnloadModule(*second));
}

TEST(ModuleLoad, ACallbackThatSaysStopEndsTheEnumeration) {
  const auto module = platform::LoadModule(PluginPath(), 0);
  ASSERT_TRUE(module);
  int calls = 0;
  EXPECT_TRUE(platform::ForEachResource(
      *module, "PIPL",
      [](platform::ModuleHandle, const char*, std::uintptr_t, std::intptr_t param) {
        ++*reinterpret_cast<int*>(param);
        return false;
      },
      reinterpret_cast<std::intptr_t>(&calls)));
  EXPECT_EQ(calls, 1);
  // No callback at all: the type exists, so the call still succeeds.
  EXPECT_TRUE(platform::ForEachResource(*module, "PIPL", nullptr, 0));
  EXPECT_TRUE(platform::UnloadModule(*module));
}

// The plug-in with its section table rewritten at the end of the file: the
// old sections plus `extra`, whose bytes are appended, then `tweak` applied
// to the header. The loader reads none of this.
std::string PluginWithSections(const std::vector<Section>& extra,
                               const std::function<void(Elf64_Ehdr&)>& tweak = {}) {
  std::string image = platform_test::ReadFileBytes(TOV_TEST_PLUGIN);
  Elf64_Ehdr header{};
  std::memcpy(&header, image.data(), sizeof header);
  std::vector<Elf64_Shdr> sections(header.e_shnum);
  std::memcpy(sections.data(), image.data() + header.e_shoff, sections.size() * sizeof(Elf64_Shdr));
  const Elf64_Shdr& oldNames = sections[header.e_shstrndx];
  std::string names = image.substr(oldNames.sh_offset, oldNames.sh_size);
  for (const Section& section : extra) {
    Elf64_Shdr added{};
    added.sh_name = static_cast<Elf64_Word>(names.size());
    added.sh_type = section.type;
    added.sh_offset = image.size();
    added.sh_size = section.bytes.size();
    names += section.name;
    names.push_back('\0');
    image += section.bytes;
    sections.push_back(added);
  }
  sections[header.e_shstrndx].sh_offset = image.size();
  sections[header.e_shstrndx].sh_size = names.size();
  image += names;
  while (image.size() % 8 != 0) image.push_back('\0');
  header.e_shoff = image.size();
  header.e_shnum = static_cast<Elf64_Half>(sections.size());
  if (tweak) tweak(header);
  std::memcpy(image.data(), &header, sizeof header);
  image.append(reinterpret_cast<const char*>(sections.data()),
               sections.size() * sizeof(Elf64_Shdr));
  return image;
}

// Loads `image` as a module from a file of its own; null when it cannot be.
class LoadedImage {
 public:
  explicit LoadedImage(const std::string& image) {
    platform_test::WriteFileBytes(mTemp.NativeOf("m.so"), image);
    mModule = platform::LoadModule(mTemp.Lib("m.so"), 0).ValueOr(nullptr);
  }
  ~LoadedImage() {
    if (mModule != nullptr) (void)platform::UnloadModule(mModule);
  }
  platform::ModuleHandle Module() const { return mModule; }
  std::string Resource(std::uint32_t id, const char* type) const {
    const auto found = platform::FindModuleResource(mModule, platform::MakeIntResource(id), type);
    if (!found) return "<" + std::to_string(found.Error()) + ">";
    return std::string(static_cast<const char*>(platform::LockResource(*found)),
                       platform::SizeofResource(mModule, *found));
  }

 private:
  TempFolder mTemp;
  platform::ModuleHandle mModule = nullptr;
};

TEST(ModuleLoad, SectionsOfALoadedModuleAreReadFromItsFile) {
  const LoadedImage module(PluginWithSections({{"ADDD", "added"}, {"EMPT", ""}}));
  ASSERT_NE(module.Module(), nullptr);
  EXPECT_EQ(module.Resource(1, "ADDD"), "added");
  EXPECT_EQ(module.Resource(1, "EMPT"), "");
  EXPECT_EQ(module.Resource(1, "ABCD"), "abcd");
}

TEST(ModuleLoad, ALoadedModuleWithADamagedSectionTableHasNoResources) {
  const LoadedImage pastTheEnd(
      PluginWithSections({}, [](Elf64_Ehdr& header) { header.e_shoff += 1u << 20; }));
  ASSERT_NE(pastTheEnd.Module(), nullptr);
  EXPECT_EQ(pastTheEnd.Resource(1, "ABCD"), "<1813>");
  // The table starts inside the file and runs past its end.
  const LoadedImage cutShort(
      PluginWithSections({}, [](Elf64_Ehdr& header) { header.e_shoff += 2 * 64; }));
  ASSERT_NE(cutShort.Module(), nullptr);
  EXPECT_EQ(cutShort.Resource(1, "ABCD"), "<1813>");
}

TEST(ModuleLoad, AModuleWhoseFileIsGoneHasNoResources) {
  TempFolder temp;
  const std::string copy = temp.NativeOf("gone.so");
  platform_test::WriteFileBytes(copy, platform_test::ReadFileBytes(TOV_TEST_PLUGIN));
  const auto module = platform::LoadModule(temp.Lib("gone.so"), 0);
  ASSERT_TRUE(module);
  ASSERT_EQ(::unlink(copy.c_str()), 0);
  EXPECT_EQ(platform::FindModuleResource(*module, platform::MakeIntResource(1), "PIPL").Error(),
            platform::kErrorResourceTypeNotFound);
  EXPECT_TRUE(platform::UnloadModule(*module));
}

TEST(ModuleLoad, HandlesFromDlopenItselfAreAcceptedAsTheyAre) {
  // The running program: its resources come from its own file.
  void* self = ::dlopen(nullptr, RTLD_NOW);
  ASSERT_NE(self, nullptr);
  EXPECT_EQ(platform::FindModuleResource(self, platform::MakeIntResource(1), "PIPL").Error(),
            platform::kErrorResourceTypeNotFound);
  EXPECT_TRUE(platform::UnloadModule(self));  // the dlopen above
  // A module the layer never saw is handed to dlclose.
  void* plugin = ::dlopen(TOV_TEST_PLUGIN, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(plugin, nullptr);
  EXPECT_TRUE(platform::UnloadModule(plugin));
}
#endif

}  // namespace
