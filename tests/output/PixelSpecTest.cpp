#include "output/PixelSpec.h"

#include <kavra/devices/AFormatConvertor.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

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

TEST(PixelSpec, APictureIsDescribedAsByTheLibraryItself) {
    for (const int channels : {1, 2, 3, 4, 5, 12}) {
        const OIIO::ImageSpec own = PictureSpec(7, 5, channels, OIIO::TypeUInt16);
        const OIIO::ImageSpec theirs(7, 5, channels, OIIO::TypeUInt16);
        EXPECT_EQ(own.serialize(OIIO::ImageSpec::SerialXML, OIIO::ImageSpec::SerialDetailed),
                  theirs.serialize(OIIO::ImageSpec::SerialXML, OIIO::ImageSpec::SerialDetailed))
            << channels;
        EXPECT_EQ(own.channelnames, theirs.channelnames) << channels;
        EXPECT_EQ(own.alpha_channel, theirs.alpha_channel) << channels;
        EXPECT_EQ(own.roi_full(), theirs.roi_full());
        EXPECT_EQ(own.roi(), theirs.roi());
    }
}

TEST(PixelSpec, ASingleChannelOfAHostsFormatIsNamedRed) {
    EXPECT_EQ(PixelSpec(kL8, 1, 1).channelnames, std::vector<std::string>{"R"});
}

TEST(PixelSpec, KnowsWhichFormatsHavePixels) {
    for (const EFormat format : {kA8, kR8, kL8, kR16F, kR16, kL16, kR32F, kR16G16F, kR16G16, kR8G8B8A8, kB8G8R8A8,
                                 kB8G8R8X8, kR8G8B8X8, kR32G32F, kR16G16B16A16F, kR16G16B16A16, kR32G32B32A32F})
        EXPECT_TRUE(HasPixels(format)) << format;
    for (const int format : {0, 48, 63, 6, 17, 50, 51, 73, 78, -1, 12345})
        EXPECT_FALSE(HasPixels(static_cast<EFormat>(format))) << format;
}

}  // namespace
