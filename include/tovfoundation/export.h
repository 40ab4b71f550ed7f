// tovfoundation: the export macros of the public interface.
//
// The library is built with hidden symbols; everything a caller may use carries
// TOV_API. Consumers of the shared library get imports, the library's own build
// gets exports, and a static build (TOVFOUNDATION_STATIC, used by the unit tests)
// gets nothing.
//
// TOV_INTERFACE marks the polymorphic classes a host implements in its own
// binary (IVUnknown, IVServicesManager, IVReadStream, ...): classes with no
// out-of-line member the library could export, whose type information (typeinfo
// and its name) is emitted in every binary that needs it. On ELF the class gets
// default visibility, so the library's copy is exported and the dynamic linker
// keeps ONE type_info per class for the host and the library: typeid, dynamic_cast
// and the sanitizers' dynamic type checks then agree across the boundary,
// whichever side created the object. On Windows it is empty: a class-wide
// dllexport/dllimport would export every inline member instead, and both
// libstdc++ (mingw-w64) and the Microsoft runtime compare type_info by name
// across modules, so each module's own copy already compares equal.
//
// TOV_HIDDEN keeps a class out of the exported interface even where it is
// nested in an exported class (a private implementation type): on ELF a nested
// class inherits the visibility of the class around it.
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

#if defined(_WIN32)
// Marks a host-implemented polymorphic class (see above); empty on Windows.
#define TOV_INTERFACE
// Keeps a nested implementation class out of the exports (see above).
#define TOV_HIDDEN
#else
// Marks a host-implemented polymorphic class: its type information is exported.
#define TOV_INTERFACE __attribute__((visibility("default")))
// Keeps a nested implementation class out of the exports.
#define TOV_HIDDEN __attribute__((visibility("hidden")))
#endif
