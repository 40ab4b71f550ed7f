// Property lists: the tree, the XML text, files, and damaged files.
#include "basalt/proplist.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <random>
#include <string>

#include "basalt/proplist_test_support.h"
#include "basalt/utf.h"
#include "common/temp_tree.h"
#include "common/test_files.h"

namespace {

using namespace basalt::literals;
using basalt::proplist::PropList;
using basalt::proplist::PropListError;
using basalt::proplist::utils::FormatPropList;
using basalt::proplist::utils::LoadPropList;
using basalt::proplist::utils::ParsePropList;
using basalt::proplist::utils::SavePropList;
using tovtest::FailureOf;
using tovtest::PropListFailure;
using tovtest::SamplePropList;
using tovtest::TempTree;

PropListError::Kind LoadErrorKind(const std::string& bytes) {
  PropList list;
  try {
    ParsePropList(bytes, list);
  } catch (const PropListError& error) {
    return error.GetKind();
  }
  ADD_FAILURE() << "no error for: " << bytes;
  return PropListError::Kind::kWriteFailed;
}

// --- the tree --------------------------------------------------------------------

TEST(PropList, StringRoundTripsInBothEncodings) {
  PropList list;
  list.SetString("a", u"Grüße 🎬"_u16);
  UTF16String wide;
  UTF8String narrow;
  EXPECT_TRUE(list.GetString("a", wide));
  EXPECT_TRUE(list.GetString("a", narrow));
  EXPECT_EQ(wide, u"Grüße 🎬"_u16);
  EXPECT_EQ(narrow, basalt::UTF16to8(u"Grüße 🎬"_u16));
}

TEST(PropList, AbsentKeyLeavesOutputAlone) {
  PropList list;
  UTF16String value = u"keep"_u16;
  EXPECT_FALSE(list.GetString("missing", value));
  EXPECT_EQ(value, u"keep"_u16);
  EXPECT_EQ(list.FindChild("missing"), nullptr);
}

TEST(PropList, CreateChildReturnsExistingChild) {
  PropList list;
  list.CreateChild("c").SetString("x", u"1"_u16);
  PropList& again = list.CreateChild("c");
  UTF16String value;
  EXPECT_TRUE(again.GetString("x", value));
  EXPECT_EQ(&again, list.FindChild("c"));
}

TEST(PropList, ChildAndStringReplaceEachOther) {
  PropList list;
  list.SetString("k", u"text"_u16);
  EXPECT_EQ(list.FindChild("k"), nullptr);
  list.CreateChild("k");
  UTF16String value = u"none"_u16;
  EXPECT_FALSE(list.GetString("k", value));
  EXPECT_NE(list.FindChild("k"), nullptr);
  list.SetString("k", u"again"_u16);
  EXPECT_EQ(list.FindChild("k"), nullptr);
  EXPECT_TRUE(list.GetString("k", value));
  EXPECT_EQ(value, u"again"_u16);
}

TEST(PropList, KeysAreCaseSensitiveAndSorted) {
  PropList list;
  list.SetString("b", u"1"_u16);
  list.SetString("B", u"2"_u16);
  list.SetString("a", u"3"_u16);
  EXPECT_EQ(list.Keys(), (std::vector<UTF8String>{"B", "a", "b"}));
  EXPECT_EQ(list.Size(), 3u);
}

TEST(PropList, CopyIsDeepAndMoveEmptiesSource) {
  PropList list = SamplePropList();
  PropList copy = list;
  copy.FindChild("Cache")->SetString("CacheFile", u"changed"_u16);
  UTF16String value;
  list.FindChild("Cache")->GetString("CacheFile", value);
  EXPECT_EQ(value, u"C:\\Cache\\TOVCache1_2_3.vpc"_u16);
  PropList moved = std::move(list);
  EXPECT_TRUE(list.Empty());  // NOLINT(bugprone-use-after-move): documented
  EXPECT_EQ(moved, SamplePropList());
}

// --- the XML text ----------------------------------------------------------------

TEST(PropListText, FormatMatchesTheDocumentedLayout) {
  EXPECT_EQ(FormatPropList(SamplePropList()),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<plist version=\"1.0\">\n"
            "<dict>\n"
            "\t<key>Cache</key>\n"
            "\t<dict>\n"
            "\t\t<key>CacheFile</key>\n"
            "\t\t<string>C:\\Cache\\TOVCache1_2_3.vpc</string>\n"
            "\t</dict>\n"
            "\t<key>Name</key>\n"
            "\t<string>Clip 1</string>\n"
            "</dict>\n"
            "</plist>\n");
}

TEST(PropListText, EmptyListsAreEmptyDicts) {
  PropList list;
  EXPECT_EQ(
      FormatPropList(list),
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict/>\n</plist>\n");
  list.CreateChild("empty");
  PropList back;
  ParsePropList(FormatPropList(list), back);
  EXPECT_EQ(back, list);
}

TEST(PropListText, EveryTextXmlCarriesRoundTrips) {
  const char* rows[] = {
      "plain",
      "",
      "<&>\"'",
      "&amp; stays text",
      "]]> and <![CDATA[",
      "tab\there",
      "line\nfeed",
      "carriage\rreturn",
      "crlf\r\npair",
      "   leading and trailing   ",
      " ",
      "\n",
      "\r",
      "Grüße, 世界",
      "\xF0\x9F\x8E\xAC astral",
      "\xEF\xBF\xBD replacement",
      "\xEE\x80\x80 private use",
      "\xEF\xBF\xBD\xEF\xBF\xBC near the end",
  };
  PropList list;
  int i = 0;
  for (const char* row : rows) {
    list.SetString(std::string("v") + std::to_string(i++), UTF8String(row));
    list.CreateChild(row).SetString(row, UTF8String(row));
  }
  PropList back;
  ParsePropList(FormatPropList(list), back);
  for (const char* row : rows) {
    SCOPED_TRACE(row);
    const PropList* child = back.FindChild(row);
    ASSERT_NE(child, nullptr);
    UTF8String value;
    EXPECT_TRUE(child->GetString(row, value));
    EXPECT_EQ(value, row);
  }
  EXPECT_EQ(back, list);
}

TEST(PropListText, TextXmlCannotCarryBecomesReplacementCharacter) {
  struct Row {
    std::string in;
    std::string out;
  };
  const std::string fffd = "\xEF\xBF\xBD";
  const Row rows[] = {
      {std::string("a\0b", 3), "a" + fffd + "b"},
      {"\x01\x08\x0B\x0C\x0E\x1F", fffd + fffd + fffd + fffd + fffd + fffd},
      {"\xEF\xBF\xBE|\xEF\xBF\xBF", fffd + "|" + fffd},  // U+FFFE, U+FFFF
      {"\xC3", fffd},                                    // truncated sequence
      {"\xED\xA0\x80", fffd + fffd + fffd},              // encoded surrogate
      {"\xC0\xAF", fffd + fffd},                         // overlong
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.out);
    PropList list;
    list.SetString("k", row.in);
    list.CreateChild(row.in);
    PropList back;
    ParsePropList(FormatPropList(list), back);
    UTF8String value;
    EXPECT_TRUE(back.GetString("k", value));
    EXPECT_EQ(value, row.out);
    EXPECT_NE(back.FindChild(row.out), nullptr);
    // Saving never changes the list in memory.
    EXPECT_TRUE(list.GetString("k", value));
    EXPECT_EQ(value, row.in);
  }
}

TEST(PropListText, ReaderAcceptsForeignButValidLayouts) {
  const std::string text =
      "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<!DOCTYPE plist SYSTEM \"plist.dtd\">\n"
      "<!-- written elsewhere -->\n"
      "<plist version=\"1.0\"><dict>"
      "<key>a</key><string><![CDATA[<raw>]]> &amp; more</string>"
      "<key>e</key><string/>"
      "<key>d</key><dict><key>x</key><string>1</string></dict>"
      "<key>a</key><string>last wins</string>"
      "</dict></plist>";
  PropList list;
  ParsePropList(text, list);
  UTF8String value;
  EXPECT_TRUE(list.GetString("a", value));
  EXPECT_EQ(value, "last wins");
  EXPECT_TRUE(list.GetString("e", value));
  EXPECT_EQ(value, "");
  ASSERT_NE(list.FindChild("d"), nullptr);
  EXPECT_TRUE(list.FindChild("d")->GetString("x", value));
  EXPECT_EQ(value, "1");
}

TEST(PropListText, CdataTextIsTakenWhole) {
  PropList list;
  ParsePropList("<plist><dict><key>k</key><string>a<![CDATA[<b>]]>c</string></dict></plist>", list);
  UTF8String value;
  EXPECT_TRUE(list.GetString("k", value));
  EXPECT_EQ(value, "a<b>c");
}

TEST(PropListText, DamagedOrForeignTextIsRejected) {
  const char* rows[] = {
      "",
      "   ",
      "<plist>",
      "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>a</key><string>x</str",
      "<plist><dict><key>a</key><string>x</string></dict>",
      "<html><body/></html>",
      "<plist/>",
      "<plist><array/></plist>",
      "<plist><dict/><dict/></plist>",
      "<plist>text<dict/></plist>",
      "<plist><dict><key>a</key></dict></plist>",
      "<plist><dict><string>x</string></dict></plist>",
      "<plist><dict><key>a</key><integer>1</integer></dict></plist>",
      "<plist><dict><key>a</key><array/></dict></plist>",
      "<plist><dict><key>a</key><true/></dict></plist>",
      "<plist><dict>loose text</dict></plist>",
      "<plist><dict><key>a<b/></key><string>x</string></dict></plist>",
      "<plist><dict><key>\xFF</key><string>x</string></dict></plist>",
      "\x00\x01\x02",
      "PK\x03\x04 not xml",
  };
  for (const char* row : rows) {
    SCOPED_TRACE(row);
    EXPECT_EQ(LoadErrorKind(row), PropListError::Kind::kNotAPropList);
  }
}

TEST(PropListText, NestingDeeperThanLimitIsRejectedNotCrashed) {
  std::string deep = "<plist>";
  for (int i = 0; i < 5000; ++i) deep += "<dict><key>k</key>";
  deep += "<dict/>";
  for (int i = 0; i < 5000; ++i) deep += "</dict>";
  deep += "</plist>";
  EXPECT_EQ(LoadErrorKind(deep), PropListError::Kind::kNotAPropList);
}

TEST(PropListText, FailedParseLeavesListUnchanged) {
  PropList list = SamplePropList();
  EXPECT_THROW(ParsePropList("<plist><dict><key>a</key></dict></plist>", list), PropListError);
  EXPECT_EQ(list, SamplePropList());
}

TEST(PropListText, RandomBytesNeverCrash) {
  std::mt19937 random(12345);
  const std::string good = FormatPropList(SamplePropList());
  for (int round = 0; round < 500; ++round) {
    std::string bytes = good;
    const int flips = 1 + static_cast<int>(random() % 8);
    for (int f = 0; f < flips; ++f) {
      bytes[random() % bytes.size()] = static_cast<char>(random() & 0xFF);
    }
    if (round % 3 == 0) bytes.resize(random() % bytes.size());
    PropList list;
    try {
      ParsePropList(bytes, list);
    } catch (const PropListError& error) {
      EXPECT_EQ(error.GetKind(), PropListError::Kind::kNotAPropList);
    }
  }
}

// --- files -----------------------------------------------------------------------

TEST(PropListFile, SaveThenLoadRoundTrips) {
  TempTree temp;
  const UTF16String path = temp.Lib("list.xml");
  SavePropList(path, SamplePropList());
  PropList back;
  LoadPropList(path, back, 0);
  EXPECT_EQ(back, SamplePropList());
  EXPECT_EQ(tovtest::ReadFile(temp.NativeOf("list.xml")), FormatPropList(SamplePropList()));
  // Only the list is left: the temporary file was renamed over it.
  EXPECT_EQ(tovtest::ListFolder(temp.Native()), std::vector<std::string>{"list.xml"});
}

TEST(PropListFile, SaveReplacesPreviousList) {
  TempTree temp;
  const UTF16String path = temp.Lib("list.xml");
  SavePropList(path, SamplePropList());
  PropList other;
  other.SetString("only", u"this"_u16);
  SavePropList(path, other);
  PropList back;
  LoadPropList(path, back, 0);
  EXPECT_EQ(back, other);
}

TEST(PropListFile, LoadReplacesListContents) {
  TempTree temp;
  SavePropList(temp.Lib("list.xml"), SamplePropList());
  PropList list;
  list.SetString("stale", u"x"_u16);
  LoadPropList(temp.Lib("list.xml"), list, 0);
  EXPECT_FALSE(list.Contains("stale"));
  EXPECT_EQ(list, SamplePropList());
}

TEST(PropListFile, MissingFileIsOpenFailedWithFileNotFound) {
  TempTree temp;
  PropList list = SamplePropList();
  EXPECT_EQ(FailureOf([&] { LoadPropList(temp.Lib("absent.xml"), list, 0); }),
            (PropListFailure{PropListError::Kind::kOpenFailed, 2u}));
  EXPECT_EQ(list, SamplePropList());
}

TEST(PropListFile, EmptyFileIsNotAPropList) {
  TempTree temp;
  tovtest::WriteFile(temp.NativeOf("list.xml"), "");
  PropList list;
  EXPECT_EQ(FailureOf([&] { LoadPropList(temp.Lib("list.xml"), list, 0); }),
            (PropListFailure{PropListError::Kind::kNotAPropList, 0u}));
}

TEST(PropListFile, FileTruncatedAtEveryLengthIsRejected) {
  TempTree temp;
  const std::string whole = FormatPropList(SamplePropList());
  // Every proper prefix that drops the closing </plist> is damaged.
  const std::size_t end = whole.rfind("</plist>");
  for (std::size_t length = 0; length <= end; ++length) {
    SCOPED_TRACE(length);
    tovtest::WriteFile(temp.NativeOf("list.xml"), whole.substr(0, length));
    PropList list;
    EXPECT_THROW(LoadPropList(temp.Lib("list.xml"), list, 0), PropListError);
    EXPECT_TRUE(list.Empty());
  }
}

TEST(PropListFile, RandomBytesFileIsRejected) {
  TempTree temp;
  std::mt19937 random(99);
  std::string bytes(4096, '\0');
  for (auto& byte : bytes) byte = static_cast<char>(random() & 0xFF);
  tovtest::WriteFile(temp.NativeOf("list.xml"), bytes);
  PropList list;
  try {
    LoadPropList(temp.Lib("list.xml"), list, 0);
    FAIL() << "no exception";
  } catch (const PropListError& error) {
    EXPECT_EQ(error.GetKind(), PropListError::Kind::kNotAPropList);
  }
}

TEST(PropListFile, FolderInPlaceOfListCannotBeOpened) {
  TempTree temp;
  tovtest::MakeFolder(temp.NativeOf("list.xml"));
  PropList list;
  EXPECT_EQ(FailureOf([&] { LoadPropList(temp.Lib("list.xml"), list, 0); }),
            (PropListFailure{PropListError::Kind::kOpenFailed, 5u}));
}

TEST(PropListFile, SaveIntoMissingFolderFailsAndLeavesNothing) {
  TempTree temp;
  EXPECT_EQ(FailureOf([&] { SavePropList(temp.Lib("no\\such\\list.xml"), SamplePropList()); }),
            (PropListFailure{PropListError::Kind::kWriteFailed, 3u}));
  EXPECT_TRUE(tovtest::ListFolder(temp.Native()).empty());
}

TEST(PropListFile, SaveOverFolderFailsAndDeletesTemporaryFile) {
  TempTree temp;
  tovtest::MakeFolder(temp.NativeOf("list.xml"));
  EXPECT_THROW(SavePropList(temp.Lib("list.xml"), SamplePropList()), PropListError);
  EXPECT_EQ(tovtest::ListFolder(temp.Native()), std::vector<std::string>{"list.xml"});
}

}  // namespace

