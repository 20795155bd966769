#include "PixelConversion.h"

#include "FormatNames.h"
#include "Picture.h"

#include <kavra/devices/AFormatConvertor.h>

#include <Imath/half.h>

#include <algorithm>
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

enum class Element { kByte, kWord, kHalf, kFloat };

/// Where in a pixel red, green, blue and alpha are; -1 where they are not.
struct Layout {
    EFormat format;
    Element element;
    std::array<int, kColours> place;
};

constexpr std::array kGrey = {0, 0, 0, -1};
constexpr std::array kTwo = {0, 1, -1, -1};
constexpr std::array kRgb = {0, 1, 2, -1};
constexpr std::array kRgba = {0, 1, 2, 3};

constexpr std::array kLayouts = {
    Layout{kA8, Element::kByte, kGrey},
    Layout{kR8, Element::kByte, kGrey},
    Layout{kL8, Element::kByte, kGrey},
    Layout{kR16F, Element::kHalf, kGrey},
    Layout{kR16, Element::kWord, kGrey},
    Layout{kL16, Element::kWord, kGrey},
    Layout{kR32F, Element::kFloat, kGrey},
    Layout{kR16G16F, Element::kHalf, kTwo},
    Layout{kR16G16, Element::kWord, kTwo},
    Layout{kR8G8B8A8, Element::kByte, kRgba},
    Layout{kR8G8B8A8Alt, Element::kByte, kRgba},
    Layout{kB8G8R8A8, Element::kByte, {2, 1, 0, 3}},
    Layout{kB8G8R8X8, Element::kByte, {2, 1, 0, -1}},
    Layout{kR8G8B8X8, Element::kByte, kRgb},
    Layout{kR32G32F, Element::kFloat, kTwo},
    Layout{kR16G16B16A16F, Element::kHalf, kRgba},
    Layout{kR16G16B16A16, Element::kWord, kRgba},
    Layout{kR32G32B32F, Element::kFloat, kRgb},
    Layout{kR32G32B32A32F, Element::kFloat, kRgba},
};

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
void UnpackRow(const Layout& layout, int pixelBytes, const unsigned char* row, std::vector<float>& colours) {
    for (std::size_t i = 0; i < colours.size(); ++i) {
        const int place = layout.place[i % kColours];
        if (place < 0) {
            colours[i] = i % kColours == 3 ? 1.0F : 0.0F;
            continue;
        }
        T element;
        std::memcpy(&element, row + i / kColours * static_cast<std::size_t>(pixelBytes) + place * sizeof(T), sizeof(T));
        colours[i] = Value(element);
    }
}

void Unpack(const Layout& layout, const unsigned char* row, std::vector<float>& colours) {
    const int pixelBytes = AFormatConvertor::BytesPerPixel(layout.format);
    switch (layout.element) {
        case Element::kByte:
            return UnpackRow<std::uint8_t>(layout, pixelBytes, row, colours);
        case Element::kWord:
            return UnpackRow<std::uint16_t>(layout, pixelBytes, row, colours);
        case Element::kHalf:
            return UnpackRow<Imath::half>(layout, pixelBytes, row, colours);
        case Element::kFloat:
            return UnpackRow<float>(layout, pixelBytes, row, colours);
    }
}

/// Puts into red what a one-channel format is to hold.
void GatherInRed(EFormat format, std::vector<float>& colours) {
    for (std::size_t i = 0; i < colours.size(); i += kColours) {
        const bool isGrey = colours[i] == colours[i + 1] && colours[i] == colours[i + 2];
        if (format == kA8) {
            colours[i] = colours[i + 3];
        } else if (!isGrey) {  // the sum would round
            colours[i] = 0.299F * colours[i] + 0.587F * colours[i + 1] + 0.114F * colours[i + 2];
        }
    }
}

}  // namespace

std::optional<LoadedImage> ToFormat(const LoadedImage& image, EFormat format) {
    const ImageDescription& from = image.desc;
    const auto layout = std::ranges::find(kLayouts, from.format, &Layout::format);
    if (layout == kLayouts.end() || AFormatConvertor::BytesPerPixel(format) == 0) return std::nullopt;

    LoadedImage result = NewPicture(from.width, from.height, format);
    result.desc.hasAlpha = from.hasAlpha;
    const auto* row = static_cast<const unsigned char*>(image.block->mData);
    auto* out = static_cast<char*>(result.block->mData);
    std::vector<float> colours(static_cast<std::size_t>(from.width) * kColours);
    for (int y = 0; y < from.height; ++y, row += from.rowPitch, out += result.desc.rowPitch) {
        Unpack(*layout, row, colours);
        if (Channels(format) == 1) GatherInRed(format, colours);
        AFormatConvertor::FloatsToFormat(colours.data(), static_cast<std::size_t>(from.width), format, out,
                                         static_cast<std::size_t>(result.desc.rowPitch));
    }
    return result;
}

}  // namespace Kavra::App
