/// The header of a band raster: a text file that says how the samples of a pixel file lie.
#pragma once

#include "readers/spot/BandPalette.h"

#include <kavra/devices/Export.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Kavra::Devices {

/// How the bands of a raster are interleaved.
enum class BandLayout { kUnknown, kByLine, kByPixel, kSequential };

/// What a sample is.
enum class PixelKind {
    kNone = 0,
    k8Bit = 1,
    kUnsigned16 = 2,
    kSigned16 = 3,
    kUnsigned32 = 4,
    kSigned32 = 5,
    kFloat = 6
};

enum class MapUnits { kNone = 0, kInches = 1, kFeet = 2, kMeters = 3, kDegrees = 4 };

/// Where a raster lies on the map. No pixel depends on it.
struct Georeference {
    double cellWidth = 0;   ///< XDIM
    double cellHeight = 0;  ///< YDIM
    double mapX = 0;        ///< ULXMAP, the centre of the upper left cell
    double mapY = 0;        ///< ULYMAP
    double cornerX = 0;     ///< the left edge
    double cornerY = 0;     ///< `mapY` less the height of all rows but half a cell
    MapUnits units = MapUnits::kNone;
    std::string projection, datum, zone;  ///< as they stand in the header, cut at 63 characters
};

/// A header that was accepted, which means: 1 or 3 bands; columns, rows and bits at least 1; no count of bytes
/// negative; at most 32 bits where there is one band; and as many bytes of data as it needs. Counts of bytes that no
/// file can have stop at the largest 64-bit number.
struct BandHeader {
    std::wstring path;              ///< of the header itself
    std::uint64_t headerBytes = 0;  ///< its length
    std::int32_t columns = 0;
    std::int32_t rows = 0;
    std::int32_t bits = 8;  ///< of a sample
    std::int32_t bands = 1;
    BandLayout layout = BandLayout::kByLine;
    PixelKind pixelKind = PixelKind::kNone;
    std::int64_t skipBytes = 0;        ///< before the first row
    std::int64_t recordSkipBytes = 0;  ///< before the samples of a row
    std::int64_t bandRowBytes = 0;     ///< one row of one band, the record skip included
    std::int64_t totalRowBytes = 0;    ///< one row of all bands
    std::int64_t bandGapBytes = 0;     ///< between bands that lie one after another
    bool blueFirst = false;            ///< the first of three bands is blue and the third red
    std::int32_t colourEntries = 0;    ///< 256 where the palette holds the colours of a single band, else 0
    std::int32_t greyEntries = 0;      ///< 256 where the palette maps the values of each band, else 0
    BandPalette palette = GreyRamp();
    Georeference georeference;
};

/// Parses the text of a header for a pixel file of `dataBytes` bytes, without palette and path. Nothing when it is not
/// accepted. A value that cannot be read counts as absent.
std::optional<BandHeader> ParseBandHeader(std::string_view text, std::uint64_t dataBytes);

/// Reads a header file of at most 20 KiB and, for 8-bit samples, the palette beside it: the file with the extension
/// ".pal" or, where there is none, ".clr". Nothing when the header is not accepted; a palette that is not one is left
/// out.
std::optional<BandHeader> ReadBandHeader(const KString& path, std::uint64_t dataBytes);

}  // namespace Kavra::Devices
