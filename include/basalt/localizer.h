// basalt localizer: looks up user-visible texts by key.
//
// A key is written with its English default: "$$$/Area/Name=Default text".
//
//   basalt::config::Localizer::Lookup("$$$/TOV/Demo/Hello=Hello") == u"Hello"_u16
//
// With no translation installed the lookup gives the default (the text after
// the first "="; a key without "=" gives the whole key). A translation installed
// for "$$$/Area/Name" replaces it. Thread-safe.
#pragma once

#include "basalt/strings.h"
#include "tovfoundation/export.h"

namespace basalt::config {

// The localised strings of the library: a key with its English default
// ("$$$/Area/Name=Default text") looked up in the installed translations.
class TOV_API Localizer {
 public:
  // The text for `keyAndDefault`.
  static UTF16String Lookup(const UTF8String& keyAndDefault);
  // Installs (or replaces) the translation of `key` ("$$$/Area/Name", no default).
  static void SetTranslation(const UTF8String& key, const UTF16String& text);
  // Removes every installed translation.
  static void ClearTranslations();
};

}  // namespace basalt::config
