#include "output/DDSSaving.h"

#include "common/PackedLayout.h"
#include "common/Reasons.h"
#include "load/geometry/PackedRows.h"

#include <kavra/devices/DDSWriter.h>
#include <kavra/devices/Sys.h>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace Kavra::Devices {

namespace {

int FaceCount(ETextureType type, int depth) {
    switch (type) {
        case kTextureCube:
            return kCubeFaces;
        case kTextureVolume:
            return depth;
        default:
            return 1;
    }
}

/// Whether the bytes of the whole texture fit the 32 bits in which the writer is told of them.
bool FitsWriter(std::uint64_t rows, std::uint64_t rowBytes) {
    return rowBytes == 0 || rows <= std::numeric_limits<std::uint32_t>::max() / rowBytes;
}

}  // namespace

bool SaveDDS(const KString& path, const ImageDescription& desc, const void* data) {
    const int depth = std::max(desc.depth, 1);
    const auto rowBytes = static_cast<std::uint64_t>(Common::PackedRowBytes(desc.format, desc.width));
    const auto rows =
        static_cast<std::uint64_t>(FaceCount(desc.textureType, depth)) * static_cast<std::uint64_t>(desc.height);
    if (!Common::Require(FitsWriter(rows, rowBytes), kFailureFormat,
                         "more than 4 GiB, which is not written to DDS files"))
        return false;

    DDSWriter writer;
    const int size = static_cast<int>(static_cast<std::uint32_t>(rows * rowBytes));
    if (!writer.Construct(desc.textureType, desc.format, desc.width, desc.height, depth, 1, size, 0)) {
        Sys::Warning(L"fail to construct DDSWriter", nullptr);
        return false;
    }
    // A block-compressed texture has no rows to be repacked.
    if (rowBytes == 0) return writer.Write(path, data);
    if (!Common::Require(desc.rowPitch > 0, kFailureArguments, "its rows have no pitch")) return false;
    const auto pitch = static_cast<std::uint64_t>(desc.rowPitch);
    if (pitch == rowBytes) return writer.Write(path, data);
    return writer.Write(path, PackRows({static_cast<const unsigned char*>(data), pitch, rowBytes, rows}).get());
}

}  // namespace Kavra::Devices
