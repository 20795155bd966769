#include "analysis/EnvironmentMap.h"

namespace Kavra::Analysis {
namespace {

using namespace Devices;

std::optional<PixelKind> PixelKindOf(EFormat format) {
    switch (format) {
        case kR8G8B8A8:
        case kR8G8B8A8Alt:
        case kR8G8B8X8:
            return PixelKind::kRedFirstBytes;
        case kB8G8R8A8:
        case kB8G8R8X8:
            return PixelKind::kBlueFirstBytes;
        case kR16G16B16A16F:
            return PixelKind::kHalves;
        case kR32G32B32A32F:
            return PixelKind::kFloats;
        default:
            return std::nullopt;
    }
}

}  // namespace

std::optional<EnvironmentMap> EnvironmentMapOf(const ImageDescription& desc, const void* data) {
    const std::optional<PixelKind> kind = PixelKindOf(desc.format);
    if (data == nullptr || desc.textureType != kTexture2D || !kind) return std::nullopt;
    return EnvironmentMap{*kind, desc.width, desc.height, desc.rowPitch, static_cast<const std::byte*>(data)};
}

}  // namespace Kavra::Analysis
