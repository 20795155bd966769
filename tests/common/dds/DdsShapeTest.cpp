#include "common/dds/DdsShape.h"

#include <gtest/gtest.h>

#include <limits>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using namespace Devices::Dds;

constexpr StoredUnit kByte = PixelUnit(1);
constexpr StoredUnit kBC1Block = BlockUnit(8);
constexpr StoredUnit kBC3Block = BlockUnit(16);

Header Flat(std::uint32_t width, std::uint32_t height) {
    Header header;
    header.flags = 0x1007;
    header.width = width;
    header.height = height;
    header.caps1 = 0x1000;
    return header;
}

Header WithLevels(Header header, std::uint32_t count) {
    header.flags |= 0x20000;
    header.mipCount = count;
    return header;
}

Header Volume(std::uint32_t width, std::uint32_t height, std::uint32_t depth) {
    Header header = Flat(width, height);
    header.flags |= 0x800000;
    header.depth = depth;
    header.caps2 = 0x200000;
    return header;
}

Header Cube(std::uint32_t side, std::uint32_t faces) {
    Header header = Flat(side, side);
    header.caps2 = 0x200 | faces << 10;
    return header;
}

Header Extended(Header header, std::uint32_t dimension, std::uint32_t misc = 0) {
    header.isExtended = true;
    header.dimension = dimension;
    header.misc = misc;
    return header;
}

ETextureType TypeOf(const Header& header) {
    const std::optional<Shape> shape = ShapeOf(header);
    return shape ? shape->type : kTextureUnknown;
}

int LevelsOf(const Header& header) {
    return ShapeOf(header).value().levels;
}

TEST(DdsShape, AFlatTextureHasOneFaceAndOneLevel) {
    EXPECT_EQ(ShapeOf(Flat(5, 3)), (Shape{{5, 3, 1}, 1, kTexture2D, 1}));
}

TEST(DdsShape, SizesOfZeroAreNone) {
    EXPECT_FALSE(ShapeOf(Flat(0, 1)));
    EXPECT_FALSE(ShapeOf(Flat(1, 0)));
    EXPECT_FALSE(ShapeOf(Cube(0, 0x3F)));
}

