#include "frame/module/SampleFiles.h"
#include "support/FileFacts.h"
#include "support/MessageRecorder.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <span>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using Kavra::Objects::ObjModel;
using OIIO::ImageSpec;

class GetImageDesc : public testing::Test {
protected:
    Owned<ImageDesc> Describe(const std::filesystem::path& path) {
        return Owned<ImageDesc>(handler.GetImageDesc(Wide(path)));
    }

    std::filesystem::path FloatDds() {
        return WriteDds(folder, "floats.dds", {.format = kR32G32B32A32F, .width = 4, .height = 4, .levels = 3},
                        Counting<float>(21 * 4));
    }

    void TearDown() override { EXPECT_THAT(messages.Texts(), testing::IsEmpty()); }

    TemporaryFolder folder;
    OIIOImageHandler handler;
    MessageRecorder messages;
};

TEST_F(GetImageDesc, TellsWhatTheImageLibraryTells) {
    ImageSpec spec(5, 3, 3, OIIO::TypeUInt8);
    spec.attribute("Orientation", 6);
    const auto desc = Describe(WritePicture(folder, "p.tif", spec, Counting<unsigned char>(45)));
    ASSERT_NE(desc, nullptr);
    EXPECT_EQ(FactsOf(*desc), (FileFacts{.width = 5, .height = 3, .orientation = kRightTop}));
}

TEST_F(GetImageDesc, CountsTheFrames) {
    const auto path = folder / "pages.tif";
    const std::vector<ImageSpec> pages(3, ImageSpec(2, 2, 3, OIIO::TypeUInt8));
    const auto output = OIIO::ImageOutput::create(path.string());
    ASSERT_TRUE(output && output->open(path.string(), 3, pages.data()));
    for (int page = 0; page < 3; ++page) {
        if (page > 0) {
            ASSERT_TRUE(output->open(path.string(), pages[0], OIIO::ImageOutput::AppendSubimage));
        }
        ASSERT_TRUE(output->write_image(OIIO::TypeUInt8, Counting<unsigned char>(12).data()));
    }
    ASSERT_TRUE(output->close());

    const auto desc = Describe(path);
    ASSERT_NE(desc, nullptr);
    EXPECT_EQ(desc->frameCount, 3);
}

TEST_F(GetImageDesc, IsNullForWhatNobodyReads) {
    const Live before;
    for (const auto& path :
         {folder / "missing.png", folder / "missing.xyz", folder / "x.null", folder.Write("text.xyz", "no picture"),
          folder.Write("empty.exr", ""), folder.Write("empty.png", ""), folder.Path(), std::filesystem::path()}) {
        EXPECT_EQ(Describe(path), nullptr) << path;
    }
    EXPECT_EQ(Live(), before);
}

TEST_F(GetImageDesc, TakesFormatsThatOnlyTheHostTellsFromItsDdsReader) {
    const auto alphaOnly =
        Describe(WriteDds(folder, "a8.dds", {.format = kA8, .width = 4, .height = 4}, Counting<unsigned char>(16)));
    ASSERT_NE(alphaOnly, nullptr);
    EXPECT_EQ(alphaOnly->format, kA8);

    const auto compressed = Describe(WriteDds(folder, "bc1.dds", {.format = kBC1, .width = 8, .height = 8, .levels = 2},
                                              Counting<unsigned char>(40)));
    ASSERT_NE(compressed, nullptr);
    EXPECT_EQ(compressed->format, kBC1);
    EXPECT_EQ(compressed->frameCount, 2);

    const auto late =
        Describe(WriteDds(folder, "bc7.dds", {.format = kBC7, .width = 4, .height = 4}, Counting<unsigned char>(16)));
    ASSERT_NE(late, nullptr);
    EXPECT_EQ(late->format, kBC7);
}

TEST_F(GetImageDesc, PrefersTheImageLibraryForOtherDdsFiles) {
    // The library delivers red first whatever the file's order, so that is what a load will give.
    const auto desc = Describe(
        WriteDds(folder, "bgra.dds", {.format = kB8G8R8A8, .width = 4, .height = 2}, Counting<unsigned char>(32)));
    ASSERT_NE(desc, nullptr);
    EXPECT_EQ(FactsOf(*desc), (FileFacts{.width = 4, .height = 2}));
}

