// Start-up and shutdown, and the folder queries answered by the host service.
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include "tovfoundation/foundation.h"

namespace TOV::Paths {

namespace {

// The host service's function table, null while the service is not held.
// Unguarded: Initialize and Terminate run while no folder query runs.
void* gHostService = nullptr;

// The two-call folder query against one entry of the host's table.
UTF16String QueryFolder(int entryIndex) {
  UTF16String result;
  if (gHostService == nullptr) return result;
  const auto* table = static_cast<const HostFolderEntry*>(gHostService);
  const HostFolderEntry entry = table[entryIndex];

  std::uint32_t count = 0;
  entry(nullptr, &count);
  if (count == 0) return result;

  // Exactly `count` units; the host is then told one more (see the header).
  // The byte size saturates so an absurd count fails the allocation.
  constexpr std::size_t kUnit = sizeof(unsigned short);
  const std::size_t units = count;
  const std::size_t bytes = units > std::numeric_limits<std::size_t>::max() / kUnit
                                ? std::numeric_limits<std::size_t>::max()
                                : units * kUnit;
  std::unique_ptr<unsigned short[]> buffer(static_cast<unsigned short*>(::operator new[](bytes)));
  buffer[0] = 0;
  count += 1;
  entry(buffer.get(), &count);

  std::size_t length = 0;
  while (length < units && buffer[length] != 0) ++length;
  result.assign(buffer.get(), length);
  return result;
}

}  // namespace

std::uint32_t Initialize(Halyard::IVServicesManager* services) {
  if (gHostService != nullptr) return 0;
  return services->AcquireService(kHostServiceName, kHostServiceVersion, &gHostService);
}

void Terminate(Halyard::IVServicesManager* services) {
  if (gHostService == nullptr) return;
  services->ReleaseService(kHostServiceName, kHostServiceVersion, &gHostService);
  gHostService = nullptr;
}

UTF16String CacheFolder() { return QueryFolder(kCacheFolderEntry); }
UTF16String CodecsFolder() { return QueryFolder(kCodecsFolderEntry); }
UTF16String FiltersFolder() { return QueryFolder(kFiltersFolderEntry); }
UTF16String PostEncoderCommandsFolder() { return QueryFolder(kPostEncoderCommandsFolderEntry); }
UTF16String ReadersFolder() { return QueryFolder(kReadersFolderEntry); }
UTF16String SystemPresetsFolder() { return QueryFolder(kSystemPresetsFolderEntry); }
UTF16String WritersFolder() { return QueryFolder(kWritersFolderEntry); }

}  // namespace TOV::Paths

namespace TOVFoundation {

std::uint32_t Initialize(Halyard::IVServicesManager* services) {
  // A missing host service only leaves the folder queries empty: its status
  // is not the library's.
  if (services != nullptr) static_cast<void>(TOV::Paths::Initialize(services));
  return FolderRegistrar::Initialize();
}

void Terminate(Halyard::IVServicesManager* services) {
  if (services != nullptr) TOV::Paths::Terminate(services);
}

}  // namespace TOVFoundation
