#include "frame/host/devices/MipTextures.h"

#include <Imath/half.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numbers>
#include <random>

namespace Kavra::Tests {

using namespace Devices;

// --- Pixels ----------------------------------------------------------------------------------------------------------

std::vector<EFormat> PixelFormats() {
    std::vector<EFormat> formats;
    for (EFormat format = NextFormat(kUnknown); format != kUnknown; format = NextFormat(format))
        if (FactsOf(format).element != ElementType::kNone) formats.push_back(format);
    return formats;
}

TextureShape ShapeOf(EFormat format, int width, int height, int depth, ETextureType type) {
    TextureShape shape;
    shape.format = format;
    shape.width = width;
    shape.height = height;
    shape.depth = depth;
    shape.type = depth > 1 ? kTextureVolume : type;
    shape.levels = FullTextureLevels(width, height, depth);
    return shape;
}

namespace {

template <class T>
void Append(ByteVector& bytes, T value) {
    std::array<unsigned char, sizeof(T)> raw;
    std::memcpy(raw.data(), &value, sizeof(T));
    bytes.insert(bytes.end(), raw.begin(), raw.end());
}

template <class T>
T At(const ByteVector& bytes, std::size_t i) {
    T value;
    std::memcpy(&value, bytes.data() + i * sizeof(T), sizeof(T));
    return value;
}

double FullOf(ElementType element) {
    return element == ElementType::kUInt8 ? 255 : element == ElementType::kUInt16 ? 65535 : 1;
}

}  // namespace

ByteVector Packed(EFormat format, const std::vector<double>& values) {
    ByteVector bytes;
    for (const double value : values) {
        switch (FactsOf(format).element) {
            case ElementType::kUInt8:
                Append(bytes, static_cast<std::uint8_t>(value));
                break;
            case ElementType::kUInt16:
                Append(bytes, static_cast<std::uint16_t>(value));
                break;
            case ElementType::kHalf:
                Append(bytes, Imath::half(static_cast<float>(value)).bits());
                break;
            default:
                Append(bytes, static_cast<float>(value));
        }
    }
    return bytes;
}

std::vector<double> Unpacked(EFormat format, const ByteVector& bytes) {
    std::vector<double> values;
    const FormatFacts facts = FactsOf(format);
    const std::size_t count = bytes.size() / static_cast<std::size_t>(facts.bytesPerPixel / facts.channels);
    for (std::size_t i = 0; i < count; ++i) {
        switch (facts.element) {
            case ElementType::kUInt8:
                values.push_back(bytes[i]);
                break;
            case ElementType::kUInt16:
                values.push_back(At<std::uint16_t>(bytes, i));
                break;
            case ElementType::kHalf: {
                Imath::half half;
                half.setBits(At<std::uint16_t>(bytes, i));
                values.push_back(static_cast<double>(static_cast<float>(half)));
                break;
            }
            default:
                values.push_back(static_cast<double>(At<float>(bytes, i)));
        }
    }
    return values;
}

std::vector<double> Noise(const TextureShape& shape) {
    const FormatFacts facts = FactsOf(shape.format);
    const bool isInteger = facts.element == ElementType::kUInt8 || facts.element == ElementType::kUInt16;
    const int count =
        shape.width * shape.height * shape.depth * facts.channels * FaceCount(shape.type) * shape.elements;
    std::mt19937 random(20260411);
    std::vector<double> values;
    for (int i = 0; i < count; ++i) {
        const double value = static_cast<double>(random() >> 8) / (1 << 24);
        values.push_back(isInteger ? std::floor(value * (FullOf(facts.element) + 1)) : value * 4 - 1);
    }
    return Unpacked(shape.format, Packed(shape.format, values));
}

// --- Chains ----------------------------------------------------------------------------------------------------------

namespace {

std::size_t LevelBytes(const TextureShape& shape, int level) {
    const auto side = [level](int length) { return static_cast<std::size_t>(std::max(length >> level, 1)); };
    return side(shape.width) * side(shape.height) * side(shape.depth) *
           static_cast<std::size_t>(FactsOf(shape.format).bytesPerPixel);
}

}  // namespace

ByteVector MipTexture::Level(int level, int face, int element) const {
    std::size_t faceBytes = 0, offset = 0;
    for (int i = 0; i < shape.levels; ++i) {
        if (i == level) offset = faceBytes;
        faceBytes += LevelBytes(shape, i);
    }
    offset += faceBytes * static_cast<std::size_t>(element * FaceCount(shape.type) + face);
    const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
    return {first, first + static_cast<std::ptrdiff_t>(LevelBytes(shape, level))};
}

MipTexture Chain(const TextureShape& shape, const ByteVector& level0, const MipOptions& options) {
    MipTexture texture{shape, ByteVector(TextureBytes(shape))};
    EXPECT_TRUE(BuildMipChain(shape, level0.data(), texture.bytes.data(), options));
    return texture;
}

// --- The twin --------------------------------------------------------------------------------------------------------

namespace {

/// The weight of a pixel whose middle lies `x` pixels of the result from the centre, by each filter's published formula;
/// `half` is half of a pixel of the source in pixels of the result.
double WeightOf(EResampleFilter filter, double x, double half) {
    x = std::abs(x);
    const auto sinc = [](double v) { return v == 0 ? 1 : std::sin(std::numbers::pi * v) / (std::numbers::pi * v); };
    switch (filter) {
        case kResampleTriangle:
            return std::max(0.0, 1 - x);
        case kResampleMitchell:
            if (x >= 2) return 0;
            return x >= 1 ? (-7.0 / 3 * x * x * x + 12 * x * x - 20 * x + 32.0 / 3) / 6
                          : (7 * x * x * x - 12 * x * x + 16.0 / 3) / 6;
        case kResampleCatmullRom:
            if (x >= 2) return 0;
            return x >= 1 ? -0.5 * x * x * x + 2.5 * x * x - 4 * x + 2 : 1.5 * x * x * x - 2.5 * x * x + 1;
        case kResampleLanczos3:
            return x >= 3 ? 0 : sinc(x) * sinc(x / 3);
        default:  // what of the pixel lies within half a pixel of the result from its centre
            return std::max(0.0, std::min(x + half, 0.5) - std::max(x - half, -0.5));
    }
}

struct Side {
    int from, to;

