#include "analysis/EnvironmentMap.h"

#include "common/PixelFormats.h"
#include "common/Reasons.h"

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
    using Common::Require;
    const bool isMap =
        Require(data != nullptr, kFailureArguments, "there are no pixels") &&
        Require(desc.textureType == kTexture2D, kFailureUnsupported, "only flat pictures are environment maps here") &&
        Require(kind.has_value(), kFailureFormat, "light is not looked for in pixels of this format");
    if (!isMap) return std::nullopt;
    return EnvironmentMap{*kind, desc.width, desc.height, desc.rowPitch, static_cast<const unsigned char*>(data)};
}

}  // namespace Kavra::Analysis
