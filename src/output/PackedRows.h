/// Rows without gaps.
#pragma once

#include <cstddef>

#include "common/PixelBlock.h"

namespace Kavra::Devices {

/// A block of `rows` rows of `rowBytes` bytes, the rows taken every `pitch` bytes from `data`. Where `pitch` is the
/// shorter one, only so much of a row is read and its end is zero. Throws `std::bad_alloc`.
Common::PixelBlock PackRows(const void* data, std::size_t pitch, std::size_t rowBytes, std::size_t rows);

}  // namespace Kavra::Devices