namespace {

// Random keys set, made children, removed and looked up, against std::map:
// the same keys in the same order, the same values, at every size (small
// lists are scanned, larger ones hashed; lists out of key order keep an
// order of their own).
TEST(PropList, RandomEditsMatchAnOrderedMap) {
  std::mt19937 random(7);
  for (int round = 0; round < 40; ++round) {
    SCOPED_TRACE(round);
    PropList list;
    std::map<std::string, std::string> model;  // "" value: a child
    const int keys = round < 20 ? 12 : 300;
    for (int step = 0; step < 2000; ++step) {
      const std::string key = "k" + std::to_string(random() % keys);
      switch (random() % 4) {
        case 0:
        case 1:
          list.SetString(key, UTF8String("v" + std::to_string(step)));
          model[key] = "v" + std::to_string(step);
          break;
        case 2:
          list.CreateChild(key);
          model[key] = "";
          break;
        default:
          EXPECT_EQ(list.Remove(key), model.erase(key) == 1);
          break;
      }
      const std::string probe = "k" + std::to_string(random() % keys);
      UTF8String value;
      const auto found = model.find(probe);
      EXPECT_EQ(list.GetString(probe, value), found != model.end() && !found->second.empty());
      EXPECT_EQ(list.FindChild(probe) != nullptr, found != model.end() && found->second.empty());
    }
    std::vector<UTF8String> expected;
    for (const auto& entry : model) expected.push_back(entry.first);
    ASSERT_EQ(list.Keys(), expected);
    for (const auto& [key, text] : model) {
      UTF8String value;
      if (!text.empty()) {
        EXPECT_TRUE(list.GetString(key, value));
        EXPECT_EQ(value, text);
      }
    }
    PropList copy = list;
    EXPECT_EQ(copy, list);
  }
}

TEST(PropList, KeysAddedInOrderAreFoundAtEverySize) {
  PropList list;
  for (int i = 0; i < 1000; ++i) {
    char key[8];
    std::snprintf(key, sizeof key, "k%04d", i);
    list.CreateChild(key).SetString("CacheFile", UTF8String(key));
    for (int j = 0; j <= i; j += 97) {
      std::snprintf(key, sizeof key, "k%04d", j);
      ASSERT_NE(list.FindChild(key), nullptr) << i << " " << j;
    }
  }
  EXPECT_EQ(list.Size(), 1000u);
  EXPECT_TRUE(list.Remove("k0999"));
  EXPECT_TRUE(list.Remove("k0000"));
  EXPECT_EQ(list.Keys().front(), "k0001");
  EXPECT_EQ(list.Keys().back(), "k0998");
}

}  // namespace
