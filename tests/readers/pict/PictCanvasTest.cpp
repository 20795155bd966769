#include "readers/Decode.h"
#include "readers/pict/PictCanvas.h"
#include "readers/pict/PictMaker.h"
#include "readers/pict/PictReader.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;

const Bytes kWhite = {255, 255, 255, 255};
const Bytes kBlackPixel = {0, 0, 0, 255};
const Bytes kLeftAlone(4, kUnwritten);

Decoded DecodePict(const ByteBuilder& file) {
    return Decode<PictReader>(file);
}

/// The red bytes of all pixels.
Bytes Reds(const Decoded& decoded) {
    Bytes reds;
    for (std::size_t at = 0; at < decoded.block.size(); at += 4)
        reds.push_back(decoded.block[at]);
    return reds;
}

TEST(PictCanvas, IndicesAreLookedUp) {
    PictMap map = SixPixels();
    map.colours = {{0, 0x12FF, 0x3480, 0x5600}, {1, 0xFFFF, 0, 0}, {2, 0, 0x00FF, 0xFF00}};
    const Decoded decoded = DecodePict(PictMaker({0, 0, 2, 3}).Indexed(map).End());
    EXPECT_EQ(PixelAt(decoded, 0, 0), (Bytes{0x12, 0x34, 0x56, 255}));
    EXPECT_EQ(PixelAt(decoded, 1, 0), (Bytes{255, 0, 0, 255}));
    EXPECT_EQ(PixelAt(decoded, 2, 0), (Bytes{0, 0, 255, 255}));
    EXPECT_EQ(PixelAt(decoded, 0, 1), (Bytes{0, 0, 255, 255}));
}

TEST(PictCanvas, IndicesAreCopiedWhateverTheMode) {
    for (const unsigned mode : {0U, 1U, 2U, 4U, 8U, 32U, 34U, 36U, 39U, 64U}) {
        PictMap map = SixPixels();
        map.mode = mode;
        PictMaker maker({0, 0, 2, 3});
        maker.Colour(0x1A, 1, 2, 3).Colour(0x1B, 10 * 257, 10 * 257, 10 * 257).Indexed(map);
        EXPECT_EQ(Reds(DecodePict(maker.End())), (Bytes{10, 20, 30, 30, 20, 10})) << mode;
    }
}

TEST(PictCanvas, AnIndexWithoutAColourLeavesThePixelUnwritten) {
    PictMap map = SixPixels();
    map.colours = Greys({10, 20});
    const Decoded decoded = DecodePict(PictMaker({0, 0, 2, 3}).Indexed(map).End());
    EXPECT_TRUE(decoded.read);
    EXPECT_EQ(PixelAt(decoded, 2, 0), kLeftAlone);
    EXPECT_EQ(PixelAt(decoded, 0, 1), kLeftAlone);
    EXPECT_EQ(PixelAt(decoded, 1, 0), (Bytes{20, 20, 20, 255}));
}

TEST(PictCanvas, AroundIndicesThePictureIsWhite) {
    PictMap map = SixPixels();
    map.bounds = {1, 2, 3, 5};
    const Decoded decoded = DecodePict(PictMaker({0, 0, 4, 7}).Indexed(map).End());
    EXPECT_EQ(Reds(decoded), (Bytes{255, 255, 255, 255, 255, 255, 255,  //
                                    255, 255, 10,  20,  30,  255, 255,  //
                                    255, 255, 30,  20,  10,  255, 255,  //
                                    255, 255, 255, 255, 255, 255, 255}));
    EXPECT_EQ(PixelAt(decoded, 0, 0), kWhite);
    EXPECT_EQ(PixelAt(decoded, 6, 2), kWhite);
}

