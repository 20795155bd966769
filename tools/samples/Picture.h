/// Pictures in memory, and the files that the image library writes of them.
#pragma once

#include "Scene.h"

#include <OpenImageIO/imageio.h>

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace Kavra::Samples {

/// Rows from the top, `channels` floats a pixel.
struct Picture {
    int width = 0;
    int height = 0;
    int channels = 0;
    std::vector<float> values;

    float* At(int x, int y) { return &values[(static_cast<std::size_t>(y) * width + x) * channels]; }
    const float* At(int x, int y) const { return &values[(static_cast<std::size_t>(y) * width + x) * channels]; }
};

using Painter = std::function<Colour(float x, float y)>;
using CutoutPainter = std::function<Cutout(float x, float y)>;

/// Paints three channels, each pixel the mean of 3 x 3 samples; `display` brings them to display values.
Picture Paint(int width, int height, const Painter& painter, bool display);

/// Paints four channels, the last one the coverage; colours are not multiplied by it.
Picture PaintCutout(int width, int height, const CutoutPainter& painter, bool display);

/// What a file stores so that the tag `orientation` (Exif: 1 to 8) brings this picture upright.
Picture Stored(const Picture& upright, int orientation);

/// One channel: the brightness (ITU-R BT.709 weights).
Picture Brightness(const Picture& picture);

/// The values as bytes, 0 to 1 becoming 0 to 255.
std::vector<unsigned char> ToBytes(const Picture& picture);

/// Writes a file. Throws `std::runtime_error`.
void WriteBytes(const std::string& path, std::span<const unsigned char> bytes);

/// Writes one image; `spec` gives attributes, the pixel type of the file and tiles, the picture the size and channels.
/// Throws `std::runtime_error`.
void WriteImage(const std::string& path, const Picture& picture, OIIO::ImageSpec spec);

/// Writes several images into one file.
void WriteImages(const std::string& path, const std::vector<Picture>& pictures, const OIIO::ImageSpec& spec);

}  // namespace Kavra::Samples
