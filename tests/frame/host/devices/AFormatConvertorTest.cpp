#include "EveryVectorWidth.h"
#include "PixelBytes.h"

#include <kavra/devices/AFormatConvertor.h>

#include <Imath/half.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Utilities::AFormatConvertor;

const std::map<EFormat, int> kPixelBytes = {
    {kA8, 1},
    {kR8, 1},
    {kL8, 1},
    {kR16F, 2},
    {kR16, 2},
    {kL16, 2},
    {kR32F, 4},
    {kR16G16F, 4},
    {kR16G16, 4},
    {kR8G8B8A8, 4},
    {kR8G8B8A8Alt, 4},
    {kB8G8R8A8, 4},
    {kB8G8R8X8, 4},
    {kR8G8B8X8, 4},
    {kR32G32F, 8},
    {kR16G16B16A16F, 8},
    {kR16G16B16A16, 8},
    {kR32G32B32F, 12},
    {kR32G32B32A32F, 16},
};

const std::map<EFormat, int> kBlockBytes = {
    {kBC1, 8},      {kBC1Srgb, 8}, {kBC2, 16},      {kBC2Srgb, 16}, {kBC3, 16},        {kBC3Srgb, 16}, {kBC4, 8},
    {kBC4Snorm, 8}, {kBC5, 16},    {kBC5Snorm, 16}, {kBC6H, 16},    {kBC6HSigned, 16}, {kBC7, 16},     {kBC7Srgb, 16},
};

TEST(AFormatConvertor, BytesPerPixelIsTheTrueSizeOrZero) {
    for (int value = -300; value < 300; ++value) {
        const auto format = static_cast<EFormat>(value);
        const auto known = kPixelBytes.find(format);
        EXPECT_EQ(AFormatConvertor::BytesPerPixel(format), known == kPixelBytes.end() ? 0 : known->second) << value;
    }
    EXPECT_EQ(AFormatConvertor::BytesPerPixel(static_cast<EFormat>(std::numeric_limits<int>::min())), 0);
    EXPECT_EQ(AFormatConvertor::BytesPerPixel(static_cast<EFormat>(std::numeric_limits<int>::max())), 0);
}

TEST(AFormatConvertor, BytesPerBlockIsTheSizeOfABlockOrZero) {
    for (int value = -300; value < 300; ++value) {
        const auto format = static_cast<EFormat>(value);
        const auto known = kBlockBytes.find(format);
        EXPECT_EQ(AFormatConvertor::BytesPerBlock(format), known == kBlockBytes.end() ? 0 : known->second) << value;
    }
}

/// The pixel that one colour packs into; empty when it is refused.
ByteVector Packed(vec4<float> colour, EFormat format) {
    char out[16];
    if (!AFormatConvertor::FloatToFormat(colour, format, out, sizeof out)) return {};
    return {out, out + AFormatConvertor::BytesPerPixel(format)};
}

TEST(FloatToFormat, BytesAreRoundedHalfUpInTheFormatsOrder) {
    const vec4<float> colour = {0.0F, 0.5F, 1.0F, 0.2F};  // 0.5 x 255 = 127.5
    EXPECT_EQ(Packed(colour, kR8G8B8A8), (ByteVector{0, 128, 255, 51}));
    EXPECT_EQ(Packed(colour, kR8G8B8A8Alt), (ByteVector{0, 128, 255, 51}));
    EXPECT_EQ(Packed(colour, kR8G8B8X8), (ByteVector{0, 128, 255, 51}));
    EXPECT_EQ(Packed(colour, kB8G8R8A8), (ByteVector{255, 128, 0, 51}));
    EXPECT_EQ(Packed(colour, kB8G8R8X8), (ByteVector{255, 128, 0, 51}));
}

