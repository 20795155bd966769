// PCX files through the whole module, as a host meets them.

#include "legacy/PcxFile.h"
#include "support/FileFacts.h"
#include "support/Loading.h"
#include "support/MessageRecorder.h"
#include "support/TemporaryFolder.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using Kavra::Legacy::PcxFile;
using Kavra::Legacy::PcxPicture;
using testing::ElementsAre;
using testing::IsEmpty;

using Bytes = std::vector<unsigned char>;

/// Red, green, blue of `colours` colours, no two alike.
Bytes Palette(int colours) {
    Bytes palette;
    for (int i = 0; i < colours; ++i) {
        palette.insert(palette.end(), {static_cast<unsigned char>(i), static_cast<unsigned char>(3 * i),
                                       static_cast<unsigned char>(255 - i)});
    }
    return palette;
}

/// Samples below `limit` with runs of many lengths.
Bytes SomeSamples(std::size_t count, unsigned limit) {
    Bytes samples;
    for (unsigned run = 1; samples.size() < count; ++run)
        samples.insert(samples.end(), run * run % 150 % (count - samples.size()) + 1,
                       static_cast<unsigned char>(run * 37 % limit));
    samples.resize(count);
    return samples;
}

class PcxThroughTheModule : public testing::Test {
protected:
    std::filesystem::path Write(const PcxPicture& picture, const std::string& name = "picture.pcx") {
        return folder.Write(name, PcxFile(picture));
    }

    TemporaryFolder folder;
    OIIOImageHandler handler;
    MessageRecorder messages;
};

TEST_F(PcxThroughTheModule, EveryLayoutComesOutAsItWentIn) {
    for (const auto& [bits, planes] : {std::pair{1, 1}, {4, 1}, {8, 1}, {1, 4}, {1, 8}, {8, 3}}) {
        for (const bool isCoded : {true, false}) {
            for (const int width : {1, 2, 7, 64, 129}) {
                const std::size_t channels = bits == 8 && planes == 3 ? 3 : 1;
                const int indexBits = bits * planes;
                const std::size_t pixels = static_cast<std::size_t>(width) * 5;
                const Bytes palette = channels == 3 ? Bytes() : Palette(1 << indexBits);
                const Bytes samples = SomeSamples(pixels * channels, channels == 3 ? 256U : 1U << indexBits);
                const auto image = LoadFile(handler, Write({width, 5, bits, planes, isCoded, palette, samples}));
                ASSERT_TRUE(image);
                Bytes expected;
                for (std::size_t i = 0; i < pixels; ++i) {
                    // A set bit of a picture of one bit is the first colour.
                    const std::size_t index = indexBits == 1 ? 1U - samples[i] : samples[i];
                    const auto colour =
                        channels == 3 ? std::span(samples).subspan(3 * i, 3) : std::span(palette).subspan(3 * index, 3);
                    expected.insert(expected.end(), colour.begin(), colour.end());
                    expected.push_back(255);
                }
                EXPECT_EQ(image->bytes, expected) << bits << " x " << planes << ", " << width << " wide";
            }
        }
    }
    EXPECT_THAT(messages.Texts(), IsEmpty());
}

TEST_F(PcxThroughTheModule, IsDescribedWithoutItsPixels) {
    ImageDesc* desc = handler.GetImageDesc(Wide(Write({21, 13, 8, 3, true, {}, SomeSamples(21 * 13 * 3, 256)})));
    ASSERT_NE(desc, nullptr);
    EXPECT_EQ(FactsOf(*desc), (FileFacts{.width = 21, .height = 13}));
    desc->Delete();
}

TEST_F(PcxThroughTheModule, IsConvertedToTheFormatWanted) {
    const auto image = LoadFile(handler, Write({1, 1, 8, 3, true, {}, {10, 20, 30}}), {.format = kB8G8R8A8});
    ASSERT_TRUE(image);
    EXPECT_EQ(image->desc.format, kB8G8R8A8);
    EXPECT_EQ(image->bytes, (Bytes{30, 20, 10, 255}));
}

TEST_F(PcxThroughTheModule, EveryLevelIsTheOneFrame) {
    const auto path = Write({2, 1, 8, 3, true, {}, {1, 2, 3, 4, 5, 6}});
    for (const int level : {0, 1, 7}) {
        const auto image = LoadFile(handler, path, {.level = level});
        ASSERT_TRUE(image);
        EXPECT_EQ(image->bytes, (Bytes{1, 2, 3, 255, 4, 5, 6, 255}));
    }
}

TEST_F(PcxThroughTheModule, ContentDecidesNotTheName) {
    const PcxPicture picture = {1, 1, 8, 3, true, {}, {1, 2, 3}};
    EXPECT_TRUE(LoadFile(handler, Write(picture, "no-extension")));
    EXPECT_TRUE(LoadFile(handler, Write(picture, "picture.cal")));
    EXPECT_THAT(messages.Texts(), IsEmpty());
    EXPECT_FALSE(LoadFile(handler, Write(picture, "picture.tif"))) << "a common extension is never looked behind";
}

TEST_F(PcxThroughTheModule, AnswersAPictureTooLargeForItsFileWithTheOneWarning) {
    Bytes file = PcxFile({1, 1, 8, 3, true, {}, {1, 2, 3}});
    file[8] = file[9] = file[10] = file[11] = 0xFF;
    const auto path = folder.Write("huge.pcx", file);
    EXPECT_TRUE(IsDescribed(handler, path)) << "as what it claims";
    EXPECT_FALSE(LoadFile(handler, path));
    EXPECT_THAT(messages.Texts(), ElementsAre(L"format is not supported"));
}

TEST_F(PcxThroughTheModule, ThreadsLoadDifferentFilesAtOnce) {
    std::vector<std::filesystem::path> paths;
    std::vector<Bytes> expected;
    for (int i = 0; i < 4; ++i) {
        // The fourth is of 4 bits in one plane; all of that kind share a table, with the same contents here.
        const PcxPicture picture = i == 3 ? PcxPicture{90, 70, 4, 1, true, Palette(16), SomeSamples(6300, 16)}
                                          : PcxPicture{90, 70, 8, 3, true, {}, SomeSamples(18900, 200U + i)};
        paths.push_back(Write(picture, std::to_string(i) + ".pcx"));
        expected.push_back(LoadFile(handler, paths.back())->bytes);
    }
    std::vector<std::jthread> threads;
    for (std::size_t i = 0; i < 8; ++i) {
        threads.emplace_back([&, i] {
            for (std::size_t step = 0; step < 20; ++step) {
                const auto image = LoadFile(handler, paths[(i + step) % 4]);
                ASSERT_TRUE(image);
                EXPECT_EQ(image->bytes, expected[(i + step) % 4]);
            }
        });
    }
}

}  // namespace
