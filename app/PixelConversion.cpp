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
#include <vector>

namespace Kavra::App {
namespace {

using namespace Devices;
using Utilities::AFormatConvertor;

constexpr int kColours = 4;  // red, green, blue, alpha

/// Where in a pixel red, green, blue and alpha are; -1 where they are not.
using Places = std::array<int, kColours>;

Places PlacesOf(const FormatFacts& facts) {
    switch (facts.channels) {
        case 1:
            return {0, 0, 0, -1};
        case 2:
            return {0, 1, -1, -1};
        default: {
            const int alpha = facts.hasAlpha ? 3 : -1;
            return facts.blueFirst ? Places{2, 1, 0, alpha} : Places{0, 1, 2, alpha};
        }
    }
}

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

template <class T>
void UnpackRow(const FormatFacts& facts, const unsigned char* row, std::vector<float>& colours) {
    const Places places = PlacesOf(facts);
    for (std::size_t i = 0; i < colours.size(); ++i) {
        const int place = places[i % kColours];
        if (place < 0) {
            colours[i] = i % kColours == 3 ? 1.0F : 0.0F;
            continue;
        }
        T element;
        std::memcpy(&element, row + i / kColours * static_cast<std::size_t>(facts.bytesPerPixel) + place * sizeof(T),
                    sizeof(T));
        colours[i] = Value(element);
    }
}

void Unpack(const FormatFacts& facts, const unsigned char* row, std::vector<float>& colours) {
    switch (facts.element) {
        case ElementType::kUInt8:
            return UnpackRow<std::uint8_t>(facts, row, colours);
        case ElementType::kUInt16:
            return UnpackRow<std::uint16_t>(facts, row, colours);
        case ElementType::kHalf:
            return UnpackRow<Imath::half>(facts, row, colours);
        case ElementType::kFloat:
            return UnpackRow<float>(facts, row, colours);
        case ElementType::kNone:
            return;
    }
}

/// Puts into red what a one-channel format is to hold.
void GatherInRed(const FormatFacts& format, std::vector<float>& colours) {
    for (std::size_t i = 0; i < colours.size(); i += kColours) {
        const bool isGrey = colours[i] == colours[i + 1] && colours[i] == colours[i + 2];
        if (format.hasAlpha) {
            colours[i] = colours[i + 3];
        } else if (!isGrey) {  // the sum would round
            colours[i] = 0.299F * colours[i] + 0.587F * colours[i + 1] + 0.114F * colours[i + 2];
        }
    }
}

}  // namespace

void LookAtAlphaAgain(LoadedImage& image) {
    ImageDescription& desc = image.desc;
    const FormatFacts facts = Facts(desc.format);
    if (!facts.hasAlpha || (!desc.hasTransparentPixels && !desc.hasTranslucentPixels)) return;
    desc.hasTransparentPixels = desc.hasTranslucentPixels = false;
    const auto* row = static_cast<const unsigned char*>(image.block->mData);
    std::vector<float> colours(static_cast<std::size_t>(desc.width) * kColours);
    const std::size_t rows = LayerCount(desc) * static_cast<std::size_t>(desc.height);
    for (std::size_t y = 0; y < rows; ++y, row += desc.rowPitch) {
        Unpack(facts, row, colours);
        for (std::size_t i = kColours - 1; i < colours.size(); i += kColours) {
            desc.hasTransparentPixels |= colours[i] == 0;
            desc.hasTranslucentPixels |= colours[i] != 0 && colours[i] < 1;
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
    auto* out = static_cast<char*>(result.block->mData);
    std::vector<float> colours(static_cast<std::size_t>(from.width) * kColours);
    for (int y = 0; y < from.height; ++y, row += from.rowPitch, out += result.desc.rowPitch) {
        Unpack(stored, row, colours);
        if (wanted.channels == 1) GatherInRed(wanted, colours);
        AFormatConvertor::FloatsToFormat(colours.data(), static_cast<std::size_t>(from.width), format, out,
                                         static_cast<std::size_t>(result.desc.rowPitch));
    }
    return result;
}

}  // namespace Kavra::App
