// basalt property lists: a tree of text values and child lists, keyed by
// UTF-8 names, saved as an XML property list.
//
//   basalt::proplist::PropList settings;
//   settings.SetString("Name", u"Clip 1"_u16);
//   basalt::proplist::PropList& cache = settings.CreateChild("Cache");
//   cache.SetString("CacheFile", u"C:\\Cache\\TOVCache1_2_3.vpc"_u16);
//   basalt::proplist::utils::SavePropList(u"C:\\Cache\\list.xml"_u16, settings);
//
//   basalt::proplist::PropList again;
//   basalt::proplist::utils::LoadPropList(u"C:\\Cache\\list.xml"_u16, again, 0);
//   UTF16String file;
//   again.FindChild("Cache")->GetString("CacheFile", file);   // true
//
// Keys are compared byte for byte (case-sensitive, no normalisation); each key
// holds either one text value or one child list. Values are kept as UTF-8.
//
// The file is a property list of version 1.0, encoded in UTF-8:
//
//   <?xml version="1.0" encoding="UTF-8"?>
//   <plist version="1.0">
//   <dict>
//   	<key>Cache</key>
//   	<dict>
//   		<key>CacheFile</key>
//   		<string>C:\Cache\TOVCache1_2_3.vpc</string>
//   	</dict>
//   	<key>Name</key>
//   	<string>Clip 1</string>
//   </dict>
//   </plist>
//
// Keys are written in byte order. Text is escaped as XML requires ('&', '<',
// '>' as entities, a carriage return as "&#13;" so it survives the reader's
// line-end normalisation), so every key and value made of characters that
// XML 1.0 allows comes back unchanged: tab, line feed, carriage return, and
// every Unicode scalar value from U+0020 up except U+FFFE and U+FFFF.
// Text XML cannot carry — NUL and the other control characters U+0001–U+0008,
// U+000B, U+000C, U+000E–U+001F, and U+FFFE, U+FFFF — is written as U+FFFD
// REPLACEMENT CHARACTER, as is any byte sequence that is not valid UTF-8 (an
// unpaired surrogate in a UTF-16 value has already become U+FFFD on the way
// in). So such text loads back different; the list in memory is never changed
// by saving.
//
// Thread safety: a PropList is a plain value; concurrent reads are safe,
// anything concurrent with a change is not. LoadPropList and SavePropList
// touch only the list and the files named.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "basalt/strings.h"
#include "tovfoundation/export.h"

namespace basalt::proplist {

// A property list. Copying copies the whole tree; moving leaves the source
// empty.
class TOV_API PropList {
 public:
  PropList();
  // Copies the whole tree.
  PropList(const PropList& other);
  // Takes the other's tree; the other is left empty.
  PropList(PropList&& other) noexcept;
  // Replaces the tree with a copy of the other's.
  PropList& operator=(const PropList& other);
  // Replaces the tree with the other's; the other is left empty.
  PropList& operator=(PropList&& other) noexcept;
  virtual ~PropList();

  // --- child lists ---------------------------------------------------------
  // The child list under `key`, or null when the key is absent or holds a
  // text value. The pointer stays valid until that key is changed or removed
  // or the list is cleared, assigned or destroyed.
  PropList* FindChild(const UTF8String& key);
  const PropList* FindChild(const UTF8String& key) const;
  // The child list under `key`: the existing one when the key already holds a
  // child list; otherwise a new empty one, which replaces a text value under
  // the key. Validity of the reference as for FindChild.
  PropList& CreateChild(const UTF8String& key);

  // --- text values -----------------------------------------------------------
  // Reads the text under `key` into `value` and returns true; returns false
  // and leaves `value` alone when the key is absent or holds a child list.
  bool GetString(const UTF8String& key, UTF16String& value) const;
  bool GetString(const UTF8String& key, UTF8String& value) const;
  // Stores text under `key`, replacing whatever the key held (a child list
  // included). UTF-16 is converted to UTF-8 (an unpaired surrogate becomes
  // U+FFFD); UTF-8 is stored as given.
  void SetString(const UTF8String& key, const UTF16String& value);
  void SetString(const UTF8String& key, const UTF8String& value);

