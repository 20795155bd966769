/// Pictures that encoders of blocks are tried on, and what they made of them.
#pragma once

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/TextureCompressor.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Kavra::Tests {

using Bytes = std::vector<unsigned char>;

inline constexpr Devices::EFormat kBlockFormats[] = {
    Devices::kBC1,     Devices::kBC1Srgb,    Devices::kBC2,      Devices::kBC2Srgb, Devices::kBC3,
    Devices::kBC3Srgb, Devices::kBC4,        Devices::kBC4Snorm, Devices::kBC5,     Devices::kBC5Snorm,
    Devices::kBC6H,    Devices::kBC6HSigned, Devices::kBC7,      Devices::kBC7Srgb,
};

/// Packed rows of red, green, blue and alpha of 8 bits.
struct Picture {
    int width = 0;
    int height = 0;
    Bytes pixels;

    Picture(int columns, int rows) : width(columns), height(rows), pixels(Count() * 4) {}
    std::size_t Count() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
    std::size_t Pitch() const { return static_cast<std::size_t>(width) * 4; }
    unsigned char& At(int x, int y, std::size_t channel) {
        return pixels[(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) *
                          4 +
                      channel];
    }
};

/// Calls `value(x, y, channel)` for what is at each place: 0 to 255.
template <class ValueAt>
Picture Made(int width, int height, const ValueAt& value) {
    Picture picture(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (std::size_t channel = 0; channel < 4; ++channel)
                picture.At(x, y, channel) = static_cast<unsigned char>(value(x, y, channel));
    return picture;
}

inline constexpr Devices::ECompressionEffort kEfforts[] = {Devices::kCompressionFast, Devices::kCompressionGood,
                                                           Devices::kCompressionBest};

inline Devices::CompressionOptions With(Devices::ECompressionEffort effort) {
    Devices::CompressionOptions options;
    options.effort = effort;
    return options;
}

/// A picture of one colour.
inline Picture Flat(std::array<unsigned char, 4> colour, int width = 4, int height = 4) {
    return Made(width, height, [&](int, int, std::size_t channel) { return colour[channel]; });
}

/// Colours that change slowly, each channel in a direction of its own, and alpha from side to side.
inline Picture Smooth(int width, int height) {
    return Made(width, height, [](int x, int y, std::size_t channel) {
        const double angle = 0.1 * x + 0.07 * y * (static_cast<double>(channel) - 1);
        return 127.5 + 120 * std::sin(angle + static_cast<double>(channel));
    });
}

/// Numbers that have nothing to do with each other, the same every time.
inline Picture Noise(int width, int height) {
    std::uint32_t state = 1;
    return Made(width, height, [&](int /*x*/, int /*y*/, std::size_t /*channel*/) {
        state = state * 1664525 + 1013904223;
        return state >> 24;
    });
}

inline Bytes Compressed(const Picture& picture, Devices::EFormat to, const Devices::CompressionOptions& options = {}) {
    Bytes blocks(Devices::BlockBytes(to, picture.width, picture.height));
    if (!Devices::CompressPicture(Devices::kR8G8B8A8, picture.pixels.data(), picture.Pitch(), picture.width,
                                  picture.height, to, blocks.data(), options))
        return {};
    return blocks;
}

/// Packed rows of `DecodedFormat(from)`.
inline Bytes Decompressed(const Bytes& blocks, Devices::EFormat from, int width, int height) {
    const int pixelBytes = Utilities::AFormatConvertor::BytesPerPixel(Devices::DecodedFormat(from));
    const std::size_t pitch = static_cast<std::size_t>(width) * static_cast<std::size_t>(pixelBytes);
    Bytes pixels(pitch * static_cast<std::size_t>(height));
    if (!Devices::DecompressPicture(from, blocks.data(), width, height, pixels.data(), pitch)) return {};
    return pixels;
}

/// What a format that decodes to red, green, blue and alpha of 8 bits makes of a picture.
inline Picture Shown(const Picture& picture, Devices::EFormat format, const Devices::CompressionOptions& options = {}) {
    Picture shown(picture.width, picture.height);
    shown.pixels = Decompressed(Compressed(picture, format, options), format, picture.width, picture.height);
    return shown;
}

/// The sum of squared differences of some channels.
inline double ErrorOf(const Picture& a, const Picture& b, std::size_t first = 0, std::size_t count = 3) {
    double sum = 0;
    for (std::size_t i = 0; i < a.Count(); ++i)
        for (std::size_t channel = first; channel < first + count; ++channel) {
            const double difference = double{0} + a.pixels[4 * i + channel] - b.pixels[4 * i + channel];
            sum += difference * difference;
        }
    return sum;
}

/// Decibels below 255, of some channels.
inline double Psnr(const Picture& a, const Picture& b, std::size_t first = 0, std::size_t count = 3) {
    const double mean = ErrorOf(a, b, first, count) / static_cast<double>(a.Count() * count);
    return 10 * std::log10(255.0 * 255.0 / mean);
}

}  // namespace Kavra::Tests
