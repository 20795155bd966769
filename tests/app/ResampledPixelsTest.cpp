// The pixels that resampling gives: fringes, negative light, the light of sRGB, and each filter against its formula.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

using namespace Kavra::Tests;

namespace {

/// Two pixels that become one: each is half of it.
std::filesystem::path Pair(const TemporaryFolder& folder, const Colour& left, const Colour& right) {
    return WritePicture(folder / "pair.png", 2, 1, [&](int x, int) { return x == 0 ? left : right; });
}

// Even numbers, whose mean needs no rounding.
const Colour kClearRed = {200, 0, 0, 0};
const Colour kWhite = {254, 254, 254, 254};

/// The commands for people that make one pixel of `in`, each with the file that it makes.
std::vector<std::pair<Words, std::filesystem::path>> OnePixelCommands(const TemporaryFolder& folder,
                                                                      const std::string& in, const std::string& type) {
    const auto out = folder / ("out." + type);
    const std::vector<Words> commands = {{"convert", in, out, "--fit", "1x1"},
                                         {"convert", in, out, "--size", "1x1", "--high-quality"},
                                         {"convert", in, out, "--fit", "1x1", "--filter", "box"},
                                         {"resize", in, out, "--size", "1x1"},
                                         {"resize", in, out, "--scale", "50%", "--filter", "triangle"},
                                         {"crop", in, out, "--rect", "0,0,2,1", "--fit", "1x1"},
                                         {"crop", in, out, "--rect", "0,0,2,1", "--size", "1x1", "--filter", "box"},
                                         {"compose", out, "--size", "1x1", "--fit", "1x1", in + "@0,0"},
                                         {"tile", in, out, "--repeat", "1x1", "--fit", "1x1"}};
    std::vector<std::pair<Words, std::filesystem::path>> all;
    for (const Words& command : commands)
        all.emplace_back(command, out);
    all.emplace_back(Words{"frames", in, folder / ("%dout." + type), "--fit", "1x1"}, folder / ("0out." + type));
    return all;
}

std::vector<float> Floats(const std::vector<unsigned char>& bytes) {
    std::vector<float> floats(bytes.size() / sizeof(float));
    std::memcpy(floats.data(), bytes.data(), bytes.size());
    return floats;
}

/// A small sun in a black sky.
std::filesystem::path Sun(const TemporaryFolder& folder, const std::string& name) {
    std::vector<float> values(std::size_t{64} * 32 * 3);
    for (std::size_t channel = 0; channel < 3; ++channel)
        values[(std::size_t{11} * 64 + 30) * 3 + channel] = 10000;
    return WriteFloats(folder / name, 64, 32, 3, values);
}

float Darkest(const std::vector<unsigned char>& block) {
    return std::ranges::min(Floats(block));
}

double Tent(double x) {
    return std::max(0.0, 1 - std::abs(x));
}

double Box(double x) {
    return std::abs(x) < 0.5 ? 1 : 0;
}

/// D. Mitchell and A. Netravali, "Reconstruction Filters in Computer Graphics", 1988.
double Cubic(double x, double b, double c) {
    x = std::abs(x);
    if (x < 1) return ((12 - 9 * b - 6 * c) * x * x * x + (-18 + 12 * b + 6 * c) * x * x + (6 - 2 * b)) / 6;
    if (x >= 2) return 0;
    return ((-b - 6 * c) * x * x * x + (6 * b + 30 * c) * x * x + (-12 * b - 48 * c) * x + (8 * b + 24 * c)) / 6;
}

double Sinc(double x) {
    x *= std::numbers::pi;
    return x == 0 ? 1 : std::sin(x) / x;
}

double Lanczos3(double x) {
    return std::abs(x) < 3 ? Sinc(x) * Sinc(x / 3) : 0;
}

/// What halving leaves of a row of 24 pixels that are 0 but for one.
std::vector<int> HalvedImpulse(const std::function<double(double)>& filter, int place, double value) {
    std::vector<int> halved;
    for (int x = 0; x < 12; ++x) {
        const auto weight = [&](int source) { return filter((source + 0.5 - (2 * x + 1)) / 2); };
        double sum = 0;
        for (int i = -24; i < 48; ++i)
            sum += weight(i);
        halved.push_back(static_cast<int>(std::lround(std::max(0.0, value * weight(place) / sum))));
    }
    return halved;
}

std::filesystem::path Greys(const TemporaryFolder& folder) {
    static constexpr std::array kGreys = {0, 100, 50, 250, 10, 20, 40, 30};
    return WritePicture(folder / "in.png", 8, 1,
                        [](int x, int) { return Colour{kGreys[static_cast<std::size_t>(x)]}; });
}

/// Each makes two pixels of eight.
std::vector<Words> QuarteringCommands(const std::string& in, const std::string& out) {
    return {{"convert", in, out, "--fit", "2x1"},
            {"resize", in, out, "--size", "2x1"},
            {"crop", in, out, "--rect", "0,0,8,1", "--size", "2x1"}};
}

std::vector<unsigned char> Shrunk(const Words& command, const std::string& out, const std::string& filter) {
    ExpectDone(Joined({command, {"--filter", filter}}));
    return PictureFile(out).Bytes();
}

}  // namespace

