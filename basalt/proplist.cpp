// basalt property lists: the tree, its XML text, and atomic files.
//
// The XML text is written by hand (it is small and its escaping must be
// exact) and read with pugixml, which stays private to this file.
#include "basalt/proplist.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "basalt/string_stream.h"
#include "basalt/thread.h"
#include "basalt/utf.h"
#include "platform/error.h"
#include "platform/file.h"
#include "platform/file_replace.h"
#include "platform/system.h"

namespace basalt::proplist {

// ---------------------------------------------------------------------------
// The tree
// ---------------------------------------------------------------------------
//
// A list keeps its entries in a pool whose slots do not move when keys come
// and go (a removed entry's slot is refilled by the last one), the pool
// indices in key byte order beside it (unless the pool itself is in key
// order, as it is when a list is loaded), and, from kIndexFrom entries on, an
// open-addressing hash table from key to pool index. So a lookup costs one
// hash and usually one key comparison whatever the size, keys come out in
// byte order without sorting, and an entry costs its key and text bytes (in
// one allocation) and a few words: a registry of 100,000 cache folders fits in
// about 25 MB.

namespace {

[[noreturn]] void ThrowTooLong() { throw std::length_error("property-list text of 4 GiB or more"); }

std::uint32_t Size32(std::size_t size) {
  if (size > std::numeric_limits<std::uint32_t>::max()) ThrowTooLong();
  return static_cast<std::uint32_t>(size);
}

}  // namespace

// One key with its value: a text, or a child list. The key and the text share
// one allocation.
class PropList::Entry {
 public:
  explicit Entry(std::string_view key) { Assign(key, {}); }
  Entry(const Entry& other)
      : mKeySize(other.mKeySize),
        mTextSize(other.mTextSize),
        mChild(other.mChild ? std::make_unique<PropList>(*other.mChild) : nullptr) {
    const std::size_t bytes = std::size_t{mKeySize} + mTextSize;
    if (bytes != 0) {
      mBytes = std::make_unique_for_overwrite<char[]>(bytes);
      std::memcpy(mBytes.get(), other.mBytes.get(), bytes);
    }
  }
  Entry(Entry&&) noexcept = default;
  Entry& operator=(Entry&&) noexcept = default;

  std::string_view Key() const { return {mBytes.get(), mKeySize}; }
  std::string_view Text() const { return {mBytes.get() + mKeySize, mTextSize}; }
  PropList* Child() const { return mChild.get(); }

  void SetText(std::string_view text) {
    Assign(Key(), text);
    mChild.reset();
  }
  PropList& MakeChild() {
    if (!mChild) {
      if (mTextSize != 0) Assign(Key(), {});
      mChild = std::make_unique<PropList>();
    }
    return *mChild;
  }

 private:
  void Assign(std::string_view key, std::string_view text) {
    const std::uint32_t keySize = Size32(key.size());
    const std::uint32_t textSize = Size32(text.size());
    std::unique_ptr<char[]> bytes;
    if (std::size_t{keySize} + textSize != 0) {
      bytes = std::make_unique_for_overwrite<char[]>(std::size_t{keySize} + textSize);
      if (keySize != 0) std::memcpy(bytes.get(), key.data(), keySize);
      if (textSize != 0) std::memcpy(bytes.get() + keySize, text.data(), textSize);
    }
    mBytes = std::move(bytes);
    mKeySize = keySize;
    mTextSize = textSize;
  }

  std::unique_ptr<char[]> mBytes;
  std::uint32_t mKeySize = 0;
  std::uint32_t mTextSize = 0;
  std::unique_ptr<PropList> mChild;
};

struct PropList::Entries {
  static constexpr std::size_t kIndexFrom = 8;
  static constexpr std::uint32_t kEmpty = 0xFFFFFFFFu;

  // What a list needs beyond its pool once it is out of key order or large:
  // kept apart so that the many small lists (a child holding one text) carry
  // one pointer for it.
  struct Extra {
    std::vector<std::uint32_t> order;  // pool indices in key order; empty: the pool's own order
    std::vector<std::uint32_t> slots;  // hash table of pool indices; empty below kIndexFrom
  };

