#include "common/dds/DdsCodeTable.h"
#include "frame/host/devices/DdsTestFile.h"

#include <kavra/devices/AFormatConvertor.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Utilities::AFormatConvertor;

// --- Layouts that are a format: the bytes come as they are stored.

struct ExactCase {
    std::string name;
    DdsFile header;  ///< of 3 x 2 pixels
    EFormat format;
    bool hasAlpha;
};

void PrintTo(const ExactCase& test, std::ostream* stream) {
    *stream << test.name;
}

std::vector<ExactCase> ExactCases() {
    const auto masks = [](auto... values) { return DdsFile(3, 2).Masks(values...); };
    std::vector<ExactCase> cases{
        {"L8", masks(0x20000, 8, 0xFF), kL8, false},
        {"L16", masks(0x20000, 16, 0xFFFF), kL16, false},
        {"A8", masks(0x2, 8, 0, 0, 0, 0xFF), kA8, true},
        {"RGBA", masks(0x41, 32, 0xFF, 0xFF00, 0xFF0000, 0xFF000000), kR8G8B8A8, true},
        {"RGBX", masks(0x40, 32, 0xFF, 0xFF00, 0xFF0000), kR8G8B8X8, false},
        {"BGRA", masks(0x41, 32, 0xFF0000, 0xFF00, 0xFF, 0xFF000000), kB8G8R8A8, true},
        {"BGRX", masks(0x40, 32, 0xFF0000, 0xFF00, 0xFF), kB8G8R8X8, false},
        {"AlphaMaskWithoutItsFlag", masks(0x40, 32, 0xFF0000, 0xFF00, 0xFF, 0xFF000000), kB8G8R8X8, false},
        {"G16R16", masks(0x40, 32, 0xFFFF, 0xFFFF0000), kR16G16, false},
    };
    const auto add = [&](bool legacy, std::uint32_t code, EFormat format, bool alpha) {
        const DdsFile header = legacy ? DdsFile(3, 2).Code(code) : DdsFile(3, 2).Dxgi(code);
        cases.push_back({(legacy ? "FourCC" : "Dxgi") + std::to_string(code), header, format, alpha});
    };
    add(true, 36, kR16G16B16A16, true);
    add(true, 111, kR16F, false);
    add(true, 112, kR16G16F, false);
    add(true, 113, kR16G16B16A16F, true);
    add(true, 114, kR32F, false);
    add(true, 115, kR32G32F, false);
    add(true, 116, kR32G32B32A32F, true);
    add(false, 2, kR32G32B32A32F, true);
    add(false, 6, kR32G32B32F, false);
    add(false, 10, kR16G16B16A16F, true);
    add(false, 11, kR16G16B16A16, true);
    add(false, 12, kR16G16B16A16, true);
    add(false, 16, kR32G32F, false);
    for (const int code : {27, 28, 29, 30})
        add(false, code, kR8G8B8A8, true);
    add(false, 34, kR16G16F, false);
    add(false, 35, kR16G16, false);
    add(false, 41, kR32F, false);
    add(false, 40, kR32F, false);
    add(false, 54, kR16F, false);
    add(false, 56, kR16, false);
    add(false, 61, kR8, false);
    add(false, 65, kA8, true);
    for (const int code : {87, 90, 91})
        add(false, code, kB8G8R8A8, true);
    for (const int code : {88, 92, 93})
        add(false, code, kB8G8R8X8, false);
    return cases;
}

class ExactLayout : public testing::TestWithParam<ExactCase> {};

TEST_P(ExactLayout, IsDeliveredAsStoredAndFullyDescribed) {
    const ExactCase& test = GetParam();
    const int pixelBytes = AFormatConvertor::BytesPerPixel(test.format);
    const std::optional<DdsLevel> level = LoadLevel(DdsFile(test.header).Counting(3 * 2 * pixelBytes, 1));
    ASSERT_TRUE(level);
    Bytes stored(3 * 2 * pixelBytes);
    std::iota(stored.begin(), stored.end(), 1);
    EXPECT_EQ(level->bytes, stored);
    EXPECT_EQ(level->desc.width, 3);
    EXPECT_EQ(level->desc.height, 2);
    EXPECT_EQ(level->desc.depth, 1);
    EXPECT_EQ(level->desc.format, test.format);
    EXPECT_EQ(level->desc.rowPitch, 3 * pixelBytes);
    EXPECT_EQ(level->desc.dataSize, 6U * pixelBytes);
    EXPECT_EQ(level->desc.textureType, kTexture2D);
    EXPECT_EQ(level->desc.hasAlpha, test.hasAlpha);
    EXPECT_FALSE(level->desc.hasTransparentPixels);
    EXPECT_FALSE(level->desc.hasTranslucentPixels);
    EXPECT_TRUE(level->desc.defaultOrientation);
    EXPECT_EQ(level->desc.orientation, kTopLeft);
    EXPECT_EQ(level->desc.gamma, 2.2);
}

