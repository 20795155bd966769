#include "common/dds/DdsCodeTable.h"

#include <kavra/devices/AFormatConvertor.h>

#include <gtest/gtest.h>

#include <utility>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using namespace Devices::Dds;
using Utilities::AFormatConvertor;

/// The number that a legacy code stands for.
std::uint32_t NumberOf(const char (&code)[5]) {
    return DxgiOfLegacy(FourCC(code));
}

TEST(DdsCodes, AFourCCHasItsFirstLetterLowest) {
    EXPECT_EQ(FourCC("DDS "), 0x20534444U);
    EXPECT_EQ(FourCC("DX10"), 0x30315844U);
}

TEST(DdsCodes, PixelsThatAreAFormatHaveItsSize) {
    int found = 0;
    for (std::uint32_t code = 0; code < 256; ++code) {
        const DxgiRow* const row = FindDxgi(code);
        if (row == nullptr || row->format == kUnknown) continue;
        ++found;
        const bool block = AFormatConvertor::BytesPerBlock(row->format) != 0;
        EXPECT_EQ(row->code, code);
        EXPECT_EQ(row->unit.IsBlock(), block) << code;
        EXPECT_EQ(row->unit.width, block ? 4 : 1) << code;
        EXPECT_EQ(row->unit.height, block ? 4 : 1) << code;
        EXPECT_EQ(row->unit.bytes,
                  block ? AFormatConvertor::BytesPerBlock(row->format) : AFormatConvertor::BytesPerPixel(row->format))
            << code;
    }
    EXPECT_GT(found, 50);
}

TEST(DdsCodes, PixelsThatAreNoFormatHaveASizeToo) {
    const std::pair<std::uint32_t, StoredUnit> cases[] = {
        {13, {8, 1, 1}},   // R16G16B16A16_SNORM
        {24, {4, 1, 1}},   // R10G10B10A2
        {26, {4, 1, 1}},   // R11G11B10
        {31, {4, 1, 1}},   // R8G8B8A8_SNORM
        {49, {2, 1, 1}},   // R8G8
        {63, {1, 1, 1}},   // R8_SNORM
        {67, {4, 1, 1}},   // R9G9B9E5
        {68, {4, 2, 1}},   // R8G8_B8G8
        {69, {4, 2, 1}},   // G8R8_G8B8
        {85, {2, 1, 1}},   // B5G6R5
        {100, {4, 1, 1}},  // AYUV
        {107, {4, 2, 1}},  // YUY2
        {115, {2, 1, 1}},  // B4G4R4A4
        {191, {2, 1, 1}},  // A4B4G4R4
    };
    for (const auto& [code, unit] : cases) {
        const DxgiRow* const row = FindDxgi(code);
        ASSERT_NE(row, nullptr) << code;
        EXPECT_EQ(row->format, kUnknown) << code;
        EXPECT_EQ(row->unit, unit) << code;
    }
}

TEST(DdsCodes, NumbersWithoutAFormatAreNotKnown) {
    EXPECT_EQ(FindDxgi(0), nullptr);
    EXPECT_EQ(FindDxgi(3), nullptr) << "32-bit integers";
    EXPECT_EQ(FindDxgi(45), nullptr) << "depth with stencil";
    EXPECT_EQ(FindDxgi(103), nullptr) << "planes";
    EXPECT_EQ(FindDxgi(0xFFFFFFFF), nullptr);
}

TEST(DdsCodes, AFormatIsWrittenAsItsNormalisedOrFloatNumber) {
    const std::pair<EFormat, std::uint32_t> cases[] = {
        {kR32G32B32A32F, 2}, {kR32G32B32F, 6}, {kR16G16B16A16F, 10}, {kR16G16B16A16, 11},
        {kR32G32F, 16},      {kR8G8B8A8, 28},  {kR16G16F, 34},       {kR16G16, 35},
        {kR32F, 41},         {kR16F, 54},      {kR16, 56},           {kR8, 61},
        {kA8, 65},           {kBC1, 71},       {kBC1Srgb, 72},       {kBC2, 74},
        {kBC2Srgb, 75},      {kBC3, 77},       {kBC3Srgb, 78},       {kBC4, 80},
        {kBC4Snorm, 81},     {kBC5, 83},       {kBC5Snorm, 84},      {kB8G8R8A8, 87},
        {kB8G8R8X8, 88},     {kBC6H, 95},      {kBC6HSigned, 96},    {kBC7, 98},
        {kBC7Srgb, 99},
    };
    for (const auto& [format, code] : cases) {
        ASSERT_NE(FindDxgiOf(format), nullptr) << format;
        EXPECT_EQ(FindDxgiOf(format)->code, code);
    }
    EXPECT_EQ(FindDxgiOf(kL8), nullptr);
    EXPECT_EQ(FindDxgiOf(kUnknown), nullptr) << "rows that are no format are no answer";
}

