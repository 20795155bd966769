/// Inspections as bytes: what a confined child writes, and what a host makes of it.
#pragma once

#include <kavra/devices/IImageInspector.h>

#include <span>
#include <vector>

namespace Kavra::Common {

/// The bytes of an inspection. Throws `std::bad_alloc`.
std::vector<unsigned char> BytesOfInspection(const Devices::IFileInspection& inspection);

/// The inspection that the bytes are, which its receiver deletes; null where they are none that is sound. It is within
/// the bounds that `IImageInspector` names and does not refer to the bytes. Throws `std::bad_alloc`.
Devices::IFileInspection* ParseInspection(std::span<const unsigned char> bytes);

}  // namespace Kavra::Common
