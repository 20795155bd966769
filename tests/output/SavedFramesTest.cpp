// Several pictures in one file.

#include "output/PreferredSaving.h"

#include <kavra/devices/IWriteImageLineProvider.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

using namespace Kavra::Devices;
using namespace Kavra::Tests;

namespace {

using SavedFrames = PreferredSaving;

/// `count` pictures, each of one colour.
std::vector<Texture> Flat(int count, int width, EFormat format = kR8G8B8A8) {
    std::vector<Texture> frames;
    for (int i = 0; i < count; ++i) {
        Texture frame(width, 8, format);
        std::ranges::fill(frame.bytes, static_cast<unsigned char>(50 + 60 * i));
        for (std::size_t alpha = 3; alpha < frame.bytes.size(); alpha += 4)
            frame.bytes[alpha] = 255;
        frames.push_back(std::move(frame));
    }
    return frames;
}

std::vector<SaveFrame> Further(const std::vector<Texture>& frames) {
    std::vector<SaveFrame> further;
    for (std::size_t i = 1; i < frames.size(); ++i)
        further.push_back({&frames[i].desc, frames[i].bytes.data()});
    return further;
}

SavePreferences WithFrames(const std::vector<SaveFrame>& frames) {
    SavePreferences preferences;
    preferences.moreFrames = frames.data();
    preferences.moreFrameCount = frames.size();
    return preferences;
}

TEST_F(SavedFrames, SeveralPicturesGoIntoOneFile) {
    const auto frames = Flat(3, 8);
    const auto further = Further(frames);
    for (const char* kind : {"x.tif", "x.gif"}) {
        ASSERT_TRUE(SaveWith(WithFrames(further), kind, frames[0])) << kind;
        const auto parts = Parts(kind);
        ASSERT_EQ(parts.size(), 3U) << kind;
        for (std::size_t i = 0; i < parts.size(); ++i)
            EXPECT_EQ(parts[i].pixels, frames[i].bytes) << kind << i;
    }
    ASSERT_TRUE(SaveWith(WithFrames(further), "x.exr", frames[0]));
    const auto parts = Parts("x.exr");
    ASSERT_EQ(parts.size(), 3U);
    EXPECT_NE(parts[0].Text("oiio:subimagename"), parts[1].Text("oiio:subimagename"));
    EXPECT_NE(parts[1].pixels, parts[2].pixels);
}

TEST_F(SavedFrames, AnAnimationHasItsSpeed) {
    const auto frames = Flat(2, 8);
    const auto further = Further(frames);
    SavePreferences preferences = WithFrames(further);
    preferences.framesPerSecond = 10;
    ASSERT_TRUE(SaveWith(preferences, "x.gif", frames[0]));
    const Part part = First("x.gif");
    EXPECT_FLOAT_EQ(part.Number("FramesPerSecond"), 10);
    using Limits = std::numeric_limits<double>;
    for (const double speed : {-1.0, 1e300, Limits::quiet_NaN(), Limits::infinity(), 1e-300}) {
        preferences.framesPerSecond = speed;
        EXPECT_TRUE(SaveWith(preferences, "x.gif", frames[0])) << speed;
        EXPECT_EQ(Parts("x.gif").size(), 2U) << speed;
    }
}

TEST_F(SavedFrames, PagesOfTiffMayDiffer) {
    std::vector<Texture> pages = Flat(2, 8);
    pages.push_back(Texture(3, 5, kR16));
    const auto further = Further(pages);
    ASSERT_TRUE(SaveWith(WithFrames(further), "x.tif", pages[0]));
    const auto parts = Parts("x.tif");
    ASSERT_EQ(parts.size(), 3U);
    EXPECT_EQ(parts[2].spec.width, 3);
    EXPECT_EQ(parts[2].pixels, pages[2].bytes);
}

TEST_F(SavedFrames, WhatCannotBeInOneFileFailsAndLeavesTheOldOne) {
    const auto equal = Flat(2, 8);
    auto wider = Flat(2, 8);
    wider[1] = Flat(1, 9)[0];
    auto deeper = Flat(2, 8);
    deeper[1] = Texture(8, 8, kR16G16B16A16);
    const auto expectRefused = [&](const char* kind, const SavePreferences& preferences, const Texture& first) {
        ASSERT_TRUE(Save(kind, Flat(1, 8)[0]));
        const auto old = ReadAll(folder / kind);
        EXPECT_FALSE(SaveWith(preferences, kind, first)) << kind;
        EXPECT_EQ(ReadAll(folder / kind), old) << kind;
    };
    const auto more = Further(equal), moreWider = Further(wider), moreDeeper = Further(deeper);
    for (const char* kind : {"x.png", "x.jpg", "x.webp", "x.tga", "x.bmp", "x.ico", "x.fits", "x.dpx"})
        expectRefused(kind, WithFrames(more), equal[0]);
    for (const char* kind : {"x.gif", "x.exr"}) {
        expectRefused(kind, WithFrames(moreWider), wider[0]);
        expectRefused(kind, WithFrames(moreDeeper), deeper[0]);
    }
    const std::vector<SaveFrame> tooMany(5000, more[0]);
    const std::vector<SaveFrame> hollow = {{nullptr, equal[1].bytes.data()}}, empty = {{&equal[1].desc, nullptr}};
    Texture blocks(8, 8, kR8G8B8A8);
    blocks.desc.format = kBC1;
    const std::vector<SaveFrame> compressed = {{&blocks.desc, blocks.bytes.data()}};
    for (const char* kind : {"x.gif", "x.tif"}) {
        for (const auto* frames : {&tooMany, &hollow, &empty, &compressed})
            expectRefused(kind, WithFrames(*frames), equal[0]);
    }
}

TEST_F(SavedFrames, ALineWriterTakesThemToo) {
    struct Lines final : IWriteImageLineProvider {
        void FillLine(void* line) override { std::fill_n(static_cast<unsigned char*>(line), 64 * 4, 7); }
    } lines;
    const std::vector<FileText> texts = {{"Copyright", "mine"}};
    SavePreferences preferences;
    preferences.texts = texts.data();
    preferences.textCount = texts.size();
    preferences.compression = "lzw";
    preferences.resolution = 300;
    const SavePreferencesScope scope(preferences);
    ASSERT_TRUE(handler.writeImageOneLineAtATime(Wide(folder / "x.tif"), 72, &lines, 64, 8, 3));
    const Part part = First("x.tif");
    EXPECT_EQ(part.Text("compression"), "lzw");
    EXPECT_EQ(part.Text("Copyright"), "mine");
    EXPECT_EQ(part.Number("XResolution"), 72);
    const auto frames = Flat(2, 8);
    const auto further = Further(frames);
    const SavePreferencesScope several(WithFrames(further));
    EXPECT_FALSE(handler.writeImageOneLineAtATime(Wide(folder / "y.tif"), 72, &lines, 64, 8, 3));
}

}  // namespace
