// tovfoundation text: string conversions and UTF-16 buffer helpers, Base64,
// the localised string dictionary and OS error messages, placeholder
// replacement and number text.
//
//   using namespace basalt::literals;
//   namespace SU = Halyard::StringUtils;
//
//   SU::VUTF8ToUTF16("Grüße") == u"Grüße"_u16
//   SU::FourCCToUTF16(0x57415645) == u"WAVE"_u16
//
//   std::vector<unsigned char> bytes{'M', 'a', 'n'};
//   Halyard::Encode(bytes) == u"TWFu\r\n"_u16
//   Halyard::Decode(u"TWFu\r\n"_u16) == bytes
//
//   std::uint32_t count = 0;
//   SU::VReplace(u"Frame ^1 of ^2"_u16.c_str(), nullptr, &count, "uu", 3u, 10u);  // count == 13
//   std::vector<unsigned short> out(count + 1);
//   SU::VReplace(u"Frame ^1 of ^2"_u16.c_str(), out.data(), &count, "uu", 3u, 10u);
//   // out holds u"Frame 3 of 10" and its NUL
//
// Reporting: the conversions with a status answer 0 or one of the TOV::kErr…
// codes below; the UTF-16 buffer primitives (VWLen, VWCopy, VWStrcat,
// VWIsEqual, the UTF-16 StringDuplicate) and VReplace with a null template
// throw TOV::TOVVRException; Base64 never reports bad input. Everything here is
// reentrant except the text locale (VLocale/InitVLocale share one unguarded
// process-wide value) and the multibyte conversions, which read the calling
// thread's current C locale (LC_CTYPE; set it with uselocale or setlocale).
#pragma once

#include <cstdarg>
#include <cstdint>
#include <locale>
#include <string>
#include <vector>

#include "basalt/strings.h"
#include "tovfoundation/common.h"

// ===========================================================================
// String utilities
// ===========================================================================
namespace Halyard::StringUtils {

// --- UTF-8, UTF-16, ASCII and the system code page --------------------------
// The Unicode work is basalt's (basalt/utf.h): valid text converts losslessly,
// each ill-formed sequence becomes U+FFFD. These never fail.

// UTF-8 ⇒ UTF-16 (basalt::UTF8to16).
TOV_API UTF16String VUTF8ToUTF16(const UTF8String& text);
// The same into `out`, whose whole content is replaced. Always returns 0.
TOV_API std::uint32_t VUTF8ToUTF16(const UTF8String& text, UTF16String& out);
// UTF-16 ⇒ UTF-8 (basalt::UTF16to8).
TOV_API UTF8String VUTF16ToUTF8(const UTF16String& text);
// The same into `out`, whose whole content is replaced. Always returns 0.
TOV_API std::uint32_t VUTF16ToUTF8(const UTF16String& text, UTF8String& out);

// Each byte of a NUL-terminated 8-bit string widened to one code unit
// (basalt::AsciiToUTF16): bytes 0x80–0xFF become U+0080–U+00FF. nullptr ⇒ "".
TOV_API UTF16String VAsciiToUTF16(const char* text);

// A NUL-terminated string in the system's ANSI code page (Windows: code page 0;
// POSIX: UTF-8) as UTF-16, up to its NUL. nullptr ⇒ ""; a text the system
// cannot convert ⇒ "". Never fails.
TOV_API UTF16String PlatformStringToUTF16(const char* text);

// --- Four-character codes ----------------------------------------------------

// The four bytes of `code`, most significant first, as text through
// VAsciiToUTF16; a zero byte ends the text early:
// 0x57415645 ⇒ "WAVE", 0x00415645 ⇒ "", 0x41420043 ⇒ "AB".
TOV_API UTF16String FourCCToUTF16(std::uint32_t code);
// True exactly when every byte of `code` is below 0x80 (a zero byte counts as
// valid): 0x57415645 ⇒ true, 0x80000000 ⇒ false.
TOV_API bool isValidFourCCToUTF16(std::uint32_t code);

// True for 0 to 127. The comparison is unsigned, so -1 ⇒ false, 128 ⇒ false.
TOV_API bool IsAscii(int value);

// --- Duplication ---------------------------------------------------------------

// A new copy of a NUL-terminated string, NUL included; the caller frees it
// with delete[]. nullptr ⇒ nullptr. The 8-bit form answers nullptr when memory
// runs out; the UTF-16 form throws TOV::TOVVRException (kErrInvalidArgument)
// then.
TOV_API char* StringDuplicate(const char* text);
TOV_API unsigned short* StringDuplicate(const unsigned short* text);

// --- UTF-16 buffer primitives ----------------------------------------------------
// Each throws TOV::TOVVRException (kErrInvalidArgument) for a null pointer
// argument. Caller contract: buffers are NUL-terminated where read as text and
// large enough where written; nothing else is checked.

// Number of code units before the NUL.
TOV_API std::size_t VWLen(const unsigned short* text);
// Copies `count` code units of `source` into `destination` and a NUL after
// them; count 0 means VWLen(source). With a count above the source's length
// the units after its NUL are copied too (the caller guarantees they can be
// read). The two buffers may overlap. Returns `destination`.
TOV_API unsigned short* VWCopy(unsigned short* destination, const unsigned short* source,
                               std::size_t count);
// Appends `source` with its NUL at the NUL of `destination`; returns `destination`.
TOV_API unsigned short* VWStrcat(unsigned short* destination, const unsigned short* source);
// 1 when the texts are equal, else 0. With ignoreCase 0 they must match code
// unit for code unit; otherwise they must have the same length and match after
// folding A–Z onto a–z only: ("ABC", "abc", 1) ⇒ 1, ("É", "é", 1) ⇒ 0.
TOV_API unsigned char VWIsEqual(const unsigned short* first, const unsigned short* second,
                                unsigned char ignoreCase);

// --- The text locale --------------------------------------------------------------
// One process-wide std::locale, initially std::locale() as it stood at first
// use. Not guarded: set it during start-up, before other threads read it.

TOV_API const std::locale& VLocale();
// Holds `locale` from now on; nothing happens when it equals the held one.
TOV_API void InitVLocale(const std::locale& locale);

}  // namespace Halyard::StringUtils

