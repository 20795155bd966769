/// OpenImageIO's reading of our files: level 0 of flat textures, of the formats that it opens.

#include "frame/host/devices/DdsTestFile.h"

#include <kavra/devices/AFormatConvertor.h>

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Utilities::AFormatConvertor;

struct Peer {
    OIIO::ImageSpec spec;
    Bytes bytes;
};

std::optional<Peer> ReadByLibrary(const std::filesystem::path& path) {
    OIIO::ImageSpec config;
    config["oiio:UnassociatedAlpha"] = 1;
    const std::unique_ptr<OIIO::ImageInput> input = OIIO::ImageInput::open(path.string(), &config);
    if (!input) return std::nullopt;
    Peer peer{input->spec(), Bytes(input->spec().image_bytes())};
    const bool read = input->read_image(0, 0, 0, -1, peer.spec.format, peer.bytes.data());
    if (!read || input->has_error()) return std::nullopt;
    return peer;
}

/// What the library delivers of each pixel: which stored bytes, in which order.
struct PeerCase {
    EFormat format;
    std::vector<int> order;
};

class LibraryReads : public testing::TestWithParam<PeerCase> {};

TEST_P(LibraryReads, TheSamePixels) {
    const auto& [format, order] = GetParam();
    const TemporaryFolder folder;
    const std::size_t pixelBytes = AFormatConvertor::BytesPerPixel(format);
    const Bytes data = Noise(7 * 5 * pixelBytes);
    ASSERT_TRUE(Save(folder / "a.dds", kTexture2D, format, 7, 5, 1, 1, data));
    const std::optional<Peer> peer = ReadByLibrary(folder / "a.dds");
    ASSERT_TRUE(peer);
    EXPECT_EQ(peer->spec.width, 7);
    EXPECT_EQ(peer->spec.height, 5);
    Bytes expected;
    for (std::size_t pixel = 0; pixel < 35; ++pixel) {
        for (const int byte : order)
            expected.push_back(byte < 0 ? 0 : data[pixel * pixelBytes + byte]);
    }
    EXPECT_EQ(peer->bytes, expected);
}

/// The library keeps the high byte of 16-bit channels, and a third channel of zero for the two of R16G16.
INSTANTIATE_TEST_SUITE_P(DdsWriter, LibraryReads,
                         testing::Values(PeerCase{kL8, {0}}, PeerCase{kA8, {0}}, PeerCase{kL16, {1}},
                                         PeerCase{kR16, {1}}, PeerCase{kR16G16, {1, 3, -1}},
                                         PeerCase{kR8G8B8A8, {0, 1, 2, 3}}, PeerCase{kR8G8B8X8, {0, 1, 2}},
                                         PeerCase{kB8G8R8A8, {2, 1, 0, 3}}, PeerCase{kB8G8R8X8, {2, 1, 0}}),
                         [](const auto& test) { return std::to_string(test.param.format); });

/// One block of each format that decodes to a single colour, worked out from the formats' description.
struct ColourCase {
    EFormat format;
    Bytes block;
    Bytes pixel;
};

class LibraryDecodes : public testing::TestWithParam<ColourCase> {};

TEST_P(LibraryDecodes, OurBlocks) {
    const auto& [format, block, pixel] = GetParam();
    const TemporaryFolder folder;
    ASSERT_TRUE(Save(folder / "a.dds", kTexture2D, format, 4, 4, 1, 1, block));
    const std::optional<Peer> peer = ReadByLibrary(folder / "a.dds");
    ASSERT_TRUE(peer);
    Bytes expected;
    for (int i = 0; i < 16; ++i)
        expected.insert(expected.end(), pixel.begin(), pixel.end());
    EXPECT_EQ(peer->bytes, expected);
}

/// Both end points of the colour are pure red (5-6-5: f800), all indices 0; alpha end point 77, or all 4-bit alphas 5.
/// BC7: mode 5 (bit 5), red end points 127 of 7 bits, alpha end points 77 of 8 bits, all indices 0.
std::vector<ColourCase> ColourCases() {
    const Bytes red{0, 0xF8, 0, 0xF8, 0, 0, 0, 0};
    const Bytes grey{77, 77, 0, 0, 0, 0, 0, 0};
    const Bytes fives(8, 0x55);
    const auto join = [](Bytes a, const Bytes& b) {
        a.insert(a.end(), b.begin(), b.end());
        return a;
    };
    Bytes bc7(16, 0);
    const auto put = [&](int bit, int count, unsigned value) {
        for (int i = 0; i < count; ++i, ++bit)
            bc7[bit / 8] |= static_cast<unsigned char>((value >> i & 1) << bit % 8);
    };
    put(5, 1, 1);
    put(8, 14, 0x3FFF);
    put(50, 8, 77);
    put(58, 8, 77);
    return {
        {kBC1, red, {255, 0, 0, 255}},
        {kBC1Srgb, red, {255, 0, 0, 255}},
        {kBC2, join(fives, red), {255, 0, 0, 85}},
        {kBC2Srgb, join(fives, red), {255, 0, 0, 85}},
        {kBC3, join(grey, red), {255, 0, 0, 77}},
        {kBC3Srgb, join(grey, red), {255, 0, 0, 77}},
        {kBC4, grey, {77}},
        {kBC5, join(grey, {9, 9, 0, 0, 0, 0, 0, 0}), {77, 9}},
        {kBC6H, Bytes{3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0}},
        {kBC6HSigned, Bytes{3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0}},
        {kBC7, bc7, {255, 0, 0, 77}},
        {kBC7Srgb, bc7, {255, 0, 0, 77}},
    };
}

INSTANTIATE_TEST_SUITE_P(DdsWriter, LibraryDecodes, testing::ValuesIn(ColourCases()),
                         [](const auto& test) { return std::to_string(test.param.format); });

}  // namespace
}  // namespace Kavra::Tests
