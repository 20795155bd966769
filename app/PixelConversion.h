/// Pictures in another pixel format, whatever the two are.
#pragma once

#include "LoadOptions.h"
#include "Pixel.h"

#include <kavra/devices/FormatFacts.h>

#include <optional>
#include <span>

namespace Kavra::App {

/// Fills `pixels` with what lies from `row` on in a format that has pixels. Integers become 0 to 1, grey spreads over
/// the colours; missing colours are 0, a missing alpha opaque.
void ReadPixels(const Devices::FormatFacts& format, const unsigned char* row, std::span<Pixel> pixels);

/// Packs `pixels` in `format`, `bytes` of them at `out`, as `ToFormat` does; of one-channel formats it changes
/// `pixels`.
void WritePixels(Devices::EFormat format, std::span<Pixel> pixels, unsigned char* out, std::size_t bytes);

/// The flat picture `image` in `format`, packed. Its numbers stay the same: no curve, and nothing done by alpha. Grey
/// spreads over the colours; missing colours are 0, a missing alpha opaque. A one-channel format takes the luminance
/// (ITU-R BT.601), `kA8` the alpha. Integers round half up. Nothing where one of the two has no pixels. Throws
/// `std::bad_alloc`.
std::optional<LoadedImage> ToFormat(const LoadedImage& image, Devices::EFormat format);

/// Sets the two flags that tell of the alpha of some pixels, where one of them is set: whatever changed the pixels can
/// have made them untrue.
void LookAtAlphaAgain(LoadedImage& image);

}  // namespace Kavra::App
