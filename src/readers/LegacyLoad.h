/// Loading a picture through a reader.
#pragma once

#include "common/PixelBlock.h"

#include <kavra/devices/EDataOrientation.h>
#include <kavra/devices/Export.h>
#include <kavra/devices/ImageDescription.h>

#include <cstdint>

namespace Kavra::Devices {

class ImageReaderInterface;

/// What a caller wants of a picture.
struct LegacyRequest {
    int maxWidth = 0;   ///< of the result, before it is turned; below 1: no limit
    int maxHeight = 0;  ///< likewise, by itself: the sides may shrink by different factors
    bool highQualityResize = false;
    int frame = 0;
    EDataOrientation orientation = kTopLeft;
};

/// Decodes one frame, shrinks it to the limits (never enlarging it) and turns it to the orientation wanted; where
/// neither is needed, the block is the one that the reader decoded into. Pixels that the reader leaves alone are zero.
///
/// Fills `desc` as soon as the reader has opened the file, with gamma 2.2 and no alpha whatever the file holds. Null
/// when the reader fails, or when the load would take more than `Common::ReaderBounds`. Raises no message of its own.
/// Throws `std::bad_alloc`.
Common::PixelBlock LoadThroughReader(ImageReaderInterface& reader, ImageDescription& desc, const KString& path,
                                     const LegacyRequest& request);

}  // namespace Kavra::Devices
