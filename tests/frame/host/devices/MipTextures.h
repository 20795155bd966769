/// Textures whose levels are looked at, and a plain twin of the chain's maker.
#pragma once

#include "support/ResamplePictures.h"

#include <kavra/devices/FormatFacts.h>
#include <kavra/devices/MipChain.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace Kavra::Tests {

using Devices::EFormat;
using Devices::MipOptions;
using Devices::TextureShape;
using ByteVector = std::vector<unsigned char>;

inline Devices::FormatFacts FactsOf(EFormat format) {
    Devices::FormatFacts facts;
    EXPECT_TRUE(Devices::GetFormatFacts(format, facts));
    return facts;
}

/// All formats that have pixels.
std::vector<EFormat> PixelFormats();

/// A shape with all its levels.
TextureShape ShapeOf(EFormat format, int width, int height, int depth = 1,
                     Devices::ETextureType type = Devices::kTexture2D);

/// Values of pixels as numbers, integers in their own units: bytes and back.
ByteVector Packed(EFormat format, const std::vector<double>& values);
std::vector<double> Unpacked(EFormat format, const ByteVector& bytes);

/// A texture with its levels.
struct MipTexture {
    TextureShape shape;
    ByteVector bytes;

    ByteVector Level(int level, int face = 0, int element = 0) const;
    std::vector<double> Values(int level, int face = 0, int element = 0) const {
        return Unpacked(shape.format, Level(level, face, element));
    }
};

/// The whole chain of packed pixels, which is expected to be made.
MipTexture Chain(const TextureShape& shape, const ByteVector& level0, const MipOptions& options = {});
inline MipTexture Chain(const TextureShape& shape, const std::vector<double>& level0, const MipOptions& options = {}) {
    return Chain(shape, Packed(shape.format, level0), options);
}

/// The same numbers on every run, of the format's range; of halves and floats from -1 to 3.
std::vector<double> Noise(const TextureShape& shape);

/// Values of all levels of one flat picture or volume, before they are rounded, the plain way and in double precision: all
/// pixels under the filter in one sum.
std::vector<std::vector<double>> TwinChain(const TextureShape& shape, const std::vector<double>& level0,
                                           const MipOptions& options);

}  // namespace Kavra::Tests
