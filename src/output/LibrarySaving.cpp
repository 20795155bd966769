#include "output/LibrarySaving.h"

#include "common/PixelFormats.h"
#include "load/geometry/PackedRows.h"
#include "output/LibraryFile.h"
#include "output/PixelSpec.h"

#include <OpenImageIO/imageio.h>

#include <cstddef>
#include <utility>

namespace Kavra::Devices {

namespace {

/// The pixels as a writer is given them: the caller's own, or a copy in packed rows.
struct Pixels {
    const unsigned char* first;
    std::size_t pixelBytes, pitch;
    Common::PixelBlock copy;
};

/// What the file will hold.
OIIO::ImageSpec FileSpec(const ImageDescription& desc) {
    OIIO::ImageSpec spec = PixelSpec(desc.format, desc.width, desc.height);
    spec.attribute("oiio:UnassociatedAlpha", 1);
    return spec;
}

/// A copy is made where the rows are shorter than the picture's, so that nothing behind the last one is read, and where
/// blue comes first.
Pixels PixelsOf(const ImageDescription& desc, const void* data) {
    const auto pixelBytes = static_cast<std::size_t>(Common::FactsOf(desc.format).BytesPerPixel());
    const Rows rows{.first = static_cast<const unsigned char*>(data),
                    .pitch = static_cast<std::size_t>(desc.rowPitch),
                    .bytes = pixelBytes * static_cast<std::size_t>(desc.width),
                    .count = static_cast<std::size_t>(desc.height)};
    const bool isBlueFirst = Common::FactsOf(desc.format).blueFirst;
    if (rows.pitch >= rows.bytes && !isBlueFirst) return {rows.first, pixelBytes, rows.pitch, nullptr};
    Common::PixelBlock copy = PackRows(rows, {.overlaps = true, .swapsRedAndBlue = isBlueFirst});
    const unsigned char* const first = copy.get();
    return {first, pixelBytes, rows.bytes, std::move(copy)};
}

/// The same as floats, and `spec` with them.
Pixels FloatsOf(const Pixels& halves, OIIO::ImageSpec& spec) {
    const OIIO::TypeDesc half = spec.format;
    spec.set_format(OIIO::TypeFloat);
    Common::PixelBlock copy = NewRows(static_cast<std::size_t>(spec.height), spec.scanline_bytes());
    (void)OIIO::convert_image(spec.nchannels, spec.width, spec.height, 1, halves.first, half,
                              static_cast<OIIO::stride_t>(halves.pixelBytes), static_cast<OIIO::stride_t>(halves.pitch),
                              OIIO::AutoStride, copy.get(), spec.format, OIIO::AutoStride, OIIO::AutoStride,
                              OIIO::AutoStride);
    const unsigned char* const first = copy.get();
    return {first, spec.pixel_bytes(), spec.scanline_bytes(), std::move(copy)};
}

}  // namespace

bool SaveByLibrary(const KString& path, const ImageDescription& desc, const void* data) {
    if (!HasPixels(desc.format) || desc.rowPitch <= 0) return false;
    LibraryFile file(path);
    if (!file.HasWriter()) return false;

    // All memory that the picture needs on this side of the library is taken before the file is touched.
    OIIO::ImageSpec spec = FileSpec(desc);
    Pixels pixels = PixelsOf(desc, data);
    if (spec.format == OIIO::TypeHalf && file.WantsFloatsForHalves()) pixels = FloatsOf(pixels, spec);
    if (!file.Open(spec)) return false;
    (void)file.WriteImage(pixels.first, static_cast<OIIO::stride_t>(pixels.pixelBytes),
                          static_cast<OIIO::stride_t>(pixels.pitch));
    return file.Close();
}

}  // namespace Kavra::Devices
