/// Turning what OpenImageIO says of a file into the host's description.
#pragma once

#include <kavra/devices/ImageDesc.h>

#include <OpenImageIO/imageio.h>

namespace Kavra::Devices {

/// The description of one subimage; `frameCount` stays 0, and the format `kUnknown` where no host format holds the
/// pixels. `fileType` is an `ImageFileType`. `isRadiance` is for Radiance files, whose orientation is never asked for.
/// `ddsAlphaVariant` is for DDS files whose host reader reports `kReserved50` or `kReserved51`.
ImageDesc DescribeSpec(const OIIO::ImageSpec& spec, bool isRadiance, int fileType, bool ddsAlphaVariant);

/// Says that no host format holds the pixels of a file, and which ones those are.
void SayNoFormatHolds(const OIIO::ImageSpec& spec);

/// The description of the current subimage as a new object of the host, which the caller owns. Null only when there is
/// no memory.
ImageDesc* GetImageDescByOIIO(OIIO::ImageInput* input, int fileType, bool ddsAlphaVariant);

/// Frames of the file, or mip levels of a DDS: 1 or more. Leaves `input` at subimage 0, level 0.
int GetNumberOfFrames(OIIO::ImageInput* input, int fileType);

/// How many subimages there are to load, or mip levels of a DDS; what a description tells is another number for some
/// files. Moves the input.
int CountPictures(OIIO::ImageInput& input, int fileType);

}  // namespace Kavra::Devices
