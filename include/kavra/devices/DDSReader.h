/// \file
/// Reading DirectDraw Surface files.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/ETextureType.h>
#include <kavra/devices/Export.h>
#include <kavra/devices/ImageDescription.h>

#include <cstddef>
#include <memory>

namespace Kavra::Devices {

/// Reads a DDS file level by level
/// (https://learn.microsoft.com/windows/win32/direct3ddds/dx-graphics-dds-pguide): legacy masks, FourCC codes and the
/// DX10 header; flat textures, cube maps (absent faces are zero), volumes; of an array its first element.
///
/// There are two functions of the name `Load`: the first opens a file, the second reads its next level. Levels are read
/// or passed over in their order:
///
///     DDSReader reader;
///     if (!reader.Load(path)) return;
///     reader.SkipMipLevel(0);                                             // go on with level 1
///     ImageDescription desc;
///     IMemoryWrapper<void>* block = reader.Load(desc, std::max(reader.Width() >> 1, 1),
///                                               std::max(reader.Height() >> 1, 1), std::max(reader.Depth() >> 1, 1));
///     if (block != nullptr) block->Delete();
///
/// A level is delivered in the `EFormat` that holds it exactly: block-compressed data raw; layouts without an
/// `EFormat` of their own (24-bit RGB, 5-6-5, signed bumps, packed YUV...) widened to one that loses nothing they have.
/// `kReserved50` and `kReserved51` are never reported. Rows come as they are stored, packed, without gaps.
///
/// Sides are 1 to 1,048,576 pixels and depths 1 to 65,536, so a row's bytes fit an int; a level's bytes may pass 32
/// bits and are 64-bit throughout. Before memory is taken the file's length is compared with what the level needs.
///
/// One object reads one file at a time, on one thread at a time; different objects are independent. The file stays open
/// until the object goes or loads another.
class KAVRA_DEVICES_API DDSReader {
public:
    /// Makes a reader without a file: all sizes 0, no format, no level.
    DDSReader();
    ~DDSReader();
    DDSReader(const DDSReader&) = delete;
    DDSReader& operator=(const DDSReader&) = delete;

    /// Opens the file and reads its header; a file that was open before is closed. False when it is not a regular file,
    /// no DDS, of a pixel layout that no `EFormat` can hold or of an impossible size; the reader is then empty. Pixels
    /// are not looked at.
    bool Load(const KString& path);

    /// The same of a file's `size` bytes in memory, which must not change and outlive the reader or its next file.
    bool LoadMemory(const void* bytes, std::size_t size);

    int Width() const;           ///< pixels of level 0
    int Height() const;          ///< rows of level 0, of one face for a cube map
    int Depth() const;           ///< slices of level 0, 1 for flat textures
    int Mipmaps() const;         ///< levels, 1 or more; never more than the full chain of the size
    EFormat Format();            ///< what levels are delivered in
    ETextureType TextureType();  ///< `kTexture2D`, `kTextureCube` or `kTextureVolume`

    /// Whether face `face` of a cube map is in the file: 0 to 5 for +x -x +y -y +z -z. Of flat textures and volumes
    /// only face 0 is; other numbers are never. Absent faces take no bytes in the file and are zero in the block.
    bool HasFace(int face) const;

    /// Goes on behind level `level`: the next `Load` reads level + 1. Call it for 0 to m - 1 before level m is loaded.
    /// False, and nothing changed, when there is no such level.
    bool SkipMipLevel(int level);

    /// Reads the next level into a new block and goes on to the one behind it. The size must be the level's own, in
    /// pixels, rows and slices: half that of the level before, rounded down, at least 1. A cube map's block holds six
    /// faces; `desc.dataSize` is of one. The caller releases the block with `Delete`.
    ///
    /// Returns null, with `desc` and the position unchanged, when the size is another, there is no further level, the
    /// file ends early or there is no memory. Raises no message.
    IMemoryWrapper<void>* Load(ImageDescription& desc, int width, int height, int depth);

private:
    struct State;
    std::unique_ptr<State> mState;
};

}  // namespace Kavra::Devices
