// PICT files of ImageMagick and netpbm, pixel by pixel against those programs' own decoding.

#include "interop/PeerFiles.h"
#include "support/MessageRecorder.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/LoadPreferences.h>
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

// --- The common reading ----------------------------------------------------------------------------------------------

Loaded LoadCommon(const std::filesystem::path& file) {
    LoadPreferences preferences;
    preferences.legacy = kLegacyCommon;
    const LoadPreferencesScope scope(preferences);
    return LoadPeer(file);
}

TEST(PictInterop, EveryFileOfTheOthersReadsAsTheyReadIt) {
    const auto files = Peers("pict", ".pct");
    EXPECT_GE(files.size(), 15U);
    for (const auto& file : files)
        EXPECT_EQ(Differences(Channels(LoadCommon(file).bytes, 3), PeerPixels(file, ".rgb")), 0U) << file;
}

TEST(PictInterop, OurSamplesForTheCommonReadingReadElsewhereAsInIt) {
    const auto files = Peers("ours-common", ".pict");
    ASSERT_FALSE(files.empty());
    for (const auto& file : files)
        EXPECT_EQ(Differences(Channels(LoadCommon(file).bytes, 3), PeerPixels(file, ".rgb")), 0U) << file;
}

TEST(PictInterop, KnownPixelsComeOutAsTheyAreMeant) {
    const auto files = Peers("pict-known", ".pict");
    EXPECT_GE(files.size(), 140U);
    for (const auto& file : files) {
        const auto meant = ReadAll(std::filesystem::path(file).replace_extension(".want"));
        EXPECT_EQ(Differences(LoadCommon(file).bytes, meant), 0U) << file;
    }
}

// What is meant is not only what this project takes it for: of each kind that another program reads, one does read it so.
TEST(PictInterop, KnownPixelsHaveWitnesses) {
    for (const std::string kind : {"direct16-pack0-300",
                                   "direct32-pack0-3",
                                   "direct32-pack4-101",
                                   "direct32-alpha",
                                   "direct32-four-components-0",
                                   "indexed1-33",
                                   "indexed2-270",
                                   "indexed4-33",
                                   "indexed8-270",
                                   "indexed-by-number",
                                   "indexed-device-table",
                                   "indexed-padded-rows",
                                   "bands",
                                   "bands-indexed",
                                   "resolution-300",
                                   "mode0",
                                   "mode64",
                                   "no-end",
                                   "preamble-0",
                                   "preamble-512",
                                   "quicktime-jpeg",
                                   "quicktime-uncompressed",
                                   "colours-do-not-tint-copies"})
        EXPECT_FALSE(ReadAll(Peer("pict-known/" + kind + ".witness")).empty()) << kind;
}

}  // namespace
