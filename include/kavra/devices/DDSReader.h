/// Reading DirectDraw Surface files.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/ETextureType.h>
#include <kavra/devices/Export.h>
#include <kavra/devices/ImageDescription.h>

#include <memory>

namespace Kavra::Devices {

/// Reads a DDS file level by level
/// (https://learn.microsoft.com/windows/win32/direct3ddds/dx-graphics-dds-pguide): legacy masks, FourCC codes and the
/// DX10 header; flat textures, cube maps (absent faces are zero), volumes; of an array its first element.
///
/// A level is delivered in the `EFormat` that holds it exactly: block-compressed data raw; layouts without an
/// `EFormat` of their own (24-bit RGB, 5-6-5, signed bumps, packed YUV...) widened to one that loses nothing they have.
/// `kReserved50` and `kReserved51` are never reported. One object reads one file, on one thread at a time.
class KAVRA_DEVICES_API DDSReader {
public:
    DDSReader();
    ~DDSReader();
    DDSReader(const DDSReader&) = delete;
    DDSReader& operator=(const DDSReader&) = delete;

    /// Opens the file and reads its header. False when it is not a DDS file that can be read.
    bool Load(const KString& path);

    int Width() const;    ///< pixels of level 0
    int Height() const;   ///< rows of level 0, of one face for a cube map
    int Depth() const;    ///< slices of level 0, 1 for flat textures
    int Mipmaps() const;  ///< levels, 1 or more; never more than the full chain of the size
    EFormat Format();
    ETextureType TextureType();

    /// Whether face `face` (0 to 5) of a cube map is in the file; true for the others' face 0.
    bool HasFace(int face) const;

    /// Passes over one level; called for 0 to m - 1 before level m is loaded. False when there is no such level.
    bool SkipMipLevel(int level);

    /// Reads the next level, which must have exactly this size, and fills `desc`. The caller releases the block with
    /// `Delete`. Null when the size is another, the file ends early or there is no memory.
    IMemoryWrapper<void>* Load(ImageDescription& desc, int width, int height, int depth);

private:
    struct State;
    std::unique_ptr<State> mState;
};

}  // namespace Kavra::Devices