TEST(DdsCodes, LegacyCodesMeanNumbers) {
    EXPECT_EQ(NumberOf("DXT1"), 71U);
    EXPECT_EQ(NumberOf("DXT2"), 74U);
    EXPECT_EQ(NumberOf("DXT3"), 74U);
    EXPECT_EQ(NumberOf("DXT4"), 77U);
    EXPECT_EQ(NumberOf("DXT5"), 77U);
    EXPECT_EQ(NumberOf("RXGB"), 77U);
    EXPECT_EQ(NumberOf("ATI1"), 80U);
    EXPECT_EQ(NumberOf("BC4U"), 80U);
    EXPECT_EQ(NumberOf("BC4S"), 81U);
    EXPECT_EQ(NumberOf("ATI2"), 83U);
    EXPECT_EQ(NumberOf("BC5U"), 83U);
    EXPECT_EQ(NumberOf("BC5S"), 84U);
    EXPECT_EQ(NumberOf("RGBG"), 68U);
    EXPECT_EQ(NumberOf("GRGB"), 69U);
    EXPECT_EQ(NumberOf("YUY2"), 107U);
    const std::pair<std::uint32_t, std::uint32_t> older[] = {{36, 11},  {110, 13}, {111, 54}, {112, 34}, {113, 10},
                                                             {114, 41}, {115, 16}, {116, 2},  {117, 51}};
    for (const auto& [code, number] : older)
        EXPECT_EQ(DxgiOfLegacy(code), number) << code;

    EXPECT_EQ(NumberOf("UYVY"), kDxgiUnknown);
    EXPECT_EQ(NumberOf("DX10"), kDxgiUnknown);
    EXPECT_EQ(DxgiOfLegacy(0), kDxgiUnknown);
    EXPECT_EQ(DxgiOfLegacy(28), kDxgiUnknown) << "a number of DXGI is none of D3DFORMAT";
}

TEST(DdsCodes, ANumberIsWrittenAsTheLegacyCodeThatEveryReaderKnows) {
    EXPECT_EQ(LegacyOfDxgi(kDxgiBC1Unorm), FourCC("DXT1"));
    EXPECT_EQ(LegacyOfDxgi(kDxgiBC2Unorm), FourCC("DXT3"));
    EXPECT_EQ(LegacyOfDxgi(kDxgiBC3Unorm), FourCC("DXT5"));
    EXPECT_EQ(LegacyOfDxgi(kDxgiBC4Unorm), FourCC("ATI1"));
    EXPECT_EQ(LegacyOfDxgi(kDxgiBC5Unorm), FourCC("ATI2"));
    EXPECT_EQ(LegacyOfDxgi(kDxgiR16G16B16A16Float), 113U);
    EXPECT_FALSE(LegacyOfDxgi(kDxgiBC7Unorm));
    EXPECT_FALSE(LegacyOfDxgi(kDxgiBC1UnormSrgb));
    EXPECT_FALSE(LegacyOfDxgi(kDxgiUnknown));
}

TEST(DdsCodes, MaskedPixelsAreOneToFourBytes) {
    for (std::uint32_t bits = 0; bits < 80; ++bits) {
        const bool whole = bits == 8 || bits == 16 || bits == 24 || bits == 32;
        EXPECT_EQ(UnitOfBits(bits),
                  whole ? std::optional(PixelUnit(static_cast<std::uint8_t>(bits / 8))) : std::nullopt)
            << bits;
    }
    EXPECT_FALSE(UnitOfBits(0x80000008));
    EXPECT_FALSE(UnitOfBits(0xFFFFFFFF));
}

}  // namespace
}  // namespace Kavra::Tests
