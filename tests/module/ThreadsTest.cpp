// One handler, many threads: loads do not disturb one another. Under ThreadSanitizer too.

#include "support/Loading.h"
#include "support/Program.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <thread>

using namespace Kavra::Devices;
using namespace Kavra::Tests;

namespace {

/// Calls `work(thread, round)` in every thread at the same time.
template <class Work>
void Hammer(int threads, int rounds, const Work& work) {
    std::vector<std::jthread> running;
    for (int thread = 0; thread < threads; ++thread) {
        running.emplace_back([&work, thread, rounds] {
            for (int round = 0; round < rounds; ++round)
                work(thread, round);
        });
    }
}

}  // namespace

TEST(Threads, EightThreadsLoadingTheSameFileGetTheSameBlock) {
    OIIOImageHandler handler;
    for (const std::string name : {"photo-orientation-6.jpg", "tiled.tif", "rgba.exr", "mips.dds"}) {
        const auto expected = LoadFile(handler, Sample(name), {.width = 30, .format = kR8G8B8A8});
        ASSERT_TRUE(expected) << name;
        Hammer(8, 4, [&](int, int) {
            const auto image = LoadFile(handler, Sample(name), {.width = 30, .format = kR8G8B8A8});
            ASSERT_TRUE(image) << name;
            EXPECT_TRUE(image->bytes == expected->bytes) << name;
        });
    }
}

TEST(Threads, EightThreadsLoadingDifferentFilesGetTheirOwn) {
    OIIOImageHandler handler;
    const auto samples = AllSamples();
    std::vector<std::optional<Loaded>> expected;
    for (const auto& sample : samples)
        expected.push_back(LoadFile(handler, sample));
    Hammer(8, 12, [&](int thread, int round) {
        const std::size_t index = static_cast<std::size_t>(thread * 5 + round * 7) % samples.size();
        const auto image = LoadFile(handler, samples[index]);
        ASSERT_EQ(image.has_value(), expected[index].has_value()) << samples[index];
        EXPECT_TRUE(image->bytes == expected[index]->bytes) << samples[index];
    });
}

TEST(Threads, ACubeMapHammeredByFourThreadsNeverShowsAWrongFace) {
    OIIOImageHandler handler;
    std::vector<Loaded> levels;
    for (int level = 0; level < 6; ++level)
        levels.push_back(*LoadFile(handler, Sample("cube-mips.dds"), {.level = level}));
    Hammer(4, 150, [&](int thread, int round) {
        const int level = (thread + round) % 6;
        const auto image = LoadFile(handler, Sample("cube-mips.dds"), {.level = level});
        ASSERT_TRUE(image);
        EXPECT_TRUE(image->bytes == levels[static_cast<std::size_t>(level)].bytes) << level;
    });
}

TEST(Threads, HandlersComeAndGoFromAnyThread) {
    const int before = OIIOImageHandler::NetObjectCount();
    Hammer(8, 50, [](int, int) {
        const OIIOImageHandler first;
        const OIIOImageHandler second(first);
    });
    EXPECT_EQ(OIIOImageHandler::NetObjectCount(), before);
}
