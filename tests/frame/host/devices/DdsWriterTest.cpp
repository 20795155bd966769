#include "frame/host/devices/DdsTestFile.h"

#include <kavra/devices/AFormatConvertor.h>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Utilities::AFormatConvertor;

constexpr EFormat kPlainFormats[] = {
    kA8,       kR8,       kL8,       kR16F,     kR16,     kL16,           kR32F,         kR16G16F,    kR16G16,
    kR8G8B8A8, kB8G8R8A8, kB8G8R8X8, kR8G8B8X8, kR32G32F, kR16G16B16A16F, kR16G16B16A16, kR32G32B32F, kR32G32B32A32F};
constexpr EFormat kBlockFormats[] = {kBC1,      kBC1Srgb, kBC2,      kBC2Srgb, kBC3,        kBC3Srgb, kBC4,
                                     kBC4Snorm, kBC5,     kBC5Snorm, kBC6H,    kBC6HSigned, kBC7,     kBC7Srgb};

std::vector<EFormat> AllFormats() {
    std::vector<EFormat> formats(std::begin(kPlainFormats), std::end(kPlainFormats));
    formats.insert(formats.end(), std::begin(kBlockFormats), std::end(kBlockFormats));
    return formats;
}

/// Bytes of one face of one level by the definition of the formats.
std::size_t LevelBytes(EFormat format, int width, int height, int depth) {
    if (const int block = AFormatConvertor::BytesPerBlock(format)) {
        return static_cast<std::size_t>((width + 3) / 4) * ((height + 3) / 4) * depth * block;
    }
    return static_cast<std::size_t>(width) * height * depth * AFormatConvertor::BytesPerPixel(format);
}

std::size_t ChainBytes(EFormat format, int width, int height, int depth, int levels) {
    std::size_t bytes = 0;
    for (int level = 0; level < levels; ++level) {
        bytes +=
            LevelBytes(format, std::max(width >> level, 1), std::max(height >> level, 1), std::max(depth >> level, 1));
    }
    return bytes;
}

class EveryFormat : public testing::TestWithParam<EFormat> {
protected:
    TemporaryFolder folder;
    std::filesystem::path path = folder / "out.dds";

    std::optional<DdsLevel> Level(int level) { return LoadLevel(ReadAll(path), level); }
};

TEST_P(EveryFormat, ComesBackFlatWithAllItsLevels) {
    const EFormat format = GetParam();
    const Bytes data = Noise(ChainBytes(format, 9, 6, 1, 4));
    ASSERT_TRUE(Save(path, kTexture2D, format, 9, 6, 1, 4, data));
    std::size_t offset = 0;
    for (int level = 0; level < 4; ++level) {
        const std::optional<DdsLevel> loaded = Level(level);
        ASSERT_TRUE(loaded) << level;
        EXPECT_EQ(loaded->desc.format, format);
        EXPECT_EQ(loaded->desc.textureType, kTexture2D);
        EXPECT_EQ(loaded->bytes, Bytes(data.begin() + offset, data.begin() + offset + loaded->bytes.size()));
        offset += loaded->bytes.size();
    }
    EXPECT_EQ(offset, data.size());
    EXPECT_FALSE(Level(4));
}

TEST_P(EveryFormat, ComesBackAsACube) {
    const EFormat format = GetParam();
    const std::size_t chain = ChainBytes(format, 8, 8, 1, 2);
    const std::size_t first = LevelBytes(format, 8, 8, 1);
    const Bytes data = Noise(6 * chain);
    ASSERT_TRUE(Save(path, kTextureCube, format, 8, 8, 1, 2, data));
    for (int level = 0; level < 2; ++level) {
        const std::optional<DdsLevel> loaded = Level(level);
        ASSERT_TRUE(loaded) << level;
        EXPECT_EQ(loaded->desc.format, format);
        EXPECT_EQ(loaded->desc.textureType, kTextureCube);
        Bytes expected;
        for (std::size_t face = 0; face < 6; ++face) {
            const auto begin = data.begin() + face * chain + level * first;
            expected.insert(expected.end(), begin, begin + (level == 0 ? first : chain - first));
        }
        EXPECT_EQ(loaded->bytes, expected);
    }
}

TEST_P(EveryFormat, ComesBackAsAVolume) {
    const EFormat format = GetParam();
    const Bytes data = Noise(ChainBytes(format, 5, 4, 3, 1));
    ASSERT_TRUE(Save(path, kTextureVolume, format, 5, 4, 3, 1, data));
    const std::optional<DdsLevel> loaded = Level(0);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->desc.format, format);
    EXPECT_EQ(loaded->desc.textureType, kTextureVolume);
    EXPECT_EQ(loaded->desc.depth, 3);
    EXPECT_EQ(loaded->bytes, data);
}