TEST(FloatToFormat, OneChannelFormatsTakeRed) {
    const vec4<float> colour = {0.2F, 1.0F, 1.0F, 0.6F};
    for (const EFormat format : {kA8, kR8, kL8})
        EXPECT_EQ(Packed(colour, format), (ByteVector{51}));
    for (const EFormat format : {kR16, kL16})
        EXPECT_EQ(Packed(colour, format), (ByteVector{0x33, 0x33}));
    EXPECT_EQ(Packed({1.0F, 2.0F, 2.0F, 2.0F}, kR16F), (ByteVector{0x00, 0x3C}));
    EXPECT_EQ(Packed({1.0F, 2.0F, 2.0F, 2.0F}, kR32F), (ByteVector{0, 0, 0x80, 0x3F}));
}

TEST(FloatToFormat, TwoChannelFormatsTakeRedAndGreen) {
    const vec4<float> colour = {1.0F, -2.0F, 7.0F, 7.0F};
    EXPECT_EQ(Packed(colour, kR16G16), (ByteVector{0xFF, 0xFF, 0, 0}));
    EXPECT_EQ(Packed(colour, kR16G16F), (ByteVector{0x00, 0x3C, 0x00, 0xC0}));
    EXPECT_EQ(Packed(colour, kR32G32F), BytesOf(std::vector{1.0F, -2.0F}));
}

TEST(FloatToFormat, WideFormatsKeepAllChannelsAndThreeDropAlpha) {
    const vec4<float> colour = {0.2F, 1.0F, 0.0F, 0.8F};
    EXPECT_EQ(Packed(colour, kR16G16B16A16), BytesOf(std::vector<std::uint16_t>{13107, 65535, 0, 52428}));
    EXPECT_EQ(Packed({1.0F, 0.5F, -2.0F, 65504.0F}, kR16G16B16A16F),
              BytesOf(std::vector<std::uint16_t>{0x3C00, 0x3800, 0xC000, 0x7BFF}));
    EXPECT_EQ(Packed(colour, kR32G32B32F), BytesOf(std::vector{0.2F, 1.0F, 0.0F}));
    EXPECT_EQ(Packed(colour, kR32G32B32A32F), BytesOf(std::vector{0.2F, 1.0F, 0.0F, 0.8F}));
}

TEST(FloatToFormat, IntegersLimitWhatIsOutOfRangeAndTakeNaNAsZero) {
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(Packed({-1.0F, 1.5F, infinity, -infinity}, kR8G8B8A8), (ByteVector{0, 255, 255, 0}));
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(Packed({nan, -nan, 1e-40F, -0.0F}, kR8G8B8A8), (ByteVector{0, 0, 0, 0}));
    EXPECT_EQ(Packed({nan, 3.0F, -3.0F, infinity}, kR16G16B16A16),
              BytesOf(std::vector<std::uint16_t>{0, 65535, 0, 65535}));
}

TEST(FloatToFormat, RefusesTooLittleRoomAndWritesNothing) {
    for (const auto& [format, bytes] : kPixelBytes) {
        ByteVector out(static_cast<std::size_t>(bytes), 0xCC);
        const ByteVector untouched = out;
        vec4<float> colour = {1.0F, 1.0F, 1.0F, 1.0F};
        auto* const space = reinterpret_cast<char*>(out.data());
        EXPECT_FALSE(AFormatConvertor::FloatToFormat(colour, format, space, static_cast<unsigned>(bytes) - 1));
        EXPECT_FALSE(AFormatConvertor::FloatToFormat(colour, format, space, 0));
        EXPECT_EQ(out, untouched);
        EXPECT_TRUE(AFormatConvertor::FloatToFormat(colour, format, space, static_cast<unsigned>(bytes)));
        EXPECT_NE(out, untouched);
    }
}

TEST(FloatToFormat, RefusesFormatsWithoutPixels) {
    char out[64] = {};
    vec4<float> colour = {1.0F, 1.0F, 1.0F, 1.0F};
    for (const int value : {0, 6, 15, 16, 17, 50, 51, 73, 76, 77, 78, -1, 12345}) {
        EXPECT_FALSE(AFormatConvertor::FloatToFormat(colour, static_cast<EFormat>(value), out, sizeof out)) << value;
        EXPECT_EQ(AFormatConvertor::FloatsToFormat(&colour.x, 1, static_cast<EFormat>(value), out, sizeof out), 0U);
    }
    EXPECT_TRUE(std::ranges::all_of(out, [](char byte) { return byte == 0; }));
}

