/// The pixels of a texture: all its levels, faces, slices and elements.
#pragma once

#include "LoadOptions.h"
#include "Messages.h"

#include <kavra/devices/TextureFile.h>

#include <string>
#include <vector>

namespace Kavra::App {

struct PixelTexture {
    Devices::TextureShape shape;  ///< its format has pixels; `levels` are those that are there
    /// Element by element, of an element level by level; each with all faces or slices.
    std::vector<LoadedImage> images;
    bool saysCurve = false;  ///< whether `shape.isSrgb` is a file's word

    LoadedImage& Image(int element, int level) {
        return images[static_cast<std::size_t>(element) * static_cast<std::size_t>(shape.levels) +
                      static_cast<std::size_t>(level)];
    }
    /// Leaves of each element its largest level.
    void KeepLargest();
    /// Sets size and format to those of the first image.
    void TakeSizeOfImages();
};

/// A texture file with all that it says. The reader is open.
struct StoredTexture {
    Devices::TextureFileReader reader;
    Devices::TextureShape shape;
};

/// Decodes all slices of one face of a level, blocks of `format`, into `out`: rows and slices as `desc` has them. False
/// where the format has no blocks.
bool DecodeFace(Devices::EFormat format, const unsigned char* blocks, const Devices::ImageDescription& desc,
                unsigned char* out);

/// Whether pictures make one texture together: of one shape and, unless they may differ in that, of one size. Else the
/// report says which do not.
bool AreAlike(Report& report, const std::vector<LoadedImage>& images, bool mayDifferInSize = false);

/// Reads all of it, blocks decoded. Nothing in `images`, and the report says why, where that fails.
PixelTexture ReadPixels(Report& report, StoredTexture& stored);

/// One level of one element of a texture file, blocks decoded, with all its faces or slices; `block` is null, and the
/// report says why, where that fails.
LoadedImage ReadLevel(Report& report, StoredTexture& stored, int element, int level);

}  // namespace Kavra::App
