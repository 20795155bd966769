#include "common/Boundary.h"
#include "common/PixelFormats.h"
#include "load/geometry/PackedRows.h"

#include <kavra/devices/Sys.h>
#include <kavra/oiio/OIIOImage.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Kavra::Devices {

namespace {

/// One side of a paste: where it is taken from and where it goes, in pixels.
struct Side {
    int from, length, to;

    /// Whether it lies in both pictures, as it is taken and as it is named; it lands somewhere else.
    bool IsInside(int sourceLength, int ownLength) const {
        return from >= 0 && to >= 0 && length >= 1 && length <= ownLength && to < ownLength &&
               std::int64_t{from} + length <= sourceLength && std::int64_t{to} + length <= ownLength;
    }

    /// The first pixel of the destination: the difference of the two corners. Pixels before 0 are left out.
    int Landing() const { return to - from; }
    int Skipped() const { return std::min(std::max(-Landing(), 0), length); }
    int Copied() const { return length - Skipped(); }
};

}  // namespace

bool OIIOImage::Paste(const IImage* source, int srcX, int srcY, int width, int height, int dstX, int dstY) {
    return Common::AsOperation(false, [&] {
        const auto* const image = dynamic_cast<const OIIOImage*>(source);
        if (!Common::Require(mPixels && image != nullptr && image->mPixels, kFailureArguments,
                             "one of the pictures has no pixels, or is another handler's"))
            return false;

        const Side across{srcX, width, dstX}, down{srcY, height, dstY};
        if (!across.IsInside(image->mWidth, mWidth) || !down.IsInside(image->mHeight, mHeight) ||
            image->mFormat != mFormat) {
            Common::Say(kFailureArguments, "the rectangles do not lie in the pictures, or their formats differ");
            Sys::Error(L"Invalid parameter", nullptr);
            return false;
        }
        const auto size = [](int count) { return static_cast<std::size_t>(count); };
        const std::size_t pixelBytes = size(Common::FactsOf(mFormat).BytesPerPixel());
        const std::size_t fromPitch = size(image->mWidth) * pixelBytes, toPitch = size(mWidth) * pixelBytes;
        const std::size_t from = size(srcY + down.Skipped()) * fromPitch + size(srcX + across.Skipped()) * pixelBytes;
        const std::size_t to =
            size(std::max(down.Landing(), 0)) * toPitch + size(std::max(across.Landing(), 0)) * pixelBytes;
        const Rows rows{.first = image->mPixels.get() + from,
                        .pitch = fromPitch,
                        .bytes = size(across.Copied()) * pixelBytes,
                        .count = size(down.Copied())};
        if (rows.count > 0 && rows.bytes > 0) MoveRows(mPixels.get() + to, toPitch, rows);
        mModified = true;
        return true;
    });
}

}  // namespace Kavra::Devices
