#include "Comparison.h"
#include "FileColours.h"
#include "FormatNames.h"
#include "Picture.h"
#include "TextureMaking.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <span>
#include <utility>

namespace Kavra::App {

using namespace Devices;

namespace {

/// Puts levels into a texture as its file holds them.
class Encoder final : public IMipSink {
public:
    Encoder(MadeTexture& made, EFormat working, const CompressionOptions& compression)
        : mMade(made), mWorking(working), mCompression(compression) {}

    /// One face of a level, all its slices, packed.
    bool Put(int element, int face, int level, const void* pixels) {
        const TextureShape& shape = mMade.shape;
        int width = 0, height = 0, depth = 0;
        GetTextureLevelSize(shape, level, width, height, depth);
        unsigned char* out = mMade.bytes.data() + TextureLevelOffset(shape, element, face, level);
        const std::uint64_t blockBytes = BlockBytes(shape.format, width, height);
        if (blockBytes == 0) {
            std::memcpy(out, pixels, TextureLevelBytes(shape, level));
            return true;
        }
        const auto pitch = static_cast<std::size_t>(width) * static_cast<std::size_t>(Facts(mWorking).bytesPerPixel);
        const auto* in = static_cast<const unsigned char*>(pixels);
        for (int slice = 0; slice < depth; ++slice, out += blockBytes, in += pitch * static_cast<unsigned>(height)) {
            if (!CompressPicture(mWorking, in, pitch, width, height, shape.format, out, mCompression)) return false;
        }
        return true;
    }

