// Every kind of DDS pixels in both readings. Expected values are reckoned by hand from the formats' descriptions: v of n
// bits is v / (2^n - 1), rounded half up in the format that is delivered, and a signed one (v / (2^(n-1) - 1) + 1) / 2.

#include "module/DdsReadings.h"

namespace Kavra::Tests {
namespace {

using namespace Devices;

struct KindCase {
    std::string name;
    DdsFile file;
    EFormat format;
    Bytes pixels;     ///< in the common reading
    std::string how;  ///< what is heard in the contract's; empty: nothing, and its pixels are the same
    bool hasAlpha = false;
};

void PrintTo(const KindCase& test, std::ostream* stream) {
    *stream << test.name;
}

class DdsKinds : public DdsReadings, public testing::WithParamInterface<KindCase> {};

TEST_P(DdsKinds, AreShownAsDescribed) {
    const KindCase& test = GetParam();
    const auto common = Common(test.file);
    ASSERT_TRUE(common);
    EXPECT_EQ(common->desc.format, test.format);
    EXPECT_EQ(common->bytes, test.pixels);
    EXPECT_EQ(common->desc.hasAlpha, test.hasAlpha);
    EXPECT_TRUE(heard.empty());
    EXPECT_TRUE(messages.Texts().empty());

    const auto contract = Contract(test.file, {.format = test.format});  // which may come blue first
    if (test.how.empty()) {
        EXPECT_TRUE(heard.empty()) << heard.front();
        ASSERT_TRUE(contract);
        EXPECT_EQ(contract->bytes, test.pixels);
    } else {
        ASSERT_EQ(heard.size(), 1U);
        EXPECT_NE(heard.front().find(test.how), std::string::npos) << heard.front();
        EXPECT_TRUE(!contract || contract->bytes != test.pixels || contract->desc.format != test.format);
    }
}

constexpr std::uint32_t kRgb = 0x40, kRgba = 0x41, kGrey = 0x20000, kGreyAlpha = 0x20001, kBump = 0x80000,
                        kBumpGrey = 0x40000, kPalette = 0x20;

DdsFile Masked(Bytes data, std::uint32_t flags, std::uint32_t bits, std::uint32_t red, std::uint32_t green = 0,
               std::uint32_t blue = 0, std::uint32_t alpha = 0) {
    DdsFile file{.data = std::move(data)};
    return file.Masks(flags, bits, red, green, blue, alpha);
}

DdsFile Coded(Bytes data, std::string_view code, std::uint32_t width = 1, std::uint32_t height = 1) {
    DdsFile file{.width = width, .height = height, .data = std::move(data)};
    return file.FourCC(code);
}

DdsFile Numbered(Bytes data, std::uint32_t code) {
    DdsFile file{.data = std::move(data)};
    file.Masks(4, 0, 0);
    file.fourCC = code;
    return file;
}

DdsFile Dxgi(Bytes data, std::uint32_t number) {
    DdsFile file{.data = std::move(data)};
    return file.Dxgi(number);
}

DdsFile WithBits(DdsFile file, std::uint32_t bits) {
    file.bitCount = bits;
    return file;
}

INSTANTIATE_TEST_SUITE_P(
    Masks, DdsKinds,
    testing::Values(
        // 3 of 31 is 24.68, 11 of 63 is 44.52
        KindCase{"565", Masked({0x63, 0x19}, kRgb, 16, 0xF800, 0x7E0, 0x1F), kR8G8B8A8, {25, 45, 25, 255}, "repeating"},
        KindCase{"1555",
                 Masked({0x63, 0x8C}, kRgba, 16, 0x7C00, 0x3E0, 0x1F, 0x8000),
                 kR8G8B8A8,
                 {25, 25, 25, 255},
                 "repeating",
                 true},
        KindCase{
            "4444", Masked({0x21, 0x43}, kRgba, 16, 0xF00, 0xF0, 0xF, 0xF000), kR8G8B8A8, {51, 34, 17, 68}, "", true},
        // 3 of 7 is 109.3, 5 of 7 is 182.1, 2 of 3 is 170
        KindCase{"332", Masked({0x76}, kRgb, 8, 0xE0, 0x1C, 0x3), kR8G8B8A8, {109, 182, 170, 255}, ""},
        // 512 of 1023 is 32799.5 and a bit, 1 of 3 is 21845
        KindCase{"1010102", Masked({0x00, 0x02, 0xF0, 0x7F}, kRgba, 32, 0x3FF, 0xFFC00, 0x3FF00000, 0xC0000000),
                 kR16G16B16A16, Shorts({32800, 0, 65535, 21845}), "cut to 8", true},
        KindCase{"2101010", Masked({0x00, 0x02, 0xF0, 0x7F}, kRgba, 32, 0x3FF00000, 0xFFC00, 0x3FF, 0xC0000000),
                 kR16G16B16A16, Shorts({65535, 0, 32800, 21845}), "cut to 8", true},
        KindCase{"g16r16", Masked({0x34, 0x12, 0x78, 0x56}, kRgb, 32, 0xFFFF, 0xFFFF0000), kR16G16B16A16,
                 Shorts({0x1234, 0x5678, 0, 65535}), "cut to 8"},
        KindCase{"lone red of 8 bits", Masked({77}, kRgb, 8, 0xFF), kL8, {77}, "drawn in red"},
        KindCase{"lone red of 16 bits", Masked({0x34, 0x12}, kRgb, 16, 0xFFFF), kL16, Shorts({0x1234}), "drawn in red"},
        KindCase{"15 bits",
                 WithBits(Masked({0x63, 0x0C}, kRgb, 16, 0x7C00, 0x3E0, 0x1F), 15),
                 kR8G8B8A8,
                 {25, 25, 25, 255},
                 "do not know"},
        KindCase{"no flags",
                 Masked({30, 20, 10, 40}, 0, 32, 0xFF0000, 0xFF00, 0xFF, 0xFF000000),
                 kR8G8B8A8,
                 {10, 20, 30, 40},
                 "do not know",
                 true},
        KindCase{"bgra",
                 Masked({30, 20, 10, 40}, kRgba, 32, 0xFF0000, 0xFF00, 0xFF, 0xFF000000),
                 kR8G8B8A8,
                 {10, 20, 30, 40},
                 "",
                 true},
        KindCase{"24 bits", Masked({30, 20, 10}, kRgb, 24, 0xFF0000, 0xFF00, 0xFF), kR8G8B8A8, {10, 20, 30, 255}, ""},
        KindCase{"grey", Masked({77}, kGrey, 8, 0xFF), kL8, {77}, ""},
        KindCase{"grey of 16 bits", Masked({0x34, 0x12}, kGrey, 16, 0xFFFF), kR16, Shorts({0x1234}), ""},
        KindCase{"grey and alpha", Masked({77, 9}, kGreyAlpha, 16, 0xFF, 0, 0, 0xFF00), kR8G8B8A8, {77, 77, 77, 9}, ""},
        KindCase{"grey and alpha of 4 bits",
                 Masked({0x93}, kGreyAlpha, 8, 0xF, 0, 0, 0xF0),
                 kR8G8B8A8,
                 {51, 51, 51, 153},
                 ""},
        KindCase{"grey, its mask outside", Masked({77}, kGrey, 8, 0xFF000000), kL8, {77}, "do not know"},
        KindCase{"grey and alpha, its mask outside",
                 Masked({77, 9}, kGreyAlpha, 16, 0xFF, 0, 0, 0xFF000000),
                 kR8G8B8A8,
                 {77, 77, 77, 9},
                 "do not know",
                 true},
        KindCase{"alpha alone", Masked({77}, 0x2, 8, 0, 0, 0, 0xFF), kL8, {77}, ""}));

// -127 is nothing, 127 everything, 0 the middle, 64 is 191.75, -128 as -127
INSTANTIATE_TEST_SUITE_P(
    Signed, DdsKinds,
    testing::Values(
        KindCase{"v8u8", Masked({0x81, 0x40}, kBump, 16, 0xFF, 0xFF00), kR8G8B8A8, {0, 192, 128, 255}, "signed"},
        KindCase{"q8w8v8u8",
                 Masked({0x80, 0x7F, 0x00, 0x40}, kBump, 32, 0xFF, 0xFF00, 0xFF0000, 0xFF000000),
                 kR8G8B8A8,
                 {0, 255, 128, 192},
                 "signed",
                 true},
        // 100 is a luminance
        KindCase{"x8l8v8u8",
                 Masked({0x81, 0x40, 100, 9}, kBumpGrey, 32, 0xFF, 0xFF00, 0xFF0000),
                 kR8G8B8A8,
                 {0, 192, 100, 255},
                 "signed"},
        // 5 of 15 is 170, -15 nothing, 32 of 63 is 129.5
        KindCase{"l6v5u5",
                 Masked({0x25, 0x82}, kBumpGrey, 16, 0x1F, 0x3E0, 0xFC00),
                 kR8G8B8A8,
                 {170, 0, 130, 255},
                 "signed"},
        // 32767 is everything, -32767 nothing
        KindCase{"v16u16", Masked({0xFF, 0x7F, 0x01, 0x80}, kBump, 32, 0xFFFF, 0xFFFF0000), kR16G16B16A16,
                 Shorts({65535, 0, 32768, 65535}), "signed"},
        // all is everything, 1 of 511 is 32831.6, 256 is 49183.3
        KindCase{"a2w10v10u10", Masked({0x00, 0x05, 0xF0, 0x5F}, kBump, 32, 0x3FF00000, 0xFFC00, 0x3FF, 0xC0000000),
                 kR16G16B16A16, Shorts({65535, 32832, 49183, 21845}), "signed", true},
        KindCase{"110", Numbered(Shorts({32767, 0x8001, 0, 0x8000}), 110), kR16G16B16A16, Shorts({65535, 0, 32768, 0}),
                 "signed", true},
        // the third part of (0, 0) is 1, of (64, 64) of 127 it is 0.7016
        KindCase{"117", Numbered({0, 0}, 117), kR8G8B8A8, {128, 128, 255, 255}, "signed"},
        KindCase{"117, a slope", Numbered({0x40, 0x40}, 117), kR8G8B8A8, {192, 192, 217, 255}, "signed"},
        KindCase{"dxgi 31", Dxgi({0x81, 0x00, 0x7F, 0x40}, 31), kR8G8B8A8, {0, 128, 255, 192}, "signed", true},
        KindCase{"dxgi 63", Dxgi({0x40}, 63), kL8, {192}, "signed"},
        KindCase{"dxgi 58", Dxgi({0x00, 0x00}, 58), kL16, Shorts({32768}), "signed"}));

constexpr std::uint16_t kHalf = 0x3800, kOne = 0x3C00, kTwo = 0x4000;

INSTANTIATE_TEST_SUITE_P(
    Numbers, DdsKinds,
    testing::Values(
        KindCase{"36", Numbered(Shorts({1, 2, 3, 4}), 36), kR16G16B16A16, Shorts({1, 2, 3, 4}), "", true},
        KindCase{"111", Numbered(Shorts({kTwo}), 111), kR16F, Shorts({kTwo}), ""},
        KindCase{"112", Numbered(Shorts({kTwo, kHalf}), 112), kR16G16F, Shorts({kTwo, kHalf}), ""},
        KindCase{"113", Numbered(Shorts({kTwo, kHalf, kOne, kHalf}), 113), kR16G16B16A16F,
                 Shorts({kTwo, kHalf, kOne, kHalf}), "", true},
        KindCase{"114", Numbered({0, 0, 0, 0x40}, 114), kR32F, {0, 0, 0, 0x40}, ""},
        KindCase{
            "115", Numbered({0, 0, 0, 0x40, 0, 0, 0x80, 0x3F}, 115), kR32G32F, {0, 0, 0, 0x40, 0, 0, 0x80, 0x3F}, ""},
        KindCase{"23, of 5, 6 and 5 bits", Numbered({0x63, 0x19}, 23), kR8G8B8A8, {25, 45, 25, 255}, "do not know"},
        KindCase{"50, grey", Numbered({77}, 50), kL8, {77}, "do not know"},
        KindCase{"60, signed", Numbered({0x81, 0x40}, 60), kR8G8B8A8, {0, 192, 128, 255}, "do not know"},
        KindCase{"dxgi 24", Dxgi({0x00, 0x02, 0xF0, 0x7F}, 24), kR16G16B16A16, Shorts({32800, 0, 65535, 21845}),
                 "cut to 8", true},
        KindCase{"dxgi 35", Dxgi(Shorts({1, 2}), 35), kR16G16B16A16, Shorts({1, 2, 0, 65535}), "grey and alpha"},
        KindCase{"dxgi 65", Dxgi({77}, 65), kL8, {77}, ""},
        KindCase{"dxgi 85", Dxgi({0x63, 0x19}, 85), kR8G8B8A8, {25, 45, 25, 255}, ""},
        KindCase{"dxgi 87", Dxgi({30, 20, 10, 40}, 87), kR8G8B8A8, {10, 20, 30, 40}, "", true},
        KindCase{"dxgi 90", Dxgi({30, 20, 10, 40}, 90), kR8G8B8A8, {10, 20, 30, 40}, "", true},
        KindCase{"dxgi 29", Dxgi({30, 20, 10, 40}, 29), kR8G8B8A8, {30, 20, 10, 40}, "", true}));

/// Entry i of the palette is i, 2 i, 3 i and `alpha`.
Bytes PaletteAnd(Bytes indices, unsigned char alpha) {
    Bytes bytes;
    for (unsigned i = 0; i < 256; ++i) {
        for (const unsigned value : {i, 2 * i, 3 * i})
            bytes.push_back(static_cast<unsigned char>(value));
        bytes.push_back(alpha);
    }
    bytes.insert(bytes.end(), indices.begin(), indices.end());
    return bytes;
}

INSTANTIATE_TEST_SUITE_P(
    Palettes, DdsKinds,
    testing::Values(
        KindCase{
            "8 bits", Masked(PaletteAnd({10}, 50), kPalette, 8, 0), kR8G8B8A8, {10, 20, 30, 50}, "do not know", true},
        KindCase{"8 bits without any alpha",
                 Masked(PaletteAnd({10}, 0), kPalette, 8, 0),
                 kR8G8B8A8,
                 {10, 20, 30, 255},
                 "do not know"},
        KindCase{"8 bits and alpha",
                 Masked(PaletteAnd({10, 99}, 0), kPalette | 1, 16, 0, 0, 0, 0xFF00),
                 kR8G8B8A8,
                 {10, 20, 30, 99},
                 "do not know",
                 true},
        KindCase{"number 41", Numbered(PaletteAnd({10}, 50), 41), kR8G8B8A8, {10, 20, 30, 50}, "do not know", true}));

/// A channel of a block: ends `a` and `b`, and every index 0 but the second, which is 1.
Bytes Channel(unsigned char a, unsigned char b) {
    return {a, b, 0x08, 0, 0, 0, 0, 0};
}

Bytes Together(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// All red, or all green.
const Bytes kRedBlock = {0x00, 0xF8, 0x00, 0xF8, 0, 0, 0, 0}, kGreenBlock = {0xE0, 0x07, 0xE0, 0x07, 0, 0, 0, 0};

INSTANTIATE_TEST_SUITE_P(
    Blocks, DdsKinds,
    testing::Values(
        KindCase{"ATI1", Coded(Channel(200, 100), "ATI1", 2), kL8, {200, 100}, ""},
        KindCase{"BC4S", Coded(Channel(0x7F, 0x81), "BC4S", 2), kL8, {255, 0}, "not decoded"},
        KindCase{"BC5U",
                 Coded(Together(Channel(200, 100), Channel(50, 10)), "BC5U", 2),
                 kR8G8B8A8,
                 {200, 50, 0, 255, 100, 10, 0, 255},
                 "grey and alpha"},
        KindCase{"BC5S",
                 Coded(Together(Channel(0x7F, 0x80), Channel(0x40, 0)), "BC5S", 2),
                 kR8G8B8A8,
                 {255, 192, 128, 255, 0, 128, 128, 255},
                 "not decoded"},
        KindCase{"ATI2 has green first",
                 Coded(Together(Channel(200, 100), Channel(50, 10)), "ATI2", 2),
                 kR8G8B8A8,
                 {50, 200, 0, 255, 10, 100, 0, 255},
                 "grey and alpha"},
        KindCase{"ATI2 that says otherwise",
                 WithBits(Coded(Together(Channel(200, 100), Channel(50, 10)), "ATI2", 2), DdsFile::Code("A2XY")),
                 kR8G8B8A8,
                 {200, 50, 0, 255, 100, 10, 0, 255},
                 "grey and alpha"},
        KindCase{"A2XY",
                 Coded(Together(Channel(200, 100), Channel(50, 10)), "A2XY", 2),
                 kR8G8B8A8,
                 {200, 50, 0, 255, 100, 10, 0, 255},
                 "do not know"},
        // mode 6 of two times the same white
        KindCase{"BC7L",
                 Coded(Bytes{0xC0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x01, 0, 0, 0, 0, 0, 0, 0}, "BC7L"),
                 kR8G8B8A8,
                 {255, 255, 255, 255},
                 "do not know",
                 true},
        KindCase{"RXGB",
                 Coded(Together(Channel(200, 100), kGreenBlock), "RXGB", 2),
                 kR8G8B8A8,
                 {200, 255, 0, 255, 100, 255, 0, 255},
                 "taken for alpha"},
        KindCase{"DXT4 as it stands",
                 Coded(Together(Channel(200, 100), kRedBlock), "DXT4", 2),
                 kR8G8B8A8,
                 {255, 0, 0, 200, 255, 0, 0, 100},
                 "premultiplied",
                 true},
        KindCase{"dxgi 82",
                 DdsFile{.width = 2, .data = Together(Channel(200, 100), Channel(50, 10))}.Dxgi(82),
                 kR8G8B8A8,
                 {200, 50, 0, 255, 100, 10, 0, 255},
                 "not decoded"}));

TEST_F(DdsReadings, BlocksWithoutATypeAreThoseOfTheType) {
    constexpr struct {
        std::uint32_t typed, typeless;
        std::size_t bytes;
    } kPairs[] = {{71, 70, 8}, {74, 73, 16}, {77, 76, 16}, {80, 79, 8}, {95, 94, 16}, {98, 97, 16}};
    std::uint32_t state = 12345;
    for (const auto& pair : kPairs) {
        DdsFile file{.width = 61, .height = 33};  // no multiples of 4
        for (std::size_t i = 0; i < std::size_t{16} * 9 * pair.bytes; ++i) {
            state = state * 1664525 + 1013904223;
            file.data.push_back(static_cast<unsigned char>(state >> 24));
        }
        const auto typed = Contract(file.Dxgi(pair.typed));
        EXPECT_TRUE(heard.empty()) << pair.typed;
        const auto typeless = Common(file.Dxgi(pair.typeless));
        ASSERT_TRUE(typed && typeless) << pair.typed;
        if (pair.typed != 95) {
            EXPECT_EQ(typeless->desc.format, typed->desc.format);
            EXPECT_EQ(typeless->bytes, typed->bytes) << pair.typed;
            continue;
        }
        ASSERT_EQ(typeless->bytes.size(), typed->bytes.size());
        EXPECT_EQ(std::memcmp(typeless->bytes.data(), typed->bytes.data(), typed->bytes.size()), 0);
    }
}

TEST_F(DdsReadings, WhatTheExtensionSaysOfAlphaHolds) {
    const auto load = [&](unsigned char mode, ELegacyReading reading) {
        Bytes file = Dxgi({10, 20, 30, 40}, 28).Bytes();
        file[144] = mode;
        return Load(file, reading);
    };
    for (const unsigned char mode : {0, 1, 2}) {
        EXPECT_EQ(load(mode, kLegacyCommon)->bytes, (Bytes{10, 20, 30, 40}));
        EXPECT_TRUE(load(mode, kLegacyContract) && heard.empty());
    }
    for (const unsigned char mode : {3, 4}) {
        const auto loaded = load(mode, kLegacyCommon);
        EXPECT_EQ(loaded->bytes, (Bytes{10, 20, 30, 255}));
        EXPECT_FALSE(loaded->desc.hasAlpha);
        EXPECT_EQ(load(mode, kLegacyContract)->bytes, (Bytes{10, 20, 30, 40}));
    }
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_NE(heard.front().find("no transparency"), std::string::npos);
}

}  // namespace
}  // namespace Kavra::Tests
