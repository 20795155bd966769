// The writer of sample pictures, read back.

#include "legacy/PictFile.h"
#include "readers/Decode.h"
#include "readers/FileTypeDetection.h"
#include "readers/ImageFileType.h"
#include "readers/pict/PictReader.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Legacy;
using namespace Kavra::Tests;

using Bytes = std::vector<unsigned char>;

/// Bytes with runs and without.
Bytes Pattern(std::size_t count) {
    Bytes bytes;
    for (std::size_t i = 0; i < count; ++i)
        bytes.push_back(static_cast<unsigned char>(i % 90 < 40 ? i / 90 : i * 7));
    return bytes;
}

TEST(PictFile, RunsOfThreeUnitsAreRepeatedAndFewerCopied) {
    EXPECT_EQ(PackPictRow(Bytes{5, 5, 5, 1, 1, 2}, 1), (Bytes{0xFE, 5, 0x02, 1, 1, 2}));
    EXPECT_EQ(PackPictRow(Bytes{1, 2, 1, 2, 1, 2, 3, 3}, 2), (Bytes{0xFE, 1, 2, 0x00, 3, 3}));
    EXPECT_EQ(PackPictRow({}, 1), Bytes{});
}

TEST(PictFile, NoPacketHasMoreThan128Units) {
    EXPECT_EQ(PackPictRow(Bytes(130, 9), 1), (Bytes{0x81, 9, 0x01, 9, 9}));
    Bytes different;
    for (unsigned i = 0; i < 130; ++i)
        different.push_back(static_cast<unsigned char>(i));
    const Bytes packed = PackPictRow(different, 1);
    ASSERT_EQ(packed.size(), 132U);
    EXPECT_EQ(packed[0], 0x7F);
    EXPECT_EQ(packed[129], 0x01);
}

TEST(PictFile, ColoursOf32BitsComeBack) {
    for (const auto& [width, height] : {std::pair{1, 1}, {3, 2}, {63, 5}, {300, 9}}) {
        const Bytes rgb = Pattern(3 * static_cast<std::size_t>(width * height));
        for (const PictMode mode : {PictMode::kTransparent, PictMode::kMinimum}) {
            const Decoded decoded = Decode<PictReader>(PictOfColours(width, height, rgb, 32, mode));
            ASSERT_TRUE(decoded.read) << width;
            for (std::size_t i = 0; i < rgb.size(); ++i)
                ASSERT_EQ(decoded.block[i / 3 * 4 + i % 3], rgb[i]) << width << " " << i;
        }
    }
}

TEST(PictFile, ColoursOf16BitsComeBackWithFiveBitsAChannel) {
    const Bytes rgb = Pattern(3 * 130 * 3);
    const Decoded decoded = Decode<PictReader>(PictOfColours(130, 3, rgb, 16, PictMode::kMinimum));
    ASSERT_TRUE(decoded.read);
    for (std::size_t i = 0; i < rgb.size(); ++i)
        ASSERT_EQ(decoded.block[i / 3 * 4 + i % 3], (rgb[i] & 0xF8) | rgb[i] >> 5) << i;
}

TEST(PictFile, IndicesComeBackThroughTheirColours) {
    std::vector<PictEntry> colours;
    for (unsigned i = 0; i < 256; ++i)
        colours.push_back({static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(255 - i), 77});
    for (const int width : {1, 7, 8, 250, 251, 400}) {
        const Bytes indices = Pattern(static_cast<std::size_t>(width) * 3);
        const Decoded decoded = Decode<PictReader>(PictOfIndices(width, 3, indices, colours));
        ASSERT_TRUE(decoded.read) << width;
        for (std::size_t i = 0; i < indices.size(); ++i) {
            ASSERT_EQ(decoded.block[4 * i], indices[i]) << width << " " << i;
            ASSERT_EQ(decoded.block[4 * i + 1], 255 - indices[i]) << width << " " << i;
        }
    }
}

TEST(PictFile, BitsComeBackBlackOnWhite) {
    for (const int width : {1, 8, 17, 64, 3000}) {
        Bytes black;
        for (int i = 0; i < 2 * width; ++i)
            black.push_back(i % 3 == 0 || i % 50 > 20 ? 1 : 0);
        const Decoded decoded = Decode<PictReader>(PictOfBits(width, 2, black));
        ASSERT_TRUE(decoded.read) << width;
        for (std::size_t i = 0; i < black.size(); ++i)
            ASSERT_EQ(decoded.block[4 * i], black[i] != 0 ? 0 : 255) << width << " " << i;
    }
}

TEST(PictFile, IsRecognised) {
    const TemporaryFolder folder;
    const auto path = folder.Write("file", PictOfColours(300, 9, Pattern(8100), 32, PictMode::kCopy).Bytes());
    EXPECT_EQ(DetectImageFileType(Wide(path)), PICT);
}

}  // namespace
