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
    for (const std::string name :
         {"magick-24bit.pcx", "magick-24bit-raw.pcx", "magick-palette.pcx", "netpbm-24bit.pcx", "netpbm-8bit.pcx",
          "netpbm-planes.pcx", "netpbm-packed.pcx", "ffmpeg-24bit.pcx", "ffmpeg-gray-even.pcx"}) {
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
    EXPECT_GT(Differences(ours, theirs), 0U);
}

TEST(PcxInterop, AFileWithAnAlphaPlaneIsLeftToTheLibrary) {
    EXPECT_EQ(DetectImageFileType(Wide(Peer("pcx/magick-alpha.pcx"))), Other);
}

/// Black and white replaced by the first and the second colour of the file's header.
Bytes InTwoColours(Bytes pixels, const Bytes& file) {
    constexpr std::size_t kColours = 16;
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = file.at(kColours + (pixels[i] == 0 ? 0 : 3) + i % 3);
    return pixels;
}

// ImageMagick knows nothing of the colours of a file of one bit.
TEST(PcxInterop, OurSamplesReadElsewhereAsHere) {
    const auto paths = Peers("ours", ".pcx");
    ASSERT_FALSE(paths.empty());
    for (const auto& path : paths) {
        const Bytes file = ReadAll(path);
        const bool isOneBit = file.at(3) * file.at(65) == 1;
        const Bytes theirs = PeerPixels(path, ".rgb");
        EXPECT_EQ(Differences(Channels(LoadPeer(path).bytes, 3), isOneBit ? InTwoColours(theirs, file) : theirs), 0U)
            << path;
    }
}

}  // namespace
