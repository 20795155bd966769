/// One face of a cube map or one slice of a volume, by itself.
#pragma once

#include "common/ByteSource.h"
#include "common/LoadRequest.h"
#include "load/TextureLoader.h"

namespace Kavra::Devices {

/// Whether a face or a slice is wanted, or anything of a frame but all of its largest level.
inline bool WantsSlice(const LoadPreferences& preferences) {
    return preferences.face >= 0 || preferences.slice >= 0;
}
inline bool WantsPart(const LoadPreferences& preferences) {
    return WantsSlice(preferences) || preferences.mipLevel > 0 || preferences.channels != nullptr;
}

/// The number of the wanted face or slice among those of a texture with `slices` of the latter; nothing where there is
/// none, as where both are wanted.
std::optional<int> SliceNumber(const LoadPreferences& preferences, ETextureType type, int slices);

/// Says that there is no such face or slice, and what there is.
void SayOfSlice(const LoadPreferences& preferences, ETextureType type, int slices) noexcept;

/// Whether the header of a DDS file says that it holds a face of a cube map. Not every host's reader tells.
bool IsFaceInDds(const KString& path, int face);

/// Makes a load whose file is described one of the wanted face or slice, a flat picture. False where there is none, or
/// the library cannot read it by itself.
bool TakeSlice(TextureLoad& load, Common::ByteSource& file);

/// The `ImageSpec` of the load's face at another level of a DDS.
OIIO::ImageSpec FaceSpec(const TextureLoad& load, int level);

}  // namespace Kavra::Devices
