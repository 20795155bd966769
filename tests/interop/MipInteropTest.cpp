// Levels of textures beside what ImageMagick and libvips make of the same picture.

#include "interop/PeerFiles.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/MipChain.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <format>
#include <string_view>
#include <vector>

namespace {

using namespace Kavra::Tests;
using namespace Kavra::Devices;

using Bytes = std::vector<unsigned char>;

constexpr int kWidth = 320, kHeight = 192, kLevels = 4;

/// The levels of a photograph with three channels, as those of four.
std::vector<Bytes> LevelsOf(const Bytes& rgb, const MipOptions& options) {
    Bytes pixels;
    for (std::size_t i = 0; i < rgb.size(); i += 3)
        pixels.insert(pixels.end(), {rgb[i], rgb[i + 1], rgb[i + 2], 255});
    TextureShape shape;
    shape.format = kR8G8B8A8;
    shape.width = kWidth;
    shape.height = kHeight;
    shape.levels = kLevels;
    Bytes texture(TextureBytes(shape));
    EXPECT_TRUE(BuildMipChain(shape, pixels.data(), texture.data(), options));
    std::vector<Bytes> levels;
    auto at = texture.begin();
    for (int level = 0; level < kLevels; ++level) {
        const auto end = at + std::ptrdiff_t{4} * (kWidth >> level) * (kHeight >> level);
        levels.push_back(Channels(Bytes(at, end), 3));
        at = end;
    }
    return levels;
}

/// The largest difference of the pixels that are `border` or more from the edges: beyond these the programs leave out what
/// is not there.
int LargestDifference(const Bytes& a, const Bytes& b, int level, int border) {
    const int width = kWidth >> level, height = kHeight >> level;
    EXPECT_EQ(a.size(), b.size());
    int largest = 0;
    for (int y = border; y < height - border; ++y) {
        const std::size_t row = static_cast<std::size_t>(y) * static_cast<std::size_t>(width) * 3;
        for (std::size_t i = row + border * 3U; i < row + (width - border) * 3U; ++i)
            largest = std::max(largest, std::abs(a[i] - b[i]));
    }
    return largest;
}

/// A filter, how far it reaches, and by how much the two may differ: by one for rounding, by two where ImageMagick cuts
/// overshoot off between rows and columns, and of tents, which the means above a level soften most.
struct PeerFilter {
    EResampleFilter filter;
    std::string_view name;
    int border, allowed;
};
constexpr std::array kPeers = {PeerFilter{kResampleBox, "box", 0, 1}, PeerFilter{kResampleTriangle, "triangle", 1, 2},
                               PeerFilter{kResampleMitchell, "mitchell", 2, 1},
                               PeerFilter{kResampleLanczos3, "lanczos", 3, 2}};

TEST(MipInterop, LevelsAreThoseOfImageMagick) {
    const Bytes photo = ReadAll(Peer("mips/photo.rgb"));
    for (const bool isLight : {false, true}) {
        for (const auto& [filter, name, border, allowed] : kPeers) {
            MipOptions options;
            options.filter = filter;
            options.linearLight = isLight;
            const std::vector<Bytes> levels = LevelsOf(photo, options);
            for (int level = 1; level < kLevels; ++level) {
                const std::string file = std::format("mips/{}-{}-{}.rgb", isLight ? "light" : "data", name, level);
                EXPECT_LE(
                    LargestDifference(levels[static_cast<std::size_t>(level)], ReadAll(Peer(file)), level, border),
                    allowed)
                    << file;
            }
        }
    }
}

TEST(MipInterop, LevelsOfABoxAreThoseOfLibvips) {
    const std::vector<Bytes> levels = LevelsOf(ReadAll(Peer("mips/photo.rgb")), {});
    for (int level = 1; level < kLevels; ++level) {
        const Bytes peer = ReadAll(Peer(std::format("mips/vips-box-{}.rgb", level)));
        EXPECT_LE(LargestDifference(levels[static_cast<std::size_t>(level)], peer, level, 0), 1) << level;
    }
}

}  // namespace
