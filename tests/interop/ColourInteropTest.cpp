// Light and alpha between file types, as libvips and ImageMagick see them.

#include "interop/PeerFiles.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

using namespace Kavra::Tests;

using Bytes = std::vector<unsigned char>;
using Words = std::vector<std::string>;

Bytes Converted(const std::filesystem::path& in, const Words& more = {}) {
    const TemporaryFolder folder;
    const std::filesystem::path out = folder / "out.png";
    Words line = {"convert", in, out};
    line.insert(line.end(), more.begin(), more.end());
    EXPECT_EQ(RunKavra(line).status, 0) << in;
    return LoadPeer(out).bytes;
}

int LargestDifference(const Bytes& a, const Bytes& b) {
    EXPECT_EQ(a.size(), b.size());
    int largest = 0;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
        largest = std::max(largest, std::abs(a[i] - b[i]));
    return largest;
}

}  // namespace

TEST(ColourInterop, LightOfOpenExrIsShownAsLibvipsShowsIt) {
    EXPECT_LE(LargestDifference(Converted(Sample("sunset.exr")), PeerPixels(Peer("colour/vips-sunset.png"), ".rgba")),
              1);
}

TEST(ColourInterop, LightOfRadianceFilesIsShownAsImageMagickShowsIt) {
    EXPECT_LE(LargestDifference(Converted(Sample("studio.hdr")), PeerPixels(Peer("colour/magick-studio.png"), ".rgba")),
              1);
}

TEST(ColourInterop, ABackgroundShowsThroughAsImageMagickMixesLight) {
    EXPECT_LE(LargestDifference(Converted(Sample("cutout.png"), {"--background", "white"}),
                                PeerPixels(Peer("colour/magick-white.png"), ".rgba")),
              1);
}

TEST(ColourInterop, LightThatImageMagickMadeOfAPhotoIsThePhotoAgain) {
    const Bytes photo = LoadPeer(Peer("colour/photo.png")).bytes;
    EXPECT_LE(LargestDifference(Converted(Peer("colour/magick-photo.tif")), photo), 1);
    EXPECT_LE(LargestDifference(Converted(Peer("colour/magick-photo.hdr")), photo), 2);  // 8 bits and an exponent
}

TEST(ColourInterop, OurLightOfAPhotoIsThatOfImageMagick) {
    const TemporaryFolder folder;
    ASSERT_EQ(RunKavra({"convert", Peer("colour/photo.png"), folder / "light.exr", "--format", "rgba32f"}).status, 0);
    const Bytes ours = LoadPeer(folder / "light.exr").bytes, theirs = LoadPeer(Peer("colour/magick-photo.tif")).bytes;
    ASSERT_EQ(ours.size(), theirs.size());
    for (std::size_t i = 0; i + 4 <= ours.size(); i += 4) {
        float our = 0, their = 0;
        std::memcpy(&our, &ours[i], 4);
        std::memcpy(&their, &theirs[i], 4);
        ASSERT_NEAR(our, their, 3e-5) << i;
    }
}
