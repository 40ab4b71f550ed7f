// tovfoundation writers: a PCM WAVE writer, a top-down BMP writer, and the
// format helpers that size audio samples, channel masks and colour spaces and
// recognise encoder preset files.
//
// Writing a WAVE file:
//
//   using namespace basalt::literals;
//   auto port = Halyard::CPort::FilePort(u"C:\\Media\\tone.wav"_u16.c_str(),
//                                        Halyard::kAccessWrite);
//   if (!port) return TOV::kErrOpenFailed;
//   auto* stream = new Halyard::CWriteStream(port.Release(), Halyard::kHaldLittleEndian,
//                                            4096, 0, 0);  // the stream owns the port
//   Halyard::AudioInfo info{0x3, Halyard::kVAudioSampleSize16, 48000};
//   TOV::PCMFileWriter writer;
//   writer.BeginWriting(stream, info);        // 44-byte placeholder header
//   std::uint32_t count = sizeof(samples);
//   writer.WriteSamples(samples, count);      // appended unchanged
//   writer.EndWriting();                      // final header; `stream` is destroyed
//
// Writing a BMP file:
//
//   TOV::BMPFileWriter bmp(u"C:\\Media\\bars.bmp"_u16.c_str());
//   bmp.SetBMPProperties(Halyard::VSize{640, 480}, 0x80);   // 4 bytes per pixel
//   std::uint32_t unused = 0;
//   bmp.WriteBMP(pixels, 640 * 4, 0, unused);               // writes and closes
//
// Reading the writer format name of a preset:
//
//   unsigned char isForWriter = 0;
//   if (Halyard::VIsPresetFileForThisWriter("preset.epr", u"MPEG2-DVD"_u16.c_str(),
//                                           &isForWriter) == 0 && isForWriter) { ... }
//
// Reporting policy: every operation answers a 32-bit status (0 for success,
// TOV::kErr... or 0xFFFFFFFF, TOV::kErrGeneric, as each one lists) and never
// lets an exception out. Stream statuses pass through unchanged.
//
// Thread safety: the free functions keep no state and may run concurrently.
// A writer object is used by one thread at a time; the stream it writes to
// serialises its own operations.
#pragma once

#include <cstdint>
#include <cstdio>

#include "tovfoundation/common.h"

