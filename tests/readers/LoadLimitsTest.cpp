// How large a picture of each format may be: the one rule, and what each counts beside its block.

#include "common/Limits.h"
#include "legacy/CalsFile.h"
#include "load/geometry/RowReshape.h"
#include "readers/FileSamples.h"
#include "readers/FileTypeDetection.h"
#include "readers/ImageFileType.h"
#include "readers/flic/FlicBytes.h"
#include "readers/pict/PictMaker.h"
#include "support/HandlerAccess.h"
#include "support/Loading.h"
#include "support/MessageRecorder.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/ImageLimits.h>
#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <format>
#include <fstream>
#include <memory>
#include <new>
#include <span>
#include <vector>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using Kavra::Objects::ObjModel;

/// Gives nothing of a megabyte or more, and remembers what was asked for.
class SmallBlocksOnly final : public Kavra::Objects::IMemoryAllocator {
public:
    SmallBlocksOnly() : mPrevious(ObjModel::mDefaultAllocator) { ObjModel::mDefaultAllocator = this; }
    ~SmallBlocksOnly() override { ObjModel::mDefaultAllocator = mPrevious; }

    void* Allocate(std::size_t bytes) override {
        mLargest = std::max(mLargest, bytes);
        if (bytes >= std::size_t{1} << 20) throw std::bad_alloc();
        return mPrevious->Allocate(bytes);
    }
    void Free(void* block, std::size_t bytes) noexcept override { mPrevious->Free(block, bytes); }

    std::size_t Largest() const { return mLargest; }

private:
    std::size_t mLargest = 0;
    Kavra::Objects::IMemoryAllocator* mPrevious;
};

class LoadLimits : public testing::Test {
protected:
    LoadLimits() { ObjModel::SetBlockCeiling(std::size_t{1} << 50); }
    ~LoadLimits() override {
        SetImageLimits({});
        ObjModel::SetBlockCeiling(0);
    }

    /// Whether a load of the file asks for a block of at least `bytes` bytes.
    bool AsksFor(const std::filesystem::path& path, int fileType, std::uint64_t bytes) {
        const SmallBlocksOnly allocator;
        try {
            EXPECT_EQ(access.LoadSpecial(desc, Wide(path), 0, 0, false, 0, kTopLeft, fileType), nullptr);
        } catch (const std::bad_alloc&) {
            EXPECT_GE(allocator.Largest(), bytes);
            return true;
        }
        EXPECT_LT(allocator.Largest(), std::size_t{1} << 20);
        return false;
    }
    bool Loads(const std::filesystem::path& path) {
        messages.Clear();
        const bool loaded = LoadFile(access.handler, path).has_value();
        const std::vector<std::wstring> expected = {L"format is not supported"};
        EXPECT_TRUE(loaded || messages.Texts() == expected);
        return loaded;
    }
    /// Whether `bytes` is what the file's load counts.
    void ExpectCost(const std::filesystem::path& path, std::uint64_t bytes) {
        SetImageLimits({.maxBytes = bytes});
        EXPECT_TRUE(Loads(path)) << path << " takes more than " << bytes;
        SetImageLimits({.maxBytes = bytes - 1});
        EXPECT_FALSE(Loads(path)) << path << " takes less than " << bytes;
    }

    /// What a load of a picture of four bytes a pixel holds at a time.
    static std::uint64_t Held(int width, int height, const LoadRequest& request) {
        const Reshaping wanted = ReshapingFor(request, request.width < 1 ? width : std::min(width, request.width),
                                              request.height < 1 ? height : std::min(height, request.height), kTopLeft);
        return RowReshape::BytesFor({.format = kR8G8B8A8, .width = width, .height = height}, wanted);
    }

