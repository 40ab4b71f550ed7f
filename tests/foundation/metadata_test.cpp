// The metadata list and the empty folder metadata search.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "basalt/utf.h"
#include "tovfoundation/foundation.h"

namespace {

using namespace basalt::literals;
using basalt::proplist::PropList;

TEST(MetadataList, NullListAnswersNoMetadataAndStaysClean) {
  tovimpl::MetadataList meta(nullptr);
  UTF16String value = u"keep"_u16;
  EXPECT_EQ(meta.GetValue(u"Title"_u16, value), TOV::kErrNoMetadata);
  EXPECT_EQ(value, u"keep"_u16);
  EXPECT_EQ(meta.SetValue(u"Title"_u16, u"x"_u16), TOV::kErrNoMetadata);
  EXPECT_FALSE(meta.IsDirty());
  EXPECT_EQ(meta.GetValue(u"Title"_u16, value), TOV::kErrNoMetadata);
}

TEST(MetadataList, StartsClean) {
  PropList list;
  tovimpl::MetadataList meta(&list);
  EXPECT_FALSE(meta.IsDirty());
}

TEST(MetadataList, SetThenGetReturnsValueAndDirtyStaysTrue) {
  PropList list;
  tovimpl::MetadataList meta(&list);
  EXPECT_EQ(meta.SetValue(u"Title"_u16, u"Clip ✓"_u16), 0u);
  EXPECT_TRUE(meta.IsDirty());
  UTF16String value;
  EXPECT_EQ(meta.GetValue(u"Title"_u16, value), 0u);
  EXPECT_EQ(value, u"Clip ✓"_u16);
  EXPECT_TRUE(meta.IsDirty());
  EXPECT_TRUE(meta.IsDirty());
  // The value went into the backing list under the UTF-8 key.
  UTF8String stored;
  EXPECT_TRUE(list.GetString("Title", stored));
  EXPECT_EQ(stored, "Clip \xE2\x9C\x93");
}

TEST(MetadataList, AbsentKeyGivesNoMetadataAndLeavesOutputUnchanged) {
  PropList list;
  list.SetString("Other", u"1"_u16);
  tovimpl::MetadataList meta(&list);
  UTF16String value = u"untouched"_u16;
  EXPECT_EQ(meta.GetValue(u"Title"_u16, value), TOV::kErrNoMetadata);
  EXPECT_EQ(value, u"untouched"_u16);
  EXPECT_FALSE(meta.IsDirty());
}

TEST(MetadataList, KeysDifferingInCaseAreDifferentKeys) {
  PropList list;
  tovimpl::MetadataList meta(&list);
  ASSERT_EQ(meta.SetValue(u"Title"_u16, u"upper"_u16), 0u);
  ASSERT_EQ(meta.SetValue(u"title"_u16, u"lower"_u16), 0u);
  UTF16String a, b, c = u"none"_u16;
  EXPECT_EQ(meta.GetValue(u"Title"_u16, a), 0u);
  EXPECT_EQ(meta.GetValue(u"title"_u16, b), 0u);
  EXPECT_EQ(meta.GetValue(u"TITLE"_u16, c), TOV::kErrNoMetadata);
  EXPECT_EQ(a, u"upper"_u16);
  EXPECT_EQ(b, u"lower"_u16);
  EXPECT_EQ(c, u"none"_u16);
}

TEST(MetadataList, ValueUnderChildListIsAbsent) {
  PropList list;
  list.CreateChild("Sub");
  tovimpl::MetadataList meta(&list);
  UTF16String value = u"same"_u16;
  EXPECT_EQ(meta.GetValue(u"Sub"_u16, value), TOV::kErrNoMetadata);
  EXPECT_EQ(value, u"same"_u16);
}

TEST(MetadataList, ListIsNotFreedWithTheView) {
  PropList list;
  {
    tovimpl::MetadataList meta(&list);
    meta.SetValue(u"k"_u16, u"v"_u16);
  }
  UTF16String value;
  EXPECT_TRUE(list.GetString("k", value));
  EXPECT_EQ(value, u"v"_u16);
}

TEST(MetadataList, ConcurrentSettersAndGettersSeeEveryValue) {
  PropList list;
  tovimpl::MetadataList meta(&list);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&meta, t] {
      for (int i = 0; i < 200; ++i) {
        const UTF16String key = basalt::UTF8to16("k" + std::to_string(t) + "_" + std::to_string(i));
        meta.SetValue(key, key);
        UTF16String value;
        meta.GetValue(key, value);
        meta.IsDirty();
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(list.Size(), 800u);
  EXPECT_TRUE(meta.IsDirty());
}

TEST(MetadataConstants, DateModifiedKey) {
  EXPECT_EQ(tovimpl::kMetadataKeyDateModified, "DateModified");
}

// --- FolderMetadataSearch ------------------------------------------------------

class Generator : public tovimpl::FolderMetadataGeneratorFunc {};
class Filter : public tovimpl::FileFilterFunc {};

class ProbingSearch : public tovimpl::FolderMetadataSearch {
 public:
  using tovimpl::FolderMetadataSearch::FolderMetadataSearch;
  using tovimpl::FolderMetadataSearch::GetFileList;
};

TEST(FolderMetadataSearch, PublicGetFileListReturnsZeroAndLeavesListAlone) {
  Generator generator;
  Filter filter;
  for (const UTF16String& folder : {UTF16String(), u"C:\\Media"_u16, u"\\nowhere\\at\\all"_u16}) {
    SCOPED_TRACE(basalt::UTF16to8(folder));
    tovimpl::FolderMetadataSearch search(folder, u"second"_u16, true, generator);
    std::vector<UTF16String> files{u"a"_u16, u"b"_u16};
    EXPECT_EQ(search.GetFileList(filter, files), 0u);
    EXPECT_EQ(files, (std::vector<UTF16String>{u"a"_u16, u"b"_u16}));
    std::vector<UTF16String> empty;
    EXPECT_EQ(search.GetFileList(filter, empty), 0u);
    EXPECT_TRUE(empty.empty());
  }
}

TEST(FolderMetadataSearch, ProtectedGetFileListReturnsZeroAndTouchesNothing) {
  Generator generator;
  Filter filter;
  ProbingSearch search(u"C:\\Media"_u16, UTF16String(), false, generator);
  std::vector<UTF16String> files{u"x"_u16};
  EXPECT_EQ(search.GetFileList(u"D:\\Other"_u16, filter, files), 0u);
  EXPECT_EQ(files, std::vector<UTF16String>{u"x"_u16});
}

}  // namespace
