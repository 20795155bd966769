#include "formats/Luminance.h"
#include "frame/host/devices/EveryVectorWidth.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace Kavra::Tests {
namespace {

using Formats::ColourOrder;
using Formats::GreyFromColours;

/// The formula as it is written, for one pixel.
std::uint8_t Grey(const unsigned char* pixel, ColourOrder order) {
    const float first = order == ColourOrder::kRedFirst ? 0.299F : 0.114F;
    const float third = order == ColourOrder::kRedFirst ? 0.114F : 0.299F;
    const float greenPart = static_cast<float>(pixel[1]) * 0.587F;
    const float firstPart = static_cast<float>(pixel[0]) * first;
    const float thirdPart = static_cast<float>(pixel[2]) * third;
    const float twoParts = greenPart + firstPart;
    const float sum = twoParts + thirdPart;
    return static_cast<std::uint8_t>(static_cast<std::uint64_t>(static_cast<double>(sum) + 0.5));
}

void Convert(std::span<unsigned char> grey, std::span<const unsigned char> colours, ColourOrder order,
             bool bypassCache) {
    GreyFromColours({.out = grey, .in = colours, .bypassCache = bypassCache}, order);
}

std::vector<unsigned char> Greys(const std::vector<unsigned char>& colours, ColourOrder order) {
    std::vector<unsigned char> grey(colours.size() / 4);
    Convert(grey, colours, order, false);
    return grey;
}

/// All colours with one value of the first byte; the fourth byte is noise.
void FillPlane(std::vector<unsigned char>& colours, std::uint8_t first) {
    for (std::uint32_t i = 0; i < 65536; ++i) {
        unsigned char* pixel = colours.data() + 4 * static_cast<std::size_t>(i);
        pixel[0] = first;
        pixel[1] = static_cast<std::uint8_t>(i >> 8);
        pixel[2] = static_cast<std::uint8_t>(i);
        pixel[3] = static_cast<std::uint8_t>(i * 31 + first);
    }
}

void CheckEveryColour(ColourOrder order) {
    std::vector<unsigned char> colours(65536 * 4), expected(65536);
    for (int first = 0; first < 256; ++first) {
        FillPlane(colours, static_cast<std::uint8_t>(first));
        for (std::size_t i = 0; i < expected.size(); ++i)
            expected[i] = Grey(colours.data() + 4 * i, order);
        ForEveryVectorWidth([&] { ASSERT_TRUE(Greys(colours, order) == expected) << first; });
    }
}

TEST(Luminance, EveryRedFirstColourGivesTheByteOfTheSinglePrecisionFormula) {
    CheckEveryColour(ColourOrder::kRedFirst);
}

TEST(Luminance, EveryBlueFirstColourGivesTheByteOfTheSinglePrecisionFormula) {
    CheckEveryColour(ColourOrder::kBlueFirst);
}

TEST(Luminance, WhiteBlackAndRedAreWhatTheyAreByHand) {
    const std::vector<unsigned char> colours = {255, 255, 255, 0, 0, 0, 0, 255, 255, 0, 0, 77, 0, 255, 0, 1};
    EXPECT_EQ(Greys(colours, ColourOrder::kRedFirst), (std::vector<unsigned char>{255, 0, 76, 150}));
}

TEST(Luminance, BlueFirstPixelSwapsTheWeights) {
    const std::vector<unsigned char> colours = {255, 0, 0, 9, 0, 0, 255, 9};
    EXPECT_EQ(Greys(colours, ColourOrder::kBlueFirst), (std::vector<unsigned char>{29, 76}));
}

TEST(Luminance, AnyLengthAndAlignmentWritesItsPixelsAndNothingElse) {
    std::vector<unsigned char> colours(4 * 300 + 3);
    for (std::size_t i = 0; i < colours.size(); ++i)
        colours[i] = static_cast<std::uint8_t>(i * 97 + i / 5);
    for (std::size_t count = 0; count <= 200; ++count) {
        const std::size_t offset = count % 7;
        const std::span source = std::span(colours).subspan(count % 3, 4 * count);
        std::vector<unsigned char> expected(offset + count + 80, 0xCC);
        std::vector<unsigned char> grey = expected;
        for (std::size_t i = 0; i < count; ++i)
            expected[offset + i] = Grey(&source[4 * i], ColourOrder::kRedFirst);
        Convert(std::span(grey).subspan(offset, count), source, ColourOrder::kRedFirst, count % 2 == 0);
        ASSERT_EQ(grey, expected) << count;
    }
}

}  // namespace
}  // namespace Kavra::Tests
