// Random blocks (make-blocks) decoded by us as ImageMagick and ffmpeg decode them, of the formats that these know: BC1 to
// BC3 and BC5 by the one, BC1 to BC5 by the other. Both cut where a decoder rounds between the ends of a block, so that a
// value of ours is theirs or one more. A software GPU (gpu-decode) knows all formats.

#include "interop/PeerFiles.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/FormatFacts.h>
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
    FormatFacts facts;
    EXPECT_TRUE(GetFormatFacts(decoded.format, facts));
    const std::size_t pitch = static_cast<std::size_t>(facts.bytesPerPixel) * static_cast<std::size_t>(shape.width);
    decoded.pixels.resize(pitch * static_cast<std::size_t>(shape.height));
    EXPECT_TRUE(reader.ReadLevel(0, 0, 0, blocks.data()));
    EXPECT_TRUE(
        DecompressPicture(shape.format, blocks.data(), shape.width, shape.height, decoded.pixels.data(), pitch));
    return decoded;
}

bool HasHalves(EFormat format) {
    FormatFacts facts;
    return GetFormatFacts(format, facts) && facts.element == ElementType::kHalf;
}

std::vector<float> Halves(const Bytes& pixels) {
    std::vector<float> values(pixels.size() / sizeof(Imath::half));
    for (std::size_t i = 0; i < values.size(); ++i) {
        Imath::half value;
        std::memcpy(&value, &pixels[i * sizeof value], sizeof value);
        values[i] = value;
    }
    return values;
}

/// Halves of -1 to 1 as steps of 8 bits around 128, which is how ffmpeg shows them.
std::vector<float> Steps(const Decoded& decoded) {
    if (!HasHalves(decoded.format)) return {decoded.pixels.begin(), decoded.pixels.end()};
    std::vector<float> steps = Halves(decoded.pixels);
    for (float& value : steps)
        value = 128 + 127 * value;
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

// --- A GPU -----------------------------------------------------------------------------------------------------------

struct GpuCase {
    const char* name;
    float tolerance;  ///< in steps of 8 bits; floats have none
};

/// Mesa's llvmpipe blends in 8 bits with shortcuts, for signed blocks in 7.
constexpr GpuCase kOnGpu[] = {{"bc1", 1}, {"bc2", 1},       {"bc3", 1},  {"bc4", 2},         {"bc4-snorm", 4},
                              {"bc5", 2}, {"bc5-snorm", 4}, {"bc6h", 0}, {"bc6h-signed", 0}, {"bc7", 0}};

/// Our values as a GPU samples them.
std::vector<float> Sampled(const Decoded& decoded) {
    std::vector<float> values;
    if (HasHalves(decoded.format)) return Halves(decoded.pixels);
    for (const unsigned char value : decoded.pixels)
        values.push_back(static_cast<float>(value) / 255);
    return values;
}

TEST(BlockInterop, AGpuSamplesWhatWeDecode) {
    for (const GpuCase& kind : kOnGpu) {
        const auto file = Peer("blocks/" + std::string(kind.name) + ".dds");
        const std::vector<float> ours = Sampled(Decode(file));
        const Bytes bytes = PeerPixels(file, ".gpu");
        std::vector<float> theirs(bytes.size() / sizeof(float));
        std::memcpy(theirs.data(), bytes.data(), bytes.size());
        ASSERT_EQ(theirs.size(), std::size_t{4} * 128 * 128) << kind.name;
        const std::size_t pixels = theirs.size() / 4, channels = ours.size() / pixels;
        ASSERT_GE(channels, 1U) << kind.name;
        float most = 0;
        for (std::size_t i = 0; i < pixels * channels; ++i)
            most = std::max(most, std::abs(ours[i] - theirs[i / channels * 4 + i % channels]));
        EXPECT_LE(most * 255, kind.tolerance + 1e-4F) << kind.name;
    }
}

}  // namespace
