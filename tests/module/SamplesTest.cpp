// The sample images through the whole module: what was painted into them comes out.

#include "support/Loading.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace Kavra::Devices;
using namespace Kavra::Tests;

namespace {

const unsigned char* Pixel(const Loaded& image, int x, int y, int slice = 0) {
    const std::size_t row = static_cast<std::size_t>(slice) * image.desc.height + y;
    return &image.bytes[row * image.desc.rowPitch + static_cast<std::size_t>(x) * 4];
}

class Samples : public testing::Test {
protected:
    OIIOImageHandler handler;
};

}  // namespace

TEST_F(Samples, EveryOneIsDescribedAndLoadsAtTheSizeDescribed) {
    ASSERT_GT(AllSamples().size(), 30U);
    for (const auto& path : AllSamples()) {
        ImageDesc* desc = handler.GetImageDesc(Wide(path));
        ASSERT_NE(desc, nullptr) << path;
        const auto image = LoadFile(handler, path, {.orientation = desc->orientation});
        ASSERT_TRUE(image) << path;
        EXPECT_EQ(image->desc.width, desc->width) << path;
        EXPECT_EQ(image->desc.height, desc->height) << path;
        EXPECT_EQ(image->desc.depth, desc->depth) << path;
        EXPECT_EQ(image->desc.textureType, desc->textureType) << path;
        EXPECT_EQ(image->desc.gamma, desc->gamma) << path;
        desc->Delete();
    }
}

TEST_F(Samples, TheSameFileAlwaysGivesTheSameBlock) {
    for (const auto& path : AllSamples()) {
        const auto first = LoadFile(handler, path);
        const auto second = LoadFile(handler, path);
        ASSERT_TRUE(first && second) << path;
        EXPECT_EQ(first->bytes, second->bytes) << path;
    }
}

TEST_F(Samples, AllEightOrientationsAreTheSamePictureUpright) {
    const auto upright = LoadFile(handler, Sample("photo-orientation-1.jpg"));
    ASSERT_TRUE(upright);
    for (int orientation = 2; orientation <= 8; ++orientation) {
        const auto path = Sample("photo-orientation-" + std::to_string(orientation) + ".jpg");
        const auto image = LoadFile(handler, path);
        ASSERT_TRUE(image);
        ASSERT_EQ(image->desc.width, upright->desc.width) << orientation;
        ASSERT_EQ(image->desc.height, upright->desc.height) << orientation;
        // What is left is the loss of coding it in blocks that lie elsewhere.
        double difference = 0;
        for (std::size_t i = 0; i < image->bytes.size(); ++i)
            difference += std::abs(image->bytes[i] - upright->bytes[i]);
        EXPECT_LT(difference / static_cast<double>(image->bytes.size()), 2) << orientation;
    }
}

TEST_F(Samples, EverySliceOfTheVolumeHasItsOwnBlue) {
    const auto image = LoadFile(handler, Sample("volume.dds"));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->desc.textureType, kTextureVolume);
    EXPECT_EQ(image->desc.depth, 8);
    EXPECT_EQ(image->desc.dataSize, 32U * 32 * 8 * 4);
    for (int z = 0; z < 8; ++z) {
        const int blue = static_cast<int>(std::lround(z * 255 / 7.0));
        for (const auto [x, y] : {std::array{0, 0}, std::array{31, 5}, std::array{7, 31}}) {
            const unsigned char* p = Pixel(*image, x, y, z);
            EXPECT_EQ(p[0], std::lround((x + 0.5) / 32 * 255)) << z;
            EXPECT_EQ(p[1], std::lround((y + 0.5) / 32 * 255)) << z;
            EXPECT_EQ(p[2], blue) << z;
            EXPECT_EQ(p[3], 255);
        }
    }
}

