// VIsPresetForThisWriter: presets held in memory, through a temporary file.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "basalt/utf.h"
#include "common/environment.h"
#include "tovfoundation/writers.h"
#include "writers/writers_support.h"

using namespace Halyard;
using namespace basalt::literals;
using tovtest::TempTree;

namespace {

// Points the temporary folder at a folder of the test for its lifetime:
// TMPDIR on POSIX systems, TMP and TEMP on Windows.
class ScopedTempDir {
 public:
  explicit ScopedTempDir(const std::string& value)
      : mTmpdir("TMPDIR", value.c_str()),
        mTmp("TMP", value.c_str()),
        mTemp("TEMP", value.c_str()) {}

 private:
  tovtest::ScopedEnv mTmpdir;
  tovtest::ScopedEnv mTmp;
  tovtest::ScopedEnv mTemp;
};

std::size_t Entries(const std::string& folder) {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) ++count;
  return count;
}

UTF16String PresetText(std::u16string_view name, bool byteOrderMark) {
  std::u16string text = byteOrderMark ? u"\xFEFF" : u"";
  text += u"<Preset><Header WriterFormatName=\"";
  text += name;
  text += u"\"/></Preset>";
  return basalt::ToUTF16(text);
}

std::uint32_t Decide(const UTF16String& preset, std::u16string_view writer,
                     unsigned char* isForWriter) {
  const UTF16String writer16 = basalt::ToUTF16(writer);
  return VIsPresetForThisWriter(preset.c_str(), static_cast<std::uint32_t>(preset.size()),
                                writer16.c_str(), isForWriter);
}

TEST(PresetInMemory, MpegPresetSuitsMpeg2DvdAndRemovesItsFile) {
  TempTree folder;
  ScopedTempDir tmp(folder.Native());
  unsigned char isForWriter = 9;
  EXPECT_EQ(Decide(PresetText(u"MPEG", true), u"MPEG2-DVD", &isForWriter), 0u);
  EXPECT_EQ(isForWriter, 1);
  EXPECT_EQ(Entries(folder.Native()), 0u);
}

TEST(PresetInMemory, DecidesWithAndWithoutByteOrderMark) {
  TempTree folder;
  ScopedTempDir tmp(folder.Native());
  struct Row {
    const char16_t* name;
    const char16_t* writer;
    bool byteOrderMark;
    unsigned char expected;
  };
  const Row rows[] = {
      {u"MPEG", u"MPEG", false, 1},
      {u"MPEG", u"WRX | W4X", true, 0},
      {u"Pellucid Video", u"WRX | W4X", false, 1},
      {u"WRX | W4X (H.264)", u"WRX | W4X", true, 1},
      {u"WRX | W4X", u"MPEG2-DVD", false, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(basalt::UTF16to8(basalt::ToUTF16(row.name)) + " / " +
                 basalt::UTF16to8(basalt::ToUTF16(row.writer)));
    unsigned char isForWriter = 9;
    EXPECT_EQ(Decide(PresetText(row.name, row.byteOrderMark), row.writer, &isForWriter), 0u);
    EXPECT_EQ(isForWriter, row.expected);
  }
  EXPECT_EQ(Entries(folder.Native()), 0u);
}

TEST(PresetInMemory, NoHeaderIsNotFoundAndLeavesFlag) {
  TempTree folder;
  ScopedTempDir tmp(folder.Native());
  unsigned char isForWriter = 9;
  const UTF16String preset = u"<Preset WriterFormatName=\"MPEG\"/>"_u16;
  EXPECT_EQ(Decide(preset, u"MPEG", &isForWriter), TOV::kErrNotFound);
  EXPECT_EQ(isForWriter, 9);
  EXPECT_EQ(Entries(folder.Native()), 0u);
}

TEST(PresetInMemory, EmptyPresetIsNotFound) {
  TempTree folder;
  ScopedTempDir tmp(folder.Native());
  unsigned char isForWriter = 9;
  const UTF16String writer = u"MPEG"_u16;
  EXPECT_EQ(VIsPresetForThisWriter(nullptr, 0, writer.c_str(), &isForWriter), TOV::kErrNotFound);
  EXPECT_EQ(isForWriter, 9);
}

TEST(PresetInMemory, MissingTemporaryFolderIsCreated) {
  TempTree folder;
  const std::string missing = folder.NativeOf("not/yet");
  ScopedTempDir tmp(missing);
  unsigned char isForWriter = 9;
  EXPECT_EQ(Decide(PresetText(u"MPEG", false), u"MPEG", &isForWriter), 0u);
  EXPECT_EQ(isForWriter, 1);
  EXPECT_TRUE(std::filesystem::is_directory(missing));
  EXPECT_EQ(Entries(missing), 0u);
}

TEST(PresetInMemory, TemporaryFolderThatCannotBeMadeIsCreateFailed) {
  TempTree folder;
  tovtest::WriteBytes(folder.NativeOf("plain"), tovtest::Bytes{1});
  ScopedTempDir tmp(folder.NativeOf("plain/sub"));
  unsigned char isForWriter = 9;
  EXPECT_EQ(Decide(PresetText(u"MPEG", false), u"MPEG", &isForWriter), TOV::kErrCreateFailed);
  EXPECT_EQ(isForWriter, 9);
}

TEST(PresetInMemory, NullArgumentsAreInvalidPointer) {
  const UTF16String preset = PresetText(u"MPEG", false);
  const UTF16String writer = u"MPEG"_u16;
  unsigned char isForWriter = 9;
  EXPECT_EQ(VIsPresetForThisWriter(nullptr, 4, writer.c_str(), &isForWriter),
            TOV::kErrInvalidPointer);
  EXPECT_EQ(VIsPresetForThisWriter(preset.c_str(), 4, nullptr, &isForWriter),
            TOV::kErrInvalidPointer);
  EXPECT_EQ(VIsPresetForThisWriter(preset.c_str(), 4, writer.c_str(), nullptr),
            TOV::kErrInvalidPointer);
  EXPECT_EQ(isForWriter, 9);
}

TEST(PresetInMemory, LongNameIsNotFound) {
  TempTree folder;
  ScopedTempDir tmp(folder.Native());
  unsigned char isForWriter = 9;
  EXPECT_EQ(Decide(PresetText(std::u16string(300, u'n'), false), u"MPEG", &isForWriter),
            TOV::kErrNotFound);
  EXPECT_EQ(isForWriter, 9);
}

}  // namespace
