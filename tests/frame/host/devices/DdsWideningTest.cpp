#include "frame/host/devices/DdsTestFile.h"

#include <gtest/gtest.h>

#include <string>

namespace Kavra::Tests {
namespace {

using namespace Devices;

struct WideCase {
    std::string name;
    DdsFile file;  ///< one row
    EFormat format;
    Bytes pixels;
    bool hasAlpha = false;
};

void PrintTo(const WideCase& test, std::ostream* stream) {
    *stream << test.name;
}

class WidenedLayout : public testing::TestWithParam<WideCase> {};

TEST_P(WidenedLayout, HoldsAllThatWasStored) {
    const WideCase& test = GetParam();
    const std::optional<DdsLevel> level = LoadLevel(test.file);
    ASSERT_TRUE(level);
    EXPECT_EQ(level->desc.format, test.format);
    EXPECT_EQ(level->bytes, test.pixels);
    EXPECT_EQ(level->desc.hasAlpha, test.hasAlpha);
    EXPECT_EQ(static_cast<std::size_t>(level->desc.rowPitch), test.pixels.size());
    EXPECT_EQ(level->desc.dataSize, test.pixels.size());
}

/// Rounding half up of v * 255 / max, worked out by hand: 5 bits 1 -> 8.2, 16 -> 131.6, 30 -> 246.8; 6 bits 1 -> 4.05,
/// 33 -> 133.6; 3 bits 1 -> 36.4, 2 -> 72.9, 5 -> 182.1; 2 bits 1 -> 85; 4 bits 1 -> 17.
std::vector<WideCase> ByteCases() {
    return {
        {"Rgb24",
         DdsFile(2, 1).Masks(0x40, 24, 0xFF0000, 0xFF00, 0xFF).Pixels({1, 2, 3, 4, 5, 6}),
         kR8G8B8A8,
         {3, 2, 1, 255, 6, 5, 4, 255}},
        {"Bgr24",
         DdsFile(2, 1).Masks(0x40, 24, 0xFF, 0xFF00, 0xFF0000).Pixels({1, 2, 3, 4, 5, 6}),
         kR8G8B8A8,
         {1, 2, 3, 255, 4, 5, 6, 255}},
        {"R5G6B5",
         DdsFile(3, 1)
             .Masks(0x40, 16, 0xF800, 0x7E0, 0x1F)
             .Pixels(Shorts({1 << 11 | 33 << 5 | 30, 16 << 11 | 1 << 5 | 1, 0xFFFF})),
         kR8G8B8A8,
         {8, 134, 247, 255, 132, 4, 8, 255, 255, 255, 255, 255}},
        {"A1R5G5B5",
         DdsFile(2, 1)
             .Masks(0x41, 16, 0x7C00, 0x3E0, 0x1F, 0x8000)
             .Pixels(Shorts({0x8000 | 1 << 10 | 16 << 5 | 30, 31 << 10})),
         kR8G8B8A8,
         {8, 132, 247, 255, 255, 0, 0, 0},
         true},
        {"X1R5G5B5",
         DdsFile(1, 1).Masks(0x40, 16, 0x7C00, 0x3E0, 0x1F).Pixels(Shorts({1 << 10 | 16 << 5 | 30})),
         kR8G8B8A8,
         {8, 132, 247, 255}},
        {"A4R4G4B4",
         DdsFile(1, 1).Masks(0x41, 16, 0xF00, 0xF0, 0xF, 0xF000).Pixels(Shorts({0x2013})),
         kR8G8B8A8,
         {0, 17, 51, 34},
         true},
        {"R3G3B2",
         DdsFile(2, 1).Masks(0x40, 8, 0xE0, 0x1C, 0x3).Pixels({1 << 5 | 2 << 2 | 1, 5 << 5 | 7 << 2 | 3}),
         kR8G8B8A8,
         {36, 73, 85, 255, 182, 255, 255, 255}},
        {"A8R3G3B2",
         DdsFile(1, 1).Masks(0x41, 16, 0xE0, 0x1C, 0x3, 0xFF00).Pixels({1 << 5 | 2 << 2 | 1, 77}),
         kR8G8B8A8,
         {36, 73, 85, 77},
         true},
        {"A8L8",
         DdsFile(2, 1).Masks(0x20001, 16, 0xFF, 0, 0, 0xFF00).Pixels({9, 8, 7, 6}),
         kR8G8B8A8,
         {9, 9, 9, 8, 7, 7, 7, 6},
         true},
        {"A4L4", DdsFile(1, 1).Masks(0x20001, 8, 0xF, 0, 0, 0xF0).Pixels({0x21}), kR8G8B8A8, {17, 17, 17, 34}, true},
        {"ARGBWithAlphaFirst",
         DdsFile(1, 1).Masks(0x41, 32, 0xFF00, 0xFF0000, 0xFF000000, 0xFF).Pixels({1, 2, 3, 4}),
         kR8G8B8A8,
         {2, 3, 4, 1},
         true},
        {"AlphaMaskBeyondThePixelIsNone",
         DdsFile(1, 1).Masks(0x41, 24, 0xFF0000, 0xFF00, 0xFF, 0xFF000000).Pixels({1, 2, 3}),
         kR8G8B8A8,
         {3, 2, 1, 255}},
        {"ColourMasksAreCutToThePixel",
         DdsFile(1, 1).Masks(0x40, 24, 0xFFFF0000, 0xFF00, 0xFF).Pixels({1, 2, 3}),
         kR8G8B8A8,
         {3, 2, 1, 255}},
        {"DxgiR8G8", DdsFile(1, 1).Dxgi(49).Pixels({5, 6}), kR8G8B8A8, {5, 6, 0, 255}},
        {"DxgiB5G6R5", DdsFile(1, 1).Dxgi(85).Pixels(Shorts({1 << 11 | 33 << 5 | 30})), kR8G8B8A8, {8, 134, 247, 255}},
        {"DxgiB5G5R5A1",
         DdsFile(1, 1).Dxgi(86).Pixels(Shorts({0x8000 | 1 << 10 | 16 << 5 | 30})),
         kR8G8B8A8,
         {8, 132, 247, 255},
         true},
        {"DxgiB4G4R4A4", DdsFile(1, 1).Dxgi(115).Pixels(Shorts({0x2013})), kR8G8B8A8, {0, 17, 51, 34}, true},
        {"DxgiA4B4G4R4", DdsFile(1, 1).Dxgi(191).Pixels(Shorts({0x2013})), kR8G8B8A8, {34, 0, 17, 51}, true},
    };
}

INSTANTIATE_TEST_SUITE_P(DdsBytes, WidenedLayout, testing::ValuesIn(ByteCases()),
                         [](const auto& test) { return test.param.name; });

/// 10 bits to 16: v * 65535 / 1023: 1 -> 64.06, 512 -> 32799.6, 1022 -> 65470.9; 2 bits: 1 -> 21845, 2 -> 43690.
std::vector<WideCase> ShortCases() {
    const std::uint32_t pixel = 2U << 30 | 1022U << 20 | 512U << 10 | 1U;
    const Bytes stored{static_cast<unsigned char>(pixel), static_cast<unsigned char>(pixel >> 8),
                       static_cast<unsigned char>(pixel >> 16), static_cast<unsigned char>(pixel >> 24)};
    return {
        {"DxgiR10G10B10A2", DdsFile(1, 1).Dxgi(24).Pixels(stored), kR16G16B16A16, Shorts({64, 32800, 65471, 43690}),
         true},
        {"A2R10G10B10", DdsFile(1, 1).Masks(0x41, 32, 0x3FF00000, 0xFFC00, 0x3FF, 0xC0000000).Pixels(stored),
         kR16G16B16A16, Shorts({65471, 32800, 64, 43690}), true},
        {"A16L16", DdsFile(1, 1).Masks(0x20001, 32, 0xFFFF, 0, 0, 0xFFFF0000).Pixels({0x34, 0x12, 0x78, 0x56}),
         kR16G16B16A16, Shorts({0x1234, 0x1234, 0x1234, 0x5678}), true},
    };
}

INSTANTIATE_TEST_SUITE_P(DdsShorts, WidenedLayout, testing::ValuesIn(ShortCases()),
                         [](const auto& test) { return test.param.name; });

/// Halfs: 1 is 3c00, -1 bc00, 0.5 3800. 64 / 127 = 0.503937 = 0.5 * (1 + 8.06 / 1024): 3808. 5 bits signed: 8 / 15 =
/// 0.53333 = 0.5 * (1 + 68.27 / 1024): 3844. 6 bits: 21 / 63 = 1 / 3 = 0.25 * (1 + 341.33 / 1024): 3555. 10 bits
/// signed: 1 / 511 = 2^-9 * (1 + 2.004 / 1024): 1802.
std::vector<WideCase> BumpCases() {
    return {
        {"V8U8", DdsFile(3, 1).Masks(0x80000, 16, 0xFF, 0xFF00).Pixels({127, 0x81, 64, 0, 0x80, 0}), kR16G16F,
         Shorts({0x3C00, 0xBC00, 0x3808, 0, 0xBC00, 0})},
        {"CxV8U8", DdsFile(1, 1).Code(117).Pixels({127, 0x81}), kR16G16F, Shorts({0x3C00, 0xBC00})},
        {"Q8W8V8U8", DdsFile(1, 1).Masks(0x80000, 32, 0xFF, 0xFF00, 0xFF0000, 0xFF000000).Pixels({127, 0x81, 0, 64}),
         kR16G16B16A16F, Shorts({0x3C00, 0xBC00, 0, 0x3808}), true},
        {"V16U16", DdsFile(1, 1).Masks(0x80000, 32, 0xFFFF, 0xFFFF0000).Pixels(Shorts({0x7FFF, 0x8001})), kR32G32F,
         Floats({1.0F, -1.0F})},
        {"L6V5U5", DdsFile(1, 1).Masks(0x40000, 16, 0x1F, 0x3E0, 0xFC00).Pixels(Shorts({21 << 10 | 17 << 5 | 8})),
         kR16G16B16A16F, Shorts({0x3844, 0xBC00, 0x3555, 0x3C00})},
        {"X8L8V8U8", DdsFile(1, 1).Masks(0x40000, 32, 0xFF, 0xFF00, 0xFF0000).Pixels({127, 0x81, 255, 99}),
         kR16G16B16A16F, Shorts({0x3C00, 0xBC00, 0x3C00, 0x3C00})},
        {"A2W10V10U10",
         DdsFile(1, 1)
             .Masks(0x80000, 32, 0x3FF, 0xFFC00, 0x3FF00000, 0xC0000000)
             .Pixels(Shorts({(511 << 10 & 0xFFFF) | 1, 3 << 14 | 0x201 << 4 | 511 >> 6})),
         kR16G16B16A16F, Shorts({0x1802, 0x3C00, 0xBC00, 0x3C00}), true},
        {"Q16W16V16U16", DdsFile(1, 1).Code(110).Pixels(Shorts({0x7FFF, 0x8001, 0x8000, 1})), kR32G32B32A32F,
         Floats({1.0F, -1.0F, -1.0F, 1.0F / 32767.0F}), true},
        {"DxgiR8G8B8A8Snorm", DdsFile(1, 1).Dxgi(31).Pixels({127, 0x81, 0, 64}), kR16G16B16A16F,
         Shorts({0x3C00, 0xBC00, 0, 0x3808}), true},
        {"DxgiR8Snorm", DdsFile(2, 1).Dxgi(63).Pixels({127, 0x80}), kR16F, Shorts({0x3C00, 0xBC00})},
        {"DxgiR16Snorm", DdsFile(1, 1).Dxgi(58).Pixels(Shorts({0x8001})), kR32F, Floats({-1.0F})},
        {"DxgiR16G16Snorm", DdsFile(1, 1).Dxgi(37).Pixels(Shorts({0x7FFF, 0})), kR32G32F, Floats({1.0F, 0.0F})},
    };
}

INSTANTIATE_TEST_SUITE_P(DdsBumps, WidenedLayout, testing::ValuesIn(BumpCases()),
                         [](const auto& test) { return test.param.name; });

/// 11-bit float 1.0: exponent 15, mantissa 0: 15 << 6; 1.5: 15 << 6 | 32; 10-bit 0.5: 14 << 5. Shared exponent: 256 *
/// 2^(e - 24) with e = 16 is 1, 511 * 2^7 with e = 31 is 65408 (half 7bfc), 1 * 2^-24 with e = 0 the smallest half.
/// Extended range: (384 - 384) / 510 = 0, (894 - 384) / 510 = 1, (129 - 384) / 510 = -0.5; alpha 3 / 3.
std::vector<WideCase> PackedCases() {
    const auto word = [](std::uint32_t value) {
        return Shorts({static_cast<std::uint16_t>(value), static_cast<std::uint16_t>(value >> 16)});
    };
    return {
        {"R11G11B10", DdsFile(1, 1).Dxgi(26).Pixels(word(15U << 6 | (15U << 6 | 32) << 11 | (14U << 5) << 22)),
         kR16G16B16A16F, Shorts({0x3C00, 0x3E00, 0x3800, 0x3C00})},
        {"R9G9B9E5", DdsFile(1, 1).Dxgi(67).Pixels(word(16U << 27 | 256U | 128U << 9 | 0U << 18)), kR16G16B16A16F,
         Shorts({0x3C00, 0x3800, 0, 0x3C00})},
        {"R9G9B9E5Largest", DdsFile(1, 1).Dxgi(67).Pixels(word(31U << 27 | 511U)), kR16G16B16A16F,
         Shorts({0x7BFC, 0, 0, 0x3C00})},
        {"R9G9B9E5Smallest", DdsFile(1, 1).Dxgi(67).Pixels(word(1U << 18)), kR16G16B16A16F, Shorts({0, 0, 1, 0x3C00})},
        {"ExtendedRange", DdsFile(1, 1).Dxgi(89).Pixels(word(3U << 30 | 129U << 20 | 894U << 10 | 384U)),
         kR16G16B16A16F, Shorts({0, 0x3C00, 0xB800, 0x3C00}), true},
    };
}

INSTANTIATE_TEST_SUITE_P(DdsPacked, WidenedLayout, testing::ValuesIn(PackedCases()),
                         [](const auto& test) { return test.param.name; });

/// BT.601: Y 16, U = V = 128 is black, Y 235 white (298 * 219 + 128 >> 8 = 255). Y 82, U 90, V 240 is nearly pure red:
/// R = (298 * 66 + 409 * 112 + 128) >> 8 = 256 -> 255, G = (19668 + 3800 - 23296 + 128) >> 8 = 1,
/// B = (19668 - 19608 + 128) >> 8 = 0. The last three colours are the formula's, chosen where one less or more in a
/// coefficient of red or blue would show: (1320 + 45808) / 256 = 184.1, (3108 + 51600) / 256 = 213.7.
std::vector<WideCase> PairCases() {
    const Bytes red{255, 1, 0, 255};
    const Bytes three{255, 1, 0, 255, 255, 1, 0, 255, 0, 0, 0, 255};
    return {
        {"Yuy2", DdsFile(3, 1).Code("YUY2").Pixels({82, 90, 82, 240, 16, 128, 99, 128}), kR8G8B8A8, three},
        {"Uyvy", DdsFile(3, 1).Code("UYVY").Pixels({90, 82, 240, 82, 128, 16, 128, 99}), kR8G8B8A8, three},
        {"DxgiYuy2",
         DdsFile(2, 1).Dxgi(107).Pixels({16, 128, 235, 128}),
         kR8G8B8A8,
         {0, 0, 0, 255, 255, 255, 255, 255}},
        {"Rgbg",
         DdsFile(3, 1).Code("RGBG").Pixels({1, 2, 3, 4, 5, 6, 7, 8}),
         kR8G8B8A8,
         {1, 2, 3, 255, 1, 4, 3, 255, 5, 6, 7, 255}},
        {"Grgb",
         DdsFile(3, 1).Code("GRGB").Pixels({2, 1, 4, 3, 6, 5, 8, 7}),
         kR8G8B8A8,
         {1, 2, 3, 255, 1, 4, 3, 255, 5, 6, 7, 255}},
        {"EveryCoefficient",
         DdsFile(6, 1).Code("YUY2").Pixels({20, 128, 20, 240, 120, 90, 120, 60, 26, 228, 26, 128}),
         kR8G8B8A8,
         {184, 0, 5, 255, 184, 0, 5, 255, 12, 191, 44, 255, 12, 191, 44, 255, 12, 0, 213, 255, 12, 0, 213, 255}},
        {"MaskedYuv", DdsFile(1, 1).Masks(0x200, 24, 0xFF, 0xFF00, 0xFF0000).Pixels({82, 90, 240}), kR8G8B8A8, red},
        {"Ayuv", DdsFile(1, 1).Dxgi(100).Pixels({240, 90, 82, 7}), kR8G8B8A8, {255, 1, 0, 7}, true},
    };
}

INSTANTIATE_TEST_SUITE_P(DdsPairs, WidenedLayout, testing::ValuesIn(PairCases()),
                         [](const auto& test) { return test.param.name; });

TEST(DdsWidening, OddRowsOfPairsTakeAWholeLastPair) {
    // 3 x 2: each row is two pairs; the second row begins at byte 8.
    const std::optional<DdsLevel> level =
        LoadLevel(DdsFile(3, 2).Code("RGBG").Pixels({1, 2, 3, 4, 5, 6, 7, 8, 11, 12, 13, 14, 15, 16, 17, 18}));
    ASSERT_TRUE(level);
    EXPECT_EQ(Bytes(level->bytes.begin() + 12, level->bytes.end()),
              (Bytes{11, 12, 13, 255, 11, 14, 13, 255, 15, 16, 17, 255}));
}

TEST(DdsWidening, EveryRowOf24BitsIsTightWhateverTheHeaderSaysOfThePitch) {
    DdsFile file = DdsFile(1, 2).Masks(0x40, 24, 0xFF0000, 0xFF00, 0xFF).Pixels({1, 2, 3, 4, 5, 6});
    const std::optional<DdsLevel> level = LoadLevel(file.Or(8, 0x8).Set(20, 4));
    ASSERT_TRUE(level);
    EXPECT_EQ(level->bytes, (Bytes{3, 2, 1, 255, 6, 5, 4, 255}));
}

/// Every count from 1 to 16 bits, every value: the nearest of 255 (up to 8 bits) or 65535 steps, halves upwards.
TEST(DdsWidening, EveryValueOfEveryMaskIsRoundedHalfUp) {
    for (std::uint32_t bits = 1; bits <= 16; ++bits) {
        const std::uint32_t max = (1U << bits) - 1;
        DdsFile file = DdsFile(max + 1, 1).Masks(0x40, 32, max << 7, 0, 0);
        Bytes stored;
        for (std::uint32_t v = 0; v <= max; ++v) {
            for (int i = 0; i < 4; ++i)
                stored.push_back(static_cast<unsigned char>(v << 7 >> (8 * i)));
        }
        const std::optional<DdsLevel> level = LoadLevel(file.Pixels(stored));
        ASSERT_TRUE(level);
        const std::uint64_t top = bits <= 8 ? 255 : 65535;
        ASSERT_EQ(level->desc.format, bits <= 8 ? kR8G8B8A8 : kR16G16B16A16);
        for (std::uint64_t v = 0; v <= max; ++v) {
            const unsigned char* red = level->bytes.data() + v * (bits <= 8 ? 4 : 8);
            const std::uint64_t value = bits <= 8 ? red[0] : red[0] | red[1] << 8;
            ASSERT_EQ(value, (2 * v * top + max) / (2 * max)) << bits << " bits, " << v;
        }
    }
}

}  // namespace
}  // namespace Kavra::Tests
