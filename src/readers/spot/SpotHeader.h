/// What lies beside the samples of a Spot raster: its header and its palette, both text. `SpotReader.h` lists the
/// keywords.
#pragma once

#include "readers/ImageReaderInterface.h"
#include "readers/TextScanner.h"

#include <kavra/devices/Export.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kavra::Devices {

/// The path with its extension - from the last "." of its last component - replaced by `extension`, which begins with a
/// "."; nothing when it has none.
std::optional<std::wstring> PathWithExtension(const KString& path, const wchar_t* extension);

/// Opens the ".bil" and ".hdr" files that share the path's name; the path may have any extension, but needs one. `open`
/// is the file at the path itself where it is open already: it is looked at once more instead of opened. Fails unless
/// both are there.
[[nodiscard]] Common::Result<PictureFiles> OpenSpotFiles(const KString& path, Common::ByteSource* open = nullptr);

/// A file whole, as text. Fails when it cannot be read or has more than `maxBytes` bytes.
[[nodiscard]] Common::Result<std::string> ReadWhole(Common::ByteSource& file, std::uint64_t maxBytes);

struct SpotColour {
    std::uint8_t red = 0, green = 0, blue = 0;
    bool operator==(const SpotColour&) const = default;
};

using SpotPalette = std::array<SpotColour, 256>;

/// Entry i is (i, i, i).
SpotPalette GreyRamp();

/// Whether red, green and blue agree in every entry.
bool IsGrey(const SpotPalette& palette);

/// The palette that a text describes: lines of "index red green blue", the colours taken modulo 256. Lines that begin
/// with "!" are comments; a line without four numbers, or with an index outside 1 to 255, does not count - entry 0
/// always stays black. Entries without a line keep their grey. A NUL ends the text. Fails when no line counts.
[[nodiscard]] Common::Result<SpotPalette> ParseSpotPalette(std::string_view text);

/// The palette in a file of at most 1 MiB.
[[nodiscard]] Common::Result<SpotPalette> ReadSpotPalette(const KString& path);

/// Looks values up by keyword.
///
/// A line has a keyword when it begins with it, in any case, whatever follows: "NCOLSX 5" has NCOLS. The first such
/// line counts. In a last line without a line feed the keyword may stand anywhere, then in its own case. Exactly one
/// character after the keyword is skipped, whatever it is, and spaces after that; the value begins there, possibly on a
/// later line. So "NCOLS=5", "NCOLS 5" and "NCOLS\t5" say 5, and "NCOLS15" says 5 as well. A NUL ends the text.
class HeaderText {
public:
    /// The text stays its owner's.
    explicit HeaderText(std::string_view text) : mText(text.substr(0, text.find('\0'))) {}

    /// What follows a keyword; nothing when the keyword is absent, or the very last thing in the text.
    std::optional<TextScanner> After(std::string_view keyword) const;

    std::optional<std::int32_t> Integer(std::string_view keyword) const;
    std::optional<double> Real(std::string_view keyword) const;
    /// A word, cut at `maximum` characters.
    std::optional<std::string_view> Word(std::string_view keyword, std::size_t maximum) const;
    /// The rest of the line, likewise cut.
    std::optional<std::string_view> Line(std::string_view keyword, std::size_t maximum) const;

private:
    std::string_view mText;
};

/// How the bands of a raster are interleaved.
enum class SpotLayout { kUnknown, kByLine, kByPixel, kSequential };

/// What a sample is.
enum class SampleKind {
    kNone = 0,
    k8Bit = 1,
    kUnsigned16 = 2,
    kSigned16 = 3,
    kUnsigned32 = 4,
    kSigned32 = 5,
    kFloat = 6,
    // Read in the common reading alone:
    kPacked = 7,  ///< of 1 to 7 bits, the first highest in its byte
    kSigned8 = 8,
    kDouble = 9
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

/// A header that was accepted, which means in the contract's reading: 1 or 3 bands; columns, rows and bits at least 1; no count of bytes
/// negative; at most 32 bits where there is one band; and as many bytes of data as it needs. Counts of bytes that no
/// file can have stop at the largest 64-bit number.
struct SpotHeader {
    std::wstring path;              ///< of the header itself
    std::uint64_t headerBytes = 0;  ///< its length
    std::int32_t columns = 0;
    std::int32_t rows = 0;
    std::int32_t bits = 8;  ///< of a sample
    std::int32_t bands = 1;
    SpotLayout layout = SpotLayout::kByLine;
    SampleKind sampleKind = SampleKind::kNone;
    std::int64_t skipBytes = 0;        ///< before the first row
    std::int64_t recordSkipBytes = 0;  ///< before the samples of a row
    std::int64_t bandRowBytes = 0;     ///< one row of one band, the record skip included
    std::int64_t totalRowBytes = 0;    ///< one row of all bands
    std::int64_t bandGapBytes = 0;     ///< between bands that lie one after another
    bool blueFirst = false;            ///< the first of three bands is blue and the third red
    std::int32_t colourEntries = 0;    ///< 256 where the palette holds the colours of a single band, else 0
    std::int32_t greyEntries = 0;      ///< 256 where the palette maps the values of each band, else 0
    SpotPalette palette = GreyRamp();
    Georeference georeference;

    // Of the common reading alone:
    bool inBytes = false;                ///< a sample of less than 8 bits takes a byte all the same
    bool fitsWords = false;              ///< of signed and long integers: all are unsigned ones of 16 bits
    bool bigEndian = false;              ///< numbers of several bytes begin with the highest
    std::optional<double> noData;        ///< the sample that says that a pixel has no value
    std::vector<std::uint32_t> colours;  ///< the four bytes of each value's pixel; empty: values are shown as such
};

/// Parses the text of a header for a pixel file of `dataBytes` bytes, without palette and path. Fails when it is not
/// accepted. A value that cannot be read counts as absent.
[[nodiscard]] Common::Result<SpotHeader> ParseSpotHeader(std::string_view text, std::uint64_t dataBytes);

/// Reads a header file of at most 20 KiB so. The position of the source does not matter and is not kept.
[[nodiscard]] Common::Result<SpotHeader> ReadSpotHeader(Common::ByteSource& file, std::uint64_t dataBytes);

/// Gives an 8-bit raster the palette that lies beside a path of its name: the file with the extension ".pal" or, where
/// there is none, ".clr". A palette that is not one is left out.
void AddSpotPalette(const KString& path, SpotHeader& header);

}  // namespace Kavra::Devices
