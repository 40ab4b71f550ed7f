// tovtool demo: ports and byte streams.
#include <cstdint>
#include <iomanip>
#include <ostream>
#include <vector>

#include "tool.h"
#include "tovfoundation/tovfoundation.h"

namespace {

void DemoStreams(std::ostream& out) {
  using namespace basalt::literals;
  std::vector<unsigned char> block(32, 0);
  auto port = Halyard::CPort::StaticRamPort(block.data(), static_cast<std::uint32_t>(block.size()));
  {
    Halyard::CWriteStream writer(*port, Halyard::kHaldBigEndian, 8, 0, 0);
    writer.PutInt(0x01020304);
    writer.PutShort(-2);
    Halyard::VUtilsWriteStringToStream(writer, u"Hi"_u16, 1);
    std::uint64_t pos = 0;
    writer.GetPosW(&pos);
    out << "big-endian writer put an int, a short and \"Hi\": " << pos << " bytes\n";
  }  // the destructor flushes
  out << "bytes in the RAM port:";
  for (int i = 0; i < 12; ++i) {
    out << ' ' << std::hex << std::setw(2) << std::setfill('0') << int{block[i]};
  }
  out << std::dec << std::setfill(' ') << '\n';

  Halyard::CReadStream reader(*port, Halyard::kHaldBigEndian, 8, 0, 0);
  std::int32_t i = 0;
  std::int16_t s = 0;
  UTF16String text;
  reader.ReadInt(&i);
  reader.ReadShort(&s);
  Halyard::VUtilsReadStringFromStream(reader, text, 3);
  out << "read back: int 0x" << std::hex << i << std::dec << ", short " << s << ", text \""
      << basalt::UTF16to8(text) << "\"\n";
  unsigned char peek = 0;
  reader.SetPos(1);
  reader.PeekByte(&peek);
  out << "PeekByte at position 1 gives " << int{peek} << " without moving\n";
  Halyard::CReadStream little(*port, Halyard::kHaldLittleEndian, 8, 0, 0);
  little.ReadInt(&i);
  out << "the same int read little-endian: 0x" << std::hex << i << std::dec << '\n';
  out << "FlipIntBytes(0x11223344) = 0x" << std::hex << Halyard::FlipIntBytes(0x11223344u)
      << std::dec << '\n';
  out << "a missing file gives no port: "
      << (Halyard::CPort::FilePort("/nonexistent/tov-demo.bin", Halyard::kAccessRead) ? "port"
                                                                                      : "none")
      << '\n';
}

TOVTOOL_DEMO_SECTION({30, "Ports and byte streams", DemoStreams});

}  // namespace
