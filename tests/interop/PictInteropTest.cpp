// PICT files of ImageMagick and netpbm, pixel by pixel against those programs' own decoding.

#include "interop/PeerFiles.h"
#include "support/MessageRecorder.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace Kavra::Tests;
using namespace Kavra::Devices;

TEST(PictInterop, PalettePicturesReadAsTheirWritersReadThem) {
    for (const std::string name : {"pict/magick-8bit.pct", "pict/netpbm-8bit.pct"}) {
        const auto ours = Channels(LoadPeer(Peer(name)).bytes, 3);
        EXPECT_EQ(Differences(ours, PeerPixels(Peer(name), ".rgb")), 0U) << name;
    }
}

// Copying direct colour in mode 0 keeps two colours only.
TEST(PictInterop, WideDirectColourComesOutInBlackAndWhite) {
    const auto ours = Channels(LoadPeer(Peer("pict/magick-24bit-wide.pct")).bytes, 3);
    EXPECT_TRUE(std::ranges::all_of(ours, [](unsigned char value) { return value == 0 || value == 255; }));
}

// Its rows carry 8-bit counts, and direct colour always has 16-bit counts here.
TEST(PictInterop, NarrowDirectColourIsCorrupt) {
    const MessageRecorder recorder;
    OIIOImageHandler handler;
    EXPECT_FALSE(LoadFile(handler, Peer("pict/magick-24bit-narrow.pct")));
    EXPECT_EQ(recorder.Texts(), (std::vector<std::wstring>{L"The data is corrupted.", L"format is not supported"}));
}

TEST(PictInterop, OurSamplesReadElsewhereAsHere) {
    const auto files = Peers("ours", ".pict");
    ASSERT_FALSE(files.empty());
    for (const auto& file : files)
        EXPECT_EQ(Differences(Channels(LoadPeer(file).bytes, 3), PeerPixels(file, ".rgb")), 0U) << file;
}

}  // namespace
