/// Pictures in another pixel format, whatever the two are.
#pragma once

#include "LoadOptions.h"

#include <optional>

namespace Kavra::App {

/// The flat picture `image` in `format`, packed. Grey spreads over the colours; missing colours are 0, a missing alpha
/// opaque. A one-channel format takes the luminance (ITU-R BT.601), `kA8` the alpha. Integers round half up. Nothing
/// where one of the two has no pixels. Throws `std::bad_alloc`.
std::optional<LoadedImage> ToFormat(const LoadedImage& image, Devices::EFormat format);

/// Sets the two flags that tell of the alpha of some pixels, where one of them is set: whatever changed the pixels can
/// have made them untrue.
void LookAtAlphaAgain(LoadedImage& image);

}  // namespace Kavra::App
