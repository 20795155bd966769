// Reading the pixels of a texture, and the files whose few channels are spread over four.

#include "common/HostObject.h"
#include "common/ParallelRange.h"
#include "formats/Attributes.h"
#include "load/ReadSubimage.h"
#include "load/TextureLoader.h"
#include "readers/ImageFileType.h"

#include <kavra/devices/DDSReader.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

namespace Kavra::Devices {

namespace {

constexpr std::size_t kSerialPixels = 1 << 16;

/// Reads channels 0 to `channels` - 1 of every pixel into `out`, where pixels are `pixelStride` bytes apart. The bytes
/// between them stay as they are.
bool ReadChannels(TextureLoad& load, int channels, OIIO::TypeDesc type, unsigned char* out, std::size_t pixelStride) {
    if (load.IsDds() && (load.IsCube() || load.IsVolume())) {
        return load.slices->ReadLevel(load.index, load.fileSpec, channels, type, out, pixelStride);
    }
    const int subimage = load.IsDds() ? 0 : load.index;
    const int level = load.IsDds() ? load.index : 0;
    if (!ReadSubimage(*load.input, load.fileSpec, subimage, level, channels, type, out, pixelStride)) return false;
    // The library's DDS reader says only here that the file ended early; others deliver a partial picture on purpose.
    return !load.IsDds() || !load.input->has_error();
}

std::size_t PixelCount(const OIIO::ImageSpec& spec) {
    return static_cast<std::size_t>(spec.image_pixels());
}

// --- Luminance with alpha --------------------------------------------------------------------------------------------

bool IsLuminanceAlpha(const TextureLoad& load) {
    return load.fileSpec.nchannels == 2 && (load.fileSpec.alpha_channel > 0 || load.IsDds()) &&
           load.nativeSpec.nchannels == 4;
}

using Rgba8 = std::array<unsigned char, 4>;

bool IsMask(const Rgba8* pixels, std::size_t count) {
    const auto equalPair = [](const Rgba8& pixel) { return pixel[0] == pixel[1]; };
    return std::all_of(pixels, pixels + count, equalPair);
}

/// Pixels (L, A, -, -) to (L, L, L, A). A file whose luminance is its alpha everywhere is an inverted mask: opaque, and
/// dark where the mask is full.
Pixels ReadLuminanceAlpha(TextureLoad& load) {
    Pixels read = NewPixels(load.nativeSpec.image_bytes(false));
    if (!ReadChannels(load, 2, OIIO::TypeUInt8, read.block.get(), sizeof(Rgba8))) return {};

    auto* pixels = reinterpret_cast<Rgba8*>(read.block.get());
    const std::size_t count = PixelCount(load.nativeSpec);
    const bool isMask = !load.IsDds() && IsMask(pixels, count);
    if (isMask) load.desc.hasAlpha = false;
    Common::ForEachRange(count, kSerialPixels, [&](std::size_t begin, std::size_t end) {
        for (Rgba8* pixel = pixels + begin; pixel != pixels + end; ++pixel) {
            const auto [luminance, alpha] = std::pair((*pixel)[0], (*pixel)[1]);
            const auto grey = static_cast<unsigned char>(isMask ? 255 - luminance : luminance);
            *pixel = {grey, grey, grey, isMask ? static_cast<unsigned char>(255) : alpha};
        }
    });
    return read;
}

// --- OpenEXR files with one channel ----------------------------------------------------------------------------------

bool IsSingleChannelExr(const TextureLoad& load) {
    return load.fileType == OpenEXR && load.fileSpec.nchannels == 1 &&
           (load.fileDesc.format == kR16G16B16A16F || load.fileDesc.format == kR32G32B32A32F);
}

/// The one of four channels that a file's only channel is, by its name; -1 for all three colours.
int ColourOfName(const std::string& name) {
    if (name == "G") return 1;
    if (name == "B") return 2;
    if (name == "A") return 3;
    return -1;
}

/// Puts the values, which stand in channel `from` of each pixel, into the first three channels if `grey`; the other
/// colours and, but for the values' own channel, alpha get their defaults. T holds the bits of an element.
template <class T>
void SpreadChannel(unsigned char* block, std::size_t count, std::size_t from, bool grey, T opaque) {
    using Pixel = std::array<T, 4>;
    auto* pixels = reinterpret_cast<Pixel*>(block);
    Common::ForEachRange(count, kSerialPixels, [=](std::size_t begin, std::size_t end) {
        for (Pixel* pixel = pixels + begin; pixel != pixels + end; ++pixel) {
            const T value = (*pixel)[from];
            *pixel = grey ? Pixel{value, value, value, opaque} : Pixel{0, 0, 0, opaque};
            if (!grey) (*pixel)[from] = value;
        }
    });
}

Pixels ReadSingleChannelExr(TextureLoad& load) {
    const OIIO::ImageSpec& as = load.nativeSpec;
    const int colour = ColourOfName(load.fileSpec.channel_name(0));
    const std::size_t from = colour < 0 ? 0 : static_cast<std::size_t>(colour);
    Pixels read = NewPixels(as.image_bytes(false));
    unsigned char* values = read.block.get() + from * as.format.size();
    if (!ReadChannels(load, 1, as.format, values, as.pixel_bytes(false))) return {};

    if (as.format == OIIO::TypeHalf) {
        SpreadChannel<std::uint16_t>(read.block.get(), PixelCount(as), from, colour < 0, 0x3C00);
    } else {
        SpreadChannel<std::uint32_t>(read.block.get(), PixelCount(as), from, colour < 0, 0x3F800000);
    }
    return read;
}

// --- 16-bit luminance in DDS files -----------------------------------------------------------------------------------

/// The library keeps the upper half of each value only, the host's reader both.
bool IsHostLuminance16(const TextureLoad& load) {
    return load.IsDds() && load.fileDesc.format == kR16 && (load.hostFormat == kR16 || load.hostFormat == kL16);
}

bool IsWholeLevel(const ImageDescription& level, const TextureLoad& load) {
    const auto faces = static_cast<std::uint64_t>(FaceCount(level.textureType));
    return level.format == load.hostFormat && level.textureType == load.fileDesc.textureType &&
           level.rowPitch == level.width * 2 && level.dataSize * faces == load.nativeSpec.image_bytes(false);
}

/// Copied out of the host's wrapper, whatever that does with its data when it goes.
Pixels ReadHostLevel(const TextureLoad& load) {
    DDSReader reader;
    if (!reader.Load(load.path)) return {};
    for (int passed = 0; passed < load.index; ++passed) {
        if (!reader.SkipMipLevel(passed)) return {};
    }
    ImageDescription level;
    const Common::HostObject<IMemoryWrapper<void>> wrapper(
        reader.Load(level, load.fileDesc.width, load.fileDesc.height, load.fileDesc.depth));
    if (!wrapper || wrapper->mData == nullptr || !IsWholeLevel(level, load)) return {};
    Pixels pixels = NewPixels(load.nativeSpec.image_bytes(false));
    std::memcpy(pixels.block.get(), wrapper->mData, pixels.bytes);
    return pixels;
}

// --- Putting it together ---------------------------------------------------------------------------------------------

/// A block for pixels of `as`, zeroed where not every channel will be written.
Pixels NewPixelsFor(const OIIO::ImageSpec& as, bool covered) {
    return covered ? NewPixels(as.image_bytes(false)) : NewZeroedPixels(as.image_bytes(false));
}

/// Pixels that stand in a block of `nativeSpec`'s layout brought to another one, as if they had been read so. Where
/// the conversion engine goes on from `nativeSpec`, there is nothing to do.
ReadPixels Recast(const TextureLoad& load, Pixels pixels, const OIIO::ImageSpec& as) {
    const OIIO::ImageSpec& from = load.nativeSpec;
    if (!pixels || (as.nchannels == from.nchannels && as.format == from.format)) return {std::move(pixels)};
    const int channels = std::min(from.nchannels, as.nchannels);
    const bool lacksAlpha = as.nchannels == 4 && from.nchannels < 4;
    Pixels result = NewPixelsFor(as, channels == as.nchannels);
    const auto fromStride = static_cast<OIIO::stride_t>(from.pixel_bytes(false));
    const auto stride = static_cast<OIIO::stride_t>(as.pixel_bytes(false));
    const bool done = OIIO::parallel_convert_image(
        channels, as.width, as.height, as.depth, pixels.block.get(), from.format, fromStride, OIIO::AutoStride,
        OIIO::AutoStride, result.block.get(), as.format, stride, OIIO::AutoStride, OIIO::AutoStride);
    if (!done) return {};
    return {std::move(result), lacksAlpha};
}

/// The file's channels as the first ones of `as`. A fourth channel that the file does not call alpha counts as such
/// when it is interleaved with the others, and not when it lies in a plane of its own.
ReadPixels ReadOrdinary(TextureLoad& load, const OIIO::ImageSpec& as) {
    const OIIO::ImageSpec& file = load.fileSpec;
    int channels = std::min(as.nchannels, file.nchannels);
    bool lacksAlpha = false;
    if (as.nchannels == 4 && file.alpha_channel < 0) {
        const bool planar = TextAttribute(file, "planarconfig") == "separate";
        lacksAlpha = file.nchannels < 4 || planar;
        if (lacksAlpha) channels = std::min(as.alpha_channel, file.nchannels);
        if (!lacksAlpha) load.desc.hasAlpha = true;
    }
    Pixels pixels = NewPixelsFor(as, channels + (lacksAlpha ? 1 : 0) == as.nchannels);
    if (!ReadChannels(load, channels, as.format, pixels.block.get(), as.pixel_bytes(false))) return {};
    return {std::move(pixels), lacksAlpha};
}

}  // namespace

ReadPixels ReadTexturePixels(TextureLoad& load, const OIIO::ImageSpec& as) {
    if (IsLuminanceAlpha(load)) return Recast(load, ReadLuminanceAlpha(load), as);
    if (IsSingleChannelExr(load)) return Recast(load, ReadSingleChannelExr(load), as);
    if (IsHostLuminance16(load)) return Recast(load, ReadHostLevel(load), as);
    return ReadOrdinary(load, as);
}

}  // namespace Kavra::Devices
