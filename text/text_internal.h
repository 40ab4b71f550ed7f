// Internal parts of the text subsystem that tests, the fuzzer and the
// variadic entry points share.
#pragma once

#include <cstddef>
#include <cstdint>

#include "basalt/strings.h"

namespace tovimpl::text {

// A copy of `length` code units of `text` and a NUL, from nothrow new[];
// throws TOV::TOVVRException (kErrInvalidArgument) when that gives nullptr.
unsigned short* DuplicateUnits(const unsigned short* text, std::size_t length);

// The texts VReplace makes of its typed arguments.
UTF16String DoubleArgumentText(double value);              // 'd'
UTF16String HexArgumentText(std::int32_t value);           // 'h'
UTF16String SignedArgumentText(std::int32_t value);        // 'i'
UTF16String UnsignedArgumentText(std::uint32_t value);     // 'u'
UTF16String TextArgumentText(const unsigned short* text);  // 'w' (nullptr ⇒ "")

// The placeholder scan of VReplace over arguments already turned into text:
// steps after the argument conversion, with the same results. `templ` must not
// be null (the variadic entry points check); `arguments` holds `argumentCount`
// texts, argument 1 first.
std::uint32_t ReplaceWithTexts(const unsigned short* templ, unsigned short* output,
                               std::uint32_t* length, const UTF16String* arguments,
                               std::size_t argumentCount);

}  // namespace tovimpl::text
