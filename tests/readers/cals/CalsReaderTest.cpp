#include "common/PixelBlock.h"
#include "legacy/CalsFile.h"
#include "readers/BilevelPicture.h"
#include "readers/ImageFileType.h"
#include "readers/cals/CalsReader.h"
#include "readers/ccitt/CcittStreams.h"
#include "support/HandlerAccess.h"

#include <gtest/gtest.h>

#include <array>
#include <format>
#include <memory>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using Kavra::Legacy::Bitmap;
using Kavra::Legacy::CalsFile;
using Kavra::Legacy::CalsHeaderBytes;

using Texts = std::vector<std::wstring>;

/// A file of this size whose image consists of these codes.
ByteBuilder FileOf(int width, int height, std::string_view codes) {
    return CalsHeaderBytes({.counts = std::format("{},{}", width, height)}).Append(Codes(codes));
}

TEST(CALSReader, ShowsTheNegativeOfTheFax) {
    const Decoded decoded = Decode<CALSReader>(FileOf(8, 2, "001 1000 11 1  1 011 1"));
    EXPECT_TRUE(decoded.opened);
    EXPECT_TRUE(decoded.read);
    EXPECT_EQ(BilevelPicture(decoded), "...##...|...###..|") << "black of the fax is white here";
    EXPECT_TRUE(decoded.messages.empty());
}

TEST(CALSReader, DescribesItsImage) {
    const Decoded decoded = Decode<CALSReader>(CalsFile(Bitmap(13, 3), {.orientation = "090,090"}));
    EXPECT_EQ(decoded.width, 13);
    EXPECT_EQ(decoded.height, 3);
    EXPECT_EQ(decoded.rowPitch, 52);
    EXPECT_EQ(decoded.format, kR8G8B8A8);
    EXPECT_EQ(decoded.frameCount, 1);
    EXPECT_EQ(decoded.orientation, kLeftTop);
}

TEST(CALSReader, TheBitsBehindTheWidthAreIgnored) {
    Bitmap image(13, 2);
    for (const int x : {0, 7, 8, 12}) {
        image.Set(x, 0);
        image.Set(12 - x, 1);
    }
    EXPECT_EQ(BilevelPicture(Decode<CALSReader>(CalsFile(image))), "#......##...#|#...##......#|");
}

TEST(CALSReader, AnyImageComesBack) {
    std::mt19937 random(3);
    for (int round = 0; round < 40; ++round) {
        const Bitmap image =
            RandomBitmap(random, 1 + static_cast<int>(random() % 300), 1 + static_cast<int>(random() % 40));
        const Decoded decoded = Decode<CALSReader>(CalsFile(image), static_cast<int>(random() % 3));
        ASSERT_EQ(decoded.width, image.width);
        ASSERT_EQ(decoded.height, image.height);
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                const unsigned char value = image.At(x, y) ? 255 : 0;
                ASSERT_EQ(PixelAt(decoded, x, y), (Bytes{value, value, value, 255})) << x << ' ' << y;
            }
        }
    }
}

TEST(CALSReader, ARowThatFailsShowsTheOneBeforeAndDecodingGoesOn) {
    // The codes of the row before leave 13 bits, see below; the next byte makes them fail, the one behind it does not.
    const Decoded decoded = Decode<CALSReader>(FileOf(16, 3, "001 1011 011 1  1 001 011 000000  00100000  10000000"));
    EXPECT_TRUE(decoded.read);
    EXPECT_EQ(BilevelPicture(decoded), "....####........|....####........|....####........|");
    EXPECT_EQ(decoded.messages, (Texts{L"Bad code word in WhiteTable at scanline (x 8)"}));
}

TEST(CALSReader, AFirstRowThatFailsIsBlack) {
    const Decoded decoded = Decode<CALSReader>(FileOf(8, 2, "001 000000001 1111  0000010 1"));
    EXPECT_EQ(BilevelPicture(decoded), "........|.....###|");
    EXPECT_EQ(decoded.messages, (Texts{L"Bad code word in WhiteTable at scanline (x 0)"}));
}