TEST(PictCanvas, ARecordPartlyOutsideTheFrameShowsTheRest) {
    PictMap map = SixPixels();
    map.bounds = {-1, -1, 1, 2};
    EXPECT_EQ(Reds(DecodePict(PictMaker({0, 0, 2, 2}).Indexed(map).End())), (Bytes{20, 10, 255, 255}));
    map.bounds = {1, 1, 3, 4};
    EXPECT_EQ(Reds(DecodePict(PictMaker({0, 0, 2, 3}).Indexed(map).End())), (Bytes{255, 255, 255, 255, 10, 20}));
    map.bounds = {5, 5, 7, 8};
    EXPECT_EQ(DecodePict(PictMaker({0, 0, 2, 2}).Indexed(map).End()).block, Bytes(16, 255));
}

TEST(PictCanvas, AFrameThatDoesNotBeginAtTheOriginIsTheUpperLeftCorner) {
    PictMap map = SixPixels();
    map.bounds = {100, 200, 102, 203};
    EXPECT_EQ(Reds(DecodePict(PictMaker({100, 200, 102, 203}).Indexed(map).End())), (Bytes{10, 20, 30, 30, 20, 10}));
    map.bounds = {-102, -203, -100, -200};
    EXPECT_EQ(Reds(DecodePict(PictMaker({-102, -203, -100, -200}).Indexed(map).End())),
              (Bytes{10, 20, 30, 30, 20, 10}));
}

TEST(PictCanvas, OnlyTheDestinationInsideTheBoundsIsDrawn) {
    PictMap map = SixPixels();
    map.source = map.destination = {0, 1, 1, 9};
    EXPECT_EQ(Reds(DecodePict(PictMaker({0, 0, 2, 4}).Indexed(map).End())),
              (Bytes{255, 20, 30, 255, 255, 255, 255, 255}));
}

TEST(PictCanvas, ADestinationMovedDownUncoversRowsAndMovesNoPixel) {
    PictMap map = SixPixels();
    map.source = {0, 0, 2, 3};
    map.destination = {1, 0, 3, 3};
    EXPECT_EQ(Reds(DecodePict(PictMaker({0, 0, 3, 3}).Indexed(map).End())),
              (Bytes{255, 255, 255, 30, 20, 10, 255, 255, 255}));
}

TEST(PictCanvas, AClippingRegionHasNoEffect) {
    PictMaker maker({0, 0, 2, 3});
    maker.Op(0x01).Word(10).Rect({0, 0, 1, 1}).Indexed(SixPixels()).Op(0x01).Word(10).Rect({0, 0, 0, 0});
    EXPECT_EQ(Reds(DecodePict(maker.End())), (Bytes{10, 20, 30, 30, 20, 10}));
}

TEST(PictCanvas, TwoIndexedBitmapsAreDirectColour) {
    // Copied: black gives the foreground, all else the background.
    PictMap black = SixPixels();
    black.colours = Greys({0, 20, 255});
    PictMap white = SixPixels();
    white.bounds = {2, 0, 4, 3};
    const Decoded decoded = DecodePict(PictMaker({0, 0, 4, 3}).Indexed(black).Indexed(white).End());
    EXPECT_EQ(Reds(decoded), (Bytes{0, 255, 255, 255, 255, 0, 255, 255, 255, 255, 255, 255}));
}

TEST(PictCanvas, ADirectPictureInModeCopyShowsTwoColours) {
    const PictMap map = Column(0, 0, {{0, 0, 0}, {1, 0, 0}, {200, 100, 50}, {255, 255, 255}});
    PictMaker maker({0, 0, 4, 1});
    EXPECT_EQ(Reds(DecodePict(PictMaker(maker).Direct(map).End())), (Bytes{0, 255, 255, 255}));
    maker.Direct(map).Colour(0x1A, 0x1234, 0, 0).Colour(0x1B, 0x5678, 0, 0);
    EXPECT_EQ(Reds(DecodePict(maker.End())), (Bytes{0x12, 0x56, 0x56, 0x56})) << "the colours at the end of the stream";
}

