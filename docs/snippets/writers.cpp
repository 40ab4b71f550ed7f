// The README's tour, "Writers", as a program the tests build and run.
#include <cstdint>
#include <iostream>
#include <vector>

#include "tovfoundation/tovfoundation.h"

using namespace basalt::literals;

int main() {
  // [readme]
  UTF16String path = Halyard::PathUtilities::TOVGetTempFolder() + u"tone.wav"_u16;
  auto port = Halyard::CPort::FilePort(path.c_str(), Halyard::kAccessWrite);
  auto* stream = new Halyard::CWriteStream(port.Release(), Halyard::kHaldLittleEndian, 4096, 0, 0);
  Halyard::AudioInfo info{0x3, Halyard::kVAudioSampleSize16, 48000};  // stereo, 16 bit
  std::vector<unsigned char> samples(48000 * 4);                      // 1 s of silence
  std::uint32_t count = static_cast<std::uint32_t>(samples.size());
  TOV::PCMFileWriter writer;
  writer.BeginWriting(stream, info);  // 44-byte placeholder header
  writer.WriteSamples(samples.data(), count);
  std::uint32_t status = writer.EndWriting();  // final header; the stream is released
  std::cout << status << '\n';                 // prints 0
  // [/readme]
}