TEST(DdsShape, SidesReachTheBoundsAndNoFurther) {
    EXPECT_TRUE(ShapeOf(Flat(1U << 20, 1U << 20)));
    EXPECT_TRUE(ShapeOf(Volume(1, 1, 1U << 16)));
    for (const std::uint32_t side : {(1U << 20) + 1, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_FALSE(ShapeOf(Flat(side, 1))) << side;
        EXPECT_FALSE(ShapeOf(Flat(1, side))) << side;
        EXPECT_FALSE(ShapeOf(Volume(1, 1, side))) << side;
    }
    EXPECT_FALSE(ShapeOf(Volume(1, 1, (1U << 16) + 1)));
    EXPECT_FALSE(IsSane(-1, 1, 1));
    EXPECT_FALSE(IsSane(1, 1, 0));
}

TEST(DdsShape, AVolumeIsKnownByItsCapsItsDepthOrItsDimension) {
    Header byDepth = Flat(1, 1);
    byDepth.depth = 2;
    EXPECT_EQ(TypeOf(byDepth), kTexture2D) << "a depth that is not meant";
    byDepth.flags |= 0x800000;
    EXPECT_EQ(TypeOf(byDepth), kTextureVolume) << "depth flag";
    EXPECT_EQ(TypeOf(Extended(byDepth, 3)), kTexture2D) << "the extension says it for itself";
    EXPECT_EQ(TypeOf(Extended(byDepth, 4)), kTextureVolume);
    EXPECT_EQ(TypeOf(Extended(Flat(1, 1), 2)), kTexture2D) << "one-dimensional: a picture of one row";
    byDepth.depth = 1;
    EXPECT_EQ(TypeOf(byDepth), kTexture2D) << "a depth of 1 says nothing";

    Header byCaps = Flat(1, 1);
    byCaps.caps2 = 0x200000;
    EXPECT_EQ(ShapeOf(byCaps), (Shape{{1, 1, 1}, 1, kTextureVolume, 1})) << "at least one slice";
    byCaps.depth = 2;
    EXPECT_EQ(ShapeOf(byCaps), (Shape{{1, 1, 2}, 1, kTextureVolume, 1}));
}

TEST(DdsShape, ACubeHasNoDepthAndAVolumeNeedNotBeSquare) {
    Header both = Volume(1, 2, 2);
    both.caps2 |= 0xFE00;
    EXPECT_EQ(TypeOf(both), kTextureVolume);
}

TEST(DdsShape, ACubeHasTheFacesThatItsCapsName) {
    EXPECT_EQ(ShapeOf(Cube(2, 0b100101)), (Shape{{2, 2, 1}, 1, kTextureCube, 0b100101}));
    EXPECT_EQ(ShapeOf(Cube(2, 0))->faces, 0b111111u) << "none named: all are there";
}

TEST(DdsShape, TheExtensionsCubeFlagMeansAllFacesWhateverTheCapsSay) {
    EXPECT_EQ(ShapeOf(Extended(Flat(1, 1), 3, 4))->faces, 0b111111u);
    EXPECT_EQ(ShapeOf(Extended(Cube(1, 0b000001), 3, 4))->faces, 0b111111u);
    EXPECT_EQ(ShapeOf(Extended(Cube(1, 0b000001), 3))->faces, 0b000001u) << "without it the caps count";
}

TEST(DdsShape, ACubeMustBeSquare) {
    Header header = Cube(2, 0x3F);
    header.height = 3;
    EXPECT_FALSE(ShapeOf(header));
}

TEST(DdsShape, TheNumberOfLevelsIsAtLeastOneAndAtMostTheFullChain) {
    EXPECT_EQ(LevelsOf(WithLevels(Flat(16, 16), 100)), 5);
    EXPECT_EQ(LevelsOf(WithLevels(Flat(16, 16), 2147483647)), 5);
    EXPECT_EQ(LevelsOf(WithLevels(Flat(16, 16), 0xFFFFFFFF)), 5);
    EXPECT_EQ(LevelsOf(WithLevels(Flat(16, 16), 3)), 3);
    EXPECT_EQ(LevelsOf(WithLevels(Flat(16, 16), 0)), 1);
    EXPECT_EQ(LevelsOf(WithLevels(Flat(17, 1), 9)), 5);
    EXPECT_EQ(LevelsOf(WithLevels(Flat(1, 1), 9)), 1);
    EXPECT_EQ(LevelsOf(WithLevels(Volume(2, 2, 9), 9)), 4) << "the depth counts too";
}

TEST(DdsShape, EitherFlagMeansTheNumberOfLevels) {
    Header header = Flat(16, 16);
    header.mipCount = 3;
    EXPECT_EQ(LevelsOf(header), 1) << "the count without a flag that means it";
    header.caps1 |= 0x400000;
    EXPECT_EQ(LevelsOf(header), 3);
    header.caps1 = 0x1000;
    header.flags |= 0x20000;
    EXPECT_EQ(LevelsOf(header), 3);
}

TEST(DdsShape, TheFullMipChainEndsAtOnePixel) {
    EXPECT_EQ(FullMipChain({256, 256, 1}), 9);
    EXPECT_EQ(FullMipChain({1, 1, 1}), 1);
    EXPECT_EQ(FullMipChain({5, 2, 1}), 3);
    EXPECT_EQ(FullMipChain({1, 2, 16}), 5);
    EXPECT_EQ(FullMipChain({std::numeric_limits<int>::max(), 1, 1}), 31);
    EXPECT_EQ(FullMipChain({0, -1, 0}), 1);
}

TEST(DdsShape, EachLevelIsHalfTheOneBeforeAndNeverNothing) {
    EXPECT_EQ(LevelSize({8, 5, 4}, 0), (Extent{8, 5, 4}));
    EXPECT_EQ(LevelSize({8, 5, 4}, 1), (Extent{4, 2, 2}));
    EXPECT_EQ(LevelSize({8, 5, 4}, 3), (Extent{1, 1, 1}));
    EXPECT_EQ(LevelSize({8, 5, 4}, 32), (Extent{1, 1, 1}));
    EXPECT_EQ(LevelSize({std::numeric_limits<int>::max(), 1, 1}, 30), (Extent{1, 1, 1}));
    EXPECT_EQ(LevelSize({8, 5, 4}, std::numeric_limits<int>::max()), (Extent{1, 1, 1}));
}

TEST(DdsShape, BlocksAndPairsAreRoundedUp) {
    EXPECT_EQ(StoredRowBytes(kBC1Block, 5), 2U * 8);
    EXPECT_EQ(StoredSliceBytes(kBC1Block, {5, 9, 1}), 2U * 3 * 8);
    EXPECT_EQ(StoredLevelBytes(kBC3Block, {1, 1, 3}), 3U * 16);
    EXPECT_EQ(StoredRowBytes(PairUnit(), 3), 2U * 4);
    EXPECT_EQ(StoredSliceBytes(PairUnit(), {3, 5, 1}), 2U * 4 * 5);
    EXPECT_EQ(StoredSliceBytes(PixelUnit(3), {5, 9, 1}), 3U * 5 * 9);
}

TEST(DdsShape, FacesLieLevelByLevelOneFaceAfterAnother) {
    // A face: 16 + 4 + 1 pixels of 4 bytes.
    const Shape shape{{4, 4, 1}, 3, kTextureCube, 0x3F};
    const StoredUnit unit = PixelUnit(4);
    EXPECT_EQ(shape.FaceCount(), 6);
    EXPECT_TRUE(shape.HasAllFaces());
    EXPECT_EQ(StoredChainBytes(unit, shape), 84U);
    EXPECT_EQ(LevelOffset(unit, shape, 0, 0), 0U);
    EXPECT_EQ(LevelOffset(unit, shape, 5, 0), 5U * 84);
    EXPECT_EQ(LevelOffset(unit, shape, 1, 1), 84U + 64);
    EXPECT_EQ(LevelOffset(unit, shape, 2, 2), 2U * 84 + 64 + 16);
}

TEST(DdsShape, FacesThatAreLeftOutTakeNoRoom) {
    const Shape shape{{2, 2, 1}, 1, kTextureCube, 0b010101};
    EXPECT_TRUE(shape.HasFace(0));
    EXPECT_FALSE(shape.HasFace(1));
    EXPECT_TRUE(shape.HasFace(4));
    EXPECT_FALSE(shape.HasFace(5));
    EXPECT_FALSE(shape.HasAllFaces());
    EXPECT_EQ(LevelOffset(PixelUnit(4), shape, 2, 0), 16U);
    EXPECT_EQ(LevelOffset(PixelUnit(4), shape, 4, 0), 32U);
}

TEST(DdsShape, LevelsOfAVolumeHalveInEveryDirection) {
    const Shape shape{{8, 4, 4}, 4, kTextureVolume, 1};
    EXPECT_EQ(shape.FaceCount(), 1);
    EXPECT_TRUE(shape.HasAllFaces());
    EXPECT_EQ(LevelOffset(kByte, shape, 0, 1), 4U * 32);
    EXPECT_EQ(LevelOffset(kByte, shape, 0, 2), 4U * 32 + 2 * 8);
    EXPECT_EQ(StoredChainBytes(kByte, shape), 4U * 32 + 2 * 8 + 2 + 1);
    const Shape blocks{{8, 8, 2}, 4, kTextureVolume, 1};
    EXPECT_EQ(LevelOffset(kBC3Block, blocks, 0, 1), 2U * 4 * 16);
    EXPECT_EQ(StoredLevelBytes(kBC3Block, LevelSize(blocks.size, 3)), 16U);
}

TEST(DdsShape, ALevelEndsWithItsLastFace) {
    EXPECT_EQ(LevelEnd(kByte, {{4, 2, 1}, 3, kTexture2D, 1}, 0), 8U);
    EXPECT_EQ(LevelEnd(kByte, {{4, 2, 1}, 3, kTexture2D, 1}, 2), 8U + 2 + 1);
    EXPECT_EQ(LevelEnd(kByte, {{2, 2, 3}, 1, kTextureVolume, 1}, 0), 12U) << "all slices";
    EXPECT_EQ(LevelEnd(kByte, {{2, 2, 1}, 2, kTextureCube, 0x3F}, 0), 5U * 5 + 4);
    EXPECT_EQ(LevelEnd(kByte, {{2, 2, 1}, 2, kTextureCube, 0b000101}, 1), 2U * 5) << "what is left out has no end";
}

TEST(DdsShape, OffsetsOfTheLargestTextureFit) {
    const Shape largest{{1 << 20, 1 << 20, 1 << 16}, 21, kTextureVolume, 1};
    EXPECT_EQ(LevelOffset(PixelUnit(16), largest, 0, 1), std::uint64_t{1} << 60);
    EXPECT_EQ(LevelEnd(PixelUnit(16), {{1 << 20, 1 << 20, 1}, 1, kTextureCube, 0x3F}, 0), 6 * (std::uint64_t{1} << 44));
}

}  // namespace
}  // namespace Kavra::Tests
