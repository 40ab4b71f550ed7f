// Uses the installed library through its public headers only.
#include <cstdio>
#include <cstring>

#include "tovfoundation/tovfoundation.h"

int main() {
  using namespace basalt::literals;
  const UTF16String text = u"Grüße"_u16;
  const UTF8String bytes = basalt::UTF16to8(text);
  if (bytes !=
      "Gr\xC3\xBC\xC3\x9F"
      "e") {
    std::puts("UTF-16 to UTF-8 conversion gave the wrong bytes");
    return 1;
  }
  TOV::TOVVRException error(TOV::kErrInvalidArgument);
  if (std::strcmp(error.what(), "class TOV::TOVVRException") != 0 ||
      error.GetCode() != 0xC0080001u) {
    std::puts("TOVVRException is wrong");
    return 1;
  }
  std::puts("consumer: ok");
  return 0;
}
