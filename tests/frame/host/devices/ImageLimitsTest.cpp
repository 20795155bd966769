#include <kavra/devices/ImageLimits.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace {

using namespace Kavra::Devices;

class ImageLimitsTest : public testing::Test {
protected:
    ~ImageLimitsTest() override { SetImageLimits({}); }
};

TEST_F(ImageLimitsTest, NothingIsSetAtTheStart) {
    const ImageLimits limits = GetImageLimits();
    EXPECT_EQ(limits.size, sizeof(ImageLimits));
    EXPECT_EQ(limits.maxBytes, 0U);
    EXPECT_EQ(limits.maxPixels, 0U);
}

TEST_F(ImageLimitsTest, WhatWasSetLastHolds) {
    SetImageLimits({.maxBytes = 5, .maxPixels = 6});
    SetImageLimits({.maxBytes = 7, .maxPixels = 0});
    EXPECT_EQ(GetImageLimits().maxBytes, 7U);
    EXPECT_EQ(GetImageLimits().maxPixels, 0U);
}

TEST_F(ImageLimitsTest, OnlyWhatASizeCoversIsReadOrWritten) {
    constexpr auto kBytesOnly = static_cast<std::uint32_t>(offsetof(ImageLimits, maxPixels));
    SetImageLimits({.maxBytes = 1, .maxPixels = 2});
    SetImageLimits({.size = kBytesOnly, .maxBytes = 3, .maxPixels = 999});
    EXPECT_EQ(GetImageLimits().maxBytes, 3U);
    EXPECT_EQ(GetImageLimits().maxPixels, 0U);

    SetImageLimits({.maxBytes = 1, .maxPixels = 2});
    ImageLimits shorter{.size = kBytesOnly, .maxBytes = 0, .maxPixels = 999};
    GetImageLimits(shorter);
    EXPECT_EQ(shorter.size, kBytesOnly);
    EXPECT_EQ(shorter.maxBytes, 1U);
    EXPECT_EQ(shorter.maxPixels, 999U);

    ImageLimits longer{.size = 4096};
    GetImageLimits(longer);
    EXPECT_EQ(longer.maxPixels, 2U);
    ImageLimits none{.size = 0, .maxBytes = 888};
    GetImageLimits(none);
    EXPECT_EQ(none.maxBytes, 888U);
    SetImageLimits(none);
    EXPECT_EQ(GetImageLimits().maxBytes, 0U);
}

TEST_F(ImageLimitsTest, ThreadsNeverSeeHalfOfASetting) {
    std::atomic<bool> torn = false;
    std::atomic<bool> done = false;
    std::thread reader([&] {
        while (!done) {
            const ImageLimits limits = GetImageLimits();
            if (limits.maxBytes != limits.maxPixels) torn = true;
        }
    });
    std::vector<std::thread> writers;
    for (std::uint64_t value = 1; value <= 2; ++value) {
        writers.emplace_back([value] {
            for (int i = 0; i < 2000; ++i)
                SetImageLimits({.maxBytes = value, .maxPixels = value});
        });
    }
    for (std::thread& writer : writers)
        writer.join();
    done = true;
    reader.join();
    EXPECT_FALSE(torn);
}

}  // namespace
