// tovfoundation: the export macros of the public interface.
//
// The library is built with hidden symbols; everything a caller may use carries
// TOV_API. Consumers of the shared library get imports, the library's own build
// gets exports, and a static build (TOVFOUNDATION_STATIC, used by the unit tests)
// gets nothing.
//
// TOV_HIDDEN keeps a class out of the exported interface even where it is
// nested in an exported class (a private implementation type): on ELF a nested
// class inherits the visibility of the class around it.
#pragma once

#if defined(TOVFOUNDATION_STATIC)
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

#if defined(_WIN32)
#define TOV_HIDDEN
#else
#define TOV_HIDDEN __attribute__((visibility("hidden")))
#endif