INSTANTIATE_TEST_SUITE_P(Dds, ExactLayout, testing::ValuesIn(ExactCases()),
                         [](const auto& test) { return test.param.name; });

// --- Block-compressed layouts: raw.

struct BlockCase {
    std::string name;
    DdsFile header;  ///< of 5 x 6 pixels: two by two blocks
    EFormat format;
    std::size_t blockBytes;
};

void PrintTo(const BlockCase& test, std::ostream* stream) {
    *stream << test.name;
}

std::vector<BlockCase> BlockCases() {
    std::vector<BlockCase> cases;
    const auto legacy = [&](const char* code, EFormat format, std::size_t bytes) {
        cases.push_back({code, DdsFile(5, 6).Code(code), format, bytes});
    };
    const auto extended = [&](std::uint32_t code, EFormat format, std::size_t bytes) {
        cases.push_back({"Dxgi" + std::to_string(code), DdsFile(5, 6).Dxgi(code), format, bytes});
    };
    legacy("DXT1", kBC1, 8);
    legacy("DXT2", kBC2, 16);
    legacy("DXT3", kBC2, 16);
    legacy("DXT4", kBC3, 16);
    legacy("DXT5", kBC3, 16);
    legacy("ATI1", kBC4, 8);
    legacy("BC4U", kBC4, 8);
    legacy("BC4S", kBC4Snorm, 8);
    legacy("ATI2", kBC5, 16);
    legacy("BC5U", kBC5, 16);
    legacy("BC5S", kBC5Snorm, 16);
    extended(71, kBC1, 8);
    extended(72, kBC1Srgb, 8);
    extended(74, kBC2, 16);
    extended(75, kBC2Srgb, 16);
    extended(77, kBC3, 16);
    extended(78, kBC3Srgb, 16);
    extended(80, kBC4, 8);
    extended(81, kBC4Snorm, 8);
    extended(83, kBC5, 16);
    extended(84, kBC5Snorm, 16);
    extended(95, kBC6H, 16);
    extended(96, kBC6HSigned, 16);
    extended(98, kBC7, 16);
    extended(99, kBC7Srgb, 16);
    return cases;
}

class BlockLayout : public testing::TestWithParam<BlockCase> {};

TEST_P(BlockLayout, IsDeliveredRawWithoutRows) {
    const BlockCase& test = GetParam();
    const std::optional<DdsLevel> level = LoadLevel(DdsFile(test.header).Counting(4 * test.blockBytes, 9));
    ASSERT_TRUE(level);
    Bytes stored(4 * test.blockBytes);
    std::iota(stored.begin(), stored.end(), 9);
    EXPECT_EQ(level->bytes, stored);
    EXPECT_EQ(level->desc.format, test.format);
    EXPECT_EQ(level->desc.rowPitch, 0);
    EXPECT_EQ(level->desc.dataSize, 4 * test.blockBytes);
}

INSTANTIATE_TEST_SUITE_P(Dds, BlockLayout, testing::ValuesIn(BlockCases()),
                         [](const auto& test) { return test.param.name; });

// --- What is left.

EFormat FormatOf(const DdsFile& file) {
    const TemporaryFolder folder;
    DDSReader reader;
    return reader.Load(Wide(folder.Write("file.dds", file.All()))) ? reader.Format() : kUnknown;
}

TEST(DdsLayouts, EveryCodeOfTheTableIsDelivered) {
    for (std::uint32_t code = 0; code < 256; ++code) {
        EXPECT_EQ(FormatOf(DdsFile(4, 4).Dxgi(code)) != kUnknown, Dds::FindDxgi(code) != nullptr) << code;
        EXPECT_EQ(FormatOf(DdsFile(4, 4).Code(code)) != kUnknown, Dds::DxgiOfLegacy(code) != Dds::kDxgiUnknown) << code;
    }
}

