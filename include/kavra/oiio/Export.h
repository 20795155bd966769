/// \file
/// Visibility of what the module exports.
#pragma once

/// Marks what `KavraOIIOIntegration.so` exports: the two entry points and the members of its two classes. The module is
/// built with hidden visibility, so whatever does not carry this mark stays inside it. The build of the module itself
/// defines `KAVRA_OIIO_BUILD`; hosts do not. A host reaches the module by `dlopen`, `KavraInitialize` and the class
/// factory, and needs none of this folder's headers for that:
///
///     void* module = dlopen("KavraOIIOIntegration.so", RTLD_NOW);
///     auto* initialize = reinterpret_cast<bool (*)()>(dlsym(module, "KavraInitialize"));
///     if (initialize == nullptr || !initialize()) ...   // false: this host's version does not suit the module
///
/// `KavraShutdown`, of the same type, removes the handler before `dlclose`.
#if defined(KAVRA_OIIO_BUILD)
#define KAVRA_OIIO_API __attribute__((visibility("default")))
#else
#define KAVRA_OIIO_API
#endif
