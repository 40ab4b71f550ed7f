// tovfoundation streams: writing and reading UTF-16 text and element buffers
// through a stream.
#pragma once

#include <cstdint>

#include "tovfoundation/common.h"
#include "tovfoundation/streams/read_stream.h"
#include "tovfoundation/streams/write_stream.h"

namespace Halyard {

// ---------------------------------------------------------------------------
// Stream string and buffer helpers
// ---------------------------------------------------------------------------

// Writes every code unit of `text` (embedded zero units included) with
// PutShort, then a zero unit when `terminate` is non-zero. No length prefix.
// The write statuses are not examined: always returns 0.
// "AB", terminate, big-endian ⇒ 00 41 00 42 00 00.
TOV_API std::uint32_t VUtilsWriteStringToStream(CWriteStream& stream, const UTF16String& text,
                                                unsigned char terminate);

// Reads units with ReadShort until a zero unit (consumed) or until `maxUnits`
// units were read, and replaces `text` with the units before the first zero.
// `maxUnits` 0: TOV::kErrInvalidPointer and `text` unchanged; otherwise 0.
// Deliberately, read statuses are ignored: at the end of the data the last unit
// read is appended again and again until `maxUnits` units were taken (a stream
// that fails from the start gives the empty text). Bound `maxUnits` by the data
// left (GetSize − GetPos) / 2 to read only what is there.
// Units A B C D, maxUnits 3 ⇒ "ABC", the stream left at D; A 0 C ⇒ "A", left at C.
TOV_API std::uint32_t VUtilsReadStringFromStream(CReadStream& stream, UTF16String& text,
                                                 std::uint32_t maxUnits);

// Writes `count` elements of `elementSize` bytes, each reversed when the
// stream is big-endian and the size is above 1 (so 16-bit values 0x0102,
// 0x0304 lying as 02 01 04 03 go out as 01 02 03 04). The middle byte of an
// element of odd size is not carried over: it is written as 0.
// Returns the stream's Write status; TOV::kErrInvalidPointer for a null `data`,
// a null `stream` or elementSize × count (32-bit, wrapping) of 0;
// TOV::kErrOutOfMemory when the reversed copy cannot be allocated.
TOV_API std::uint32_t WriteBufferToStream(const void* data, std::uint32_t elementSize,
                                          std::uint32_t count, CWriteStream* stream);

}  // namespace Halyard
