/// What the program knows of a file beyond its description.
#pragma once

#include "LoadOptions.h"

#include <kavra/devices/IImageInspector.h>

#include <memory>
#include <string>
#include <vector>

namespace Kavra::App {

using OwnedInspection = std::shared_ptr<Devices::IFileInspection>;

/// Everything that the file says of itself; null where nothing can describe it, or the module is an older one. Asked
/// again for the same file on the same thread, it is the same answer: some files are decoded to count their frames.
OwnedInspection Inspect(Devices::IImageHandler& handler, const std::string& file);

/// What of a picture is not in its pixels: what they mean, and what belongs to them.
struct Source {
    struct Text {
        std::string name, value;
    };

    Devices::EAlphaKind alpha = Devices::kAlphaStraight;
    Devices::ETransferKind transfer = Devices::kTransferUnknown;
    double gamma = 2.2;  ///< of `kTransferGamma`: the decoding exponent
    std::string colourSpace;
    std::vector<unsigned char> iccProfile;
    double xResolution = 0, yResolution = 0;  ///< dots per inch; 0 where unknown
    std::vector<Text> texts;
    /// The channels by which to load grey of more than 8 bits with its alpha, for which the handler's own choice of
    /// format has no place (`Selection::channels`); empty of all others.
    std::string greyWithAlpha;
};

/// The source of the frame that a load gives. Where nothing is known of it, what its type has: OpenEXR files light and
/// premultiplied colours, all others straight ones.
Source SourceOf(Devices::IImageHandler& handler, const std::string& file, int frame);

}  // namespace Kavra::App
