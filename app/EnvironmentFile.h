/// Environment maps from files, as the light operations take them.
#pragma once

#include "LoadOptions.h"

namespace Kavra::App {

/// A map in its own pixel format where the light operations take that, else as four floats a pixel; grey ones in all
/// three colours. The block is null when the file cannot be read or is no flat picture, and the report says why.
LoadedImage LoadEnvironment(Devices::IImageHandler& handler, Report& report, const Selection& selection = {});

/// A map for the screen.
struct SmallEnvironment {
    LoadedImage image;  ///< four floats a pixel; null block when the file cannot be read
    /// Whether the values are amounts of light (half and float files) and not display values (integer files).
    bool isLight = false;
};

/// The same map no larger than the given size, loaded again and in silence.
SmallEnvironment LoadSmallEnvironment(Devices::IImageHandler& handler, const std::string& file, int width, int height,
                                      const Selection& selection = {});

}  // namespace Kavra::App
