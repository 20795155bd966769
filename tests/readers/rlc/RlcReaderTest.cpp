#include "common/PixelBlock.h"
#include "legacy/RlcFile.h"
#include "readers/BilevelPicture.h"
#include "readers/FileSamples.h"
#include "readers/ImageFileType.h"
#include "readers/ccitt/CcittStreams.h"
#include "readers/rlc/RlcReader.h"
#include "support/HandlerAccess.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using Kavra::Legacy::AddRlcDirectory;
using Kavra::Legacy::Bitmap;
using Kavra::Legacy::RlcEntry;

using Texts = std::vector<std::wstring>;

constexpr const wchar_t* kInvalidRow = L"Invalid Row -- out of buffer bound";

TEST(RlcReader, SetPixelsAreOpaqueWhiteOnOpaqueBlack) {
    const Decoded decoded = Decode<RlcReader>(RlcFile(8, {{{2, 5}}, {}, {{0, 8}}, {{0, 1}, {6, 7}}}));
    EXPECT_TRUE(decoded.read);
    EXPECT_EQ(BilevelPicture(decoded), "...###..|........|########|.#.....#|");
    EXPECT_TRUE(decoded.messages.empty());
}

TEST(RlcReader, DescribesItsImage) {
    const Decoded decoded = Decode<RlcReader>(RlcFile(13, {{{0, 1}}, {}}));
    EXPECT_EQ(decoded.width, 13);
    EXPECT_EQ(decoded.height, 2);
    EXPECT_EQ(decoded.rowPitch, 52);
    EXPECT_EQ(decoded.format, kR8G8B8A8);
    EXPECT_EQ(decoded.frameCount, 1);
    EXPECT_EQ(decoded.orientation, kTopLeft);
}

TEST(RlcReader, AWidthThatIsNoMultipleOfEightTakesTheRestFromTheLastByte) {
    EXPECT_EQ(BilevelPicture(Decode<RlcReader>(RlcFile(13, {{{0, 2}, {4, 6}, {12, 13}}, {{0, 13}}}))),
              "#......##..##|#############|");
}

TEST(RlcReader, ARefusedRunWarnsOnceAndLosesTheRunsThatStandBeforeIt) {
    // Runs are applied from the last to the first. (8, 64) of 64 columns is refused.
    const Decoded decoded = Decode<RlcReader>(RlcFile(64, {{{1, 3}, {4, 64}, {62, 63}}, {{1, 3}, {8, 64}}, {{0, 2}}}));
    EXPECT_EQ(BilevelPicture(decoded),
              "."
              "#" +
                  std::string(62, '.') + "|" + std::string(64, '.') + "|" + std::string(62, '.') + "##|");
    EXPECT_EQ(decoded.messages, Texts(2, kInvalidRow)) << "one a row";
    EXPECT_TRUE(decoded.read) << "the row behind is read all the same";
}

TEST(RlcReader, AnEmptyRunAtTheEndOfWholeBytesWarns) {
    EXPECT_EQ(Decode<RlcReader>(RlcFile(16, {{{0, 0}}, {}})).messages, Texts(1, kInvalidRow));
    EXPECT_TRUE(Decode<RlcReader>(RlcFile(15, {{{0, 0}}, {}})).messages.empty());
}

TEST(RlcReader, ANegativeCountIsARowWithoutRuns) {
    ByteBuilder file;
    file.Big16(3).Big16(8).Big16(0xFFFF).Big16(0x8000).Big16(1).Big16(2).Big16(5);
    EXPECT_EQ(BilevelPicture(Decode<RlcReader>(file)), "........|........|...###..|");
}

TEST(RlcReader, ARowMayHaveMoreRunsThanColumns) {
    ByteBuilder file;
    file.Big16(2).Big16(3).Big16(32767).Big16(0).Big16(1);
    for (int run = 1; run < 32767; ++run)
        file.Big16(2).Big16(2);
    file.Big16(1).Big16(1).Big16(2);
    EXPECT_EQ(BilevelPicture(Decode<RlcReader>(file)), "..#|.#.|");
}

