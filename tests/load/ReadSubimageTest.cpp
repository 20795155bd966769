#include "load/OpenInput.h"
#include "load/ReadSubimage.h"
#include "load/TextureFiles.h"

#include <gtest/gtest.h>

#include <limits>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Bytes = std::vector<unsigned char>;
using OIIO::ImageSpec;

class Subimage : public testing::Test {
protected:
    /// Counts up in every sample, in steps of 7 below 251.
    Bytes Ramp(int width, int height, int channels) {
        Bytes pixels(static_cast<std::size_t>(width * height * channels));
        for (std::size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = static_cast<unsigned char>(i * 7 % 251);
        return pixels;
    }

    template <class T>
    std::vector<T> Read(const std::filesystem::path& path, int channels, std::size_t stride, std::size_t values) {
        const auto input = OpenInput(Wide(path));
        std::vector<T> out(values, T(9));
        const ImageSpec spec = input->spec();
        EXPECT_TRUE(IsReadable(spec));
        EXPECT_TRUE(ReadSubimage(*input, spec, 0, 0, channels, ElementType<T>(),
                                 reinterpret_cast<unsigned char*>(out.data()), stride * sizeof(T)));
        return out;
    }

    TemporaryFolder folder;
};

TEST_F(Subimage, IsReadAsStored) {
    const Bytes pixels = Ramp(5, 300, 3);
    for (const char* name : {"a.tif", "a.png", "a.bmp"}) {
        const auto path = WritePicture(folder / name, ImageSpec(5, 300, 3, OIIO::TypeUInt8), pixels);
        EXPECT_EQ(Read<unsigned char>(path, 3, 3, pixels.size()), pixels) << name;
    }
}

TEST_F(Subimage, SomeChannelsLeaveTheRestOfThePixelsAlone) {
    const Bytes pixels = Ramp(2, 2, 3);
    for (const char* name : {"a.tif", "a.png"}) {
        const auto path = WritePicture(folder / name, ImageSpec(2, 2, 3, OIIO::TypeUInt8), pixels);
        EXPECT_EQ(Read<unsigned char>(path, 2, 4, 16), (Bytes{0, 7, 9, 9, 21, 28, 9, 9, 42, 49, 9, 9, 63, 70, 9, 9}))
            << name;
        EXPECT_EQ(Read<unsigned char>(path, 4, 4, 16),
                  (Bytes{0, 7, 14, 9, 21, 28, 35, 9, 42, 49, 56, 9, 63, 70, 77, 9}))
            << "channels that the file has not";
    }
}

TEST_F(Subimage, IsConvertedOnTheWay) {
    const auto path = WritePicture(folder / "a.tif", ImageSpec(2, 1, 2, OIIO::TypeUInt8), Bytes{0, 255, 1, 2});
    EXPECT_EQ(Read<std::uint16_t>(path, 2, 2, 4), (std::vector<std::uint16_t>{0, 65535, 257, 514}));
}

TEST_F(Subimage, ChannelsOfSeveralTypesComeAsOne) {
    ImageSpec spec(2, 1, 4, OIIO::TypeFloat);
    spec.channelnames = {"R", "G", "B", "Z"};
    spec.channelformats = {OIIO::TypeHalf, OIIO::TypeHalf, OIIO::TypeHalf, OIIO::TypeFloat};
    const std::vector<float> pixels = {0.5F, 1, 2, 1000000, 4, 5, 6, 0.125F};
    const auto path = WritePicture(folder / "a.exr", spec, pixels);
    EXPECT_EQ(Read<float>(path, 4, 4, 8), pixels);
}

TEST_F(Subimage, PlanesAndTilesAreReadToo) {
    const Bytes pixels = Ramp(40, 40, 3);
    ImageSpec planar(40, 40, 3, OIIO::TypeUInt8);
    planar.attribute("planarconfig", "separate");
    EXPECT_EQ(Read<unsigned char>(WritePicture(folder / "p.tif", planar, pixels), 3, 3, pixels.size()), pixels);
    ImageSpec tiled(40, 40, 3, OIIO::TypeUInt8);
    tiled.tile_width = tiled.tile_height = 16;
    EXPECT_EQ(Read<unsigned char>(WritePicture(folder / "t.tif", tiled, pixels), 3, 3, pixels.size()), pixels);
}

// --- What is not to be read ------------------------------------------------------------------------------------------

TEST(IsReadable, OrdinaryPicturesAre) {
    EXPECT_TRUE(IsReadable(ImageSpec(1, 1, 1, OIIO::TypeUInt8)));
    ImageSpec cropped(40, 40, 4, OIIO::TypeFloat);
    cropped.x = -1000, cropped.y = 30000;
    EXPECT_TRUE(IsReadable(cropped));
    ImageSpec smallerThanItsTile(3, 3, 4, OIIO::TypeFloat);
    smallerThanItsTile.tile_width = smallerThanItsTile.tile_height = 1024;
    EXPECT_TRUE(IsReadable(smallerThanItsTile));
}

TEST(IsReadable, PositionsToWhichNoSizeCanBeAddedAreNot) {
    for (const int position :
         {std::numeric_limits<int>::max(), std::numeric_limits<int>::max() - 100, std::numeric_limits<int>::min()}) {
        ImageSpec spec(4, 4, 1, OIIO::TypeUInt8);
        spec.x = position;
        EXPECT_FALSE(IsReadable(spec)) << position;
        spec.x = 0, spec.y = position;
        EXPECT_FALSE(IsReadable(spec)) << position;
    }
}

TEST(IsReadable, RowsBeyond32BitsAreNot) {
    ImageSpec spec(1 << 20, 1, 1024, OIIO::TypeFloat);  // 4 GiB: none at all in 32 bits
    EXPECT_FALSE(IsReadable(spec));
}

TEST(IsReadable, GiantTilesOfASmallPictureAreNot) {
    ImageSpec spec(16, 16, 3, OIIO::TypeUInt8);
    spec.tile_width = spec.tile_height = 65536;
    EXPECT_FALSE(IsReadable(spec));
    spec.tile_width = -16;
    EXPECT_FALSE(IsReadable(spec));
    spec.tile_width = 16, spec.tile_height = 0;
    EXPECT_FALSE(IsReadable(spec));
}

}  // namespace
}  // namespace Kavra::Tests
