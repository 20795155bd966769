#include "load/geometry/Reshape.h"

#include "load/geometry/PixelGrid.h"
#include "load/geometry/Reorientation.h"
#include "load/geometry/ResizeSteps.h"

#include <cstring>
#include <utility>

namespace Kavra::Devices {

namespace {

Raster Reordered(const Raster& raster, EDataOrientation from, EDataOrientation to) {
    const bool swaps = SwapsSides(from, to);
    Raster result = NewRaster(raster.format, swaps ? raster.height : raster.width, swaps ? raster.width : raster.height,
                              raster.faces, raster.slices);
    const int pictures = swaps ? raster.faces * raster.slices : raster.slices;
    const std::size_t rows = raster.RowCount() / static_cast<std::size_t>(pictures);
    auto* out = reinterpret_cast<unsigned char*>(result.block.get());
    const auto* in = reinterpret_cast<const unsigned char*>(raster.first);
    for (int i = 0; i < pictures; ++i) {
        const PixelGrid grid{.first = in,
                             .columnStride = static_cast<std::ptrdiff_t>(raster.PixelBytes()),
                             .rowStride = static_cast<std::ptrdiff_t>(raster.pitch),
                             .width = static_cast<std::size_t>(raster.width),
                             .height = rows,
                             .pixelBytes = raster.PixelBytes()};
        CopyPixels(Reoriented(grid, ToOIIOOrientation(from), ToOIIOOrientation(to)), out);
        in += rows * raster.pitch;
        out += rows * raster.RowBytes();
    }
    return result;
}

Scaling ScalingFor(const LoadRequest& request) {
    if (request.preferences.choosesFilter) return Scaling::kChosen;
    return request.highQuality ? Scaling::kMitchell : Scaling::kAdaptive;
}

}  // namespace

ResampleOptions OptionsOf(const LoadPreferences& preferences) {
    return {.filter = preferences.filter,
            .alphaWeighted = preferences.alphaWeighted,
            .bounded = preferences.bounded,
            .linearLight = preferences.linearLight};
}

Reshaping ReshapingFor(const LoadRequest& request, int width, int height, EDataOrientation from) {
    return {.width = width,
            .height = height,
            .scaling = ScalingFor(request),
            .from = from,
            .to = request.orientation,
            .options = OptionsOf(request.preferences)};
}

Raster Scaled(const Raster& raster, int width, int height, Scaling scaling, const ResampleOptions& options) {
    if (!raster.HoldsItsRows()) return {};
    Raster result = NewRaster(raster.format, width, height, raster.faces, raster.slices);
    const auto steps =
        raster.slices == 1 ? PlanResize(ChangeOf(raster, width, height), scaling, options) : std::nullopt;
    if (steps)
        RunSteps(*steps, raster.first, raster.pitch, result.block.get());
    else
        std::memset(result.block.get(), 0, result.bytes);
    return result;
}

Raster Reshape(Raster raster, const Reshaping& wanted) {
    if (!raster.HoldsItsRows()) return {};
    if (raster.width != wanted.width || raster.height != wanted.height) {
        raster = Scaled(raster, wanted.width, wanted.height, wanted.scaling, wanted.options);
    }
    if (raster && ToOIIOOrientation(wanted.from) != ToOIIOOrientation(wanted.to)) {
        raster = Reordered(raster, wanted.from, wanted.to);
    }
    return raster;
}

bool SwapsSides(EDataOrientation from, EDataOrientation to) {
    const auto isTransposed = [](EDataOrientation orientation) { return ToOIIOOrientation(orientation) >= 5; };
    return isTransposed(from) != isTransposed(to);
}

}  // namespace Kavra::Devices