TEST(RlcReader, WhereTheFileEndsTheRestIsBlackAndNothingIsSaid) {
    const ByteBuilder whole = RlcFile(8, {{{0, 1}, {2, 3}}, {{0, 2}, {4, 6}}, {{0, 8}}});
    const std::string first = ".....#.#|";
    const std::string second = "..##..##|";
    const std::vector<std::pair<std::size_t, std::string>> cuts = {
        {whole.Size(), first + second + "########|"},
        {whole.Size() - 1, first + second + "........|"},   // the last run is not whole
        {whole.Size() - 4, first + second + "........|"},   // nor is there one
        {whole.Size() - 5, first + second + "........|"},   // the count before it is cut
        {whole.Size() - 7, first + "......##|........|"},   // the second run of the second row is cut
        {whole.Size() - 12, first + "........|........|"},  // the first one, too
        {15, first + "........|........|"},                 // the second row's count is cut
        {14, first + "........|........|"},
        {13, ".......#|........|........|"},
        {9, "........|........|........|"},
        {5, "........|........|........|"},
        {4, "........|........|........|"},
    };
    for (const auto& [size, picture] : cuts) {
        const Decoded decoded = Decode<RlcReader>(ByteBuilder(whole).CutTo(size));
        EXPECT_EQ(BilevelPicture(decoded), picture) << size;
        EXPECT_TRUE(decoded.read);
        EXPECT_TRUE(decoded.messages.empty());
    }
}

TEST(RlcReader, ATrailerIsNotTakenForRuns) {
    ByteBuilder file = RlcFile(400, {{{0, 1}}, {{1, 2}}});
    AddRlcTrailer(file, 2, 0);
    const Decoded decoded = Decode<RlcReader>(file);
    EXPECT_EQ(BilevelPicture(decoded), std::string(399, '.') + "#|" + std::string(398, '.') + "#.|");
    EXPECT_TRUE(decoded.messages.empty());
}

TEST(RlcReader, SizesBelowOneOpenAndWriteNothing) {
    const TemporaryFolder folder;
    for (const auto& [rows, columns] :
         std::vector<std::pair<unsigned, unsigned>>{{0, 5}, {5, 0}, {0xFFFF, 5}, {5, 0x8000}}) {
        RlcReader reader;
        ASSERT_TRUE(
            reader.Open(Wide(folder.Write("file", ByteBuilder().Big16(rows).Big16(columns).Fill(40, 1).Bytes()))));
        EXPECT_EQ(reader.GetHeight(), static_cast<std::int16_t>(rows));
        EXPECT_EQ(reader.GetWidth(), static_cast<std::int16_t>(columns));
        EXPECT_EQ(reader.GetRowPitch(), 4 * static_cast<std::int16_t>(columns));
        EXPECT_TRUE(reader.ReadImage(nullptr, 0));
    }
}

TEST(RlcReader, AFileWithoutSizesHasNone) {
    const TemporaryFolder folder;
    for (const std::string_view text : {"", "\x01", "\x01\x02", "\x01\x02\x03"}) {
        RlcReader reader;
        ASSERT_TRUE(reader.Open(Wide(folder.Write("file", text))));
        EXPECT_EQ(reader.GetWidth(), 0);
        EXPECT_EQ(reader.GetFrameCount(), 1);
        EXPECT_TRUE(reader.ReadImage(nullptr, 0));
    }
}

TEST(RlcReader, OnlyAFileThatCannotBeOpenedFails) {
    RlcReader reader;
    EXPECT_FALSE(reader.Open(L"/nowhere/at/all"));
    std::array<unsigned char, 4> pixel = {};
    EXPECT_FALSE(reader.ReadImage(pixel.data(), 0));
}

TEST(RlcReader, CountsFramesByItsDirectoryAndReadsTheFirst) {
    ByteBuilder file = RlcFile(8, {{{2, 5}}, {}});
    AddRlcDirectory(file, std::vector(2, RlcEntry{.type = 2}));
    for (const int frame : {0, 1, 7, -1}) {
        const Decoded decoded = Decode<RlcReader>(file, frame);
        EXPECT_EQ(decoded.frameCount, 2);
        EXPECT_TRUE(decoded.read);
        EXPECT_EQ(BilevelPicture(decoded), "...###..|........|");
    }
}

TEST(RlcReader, WithoutADirectoryThereIsOneFrame) {
    ByteBuilder other = RlcFile(8, {{}, {}});
    AddRlcTrailer(other, 1, 0);
    other.At(other.Size() - 344 + 22).Little16(3).Little16(2);
    EXPECT_EQ(Decode<RlcReader>(other).frameCount, 1) << "another flag";
    EXPECT_EQ(Decode<RlcReader>(RlcFile(8, {{}, {}}).Fill(400, 0)).frameCount, 1) << "no signature";

    ByteBuilder alone;
    AddRlcDirectory(alone, std::vector(2, RlcEntry{.type = 2}));
    EXPECT_EQ(Decode<RlcReader>(alone).frameCount, 1) << "344 bytes are no trailer";
    alone = ByteBuilder().Byte(0);
    AddRlcDirectory(alone, std::vector(2, RlcEntry{.type = 2}));
    EXPECT_EQ(Decode<RlcReader>(alone).frameCount, 2) << "345 have one";
}

