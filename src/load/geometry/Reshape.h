/// Rasters of another size, and in another order of rows and columns: the one way that loads, image objects and the
/// resize service share.
#pragma once

#include "common/LoadRequest.h"
#include "load/geometry/Raster.h"

#include <kavra/devices/Resampler.h>

namespace Kavra::Devices {

/// How pixels become those of another size.
enum class Scaling {
    kAdaptive,  ///< sampled or filtered, by how far the size changes: `AdaptiveResize`
    kMitchell,  ///< filtered
    kBilinear,  ///< interpolated
    kNearest,   ///< sampled
    kChosen,    ///< resampled with the filter of the options
};

/// What is wanted of a raster.
struct Reshaping {
    int width, height;  ///< of one face or slice, at least 1, and before rows and columns are reordered
    Scaling scaling = Scaling::kAdaptive;
    EDataOrientation from = kTopLeft, to = kTopLeft;
    ResampleOptions options = {};  ///< their filter counts for `Scaling::kChosen` only
};

/// What preferences say of resampling.
ResampleOptions OptionsOf(const LoadPreferences& preferences);

/// What a load makes of a picture of rows and columns in the order `from`: `width` x `height` pixels before they are
/// reordered, scaled as the request says, or with the filter that the preferences choose.
Reshaping ReshapingFor(const LoadRequest& request, int width, int height, EDataOrientation from);

/// The raster at another size, or filtered at its own, packed in a block of its own; what the library cannot scale is
/// zero. Slices cannot be scaled. Empty where the raster holds fewer bytes than pixels. Throws `std::bad_alloc`, and
/// what the library throws.
Raster Scaled(const Raster& raster, int width, int height, Scaling scaling, const ResampleOptions& options = {});

/// The raster scaled, where its size is another, and then reordered, where that moves a pixel; without work the raster
/// itself. Cube maps are mirrored and rotated by 180 degrees as the one picture that their faces stand on one another
/// in, so a flip reverses their order; by 90 degrees each face is rotated in its place, since six faces side by side
/// would be no cube map. Slices are always reordered each in its place.
///
/// What is passed on is packed in a block of its own; blocks before it are freed as soon as the next is filled, so that
/// there are never more than two. Empty and throws as `Scaled`.
Raster Reshape(Raster raster, const Reshaping& wanted);

/// Whether rows of the one orientation are columns of the other.
bool SwapsSides(EDataOrientation from, EDataOrientation to);

}  // namespace Kavra::Devices
