#include "readers/ScriptedReader.h"

#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <string>
#include <vector>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using Kavra::Objects::ObjModel;

TEST_F(LegacyLoad, WithNothingToFitTheReadersOwnBlockIsReturned) {
    Script(reader, 2, 3, Colour("abcdef"));
    for (const LoadRequest& request :
         {LoadRequest{}, LoadRequest{.width = -5, .height = -1}, LoadRequest{.width = 2, .height = 3},
          LoadRequest{.width = 1000, .height = 1000, .highQuality = true}}) {
        const std::size_t blocks = ObjModel::BlockCounters().totalBlocks;
        const PixelBlock block = Load(request);
        ASSERT_TRUE(block);
        EXPECT_EQ(block.get(), reader.buffer);
        EXPECT_EQ(ObjModel::BlockCounters().totalBlocks, blocks + 1);
        EXPECT_EQ(Pixels(block), Colour("abcdef"));
    }
}

TEST_F(LegacyLoad, WhatFailedIsTold) {
    const auto reason = [&] { return LoadThroughReader(reader, desc, path, {}).error(); };
    reader.opens = false;
    EXPECT_EQ(reason(), Failure::kMalformed) << "as the reader said of the file";
    reader.opens = true;
    EXPECT_EQ(reason(), Failure::kTooLarge) << "no pixels";
    Script(reader, 2, 3, {});
    reader.reads = false;
    EXPECT_EQ(reason(), Failure::kTruncated) << "as the reader said of the frame";
    EXPECT_EQ(LoadThroughReader(reader, desc, Wide(folder / "missing"), {}).error(), Failure::kCannotOpen);
    EXPECT_EQ(LoadSpecial(desc, path, {}, Other).error(), Failure::kUnsupported);
    EXPECT_EQ(LoadSpecial(desc, {}, {}).error(), Failure::kCannotOpen) << "of a file that could not be opened";
}

TEST_F(LegacyLoad, TheDescriptionIsTheReaders) {
    Script(reader, 2, 3, Colour("abcdef"));
    ASSERT_TRUE(Load({}));
    EXPECT_EQ(desc.width, 2);
    EXPECT_EQ(desc.height, 3);
    EXPECT_EQ(desc.depth, 1);
    EXPECT_EQ(desc.format, kR8G8B8A8);
    EXPECT_EQ(desc.rowPitch, 8);
    EXPECT_EQ(desc.dataSize, 24U);
    EXPECT_EQ(desc.textureType, kTexture2D);
    EXPECT_FALSE(desc.hasTransparentPixels);
    EXPECT_FALSE(desc.hasTranslucentPixels);
    EXPECT_FALSE(desc.hasAlpha);
    EXPECT_TRUE(desc.defaultOrientation);
    EXPECT_EQ(desc.orientation, kTopLeft);
    EXPECT_EQ(desc.gamma, 2.2);
}

/// Frames of one row, each as wide as its number and one more.
class ReaderOfSizes final : public ScriptedReader {
public:
    bool SelectFrame(int wanted) override {
        calls += "Select ";
        Script(*this, wanted + 1, 1, Colour(std::string(static_cast<std::size_t>(wanted + 1), 'x')));
        return wanted < 3;
    }
};

TEST_F(LegacyLoad, AFrameIsChosenBeforeItIsDescribed) {
    ReaderOfSizes sizes;
    const auto block = LoadThroughReader(sizes, desc, path, {.level = 2});
    ASSERT_TRUE(block.has_value());
    EXPECT_EQ(desc.width, 3);
    EXPECT_EQ(sizes.frame, 2);
    EXPECT_TRUE(sizes.calls.starts_with("Open Select Width "));
}

TEST_F(LegacyLoad, AFrameThatThereIsNotLeavesTheDescriptionAlone) {
    ReaderOfSizes sizes;
    EXPECT_EQ(LoadThroughReader(sizes, desc, path, {.level = 3}).error(), Failure::kOutOfRange);
    ExpectMarked(desc);
    EXPECT_EQ(sizes.calls, "Open Select ");
}

