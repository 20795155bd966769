// DDS textures through OpenImageIO: levels, cube maps, volumes, and what the library alone would get wrong.

#include "load/DdsFile.h"
#include "load/TextureFiles.h"
#include "support/MessageRecorder.h"

#include <kavra/devices/IImageFormatHandler.h>
#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Bytes = std::vector<unsigned char>;
using Words = std::vector<std::uint16_t>;
using Floats = std::vector<float>;
using Texts = std::vector<std::wstring>;

class DdsTexture : public ::testing::Test {
protected:
    LoadedTexture Load(const DdsFile& file, const LoadRequest& request = {}) {
        return LoadBytes(file.Bytes(), request);
    }
    LoadedTexture LoadBytes(const Bytes& bytes, const LoadRequest& request = {}) {
        return LoadFile(folder.Write("x.dds", bytes), request, DDS);
    }
    TemporaryFolder folder;
    MessageRecorder messages;
};

/// A cube map whose pixels say their face and level.
DdsFile Cube(std::uint32_t size, std::uint32_t levels, std::uint32_t faces = 0x3F) {
    DdsFile file{.width = size, .height = size, .mips = levels, .faces = faces};
    for (unsigned char face = 0; face < 6; ++face) {
        if ((faces >> face & 1) == 0) continue;
        for (unsigned char level = 0; level < levels; ++level) {
            AppendPixels(file.data, size * size >> 2 * level, {static_cast<unsigned char>(10 * face), level, 7, 255});
        }
    }
    return file;
}

/// The block of one level of it.
Bytes CubeLevel(std::uint32_t size, unsigned char level, std::uint32_t faces = 0x3F) {
    Bytes expected;
    for (unsigned char face = 0; face < 6; ++face) {
        const bool there = (faces >> face & 1) != 0;
        AppendPixels(expected, size * size,
                     there ? Bytes{static_cast<unsigned char>(10 * face), level, 7, 255} : Bytes{0, 0, 0, 0});
    }
    return expected;
}

// --- Flat textures ---------------------------------------------------------------------------------------------------

TEST_F(DdsTexture, EveryLevelOfAFlatTextureIsItsOwn) {
    DdsFile file{.width = 4, .height = 2, .mips = 3};
    AppendPixels(file.data, 8, {1, 2, 3, 4});
    AppendPixels(file.data, 2, {5, 6, 7, 8});
    AppendPixels(file.data, 1, {9, 10, 11, 12});
    const LoadedTexture second = Load(file, {.level = 1});
    ASSERT_TRUE(second);
    EXPECT_EQ(second.desc.width, 2);
    EXPECT_EQ(second.desc.height, 1);
    EXPECT_EQ(second.desc.depth, 1);
    EXPECT_EQ(second.desc.textureType, kTexture2D);
    EXPECT_EQ(second.bytes, (Bytes{5, 6, 7, 8, 5, 6, 7, 8}));
    EXPECT_EQ(Load(file, {.level = 2}).bytes, (Bytes{9, 10, 11, 12}));
    EXPECT_EQ(Load(file, {.level = -1}).bytes.size(), 32U);
    EXPECT_EQ(messages.Texts(), Texts{});
}

TEST_F(DdsTexture, LayoutsComeRedFirst) {
    DdsFile bgra{.data = {30, 20, 10, 40}};
    EXPECT_EQ(Load(bgra.Bgra()).bytes, (Bytes{10, 20, 30, 40}));
    EXPECT_EQ(Load(bgra, {.format = kB8G8R8A8}).bytes, (Bytes{30, 20, 10, 40}));
    EXPECT_EQ(Load(DdsFile{.data = {30, 20, 10, 40}}.Dxgi(87)).bytes, (Bytes{10, 20, 30, 40}));
    EXPECT_EQ(Load(DdsFile{.data = {30, 20, 10, 99}}.Dxgi(88)).bytes, (Bytes{10, 20, 30, 255})) << "without alpha";
    EXPECT_EQ(Load(DdsFile{.data = {30, 20, 10}}.Masks(0x40, 24, 0xFF0000, 0xFF00, 0xFF)).bytes,
              (Bytes{10, 20, 30, 255}));
    EXPECT_EQ(Load(DdsFile{.data = {77}}.Luminance8()).desc.format, kL8);
}

