/// Texture files of pictures and of texture files.
#pragma once

#include "TextureMaking.h"

#include <filesystem>

namespace Kavra::App {

/// What came of one output. Nothing in `made.bytes` where it cannot be made.
struct Outcome {
    std::filesystem::path file;
    MadeTexture made;
    TextureError error;     ///< where it was asked for
    double seconds = 0;     ///< that levels and blocks took
    bool isCopied = false;  ///< blocks and pixels are those of the input
};

/// A texture of pixels; `reports` asks for the error. What is wrong is said in the report.
Outcome MadeOf(Devices::IImageHandler& handler, Report& report, PixelTexture texture, const Source& source,
               const TextureOptions& options, bool reports);

/// A texture of a texture file, of which all is kept that no option changes: blocks, levels, faces, slices, elements, and
/// what is said of them.
Outcome MadeOfFile(Devices::IImageHandler& handler, Report& report, StoredTexture& stored, TextureOptions options,
                   bool reports);

/// Writes a texture to a file that its name makes DDS or KTX2; a failure is said in the report. True when it is there.
bool WriteTexture(Report& report, const MadeTexture& made, const std::filesystem::path& path, int zstdLevel = 0);

/// Writes a picture, with all its faces or slices, as a texture of one level in a format that may be block-compressed;
/// `kUnknown` stands for its own. Says why where that cannot be.
bool WriteAsTexture(Devices::IImageHandler& handler, Report& report, LoadedImage image, const Source& source,
                    const std::filesystem::path& path, Devices::EFormat format);

}  // namespace Kavra::App
