#include "PixelBytes.h"

#include <kavra/devices/ImageHandlerHelper.h>

#include <Imath/half.h>
#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Colour = std::array<float, 4>;

ImageDescription Picture(int width, int height, EFormat format, int pitch) {
    ImageDescription desc;
    desc.width = width;
    desc.height = height;
    desc.format = format;
    desc.rowPitch = pitch;
    return desc;
}

Colour Average(const ImageDescription& desc, const void* data, bool flag = false) {
    const vec4<float> mean = Utilities::ImageHandlerHelper().GetAverageColor2D(desc, data, flag);
    return {mean.x, mean.y, mean.z, mean.w};
}

TEST(AverageColour, IsTheMeanOfEachChannelOverItsMaximum) {
    const ByteVector pixels = {255, 0, 51, 0, 0, 102, 51, 255};
    EXPECT_EQ(Average(Picture(2, 1, kR8G8B8A8, 8), pixels.data()), (Colour{0.5F, 0.2F, 0.2F, 0.5F}));
    EXPECT_EQ(Average(Picture(2, 1, kR8G8B8A8Alt, 8), pixels.data()), (Colour{0.5F, 0.2F, 0.2F, 0.5F}));
    EXPECT_EQ(Average(Picture(2, 1, kB8G8R8A8, 8), pixels.data()), (Colour{0.2F, 0.2F, 0.5F, 0.5F}));
}

TEST(AverageColour, AFourthByteThatIsNoAlphaCountsAsOpaque) {
    const ByteVector pixels = {255, 0, 51, 0};
    EXPECT_EQ(Average(Picture(1, 1, kR8G8B8X8, 4), pixels.data()), (Colour{1.0F, 0.0F, 0.2F, 1.0F}));
    EXPECT_EQ(Average(Picture(1, 1, kB8G8R8X8, 4), pixels.data()), (Colour{0.2F, 0.0F, 1.0F, 1.0F}));
}

TEST(AverageColour, MissingColoursAreZeroAndAMissingAlphaIsOne) {
    const ByteVector bytes = {51};
    for (const EFormat format : {kA8, kR8, kL8}) {
        EXPECT_EQ(Average(Picture(1, 1, format, 1), bytes.data()), (Colour{0.2F, 0.0F, 0.0F, 1.0F}));
    }
    const std::vector<std::uint16_t> words = {13107, 65535};
    EXPECT_EQ(Average(Picture(1, 1, kL16, 2), words.data()), (Colour{0.2F, 0.0F, 0.0F, 1.0F}));
    EXPECT_EQ(Average(Picture(1, 1, kR16G16, 4), words.data()), (Colour{0.2F, 1.0F, 0.0F, 1.0F}));
    const std::vector<float> floats = {-2.0F, 3.0F, 7.0F};
    EXPECT_EQ(Average(Picture(1, 1, kR32G32B32F, 12), floats.data()), (Colour{-2.0F, 3.0F, 7.0F, 1.0F}));
}

TEST(AverageColour, FloatsAndHalvesKeepTheirRange) {
    const std::vector<half> halves = {half(1.0F), half(-4.0F), half(0.0F), half(0.5F),
                                      half(3.0F), half(8.0F),  half(6.0F), half(1.0F)};
    EXPECT_EQ(Average(Picture(1, 2, kR16G16B16A16F, 8), halves.data()), (Colour{2.0F, 2.0F, 3.0F, 0.75F}));
    const std::vector<float> floats = {1e30F, 1.0F, 2.0F, 0.5F, 3e30F, 1.0F, 4.0F, 1.0F};
    EXPECT_EQ(Average(Picture(2, 1, kR32G32B32A32F, 32), floats.data()), (Colour{2e30F, 1.0F, 3.0F, 0.75F}));
}

TEST(AverageColour, BytesBetweenTheRowsAreNotLookedAt) {
    const ByteVector pixels = {10, 20, 255, 255, 30, 40};
    const Colour mean = Average(Picture(2, 2, kL8, 4), pixels.data());
    EXPECT_FLOAT_EQ(mean[0], 25.0F / 255.0F);
}

TEST(AverageColour, APitchOfZeroMeansTightRows) {
    const ByteVector pixels = {0, 255, 255, 0};
    EXPECT_EQ(Average(Picture(2, 2, kL8, 0), pixels.data()), (Colour{0.5F, 0.0F, 0.0F, 1.0F}));
}

TEST(AverageColour, RowsThatOverlapAreNoPicture) {
    const ByteVector pixels(16, 255);
    EXPECT_EQ(Average(Picture(4, 4, kL8, 3), pixels.data()), Colour{});
    EXPECT_EQ(Average(Picture(4, 4, kL8, -4), pixels.data()), Colour{});
}

TEST(AverageColour, NothingToAverageGivesZeros) {
    const ByteVector pixels(64, 255);
    EXPECT_EQ(Average(Picture(0, 4, kL8, 4), pixels.data()), Colour{});
    EXPECT_EQ(Average(Picture(4, 0, kL8, 4), pixels.data()), Colour{});
    EXPECT_EQ(Average(Picture(-1, 4, kL8, 4), pixels.data()), Colour{});
    EXPECT_EQ(Average(Picture(4, 4, kL8, 4), nullptr), Colour{});
    for (const EFormat format :
         {kUnknown, kBC1, kBC7, kReserved50, static_cast<EFormat>(-5), static_cast<EFormat>(999)}) {
        EXPECT_EQ(Average(Picture(4, 4, format, 16), pixels.data()), Colour{});
    }
}

TEST(AverageColour, TheFlagChangesNothing) {
    const ByteVector pixels = {255, 0, 51, 102};
    EXPECT_EQ(Average(Picture(1, 1, kR8G8B8A8, 4), pixels.data(), true),
              Average(Picture(1, 1, kR8G8B8A8, 4), pixels.data(), false));
}

TEST(AverageColour, ALargePictureAddsUpExactly) {
    // Every value of a byte equally often: the mean is 127.5 of 255.
    ByteVector pixels(512 * 1024);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<unsigned char>(i);
    EXPECT_EQ(Average(Picture(512, 1024, kL8, 512), pixels.data()), (Colour{0.5F, 0.0F, 0.0F, 1.0F}));
}

TEST(AverageColour, PixelsNeedNoAlignment) {
    const std::vector<float> floats = {1.0F, 2.0F, 3.0F, 4.0F};
    ByteVector bytes = BytesOf(floats);
    bytes.insert(bytes.begin(), 0);
    EXPECT_EQ(Average(Picture(1, 1, kR32G32B32A32F, 16), bytes.data() + 1), (Colour{1.0F, 2.0F, 3.0F, 4.0F}));
}

}  // namespace
}  // namespace Kavra::Tests
