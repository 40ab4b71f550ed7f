// tovtool demo: the core-library subset (UTF conversions, number text,
// localizer) and the shared status codes.
#include <iomanip>
#include <ostream>

#include "tool.h"
#include "tovfoundation/tovfoundation.h"

namespace {

void DemoBasics(std::ostream& out) {
  using namespace basalt::literals;
  const UTF16String text = u"Grüße, 世界 🎬"_u16;
  const UTF8String bytes = basalt::UTF16to8(text);
  out << "UTF-16 text of " << text.size() << " code units is " << bytes.size()
      << " UTF-8 bytes: " << bytes << '\n';
  out << "and back again: " << (basalt::UTF8to16(bytes) == text ? "identical" : "DIFFERENT")
      << '\n';
  out << "NumberToString(3.14159, 2 digits) = "
      << basalt::UTF16to8(basalt::NumberToString(3.14159, 1, 2)) << '\n';
  out << "NumberToString(2.50, 3 digits) = " << basalt::UTF16to8(basalt::NumberToString(2.50, 1, 3))
      << '\n';
  out << "Localizer default text: "
      << basalt::UTF16to8(basalt::config::Localizer::Lookup("$$$/TOV/Demo/Hello=Hello, host"))
      << '\n';
  out << "status kErrOpenFailed = 0x" << std::hex << std::uppercase << TOV::kErrOpenFailed
      << std::dec << '\n';
}

TOVTOOL_DEMO_SECTION({10, "Core text and status codes", DemoBasics});

}  // namespace