TEST_F(DdsTexture, BlocksAreDecoded) {
    // Both colours of the block pure green (5-6-5), all indices 0.
    DdsFile bc1{.width = 4, .height = 4, .data = {0xE0, 0x07, 0xE0, 0x07, 0, 0, 0, 0}};
    const LoadedTexture texture = Load(bc1.FourCC("DXT1"));
    ASSERT_TRUE(texture);
    Bytes green;
    AppendPixels(green, 16, {0, 255, 0, 255});
    EXPECT_EQ(texture.bytes, green);
    EXPECT_EQ(texture.desc.format, kR8G8B8A8);
}

TEST_F(DdsTexture, LuminanceWithAlphaIsSpreadButCountsAsNoAlpha) {
    DdsFile file{.width = 2, .height = 1, .data = {10, 128, 7, 7}};
    const LoadedTexture texture = Load(file.LuminanceAlpha8());
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.bytes, (Bytes{10, 10, 10, 128, 7, 7, 7, 7}));
    EXPECT_FALSE(texture.desc.hasAlpha);
    DdsFile mask{.width = 1, .height = 1, .data = {7, 7}};
    EXPECT_EQ(Load(mask.LuminanceAlpha8()).bytes, (Bytes{7, 7, 7, 7})) << "only other files may be inverted masks";
}

TEST_F(DdsTexture, WhatTheLibraryRefusesIsLeftToTheHost) {
    DdsFile floats{.data = Bytes(16)};
    EXPECT_FALSE(Load(floats.FourCC("t\0\0\0")));  // 116: four floats
    DdsFile mixed{.data = Bytes(16)};
    EXPECT_FALSE(Load(mixed.FourCC("YUY2")));
    EXPECT_EQ(messages.Texts(), Texts{});
}

// --- Levels that are not there ---------------------------------------------------------------------------------------

TEST_F(DdsTexture, WarnsOfALevelBeyondTheFile) {
    DdsFile file{.width = 4, .height = 4, .mips = 2, .data = Bytes(80)};
    EXPECT_TRUE(Load(file, {.level = 1}));
    EXPECT_FALSE(Load(file, {.level = 2}));
    EXPECT_EQ(messages.Texts(), Texts{L"Frame index out of range"});
}

TEST_F(DdsTexture, LevelsBeyondTheFullChainAreNeverLookedFor) {
    // A header may claim them all, and the library would count to each.
    for (DdsFile file : {DdsFile{.width = 4, .height = 4, .mips = 0x7FFFFFFF, .data = Bytes(1000)},
                         DdsFile{.width = 4, .height = 4, .mips = 0x7FFFFFFF, .faces = 0x3F, .data = Bytes(1000)}}) {
        messages.Clear();
        EXPECT_TRUE(Load(file, {.level = 2}));
        for (const int level : {3, 31, 32, 100000000, 0x7FFFFFFF})
            EXPECT_FALSE(Load(file, {.level = level}));
        EXPECT_EQ(messages.Texts(), Texts(5, L"Frame index out of range"));
    }
}

// --- Cube maps -------------------------------------------------------------------------------------------------------

TEST_F(DdsTexture, EveryFaceOfEveryLevelOfACubeMapIsItsOwn) {
    const DdsFile file = Cube(8, 4);
    for (unsigned char level = 0; level < 4; ++level) {
        const std::uint32_t size = 8U >> level;
        const LoadedTexture texture = Load(file, {.level = level});
        ASSERT_TRUE(texture) << int{level};
        EXPECT_EQ(texture.bytes, CubeLevel(size, level)) << int{level};
        EXPECT_EQ(texture.desc.width, static_cast<int>(size));
        EXPECT_EQ(texture.desc.height, static_cast<int>(size)) << "of one face";
        EXPECT_EQ(texture.desc.rowPitch, static_cast<int>(size * 4));
        EXPECT_EQ(texture.desc.dataSize, size * size * 4) << "of one face";
        EXPECT_EQ(texture.desc.depth, 1);
        EXPECT_EQ(texture.desc.textureType, kTextureCube);
    }
}

TEST_F(DdsTexture, FacesAfterAGapAreFound) {
    for (const std::uint32_t faces : {0b010101U, 0b100000U, 0b111110U, 0b001001U}) {
        for (unsigned char level = 0; level < 3; ++level) {
            const LoadedTexture texture = Load(Cube(4, 3, faces), {.level = level});
            ASSERT_TRUE(texture) << faces;
            EXPECT_EQ(texture.bytes, CubeLevel(4U >> level, level, faces)) << faces << ' ' << int{level};
        }
    }
}