TEST(CALSReader, EachRowThatFailsWarnsOnce) {
    std::string codes;
    for (int row = 0; row < 30; ++row)
        codes += "001 000000001 1111";
    const Decoded decoded = Decode<CALSReader>(FileOf(8, 40, codes));
    EXPECT_EQ(decoded.messages.size(), 30U) << "and none where there is no more data";
    EXPECT_TRUE(decoded.read);
}

TEST(CALSReader, RowsWithoutDataAreBlackAndNothingIsSaid) {
    const Decoded decoded = Decode<CALSReader>(FileOf(8, 3, "1 0000010"));
    EXPECT_EQ(BilevelPicture(decoded), "........|........|........|");
    EXPECT_TRUE(decoded.messages.empty());
    EXPECT_TRUE(decoded.read);
    EXPECT_EQ(BilevelPicture(Decode<CALSReader>(FileOf(3, 2, ""))), "...|...|");
}

TEST(CALSReader, AFileMayEndInsideItsHeader) {
    ByteBuilder file = FileOf(3, 2, "");
    const Decoded decoded = Decode<CALSReader>(file.CutTo(1100));
    EXPECT_TRUE(decoded.read);
    EXPECT_EQ(BilevelPicture(decoded), "...|...|");
    EXPECT_EQ(Decode<CALSReader>(file.CutTo(896)).width, 0);
    EXPECT_TRUE(Decode<CALSReader>(file.CutTo(896)).opened);
    EXPECT_FALSE(Decode<CALSReader>(file.CutTo(895)).opened);
}

TEST(CALSReader, TheSecondDocumentIdentifierIsEnough) {
    EXPECT_TRUE(Decode<CALSReader>(FileOf(3, 2, "").At(0).Text("somethin:")).opened);
}

TEST(CALSReader, WhatIsNoCalsIsNotOpened) {
    const Decoded decoded = Decode<CALSReader>(FileOf(3, 2, "").At(768).Text("rtype: 2"));
    EXPECT_FALSE(decoded.opened);
    EXPECT_TRUE(decoded.messages.empty());
    CALSReader reader;
    EXPECT_FALSE(reader.Open(L"/nowhere/at/all"));
    unsigned char pixel[4] = {};
    EXPECT_FALSE(reader.ReadImage(pixel, 0));
}

TEST(CALSReader, AFileThatIsNotAcceptedForgetsTheOneBefore) {
    const TemporaryFolder folder;
    CALSReader reader;
    ASSERT_TRUE(reader.Open(Wide(folder.Write("good", FileOf(1, 1, "1").Bytes()))));
    std::array<unsigned char, 4> pixel = {};
    EXPECT_TRUE(reader.ReadImage(pixel.data(), 0));
    EXPECT_FALSE(reader.Open(Wide(folder.Write("bad", "no"))));
    EXPECT_FALSE(reader.ReadImage(pixel.data(), 0));
}

TEST(CALSReader, CountsThatNoImageCanHaveOpenAndWriteNothing) {
    const TemporaryFolder folder;
    for (const auto& [width, height] : std::vector<std::pair<int, int>>{{0, 5}, {5, 0}, {-1, 5}, {5, -1}, {-3, -3}}) {
        CALSReader reader;
        ASSERT_TRUE(reader.Open(Wide(folder.Write("file", FileOf(width, height, "1111").Bytes()))));
        EXPECT_EQ(reader.GetWidth(), width);
        EXPECT_EQ(reader.GetHeight(), height);
        EXPECT_EQ(reader.GetRowPitch(), 4 * width);
        EXPECT_TRUE(reader.ReadImage(nullptr, 0));
    }
    CALSReader reader;
    ASSERT_TRUE(reader.Open(Wide(folder.Write("file", FileOf(2147483647, 1, "1").Bytes()))));
    EXPECT_EQ(reader.GetRowPitch(), 2147483647) << "no wrap";
}

