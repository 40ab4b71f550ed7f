// Writer format names of preset files: VGetFormatName and VIsPresetFileForThisWriter.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>

#include "basalt/utf.h"
#include "tovfoundation/writers.h"
#include "writers/writers_support.h"

using namespace Halyard;
using namespace basalt::literals;
using tovtest::Bytes;
using tovtest::TempTree;
using tovtest::Utf16LE;
using tovtest::WriteBytes;

namespace {

std::u16string Preset(std::u16string_view name) {
  return u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<Preset>\n  <Header Version=\"3\" "
         u"WriterFormatName=\"" +
         std::u16string(name) + u"\" Name=\"Test\"/>\n  <Body/>\n</Preset>\n";
}

UTF16String Name(const std::array<unsigned short, 300>& buffer) {
  return UTF16String(buffer.data());
}

class PresetFile : public ::testing::Test {
 protected:
  // Writes `bytes` as the preset file and answers its path.
  std::string Write(const Bytes& bytes, const std::string& name = "preset.epr") {
    const std::string path = folder.NativeOf(name);
    WriteBytes(path, bytes);
    return path;
  }

  std::uint32_t ReadName(const std::string& path, std::uint32_t capacity = 260) {
    buffer.fill(0xEEEE);
    return VGetFormatName(path.c_str(), buffer.data(), capacity);
  }