TEST_F(DdsTexture, AbsentFacesAreTransparentAndThatIsTold) {
    const LoadedTexture texture = Load(Cube(2, 1, 0b000011));
    ASSERT_TRUE(texture);
    EXPECT_TRUE(texture.desc.hasAlpha);
    EXPECT_TRUE(texture.desc.hasTransparentPixels);
    EXPECT_FALSE(texture.desc.hasTranslucentPixels);
}

TEST_F(DdsTexture, AbsentFacesWithoutAlphaAreBlack) {
    DdsFile file{.width = 1, .height = 1, .faces = 0b000010, .data = {30, 20, 10}};
    const LoadedTexture texture = Load(file.Masks(0x40, 24, 0xFF0000, 0xFF00, 0xFF));
    ASSERT_TRUE(texture);
    Bytes expected = {0, 0, 0, 255, 10, 20, 30, 255};
    AppendPixels(expected, 4, {0, 0, 0, 255});
    EXPECT_EQ(texture.bytes, expected);
}

TEST_F(DdsTexture, ACubeMapOfBlocksIsDecodedFaceByFace) {
    DdsFile file{.width = 4, .height = 4, .faces = 0x3F};
    for (unsigned char face = 0; face < 6; ++face) {
        // BC1: red in 31sts, equal ends, index 0.
        const std::uint16_t colour = static_cast<std::uint16_t>(face == 5 ? 31 << 11 : 0);
        const auto low = static_cast<unsigned char>(colour), high = static_cast<unsigned char>(colour >> 8);
        file.data.insert(file.data.end(), {low, high, low, high, 0, 0, 0, 0});
    }
    const LoadedTexture texture = Load(file.Dxgi(71));
    ASSERT_TRUE(texture);
    Bytes expected;
    AppendPixels(expected, 80, {0, 0, 0, 255});
    AppendPixels(expected, 16, {255, 0, 0, 255});
    EXPECT_EQ(texture.bytes, expected);
}

TEST_F(DdsTexture, ACubeMapShrinksFaceByFace) {
    const LoadedTexture texture = Load(Cube(8, 1), {.width = 4, .height = 4});
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.bytes, CubeLevel(4, 0));
    EXPECT_EQ(texture.desc.width, 4);
    EXPECT_EQ(texture.desc.height, 4);
    EXPECT_EQ(texture.desc.dataSize, 64U);
    EXPECT_EQ(texture.desc.rowPitch, 16);
}

TEST_F(DdsTexture, ACubeMapTurnsAsOneStack) {
    const LoadedTexture texture = Load(Cube(2, 1), {.orientation = kBottomLeft});
    ASSERT_TRUE(texture);
    Bytes expected;
    for (int face = 5; face >= 0; --face) {
        AppendPixels(expected, 4, {static_cast<unsigned char>(10 * face), 0, 7, 255});
    }
    EXPECT_EQ(texture.bytes, expected);
    EXPECT_EQ(texture.desc.height, 2);
}

TEST_F(DdsTexture, AQuarterRotationMovesNoFaceOfACubeMapFromItsPlace) {
    DdsFile file{.width = 2, .height = 2, .faces = 0x3F};
    for (unsigned char face = 0; face < 6; ++face) {
        for (const unsigned char pixel : {0, 1, 2, 3})
            AppendPixels(file.data, 1, {face, pixel, 0, 255});
    }
    // What stands in each face as 0 1 / 2 3, by Exif orientation.
    const std::pair<EDataOrientation, Bytes> cases[] = {
        {kLeftTop, {0, 2, 1, 3}}, {kRightTop, {1, 3, 0, 2}}, {kRightBottom, {3, 1, 2, 0}}, {kLeftBottom, {2, 0, 3, 1}}};
    for (const auto& [orientation, order] : cases) {
        const LoadedTexture texture = Load(file, {.orientation = orientation});
        ASSERT_TRUE(texture) << orientation;
        EXPECT_EQ(texture.desc.textureType, kTextureCube);
        EXPECT_EQ(texture.desc.width, 2);
        EXPECT_EQ(texture.desc.height, 2);
        EXPECT_EQ(texture.desc.rowPitch, 8);
        EXPECT_EQ(texture.desc.dataSize, 16U);
        Bytes expected;
        for (unsigned char face = 0; face < 6; ++face) {
            for (const unsigned char pixel : order)
                AppendPixels(expected, 1, {face, pixel, 0, 255});
        }
        EXPECT_EQ(texture.bytes, expected) << orientation;
    }
    const LoadedTexture small = Load(file, {.width = 1, .orientation = kRightTop});
    ASSERT_TRUE(small);
    EXPECT_EQ(small.desc.width, 2) << "the sides are limited before the turn";
    EXPECT_EQ(small.desc.height, 1);
    EXPECT_EQ(small.desc.dataSize, 8U);
}

