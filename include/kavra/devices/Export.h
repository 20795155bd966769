/// \file
/// Visibility of what the host device library offers, and the object-model names that its interfaces speak.
#pragma once

#include <kavra/objects/ARefCounted.h>
#include <kavra/objects/IClone.h>
#include <kavra/objects/IDelete.h>
#include <kavra/objects/IMemoryWrapper.h>
#include <kavra/objects/KString.h>
#include <kavra/objects/UString.h>

/// Marks what `libKavraDevices.so` exports. The library is built with hidden visibility, so whatever does not carry
/// this mark stays inside it. Where a class carries it, all of the class's members, its vtable and its type information
/// are exported, so that `dynamic_cast` works across libraries. The build of the library itself defines
/// `KAVRA_DEVICES_BUILD`; hosts and modules do not.
#if defined(KAVRA_DEVICES_BUILD)
#define KAVRA_DEVICES_API __attribute__((visibility("default")))
#else
#define KAVRA_DEVICES_API
#endif

/// The device layer: images, their descriptions, the interfaces of image handlers and of what hosts implement for them.
///
/// A path goes in as a `KString`, a block of pixels comes out as an `IMemoryWrapper<void>` with an `ImageDescription`
/// beside it. Start with `IImageHandler`, which says what a module can be asked; `EFormat` and `ImageDescription` say
/// what a block holds; `Sys` is how modules reach the host. These names of the object model are used throughout and may
/// be written without their own namespace.
///
/// Sizes are in pixels, pitches and block sizes in bytes. Colours that are floats run from 0 (black) to 1 (white), and
/// beyond where a file holds light.
namespace Kavra::Devices {

using Objects::ARefCounted;         ///< base of images
using Objects::IClone;              ///< what the class factory hands out
using Objects::IDelete;             ///< what is destroyed with `Delete`
using Objects::IMemoryWrapper;      ///< a block of pixels, as `IMemoryWrapper<void>`
using Objects::KString;             ///< paths
using Objects::MemoryArrayWrapper;  ///< a block that owns its pixels
using Objects::UString;             ///< names of classes and interfaces

}  // namespace Kavra::Devices
