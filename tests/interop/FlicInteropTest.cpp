// Animations frame by frame as ffmpeg replays them, and as they were made.

#include "interop/PeerFiles.h"

#include <kavra/devices/LoadPreferences.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <span>
#include <string>

namespace {

using namespace Kavra::Tests;
namespace Devices = Kavra::Devices;

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

// --- The common reading ----------------------------------------------------------------------------------------------

/// All frames, one behind the other.
Bytes InCommon(const std::filesystem::path& file, std::size_t bytes) {
    Devices::LoadPreferences preferences;
    preferences.legacy = Devices::kLegacyCommon;
    const Devices::LoadPreferencesScope scope(preferences);
    Bytes frames;
    for (int number = 0; frames.size() < bytes; ++number) {
        const Bytes frame = Channels(LoadPeer(file, {.level = number}).bytes, 3);
        if (frame.empty()) break;
        frames.insert(frames.end(), frame.begin(), frame.end());
    }
    return frames;
}

TEST(FlicInterop, OurAnimationReplaysElsewhereAsHereToItsEndInTheCommonReading) {
    const auto file = Peer("ours/balloon.flc");
    const Bytes theirs = PeerPixels(file, ".rgb");
    EXPECT_EQ(Differences(InCommon(file, theirs.size()), theirs), 0U);
}

TEST(FlicInterop, EveryKindOfAnimationReplaysAsItWasMade) {
    int files = 0;
    for (const char* extension : {".fli", ".flc"}) {
        for (const auto& file : Peers("flic-known", extension)) {
            const Bytes known = PeerPixels(file, ".known");
            EXPECT_EQ(Differences(InCommon(file, known.size()), known), 0U) << file;
            ++files;
        }
    }
    EXPECT_EQ(files, 8);
}

// ffmpeg also gives the frame that leads back to the first. It sets the last pixel of odd rows in its own padding
// behind them: the two animations with such changes are left out.
TEST(FlicInterop, FfmpegReplaysTheKnownAnimationsLikewise) {
    for (const std::string name :
         {"fli.fli", "fli-no-ring.fli", "fli-odd.fli", "flc.flc", "flc-prefix.flc", "flc-old-chunks.flc"}) {
        const auto file = Peer("flic-known/" + name);
        const Bytes known = PeerPixels(file, ".known");
        Bytes theirs = PeerPixels(file, ".rgb");
        ASSERT_GE(theirs.size(), known.size()) << name;
        theirs.resize(known.size());
        EXPECT_EQ(Differences(theirs, known), 0U) << name;
    }
}

}  // namespace