namespace Halyard {

class CWriteStream;

// ---------------------------------------------------------------------------
// Audio sample sizes and channel masks
// ---------------------------------------------------------------------------

// Number of set bits in the channel mask `mode`: 0x3 ⇒ 2, 0x3F ⇒ 6, 0 ⇒ 0.
TOV_API std::uint32_t TOVAudioModeToNumberOfChannels(std::uint32_t mode);

// Bits per sample of a sample-size code: 1 ⇒ 8, 2 ⇒ 16, 4 ⇒ 20, 8 ⇒ 24,
// 16 ⇒ 32 (integer), 32 ⇒ 64, 64 ⇒ 32 (floating point), 128 ⇒ 8; any other
// value ⇒ 0.
TOV_API std::uint32_t TOVAudioSampleSizeToBitsPerSample(enumVAudioSampleSize size);

// Sample-size code of a bit depth: 8 ⇒ 1, 20 ⇒ 4, 24 ⇒ 8, 32 ⇒ 16, 64 ⇒ 32;
// every other value ⇒ 2 (16 bits), 16 itself included, and so are 12, 4, 72.
// The round trip is not exact on purpose: 32 bits always means the integer
// code 16, never the float code 64, and 8 bits means 1, never 128.
TOV_API enumVAudioSampleSize BitsPerSampleToTOVAudioSampleSize(std::uint32_t bits);

// ---------------------------------------------------------------------------
// Colour spaces
// ---------------------------------------------------------------------------

// Bytes per pixel of a colour-space code (one bit each):
//   0x4 ⇒ 1;
//   0x20, 0x40, 0x800, 0x1000, 0x2000, 0x4000, 0x10000, 0x20000, 0x40000 ⇒ 3;
//   0x80, 0x100, 0x200, 0x80000, 0x100000, 0x200000, 0x400000, 0x800000,
//   0x1000000 ⇒ 4;
//   any other value (0x8, combinations of bits, 0) ⇒ 0.
TOV_API std::uint32_t VColourSpacetoNumberofBytes(std::uint32_t colourSpace);

// ---------------------------------------------------------------------------
// Encoder preset files
// ---------------------------------------------------------------------------
//
// A preset is XML stored as little-endian UTF-16 code units. Its writer format
// name is the value, between double quotes, of the first "WriterFormatName="
// that follows "<Header". There is no XML parsing: the first match wins
// wherever it stands, and a byte-order mark is simply text before it.

// Longest format name, in UTF-16 units, counting its terminating zero.
inline constexpr std::uint32_t kMaxFormatNameUnits = 260;

// Reads the writer format name from `file`, from its current position on,
// and copies it with a terminating zero into `name`.
//
// The file is read in chunks of at most 1023 units. "<Header" is looked for
// in each chunk until found; from that chunk on, "WriterFormatName=" is looked
// for (in the chunk that holds "<Header", after it; in later chunks, from the
// chunk's start), then the next double quote in the same chunk. The value runs
// from the unit after that quote to the closing quote or the end of the chunk.
// A quote that is the last unit of its chunk does not start a value: the search
// goes on in the next chunk. A preset whose header lies within its first 1023
// units is always read correctly. An attribute that only appears in a chunk
// after the one holding "<Header" is still found (searched from that chunk's
// start), as is a "<Header" that first appears in a later chunk; a name cut by
// a chunk boundary is read only up to that boundary
// ("…WriterFormatName=\"MPEG\"" with the value starting at unit 1020 ⇒ "MPE").
//
// Statuses:
//   0                   the name was copied;
//   kErrInvalidPointer  `file` or `name` null, or `capacity` 0;
//   kErrNotFound        the file is at its end, no value before the end of the
//                       file, the value is 260 units or longer (it does not fit
//                       the 260-unit work buffer with its terminator; nothing is
//                       written past that buffer), or the value is longer than
//                       `capacity`;
//   kErrCreateFailed    a read error.
// `name` is written only on success.
//
// Caller contract: `name` must hold `capacity` + 1 units. A name whose length
// equals `capacity` is accepted and its terminator is written at
// name[capacity], one unit past `capacity`; this is intended ("MPEG" with
// capacity 4 returns 0 and writes 5 units).
TOV_API std::uint32_t VGetFormatName(std::FILE* file, unsigned short* name, std::uint32_t capacity);

// Opens `path` (8-bit, library spelling, in the system's narrow encoding: the
// ANSI code page on Windows, as the C runtime's narrow open takes it, UTF-8 on
// POSIX) for binary
// reading, reads the name as above and closes the file. A null `path` ⇒
// kErrInvalidPointer; a file that cannot be opened ⇒ kErrOpenFailed.
TOV_API std::uint32_t VGetFormatName(const char* path, unsigned short* name,
                                     std::uint32_t capacity);

// The same with a NUL-terminated UTF-16 path.
TOV_API std::uint32_t VGetFormatName(const unsigned short* path, unsigned short* name,
                                     std::uint32_t capacity);

// Decides whether the preset file at `path` (8-bit, in the system's narrow
// encoding as for VGetFormatName) belongs to the writer named `writerName`
// (NUL-terminated UTF-16):
//   - a format name that contains "Pellucid Video" or "WRX | W4X (H.264)"
//     anywhere counts as "WRX | W4X";
//   - the (so mapped) name equal to `writerName`, code unit for code unit ⇒ 1;
//   - otherwise a format name of exactly "MPEG" with the writer "MPEG2-DVD" ⇒ 1;
//   - otherwise ⇒ 0.
// Statuses: 0; kErrInvalidPointer for a null argument; kErrOpenFailed when the
// file cannot be opened; the status of VGetFormatName (capacity 260) when the
// name cannot be read. `*isForWriter` is written only when the name was read.
TOV_API std::uint32_t VIsPresetFileForThisWriter(const char* path, const unsigned short* writerName,
                                                 unsigned char* isForWriter);

// The same for a preset held in memory as `units` UTF-16 units. The preset is
// written (little-endian) to a new file "vpr….tmp" in the system's temporary
// folder (the folder, and any missing parent, is made when it does not exist),
// examined as VIsPresetFileForThisWriter does, and the file is removed. The
// folder and name come from the OS layer in UTF-16 form, so a temporary folder
// with non-ASCII characters works too.
// Statuses: those of VIsPresetFileForThisWriter; kErrInvalidPointer for a null
// `writerName` or `isForWriter`, or a null `preset` with `units` not 0;
// kErrCreateFailed when the temporary folder or file cannot be made or fully
// written (a short-written file is left behind). A null `preset` with `units`
// 0 writes an empty file and answers kErrNotFound.
// Caller contract: `preset` holds at least `units` units.
TOV_API std::uint32_t VIsPresetForThisWriter(const unsigned short* preset, std::uint32_t units,
                                             const unsigned short* writerName,
                                             unsigned char* isForWriter);

}  // namespace Halyard

