// Placeholder replacement and number text.
#include <vector>

#include "basalt/string_stream.h"
#include "basalt/utf.h"
#include "text/text_internal.h"
#include "tovfoundation/text.h"

namespace tovimpl::text {

UTF16String DoubleArgumentText(double value) {
  return Halyard::StringUtils::VNumberToUTF16(value, 3);
}

UTF16String HexArgumentText(std::int32_t value) {
  return Halyard::StringUtils::VNumberToHexUTF16(value);
}

UTF16String SignedArgumentText(std::int32_t value) {
  basalt::UTF16StringStream stream;
  stream << value;
  return stream.str();
}

UTF16String UnsignedArgumentText(std::uint32_t value) {
  basalt::UTF16StringStream stream;
  stream << value;
  return stream.str();
}

UTF16String TextArgumentText(const unsigned short* text) {
  return text == nullptr ? UTF16String() : UTF16String(text);
}

std::uint32_t ReplaceWithTexts(const unsigned short* templ, unsigned short* output,
                               std::uint32_t* length, const UTF16String* arguments,
                               std::size_t argumentCount) {
  const std::size_t n = UTF16String::traits_type::length(templ);
  if (n == 0 || length == nullptr) return TOV::kErrInvalidPointer;
  std::uint32_t count = 0;
  *length = 0;
  for (std::size_t position = 0; position < n; ++position) {
    const unsigned short unit = templ[position];
    if (unit != u'^') {
      if (output != nullptr) output[count] = unit;
      ++count;
      *length = count;
      continue;
    }
    std::uint32_t number = 0;  // wraps, as unsigned arithmetic does
    while (position + 1u < n && templ[position + 1] >= u'0' && templ[position + 1] <= u'9') {
      ++position;
      number = number * 10u + static_cast<std::uint32_t>(templ[position] - u'0');
    }
    if (number > argumentCount) return TOV::kErrInvalidPointer;
    if (number == 0) {
      if (output != nullptr) output[count] = u'^';
      ++count;
    } else {
      const UTF16String& text = arguments[number - 1];
      if (output != nullptr) {
        UTF16String::traits_type::copy(output + count, text.data(), text.size());
        output[count + text.size()] = 0;
      }
      count += static_cast<std::uint32_t>(text.size());
    }
    *length = count;
  }
  if (output != nullptr) output[count] = 0;
  *length = count;
  return TOV::kSuccess;
}

}  // namespace tovimpl::text

namespace Halyard::StringUtils {

std::uint32_t VVarArgsReplace(const unsigned short* templ, unsigned short* output,
                              std::uint32_t* length, const char* types, std::va_list arguments) {
  if (templ == nullptr) throw TOV::TOVVRException(TOV::kErrInvalidArgument);
  if (templ[0] == 0 || length == nullptr) return TOV::kErrInvalidPointer;
  *length = 0;

  std::vector<UTF16String> texts;
  for (const char* type = types; type != nullptr && *type != '\0'; ++type) {
    switch (*type) {
      case 'd':
        texts.push_back(tovimpl::text::DoubleArgumentText(va_arg(arguments, double)));
        break;
      case 'h':
        texts.push_back(tovimpl::text::HexArgumentText(
            static_cast<std::int32_t>(va_arg(arguments, std::uint32_t))));
        break;
      case 'i':
        texts.push_back(tovimpl::text::SignedArgumentText(va_arg(arguments, std::int32_t)));
        break;
      case 'u':
        texts.push_back(tovimpl::text::UnsignedArgumentText(va_arg(arguments, std::uint32_t)));
        break;
      case 'w':
        texts.push_back(tovimpl::text::TextArgumentText(va_arg(arguments, const unsigned short*)));
        break;
      default:
        return TOV::kErrInvalidPointer;
    }
  }
  return tovimpl::text::ReplaceWithTexts(templ, output, length, texts.data(), texts.size());
}

std::uint32_t VReplace(const unsigned short* templ, unsigned short* output, std::uint32_t* length,
                       const char* types, ...) {
  std::va_list arguments;
  va_start(arguments, types);
  struct End {
    std::va_list& list;
    ~End() { va_end(list); }
  } end{arguments};
  return VVarArgsReplace(templ, output, length, types, arguments);
}

UTF16String VNumberToUTF16(double value, unsigned char precision) {
  return basalt::NumberToString(value, 1, precision, 0x1F, 0);
}

UTF16String VNumberToHexUTF16(std::int32_t value) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  auto bits = static_cast<std::uint32_t>(value);
  unsigned short digits[8];
  std::size_t count = 0;
  do {
    digits[count++] = static_cast<unsigned short>(kDigits[bits & 0xFu]);
    bits >>= 4;
  } while (bits != 0);
  UTF16String text(count, 0);
  for (std::size_t i = 0; i < count; ++i) text[i] = digits[count - 1 - i];
  return text;
}

double VUTF16ToNumber(const UTF16String& text) {
  if (text.empty()) return 0.0;
  basalt::UTF8InputStringStream stream(basalt::UTF16to8(text));
  double value = 0.0;
  if (!(stream >> value)) return 0.0;
  return value;
}

}  // namespace Halyard::StringUtils
