// Bringing a loaded texture to the wanted size, row and column order.

#include "load/TextureLoader.h"
#include "load/geometry/NewImage.h"

#include "load/geometry/AdaptiveResize.h"
#include "load/geometry/Reorientation.h"

#include <OpenImageIO/imagebuf.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace Kavra::Devices {

namespace {

constexpr int kFaces = 6;

/// The size of a picture, or of one face of a cube map.
struct Size {
    int width, height, depth;
};

/// A spec of `targetSpec`'s pixels at another size and nothing else: the file's windows would shift the picture, and
/// its channel names may not fit the number of channels. A cube map is six faces high, its full size one face.
OIIO::ImageSpec PlainSpec(const TextureLoad& load, const Size& size, int faces) {
    OIIO::ImageSpec spec(load.targetSpec.format);
    spec.nchannels = load.targetSpec.nchannels;
    spec.width = spec.full_width = size.width;
    spec.height = faces * size.height;
    spec.full_height = size.height;
    spec.depth = spec.full_depth = size.depth;
    return spec;
}

OIIO::ImageBuf Wrap(const OIIO::ImageSpec& spec, const Pixels& pixels) {
    return WrapImage(spec, pixels.block.get(), pixels.bytes);
}

bool UpdateDescription(ImageDescription& desc, const Size& size, std::uint64_t pixelBytes, std::uint64_t bytes) {
    const std::uint64_t rowPitch = pixelBytes * static_cast<std::uint64_t>(size.width);
    if (rowPitch > std::uint64_t{std::numeric_limits<std::int32_t>::max()}) return false;
    desc.width = size.width;
    desc.height = size.height;
    desc.rowPitch = static_cast<std::int32_t>(rowPitch);
    desc.dataSize = bytes;
    return true;
}

/// Packed pixels of the image into `out`, which has room for so many bytes.
bool CopyOut(const OIIO::ImageBuf& image, unsigned char* out, std::size_t bytes) {
    if (image.localpixels() == nullptr || PixelBytes(image.spec()) != bytes) return false;
    const OIIO::ImageSpec& spec = image.spec();
    return OIIO::parallel_convert_image(spec.nchannels, spec.width, spec.height, spec.depth, image.localpixels(),
                                        spec.format, image.pixel_stride(), image.scanline_stride(), image.z_stride(),
                                        out, spec.format, OIIO::AutoStride, OIIO::AutoStride, OIIO::AutoStride);
}

Pixels Shrink(const TextureLoad& load, const Pixels& pixels, const Size& from, const Size& to, int faces) {
    const OIIO::ImageSpec spec = PlainSpec(load, to, faces);
    const OIIO::ImageBuf source = Wrap(PlainSpec(load, from, faces), pixels);
    if (!source.initialized()) return {};
    Pixels result = NewZeroedPixels(spec.image_bytes(false));
    OIIO::ImageBuf destination = Wrap(spec, result);
    // Where the library fails, what stands in the destination is the answer.
    (void)AdaptiveResize(destination, source, load.request.highQuality);
    return result;
}

OIIO::ImageBuf Turned(const OIIO::ImageBuf& image, EDataOrientation from, EDataOrientation to) {
    OIIO::ImageBuf turned = ReorientImage(image, ToOIIOOrientation(from), ToOIIOOrientation(to));
    // All that can be amiss with pixels that lie in a block of their size.
    if (image.initialized() && !turned.initialized()) throw std::bad_alloc();
    return turned;
}

/// All of it as one picture.
Pixels TurnWhole(const TextureLoad& load, Pixels pixels, const Size& size, int faces) {
    const std::size_t bytes = pixels.bytes;
    const OIIO::ImageBuf turned =
        Turned(Wrap(PlainSpec(load, size, faces), pixels), load.fileDesc.orientation, load.request.orientation);
    if (!turned.initialized()) return {};
    pixels = {};
    Pixels result = NewPixels(bytes);
    return CopyOut(turned, result.block.get(), result.bytes) ? std::move(result) : Pixels();
}

/// Each face by itself, so that the result is six faces on one another again.
Pixels TurnFaces(const TextureLoad& load, const Pixels& pixels, const Size& size) {
    const OIIO::ImageSpec face = PlainSpec(load, size, 1);
    const std::size_t bytes = pixels.bytes / kFaces;
    Pixels result = NewPixels(bytes * kFaces);
    for (std::size_t at = 0; at < result.bytes; at += bytes) {
        const OIIO::ImageBuf turned = Turned(WrapImage(face, pixels.block.get() + at, bytes), load.fileDesc.orientation,
                                             load.request.orientation);
        if (!CopyOut(turned, result.block.get() + at, bytes)) return {};
    }
    return result;
}

/// Whether rows of the one orientation are columns of the other.
bool SwapsSides(EDataOrientation from, EDataOrientation to) {
    const auto isTransposed = [](EDataOrientation orientation) { return ToOIIOOrientation(orientation) >= 5; };
    return isTransposed(from) != isTransposed(to);
}

}  // namespace

Pixels ReshapeTexture(TextureLoad& load, Pixels pixels) {
    if (!pixels || (!load.NeedsResize() && !load.NeedsReorientation())) return pixels;
    const int faces = load.IsCube() ? kFaces : 1;
    Size size = {load.fileDesc.width, load.fileDesc.height, load.fileDesc.depth};
    if (load.NeedsResize()) {
        const Size wanted = {load.outWidth, load.outHeight, load.outDepth};
        pixels = Shrink(load, pixels, size, wanted, faces);
        size = wanted;
    }
    if (pixels && load.NeedsReorientation()) {
        const bool swaps = SwapsSides(load.fileDesc.orientation, load.request.orientation);
        pixels = swaps && faces > 1 ? TurnFaces(load, pixels, size) : TurnWhole(load, std::move(pixels), size, faces);
        if (swaps) std::swap(size.width, size.height);
    }
    if (!pixels || !UpdateDescription(load.desc, size, load.targetSpec.pixel_bytes(false), pixels.bytes)) return {};
    return pixels;
}

}  // namespace Kavra::Devices