TEST(DdsLayouts, TypelessNumbersAreDeliveredAsTheFirstTypedOne) {
    constexpr std::pair<int, int> typeless[] = {{1, 2},   {5, 6},   {9, 10},  {15, 16}, {23, 24}, {27, 28}, {33, 34},
                                                {39, 41}, {48, 49}, {53, 54}, {60, 61}, {70, 71}, {73, 74}, {76, 77},
                                                {79, 80}, {82, 83}, {90, 87}, {92, 88}, {94, 95}, {97, 98}};
    for (const auto& [code, typed] : typeless) {
        const std::optional<DdsLevel> level = LoadLevel(DdsFile(2, 2).Dxgi(code).Counting(64, 7));
        const std::optional<DdsLevel> same = LoadLevel(DdsFile(2, 2).Dxgi(typed).Counting(64, 7));
        ASSERT_TRUE(level && same) << code;
        EXPECT_EQ(level->desc.format, same->desc.format) << code;
        EXPECT_EQ(level->desc.hasAlpha, same->desc.hasAlpha) << code;
        EXPECT_EQ(level->bytes, same->bytes) << code;
    }
}

TEST(DdsLayouts, ACodeThatIsNotMeantIsPassedOver) {
    const DdsFile file = DdsFile(1, 1).Masks(0x20000, 8, 0xFF).Set(84, 0x30315844).Counting(1, 9);
    const std::optional<DdsLevel> level = LoadLevel(file);
    ASSERT_TRUE(level) << "no extension follows, whatever the code says";
    EXPECT_EQ(level->desc.format, kL8);
    EXPECT_EQ(level->bytes, Bytes{9});
}

TEST(DdsLayouts, TheReservedFormatsAreNeverReported) {
    constexpr EFormat reserved[] = {kReserved16, kReserved17, kReserved50, kReserved51, kReserved77, kReserved78};
    for (std::uint32_t code = 0; code < 256; ++code) {
        for (const EFormat format : {FormatOf(DdsFile(4, 4).Dxgi(code)), FormatOf(DdsFile(4, 4).Code(code))}) {
            EXPECT_EQ(std::ranges::find(reserved, format), std::end(reserved)) << code;
        }
    }
}

TEST(DdsLayouts, WhatHasNoMeaningIsRefused) {
    const auto opens = [](const DdsFile& file) { return FormatOf(file) != kUnknown; };
    EXPECT_FALSE(opens(DdsFile(1, 1).Code("ABCD").Counting(64)));
    EXPECT_FALSE(opens(DdsFile(1, 1).Code(0U).Counting(64)));
    EXPECT_FALSE(opens(DdsFile(1, 1).Dxgi(0).Counting(64)));
    EXPECT_FALSE(opens(DdsFile(1, 1).Dxgi(45).Counting(64))) << "depth with stencil";
    EXPECT_FALSE(opens(DdsFile(1, 1).Dxgi(3).Counting(64))) << "32-bit integers";
    EXPECT_FALSE(opens(DdsFile(1, 1).Counting(64))) << "no pixel format";
    EXPECT_FALSE(opens(DdsFile(1, 1).Masks(0x40, 32, 0).Counting(64))) << "no channel";
    EXPECT_FALSE(opens(DdsFile(1, 1).Masks(0x40, 0, 0xFF).Counting(64))) << "no bits";
    EXPECT_FALSE(opens(DdsFile(1, 1).Masks(0x40, 12, 0xFFF).Counting(64))) << "no whole bytes";
    EXPECT_FALSE(opens(DdsFile(1, 1).Masks(0x40, 64, 0xFF).Counting(64))) << "more than 32 bits";
    EXPECT_FALSE(opens(DdsFile(1, 1).Masks(0x40, 32, 0xFFFFFFFF).Counting(64))) << "more than 16 bits a channel";
    EXPECT_FALSE(opens(DdsFile(1, 1).Masks(0x80000, 16, 0x1, 0xFF00).Counting(64))) << "a signed bit";
}

}  // namespace
}  // namespace Kavra::Tests
