#include <kavra/objects/ObjModel.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <OpenImageIO/imagebufalgo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <random>
#include <vector>

namespace Kavra::Devices {
namespace {

using OIIO::ImageBuf;
using OIIO::ImageSpec;
using OIIO::ROI;
using OIIO::TypeDesc;
namespace Algorithm = OIIO::ImageBufAlgo;

using Bytes = std::vector<unsigned char>;

Bytes PixelsOf(const ImageBuf& image) {
    Bytes bytes(image.spec().image_pixels() * static_cast<unsigned>(image.nchannels()));
    EXPECT_TRUE(image.get_pixels(image.roi(), OIIO::make_span(bytes)));
    return bytes;
}

/// Noise: sampled and filtered copies of it differ.
ImageBuf Noise(const ImageSpec& spec) {
    std::mt19937 random(7);
    Bytes bytes(spec.image_pixels() * static_cast<unsigned>(spec.nchannels));
    for (auto& byte : bytes)
        byte = static_cast<unsigned char>(random());
    ImageBuf image(spec);
    EXPECT_TRUE(image.set_pixels(image.roi(), OIIO::make_span(bytes)));
    return image;
}
ImageSpec Grey(int width, int height) {
    return ImageSpec(width, height, 1, TypeDesc::UINT8);
}

Bytes Sampled(const ImageBuf& src, const ImageSpec& to) {
    ImageBuf dst(to);
    EXPECT_TRUE(Algorithm::resample(dst, src, false));
    return PixelsOf(dst);
}
Bytes Filtered(const ImageBuf& src, const ImageSpec& to) {
    ImageBuf dst(to);
    EXPECT_TRUE(Algorithm::resize(dst, src, {{"filtername", "mitchell"}}));
    return PixelsOf(dst);
}
Bytes SampledThenFiltered(const ImageBuf& src, int width, int height, const ImageSpec& to) {
    return Filtered(Algorithm::resample(src, false, ROI(0, width, 0, height, 0, 1, 0, 10000)), to);
}
Bytes Resized(const ImageBuf& src, const ImageSpec& to, bool highQuality = false) {
    ImageBuf dst(to);
    EXPECT_TRUE(OIIOImageHandler::AdaptiveResize(dst, src, highQuality));
    return PixelsOf(dst);
}

/// Expects plain sampling, and that it can be told from filtering.
void ExpectSampled(const ImageSpec& from, const ImageSpec& to) {
    const ImageBuf src = Noise(from);
    ASSERT_NE(Sampled(src, to), Filtered(src, to));
    EXPECT_TRUE(Resized(src, to) == Sampled(src, to));
}
void ExpectFiltered(const ImageSpec& from, const ImageSpec& to, bool highQuality = false) {
    const ImageBuf src = Noise(from);
    ASSERT_NE(Sampled(src, to), Filtered(src, to));
    EXPECT_TRUE(Resized(src, to, highQuality) == Filtered(src, to));
}

TEST(AdaptiveResize, ChangesUnderATenthAreSampled) {
    ExpectSampled(Grey(1000, 1000), Grey(950, 950));
    ExpectSampled(Grey(100, 100), Grey(108, 108));
}

TEST(AdaptiveResize, HalvingIsFiltered) {
    ExpectFiltered(Grey(1000, 1000), Grey(500, 500));
}  // footprints 27

TEST(AdaptiveResize, ATenthIsNotUnderATenth) {
    ExpectFiltered(Grey(1100, 1100), Grey(1000, 1000));
}

TEST(AdaptiveResize, BothDirectionsMustChangeLittleToBeSampled) {
    ExpectFiltered(Grey(100, 100), Grey(95, 85));
    ExpectFiltered(Grey(100, 100), Grey(85, 95));
}

TEST(AdaptiveResize, TheChangeIsMeasuredAgainstTheResult) {
    ExpectFiltered(Grey(1000, 1000), Grey(905, 905));   // 95/905 = 0.105; against the source it were 0.095
    ExpectSampled(Grey(1000, 1000), Grey(1110, 1110));  // 110/1110 = 0.099; against the source 0.11
}

TEST(AdaptiveResize, TooSmallASourceForTheFootprintIsSampledIntoASmallResult) {
    ExpectSampled(Grey(20, 20), Grey(4, 4));  // footprint 63
}

TEST(AdaptiveResize, FootprintsAreTakenInSinglePrecision) {
    ExpectSampled(Grey(60, 60), Grey(12, 12));   // 63; with a double 4.0 it were 60, and the image filtered
    ExpectFiltered(Grey(42, 42), Grey(12, 12));  // 42; all in double it were 45, and the image sampled
}

TEST(AdaptiveResize, EachDirectionHasItsOwnFootprint) {
    ExpectSampled(Grey(20, 400), Grey(4, 200));  // 63 > 20 beside 27 <= 400
    ExpectSampled(Grey(400, 20), Grey(200, 4));
}

TEST(AdaptiveResize, HighQualityAlwaysFilters) {
    ExpectFiltered(Grey(100, 100), Grey(99, 100), true);
    ExpectFiltered(Grey(20, 20), Grey(4, 4), true);
}

TEST(AdaptiveResize, LargeResultsOfTinySourcesAreSampledThenFiltered) {
    const ImageBuf src = Noise(Grey(2, 2));
    const ImageSpec to = Grey(200, 100);  // footprints 3 > 2; the region is 3 high and 200/100 times 3 wide
    const Bytes expected = SampledThenFiltered(src, 6, 3, to);
    ASSERT_NE(expected, Sampled(src, to));
    ASSERT_NE(expected, Filtered(src, to));
    EXPECT_TRUE(Resized(src, to) == expected);
}

TEST(AdaptiveResize, TheRegionIsAtLeastOnePixelWide) {
    const ImageBuf src = Noise(Grey(2, 2));
    const ImageSpec to = Grey(100, 2000);  // 100/2000 times 3 is no pixel
    EXPECT_TRUE(Resized(src, to) == SampledThenFiltered(src, 1, 3, to));
}

TEST(AdaptiveResize, TheRegionHasTheProportionsOfTheDataWindow) {
    ImageSpec from = Grey(2, 12), to = Grey(120, 480);
    from.full_height = 2;
    to.full_height = 120;
    const ImageBuf src = Noise(from);
    EXPECT_TRUE(Resized(src, to) == SampledThenFiltered(src, 1, 3, to));  // 120/480 times 3; by the full window 3 x 3
}

TEST(AdaptiveResize, ResultsUnderAHundredPixelsOneWayAreSampled) {
    ExpectSampled(Grey(2, 2), Grey(99, 200));
    ExpectSampled(Grey(2, 2), Grey(200, 99));
}

TEST(AdaptiveResize, AllChannelsAndTypesAreResized) {
    const ImageBuf src = Noise(ImageSpec(40, 40, 4, TypeDesc::UINT8));
    const ImageSpec to(20, 20, 4, TypeDesc::UINT8);
    EXPECT_TRUE(Resized(src, to) == Filtered(src, to));
    EXPECT_TRUE(Resized(src, ImageSpec(20, 20, 4, TypeDesc::FLOAT)) ==
                Filtered(src, ImageSpec(20, 20, 4, TypeDesc::FLOAT)));
}

TEST(AdaptiveResize, HoweverManyRowsAreFiltered) {
    // The library keeps a column's weights on the stack, and ends the process over so many. Only the last row is black,
    // and what lies beyond it: of the cubic over its four pixels, 1/2 less the integral from 0 to 1/2 of
    // (7 x^3 - 12 x^2 + 16/3) / 6, which is 0.1207.
    const ImageSpec from = Grey(1, 300'000);
    Bytes rows(300'000, 255);
    rows.back() = 0;
    const ImageBuf src(from, rows.data());
    EXPECT_EQ(Resized(src, Grey(1, 1), true), Bytes{224});  // 255 x 0.8793 = 224.2
}

TEST(AdaptiveResize, RowsTooWideForTheFilterAreSampled) {
    // The filter would reach over thirteen times the row, as floats.
    constexpr int kSide = 2'000'000;
    Bytes row(std::size_t{4} * kSide, 0);
    std::fill_n(row.begin() + std::ptrdiff_t{4} * (kSide / 2), 4, static_cast<unsigned char>(200));
    const ImageBuf src(ImageSpec(kSide, 1, 4, TypeDesc::UINT8), row.data());
    EXPECT_EQ(Resized(src, ImageSpec(1, 1, 4, TypeDesc::UINT8), true), Bytes(4, 200));
}

/// Expects false, and a destination that is as it was.
void ExpectRefused(ImageBuf& dst, const ImageBuf& src) {
    for (const bool highQuality : {false, true}) {
        EXPECT_FALSE(OIIOImageHandler::AdaptiveResize(dst, src, highQuality));
        if (dst.initialized()) {
            EXPECT_EQ(PixelsOf(dst), Bytes(PixelsOf(dst).size(), 0));
        }
    }
}

TEST(AdaptiveResize, OneSideMayShrinkWhileTheOtherGrows) {
    const ImageBuf tall = Noise(Grey(40, 400)), wide = Noise(Grey(400, 40));
    EXPECT_EQ(Resized(tall, Grey(400, 40), true), Filtered(tall, Grey(400, 40)));
    EXPECT_EQ(Resized(wide, Grey(40, 400), true), Filtered(wide, Grey(40, 400)));
}

/// An image of one bright row or column of floats.
ImageBuf Stripe(int width, int height, int at) {
    ImageBuf image(ImageSpec(width, height, 1, TypeDesc::FLOAT));
    for (ImageBuf::Iterator<float> pixel(image); !pixel.done(); ++pixel)
        pixel[0] = (width < height ? pixel.x() : pixel.y()) == at ? 1.0F : 0.0F;
    return image;
}

/// A pixel of the middle one of three stripes that are resampled to `length` pixels: the filter's weights of the three,
/// and of the outer ones again for what lies beyond them, in double precision.
double MiddleStripe(int at, int length) {
    const auto mitchell = [](double x) {
        x = std::abs(x);
        if (x >= 2) return 0.0;
        if (x >= 1) return (-7.0 / 3 * x * x * x + 12 * x * x - 20 * x + 32.0 / 3) / 6;
        return (7 * x * x * x - 12 * x * x + 16.0 / 3) / 6;
    };
    const double centre = (at + 0.5) / length * 3;
    double total = 0, middle = 0;
    for (int stripe = -3; stripe < 6; ++stripe) {
        const double weight = mitchell(stripe + 0.5 - centre);
        total += weight;
        if (stripe == 1) middle += weight;
    }
    return middle / total;
}

TEST(AdaptiveResize, WhatTheLibraryCannotFilterInTimeIsFiltered) {
    // The library would look at hundreds of thousands of pixels for each one of the result. For the second it would put
    // four million weights on its stack, and end the process.
    for (const auto& [rows, width, height] : {std::array{60000, 60000, 12}, std::array{200, 20000, 1}}) {
        ImageBuf across(ImageSpec(width, height, 1, TypeDesc::FLOAT));
        ASSERT_TRUE(OIIOImageHandler::AdaptiveResize(across, Stripe(3, rows, 1), true));
        for (int x = 0; x < width; ++x)
            ASSERT_NEAR(across.getchannel(x, height / 2, 0, 0), MiddleStripe(x, width), 1e-5) << x;
    }
}

TEST(AdaptiveResize, GrowingInHeightAloneIsCutAsTheLibraryCutsIt) {
    // It looks as far down as the filter's width across says: at three rows, however wide the filter is down.
    const ImageBuf src = Noise(Grey(40, 5));
    EXPECT_EQ(Resized(src, Grey(20, 500), true), Filtered(src, Grey(20, 500)));
}

TEST(AdaptiveResize, GrowingInWidthAsFarAsTheLibraryCanIsFiltered) {
    const ImageBuf src = Noise(Grey(5, 40));
    EXPECT_EQ(Resized(src, Grey(500, 20), true), Filtered(src, Grey(500, 20)));
}

TEST(AdaptiveResize, ImagesWithoutPixelsAreRefused) {
    ImageBuf nothing, small(Grey(4, 4));
    ExpectRefused(small, nothing);
    ExpectRefused(nothing, Noise(Grey(4, 4)));
}

TEST(AdaptiveResize, VolumesAreRefused) {
    ImageSpec volume = Grey(8, 8);
    volume.depth = volume.full_depth = 2;
    ImageBuf small(Grey(4, 4)), smallVolume(volume);
    ExpectRefused(small, Noise(volume));
    ExpectRefused(smallVolume, Noise(Grey(16, 16)));
}

TEST(AdaptiveResize, SizesOfZeroOrLessAreRefused) {
    for (int ImageSpec::* side : {&ImageSpec::full_width, &ImageSpec::full_height}) {
        for (const int size : {0, -5}) {
            ImageSpec broken = Grey(4, 4);
            broken.*side = size;
            ImageBuf dst(broken), small(Grey(4, 4));
            ExpectRefused(dst, Noise(Grey(8, 8)));
            ExpectRefused(small, Noise(broken));
        }
    }
}

TEST(AdaptiveResize, DifferentChannelCountsAreRefused) {
    ImageBuf grey(Grey(4, 4)), colour(ImageSpec(4, 4, 4, TypeDesc::UINT8));
    ExpectRefused(grey, Noise(ImageSpec(8, 8, 4, TypeDesc::UINT8)));
    ExpectRefused(colour, Noise(Grey(8, 8)));
}

TEST(AdaptiveResize, TheRegionNeedNotFitIntoMemory) {
    const ImageBuf src = Noise(Grey(2, 2));
    const ImageSpec to = Grey(200, 100);
    const Bytes expected = SampledThenFiltered(src, 6, 3, to);
    Objects::ObjModel::SetBlockCeiling(17);  // the region has 18 bytes
    EXPECT_TRUE(Resized(src, to) == expected);
    Objects::ObjModel::SetBlockCeiling(0);
}

TEST(AdaptiveResize, ImagesOfManyChannelsAndOtherTypesAreFiltered) {
    for (const TypeDesc::BASETYPE type : {TypeDesc::INT16, TypeDesc::UINT32, TypeDesc::DOUBLE, TypeDesc::UINT8}) {
        const ImageBuf src = Noise(ImageSpec(40, 40, 7, type));
        const ImageSpec to(20, 20, 7, type);
        EXPECT_EQ(Resized(src, to), Filtered(src, to)) << static_cast<int>(type);
    }
}

}  // namespace
}  // namespace Kavra::Devices