INSTANTIATE_TEST_SUITE_P(DdsWriter, EveryFormat, testing::ValuesIn(AllFormats()),
                         [](const auto& test) { return std::to_string(test.param); });

// --- Headers.

std::uint32_t Field(const Bytes& file, std::size_t offset) {
    return file.at(offset) | file.at(offset + 1) << 8 | file.at(offset + 2) << 16 |
           static_cast<std::uint32_t>(file.at(offset + 3)) << 24;
}

Bytes Written(ETextureType type, EFormat format, int width, int height, int depth, int levels) {
    const TemporaryFolder folder;
    const std::size_t faces = type == kTextureCube ? 6 : 1;
    const int slices = type == kTextureVolume ? depth : 1;
    const Bytes data = Noise(faces * ChainBytes(format, width, height, slices, levels));
    EXPECT_TRUE(Save(folder / "a.dds", type, format, width, height, depth, levels, data));
    return ReadAll(folder / "a.dds");
}

TEST(DdsWriter, TheHeaderOfAFlatTextureIsComplete) {
    const Bytes file = Written(kTexture2D, kB8G8R8A8, 3, 2, 1, 1);
    ASSERT_EQ(file.size(), 128U + 24);
    const std::uint32_t expected[] = {0x20534444, 124, 0x100F, 2, 3, 12, 0, 0};
    for (std::size_t i = 0; i < std::size(expected); ++i)
        EXPECT_EQ(Field(file, 4 * i), expected[i]) << 4 * i;
    for (std::size_t reserved = 32; reserved < 76; reserved += 4)
        EXPECT_EQ(Field(file, reserved), 0U);
    const std::uint32_t pixel[] = {32, 0x41, 0, 32, 0xFF0000, 0xFF00, 0xFF, 0xFF000000, 0x1000, 0, 0, 0, 0};
    for (std::size_t i = 0; i < std::size(pixel); ++i)
        EXPECT_EQ(Field(file, 76 + 4 * i), pixel[i]) << 76 + 4 * i;
}

TEST(DdsWriter, LevelsFacesAndSlicesAreFlagged) {
    const Bytes mips = Written(kTexture2D, kBC1, 8, 8, 1, 4);
    EXPECT_EQ(Field(mips, 8), 0x1007U | 0x20000 | 0x80000);
    EXPECT_EQ(Field(mips, 20), 32U) << "bytes of level 0";
    EXPECT_EQ(Field(mips, 28), 4U);
    EXPECT_EQ(Field(mips, 108), 0x401008U);
    const Bytes cube = Written(kTextureCube, kL8, 2, 2, 1, 1);
    EXPECT_EQ(Field(cube, 108), 0x1008U);
    EXPECT_EQ(Field(cube, 112), 0xFE00U);
    const Bytes volume = Written(kTextureVolume, kL8, 2, 2, 5, 1);
    EXPECT_EQ(Field(volume, 8), 0x1007U | 0x8 | 0x800000);
    EXPECT_EQ(Field(volume, 24), 5U);
    EXPECT_EQ(Field(volume, 112), 0x200000U);
}

TEST(DdsWriter, TheExtensionSaysFormatAndKind) {
    const Bytes flat = Written(kTexture2D, kBC7, 4, 4, 1, 1);
    ASSERT_EQ(flat.size(), 148U + 16);
    EXPECT_EQ(std::string(flat.begin() + 84, flat.begin() + 88), "DX10");
    const std::uint32_t expected[] = {98, 3, 0, 1, 0};
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_EQ(Field(flat, 128 + 4 * i), expected[i]);
    EXPECT_EQ(Field(Written(kTextureCube, kBC7, 4, 4, 1, 1), 136), 4U);
    EXPECT_EQ(Field(Written(kTextureVolume, kBC7, 4, 4, 2, 1), 132), 4U);
}

TEST(DdsWriter, OldProgramsGetOldHeadersWhereThereAreSome) {
    const auto codeOf = [](EFormat format) {
        const Bytes file = Written(kTexture2D, format, 4, 4, 1, 1);
        return std::string(file.begin() + 84, file.begin() + 88);
    };
    EXPECT_EQ(codeOf(kBC1), "DXT1");
    EXPECT_EQ(codeOf(kBC2), "DXT3");
    EXPECT_EQ(codeOf(kBC3), "DXT5");
    EXPECT_EQ(codeOf(kBC4), "ATI1");
    EXPECT_EQ(codeOf(kBC5), "ATI2");
    EXPECT_EQ(codeOf(kR32G32B32A32F), std::string("\x74\0\0\0", 4));
    EXPECT_EQ(codeOf(kR16G16B16A16), std::string("\x24\0\0\0", 4));
    for (const EFormat format : {kL8, kL16, kA8, kR8G8B8A8, kR16G16})
        EXPECT_EQ(codeOf(format), std::string(4, '\0'));
    for (const EFormat format : {kR8, kR16, kR32G32B32F, kBC1Srgb, kBC6H})
        EXPECT_EQ(codeOf(format), "DX10");
}

