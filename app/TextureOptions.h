/// What the command `texture` is asked for.
#pragma once

#include "ColourChange.h"
#include "Resampling.h"
#include "SizeOptions.h"

#include <kavra/devices/MipChain.h>
#include <kavra/devices/TextureCompressor.h>

#include <CLI/App.hpp>

#include <optional>
#include <string>

namespace Kavra::App {

enum class TextureAlpha {
    kAsItIs,         ///< straight, or what a texture file says
    kStraight,       ///< colours apart from alpha
    kPremultiplied,  ///< colours multiplied by it
    kCoverage,       ///< a cut-out: pixels are there or not
    kNone,           ///< opaque
};

enum class PowerOfTwo { kAnySize, kNearest, kUp, kDown };

/// How many levels come out.
struct LevelWish {
    static constexpr int kAll = 0;
    std::optional<int> count;  ///< `kAll`, or so many; nothing: those that there are, of a picture all
};

struct TextureOptions {
    Devices::EFormat format = Devices::kUnknown;  ///< unknown: chosen by what the input holds
    Devices::ECompressionEffort effort = Devices::kCompressionGood;
    bool isPerceptual = false;
    LevelWish levels;
    Devices::EResampleFilter mipFilter = Devices::kResampleBox;
    bool wraps = false;
    std::optional<bool> isSrgb;  ///< by the word of the user
    bool isNormalMap = false, invertsGreen = false;
    TextureAlpha alpha = TextureAlpha::kAsItIs;
    float coverage = 0.5F;  ///< the alpha from which on pixels of cut-outs are there
    vec2<int> size;         ///< of level 0; 0: its own
    SizeWish wish;
    PowerOfTwo power = PowerOfTwo::kAnySize;
    bool flips = false;
    double stops = 0;
    ToneMap tone = ToneMap::kNone;
    int zstdLevel = 0;
    bool isPlain = false;  ///< of another command, which has no options for textures

    void AddTo(CLI::App& command);

    /// Whether the pixels of a texture file stay what they are, so that blocks can be copied.
    bool KeepsPixels() const;
    bool IsCutOut() const { return alpha == TextureAlpha::kCoverage; }
    bool ChangesSize() const { return size.x > 0 || wish.IsGiven() || power != PowerOfTwo::kAnySize; }

    /// How levels of this texture are made, and blocks.
    Devices::MipOptions MipsOf(const Devices::TextureShape& shape) const;
    Devices::CompressionOptions CompressionOf(const Devices::TextureShape& shape) const;
};

}  // namespace Kavra::App
