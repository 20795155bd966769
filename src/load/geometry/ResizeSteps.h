/// What a change of size is made of: one resampling, or a sampling and a filtering behind it.
#pragma once

#include "common/RowSink.h"
#include "common/resample/RowResampler.h"
#include "load/geometry/Reshape.h"

#include <cstddef>
#include <optional>

namespace Kavra::Devices {

/// Pixels that change their size, and both sides of them.
struct SizeChange {
    ResamplePixels pixels;
    Common::ResampleAxis x, y;
};

/// Of a raster whose faces, if any, stand on one another, to faces of `width` x `height` pixels.
SizeChange ChangeOf(const Raster& raster, int width, int height);

struct ResizeSteps {
    Common::Resampling first;
    std::optional<Common::Resampling> second;
};

/// The steps of a scaling. Nothing where the sizes cannot be computed with.
std::optional<ResizeSteps> PlanResize(const SizeChange& change, Scaling scaling, const ResampleOptions& options);

/// Takes the steps for a picture in memory, whose rows are `pitch` bytes apart, into packed rows at `to`, which has
/// memory for all of them. Throws `std::bad_alloc`.
void RunSteps(const ResizeSteps& steps, const unsigned char* from, std::size_t pitch, unsigned char* to);

}  // namespace Kavra::Devices
