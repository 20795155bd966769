// CALS files of ImageMagick and GDAL, and fax rows of libtiff, against those programs' own decoding.

#include "interop/PeerFiles.h"
#include "readers/Decode.h"
#include "readers/cals/CalsReader.h"
#include "readers/ccitt/CcittRows.h"

#include <gtest/gtest.h>

#include <fstream>
#include <span>
#include <string>
#include <utility>

namespace {

using namespace Kavra::Tests;
using Kavra::Common::ByteSource;
using namespace Kavra::Devices;

using Bytes = std::vector<unsigned char>;

Bytes Negative(Bytes pixels) {
    for (unsigned char& value : pixels)
        value = static_cast<unsigned char>(255 - value);
    return pixels;
}

TEST(CalsInterop, ADrawingIsTheNegativeOfWhatOthersRead) {
    const auto files = Peers("cals", ".cal");
    ASSERT_EQ(files.size(), 4U);
    for (const auto& file : files) {
        const Bytes ours = Channels(LoadPeer(file).bytes, 1);
        EXPECT_EQ(Differences(ours, Negative(PeerPixels(file, ".gray"))), 0U) << file;
    }
}

// The bare reader: a load would turn the drawing that lies on its side.
TEST(CalsInterop, OurSamplesAreTheNegativeElsewhere) {
    const auto files = Peers("ours", ".cal");
    ASSERT_FALSE(files.empty());
    for (const auto& file : files) {
        const Bytes ours = Channels(DecodeFile<CALSReader>(file).block, 1);
        EXPECT_EQ(Differences(ours, Negative(PeerPixels(file, ".gray"))), 0U) << file;
    }
}

/// "fax/PICTURE-modeN-ORDER.tif", whose only strip lies beside it.
struct FaxFile {
    std::string name;
    Ccitt::Mode mode;
    Ccitt::BitOrder order;
};

std::vector<FaxFile> FaxFiles() {
    using enum Ccitt::BitOrder;
    std::vector<FaxFile> files;
    for (const std::string picture : {"dots", "drawing"}) {
        for (const int mode : {0, 1, 2, 3}) {
            for (const auto& [order, suffix] : {std::pair(kMostSignificantFirst, "-msb2lsb.tif"),
                                                std::pair(kLeastSignificantFirst, "-lsb2msb.tif")}) {
                const std::string name = "fax/" + picture + "-mode" + std::to_string(mode) + suffix;
                if (std::filesystem::exists(Peer(name))) {
                    files.push_back({name, static_cast<Ccitt::Mode>(mode), order});
                }
            }
        }
    }
    return files;
}

/// The bits of all rows, a byte a pixel.
Bytes DecodeStrip(const FaxFile& file, int width, int height) {
    const Bytes strip = PeerPixels(Peer(file.name), ".strip");
    ByteSource source{std::span<const unsigned char>(strip)};
    Ccitt::Decoder decoder(source, width, file.mode, file.order);
    Bytes row(static_cast<std::size_t>(width + 7) / 8), bits;
    for (int y = 0; y < height; ++y) {
        EXPECT_NE(decoder.DecodeRows(row), Ccitt::Outcome::kBadCode) << file.name << " row " << y;
        for (int x = 0; x < width; ++x)
            bits.push_back(row[static_cast<std::size_t>(x) / 8] >> (7 - x % 8) & 1);
    }
    return bits;
}

TEST(FaxInterop, EveryModeAndBitOrderDecodesAsInLibtiff) {
    const std::vector<FaxFile> files = FaxFiles();
    ASSERT_EQ(files.size(), 14U);  // mode 1 in one order only
    for (const FaxFile& file : files) {
        int width = 0, height = 0;
        std::ifstream(Peer(file.name + ".size")) >> width >> height;
        EXPECT_EQ(Differences(DecodeStrip(file, width, height), PeerPixels(Peer(file.name), ".bits")), 0U) << file.name;
    }
}

}  // namespace
