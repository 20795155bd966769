// PCX files of ImageMagick, netpbm and ffmpeg, pixel by pixel against those programs' own decoding.

#include "interop/PeerFiles.h"
#include "readers/FileTypeDetection.h"
#include "readers/ImageFileType.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/LoadPreferences.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <format>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace {

using namespace Kavra::Tests;
using namespace Kavra::Devices;

using Bytes = std::vector<unsigned char>;

Bytes Ours(const std::string& name) {
    return Channels(LoadPeer(Peer("pcx/" + name)).bytes, 3);
}

Bytes Theirs(const std::string& name) {
    return PeerPixels(Peer("pcx/" + name), ".rgb");
}

Bytes Negative(Bytes pixels) {
    for (unsigned char& value : pixels)
        value = static_cast<unsigned char>(255 - value);
    return pixels;
}

TEST(PcxInterop, ColourAndPaletteFilesReadAsTheirWritersReadThem) {
    for (const std::string name :
         {"magick-24bit.pcx", "magick-24bit-raw.pcx", "magick-palette.pcx", "netpbm-24bit.pcx", "netpbm-8bit.pcx",
          "netpbm-planes.pcx", "netpbm-packed.pcx", "ffmpeg-24bit.pcx", "ffmpeg-gray-even.pcx"}) {
        EXPECT_EQ(Differences(Ours(name), Theirs(name)), 0U) << name;
    }
}

TEST(PcxInterop, AMonochromeFileReadsAsImageMagickReadsIt) {
    EXPECT_EQ(Differences(Ours("magick-mono.pcx"), Theirs("magick-mono.pcx")), 0U);
}

TEST(PcxInterop, AMonochromeFileIsTheNegativeOfWhatNetpbmReads) {
    EXPECT_EQ(Differences(Ours("netpbm-mono.pcx"), Negative(Theirs("netpbm-mono.pcx"))), 0U);
}

// The byte that pads a line to an even length becomes the first pixel of the next.
TEST(PcxInterop, OddLinesPaddedToEvenSkewFromTheSecondRowOn) {
    const Bytes ours = Ours("ffmpeg-gray-odd.pcx");
    const Bytes theirs = Theirs("ffmpeg-gray-odd.pcx");
    ASSERT_EQ(ours.size(), theirs.size());
    constexpr std::size_t kRow = 101 * 3;
    EXPECT_TRUE(std::equal(ours.begin(), ours.begin() + kRow, theirs.begin()));
    EXPECT_GT(Differences(ours, theirs), 0U);
}

TEST(PcxInterop, AFileWithAnAlphaPlaneIsLeftToTheLibrary) {
    EXPECT_EQ(DetectImageFileType(Wide(Peer("pcx/magick-alpha.pcx"))), Other);
}

/// Black and white replaced by the first and the second colour of the file's header.
Bytes InTwoColours(Bytes pixels, const Bytes& file) {
    constexpr std::size_t kColours = 16;
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = file.at(kColours + (pixels[i] == 0 ? 0 : 3) + i % 3);
    return pixels;
}

// ImageMagick knows nothing of the colours of a file of one bit.
TEST(PcxInterop, OurSamplesReadElsewhereAsHere) {
    const auto paths = Peers("ours", ".pcx");
    ASSERT_FALSE(paths.empty());
    for (const auto& path : paths) {
        const Bytes file = ReadAll(path);
        const bool isOneBit = file.at(3) * file.at(65) == 1;
        const Bytes theirs = PeerPixels(path, ".rgb");
        EXPECT_EQ(Differences(Channels(LoadPeer(path).bytes, 3), isOneBit ? InTwoColours(theirs, file) : theirs), 0U)
            << path;
    }
}

// --- The common reading ----------------------------------------------------------------------------------------------

Bytes InCommon(const std::filesystem::path& file, int frame = 0) {
    LoadPreferences preferences;
    preferences.legacy = kLegacyCommon;
    const LoadPreferencesScope scope(preferences);
    return Channels(LoadPeer(file, {.level = frame}).bytes, 3);
}

TEST(PcxInterop, FilesOfOthersReadInTheCommonReadingAsTheirWritersReadThem) {
    for (const auto& file : Peers("pcx", ".pcx")) {
        // But for a file of one bit, which only its writer reads as its negative.
        const bool isMagickMono = file.filename() == "magick-mono.pcx";
        EXPECT_EQ(Differences(InCommon(file), PeerPixels(file, isMagickMono ? ".ffmpeg.rgb" : ".rgb")), 0U) << file;
    }
}

TEST(PcxInterop, PagesOfOthersReadAsTheirWriterReadsThem) {
    const auto file = Peer("dcx/magick.dcx");
    for (const int page : {0, 1, 2})
        EXPECT_EQ(Differences(InCommon(file, page), PeerPixels(file, std::format(".{}.rgb", page))), 0U) << page;
}

TEST(PcxInterop, EveryKindOfFileReadsAsItWasMade) {
    const auto files = Peers("pcx-known", ".pcx");
    ASSERT_GT(files.size(), 200U);
    for (const auto& file : files)
        EXPECT_EQ(Differences(InCommon(file), PeerPixels(file, ".rgb")), 0U) << file;
    for (const int page : {0, 1, 2, 3}) {
        const auto pages = Peer("pcx-known/pages.dcx");
        EXPECT_EQ(Differences(InCommon(pages, page), PeerPixels(pages, std::format(".{}.rgb", page))), 0U) << page;
    }
}

/// The programs that read each file of pcx-files as it was made.
std::map<std::string, std::set<std::string>> Witnesses() {
    std::map<std::string, std::set<std::string>> witnesses;
    std::ifstream list(Peer("pcx-witnesses"));
    for (std::string line; std::getline(list, line);) {
        std::istringstream words(line);
        std::string file, program;
        words >> file;
        while (words >> program)
            witnesses[file].insert(program);
    }
    return witnesses;
}

// So that what the files hold is not our opinion alone.
TEST(PcxInterop, OtherProgramsReadTheCommonKindsLikewise) {
    const auto witnesses = Witnesses();
    for (const std::string family : {"v2", "v4", "v5", "padded", "unpadded", "long-runs", "window", "grey-flag"}) {
        for (const std::string kind : {"1x1", "2x1", "1x2", "1x3", "1x4", "4x1", "8x1", "8x3", "8x4"}) {
            const std::string name = family + "-" + kind + ".pcx";
            EXPECT_TRUE(witnesses.contains(name)) << name;
        }
    }
    for (const std::string name :
         {"no-colours-1x2", "no-colours-1x3", "no-colours-1x4", "no-colours-4x1", "no-colours-1x1", "equal-colours-1x1",
          "ega-colours-1x1", "white-first-1x1", "dark-greys-4x1", "v0-1x1", "v3-1x1", "other-marker-8x1",
          "filled-up-8x1", "before-palette-8x1"})
        EXPECT_TRUE(witnesses.contains(name + ".pcx")) << name;
}

}  // namespace