  std::vector<Entry> pool;
  std::unique_ptr<Extra> extra;

  Entries() = default;
  Entries(const Entries& other)
      : pool(other.pool), extra(other.extra ? std::make_unique<Extra>(*other.extra) : nullptr) {}

  static std::size_t Hash(std::string_view key) { return std::hash<std::string_view>{}(key); }

  bool InPoolOrder() const { return !extra || extra->order.empty(); }
  // The pool index of the i-th key in byte order.
  std::uint32_t OrderAt(std::size_t i) const {
    return InPoolOrder() ? static_cast<std::uint32_t>(i) : extra->order[i];
  }
  Extra& GetExtra() {
    if (!extra) extra = std::make_unique<Extra>();
    return *extra;
  }
  // Writes the key order out, for a change that breaks the pool's own.
  std::vector<std::uint32_t>& Order() {
    Extra& more = GetExtra();
    if (more.order.empty()) {
      more.order.resize(pool.size());
      for (std::size_t i = 0; i < pool.size(); ++i) more.order[i] = static_cast<std::uint32_t>(i);
    }
    return more.order;
  }

  // The pool index of `key`, or kEmpty.
  std::uint32_t Find(std::string_view key) const {
    if (!extra || extra->slots.empty()) {
      for (std::size_t i = 0; i < pool.size(); ++i) {
        if (pool[i].Key() == key) return static_cast<std::uint32_t>(i);
      }
      return kEmpty;
    }
    const std::vector<std::uint32_t>& slots = extra->slots;
    const std::size_t mask = slots.size() - 1;
    for (std::size_t at = Hash(key) & mask;; at = (at + 1) & mask) {
      const std::uint32_t id = slots[at];
      if (id == kEmpty || pool[id].Key() == key) return id;
    }
  }

  // The place of `key` in the written-out key order.
  std::size_t OrderPosition(std::string_view key) {
    const std::vector<std::uint32_t>& order = Order();
    const auto at =
        std::lower_bound(order.begin(), order.end(), key,
                         [this](std::uint32_t i, std::string_view k) { return pool[i].Key() < k; });
    return static_cast<std::size_t>(at - order.begin());
  }

  void IndexInsert(std::uint32_t id) {
    std::vector<std::uint32_t>& slots = extra->slots;
    const std::size_t mask = slots.size() - 1;
    std::size_t at = Hash(pool[id].Key()) & mask;
    while (slots[at] != kEmpty) at = (at + 1) & mask;
    slots[at] = id;
  }

  void Reindex() {
    if (pool.size() < kIndexFrom) {
      if (extra) {
        extra->slots.clear();
        if (extra->order.empty()) extra.reset();
      }
      return;
    }
    std::size_t size = 16;
    while (size < pool.size() * 2) size *= 2;
    GetExtra().slots.assign(size, kEmpty);
    for (std::size_t i = 0; i < pool.size(); ++i) IndexInsert(static_cast<std::uint32_t>(i));
  }

  // The entry of `key`, added (holding an empty text) when absent.
  Entry& Obtain(std::string_view key) {
    const std::uint32_t found = Find(key);
    if (found != kEmpty) return pool[found];
    if (pool.size() >= kEmpty - 1) ThrowTooLong();
    const auto id = static_cast<std::uint32_t>(pool.size());
    // Lists are mostly built in key order (loading a saved file): the pool's
    // own order then stays the key order.
    const bool last = pool.empty() || pool[OrderAt(pool.size() - 1)].Key() < key;
    if (!last) {
      const std::size_t at = OrderPosition(key);
      pool.emplace_back(key);
      extra->order.insert(extra->order.begin() + static_cast<std::ptrdiff_t>(at), id);
    } else {
      pool.emplace_back(key);
      if (!InPoolOrder()) extra->order.push_back(id);
    }
    if (pool.size() < kIndexFrom) return pool[id];
    if (!extra || extra->slots.empty() || pool.size() * 2 > extra->slots.size()) {
      Reindex();
    } else {
      IndexInsert(id);
    }
    return pool[id];
  }

