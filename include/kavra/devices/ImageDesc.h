/// The description of an image file.
#pragma once

#include <kavra/devices/EDataOrientation.h>
#include <kavra/devices/EFormat.h>
#include <kavra/devices/ETextureType.h>
#include <kavra/devices/Export.h>

#include <cstdint>

namespace Kavra::Devices {

/// What a file holds, without its pixels. Format `kUnknown` means that the file was not described. Whoever receives one
/// owns it and destroys it with `Delete`. The order of the fields is part of the contract.
struct KAVRA_DEVICES_API ImageDesc : public IDelete {
    /// All fields zero.
    ImageDesc();
    ~ImageDesc() override;

    std::int32_t width;
    std::int32_t height;
    std::int32_t depth;
    EFormat format;
    ETextureType textureType;
    std::int32_t frameCount;  ///< frames of the file, or mip levels of a DDS
    EDataOrientation orientation;
    double gamma;  ///< decoding exponent
};

}  // namespace Kavra::Devices
