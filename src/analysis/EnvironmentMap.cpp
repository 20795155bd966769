#include "analysis/EnvironmentMap.h"

#include "common/PixelFormats.h"

namespace Kavra::Analysis {
namespace {

using namespace Devices;

std::optional<PixelKind> PixelKindOf(EFormat format) {
    const Common::PixelFormat& facts = Common::FactsOf(format);
    if (facts.channels != 4) return std::nullopt;
    switch (facts.element) {
        case Common::ElementType::kUInt8:
            return facts.blueFirst ? PixelKind::kBlueFirstBytes : PixelKind::kRedFirstBytes;
        case Common::ElementType::kHalf:
            return PixelKind::kHalves;
        case Common::ElementType::kFloat:
            return PixelKind::kFloats;
        default:
            return std::nullopt;
    }
}

}  // namespace

std::optional<EnvironmentMap> EnvironmentMapOf(const ImageDescription& desc, const void* data) {
    const std::optional<PixelKind> kind = PixelKindOf(desc.format);
    if (data == nullptr || desc.textureType != kTexture2D || !kind) return std::nullopt;
    return EnvironmentMap{*kind, desc.width, desc.height, desc.rowPitch, static_cast<const unsigned char*>(data)};
}

}  // namespace Kavra::Analysis
