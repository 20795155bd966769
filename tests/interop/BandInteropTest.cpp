// Band rasters of GDAL, against what GDAL reads in them.

#include "interop/PeerFiles.h"
#include "readers/FileTypeDetection.h"
#include "readers/ImageFileType.h"
#include "support/TemporaryFolder.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace Kavra::Tests;
using namespace Kavra::Devices;

using Bytes = std::vector<unsigned char>;

constexpr std::size_t kPixels = 101 * 67;

std::string Name(const std::string& stem) {
    return "bands/" + stem + ".bil";
}

Bytes Theirs(const std::string& stem) {
    return PeerPixels(Peer(Name(stem)), ".raw");
}

TEST(BandInterop, GreyShortsAndFloatsComeOutAsTheyAre) {
    const std::pair<std::string, EFormat> cases[] = {
        {"grey8", kL8}, {"grey16", kL16}, {"signed16", kL16}, {"float32", kR32F}};
    for (const auto& [stem, format] : cases) {
        const Loaded ours = LoadPeer(Peer(Name(stem)));
        EXPECT_EQ(ours.desc.format, format) << stem;
        EXPECT_EQ(Differences(ours.bytes, Theirs(stem)), 0U) << stem;
    }
}

TEST(BandInterop, ThreeBandsOf8BitsAreOnePicture) {
    EXPECT_EQ(Differences(Channels(LoadPeer(Peer(Name("rgb"))).bytes, 3), Theirs("rgb")), 0U);
}

TEST(BandInterop, ThreeBandsOf16BitsAreThreeFrames) {
    const Bytes theirs = Theirs("rgb16");
    ASSERT_EQ(theirs.size(), kPixels * 6);
    for (int band = 0; band < 3; ++band) {
        Bytes expected;
        for (std::size_t pixel = 0; pixel < kPixels; ++pixel)
            expected.insert(expected.end(), &theirs[pixel * 6 + band * 2], &theirs[pixel * 6 + band * 2] + 2);
        EXPECT_EQ(Differences(LoadPeer(Peer(Name("rgb16")), {.level = band}).bytes, expected), 0U) << band;
    }
}

// The palette file's entry 0 is never taken: those pixels keep the grey of their index, which is black.
TEST(BandInterop, APaletteIsExactButForItsFirstEntry) {
    const Bytes indices = ReadAll(Peer("bands/palette.bil"));
    const Bytes ours = Channels(LoadPeer(Peer(Name("palette"))).bytes, 3);
    Bytes theirs = Theirs("palette");
    ASSERT_EQ(indices.size(), kPixels);
    ASSERT_EQ(theirs.size(), kPixels * 3);
    for (std::size_t pixel = 0; pixel < kPixels; ++pixel) {
        if (indices[pixel] == 0) std::fill_n(&theirs[pixel * 3], 3, 0);
    }
    EXPECT_EQ(Differences(ours, theirs), 0U);
}

TEST(BandInterop, OneBitAndWholeNumbersOf32BitsAreKnownAndRefused) {
    OIIOImageHandler handler;
    for (const std::string stem : {"bits1", "int32"}) {
        EXPECT_EQ(DetectImageFileType(Wide(Peer(Name(stem)))), Spot) << stem;
        EXPECT_FALSE(LoadFile(handler, Peer(Name(stem)))) << stem;
    }
}

TEST(BandInterop, FourBandsAndOtherHeadersAreNotOurs) {
    EXPECT_EQ(DetectImageFileType(Wide(Peer(Name("four")))), Other);
    EXPECT_EQ(DetectImageFileType(Wide(Peer(Name("envi")))), Other);
}

TEST(BandInterop, OurSamplesReadElsewhereAsHere) {
    for (const auto& [name, channels] : {std::pair("ours/map.bil", 3), std::pair("ours/photo.bil", 3)}) {
        EXPECT_EQ(Differences(Channels(LoadPeer(Peer(name)).bytes, channels), PeerPixels(Peer(name), ".raw")), 0U)
            << name;
    }
    EXPECT_EQ(Differences(LoadPeer(Peer("ours/height.bil")).bytes, PeerPixels(Peer("ours/height.bil"), ".raw")), 0U);
}

}  // namespace