TEST(ResampledPixels, WhatIsTransparentLendsNoColourInPicturesForPeople) {
    const TemporaryFolder folder;
    const std::string in = Pair(folder, kClearRed, kWhite);
    for (const auto& [command, out] : OnePixelCommands(folder, in, "png")) {
        ExpectDone(command);
        EXPECT_EQ(PictureFile(out).At(0, 0), (Colour{254, 254, 254, 127})) << testing::PrintToString(command);
        ExpectDone(Joined({command, {"--plain-filter"}}));
        EXPECT_EQ(PictureFile(out).At(0, 0), (Colour{227, 127, 127, 127})) << testing::PrintToString(command);
    }
}

TEST(ResampledPixels, InBlocksItDoesUnlessAsked) {
    const TemporaryFolder folder;
    const std::string in = Pair(folder, kClearRed, kWhite);
    for (const Words& wish : {Words{"--fit", "1x1"}, {"--size", "1x1", "--high-quality"}, {"--scale", "50%"}}) {
        EXPECT_EQ(Dumped(in, wish), (std::vector<unsigned char>{227, 127, 127, 127}));
        EXPECT_EQ(Dumped(in, Joined({wish, {"--bounded"}})), (std::vector<unsigned char>{227, 127, 127, 127}));
        EXPECT_EQ(Dumped(in, Joined({wish, {"--alpha-weighted"}})), (std::vector<unsigned char>{254, 254, 254, 127}));
    }
}

TEST(ResampledPixels, ThumbnailsHaveNoFringes) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 76, 36, [](int x, int) { return x % 2 == 0 ? kClearRed : kWhite; });
    const auto isGrey = [&](const Words& more) {
        ExpectDone(Joined({{"sheet", folder / "sheet.png", in, "--cell", "40x20"}, more}));
        const Colour middle = PictureFile(folder / "sheet.png").At(20, 10);
        return middle[0] == middle[1] && middle[1] == middle[2];
    };
    EXPECT_TRUE(isGrey({}));
    EXPECT_TRUE(isGrey({"--no-fast"}));
    EXPECT_FALSE(isGrey({"--plain-filter"}));
}

TEST(ResampledPixels, ColoursOfAnOpenExrFileAreNotWeighedTwice) {
    // Multiplied by its alpha, half opaque white is 0.5; beside opaque black the colours are the mean of the two.
    const TemporaryFolder folder;
    const std::string in = WriteFloats(folder / "in.exr", 2, 1, 4, {0.5F, 0.5F, 0.5F, 0.5F, 0, 0, 0, 1});
    for (const std::string command : {"convert", "resize"}) {
        ExpectDone({command, in, folder / "out.exr", "--fit", "1x1"});
        const std::vector<float> pixel = Floats(Dumped(folder / "out.exr", {"--format", "rgba32f"}));
        ASSERT_EQ(pixel.size(), 4U);
        EXPECT_NEAR(pixel[0], 0.25, 1e-3) << command;
        EXPECT_NEAR(pixel[3], 0.75, 1e-3) << command;
    }
}

TEST(ResampledPixels, NoLightBecomesNegativeInPicturesForPeople) {
    const TemporaryFolder folder;
    const std::string out = folder / "out.tif";
    for (const std::string name : {"sun.tif", "sun.exr"}) {
        const std::string in = Sun(folder, name);
        for (const Words& command :
             {Words{"convert", in, out, "--fit", "20x20"},
              {"convert", in, out, "--size", "21x10", "--high-quality"},
              {"convert", in, out, "--fit", "20x20", "--filter", "lanczos3"},
              {"convert", in, out, "--scale", "150%"},
              {"resize", in, out, "--size", "20x10"},
              {"crop", in, out, "--rect", "8,4,40,20", "--fit", "20x20"},
              {"compose", out, "--size", "20x10", "--format", "rgba32f", "--fit", "20x10", in + "@0,0"}}) {
            ExpectDone(command);
            const std::vector<unsigned char> block = Dumped(out, {"--format", "rgba32f"});
            EXPECT_GE(Darkest(block), 0) << testing::PrintToString(command);
            EXPECT_GT(std::ranges::max(Floats(block)), 100) << "the sun is still there";
            ExpectDone(Joined({command, {"--plain-filter"}}));
            EXPECT_LT(Darkest(Dumped(out, {"--format", "rgba32f"})), -1) << testing::PrintToString(command);
        }
    }
}

