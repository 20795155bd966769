// What a legacy load makes of the rows of a reader: another size, another order.

#include "readers/ScriptedReader.h"

#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using Kavra::Objects::ObjModel;

TEST_F(LegacyLoad, ALimitShrinksItsOwnSideOnly) {
    Script(reader, 40, 30, Bytes(4800, 77));
    const PixelBlock narrow = Load({.width = 10});
    ASSERT_TRUE(narrow);
    EXPECT_EQ(desc.width, 10);
    EXPECT_EQ(desc.height, 30);
    EXPECT_EQ(desc.rowPitch, 40);
    EXPECT_EQ(desc.dataSize, 1200U);
    EXPECT_EQ(Pixels(narrow), Bytes(1200, 77));

    const PixelBlock low = Load({.width = 100, .height = 7});
    ASSERT_TRUE(low);
    EXPECT_EQ(desc.width, 40);
    EXPECT_EQ(desc.height, 7);
    EXPECT_EQ(Pixels(low), Bytes(1120, 77));
}

TEST_F(LegacyLoad, TheFirstBlockIsGivenBackOnceThePictureIsFitted) {
    Script(reader, 40, 30, Bytes(4800, 77));
    const std::size_t blocks = ObjModel::BlockCounters().liveBlocks;
    {
        const PixelBlock block = Load({.width = 10, .orientation = kRightTop});
        ASSERT_TRUE(block);
        EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, blocks + 1);
    }
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, blocks);
}

TEST_F(LegacyLoad, HighQualityFiltersWhatIsSampledOtherwise) {
    Bytes stripes;
    for (int row = 0; row < 20; ++row) {
        for (int column = 0; column < 20; ++column)
            stripes.insert(stripes.end(), 4, column % 2 == 0 ? 0 : 255);
    }
    const auto isMixed = [](unsigned char value) { return value != 0 && value != 255; };
    Script(reader, 20, 20, stripes);
    const PixelBlock sampled = Load({.width = 19, .height = 19});
    ASSERT_TRUE(sampled);
    EXPECT_TRUE(std::ranges::none_of(Pixels(sampled), isMixed));
    const PixelBlock filtered = Load({.width = 19, .height = 19, .highQuality = true});
    ASSERT_TRUE(filtered);
    EXPECT_TRUE(std::ranges::any_of(Pixels(filtered), isMixed));
}

TEST_F(LegacyLoad, PreferencesChooseTheFilterAndWhatItLooksAt) {
    Script(reader, 2, 1, {255, 0, 0, 255, 0, 0, 0, 0});
    LoadPreferences preferences;
    preferences.choosesFilter = true;
    preferences.filter = kResampleBox;
    const PixelBlock mean = Load({.width = 1, .preferences = preferences});
    ASSERT_TRUE(mean);
    EXPECT_EQ(Pixels(mean), (Bytes{128, 0, 0, 128})) << "of red and of nothing";
    preferences.alphaWeighted = true;
    const PixelBlock weighted = Load({.width = 1, .preferences = preferences});
    ASSERT_TRUE(weighted);
    EXPECT_EQ(Pixels(weighted), (Bytes{255, 0, 0, 128}));
}

TEST_F(LegacyLoad, OtherFormatsKeepTheirChannelsAndType) {
    reader.format = kL16;
    reader.width = reader.height = 40;
    reader.rowPitch = 80;
    for (int i = 0; i < 1600; ++i)
        reader.pixels.insert(reader.pixels.end(), {0x34, 0x12});
    const PixelBlock block = Load({.width = 20, .height = 10});
    ASSERT_TRUE(block);
    EXPECT_EQ(desc.format, kL16);
    EXPECT_EQ(desc.rowPitch, 40);
    ASSERT_EQ(desc.dataSize, 400U);
    for (std::size_t i = 0; i < 400; i += 2) {
        ASSERT_EQ(block.get()[i], 0x34);
        ASSERT_EQ(block.get()[i + 1], 0x12);
    }
}

TEST_F(LegacyLoad, RowsAreReorderedToTheOrientationWanted) {
    Script(reader, 2, 3,
           Colour("ab"
                  "cd"
                  "ef"));
    const PixelBlock flipped = Load({.orientation = kBottomLeft});
    ASSERT_TRUE(flipped);
    EXPECT_EQ(Pixels(flipped), Colour("ef"
                                      "cd"
                                      "ab"));
    EXPECT_EQ(desc.orientation, kBottomLeft);
    EXPECT_FALSE(desc.defaultOrientation);
    EXPECT_EQ(desc.rowPitch, 8);

    const PixelBlock rotated = Load({.orientation = kRightTop});
    ASSERT_TRUE(rotated);
    EXPECT_EQ(Pixels(rotated), Colour("bdf"
                                      "ace"))
        << "a quarter turn clockwise displays it";
    EXPECT_EQ(desc.width, 3);
    EXPECT_EQ(desc.height, 2);
    EXPECT_EQ(desc.rowPitch, 12);
    EXPECT_EQ(desc.orientation, kRightTop);
}

TEST_F(LegacyLoad, TheOrientationOfTheReaderIsWhereReorderingStarts) {
    Script(reader, 2, 3,
           Colour("ab"
                  "cd"
                  "ef"));
    reader.orientation = kBottomLeft;
    const PixelBlock kept = Load({.orientation = kBottomLeft});
    ASSERT_TRUE(kept);
    EXPECT_EQ(kept.get(), reader.buffer);
    EXPECT_FALSE(desc.defaultOrientation);
    EXPECT_EQ(desc.orientation, kBottomLeft);

    const PixelBlock upright = Load({});
    ASSERT_TRUE(upright);
    EXPECT_EQ(Pixels(upright), Colour("ef"
                                      "cd"
                                      "ab"));
    EXPECT_TRUE(desc.defaultOrientation);
    EXPECT_EQ(desc.orientation, kTopLeft);
}

TEST_F(LegacyLoad, LimitsApplyBeforeRotation) {
    Script(reader, 40, 10, Bytes(1600, 5));
    const PixelBlock block = Load({.width = 20, .orientation = kRightTop});
    ASSERT_TRUE(block);
    EXPECT_EQ(desc.width, 10);
    EXPECT_EQ(desc.height, 20);
    EXPECT_EQ(desc.rowPitch, 40);
    EXPECT_EQ(Pixels(block), Bytes(800, 5));
}

TEST_F(LegacyLoad, AnUnknownOrientationIsTakenAsUprightButReported) {
    Script(reader, 2, 2, Colour("abcd"));
    const PixelBlock block = Load({.orientation = static_cast<EDataOrientation>(9)});
    ASSERT_TRUE(block);
    EXPECT_EQ(Pixels(block), Colour("abcd"));
    EXPECT_EQ(desc.orientation, 9);
    EXPECT_FALSE(desc.defaultOrientation);
}

}  // namespace