TEST(RlcReader, FrameCountsOfDirectoriesAddUpOverFiles) {
    const TemporaryFolder folder;
    ByteBuilder file = RlcFile(8, {{}, {}});
    AddRlcDirectory(file, std::vector(3, RlcEntry{.type = 2}));
    ByteBuilder empty = RlcFile(8, {{}, {}});
    AddRlcDirectory(empty, {});
    const auto three = Wide(folder.Write("three", file.Bytes()));
    const auto none = Wide(folder.Write("none", empty.Bytes()));
    const auto plain = Wide(folder.Write("plain", RlcFile(8, {{}, {}}).Bytes()));
    RlcReader reader;
    EXPECT_EQ(reader.GetFrameCount(), 0);
    EXPECT_TRUE(reader.Open(none));
    EXPECT_EQ(reader.GetFrameCount(), 0) << "none at all";
    EXPECT_TRUE(reader.Open(three));
    EXPECT_EQ(reader.GetFrameCount(), 3);
    EXPECT_TRUE(reader.Open(three));
    EXPECT_EQ(reader.GetFrameCount(), 6);
    EXPECT_TRUE(reader.Open(plain));
    EXPECT_EQ(reader.GetFrameCount(), 1);
}

TEST(RlcReader, AnyImageComesBack) {
    std::mt19937 random(3);
    for (int round = 0; round < 60; ++round) {
        const Bitmap image =
            RandomBitmap(random, 1 + static_cast<int>(random() % 300), 1 + static_cast<int>(random() % 40));
        const Decoded decoded = Decode<RlcReader>(Kavra::Legacy::RlcFile(image));
        ASSERT_EQ(decoded.width, image.width);
        ASSERT_EQ(decoded.height, image.height);
        ASSERT_TRUE(decoded.messages.empty());
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                const unsigned char value = image.At(x, y) ? 255 : 0;
                ASSERT_EQ(PixelAt(decoded, x, y), (Bytes{value, value, value, 255})) << x << ' ' << y;
            }
        }
    }
}

TEST(RlcReader, ReadsTheSameAgain) {
    const TemporaryFolder folder;
    RlcReader reader;
    ASSERT_TRUE(reader.Open(Wide(folder.Write("file", RlcFile(8, {{{2, 5}}, {{0, 1}, {2, 7}}}).Bytes()))));
    Bytes first(64);
    Bytes second(64);
    EXPECT_TRUE(reader.ReadImage(first.data(), 0));
    EXPECT_TRUE(reader.ReadImage(second.data(), 0));
    EXPECT_EQ(first, second);
}

TEST(RlcReader, EveryByteMayBeHostile) {
    Twice<RlcReader> twice;
    ByteBuilder whole = RlcFile(20, {{{0, 1}, {2, 9}}, {}, {{5, 6}, {10, 20}}, {{0, 20}}});
    AddRlcDirectory(whole, std::vector{RlcEntry{.type = 2}, RlcEntry{.type = 4, .reference = 10}});
    for (std::size_t at = 0; at < whole.Size(); ++at) {
        for (const unsigned value : {0x00U, 0x01U, 0x7FU, 0x80U, 0xFFU}) {
            const Decoded first = twice.Decode(ByteBuilder(whole).At(at).Byte(value));
            EXPECT_TRUE(first.opened);
            EXPECT_TRUE(IsBilevel(first)) << at;
        }
    }
}

TEST(RlcReader, CutAtEveryLengthItGivesTheSameEachTime) {
    Twice<RlcReader> twice;
    std::mt19937 random(4);
    const ByteBuilder whole = Kavra::Legacy::RlcFile(RandomBitmap(random, 50, 20));
    for (std::size_t size = 0; size < whole.Size(); ++size) {
        const Decoded first = twice.Decode(ByteBuilder(whole).CutTo(size));
        EXPECT_TRUE(first.opened);
        EXPECT_TRUE(first.messages.empty());
    }
}

TEST(RlcLoad, ASmallFileIsNotGivenMoreThanItsLimit) {
    const TemporaryFolder folder;
    const auto path = folder.Write("file", ByteBuilder().Big16(32767).Big16(32767).Fill(65534, 0).Bytes());
    OIIOImageHandlerAccess access;
    ImageDescription desc;
    EXPECT_EQ(access.LoadSpecial(desc, Wide(path), 0, 0, false, 0, kTopLeft, RLC), nullptr);
    const auto good = folder.Write("good", RlcFile(8, {{{2, 5}}, {}}).Bytes());
    const Kavra::Common::PixelBlock block(access.LoadSpecial(desc, Wide(good), 0, 0, false, 0, kTopLeft, RLC));
    ASSERT_TRUE(block);
    EXPECT_EQ(desc.width, 8);
    EXPECT_EQ(block.get()[12], 255);
}

}  // namespace
