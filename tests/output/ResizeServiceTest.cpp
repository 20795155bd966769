#include "output/Resizing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

using namespace Kavra::Devices;
using Kavra::Objects::EMessageKind;
using Kavra::Objects::ObjModel;
using Kavra::Tests::Block;
using Kavra::Tests::Bytes;
using Kavra::Tests::Counting;
using Kavra::Tests::CountingAllocator;
using Kavra::Tests::kUntouched;
using Kavra::Tests::MessageRecorder;
using Kavra::Tests::Resizing;
using Kavra::Tests::Size;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct ResizeMethods : Resizing {};
struct ResizeCopy : Resizing {};
struct ResizeCropOrPad : Resizing {};

// --- methods ---------------------------------------------------------------------------------------------------------

TEST_F(ResizeMethods, OtherMethodsAreAnError) {
    for (const int method : {-1, 3, 4, INT_MAX}) {
        messages.Clear();
        EXPECT_FALSE(Run(static_cast<EResizeMethod>(method)));
        EXPECT_THAT(messages.Entries(),
                    ElementsAre(MessageRecorder::Entry{EMessageKind::kError, L"wrong resize method!", false}));
        EXPECT_EQ(pitch, kUntouched);
    }
}

TEST_F(ResizeMethods, TheBlockIsFreedWithItsWrapper) {
    for (const EResizeMethod method : {kResizeCopy, kResizeFilter, kResizeCropOrPad}) {
        const Block block = Run(method);
        ASSERT_TRUE(block);
        EXPECT_EQ(blocks.LiveBlocks(), 1U);
    }
    EXPECT_EQ(blocks.LiveBlocks(), 0U);
}