TEST_F(GetImageDesc, KeepsTheHostsValuesWhereTheImageLibraryRefusesTheDds) {
    const auto desc = Describe(FloatDds());
    ASSERT_NE(desc, nullptr);
    EXPECT_EQ(FactsOf(*desc), (FileFacts{.width = 4, .height = 4, .format = kR32G32B32A32F, .frameCount = 3}));
}

TEST_F(GetImageDesc, TellsOneFaceOfACubeMapAndItsLevels) {
    // Each face: 8 x 8, 4 x 4, 2 x 2 and 1 x 1 pixels.
    const auto desc = Describe(
        WriteDds(folder, "cube.dds", {.format = kR8G8B8A8, .width = 8, .height = 8, .levels = 4, .type = kTextureCube},
                 Counting<unsigned char>(6 * 85 * 4)));
    ASSERT_NE(desc, nullptr);
    EXPECT_EQ(FactsOf(*desc), (FileFacts{.width = 8, .height = 8, .textureType = kTextureCube, .frameCount = 4}));
}

TEST_F(GetImageDesc, TellsTheSlicesOfAVolume) {
    const auto desc = Describe(WriteDds(
        folder, "volume.dds", {.format = kR8G8B8A8, .width = 4, .height = 2, .depth = 3, .type = kTextureVolume},
        Counting<unsigned char>(96)));
    ASSERT_NE(desc, nullptr);
    EXPECT_EQ(desc->textureType, kTextureVolume);
    EXPECT_EQ(desc->depth, 3);
}

TEST_F(GetImageDesc, DoesNotBelieveTheLevelsThatADdsHeaderClaims) {
    auto bytes = ReadAll(
        WriteDds(folder, "bytes.dds", {.format = kR8G8B8A8, .width = 16, .height = 4}, Counting<unsigned char>(256)));
    bytes[10] |= 0x02;  // the header says how many levels there are:
    bytes[28] = bytes[29] = bytes[30] = 0xFF;
    bytes[31] = 0x7F;
    bytes[108] |= 0x08;
    bytes[110] |= 0x40;
    const auto desc = Describe(folder.Write("claims.dds", bytes));
    ASSERT_NE(desc, nullptr);
    EXPECT_EQ(desc->frameCount, 5);
}

TEST_F(GetImageDesc, TakesOpenExrFilesThatTheLibraryHasNoFormatForFromTheHost) {
    for (const auto& [channels, format] : {std::pair{4, kR32G32B32A32F}, {3, kR32G32B32F}}) {
        const auto desc = Describe(WritePicture(folder, "integers.exr", ImageSpec(3, 2, channels, OIIO::TypeUInt32),
                                                Counting<std::uint32_t>(static_cast<std::size_t>(6 * channels))));
        ASSERT_NE(desc, nullptr);
        EXPECT_EQ(FactsOf(*desc), (FileFacts{.width = 3, .height = 2, .format = format}));
    }
}

TEST_F(GetImageDesc, GivesTheCallerOneObjectToDestroy) {
    const auto path = FloatDds();
    const Live before;
    auto desc = Describe(path);
    ASSERT_NE(desc, nullptr);
    EXPECT_EQ(Live().objects, before.objects + 1);
    EXPECT_EQ(Live().blocks, before.blocks);
    desc.reset();
    EXPECT_EQ(Live(), before);
}

TEST_F(GetImageDesc, LeavesNothingBehindWithoutMemory) {
    for (const auto& path : {FloatDds(), WritePicture(folder, "p.png", ImageSpec(2, 2, 4, OIIO::TypeUInt8),
                                                      Counting<unsigned char>(16))}) {
        const Live before;
        for (int allowed = 0; allowed < 3; ++allowed) {
            const FailingAllocator allocator(ObjModel::mHeapAllocator, allowed);
            const auto desc = Describe(path);
            EXPECT_TRUE(desc != nullptr || allocator.LiveBlocks() == 0) << path << " with " << allowed;
        }
        EXPECT_EQ(Live(), before);
        EXPECT_NE(Describe(path), nullptr);
    }
}

}  // namespace
