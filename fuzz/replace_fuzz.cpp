// Fuzzes the placeholder replacement: the internal core with a random template
// and random argument texts, and VReplace with a random template and random
// type letters (d, h, i, u, w and unknown ones) with arguments of the matching
// C types. Each output is sized by a first measuring call (null output); the
// filling call must agree on status and count and stay inside that buffer
// (ASan checks the bound).
//
// Input layout: byte 0 picks the argument count (0–7 texts for the core) and
// byte 1 the type letters (three letters, six choices each); the rest are
// segments separated by the byte pair 0xFF 0xFE: the template, then the
// argument texts, each as UTF-16LE.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "text/text_internal.h"
#include "tovfoundation/text.h"

namespace {

std::vector<UTF16String> Segments(const std::uint8_t* data, std::size_t size) {
  std::vector<UTF16String> segments(1);
  for (std::size_t i = 0; i + 1 < size; i += 2) {
    if (data[i] == 0xFF && data[i + 1] == 0xFE) {
      segments.emplace_back();
      continue;
    }
    const auto unit = static_cast<unsigned short>(data[i] | (data[i + 1] << 8));
    if (unit != 0) segments.back().push_back(unit);  // a NUL would end the text early
  }
  return segments;
}

void CheckCore(const UTF16String& templ, const std::vector<UTF16String>& args) {
  std::uint32_t measured = 0;
  const std::uint32_t first =
      tovimpl::text::ReplaceWithTexts(templ.c_str(), nullptr, &measured, args.data(), args.size());
  std::vector<unsigned short> out(std::size_t{measured} + 1, 0xAAAA);
  std::uint32_t filled = 0;
  const std::uint32_t second =
      tovimpl::text::ReplaceWithTexts(templ.c_str(), out.data(), &filled, args.data(), args.size());
  if (first != second || measured != filled) std::abort();
  if (first == 0 && out[measured] != 0) std::abort();
}

constexpr char kLetters[] = {'d', 'h', 'i', 'u', 'w', 'x'};

struct Context {
  const UTF16String* templ;
  char types[4];
  const UTF16String* text;
};

// Measures, fills, and compares, with the arguments gathered so far.
template <typename... Args>
void CallReplace(const Context& context, Args... args) {
  std::uint32_t measured = 0;
  const std::uint32_t first = Halyard::StringUtils::VReplace(context.templ->c_str(), nullptr,
                                                             &measured, context.types, args...);
  std::vector<unsigned short> out(std::size_t{measured} + 1, 0xAAAA);
  std::uint32_t filled = 0;
  const std::uint32_t second = Halyard::StringUtils::VReplace(context.templ->c_str(), out.data(),
                                                              &filled, context.types, args...);
  if (first != second || measured != filled) std::abort();
  if (first == 0 && out[measured] != 0) std::abort();
}

// Appends one argument of the C type letter `depth` asks for, then recurses.
template <int Depth, typename... Args>
void Gather(const Context& context, Args... args) {
  if constexpr (Depth == 3) {
    CallReplace(context, args...);
  } else {
    switch (context.types[Depth]) {
      case 'd':
        Gather<Depth + 1>(context, args..., 2.5 * (Depth + 1));
        break;
      case 'h':
      case 'u':
        Gather<Depth + 1>(context, args..., 0xFFFFFFF0u + Depth);
        break;
      case 'i':
        Gather<Depth + 1>(context, args..., -7 * (Depth + 1));
        break;
      case 'w':
        Gather<Depth + 1>(context, args..., context.text->c_str());
        break;
      default:
        CallReplace(context, args...);
        break;  // stops at this letter
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  std::vector<UTF16String> segments = Segments(data + 2, size - 2);
  const UTF16String templ = segments.front();
  std::vector<UTF16String> args(segments.begin() + 1, segments.end());
  if (args.size() > data[0] % 8u) args.resize(data[0] % 8u);
  if (!templ.empty()) CheckCore(templ, args);
  if (templ.empty()) return 0;

  Context context{&templ, {}, args.empty() ? &templ : &args.front()};
  unsigned pick = data[1];
  for (int i = 0; i < 3; ++i) {
    context.types[i] = kLetters[pick % 6];
    pick /= 6;
  }
  context.types[3] = '\0';
  Gather<0>(context);
  return 0;
}
