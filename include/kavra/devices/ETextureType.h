/// \file
/// Kinds of textures.
#pragma once

namespace Kavra::Devices {

/// The kind of a texture, and with it how its block is laid out. The numbers are part of the contract; others are
/// treated like `kTexture2D` by savers and refused by resizing and analysis.
///
/// Every block holds rows without gaps between them, unless its description gives a longer pitch.
enum ETextureType : int {
    kTextureUnknown = 0,  ///< not said. Savers write it as one flat picture
    /// One row of texels, or a flat picture: resized and saved like `kTexture2D`, never reported by a load.
    kTexture1D = 1,
    /// A flat picture: `height` rows. The only kind that average colours and environment maps are taken from.
    kTexture2D = 3,
    /// A cube map: six square faces in one block, one after another, in the order +x -x +y -y +z -z. `height` and
    /// `dataSize` are of one face, the block holds six times as much.
    kTextureCube = 5,
    /// A volume: `depth` slices of `height` rows, one after another, the first slice first. `dataSize` is of all
    /// slices.
    kTextureVolume = 6,
};

/// Faces of a cube map.
inline constexpr int kCubeFaces = 6;

/// Returns how many times the block of a texture holds the bytes that its description tells: 6 for a cube map, else 1.
constexpr int FaceCount(ETextureType type) {
    return type == kTextureCube ? kCubeFaces : 1;
}

}  // namespace Kavra::Devices
