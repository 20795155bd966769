// Random blocks (make-blocks) decoded by us as ImageMagick and ffmpeg decode them, of the formats that these know: BC1 to
// BC3 and BC5 by the one, BC1 to BC5 by the other. Both cut where a decoder rounds between the ends of a block, so that a
// value of ours is theirs or one more.

#include "interop/PeerFiles.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/TextureCompressor.h>
#include <kavra/devices/TextureFile.h>

#include <Imath/half.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

using namespace Kavra::Tests;
using namespace Kavra::Devices;

using Bytes = std::vector<unsigned char>;

struct Decoded {
    EFormat format = kUnknown;
    Bytes pixels;
};

Decoded Decode(const std::filesystem::path& file) {
    TextureFileReader reader;
    if (!reader.Open(Wide(file))) {
        ADD_FAILURE() << file << ": " << reader.Reason();
        return {};
    }
    const TextureShape shape = reader.Shape();
    Bytes blocks(BlockBytes(shape.format, shape.width, shape.height));
    Decoded decoded{.format = DecodedFormat(shape.format), .pixels = {}};
    const std::size_t bytes = decoded.format == kL8 ? 1 : decoded.format == kR16F ? 2 : 4;
    const std::size_t pitch = bytes * static_cast<std::size_t>(shape.width);
    decoded.pixels.resize(pitch * static_cast<std::size_t>(shape.height));
    EXPECT_TRUE(reader.ReadLevel(0, 0, 0, blocks.data()));
    EXPECT_TRUE(
        DecompressPicture(shape.format, blocks.data(), shape.width, shape.height, decoded.pixels.data(), pitch));
    return decoded;
}

/// Halves of -1 to 1 as steps of 8 bits around 128, which is how ffmpeg shows them.
std::vector<float> Steps(const Decoded& decoded) {
    if (decoded.format != kR16F && decoded.format != kR16G16F) return {decoded.pixels.begin(), decoded.pixels.end()};
    std::vector<float> steps(decoded.pixels.size() / sizeof(Imath::half));
    for (std::size_t i = 0; i < steps.size(); ++i) {
        Imath::half value;
        std::memcpy(&value, &decoded.pixels[i * sizeof value], sizeof value);
        steps[i] = 128 + 127 * static_cast<float>(value);
    }
    return steps;
}

struct Range {
    float low = 1000, high = -1000;
};

/// The least and the most of ours less theirs, over the first `channels` of red, green, blue and alpha.
Range Differences(const std::filesystem::path& file, const std::string& peer, std::size_t channels) {
    const std::vector<float> ours = Steps(Decode(file));
    const Bytes theirs = PeerPixels(file, "." + peer);
    if (ours.empty() || ours.size() % (theirs.size() / 4) != 0) return {-1000, 1000};
    const std::size_t step = ours.size() / (theirs.size() / 4);
    Range range;
    for (std::size_t i = 0; i < theirs.size() / 4; ++i) {
        for (std::size_t c = 0; c < channels; ++c) {
            const float difference = ours[step * i + c] - static_cast<float>(theirs[4 * i + c]);
            range = {std::min(range.low, difference), std::max(range.high, difference)};
        }
    }
    return range;
}

struct Case {
    const char* name;
    std::size_t channels;
    bool hasMagick;
};

constexpr Case kUnsigned[] = {{"bc1", 4, true}, {"bc1-old", 4, true}, {"bc2", 4, true},  {"bc2-old", 4, true},
                              {"bc3", 4, true}, {"bc3-old", 4, true}, {"bc4", 1, false}, {"bc4-old", 1, false},
                              {"bc5", 2, true}, {"bc5-old", 2, true}};
constexpr Case kSigned[] = {
    {"bc4-snorm", 1, false}, {"bc4-snorm-old", 1, false}, {"bc5-snorm", 2, false}, {"bc5-snorm-old", 2, false}};

TEST(BlockInterop, PeersCutWhereWeRoundAndDifferInNothingElse) {
    for (const Case& kind : kUnsigned) {
        const auto file = Peer("blocks/" + std::string(kind.name) + ".dds");
        for (const std::string peer : {"ffmpeg", "magick"}) {
            if (peer == "magick" && !kind.hasMagick) continue;
            const Range range = Differences(file, peer, kind.channels);
            EXPECT_GE(range.low, 0) << peer << ": " << kind.name;
            EXPECT_LE(range.high, 1) << peer << ": " << kind.name;
        }
    }
}

// It has -128 one below -127, which are the same, and cuts.
TEST(BlockInterop, SignedValuesAreThoseOfFfmpegAroundTheMiddle) {
    for (const Case& kind : kSigned) {
        const auto file = Peer("blocks/" + std::string(kind.name) + ".dds");
        const Range range = Differences(file, "ffmpeg", kind.channels);
        EXPECT_GT(range.low, -0.1F) << kind.name;
        EXPECT_LT(range.high, 2) << kind.name;
    }
}

}  // namespace