class ReaderOfDifferences final : public ScriptedReader {
public:
    void LookForDifferences() override { calls += "Look "; }
    const char* GetDifference() override { return calls += "Difference ", "upside down"; }
};

struct Listener final : ILegacyObserver {
    std::string heard;
    void ReadingsDiffer(const char* how) noexcept override { heard += how; }
};

TEST_F(LegacyLoad, DifferencesAreLookedForOnlyWhereSomebodyHearsOfThem) {
    ReaderOfDifferences silent, heard;
    for (ReaderOfDifferences* const each : {&silent, &heard})
        Script(*each, 1, 1, Colour("x"));
    Listener listener;
    LoadRequest request;
    ASSERT_TRUE(LoadThroughReader(silent, desc, path, request).has_value());
    EXPECT_FALSE(silent.calls.contains("Look") || silent.calls.contains("Difference")) << silent.calls;
    request.preferences.legacyObserver = &listener;
    ASSERT_TRUE(LoadThroughReader(heard, desc, path, request).has_value());
    EXPECT_TRUE(heard.calls.starts_with("Look Open ")) << heard.calls;
    EXPECT_TRUE(heard.calls.ends_with("Difference ")) << heard.calls;
    EXPECT_EQ(listener.heard, "upside down");
}

TEST_F(LegacyLoad, AReaderIsAskedInOrderAndOnce) {
    Script(reader, 1, 1, Colour("a"));
    ASSERT_TRUE(Load({.level = 17}));
    EXPECT_EQ(reader.calls, "Open Width Height Format RowPitch Orientation ReadImage ");
    EXPECT_EQ(reader.frame, 17);
}

TEST_F(LegacyLoad, ThePitchOfAReaderIsKeptWhereNothingIsFitted) {
    Script(reader, 1, 2, Colour("abcd"));
    reader.rowPitch = 8;
    const PixelBlock block = Load({});
    ASSERT_TRUE(block);
    EXPECT_EQ(desc.rowPitch, 8);
    EXPECT_EQ(desc.dataSize, 16U);
    EXPECT_EQ(Pixels(block), Colour("abcd"));
}

TEST_F(LegacyLoad, RowsWithGapsCannotBeFitted) {
    Script(reader, 2, 2, Colour("abcdef"));
    reader.rowPitch = 12;
    const std::size_t blocks = ObjModel::BlockCounters().liveBlocks;
    EXPECT_FALSE(Load({.width = 1}));
    reader.rowPitch = 4;
    reader.pixels = Colour("ab");
    EXPECT_FALSE(Load({.width = 1})) << "nor rows that overlap";
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, blocks);
}

TEST_F(LegacyLoad, AFormatWithoutPixelsCannotBeFitted) {
    Script(reader, 2, 2, Colour("abcd"));
    reader.format = kBC1;
    EXPECT_FALSE(Load({.width = 1}));
    EXPECT_TRUE(Load({}));
}

TEST_F(LegacyLoad, PixelsThatAReaderLeavesAloneAreZero) {
    Script(reader, 16, 16, Colour("a"));
    Bytes dirty(1024, 0xEE);
    {
        const PixelBlock used = Kavra::Common::NewBlock(dirty.size());
        std::ranges::copy(dirty, used.get());
    }
    const PixelBlock block = Load({});
    ASSERT_TRUE(block);
    EXPECT_EQ(reader.before, Bytes(1024, 0));
    EXPECT_EQ(block.get()[4], 0);
    EXPECT_EQ(block.get()[1023], 0);
}

TEST_F(LegacyLoad, AFileThatDoesNotOpenLeavesTheDescriptionAlone) {
    reader.opens = false;
    EXPECT_FALSE(Load({}));
    EXPECT_EQ(reader.calls, "Open ");
    ExpectMarked(desc);
}