TEST(CALSReader, ReadsTheSameAgainAndWhateverTheFrame) {
    const TemporaryFolder folder;
    CALSReader reader;
    ASSERT_TRUE(reader.Open(Wide(folder.Write("file", FileOf(8, 2, "001 1000 11 1  1 011 1").Bytes()))));
    Bytes first(64);
    Bytes second(64);
    EXPECT_TRUE(reader.ReadImage(first.data(), 0));
    EXPECT_TRUE(reader.ReadImage(second.data(), 17));
    EXPECT_EQ(first, second);
}

TEST(CALSReader, AFileOfManyBuffersIsReadWhole) {
    std::mt19937 random(5);
    Bitmap image(2000, 200);
    for (int speck = 0; speck < 80'000; ++speck)
        image.Set(static_cast<int>(random() % 2000), static_cast<int>(random() % 200));
    const ByteBuilder file = CalsFile(image);
    ASSERT_GT(file.Size(), 60'000U);
    const Decoded decoded = Decode<CALSReader>(file);
    int different = 0;
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x)
            different += (PixelAt(decoded, x, y)[0] == 255) != image.At(x, y) ? 1 : 0;
    }
    EXPECT_EQ(different, 0);
}

TEST(CALSReader, CutAtEveryLengthItGivesTheSameEachTime) {
    Twice<CALSReader> twice;
    std::mt19937 random(8);
    const ByteBuilder whole = CalsFile(RandomBitmap(random, 40, 12));
    for (std::size_t size = 0; size < whole.Size(); size = size < 700 ? size + 97 : size + (size < 2040 ? 13 : 1)) {
        const Decoded first = twice.Decode(ByteBuilder(whole).CutTo(size));
        EXPECT_EQ(first.opened, size >= 896);
        EXPECT_TRUE(IsBilevel(first)) << size;
        EXPECT_TRUE(first.messages.empty()) << size;
    }
}

TEST(CALSReader, HostileHeaderBytesGiveTheSameEachTime) {
    Twice<CALSReader> twice;
    std::mt19937 random(9);
    const ByteBuilder whole = CalsFile(RandomBitmap(random, 20, 5));
    for (std::size_t at = 896; at < 1060; ++at) {
        for (const unsigned value : {0x00U, 0x01U, 0x7FU, 0x80U, 0xFFU, unsigned{'9'}, unsigned{','}, unsigned{'-'}}) {
            const Decoded first = twice.Decode(ByteBuilder(whole).At(at).Byte(value));
            EXPECT_TRUE(first.opened);
        }
    }
}

TEST(CALSLoad, ComesReorderedToTheOrientationAskedFor) {
    const TemporaryFolder folder;
    Bitmap image(3, 2);
    image.Set(0, 0);
    const auto path = folder.Write("drawing.cal", CalsFile(image, {.orientation = "000,090"}).Bytes());
    OIIOImageHandlerAccess access;
    ImageDescription desc;
    const Kavra::Common::PixelBlock block(access.LoadSpecial(desc, Wide(path), 0, 0, false, 0, kTopLeft, CALS));
    ASSERT_TRUE(block);
    EXPECT_EQ(desc.orientation, kTopLeft);
    EXPECT_EQ(block.get()[0], 0) << "stored upside down";
    EXPECT_EQ(block.get()[12], 255);
    const Kavra::Common::PixelBlock stored(access.LoadSpecial(desc, Wide(path), 0, 0, false, 0, kBottomLeft, CALS));
    ASSERT_TRUE(stored);
    EXPECT_EQ(desc.orientation, kBottomLeft);
    EXPECT_EQ(stored.get()[0], 255);
}

TEST(CALSLoad, ASmallFileIsNotGivenMoreThanItsLimit) {
    const TemporaryFolder folder;
    OIIOImageHandlerAccess access;
    ImageDescription desc;
    for (const char* counts : {"030000,030000", "1000001,1", "1,1000001", "2147483647,2147483647", "0,4", "-4,4"}) {
        const auto path = folder.Write("file", CalsHeaderBytes({.counts = counts}).Bytes());
        EXPECT_EQ(access.LoadSpecial(desc, Wide(path), 0, 0, false, 0, kTopLeft, CALS), nullptr) << counts;
    }
}

}  // namespace
