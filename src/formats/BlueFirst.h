/// Conversions that exchange red and blue and change the type of the channels, in one pass over the pixels.
#pragma once

#include "common/PixelRun.h"

namespace Kavra::Formats {

/// Each gives what `ImageHandlerHelper` would give in two steps: exchanging the first and third channel of every pixel,
/// and converting its elements with the factor named. One thread.
void HalvesFromBlueFirst(const Common::PixelRun& run);  ///< 8 bits to halves, 1/255
void WordsFromBlueFirst(const Common::PixelRun& run);   ///< 8 bits to 16, v x 257
void FloatsFromBlueFirst(const Common::PixelRun& run);  ///< 8 bits to floats, 1/255
void BlueFirstFromWords(const Common::PixelRun& run);   ///< 16 bits to 8, 1/257

}  // namespace Kavra::Formats
