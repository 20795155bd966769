/// \file
/// The description of an image file.
#pragma once

#include <kavra/devices/EDataOrientation.h>
#include <kavra/devices/EFormat.h>
#include <kavra/devices/ETextureType.h>
#include <kavra/devices/Export.h>

#include <cstdint>

namespace Kavra::Devices {

/// What a file holds, without its pixels: the answer of `IImageHandler::GetImageDesc`. Whoever receives one owns it and
/// destroys it with `Delete`:
///
///     if (ImageDesc* desc = handler->GetImageDesc(path)) {
///         std::printf("%d x %d, %d frames\n", desc->width, desc->height, desc->frameCount);
///         desc->Delete();
///     }
///
/// Sizes are those of the first frame or of mip level 0, as the rows are stored: where `orientation` is `kLeftTop` or
/// more, a load to `kTopLeft` gives width and height exchanged. What is described is what the header claims; a file
/// that was cut short is found out by the load. The order of the fields is part of the contract.
struct KAVRA_DEVICES_API ImageDesc : public IDelete {
    /// All fields zero.
    ImageDesc();
    ~ImageDesc() override;

    std::int32_t width;   ///< pixels per row
    std::int32_t height;  ///< rows; of one face for a cube map
    std::int32_t depth;   ///< slices of a volume, else 1
    /// The format that a load with `kUnknown` gives; `kUnknown` means that the file was not described. Of DDS files
    /// that are block-compressed or hold nothing but alpha it is the format in the file, which such a load decodes.
    EFormat format;
    ETextureType textureType;  ///< flat, cube map or volume
    /// Frames of the file, pages and bands included, or mip levels of a DDS: 1 or more. A grey TIFF counts its channels
    /// instead. Some files end before the last frame that they report: the load of it then fails.
    std::int32_t frameCount;
    EDataOrientation orientation;  ///< row and column order in the file
    double gamma;                  ///< decoding exponent, as in `ImageDescription`
};

}  // namespace Kavra::Devices
