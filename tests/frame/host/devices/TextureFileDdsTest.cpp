// What a texture is made of by DDS headers of all kinds, each made by hand.

#include "frame/host/devices/KtxTestFile.h"

#include <gtest/gtest.h>

namespace Kavra::Tests {
namespace {

using namespace Devices;

ReadTexture Read(const DdsFile& file) {
    return ReadTextureBytes(file.All());
}

// --- Arrays.

TEST(TextureFileDds, AnArrayHasItsElementsBehindEachOther) {
    const ReadTexture read = Read(DdsFile(2, 2).Dxgi(61, 3, 0, 3).Mips(2).Counting(15));
    ASSERT_TRUE(read.isWhole) << read.reason;
    EXPECT_EQ(read.shape.elements, 3);
    EXPECT_EQ(read.shape.levels, 2);
    EXPECT_EQ(read.shape.format, kR8);
    EXPECT_EQ(read.bytes, Counting(15));
}

TEST(TextureFileDds, AnArrayOfCubesCountsCubes) {
    const ReadTexture read = Read(DdsFile(2, 2).Dxgi(61, 3, 4, 2).Counting(48));
    ASSERT_TRUE(read.isWhole) << read.reason;
    EXPECT_EQ(read.shape.type, kTextureCube);
    EXPECT_EQ(read.shape.elements, 2);
    EXPECT_EQ(read.bytes, Counting(48));
}

TEST(TextureFileDds, NoElementsAreOneAndVolumesHaveNone) {
    EXPECT_EQ(Read(DdsFile(2, 2).Dxgi(61, 3, 0, 0).Counting(4)).shape.elements, 1);
    EXPECT_EQ(Read(DdsFile(2, 2).Dxgi(61, 4, 0, 7).Volume(2).Counting(8)).shape.elements, 1);
}

TEST(TextureFileDds, FacesThatAreNotInTheFileAreZero) {
    const ReadTexture read = Read(DdsFile(2, 2).Masks(0x20000, 8, 0xFF).Cube(0b100010).Mips(2).Counting(10, 1));
    ASSERT_TRUE(read.isWhole) << read.reason;
    Bytes expected(30);
    std::ranges::copy(Counting(5, 1), expected.begin() + 5);
    std::ranges::copy(Counting(5, 6), expected.begin() + 25);
    EXPECT_EQ(read.bytes, expected);
    const TemporaryFolder folder;
    TextureFileReader reader;
    ASSERT_TRUE(
        reader.Open(Wide(folder.Write("a", DdsFile(2, 2).Masks(0x20000, 8, 0xFF).Cube(0b100010).Counting(8).All()))));
    for (int face = -1; face < 8; ++face)
        EXPECT_EQ(reader.HasFace(face), face == 1 || face == 5) << face;
}

// --- Formats.

TextureShape ShapeOfDxgi(std::uint32_t number, std::uint32_t misc2 = 0) {
    const ReadTexture read = Read(DdsFile(4, 4).Dxgi(number).Set(144, misc2).Counting(256));
    EXPECT_TRUE(read.isWhole) << number << ": " << read.reason;
    return read.shape;
}

TEST(TextureFileDds, NumbersSaySrgb) {
    const std::pair<std::uint32_t, EFormat> numbers[] = {{29, kR8G8B8A8}, {91, kB8G8R8A8}, {93, kB8G8R8X8},
                                                         {72, kBC1Srgb},  {75, kBC2Srgb},  {78, kBC3Srgb},
                                                         {99, kBC7Srgb}};
    for (const auto& [number, format] : numbers) {
        EXPECT_EQ(ShapeOfDxgi(number).format, format);
        EXPECT_TRUE(ShapeOfDxgi(number).isSrgb) << number;
        // The plain number stands before.
        EXPECT_FALSE(ShapeOfDxgi(number == 91 ? 87 : number == 93 ? 88 : number - 1).isSrgb) << number;
    }
}

TEST(TextureFileDds, NumbersWithoutATypeAreOfTheUsualOneOfTheirFamily) {
    const std::pair<std::uint32_t, EFormat> numbers[] = {
        {1, kR32G32B32A32F}, {9, kR16G16B16A16F}, {27, kR8G8B8A8}, {90, kB8G8R8A8}, {92, kB8G8R8X8}, {53, kR16F},
        {60, kR8},           {70, kBC1},          {79, kBC4},      {82, kBC5},      {94, kBC6H},     {97, kBC7}};
    for (const auto& [number, format] : numbers)
        EXPECT_EQ(ShapeOfDxgi(number).format, format) << number;
}

TEST(TextureFileDds, TheAlphaModeIsInTheLowBitsAndUnknownOnesAreUnknown) {
    EXPECT_EQ(ShapeOfDxgi(77).alpha, kTextureAlphaUnknown);
    EXPECT_EQ(ShapeOfDxgi(77, 1).alpha, kTextureAlphaStraight);
    EXPECT_EQ(ShapeOfDxgi(77, 2 | 0x100).alpha, kTextureAlphaPremultiplied);
    EXPECT_EQ(ShapeOfDxgi(77, 3).alpha, kTextureAlphaOpaque);
    EXPECT_EQ(ShapeOfDxgi(77, 4).alpha, kTextureAlphaCustom);
    EXPECT_EQ(ShapeOfDxgi(77, 5).alpha, kTextureAlphaUnknown);
}

TEST(TextureFileDds, LegacyCodesSayWhatTheirWritersMean) {
    const auto shapeOf = [](std::string_view code) { return Read(DdsFile(4, 4).Code(code).Counting(16)).shape; };
    EXPECT_EQ(shapeOf("DXT2").format, kBC2);
    EXPECT_EQ(shapeOf("DXT2").alpha, kTextureAlphaPremultiplied);
    EXPECT_EQ(shapeOf("DXT3").alpha, kTextureAlphaUnknown);
    EXPECT_EQ(shapeOf("DXT4").format, kBC3);
    EXPECT_EQ(shapeOf("DXT4").alpha, kTextureAlphaPremultiplied);
    EXPECT_EQ(shapeOf("RXGB").alpha, kTextureAlphaCustom) << "it is red";
    EXPECT_EQ(shapeOf("ATI1").format, kBC4);
    EXPECT_EQ(shapeOf("BC5S").format, kBC5Snorm);
    EXPECT_EQ(shapeOf("A2XY").format, kBC5);
    EXPECT_EQ(shapeOf("BC7L").format, kBC7);
}

TEST(TextureFileDds, BlocksWhoseGreenComesFirstAreTurned) {
    Bytes turned = Counting(8, 8);
    turned.insert(turned.end(), {0, 1, 2, 3, 4, 5, 6, 7});
    const ReadTexture ati = Read(DdsFile(4, 4).Code("ATI2").Counting(16));
    EXPECT_EQ(ati.shape.format, kBC5);
    EXPECT_EQ(ati.bytes, turned);
    EXPECT_FALSE(ati.isAsStored);
    const ReadTexture other = Read(DdsFile(4, 4).Code("ATI2").Set(88, 0x59583241).Counting(16));  // "A2XY"
    EXPECT_EQ(other.bytes, Counting(16));
    EXPECT_TRUE(other.isAsStored);
    EXPECT_EQ(Read(DdsFile(4, 4).Code("BC5U").Counting(16)).bytes, Counting(16));
}

TEST(TextureFileDds, LayoutsThatAreNoFormatAreWidenedAsTheReaderOfLevelsDoes) {
    const DdsFile files[] = {DdsFile(3, 2).Masks(0x40, 24, 0xFF0000, 0xFF00, 0xFF).Counting(18),
                             DdsFile(3, 2).Masks(0x40, 16, 0xF800, 0x7E0, 0x1F).Counting(12),
                             DdsFile(3, 2).Code("YUY2").Counting(16), DdsFile(3, 2).Dxgi(26).Counting(24),
                             DdsFile(3, 2).Dxgi(31).Counting(24)};
    for (const DdsFile& file : files) {
        const ReadTexture read = Read(file);
        const std::optional<DdsLevel> level = LoadLevel(file);
        ASSERT_TRUE(read.isWhole && level) << read.reason;
        EXPECT_EQ(read.shape.format, level->desc.format);
        EXPECT_EQ(read.bytes, level->bytes);
        EXPECT_FALSE(read.isAsStored);
    }
}

TEST(TextureFileDds, LevelsAndFlagsThatAreLeftOutAreMended) {
    DdsFile unflagged(4, 4);
    unflagged.Masks(0x20000, 8, 0xFF).Set(28, 3).Counting(21);
    EXPECT_EQ(Read(unflagged).shape.levels, 3) << "the file has their bytes";
    EXPECT_EQ(Read(DdsFile(4, 4).Masks(0x20000, 8, 0xFF).Mips(99).Counting(21)).shape.levels, 3);
    EXPECT_EQ(Read(DdsFile(1, 1).Masks(0, 32, 0xFF, 0xFF00, 0xFF0000, 0xFF000000).Counting(4)).shape.format, kR8G8B8A8);
}

// --- What is refused.

std::string WhyNot(const DdsFile& file) {
    const ReadTexture read = Read(file);
    EXPECT_EQ(read.shape.format, kUnknown);
    return read.reason;
}

TEST(TextureFileDds, WhatIsNotReadIsNamed) {
    EXPECT_EQ(WhyNot(DdsFile(4, 4).Dxgi(42).Counting(99)), "DXGI format 42 is not supported");
    EXPECT_EQ(WhyNot(DdsFile(4, 4).Code("ETC1").Counting(99)), "the code \"ETC1\" is not supported");
    EXPECT_EQ(WhyNot(DdsFile(4, 4).Code(79).Counting(99)), "the code 79 is not supported");
    EXPECT_EQ(WhyNot(DdsFile(4, 4).Masks(0x20, 8, 0).Counting(99)), "palettes are not supported");
    EXPECT_EQ(WhyNot(DdsFile(4, 4).Masks(0x40, 64, 0xFF).Counting(99)),
              "its channels, in pixels of 64 bits, are not supported");
    EXPECT_EQ(WhyNot(DdsFile(4, 0).Masks(0x20000, 8, 0xFF)), "a size of 4 x 0 x 0 is not supported");
    EXPECT_EQ(WhyNot(DdsFile(4, 2).Masks(0x20000, 8, 0xFF).Cube().Counting(99)), "its cube is not square");
    EXPECT_EQ(WhyNot(DdsFile(1, 1).Dxgi(61, 3, 0, 65537).Counting(99)), "an array of 65537 elements is not supported");
}

TEST(TextureFileDds, AFileThatIsTooShortIsRefusedBeforeMemoryIsTaken) {
    EXPECT_EQ(WhyNot(DdsFile(4, 4).Masks(0x20000, 8, 0xFF).Mips(3).Counting(20)), "the file ends within level 2");
    EXPECT_EQ(WhyNot(DdsFile(4, 4).Masks(0x20000, 8, 0xFF).Cube().Counting(50)),
              "the file ends within level 0 of face 3");
    EXPECT_EQ(WhyNot(DdsFile(4, 4).Dxgi(61, 3, 4, 2).Counting(96 + 16)),
              "the file ends within level 0 of face 1 of element 1");
    EXPECT_EQ(WhyNot(DdsFile(1 << 20, 1 << 20).Dxgi(2, 4).Volume(1 << 16).Mips(21)), "the file ends within level 0");
    EXPECT_EQ(WhyNot(DdsFile(1 << 20, 1 << 20).Dxgi(2, 3, 4, 1 << 16).Mips(21)),
              "the file ends within level 0 of face 0 of element 0");
}

TEST(TextureFileDds, CutAnywhereAFileIsRefused) {
    const Bytes whole =
        DdsFile(4, 4).Dxgi(98, 3, 4, 2).Mips(3).Counting(static_cast<std::size_t>(2 * 6 * 3 * 16)).All();
    ASSERT_TRUE(ReadTextureBytes(whole).isWhole);
    for (std::size_t size = 0; size < whole.size(); size += size < 160 ? 1 : 5) {
        const ReadTexture read = ReadTextureBytes(Bytes(whole.begin(), whole.begin() + size));
        ASSERT_TRUE(!read.isWhole && !read.reason.empty()) << size;
    }
}

TEST(TextureFileDds, NoFieldOfAHeaderIsBelieved) {
    const Bytes whole =
        DdsFile(4, 4).Dxgi(98, 3, 4, 2).Mips(3).Counting(static_cast<std::size_t>(2 * 6 * 3 * 16)).All();
    for (std::size_t offset = 4; offset < 148; offset += 4) {
        for (const std::uint32_t value : {0U, 1U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU, 0x10000U, 0x100000U}) {
            Bytes file = whole;
            KtxFile::Put(file, offset, value);
            const ReadTexture read = ReadTextureBytes(file);
            EXPECT_EQ(read.isWhole, read.reason.empty());
            EXPECT_LE(read.bytes.size(), 8 * file.size()) << offset << " " << value;
        }
    }
}

// --- Headers that are written.

Bytes Written(const TextureShape& shape) {
    const TemporaryFolder folder;
    const Bytes data = Noise(TextureBytes(shape));
    EXPECT_TRUE(WriteTextureFile(Wide(folder / "a.DDS"), shape, data.data(), data.size()));
    return ReadAll(folder / "a.DDS");
}

TextureShape Flat(EFormat format, int elements = 1) {
    TextureShape shape;
    shape.format = format;
    shape.width = shape.height = 4;
    shape.elements = elements;
    return shape;
}

/// Number, dimension, misc, elements and alpha of a DX10 header.
std::vector<std::uint32_t> Extension(const Bytes& file) {
    std::vector<std::uint32_t> fields;
    EXPECT_EQ(std::string(file.begin() + 84, file.begin() + 88), "DX10");
    for (std::size_t offset = 128; offset < 148; offset += 4)
        fields.push_back(file.at(offset) | file.at(offset + 1) << 8);
    return fields;
}

using Fields = std::vector<std::uint32_t>;

TEST(TextureFileDds, WhatAnOldHeaderSaysHasTheBytesOfTheOtherWriter) {
    const EFormat formats[] = {kL8,  kA8,  kR8G8B8X8, kR8G8B8A8, kB8G8R8A8,  kBC1,
                               kBC3, kBC4, kBC7,      kBC7Srgb,  kR32G32B32F};
    for (const EFormat format : formats) {
        for (const ETextureType type : {kTexture2D, kTextureCube, kTextureVolume}) {
            TextureShape shape = Flat(format);
            shape.type = type;
            shape.depth = type == kTextureVolume ? 3 : 1;
            shape.levels = 2;
            const TemporaryFolder folder;
            ASSERT_TRUE(Save(folder / "b", type, format, 4, 4, shape.depth, 2, Noise(TextureBytes(shape))));
            EXPECT_EQ(Written(shape), ReadAll(folder / "b")) << format << " " << type;
        }
    }
}

TEST(TextureFileDds, TheExtensionIsWrittenWhereItIsNeeded) {
    TextureShape alpha = Flat(kBC3), srgb = Flat(kR8G8B8A8), cubes = Flat(kBC1, 5);
    alpha.alpha = kTextureAlphaPremultiplied;
    srgb.isSrgb = true;
    cubes.type = kTextureCube;
    EXPECT_EQ(Extension(Written(alpha)), (Fields{77, 3, 0, 1, 2}));
    EXPECT_EQ(Extension(Written(srgb)), (Fields{29, 3, 0, 1, 0}));
    EXPECT_EQ(Extension(Written(cubes)), (Fields{71, 3, 4, 5, 0}));
    EXPECT_EQ(Extension(Written(Flat(kL16, 2))), (Fields{56, 3, 0, 2, 0}));
    EXPECT_EQ(Extension(Written(Flat(kR8G8B8X8, 2))), (Fields{28, 3, 0, 2, 3}));
    EXPECT_EQ(Extension(Written(Flat(kBC5))), (Fields{83, 3, 0, 1, 0})) << "the legacy code means green first";
}

}  // namespace
}  // namespace Kavra::Tests
