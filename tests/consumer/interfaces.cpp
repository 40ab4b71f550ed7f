// A host's own implementations of the library's interfaces, passed through the
// installed shared library, and the library's objects used through those
// interfaces from the host's side.
//
// Built with -fsanitize=undefined (the vptr check on, nothing recovered): a
// virtual call or a dynamic_cast on an object whose type information the host
// and the library do not share is reported and ends the program. Every check
// below also asserts the values that went through the library.
//
// The host and the library must hold ONE type_info per interface: the type
// information of the library's own stream classes leads, through their bases,
// to the very objects the host's typeid gives. This program names those
// classes in no typeid and no dynamic_cast, so the type information it reads
// from their objects is the library's own.
#include <cxxabi.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <typeinfo>
#include <vector>

#include "tovfoundation/tovfoundation.h"

// The messages of this host (the library leaves their class to its clients).
namespace TOV {
class Message {
 public:
  std::uint32_t id;
};
}  // namespace TOV

namespace {

int gFailures = 0;

void Expect(bool condition, const char* what) {
  if (!condition) {
    std::printf("interfaces: FAILED: %s\n", what);
    ++gFailures;
  }
}

// The base of a class with one public non-virtual base, from its type
// information (Itanium C++ ABI); null for any other kind of class.
const std::type_info* BaseOf(const std::type_info& info) {
  const auto* single = dynamic_cast<const abi::__si_class_type_info*>(&info);
  return single != nullptr ? single->__base_type : nullptr;
}

// --- the host's folder table and services manager ---------------------------

std::string gCacheFolder;

std::uint32_t CacheFolderEntry(unsigned short* buffer, std::uint32_t* count) {
  const UTF16String folder = basalt::UTF8to16(gCacheFolder);
  if (buffer == nullptr) {
    *count = static_cast<std::uint32_t>(folder.size() + 1);
    return 0;
  }
  std::memcpy(buffer, folder.c_str(), (folder.size() + 1) * sizeof(unsigned short));
  return 0;
}

std::uint32_t EmptyEntry(unsigned short*, std::uint32_t* count) {
  *count = 0;
  return 0;
}

TOV::Paths::HostFolderEntry gHostTable[20];

class HostServices final : public Halyard::IVServicesManager {
 public:
  std::uint32_t QueryInterface(const Halyard::_VGUID&, void**) override {
    return TOV::kErrNoInterface;
  }
  std::uint32_t AddRef() override { return ++references; }
  std::uint32_t Release() override { return --references; }
  std::uint32_t AcquireService(const char* name, std::uint32_t version, void** service) override {
    ++acquired;
    if (std::strcmp(name, TOV::Paths::kHostServiceName) != 0 ||
        version != TOV::Paths::kHostServiceVersion) {
      return TOV::kErrNoInterface;
    }
    *service = gHostTable;
    return 0;
  }
  std::uint32_t ReleaseService(const char*, std::uint32_t, void** service) override {
    ++released;
    Expect(*service == gHostTable, "the library gives back the table it acquired");
    return 0;
  }

  std::uint32_t references = 1;
  int acquired = 0;
  int released = 0;

  virtual ~HostServices() = default;
};

// --- a host port under the library's streams ---------------------------------

class HostPort final : public Halyard::CPort {
 public:
  HostPort() : Halyard::CPort(Halyard::kAccessReadWrite, 0) {}
  std::uint32_t Size(std::uint32_t newSize) override {
    bytes.resize(newSize);
    return 0;
  }
  std::uint32_t Size() const override { return static_cast<std::uint32_t>(bytes.size()); }
  std::uint32_t Close() override {
    ++closed;
    return 0;
  }
  std::uint32_t Read(std::uint32_t pos, std::int32_t count, void* buffer) const override {
    if (pos + static_cast<std::uint32_t>(count) > bytes.size()) return TOV::kErrReadFailed;
    std::memcpy(buffer, bytes.data() + pos, static_cast<std::size_t>(count));
    return 0;
  }
  std::uint32_t Write(std::uint32_t pos, std::int32_t count, const void* buffer) override {
    if (pos + static_cast<std::uint32_t>(count) > bytes.size()) bytes.resize(pos + count);
    std::memcpy(bytes.data() + pos, buffer, static_cast<std::size_t>(count));
    return 0;
  }

