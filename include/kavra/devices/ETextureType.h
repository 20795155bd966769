/// Kinds of textures.
#pragma once

namespace Kavra::Devices {

enum ETextureType : int {
    kTextureUnknown = 0,
    kTexture1D = 1,
    kTexture2D = 3,
    kTextureCube = 5,    ///< six faces in one block, in the order +x -x +y -y +z -z
    kTextureVolume = 6,  ///< slices one after another
};

}  // namespace Kavra::Devices
