/// \file
/// Editable pictures.
#pragma once

#include <kavra/devices/EDataOrientation.h>
#include <kavra/devices/EFormat.h>
#include <kavra/devices/Export.h>
#include <kavra/devices/ImageDescription.h>
#include <kavra/objects/ARefCounted.h>
#include <kavra/objects/Vec.h>

namespace Kavra::Devices {

/// A picture that can be pasted into, read by rectangle and saved. `IImageHandler::CreateImage` makes them, without
/// references: the receiver calls `AddRef`, and `ReleaseRef` when done.
///
///     IImage* sheet = handler->CreateImage(512, 256, kR8G8B8A8);
///     IImage* cell = handler->CreateImage(texture);
///     sheet->AddRef();
///     cell->AddRef();
///     sheet->Paste(cell, 0, 0, cell->Width(), cell->Height(), 128, 0);   // at (128, 0)
///     sheet->Save(L"sheet.png");
///     cell->ReleaseRef();
///     sheet->ReleaseRef();
///
/// Coordinates are in pixels from the top left corner, x to the right and y down. A picture of a format that it cannot
/// hold, or of a size below 1, has no pixels: it tells its size and format, and answers everything else with false or
/// null. Nothing throws; messages go through `Sys`.
///
/// Vtable slots: 0 to 8 as in `ARefCounted`, 9 `Width`, 10 `Height`, 11 `Format`, 12 `ImageFileName`, 13 `RowData`,
/// 14 `Paste`, 15 `Save`, 16 `LoadRect`.
///
/// Threads: one at a time; different pictures are independent.
class KAVRA_DEVICES_API IImage : public ARefCounted {
public:
    IImage();                          ///< Makes the base of a picture.
    IImage(const IImage&);             ///< Copies nothing: a copy starts without references.
    IImage& operator=(const IImage&);  ///< Assigns nothing.
    ~IImage() override;

    virtual int Width() const = 0;       ///< pixels
    virtual int Height() const = 0;      ///< rows
    virtual EFormat Format() const = 0;  ///< what its pixels are kept as; may differ from what was asked for

    /// The file that the picture came from, or null.
    virtual const wchar_t* ImageFileName() const = 0;

    /// Direct access to the rows, described in `desc`, or null when it is not offered. The pixels stay the picture's.
    virtual void* RowData(ImageDescription& desc) = 0;

    /// Copies `width` x `height` pixels from (`srcX`, `srcY`) of `source`, which may be this picture. Pixels are
    /// replaced, not blended, transparent ones too.
    ///
    /// They land at the DIFFERENCE of the two corners, (`dstX` - `srcX`, `dstY` - `srcY`), so at (`dstX`, `dstY`) where
    /// the source corner is (0, 0). To paste from elsewhere add the source corner to the wanted place.
    ///
    /// No corner may be negative, the size is at least 1 x 1, the rectangles at (`srcX`, `srcY`) of the source and at
    /// (`dstX`, `dstY`) of this picture must lie inside, and both formats must be equal; otherwise the error "Invalid
    /// parameter" is raised, nothing is copied and the result is false. False without a message when either picture has
    /// no pixels or `source` is null or of another class. True else, and the picture counts as modified from then on.
    virtual bool Paste(const IImage* source, int srcX, int srcY, int width, int height, int dstX, int dstY) = 0;

    /// Writes the picture to a file; its extension says which format, ".dds" included. Folders that are missing are
    /// made. True when it was written; after a failure the file may be there in part.
    virtual bool Save(const KString& path) = 0;

    /// Returns the rectangle of `size` pixels at `origin`, scaled to `outSize` pixels (larger or smaller), then rotated
    /// or mirrored to `orientation`, in `format` and packed rows. The caller destroys it with `Delete`.
    ///
    /// `origin` may be negative and the rectangle may reach outside the picture: pixels there are zero in the picture's
    /// own format, so transparent where it has alpha. Channels that the picture lacks are 0, alpha opaque. Width,
    /// height, depth, format, pitch, data size and orientation of `desc` are set, the other fields stay.
    ///
    /// Null, after which `desc` means nothing: without a message for sizes below 1, rectangles that end beyond an int,
    /// rows or blocks that are too large, and a picture without pixels; with the warning "Raster format not supported"
    /// for a format that pictures cannot hold.
    virtual IMemoryWrapper<void>* LoadRect(ImageDescription& desc, vec2<int> origin, vec2<int> size, vec2<int> outSize,
                                           EFormat format, EDataOrientation orientation) = 0;
};

}  // namespace Kavra::Devices
