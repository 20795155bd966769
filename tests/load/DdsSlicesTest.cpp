#include "load/DdsSlices.h"

#include "load/DdsFile.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace Kavra::Tests {
namespace {

using Devices::DdsLayout;
using Devices::DdsLevelSpec;
using Devices::DdsSlices;
using Bytes = std::vector<unsigned char>;

DdsLayout LayoutOf(const DdsFile& file) {
    return DdsLayout::Parse(file.Bytes()).value();
}

std::uint32_t Field(const std::vector<std::uint8_t>& header, std::size_t offset) {
    return header[offset] | header[offset + 1] << 8 | header[offset + 2] << 16 |
           static_cast<std::uint32_t>(header[offset + 3]) << 24;
}

OIIO::ImageSpec SpecOf(int width, int height, int depth, int channels) {
    OIIO::ImageSpec spec(width, height, channels, OIIO::TypeUInt8);
    spec.depth = depth;
    return spec;
}

std::unique_ptr<OIIO::ImageInput> OpenDds(const std::filesystem::path& path) {
    return OIIO::ImageInput::open(path.string());
}

TEST(DdsLayout, FacesLieLevelByLevelOneFaceAfterAnother) {
    const DdsLayout layout = LayoutOf({.width = 4, .height = 4, .mips = 3, .faces = 0x3F});
    // A face: 16 + 4 + 1 pixels of 4 bytes.
    EXPECT_EQ(layout.Levels(), 3);
    EXPECT_EQ(layout.Slices(0), 6);
    EXPECT_EQ(layout.Slices(2), 6);
    EXPECT_EQ(layout.SliceOffset(0, 0), 128u);
    EXPECT_EQ(layout.SliceOffset(0, 5), 128u + 5 * 84);
    EXPECT_EQ(layout.SliceOffset(1, 1), 128u + 84 + 64);
    EXPECT_EQ(layout.SliceOffset(2, 2), 128u + 2 * 84 + 64 + 16);
    EXPECT_EQ(layout.SliceBytes(1), 16u);
    EXPECT_EQ(layout.SliceBytes(2), 4u);
}

TEST(DdsLayout, FacesThatAreLeftOutTakeNoRoom) {
    const DdsLayout layout = LayoutOf({.width = 2, .height = 2, .faces = 0b010101});
    EXPECT_TRUE(layout.HasSlice(0));
    EXPECT_FALSE(layout.HasSlice(1));
    EXPECT_TRUE(layout.HasSlice(4));
    EXPECT_FALSE(layout.HasSlice(5));
    EXPECT_EQ(layout.SliceOffset(0, 2), 128u + 16);
    EXPECT_EQ(layout.SliceOffset(0, 4), 128u + 32);
}

TEST(DdsLayout, SlicesOfAVolumeHalveInEveryDirection) {
    const DdsLayout layout = LayoutOf(DdsFile{.width = 8, .height = 4, .depth = 4, .mips = 4}.Luminance8());
    EXPECT_EQ(layout.Slices(0), 4);
    EXPECT_EQ(layout.Slices(1), 2);
    EXPECT_EQ(layout.Slices(3), 1);
    EXPECT_EQ(layout.SliceOffset(0, 3), 128u + 3 * 32);
    EXPECT_EQ(layout.SliceOffset(1, 1), 128u + 4 * 32 + 8);
    EXPECT_EQ(layout.SliceOffset(2, 0), 128u + 4 * 32 + 2 * 8);
    EXPECT_EQ(layout.Width(3), 1);
    EXPECT_EQ(layout.Height(3), 1);
}

TEST(DdsLayout, BlocksAreRoundedUp) {
    const DdsLayout bc1 = LayoutOf(DdsFile{.width = 5, .height = 9}.FourCC("DXT1"));
    EXPECT_EQ(bc1.SliceBytes(0), 2u * 3 * 8);
    const DdsLayout volume = LayoutOf(DdsFile{.width = 8, .height = 8, .depth = 2, .mips = 4}.FourCC("DXT5"));
    EXPECT_EQ(volume.SliceOffset(1, 0), 128u + 2 * 4 * 16);
    EXPECT_EQ(volume.SliceBytes(3), 16u);
}

TEST(DdsLayout, EveryLayoutThatTheLibraryDecodesHasASize) {
    struct Case {
        DdsFile file;
        std::uint64_t bytes;
    };
    const auto fourCC = [](const char* code) { return DdsFile{.width = 8, .height = 4}.FourCC(code); };
    const auto dxgi = [](std::uint32_t format) { return DdsFile{.width = 8, .height = 4}.Dxgi(format); };
    const auto bits = [](std::uint32_t count) { return DdsFile{.width = 8, .height = 4}.Masks(0x40, count, 1); };
    for (const char* code : {"DXT1", "ATI1", "BC4U"})
        EXPECT_EQ(LayoutOf(fourCC(code)).SliceBytes(0), 16u) << code;
    for (const char* code : {"DXT2", "DXT3", "DXT4", "DXT5", "RXGB", "ATI2", "BC5U"}) {
        EXPECT_EQ(LayoutOf(fourCC(code)).SliceBytes(0), 32u) << code;
    }
    for (const std::uint32_t format : {71, 72, 80})
        EXPECT_EQ(LayoutOf(dxgi(format)).SliceBytes(0), 16u) << format;
    for (const std::uint32_t format : {74, 75, 77, 78, 83, 95, 96, 98, 99}) {
        EXPECT_EQ(LayoutOf(dxgi(format)).SliceBytes(0), 32u) << format;
    }
    for (const std::uint32_t format : {24, 28, 29, 87, 88, 91, 93}) {
        EXPECT_EQ(LayoutOf(dxgi(format)).SliceBytes(0), 128u) << format;
    }
    EXPECT_EQ(LayoutOf(dxgi(56)).SliceBytes(0), 64u);
    for (const std::uint32_t count : {8, 16, 24, 32})
        EXPECT_EQ(LayoutOf(bits(count)).SliceBytes(0), 4u * count);
}

TEST(DdsLayout, WhatTheLibraryDoesNotDecodeIsNone) {
    EXPECT_FALSE(DdsLayout::Parse(DdsFile{}.FourCC("YUY2").Bytes()));
    EXPECT_FALSE(DdsLayout::Parse(DdsFile{}.Dxgi(2).Bytes()));
    EXPECT_FALSE(DdsLayout::Parse(DdsFile{}.Masks(1, 64, 0, 0, 0, 1).Bytes())) << "no such bit count";
    EXPECT_FALSE(DdsLayout::Parse(DdsFile{}.Masks(0x40, 0, 1).Bytes()));
    EXPECT_FALSE(DdsLayout::Parse(DdsFile{.width = 0}.Bytes()));
    EXPECT_FALSE(DdsLayout::Parse(DdsFile{.width = 32769}.Bytes()));
    EXPECT_FALSE(DdsLayout::Parse(DdsFile{.depth = 0x80000000}.Bytes()));
    EXPECT_FALSE(DdsLayout::Parse(DdsFile{.depth = 1, .faces = 1}.Bytes())) << "cube and volume at once";
}

TEST(DdsLayout, ACubeMapWithoutFacesIsNone) {
    Bytes bytes = DdsFile{.faces = 1}.Bytes();
    bytes[113] &= 0x03;  // takes the face out, leaves the cube
    EXPECT_FALSE(DdsLayout::Parse(bytes));
}

TEST(DdsLayout, AHeaderThatIsCutOffIsNone) {
    const Bytes legacy = DdsFile{}.Bytes();
    const Bytes dx10 = DdsFile{}.Dxgi(28).Bytes();
    for (std::size_t size = 0; size < legacy.size(); ++size) {
        EXPECT_FALSE(DdsLayout::Parse(std::span(legacy).first(size)));
    }
    for (std::size_t size = 0; size < dx10.size(); ++size)
        EXPECT_FALSE(DdsLayout::Parse(std::span(dx10).first(size)));
    EXPECT_TRUE(DdsLayout::Parse(legacy));
    EXPECT_TRUE(DdsLayout::Parse(dx10));
}

TEST(DdsLayout, LevelsNeverPassTheFullChain) {
    EXPECT_EQ(LayoutOf({.width = 16, .height = 3, .mips = 100}).Levels(), 5);
    EXPECT_EQ(LayoutOf({.width = 16, .height = 16, .mips = 0x7FFFFFFF}).Levels(), 5);
    EXPECT_EQ(LayoutOf({.width = 2, .height = 2, .depth = 16, .mips = 100}).Levels(), 5);
    EXPECT_EQ(LayoutOf({.width = 16, .height = 16}).Levels(), 1);
}

TEST(DdsLayout, AFlatHeaderSaysOneSliceAndNothingElse) {
    const auto header = LayoutOf({.width = 8, .height = 8, .mips = 4, .faces = 0x3F}).FlatHeader(1);
    ASSERT_EQ(header.size(), 128u);
    EXPECT_EQ(Field(header, 8) & 0x820000, 0u);
    EXPECT_EQ(Field(header, 8) & 0x1007, 0x1007u);
    EXPECT_EQ(Field(header, 12), 4u);
    EXPECT_EQ(Field(header, 16), 4u);
    EXPECT_EQ(Field(header, 24), 0u);
    EXPECT_EQ(Field(header, 28), 0u);
    EXPECT_EQ(Field(header, 108), 0x1000u);
    EXPECT_EQ(Field(header, 112), 0u);
    EXPECT_EQ(Field(header, 92), 0xFFu) << "the pixel format stays";
}

TEST(DdsLayout, AFlatHeaderOfADx10FileIsNoCubeNorArray) {
    const auto header =
        LayoutOf(DdsFile{.width = 4, .height = 4, .depth = 2, .miscFlags = 0x14, .arraySize = 7}.Dxgi(28))
            .FlatHeader(0);
    ASSERT_EQ(header.size(), 148u);
    EXPECT_EQ(Field(header, 128), 28u);
    EXPECT_EQ(Field(header, 132), 3u);
    EXPECT_EQ(Field(header, 136), 0x10u);
    EXPECT_EQ(Field(header, 140), 1u);
}

class DdsSlicesFile : public ::testing::Test {
protected:
    std::optional<DdsSlices> Open(const DdsFile& file) { return OpenBytes(file.Bytes()); }
    std::optional<DdsSlices> OpenBytes(const Bytes& bytes) {
        return DdsSlices::Open(Wide(folder.Write("x.dds", bytes)));
    }
    TemporaryFolder folder;
};

TEST_F(DdsSlicesFile, EveryFaceOfEveryLevelIsItsOwn) {
    DdsFile file{.width = 4, .height = 4, .mips = 3, .faces = 0x3F};
    for (unsigned char face = 0; face < 6; ++face) {
        for (const unsigned char level : {0, 1, 2}) {
            AppendPixels(file.data, 16u >> 2 * level, {face, level, 7, 255});
        }
    }
    auto slices = Open(file);
    ASSERT_TRUE(slices);
    for (int level = 0; level < 3; ++level) {
        const int size = 4 >> level;
        Bytes out(static_cast<std::size_t>(size * size * 6 * 4), 0xEE);
        ASSERT_TRUE(slices->ReadLevel(level, SpecOf(size, 6 * size, 1, 4), 4, OIIO::TypeUInt8, out.data(), 4));
        Bytes expected;
        for (unsigned char face = 0; face < 6; ++face) {
            AppendPixels(expected, static_cast<std::size_t>(size * size),
                         {face, static_cast<unsigned char>(level), 7, 255});
        }
        EXPECT_EQ(out, expected) << level;
    }
}

TEST_F(DdsSlicesFile, ReadsTheFirstChannelsIntoWiderPixels) {
    DdsFile file{.width = 1, .height = 1, .depth = 2};
    file.data = {10, 20, 30, 40, 50, 60, 70, 80};
    auto slices = Open(file);
    Bytes out(16, 0xEE);
    ASSERT_TRUE(slices->ReadLevel(0, SpecOf(1, 1, 2, 4), 2, OIIO::TypeUInt16, out.data(), 8));
    EXPECT_EQ(out, (Bytes{10, 10, 20, 20, 0xEE, 0xEE, 0xEE, 0xEE, 50, 50, 60, 60, 0xEE, 0xEE, 0xEE, 0xEE}));
}

TEST_F(DdsSlicesFile, FacesThatAreLeftOutBecomeZero) {
    DdsFile file{.width = 1, .height = 1, .faces = 0b100010};
    file.data = {1, 2, 3, 4, 5, 6, 7, 8};
    auto slices = Open(file);
    Bytes out(24, 0xEE);
    ASSERT_TRUE(slices->ReadLevel(0, SpecOf(1, 6, 1, 4), 4, OIIO::TypeUInt8, out.data(), 4));
    EXPECT_EQ(out, (Bytes{0, 0, 0, 0, 1, 2, 3, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 5, 6, 7, 8}));
}

TEST_F(DdsSlicesFile, ASpecThatDisagreesWithTheFileReadsNothing) {
    DdsFile file{.width = 2, .height = 2, .depth = 2};
    AppendPixels(file.data, 8, {1, 2, 3, 4});
    auto slices = Open(file);
    Bytes out(1024);
    const auto read = [&](const OIIO::ImageSpec& spec) {
        return slices->ReadLevel(0, spec, 1, OIIO::TypeUInt8, out.data(), 4);
    };
    EXPECT_TRUE(read(SpecOf(2, 2, 2, 4)));
    EXPECT_FALSE(read(SpecOf(1, 2, 2, 4)));
    EXPECT_FALSE(read(SpecOf(2, 2, 1, 4)));
    EXPECT_FALSE(read(SpecOf(2, 2, 2, 3)));
    EXPECT_FALSE(slices->ReadLevel(1, SpecOf(1, 1, 1, 4), 1, OIIO::TypeUInt8, out.data(), 4));
    EXPECT_FALSE(slices->ReadLevel(-1, SpecOf(2, 2, 2, 4), 1, OIIO::TypeUInt8, out.data(), 4));
}

TEST_F(DdsSlicesFile, ALevelIsThereWhenTheFileIsLongEnoughForIt) {
    DdsFile file{.width = 2, .height = 2, .mips = 2, .faces = 0b000011};
    AppendPixels(file.data, 10, {1, 2, 3, 4});
    const Bytes whole = file.Bytes();
    // Level 1 of the last face is the last thing in the file.
    for (const std::size_t missing : {0u, 1u, 4u, 5u, 40u}) {
        const auto slices = OpenBytes(Bytes(whole.begin(), whole.end() - static_cast<std::ptrdiff_t>(missing)));
        ASSERT_TRUE(slices);
        EXPECT_EQ(slices->HasLevel(1), missing == 0) << missing;
        EXPECT_EQ(slices->HasLevel(0), missing <= 4) << missing;
        EXPECT_FALSE(slices->HasLevel(2));
        EXPECT_FALSE(slices->HasLevel(-1));
    }
}

TEST_F(DdsSlicesFile, AFileThatIsNoneDoesNotOpen) {
    EXPECT_FALSE(DdsSlices::Open(Wide(folder / "missing.dds")));
    EXPECT_FALSE(DdsSlices::Open(Wide(folder.Path())));
    EXPECT_FALSE(OpenBytes({}));
    EXPECT_FALSE(OpenBytes({'D', 'D', 'S', ' '}));
}

TEST_F(DdsSlicesFile, TheSpecOfACubeLevelIsSixFacesOfItsSize) {
    DdsFile file{.width = 8, .height = 8, .mips = 4, .faces = 0x3F};
    AppendPixels(file.data, 6 * 85, {1, 2, 3, 4});
    const auto input = OpenDds(folder.Write("cube.dds", file.Bytes()));
    ASSERT_TRUE(input);
    for (int level = 0; level < 4; ++level) {
        ASSERT_TRUE(input->seek_subimage(0, level));
        const OIIO::ImageSpec spec = DdsLevelSpec(*input);
        const int size = 8 >> level;
        EXPECT_EQ(spec.width, size);
        EXPECT_EQ(spec.height, 6 * size);
        EXPECT_EQ(spec.depth, 1);
        EXPECT_EQ(spec.full_width, size);
        EXPECT_EQ(spec.full_height, size);
        EXPECT_EQ(spec.tile_width, size);
        EXPECT_EQ(spec.tile_height, size);
        EXPECT_EQ(spec.nchannels, 4);
        EXPECT_EQ(spec.get_string_attribute("textureformat"), "CubeFace Environment");
        EXPECT_EQ(input->current_miplevel(), level) << "the file stands where it stood";
    }
}

TEST_F(DdsSlicesFile, TheSpecOfAVolumeLevelIsHalvedInEveryDirection) {
    DdsFile file{.width = 8, .height = 2, .depth = 4, .mips = 4};
    AppendPixels(file.data, 64 + 8 + 2 + 1, {1, 2, 3, 4});
    const auto input = OpenDds(folder.Write("volume.dds", file.Bytes()));
    ASSERT_TRUE(input);
    ASSERT_TRUE(input->seek_subimage(0, 1));
    const OIIO::ImageSpec spec = DdsLevelSpec(*input);
    EXPECT_EQ(spec.width, 4);
    EXPECT_EQ(spec.height, 1);
    EXPECT_EQ(spec.depth, 2);
    EXPECT_EQ(spec.full_depth, 2);
}

TEST_F(DdsSlicesFile, TheSpecOfAFlatLevelIsTheLibrarysOwn) {
    DdsFile file{.width = 8, .height = 2, .mips = 4};
    AppendPixels(file.data, 16 + 4 + 2 + 1, {1, 2, 3, 4});
    const auto input = OpenDds(folder.Write("flat.dds", file.Bytes()));
    ASSERT_TRUE(input);
    ASSERT_TRUE(input->seek_subimage(0, 2));
    EXPECT_EQ(DdsLevelSpec(*input).width, 2);
    EXPECT_EQ(DdsLevelSpec(*input).height, 1);
}

}  // namespace
}  // namespace Kavra::Tests
