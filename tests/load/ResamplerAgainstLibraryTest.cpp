// The resampler beside the image library that is installed: 8-bit values are the same, 16-bit ones within 1, halves
// within a step, floats within two millionths of the largest value around. So a change of the library's sum is noticed.

#include "support/ResamplePictures.h"

#include <kavra/devices/Resampler.h>

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace Kavra::Devices {
namespace {

using Tests::Pattern;
using Tests::Picture;

OIIO::TypeDesc TypeOf(ElementType element) {
    switch (element) {
        case ElementType::kUInt8:
            return OIIO::TypeUInt8;
        case ElementType::kUInt16:
            return OIIO::TypeUInt16;
        case ElementType::kHalf:
            return OIIO::TypeHalf;
        default:
            return OIIO::TypeFloat;
    }
}

OIIO::ImageBuf ImageOver(const Picture& picture) {
    const OIIO::ImageSpec layout(picture.width, picture.height, picture.channels, TypeOf(picture.element));
    return {layout, const_cast<unsigned char*>(picture.bytes.data())};
}

Picture ByLibrary(const Picture& from, int width, int height, EResampleFilter filter) {
    Picture to = Tests::EmptyPicture(from.element, from.channels, width, height);
    OIIO::ImageBuf dst = ImageOver(to);
    const OIIO::ImageBuf src = ImageOver(from);
    constexpr std::array kNames = {"", "", "box", "triangle", "mitchell", "catmull-rom", "lanczos3"};
    bool done = false;
    if (filter == kResampleNearest || filter == kResampleBilinear)
        done = OIIO::ImageBufAlgo::resample(dst, src, filter == kResampleBilinear);
    else
        done = OIIO::ImageBufAlgo::resize(dst, src, {{"filtername", kNames[static_cast<std::size_t>(filter)]}});
    EXPECT_TRUE(done) << dst.geterror();
    return to;
}

/// The largest difference in steps: of integers, of halves, or of two millionths of the largest value.
double Difference(const Picture& a, const Picture& b) {
    double largest = 0;
    if (a.element == ElementType::kFloat) {
        double scale = 1e-30;
        for (std::size_t i = 0; i < a.Values(); ++i)
            scale = std::max(scale, std::fabs(static_cast<double>(a.Value(i))));
        for (std::size_t i = 0; i < a.Values(); ++i)
            largest = std::max(
                largest, std::fabs(static_cast<double>(a.Value(i)) - static_cast<double>(b.Value(i))) / (2e-6 * scale));
        return largest;
    }
    for (std::size_t i = 0; i < a.Values(); ++i)
        largest = std::max(largest, std::fabs(static_cast<double>(a.Step(i)) - b.Step(i)));
    return largest;
}

struct Sizes {
    int fromWidth, fromHeight, toWidth, toHeight;
};

/// Down, up, taller, wider, one pixel, primes, and where the library's reach depends on the width.
constexpr std::array kSizes = {
    Sizes{64, 64, 32, 32},   Sizes{64, 64, 16, 16},   Sizes{97, 89, 31, 23},   Sizes{128, 96, 100, 90},
    Sizes{100, 100, 95, 95}, Sizes{200, 10, 20, 10},  Sizes{10, 200, 10, 20},  Sizes{301, 7, 43, 3},
    Sizes{7, 301, 3, 43},    Sizes{32, 32, 64, 64},   Sizes{16, 16, 100, 100}, Sizes{31, 23, 97, 89},
    Sizes{20, 20, 20, 80},   Sizes{20, 20, 80, 20},   Sizes{20, 40, 80, 10},   Sizes{40, 20, 10, 80},
    Sizes{5, 40, 500, 20},   Sizes{40, 5, 20, 500},   Sizes{1, 1, 1, 1},       Sizes{1, 1, 7, 5},
    Sizes{7, 5, 1, 1},       Sizes{1, 50, 1, 20},     Sizes{50, 1, 20, 1},     Sizes{1, 20, 1, 50},
    Sizes{20, 1, 50, 1},     Sizes{2, 2, 3, 3},       Sizes{3, 3, 2, 2},       Sizes{2, 2, 101, 103},
    Sizes{101, 103, 2, 2},   Sizes{64, 64, 64, 64},   Sizes{64, 64, 63, 63},   Sizes{64, 64, 65, 65},
    Sizes{256, 256, 64, 64}, Sizes{255, 257, 63, 65}, Sizes{300, 200, 37, 25}, Sizes{200, 300, 25, 37},
    Sizes{128, 128, 127, 1}, Sizes{128, 128, 1, 127}, Sizes{17, 19, 13, 11},   Sizes{13, 11, 17, 19},
    Sizes{400, 30, 399, 10}, Sizes{30, 400, 10, 399}, Sizes{90, 60, 45, 120},  Sizes{60, 90, 120, 45},
    Sizes{64, 288, 257, 1},  Sizes{300, 310, 7, 5},   Sizes{431, 3, 9, 1},
};

constexpr std::array kFilters = {kResampleNearest,  kResampleBilinear,   kResampleBox,     kResampleTriangle,
                                 kResampleMitchell, kResampleCatmullRom, kResampleLanczos3};

class AgainstLibrary : public testing::TestWithParam<ElementType> {};

INSTANTIATE_TEST_SUITE_P(Types, AgainstLibrary,
                         testing::Values(ElementType::kUInt8, ElementType::kUInt16, ElementType::kHalf,
                                         ElementType::kFloat));

/// Every size by one filter.
void ExpectTheSame(ElementType element, int channels, Pattern pattern, EResampleFilter filter) {
    const double allowed = element == ElementType::kUInt8 ? 0 : 1;
    for (const Sizes& sizes : kSizes) {
        const Picture from = Tests::MakePicture(element, channels, sizes.fromWidth, sizes.fromHeight, pattern);
        const Picture ours = Tests::Resampled(from, sizes.toWidth, sizes.toHeight, {.filter = filter});
        const Picture theirs = ByLibrary(from, sizes.toWidth, sizes.toHeight, filter);
        ASSERT_LE(Difference(ours, theirs), allowed)
            << sizes.fromWidth << " x " << sizes.fromHeight << " to " << sizes.toWidth << " x " << sizes.toHeight
            << ", pattern " << static_cast<int>(pattern) << ", " << channels << " channels, filter " << filter;
    }
}

TEST_P(AgainstLibrary, MitchellGivesTheSameForEveryPatternAndAnyChannels) {
    for (const Pattern pattern : Tests::kPatterns) {
        for (int channels = 1; channels <= 4; ++channels)
            ExpectTheSame(GetParam(), channels, pattern, kResampleMitchell);
    }
}

TEST_P(AgainstLibrary, EveryFilterGivesTheSame) {
    for (const EResampleFilter filter : kFilters) {
        ExpectTheSame(GetParam(), 4, Pattern::kNoise, filter);
        ExpectTheSame(GetParam(), 3, Pattern::kChecks, filter);
    }
}

}  // namespace
}  // namespace Kavra::Devices
