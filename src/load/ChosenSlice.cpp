#include "load/ChosenSlice.h"

#include "common/Reasons.h"
#include "common/dds/DdsShape.h"
#include "load/OpenInput.h"

#include <algorithm>
#include <array>
#include <span>

namespace Kavra::Devices {

namespace {

/// What is left of a spec for a flat picture of this size at its place.
OIIO::ImageSpec Flat(OIIO::ImageSpec spec, int width, int height) {
    spec.width = spec.full_width = width;
    spec.height = spec.full_height = height;
    spec.depth = spec.full_depth = 1;
    spec.full_x = spec.x;
    spec.full_y = spec.y;
    spec.full_z = spec.z;
    spec.erase_attribute("textureformat");
    return spec;
}

bool TakeDdsSlice(TextureLoad& load, Common::ByteSource& file) {
    std::optional<DdsSlices> slices = DdsSlices::OpenStored(file.Again());
    if (!slices) return false;
    const auto number = SliceNumber(load.request.preferences, slices->Type(), slices->SliceCount(load.level));
    if (!number || !slices->HasFace(*number)) return false;
    load.slices = std::move(slices);
    load.slice = *number;
    load.fileSpec = FaceSpec(load, load.level);
    return true;
}

/// Of a file of the library's, whose faces stand on one another. Rows of tiles cannot be divided.
bool TakeLibrarySlice(TextureLoad& load) {
    const ImageDesc& whole = load.fileDesc;
    const auto number = SliceNumber(load.request.preferences, whole.textureType, whole.depth);
    if (!number) return false;
    OIIO::ImageSpec& spec = load.fileSpec;
    const bool isCube = load.IsCube(), isTiled = spec.tile_width != 0;
    if (isTiled && (isCube ? whole.height % spec.tile_height != 0 : spec.tile_depth > 1)) return false;
    if (isCube) {
        spec.y += *number * whole.height;
    } else {
        spec.z += *number;
    }
    load.slice = *number;
    spec = Flat(spec, whole.width, whole.height);
    return true;
}

}  // namespace

std::optional<int> SliceNumber(const LoadPreferences& preferences, ETextureType type, int slices) {
    const auto [face, slice] = std::pair(preferences.face, preferences.slice);
    const bool isFace = type == kTextureCube && slice < 0 && face < kCubeFaces;
    const bool isSlice = type == kTextureVolume && face < 0 && slice < slices;
    if (!isFace && !isSlice) return std::nullopt;
    return std::max(face, slice);
}

void SayOfSlice(const LoadPreferences& preferences, ETextureType type, int slices) noexcept {
    using Common::Say;
    const auto [face, slice] = std::pair(preferences.face, preferences.slice);
    if (face >= 0 && slice >= 0) return Say(kFailureOutOfRange, "no texture has both faces and slices");
    if (face >= 0 && type != kTextureCube)
        return Say(kFailureOutOfRange, "there is no face {}; it is no cube map", face);
    if (face >= 0) return Say(kFailureOutOfRange, "there is no face {} in the file", face);
    if (type != kTextureVolume) return Say(kFailureOutOfRange, "there is no slice {}; it is no volume", slice);
    Say(kFailureOutOfRange, "there is no slice {}; there are {}", slice, slices);
}

bool IsFaceInDds(const KString& path, int face) {
    std::optional<Common::ByteSource> file = OpenFile(path);
    std::array<unsigned char, Dds::kMaxHeaderBytes> start{};
    if (!file) return false;
    const std::size_t count = file->ReadSome(start);
    const auto header = Dds::ParseHeader(std::span(start).first(count));
    const auto shape = header ? Dds::ShapeOf(*header) : std::nullopt;
    return shape && shape->type == kTextureCube && shape->HasFace(face);
}

bool TakeSlice(TextureLoad& load, Common::ByteSource& file) {
    if (!(load.IsDds() ? TakeDdsSlice(load, file) : TakeLibrarySlice(load))) {
        const ImageDesc& whole = load.fileDesc;
        if (!load.IsDds() && SliceNumber(load.request.preferences, whole.textureType, whole.depth)) {
            Common::Say(kFailureUnsupported, "its tiles cannot be divided into faces or slices");
        } else if (!load.IsDds()) {
            SayOfSlice(load.request.preferences, whole.textureType, whole.depth);
        }
        return false;
    }
    load.fileDesc.textureType = kTexture2D;
    load.fileDesc.width = load.fileSpec.width;
    load.fileDesc.height = load.fileSpec.height;
    load.fileDesc.depth = 1;
    return true;
}

OIIO::ImageSpec FaceSpec(const TextureLoad& load, int level) {
    const Dds::Extent size = load.slices->LevelSize(level);
    OIIO::ImageSpec spec = Flat(load.fileSpec, size.width, size.height);
    spec.tile_width = spec.tile_height = spec.tile_depth = 0;  // what the library calls tiles are faces
    return spec;
}

}  // namespace Kavra::Devices