    struct Tap {
        int at;
        double weight;
    };
    std::vector<Tap> Taps(int pixel, const MipOptions& options) const {
        if (from == to) return {{pixel, 1}};
        const double ratio = static_cast<double>(to) / from, centre = (pixel + 0.5) / ratio;
        constexpr int kReach = 24;  // three pixels of the result, each made of less than eight
        std::vector<Tap> taps;
        double total = 0;
        for (int i = static_cast<int>(centre) - kReach; i <= static_cast<int>(centre) + kReach; ++i) {
            const double weight = WeightOf(options.filter, (i + 0.5 - centre) * ratio, ratio / 2);
            const int at = options.edges == kMipWrap ? ((i % from) + from) % from : std::clamp(i, 0, from - 1);
            taps.push_back({at, weight});
            total += weight;
        }
        for (Tap& tap : taps)
            tap.weight /= total;
        return taps;
    }
};

double Light(double v) {
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}
double Encoded(double v) {
    v = std::clamp(v, 0.0, 1.0);
    return v <= 0.0031308 ? v * 12.92 : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
}

struct Grid {
    int width, height, depth;
    std::vector<double> values;
};

/// So often halved, at once.
Grid Halved(const Grid& from, int times, int channels, const MipOptions& options) {
    const auto side = [times](int length) { return std::max(length >> times, 1); };
    Grid to{side(from.width), side(from.height), side(from.depth), {}};
    for (int z = 0; z < to.depth; ++z) {
        for (int y = 0; y < to.height; ++y) {
            for (int x = 0; x < to.width; ++x) {
                std::vector<double> sums(static_cast<std::size_t>(channels));
                for (const auto& slice : Side{from.depth, to.depth}.Taps(z, options)) {
                    for (const auto& row : Side{from.height, to.height}.Taps(y, options)) {
                        for (const auto& column : Side{from.width, to.width}.Taps(x, options)) {
                            const int pixel = (slice.at * from.height + row.at) * from.width + column.at;
                            const std::size_t at = static_cast<std::size_t>(pixel) * sums.size();
                            for (std::size_t c = 0; c < sums.size(); ++c)
                                sums[c] += slice.weight * row.weight * column.weight * from.values[at + c];
                        }
                    }
                }
                to.values.insert(to.values.end(), sums.begin(), sums.end());
            }
        }
    }
    return to;
}

}  // namespace

std::vector<std::vector<double>> TwinChain(const TextureShape& shape, const std::vector<double>& level0,
                                           const MipOptions& options) {
    const FormatFacts facts = FactsOf(shape.format);
    const double full = FullOf(facts.element);
    const auto channels = static_cast<std::size_t>(facts.channels);
    const bool isLight = options.linearLight && full > 1,
               isWeighted = options.alphaWeighted && facts.hasAlpha && channels > 1;
    const auto isAlpha = [&](std::size_t i) { return facts.hasAlpha && i % channels == channels - 1; };
    // Calls `change(colour, alpha)` for all colours.
    const auto forColours = [&](std::vector<double>& values, const auto& change) {
        for (std::size_t i = 0; i < values.size(); ++i)
            if (!isAlpha(i)) change(values[i], values[i / channels * channels + channels - 1]);
    };
    Grid grid{shape.width, shape.height, shape.depth, level0};
    if (isLight) forColours(grid.values, [&](double& c, double) { c = Light(c / full) * full; });
    if (isWeighted) forColours(grid.values, [](double& c, double alpha) { c *= alpha; });
    // Wider filters look at the means two levels above; those of a box lead to one another.
    MipOptions box = options;
    box.filter = kResampleBox;
    std::vector<Grid> means = {grid};
    std::vector<std::vector<double>> levels;
    for (int level = 0; level < shape.levels; ++level) {
        if (level > 0) means.push_back(Halved(means.back(), 1, facts.channels, box));
        const int above = options.filter == kResampleBox ? 0 : std::min(level, 2);
        const Grid& from = means[static_cast<std::size_t>(level - above)];
        levels.push_back(above == 0 ? from.values : Halved(from, above, facts.channels, options).values);
        if (isWeighted) forColours(levels.back(), [](double& c, double alpha) { c /= alpha; });
        if (isLight) forColours(levels.back(), [&](double& c, double) { c = Encoded(c / full) * full; });
    }
    return levels;
}

}  // namespace Kavra::Tests