// --- What is refused.

bool Constructs(ETextureType type, EFormat format, int width, int height, int depth, int levels, int size) {
    DDSWriter writer;
    return writer.Construct(type, format, width, height, depth, levels, size, 0);
}

TEST(DdsWriter, SizesBelowOneAreRefused) {
    EXPECT_TRUE(Constructs(kTexture2D, kL8, 1, 1, 1, 1, 1));
    EXPECT_FALSE(Constructs(kTexture2D, kL8, 0, 1, 1, 1, 0));
    EXPECT_FALSE(Constructs(kTexture2D, kL8, 1, -1, 1, 1, -1));
    EXPECT_FALSE(Constructs(kTextureVolume, kL8, 1, 1, 0, 1, 0));
    EXPECT_FALSE(Constructs(kTexture2D, kBC1, 2147483647, 2147483647, 2147483647, 1, 0));
}

TEST(DdsWriter, TheSizeMustBeWhatTheRestSaysExceptForBlocks) {
    EXPECT_TRUE(Constructs(kTexture2D, kR8G8B8A8, 2, 2, 1, 1, 16));
    EXPECT_FALSE(Constructs(kTexture2D, kR8G8B8A8, 2, 2, 1, 1, 15));
    EXPECT_FALSE(Constructs(kTexture2D, kR8G8B8A8, 2, 2, 1, 1, 17));
    EXPECT_TRUE(Constructs(kTexture2D, kR8G8B8A8, 2, 2, 1, 2, 20));
    EXPECT_TRUE(Constructs(kTextureCube, kR8G8B8A8, 2, 2, 1, 1, 96));
    EXPECT_TRUE(Constructs(kTextureVolume, kR8G8B8A8, 2, 2, 3, 1, 48));
    EXPECT_TRUE(Constructs(kTexture2D, kBC3, 5, 5, 1, 1, 0)) << "blocks: follows from format and size";
    EXPECT_TRUE(Constructs(kTexture2D, kBC3, 5, 5, 1, 1, -7));
}

TEST(DdsWriter, ADepthThatAFlatTextureOrCubeDoesNotHaveIsIgnored) {
    EXPECT_TRUE(Constructs(kTexture2D, kL8, 2, 2, 9, 1, 4));
    EXPECT_TRUE(Constructs(kTexture1D, kL8, 2, 1, 9, 1, 2));
    EXPECT_TRUE(Constructs(kTextureCube, kL8, 2, 2, 9, 1, 24));
}

TEST(DdsWriter, ThirtyTwoBitsOfSizeMayBeMeantUnsigned) {
    // 3 GiB does not fit an int; the same 32 bits do.
    EXPECT_TRUE(Constructs(kTexture2D, kL8, 65536, 49152, 1, 1, static_cast<int>(0xC0000000U)));
    EXPECT_FALSE(Constructs(kTexture2D, kL8, 65536, 65536, 1, 1, 0)) << "4 GiB are not 0";
    EXPECT_FALSE(Constructs(kTexture2D, kL8, 65537, 65536, 1, 1, 65536)) << "nor is the rest the whole";
}

TEST(DdsWriter, ACubeMustBeSquareAndTheLevelsOfTheChain) {
    EXPECT_FALSE(Constructs(kTextureCube, kBC1, 4, 8, 1, 1, 0));
    EXPECT_TRUE(Constructs(kTexture2D, kBC1, 4, 8, 1, 4, 0));
    EXPECT_FALSE(Constructs(kTexture2D, kBC1, 4, 8, 1, 5, 0));
    EXPECT_FALSE(Constructs(kTexture2D, kBC1, 4, 8, 1, 0, 0));
    EXPECT_FALSE(Constructs(kTexture2D, kBC1, 4, 8, 1, -1, 0));
    EXPECT_FALSE(Constructs(kTexture2D, kBC1, 4, 8, 1, 2147483647, 0));
    EXPECT_FALSE(Constructs(kTexture2D, kBC1, 4, 8, 64, 7, 0)) << "a flat texture has no depth to halve";
    EXPECT_TRUE(Constructs(kTextureVolume, kBC1, 4, 8, 64, 7, 0));
}

TEST(DdsWriter, FormatsThatDdsCannotHoldAreRefused) {
    for (int format = -1; format < 300; ++format) {
        const std::vector<EFormat> formats = AllFormats();
        const bool known = std::ranges::find(formats, format) != formats.end() || format == kR8G8B8A8Alt;
        const int size = AFormatConvertor::BytesPerPixel(static_cast<EFormat>(format));
        EXPECT_EQ(Constructs(kTexture2D, static_cast<EFormat>(format), 1, 1, 1, 1, size), known) << format;
    }
}

