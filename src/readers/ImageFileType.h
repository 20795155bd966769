/// Kinds of image files, as detection tells them apart.
#pragma once

namespace Kavra::Devices {

/// A plain int between detection, the factory, the loaders and the describers.
enum ImageFileType : int {
    None = 0,  ///< the path is empty or the file cannot be opened
    CALS = 1,
    DDS = 2,
    OpenEXR = 3,
    FLIC = 4,
    PCX = 5,
    PICT = 6,
    RLC = 7,
    Spot = 8,   ///< raw bands in a `.bil` file, described by a `.hdr` file
    Other = 9,  ///< anything else: left to OpenImageIO
};

}  // namespace Kavra::Devices
