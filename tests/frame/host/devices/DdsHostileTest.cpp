#include "frame/host/devices/DdsTestFile.h"

#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace Kavra::Tests {
namespace {

using namespace Devices;

bool Opens(const DdsFile& file) {
    const TemporaryFolder folder;
    DDSReader reader;
    return reader.Load(Wide(folder.Write("file.dds", file.All())));
}

/// Cut at every length, each level either comes whole or not at all.
void CutEverywhere(const Bytes& whole, std::size_t headerBytes, int levels) {
    std::vector<std::optional<DdsLevel>> complete;
    for (int level = 0; level < levels; ++level) {
        complete.push_back(LoadLevel(whole, level));
        ASSERT_TRUE(complete.back()) << level;
    }
    // Files of their own: some file systems write through to the disk when one is overwritten.
    const TemporaryFolder folder;
    for (std::size_t length = 0; length < headerBytes; ++length) {
        DDSReader reader;
        const std::string name = std::to_string(length) + ".dds";
        EXPECT_FALSE(reader.Load(Wide(folder.Write(name, std::span(whole).first(length))))) << length;
    }
    for (std::size_t length = headerBytes; length < whole.size(); ++length) {
        const std::span<const unsigned char> cut(whole.data(), length);
        bool lastCame = false;
        for (int level = 0; level < levels; ++level) {
            const std::optional<DdsLevel> loaded = LoadLevel(cut, level);
            lastCame = loaded.has_value();
            if (!loaded) continue;
            EXPECT_GT(length, headerBytes);
            EXPECT_EQ(loaded->bytes, complete[level]->bytes) << length;
        }
        EXPECT_FALSE(lastCame) << "the last level needs the last byte, " << length;
    }
}

TEST(DdsHostile, ATruncatedFlatFileGivesWholeLevelsOrNone) {
    CutEverywhere(DdsFile(4, 4).Masks(0x20000, 8, 0xFF).Mips(3).Counting(21).All(), 128, 3);
}

TEST(DdsHostile, ATruncatedExtendedFileGivesWholeLevelsOrNone) {
    CutEverywhere(DdsFile(4, 2).Dxgi(95).Mips(2).Counting(32).All(), 148, 2);
}

TEST(DdsHostile, ATruncatedWidenedFileGivesWholeLevelsOrNone) {
    CutEverywhere(DdsFile(2, 2).Masks(0x40, 24, 0xFF0000, 0xFF00, 0xFF).Mips(2).Counting(15).All(), 128, 2);
}

TEST(DdsHostile, ATruncatedCubeGivesWholeLevelsOrNone) {
    CutEverywhere(DdsFile(2, 2).Masks(0x20000, 8, 0xFF).Cube(0b110101).Mips(2).Counting(20).All(), 128, 2);
}

TEST(DdsHostile, ATruncatedVolumeGivesWholeLevelsOrNone) {
    CutEverywhere(DdsFile(2, 2).Masks(0x20000, 8, 0xFF).Volume(2).Mips(2).Counting(9).All(), 128, 2);
}

TEST(DdsHostile, WhatHasNoHeaderOrNoPossibleShapeIsRefused) {
    const DdsFile good = DdsFile(1, 1).Masks(0x20000, 8, 0xFF).Counting(64);
    ASSERT_TRUE(Opens(good));
    EXPECT_FALSE(Opens(DdsFile(good).Set(4, 128))) << "structure size";
    EXPECT_FALSE(Opens(DdsFile(good).Set(16, 0))) << "width";
    EXPECT_FALSE(Opens(DdsFile(good).Volume(0x80000000))) << "depth";
    EXPECT_FALSE(Opens(DdsFile(good).Set(12, 2).Cube())) << "not square";
}

TEST(DdsHostile, NothingIsAllocatedForPixelsThatTheFileCannotHold) {
    const TemporaryFolder folder;
    const auto blocksFor = [&](const DdsFile& file) {
        DDSReader reader;
        EXPECT_TRUE(reader.Load(Wide(folder.Write("bomb.dds", file.All()))));
        const std::size_t before = Objects::ObjModel::BlockCounters().totalBlocks;
        ImageDescription desc;
        EXPECT_EQ(reader.Load(desc, reader.Width(), reader.Height(), reader.Depth()), nullptr);
        return Objects::ObjModel::BlockCounters().totalBlocks - before;
    };
    EXPECT_EQ(blocksFor(DdsFile(1U << 20, 1U << 20).Code(116).Counting(64)), 0U);
    EXPECT_EQ(blocksFor(DdsFile(1U << 20, 1U << 20).Code(116).Volume(1U << 16).Mips(99).Counting(64)), 0U);
    EXPECT_EQ(blocksFor(DdsFile(1U << 20, 1U << 20).Code("DXT5").Cube().Mips(99).Counting(64)), 0U);
    EXPECT_EQ(blocksFor(DdsFile(65536, 65536).Masks(0x20000, 8, 0xFF).Counting(64)), 0U);
    EXPECT_EQ(blocksFor(DdsFile(1U << 20, 4).Masks(0x40, 24, 0xFF0000, 0xFF00, 0xFF).Counting(64)), 0U);
}

TEST(DdsHostile, MoreThanTheCeilingOfOneBlockGivesNull) {
    const TemporaryFolder folder;
    DDSReader reader;
    ASSERT_TRUE(
        reader.Load(Wide(folder.Write("large.dds", DdsFile(64, 64).Masks(0x20000, 8, 0xFF).Counting(4096).All()))));
    Objects::ObjModel::SetBlockCeiling(4095);
    EXPECT_FALSE(LoadNext(reader, 0));
    Objects::ObjModel::SetBlockCeiling(0);
    EXPECT_TRUE(LoadNext(reader, 0)) << "the level is still the next";
}

/// Sparse: the file system keeps none of the 4 GiB of zeros.
TEST(DdsHostile, RowsBeyond32BitsOfDataAreFoundWhereTheyLie) {
    const TemporaryFolder folder;
    // Six faces of 32768 x 32768 bytes; only the last level of the last face is asked for.
    const std::filesystem::path path =
        folder.Write("huge.dds", DdsFile(32768, 32768).Masks(0x20000, 8, 0xFF).Cube().Mips(16).All());
    std::uint64_t chain = 0;
    for (std::uint64_t side = 32768; side > 0; side /= 2)
        chain += side * side;
    std::error_code failed;
    std::filesystem::resize_file(path, 128 + 6 * chain, failed);
    if (failed) GTEST_SKIP() << "no room for a sparse file of " << 6 * chain << " bytes";
    std::FILE* file = std::fopen(path.c_str(), "r+b");
    ASSERT_NE(file, nullptr);
    fseeko(file, -1, SEEK_END);
    std::fputc(77, file);
    std::fclose(file);

    DDSReader reader;
    ASSERT_TRUE(reader.Load(Wide(path)));
    ASSERT_EQ(reader.Mipmaps(), 16);
    for (int level = 0; level < 15; ++level)
        ASSERT_TRUE(reader.SkipMipLevel(level));
    const std::optional<DdsLevel> last = LoadNext(reader, 15);
    ASSERT_TRUE(last);
    EXPECT_EQ(last->bytes, (Bytes{0, 0, 0, 0, 0, 77}));
}

TEST(DdsHostile, AnEmptyFileIsNoDds) {
    const TemporaryFolder folder;
    DDSReader reader;
    EXPECT_FALSE(reader.Load(Wide(folder.Write("empty.dds", ""))));
}

TEST(DdsHostile, NamesOutsideAsciiAreOpened) {
    const TemporaryFolder folder;
    DDSReader reader;
    EXPECT_TRUE(reader.Load(
        Wide(folder.Write("\xc3\xa9\xf0\x9f\x8e\xa8.dds", DdsFile(1, 1).Masks(0x20000, 8, 0xFF).Counting(1).All()))));
}

TEST(DdsHostile, EveryBlockIsGivenBack) {
    const std::size_t before = Objects::ObjModel::BlockCounters().liveBlocks;
    EXPECT_TRUE(LoadLevel(DdsFile(1, 1).Masks(0x20000, 8, 0xFF).Cube(1).Counting(1)));
    EXPECT_FALSE(LoadLevel(DdsFile(2, 2).Masks(0x20000, 8, 0xFF).Counting(3)));
    EXPECT_EQ(Objects::ObjModel::BlockCounters().liveBlocks, before);
}

}  // namespace
}  // namespace Kavra::Tests
