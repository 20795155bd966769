// The bytes of KTX2 files that are written, against their description.

#include "frame/host/devices/KtxTestFile.h"

#include <gtest/gtest.h>

namespace Kavra::Tests {
namespace {

using namespace Devices;

Bytes Written(const TextureShape& shape, const Bytes& data, int zstdLevel = 0) {
    const TemporaryFolder folder;
    TextureWriteOptions options;
    options.zstdLevel = zstdLevel;
    std::string reason;
    EXPECT_TRUE(WriteTextureFile(Wide(folder / "a.ktx2"), shape, data.data(), data.size(), options, &reason)) << reason;
    return ReadAll(folder / "a.ktx2");
}

TextureShape Flat(EFormat format, int width, int height, int levels = 1) {
    TextureShape shape;
    shape.format = format;
    shape.width = width;
    shape.height = height;
    shape.levels = levels;
    return shape;
}

std::uint32_t Field(const Bytes& file, std::size_t offset) {
    return file.at(offset) | file.at(offset + 1) << 8 | file.at(offset + 2) << 16 |
           static_cast<std::uint32_t>(file.at(offset + 3)) << 24;
}

TEST(TextureFileKtx, AWholeFileIsAsItsDescriptionHasIt) {
    using namespace std::string_view_literals;
    Bytes expected = {0xAB, 'K', 'T', 'X', ' ', '2', '0', 0xBB, '\r', '\n', 0x1A, '\n'};
    for (const std::uint32_t field : {9, 1, 5, 3, 0, 0, 1, 2, 0})  // R8, a byte each, 5 x 3, two levels
        Append(expected, field, 4);
    for (const std::uint32_t field : {128, 44, 172, 64})
        Append(expected, field, 4);
    Append(expected, 0, 16);
    for (const std::uint32_t field : {240, 15, 15, 236, 2, 2})
        Append(expected, field, 8);
    const Bytes descriptor = {44, 0, 0, 0, 0, 0, 0, 0, 2, 0, 40, 0, 1, 1, 1, 0, 0, 0, 0,   0, 1, 0,
                              0,  0, 0, 0, 0, 0, 0, 0, 7, 0, 0,  0, 0, 0, 0, 0, 0, 0, 255, 0, 0, 0};
    expected.insert(expected.end(), descriptor.begin(), descriptor.end());
    const auto texts = "\x12\0\0\0KTXorientation\0rd\0\0\0\x10\0\0\0KTXswizzle\0rrr1\0\x10\0\0\0KTXwriter\0kavra\0"sv;
    expected.insert(expected.end(), texts.begin(), texts.end());
    expected.insert(expected.end(), {15, 16, 0, 0});  // the smaller level, and zeros up to a multiple of four
    const Bytes top = Counting(15);
    expected.insert(expected.end(), top.begin(), top.end());
    EXPECT_EQ(Written(Flat(kL8, 5, 3, 2), Counting(17)), expected);
}

TEST(TextureFileKtx, LevelsBeginAtMultiplesOfTheirUnitAndOfFour) {
    const std::pair<EFormat, std::uint32_t> alignments[] = {
        {kR8, 4},  {kR16, 4}, {kR8G8B8A8, 4}, {kR16G16B16A16F, 8}, {kR32G32B32F, 12}, {kR32G32B32A32F, 16},
        {kBC1, 8}, {kBC7, 16}};
    for (const auto& [format, alignment] : alignments) {
        const TextureShape shape = Flat(format, 7, 5, 3);
        const Bytes file = Written(shape, Noise(TextureBytes(shape)));
        std::uint32_t end = Field(file, kAtKvdOffset) + Field(file, kAtKvdBytes);
        for (std::size_t level = 3; level-- > 0;) {
            const std::uint32_t begin = Field(file, kAtIndex + 24 * level);
            EXPECT_EQ(begin % alignment, 0U) << format;
            EXPECT_GE(begin, end) << "the smallest comes first";
            EXPECT_LT(begin - end, alignment) << "no more zeros than are needed";
            end = begin + Field(file, kAtIndex + 24 * level + 8);
        }
        EXPECT_EQ(end, file.size());
    }
}

TEST(TextureFileKtx, PackedLevelsFollowEachOtherWithoutGaps) {
    const TextureShape shape = Flat(kBC7, 64, 64, 7);
    const Bytes data(TextureBytes(shape), 7);
    const Bytes file = Written(shape, data, 19);
    EXPECT_EQ(Field(file, kAtScheme), 2U);
    std::uint32_t end = Field(file, kAtKvdOffset) + Field(file, kAtKvdBytes);
    for (std::size_t level = 7; level-- > 0;) {
        EXPECT_EQ(Field(file, kAtIndex + 24 * level), end);
        EXPECT_EQ(Field(file, kAtIndex + 24 * level + 16), TextureLevelBytes(shape, static_cast<int>(level)));
        end += Field(file, kAtIndex + 24 * level + 8);
    }
    EXPECT_EQ(end, file.size());
    EXPECT_LT(file.size(), data.size() / 4);
    EXPECT_EQ(Written(shape, data, 19), file) << "the same bytes again";
}

TEST(TextureFileKtx, HeadersSayWhatTheTextureIs) {
    const auto fields = [](TextureShape shape) {
        const Bytes file = Written(shape, Noise(TextureBytes(shape)));
        std::vector<std::uint32_t> values;
        for (std::size_t offset = 12; offset < 48; offset += 4)
            values.push_back(Field(file, offset));
        return values;
    };
    using Values = std::vector<std::uint32_t>;
    TextureShape volume = Flat(kR16G16B16A16F, 4, 3, 3), cubes = Flat(kBC1, 8, 8, 2), opaque = Flat(kBC1, 4, 4);
    volume.type = kTextureVolume;
    volume.depth = 5;
    cubes.type = kTextureCube;
    cubes.elements = 3;
    cubes.isSrgb = true;
    opaque.alpha = kTextureAlphaOpaque;
    EXPECT_EQ(fields(volume), (Values{97, 2, 4, 3, 5, 0, 1, 3, 0}));
    EXPECT_EQ(fields(cubes), (Values{134, 1, 8, 8, 0, 3, 6, 2, 0}));
    EXPECT_EQ(fields(opaque), (Values{131, 1, 4, 4, 0, 0, 1, 1, 0}));
    EXPECT_EQ(fields(Flat(kR32G32F, 2, 2)), (Values{103, 4, 2, 2, 0, 0, 1, 1, 0}));
}

TEST(TextureFileKtx, EveryFormatHasItsNumber) {
    const std::pair<EFormat, std::uint32_t> numbers[] = {{kBC1, 133},
                                                         {kBC1Srgb, 134},
                                                         {kBC2, 135},
                                                         {kBC2Srgb, 136},
                                                         {kBC3, 137},
                                                         {kBC3Srgb, 138},
                                                         {kBC4, 139},
                                                         {kBC4Snorm, 140},
                                                         {kBC5, 141},
                                                         {kBC5Snorm, 142},
                                                         {kBC6H, 143},
                                                         {kBC6HSigned, 144},
                                                         {kBC7, 145},
                                                         {kBC7Srgb, 146},
                                                         {kA8, 9},
                                                         {kR8, 9},
                                                         {kL8, 9},
                                                         {kR16F, 76},
                                                         {kR16, 70},
                                                         {kL16, 70},
                                                         {kR32F, 100},
                                                         {kR16G16F, 83},
                                                         {kR16G16, 77},
                                                         {kR8G8B8A8, 37},
                                                         {kR8G8B8A8Alt, 37},
                                                         {kB8G8R8A8, 44},
                                                         {kB8G8R8X8, 44},
                                                         {kR8G8B8X8, 37},
                                                         {kR32G32F, 103},
                                                         {kR16G16B16A16F, 97},
                                                         {kR16G16B16A16, 91},
                                                         {kR32G32B32F, 106},
                                                         {kR32G32B32A32F, 109}};
    for (const auto& [format, number] : numbers) {
        const TextureShape shape = Flat(format, 4, 4);
        EXPECT_EQ(Field(Written(shape, Noise(TextureBytes(shape))), kAtFormat), number) << format;
    }
    for (const auto& [format, number] : {std::pair{kL8, 15U}, {kR8G8B8A8, 43U}, {kB8G8R8A8, 50U}, {kR16, 70U}}) {
        TextureShape shape = Flat(format, 4, 4);
        shape.isSrgb = true;
        EXPECT_EQ(Field(Written(shape, Noise(TextureBytes(shape))), kAtFormat), number) << format;
    }
}

}  // namespace
}  // namespace Kavra::Tests