TEST_F(ResizeMethods, WithoutMemoryForTheWrapperTheBlockIsFreed) {
    for (const EResizeMethod method : {kResizeCopy, kResizeFilter, kResizeCropOrPad}) {
        CountingAllocator objects(ObjModel::mHeapAllocator);
        objects.Grant(0);
        EXPECT_FALSE(Run(method));
        EXPECT_EQ(blocks.LiveBlocks(), 0U);
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ResizeMethods, WithoutMemoryForTheBlockTheAnswerIsNull) {
    blocks.Grant(0);
    for (const EResizeMethod method : {kResizeCopy, kResizeFilter, kResizeCropOrPad})
        EXPECT_FALSE(Run(method));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

// --- copy ------------------------------------------------------------------------------------------------------------

TEST_F(ResizeCopy, TheBlockAndThePitchAreTheSources) {
    srcPitch = 17;
    EXPECT_EQ(Result(kResizeCopy, 64), bytes);
    EXPECT_EQ(pitch, 17);
}

TEST_F(ResizeCopy, EverythingElseIsIgnored) {
    srcPitch = -7;
    srcSize = {-1, INT_MAX, 0};
    dstSize = {0, INT_MIN, 9};
    format = kUnknown;
    type = kTextureCube;
    filter = static_cast<EImageFilterType>(99);
    EXPECT_EQ(Result(kResizeCopy, 64), bytes);
    EXPECT_EQ(pitch, -7);
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ResizeCopy, NothingIsAnEmptyBlock) {
    bytes.clear();
    for (const void* none : {static_cast<const void*>(nullptr), static_cast<const void*>(this)}) {
        data = none;
        pitch = kUntouched;
        const Block block = Run(kResizeCopy);
        ASSERT_TRUE(block);
        EXPECT_NE(block->mData, nullptr);
        EXPECT_EQ(pitch, 16);
    }
}

TEST_F(ResizeCopy, BytesFromNowhereAreNull) {
    data = nullptr;
    EXPECT_FALSE(Run(kResizeCopy));
    EXPECT_EQ(pitch, 16);
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

// --- crop or pad -----------------------------------------------------------------------------------------------------

TEST_F(ResizeCropOrPad, ASmallerBlockGetsTheUpperLeftPixels) {
    EXPECT_THAT(Result(kResizeCropOrPad, 16),
                testing::Optional(ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 17, 18, 19, 20, 21, 22, 23, 24)));
    EXPECT_EQ(pitch, 8);
}

TEST_F(ResizeCropOrPad, ALargerBlockIsFilledUpWithZeros) {
    dstSize = {8, 8, 1};
    Bytes expected(256, 0);
    for (std::size_t row = 0; row < 4; ++row)
        std::memcpy(expected.data() + row * 32, bytes.data() + row * 16, 16);
    EXPECT_EQ(Result(kResizeCropOrPad, 256), expected);
    EXPECT_EQ(pitch, 32);
}

TEST_F(ResizeCropOrPad, AWiderSourceRunsIntoTheNextRowAndItsLastRowShows) {
    format = kL8;
    Use({1, 2, 3, 4, 5, 6});
    srcPitch = 3;
    dstSize = {2, 4, 1};  // two rows of 3 bytes into four rows of 2
    EXPECT_THAT(Result(kResizeCropOrPad, 8), testing::Optional(ElementsAre(1, 2, 4, 5, 6, 0, 0, 0)));
    EXPECT_EQ(pitch, 2);
}

TEST_F(ResizeCropOrPad, AWiderSourceEndsAtTheEndOfTheBlock) {
    format = kL8;
    Use({1, 2, 3, 4, 5, 6});
    srcPitch = 3;
    dstSize = {2, 2, 1};  // as many rows: the last one would end a byte behind the block
    EXPECT_THAT(Result(kResizeCropOrPad, 4), testing::Optional(ElementsAre(1, 2, 4, 5)));
    srcPitch = 6;
    dstSize = {1, 3, 1};  // one row of 6 over three rows of 1
    EXPECT_THAT(Result(kResizeCropOrPad, 3), testing::Optional(ElementsAre(1, 2, 3)));
}

TEST_F(ResizeCropOrPad, WhereRowsAreFewerTheirLengthIsTheBlocksThoughTheSourcesAreShorter) {
    format = kL8;
    Use({1, 2, 3, 4, 5, 6, 7, 8});
    srcPitch = 2;
    dstSize = {3, 2, 1};  // two of four rows, three bytes of each
    EXPECT_THAT(Result(kResizeCropOrPad, 6), testing::Optional(ElementsAre(1, 2, 3, 3, 4, 5)));
}

TEST_F(ResizeCropOrPad, ALongerRowEndsAtTheEndOfTheSource) {
    format = kL8;
    Use({1, 2, 3});
    srcPitch = 1;
    dstSize = {4, 2, 1};  // the second row would read 4 bytes from the second of 3
    EXPECT_THAT(Result(kResizeCropOrPad, 8), testing::Optional(ElementsAre(1, 2, 3, 0, 2, 3, 0, 0)));
}

TEST_F(ResizeCropOrPad, APartOfARowIsNoRow) {
    format = kL8;
    Use({1, 2, 3, 4, 5});
    srcPitch = 2;
    dstSize = {2, 3, 1};
    EXPECT_THAT(Result(kResizeCropOrPad, 6), testing::Optional(ElementsAre(1, 2, 3, 4, 0, 0)));
}

TEST_F(ResizeCropOrPad, APitchBelowOneGivesZeros) {
    for (const int none : {0, -16, INT_MIN}) {
        srcPitch = none;
        EXPECT_THAT(Result(kResizeCropOrPad, 16), testing::Optional(Each(0)));
        EXPECT_EQ(pitch, 8);
    }
    srcPitch = INT_MAX;  // longer than the whole source
    EXPECT_THAT(Result(kResizeCropOrPad, 16), testing::Optional(Each(0)));
}

TEST_F(ResizeCropOrPad, EmptySizesAndFormatsAreEmptyBlocks) {
    for (const Size size : {Size{0, 2, 1}, Size{2, 0, 1}}) {
        dstSize = size;
        EXPECT_TRUE(Run(kResizeCropOrPad));
        EXPECT_EQ(pitch, 4 * size.x);
    }
    dstSize = {2, 2, 1};
    for (const EFormat none : {kUnknown, kBC1, static_cast<EFormat>(12345)}) {
        format = none;
        EXPECT_TRUE(Run(kResizeCropOrPad));
        EXPECT_EQ(pitch, 0);
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ResizeCropOrPad, NegativeSizesAreNull) {
    for (const Size size :
         {Size{-1, 2, 1}, Size{2, -1, 1}, Size{-2, -2, 1}, Size{INT_MIN, 1, 1}, Size{1, INT_MIN, 1}}) {
        dstSize = size;
        EXPECT_FALSE(Run(kResizeCropOrPad));
        format = kUnknown;
        EXPECT_FALSE(Run(kResizeCropOrPad));
        format = kR8G8B8A8;
    }
}

TEST_F(ResizeCropOrPad, SizesBeyondMemoryAreNull) {
    for (const Size size : {Size{INT_MAX, 1, 1}, Size{INT_MAX / 4, INT_MAX, 1}, Size{INT_MAX, INT_MAX, 1}}) {
        dstSize = size;
        EXPECT_FALSE(Run(kResizeCropOrPad));
    }
    dstSize = {INT_MAX / 4, INT_MAX, 1};
    (void)Run(kResizeCropOrPad);
    EXPECT_EQ(pitch, INT_MAX / 4 * 4);
}

TEST_F(ResizeCropOrPad, BytesFromNowhereAreNull) {
    data = nullptr;
    EXPECT_FALSE(Run(kResizeCropOrPad));
    EXPECT_EQ(pitch, 8);
    bytes.clear();
    EXPECT_THAT(Result(kResizeCropOrPad, 16), testing::Optional(Each(0)));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(ResizeCropOrPad, TypeFilterDepthAndSourceSizeAreIgnored) {
    type = kTextureVolume;
    filter = static_cast<EImageFilterType>(99);
    srcSize = {-1, -1, -1};
    dstSize.z = -9;
    EXPECT_TRUE(Run(kResizeCropOrPad));
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

}  // namespace
