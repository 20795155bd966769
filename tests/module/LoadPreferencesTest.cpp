// What a host prefers of loads, through whole loads of every kind.

#include "readers/ImageFileType.h"
#include "support/HandlerAccess.h"
#include "support/Loading.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/LoadPreferences.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

using namespace Kavra::Devices;
using namespace Kavra::Tests;

namespace {

using Bytes = std::vector<unsigned char>;

LoadPreferences Chosen(EResampleFilter filter) {
    LoadPreferences preferences;
    preferences.choosesFilter = true;
    preferences.filter = filter;
    return preferences;
}

/// A picture of four bytes a pixel at half its size: the mean of four pixels each.
Bytes MeansOf(const Loaded& image) {
    const auto width = static_cast<std::size_t>(image.desc.width), height = static_cast<std::size_t>(image.desc.height);
    Bytes means;
    for (std::size_t y = 0; y + 1 < height; y += 2) {
        for (std::size_t x = 0; x + 1 < width; x += 2) {
            for (std::size_t c = 0; c < 4; ++c) {
                const auto at = [&](std::size_t column, std::size_t row) {
                    return int{image.bytes[(row * width + column) * 4 + c]};
                };
                means.push_back(
                    static_cast<unsigned char>((at(x, y) + at(x + 1, y) + at(x, y + 1) + at(x + 1, y + 1) + 2) / 4));
            }
        }
    }
    return means;
}

/// Whether each is as said, but for the rounding of halves.
bool AreNear(const Bytes& bytes, const Bytes& said) {
    const auto isNear = [](unsigned char a, unsigned char b) { return std::abs(a - b) <= 1; };
    return std::ranges::equal(bytes, said, isNear);
}

LoadRequest HalfOf(const Loaded& image) {
    return {.width = image.desc.width / 2, .height = image.desc.height / 2, .format = kR8G8B8A8};
}

/// Files of the library and of readers of our own, of even sizes.
const std::vector<std::string> kFiles = {"photo.tga", "photo.dds",  "cutout.png",
                                         "photo.pcx", "photo.pict", "drawing.cal"};

}  // namespace

TEST(LoadPreferences, TheFilterThatAHostChoosesHoldsForFilesOfEveryKind) {
    OIIOImageHandler handler;
    for (const std::string& name : kFiles) {
        const auto whole = LoadFile(handler, Sample(name), {.format = kR8G8B8A8});
        ASSERT_TRUE(whole) << name;
        EXPECT_FALSE(AreNear(LoadFile(handler, Sample(name), HalfOf(*whole))->bytes, MeansOf(*whole))) << name;
        const LoadPreferencesScope scope(Chosen(kResampleBox));
        const auto half = LoadFile(handler, Sample(name), HalfOf(*whole));
        ASSERT_TRUE(half) << name;
        EXPECT_TRUE(AreNear(half->bytes, MeansOf(*whole))) << name;
    }
}

TEST(LoadPreferences, HoldForBothSlotsAndForTheWaysBeneath) {
    OIIOImageHandlerAccess access;
    IImageHandler& handler = access.handler;
    const auto whole = LoadFile(handler, Sample("photo.tga"), {.format = kR8G8B8A8});
    const Bytes means = MeansOf(*whole);
    const int width = whole->desc.width / 2, height = whole->desc.height / 2;
    const LoadPreferencesScope scope(Chosen(kResampleBox));
    ImageDescription desc;
    auto* const block =
        handler.LoadTexture(desc, Wide(Sample("photo.tga")), width, height, 1, kR8G8B8A8, 0, kTopLeft, nullptr);
    ASSERT_NE(block, nullptr);
    const auto* const first = static_cast<unsigned char*>(block->mData);
    EXPECT_TRUE(AreNear(Bytes(first, first + means.size()), means));
    block->Delete();
    unsigned char* const pixels = access.LoadTextureByOIIO(desc, Wide(Sample("photo.tga")), width, height, kR8G8B8A8,
                                                           false, 0, kTopLeft, nullptr, Other);
    ASSERT_NE(pixels, nullptr);
    EXPECT_TRUE(AreNear(Bytes(pixels, pixels + means.size()), means));
    Kavra::Objects::KavraDelete(pixels);

    PopLoadPreferences();  // to load it whole
    const auto legacy = LoadFile(handler, Sample("photo.pcx"));
    PushLoadPreferences(Chosen(kResampleBox));
    unsigned char* const rows = access.LoadSpecial(desc, Wide(Sample("photo.pcx")), legacy->desc.width / 2,
                                                   legacy->desc.height / 2, false, 0, kTopLeft, PCX);
    ASSERT_NE(rows, nullptr);
    const Bytes legacyMeans = MeansOf(*legacy);
    EXPECT_TRUE(AreNear(Bytes(rows, rows + legacyMeans.size()), legacyMeans));
    Kavra::Objects::KavraDelete(rows);
}

TEST(LoadPreferences, WithoutAnyNotAByteChanges) {
    OIIOImageHandler handler;
    for (const std::string& name : kFiles) {
        const LoadRequest request = {.width = 50, .height = 37, .format = kR8G8B8A8};
        const auto before = LoadFile(handler, Sample(name), request);
        {
            const LoadPreferencesScope defaults(LoadPreferences{});
            EXPECT_TRUE(LoadFile(handler, Sample(name), request)->bytes == before->bytes) << name;
            const LoadPreferencesScope scope(Chosen(kResampleLanczos3));
            EXPECT_FALSE(LoadFile(handler, Sample(name), request)->bytes == before->bytes) << name;
        }
        EXPECT_TRUE(LoadFile(handler, Sample(name), request)->bytes == before->bytes) << name;
    }
}

TEST(LoadPreferences, ThreadsLoadByTheirOwn) {
    OIIOImageHandler handler;
    const auto whole = LoadFile(handler, Sample("photo.tga"), {.format = kR8G8B8A8});
    const LoadRequest half = HalfOf(*whole);
    const Bytes plain = LoadFile(handler, Sample("photo.tga"), half)->bytes;
    PushLoadPreferences(Chosen(kResampleBox));
    const Bytes means = LoadFile(handler, Sample("photo.tga"), half)->bytes;
    PopLoadPreferences();
    ASSERT_NE(means, plain);
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 5; ++round) {
                if (i % 2 == 0) {
                    EXPECT_TRUE(LoadFile(handler, Sample("photo.tga"), half)->bytes == plain);
                } else {
                    const LoadPreferencesScope scope(Chosen(kResampleBox));
                    EXPECT_TRUE(LoadFile(handler, Sample("photo.tga"), half)->bytes == means);
                }
            }
        });
    }
}