/// Floats of all sorts: ordinary, just beside each rounding step, huge, tiny, infinite, quiet and signalling NaNs.
std::vector<float> Assortment(std::size_t count) {
    const ByteVector random = RandomBytes(count * 4);
    std::vector<float> values(count);
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t bits;
        std::memcpy(&bits, &random[i * 4], 4);
        const float step = (static_cast<float>(bits % 65536) + 0.5F) / (bits & 1 ? 65535.0F : 255.0F);
        switch (i % 4) {
            case 0:
                values[i] = std::bit_cast<float>(bits);
                break;
            case 1:
                values[i] = static_cast<float>(bits) / 4294967296.0F;
                break;
            case 2:
                values[i] = std::bit_cast<float>(std::bit_cast<std::uint32_t>(step) + bits % 3 - 1);
                break;
            default:
                values[i] = std::bit_cast<float>(bits | 0x7F800000U);
                break;
        }
    }
    return values;
}

ByteVector PackedOneByOne(const std::vector<float>& values, EFormat format) {
    ByteVector bytes;
    for (std::size_t i = 0; i + 4 <= values.size(); i += 4) {
        const ByteVector pixel = Packed({values[i], values[i + 1], values[i + 2], values[i + 3]}, format);
        bytes.insert(bytes.end(), pixel.begin(), pixel.end());
    }
    return bytes;
}

TEST(FloatsToFormat, PacksAsSoManySingleCallsWould) {
    const std::vector<float> values = Assortment(4 * 20000);
    for (const auto& [format, bytes] : kPixelBytes) {
        const ByteVector expected = PackedOneByOne(values, format);
        ForEveryVectorWidth([&, format = format] {
            ByteVector out(expected.size());
            EXPECT_EQ(AFormatConvertor::FloatsToFormat(values.data(), 20000, format,
                                                       reinterpret_cast<char*>(out.data()), out.size()),
                      20000U);
            EXPECT_TRUE(out == expected) << format;
        });
    }
}

TEST(FloatsToFormat, AnyLengthAndAlignmentWritesItsPixelsAndNothingElse) {
    const std::vector<float> values = Assortment(4 * 150);
    const ByteVector source = BytesOf(values);
    ByteVector shifted(source.size() + 1);
    std::ranges::copy(source, shifted.begin() + 1);
    for (const auto& [format, bytes] : kPixelBytes) {
        const ByteVector expected = PackedOneByOne(values, format);
        for (std::size_t count = 0; count <= 150; ++count) {
            const std::size_t size = count * static_cast<std::size_t>(bytes), offset = count % 5;
            ByteVector out(offset + size + 64, 0xCC);
            ByteVector whole = out;
            std::copy_n(expected.begin(), size, whole.begin() + static_cast<std::ptrdiff_t>(offset));
            AFormatConvertor::FloatsToFormat(reinterpret_cast<const float*>(shifted.data() + 1), count, format,
                                             reinterpret_cast<char*>(out.data() + offset), size);
            ASSERT_EQ(out, whole) << format << " x " << count;
        }
    }
}

TEST(FloatsToFormat, LargeBlocksAtAnyAlignmentAreTheSame) {
    const std::size_t count = 320000;  // written around the caches in the wider formats
    const std::vector<float> values = Assortment(4 * count);
    for (const EFormat format : {kR16G16B16A16F, kR32G32B32F, kR32G32B32A32F, kR32G32F}) {
        const auto bytes = static_cast<std::size_t>(AFormatConvertor::BytesPerPixel(format));
        const std::size_t used = std::size_t{5} << 20;
        const std::size_t pixels = std::min(count, used / bytes + 3);
        const ByteVector expected =
            PackedOneByOne({values.begin(), values.begin() + static_cast<std::ptrdiff_t>(4 * pixels)}, format);
        for (const std::size_t offset : {0, 1, 4, 8, 20}) {
            ByteVector out(offset + pixels * bytes);
            AFormatConvertor::FloatsToFormat(values.data(), pixels, format,
                                             reinterpret_cast<char*>(out.data() + offset), pixels * bytes);
            EXPECT_TRUE(std::ranges::equal(expected, std::span(out).subspan(offset))) << format << " at " << offset;
        }
    }
}