TEST_F(DdsTexture, ACubeMapIsConvertedWhole) {
    const LoadedTexture texture = Load(Cube(1, 1), {.format = kB8G8R8A8});
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.bytes,
              (Bytes{7, 0, 0, 255, 7, 0, 10, 255, 7, 0, 20, 255, 7, 0, 30, 255, 7, 0, 40, 255, 7, 0, 50, 255}));
    EXPECT_EQ(texture.desc.dataSize, 4U);
    const LoadedTexture grey = Load(Cube(2, 1), {.format = kL8});
    EXPECT_EQ(grey.bytes.size(), 24U);
    EXPECT_EQ(grey.desc.dataSize, 4U);
}

TEST_F(DdsTexture, FacesDoNotMixBetweenThreads) {
    const auto path = folder.Write("cube.dds", Cube(4, 3).Bytes());
    std::atomic<int> wrong = 0;
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            const auto level = static_cast<unsigned char>(i % 3);
            const Bytes expected = CubeLevel(4U >> level, level);
            for (int round = 0; round < 50; ++round) {
                wrong += LoadFile(path, {.level = level}, DDS).bytes != expected;
            }
        });
    }
    threads.clear();
    EXPECT_EQ(wrong, 0);
}

// --- Volumes ---------------------------------------------------------------------------------------------------------

TEST_F(DdsTexture, EverySliceOfAVolumeIsItsOwn) {
    DdsFile rgba{.width = 2, .height = 1, .depth = 3};
    for (unsigned char slice = 1; slice < 4; ++slice)
        AppendPixels(rgba.data, 2, {slice, 20, 30, 40});
    const LoadedTexture texture = Load(rgba);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.bytes, rgba.data);
    EXPECT_EQ(texture.desc.textureType, kTextureVolume);
    EXPECT_EQ(texture.desc.depth, 3);
    EXPECT_EQ(texture.desc.dataSize, 24U);

    DdsFile grey{.width = 2, .height = 2, .depth = 2, .data = {1, 2, 3, 4, 5, 6, 7, 8}};
    EXPECT_EQ(Load(grey.Luminance8()).bytes, grey.data);
    DdsFile bgra{.width = 1, .height = 1, .depth = 2, .data = {3, 2, 1, 4, 7, 6, 5, 8}};
    EXPECT_EQ(Load(bgra.Bgra()).bytes, (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
    DdsFile blocks{
        .width = 4, .height = 4, .depth = 2, .data = {0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0}};
    Bytes blackAndWhite;
    AppendPixels(blackAndWhite, 16, {0, 0, 0, 255});
    AppendPixels(blackAndWhite, 16, {255, 255, 255, 255});
    EXPECT_EQ(Load(blocks.FourCC("DXT1")).bytes, blackAndWhite);
}

TEST_F(DdsTexture, LevelsOfAVolumeThatAreFlatAreDelivered) {
    DdsFile file{.width = 4, .height = 4, .depth = 2, .mips = 3};
    AppendPixels(file.data, 32, {1, 1, 1, 1});
    AppendPixels(file.data, 4, {2, 2, 2, 2});
    AppendPixels(file.data, 1, {3, 3, 3, 3});
    const LoadedTexture texture = Load(file, {.level = 1});
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.bytes, Bytes(16, 2));
    EXPECT_EQ(texture.desc.textureType, kTextureVolume);
    EXPECT_EQ(texture.desc.depth, 1);
    EXPECT_EQ(Load(file, {.level = 2}).bytes, Bytes(4, 3));
}

TEST_F(DdsTexture, AVolumeIsNotResized) {
    DdsFile file{.width = 8, .height = 8, .depth = 4, .mips = 4};
    AppendPixels(file.data, 8 * 8 * 4 + 4 * 4 * 2 + 2 * 2 + 1, {9, 9, 9, 9});
    const std::size_t blocks = Objects::ObjModel::BlockCounters().totalBlocks;
    EXPECT_FALSE(Load(file, {.width = 4}));
    EXPECT_FALSE(Load(file, {.level = 1})) << "its depth, already halved, counts as halved again";
    EXPECT_EQ(Objects::ObjModel::BlockCounters().totalBlocks, blocks);
    EXPECT_EQ(messages.Texts(), Texts{});
    EXPECT_TRUE(Load(file));
    EXPECT_TRUE(Load(file, {.level = 2}));
}

