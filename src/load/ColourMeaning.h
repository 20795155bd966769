/// What the values of a picture mean: to alpha, to light, and to the ruler.
#pragma once

#include <kavra/devices/Export.h>
#include <kavra/devices/IImageInspector.h>

#include <OpenImageIO/imageio.h>

#include <string_view>

namespace Kavra::Devices {

/// What colours are to alpha where the image library delivers a picture as `OpenInput` opens it: as the file stores them.
/// `format` is the name of its reader.
///
/// | kinds | colours |
/// |---|---|
/// | OpenEXR | premultiplied |
/// | TIFF | as ExtraSamples says; of a fourth channel that is none of these, straight |
/// | HEIF | premultiplied where the file says so |
/// | Targa | premultiplied where its extension area says so |
/// | all others | straight; DXT2 and DXT4 the library divides |
EAlphaKind AlphaKindOf(std::string_view format, const OIIO::ImageSpec& spec);

struct Transfer {
    ETransferKind kind = kTransferUnknown;
    double gamma = 2.2;  ///< `FilePart::gamma`
};

/// What values are to light: as the file's colour space says it; else linear where they are floats, and by sRGB where
/// they are integers. Unknown of kinds whose integers are densities, measurements or of no one meaning (Cineon, DPX,
/// DICOM, FITS, zfile, OpenVDB).
Transfer TransferOf(std::string_view format, const OIIO::ImageSpec& spec);

struct Resolution {
    double x = 0, y = 0;
};

/// Dots per inch; zero where the file does not say, or says what is no number of them.
Resolution ResolutionOf(std::string_view format, const OIIO::ImageSpec& spec);

}  // namespace Kavra::Devices
