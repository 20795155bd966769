/// Loading a picture through a reader.
#pragma once

#include "common/LoadRequest.h"
#include "common/PixelBlock.h"
#include "common/Result.h"
#include "readers/FileTypeDetection.h"
#include "readers/ImageReaderInterface.h"

#include <kavra/devices/Export.h>
#include <kavra/devices/ImageDescription.h>

namespace Kavra::Devices {

/// Decodes one frame of open files, shrinks it to the limits (never enlarging it) and brings it to the orientation
/// wanted, row by row as it comes; where neither is needed, the reader decodes into the block that is returned. Pixels
/// that the reader leaves alone are zero.
///
/// Fills `desc` as soon as the reader has opened the files, with gamma 2.2 and no alpha whatever they hold. Fails when
/// the reader does, when the picture is larger than the host allows (`Common::HostBounds`), or when the load would take
/// more than `Common::ReaderBounds`. Raises no message of its own, but tells the observer of the request where the
/// readings differ. Throws `std::bad_alloc`.
[[nodiscard]] Common::Result<Common::PixelBlock> LoadThroughReader(ImageReaderInterface& reader, ImageDescription& desc,
                                                                   PictureFiles files, const LoadRequest& request);

/// The same for the files that a path leads to.
[[nodiscard]] Common::Result<Common::PixelBlock> LoadThroughReader(ImageReaderInterface& reader, ImageDescription& desc,
                                                                   const KString& path, const LoadRequest& request);

/// The same for a file of one of the legacy formats, with a reader of its own; `kUnsupported` for any other type.
[[nodiscard]] Common::Result<Common::PixelBlock> LoadSpecial(ImageDescription& desc, DetectedFile file,
                                                             const LoadRequest& request);
/// The same for a file that is said to be of a type.
[[nodiscard]] Common::Result<Common::PixelBlock> LoadSpecial(ImageDescription& desc, const KString& path,
                                                             const LoadRequest& request, int fileType);

}  // namespace Kavra::Devices