  bool Remove(std::string_view key) {
    const std::uint32_t id = Find(key);
    if (id == kEmpty) return false;
    const auto lastId = static_cast<std::uint32_t>(pool.size() - 1);
    if (InPoolOrder() && id == lastId) {
      pool.pop_back();
      Reindex();
      return true;
    }
    std::vector<std::uint32_t>& order = Order();
    order.erase(order.begin() + static_cast<std::ptrdiff_t>(OrderPosition(key)));
    if (id != lastId) {
      // The last entry of the pool takes the freed place.
      const std::size_t lastAt = OrderPosition(pool[lastId].Key());
      pool[id] = std::move(pool[lastId]);
      order[lastAt] = id;
    }
    pool.pop_back();
    Reindex();
    return true;
  }

  void Clear() {
    pool.clear();
    extra.reset();
  }
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
    mEntries->Clear();
    mEntries.swap(other.mEntries);
  }
  return *this;
}
PropList::~PropList() = default;

PropList* PropList::FindChild(const UTF8String& key) {
  const std::uint32_t id = mEntries->Find(key);
  return id == Entries::kEmpty ? nullptr : mEntries->pool[id].Child();
}

const PropList* PropList::FindChild(const UTF8String& key) const {
  const std::uint32_t id = mEntries->Find(key);
  return id == Entries::kEmpty ? nullptr : mEntries->pool[id].Child();
}

PropList& PropList::CreateChild(const UTF8String& key) { return mEntries->Obtain(key).MakeChild(); }

bool PropList::GetString(const UTF8String& key, UTF8String& value) const {
  const std::uint32_t id = mEntries->Find(key);
  if (id == Entries::kEmpty || mEntries->pool[id].Child() != nullptr) return false;
  value = mEntries->pool[id].Text();
  return true;
}

bool PropList::GetString(const UTF8String& key, UTF16String& value) const {
  const std::uint32_t id = mEntries->Find(key);
  if (id == Entries::kEmpty || mEntries->pool[id].Child() != nullptr) return false;
  value = UTF8to16(mEntries->pool[id].Text());
  return true;
}

void PropList::SetString(const UTF8String& key, const UTF8String& value) {
  mEntries->Obtain(key).SetText(value);
}

void PropList::SetString(const UTF8String& key, const UTF16String& value) {
  SetString(key, UTF16to8(value));
}

bool PropList::Contains(const UTF8String& key) const {
  return mEntries->Find(key) != Entries::kEmpty;
}
bool PropList::Remove(const UTF8String& key) { return mEntries->Remove(key); }
std::size_t PropList::Size() const { return mEntries->pool.size(); }
bool PropList::Empty() const { return mEntries->pool.empty(); }
void PropList::Clear() { mEntries->Clear(); }

std::vector<UTF8String> PropList::Keys() const {
  std::vector<UTF8String> keys;
  keys.reserve(mEntries->pool.size());
  for (std::size_t i = 0; i < mEntries->pool.size(); ++i) {
    keys.emplace_back(mEntries->pool[mEntries->OrderAt(i)].Key());
  }
  return keys;
}

bool PropList::operator==(const PropList& other) const {
  const Entries& a = *mEntries;
  const Entries& b = *other.mEntries;
  if (a.pool.size() != b.pool.size()) return false;
  for (std::size_t i = 0; i < a.pool.size(); ++i) {
    const Entry& x = a.pool[a.OrderAt(i)];
    const Entry& y = b.pool[b.OrderAt(i)];
    if (x.Key() != y.Key() || (x.Child() == nullptr) != (y.Child() == nullptr)) return false;
    if (x.Child() != nullptr ? !(*x.Child() == *y.Child()) : x.Text() != y.Text()) return false;
  }
  return true;
}

// ---------------------------------------------------------------------------
// Errors
// ---------------------------------------------------------------------------