    bool TakeLevel(const MipLevel& level) override { return Put(level.element, level.face, level.level, level.pixels); }

private:
    MadeTexture& mMade;
    EFormat mWorking;
    CompressionOptions mCompression;
};

const unsigned char* FaceOf(const LoadedImage& image, int face) {
    return static_cast<const unsigned char*>(image.block->mData) + static_cast<unsigned>(face) * image.desc.dataSize;
}

int LevelsOf(const PixelTexture& texture, const TextureOptions& options, bool isFile) {
    const TextureShape& shape = texture.shape;
    const int all = FullTextureLevels(shape.width, shape.height, shape.depth);
    if (options.levels.count)
        return *options.levels.count == LevelWish::kAll ? all : std::min(*options.levels.count, all);
    return isFile ? shape.levels : all;
}

bool MakeMips(PixelTexture& texture, Encoder& encoder, int levels, const MipOptions& options) {
    std::vector<const void*> pictures;
    for (int element = 0; element < texture.shape.elements; ++element)
        for (int face = 0; face < FaceCount(texture.shape.type); ++face)
            pictures.push_back(FaceOf(texture.Image(element, 0), face));
    TextureShape shape = texture.shape;
    shape.levels = levels;
    MipSource source;
    source.pictures = pictures.data();
    return BuildMipChain(shape, source, encoder, options);
}

/// Those that are there.
bool PutLevels(PixelTexture& texture, Encoder& encoder, int levels) {
    for (int element = 0; element < texture.shape.elements; ++element) {
        for (int level = 0; level < levels; ++level) {
            for (int face = 0; face < FaceCount(texture.shape.type); ++face)
                if (!encoder.Put(element, face, level, FaceOf(texture.Image(element, level), face))) return false;
        }
    }
    return true;
}

bool IsSigned(EFormat format) {
    return format == kBC4Snorm || format == kBC5Snorm;
}

/// Takes the colours away from pixels of which one of the two shows nothing: alpha tells of those.
void ForgetUnseen(LoadedImage& a, LoadedImage& b) {
    ColourFindings ignored;
    a = Changed(a, {}, kR32G32B32A32F, ignored);
    b = Changed(b, {}, kR32G32B32A32F, ignored);
    using Colour = std::array<float, 4>;
    const std::size_t pixels = a.BlockSize() / sizeof(Colour);
    const std::span ours(static_cast<Colour*>(a.block->mData), pixels),
        theirs(static_cast<Colour*>(b.block->mData), pixels);
    for (std::size_t i = 0; i < pixels; ++i) {
        if (ours[i][3] > 0 && theirs[i][3] > 0) continue;
        std::fill_n(ours[i].begin(), 3, 0.0F);
        std::fill_n(theirs[i].begin(), 3, 0.0F);
    }
}

/// How many channels of what was encoded a format keeps.
std::size_t ChannelsOf(const TextureShape& shape) {
    switch (shape.format) {
        case kBC4:
        case kBC4Snorm:
            return 1;
        case kBC5:
        case kBC5Snorm:
            return 2;
        default:
            return shape.alpha == kTextureAlphaOpaque ? 3 : 4;
    }
}

/// A largest level as it is decoded. Signed values of what was integers are brought back around the middle.
LoadedImage Shown(const MadeTexture& made, const LoadedImage& original, int element) {
    const EFormat format = DecodedFormat(made.shape.format);
    const bool hasBlocks = format != kUnknown;
    ImageDescription desc = original.desc;
    desc.format = hasBlocks ? format : made.shape.format;
    LoadedImage shown = NewPictureLike(desc, desc.width, desc.height);
    auto* out = static_cast<unsigned char*>(shown.block->mData);
    for (int face = 0; face < FaceCount(made.shape.type); ++face) {
        const unsigned char* in = made.bytes.data() + TextureLevelOffset(made.shape, element, face, 0);
        if (!hasBlocks) {
            std::memcpy(out, in, shown.desc.dataSize);
        } else {
            (void)DecodeFace(made.shape.format, in, shown.desc, out);
        }
        out += shown.desc.dataSize;
    }
    return shown;
}

/// Signed values stand for -1 to 1, the integers that they were made of for 0 to 1.
void BringToIntegers(LoadedImage& shown) {
    ColourFindings ignored;
    shown = Changed(shown, {}, kR32G32B32A32F, ignored);
    auto* const values = static_cast<float*>(shown.block->mData);
    for (float& value : std::span(values, shown.BlockSize() / sizeof(float)))
        value = (value + 1) / 2;
}

/// The brightest colour of light, 1 at least; 1 of integers.
double PeakOf(const LoadedImage& image) {
    if (!IsFloating(image.desc.format)) return 1;
    ColourFindings ignored;
    const LoadedImage floats = Changed(image, {}, kR32G32B32A32F, ignored);
    const auto* const values = static_cast<const float*>(floats.block->mData);
    double peak = 1;
    for (const float value : std::span(values, floats.BlockSize() / sizeof(float)))
        if (std::isfinite(value)) peak = std::max<double>(peak, value);
    return peak;
}

}  // namespace

MadeTexture Encoded(Report& report, PixelTexture& texture, const TexturePlan& plan, const TextureOptions& options,
                    bool isFile) {
    MadeTexture made{.shape = plan.shape, .bytes = {}};
    made.shape.width = texture.shape.width;
    made.shape.height = texture.shape.height;
    made.shape.depth = texture.shape.depth;
    made.shape.elements = texture.shape.elements;
    made.shape.levels = LevelsOf(texture, options, isFile && !options.ChangesSize());
    made.bytes.resize(TextureBytes(made.shape));
    Encoder encoder(made, plan.working, options.CompressionOf(plan.shape));
    const bool hasAll = texture.shape.levels >= made.shape.levels;
    bool isMade = !made.bytes.empty() && PutLevels(texture, encoder, hasAll ? made.shape.levels : 1);
    if (isMade && !hasAll) {
        texture.KeepLargest();
        isMade = MakeMips(texture, encoder, made.shape.levels, options.MipsOf(plan.shape));
    }
    if (!isMade) {
        report.Fail("cannot be made");
        made.bytes.clear();
    }
    return made;
}

TextureError ErrorOf(PixelTexture texture, const MadeTexture& made) {
    TextureError error;
    const std::size_t channels = ChannelsOf(made.shape);
    std::vector<Difference> differences(channels);
    double peak = 1;
    for (int element = 0; element < made.shape.elements; ++element) {
        LoadedImage& original = texture.Image(element, 0);
        LoadedImage shown = Shown(made, original, element);
        if (IsSigned(made.shape.format) && !IsFloating(original.desc.format)) BringToIntegers(shown);
        peak = std::max(peak, PeakOf(original));
        if (made.shape.alpha == kTextureAlphaStraight && channels == 4) ForgetUnseen(original, shown);
        const Comparison comparison = Compare(original, shown);
        for (std::size_t i = 0; i < channels && i < comparison.channels.size(); ++i)
            differences[i].Add(comparison.channels[i]);
    }
    constexpr const char* kNames[] = {"R", "G", "B", "A"};
    for (std::size_t i = 0; i < channels; ++i) {
        error.names.emplace_back(kNames[i]);
        error.psnr.push_back(differences[i].Psnr() + 20 * std::log10(peak));
    }
    return error;
}

}  // namespace Kavra::App
