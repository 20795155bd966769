/// Packed pixels of one format into a new block of another.
#pragma once

#include <kavra/devices/EFormat.h>

#include <cstddef>

namespace Kavra::Devices {

/// The static members of `OIIOImageHandler` with these names, which say what they do. Both read one table of pairs.
bool CanConvertTo(EFormat from, EFormat to);
bool FormatConversion(EFormat from, std::size_t srcBytes, void* src, EFormat to, void*& dst, std::size_t& dstBytes);

}  // namespace Kavra::Devices
