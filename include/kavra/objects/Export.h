/// \file
/// Visibility of what the host object library offers.
#pragma once

/// Marks what `libKavraObjects.so` exports. The library is built with hidden visibility, so whatever does not carry
/// this mark stays inside it. Where a class carries it, all of the class's members, its vtable and its type information
/// are exported, so that `dynamic_cast` works across libraries. The build of the library itself defines
/// `KAVRA_OBJECTS_BUILD`; hosts and modules do not.
///
///     class KAVRA_OBJECTS_API Registry { ... };   // a class with all that it has
///     KAVRA_OBJECTS_API int Compare(int a, int b);
#if defined(KAVRA_OBJECTS_BUILD)
#define KAVRA_OBJECTS_API __attribute__((visibility("default")))
#else
#define KAVRA_OBJECTS_API
#endif
