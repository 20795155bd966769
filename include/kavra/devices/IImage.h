/// Editable pictures.
#pragma once

#include <kavra/devices/EDataOrientation.h>
#include <kavra/devices/EFormat.h>
#include <kavra/devices/Export.h>
#include <kavra/devices/ImageDescription.h>
#include <kavra/objects/ARefCounted.h>
#include <kavra/objects/Vec.h>

namespace Kavra::Devices {

/// A picture that can be pasted into, read by rectangle and saved. Reference-counted: the receiver calls `AddRef`, and
/// `ReleaseRef` when done.
///
/// Slots: 0 to 8 as in `ARefCounted`, 9 `Width`, 10 `Height`, 11 `Format`, 12 `ImageFileName`, 13 `RowData`, 14
/// `Paste`, 15 `Save`, 16 `LoadRect`. Threads: one at a time.
class KAVRA_DEVICES_API IImage : public ARefCounted {
public:
    IImage();
    IImage(const IImage&);
    IImage& operator=(const IImage&);
    ~IImage() override;

    virtual int Width() const = 0;   ///< pixels
    virtual int Height() const = 0;  ///< rows
    virtual EFormat Format() const = 0;

    /// The file that the picture came from, or null.
    virtual const wchar_t* ImageFileName() const = 0;

    /// Direct access to the rows, described in `desc`, or null when it is not offered.
    virtual void* RowData(ImageDescription& desc) = 0;

    /// Copies `width` x `height` pixels from (`srcX`, `srcY`) of `source`. True when they were copied.
    virtual bool Paste(const IImage* source, int srcX, int srcY, int width, int height, int dstX, int dstY) = 0;

    /// Writes the picture to a file; its extension says which format. True when it was written.
    virtual bool Save(const KString& path) = 0;

    /// The pixels of a rectangle, scaled to `outSize`, in a format and row order; `desc` is filled. The caller owns the
    /// result; null on failure.
    virtual IMemoryWrapper<void>* LoadRect(ImageDescription& desc, vec2<int> origin, vec2<int> size, vec2<int> outSize,
                                           EFormat format, EDataOrientation orientation) = 0;
};

}  // namespace Kavra::Devices
