/// The filters that pictures are resampled with, along one axis.
#pragma once

#include <kavra/devices/Resampler.h>

namespace Kavra::Common {

/// A filter spread to a width in pixels of the result.
struct ResampleFilter {
    Devices::EResampleFilter kind;
    float width;

    /// The filter as wide as it is by itself, or, where pictures grow `growth` times (above 1), as much wider. That of
    /// `kResampleBilinear` always spans two pixels of the source, also where pictures shrink.
    ResampleFilter(Devices::EResampleFilter filter, float growth);

    /// The weight of a pixel `x` pixels of the result away from the centre; 0 beyond half of the width. In the operations
    /// and the order in which the image library computes it, so that it is the same number.
    float Weight(float x) const;
};

}  // namespace Kavra::Common
