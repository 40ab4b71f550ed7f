// The README's tour, "Text", as a program the tests build and run.
#include <cstdint>
#include <iostream>
#include <vector>

#include "tovfoundation/tovfoundation.h"

using namespace basalt::literals;

int main() {
  // [readme]
  namespace SU = Halyard::StringUtils;
  std::vector<unsigned char> bytes{'M', 'a', 'n'};
  UTF16String base64 = Halyard::Encode(bytes);                 // "TWFu\r\n"
  std::cout << basalt::UTF16to8(base64.substr(0, 4)) << '\n';  // prints TWFu
  std::uint32_t count = 0;
  SU::VReplace(u"Frame ^1 of ^2"_u16.c_str(), nullptr, &count, "uu", 3u, 10u);
  std::cout << count << '\n';  // prints 13
  // [/readme]
}