namespace Halyard {

// --- Multibyte text in the C runtime's current locale ------------------------
// These convert between the calling thread's current LC_CTYPE multibyte
// encoding and UTF-16 (a character outside the BMP is two code units), like
// mbstowcs and wcstombs. In the "C" and "POSIX" locales every byte is a
// character: bytes 0x80–0xFF are U+0080–U+00FF and back, and code units above
// U+00FF cannot be converted.

// Buffer form, multibyte ⇒ UTF-16. Measures `source`, stores in *length the
// number of code units *including* the terminating NUL, and, when
// `destination` is not null, converts into it (caller contract: room for
// *length units):
//   source or length null ⇒ kErrInvalidArgument, nothing stored;
//   invalid multibyte text ⇒ *length = 0xFFFFFFFF, kErrInvalidPointer;
//   otherwise 0 (kErrInvalidPointer if the conversion into `destination` fails).
// "abc" ⇒ *length == 4.
TOV_API std::uint32_t VUtilsASCIIStrToUnicode(const char* source, char16_t* destination,
                                              std::uint32_t* length);
// String form: the converted text; nullptr or invalid text ⇒ "".
TOV_API WideString VUtilsASCIIStrToUnicode(const char* source);

// Buffer form, UTF-16 ⇒ multibyte. Stores in *length the number of bytes
// *excluding* the terminating NUL (deliberately unlike the other direction),
// and, when `destination` is not null, converts into it with its NUL (caller
// contract: room for *length + 1 bytes):
//   source or length null ⇒ kErrInvalidArgument, nothing stored;
//   text the locale cannot represent ⇒ *length = 0xFFFFFFFF, kErrCreateFailed;
//   otherwise 0 (kErrCreateFailed if the conversion into `destination` fails).
// u"abc" ⇒ *length == 3.
TOV_API std::uint32_t VUtilsUnicodeToASCIIStr(const char16_t* source, char* destination,
                                              std::uint32_t* length);
// String form: the converted text; nullptr, an empty text or text that cannot
// be represented ⇒ "".
TOV_API std::string VUtilsUnicodeToASCIIStr(const char16_t* source);

// --- Fixed-point text ----------------------------------------------------------

// Prints `value` into `destination` as printf's "%.<decimals>f" does (the C
// runtime's rounding and current LC_NUMERIC decimal point), then, when
// decimals > 1, removes trailing '0' characters, at most decimals - 1 of them,
// so one fraction digit always stays:
//   (1.5, 3) ⇒ "1.5", (2, 3) ⇒ "2.0", (10, 4) ⇒ "10.0", (10, 0) ⇒ "10",
//   (2.25, 1) ⇒ "2.2" (printf's rounding of the binary value, nothing removed).
// Negative `decimals` are treated as 0. Caller contract: `destination` is not
// null and holds the whole text with its NUL (no size is checked; a double
// needs at most 310 + decimals + 2 bytes).
TOV_API void ConvertFloatToString(char* destination, double value, int decimals);

// ===========================================================================
// Base64 (RFC 4648 alphabet, "=" padding, CRLF line breaks)
// ===========================================================================

// Encodes bytes as Base64 text. The line layout is deliberate: a line break
// follows the very first group of four characters, then every 19th group, so
// lines hold 4, then 76 characters; the text ends with "\r\n" only when its
// last group started at an input offset that is a multiple of 57.
//   {} ⇒ "", {0x4D} ⇒ "TQ==\r\n", "Man" ⇒ "TWFu\r\n", "Many" ⇒ "TWFu\r\neQ==",
//   61 bytes ⇒ lines of 4, 76 and 4 characters.
// The walk counts groups with a 32-bit offset, so 2^32 bytes or more could
// never be encoded: such input throws std::length_error("string too long").
// std::bad_alloc when memory runs out.
TOV_API UTF16String Encode(const std::vector<unsigned char>& bytes);

// Decodes Base64 text leniently; bad input is never reported:
// - every code unit that is not A–Z, a–z, 0–9, "+", "/" or "=" is dropped
//   (spaces, line breaks, punctuation, every non-ASCII character);
// - the rest is read in groups of four; a short last group is completed with
//   "A" (value 0), so "QQ" ⇒ {0x41, 0x00, 0x00} and "QUI" ⇒ three bytes;
// - each group gives its first byte always, its second unless the third
//   character is "=", its third unless the fourth character is "=" (the two
//   tests are independent: "QQ=B" ⇒ {0x41, 0xC1}, the "=" in third place
//   reading as 63 for the third byte);
// - "=" anywhere else reads as value 63, like "/".
//   "" ⇒ {}, " \r\n" ⇒ {}, "QQ==" ⇒ {0x41}, "TWFu\r\neQ==" ⇒ "Many".
// Decode(Encode(bytes)) == bytes for every input. Like Encode, it counts with
// a 32-bit offset: text keeping 2^32 characters or more throws
// std::length_error("vector<T> too long").
TOV_API std::vector<unsigned char> Decode(const UTF16String& text);

// True exactly for A–Z, a–z, 0–9, "+", "/" and "=" (the pad counts):
// '=' ⇒ true, ' ' ⇒ false, '-' ⇒ false, '_' ⇒ false.
TOV_API bool IsBase64(unsigned char character);

}  // namespace Halyard