TEST(PictCanvas, ADirectPictureInModesThatTakeTheSourceShowsItself) {
    for (const unsigned mode : {2U, 36U, 39U}) {
        const Decoded decoded = DecodePict(
            PictMaker({0, 0, 3, 1}).Direct(Column(0, 0, {{1, 2, 3}, {255, 255, 255}, {0, 0, 0}}, mode)).End());
        EXPECT_EQ(PixelAt(decoded, 0, 0), (Bytes{1, 2, 3, 255})) << mode;
        EXPECT_EQ(PixelAt(decoded, 0, 1), kWhite) << mode;
        EXPECT_EQ(PixelAt(decoded, 0, 2), kBlackPixel) << mode;
    }
}

TEST(PictCanvas, PackedRowsOf32BitsHaveTheirColoursInPlanes) {
    PictMap map = {.bounds = {0, 0, 2, 3}, .mode = 39, .rowBytes = 0x800C, .bits = 32, .components = 3};
    map.data = {0, 10, 8, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 4, 0xFC, 77, 0x00, 88};
    const Decoded three = DecodePict(PictMaker({0, 0, 2, 3}).Direct(map).End());
    EXPECT_EQ(PixelAt(three, 0, 0), (Bytes{1, 4, 7, 255}));
    EXPECT_EQ(PixelAt(three, 2, 0), (Bytes{3, 6, 9, 255}));
    EXPECT_EQ(PixelAt(three, 0, 1), (Bytes{77, 77, 0, 255})) << "the rest of a short row is zero";
    EXPECT_EQ(PixelAt(three, 2, 1), (Bytes{77, 88, 0, 255}));
    map.components = 4;
    map.data = {0, 13, 11, 99, 99, 99, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 2, 0xF5, 5};
    const Decoded four = DecodePict(PictMaker({0, 0, 2, 3}).Direct(map).End());
    EXPECT_EQ(PixelAt(four, 0, 0), (Bytes{1, 4, 7, 255})) << "the first component is not used";
    EXPECT_EQ(PixelAt(four, 2, 1), (Bytes{5, 5, 5, 255}));
}

TEST(PictCanvas, SixteenBits) {
    PictMap map = {.bounds = {0, 0, 1, 3}, .mode = 39, .rowBytes = 6, .bits = 16, .components = 3};
    map.data = {0x7C, 0x00, 0x03, 0xE0, 0x40, 0x10};
    const Decoded plain = DecodePict(PictMaker({0, 0, 1, 3}).Direct(map).End());
    EXPECT_EQ(PixelAt(plain, 0, 0), (Bytes{255, 0, 0, 255}));
    EXPECT_EQ(PixelAt(plain, 1, 0), (Bytes{0, 255, 0, 255}));
    EXPECT_EQ(PixelAt(plain, 2, 0), (Bytes{0x84, 0, 0x84, 255}));
    map.rowBytes = 0x8006;
    map.data = {0, 6, 0xFF, 0x7C, 0x00, 0x00, 0x00, 0x1F};
    const Decoded packed = DecodePict(PictMaker({0, 0, 1, 3}).Direct(map).End());
    EXPECT_EQ(packed.block, (Bytes{255, 0, 0, 255, 255, 0, 0, 255, 0, 0, 255, 255}));
}

TEST(PictCanvas, RecordsAreDrawnOverOneAnotherInTheOrderOfThePicture) {
    // Subtracting and adding do not commute at the limits; the last of them begins first.
    const PictMap add = Column(0, 1, {{200, 0, 0}, {200, 0, 0}}, 33);
    const PictMap set = Column(0, 0, {{100, 100, 100}, {100, 100, 100}, {100, 100, 100}}, 39);
    const auto make = [](const PictMap& first, const PictMap& second) {
        PictMaker maker({0, 0, 3, 1});
        return Reds(DecodePict(maker.Colour(0x1F, 0xF000, 0xF000, 0xF000).Direct(first).Direct(second).End()));
    };
    EXPECT_EQ(make(set, add), (Bytes{100, 0xF0, 0xF0}));
    EXPECT_EQ(make(add, set), (Bytes{100, 100, 100}));
}