  std::vector<unsigned char> bytes;
  int closed = 0;
};

// --- host streams: the interfaces implemented by the host, forwarding to the
// library's streams through the interface pointers ------------------------------

// What both host streams share: a reference count of their own, and the
// identity and position calls forwarded to the library's stream.
template <class Interface>
class HostStream : public Interface {
 public:
  HostStream(Interface& inner, std::uint32_t references) : mInner(inner), mReferences(references) {}
  std::uint32_t QueryInterface(const Halyard::_VGUID& id, void** out) override {
    return mInner.QueryInterface(id, out);
  }
  std::uint32_t AddRef() override { return ++mReferences; }
  std::uint32_t Release() override { return --mReferences; }
  std::uint32_t GetPos(std::uint32_t* pos) const override { return mInner.GetPos(pos); }
  std::uint32_t SetPos(std::uint32_t pos) override { return mInner.SetPos(pos); }

 protected:
  Interface& mInner;

 private:
  std::uint32_t mReferences;
};

class HostReadStream final : public HostStream<Halyard::IVReadStream> {
 public:
  explicit HostReadStream(Halyard::IVReadStream& inner) : HostStream(inner, 1) {}
  std::uint32_t ReadBool(unsigned char* value) const override { return mInner.ReadBool(value); }
  std::uint32_t ReadByte(unsigned char* value) const override { return mInner.ReadByte(value); }
  std::uint32_t ReadShort(std::int16_t* value) const override { return mInner.ReadShort(value); }
  std::uint32_t ReadInt(std::int32_t* value) const override { return mInner.ReadInt(value); }
  std::uint32_t ReadFloat(float* value) const override { return mInner.ReadFloat(value); }
  std::uint32_t ReadDouble(double* value) const override { return mInner.ReadDouble(value); }
  std::uint32_t GetSize(std::uint32_t* size) const override { return mInner.GetSize(size); }
  std::uint32_t Read(std::uint32_t count, const void* buffer) const override {
    return mInner.Read(count, buffer);
  }
  std::uint32_t Skip(std::uint32_t count) override { return mInner.Skip(count); }
  std::uint32_t PutBackByte(unsigned char value) override { return mInner.PutBackByte(value); }
  std::uint32_t PeekByte(unsigned char* value) override { return mInner.PeekByte(value); }
};

class HostWriteStream final : public HostStream<Halyard::IVWriteStream> {
 public:
  explicit HostWriteStream(Halyard::IVWriteStream& inner) : HostStream(inner, 0) {}
  std::uint32_t PutBool(unsigned char value) override { return mInner.PutBool(value); }
  std::uint32_t PutByte(unsigned char value) override { return mInner.PutByte(value); }
  std::uint32_t PutShort(std::int16_t value) override { return mInner.PutShort(value); }
  std::uint32_t PutInt(std::int32_t value) override { return mInner.PutInt(value); }
  std::uint32_t PutFloat(float value) override { return mInner.PutFloat(value); }
  std::uint32_t PutDouble(double value) override { return mInner.PutDouble(value); }
  std::uint32_t PutZeroPadding(std::int32_t count) override { return mInner.PutZeroPadding(count); }
  std::uint32_t Write(std::uint32_t count, const void* data) override {
    return mInner.Write(count, data);
  }
  std::uint32_t Flush(unsigned char flushPort) override { return mInner.Flush(flushPort); }

