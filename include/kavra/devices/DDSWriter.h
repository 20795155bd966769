/// Writing DirectDraw Surface files.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/ETextureType.h>
#include <kavra/devices/Export.h>

namespace Kavra::Devices {

/// Writes one texture. Formats that a legacy header can say get one, so that old programs read the file; the rest get a
/// DX10 header.
class KAVRA_DEVICES_API DDSWriter {
public:
    DDSWriter();
    ~DDSWriter() = default;

    /// Says what will be written. `mipCount` levels; `size` is the data's bytes as the caller counts them and is
    /// ignored for block-compressed formats, whose bytes follow from format and size. `reserved` is ignored. False for
    /// sizes below 1, formats that DDS cannot hold, a non-square cube, more levels than the full chain, or a `size`
    /// that is not what the rest says.
    bool Construct(ETextureType type, EFormat format, int width, int height, int depth, int mipCount, int size,
                   int reserved);

    /// Writes the file: `data` holds tight rows, faces or slices one after another; with several levels, the order of
    /// the file format (a cube: all levels of a face, then the next face). The file appears under its name only when
    /// it is whole. False when `Construct` did not succeed, `data` is null or the file cannot be written.
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
