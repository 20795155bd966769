/// Cube maps laid out flat, and back.
///
/// Faces are those of a DDS file, seen from inside with +z ahead, +x at the right and +y above, in the order
/// +x -x +y -y +z -z. A cross is four faces wide and three high:
///
///            +y
///        -x  +z  +x  -z
///            -y
///
/// or, to be read only, three wide and four high with -z below -y, upside down. A strip has the faces in their order, side by
/// side (or, to be read only, below one another). A map is equirectangular, +z in its middle (`CubeProjection`).
#pragma once

#include "LoadOptions.h"

#include <kavra/devices/IImageInspector.h>

#include <optional>

namespace Kavra::App {

enum class CubeForm { kCross, kStrip, kEquirect };

/// `--cube`: of a cube map the flat picture in that form, of a flat picture in that form the cube map.
struct CubeOption {
    std::optional<CubeForm> form;

    void AddTo(CLI::App& command);

    /// The picture in the other of the two ways, or as it is where none is asked for. `block` is null, and the report
    /// says why, where that cannot be. `alpha` is what its colours are to its alpha.
    LoadedImage Apply(Report& report, LoadedImage image, Devices::EAlphaKind alpha) const;
};

}  // namespace Kavra::App
