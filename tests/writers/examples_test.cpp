// The examples at the top of writers.h, replayed in a temporary folder.
#include <gtest/gtest.h>

#include <vector>

#include "basalt/utf.h"
#include "tovfoundation/streams.h"
#include "tovfoundation/writers.h"
#include "writers/writers_support.h"

using namespace basalt::literals;
using tovtest::TempTree;

namespace {

TEST(WritersExamples, WaveFileThroughFilePortFactory) {
  TempTree folder;
  const UTF16String path = tovtest::U16(folder.NativeOf("tone.wav"));
  auto port = Halyard::CPort::FilePort(path.c_str(), Halyard::kAccessWrite);
  ASSERT_TRUE(port);
  auto* stream = new Halyard::CWriteStream(port.Release(), Halyard::kHaldLittleEndian, 4096, 0, 0);
  Halyard::AudioInfo info{0x3, Halyard::kVAudioSampleSize16, 48000};
  TOV::PCMFileWriter writer;
  EXPECT_EQ(writer.BeginWriting(stream, info), 0u);
  const unsigned char samples[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  std::uint32_t count = sizeof(samples);
  EXPECT_EQ(writer.WriteSamples(samples, count), 0u);
  EXPECT_EQ(writer.EndWriting(), 0u);

  const auto bytes = tovtest::ReadBytes(folder.NativeOf("tone.wav"));
  ASSERT_EQ(bytes.size(), 52u);
  EXPECT_EQ(bytes[40], 8);  // data size
  EXPECT_EQ(bytes[51], 8);  // the last sample byte
}

TEST(WritersExamples, BmpFileThroughPathConstructor) {
  TempTree folder;
  const UTF16String path = tovtest::U16(folder.NativeOf("bars.bmp"));
  const std::vector<unsigned char> pixels(640 * 480 * 4, 0x5A);
  {
    TOV::BMPFileWriter bmp(path.c_str());
    EXPECT_EQ(bmp.SetBMPProperties(Halyard::VSize{640, 480}, 0x80), 0u);
    std::uint32_t unused = 0;
    EXPECT_EQ(bmp.WriteBMP(pixels.data(), 640 * 4, 0, unused), 0u);
  }
  EXPECT_EQ(tovtest::ReadBytes(folder.NativeOf("bars.bmp")).size(), 54u + 640 * 480 * 4);
}

TEST(WritersExamples, PresetForWriter) {
  TempTree folder;
  const std::string path = folder.NativeOf("preset.epr");
  tovtest::WriteBytes(
      path, tovtest::Utf16LE(u"<Preset><Header WriterFormatName=\"MPEG\"/></Preset>", true));
  unsigned char isForWriter = 0;
  EXPECT_EQ(
      Halyard::VIsPresetFileForThisWriter(path.c_str(), u"MPEG2-DVD"_u16.c_str(), &isForWriter),
      0u);
  EXPECT_EQ(isForWriter, 1);
}

}  // namespace
