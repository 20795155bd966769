#include "Display.h"

#include "Exposure.h"
#include "FormatNames.h"
#include "PixelConversion.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>

namespace Kavra::App {
namespace {

using namespace Devices;

using Pixel = std::array<float, 4>;
static_assert(sizeof(Pixel) == 16);

bool IsLinear(EFormat format) {
    const ElementType element = Facts(format).element;
    return element == ElementType::kHalf || element == ElementType::kFloat;
}

std::span<Pixel> Pixels(LoadedImage& image) {
    return {static_cast<Pixel*>(image.block->mData), image.desc.dataSize / sizeof(Pixel)};
}

void Clean(Pixel& pixel, bool associated) {
    for (float& value : pixel)
        value = value > 0 ? std::min(value, std::numeric_limits<float>::max()) : 0.0F;  // NaN is not above 0
    if (!associated || pixel[3] == 0) return;
    for (int i = 0; i < 3; ++i)
        pixel[i] = std::min(pixel[i] / pixel[3], std::numeric_limits<float>::max());
}

/// ITU-R BT.709, whose primaries sRGB has.
double Luminance(const Pixel& pixel) {
    return 0.2126 * pixel[0] + 0.7152 * pixel[1] + 0.0722 * pixel[2];
}

/// Brings the luminance of a picture into 0..1.
void Compress(std::span<Pixel> pixels) {
    Exposure exposure;
    for (const Pixel& pixel : pixels)
        exposure.Look(Luminance(pixel));
    for (Pixel& pixel : pixels) {
        const double scale = exposure.Scale(Luminance(pixel));
        for (int i = 0; i < 3; ++i)
            pixel[i] = static_cast<float>(scale * pixel[i]);
    }
}

}  // namespace

LoadedImage ToDisplay(const LoadedImage& image, bool associated) {
    if (!IsLinear(image.desc.format)) return *ToFormat(image, kR8G8B8A8);
    LoadedImage light = *ToFormat(image, kR32G32B32A32F);
    const std::span<Pixel> pixels = Pixels(light);
    for (Pixel& pixel : pixels)
        Clean(pixel, associated);
    const auto isBright = [](const Pixel& pixel) { return std::max({pixel[0], pixel[1], pixel[2]}) > 1; };
    if (std::ranges::any_of(pixels, isBright)) Compress(pixels);
    for (Pixel& pixel : pixels)
        std::ranges::transform(pixel.begin(), pixel.begin() + 3, pixel.begin(), EncodeForScreen);
    return *ToFormat(light, kR8G8B8A8);
}

}  // namespace Kavra::App
