// basalt property lists: the tree, its XML text, and atomic files.
//
// The XML text is written by hand (it is small and its escaping must be
// exact) and read with pugixml, which stays private to this file.
#include "basalt/proplist.h"

#include <atomic>
#include <cstdint>
#include <limits>
#include <map>
#include <pugixml.hpp>
#include <string>
#include <utility>

#include "basalt/string_stream.h"
#include "basalt/thread.h"
#include "basalt/utf.h"
#include "platform/error.h"
#include "platform/file.h"
#include "platform/file_replace.h"

namespace basalt::proplist {

// ---------------------------------------------------------------------------
// The tree
// ---------------------------------------------------------------------------

namespace {
struct Node {
  bool isChild = false;
  UTF8String text;
  std::unique_ptr<PropList> child;

  Node() = default;
  Node(const Node& other)
      : isChild(other.isChild),
        text(other.text),
        child(other.child ? std::make_unique<PropList>(*other.child) : nullptr) {}
  Node(Node&&) noexcept = default;
  Node& operator=(Node&&) noexcept = default;
};
}  // namespace

struct PropList::Entries {
  std::map<UTF8String, Node> map;
};

PropList::PropList() : mEntries(std::make_unique<Entries>()) {}
PropList::PropList(const PropList& other) : mEntries(std::make_unique<Entries>(*other.mEntries)) {}
PropList::PropList(PropList&& other) noexcept : mEntries(std::make_unique<Entries>()) {
  mEntries.swap(other.mEntries);
}
PropList& PropList::operator=(const PropList& other) {
  if (this != &other) {
    auto copy = std::make_unique<Entries>(*other.mEntries);
    mEntries.swap(copy);
  }
  return *this;
}
PropList& PropList::operator=(PropList&& other) noexcept {
  if (this != &other) {
    mEntries->map.clear();
    mEntries.swap(other.mEntries);
  }
  return *this;
}
PropList::~PropList() = default;

PropList* PropList::FindChild(const UTF8String& key) {
  auto found = mEntries->map.find(key);
  if (found == mEntries->map.end() || !found->second.isChild) return nullptr;
  return found->second.child.get();
}

const PropList* PropList::FindChild(const UTF8String& key) const {
  auto found = mEntries->map.find(key);
  if (found == mEntries->map.end() || !found->second.isChild) return nullptr;
  return found->second.child.get();
}

PropList& PropList::CreateChild(const UTF8String& key) {
  Node& node = mEntries->map[key];
  if (!node.isChild) {
    node.isChild = true;
    node.text.clear();
    node.child = std::make_unique<PropList>();
  }
  return *node.child;
}

bool PropList::GetString(const UTF8String& key, UTF8String& value) const {
  auto found = mEntries->map.find(key);
  if (found == mEntries->map.end() || found->second.isChild) return false;
  value = found->second.text;
  return true;
}

bool PropList::GetString(const UTF8String& key, UTF16String& value) const {
  auto found = mEntries->map.find(key);
  if (found == mEntries->map.end() || found->second.isChild) return false;
  value = UTF8to16(found->second.text);
  return true;
}

void PropList::SetString(const UTF8String& key, const UTF8String& value) {
  Node& node = mEntries->map[key];
  node.isChild = false;
  node.child.reset();
  node.text = value;
}

void PropList::SetString(const UTF8String& key, const UTF16String& value) {
  SetString(key, UTF16to8(value));
}

bool PropList::Contains(const UTF8String& key) const { return mEntries->map.count(key) != 0; }
bool PropList::Remove(const UTF8String& key) { return mEntries->map.erase(key) != 0; }
std::size_t PropList::Size() const { return mEntries->map.size(); }
bool PropList::Empty() const { return mEntries->map.empty(); }
void PropList::Clear() { mEntries->map.clear(); }

std::vector<UTF8String> PropList::Keys() const {
  std::vector<UTF8String> keys;
  keys.reserve(mEntries->map.size());
  for (const auto& entry : mEntries->map) keys.push_back(entry.first);
  return keys;
}

bool PropList::operator==(const PropList& other) const {
  const auto& a = mEntries->map;
  const auto& b = other.mEntries->map;
  if (a.size() != b.size()) return false;
  for (auto i = a.begin(), j = b.begin(); i != a.end(); ++i, ++j) {
    if (i->first != j->first || i->second.isChild != j->second.isChild) return false;
    if (i->second.isChild ? !(*i->second.child == *j->second.child)
                          : i->second.text != j->second.text) {
      return false;
    }
  }
  return true;
}

// ---------------------------------------------------------------------------
// Errors
// ---------------------------------------------------------------------------

PropListError::PropListError(Kind kind, std::uint32_t systemError, const std::string& message)
    : std::runtime_error(message), mKind(kind), mSystemError(systemError) {}
PropListError::~PropListError() = default;

namespace utils {

namespace {

constexpr int kMaxDepth = 1000;

[[noreturn]] void ThrowNotAPropList(const std::string& why) {
  throw PropListError(PropListError::Kind::kNotAPropList, 0, "not a property list: " + why);
}

[[noreturn]] void ThrowSystem(PropListError::Kind kind, const char* what, const UTF16String& path) {
  const std::uint32_t error = tov::platform::GetLastError();
  UTF8StringStream text;
  text << what << " \"" << UTF16to8(path) << "\" (system error " << error << ")";
  throw PropListError(kind, error, text.str());
}

// --- writing ------------------------------------------------------------------

// Decodes one UTF-8 sequence at `i`; returns the code point and advances `i`,
// or returns 0xFFFFFFFF for an ill-formed sequence (advancing past its first byte).
std::uint32_t DecodeUtf8(const UTF8String& text, std::size_t& i) {
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  const unsigned char lead = byte(i);
  if (lead < 0x80) {
    ++i;
    return lead;
  }
  std::size_t length = 0;
  std::uint32_t cp = 0;
  std::uint32_t minimum = 0;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2, cp = lead & 0x1Fu, minimum = 0x80;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3, cp = lead & 0x0Fu, minimum = 0x800;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4, cp = lead & 0x07u, minimum = 0x10000;
  } else {
    ++i;
    return 0xFFFFFFFFu;
  }
  if (text.size() - i < length) {
    ++i;
    return 0xFFFFFFFFu;
  }
  for (std::size_t k = 1; k < length; ++k) {
    const unsigned char next = byte(i + k);
    if ((next & 0xC0u) != 0x80u) {
      ++i;
      return 0xFFFFFFFFu;
    }
    cp = (cp << 6) | (next & 0x3Fu);
  }
  if (cp < minimum || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
    ++i;
    return 0xFFFFFFFFu;
  }
  i += length;
  return cp;
}

bool IsXmlChar(std::uint32_t cp) {
  if (cp == 0x9 || cp == 0xA || cp == 0xD) return true;
  if (cp < 0x20) return false;
  return cp != 0xFFFE && cp != 0xFFFF && cp != 0xFFFFFFFFu;
}

// Appends `text` as XML character data.
void AppendEscaped(std::string& out, const UTF8String& text) {
  std::size_t i = 0;
  while (i < text.size()) {
    const std::size_t start = i;
    const std::uint32_t cp = DecodeUtf8(text, i);
    if (!IsXmlChar(cp)) {
      out += "\xEF\xBF\xBD";  // U+FFFD
      continue;
    }
    switch (cp) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '\r':
        out += "&#13;";
        break;
      default:
        out.append(text, start, i - start);
        break;
    }
  }
}

void AppendDict(std::string& out, const PropList& list, int depth) {
  const std::string indent(static_cast<std::size_t>(depth), '\t');
  if (list.Empty()) {
    out += indent + "<dict/>\n";
    return;
  }
  out += indent + "<dict>\n";
  for (const UTF8String& key : list.Keys()) {
    out += indent + "\t<key>";
    AppendEscaped(out, key);
    out += "</key>\n";
    if (const PropList* child = list.FindChild(key)) {
      AppendDict(out, *child, depth + 1);
    } else {
      UTF8String value;
      list.GetString(key, value);
      out += indent + "\t<string>";
      AppendEscaped(out, value);
      out += "</string>\n";
    }
  }
  out += indent + "</dict>\n";
}

// --- reading ------------------------------------------------------------------

bool IsValidUtf8(const char* text) {
  const UTF8String bytes(text);
  std::size_t i = 0;
  while (i < bytes.size()) {
    if (DecodeUtf8(bytes, i) == 0xFFFFFFFFu) return false;
  }
  return true;
}

bool IsBlank(const char* text) {
  for (; *text != 0; ++text) {
    if (*text != ' ' && *text != '\t' && *text != '\n' && *text != '\r') return false;
  }
  return true;
}

// The text of a <key> or <string>: its character data and CDATA, whole.
UTF8String ElementText(const pugi::xml_node& element) {
  UTF8String text;
  for (const pugi::xml_node& part : element.children()) {
    switch (part.type()) {
      case pugi::node_pcdata:
      case pugi::node_cdata:
        text += part.value();
        break;
      case pugi::node_comment:
      case pugi::node_pi:
        break;
      default:
        ThrowNotAPropList(std::string("unexpected element <") + part.name() + "> in text");
    }
  }
  if (!IsValidUtf8(text.c_str())) ThrowNotAPropList("text is not UTF-8");
  return text;
}

void ReadDict(const pugi::xml_node& dict, PropList& list, int depth) {
  if (depth > kMaxDepth) ThrowNotAPropList("lists nested too deep");
  UTF8String key;
  bool haveKey = false;
  for (const pugi::xml_node& node : dict.children()) {
    switch (node.type()) {
      case pugi::node_comment:
      case pugi::node_pi:
        continue;
      case pugi::node_pcdata:
      case pugi::node_cdata:
        if (IsBlank(node.value())) continue;
        ThrowNotAPropList("text between the entries of a dict");
      case pugi::node_element:
        break;
      default:
        ThrowNotAPropList("unexpected node in a dict");
    }
    const std::string name = node.name();
    if (!haveKey) {
      if (name != "key") ThrowNotAPropList("<" + name + "> where a <key> belongs");
      key = ElementText(node);
      haveKey = true;
      continue;
    }
    if (name == "string") {
      list.SetString(key, ElementText(node));
    } else if (name == "dict") {
      list.Remove(key);
      ReadDict(node, list.CreateChild(key), depth + 1);
    } else {
      ThrowNotAPropList("value <" + name + "> is not kept by this reader");
    }
    haveKey = false;
  }
  if (haveKey) ThrowNotAPropList("a key without a value");
}

// --- files --------------------------------------------------------------------

std::string ReadWholeFile(const UTF16String& path) {
  using namespace tov::platform;
  FileHandle file =
      CreateFile(path, kGenericRead, kFileShareRead, kOpenExisting, kFileFlagSequentialScan);
  if (!file.IsOpen()) ThrowSystem(PropListError::Kind::kOpenFailed, "cannot open", path);
  std::string bytes;
  std::int64_t size = 0;
  if (GetFileSizeEx(file, &size) && size > 0 &&
      static_cast<std::uint64_t>(size) < std::numeric_limits<std::size_t>::max() / 2) {
    bytes.reserve(static_cast<std::size_t>(size));
  }
  char chunk[65536];
  for (;;) {
    std::uint32_t got = 0;
    if (!ReadFile(file, chunk, sizeof chunk, &got)) {
      const std::uint32_t error = GetLastError();
      CloseHandle(file);
      SetLastError(error);
      ThrowSystem(PropListError::Kind::kReadFailed, "cannot read", path);
    }
    if (got == 0) break;
    bytes.append(chunk, got);
  }
  CloseHandle(file);
  return bytes;
}

std::atomic<std::uint32_t> gSaveSequence{0};

}  // namespace

