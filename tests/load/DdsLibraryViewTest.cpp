#include "load/DdsLibraryView.h"

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <utility>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using namespace Devices::Dds;

/// 8 x 4 pixels of 32 bits: red, green, blue, alpha.
Header Flat() {
    Header header;
    header.flags = 0x1007;
    header.width = 8;
    header.height = 4;
    header.pixelFlags = 0x41;
    header.bitCount = 32;
    header.redMask = 0xFF;
    header.greenMask = 0xFF00;
    header.blueMask = 0xFF0000;
    header.alphaMask = 0xFF000000;
    header.caps1 = 0x1000;
    return header;
}

Header Coded(std::uint32_t fourCC) {
    Header header = Flat();
    header.pixelFlags = 0x4;
    header.fourCC = fourCC;
    return header;
}

Header Coded(const char* letters) {
    std::uint32_t fourCC = 0;
    std::memcpy(&fourCC, letters, 4);
    return Coded(fourCC);
}

Header Extended(std::uint32_t dxgi) {
    Header header = Coded("DX10");
    header.isExtended = true;
    header.dxgiFormat = dxgi;
    header.dimension = 3;
    header.arraySize = 1;
    return header;
}

Header Caps2(std::uint32_t caps2, std::uint32_t depth = 0) {
    Header header = Flat();
    header.caps2 = caps2;
    header.depth = depth;
    return header;
}

/// Bytes of the 8 x 4 pixels; 0 when the library does not decode them.
std::uint64_t StoredBytes(const Header& header) {
    const std::optional<StoredUnit> unit = LibraryUnitOf(header);
    return unit ? StoredSliceBytes(*unit, {8, 4, 1}) : 0;
}

TEST(DdsLibraryView, AFlatTextureIsTheSameInBothViews) {
    EXPECT_EQ(LibraryShapeOf(Flat()), (Shape{{8, 4, 1}, 1, kTexture2D, 1}));
    EXPECT_EQ(LibraryShapeOf(Flat()), ShapeOf(Flat()));
}

TEST(DdsLibraryView, OnlyTheCapsMakeAVolume) {
    EXPECT_EQ(LibraryShapeOf(Caps2(0x200000, 3)), (Shape{{8, 4, 3}, 1, kTextureVolume, 1}));
    Header byDepth = Flat();
    byDepth.flags |= 0x800000;
    byDepth.depth = 3;
    EXPECT_EQ(LibraryShapeOf(byDepth)->type, kTexture2D);
    EXPECT_EQ(ShapeOf(byDepth)->type, kTextureVolume);
    Header byDimension = Extended(28);
    byDimension.dimension = 4;
    byDimension.depth = 3;
    EXPECT_EQ(LibraryShapeOf(byDimension)->type, kTexture2D);
    EXPECT_EQ(ShapeOf(byDimension)->type, kTextureVolume);
}

TEST(DdsLibraryView, AVolumeWithoutADepthIsNone) {
    EXPECT_FALSE(LibraryShapeOf(Caps2(0x200000, 0)));
    EXPECT_TRUE(ShapeOf(Caps2(0x200000, 0)));
}

TEST(DdsLibraryView, OnlyTheCapsMakeACube) {
    Header header = Extended(28);
    header.height = 8;
    header.misc = 4;
    EXPECT_EQ(LibraryShapeOf(header)->type, kTexture2D);
    EXPECT_EQ(ShapeOf(header)->type, kTextureCube);
    header.caps2 = 0x200 | 0b000101 << 10;
    EXPECT_EQ(LibraryShapeOf(header), (Shape{{8, 8, 1}, 1, kTextureCube, 0b000101}));
    EXPECT_EQ(ShapeOf(header)->faces, 0b111111u);
}

TEST(DdsLibraryView, ACubeWithoutFacesIsNone) {
    Header header = Caps2(0x200);
    header.height = 8;
    EXPECT_FALSE(LibraryShapeOf(header));
    EXPECT_TRUE(ShapeOf(header));
}

TEST(DdsLibraryView, ACubeNeedNotBeSquare) {
    EXPECT_EQ(LibraryShapeOf(Caps2(0xFE00)), (Shape{{8, 4, 1}, 1, kTextureCube, 0x3F}));
    EXPECT_FALSE(ShapeOf(Caps2(0xFE00)));
}

TEST(DdsLibraryView, CubeAndVolumeAtOnceIsNone) {
    EXPECT_FALSE(LibraryShapeOf(Caps2(0x20FE00, 1)));
    EXPECT_TRUE(ShapeOf(Caps2(0x20FE00, 1)));
}

TEST(DdsLibraryView, SidesReach32768InEveryDirection) {
    for (std::uint32_t Header::* const side : {&Header::width, &Header::height, &Header::depth}) {
        for (const auto& [size, possible] : std::initializer_list<std::pair<std::uint32_t, bool>>{
                 {0, false}, {1, true}, {32768, true}, {32769, false}, {0x80000000, false}, {0xFFFFFFFF, false}}) {
            Header header = Caps2(0x200000, 1);
            header.*side = size;
            EXPECT_EQ(LibraryShapeOf(header).has_value(), possible) << size;
        }
    }
    Header header = Flat();
    header.width = 32769;
    EXPECT_TRUE(ShapeOf(header));
}

