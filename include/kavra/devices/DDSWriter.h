/// \file
/// Writing DirectDraw Surface files.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/ETextureType.h>
#include <kavra/devices/Export.h>

namespace Kavra::Devices {

/// Writes one texture to a DDS file (https://learn.microsoft.com/windows/win32/direct3ddds/dx-graphics-dds-pguide).
/// Formats that a legacy header can say get one, so that old programs read the file; the rest get a DX10 header.
///
///     DDSWriter writer;
///     if (writer.Construct(kTexture2D, kR8G8B8A8, 256, 256, 1, 1, 256 * 256 * 4, 0)) writer.Write(path, pixels);
///
/// Every format with pixels or blocks can be written, but the reserved ones. `kR8G8B8A8Alt` reads back as `kR8G8B8A8`,
/// all others as themselves. One object, one thread at a time; different objects are independent.
class KAVRA_DEVICES_API DDSWriter {
public:
    /// Makes a writer that was told nothing yet.
    DDSWriter();
    ~DDSWriter() = default;

    /// Says what will be written; may be called again for another texture.
    ///
    /// - `type`: `kTextureCube` (six square faces), `kTextureVolume`, anything else is flat.
    /// - `width`, `height`: pixels of level 0, of one face, 1 to 1,048,576; `depth`: slices of a volume, 1 to 65,536;
    ///   must be in that range for other types too, where it changes nothing.
    /// - `mipCount`: levels, from 1 to the full chain down to 1 x 1 x 1.
    /// - `size`: bytes of all faces, slices and levels as the caller counts them, for a check. It is taken as unsigned,
    ///   so data up to 4,294,967,295 bytes can be written; more cannot. Ignored for block-compressed formats, whose
    ///   bytes follow from format and size and may be more.
    /// - `reserved` is ignored.
    ///
    /// False, and nothing can be written, for values out of range, formats that DDS cannot hold, a cube that is not
    /// square, or a `size` that is not what the rest says.
    bool Construct(ETextureType type, EFormat format, int width, int height, int depth, int mipCount, int size,
                   int reserved);

    /// Writes the file. `data` holds packed rows, faces or slices one after another; with several levels, the order of
    /// the file format (a cube: all levels of a face, then the next face). Rows are the caller's: they are written as
    /// they are, the first one as the top.
    ///
    /// The file is written under a hidden name in the same folder and renamed when it is whole: under `path` there is
    /// either the whole new file or what was there before. False when `Construct` did not succeed, `data` is null, what
    /// is there is no regular file, the folder does not exist or the disk is full. Raises no message.
    bool Write(const KString& path, const void* data);

private:
    ETextureType mType;
    EFormat mFormat;
    int mWidth;
    int mHeight;
    int mDepth;
    int mMipCount;
    bool mConstructed;
};

}  // namespace Kavra::Devices
