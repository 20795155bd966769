#include "frame/host/devices/DdsTestFile.h"

#include <gtest/gtest.h>

namespace Kavra::Tests {
namespace {

using namespace Devices;

/// One byte a pixel, so that a pixel's value says where in the file it lay.
DdsFile Grey(std::uint32_t width, std::uint32_t height) {
    return DdsFile(width, height).Masks(0x20000, 8, 0xFF);
}

/// `count` bytes from `first` on.
Bytes Counted(int first, std::size_t count) {
    Bytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(first));
    return bytes;
}

Bytes Joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

struct Opened {
    TemporaryFolder folder;
    DDSReader reader;
    bool opened;

    explicit Opened(const DdsFile& file) : opened(reader.Load(Wide(folder.Write("file.dds", file.All())))) {}
};

TEST(DdsShapes, AFlatTextureHasOneFaceAndOneLevel) {
    Opened file(Grey(5, 3));
    ASSERT_TRUE(file.opened);
    EXPECT_EQ(file.reader.Width(), 5);
    EXPECT_EQ(file.reader.Height(), 3);
    EXPECT_EQ(file.reader.Depth(), 1);
    EXPECT_EQ(file.reader.Mipmaps(), 1);
    EXPECT_EQ(file.reader.Format(), kL8);
    EXPECT_EQ(file.reader.TextureType(), kTexture2D);
    EXPECT_TRUE(file.reader.HasFace(0));
    EXPECT_FALSE(file.reader.HasFace(1));
}

TEST(DdsShapes, NothingIsOpenBeforeOrAfterAFailedLoad) {
    const TemporaryFolder folder;
    DDSReader reader;
    ImageDescription desc;
    const auto isEmpty = [&] {
        return reader.Width() == 0 && reader.Height() == 0 && reader.Depth() == 0 && reader.Mipmaps() == 0 &&
               reader.Format() == kUnknown && reader.TextureType() == kTextureUnknown && !reader.HasFace(0) &&
               !reader.SkipMipLevel(0) && reader.Load(desc, 0, 0, 0) == nullptr;
    };
    EXPECT_TRUE(isEmpty());
    ASSERT_TRUE(reader.Load(Wide(folder.Write("good.dds", Grey(1, 1).Counting(1).All()))));
    EXPECT_FALSE(isEmpty());
    EXPECT_FALSE(reader.Load(Wide(folder / "missing.dds")));
    EXPECT_TRUE(isEmpty());
    EXPECT_FALSE(reader.Load(Wide(folder.Path()))) << "a folder";
    EXPECT_FALSE(reader.Load(KString()));
}

TEST(DdsShapes, EachLevelFollowsTheOneBeforeAtHalfItsSize) {
    // 8 x 2: 16, 4, 2, 1 bytes.
    const DdsFile file = Grey(8, 2).Mips(4).Counting(23);
    const Bytes expected[] = {Counted(0, 16), Counted(16, 4), Counted(20, 2), Counted(22, 1)};
    const int widths[] = {8, 4, 2, 1};
    const int heights[] = {2, 1, 1, 1};
    for (int level = 0; level < 4; ++level) {
        const std::optional<DdsLevel> loaded = LoadLevel(file, level);
        ASSERT_TRUE(loaded) << level;
        EXPECT_EQ(loaded->bytes, expected[level]);
        EXPECT_EQ(loaded->desc.width, widths[level]);
        EXPECT_EQ(loaded->desc.height, heights[level]);
        EXPECT_EQ(loaded->desc.rowPitch, widths[level]);
    }
}

TEST(DdsShapes, LevelsLoadOneAfterAnotherAndThenThereAreNone) {
    Opened file(Grey(4, 4).Mips(3).Counting(21));
    ASSERT_TRUE(file.opened);
    for (int level = 0; level < 3; ++level)
        EXPECT_TRUE(LoadNext(file.reader, level)) << level;
    EXPECT_FALSE(LoadNext(file.reader, 2));
    EXPECT_FALSE(LoadNext(file.reader, 3));
}

TEST(DdsShapes, OnlyLevelsOfTheFileCanBeSkipped) {
    Opened file(Grey(4, 4).Mips(2).Counting(20));
    ASSERT_TRUE(file.opened);
    EXPECT_TRUE(file.reader.SkipMipLevel(0));
    EXPECT_TRUE(file.reader.SkipMipLevel(1));
    EXPECT_FALSE(file.reader.SkipMipLevel(2));
    EXPECT_FALSE(file.reader.SkipMipLevel(-1));
    EXPECT_FALSE(file.reader.SkipMipLevel(2147483647));
    EXPECT_FALSE(LoadNext(file.reader, 1)) << "all were skipped";
}

TEST(DdsShapes, ALevelIsRefusedAtAnyOtherSizeAndStaysNext) {
    Opened file(Grey(4, 2).Counting(8));
    ASSERT_TRUE(file.opened);
    ImageDescription desc;
    desc.width = 77;
    EXPECT_EQ(file.reader.Load(desc, 2, 1, 1), nullptr);
    EXPECT_EQ(file.reader.Load(desc, 4, 1, 1), nullptr);
    EXPECT_EQ(file.reader.Load(desc, 4, 2, 2), nullptr);
    EXPECT_EQ(desc.width, 77) << "a failure leaves the description alone";
    EXPECT_TRUE(LoadNext(file.reader, 0));
}

TEST(DdsShapes, ACubeStacksItsSixFacesInTheOrderOfTheFile) {
    const std::optional<DdsLevel> loaded = LoadLevel(Grey(2, 2).Cube().Counting(24));
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->desc.textureType, kTextureCube);
    EXPECT_EQ(loaded->desc.height, 2);
    EXPECT_EQ(loaded->desc.dataSize, 4U) << "of one face";
    EXPECT_EQ(loaded->bytes, Counted(0, 24));
}

