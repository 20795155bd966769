/// What a host may offer beyond the operations that every host has: the one place that asks for it.
///
/// Each is looked up as the module is loaded. A host without it is served by the operations that every host has.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/ImageLimits.h>
#include <kavra/devices/LoadPreferences.h>
#include <kavra/devices/SavePreferences.h>
#include <kavra/objects/IMemoryWrapper.h>
#include <kavra/objects/KString.h>

#include <cstddef>
#include <span>

namespace Kavra::Common {

/// `bytes` zeroed bytes of the default allocator, freed with `KavraDelete`. A host that offers this knows which of its
/// memory is zero already. Throws `std::bad_alloc`.
void* NewZeroed(std::size_t bytes);

/// The largest block in bytes that the host's default allocator gives; where it does not say, `MemoryShare`.
std::size_t HostBlockCeiling();

/// Whether the wrapper is the contract's own `MemoryArrayWrapper`, which frees what its pointer shows and remembers
/// nothing. False where the host does not let its kind be told.
bool IsPlainWrapper(const Objects::IMemoryWrapper<void>& wrapper);

/// The limits that the host has set for pictures; none where it knows of no such thing.
Devices::ImageLimits HostImageLimits();

/// The calling thread's preferences; the defaults where the host knows of no such thing. A filter that is none of those
/// known here counts as none chosen, such a reading of legacy files as the contract's.
Devices::LoadPreferences HostLoadPreferences();

/// The same of what is saved.
Devices::SavePreferences HostSavePreferences();

/// Whether the host's OpenEXR reader wants the file at `path`, which begins with `start`. A host that does not judge by
/// bytes is given the path, and may open the file.
bool PrefersExrHandler(const Objects::KString& path, std::span<const unsigned char> start);

/// Packs `count` colours (four floats each, any alignment) into pixels of `format` on the caller's thread. `size` is
/// the capacity of `out` in bytes; pixels that do not fit are left out, and the result is how many were written. A host
/// that offers this does it many at a time.
std::size_t PackFloats(const float* colours, std::size_t count, Devices::EFormat format, char* out, std::size_t size);

}  // namespace Kavra::Common