  virtual ~HostWriteStream() = default;
};

// --- the search callbacks ---------------------------------------------------------

class HostGenerator final : public tovimpl::FolderMetadataGeneratorFunc {};
class HostFilter final : public tovimpl::FileFilterFunc {};

// --- a listener of the host ----------------------------------------------------

class HostListener final : public TOV::Listener {
 public:
  void ListenToMessage(const TOV::Message&) override { ++heard; }
  int heard = 0;
};

void ServicesAndRegistrar() {
  const char* temp = std::getenv("TMPDIR");
  std::string folderTemplate =
      std::string(temp != nullptr && *temp != 0 ? temp : "/tmp") + "/tov-interfaces-XXXXXX";
  const char* folder = mkdtemp(folderTemplate.data());
  Expect(folder != nullptr, "a temporary cache folder");
  if (folder == nullptr) return;
  gCacheFolder = folder;
  for (auto& entry : gHostTable) entry = EmptyEntry;
  gHostTable[TOV::Paths::kCacheFolderEntry] = CacheFolderEntry;

  HostServices services;
  Halyard::IVServicesManager* asInterface = &services;
  Expect(typeid(*asInterface) == typeid(HostServices), "typeid of the host's manager");
  Expect(TOVFoundation::Initialize(asInterface) == 0, "Initialize with the host's manager");
  Expect(services.acquired == 1, "the library acquired the host service once");
  Expect(TOV::Paths::CacheFolder() == basalt::UTF8to16(gCacheFolder),
         "the cache folder comes from the host's table");

  using namespace basalt::literals;
  UTF16String cacheFile;
  Expect(FolderRegistrar::RegisterFolder(u"/media/clips"_u16, u"Thumbs"_u16, cacheFile) == 0,
         "RegisterFolder through the host's cache folder");
  // The library joins the folder and the file name with its own separator.
  const UTF16String prefix = basalt::UTF8to16(gCacheFolder);
  const std::string fileText = basalt::UTF16to8(cacheFile);
  Expect(cacheFile.compare(0, prefix.size(), prefix) == 0 &&
             fileText.find("TOVCache", gCacheFolder.size()) == gCacheFolder.size() + 1 &&
             fileText.ends_with(".vpc"),
         "the cache file lies in the host's folder");
  UTF16String found;
  Expect(FolderRegistrar::FindFolder(u"/media/clips"_u16, u"Thumbs"_u16, found) == 0 &&
             found == cacheFile,
         "FindFolder answers the registered file");

  // The manager held as the library's reference-counting pointer.
  {
    Halyard::CVSmartI<Halyard::IVServicesManager> held(asInterface);
    Expect(services.references == 2, "CVSmartI added a reference");
  }
  Expect(services.references == 1, "CVSmartI released its reference");

  TOVFoundation::Terminate(asInterface);
  Expect(services.released == 1, "Terminate gave the host service back");
  Expect(TOV::Paths::CacheFolder().empty(), "no cache folder without the host service");
}

void Streams() {
  using namespace basalt::literals;
  HostPort port;
  {
    Halyard::CWriteStream library(port, Halyard::kHaldLittleEndian, 16, 0, 0);
    Halyard::IVWriteStream& asInterface = library;
    Expect(dynamic_cast<Halyard::IVWriteStream2*>(&asInterface) != nullptr,
           "the library's write stream is an IVWriteStream2");
    const std::type_info& libraryClass = typeid(asInterface);
    Expect(BaseOf(libraryClass) == &typeid(Halyard::IVWriteStream2),
           "the library's write stream derives from the host's IVWriteStream2 type_info");
    Expect(BaseOf(*BaseOf(libraryClass)) == &typeid(Halyard::IVWriteStream),
           "... and from the host's IVWriteStream type_info");
    Expect(BaseOf(*BaseOf(*BaseOf(libraryClass))) == &typeid(Halyard::IVUnknown),
           "... and from the host's IVUnknown type_info");
    HostWriteStream host(asInterface);
    Halyard::IVWriteStream& hostInterface = host;
    Expect(hostInterface.PutInt(0x01020304) == 0, "PutInt through the host stream");
    Expect(hostInterface.PutShort(-2) == 0, "PutShort through the host stream");
    Expect(hostInterface.PutDouble(0.5) == 0, "PutDouble through the host stream");
    Expect(Halyard::VUtilsWriteStringToStream(library, u"AB"_u16, 1) == 0,
           "VUtilsWriteStringToStream");
    Expect(hostInterface.Flush(1) == 0, "Flush through the host stream");
    std::uint32_t pos = 0;
    Expect(hostInterface.GetPos(&pos) == 0 && pos == 4 + 2 + 8 + 6, "the write position");
    Expect(hostInterface.AddRef() == 1, "the host's own reference count");
  }
  const std::vector<unsigned char> expected = {0x04, 0x03, 0x02, 0x01, 0xFE, 0xFF, 0,   0, 0, 0,
                                               0,    0,    0xE0, 0x3F, 'A',  0,    'B', 0, 0, 0};
  Expect(port.bytes == expected, "the bytes the host port received");

  {
    Halyard::CReadStream library(port, Halyard::kHaldLittleEndian, 8, 0, 1);
    Halyard::IVReadStream& asInterface = library;
    Halyard::IVUnknown& asUnknown = library;
    Expect(asUnknown.AddRef() == 2, "AddRef through IVUnknown");
    const std::type_info& libraryClass = typeid(asInterface);
    Expect(BaseOf(libraryClass) == &typeid(Halyard::IVReadStream),
           "the library's read stream derives from the host's IVReadStream type_info");
    Expect(BaseOf(*BaseOf(libraryClass)) == &typeid(Halyard::IVUnknown),
           "... and from the host's IVUnknown type_info");
    Expect(dynamic_cast<Halyard::IVReadStream*>(&asUnknown) == &asInterface,
           "dynamic_cast from IVUnknown to IVReadStream on the library's object");
    HostReadStream host(asInterface);
    Halyard::IVReadStream& hostInterface = host;
    std::int32_t integer = 0;
    std::int16_t shortValue = 0;
    double real = 0;
    Expect(hostInterface.ReadInt(&integer) == 0 && integer == 0x01020304,
           "ReadInt through the host stream");
    Expect(hostInterface.ReadShort(&shortValue) == 0 && shortValue == -2,
           "ReadShort through the host stream");
    Expect(hostInterface.ReadDouble(&real) == 0 && real == 0.5,
           "ReadDouble through the host stream");
    UTF16String text;
    Expect(Halyard::VUtilsReadStringFromStream(library, text, 3) == 0 && text == u"AB"_u16,
           "VUtilsReadStringFromStream");
    std::uint32_t size = 0;
    Expect(hostInterface.GetSize(&size) == 0 && size == expected.size(),
           "GetSize through the host stream");
    Expect(host.AddRef() == 2, "the host's own reference count");
  }
  Expect(port.closed == 1, "the read stream closed the host port");
}

void Callbacks() {
  using namespace basalt::literals;
  HostGenerator generator;
  HostFilter filter;
  tovimpl::FolderMetadataGeneratorFunc& generatorInterface = generator;
  tovimpl::FileFilterFunc& filterInterface = filter;
  Expect(typeid(generatorInterface) == typeid(HostGenerator), "typeid of the host's generator");
  tovimpl::FolderMetadataSearch search(u"/media"_u16, u""_u16, false, generatorInterface);
  std::vector<UTF16String> files = {u"kept"_u16};
  Expect(search.GetFileList(filterInterface, files) == 0 && files.size() == 1,
         "the search takes the host's filter and leaves the list");

  HostListener listener;
  TOV::Broadcaster broadcaster;
  broadcaster.AddListener(&listener);
  broadcaster.BroadcastMessage(TOV::Message{7});
  Expect(listener.heard == 1, "the library dispatched a message to the host's listener");
  TOV::Listener& asListener = listener;
  Expect(dynamic_cast<HostListener*>(&asListener) == &listener,
         "dynamic_cast of the host's listener");
}

}  // namespace

int main() {
  ServicesAndRegistrar();
  Streams();
  Callbacks();
  if (gFailures != 0) return 1;
  std::puts("interfaces: ok");
  return 0;
}
