#include "load/geometry/NewImage.h"
#include "load/geometry/Reorientation.h"
#include "load/geometry/Reshape.h"

#include <OpenImageIO/imagebuf.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace Kavra::Devices {
namespace {

using Bytes = std::vector<unsigned char>;
using testing::ElementsAre;

/// Bytes that count up from 0.
Bytes Counting(std::size_t count) {
    Bytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
    return bytes;
}

/// A view of packed grey pixels.
Raster Grey(const Bytes& bytes, int width, int height) {
    return PackedRaster(kL8, width, height, bytes.data(), bytes.size());
}

Bytes BytesOf(const Raster& raster) {
    EXPECT_EQ(raster.pitch, raster.RowBytes());
    return Bytes(raster.first, raster.first + raster.PackedBytes());
}

TEST(Raster, ARectangleInsideIsAViewOfThePicture) {
    const Bytes bytes = Counting(12);
    const Raster cut = CutOut(Grey(bytes, 4, 3), {1, 1}, {2, 2});
    EXPECT_EQ(cut.first, bytes.data() + 5);
    EXPECT_EQ(cut.pitch, 4U);
    EXPECT_EQ(cut.bytes, 7U);
    EXPECT_FALSE(cut.block);
    EXPECT_TRUE(cut.HoldsItsRows());
    const Common::PixelBlock packed = Pack(CutOut(Grey(bytes, 4, 3), {1, 1}, {2, 2}));
    EXPECT_EQ(Bytes(packed.get(), packed.get() + 4), (Bytes{5, 6, 9, 10}));
}

TEST(Raster, WhatOfARectangleLiesOutsideIsZero) {
    const Bytes bytes = {1, 2, 3, 4};
    EXPECT_THAT(BytesOf(CutOut(Grey(bytes, 2, 2), {-1, 1}, {3, 2})), ElementsAre(0, 3, 4, 0, 0, 0));
    EXPECT_THAT(BytesOf(CutOut(Grey(bytes, 2, 2), {5, 0}, {1, 1})), ElementsAre(0));
}

TEST(Raster, PackedPixelsInABlockOfTheirOwnAreHandedOn) {
    Common::PixelBlock block = Common::NewZeroedBlock(4);
    const unsigned char* const before = block.get();
    EXPECT_EQ(Pack(PackedRaster(kL8, 2, 2, std::move(block), 4)).get(), before);
}

TEST(Raster, NoImageReachesBeyondTheBytesUnderIt) {
    const Bytes bytes(12);
    for (std::size_t count = 0; count <= bytes.size(); ++count) {
        Raster raster = PackedRaster(kL8, 2, 3, bytes.data(), count);
        raster.pitch = 4;
        EXPECT_EQ(WrapImage(raster).initialized(), count >= 10) << count;
    }
    Raster cube = PackedRaster(kL8, 1, 2, bytes.data(), 11);
    cube.faces = 6;
    EXPECT_FALSE(WrapImage(cube).initialized());
    EXPECT_FALSE(Reshape(std::move(cube), {.width = 1, .height = 1}));
    EXPECT_FALSE(WrapImage(PackedRaster(kL8, 2, 3, nullptr, 6)).initialized());
    EXPECT_FALSE(WrapImage(PackedRaster(kBC1, 2, 3, bytes.data(), 6)).initialized());
}

TEST(Reshape, ARequestSaysHowPicturesOfALoadChange) {
    const Reshaping plain = ReshapingFor({.orientation = kLeftTop}, 30, 20, kBottomRight);
    EXPECT_EQ(plain.width, 30);
    EXPECT_EQ(plain.height, 20);
    EXPECT_EQ(plain.scaling, Scaling::kAdaptive);
    EXPECT_EQ(plain.from, kBottomRight);
    EXPECT_EQ(plain.to, kLeftTop);
    EXPECT_FALSE(plain.options.alphaWeighted || plain.options.bounded || plain.options.linearLight);
    EXPECT_EQ(ReshapingFor({.highQuality = true}, 1, 1, kTopLeft).scaling, Scaling::kMitchell);
}

TEST(Reshape, PreferencesChooseTheFilterAndWhatItLooksAt) {
    LoadPreferences preferences;
    preferences.alphaWeighted = true;
    preferences.filter = kResampleBox;
    const Reshaping unchosen = ReshapingFor({.preferences = preferences}, 1, 1, kTopLeft);
    EXPECT_EQ(unchosen.scaling, Scaling::kAdaptive) << "a filter that is not chosen does not count";
    EXPECT_TRUE(unchosen.options.alphaWeighted);
    EXPECT_FALSE(unchosen.options.bounded || unchosen.options.linearLight);

    preferences = {};
    preferences.bounded = preferences.choosesFilter = true;
    preferences.filter = kResampleBox;
    const Reshaping chosen = ReshapingFor({.highQuality = true, .preferences = preferences}, 1, 1, kTopLeft);
    EXPECT_EQ(chosen.scaling, Scaling::kChosen);
    EXPECT_EQ(chosen.options.filter, kResampleBox);
    EXPECT_TRUE(chosen.options.bounded);
    EXPECT_FALSE(chosen.options.alphaWeighted || chosen.options.linearLight);

    preferences = {};
    preferences.linearLight = true;
    EXPECT_TRUE(ReshapingFor({.preferences = preferences}, 1, 1, kTopLeft).options.linearLight);
}

TEST(Reshape, WithoutWorkTheBlockIsHandedOn) {
    Common::PixelBlock block = Common::NewZeroedBlock(6);
    const unsigned char* const before = block.get();
    Raster raster = Reshape(PackedRaster(kL8, 3, 2, std::move(block), 6), {.width = 3, .height = 2});
    EXPECT_EQ(raster.block.get(), before);
    raster = Reshape(std::move(raster), {.width = 3, .height = 2, .from = kRightTop, .to = kRightTop});
    EXPECT_EQ(raster.block.get(), before);
    raster = Reshape(std::move(raster), {.width = 3, .height = 2, .to = static_cast<EDataOrientation>(9)});
    EXPECT_EQ(raster.block.get(), before) << "no orientation counts as upright";
}

TEST(Reshape, ScalesAndThenTurns) {
    Bytes stripes;
    for (int row = 0; row < 6; ++row)
        stripes.insert(stripes.end(), {1, 1, 2, 2});
    const Raster raster = Reshape(Grey(stripes, 4, 6), {.width = 2, .height = 3, .to = kRightTop});
    EXPECT_EQ(raster.width, 3);
    EXPECT_EQ(raster.height, 2);
    EXPECT_THAT(BytesOf(raster), ElementsAre(2, 2, 2, 1, 1, 1));
}

TEST(Reshape, ARectangleIsTurnedFromWhereItLies) {
    const Bytes bytes = Counting(12);
    const Raster raster =
        Reshape(CutOut(Grey(bytes, 4, 3), {1, 1}, {3, 2}), {.width = 3, .height = 2, .to = kBottomRight});
    EXPECT_THAT(BytesOf(raster), ElementsAre(11, 10, 9, 7, 6, 5));
}

TEST(Reshape, ACubeIsMirroredAsOnePictureAndItsFacesGetQuarterTurns) {
    Bytes bytes = Counting(24);
    const auto cube = [&] {
        Raster raster = Grey(bytes, 2, 2);
        raster.faces = 6;
        return raster;
    };
    const Raster flipped = Reshape(cube(), {.width = 2, .height = 2, .to = kBottomLeft});
    EXPECT_EQ(flipped.faces, 6);
    EXPECT_EQ(Bytes(flipped.first, flipped.first + 4), (Bytes{22, 23, 20, 21})) << "the last face comes first";
    const Raster rotated = Reshape(cube(), {.width = 2, .height = 2, .to = kRightTop});
    EXPECT_EQ(Bytes(rotated.first, rotated.first + 8), (Bytes{1, 3, 0, 2, 5, 7, 4, 6}));
}

TEST(Reshape, SlicesAreTurnedAsTheLibraryTurnsThem) {
    const Bytes bytes = Counting(3 * 2 * 4);
    OIIO::ImageSpec spec(3, 2, 1, OIIO::TypeUInt8);
    spec.depth = spec.full_depth = 4;
    const OIIO::ImageBuf volume(spec, const_cast<unsigned char*>(bytes.data()));
    for (int to = kTopLeft; to <= kRightBottom; ++to) {
        const auto orientation = static_cast<EDataOrientation>(to);
        const OIIO::ImageBuf expected = ReorientImage(volume, 1, ToOIIOOrientation(orientation));
        ASSERT_TRUE(expected.initialized()) << to;
        Bytes pixels(bytes.size());
        ASSERT_TRUE(expected.get_pixels(expected.roi(), OIIO::TypeUInt8, pixels.data())) << to;

        Raster raster = Grey(bytes, 3, 2);
        raster.slices = 4;
        raster = Reshape(std::move(raster), {.width = 3, .height = 2, .to = orientation});
        EXPECT_EQ(BytesOf(raster), pixels) << to;
        EXPECT_EQ(raster.width, expected.spec().width) << to;
        EXPECT_EQ(raster.slices, expected.spec().depth) << to;
    }
}

TEST(Reshape, SlicesCannotBeScaledAndAreZero) {
    const Bytes bytes(8, 77);
    Raster raster = Grey(bytes, 2, 2);
    raster.slices = 2;
    EXPECT_THAT(BytesOf(Scaled(raster, 1, 2, Scaling::kAdaptive)), ElementsAre(0, 0, 0, 0));
}

TEST(Reshape, AFilterChangesAPictureOfItsOwnSizeToo) {
    Bytes stripes(20 * 20);
    for (std::size_t i = 0; i < stripes.size(); ++i)
        stripes[i] = i % 2 == 0 ? 0 : 255;
    EXPECT_EQ(BytesOf(Scaled(Grey(stripes, 20, 20), 20, 20, Scaling::kNearest)), stripes);
    EXPECT_NE(BytesOf(Scaled(Grey(stripes, 20, 20), 20, 20, Scaling::kMitchell)), stripes);
}

}  // namespace
}  // namespace Kavra::Devices