TEST(PictCanvas, TheCanvasKeeps16BitsBetweenRecords) {
    // 128 is 32896; a half of it and a half of white, twice: 65535 -> 32767 + 16448 = 49215 -> 24607 + 16448 = 41055.
    const PictMap half = Column(0, 0, {{128, 128, 128}}, 32);
    PictMaker maker({0, 0, 1, 1});
    maker.Colour(0x1F, 32768, 32768, 32768).Direct(half).Direct(half);
    EXPECT_EQ(Reds(DecodePict(maker.End())), (Bytes{41055 / 256}));
    // 5 bits: 1 is 2114, and 124 of them are 2^16 + ... taken modulo 2^16 with nothing lost between.
    PictMap one = {
        .bounds = {0, 0, 1, 1}, .mode = 34, .rowBytes = 2, .bits = 16, .components = 3, .data = {0x04, 0x00}};
    PictMaker sum({0, 0, 1, 1});
    for (int i = 0; i < 124; ++i)
        sum.Direct(one);
    EXPECT_EQ(PixelAt(DecodePict(sum.End()), 0, 0), (Bytes{(65535 + 124 * 2114) % 65536 / 256, 255, 255, 255}));
}

TEST(PictCanvas, InDirectColourAnIndexWithoutAColourLeavesTheCanvas) {
    PictMap map = SixPixels();
    map.mode = 39;
    map.components = 2;
    map.colours = Greys({10, 20});
    const Decoded decoded = DecodePict(PictMaker({0, 0, 2, 3}).Indexed(map).End());
    EXPECT_EQ(Reds(decoded), (Bytes{10, 20, 255, 255, 20, 10}));
    EXPECT_EQ(PixelAt(decoded, 2, 0), kWhite);
}

TEST(PictCanvas, PixelsWithAndWithoutAColourMayAlternate) {
    constexpr int kWidth = 2500;  // more than are worked on at a time
    std::mt19937 random(5);
    PictMap page = {.bounds = {0, 0, 1, kWidth}, .mode = 36, .rowBytes = 0x8000 + 2 * kWidth, .bits = 8};
    page.colours = Greys({0, 80, 160, 255});
    const auto packed = [](const Bytes& pixels) {
        Bytes row;
        for (const unsigned char pixel : pixels)
            row.insert(row.end(), {0, pixel});
        row.insert(row.begin(), {static_cast<unsigned char>(row.size() >> 8), static_cast<unsigned char>(row.size())});
        return row;
    };
    for (unsigned mode = 0; mode <= 41; ++mode) {
        Bytes below(kWidth), above(kWidth);
        for (unsigned char& pixel : below)
            pixel = static_cast<unsigned char>(random() % 4);
        for (unsigned char& pixel : above)
            pixel = static_cast<unsigned char>(random() % 5);
        page.data = packed(below);
        PictMap map = page;
        map.mode = mode;
        map.colours = {{0, 0, 0, 0}, {1, 65535, 65535, 65535}, {2, 1000, 50000, 30000}};
        map.colours.resize(1 + mode % 3);
        map.data = packed(above);
        const PictColours colours{
            .foreground = {9, 8, 7}, .background = {65535, 65535, 65535}, .operation = {4, 5, 60000}};
        PictMaker maker({0, 0, 1, kWidth});
        maker.Colour(0x1A, 9, 8, 7).Colour(0x1F, 4, 5, 60000).Indexed(page).Indexed(map);
        const Decoded decoded = DecodePict(maker.End());
        for (int x = 0; x < kWidth; ++x) {
            const auto grey = static_cast<std::uint16_t>(page.colours[below[static_cast<std::size_t>(x)]].red);
            std::array<std::uint16_t, 3> canvas = {grey, grey, grey};
            if (const unsigned char index = above[static_cast<std::size_t>(x)]; index < map.colours.size()) {
                const PictEntry& entry = map.colours[index];
                const std::array<std::uint16_t, 3> source = {static_cast<std::uint16_t>(entry.red),
                                                             static_cast<std::uint16_t>(entry.green),
                                                             static_cast<std::uint16_t>(entry.blue)};
                TransferPictRun(
                    static_cast<std::uint16_t>(mode), colours,
                    {std::span(source).subspan(0, 1), std::span(source).subspan(1, 1), std::span(source).subspan(2, 1)},
                    {std::span(canvas).subspan(0, 1), std::span(canvas).subspan(1, 1),
                     std::span(canvas).subspan(2, 1)});
            }
            const Bytes expected = {static_cast<unsigned char>(canvas[0] >> 8),
                                    static_cast<unsigned char>(canvas[1] >> 8),
                                    static_cast<unsigned char>(canvas[2] >> 8), 255};
            ASSERT_EQ(PixelAt(decoded, x, 0), expected) << mode << " " << x;
        }
    }
}

