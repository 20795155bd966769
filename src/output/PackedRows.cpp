#include "output/PackedRows.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace Kavra::Devices {

Common::PixelBlock PackRows(const void* data, std::size_t pitch, std::size_t rowBytes, std::size_t rows) {
    if (rowBytes != 0 && rows > std::numeric_limits<std::size_t>::max() / rowBytes) throw std::bad_alloc();
    Common::PixelBlock packed = Common::NewZeroedBlock(rows * rowBytes);
    const auto* source = static_cast<const unsigned char*>(data);
    const std::size_t copied = std::min(pitch, rowBytes);
    for (std::size_t row = 0; row < rows; ++row)
        std::memcpy(packed.get() + row * rowBytes, source + row * pitch, copied);
    return packed;
}

}  // namespace Kavra::Devices