std::string FormatPropList(const PropList& list) {
  std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n";
  AppendDict(out, list, 0);
  out += "</plist>\n";
  return out;
}

void ParsePropList(const std::string& bytes, PropList& list) {
  if (bytes.empty()) ThrowNotAPropList("the file is empty");
  pugi::xml_document document;
  const pugi::xml_parse_result parsed =
      document.load_buffer(bytes.data(), bytes.size(),
                           pugi::parse_default | pugi::parse_ws_pcdata_single, pugi::encoding_utf8);
  if (!parsed) ThrowNotAPropList(parsed.description());
  const pugi::xml_node root = document.document_element();
  if (std::string(root.name()) != "plist") ThrowNotAPropList("the root element is not <plist>");
  pugi::xml_node dict;
  for (const pugi::xml_node& node : root.children()) {
    if (node.type() == pugi::node_comment || node.type() == pugi::node_pi) continue;
    if ((node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) &&
        IsBlank(node.value())) {
      continue;
    }
    if (node.type() != pugi::node_element || std::string(node.name()) != "dict" || dict) {
      ThrowNotAPropList("<plist> must hold exactly one <dict>");
    }
    dict = node;
  }
  if (!dict) ThrowNotAPropList("<plist> must hold exactly one <dict>");
  PropList loaded;
  ReadDict(dict, loaded, 1);
  list = std::move(loaded);
}

