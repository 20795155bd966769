/// \file
/// Textures as files hold them: every level, face, slice and array element, as it is stored.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/ETextureType.h>
#include <kavra/devices/Export.h>

#include <cstdint>
#include <memory>

namespace Kavra::Devices {

/// What the alpha of a texture is. The numbers are those of the DX10 header of DDS files.
enum ETextureAlpha : std::int32_t {
    kTextureAlphaUnknown = 0,
    kTextureAlphaStraight = 1,
    kTextureAlphaPremultiplied = 2,
    kTextureAlphaOpaque = 3,  ///< there is none
    kTextureAlphaCustom = 4,  ///< a fourth channel that is no transparency
};

enum ETextureFileKind : std::int32_t {
    kTextureFileUnknown = 0,
    kTextureFileDDS = 1,
    kTextureFileKTX2 = 2,
};

/// What a texture consists of. Its bytes lie packed in the order of DDS files: element by element, of an element face by
/// face (+x -x +y -y +z -z), of a face level by level, of a level slice by slice, of a slice row by row.
struct TextureShape {
    std::uint32_t size = sizeof(TextureShape);  ///< of the structure as its user knows it, in bytes
    EFormat format = kUnknown;
    /// Whether the colours are encoded with the curve of sRGB, by the file's word. `format` says the same where it can
    /// (`kBC7Srgb`); for the others, as `kR8G8B8A8`, only this does.
    bool isSrgb = false;
    ETextureAlpha alpha = kTextureAlphaUnknown;
    ETextureType type = kTexture2D;  ///< `kTexture2D`, `kTextureCube` or `kTextureVolume`
    int width = 0;                   ///< pixels of level 0, of one face
    int height = 0;                  ///< rows
    int depth = 1;                   ///< slices of level 0 of a volume
    int levels = 1;
    int elements = 1;  ///< of an array: flat pictures or whole cubes
};

}  // namespace Kavra::Devices