TEST(DdsShapes, AFaceHasAllItsLevelsBeforeTheNextFaceBegins) {
    // 2 x 2 and 1 x 1: 5 bytes a face.
    const DdsFile file = Grey(2, 2).Cube().Mips(2).Counting(30);
    const std::optional<DdsLevel> first = LoadLevel(file, 0);
    const std::optional<DdsLevel> second = LoadLevel(file, 1);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->bytes,
              Joined({Counted(0, 4), Counted(5, 4), Counted(10, 4), Counted(15, 4), Counted(20, 4), Counted(25, 4)}));
    EXPECT_EQ(second->bytes, (Bytes{4, 9, 14, 19, 24, 29}));
    EXPECT_EQ(second->desc.width, 1);
    EXPECT_EQ(second->desc.dataSize, 1U);
}

TEST(DdsShapes, AbsentFacesAreZeroAndTakeNoRoomInTheFile) {
    // +x, +y and -z; two levels of 4 and 1 bytes.
    const DdsFile file = Grey(2, 2).Cube(0b100101).Mips(2).Counting(15, 1);
    Opened opened(file);
    ASSERT_TRUE(opened.opened);
    for (int face = 0; face < 6; ++face)
        EXPECT_EQ(opened.reader.HasFace(face), face == 0 || face == 2 || face == 5);
    EXPECT_FALSE(opened.reader.HasFace(6));
    EXPECT_FALSE(opened.reader.HasFace(-1));

    const Bytes none(4, 0);
    const std::optional<DdsLevel> first = LoadLevel(file, 0);
    const std::optional<DdsLevel> second = LoadLevel(file, 1);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->bytes, Joined({Counted(1, 4), none, Counted(6, 4), none, none, Counted(11, 4)}));
    EXPECT_EQ(second->bytes, (Bytes{5, 0, 10, 0, 0, 15}));
}

TEST(DdsShapes, ACubeWithoutItsFirstFaceBeginsWithTheSecond) {
    const std::optional<DdsLevel> loaded = LoadLevel(Grey(1, 1).Cube(0b000010).Counting(1, 9));
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->bytes, (Bytes{0, 9, 0, 0, 0, 0}));
}

TEST(DdsShapes, ACubeThatNamesNoFaceHasAll) {
    const std::optional<DdsLevel> loaded = LoadLevel(Grey(1, 1).Cube(0).Counting(6, 1));
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->bytes, Counted(1, 6));
}

TEST(DdsShapes, CompressedCubesKeepTheirBlocks) {
    // 4 x 4, 2 x 2, 1 x 1: one block of 8 bytes each.
    const DdsFile file = DdsFile(4, 4).Code("DXT1").Cube(0b000101).Mips(3).Counting(48);
    const std::optional<DdsLevel> loaded = LoadLevel(file, 2);
    ASSERT_TRUE(loaded);
    const Bytes none(8, 0);
    EXPECT_EQ(loaded->bytes, Joined({Counted(16, 8), none, Counted(40, 8), none, none, none}));
    EXPECT_EQ(loaded->desc.dataSize, 8U);
}

