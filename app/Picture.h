/// Flat pictures in memory, the right way up.
#pragma once

#include "LoadOptions.h"
#include "Messages.h"

#include <kavra/devices/IImageHandler.h>

namespace Kavra::App {

/// The description of a flat upright picture in packed rows.
Devices::ImageDescription FlatDescription(int width, int height, Devices::EFormat format);

/// Another size in packed rows; all else stays. The format has pixels.
void SetPackedSize(Devices::ImageDescription& desc, int width, int height);

/// How many faces or slices lie one after another in a block, and the bytes of each.
std::size_t LayerCount(const Devices::ImageDescription& desc);
std::size_t LayerBytes(const Devices::ImageDescription& desc);

/// A packed picture of zeros. `format` has pixels. Throws `std::bad_alloc`.
LoadedImage NewPicture(int width, int height, Devices::EFormat format);
/// The same for what `desc` describes, with all its faces or slices, in another size.
LoadedImage NewPictureLike(const Devices::ImageDescription& desc, int width, int height);

/// A file as it is displayed, in its own format unless another is wanted; `block` is null, and the report says so, when
/// it cannot be read. Of the options all count but the orientation. Messages go to the report.
///
/// The rows of an OpenEXR file come as displayed whatever line order it was written in, which its description calls
/// upside down: they are left alone.
LoadedImage LoadUpright(Devices::IImageHandler& handler, Report& report, LoadOptions options);

/// The same as a flat picture: of a cube map the first face, of a volume the first slice, with a note.
LoadedImage LoadFlat(Devices::IImageHandler& handler, Report& report, const LoadOptions& options);

/// Leaves of a loaded block what comes first in it: one face or slice. Three floats a pixel, which only the host's own
/// readers give and the handler takes for nothing, become four.
void KeepFirst(LoadedImage& image);

/// Whether the format has pixels, and not blocks or nothing. Says so, as a failure to do `what`, when not.
bool HasPixels(Report& report, const LoadedImage& image, std::string_view what);

}  // namespace Kavra::App
