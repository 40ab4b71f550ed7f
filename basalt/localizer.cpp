// basalt localizer.
#include "basalt/localizer.h"

#include <map>
#include <mutex>

#include "basalt/utf.h"

namespace basalt::config {

namespace {
std::mutex& TableLock() {
  static std::mutex lock;
  return lock;
}
std::map<UTF8String, UTF16String>& Table() {
  static std::map<UTF8String, UTF16String> table;
  return table;
}
}  // namespace

UTF16String Localizer::Lookup(const UTF8String& keyAndDefault) {
  const auto equals = keyAndDefault.find('=');
  const UTF8String key = keyAndDefault.substr(0, equals);
  {
    std::lock_guard<std::mutex> guard(TableLock());
    const auto found = Table().find(key);
    if (found != Table().end()) return found->second;
  }
  if (equals == UTF8String::npos) return UTF8to16(keyAndDefault);
  return UTF8to16(std::string_view(keyAndDefault).substr(equals + 1));
}

void Localizer::SetTranslation(const UTF8String& key, const UTF16String& text) {
  std::lock_guard<std::mutex> guard(TableLock());
  Table()[key] = text;
}

void Localizer::ClearTranslations() {
  std::lock_guard<std::mutex> guard(TableLock());
  Table().clear();
}

}  // namespace basalt::config
