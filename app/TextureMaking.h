/// From pixels to the texture that is written.
#pragma once

#include "PixelTexture.h"
#include "Source.h"
#include "TextureOptions.h"

#include <string>
#include <vector>

namespace Kavra::App {

/// A texture as a file holds it: packed in the order of its shape.
struct MadeTexture {
    Devices::TextureShape shape;
    std::vector<unsigned char> bytes;
};

/// What is to become of a texture: the format of its file, and that in which it is worked on.
struct TexturePlan {
    Devices::TextureShape shape;  ///< of the file; its sizes and levels are those of the pixels
    Devices::EFormat working = Devices::kUnknown;
    bool copiesNumbers = false;  ///< of vectors, data, and where nothing is asked of their curve
};

/// Chooses, and refuses what the format cannot hold: the report then says which can. Nothing is planned where `working` is
/// `kUnknown`.
TexturePlan PlanOf(Report& report, const PixelTexture& texture, const Source& source, const TextureOptions& options);

/// The pixels as planned: in the working format, the right way round, in their size. Nothing in `images`, and the report
/// says why, where that fails.
PixelTexture Prepared(Devices::IImageHandler& handler, Report& report, PixelTexture texture, const Source& source,
                      const TexturePlan& plan, const TextureOptions& options);

/// Makes the levels that are missing, and the blocks. Of a texture file (`isFile`) there are as many levels as it has
/// unless said, of pictures all. Nothing in `bytes`, and the report says why, where that fails.
MadeTexture Encoded(Report& report, PixelTexture& texture, const TexturePlan& plan, const TextureOptions& options,
                    bool isFile);

/// How far the largest level is from what was encoded, channel by channel.
struct TextureError {
    std::vector<std::string> names;
    std::vector<double>
        psnr;  ///< in dB, of values that go to 1, of light to its brightest; infinite where nothing differs
};
TextureError ErrorOf(PixelTexture texture, const MadeTexture& made);

/// A format as people call it: "bc7".
std::string NameOf(Devices::EFormat format);

/// Whether formats of this kind go beyond 0 to 1.
bool HoldsLight(Devices::EFormat format);

}  // namespace Kavra::App
