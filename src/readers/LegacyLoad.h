/// Loading a picture through a reader.
#pragma once

#include "common/LoadRequest.h"
#include "common/PixelBlock.h"

#include <kavra/devices/Export.h>
#include <kavra/devices/ImageDescription.h>

namespace Kavra::Devices {

class ImageReaderInterface;

/// Decodes one frame, shrinks it to the limits (never enlarging it) and turns it to the orientation wanted; where
/// neither is needed, the block is the one that the reader decoded into. Pixels that the reader leaves alone are zero.
///
/// Fills `desc` as soon as the reader has opened the file, with gamma 2.2 and no alpha whatever the file holds. Null
/// when the reader fails, or when the load would take more than `Common::ReaderBounds`. Raises no message of its own.
/// Throws `std::bad_alloc`.
Common::PixelBlock LoadThroughReader(ImageReaderInterface& reader, ImageDescription& desc, const KString& path,
                                     const LoadRequest& request);

/// The same for a file of one of the legacy formats, with a reader of its own; null for any other type.
Common::PixelBlock LoadSpecial(ImageDescription& desc, const KString& path, const LoadRequest& request, int fileType);

}  // namespace Kavra::Devices
