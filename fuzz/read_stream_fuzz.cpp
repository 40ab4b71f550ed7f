// Fuzz target: a random sequence of read-stream operations (Read, the typed
// reads, Skip, SetPos, PutBackByte, PeekByte, GetSize, the string reader) over
// random bytes in a RAM port, random-access or sequential, with a random buffer
// size and byte order. Every read stays within GetSize − GetPos, as the
// stream's callers must keep it; within that contract each value read is
// checked against the bytes at the stream position, and the position against
// a model of it. Any mismatch, crash or sanitizer report is a finding.
//
// Input layout: byte 0 buffer size − 1, byte 1 flags (bit 0 big-endian, bit 1
// sequential port), byte 2 length of the data (0–255), then the data, then the
// operations, two bytes each (operation, argument).
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "tovfoundation/streams.h"

namespace {

[[noreturn]] void Fail() { __builtin_trap(); }

void Check(bool condition) {
  if (!condition) Fail();
}

// A RAM port that says it is sequential.
class SequentialRamPort : public Halyard::CStaticRamFilePort {
 public:
  using CStaticRamFilePort::CStaticRamFilePort;
  bool IsSequential() const override { return true; }
};

std::uint64_t Expected(const std::vector<unsigned char>& data, std::uint32_t pos, int width,
                       bool big) {
  std::uint64_t value = 0;
  for (int i = 0; i < width; ++i) {
    const std::uint64_t byte = data[pos + static_cast<std::uint32_t>(i)];
    value |= big ? byte << (8 * (width - 1 - i)) : byte << (8 * i);
  }
  return value;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
  if (size < 3) return 0;
  const std::uint32_t bufferSize = static_cast<std::uint32_t>(input[0]) + 1;
  const bool big = (input[1] & 1) != 0;
  const bool sequential = (input[1] & 2) != 0;
  std::size_t length = input[2];
  if (length > size - 3) length = size - 3;
  std::vector<unsigned char> data(input + 3, input + 3 + length);
  std::vector<unsigned char> block = data;  // the port's bytes; the stream never writes them
  const auto total = static_cast<std::uint32_t>(length);
  const std::uint8_t* ops = input + 3 + length;
  const std::size_t opBytes = size - 3 - length;

  Halyard::CStaticRamFilePort randomPort(block.data(), total, Halyard::kAccessRead, 0);
  SequentialRamPort sequentialPort(block.data(), total, Halyard::kAccessRead, 0);
  Halyard::CPort& port = sequential ? static_cast<Halyard::CPort&>(sequentialPort) : randomPort;
  const auto order = big ? Halyard::kHaldBigEndian : Halyard::kHaldLittleEndian;
  Halyard::CReadStream stream(port, order, bufferSize, 0, 0);

  std::uint32_t pos = 0;  // the model of the stream position
  for (std::size_t at = 0; at + 1 < opBytes; at += 2) {
    const std::uint8_t op = ops[at] % 12;
    const std::uint8_t arg = ops[at + 1];
    const std::uint32_t left = total - pos;
    std::uint32_t status = 0;
    switch (op) {
      case 0: {  // Read of up to arg bytes
        const std::uint32_t n = arg % (left + 1);
        std::vector<unsigned char> out(n + 1, 0xA5);
        status = stream.Read(n, out.data());
        Check(status == 0);
        Check(n == 0 || std::memcmp(out.data(), data.data() + pos, n) == 0);
        Check(out[n] == 0xA5);
        pos += n;
        break;
      }
      case 1: {
        if (left < 1) break;
        unsigned char v = 0;
        Check(stream.ReadByte(&v) == 0 && v == data[pos]);
        pos += 1;
        break;
      }
      case 2: {
        if (left < 2) break;
        std::int16_t v = 0;
        Check(stream.ReadShort(&v) == 0);
        Check(static_cast<std::uint16_t>(v) == Expected(data, pos, 2, big));
        pos += 2;
        break;
      }
      case 3: {
        if (left < 4) break;
        std::int32_t v = 0;
        Check(stream.ReadInt(&v) == 0);
        Check(static_cast<std::uint32_t>(v) == Expected(data, pos, 4, big));
        pos += 4;
        break;
      }
      case 4: {
        if (left < 8) break;
        std::int64_t v = 7;
        Check(stream.ReadInt(&v) == 0);
        Check(big ? v == 7 : static_cast<std::uint64_t>(v) == Expected(data, pos, 8, false));
        pos += 8;
        break;
      }
      case 5: {
        if (left < 8) break;
        double v = 0;
        Check(stream.ReadDouble(&v) == 0);
        std::uint64_t bits = 0;
        std::memcpy(&bits, &v, 8);
        Check(bits == Expected(data, pos, 8, big));
        pos += 8;
        break;
      }
      case 6: {  // Skip; past the end of a random-access port it succeeds and stays
        // A sequential port reaches the target by reading, so stay within the data.
        const std::uint32_t n = sequential ? arg % (left + 1) : arg;
        Check(stream.Skip(n) == 0);
        std::uint32_t now = 0;
        stream.GetPos(&now);
        Check(now == (n <= left ? pos + n : pos));
        pos = now;
        break;
      }
      case 7: {  // SetPos within the data
        const std::uint32_t target = total == 0 ? 0 : arg % (total + 1);
        status = stream.SetPos(target);
        std::uint32_t now = 0;
        stream.GetPos(&now);
        if (status == 0)
          Check(now == target);
        else
          Check(sequential && status == TOV::kErrSeekBackward && now == pos);
        pos = now;
        break;
      }
      case 8: {  // put back the byte that is there already
        if (pos == 0) break;
        Check(stream.PutBackByte(data[pos - 1]) == 0);
        std::uint32_t now = 0;
        stream.GetPos(&now);
        Check(now == pos || now == pos - 1);
        pos = now;
        break;
      }
      case 9: {
        if (left < 1) break;
        unsigned char a = 0;
        Check(stream.PeekByte(&a) == 0 && a == data[pos]);
        // With a 1-byte buffer, a read that finds the buffer empty goes
        // straight to the port and leaves nothing to put back: the peeked
        // byte is consumed then.
        std::uint32_t now = 0;
        stream.GetPos(&now);
        Check(now == pos || (bufferSize == 1 && now == pos + 1));
        if (now == pos) {
          unsigned char b = 1;
          Check(stream.PeekByte(&b) == 0 && b == a);
        }
        pos = now;
        break;
      }
      case 10: {
        std::uint32_t reported = 0;
        Check(stream.GetSize(&reported) == 0 && reported == total);
        unsigned char flag = 9;
        if (left >= 1) {
          Check(stream.ReadBool(&flag) == 0 && flag == (data[pos] != 0 ? 1 : 0));
          pos += 1;
        }
        break;
      }
      default: {  // the string reader, bounded by the data left
        const std::uint32_t units = left / 2;
        if (units == 0) break;
        const std::uint32_t maxUnits = arg % units + 1;
        UTF16String text;
        Check(Halyard::VUtilsReadStringFromStream(stream, text, maxUnits) == 0);
        Check(text.size() <= maxUnits);
        for (std::size_t i = 0; i < text.size(); ++i) {
          Check(text[i] == Expected(data, pos + 2 * static_cast<std::uint32_t>(i), 2, big));
        }
        std::uint32_t now = 0;
        stream.GetPos(&now);
        const std::uint32_t consumed =
            text.size() < maxUnits ? static_cast<std::uint32_t>(text.size() + 1) : maxUnits;
        Check(now == pos + 2 * consumed);
        pos = now;
        break;
      }
    }
    std::uint32_t now = 0;
    Check(stream.GetPos(&now) == 0 && now == pos && pos <= total);
  }
  Check(block == data);
  return 0;
}
