// CALS files of ImageMagick and GDAL, and fax rows of libtiff, against those programs' own decoding.

#include "interop/PeerFiles.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Tests;

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

TEST(CalsInterop, OurSamplesAreTheNegativeElsewhere) {
    const auto files = Peers("ours", ".cal");
    ASSERT_FALSE(files.empty());
    for (const auto& file : files) {
        const Bytes ours = Channels(LoadPeer(file).bytes, 1);
        EXPECT_EQ(Differences(ours, Negative(PeerPixels(file, ".gray"))), 0U) << file;
    }
}

}  // namespace