TEST(FloatsToFormat, LeavesOutThePixelsThatDoNotFit) {
    const std::vector<float> values(4 * 10, 1.0F);
    for (const auto& [format, bytes] : kPixelBytes) {
        const auto pixel = static_cast<std::size_t>(bytes);
        ByteVector out(10 * pixel, 0);
        auto* const space = reinterpret_cast<char*>(out.data());
        EXPECT_EQ(AFormatConvertor::FloatsToFormat(values.data(), 10, format, space, 4 * pixel - 1), 3U);
        EXPECT_TRUE(std::all_of(out.begin() + static_cast<std::ptrdiff_t>(3 * pixel), out.end(),
                                [](unsigned char byte) { return byte == 0; }));
        EXPECT_EQ(AFormatConvertor::FloatsToFormat(values.data(), 10, format, space, 0), 0U);
        EXPECT_EQ(AFormatConvertor::FloatsToFormat(values.data(), 0, format, space, out.size()), 0U);
    }
}

/// What `values` become as halves.
std::vector<std::uint16_t> Halves(const std::vector<float>& values) {
    std::vector<std::uint16_t> halves(values.size());
    AFormatConvertor::FloatsToFormat(values.data(), values.size() / 4, kR16G16B16A16F,
                                     reinterpret_cast<char*>(halves.data()), halves.size() * 2);
    return halves;
}

/// The value of a finite half, or where it would lie if the exponent went on: 2^16 for infinity.
float HalfValue(unsigned bits) {
    const int exponent = static_cast<int>(bits >> 10);
    const float mantissa = static_cast<float>(bits & 1023) + (exponent == 0 ? 0.0F : 1024.0F);
    return std::ldexp(mantissa, std::max(exponent, 1) - 25);
}

TEST(FloatsToFormat, HalvesAreRoundedToNearestAndTiesToEven) {
    std::vector<float> values;
    std::vector<std::uint16_t> expected;
    for (unsigned bits = 0; bits < 0x7C00; ++bits) {
        const float middle = (HalfValue(bits) + HalfValue(bits + 1)) / 2;
        const auto even = static_cast<std::uint16_t>(bits + (bits & 1));
        values.insert(values.end(),
                      {HalfValue(bits), std::nextafter(middle, 0.0F), middle, std::nextafter(middle, 1e9F)});
        expected.insert(expected.end(), {static_cast<std::uint16_t>(bits), static_cast<std::uint16_t>(bits), even,
                                         static_cast<std::uint16_t>(bits + 1)});
    }
    ForEveryVectorWidth([&] { EXPECT_TRUE(Halves(values) == expected); });
    for (float& value : values)
        value = -value;
    for (std::uint16_t& bits : expected)
        bits |= 0x8000;
    ForEveryVectorWidth([&] { EXPECT_TRUE(Halves(values) == expected); });
}

TEST(FloatsToFormat, HalvesKeepInfinityAndWhatFitsOfANaN) {
    const std::vector<std::uint32_t> bits = {0x7F800000, 0xFF800000, 0x7FC00000, 0xFFC00000,
                                             0x7F800001, 0xFFA02000, 0x7FFFFFFF, 0x477FF000};
    std::vector<float> values;
    for (const std::uint32_t value : bits)
        values.push_back(std::bit_cast<float>(value));
    const std::vector<std::uint16_t> expected = {0x7C00, 0xFC00, 0x7E00, 0xFE00, 0x7C01, 0xFD01, 0x7FFF, 0x7C00};
    ForEveryVectorWidth([&] { EXPECT_EQ(Halves(values), expected); });
}

}  // namespace
}  // namespace Kavra::Tests