TEST(DdsLibraryView, OnlyTheFlagsMeanTheNumberOfLevels) {
    Header header = Flat();
    header.mipCount = 3;
    header.caps1 |= 0x400000;
    EXPECT_EQ(LibraryShapeOf(header)->levels, 1);
    EXPECT_EQ(ShapeOf(header)->levels, 3);
    header.flags |= 0x20000;
    EXPECT_EQ(LibraryShapeOf(header)->levels, 3);
}

TEST(DdsLibraryView, LevelsNeverPassTheFullChain) {
    Header header = Caps2(0x200000, 16);
    header.flags |= 0x20000;
    for (const auto& [claimed, levels] : std::initializer_list<std::pair<std::uint32_t, int>>{
             {0, 1}, {1, 1}, {4, 4}, {5, 5}, {6, 5}, {0x7FFFFFFF, 5}, {0xFFFFFFFF, 5}}) {
        header.mipCount = claimed;
        EXPECT_EQ(LibraryShapeOf(header)->levels, levels) << claimed;
    }
}

TEST(DdsLibraryView, EveryLayoutThatTheLibraryDecodesHasASize) {
    for (const char* code : {"DXT1", "ATI1", "BC4U"})
        EXPECT_EQ(StoredBytes(Coded(code)), 16U) << code;
    for (const char* code : {"DXT2", "DXT3", "DXT4", "DXT5", "RXGB", "ATI2", "BC5U"})
        EXPECT_EQ(StoredBytes(Coded(code)), 32U) << code;
    for (const std::uint32_t format : {71U, 72U, 80U})
        EXPECT_EQ(StoredBytes(Extended(format)), 16U) << format;
    for (const std::uint32_t format : {74U, 75U, 77U, 78U, 83U, 95U, 96U, 98U, 99U})
        EXPECT_EQ(StoredBytes(Extended(format)), 32U) << format;
    for (const std::uint32_t format : {24U, 28U, 29U, 87U, 88U, 91U, 93U})
        EXPECT_EQ(StoredBytes(Extended(format)), 128U) << format;
    EXPECT_EQ(StoredBytes(Extended(56)), 64U);
    for (const std::uint32_t count : {8U, 16U, 24U, 32U}) {
        Header header = Flat();
        header.bitCount = count;
        EXPECT_EQ(StoredBytes(header), 4U * count);
    }
}

TEST(DdsLibraryView, WhatTheLibraryDoesNotDecodeIsNone) {
    int decoded = 0;
    for (std::uint32_t format = 0; format < 256; ++format)
        decoded += LibraryUnitOf(Extended(format)) ? 1 : 0;
    EXPECT_EQ(decoded, 20) << "and no other number";
    for (const char* code : {"YUY2", "UYVY", "BC4S", "BC5S", "RGBG", "GRGB", "ABCD"})
        EXPECT_FALSE(LibraryUnitOf(Coded(code))) << code;
    for (const std::uint32_t code : {0U, 28U, 36U, 110U, 111U, 112U, 113U, 114U, 115U, 116U, 117U})
        EXPECT_FALSE(LibraryUnitOf(Coded(code))) << code;
    for (const std::uint32_t bits : {0U, 1U, 12U, 40U, 64U}) {
        Header header = Flat();
        header.bitCount = bits;
        EXPECT_FALSE(LibraryUnitOf(header)) << bits;
    }
}

TEST(DdsLibraryView, TheExtensionsPixelsCountWithoutTheFlagButItsBlocksDoNot) {
    Header header = Extended(28);
    header.pixelFlags = 0x41;
    EXPECT_EQ(StoredBytes(header), 128U);
    header.dxgiFormat = 56;
    EXPECT_EQ(StoredBytes(header), 64U) << "whatever the bit count says";
    header.dxgiFormat = 71;
    EXPECT_FALSE(LibraryUnitOf(header));
}

TEST(DdsLibraryView, AFlatHeaderSaysOneSliceAndNothingElse) {
    Header header = Caps2(0x20FE00, 4);
    header.flags |= 0x820008;
    header.mipCount = 4;
    header.pitch = 32;
    header.caps1 |= 0x400008;
    const Header flat = FlatHeader(header, {2, 1, 1});
    Header expected = Flat();
    expected.flags |= 0x8;
    expected.width = 2;
    expected.height = 1;
    expected.pitch = 32;
    EXPECT_EQ(flat, expected) << "the pixel format stays";
}

TEST(DdsLibraryView, AFlatHeaderOfADx10FileIsNoVolumeNorCubeNorArray) {
    Header header = Extended(28);
    header.dimension = 4;
    header.misc = 0x14;
    header.arraySize = 7;
    const Header flat = FlatHeader(header, {8, 4, 1});
    Header expected = Extended(28);
    expected.misc = 0x10;
    EXPECT_EQ(flat, expected);
}

}  // namespace
}  // namespace Kavra::Tests
