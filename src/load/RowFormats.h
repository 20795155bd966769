/// Which files the image library decodes row by row.
#pragma once

#include "common/ByteSource.h"

#include <OpenImageIO/imageio.h>

namespace Kavra::Devices {

/// Whether the library decodes the rows of an open picture as they are asked for, and holds few of them by itself. False
/// where it holds all, and where that is not known.
///
/// | by rows | whole |
/// |---|---|
/// | PNG, OpenEXR, Radiance, DPX, SGI | PNG that is interlaced |
/// | JPEG of one scan | JPEG of several, so every progressive one: the coefficients of all of it |
/// | BMP | BMP with runs |
/// | TIFF | TIFF of JPEG strips, and of colours that libtiff converts (YCbCr, CIELab, LogLuv) |
/// | | DDS, GIF, HEIF, ICO, IFF, JPEG 2000, JPEG XL, PNM, PSD, TGA, WebP and all others |
bool GivesRows(const OIIO::ImageInput& input, const OIIO::ImageSpec& spec, Common::ByteSource& file);

/// Whether a JPEG file holds one scan of all its components, coded sequentially (ITU-T T.81, B.2).
bool IsJpegOfOneScan(Common::ByteSource& file);

}  // namespace Kavra::Devices
