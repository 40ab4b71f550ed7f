// basalt string streams: formatting always in the classic ("C") locale, so
// numbers never get digit grouping or a locale's decimal comma, whatever locale
// the host process has installed.
//
//   basalt::UTF8StringStream s;  s << 1234567 << ' ' << 2.5;  s.str() == "1234567 2.5"
//   basalt::UTF16StringStream w; w << "Frame " << 3;          w.str() == u"Frame 3"_u16
#pragma once

#include <locale>
#include <sstream>
#include <utility>

#include "basalt/strings.h"
#include "basalt/utf.h"

namespace basalt {

// A narrow output string stream imbued with the classic locale.
class TOV_INTERFACE UTF8StringStream : public std::ostringstream {
 public:
  UTF8StringStream() { imbue(std::locale::classic()); }
};

// A narrow input string stream imbued with the classic locale.
class TOV_INTERFACE UTF8InputStringStream : public std::istringstream {
 public:
  // Reads `text`.
  explicit UTF8InputStringStream(const UTF8String& text) : std::istringstream(text) {
    imbue(std::locale::classic());
  }
};

// A UTF-16 output string stream. Values are formatted as by UTF8StringStream
// and the text is handed back as UTF-16; UTF16String operands are appended as
// they are.
class UTF16StringStream {
 public:
  // Appends `value`, formatted as a UTF8StringStream formats it.
  template <typename T>
  UTF16StringStream& operator<<(const T& value) {
    mNarrow << value;
    return *this;
  }
  // Appends `text` as it is.
  UTF16StringStream& operator<<(const UTF16String& text) {
    mNarrow << UTF16to8(text);
    return *this;
  }
  // The text so far, as UTF-16.
  UTF16String str() const { return UTF8to16(mNarrow.str()); }

 private:
  UTF8StringStream mNarrow;
};

}  // namespace basalt
