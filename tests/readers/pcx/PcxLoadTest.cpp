// Loading PCX pictures through the handler's own steps: limits, turning, and pixels that no colour was found for.

#include "common/PixelBlock.h"
#include "readers/ImageFileType.h"
#include "readers/pcx/PcxBytes.h"
#include "support/HandlerAccess.h"
#include "support/MessageRecorder.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using Kavra::Common::PixelBlock;
using Kavra::Objects::ObjModel;
using testing::ElementsAre;
using testing::IsEmpty;

class LoadPcx : public testing::Test {
protected:
    PixelBlock Load(const ByteBuilder& file, int maxWidth = 0, int maxHeight = 0,
                    EDataOrientation orientation = kTopLeft) {
        const auto path = Wide(folder.Write("picture.pcx", file.Bytes()));
        return PixelBlock(access.LoadSpecial(desc, path, maxWidth, maxHeight, false, 0, orientation, PCX));
    }

    Bytes Pixels(const PixelBlock& block) const { return {block.get(), block.get() + desc.dataSize}; }

    TemporaryFolder folder;
    OIIOImageHandlerAccess access;
    ImageDescription desc;
    MessageRecorder messages;
};

ByteBuilder ThreeByTwo() {
    return PcxHead(PcxFields(8, 1, 3, 2, 3), {1, 2, 3, 4, 5, 6}).Append(PcxTail());
}

TEST_F(LoadPcx, GivesTheReadersBlockAndDescribesIt) {
    const PixelBlock block = Load(ThreeByTwo());
    ASSERT_TRUE(block);
    EXPECT_EQ(Pixels(block), InTailColours({1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(desc.width, 3);
    EXPECT_EQ(desc.height, 2);
    EXPECT_EQ(desc.depth, 1);
    EXPECT_EQ(desc.format, kR8G8B8A8);
    EXPECT_EQ(desc.rowPitch, 12);
    EXPECT_EQ(desc.dataSize, 24U);
    EXPECT_EQ(desc.textureType, kTexture2D);
    EXPECT_FALSE(desc.hasAlpha);
    EXPECT_TRUE(desc.defaultOrientation);
    EXPECT_EQ(desc.orientation, kTopLeft);
    EXPECT_EQ(desc.gamma, 2.2);
}

TEST_F(LoadPcx, TurnsThePicture) {
    const PixelBlock flipped = Load(ThreeByTwo(), 0, 0, kBottomLeft);
    ASSERT_TRUE(flipped);
    EXPECT_EQ(Pixels(flipped), InTailColours({4, 5, 6, 1, 2, 3}));
    EXPECT_EQ(desc.orientation, kBottomLeft);
    EXPECT_FALSE(desc.defaultOrientation);

    const PixelBlock rotated = Load(ThreeByTwo(), 0, 0, kRightTop);
    ASSERT_TRUE(rotated);
    EXPECT_EQ(Pixels(rotated), InTailColours({3, 6, 2, 5, 1, 4}));
    EXPECT_EQ(desc.width, 2);
    EXPECT_EQ(desc.height, 3);
    EXPECT_EQ(desc.rowPitch, 8);
}

TEST_F(LoadPcx, ShrinksEachSideToItsOwnLimit) {
    ByteBuilder file = PcxHead(PcxFields(8, 1, 40, 30, 40));
    const PixelBlock block = Load(file.Fill(1200, 99).Append(PcxTail()), 10, 100);
    ASSERT_TRUE(block);
    EXPECT_EQ(desc.width, 10);
    EXPECT_EQ(desc.height, 30);
    const Bytes pixel = InTailColours({99});
    for (std::size_t at = 0; at < desc.dataSize; at += 4)
        ASSERT_TRUE(std::equal(pixel.begin(), pixel.end(), block.get() + at)) << at;
}

TEST_F(LoadPcx, PixelsWithoutAColourAreTransparentBlack) {
    PcxHeader header = PcxFields(8, 1, 3, 1, 3);
    header.version = 2;
    const PixelBlock block = Load(PcxHead(header, {1, 16, 2}));
    ASSERT_TRUE(block);
    Bytes expected = InHeaderColours({1, 0, 2});
    std::fill_n(expected.begin() + 4, 4, 0);
    EXPECT_EQ(Pixels(block), expected);
}

TEST_F(LoadPcx, ATruncatedPictureLoadsWithItsWarnings) {
    ASSERT_TRUE(Load(PcxHead(PcxFields(8, 3, 2, 2, 2), {1, 2, 3, 4, 5, 6, 7, 8, 9})));
    EXPECT_THAT(messages.Texts(),
                ElementsAre(L"PCXReader::Invalid Frame -- out of data", L"PCXReader::Invalid Frame -- out of data"));
}

TEST_F(LoadPcx, ASmallFileThatClaimsAHugePictureIsRefusedInSilence) {
    PcxHeader header = PcxFields(8, 3, 1, 1, 0xFFFF);
    header.xMax = header.yMax = 0xFFFF;
    const std::size_t blocks = ObjModel::BlockCounters().liveBlocks;
    EXPECT_FALSE(Load(PcxHead(header, Bytes(1000, 0xFF))));
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, blocks);
    EXPECT_THAT(messages.Texts(), IsEmpty());
    EXPECT_EQ(desc.width, 65'536) << "the description is filled all the same";
}

TEST_F(LoadPcx, AFileOfAnotherKindIsRefused) {
    EXPECT_FALSE(Load(ByteBuilder(200)));
    EXPECT_EQ(desc.width, ImageDescription().width);
}

}  // namespace