PropListError::PropListError(Kind kind, std::uint32_t systemError, const std::string& message)
    : std::runtime_error(message), mKind(kind), mSystemError(systemError) {}
PropListError::~PropListError() = default;

// The file code's way into a list: entries in key order without copies, and
// values stored straight from the parser's text.
struct PropListAccess {
  template <class Visit>
  static void ForEach(const PropList& list, Visit&& visit) {
    const PropList::Entries& entries = *list.mEntries;
    for (std::size_t i = 0; i < entries.pool.size(); ++i) {
      const PropList::Entry& entry = entries.pool[entries.OrderAt(i)];
      visit(entry.Key(), entry.Child(), entry.Text());
    }
  }
  static void SetText(PropList& list, std::string_view key, std::string_view text) {
    list.mEntries->Obtain(key).SetText(text);
  }
  // A new empty child list under `key`, replacing what the key held.
  static PropList& NewChild(PropList& list, std::string_view key) {
    PropList::Entry& entry = list.mEntries->Obtain(key);
    entry.SetText({});
    return entry.MakeChild();
  }
};

namespace utils {

namespace {

constexpr int kMaxDepth = 1000;

[[noreturn]] void ThrowNotAPropList(const std::string& why) {
  throw PropListError(PropListError::Kind::kNotAPropList, 0, "not a property list: " + why);
}

[[noreturn]] void ThrowSystem(PropListError::Kind kind, const char* what, const UTF16String& path,
                              std::uint32_t error) {
  UTF8StringStream text;
  text << what << " \"" << UTF16to8(path) << "\" (system error " << error << ")";
  throw PropListError(kind, error, text.str());
}

// --- writing ------------------------------------------------------------------

// Decodes one UTF-8 sequence at `i`; returns the code point and advances `i`,
// or returns 0xFFFFFFFF for an ill-formed sequence (advancing past its first byte).
std::uint32_t DecodeUtf8(std::string_view text, std::size_t& i) {
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

// Bytes copied as they are: printable ASCII other than the three XML
// specials, tab and line feed. Everything else takes the careful path.
constexpr std::array<bool, 256> kPlainBytes = [] {
  std::array<bool, 256> plain{};
  for (int c = 0x20; c < 0x7F; ++c) plain[static_cast<std::size_t>(c)] = true;
  plain['&'] = plain['<'] = plain['>'] = false;
  plain['\t'] = plain['\n'] = true;
  return plain;
}();

// Appends `text` as XML character data.
void AppendEscaped(std::string& out, std::string_view text) {
  std::size_t i = 0;
  while (i < text.size()) {
    std::size_t run = i;
    while (run < text.size() && kPlainBytes[static_cast<unsigned char>(text[run])]) ++run;
    out.append(text.data() + i, run - i);
    i = run;
    if (i == text.size()) break;
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
        out.append(text.data() + start, i - start);
        break;
    }
  }
}

void AppendDict(std::string& out, const PropList& list, std::size_t depth) {
  if (list.Empty()) {
    out.append(depth, '\t');
    out += "<dict/>\n";
    return;
  }
  out.append(depth, '\t');
  out += "<dict>\n";
  PropListAccess::ForEach(list,
                          [&](std::string_view key, const PropList* child, std::string_view text) {
                            out.append(depth + 1, '\t');
                            out += "<key>";
                            AppendEscaped(out, key);
                            out += "</key>\n";
                            if (child != nullptr) {
                              AppendDict(out, *child, depth + 1);
                            } else {
                              out.append(depth + 1, '\t');
                              out += "<string>";
                              AppendEscaped(out, text);
                              out += "</string>\n";
                            }
                          });
  out.append(depth, '\t');
  out += "</dict>\n";
}

// --- reading ------------------------------------------------------------------

bool IsValidUtf8(std::string_view bytes) {
  std::size_t i = 0;
  while (i < bytes.size()) {
    if (static_cast<unsigned char>(bytes[i]) < 0x80) {
      ++i;
      continue;
    }
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
// `scratch` holds the text when it comes in several pieces.
std::string_view ElementText(const pugi::xml_node& element, std::string& scratch) {
  const pugi::xml_node first = element.first_child();
  std::string_view text;
  if (!first) {
    text = {};
  } else if (!first.next_sibling() &&
             (first.type() == pugi::node_pcdata || first.type() == pugi::node_cdata)) {
    text = first.value();
  } else {
    scratch.clear();
    for (const pugi::xml_node& part : element.children()) {
      switch (part.type()) {
        case pugi::node_pcdata:
        case pugi::node_cdata:
          scratch += part.value();
          break;
        case pugi::node_comment:
        case pugi::node_pi:
          break;
        default:
          ThrowNotAPropList(std::string("unexpected element <") + part.name() + "> in text");
      }
    }
    text = scratch;
  }
  if (!IsValidUtf8(text)) ThrowNotAPropList("text is not UTF-8");
  return text;
}

void ReadDict(const pugi::xml_node& dict, PropList& list, int depth) {
  if (depth > kMaxDepth) ThrowNotAPropList("lists nested too deep");
  std::string keyScratch;
  std::string textScratch;
  std::string_view key;
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
    const std::string_view name = node.name();
    if (!haveKey) {
      if (name != "key")
        ThrowNotAPropList(std::string("<").append(name).append("> where a <key> belongs"));
      key = ElementText(node, keyScratch);
      haveKey = true;
      continue;
    }
    if (name == "string") {
      PropListAccess::SetText(list, key, ElementText(node, textScratch));
    } else if (name == "dict") {
      ReadDict(node, PropListAccess::NewChild(list, key), depth + 1);
    } else {
      ThrowNotAPropList(std::string("value <").append(name).append("> is not kept by this reader"));
    }
    haveKey = false;
  }
  if (haveKey) ThrowNotAPropList("a key without a value");
}

// --- files --------------------------------------------------------------------

std::string ReadWholeFile(const UTF16String& path) {
  using namespace tovimpl::platform;
  // Shared for deletion too, so that on Windows another process can replace
  // the file while it is read.
  const Result<OpenedFile> opened = OpenFile(path, kGenericRead, kFileShareRead | kFileShareDelete,
                                             kOpenExisting, kFileFlagSequentialScan);
  if (!opened) ThrowSystem(PropListError::Kind::kOpenFailed, "cannot open", path, opened.Error());
  const FileHandle file = opened->handle;
  std::string bytes;
  if (opened->size > 0 && opened->size < std::numeric_limits<std::size_t>::max() / 2) {
    bytes.reserve(static_cast<std::size_t>(opened->size));
  }
  char chunk[65536];
  std::uint64_t at = 0;
  for (;;) {
    const Result<std::uint32_t> got = ReadAt(file, at, chunk, sizeof chunk);
    if (!got) {
      (void)CloseFile(file);
      ThrowSystem(PropListError::Kind::kReadFailed, "cannot read", path, got.Error());
    }
    if (*got == 0) break;
    bytes.append(chunk, *got);
    at += *got;
  }
  (void)CloseFile(file);
  return bytes;
}

std::atomic<std::uint32_t> gSaveSequence{0};

}  // namespace

bool IsStorableText(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size()) {
    if (kPlainBytes[static_cast<unsigned char>(text[i])]) {
      ++i;
      continue;
    }
    if (!IsXmlChar(DecodeUtf8(text, i))) return false;
  }
  return true;
}

std::string FormatPropList(const PropList& list) {
  std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n";
  AppendDict(out, list, 0);
  out += "</plist>\n";
  return out;
}

namespace {

// Parses `bytes` in place (pugixml keeps its text in the buffer it is given).
void ParseInPlace(std::string& bytes, PropList& list) {
  if (bytes.empty()) ThrowNotAPropList("the file is empty");
  pugi::xml_document document;
  const pugi::xml_parse_result parsed = document.load_buffer_inplace(
      bytes.data(), bytes.size(), pugi::parse_default | pugi::parse_ws_pcdata_single,
      pugi::encoding_utf8);
  if (!parsed) ThrowNotAPropList(parsed.description());
  const pugi::xml_node root = document.document_element();
  if (std::string_view(root.name()) != "plist") {
    ThrowNotAPropList("the root element is not <plist>");
  }
  pugi::xml_node dict;
  for (const pugi::xml_node& node : root.children()) {
    if (node.type() == pugi::node_comment || node.type() == pugi::node_pi) continue;
    if ((node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) &&
        IsBlank(node.value())) {
      continue;
    }
    if (node.type() != pugi::node_element || std::string_view(node.name()) != "dict" || dict) {
      ThrowNotAPropList("<plist> must hold exactly one <dict>");
    }
    dict = node;
  }
  if (!dict) ThrowNotAPropList("<plist> must hold exactly one <dict>");
  PropList loaded;
  ReadDict(dict, loaded, 1);
  list = std::move(loaded);
}

}  // namespace

void ParsePropList(const std::string& bytes, PropList& list) {
  std::string copy = bytes;
  ParseInPlace(copy, list);
}

void LoadPropList(const UTF16String& path, PropList& list, std::uint32_t /*flags*/) {
  // Parsing takes about three times the file's size for a moment; after a
  // large file, that memory goes back to the system rather than staying
  // resident for the rest of the process.
  constexpr std::size_t kLargeFile = std::size_t{4} << 20;
  std::size_t size = 0;
  {
    std::string bytes = ReadWholeFile(path);
    size = bytes.size();
    try {
      ParseInPlace(bytes, list);
    } catch (...) {
      bytes = std::string();
      if (size >= kLargeFile) tovimpl::platform::ReleaseFreedMemory();
      throw;
    }
  }
  if (size >= kLargeFile) tovimpl::platform::ReleaseFreedMemory();
}

void SavePropList(const UTF16String& path, const PropList& list) {
  using namespace tovimpl::platform;
  const std::string text = FormatPropList(list);

  UTF16StringStream tempName;
  tempName << path << "." << GetCurrentProcessID() << "-" << ++gSaveSequence << ".tmp";
  const UTF16String temp = tempName.str();

  const Result<OpenedFile> created =
      OpenFile(temp, kGenericWrite, 0, kCreateNew, kFileAttributeNormal);
  if (!created) {
    ThrowSystem(PropListError::Kind::kWriteFailed, "cannot create", temp, created.Error());
  }
  FileHandle file = created->handle;
  const auto fail = [&](const char* what, std::uint32_t error) {
    if (file.IsOpen()) (void)CloseFile(file);
    (void)RemoveFile(temp);
    ThrowSystem(PropListError::Kind::kWriteFailed, what, path, error);
  };
  std::size_t done = 0;
  while (done < text.size()) {
    const std::size_t rest = text.size() - done;
    const auto count = static_cast<std::uint32_t>(rest < 0x40000000u ? rest : 0x40000000u);
    const Result<std::uint32_t> written = WriteAt(file, done, text.data() + done, count);
    if (!written) fail("cannot write", written.Error());
    if (*written == 0) fail("cannot write", kErrorWriteFault);
    done += *written;
  }
  if (const Status flushed = FlushFile(file); !flushed) fail("cannot flush", flushed.Error());
  const FileHandle closing = file;
  file = FileHandle();
  if (const Status closed = CloseFile(closing); !closed) fail("cannot close", closed.Error());
  // On Windows a file cannot be replaced while anything has it open, and
  // programs outside the library (a virus scanner, the search indexer, a
  // backup) open files for a moment: the replace is tried again for about
  // a second before the save is given up.
  Status renamed = RenameFile(temp, path, kRenameReplaceExisting | kRenameWriteThrough);
  for (int wait = 1;
       !renamed && wait <= 10 &&
       (renamed.Error() == kErrorAccessDenied || renamed.Error() == kErrorSharingViolation);
       ++wait) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20 * wait));
    renamed = RenameFile(temp, path, kRenameReplaceExisting | kRenameWriteThrough);
  }
  if (!renamed) fail("cannot replace", renamed.Error());
}

}  // namespace utils
}  // namespace basalt::proplist
