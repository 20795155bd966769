// Levels of textures of any shape, format and options, from pixels of every kind: what a sink gets of rows with gaps between
// them is what lies in the packed texture, bounded light stays within its bounds, and vectors are as long as they should be.
//
// An input is twelve bytes that say what, and then the pixels, as often over as it takes.

#include <kavra/devices/FormatFacts.h>
#include <kavra/devices/MipChain.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

namespace {

using namespace Kavra::Devices;
using Bytes = std::vector<unsigned char>;

void Require(bool holds) {
    if (!holds) std::abort();
}

FormatFacts FactsOf(std::uint8_t choice) {
    std::vector<FormatFacts> all;
    for (EFormat format = NextFormat(kUnknown); format != kUnknown; format = NextFormat(format)) {
        FormatFacts facts;
        if (GetFormatFacts(format, facts) && facts.element != ElementType::kNone) all.push_back(facts);
    }
    return all[choice % all.size()];
}

EFormat FormatOf(const FormatFacts& facts) {
    for (EFormat format = NextFormat(kUnknown); format != kUnknown; format = NextFormat(format)) {
        FormatFacts found;
        if (GetFormatFacts(format, found) && std::strcmp(found.name, facts.name) == 0) return format;
    }
    return kUnknown;
}

TextureShape ShapeOf(const std::uint8_t* head, EFormat format) {
    constexpr int kFlatSide = 96, kDeepSide = 20;
    TextureShape shape;
    shape.format = format;
    shape.type = head[1] % 3 == 0 ? kTexture2D : head[1] % 3 == 1 ? kTextureCube : kTextureVolume;
    const int most = shape.type == kTextureVolume ? kDeepSide : kFlatSide;
    shape.width = 1 + head[2] % most;
    shape.height = shape.type == kTextureCube ? shape.width : 1 + head[3] % most;
    shape.depth = shape.type == kTextureVolume ? 1 + head[4] % most : 1;
    shape.levels = 1 + head[5] % FullTextureLevels(shape.width, shape.height, shape.depth);
    shape.elements = shape.type == kTextureVolume ? 1 : 1 + head[6] % 2;
    return shape;
}

MipOptions OptionsOf(const std::uint8_t* head, int channels) {
    MipOptions options;
    options.filter = static_cast<EResampleFilter>(kResampleBox + head[7] % 5);
    options.edges = static_cast<EMipEdges>(head[8] & 1);
    options.content = channels < 2 ? kMipColours : static_cast<EMipContent>((head[8] >> 1) % 3);
    options.linearLight = (head[9] & 1) != 0;
    options.alphaWeighted = (head[9] & 2) != 0;
    options.bounded = (head[9] & 4) != 0;
    options.keepCoverage = static_cast<float>(head[10]) / 255;
    return options;
}

/// Requires levels to be those of a packed texture.
class Checker final : public IMipSink {
public:
    Checker(const TextureShape& shape, const Bytes& texture, std::size_t pixelBytes)
        : mShape(shape), mTexture(texture), mPixelBytes(pixelBytes) {}

    bool TakeLevel(const MipLevel& level) override {
        const int picture = level.element * FaceCount(mShape.type) + level.face;
        const auto face = static_cast<std::size_t>(picture);
        const std::size_t at = face * Offset(mShape.levels) + Offset(level.level);
        Require(level.bytes == Offset(level.level + 1) - Offset(level.level));
        Require(std::memcmp(level.pixels, mTexture.data() + at, level.bytes) == 0);
        ++mTaken;
        return true;
    }
    int Taken() const { return mTaken; }

private:
    std::size_t Offset(int levels) const {
        std::size_t pixels = 0;
        for (int level = 0; level < levels; ++level) {
            const auto side = [level](int length) { return static_cast<std::size_t>(std::max(length >> level, 1)); };
            pixels += side(mShape.width) * side(mShape.height) * side(mShape.depth);
        }
        return pixels * mPixelBytes;
    }

    const TextureShape& mShape;
    const Bytes& mTexture;
    std::size_t mPixelBytes;
    int mTaken = 0;
};

/// Where all floats of level 0 are numbers, those of all levels lie between them.
void CheckBounds(const Bytes& pixels, const Bytes& texture) {
    const auto floats = [](const Bytes& bytes) {
        std::vector<float> values(bytes.size() / sizeof(float));
        std::memcpy(values.data(), bytes.data(), values.size() * sizeof(float));
        return values;
    };
    const std::vector<float> from = floats(pixels), to = floats(texture);
    constexpr float kLargest = 1e30F;  // so that no sum of a row is infinite
    if (!std::ranges::all_of(from, [](float v) { return std::fabs(v) <= kLargest; })) return;
    const auto [least, most] = std::ranges::minmax(from);
    // Weights add up to one but for rounding.
    const float spare = std::max(std::fabs(least), std::fabs(most)) * 1e-5F;
    for (const float value : to)
        Require(value >= least - spare && value <= most + spare);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kHead = 12;
    if (size <= kHead) return 0;
    const FormatFacts facts = FactsOf(data[0]);
    const TextureShape shape = ShapeOf(data, FormatOf(facts));
    const MipOptions options = OptionsOf(data, facts.channels);
    const std::span input(data + kHead, size - kHead);
    const auto sizeOf = [](int a, int b) { return static_cast<std::size_t>(a) * static_cast<std::size_t>(b); };
    const std::size_t rowBytes = sizeOf(shape.width, facts.bytesPerPixel), gap = data[11] % 9, pitch = rowBytes + gap;
    const std::size_t pictures = sizeOf(shape.elements, FaceCount(shape.type)),
                      rows = sizeOf(shape.height, shape.depth);

    Bytes packed(pictures * rows * rowBytes);
    for (std::size_t i = 0; i < packed.size(); ++i)
        packed[i] = input[i % input.size()];
    Bytes texture(TextureBytes(shape));
    Require(BuildMipChain(shape, packed.data(), texture.data(), options));

    // Each picture in a block of its own, which ends with its last row.
    std::vector<Bytes> spaced(pictures, Bytes((rows - 1) * pitch + rowBytes));
    std::vector<const void*> firsts;
    for (std::size_t picture = 0; picture < pictures; ++picture) {
        for (std::size_t y = 0; y < rows; ++y)
            std::memcpy(spaced[picture].data() + y * pitch, packed.data() + (picture * rows + y) * rowBytes, rowBytes);
        firsts.push_back(spaced[picture].data());
    }
    MipSource source;
    source.pictures = firsts.data();
    source.pitch = pitch;
    Checker checker(shape, texture, static_cast<std::size_t>(facts.bytesPerPixel));
    Require(BuildMipChain(shape, source, checker, options));
    Require(checker.Taken() == static_cast<int>(pictures) * (shape.levels - 1));

    const bool heedsAlpha = facts.hasAlpha && (options.alphaWeighted || options.keepCoverage > 0);
    const bool isPlain = options.content == kMipColours && !heedsAlpha;
    if (facts.element == ElementType::kFloat && options.bounded && isPlain) CheckBounds(packed, texture);
    return 0;
}
