#include "frame/host/devices/MipTextures.h"

#include <kavra/devices/MipChain.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <vector>

namespace Kavra::Devices {
namespace {

using Tests::ByteVector;
using Tests::Chain;
using Tests::MipTexture;
using Tests::Noise;
using Tests::Packed;
using Tests::ShapeOf;

/// Keeps what it is given, and says no at the level whose number it has.
class Keeper final : public IMipSink {
public:
    struct Taken {
        MipLevel level;
        ByteVector pixels;
    };
    explicit Keeper(std::size_t refused = std::numeric_limits<std::size_t>::max()) : mRefused(refused) {}

    bool TakeLevel(const MipLevel& level) override {
        const auto* const pixels = static_cast<const unsigned char*>(level.pixels);
        taken.push_back({level, ByteVector(pixels, pixels + level.bytes)});
        return taken.size() <= mRefused;
    }

    std::vector<Taken> taken;

private:
    std::size_t mRefused;
};

/// The pictures of packed pixels.
std::vector<const void*> PicturesIn(const TextureShape& shape, const ByteVector& pixels) {
    const std::size_t count = static_cast<std::size_t>(shape.elements) * static_cast<unsigned>(FaceCount(shape.type));
    std::vector<const void*> pictures(count);
    for (std::size_t i = 0; i < count; ++i)
        pictures[i] = pixels.data() + pixels.size() / count * i;
    return pictures;
}

bool BuildInto(const TextureShape& shape, const std::vector<const void*>& pictures, IMipSink& sink,
               const MipOptions& options = {}) {
    MipSource source;
    source.pictures = pictures.data();
    return BuildMipChain(shape, source, sink, options);
}

// --- Order -----------------------------------------------------------------------------------------------------------

TEST(MipSink, LevelsComeElementByElementLevelByLevelFaceByFace) {
    TextureShape shape = ShapeOf(kR8G8B8A8, 4, 4, 1, kTextureCube);
    shape.elements = 2;
    const ByteVector pixels = Packed(shape.format, Noise(shape));
    const MipTexture texture = Chain(shape, pixels);
    Keeper keeper;
    ASSERT_TRUE(BuildInto(shape, PicturesIn(shape, pixels), keeper));
    ASSERT_EQ(keeper.taken.size(), 2U * 2 * 6);
    std::size_t next = 0;
    for (int element = 0; element < 2; ++element) {
        for (int level = 1; level < 3; ++level) {
            for (int face = 0; face < 6; ++face, ++next) {
                const auto& [taken, bytes] = keeper.taken[next];
                EXPECT_EQ(taken.element, element);
                EXPECT_EQ(taken.level, level);
                EXPECT_EQ(taken.face, face);
                EXPECT_EQ(taken.width, 4 >> level);
                EXPECT_EQ(taken.height, 4 >> level);
                EXPECT_EQ(taken.depth, 1);
                EXPECT_EQ(bytes, texture.Level(level, face, element));
            }
        }
    }
}

TEST(MipSink, LevelsOfAVolumeHaveAllTheirSlices) {
    const TextureShape shape = ShapeOf(kR16F, 5, 3, 9);
    const ByteVector pixels = Packed(shape.format, Noise(shape));
    const MipTexture texture = Chain(shape, pixels);
    Keeper keeper;
    ASSERT_TRUE(BuildInto(shape, {pixels.data()}, keeper));
    ASSERT_EQ(keeper.taken.size(), 3U);
    EXPECT_EQ(keeper.taken[0].level.depth, 4);
    EXPECT_EQ(keeper.taken[0].level.bytes, 2U * 1 * 4 * 2);
    EXPECT_EQ(keeper.taken[2].level.depth, 1);
    for (int level = 1; level < 4; ++level)
        EXPECT_EQ(keeper.taken[static_cast<std::size_t>(level - 1)].pixels, texture.Level(level));
}

TEST(MipSink, ASinkThatSaysNoEndsTheWork) {
    const TextureShape shape = ShapeOf(kL8, 16, 16);
    const ByteVector pixels(256);
    Keeper keeper(1);
    EXPECT_FALSE(BuildInto(shape, {pixels.data()}, keeper));
    EXPECT_EQ(keeper.taken.size(), 2U);
}

TEST(MipSink, WhatASinkThrowsReachesTheCaller) {
    class Thrower final : public IMipSink {
        bool TakeLevel(const MipLevel& /*level*/) override { throw std::runtime_error("full"); }
    } thrower;
    const TextureShape shape = ShapeOf(kL8, 2, 2);
    const ByteVector pixels(4);
    EXPECT_THROW(BuildInto(shape, {pixels.data()}, thrower), std::runtime_error);
}

TEST(MipSink, LevelZeroAloneMakesNone) {
    TextureShape shape = ShapeOf(kL8, 16, 16);
    shape.levels = 1;
    const ByteVector pixels(256);
    Keeper keeper;
    EXPECT_TRUE(BuildInto(shape, {pixels.data()}, keeper));
    EXPECT_TRUE(keeper.taken.empty());
}

// --- Pitches ---------------------------------------------------------------------------------------------------------

TEST(MipSink, WhatLiesBetweenRowsAndSlicesIsNotLookedAt) {
    const TextureShape shape = ShapeOf(kR8G8B8A8, 7, 5, 3);
    const ByteVector pixels = Packed(shape.format, Noise(shape));
    MipOptions options;
    options.filter = kResampleLanczos3;
    options.keepCoverage = 0.5F;
    constexpr std::size_t kRow = 7 * 4, kPitch = kRow + 5, kSlice = 5 * kPitch + 11;
    ByteVector spaced(3 * kSlice, 0xEE);
    for (std::size_t i = 0; i < 15; ++i)
        std::memcpy(spaced.data() + i / 5 * kSlice + i % 5 * kPitch, pixels.data() + i * kRow, kRow);
    const void* const first = spaced.data();
    MipSource source;
    source.pictures = &first;
    source.pitch = kPitch;
    source.slicePitch = kSlice;
    Keeper keeper;
    ASSERT_TRUE(BuildMipChain(shape, source, keeper, options));
    const MipTexture texture = Chain(shape, pixels, options);
    for (const auto& [level, bytes] : keeper.taken)
        EXPECT_EQ(bytes, texture.Level(level.level));
}

TEST(MipSink, PitchesThatAreTooShortAreRefused) {
    const TextureShape shape = ShapeOf(kL8, 8, 4, 2);
    const ByteVector pixels(64);
    const void* const first = pixels.data();
    MipSource source;
    source.pictures = &first;
    Keeper keeper;
    source.pitch = 7;
    EXPECT_FALSE(BuildMipChain(shape, source, keeper));
    source.pitch = 8;
    source.slicePitch = 31;
    EXPECT_FALSE(BuildMipChain(shape, source, keeper));
    EXPECT_TRUE(keeper.taken.empty());
    source.slicePitch = 32;
    EXPECT_TRUE(BuildMipChain(shape, source, keeper));
}

// --- What is none ----------------------------------------------------------------------------------------------------

/// Whether both ways refuse, and write nothing.
void ExpectRefused(const TextureShape& shape, const MipOptions& options = {}) {
    const ByteVector pixels(1 << 12);
    ByteVector texture(1 << 13, 0xEE);
    EXPECT_FALSE(BuildMipChain(shape, pixels.data(), texture.data(), options));
    EXPECT_EQ(texture, ByteVector(1 << 13, 0xEE));
    Keeper keeper;
    EXPECT_FALSE(BuildInto(shape, std::vector<const void*>(12, pixels.data()), keeper, options));
    EXPECT_TRUE(keeper.taken.empty());
}

TEST(MipSink, ShapesThatAreNoneAreRefused) {
    const TextureShape good = ShapeOf(kR8G8B8A8, 8, 8);
    const auto refused = [&](const auto& change) {
        TextureShape shape = good;
        change(shape);
        ExpectRefused(shape);
    };
    for (const int side : {0, -1, std::numeric_limits<int>::min(), (1 << 20) + 1, std::numeric_limits<int>::max()}) {
        refused([&](TextureShape& shape) { shape.width = side; });
        refused([&](TextureShape& shape) { shape.height = side; });
        refused([&](TextureShape& shape) { shape.depth = side; });
    }
    refused([](TextureShape& shape) { shape.depth = 2; });  // flat
    refused([](TextureShape& shape) { shape.levels = 0; });
    refused([](TextureShape& shape) { shape.levels = 5; });
    refused([](TextureShape& shape) { shape.elements = 0; });
    refused([](TextureShape& shape) { shape.type = kTextureUnknown; });
    refused([](TextureShape& shape) { shape.type = static_cast<ETextureType>(99); });
    refused([](TextureShape& shape) {
        shape.type = kTextureCube;
        shape.height = 4;
    });
    for (const EFormat format : {kUnknown, kBC1, kBC7Srgb, kReserved50, static_cast<EFormat>(-3)})
        refused([&](TextureShape& shape) { shape.format = format; });
}

TEST(MipSink, TexturesThatCannotBeCountedAreRefused) {
    TextureShape shape = ShapeOf(kR32G32B32A32F, 1 << 20, 1 << 20, 1 << 16);
    shape.elements = std::numeric_limits<int>::max();
    ExpectRefused(shape);
}

TEST(MipSink, OptionsThatAreNoneAreRefused) {
    const TextureShape shape = ShapeOf(kR8G8B8A8, 8, 8);
    const auto refused = [&](const auto& change) {
        MipOptions options;
        change(options);
        ExpectRefused(shape, options);
    };
    for (const int filter : {0, 1, 7, -1})  // the nearest pixel and points between are no filters of levels
        refused([&](MipOptions& options) { options.filter = static_cast<EResampleFilter>(filter); });
    refused([](MipOptions& options) { options.edges = static_cast<EMipEdges>(2); });
    refused([](MipOptions& options) { options.content = static_cast<EMipContent>(3); });
    for (const float threshold : {-0.5F, 1.5F, std::numeric_limits<float>::quiet_NaN()})
        refused([&](MipOptions& options) { options.keepCoverage = threshold; });
}

TEST(MipSink, VectorsOfOneChannelAreRefused) {
    MipOptions options;
    for (const EMipContent content : {kMipNormals, kMipNormalsXY}) {
        options.content = content;
        for (const EFormat format : {kL8, kR16F, kA8})
            ExpectRefused(ShapeOf(format, 8, 8), options);
    }
}

TEST(MipSink, WhereNothingIsToReadOrToWriteThatIsRefused) {
    const TextureShape shape = ShapeOf(kL8, 2, 2);
    ByteVector bytes(8);
    Keeper keeper;
    EXPECT_FALSE(BuildMipChain(shape, nullptr, bytes.data()));
    EXPECT_FALSE(BuildMipChain(shape, bytes.data(), nullptr));
    EXPECT_FALSE(BuildMipChain(shape, MipSource(), keeper));
    EXPECT_FALSE(BuildInto(shape, {nullptr}, keeper));
}

TEST(MipSink, FieldsThatACallerDoesNotKnowAreAsByDefault) {
    const TextureShape shape = ShapeOf(kR32F, 4, 1);
    MipOptions options;
    options.filter = kResampleTriangle;
    options.edges = kMipWrap;
    options.size = offsetof(MipOptions, edges);
    EXPECT_EQ(Chain(shape, std::vector<double>{8, 0, 0, 0}, options).Values(1), (std::vector<double>{4, 0}));
}

TEST(MipSink, OptionsFollowWhatATextureSaysOfItself) {
    TextureShape shape;
    EXPECT_FALSE(MipOptionsFor(shape).linearLight);
    EXPECT_FALSE(MipOptionsFor(shape).alphaWeighted);
    shape.isSrgb = true;
    shape.alpha = kTextureAlphaStraight;
    EXPECT_TRUE(MipOptionsFor(shape).linearLight);
    EXPECT_TRUE(MipOptionsFor(shape).alphaWeighted);
    shape.alpha = kTextureAlphaPremultiplied;
    EXPECT_FALSE(MipOptionsFor(shape).alphaWeighted);
}

}  // namespace
}  // namespace Kavra::Devices
