// The writer of Spot rasters, and the sample rasters, against the reader.

#include "legacy/BandFile.h"
#include "readers/Decode.h"
#include "readers/spot/SpotReader.h"
#include "support/Program.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using Kavra::Legacy::BandRaster;

using Bytes = std::vector<unsigned char>;

Decoded WriteAndRead(const BandRaster& raster, int frame = 0) {
    const TemporaryFolder folder;
    Kavra::Legacy::WriteBandFiles(folder / "q", raster);
    return DecodeFile<SpotReader>(folder / "q.bil", frame);
}

TEST(SpotFile, ColoursComeBackFromEveryLayout) {
    for (const char* layout : {"BIL", "BIP", "BSQ"}) {
        const BandRaster raster{
            .columns = 2, .rows = 2, .bands = 3, .layout = layout, .samples = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}};
        EXPECT_EQ(WriteAndRead(raster).block, (Bytes{1, 2, 3, 255, 4, 5, 6, 255, 7, 8, 9, 255, 10, 11, 12, 255}))
            << layout;
    }
}

TEST(SpotFile, LargeRastersComeBackToo) {
    for (const char* layout : {"BIL", "BIP", "BSQ"}) {
        BandRaster raster{.columns = 1237, .rows = 701, .bands = 3, .layout = layout};
        Bytes pixels;
        unsigned random = 1;
        for (int i = 0; i < 1237 * 701; ++i) {
            for (int band = 0; band < 3; ++band) {
                random = random * 1664525 + 1013904223;
                raster.samples.push_back(static_cast<unsigned char>(random >> 24));
                pixels.push_back(raster.samples.back());
            }
            pixels.push_back(255);
        }
        EXPECT_TRUE(WriteAndRead(raster).block == pixels) << layout;
    }
}

TEST(SpotFile, DeepSamplesComeBackFromEveryLayout) {
    for (const char* layout : {"BIL", "BIP", "BSQ"}) {
        const BandRaster raster{.columns = 1,
                                .rows = 2,
                                .bands = 3,
                                .bits = 16,
                                .pixelType = 'S',
                                .layout = layout,
                                .samples = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}};
        EXPECT_EQ(WriteAndRead(raster, 1).block, (Bytes{3, 4, 9, 10})) << layout;
    }
    const BandRaster floats{.columns = 1, .rows = 1, .bits = 32, .pixelType = 'F', .samples = {1, 2, 3, 4}};
    const Decoded decoded = WriteAndRead(floats);
    EXPECT_EQ(decoded.format, kR32F);
    EXPECT_EQ(decoded.block, (Bytes{1, 2, 3, 4}));
}

TEST(SpotFile, ColoursOfAPaletteComeBackButForTheFirst) {
    const BandRaster raster{
        .columns = 2, .rows = 1, .samples = {0, 1}, .palette = {std::array{9, 8, 7}, std::array{6, 5, 4}}};
    EXPECT_EQ(WriteAndRead(raster).block, (Bytes{0, 0, 0, 255, 6, 5, 4, 255}));
}

TEST(SpotSamples, AreWhatTheyWereMadeOf) {
    const Decoded photo = DecodeFile<SpotReader>(Sample("bands/photo.bil"));
    EXPECT_EQ(photo.format, kR8G8B8A8);
    EXPECT_EQ(photo.width, 120);
    EXPECT_TRUE(photo.read);
    const Decoded height = DecodeFile<SpotReader>(Sample("bands/height.bil"));
    EXPECT_EQ(height.format, kL16);
    EXPECT_TRUE(height.read);
    EXPECT_EQ(height.block.front(), 0) << "the sea is at 0";
    const Decoded map = DecodeFile<SpotReader>(Sample("bands/map.bil"));
    EXPECT_EQ(map.format, kR8G8B8A8);
    ASSERT_TRUE(map.read);
    EXPECT_EQ(PixelAt(map, 0, 0), (Bytes{24, 60, 120, 255})) << "and deep in the corners";
}

}  // namespace