  TempTree folder;
  std::array<unsigned short, 300> buffer{};
};

TEST_F(PresetFile, ReadsNameWithoutByteOrderMark) {
  const std::string path = Write(Utf16LE(Preset(u"MPEG")));
  EXPECT_EQ(ReadName(path), 0u);
  EXPECT_EQ(Name(buffer), u"MPEG"_u16);
}

TEST_F(PresetFile, ReadsNameAfterByteOrderMark) {
  const std::string path = Write(Utf16LE(Preset(u"WRX | W4X"), true));
  EXPECT_EQ(ReadName(path), 0u);
  EXPECT_EQ(Name(buffer), u"WRX | W4X"_u16);
}

TEST_F(PresetFile, ReadsThroughUtf16PathAndOpenFile) {
  const std::string path = Write(Utf16LE(Preset(u"MPEG2-DVD")));
  buffer.fill(0);
  const UTF16String path16 = basalt::UTF8to16(path);
  EXPECT_EQ(VGetFormatName(path16.c_str(), buffer.data(), 260), 0u);
  EXPECT_EQ(Name(buffer), u"MPEG2-DVD"_u16);

  std::FILE* file = std::fopen(path.c_str(), "rb");
  ASSERT_NE(file, nullptr);
  buffer.fill(0);
  EXPECT_EQ(VGetFormatName(file, buffer.data(), 260), 0u);
  std::fclose(file);
  EXPECT_EQ(Name(buffer), u"MPEG2-DVD"_u16);
}

TEST_F(PresetFile, CapacityEqualToLengthWritesTerminatorPastCapacity) {
  const std::string path = Write(Utf16LE(Preset(u"MPEG")));
  EXPECT_EQ(ReadName(path, 4), 0u);
  EXPECT_EQ(buffer[0], u'M');
  EXPECT_EQ(buffer[3], u'G');
  EXPECT_EQ(buffer[4], 0u);       // the fifth unit: one past the capacity
  EXPECT_EQ(buffer[5], 0xEEEEu);  // nothing further
}

TEST_F(PresetFile, CapacityBelowLengthIsNotFoundAndWritesNothing) {
  const std::string path = Write(Utf16LE(Preset(u"MPEG")));
  EXPECT_EQ(ReadName(path, 3), TOV::kErrNotFound);
  EXPECT_EQ(buffer[0], 0xEEEEu);
}

TEST_F(PresetFile, NameOf259UnitsFitsWorkBuffer) {
  const std::u16string name(259, u'x');
  const std::string path = Write(Utf16LE(Preset(name)));
  EXPECT_EQ(ReadName(path, 260), 0u);
  EXPECT_EQ(Name(buffer).size(), 259u);
  EXPECT_EQ(buffer[259], 0u);
}

TEST_F(PresetFile, NameOf260UnitsIsNotFound) {
  const std::string path = Write(Utf16LE(Preset(std::u16string(260, u'x'))));
  EXPECT_EQ(ReadName(path, 290), TOV::kErrNotFound);
  EXPECT_EQ(buffer[0], 0xEEEEu);
}

TEST_F(PresetFile, NameLongerThanWorkBufferIsNotFoundWithoutOverflow) {
  const std::string path = Write(Utf16LE(Preset(std::u16string(700, u'y'))));
  EXPECT_EQ(ReadName(path, 290), TOV::kErrNotFound);
  EXPECT_EQ(buffer[0], 0xEEEEu);
}

TEST_F(PresetFile, NoHeaderElementIsNotFound) {
  const std::string path =
      Write(Utf16LE(u"<Preset><Body WriterFormatName=\"MPEG\"/></Preset>", true));
  EXPECT_EQ(ReadName(path), TOV::kErrNotFound);
  EXPECT_EQ(buffer[0], 0xEEEEu);
}

TEST_F(PresetFile, HeaderWithoutAttributeIsNotFound) {
  const std::string path = Write(Utf16LE(u"<Preset><Header Name=\"x\"/></Preset>"));
  EXPECT_EQ(ReadName(path), TOV::kErrNotFound);
}

TEST_F(PresetFile, EmptyFileIsNotFound) {
  const std::string path = Write(Bytes{});
  EXPECT_EQ(ReadName(path), TOV::kErrNotFound);
}

TEST_F(PresetFile, TruncatedAfterOpeningQuoteIsNotFound) {
  const std::string path = Write(Utf16LE(u"<Header WriterFormatName=\""));
  EXPECT_EQ(ReadName(path), TOV::kErrNotFound);
}

TEST_F(PresetFile, TruncatedBeforeQuoteIsNotFound) {
  const std::string path = Write(Utf16LE(u"<Header WriterFormatName="));
  EXPECT_EQ(ReadName(path), TOV::kErrNotFound);
}

TEST_F(PresetFile, TruncatedInsideValueGivesUnitsUpToEnd) {
  const std::string path = Write(Utf16LE(u"<Header WriterFormatName=\"MPE"));
  EXPECT_EQ(ReadName(path), 0u);
  EXPECT_EQ(Name(buffer), u"MPE"_u16);
}

TEST_F(PresetFile, OddTrailingByteIsIgnored) {
  Bytes bytes = Utf16LE(u"<Header WriterFormatName=\"AB");
  bytes.push_back(0x43);
  const std::string path = Write(bytes);
  EXPECT_EQ(ReadName(path), 0u);
  EXPECT_EQ(Name(buffer), u"AB"_u16);
}

TEST_F(PresetFile, EmptyValueGivesEmptyName) {
  const std::string path = Write(Utf16LE(u"<Header WriterFormatName=\"\"/>"));
  EXPECT_EQ(ReadName(path), 0u);
  EXPECT_EQ(buffer[0], 0u);
}

TEST_F(PresetFile, AttributeBeforeHeaderIsIgnored) {
  const std::string path = Write(
      Utf16LE(u"<Preset WriterFormatName=\"Early\"><Header WriterFormatName=\"MPEG\"/></Preset>"));
  EXPECT_EQ(ReadName(path), 0u);
  EXPECT_EQ(Name(buffer), u"MPEG"_u16);
}

TEST_F(PresetFile, FirstAttributeAfterHeaderWinsWhereverItStands) {
  const std::string path =
      Write(Utf16LE(u"<Header Name=\"x\"/><Other WriterFormatName=\"Other\"/>"
                    u"<Header WriterFormatName=\"MPEG\"/>"));
  EXPECT_EQ(ReadName(path), 0u);
  EXPECT_EQ(Name(buffer), u"Other"_u16);
}

TEST_F(PresetFile, HeaderInSecondChunkIsFound) {
  std::u16string text(1500, u' ');
  text += u"<Header WriterFormatName=\"MPEG\"/>";
  const std::string path = Write(Utf16LE(text));
  EXPECT_EQ(ReadName(path), 0u);
  EXPECT_EQ(Name(buffer), u"MPEG"_u16);
}

TEST_F(PresetFile, AttributeInChunkAfterHeaderIsFound) {
  std::u16string text = u"<Header ";
  text.resize(1100, u' ');
  text += u"WriterFormatName=\"MPEG\"/>";
  const std::string path = Write(Utf16LE(text));
  EXPECT_EQ(ReadName(path), 0u);
  EXPECT_EQ(Name(buffer), u"MPEG"_u16);
}

TEST_F(PresetFile, QuoteAsLastUnitOfChunkStartsNoValue) {
  // The opening quote is unit 1022, the last of the first chunk; the value
  // lies in the next chunk, which carries no attribute of its own.
  std::u16string text = u"<Header ";
  text.resize(1022 - 17, u' ');
  text += u"WriterFormatName=\"MPEG\"/>";
  ASSERT_EQ(text[1022], u'"');
  const std::string path = Write(Utf16LE(text));
  EXPECT_EQ(ReadName(path), TOV::kErrNotFound);
}

TEST_F(PresetFile, ValueCutAtChunkEndEndsName) {
  // The value starts at unit 1020 and runs over the chunk end: the name is
  // what the first chunk holds of it.
  std::u16string text = u"<Header ";
  text.resize(1019 - 17, u' ');
  text += u"WriterFormatName=\"MPEG\"/>";
  ASSERT_EQ(text[1019], u'"');
  const std::string path = Write(Utf16LE(text));
  EXPECT_EQ(ReadName(path), 0u);
  EXPECT_EQ(Name(buffer), u"MPE"_u16);
}

TEST(FormatName, NullArgumentsAreInvalidPointer) {
  std::array<unsigned short, 8> name{};
  std::FILE* file = std::tmpfile();
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(VGetFormatName(static_cast<std::FILE*>(nullptr), name.data(), 8),
            TOV::kErrInvalidPointer);
  EXPECT_EQ(VGetFormatName(file, nullptr, 8), TOV::kErrInvalidPointer);
  EXPECT_EQ(VGetFormatName(file, name.data(), 0), TOV::kErrInvalidPointer);
  EXPECT_EQ(VGetFormatName(static_cast<const char*>(nullptr), name.data(), 8),
            TOV::kErrInvalidPointer);
  EXPECT_EQ(VGetFormatName(static_cast<const unsigned short*>(nullptr), name.data(), 8),
            TOV::kErrInvalidPointer);
  std::fclose(file);
}

TEST(FormatName, FileAtItsEndIsNotFound) {
  std::FILE* file = std::tmpfile();
  ASSERT_NE(file, nullptr);
  const Bytes bytes = Utf16LE(u"<Header WriterFormatName=\"MPEG\"/>");
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::rewind(file);
  while (std::fgetc(file) != EOF) {
  }
  ASSERT_NE(std::feof(file), 0);
  std::array<unsigned short, 8> name{};
  EXPECT_EQ(VGetFormatName(file, name.data(), 8), TOV::kErrNotFound);
  std::fclose(file);
}

TEST(FormatName, ReadsFromCurrentPosition) {
  std::FILE* file = std::tmpfile();
  ASSERT_NE(file, nullptr);
  const Bytes bytes = Utf16LE(u"<Header WriterFormatName=\"MPEG\"/>");
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::fseek(file, 2, SEEK_SET);  // past "<": no "<Header" left
  std::array<unsigned short, 8> name{};
  EXPECT_EQ(VGetFormatName(file, name.data(), 8), TOV::kErrNotFound);
  std::fclose(file);
}

TEST(FormatName, ReadErrorIsCreateFailed) {
  TempTree folder;
  std::FILE* file = std::fopen(folder.NativeOf("writeonly").c_str(), "wb");
  ASSERT_NE(file, nullptr);
  std::array<unsigned short, 8> name{};
  EXPECT_EQ(VGetFormatName(file, name.data(), 8), TOV::kErrCreateFailed);
  std::fclose(file);
}

TEST(FormatName, MissingFileIsOpenFailed) {
  TempTree folder;
  std::array<unsigned short, 8> name{};
  EXPECT_EQ(VGetFormatName(folder.NativeOf("missing.epr").c_str(), name.data(), 8),
            TOV::kErrOpenFailed);
  const UTF16String missing = tovtest::U16(folder.NativeOf("missing.epr"));
  EXPECT_EQ(VGetFormatName(missing.c_str(), name.data(), 8), TOV::kErrOpenFailed);
}

TEST(FormatName, LibrarySpellingPathIsAccepted) {
  TempTree folder;
  WriteBytes(folder.NativeOf("p.epr"), Utf16LE(u"<Header WriterFormatName=\"MPEG\"/>"));
  std::string path = folder.NativeOf("p.epr");
  for (char& c : path) {
    if (c == '/') c = '\\';
  }
  std::array<unsigned short, 8> name{};
  EXPECT_EQ(VGetFormatName(path.c_str(), name.data(), 8), 0u);
  EXPECT_EQ(UTF16String(name.data()), u"MPEG"_u16);
}

// --- VIsPresetFileForThisWriter --------------------------------------------

struct WriterRow {
  const char16_t* formatName;
  const char16_t* writer;
  unsigned char expected;
};

const WriterRow kWriterRows[] = {
    {u"MPEG", u"MPEG2-DVD", 1},
    {u"MPEG", u"MPEG", 1},
    {u"MPEG", u"WRX | W4X", 0},
    {u"MPEG2-DVD", u"MPEG2-DVD", 1},
    {u"MPEG2-DVD", u"MPEG", 0},
    {u"Pellucid Video", u"WRX | W4X", 1},
    {u"Pellucid Video", u"Pellucid Video", 0},
    {u"WRX | W4X (H.264)", u"WRX | W4X", 1},
    {u"WRX | W4X (H.264)", u"WRX | W4X (H.264)", 0},
    {u"My Pellucid Video Preset", u"WRX | W4X", 1},
    {u"WRX | W4X", u"WRX | W4X", 1},
    {u"mpeg", u"MPEG", 0},
    {u"MPEG", u"mpeg2-dvd", 0},
    {u"MPEG ", u"MPEG2-DVD", 0},
    {u"", u"", 1},
};

TEST(PresetForWriter, DecisionTable) {
  TempTree folder;
  const std::string path = folder.NativeOf("preset.epr");
  for (const WriterRow& row : kWriterRows) {
    const std::string trace = basalt::UTF16to8(basalt::ToUTF16(row.formatName)) + " / " +
                              basalt::UTF16to8(basalt::ToUTF16(row.writer));
    SCOPED_TRACE(trace);
    WriteBytes(path, Utf16LE(Preset(row.formatName), true));
    unsigned char isForWriter = 9;
    const UTF16String writer = basalt::ToUTF16(row.writer);
    EXPECT_EQ(VIsPresetFileForThisWriter(path.c_str(), writer.c_str(), &isForWriter), 0u);
    EXPECT_EQ(isForWriter, row.expected);
  }
}

TEST(PresetForWriter, NoHeaderLeavesFlagUntouched) {
  TempTree folder;
  const std::string path = folder.NativeOf("preset.epr");
  WriteBytes(path, Utf16LE(u"<Preset WriterFormatName=\"MPEG\"/>"));
  unsigned char isForWriter = 7;
  EXPECT_EQ(VIsPresetFileForThisWriter(path.c_str(), u"MPEG"_u16.c_str(), &isForWriter),
            TOV::kErrNotFound);
  EXPECT_EQ(isForWriter, 7);
}

TEST(PresetForWriter, MissingFileIsOpenFailed) {
  TempTree folder;
  unsigned char isForWriter = 7;
  EXPECT_EQ(VIsPresetFileForThisWriter(folder.NativeOf("none.epr").c_str(), u"MPEG"_u16.c_str(),
                                       &isForWriter),
            TOV::kErrOpenFailed);
  EXPECT_EQ(isForWriter, 7);
}

TEST(PresetForWriter, NullArgumentsAreInvalidPointer) {
  unsigned char isForWriter = 7;
  const UTF16String writer = u"MPEG"_u16;
  EXPECT_EQ(VIsPresetFileForThisWriter(nullptr, writer.c_str(), &isForWriter),
            TOV::kErrInvalidPointer);
  EXPECT_EQ(VIsPresetFileForThisWriter("x.epr", nullptr, &isForWriter), TOV::kErrInvalidPointer);
  EXPECT_EQ(VIsPresetFileForThisWriter("x.epr", writer.c_str(), nullptr), TOV::kErrInvalidPointer);
  EXPECT_EQ(isForWriter, 7);
}

}  // namespace
