#include "output/LibrarySaving.h"

#include <kavra/devices/AFormatConvertor.h>

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <array>

#include "formats/ChannelOrder.h"
#include "formats/PixelFormatMapping.h"
#include "output/LibraryFile.h"
#include "output/PackedRows.h"

namespace Kavra::Devices {

namespace {

/// The caller's pixels, or a packed copy of them.
struct PixelRows {
    const void* data;
    OIIO::stride_t pixelBytes;
    OIIO::stride_t pitch;
};

/// What the file will hold. The element type is UNKNOWN when `desc.format` has none.
OIIO::ImageSpec FileSpec(const ImageDescription& desc) {
    const OIIO::ImageSpec base(desc.width, desc.height, 4, OIIO::TypeDesc::UINT8);
    if (desc.format == kUnknown) return OIIO::ImageSpec(OIIO::TypeDesc::UNKNOWN);
    OIIO::ImageSpec spec = FormatToImageSpec(desc.format, base);
    // The base has four named channels with an alpha among them; fewer channels have fewer names and no alpha.
    spec.channelnames.resize(static_cast<std::size_t>(spec.nchannels));
    if (spec.alpha_channel >= spec.nchannels) spec.alpha_channel = -1;
    spec.attribute("oiio:UnassociatedAlpha", 1);
    return spec;
}

bool WriteBlueFirst(OIIO::ImageOutput& writer, const OIIO::ImageSpec& spec, const PixelRows& rows) {
    constexpr std::array kRedFirst = {2, 1, 0, 3};
    const OIIO::ImageBuf source(spec, const_cast<void*>(rows.data), rows.pixelBytes, rows.pitch);
    const OIIO::ImageBuf image = OIIO::ImageBufAlgo::channels(source, static_cast<int>(kRedFirst.size()), kRedFirst);
    return image.initialized() && !image.has_error() && image.write(&writer);
}

bool WriteRows(OIIO::ImageOutput& writer, const OIIO::ImageSpec& spec, EFormat format, const PixelRows& rows) {
    if (IsBlueFirst(format)) return WriteBlueFirst(writer, spec, rows);
    return writer.write_image(spec.format, rows.data, rows.pixelBytes, rows.pitch);
}

/// The caller's rows, or where they are shorter than a row of the picture, whole ones in `packed`.
PixelRows RowsOf(const ImageDescription& desc, const void* data, Common::PixelBlock& packed) {
    const auto pixelBytes = static_cast<std::size_t>(Utilities::AFormatConvertor::BytesPerPixel(desc.format));
    const std::size_t rowBytes = pixelBytes * static_cast<std::size_t>(desc.width);
    const auto pitch = static_cast<std::size_t>(desc.rowPitch);
    if (pitch < rowBytes) packed = PackRows(data, pitch, rowBytes, static_cast<std::size_t>(desc.height));
    const auto stride = [](std::size_t bytes) { return static_cast<OIIO::stride_t>(bytes); };
    return {packed ? packed.get() : data, stride(pixelBytes), stride(std::max(pitch, rowBytes))};
}

}  // namespace

bool SaveByLibrary(const KString& path, const ImageDescription& desc, const void* data) {
    const OIIO::ImageSpec spec = FileSpec(desc);
    if (spec.format == OIIO::TypeDesc::UNKNOWN || desc.rowPitch <= 0) return false;

    Common::PixelBlock packed;
    LibraryFile file(path);
    if (!file.HasWriter() || !file.Open(spec)) return false;
    const bool written = WriteRows(file.Writer(), spec, desc.format, RowsOf(desc, data, packed));
    return file.Close() && written;
}

}  // namespace Kavra::Devices