  // --- the list as a whole ---------------------------------------------------
  // True when `key` holds anything.
  bool Contains(const UTF8String& key) const;
  // Removes `key` and what it held; false when it was absent.
  bool Remove(const UTF8String& key);
  // The number of keys at this level.
  std::size_t Size() const;
  // True when there is no key at this level.
  bool Empty() const;
  // The keys at this level, in byte order.
  std::vector<UTF8String> Keys() const;
  // Removes everything.
  void Clear();

  // Equal when both hold the same keys with equal values and equal children.
  bool operator==(const PropList& other) const;

 private:
  class Entry;
  struct Entries;
  friend struct PropListAccess;
  std::unique_ptr<Entries> mEntries;
};

// What went wrong with a property-list file. Thrown by LoadPropList and
// SavePropList; what() says the same in words.
class TOV_API PropListError : public std::runtime_error {
 public:
  // What went wrong.
  enum class Kind {
    kOpenFailed,    // the file could not be opened (missing, no access, a folder)
    kReadFailed,    // reading it failed
    kNotAPropList,  // empty, truncated, malformed, or not a property list
    kWriteFailed,   // the new file could not be written, flushed or put in place
  };
  // An error of `kind`, with the Windows error code of the failed call (0 for
  // none) and the text what() returns.
  PropListError(Kind kind, std::uint32_t systemError, const std::string& message);
  ~PropListError() override;
  // What went wrong.
  Kind GetKind() const noexcept { return mKind; }
  // The Windows error code of the failed system call; 0 for kNotAPropList.
  std::uint32_t GetSystemError() const noexcept { return mSystemError; }

 private:
  Kind mKind;
  std::uint32_t mSystemError;
};

namespace utils {

// Reads the property list in the file at `path` (a library path) and replaces
// `list`'s contents with it. `flags` is reserved: pass 0 (every value reads
// the same way today).
//
// Reads: a <plist> root (any version attribute) holding one <dict>; inside a
// dict, <key> elements each followed by a <string> or a <dict>. A <string>'s
// text is taken whole (character data and CDATA alike, whitespace kept). A
// key that appears twice keeps its last value. Comments, processing
// instructions and a document type are ignored.
//
// Throws PropListError, and leaves `list` unchanged, when:
//   - the file cannot be opened or read (kOpenFailed, kReadFailed);
//   - it is empty, truncated, not well-formed XML, not UTF-8 (or ASCII) text,
//     its root is not <plist> with a <dict>, a key lacks its value, or it holds
//     value types this reader does not keep (<array>, <integer>, <real>, <true>,
//     <false>, <date>, <data>), or lists nested more than 1000 deep
//     (kNotAPropList).
// Never crashes on any input.
TOV_API void LoadPropList(const UTF16String& path, PropList& list, std::uint32_t flags);

// Writes `list` to the file at `path`, atomically: the text goes to a new
// sibling file named after `path` and ending in ".tmp" (path + "." + process
// and sequence numbers + ".tmp"), is flushed to the storage device, and the
// temporary file is then renamed over `path`. At every moment `path` holds
// either the previous complete list or the new complete one, even when the
// process is killed or the disk fills up. On failure the temporary file is
// deleted (a process killed mid-save can leave it behind) and PropListError
// (kWriteFailed, with the system's error) is thrown; `path` is unchanged.
// On Windows a file that any handle holds open cannot be replaced: a rename
// refused with 5 or 32 is tried again ten times, 20, 40, ... 200 ms apart
// (about a second in all), before the save fails with that error.
TOV_API void SavePropList(const UTF16String& path, const PropList& list);

// True when SavePropList writes `text` (a key or a value, UTF-8) so that
// LoadPropList gives it back unchanged: valid UTF-8 made only of characters
// XML 1.0 carries (tab, line feed, carriage return, and U+0020 and up except
// U+FFFE and U+FFFF). "a\tb" ⇒ true; "a\x01b" ⇒ false; "" ⇒ true.
TOV_API bool IsStorableText(std::string_view text);

// The XML text SavePropList writes, and the parser LoadPropList uses, on
// bytes in memory. ParsePropList throws PropListError(kNotAPropList).
TOV_API std::string FormatPropList(const PropList& list);
// Replaces `list`'s contents with the property list in `bytes`.
TOV_API void ParsePropList(const std::string& bytes, PropList& list);

}  // namespace utils
}  // namespace basalt::proplist