namespace TOV {

// ---------------------------------------------------------------------------
// PCM WAVE writer
// ---------------------------------------------------------------------------

// Writes uncompressed audio as a RIFF/WAVE file onto a little-endian
// CWriteStream the caller opened: a 44-byte placeholder header at the stream's
// position, the sample bytes unchanged, then at EndWriting the real header:
//
//   0 "RIFF" | 4 data bytes + 36 | 8 "WAVE" | 12 "fmt " | 16 16 |
//   20 format tag | 22 channels | 24 sample rate | 28 byte rate |
//   32 block align | 34 bits per sample | 36 "data" | 40 data bytes
//
// format tag 3 (IEEE float) only for sample size 64, otherwise 1; channels =
// set bits of the audio mode; bits = TOVAudioSampleSizeToBitsPerSample; byte
// rate = (bits × channels × rate) >> 3 and block align = bits × channels / 8,
// both in unsigned 32-bit arithmetic. Intended and kept: no pad byte after an
// odd-sized data chunk; a 16-byte format chunk also for float; sample size 32
// is written as integer PCM of 64 bits; the sizes wrap modulo 2^32 (more than
// 4 GiB of samples is not detected).
//
// Ownership: the writer takes the stream over. EndWriting (and the destructor)
// Release it, and a write stream's Release destroys it: do not use the stream
// after a successful EndWriting.
class TOV_API PCMFileWriter {
 public:
  // An idle writer: no stream, header position 0, data bytes 0xFFFFFFFF.
  PCMFileWriter();
  // Finishes a file still being written, as EndWriting; when the flush fails
  // the stream is left alone (neither released nor destroyed).
  ~PCMFileWriter();

  PCMFileWriter(const PCMFileWriter&) = delete;
  PCMFileWriter& operator=(const PCMFileWriter&) = delete;

  // Starts a file on `stream` with the format `info` (copied whole).
  //   null stream ⇒ kErrInvalidArgument; the stream field becomes null;
  //   big-endian stream (FlipBytes() true) ⇒ 0xFFFFFFFF, the field becomes
  //     null and the stream is neither AddRef'd nor released; later
  //     WriteSamples calls do nothing and answer 0;
  //   otherwise the stream is AddRef'd and held, its GetPos becomes the header
  //     position (a failing GetPos is answered), and 44 zero bytes are written
  //     (the Write status is answered).
  // A second BeginWriting while writing replaces the stream without releasing
  // the first one: intended, the caller then still owns the first stream.
  std::uint32_t BeginWriting(Halyard::CWriteStream* stream, const Halyard::AudioInfo& info);

  // Appends `count` bytes of `data`; `count` is not changed. No stream ⇒ 0 and
  // nothing happens. A failing Write is answered and the byte count stays;
  // otherwise the count grows by `count` (mod 2^32) and 0 is answered.
  std::uint32_t WriteSamples(const unsigned char* data, std::uint32_t& count);

  // Rewrites the header with the final sizes at the header position, then
  // Flush(1)s the stream. No stream ⇒ 0. A failing flush is answered and the
  // writer keeps its state, so a later EndWriting may retry. On success the
  // stream is released (and so destroyed), the writer is idle again, and 0 is
  // answered. Header writes stop silently at the first failing one.
  std::uint32_t EndWriting();

 private:
  void WriteHeader();

