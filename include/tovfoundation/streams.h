// tovfoundation streams: ports, buffered byte streams, byte order helpers.
//
// A port is a store of bytes addressed by absolute position, without buffering
// and without a position of its own: a file (CFilePort, CFilePortEx) or a
// caller's memory block (CStaticRamFilePort). CReadStream and CWriteStream sit
// on a port, keep a current position, buffer small transfers and convert
// multi-byte values to and from the stream's byte order.
//
//   using namespace basalt::literals;
//   Halyard::CVAutoPtr<Halyard::CPort> port =
//       Halyard::CPort::FilePort(u"C:\\Media\\out.bin"_u16.c_str(), Halyard::kAccessWrite);
//   if (!port) return TOV::kErrOpenFailed;
//   Halyard::CWriteStream out(*port, Halyard::kHaldBigEndian, 4096, 0, 1);
//   out.PutInt(0x01020304);          // bytes 01 02 03 04
//   out.Flush(1);
//   // ~CWriteStream flushes what is left and, with closePort 1, closes the port.
//
//   unsigned char bytes[4] = {0x12, 0x34, 0x56, 0x78};
//   auto ram = Halyard::CPort::ReadOnlyRamPort(bytes, sizeof bytes);
//   Halyard::CReadStream in(*ram, Halyard::kHaldLittleEndian, 16, 0, 0);
//   short s = 0;
//   in.ReadShort(&s);                // 0x3412
//
// Reporting: every operation answers a 32-bit status (0 is success, the TOV::kErr
// constants of common.h otherwise) and no exception leaves a port or a stream,
// except std::bad_alloc from a stream constructor. Several failures are
// deliberately reported as success; each is stated at its operation below.
//
// Threads: ports hold no lock; two threads that use one file port at once may
// interleave its seek and transfer. Each stream serialises its operations with
// one re-entrant lock shared by its copies, so one stream may be used from
// several threads; its port is only touched under that lock.
//
// Paths are library paths (Windows spelling, UTF-16 or 8-bit in the current
// locale); on POSIX they are translated for the system.
#pragma once

#include "tovfoundation/streams/auto_ptr.h"
#include "tovfoundation/streams/byte_order.h"
#include "tovfoundation/streams/file_port.h"
#include "tovfoundation/streams/port.h"
#include "tovfoundation/streams/ram_port.h"
#include "tovfoundation/streams/read_stream.h"
#include "tovfoundation/streams/stream_strings.h"
#include "tovfoundation/streams/write_stream.h"