// ===========================================================================
// Localised strings and OS error messages
// ===========================================================================
namespace Halyard {

// The host's string-dictionary service. Its operations belong to the host; the
// library only stores and hands out the pointer.
class TOVZStringService;

// A reference-counted interface pointer of the host (T: IVServicesManager or
// another interface with AddRef as its second and Release as its third virtual
// operation). Constructing from a raw pointer and copying add a reference;
// destruction, Clear and assignment release the one held. Moving transfers it.
template <typename T>
class CVSmartI {
 public:
  // Holds nothing.
  CVSmartI() noexcept = default;
  // Holds `pointer` (may be null) and adds a reference to it.
  explicit CVSmartI(T* pointer) noexcept : mPointer(pointer) {
    if (mPointer != nullptr) mPointer->AddRef();
  }
  // Holds the other's pointer and adds a reference.
  CVSmartI(const CVSmartI& other) noexcept : CVSmartI(other.mPointer) {}
  // Takes over the other's reference; the other holds nothing.
  CVSmartI(CVSmartI&& other) noexcept : mPointer(other.mPointer) { other.mPointer = nullptr; }
  // Takes the other's pointer (a copy or a move) and releases the one held.
  CVSmartI& operator=(CVSmartI other) noexcept {
    T* previous = mPointer;
    mPointer = other.mPointer;
    other.mPointer = previous;  // released when `other` goes
    return *this;
  }
  // Releases the reference held, if any.
  ~CVSmartI() { Clear(); }

  // Releases the reference held, if any, and holds nothing.
  void Clear() noexcept {
    T* held = mPointer;
    mPointer = nullptr;
    if (held != nullptr) held->Release();
  }
  // The pointer held, or null; no reference is added.
  T* get() const noexcept { return mPointer; }
  // The pointer held; it must not be null.
  T* operator->() const noexcept { return mPointer; }
  // True when a pointer is held.
  explicit operator bool() const noexcept { return mPointer != nullptr; }

 private:
  T* mPointer = nullptr;
};

// The operating system's message text for a Windows error code, unchanged
// (its trailing line break included). Windows asks FormatMessageW in the
// user's default language. On POSIX the codes are those the library's OS layer
// reports: each maps back to the errno it stands for and the text is the
// "C"-locale strerror text followed by "\r\n" (2 ⇒ "No such file or
// directory\r\n", 5 ⇒ "Permission denied\r\n"). A code without text gives the
// localised "$$$/TOV/Common/WinOSErrorConversionFailed" text, in English
// "There was an error converting this Win32 error to a message!". Never fails.
TOV_API UTF16String Win32ErrorCodeToMessage(std::uint32_t code);

}  // namespace Halyard