TEST(DdsShapes, WidenedFacesGoToTheirPlaces) {
    const DdsFile file = DdsFile(1, 1).Masks(0x40, 24, 0xFF0000, 0xFF00, 0xFF).Cube(0b000101).Counting(6, 1);
    const std::optional<DdsLevel> loaded = LoadLevel(file);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->bytes, (Bytes{3, 2, 1, 255, 0, 0, 0, 0, 6, 5, 4, 255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(DdsShapes, TheExtensionsCubeFlagIsEnough) {
    const std::optional<DdsLevel> loaded = LoadLevel(DdsFile(1, 1).Dxgi(61, 3, 4).Counting(6));
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->desc.textureType, kTextureCube);
    EXPECT_EQ(loaded->bytes, Counted(0, 6));
}

TEST(DdsShapes, TheExtensionsCubeFlagMeansAllFacesWhateverTheCapsSay) {
    const std::optional<DdsLevel> loaded = LoadLevel(DdsFile(1, 1).Dxgi(61, 3, 4).Cube(0b000001).Counting(6, 1));
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->bytes, Counted(1, 6));
}

TEST(DdsShapes, OfAnArrayTheFirstElementComes) {
    const std::optional<DdsLevel> flat = LoadLevel(DdsFile(2, 1).Dxgi(61, 3, 0, 3).Counting(6));
    ASSERT_TRUE(flat);
    EXPECT_EQ(flat->desc.textureType, kTexture2D);
    EXPECT_EQ(flat->bytes, Counted(0, 2));
    const std::optional<DdsLevel> cubes = LoadLevel(DdsFile(1, 1).Dxgi(61, 3, 4, 2).Counting(12));
    ASSERT_TRUE(cubes);
    EXPECT_EQ(cubes->desc.textureType, kTextureCube);
    EXPECT_EQ(cubes->bytes, Counted(0, 6));
}

TEST(DdsShapes, AVolumeHalvesItsDepthToo) {
    // 2 x 2 x 4, 1 x 1 x 2, 1 x 1 x 1.
    const DdsFile file = Grey(2, 2).Volume(4).Mips(3).Counting(19);
    const Bytes expected[] = {Counted(0, 16), Counted(16, 2), Counted(18, 1)};
    const int depths[] = {4, 2, 1};
    for (int level = 0; level < 3; ++level) {
        const std::optional<DdsLevel> loaded = LoadLevel(file, level);
        ASSERT_TRUE(loaded) << level;
        EXPECT_EQ(loaded->bytes, expected[level]);
        EXPECT_EQ(loaded->desc.depth, depths[level]);
        EXPECT_EQ(loaded->desc.textureType, kTextureVolume);
        EXPECT_EQ(loaded->desc.dataSize, expected[level].size());
    }
}

TEST(DdsShapes, EverySliceOfAWidenedOrCompressedVolumeIsRead) {
    const std::optional<DdsLevel> wide =
        LoadLevel(DdsFile(1, 1).Masks(0x40, 24, 0xFF0000, 0xFF00, 0xFF).Volume(2).Counting(6, 1));
    ASSERT_TRUE(wide);
    EXPECT_EQ(wide->bytes, (Bytes{3, 2, 1, 255, 6, 5, 4, 255}));
    const std::optional<DdsLevel> blocks = LoadLevel(DdsFile(4, 4).Code("DXT1").Volume(3).Counting(24));
    ASSERT_TRUE(blocks);
    EXPECT_EQ(blocks->bytes, Counted(0, 24));
}

TEST(DdsShapes, LoadingAgainStartsAnew) {
    const TemporaryFolder folder;
    const auto path = Wide(folder.Write("a.dds", Grey(2, 2).Mips(2).Counting(5).All()));
    DDSReader reader;
    ASSERT_TRUE(reader.Load(path));
    ASSERT_TRUE(reader.SkipMipLevel(0));
    ASSERT_TRUE(reader.Load(path));
    const std::optional<DdsLevel> loaded = LoadNext(reader, 0);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->bytes, Counted(0, 4));
}

}  // namespace
}  // namespace Kavra::Tests
