#include "output/ResizeService.h"

#include "common/HostExtras.h"
#include "common/PackedLayout.h"
#include "common/PixelBlock.h"
#include "common/Reasons.h"
#include "common/WrappedBlock.h"
#include "load/geometry/Reshape.h"
#include "output/PixelSpec.h"

#include <kavra/devices/Sys.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

namespace Kavra::Devices {

namespace {

using Common::PixelBlock;

constexpr const char* kNoPixels = "there are no pixels to resize";

struct Source {
    const unsigned char* data;
    std::size_t bytes;
    int pitch;
    vec3<int> size;
};

/// Sets `pitch` to the bytes of a packed row; false, and nothing set, when no pitch can hold them.
bool SetPackedPitch(EFormat format, int width, int& pitch) {
    const std::int64_t bytes = Common::PackedRowBytes(format, width);
    if (!Common::FitsPitch(bytes)) return false;
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

PixelBlock CropOrPad(const Source& source, EFormat format, const vec3<int>& dstSize, int& dstPitch) {
    if (!SetPackedPitch(format, dstSize.x, dstPitch) || dstSize.x < 0 || dstSize.y < 0) return nullptr;
    if (source.data == nullptr && source.bytes > 0) return nullptr;
    const auto pitch = static_cast<std::size_t>(dstPitch);
    const std::size_t total = pitch * static_cast<std::size_t>(dstSize.y);
    PixelBlock block = Common::NewBlock(total);
    const CopiedRows copied = RowsToCopy(source, total, pitch);
    PlaceRows(block.get(), pitch, total,
              {.first = source.data,
               .pitch = static_cast<std::size_t>(source.pitch),
               .bytes = copied.bytes,
               .count = copied.count},
              source.bytes);
    return block;
}

std::optional<Scaling> ScalingOf(EImageFilterType filter) {
    switch (filter) {
        case kFilterNearest:
            return Scaling::kNearest;
        case kFilterMitchell:
            return Scaling::kMitchell;
        case kFilterBilinear:
            return Scaling::kBilinear;
    }
    return std::nullopt;
}

PixelBlock Filtered(const Source& source, EFormat format, ETextureType type, const vec3<int>& dstSize, int& dstPitch,
                    EImageFilterType filter) {
    if (source.data == nullptr) {
        Common::Say(kFailureArguments, kNoPixels);
        Sys::Error(L"No data passed in to resize.", nullptr);
        return nullptr;
    }
    if (type != kTexture1D && type != kTexture2D) {
        Common::Say(kFailureUnsupported, "cube maps and volumes are not resized");
        Sys::Warning(L"Texture type not supported", nullptr);
        return nullptr;
    }
    if (!HasPixels(format)) {
        Common::Say(kFailureFormat, "pictures of this format are not resized");
        Sys::Warning(L"Raster format not supported", nullptr);
        return nullptr;
    }
    const Raster from = PackedRaster(format, source.size.x, source.size.y, source.data, source.bytes);
    if (source.size.x <= 0 || source.size.y <= 0 || !from.HoldsItsRows()) return nullptr;
    if (!SetPackedPitch(format, dstSize.x, dstPitch) || dstSize.x <= 0 || dstSize.y <= 0) return nullptr;
    const std::optional<Scaling> scaling = ScalingOf(filter);
    if (!scaling) {
        Common::Say(kFailureArguments, "there is no such filter");
        Sys::Warning(L"invalid input parameter", nullptr);
        return nullptr;
    }
    const LoadPreferences preferences = Common::HostLoadPreferences();
    return Pack(Scaled(from, dstSize.x, dstSize.y, preferences.choosesFilter ? Scaling::kChosen : *scaling,
                       OptionsOf(preferences)));
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
    Common::Say(kFailureArguments, "there is no such method of resizing");
    Sys::Error(L"wrong resize method!", nullptr);
    return nullptr;
}

}  // namespace

IMemoryWrapper<void>* Resize(EResizeMethod method, const void* data, std::size_t dataSize, int srcPitch,
                             const vec3<int>& srcSize, EFormat format, ETextureType type, const vec3<int>& dstSize,
                             int& dstPitch, EImageFilterType filter) {
    const Source source{static_cast<const unsigned char*>(data), dataSize, srcPitch, srcSize};
    PixelBlock block = Resized(method, source, format, type, dstSize, dstPitch, filter);
    if (!block) Common::Say(kFailureArguments, "no picture of this size is there, or can be made");
    return block ? Common::WrapBlock(std::move(block)) : nullptr;
}

}  // namespace Kavra::Devices
