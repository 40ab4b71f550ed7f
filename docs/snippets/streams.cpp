// The README's tour, "Ports and streams", as a program the tests build and run.
#include <cstdio>
#include <iostream>

#include "tovfoundation/tovfoundation.h"

using namespace basalt::literals;

int main() {
  // [readme]
  UTF16String path = Halyard::PathUtilities::TOVGetTempFolder() + u"out.bin"_u16;
  auto port = Halyard::CPort::FilePort(path.c_str(), Halyard::kAccessWrite);
  Halyard::CWriteStream out(*port, Halyard::kHaldBigEndian, 4096, 0, 1);
  out.PutInt(0x01020304);  // bytes 01 02 03 04
  out.Flush(1);
  std::cout << port->Size() << " bytes\n";  // prints 4 bytes
  // [/readme]
}
