/// What the colours in files of each type are.
#pragma once

#include "ColourChange.h"
#include "LoadOptions.h"
#include "Source.h"

#include <string_view>

namespace Kavra::App {

/// By the type of a file, as its extension says.
struct FileColours {
    bool isLight = false;      ///< it holds light alone, in halves or floats: OpenEXR, Radiance HDR, PFM
    bool holdsHalves = false;  ///< and such of them that are no floats
    bool holdsFloats = false;  ///< it holds floats, which are light, and integers, which are for display: TIFF, DDS ...
    bool holdsAlpha = true;
    Devices::EAlphaKind alpha = Devices::kAlphaStraight;  ///< what colours in it are to alpha
};

/// `extension` is in lower case, with its dot.
FileColours ColoursOf(std::string_view extension);

/// The format with pixels that comes nearest to `format` among those that such files hold: light in floats or halves,
/// which lose nothing of 16 and 8 bits, and colours for display in 8 bits where they were light. Formats without
/// pixels, and `kA8`, which has no colours, stay.
Devices::EFormat FormatIn(const FileColours& file, std::string_view extension, Devices::EFormat format);

/// Whether the channels are halves or floats.
bool IsFloating(Devices::EFormat format);

/// What the values of a picture in memory are to light; where nobody knows, halves and floats are, and integers follow
/// the curve of sRGB.
Transfer TransferOf(const Source& source, Devices::EFormat format);

/// What the colours of a picture in memory are to its alpha: `kAlphaNone` where it has none.
Devices::EAlphaKind AlphaOf(const Source& source, Devices::EFormat format);

/// The picture, with all its faces or slices, put through a change and packed in `format`; both formats have pixels. On
/// all cores. Throws `std::bad_alloc`.
LoadedImage Changed(const LoadedImage& image, const ColourChange& change, Devices::EFormat format,
                    ColourFindings& findings);

}  // namespace Kavra::App
