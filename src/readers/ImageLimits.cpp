#include "readers/ImageLimits.h"

#include "common/HostExtras.h"

namespace Kavra::Devices {

bool WithinLimits(int width, int height, int rowPitch, std::uint64_t fileBytes) {
    if (width < 1 || height < 1 || rowPitch < 1 || width > kMostSide || height > kMostSide) return false;
    const std::uint64_t bytes = static_cast<std::uint64_t>(rowPitch) * static_cast<std::uint64_t>(height);
    if (bytes > Common::HostBlockCeiling()) return false;
    const std::uint64_t bytesPerFileByte = fileBytes == 0 ? bytes : (bytes - 1) / fileBytes + 1;
    return bytes <= kFreeBlockBytes || bytesPerFileByte <= kMostBytesPerFileByte;
}

}  // namespace Kavra::Devices