namespace TOV {

// Thrown by InitZStringDict when the host has no string dictionary.
// what() == "Failed to initialize ZString Dictionary".
class TOV_API eZStringDictInitFail : public TOVException {
 public:
  // The fixed text of the exception.
  const char* what() const noexcept override;
};

// Binds the library to the host's "TOV ZString Service": asks `services` to
// acquire it (version argument 0) into the process-wide dictionary pointer.
// Success: `services` is released and nulled, 0 is returned. Failure: throws
// eZStringDictInitFail; the reference is released as the exception leaves.
// The host calls this (the library never does), not concurrently with
// TerminateZStringDict. Caller contract: `services` is not null.
TOV_API std::uint32_t InitZStringDict(Halyard::CVSmartI<Halyard::IVServicesManager> services);

// Asks `services` to release the "TOV ZString Service" (version argument 0,
// the address of the process-wide pointer), releases `services`, and returns
// the host's status. The stored pointer is not cleared by the library: the
// host's release operation receives its address and may do so. Caller
// contract: `services` is not null.
TOV_API std::uint32_t TerminateZStringDict(Halyard::CVSmartI<Halyard::IVServicesManager> services);

// The stored dictionary pointer; nullptr before InitZStringDict succeeds.
// Only reads the pointer; not owned by the library.
TOV_API Halyard::TOVZStringService* GetDictionary();

}  // namespace TOV

// ===========================================================================
// Placeholder replacement and number text
// ===========================================================================
namespace Halyard::StringUtils {

// Builds text from `templ` by replacing numbered placeholders with typed
// arguments. A placeholder is "^" and ASCII digits: "^1" is the first argument.
// `types` holds one letter per argument, in order:
//   'd' double                   VNumberToUTF16(value, 3):  2.5 ⇒ "2.5"
//   'h' std::uint32_t            VNumberToHexUTF16(value):  255 ⇒ "FF"
//   'i' std::int32_t             decimal, classic locale:   -5 ⇒ "-5"
//   'u' std::uint32_t            decimal, classic locale:   10 ⇒ "10"
//   'w' const unsigned short*    the NUL-terminated UTF-16 text itself
//                                (nullptr is taken as "")
// Arguments may be used any number of times, or not at all; a null `types`
// means no arguments.
//
// The result is written to `output` and its length, without the NUL, to
// *length; a null `output` only counts, so measure first, then fill:
//   ("Frame ^1 of ^2", "uu", 3, 10) ⇒ "Frame 3 of 10", *length == 13.
// Odd cases, deliberately so:
//   "^" at the end, "^" before a non-digit, "^0" ⇒ a literal "^" (the digits
//   of "^0" are consumed: "a^0b" ⇒ "a^b"); there is no other escape;
//   a placeholder above the argument count ⇒ kErrInvalidPointer at once, the
//   text before it left in `output` without a NUL and counted in *length;
//   the number is accumulated in wrapping 32-bit arithmetic;
//   an unknown type letter ⇒ kErrInvalidPointer, *length 0, nothing written;
//   an empty template or a null `length` ⇒ kErrInvalidPointer, nothing touched;
//   a null template ⇒ throws TOV::TOVVRException (kErrInvalidArgument).
// Returns 0 on success. Caller contract: `output`, when given, has room for
// the whole result and its NUL — its size is never checked; the argument list
// matches `types` (type and count), as for printf.
TOV_API std::uint32_t VReplace(const unsigned short* templ, unsigned short* output,
                               std::uint32_t* length, const char* types, ...);
// VReplace with the arguments as a va_list (consumed as `types` says).
TOV_API std::uint32_t VVarArgsReplace(const unsigned short* templ, unsigned short* output,
                                      std::uint32_t* length, const char* types,
                                      std::va_list arguments);

// A double with at most `precision` fraction digits, trailing zeros and a bare
// point removed, classic locale (basalt::NumberToString(value, 1, precision,
// 0x1F, 0)): (2.5, 3) ⇒ "2.5", (2.0, 3) ⇒ "2", (0.1239, 2) ⇒ "0.12".
TOV_API UTF16String VNumberToUTF16(double value, unsigned char precision);
// Upper-case hexadecimal without prefix or padding, two's complement for
// negative values: 255 ⇒ "FF", 0 ⇒ "0", -1 ⇒ "FFFFFFFF".
TOV_API UTF16String VNumberToHexUTF16(std::int32_t value);
// The double at the start of `text` (classic locale, trailing text ignored):
// "2.5" ⇒ 2.5, "2.5 s" ⇒ 2.5, "abc" ⇒ 0.0, "" ⇒ 0.0.
TOV_API double VUTF16ToNumber(const UTF16String& text);

}  // namespace Halyard::StringUtils
