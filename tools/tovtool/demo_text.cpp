// tovtool demo: the text subsystem (string utilities, Base64, error messages,
// placeholder replacement and number text).
#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "tool.h"
#include "tovfoundation/tovfoundation.h"

namespace {

namespace SU = Halyard::StringUtils;
using namespace basalt::literals;

std::string Utf8(const UTF16String& text) { return basalt::UTF16to8(text); }

// CR and LF made visible.
std::string Visible(const UTF16String& text) {
  std::string out;
  for (char c : Utf8(text)) {
    if (c == '\r')
      out += "\\r";
    else if (c == '\n')
      out += "\\n";
    else
      out += c;
  }
  return out;
}

void DemoText(std::ostream& out) {
  out << "FourCCToUTF16(0x57415645) = " << Utf8(SU::FourCCToUTF16(0x57415645)) << '\n';
  out << "isValidFourCCToUTF16(0x80415645) = " << std::boolalpha
      << SU::isValidFourCCToUTF16(0x80415645) << '\n';
  out << "PlatformStringToUTF16(\"Médias\") has "
      << SU::PlatformStringToUTF16(
             "M\xC3\xA9"
             "dias")
             .size()
      << " code units\n";
  out << "VWIsEqual(\"CLIP.wav\", \"clip.WAV\", ignore case) = "
      << int{SU::VWIsEqual(u"CLIP.wav"_u16.c_str(), u"clip.WAV"_u16.c_str(), 1)} << '\n';
  char number[64];
  Halyard::ConvertFloatToString(number, 29.970, 3);
  out << "ConvertFloatToString(29.970, 3) = " << number << '\n';
  Halyard::ConvertFloatToString(number, 25.0, 3);
  out << "ConvertFloatToString(25.0, 3) = " << number << '\n';

  const std::string word = "Many hands make light work.";
  const std::vector<unsigned char> bytes(word.begin(), word.end());
  const UTF16String encoded = Halyard::Encode(bytes);
  out << "Encode(\"" << word << "\") = " << Visible(encoded) << '\n';
  const std::vector<unsigned char> decoded = Halyard::Decode(encoded);
  out << "Decode of that = \"" << std::string(decoded.begin(), decoded.end()) << "\"\n";
  const std::vector<unsigned char> lenient = Halyard::Decode(u"QQ"_u16);
  out << "Decode(\"QQ\") = " << lenient.size() << " bytes (an unpadded tail is zero-filled)\n";

  out << "Win32ErrorCodeToMessage(2) = " << Visible(Halyard::Win32ErrorCodeToMessage(2)) << '\n';
  out << "Win32ErrorCodeToMessage(0xDEADBEEF) = "
      << Visible(Halyard::Win32ErrorCodeToMessage(0xDEADBEEF)) << '\n';

  const UTF16String templ = u"Frame ^1 of ^2 at ^3 fps (^4, flags ^5)"_u16;
  const UTF16String clip = u"clip.mov"_u16;
  std::uint32_t count = 0;
  SU::VReplace(templ.c_str(), nullptr, &count, "uudwh", 3u, 10u, 29.97, clip.c_str(), 255u);
  std::vector<unsigned short> buffer(std::size_t{count} + 1);
  SU::VReplace(templ.c_str(), buffer.data(), &count, "uudwh", 3u, 10u, 29.97, clip.c_str(), 255u);
  out << "VReplace(\"" << Utf8(templ) << "\") = " << Utf8(UTF16String(buffer.data(), count)) << " ("
      << count << " code units)\n";
  out << "VNumberToUTF16(1.0/3, 3) = " << Utf8(SU::VNumberToUTF16(1.0 / 3.0, 3)) << '\n';
  out << "VNumberToHexUTF16(-1) = " << Utf8(SU::VNumberToHexUTF16(-1)) << '\n';
  out << "VUTF16ToNumber(\"2.5 s\") = " << SU::VUTF16ToNumber(u"2.5 s"_u16) << '\n';
}

TOVTOOL_DEMO_SECTION({70, "Text: strings, Base64, error messages, placeholders", DemoText});

}  // namespace