TEST(ResampledPixels, InBlocksItDoesUnlessBounded) {
    const TemporaryFolder folder;
    const std::string in = Sun(folder, "sun.tif");
    for (const Words& wish : {Words{"--fit", "20x20"}, {"--size", "21x10", "--high-quality"}, {"--scale", "150%"}}) {
        EXPECT_LT(Darkest(Dumped(in, wish)), -1);
        EXPECT_LT(Darkest(Dumped(in, Joined({wish, {"--alpha-weighted"}}))), -1);
        EXPECT_GE(Darkest(Dumped(in, Joined({wish, {"--bounded"}}))), 0);
    }
}

TEST(ResampledPixels, LinearLightIsTheMeanOfTheLight) {
    // 254 of 255 is 0.9911 of the light, half of that is encoded as 0.7324, which is 186.8 of 255. Alpha has no curve.
    const TemporaryFolder folder;
    const std::string opaque = Pair(folder, {0, 0, 0, 255}, {254, 254, 254, 255});
    const auto colour = [](const std::filesystem::path& out) {
        Colour first = PictureFile(out).At(0, 0);
        first.resize(3);  // some commands keep an alpha that says nothing
        return first;
    };
    for (const auto& [command, out] : OnePixelCommands(folder, opaque, "png")) {
        ExpectDone(Joined({command, {"--linear-light"}}));
        EXPECT_EQ(colour(out), (Colour{187, 187, 187})) << testing::PrintToString(command);
        ExpectDone(command);
        EXPECT_EQ(colour(out), (Colour{127, 127, 127})) << testing::PrintToString(command);
    }
    EXPECT_EQ(Dumped(opaque, {"--fit", "1x1", "--linear-light"}), (std::vector<unsigned char>{187, 187, 187, 255}));
    const std::string clear = Pair(folder, {0, 0, 0, 254}, {254, 254, 254, 0});
    EXPECT_EQ(Dumped(clear, {"--fit", "1x1", "--linear-light"}), (std::vector<unsigned char>{187, 187, 187, 127}));
}

TEST(ResampledPixels, EachFilterFollowsItsFormula) {
    const TemporaryFolder folder;
    const std::vector<std::pair<std::string, std::function<double(double)>>> filters = {
        {"box", Box},
        {"triangle", Tent},
        {"mitchell", [](double x) { return Cubic(x, 1.0 / 3, 1.0 / 3); }},
        {"catmull-rom", [](double x) { return Cubic(x, 0, 0.5); }},
        {"lanczos3", Lanczos3}};
    const auto in = WritePicture(folder / "in.png", 24, 1, [](int x, int) { return Colour{x == 11 ? 200 : 0}; });
    const std::string out = folder / "out.png";
    for (const auto& [name, filter] : filters) {
        const std::vector<int> expected = HalvedImpulse(filter, 11, 200);
        for (const Words& command : {Words{"convert", in, out, "--fit", "12x1"},
                                     {"convert", in, out, "--size", "12x1"},
                                     {"resize", in, out, "--size", "12x1"},
                                     {"crop", in, out, "--rect", "0,0,24,1", "--size", "12x1"}}) {
            ExpectDone(Joined({command, {"--filter", name}}));
            const std::vector<unsigned char> bytes = PictureFile(out).Bytes();
            EXPECT_EQ(std::vector<int>(bytes.begin(), bytes.end()), expected)
                << name << testing::PrintToString(command);
        }
    }
}

TEST(ResampledPixels, NearestTakesOnePixelOfThoseThatBoxTakesTheMeanOf) {
    const TemporaryFolder folder;
    const std::string in = Greys(folder);
    const std::string out = folder / "out.png";
    for (const Words& command : QuarteringCommands(in, out)) {
        EXPECT_EQ(Shrunk(command, out, "nearest"), (std::vector<unsigned char>{50, 40})) << command.front();
        EXPECT_EQ(Shrunk(command, out, "box"), (std::vector<unsigned char>{100, 25})) << command.front();
    }
}

TEST(ResampledPixels, BilinearSkipsPixelsWhateverElseIsWanted) {
    const TemporaryFolder folder;
    const std::string in = Greys(folder);
    const std::string out = folder / "out.png";
    for (Words command : QuarteringCommands(in, out)) {
        EXPECT_EQ(Shrunk(command, out, "bilinear"), (std::vector<unsigned char>{75, 30})) << command.front();
        command.push_back("--plain-filter");
        EXPECT_EQ(Shrunk(command, out, "bilinear"), (std::vector<unsigned char>{75, 30})) << command.front();
    }
}
