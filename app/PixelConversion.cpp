#include "PixelConversion.h"

#include "FormatNames.h"
#include "Picture.h"

#include <kavra/devices/AFormatConvertor.h>

#include <Imath/half.h>

#include <array>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

namespace Kavra::App {
namespace {

using namespace Devices;
using Utilities::AFormatConvertor;

float Value(float value) {
    return value;
}

float Value(Imath::half value) {
    return value;
}

template <std::unsigned_integral T>
float Value(T value) {
    return static_cast<float>(value) / std::numeric_limits<T>::max();
}

/// Pixels of as many channels as memory has them.
template <class T, std::size_t kChannels>
void ReadChannels(const unsigned char* row, std::span<Pixel> pixels) {
    for (Pixel& pixel : pixels) {
        std::array<T, kChannels> stored;
        std::memcpy(&stored, row, sizeof(stored));
        row += sizeof(stored);
        for (std::size_t i = 0; i < kChannels; ++i)
            pixel[i] = Value(stored[i]);
        for (std::size_t i = kChannels; i < 3; ++i)
            pixel[i] = kChannels == 1 ? pixel[0] : 0.0F;
        if constexpr (kChannels < 4) pixel[3] = 1.0F;
    }
}

template <class T>
void ReadElements(const FormatFacts& format, const unsigned char* row, std::span<Pixel> pixels) {
    switch (format.channels) {
        case 1:
            return ReadChannels<T, 1>(row, pixels);
        case 2:
            return ReadChannels<T, 2>(row, pixels);
        case 3:
            return ReadChannels<T, 3>(row, pixels);
        default:
            ReadChannels<T, 4>(row, pixels);
    }
    for (Pixel& pixel : pixels) {
        if (format.blueFirst) std::swap(pixel[0], pixel[2]);
        if (!format.hasAlpha) pixel[3] = 1.0F;
    }
}

/// Puts into red what a one-channel format is to hold.
void GatherInRed(bool isAlpha, std::span<Pixel> pixels) {
    for (Pixel& pixel : pixels) {
        const bool isGrey = pixel[0] == pixel[1] && pixel[0] == pixel[2];
        if (isAlpha) {
            pixel[0] = pixel[3];
        } else if (!isGrey) {  // the sum would round
            pixel[0] = 0.299F * pixel[0] + 0.587F * pixel[1] + 0.114F * pixel[2];
        }
    }
}

}  // namespace

void ReadPixels(const FormatFacts& format, const unsigned char* row, std::span<Pixel> pixels) {
    switch (format.element) {
        case ElementType::kUInt8:
            return ReadElements<std::uint8_t>(format, row, pixels);
        case ElementType::kUInt16:
            return ReadElements<std::uint16_t>(format, row, pixels);
        case ElementType::kHalf:
            return ReadElements<Imath::half>(format, row, pixels);
        case ElementType::kFloat:
            return ReadElements<float>(format, row, pixels);
        case ElementType::kNone:
            return;
    }
}

void WritePixels(EFormat format, std::span<Pixel> pixels, unsigned char* out, std::size_t bytes) {
    const FormatFacts facts = Facts(format);
    if (facts.channels == 1) GatherInRed(facts.hasAlpha, pixels);
    AFormatConvertor::FloatsToFormat(pixels.data()->data(), pixels.size(), format, reinterpret_cast<char*>(out), bytes);
}

void LookAtAlphaAgain(LoadedImage& image) {
    ImageDescription& desc = image.desc;
    const FormatFacts facts = Facts(desc.format);
    if (!facts.hasAlpha || (!desc.hasTransparentPixels && !desc.hasTranslucentPixels)) return;
    desc.hasTransparentPixels = desc.hasTranslucentPixels = false;
    const auto* row = static_cast<const unsigned char*>(image.block->mData);
    std::vector<Pixel> pixels(static_cast<std::size_t>(desc.width));
    const std::size_t rows = LayerCount(desc) * static_cast<std::size_t>(desc.height);
    for (std::size_t y = 0; y < rows; ++y, row += desc.rowPitch) {
        ReadPixels(facts, row, pixels);
        for (const Pixel& pixel : pixels) {
            desc.hasTransparentPixels |= pixel[3] == 0;
            desc.hasTranslucentPixels |= pixel[3] != 0 && pixel[3] < 1;
        }
    }
}

std::optional<LoadedImage> ToFormat(const LoadedImage& image, EFormat format) {
    const ImageDescription& from = image.desc;
    const FormatFacts stored = Facts(from.format), wanted = Facts(format);
    if (stored.bytesPerPixel == 0 || wanted.bytesPerPixel == 0) return std::nullopt;

    LoadedImage result = NewPicture(from.width, from.height, format);
    result.desc.hasAlpha = from.hasAlpha;
    const auto* row = static_cast<const unsigned char*>(image.block->mData);
    auto* out = static_cast<unsigned char*>(result.block->mData);
    std::vector<Pixel> pixels(static_cast<std::size_t>(from.width));
    for (int y = 0; y < from.height; ++y, row += from.rowPitch, out += result.desc.rowPitch) {
        ReadPixels(stored, row, pixels);
        WritePixels(format, pixels, out, static_cast<std::size_t>(result.desc.rowPitch));
    }
    return result;
}

}  // namespace Kavra::App
