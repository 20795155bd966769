#include "readers/ImageReaderInterface.h"
#include "readers/LegacyLoad.h"
#include "support/HandlerAccess.h"
#include "support/TemporaryFolder.h"

#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <span>
#include <string>
#include <vector>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::Failure;
using Kavra::Common::PixelBlock;
using Kavra::Common::Result;
using Kavra::Objects::ObjModel;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;

using Bytes = std::vector<unsigned char>;

/// A reader that says and delivers what a test wants, and writes down what it was asked.
class ScriptedReader : public ImageReaderInterface {
public:
    int width = 0, height = 0, rowPitch = 0;
    EFormat format = kR8G8B8A8;
    EDataOrientation orientation = kTopLeft;
    bool opens = true, reads = true;
    Bytes pixels;

    std::string calls;
    unsigned char* buffer = nullptr;  ///< the first row
    Bytes before;                     ///< what the rows held when they came
    int frame = -1;

    void Close() override {}
    Result<> OpenFiles(PictureFiles) override {
        calls += "Open ";
        if (!opens) return std::unexpected(Failure::kMalformed);
        return {};
    }
    int GetWidth() override { return calls += "Width ", width; }
    int GetHeight() override { return calls += "Height ", height; }
    int GetRowPitch() override { return calls += "RowPitch ", rowPitch; }
    EFormat GetFormat() override { return calls += "Format ", format; }
    EDataOrientation GetOrientation() override { return calls += "Orientation ", orientation; }

    Result<> ReadFrame(Kavra::Common::RowSink& rows, int wantedFrame) override {
        calls += "ReadImage ";
        frame = wantedFrame;
        before.clear();
        std::span<const unsigned char> left = pixels;
        for (int rowsLeft = height; rowsLeft > 0;) {
            const std::span<unsigned char> out = rows.NextRows(static_cast<std::size_t>(rowsLeft));
            if (rowsLeft == height) buffer = out.data();
            before.insert(before.end(), out.begin(), out.end());
            const std::span<const unsigned char> part = left.first(std::min(left.size(), out.size()));
            std::ranges::copy(part, out.begin());
            left = left.subspan(part.size());
            rowsLeft -= static_cast<int>(out.size()) / rowPitch;
        }
        if (!reads) return std::unexpected(Failure::kTruncated);
        return {};
    }
};

/// Pixels of the colours given by one letter each: the byte of the letter in all four channels.
Bytes Colour(std::string_view letters) {
    Bytes pixels;
    for (const char letter : letters)
        pixels.insert(pixels.end(), 4, static_cast<unsigned char>(letter));
    return pixels;
}

void Script(ScriptedReader& reader, int width, int height, const Bytes& pixels) {
    reader.width = width;
    reader.height = height;
    reader.rowPitch = width * 4;
    reader.pixels = pixels;
}

/// A description with a value of its own in every field.
ImageDescription Marked() {
    ImageDescription desc;
    desc.width = 71;
    desc.height = 72;
    desc.depth = 73;
    desc.format = kL16;
    desc.rowPitch = 74;
    desc.dataSize = 75;
    desc.textureType = kTextureCube;
    desc.hasTransparentPixels = desc.hasTranslucentPixels = desc.hasAlpha = desc.defaultOrientation = true;
    desc.orientation = kLeftTop;
    desc.gamma = 7.5;
    return desc;
}

void ExpectMarked(const ImageDescription& desc) {
    EXPECT_EQ(desc.width, 71);
    EXPECT_EQ(desc.height, 72);
    EXPECT_EQ(desc.depth, 73);
    EXPECT_EQ(desc.format, kL16);
    EXPECT_EQ(desc.rowPitch, 74);
    EXPECT_EQ(desc.dataSize, 75U);
    EXPECT_EQ(desc.textureType, kTextureCube);
    EXPECT_TRUE(desc.hasAlpha && desc.defaultOrientation);
    EXPECT_EQ(desc.orientation, kLeftTop);
    EXPECT_EQ(desc.gamma, 7.5);
}

class LegacyLoad : public testing::Test {
protected:
    PixelBlock Load(const LoadRequest& request) {
        return LoadThroughReader(reader, desc, path, request).value_or(nullptr);
    }

    /// The block's bytes as `desc` counts them.
    Bytes Pixels(const PixelBlock& block) const { return Bytes(block.get(), block.get() + desc.dataSize); }

    TemporaryFolder folder;
    KString path = Wide(folder.Write("file", "12345678"));
    ScriptedReader reader;
    ImageDescription desc = Marked();
};

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
    EXPECT_EQ(LoadThroughReader(sizes, desc, path, {.level = 3}).error(), Failure::kUnsupported);
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
