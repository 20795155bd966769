// Our animation, frame by frame as ffmpeg replays it.

#include "interop/PeerFiles.h"

#include <gtest/gtest.h>

#include <span>

namespace {

using namespace Kavra::Tests;

using Bytes = std::vector<unsigned char>;

// As many chunks are played as the header counts frames: with three in the first frame and two in each other one that
// ends at frame (F - 3) / 2, and later frames look like it.
TEST(FlicInterop, OurAnimationReplaysElsewhereAsHereAsFarAsItsChunksCount) {
    const auto file = Peer("ours/balloon.flc");
    const Loaded first = LoadPeer(file);
    const std::size_t frameBytes = static_cast<std::size_t>(first.desc.width) * first.desc.height * 3;
    const Bytes theirs = PeerPixels(file, ".rgb");
    ASSERT_EQ(theirs.size() % frameBytes, 0U);
    const int frames = static_cast<int>(theirs.size() / frameBytes);
    const int last = (frames - 3) / 2;
    ASSERT_GT(last, 3);
    for (int frame = 0; frame <= last; ++frame) {
        const auto expected = std::span(theirs).subspan(frame * frameBytes, frameBytes);
        const Bytes ours = Channels(LoadPeer(file, {.level = frame}).bytes, 3);
        EXPECT_EQ(Differences(ours, Bytes(expected.begin(), expected.end())), 0U) << frame;
    }
    EXPECT_EQ(LoadPeer(file, {.level = frames - 1}).bytes, LoadPeer(file, {.level = last}).bytes);
}

}  // namespace