TEST(DdsWriter, TheAlternativeNameOfRgbaIsReadBackAsTheCanonicalOne) {
    const std::optional<DdsLevel> loaded = LoadLevel(Written(kTexture2D, kR8G8B8A8Alt, 2, 2, 1, 1));
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->desc.format, kR8G8B8A8);
}

// --- The file.

std::size_t FilesIn(const TemporaryFolder& folder) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder.Path()), {}));
}

TEST(DdsWriter, NothingIsWrittenWithoutASuccessfulConstruct) {
    const TemporaryFolder folder;
    const unsigned char pixel = 1;
    DDSWriter writer;
    EXPECT_FALSE(writer.Write(Wide(folder / "a.dds"), &pixel));
    ASSERT_TRUE(writer.Construct(kTexture2D, kL8, 1, 1, 1, 1, 1, 0));
    EXPECT_FALSE(writer.Write(Wide(folder / "a.dds"), nullptr));
    ASSERT_FALSE(writer.Construct(kTexture2D, kL8, 1, 1, 1, 1, 2, 0));
    EXPECT_FALSE(writer.Write(Wide(folder / "a.dds"), &pixel)) << "the failed call undid the one before";
    EXPECT_EQ(FilesIn(folder), 0U);
}

TEST(DdsWriter, OneWriterWritesAsOftenAsAsked) {
    const TemporaryFolder folder;
    const Bytes pixels{1, 2};
    DDSWriter writer;
    ASSERT_TRUE(writer.Construct(kTexture2D, kL8, 2, 1, 1, 1, 2, 99));
    EXPECT_TRUE(writer.Write(Wide(folder / "a.dds"), pixels.data()));
    EXPECT_TRUE(writer.Write(Wide(folder / "\xc3\xa9\xf0\x9f\x8e\xa8.dds"), pixels.data()));
    EXPECT_EQ(ReadAll(folder / "a.dds"), ReadAll(folder / "\xc3\xa9\xf0\x9f\x8e\xa8.dds"));
    EXPECT_EQ(FilesIn(folder), 2U) << "nothing else is left behind";
}

TEST(DdsWriter, AnOlderFileIsReplacedWhole) {
    const TemporaryFolder folder;
    const std::filesystem::path path = folder.Write("a.dds", std::string(5000, 'x'));
    ASSERT_TRUE(Save(path, kTexture2D, kL8, 2, 1, 1, 1, {3, 4}));
    const std::optional<DdsLevel> loaded = LoadLevel(ReadAll(path));
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->bytes, (Bytes{3, 4}));
    EXPECT_EQ(std::filesystem::file_size(path), 130U);
}

TEST(DdsWriter, AFailureLeavesNothingAndTheOldFileAsItWas) {
    const TemporaryFolder folder;
    EXPECT_FALSE(Save(folder / "no/such/folder/a.dds", kTexture2D, kL8, 1, 1, 1, 1, {1}));
    EXPECT_FALSE(Save(folder.Path(), kTexture2D, kL8, 1, 1, 1, 1, {1})) << "a folder";
    EXPECT_FALSE(Save("", kTexture2D, kL8, 1, 1, 1, 1, {1}));
    EXPECT_FALSE(Save(folder / (std::string(5000, 'n') + ".dds"), kTexture2D, kL8, 1, 1, 1, 1, {1}));
    EXPECT_EQ(FilesIn(folder), 0U);
}

TEST(DdsWriter, PlantedLinksAreNotWrittenThrough) {
    const TemporaryFolder folder;
    const std::filesystem::path victim = folder.Write("victim", std::string("mine"));
    // Names that are made of the process number and a count can be guessed.
    for (int count = 0; count < 1000; ++count) {
        const std::string name = ".kavra-" + std::to_string(getpid()) + "-" + std::to_string(count) + ".tmp";
        std::filesystem::create_symlink(victim, folder / name);
    }
    ASSERT_TRUE(Save(folder / "a.dds", kTexture2D, kL8, 2, 1, 1, 1, {3, 4}));
    EXPECT_FALSE(std::filesystem::is_symlink(folder / "a.dds"));
    EXPECT_EQ(ReadAll(victim), (Bytes{'m', 'i', 'n', 'e'}));
}

TEST(DdsWriter, AFullDiskIsAFailure) {
    // The one "disk" here that is always full; nothing may be created beside it either.
    EXPECT_FALSE(Save("/dev/full", kTexture2D, kL8, 1, 1, 1, 1, {1}));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST(DdsWriter, APipeIsNotReplaced) {
    const TemporaryFolder folder;
    const std::filesystem::path pipe = folder / "pipe.dds";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(Save(pipe, kTexture2D, kL8, 1, 1, 1, 1, {1}));
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

}  // namespace
}  // namespace Kavra::Tests
