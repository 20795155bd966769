#include "TextureSamples.h"

#include "Picture.h"

#include <kavra/devices/CubeFaces.h>
#include <kavra/devices/FormatFacts.h>
#include <kavra/devices/MipChain.h>
#include <kavra/devices/TextureCompressor.h>
#include <kavra/devices/TextureFile.h>
#include <kavra/objects/OS.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace Kavra::Samples {
namespace {

using namespace Devices;
using Bytes = std::vector<unsigned char>;

/// The blocks of all levels of `pixels`, the largest levels one after the other in the format `from`.
Bytes Compressed(const TextureShape& shape, EFormat from, const Bytes& pixels, const MipOptions& mips) {
    TextureShape loose = shape;
    loose.format = from;
    Bytes levels(TextureBytes(loose)), blocks(TextureBytes(shape));
    if (!BuildMipChain(loose, pixels.data(), levels.data(), mips)) throw std::runtime_error("no levels");
    FormatFacts facts;
    (void)GetFormatFacts(from, facts);
    const int faces = shape.type == kTextureCube ? 6 : 1;
    for (int element = 0; element < shape.elements; ++element) {
        for (int face = 0; face < faces; ++face) {
            for (int level = 0; level < shape.levels; ++level) {
                int width = 0, height = 0, depth = 0;
                GetTextureLevelSize(shape, level, width, height, depth);
                const auto pitch = static_cast<std::size_t>(width) * static_cast<std::size_t>(facts.bytesPerPixel);
                if (!CompressPicture(from, levels.data() + TextureLevelOffset(loose, element, face, level), pitch,
                                     width, height, shape.format,
                                     blocks.data() + TextureLevelOffset(shape, element, face, level)))
                    throw std::runtime_error("no blocks");
            }
        }
    }
    return blocks;
}

void Write(const std::string& path, const TextureShape& shape, const Bytes& blocks) {
    std::string reason;
    const Objects::KString name(OS::FromUtf8(path.c_str()).c_str());
    if (!WriteTextureFile(name, shape, blocks.data(), blocks.size(), {}, &reason))
        throw std::runtime_error(path + ": " + reason);
}

TextureShape Shape(EFormat format, ETextureType type, int side, int elements) {
    TextureShape shape;
    shape.format = format;
    shape.isSrgb = SrgbVariant(format, false) != format;
    shape.type = type;
    shape.width = shape.height = side;
    shape.levels = FullTextureLevels(side, side);
    shape.elements = elements;
    shape.alpha = kTextureAlphaOpaque;
    return shape;
}

Bytes Rgba8(const Picture& picture) {
    Bytes values = ToBytes(picture);
    if (picture.channels == 4) return values;
    Bytes bytes;
    for (std::size_t i = 0; i < values.size(); i += 3)
        bytes.insert(bytes.end(), {values[i], values[i + 1], values[i + 2], 255});
    return bytes;
}

/// A tile, bricks and an island's map, for one array.
void WriteMaterials(const std::string& path) {
    constexpr int kSide = 64;
    const TextureShape shape = Shape(kBC7Srgb, kTexture2D, kSide, 3);
    Bytes pixels;
    for (const auto& scene : {Ornament, Bricks, IslandMap})
        pixels.append_range(Rgba8(Paint(kSide, kSide, scene, false)));
    Write(path, shape, Compressed(shape, kR8G8B8A8, pixels, MipOptionsFor(shape)));
}

/// A cut-out whose levels keep as much of it as there is.
void WriteLeaf(const std::string& path) {
    constexpr int kSide = 64;
    TextureShape shape = Shape(kBC3Srgb, kTexture2D, kSide, 1);
    shape.alpha = kTextureAlphaStraight;
    MipOptions mips = MipOptionsFor(shape);
    mips.keepCoverage = 0.5F;
    Write(path, shape, Compressed(shape, kR8G8B8A8, Rgba8(PaintCutout(kSide, kSide, Leaf, true)), mips));
}

/// What shines from a direction: a sun of 40 in a blue sky over dark ground.
Colour SkyLight(const vec3<float>& direction) {
    const float length = std::hypot(direction.x, direction.y, direction.z);
    const float up = direction.y / length;
    const Colour sky = Mix({0.75F, 0.80F, 0.85F}, {0.10F, 0.25F, 0.70F}, up);
    const float sun = (0.5F * direction.x + 0.7F * direction.y + 0.5F * direction.z) / length;
    return Add(up < 0 ? Colour{0.05F, 0.045F, 0.04F} : sky, {40, 36, 28}, Smooth(0.975F, 0.99F, sun));
}

void WriteSky(const std::string& path) {
    constexpr int kSide = 32;
    const TextureShape shape = Shape(kBC6H, kTextureCube, kSide, 1);
    std::vector<float> values;
    for (int face = 0; face < 6; ++face) {
        const Picture picture = Paint(
            kSide, kSide,
            [face](float x, float y) {
                return SkyLight(CubeDirection({.face = face, .s = 2 * x - 1, .t = 2 * y - 1}));
            },
            false);
        for (std::size_t i = 0; i < picture.values.size(); i += 3)
            values.insert(values.end(), {picture.values[i], picture.values[i + 1], picture.values[i + 2], 1});
    }
    Bytes pixels(values.size() * sizeof(float));
    std::memcpy(pixels.data(), values.data(), pixels.size());
    Write(path, shape, Compressed(shape, kR32G32B32A32F, pixels, MipOptionsFor(shape)));
}

}  // namespace

void WriteTextureSamples(const std::string& folder) {
    std::filesystem::create_directories(folder);
    WriteMaterials(folder + "/materials.dds");
    WriteLeaf(folder + "/leaf.ktx2");
    WriteSky(folder + "/sky.ktx2");
}

}  // namespace Kavra::Samples
