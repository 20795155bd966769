/// What a host prefers of saves, in the terms of each of the library's writers.
///
/// | preference | writers that take it, as tried with OpenImageIO 3.1 |
/// |---|---|
/// | quality | JPEG, WebP, JPEG XL (100: lossless), HEIF; OpenEXR by DWAA and DWAB |
/// | compression | `kCompressions` |
/// | tiles | OpenEXR, TIFF |
/// | resolution | PNG, JPEG, TIFF, OpenEXR |
/// | premultiplied alpha | TIFF; others divide the values for it |
/// | transfer | PNG, JPEG XL, OpenEXR; JPEG, TIFF sRGB only; Targa a power only; DPX all but a power |
/// | profile | PNG, JPEG, TIFF, WebP; JPEG up to 65,519 bytes; JPEG XL ends the process over many that it cannot use, OpenEXR prints a line |
/// | texts | PNG, JPEG, TIFF, OpenEXR; of Targa, DPX, SGI, RLA and IFF those that have a field in the file |
/// | frames | GIF, TIFF, OpenEXR; those of FITS and icons cannot be read, or mean something else |
#pragma once

#include <kavra/devices/SavePreferences.h>

#include <OpenImageIO/imageio.h>

#include <string_view>

namespace Kavra::Devices {

/// Tells the writer of format `writer` what is preferred, as far as it knows of it: as attributes of `spec`, whose
/// channels are those of the file. What could harm it - compressions that it does not know or cannot do, damaged profiles, texts
/// beyond 32 KiB, numbers that are none - is left out.
void AddPreferences(OIIO::ImageSpec& spec, const SavePreferences& preferences, std::string_view writer);

/// Makes `spec` one of tiles where that is preferred and the writer has them. They are of 16 to 4,096 pixels, and not
/// much larger than the picture.
void AddTiles(OIIO::ImageSpec& spec, const SavePreferences& preferences, std::string_view writer);

/// Whether the writer puts several pictures into a file.
bool HoldsFrames(std::string_view writer);

/// Whether they may differ in size and format.
bool HoldsUnequalFrames(std::string_view writer);

}  // namespace Kavra::Devices
