// The README's tour, "Files and paths", as a program the tests build and run.
#include <filesystem>
#include <iostream>

#include "tovfoundation/tovfoundation.h"

using namespace basalt::literals;

int main() {
  // [readme]
  namespace PU = Halyard::PathUtilities;
  UTF16String file = PU::TOVGetFileName(u"C:\\a\\b\\c.txt"_u16);
  std::cout << basalt::UTF16to8(file) << '\n';  // prints c.txt
  UTF16String unc = PU::ToNormalizedPath(u"\\\\srv\\s"_u16);
  std::cout << basalt::UTF16to8(unc) << '\n';  // prints \\?\UNC\srv\s
  UTF16String name = PU::GetAutoFileName(PU::TOVGetTempFolder(), u"TOVCache"_u16, u".vpc"_u16);
  // name: the temporary folder + "TOVCache<numbers>.vpc", a new empty file
  // [/readme]
  const UTF16String platform = PU::ToPlatformPath(name);
  return std::filesystem::remove(std::u16string(platform.begin(), platform.end())) ? 0 : 1;
}