    std::filesystem::path Cals(int width, int height, const Bytes& codes = {}) {
        return folder.Write(
            "x.cal",
            Kavra::Legacy::CalsHeaderBytes({.counts = std::format("{},{}", width, height)}).Append(codes).Bytes());
    }
    std::filesystem::path Flic(unsigned width, unsigned height) {
        return folder.Write("x.flc", FlicHeaderBytes(1, width, height).Bytes());
    }
    std::filesystem::path Pcx(unsigned lastColumn, unsigned lastRow) {
        ByteBuilder file(128);
        file.At(0).Byte(10).Byte(5).Byte(1).Byte(8).At(8).Little16(lastColumn).Little16(lastRow).At(65).Byte(3);
        return folder.Write("x.pcx", file.Bytes());
    }
    std::filesystem::path Pict(const Box& frame) {
        return folder.Write("x.pct", PictMaker(frame).Op(0x00).End().Fill(1025, 0).Bytes());
    }
    std::filesystem::path Raster(int columns, int rows) {
        folder.Write("x.hdr", std::format("NCOLS {}\nNROWS {}\nTOTALROWBYTES 0\n", columns, rows));
        return folder.Write("x.bil", "0");
    }

    TemporaryFolder folder;
    MessageRecorder messages;
    OIIOImageHandlerAccess access;
    ImageDescription desc;
};

TEST_F(LoadLimits, ADrawingOfAFewKilobytesMayBeAnyPageThatIsScanned) {
    if (Kavra::Common::MemoryShare() < Kavra::Common::kDefaultMaxBytes) GTEST_SKIP() << "too little memory";
    // Group 4 needs one bit for a row that is like the one above it: 17,600 rows are 2,200 bytes.
    EXPECT_TRUE(AsksFor(Cals(13'600, 17'600, Bytes(2200, 0xFF)), CALS, 13'600U * 17'600 * 4));
    EXPECT_TRUE(AsksFor(Cals(23'170, 23'170), CALS, 23'170U * 23'170 * 4)) << "2,147,395,600 bytes";
}

