#include "EnvironmentFile.h"

#include "Description.h"
#include "FormatNames.h"
#include "PixelConversion.h"

#include <format>

namespace Kavra::App {
namespace {

using namespace Devices;

bool IsFloatingPoint(const FormatFacts& facts) {
    return facts.element == ElementType::kHalf || facts.element == ElementType::kFloat;
}

/// Four channels of bytes, halves or floats.
bool IsAnalysed(EFormat format) {
    const FormatFacts facts = Facts(format);
    return facts.channels == 4 && (facts.element == ElementType::kUInt8 || IsFloatingPoint(facts));
}

/// The format of the file itself. In silence: what is wrong with the file is said when it is loaded.
EFormat FileFormat(IImageHandler& handler, const std::string& file) {
    Report silent(file);
    const Owned<ImageDesc> desc = Describe(handler, silent);
    return desc == nullptr ? kUnknown : desc->format;
}

/// The value of a file with one channel, which comes in red, goes to green and blue as well.
void SpreadRed(LoadedImage& image) {
    auto* const pixels = static_cast<float*>(image.block->mData);
    for (std::size_t i = 0; i + 3 < image.desc.dataSize / sizeof(float); i += 4)
        pixels[i + 1] = pixels[i + 2] = pixels[i];
}

/// Loads as four floats a pixel, where that can be had.
LoadedImage LoadAsFloats(IImageHandler& handler, Report& report, EFormat fileFormat, LoadOptions options) {
    options.format = kR32G32B32A32F;
    LoadedImage image = Load(handler, report, options);
    if (image.block == nullptr || image.desc.textureType != kTexture2D) return image;
    if (image.desc.format == kR32G32B32F) image = *ToFormat(image, kR32G32B32A32F);  // of the host's OpenEXR reader
    if (image.desc.format == kR32G32B32A32F && Facts(fileFormat).channels == 1) SpreadRed(image);
    return image;
}

std::string Obstacle(const ImageDescription& desc) {
    if (desc.textureType != kTexture2D)
        return std::format("a {} is no equirectangular map", TextureTypeName(desc.textureType));
    if (!IsAnalysed(desc.format)) return std::format("light cannot be measured in {}", Enumerator(desc.format));
    return {};
}

}  // namespace

LoadedImage LoadEnvironment(IImageHandler& handler, Report& report, const Selection& selection) {
    LoadOptions options;
    options.selection = selection;
    const EFormat format = FileFormat(handler, report.File());
    LoadedImage image =
        IsAnalysed(format) ? Load(handler, report, options) : LoadAsFloats(handler, report, format, options);
    if (image.block == nullptr) {
        FailToRead(report, 0);
        return image;
    }
    const std::string obstacle = Obstacle(image.desc);
    if (obstacle.empty()) return image;
    report.Fail(obstacle);
    return {};
}

SmallEnvironment LoadSmallEnvironment(IImageHandler& handler, const std::string& file, int width, int height,
                                      const Selection& selection) {
    Report silent(file);
    const EFormat format = FileFormat(handler, file);
    LoadOptions options;
    options.width = width;
    options.height = height;
    options.highQuality = true;
    options.selection = selection;
    SmallEnvironment small{LoadAsFloats(handler, silent, format, options), false};
    if (small.image.block != nullptr && small.image.desc.format != kR32G32B32A32F) small.image.block.reset();
    small.isLight = IsFloatingPoint(Facts(format)) || format == kBC6H || format == kBC6HSigned;
    return small;
}

}  // namespace Kavra::App
