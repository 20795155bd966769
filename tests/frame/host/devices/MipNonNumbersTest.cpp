#include "frame/host/devices/MipTextures.h"

#include <kavra/devices/MipChain.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

namespace Kavra::Devices {
namespace {

using Tests::ByteVector;
using Tests::Chain;
using Tests::FactsOf;
using Tests::MipTexture;
using Tests::ShapeOf;

using Values = std::vector<double>;

TEST(MipNonNumbers, WhatIsNoNumberStaysWithinTheReachOfTheFilter) {
    constexpr int kSide = 16;
    const float nan = -std::numeric_limits<float>::quiet_NaN(), infinity = std::numeric_limits<float>::infinity();
    for (const EFormat format : {kR32F, kR16F, kR32G32F, kR32G32B32F, kR32G32B32A32F}) {
        const auto channels = static_cast<std::size_t>(FactsOf(format).channels);
        for (const float bad : {nan, infinity, -infinity}) {
            for (const auto& [filter, reached] :
                 {std::pair{kResampleBox, 1}, {kResampleTriangle, 1}, {kResampleLanczos3, 3}}) {
                Values pixels(kSide * kSide * channels, 0.5);
                pixels[0] = static_cast<double>(bad);
                MipOptions options;
                options.filter = filter;
                const MipTexture texture = Chain(ShapeOf(format, kSide, kSide), pixels, options);
                const Values level = texture.Values(1);
                for (std::size_t i = 0; i < level.size(); ++i) {
                    const std::size_t pixel = i / channels;
                    const bool isReached = i % channels == 0 && pixel % 8 < static_cast<std::size_t>(reached) &&
                                           pixel / 8 < static_cast<std::size_t>(reached);
                    ASSERT_EQ(std::isfinite(level[i]), !isReached) << FactsOf(format).name << " " << bad << " " << i;
                }
            }
        }
    }
}

TEST(MipNonNumbers, WhatIsNoNumberIsAlwaysTheSameOne) {
    const float nan = -std::numeric_limits<float>::quiet_NaN();
    const MipTexture texture = Chain(ShapeOf(kR32F, 2, 1), Values{static_cast<double>(nan), 1});
    EXPECT_EQ(texture.Level(1), (ByteVector{0, 0, 0xC0, 0x7F}));
}

}  // namespace
}  // namespace Kavra::Devices