TEST_F(LoadLimits, AFewBytesNeverCostMoreThanTwoGibibytes) {
    EXPECT_FALSE(AsksFor(Cals(23'171, 23'171), CALS, 0)) << "2,147,580,964 bytes";
    EXPECT_FALSE(AsksFor(Cals(1'000'000, 1'000'000), CALS, 0));
    EXPECT_FALSE(AsksFor(Pcx(0xFFFF, 0xFFFF), PCX, 0));
    EXPECT_FALSE(AsksFor(Pict({-32768, -32768, 32767, 32767}), PICT, 0));
    EXPECT_FALSE(AsksFor(Flic(65'535, 65'535), FLIC, 0));
    EXPECT_FALSE(AsksFor(Raster(1'000'000, 2148), Spot, 0));
    ByteBuilder rlc;
    rlc.Big16(32'767).Big16(32'767).Fill(4 + 2 * 32'767, 0);
    EXPECT_FALSE(AsksFor(folder.Write("x.rlc", rlc.Bytes()), RLC, 0));
}

TEST_F(LoadLimits, TheHostMayAllowMoreThanThat) {
    constexpr std::uint64_t kBlock = 23'171U * 23'171U * std::uint64_t{4};
    if (Kavra::Common::MemoryShare() < kBlock) GTEST_SKIP() << "too little memory";
    SetImageLimits({.maxBytes = kBlock});
    EXPECT_TRUE(AsksFor(Cals(23'171, 23'171), CALS, kBlock));
    SetImageLimits({.maxPixels = kBlock / 4});
    EXPECT_TRUE(AsksFor(Cals(23'171, 23'171), CALS, kBlock));
    SetImageLimits({.maxPixels = kBlock / 4 - 1});
    EXPECT_FALSE(AsksFor(Cals(23'171, 23'171), CALS, kBlock));
}

TEST_F(LoadLimits, AnAnimationCountsTheIndicesBesideItsBlock) {
    EXPECT_FALSE(AsksFor(Flic(20'730, 20'730), FLIC, 0)) << "4 and 1 bytes a pixel: 2,148,664,500 and some";
    // 100 x 100 pixels: 40,000 bytes, 10,000 indices, and 64 bits that say what of them was written.
    ExpectCost(Flic(100, 100), 50'008);
}

TEST_F(LoadLimits, APictureCountsItsFileAndItsRecords) {
    const auto empty = Pict({0, 0, 10, 10});
    const std::uint64_t fileBytes = std::filesystem::file_size(empty);
    ExpectCost(empty, 400 + fileBytes);
    ByteBuilder drawn = PictMaker({0, 0, 2, 3}).Indexed(SixPixels()).End();
    drawn.Fill(1025, 0);
    const auto one = folder.Write("one.pct", drawn.Bytes());
    ExpectCost(one, 24 + std::filesystem::file_size(one) + 512 + 3 * 6);
}

TEST_F(LoadLimits, APictureOfManyBitmapsIsGivenUpWhileItIsOpened) {
    PictMaker maker({0, 0, 100, 100});
    const PictMap dot = {.bounds = {0, 0, 1, 1}, .rowBytes = 1, .data = {0}};
    for (int i = 0; i < 10'000; ++i)
        maker.Bitmap(dot);
    const auto path = folder.Write("many.pct", maker.End().Fill(1025, 0).Bytes());
    EXPECT_TRUE(IsDescribed(access.handler, path));
    SetImageLimits({.maxBytes = 5'120'000});
    EXPECT_FALSE(IsDescribed(access.handler, path)) << "512 bytes each, and the file";
    SetImageLimits({.maxBytes = 1'000'000});
    EXPECT_FALSE(Loads(path));
}

TEST_F(LoadLimits, TheOthersCountTheirBlock) {
    ExpectCost(Cals(100, 100), 40'000);
    ExpectCost(Pcx(99, 99), 40'000);
    ExpectCost(Raster(100, 100), 10'000);
    ByteBuilder rlc;
    rlc.Big16(100).Big16(100).Fill(4 + 2 * 100, 0);
    ExpectCost(folder.Write("x.rlc", rlc.Bytes()), 40'000);
}

TEST_F(LoadLimits, APictureThatIsShrunkOrRotatedCountsAsItIsAndWhatItHoldsAtATime) {
    const auto loads = [this](const LoadRequest& request, std::uint64_t maxBytes) {
        SetImageLimits({.maxBytes = maxBytes});
        return LoadFile(access.handler, Cals(100, 100), request).has_value();
    };
    EXPECT_TRUE(loads({.width = 100, .height = 1000}, 40'000)) << "neither";
    const LoadRequest rotated = {.orientation = kLeftTop}, shrunk = {.width = 50, .height = 10};
    const LoadRequest both = {.width = 50, .height = 10, .orientation = kLeftTop};
    for (const LoadRequest& request : {rotated, shrunk, both}) {
        const std::uint64_t held = Held(100, 100, request);
        EXPECT_LE(held, 80'000U) << "two blocks at most";
        const std::uint64_t cost = std::max<std::uint64_t>(held, 40'000);
        EXPECT_TRUE(loads(request, cost));
        EXPECT_FALSE(loads(request, cost - 1));
    }
    if (Kavra::Common::MemoryShare() < Kavra::Common::kDefaultMaxBytes) return;
    SetImageLimits({});
    const SmallBlocksOnly allocator;
    EXPECT_THROW(access.LoadSpecial(desc, Wide(Cals(13'600, 17'600)), 0, 0, false, 0, kLeftTop, CALS), std::bad_alloc)
        << "a page rotated takes less than 2 GiB";
}

TEST_F(LoadLimits, ADrawingThatIsTooLargeToBeHeldIsStillShown) {
    constexpr int kSide = 24'000;  // 2.3 GB as it is
    const LoadRequest shrunk = {.width = 300, .height = 400};
    const auto path = Cals(kSide, kSide, Bytes(100, 0xFF));
    EXPECT_FALSE(AsksFor(path, CALS, 0));
    const std::optional<Loaded> loaded = LoadFile(access.handler, path, shrunk);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->desc.width, 300);
    EXPECT_EQ(loaded->desc.height, 400);
    Bytes black;
    for (int i = 0; i < 300 * 400; ++i)
        black.insert(black.end(), {0, 0, 0, 255});
    EXPECT_EQ(loaded->bytes, black) << "white paper, in negative";
    SetImageLimits({.maxBytes = std::uint64_t{kSide} * kSide * 4 - 1});
    EXPECT_FALSE(LoadFile(access.handler, path, shrunk)) << "the host counts the pixels as the file has them";
    SetImageLimits({.maxPixels = std::uint64_t{kSide} * kSide - 1});
    EXPECT_FALSE(LoadFile(access.handler, path, shrunk));
}

TEST_F(LoadLimits, AFewBytesNeverKeepALoadBusyForLong) {
    const auto isRefused = [this](const std::filesystem::path& path, int fileType) {
        const SmallBlocksOnly allocator;
        return access.LoadSpecial(desc, Wide(path), 2, 2, false, 0, kTopLeft, fileType) == nullptr;
    };
    EXPECT_TRUE(isRefused(Cals(1'000'000, 1'000'000), CALS));
    EXPECT_TRUE(isRefused(Cals(63'246, 63'246), CALS)) << "4,000,056,516 pixels";
    EXPECT_TRUE(isRefused(Pcx(0xFFFF, 0xFFFF), PCX));
    EXPECT_TRUE(isRefused(Pict({-32768, -32768, 32767, 32767}), PICT));
    EXPECT_TRUE(isRefused(Flic(65'535, 65'535), FLIC));
    EXPECT_TRUE(isRefused(Flic(47'000, 47'000), FLIC)) << "for its indices, a byte each";
    EXPECT_TRUE(isRefused(Raster(1'000'000, 4'001), Spot));
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // which need more address space than this leaves
/// Leaves the process so much address space more than it has.
void LeaveAddressSpace(std::uint64_t bytes) {
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t all = pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)) + bytes;
    const rlimit limit = {.rlim_cur = all, .rlim_max = all};
    setrlimit(RLIMIT_AS, &limit);
}

TEST_F(LoadLimits, WithoutMemoryToRotateAPictureThereIsNone) {
    const auto path = Cals(5000, 5000);  // a block of 100 MB, and another one
    const auto load = [&](std::uint64_t bytes) {
        ObjModel::ReleaseKeptBlock();
        LeaveAddressSpace(bytes);
        IImageHandler& handler = access.handler;
        const auto* block = handler.LoadTexture(desc, Wide(path), 0, 0, 0, kUnknown, false, 0, kLeftTop, nullptr);
        std::_Exit(block == nullptr ? 7 : 8);
    };
    const auto isAnswer = [](int status) { return WIFEXITED(status) && WEXITSTATUS(status) >= 7; };
    for (std::uint64_t bytes = 20'000'000; bytes < 400'000'000; bytes += 30'000'000)
        EXPECT_EXIT(load(bytes), isAnswer, "") << bytes;
    EXPECT_EXIT(load(20'000'000), testing::ExitedWithCode(7), "");
    EXPECT_EXIT(load(1'000'000'000), testing::ExitedWithCode(8), "");
}
/// Takes all rows of a picture in the same memory.
class OneRowForAll final : public Kavra::Common::RowSink {
public:
    explicit OneRowForAll(int rowBytes) : mRow(static_cast<std::size_t>(rowBytes)) {}
    std::span<unsigned char> NextRows(std::size_t) override {
        std::ranges::fill(mRow, 0);
        return mRow;
    }

private:
    Bytes mRow;
};

/// A picture of more than a gigabyte, of each format that gives its rows as it reads them.
class LargePictures : public LoadLimits {
protected:
    struct Large {
        int fileType;
        std::filesystem::path path;
    };
    std::vector<Large> All() {
        ByteBuilder rlc;
        rlc.Big16(17'000).Big16(17'000).Fill(4 + 2 * 17'000, 0);
        return {{CALS, Cals(17'000, 17'000, Bytes(100, 0xFF))},
                {PCX, Pcx(0xFFFF, 4'500)},
                {PICT, Pict({0, 0, 17'000, 17'000})},
                {RLC, folder.Write("x.rlc", rlc.Bytes())},
                {Spot, Raster(30'000, 40'000)}};
    }

    static constexpr std::uint64_t kAddressSpace = 200'000'000;  // with the stacks of threads
};

TEST_F(LargePictures, ReadersHoldAFewRowsAtATime) {
    const auto read = [](const Large& large) {
        const std::unique_ptr<ImageReaderInterface> reader(CreateImageReader(large.fileType));
        if (!reader->Open(Wide(large.path))) std::_Exit(6);
        LeaveAddressSpace(kAddressSpace);
        OneRowForAll rows(reader->GetRowPitch());
        std::_Exit(reader->ReadFrame(rows, 0) ? 8 : 7);
    };
    for (const Large& large : All())
        EXPECT_EXIT(read(large), testing::ExitedWithCode(8), "") << large.path;
}

TEST_F(LargePictures, AtASmallSizeNoneIsEverWhole) {
    const auto load = [this](const Large& large) {
        LeaveAddressSpace(kAddressSpace);
        std::_Exit(LoadFile(access.handler, large.path, {.width = 300, .height = 400}) ? 8 : 7);
    };
    for (const Large& large : All())
        EXPECT_EXIT(load(large), testing::ExitedWithCode(8), "") << large.path;
}
#endif

TEST_F(LoadLimits, WhatTheHostSetsBindsTheLibrarysPicturesToo) {
    const ImageDescription photo = LoadFile(access.handler, Sample("photo.jpg"))->desc;
    const auto pixels = static_cast<std::uint64_t>(photo.width) * static_cast<std::uint64_t>(photo.height);
    SetImageLimits({.maxPixels = pixels});
    EXPECT_TRUE(Loads(Sample("photo.jpg")));
    SetImageLimits({.maxPixels = pixels - 1});
    EXPECT_FALSE(Loads(Sample("photo.jpg")));
    ExpectCost(Sample("photo.jpg"), photo.dataSize);
}

TEST_F(LoadLimits, ACubeMapCountsAllItsFaces) {
    const ImageDescription cube = LoadFile(access.handler, Sample("cube.dds"))->desc;
    ASSERT_EQ(cube.textureType, kTextureCube);
    ExpectCost(Sample("cube.dds"), cube.dataSize * 6);
    const auto pixels = static_cast<std::uint64_t>(cube.width) * static_cast<std::uint64_t>(cube.height) * 6;
    SetImageLimits({.maxPixels = pixels});
    EXPECT_TRUE(Loads(Sample("cube.dds")));
    SetImageLimits({.maxPixels = pixels - 1});
    EXPECT_FALSE(Loads(Sample("cube.dds")));
}

TEST_F(LoadLimits, TheFormatThatIsAskedForCountsToo) {
    const auto converted = [this](const std::filesystem::path& path, std::uint64_t maxBytes) {
        SetImageLimits({.maxBytes = maxBytes});
        return LoadFile(access.handler, path, {.format = kR32G32B32A32F}).has_value();
    };
    EXPECT_TRUE(converted(Cals(100, 100), 200'000)) << "by the conversion engine, from a block of 40,000 bytes";
    EXPECT_FALSE(converted(Cals(100, 100), 199'999));
    SetImageLimits({});
    const ImageDescription photo = LoadFile(access.handler, Sample("photo.jpg"), {.format = kR32G32B32A32F})->desc;
    EXPECT_TRUE(converted(Sample("photo.jpg"), photo.dataSize)) << "by the library";
    EXPECT_FALSE(converted(Sample("photo.jpg"), photo.dataSize - 1));
}

}  // namespace
