#include "output/PixelSpec.h"

#include <kavra/devices/AFormatConvertor.h>

#include <gtest/gtest.h>

using namespace Kavra::Devices;

namespace {

TEST(PixelSpec, HasTheBytesOfThePixelsAndANameForEachChannel) {
    for (int value = -1; value < 80; ++value) {
        const auto format = static_cast<EFormat>(value);
        if (!HasPixels(format)) continue;
        const OIIO::ImageSpec spec = PixelSpec(format, 7, 5);
        EXPECT_EQ(spec.pixel_bytes(),
                  static_cast<std::size_t>(Kavra::Utilities::AFormatConvertor::BytesPerPixel(format)))
            << value;
        EXPECT_EQ(spec.channelnames.size(), static_cast<std::size_t>(spec.nchannels)) << value;
        EXPECT_EQ(spec.width, 7);
        EXPECT_EQ(spec.height, 5);
        EXPECT_EQ(spec.full_width, 7);
    }
}

TEST(PixelSpec, KnowsWhichFormatsHavePixels) {
    for (const EFormat format : {kA8, kR8, kL8, kR16F, kR16, kL16, kR32F, kR16G16F, kR16G16, kR8G8B8A8, kB8G8R8A8,
                                 kB8G8R8X8, kR8G8B8X8, kR32G32F, kR16G16B16A16F, kR16G16B16A16, kR32G32B32A32F})
        EXPECT_TRUE(HasPixels(format)) << format;
    for (const int format : {0, 48, 63, 6, 17, 50, 51, 73, 78, -1, 12345})
        EXPECT_FALSE(HasPixels(static_cast<EFormat>(format))) << format;
}

}  // namespace
