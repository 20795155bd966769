#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/Sys.h>

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

#include "common/PixelBlock.h"
#include "common/WrappedBlock.h"
#include "load/geometry/AdaptiveResize.h"
#include "output/PixelSpec.h"
#include "output/ResizeService.h"

namespace Kavra::Devices {

namespace {

using Common::PixelBlock;

struct Source {
    const unsigned char* data;
    std::size_t bytes;
    int pitch;
    vec3<int> size;
};

std::int64_t PixelBytesOf(EFormat format) {
    return Utilities::AFormatConvertor::BytesPerPixel(format);
}

/// Sets `pitch` to the bytes of a packed row; false, and nothing set, when no pitch can hold them.
bool SetPackedPitch(EFormat format, int width, int& pitch) {
    const std::int64_t bytes = PixelBytesOf(format) * width;
    if (bytes < 0 || bytes > std::numeric_limits<int>::max()) return false;
    pitch = static_cast<int>(bytes);
    return true;
}

PixelBlock Copy(const Source& source, int& dstPitch) {
    dstPitch = source.pitch;
    if (source.data == nullptr && source.bytes > 0) return nullptr;
    PixelBlock block = Common::NewBlock(source.bytes);
    if (source.bytes > 0) std::memcpy(block.get(), source.data, source.bytes);
    return block;
}

/// How many rows are copied, and how many bytes of each. Where the block has fewer rows than the source a row fills a
/// row of the block; else it is as long as it was, so that a wider one runs into the next.
struct CopiedRows {
    std::size_t count = 0;
    std::size_t bytes = 0;
};

CopiedRows RowsToCopy(const Source& source, std::size_t total, std::size_t dstPitch) {
    if (source.pitch <= 0 || dstPitch == 0) return {};
    const auto srcPitch = static_cast<std::size_t>(source.pitch);
    const std::size_t srcRows = source.bytes / srcPitch, dstRows = total / dstPitch;
    return {std::min(srcRows, dstRows), dstRows < srcRows ? dstPitch : srcPitch};
}

/// Copies the rows into `block`, never beyond the end of either side. What no row fills is zero. Of a row that runs
/// into the next only the last one's surplus is to be seen, so no other is copied further than its own row.
void CopyRows(const Source& source, CopiedRows rows, unsigned char* block, std::size_t total, std::size_t dstPitch) {
    std::size_t filled = 0;
    for (std::size_t row = 0; row < rows.count; ++row) {
        const std::size_t from = row * static_cast<std::size_t>(source.pitch), to = row * dstPitch;
        const std::size_t capacity = row + 1 < rows.count ? dstPitch : total - to;
        const std::size_t bytes = std::min({rows.bytes, capacity, source.bytes - from});
        std::memset(block + filled, 0, to - filled);
        std::memcpy(block + to, source.data + from, bytes);
        filled = to + bytes;
    }
    std::memset(block + filled, 0, total - filled);
}

PixelBlock CropOrPad(const Source& source, EFormat format, const vec3<int>& dstSize, int& dstPitch) {
    if (!SetPackedPitch(format, dstSize.x, dstPitch) || dstSize.x < 0 || dstSize.y < 0) return nullptr;
    if (source.data == nullptr && source.bytes > 0) return nullptr;
    const auto pitch = static_cast<std::size_t>(dstPitch);
    const std::size_t total = pitch * static_cast<std::size_t>(dstSize.y);
    PixelBlock block = Common::NewBlock(total);
    CopyRows(source, RowsToCopy(source, total, pitch), block.get(), total, pitch);
    return block;
}

bool Resample(OIIO::ImageBuf& to, const OIIO::ImageBuf& from, EImageFilterType filter) {
    if (filter == kFilterMitchell) return AdaptiveResize(to, from, true);
    return OIIO::ImageBufAlgo::resample(to, from, filter == kFilterBilinear);
}

bool HoldsAllPixels(const Source& source, std::int64_t pixelBytes) {
    if (source.size.x <= 0 || source.size.y <= 0) return false;
    const auto rowBytes = static_cast<std::uint64_t>(source.size.x * pixelBytes);
    return source.bytes / rowBytes >= static_cast<std::uint64_t>(source.size.y);
}

PixelBlock Filtered(const Source& source, EFormat format, ETextureType type, const vec3<int>& dstSize, int& dstPitch,
                    EImageFilterType filter) {
    if (source.data == nullptr) {
        Sys::Error(L"No data passed in to resize.", nullptr);
        return nullptr;
    }
    if (type != kTexture1D && type != kTexture2D) {
        Sys::Warning(L"Texture type not supported", nullptr);
        return nullptr;
    }
    if (!HasPixels(format)) {
        Sys::Warning(L"Raster format not supported", nullptr);
        return nullptr;
    }
    if (!HoldsAllPixels(source, PixelBytesOf(format))) return nullptr;
    if (!SetPackedPitch(format, dstSize.x, dstPitch) || dstSize.x <= 0 || dstSize.y <= 0) return nullptr;
    if (filter != kFilterNearest && filter != kFilterMitchell && filter != kFilterBilinear) {
        Sys::Warning(L"invalid input parameter", nullptr);
        return nullptr;
    }
    const std::size_t total = static_cast<std::size_t>(dstPitch) * static_cast<std::size_t>(dstSize.y);
    PixelBlock block = Common::NewBlock(total);
    const OIIO::ImageBuf from(PixelSpec(format, source.size.x, source.size.y), const_cast<unsigned char*>(source.data));
    OIIO::ImageBuf to(PixelSpec(format, dstSize.x, dstSize.y), block.get());
    if (!Resample(to, from, filter)) std::memset(block.get(), 0, total);
    return block;
}

PixelBlock Resized(EResizeMethod method, const Source& source, EFormat format, ETextureType type,
                   const vec3<int>& dstSize, int& dstPitch, EImageFilterType filter) {
    switch (method) {
        case kResizeCopy:
            return Copy(source, dstPitch);
        case kResizeCropOrPad:
            return CropOrPad(source, format, dstSize, dstPitch);
        case kResizeFilter:
            return Filtered(source, format, type, dstSize, dstPitch, filter);
    }
    Sys::Error(L"wrong resize method!", nullptr);
    return nullptr;
}

}  // namespace

IMemoryWrapper<void>* Resize(EResizeMethod method, const void* data, std::size_t dataSize, int srcPitch,
                             const vec3<int>& srcSize, EFormat format, ETextureType type, const vec3<int>& dstSize,
                             int& dstPitch, EImageFilterType filter) {
    const Source source{static_cast<const unsigned char*>(data), dataSize, srcPitch, srcSize};
    PixelBlock block = Resized(method, source, format, type, dstSize, dstPitch, filter);
    return block ? Common::WrapBlock(std::move(block)) : nullptr;
}

}  // namespace Kavra::Devices
