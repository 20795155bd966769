/// Flat pictures in memory, the right way up.
#pragma once

#include "LoadOptions.h"
#include "Messages.h"

#include <kavra/devices/IImageHandler.h>

namespace Kavra::App {

/// A packed picture of zeros. `format` has pixels. Throws `std::bad_alloc`.
LoadedImage NewPicture(int width, int height, Devices::EFormat format);

/// A file as it is displayed, in its own format; `block` is null, and the report says so, when it cannot be read.
/// `width` and `height` are the largest size wanted of the file's own rows, 0 for any; `smooth` shrinks to it with the
/// better filter. Messages go to the report.
///
/// The rows of an OpenEXR file come as displayed whatever line order it was written in, which its description calls
/// upside down: they are left alone.
LoadedImage LoadUpright(Devices::IImageHandler& handler, Report& report, int frame, int width = 0, int height = 0,
                        bool smooth = false);

/// The same as a flat picture: of a cube map the first face, of a volume the first slice, with a note.
LoadedImage LoadFlat(Devices::IImageHandler& handler, Report& report, int frame);

/// Leaves of a loaded block what comes first in it: one face or slice. Three floats a pixel, which only the host's own
/// readers give and the handler takes for nothing, become four.
void KeepFirst(LoadedImage& image);

/// Whether the format has pixels, and not blocks or nothing. Says so, as a failure to do `what`, when not.
bool HasPixels(Report& report, const LoadedImage& image, std::string_view what);

}  // namespace Kavra::App