TEST_F(Samples, EveryFaceOfTheCubeHasItsOwnTint) {
    // The stem of the letter is (250, 245, 230) before it is tinted.
    constexpr std::array<std::array<double, 3>, 6> kTints = {
        {{1, .5, .5}, {.5, 1, 1}, {.5, 1, .5}, {1, .5, 1}, {.55, .55, 1}, {1, 1, .5}}};
    constexpr std::array<double, 3> kStem = {0.98 * 255, 0.96 * 255, 0.90 * 255};
    const auto image = LoadFile(handler, Sample("cube-mips.dds"));
    ASSERT_TRUE(image);
    for (int face = 0; face < 6; ++face) {
        const unsigned char* p = Pixel(*image, 12, 12, face);
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(p[c], kStem[c] * kTints[face][c], 1.0) << face << c;
    }
}

TEST_F(Samples, EveryLevelOfEveryCubeFaceIsTheMeanOfTheFirst) {
    const auto top = LoadFile(handler, Sample("cube-mips.dds"));
    ASSERT_TRUE(top);
    for (int level = 1; level < 6; ++level) {
        const auto image = LoadFile(handler, Sample("cube-mips.dds"), {.level = level});
        ASSERT_TRUE(image) << level;
        const int size = 32 >> level;
        const int box = 1 << level;
        ASSERT_EQ(image->desc.width, size);
        ASSERT_EQ(image->desc.height, size);
        EXPECT_EQ(image->desc.dataSize, static_cast<std::uint64_t>(size) * size * 4);
        for (int i = 0; i < 6 * size * size; ++i) {
            const int face = i / (size * size);
            const int x = i % size;
            const int y = i / size % size;
            double sum = 0;
            for (int j = 0; j < box * box; ++j)
                sum += Pixel(*top, x * box + j % box, y * box + j / box, face)[1];
            EXPECT_NEAR(Pixel(*image, x, y, face)[1], sum / (box * box), 1.0)
                << level << " " << face << " " << x << " " << y;
        }
    }
}

TEST_F(Samples, AFloatDdsComesFromTheHostsReaderUnchanged) {
    const auto image = LoadFile(handler, Sample("float.dds"));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->desc.format, kR32G32B32A32F);
    const std::vector<unsigned char> file = ReadAll(Sample("float.dds"));
    ASSERT_EQ(image->bytes.size(), 64U * 64 * 16);
    EXPECT_EQ(std::memcmp(image->bytes.data(), file.data() + file.size() - image->bytes.size(), image->bytes.size()),
              0);
}

TEST_F(Samples, LegacyAndDx10HeadersOfTheSameBlocksDecodeAlike) {
    const auto legacy = LoadFile(handler, Sample("bc1.dds"));
    const auto dx10 = LoadFile(handler, Sample("dx10.dds"));
    ASSERT_TRUE(legacy && dx10);
    EXPECT_EQ(legacy->desc.format, kR8G8B8A8);
    EXPECT_EQ(legacy->bytes, dx10->bytes);
}

TEST_F(Samples, EachFrameOfTheAnimationIsItsOwn) {
    std::vector<std::vector<unsigned char>> frames;
    for (int level = 0; level < 8; ++level) {
        const auto image = LoadFile(handler, Sample("spinner.gif"), {.level = level});
        ASSERT_TRUE(image) << level;
        for (const auto& other : frames)
            EXPECT_NE(image->bytes, other) << level;
        frames.push_back(image->bytes);
    }
}

TEST_F(Samples, TheBrightestSpotOfTheStudioIsTheLeftSoftbox) {
    const auto image = LoadFile(handler, Sample("studio.hdr"));
    ASSERT_TRUE(image);
    ASSERT_EQ(image->desc.format, kR32G32B32A32F);
    std::size_t brightest = 0;
    float most = 0;
    for (std::size_t i = 0; i < image->bytes.size() / 16; ++i) {
        float green = 0;
        std::memcpy(&green, &image->bytes[i * 16 + 4], sizeof green);
        if (green > most) {
            most = green;
            brightest = i;
        }
    }
    EXPECT_GT(most, 10.0F);
    EXPECT_NEAR(static_cast<double>(brightest % 256) / 256, 0.27, 0.08);
    EXPECT_NEAR(static_cast<double>(brightest / 256) / 128, 0.30, 0.12);
}
