// The metadata list and the (deliberately empty) folder metadata search.
#include <cstdint>
#include <mutex>

#include "basalt/utf.h"
#include "tovfoundation/foundation.h"

namespace tovimpl {

const UTF8String kMetadataKeyDateModified = "DateModified";

// ---------------------------------------------------------------------------
// MetadataList
// ---------------------------------------------------------------------------

struct MetadataList::State {
  bool dirty = false;
  basalt::proplist::PropList* list = nullptr;  // not owned
  std::recursive_mutex lock;
};

MetadataList::MetadataList(basalt::proplist::PropList* list) : mState(new State) {
  mState->list = list;
  std::lock_guard<std::recursive_mutex> hold(mState->lock);
}

MetadataList::~MetadataList() {
  { std::lock_guard<std::recursive_mutex> hold(mState->lock); }
  delete mState;
}

std::uint32_t MetadataList::GetValue(const UTF16String& key, UTF16String& value) const {
  std::lock_guard<std::recursive_mutex> hold(mState->lock);
  if (mState->list == nullptr) return TOV::kErrNoMetadata;
  return mState->list->GetString(basalt::UTF16to8(key), value) ? 0 : TOV::kErrNoMetadata;
}

std::uint32_t MetadataList::SetValue(const UTF16String& key, const UTF16String& value) {
  std::lock_guard<std::recursive_mutex> hold(mState->lock);
  if (mState->list == nullptr) return TOV::kErrNoMetadata;
  mState->list->SetString(basalt::UTF16to8(key), value);
  mState->dirty = true;
  return 0;
}

bool MetadataList::IsDirty() const {
  std::lock_guard<std::recursive_mutex> hold(mState->lock);
  return mState->dirty;
}

// ---------------------------------------------------------------------------
// FolderMetadataSearch
// ---------------------------------------------------------------------------

class FolderMetadataSearch::Implementation {
 public:
  Implementation(const UTF16String& folder, const UTF16String& second, bool flag,
                 FolderMetadataGeneratorFunc& generator)
      : mFolder(folder), mSecond(second), mFlag(flag ? 1 : 0), mGenerator(generator) {}

 private:
  UTF16String mFolder;
  UTF16String mSecond;
  unsigned char mFlag;
  FolderMetadataGeneratorFunc& mGenerator;
};

FolderMetadataSearch::FolderMetadataSearch(const UTF16String& folder, const UTF16String& second,
                                           bool flag, FolderMetadataGeneratorFunc& generator)
    : mImpl(new Implementation(folder, second, flag, generator)) {}

FolderMetadataSearch::~FolderMetadataSearch() {
  delete mImpl;
  mImpl = nullptr;
}

std::uint32_t FolderMetadataSearch::GetFileList(FileFilterFunc& /*filter*/,
                                                std::vector<UTF16String>& /*files*/) {
  return 0;
}

std::uint32_t FolderMetadataSearch::GetFileList(const UTF16String& /*folder*/,
                                                FileFilterFunc& /*filter*/,
                                                std::vector<UTF16String>& /*files*/) {
  return 0;
}

}  // namespace tovimpl
