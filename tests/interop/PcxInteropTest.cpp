// PCX files of ImageMagick, netpbm and ffmpeg, pixel by pixel against those programs' own decoding.

#include "interop/PeerFiles.h"
#include "readers/FileTypeDetection.h"
#include "readers/ImageFileType.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Tests;
using namespace Kavra::Devices;

using Bytes = std::vector<unsigned char>;

Bytes Ours(const std::string& name) {
    return Channels(LoadPeer(Peer("pcx/" + name)).bytes, 3);
}

Bytes Theirs(const std::string& name) {
    return PeerPixels(Peer("pcx/" + name), ".rgb");
}

Bytes Negative(Bytes pixels) {
    for (unsigned char& value : pixels)
        value = static_cast<unsigned char>(255 - value);
    return pixels;
}

TEST(PcxInterop, ColourAndPaletteFilesReadAsTheirWritersReadThem) {
    for (const std::string name : {"magick-24bit.pcx", "magick-24bit-raw.pcx", "magick-palette.pcx", "netpbm-24bit.pcx",
                                   "netpbm-8bit.pcx", "netpbm-planes.pcx", "netpbm-packed.pcx", "ffmpeg-24bit.pcx",
                                   "ffmpeg-gray-even.pcx"}) {
        EXPECT_EQ(Differences(Ours(name), Theirs(name)), 0U) << name;
    }
}

TEST(PcxInterop, AMonochromeFileReadsAsImageMagickReadsIt) {
    EXPECT_EQ(Differences(Ours("magick-mono.pcx"), Theirs("magick-mono.pcx")), 0U);
}

TEST(PcxInterop, AMonochromeFileIsTheNegativeOfWhatNetpbmReads) {
    EXPECT_EQ(Differences(Ours("netpbm-mono.pcx"), Negative(Theirs("netpbm-mono.pcx"))), 0U);
}

// The byte that pads a line to an even length becomes the first pixel of the next.
TEST(PcxInterop, OddLinesPaddedToEvenSkewFromTheSecondRowOn) {
    const Bytes ours = Ours("ffmpeg-gray-odd.pcx");
    const Bytes theirs = Theirs("ffmpeg-gray-odd.pcx");
    ASSERT_EQ(ours.size(), theirs.size());
    constexpr std::size_t kRow = 101 * 3;
    EXPECT_TRUE(std::equal(ours.begin(), ours.begin() + kRow, theirs.begin()));
    EXPECT_GT(Differences(ours, theirs), theirs.size() / 4);
}

TEST(PcxInterop, AFileWithAnAlphaPlaneIsLeftToTheLibrary) {
    EXPECT_EQ(DetectImageFileType(Wide(Peer("pcx/magick-alpha.pcx"))), Other);
}

TEST(PcxInterop, OurSamplesReadElsewhereAsHere) {
    const auto files = Peers("ours", ".pcx");
    ASSERT_FALSE(files.empty());
    for (const auto& file : files)
        EXPECT_EQ(Differences(Channels(LoadPeer(file).bytes, 3), PeerPixels(file, ".rgb")), 0U) << file;
}

}  // namespace
