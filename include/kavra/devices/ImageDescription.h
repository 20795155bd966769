/// The description of a pixel block.
#pragma once

#include <kavra/devices/EDataOrientation.h>
#include <kavra/devices/EFormat.h>
#include <kavra/devices/ETextureType.h>
#include <kavra/devices/Export.h>

#include <cstdint>

namespace Kavra::Devices {

/// What a block of pixels holds. Filled by the loaders, read by the savers and analysers. The order of the fields is
/// part of the contract.
///
/// Rows lie `rowPitch` bytes apart, slices or faces one after another. A block-compressed block has no rows:
/// its `rowPitch` is 0 and its `dataSize` the true bytes.
struct KAVRA_DEVICES_API ImageDescription {
    /// All fields zero.
    ImageDescription();

    std::int32_t width;   ///< pixels per row
    std::int32_t height;  ///< rows, of one face for a cube map
    std::int32_t depth;   ///< slices, 1 for flat images
    EFormat format;
    std::int32_t rowPitch;   ///< bytes per row
    std::uint64_t dataSize;  ///< bytes of the block; of one face for a cube map, whose block holds six
    ETextureType textureType;
    bool hasTransparentPixels;  ///< some pixel has alpha 0
    bool hasTranslucentPixels;  ///< some pixel has an alpha between 0 and opaque
    bool hasAlpha;              ///< the block carries a meaningful alpha channel
    bool defaultOrientation;    ///< `orientation` is 0
    EDataOrientation orientation;
    double gamma;  ///< decoding exponent; 2.2 unless the file says otherwise
};

}  // namespace Kavra::Devices
