/// Packed pixels of one format into a new block of another.
#pragma once

#include <kavra/devices/EFormat.h>

#include <cstddef>

namespace Kavra::Devices {

/// `OIIOImageHandler::FormatConversion`, which says what it does.
bool FormatConversion(EFormat from, std::size_t srcBytes, void* src, EFormat to, void*& dst, std::size_t& dstBytes);

}  // namespace Kavra::Devices
