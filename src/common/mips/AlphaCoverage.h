/// How much of a cut-out is seen in each of its levels.
#pragma once

#include "common/PixelFormats.h"

#include <cstddef>
#include <span>

namespace Kavra::Common {

/// From which number on, in units of the type and before it is rounded to it, an alpha becomes one of `threshold` or more,
/// which is above 0 and at most 1.
float SeenFrom(ElementType element, float threshold);

/// The number nearest to 1 that `alphas` are to be multiplied by, so that the share of those that are `threshold` or more
/// is as near to `share` as it can be. `threshold` is above 0; alphas of less than a millionth of it, and those that
/// are no numbers, count as 0. The alphas are changed and put into another order.
///
/// I. Castaño, "Computing Alpha Mipmaps", 2010, searches for the number by halving an interval. Here it is read off the
/// alphas themselves: that which stands at the place of the share, counted from the largest, is brought to the threshold.
float ScaleForCoverage(std::span<float> alphas, float threshold, double share);

}  // namespace Kavra::Common
