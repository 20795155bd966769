#include "readers/spot/BandHeader.h"

#include "common/Limits.h"
#include "readers/TextScanner.h"
#include "readers/spot/HeaderText.h"
#include "readers/spot/SideFiles.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Kavra::Devices {

namespace {

using Common::Product;
using Common::Sum;

constexpr std::uint64_t kMostHeaderBytes = 20480;
constexpr std::size_t kMostLayoutCharacters = 10;
constexpr std::size_t kMostWordCharacters = 63;

/// A count of bytes; `fallback` may be larger than any that a header can give.
std::int64_t Bytes(const HeaderText& text, std::string_view keyword, std::int64_t fallback) {
    const std::optional<std::int32_t> bytes = text.Integer(keyword);
    return bytes ? *bytes : fallback;
}

/// Only the full word counts: headers of big-endian rasters that say "M" are taken as little-endian.
bool IsBigEndian(const HeaderText& text) {
    return EqualNoCase(text.Word("BYTEORDER", kMostWordCharacters).value_or(""), "MOTOROLA");
}

BandLayout LayoutOf(std::string_view name) {
    if (EqualNoCase(name, "bil")) return BandLayout::kByLine;
    if (EqualNoCase(name, "bip")) return BandLayout::kByPixel;
    if (EqualNoCase(name, "bsq")) return BandLayout::kSequential;
    return BandLayout::kUnknown;
}

/// `type` is a word of which the first letter counts.
PixelKind PixelKindOf(std::int32_t bits, std::string_view type) {
    const auto begins = [type](std::string_view letter) { return EqualNoCase(type.substr(0, 1), letter); };
    switch (bits) {
        case 8:
            return PixelKind::k8Bit;
        case 16:
            return begins("S") ? PixelKind::kSigned16 : PixelKind::kUnsigned16;
        case 32:
            return begins("S") ? PixelKind::kSigned32 : begins("F") ? PixelKind::kFloat : PixelKind::kUnsigned32;
        default:
            return PixelKind::kNone;
    }
}

/// Size and depth; false when they are not those of a raster.
bool ReadShape(const HeaderText& text, BandHeader& header) {
    header.columns = text.Integer("NCOLS").value_or(0);
    header.rows = text.Integer("NROWS").value_or(0);
    header.bits = text.Integer("NBITS").value_or(8);
    header.bands = text.Integer("NBANDS").value_or(1);
    header.pixelKind = PixelKindOf(header.bits, text.Word("PIXELTYPE", kMostWordCharacters).value_or("N"));
    const bool tooDeep = header.bands == 1 && header.bits > 32;
    return header.columns >= 1 && header.rows >= 1 && header.bits >= 1 && !tooDeep &&
           (header.bands == 1 || header.bands == 3);
}

/// Where the samples lie; false when a count is negative. The defaults of later counts depend on earlier ones.
bool ReadPlacement(const HeaderText& text, BandHeader& header) {
    header.layout = LayoutOf(text.Word("LAYOUT", kMostLayoutCharacters).value_or("bil"));
    header.skipBytes = Bytes(text, "SKIPBYTES", 0);
    header.recordSkipBytes = Bytes(text, "RECORDSKIPBYTES", 0);
    header.bandGapBytes = Bytes(text, "BANDGAPBYTES", 0);
    if (header.skipBytes < 0 || header.recordSkipBytes < 0 || header.bandGapBytes < 0) return false;

    const std::int64_t rowBits = Product(header.bits, header.columns);
    header.bandRowBytes = Bytes(text, "BANDROWBYTES", Sum(rowBits / 8, header.recordSkipBytes));
    if (header.bandRowBytes < 0) return false;

    const bool byPixel = header.layout == BandLayout::kByPixel;
    header.totalRowBytes =
        Bytes(text, "TOTALROWBYTES",
              byPixel ? Sum(Product(header.bands, rowBits), 7) / 8 : Product(header.bandRowBytes, header.bands));
    return header.totalRowBytes >= 0;
}

/// False when three bands come in an order that is not known.
bool ReadBandOrder(const HeaderText& text, BandHeader& header) {
    if (header.bands != 3) return true;
    const std::int32_t order = text.Integer("BAND_RGB").value_or(1);
    header.blueFirst = order == 3 || order == 321;
    return header.blueFirst || order == 1 || order == 123;
}

MapUnits MapUnitsOf(std::string_view name) {
    constexpr std::array<std::pair<std::string_view, MapUnits>, 4> kNames = {{{"inches", MapUnits::kInches},
                                                                              {"feet", MapUnits::kFeet},
                                                                              {"meters", MapUnits::kMeters},
                                                                              {"dd", MapUnits::kDegrees}}};
    const auto* found =
        std::ranges::find_if(kNames, [name](const auto& entry) { return EqualNoCase(entry.first, name); });
    return found == kNames.end() ? MapUnits::kNone : found->second;
}

Georeference ReadGeoreference(const HeaderText& text, std::int32_t rows) {
    Georeference place;
    place.cellWidth = text.Real("XDIM").value_or(0);
    place.cellHeight = text.Real("YDIM").value_or(0);
    place.mapX = text.Real("ULXMAP").value_or(0);
    place.mapY = text.Real("ULYMAP").value_or(0);
    place.cornerX = place.mapX - place.cellWidth * 0.5;
    place.cornerY = place.mapY - (rows - 0.5) * place.cellHeight;
    place.units = MapUnitsOf(text.Word("MAPUNITS", kMostWordCharacters).value_or(""));
    place.projection = text.Line("Projection", kMostWordCharacters).value_or("");
    place.datum = text.Line("Datum", kMostWordCharacters).value_or("");
    place.zone = text.Line("Zone", kMostWordCharacters).value_or("");
    return place;
}

/// Finds the palette of an 8-bit raster. A ".pal" file that is there and holds no palette still hides the ".clr" file.
std::optional<BandPalette> FindPalette(const KString& headerPath) {
    for (const wchar_t* extension : {L".pal", L".clr"}) {
        const std::optional<KString> path = PathWithExtension(headerPath, extension);
        if (path && CanOpen(*path)) return ReadBandPalette(*path);
    }
    return std::nullopt;
}

/// A single band is coloured by a palette with colours in it; any other palette maps values.
void UsePalette(const BandPalette& palette, BandHeader& header) {
    const bool coloursBand = header.bands == 1 && !IsGrey(palette);
    constexpr auto kEntries = static_cast<std::int32_t>(std::tuple_size_v<BandPalette>);
    header.palette = palette;
    header.colourEntries = coloursBand ? kEntries : 0;
    header.greyEntries = coloursBand ? 0 : kEntries;
}

}  // namespace

std::optional<BandHeader> ParseBandHeader(std::string_view whole, std::uint64_t dataBytes) {
    const HeaderText text(whole);
    BandHeader header;
    header.headerBytes = whole.size();
    if (IsBigEndian(text) || !ReadShape(text, header) || !ReadPlacement(text, header) || !ReadBandOrder(text, header)) {
        return std::nullopt;
    }
    const std::int64_t expected = Sum(Product(header.totalRowBytes, header.rows), header.skipBytes);
    if (dataBytes < static_cast<std::uint64_t>(expected)) return std::nullopt;
    header.georeference = ReadGeoreference(text, header.rows);
    return header;
}

std::optional<BandHeader> ReadBandHeader(const KString& path, std::uint64_t dataBytes) {
    const std::optional<std::string> text = ReadWhole(path, kMostHeaderBytes);
    std::optional<BandHeader> header = text ? ParseBandHeader(*text, dataBytes) : std::nullopt;
    if (!header) return std::nullopt;
    header->path = path.ToChars();
    if (header->bits == 8) {
        if (const std::optional<BandPalette> palette = FindPalette(path)) UsePalette(*palette, *header);
    }
    return header;
}

}  // namespace Kavra::Devices
