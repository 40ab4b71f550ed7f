// Files from tovtool tone and tovtool bars, read back by independent readers:
// Python's standard wave module and PIL (Debian python3-pil).
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>

#include "writers/writers_support.h"

using tovtest::RunCommand;
using tovtest::RunPython;
using tovtest::TempTree;

namespace {

bool ToolMissing(std::string& why) {
  if (std::filesystem::exists(tovtest::TovtoolPath())) return false;
  why = "tovtool was not built at " + tovtest::TovtoolPath();
  return true;
}

constexpr char kWaveScript[] =
    "import sys, wave\n"
    "w = wave.open(sys.argv[1], 'rb')\n"
    "print(w.getnchannels(), w.getframerate(), w.getsampwidth(), w.getnframes())\n";

TEST(Readers, PythonWaveReadsEveryIntegerToneFile) {
  std::string why;
  if (ToolMissing(why) || !tovtest::PythonHasModule("wave", why)) GTEST_SKIP() << why;
  struct Row {
    std::string options;
    std::string expected;  // channels rate width frames
  };
  const Row rows[] = {
      {"", "2 48000 2 48000"},
      {"--bits 8 --channels 1 --rate 8000 --seconds 0.5", "1 8000 1 4000"},
      {"--bits 16 --mask 0x3F --rate 44100 --seconds 0.25", "6 44100 2 11025"},
      {"--bits 20 --channels 2 --rate 32000 --seconds 0.1", "2 32000 3 3200"},
      {"--bits 24 --channels 2 --rate 96000 --seconds 0.1", "2 96000 3 9600"},
      {"--bits 32 --channels 1 --rate 22050 --seconds 0.2", "1 22050 4 4410"},
      {"--bits 64 --channels 1 --rate 1000 --seconds 1", "1 1000 8 1000"},
      {"--sample-size 128 --channels 3 --rate 11025 --seconds 0.2", "3 11025 1 2205"},
      {"--seconds 0 --channels 1", "1 48000 2 0"},
  };
  TempTree folder;
  int index = 0;
  for (const Row& row : rows) {
    SCOPED_TRACE("tovtool tone " + row.options);
    const std::string path = folder.NativeOf("tone" + std::to_string(index++) + ".wav");
    std::string output;
    ASSERT_EQ(RunCommand(tovtest::TovtoolPath() + " tone '" + path + "' " + row.options + " 2>&1",
                         output),
              0)
        << output;
    ASSERT_EQ(RunPython(kWaveScript, {path}, output), 0) << output;
    EXPECT_EQ(output, row.expected + "\n");
  }
}

TEST(Readers, PilReadsBarsTopDown) {
  std::string why;
  if (ToolMissing(why) || !tovtest::PythonHasModule("PIL", why)) GTEST_SKIP() << why;
  TempTree folder;
  const std::string path = folder.NativeOf("bars.bmp");
  std::string output;
  // 16 pixels of 4 bytes: 64-byte rows, which need no padding.
  ASSERT_EQ(RunCommand(tovtest::TovtoolPath() + " bars '" + path +
                           "' --width 16 --height 8 --colour-space 0x80 2>&1",
                       output),
            0)
      << output;
  ASSERT_EQ(tovtest::ReadBytes(path).size(), 54u + 16 * 8 * 4);
  const char* script =
      "import sys\n"
      "from PIL import Image\n"
      "im = Image.open(sys.argv[1])\n"
      "print(im.format, im.size[0], im.size[1])\n"
      "rgb = im.convert('RGB')\n"
      "for y in (0, 5, 6, 7):\n"
      "  print(' '.join('%d,%d,%d' % rgb.getpixel((x, y)) for x in range(0, 16, 2)))\n";
  ASSERT_EQ(RunPython(script, {path}, output), 0) << output;
  const std::string bars =
      "191,191,191 191,191,0 0,191,191 0,191,0 191,0,191 191,0,0 0,0,191 0,0,0";
  const std::string reversed =
      "0,0,0 0,0,191 191,0,0 191,0,191 0,191,0 0,191,191 191,191,0 191,191,191";
  EXPECT_EQ(output, "BMP 16 8\n" + bars + "\n" + bars + "\n" + reversed + "\n" + reversed + "\n");
}

TEST(Readers, PilReads24BitBarsWhoseRowsNeedNoPadding) {
  std::string why;
  if (ToolMissing(why) || !tovtest::PythonHasModule("PIL", why)) GTEST_SKIP() << why;
  TempTree folder;
  const std::string path = folder.NativeOf("bars24.bmp");
  std::string output;
  // 8 pixels of 3 bytes: 24-byte rows.
  ASSERT_EQ(RunCommand(tovtest::TovtoolPath() + " bars '" + path +
                           "' --width 8 --height 4 --colour-space 0x20 2>&1",
                       output),
            0)
      << output;
  const char* script =
      "import sys\n"
      "from PIL import Image\n"
      "im = Image.open(sys.argv[1]).convert('RGB')\n"
      "print(im.getpixel((1, 0)), im.getpixel((1, 3)))\n";
  ASSERT_EQ(RunPython(script, {path}, output), 0) << output;
  EXPECT_EQ(output, "(191, 191, 0) (0, 0, 191)\n");
}

}  // namespace