void LoadPropList(const UTF16String& path, PropList& list, std::uint32_t /*flags*/) {
  ParsePropList(ReadWholeFile(path), list);
}

void SavePropList(const UTF16String& path, const PropList& list) {
  using namespace tov::platform;
  const std::string text = FormatPropList(list);

  UTF16StringStream tempName;
  tempName << path << "." << GetCurrentProcessID() << "-" << ++gSaveSequence << ".tmp";
  const UTF16String temp = tempName.str();

  FileHandle file = CreateFile(temp, kGenericWrite, 0, kCreateNew, kFileAttributeNormal);
  if (!file.IsOpen()) ThrowSystem(PropListError::Kind::kWriteFailed, "cannot create", temp);
  const auto fail = [&](const char* what) {
    const std::uint32_t error = GetLastError();
    if (file.IsOpen()) CloseHandle(file);
    DeleteFile(temp);
    SetLastError(error);
    ThrowSystem(PropListError::Kind::kWriteFailed, what, path);
  };
  std::size_t done = 0;
  while (done < text.size()) {
    const std::size_t rest = text.size() - done;
    const auto count = static_cast<std::uint32_t>(rest < 0x40000000u ? rest : 0x40000000u);
    std::uint32_t written = 0;
    if (!WriteFile(file, text.data() + done, count, &written) || written == 0) {
      if (GetLastError() == 0) SetLastError(kErrorWriteFault);
      fail("cannot write");
    }
    done += written;
  }
  if (!FlushFileBuffers(file)) fail("cannot flush");
  const FileHandle closing = file;
  file = FileHandle();
  if (!CloseHandle(closing)) fail("cannot close");
  if (!MoveFileEx(temp, path, kMoveFileReplaceExisting | kMoveFileWriteThrough)) {
    fail("cannot replace");
  }
}

}  // namespace utils
}  // namespace basalt::proplist