TEST(PictCanvas, IndexedBitmapsInDirectColourTakeTheColoursOfTheirTables) {
    PictMap map = SixPixels();
    map.mode = 39;
    map.colours = {{0, 0x1234, 0xABCD, 0}, {1, 0, 0, 0}, {2, 65535, 65535, 65535}};
    PictMap bits = {.bounds = {2, 0, 3, 3}, .mode = 39, .rowBytes = 1, .data = {0b01000000}};
    const Decoded decoded = DecodePict(PictMaker({0, 0, 3, 3}).Indexed(map).Bitmap(bits).End());
    EXPECT_EQ(PixelAt(decoded, 0, 0), (Bytes{0x12, 0xAB, 0, 255}));
    EXPECT_EQ(PixelAt(decoded, 0, 2), kWhite);
    EXPECT_EQ(PixelAt(decoded, 1, 2), kBlackPixel);
}

TEST(PictCanvas, WideRowsAreDrawnWhole) {
    // Wider than what is worked on at a time; each pixel is its column modulo 251.
    constexpr int kWidth = 5000;
    PictMap indexed = {.bounds = {0, -7, 1, kWidth - 7}, .rowBytes = 0x8000 + kWidth};
    for (unsigned i = 0; i < 251; ++i)
        indexed.colours.push_back({i, i * 257, 0, 0});
    Bytes row;
    for (int x = 0; x < kWidth; ++x) {
        if (x % 100 == 0) row.push_back(99);
        row.push_back(static_cast<unsigned char>(x % 251));
    }
    indexed.data = {static_cast<unsigned char>(row.size() >> 8), static_cast<unsigned char>(row.size())};
    indexed.data.insert(indexed.data.end(), row.begin(), row.end());
    PictMap twice = indexed;
    twice.mode = 39;
    const auto expected = [](const Decoded& decoded) {
        ASSERT_EQ(decoded.block.size(), 4U * kWidth);
        for (int x = 0; x < kWidth; ++x)
            ASSERT_EQ(decoded.block[4 * static_cast<std::size_t>(x)], x + 7 < kWidth ? (x + 7) % 251 : 255) << x;
    };
    expected(DecodePict(PictMaker({0, 0, 1, kWidth}).Indexed(indexed).End()));
    expected(DecodePict(PictMaker({0, 0, 1, kWidth}).Indexed(twice).Indexed(twice).End()));
}

TEST(PictCanvas, ManyRecordsShareARow) {
    PictMaker maker({0, 0, 20, 40});
    for (int i = 39; i >= 0; --i) {
        const auto grey = static_cast<unsigned char>(i);
        maker.Direct(Column(i, i / 2, {{grey, grey, grey}, {grey, grey, grey}}, 39));
    }
    const Decoded decoded = DecodePict(maker.End());
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 40; ++x)
            EXPECT_EQ(PixelAt(decoded, x, y)[0], y == x / 2 || y == x / 2 + 1 ? x : 255) << x << " " << y;
    }
}

}  // namespace
