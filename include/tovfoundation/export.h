// tovfoundation: the one export macro of the public interface.
//
// The library is built with hidden symbols; everything a caller may use carries
// TOV_API. Consumers of the shared library get imports, the library's own build
// gets exports, and a static build (TOVFOUNDATION_STATIC, used by the unit tests)
// gets nothing.
#pragma once

#if defined(TOVFOUNDATION_STATIC)
// Marks a declaration as part of the exported interface (see above).
#define TOV_API
#elif defined(_WIN32)
#if defined(TOVFOUNDATION_BUILDING)
#define TOV_API __declspec(dllexport)
#else
#define TOV_API __declspec(dllimport)
#endif
#else
#define TOV_API __attribute__((visibility("default")))
#endif