TEST_F(LegacyLoad, AFrameThatDoesNotDecodeLeavesTheDescriptionFilledAndNothingElse) {
    Script(reader, 2, 3, Colour("abcdef"));
    reader.reads = false;
    const std::size_t blocks = ObjModel::BlockCounters().liveBlocks;
    EXPECT_FALSE(Load({.orientation = kBottomLeft}));
    EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, blocks);
    EXPECT_EQ(desc.width, 2);
    EXPECT_EQ(desc.height, 3);
    EXPECT_EQ(desc.dataSize, 24U);
    EXPECT_FALSE(desc.defaultOrientation);
    EXPECT_EQ(desc.orientation, kTopLeft) << "the reader's";
    EXPECT_EQ(desc.gamma, 2.2);
}

TEST_F(LegacyLoad, SizesThatNoPictureHasAreRefusedBeforeAnyAllocation) {
    constexpr int kMax = std::numeric_limits<int>::max();
    const std::vector<std::array<int, 3>> sizes = {
        {0, 5, 0},   {5, 0, 20},        {-3, 5, -12},      {5, -3, 20},        {5, 5, 0},
        {5, 5, -20}, {1'000'001, 1, 4}, {1, 1'000'001, 4}, {kMax, kMax, kMax}, {32767, 32767, 131068}};
    for (const auto& [width, height, rowPitch] : sizes) {
        reader = {};
        reader.width = width;
        reader.height = height;
        reader.rowPitch = rowPitch;
        const std::size_t blocks = ObjModel::BlockCounters().totalBlocks;
        EXPECT_FALSE(Load({}));
        EXPECT_EQ(ObjModel::BlockCounters().totalBlocks, blocks);
        EXPECT_EQ(reader.calls.find("ReadImage"), std::string::npos);
        EXPECT_EQ(desc.width, width) << "the description is filled all the same";
        EXPECT_EQ(desc.height, height);
        EXPECT_EQ(desc.dataSize, static_cast<std::uint64_t>(std::int64_t{height} * rowPitch));
    }
}

TEST_F(LegacyLoad, BlocksAboveTheCeilingAreRefused) {
    Script(reader, 10, 10, {});
    ObjModel::SetBlockCeiling(399);
    EXPECT_FALSE(Load({}));
    ObjModel::SetBlockCeiling(400);
    EXPECT_TRUE(Load({}));
    ObjModel::SetBlockCeiling(0);
}

/// Gives out so many blocks and then no more.
class MeagreAllocator : public Kavra::Objects::IMemoryAllocator {
public:
    explicit MeagreAllocator(int blocks) : mLeft(blocks), mPrevious(ObjModel::mDefaultAllocator) {
        ObjModel::mDefaultAllocator = this;
    }
    ~MeagreAllocator() override { ObjModel::mDefaultAllocator = mPrevious; }

    void* Allocate(std::size_t bytes) override {
        if (mLeft-- <= 0) throw std::bad_alloc();
        void* block = mPrevious->Allocate(bytes);
        ++mLive;
        return block;
    }
    void Free(void* block, std::size_t bytes) noexcept override {
        --mLive;
        mPrevious->Free(block, bytes);
    }

    int Live() const { return mLive; }

private:
    int mLeft;
    int mLive = 0;
    IMemoryAllocator* mPrevious;
};

TEST_F(LegacyLoad, WithoutMemoryTheExceptionPassesAndNothingIsKept) {
    Script(reader, 40, 30, Bytes(4800, 77));
    const auto loads = [this](int blocks) {
        const MeagreAllocator allocator(blocks);
        try {
            return Load({.width = 10, .orientation = kRightTop}) != nullptr;
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(allocator.Live(), 0) << blocks;
            return false;
        }
    };
    EXPECT_FALSE(loads(0));
    int blocks = 1;
    while (blocks < 10 && !loads(blocks))
        ++blocks;
    EXPECT_LT(blocks, 10) << "it loads with as many as it takes";
}

TEST_F(LegacyLoad, TypesWithoutAReaderHaveNoPixels) {
    OIIOImageHandlerAccess access;
    for (const int type : {0, 2, 3, 9, -1, 10}) {
        EXPECT_EQ(access.LoadSpecial(desc, path, 0, 0, false, 0, kTopLeft, type), nullptr);
        ExpectMarked(desc);
    }
}

}  // namespace