TEST_F(DdsTexture, ALevelOfAVolumeThatIsOneSliceIsResized) {
    DdsFile file{.width = 8, .height = 8, .depth = 4, .mips = 4};
    AppendPixels(file.data, 8 * 8 * 4 + 4 * 4 * 2 + 2 * 2 + 1, {9, 9, 9, 9});
    const LoadedTexture texture = Load(file, {.width = 1, .level = 2});
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.textureType, kTextureVolume);
    EXPECT_EQ(texture.bytes, Bytes(2 * 4, 9));
}

TEST_F(DdsTexture, TheFormatHandlerIsToldTheUse) {
    class Listens final : public IImageFormatHandler {
    public:
        EFormat ChooseFormat(EFormat fileFormat, int usage) override {
            usages.push_back(usage);
            return fileFormat;
        }
        std::vector<int> usages;
    } handler;
    EXPECT_TRUE(Load({.data = Bytes(4)}, {.formatHandler = &handler}));
    EXPECT_TRUE(Load(Cube(1, 1), {.formatHandler = &handler}));
    EXPECT_TRUE(Load({.depth = 2, .data = Bytes(8)}, {.formatHandler = &handler}));
    EXPECT_EQ(handler.usages, (std::vector<int>{8, 16, 32}));
}

// --- 16-bit luminance ------------------------------------------------------------------------------------------------

TEST_F(DdsTexture, SixteenBitLuminanceKeepsItsLowByte) {
    DdsFile file{.width = 2, .height = 1, .data = {0x34, 0x12, 0xFF, 0x00}};
    const LoadedTexture texture = Load(file.Luminance16());
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.format, kR16);
    EXPECT_EQ(texture.As<std::uint16_t>(), (Words{0x1234, 0x00FF}));
    EXPECT_EQ(Load(file, {.format = kL16}).As<std::uint16_t>(), (Words{0x1234, 0x00FF}));
    EXPECT_EQ(Load(file, {.format = kR16G16}).As<std::uint16_t>(), (Words{0x1234, 0x1234, 0x00FF, 0x00FF}));
    EXPECT_EQ(Load(file, {.format = kR16G16B16A16}).As<std::uint16_t>(),
              (Words{0x1234, 0x1234, 0x1234, 65535, 0xFF, 0xFF, 0xFF, 65535}));
    EXPECT_EQ(Load(DdsFile{.data = {0x34, 0x12}}.Dxgi(56)).As<std::uint16_t>(), Words{0x1234});
    EXPECT_EQ(messages.Texts(), Texts{});
}

TEST_F(DdsTexture, SixteenBitLuminanceGoesIntoOtherTypesAsItsFirstChannel) {
    DdsFile file{.data = {0x34, 0x12}};
    file.Luminance16();
    const Floats colour = Load(file, {.format = kR32G32B32A32F}).As<float>();
    ASSERT_EQ(colour.size(), 4U);
    EXPECT_FLOAT_EQ(colour[0], 0x1234 / 65535.0F);
    EXPECT_EQ((Floats{colour[1], colour[2], colour[3]}), (Floats{0, 0, 1}));
    EXPECT_EQ(Load(file, {.format = kL8}).bytes, Bytes{0x12});  // 4660 / 257 = 18.13
}

TEST_F(DdsTexture, SixteenBitLuminanceIsRightInEveryLevelFaceAndSlice) {
    DdsFile cube{.width = 2, .height = 2, .mips = 2, .faces = 0b100001};
    for (const unsigned char face : {1, 2}) {
        AppendPixels(cube.data, 4, {face, 0xA0});
        AppendPixels(cube.data, 1, {face, 0xB0});
    }
    cube.Luminance16();
    const LoadedTexture level = Load(cube, {.level = 1});
    ASSERT_TRUE(level);
    EXPECT_EQ(level.As<std::uint16_t>(), (Words{0xB001, 0, 0, 0, 0, 0xB002}));
    EXPECT_EQ(level.desc.dataSize, 2U);
    EXPECT_EQ(Load(cube).As<std::uint16_t>()[23], 0xA002);

    DdsFile volume{.width = 1, .height = 1, .depth = 3, .data = {1, 0x10, 2, 0x20, 3, 0x30}};
    EXPECT_EQ(Load(volume.Luminance16()).As<std::uint16_t>(), (Words{0x1001, 0x2002, 0x3003}));
}

