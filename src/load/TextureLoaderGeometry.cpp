// Bringing a loaded texture to the wanted size, row and column order.

#include "load/TextureLoader.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <OpenImageIO/imagebuf.h>

#include <cstdint>
#include <limits>
#include <utility>

namespace Kavra::Devices {

namespace {

using Common::PixelBlock;

/// A spec of `targetSpec`'s pixels at another size and nothing else: the file's windows would shift the picture, and
/// its channel names may not fit the number of channels. A cube map is six faces high, its full size one face.
OIIO::ImageSpec PlainSpec(const TextureLoad& load, int width, int height, int depth) {
    OIIO::ImageSpec spec(width, load.IsCube() ? 6 * height : height, load.targetSpec.nchannels, load.targetSpec.format);
    spec.full_height = height;
    spec.depth = depth;
    spec.full_depth = depth;
    return spec;
}

OIIO::ImageBuf Wrap(const OIIO::ImageSpec& spec, const PixelBlock& block) {
    return OIIO::ImageBuf(spec, block.get());
}

bool UpdateDescription(TextureLoad& load, const OIIO::ImageSpec& spec) {
    const std::uint64_t rowPitch = std::uint64_t{spec.pixel_bytes(false)} * static_cast<std::uint64_t>(spec.width);
    if (rowPitch > std::uint64_t{std::numeric_limits<std::int32_t>::max()}) return false;
    load.desc.width = spec.width;
    load.desc.height = load.IsCube() ? spec.full_height : spec.height;
    load.desc.rowPitch = static_cast<std::int32_t>(rowPitch);
    load.desc.dataSize = spec.image_bytes(false);
    return true;
}

PixelBlock CopyOut(const OIIO::ImageBuf& image) {
    const OIIO::ImageSpec& spec = image.spec();
    PixelBlock block = Common::NewBlock(spec.image_bytes(false));
    const bool done =
        OIIO::parallel_convert_image(spec.nchannels, spec.width, spec.height, spec.depth, image.localpixels(),
                                     spec.format, image.pixel_stride(), image.scanline_stride(), image.z_stride(),
                                     block.get(), spec.format, OIIO::AutoStride, OIIO::AutoStride, OIIO::AutoStride);
    return done ? std::move(block) : nullptr;
}

}  // namespace

PixelBlock ReshapeTexture(TextureLoad& load, PixelBlock block) {
    if (!block || (!load.NeedsResize() && !load.NeedsReorientation())) return block;
    OIIO::ImageSpec spec = PlainSpec(load, load.fileDesc.width, load.fileDesc.height, load.fileDesc.depth);
    if (load.NeedsResize()) {
        const OIIO::ImageSpec smaller = PlainSpec(load, load.outWidth, load.outHeight, load.outDepth);
        PixelBlock resized = Common::NewZeroedBlock(smaller.image_bytes(false));
        OIIO::ImageBuf destination = Wrap(smaller, resized);
        // Where the library fails, what stands in the destination is the answer.
        (void)OIIOImageHandler::AdaptiveResize(destination, Wrap(spec, block), load.highQuality);
        block = std::move(resized);
        spec = smaller;
    }
    if (!load.NeedsReorientation()) return UpdateDescription(load, spec) ? std::move(block) : nullptr;

    const OIIO::ImageBuf turned = OIIOImageHandler::ReorientImage(
        Wrap(spec, block), OIIOImageHandler::ToOIIOOrientation(load.fileDesc.orientation),
        OIIOImageHandler::ToOIIOOrientation(load.orientation));
    if (turned.localpixels() == nullptr || !UpdateDescription(load, turned.spec())) return nullptr;
    block.reset();
    return CopyOut(turned);
}

}  // namespace Kavra::Devices
