#include "frame/host/devices/TextureShapes.h"

#include "common/KnownFields.h"
#include "common/SrgbFormats.h"
#include "common/dds/DdsTexture.h"

namespace Kavra::Devices {

namespace {

/// The kinds that files have.
bool IsKind(ETextureType type) {
    return type == kTexture2D || type == kTextureCube || type == kTextureVolume;
}

bool IsSaneSize(const TextureShape& shape) {
    const bool isVolume = shape.type == kTextureVolume;
    if (!Dds::IsSane(shape.width, shape.height, shape.depth) || (!isVolume && shape.depth != 1)) return false;
    if (shape.type == kTextureCube && shape.width != shape.height) return false;
    const int maxElements = isVolume ? 1 : static_cast<int>(Dds::kMaxElements);
    return shape.elements >= 1 && shape.elements <= maxElements && shape.levels >= 1 &&
           shape.levels <= Dds::FullMipChain({shape.width, shape.height, shape.depth});
}

}  // namespace

bool KnownTexture::Has(int element, int face, int level) const {
    return element >= 0 && element < shape.elements && face >= 0 && face < stored.FaceCount() && level >= 0 &&
           level < shape.levels;
}

std::optional<KnownTexture> KnownTextureOf(const TextureShape& shape) {
    KnownTexture known;
    Common::CopyKnownFields(shape, known.shape);
    known.unit = Dds::UnitOf(known.shape.format);
    const bool isAlpha = known.shape.alpha >= kTextureAlphaUnknown && known.shape.alpha <= kTextureAlphaCustom;
    if (known.unit.bytes == 0 || !isAlpha || !IsKind(known.shape.type) || !IsSaneSize(known.shape)) return std::nullopt;
    known.stored = {{known.shape.width, known.shape.height, known.shape.depth},
                    known.shape.levels,
                    known.shape.type,
                    (1U << FaceCount(known.shape.type)) - 1};
    known.shape.isSrgb = known.shape.isSrgb || Common::IsSrgbFormat(known.shape.format);
    if (known.shape.isSrgb) known.shape.format = Common::WithSrgb(known.shape.format);
    return known;
}

bool IsSaneTexture(const TextureShape& shape) {
    return KnownTextureOf(shape).has_value();
}

int FullTextureLevels(int width, int height, int depth) {
    return Dds::FullMipChain({width, height, depth});
}

void GetTextureLevelSize(const TextureShape& shape, int level, int& width, int& height, int& depth) {
    TextureShape known;
    Common::CopyKnownFields(shape, known);
    const Dds::Extent size = Dds::LevelSize({known.width, known.height, known.depth}, level < 0 ? 0 : level);
    width = size.width;
    height = size.height;
    depth = size.depth;
}

std::uint64_t TextureLevelBytes(const TextureShape& shape, int level) {
    const std::optional<KnownTexture> known = KnownTextureOf(shape);
    return known && known->Has(0, 0, level) ? known->LevelBytes(level) : 0;
}

std::uint64_t TextureBytes(const TextureShape& shape) {
    const std::optional<KnownTexture> known = KnownTextureOf(shape);
    return known ? known->Bytes() : 0;
}

std::uint64_t TextureLevelOffset(const TextureShape& shape, int element, int face, int level) {
    const std::optional<KnownTexture> known = KnownTextureOf(shape);
    if (!known) return 0;
    return known->Has(element, face, level) ? known->Offset(element, face, level) : known->Bytes();
}

}  // namespace Kavra::Devices