TEST_F(DdsTexture, SixteenBitLuminanceShrinksAndTurnsLikeTheRest) {
    DdsFile file{.width = 2, .height = 1, .data = {0x34, 0x12, 0x78, 0x56}};
    EXPECT_EQ(Load(file.Luminance16(), {.orientation = kTopRight}).As<std::uint16_t>(), (Words{0x5678, 0x1234}));
    EXPECT_EQ(Load(file, {.width = 1}).bytes.size(), 2U);
}

// --- Damaged files ---------------------------------------------------------------------------------------------------

TEST_F(DdsTexture, AFileThatEndsEarlyGivesNothing) {
    const DdsFile flat{.width = 4, .height = 4, .data = Bytes(64, 1)};
    const DdsFile volume{.width = 2, .height = 2, .depth = 4, .data = Bytes(64, 1)};
    const std::size_t blocks = Objects::ObjModel::BlockCounters().liveBlocks;
    for (const Bytes& whole : {flat.Bytes(), DdsFile(flat).Dxgi(28).Bytes(), volume.Bytes(), Cube(2, 1).Bytes()}) {
        EXPECT_TRUE(LoadBytes(whole));
        for (std::size_t missing = 1; missing <= whole.size(); missing += missing < 4 ? 1 : 17) {
            EXPECT_FALSE(LoadBytes(Bytes(whole.begin(), whole.end() - static_cast<std::ptrdiff_t>(missing))))
                << missing;
        }
    }
    EXPECT_EQ(Objects::ObjModel::BlockCounters().liveBlocks, blocks);
}

TEST_F(DdsTexture, WhatStandsInAFileThatEndsEarlyIsLoaded) {
    DdsFile file{.width = 4, .height = 4, .mips = 3, .data = Bytes(64 + 16 + 3, 1)};
    EXPECT_TRUE(Load(file));
    EXPECT_TRUE(Load(file, {.level = 1}));
    EXPECT_FALSE(Load(file, {.level = 2}));
}

TEST_F(DdsTexture, AHeaderAloneClaimsNoMemory) {
    const std::size_t blocks = Objects::ObjModel::BlockCounters().totalBlocks;
    // Just under what the library itself finds suspicious, then far beyond.
    EXPECT_FALSE(Load({.width = 16000, .height = 16000}));
    EXPECT_FALSE(Load({.width = 6000, .height = 6000, .faces = 0x3F}));
    EXPECT_FALSE(Load({.width = 600, .height = 600, .depth = 600}));
    EXPECT_FALSE(Load(DdsFile{.width = 16000, .height = 16000}.FourCC("DXT1")));
    EXPECT_FALSE(Load(DdsFile{.width = 16000, .height = 16000}.Luminance16()));
    EXPECT_FALSE(Load({.width = 32768, .height = 32768}));
    EXPECT_FALSE(Load({.width = 16384, .height = 16384, .faces = 0x3F}));
    EXPECT_FALSE(Load({.width = 4096, .height = 4096, .depth = 4096}));
    EXPECT_FALSE(Load(DdsFile{.width = 32768, .height = 32768}.FourCC("DXT1")));
    EXPECT_EQ(Objects::ObjModel::BlockCounters().totalBlocks, blocks);
}

TEST_F(DdsTexture, BitCountsThatOverrunTheLibraryAreNotRead) {
    // With the flag of an alpha mask alone, the library copies as many bytes as the header says into four.
    for (const std::uint32_t bits : {40U, 64U, 1024U, 0x10000000U}) {
        DdsFile file{.width = 4, .height = 4, .data = Bytes(100000, 0xAA)};
        EXPECT_FALSE(Load(file.Masks(0x1, bits, 0xFF, 0xFF, 0xFF, 0xFF))) << bits;
    }
}

TEST_F(DdsTexture, ACubeMapWithoutFacesGivesNothing) {
    Bytes bytes = DdsFile{.faces = 1}.Bytes();
    bytes[113] &= 0x03;
    EXPECT_FALSE(LoadBytes(bytes));
}

}  // namespace
}  // namespace Kavra::Tests