  Halyard::CWriteStream* mStream;
  Halyard::AudioInfo mInfo;
  std::uint32_t mHeaderPos;
  std::uint32_t mDataBytes;  // 0xFFFFFFFF: no file is being written
};

// ---------------------------------------------------------------------------
// BMP writer
// ---------------------------------------------------------------------------

// Writes one uncompressed, top-down bitmap from the caller's pixel rows: a
// 14-byte file header and a 40-byte information header (54 bytes in all,
// little-endian), then the rows, first row first, no colour table.
//
//   0 "BM" | 2 file size | 6 0 | 8 0 | 10 54 | 14 40 | 18 width |
//   22 −height | 26 planes 1 | 28 bits | 30 compression 0 | 34 image size |
//   38 0 | 42 0 | 46 0 | 50 0
//
// bits = 8 × VColourSpacetoNumberofBytes(colour space); row bytes =
// (bits × width) >> 3; file size = row bytes × height + 54; image size = file
// size − 54. Intended and kept: rows are written back to back with no padding
// to 4 bytes (a 3 × 1 image of 3-byte pixels gives a 63-byte file); a colour
// space the helpers do not know gives 0 bits and a 54-byte file; the file and
// image sizes are computed only while their fields are 0, so a writer that
// writes a second image keeps the first image's sizes: use one writer per
// image.
//
// Readers and unpadded rows: ffmpeg and ffprobe read every depth at every
// width (they note the missing row alignment and take the rows as written;
// 8-bit images, having no colour table, come out as grey levels). PIL reads
// 32-bit images, 24-bit images whose width is a multiple of 4 and 24-bit
// images of one row; it refuses as truncated the other 24-bit images and every
// 8-bit image. A reader that steps through rows at the padded 4-byte stride
// refuses such images or misplaces their pixels.
//
// Ownership: the writer destroys its stream at EndWriting (Release), also one
// adopted with ResetStream; a file it opened itself is closed with it.
class TOV_API BMPFileWriter {
 public:
  // An idle writer: no stream, size 0 × 0, colour space 32, header fields 0.
  BMPFileWriter();
  // An idle writer that then calls OpenNewFile(path), ignoring its status.
  explicit BMPFileWriter(const unsigned short* path);
  // As EndWriting, ignoring its status.
  ~BMPFileWriter();

  BMPFileWriter(const BMPFileWriter&) = delete;
  BMPFileWriter& operator=(const BMPFileWriter&) = delete;

  // Creates (or truncates) the file at `path` (NUL-terminated UTF-16, library
  // spelling) through a file port and holds a little-endian write stream with
  // a 4096-byte buffer that owns the port.
  //   a stream already held ⇒ 0xFFFFFFFF;
  //   the port's Open status when it fails (kErrInvalidArgument for a null
  //     path, kErrOpenFailed otherwise). The port object is then not destroyed:
  //     it leaks, which is accepted (one small object per failed open);
  //   0 otherwise.
  std::uint32_t OpenNewFile(const unsigned short* path);

  // Adopts the caller's stream (AddRef) instead of opening a file.
  //   null ⇒ kErrInvalidPointer; big-endian ⇒ 0xFFFFFFFF; a stream already
  //   held ⇒ 0xFFFFFFFF; otherwise 0. The adopted stream is destroyed by
  //   EndWriting like an owned one.
  std::uint32_t ResetStream(Halyard::CWriteStream* stream);

  // Stores the size and colour space and fills the header fields (type,
  // offsets, width, height, planes, bits, compression); always 0. The file and
  // image size fields are not touched here.
  std::uint32_t SetBMPProperties(Halyard::VSize size, std::uint32_t colourSpace);

  // Writes the headers and `height` rows of row-bytes each, row i taken from
  // pixels + i × rowStride (a negative stride walks the source upwards), then
  // ends the writing. The last two arguments are not used.
  //   no stream, width 0 or height 0 ⇒ 0xFFFFFFFF (nothing written);
  //   the first failing header write's status (the stream is kept);
  //   otherwise EndWriting's status. Failures while writing rows are not
  //   detected.
  // Caller contract: width and height are positive (a negative height writes
  // no rows), and every row i < height lies inside the caller's block.
  std::uint32_t WriteBMP(const unsigned char* pixels, std::int32_t rowStride, std::uint32_t,
                         std::uint32_t&);

  // Flush(1)s and releases (destroys) the stream; answers the flush status.
  // No stream ⇒ 0.
  std::uint32_t EndWriting();

 private:
  Halyard::CWriteStream* mStream;
  Halyard::VSize mSize;
  std::uint32_t mColourSpace;
  // File header.
  std::uint16_t mType;
  std::uint32_t mFileSize;
  std::uint16_t mReserved1;
  std::uint16_t mReserved2;
  std::uint32_t mPixelOffset;
  // Information header.
  std::uint32_t mInfoSize;
  std::int32_t mWidth;
  std::int32_t mHeight;
  std::uint16_t mPlanes;
  std::uint16_t mBitsPerPixel;
  std::uint32_t mCompression;
  std::uint32_t mImageSize;
  std::int32_t mXResolution;
  std::int32_t mYResolution;
  std::uint32_t mColoursUsed;
  std::uint32_t mColoursImportant;
};

}  // namespace TOV
