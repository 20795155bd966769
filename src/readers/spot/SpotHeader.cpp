#include "readers/spot/SpotHeader.h"

#include "common/Limits.h"

#include <kavra/objects/OS.h>

#include <algorithm>
#include <cwchar>
#include <utility>
#include <vector>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::Product;
using Common::Result;
using Common::Sum;

// --- Files -----------------------------------------------------------------------------------------------------------

std::optional<std::wstring> PathWithExtension(const KString& path, const wchar_t* extension) {
    std::wstring present(path.GetLen() + 1, L'\0');
    OS::_wsplitpath(path, nullptr, nullptr, nullptr, present.data());
    const std::size_t length = std::wcslen(present.c_str());
    if (length == 0) return std::nullopt;
    return std::wstring(path.ToChars(), path.GetLen() - length) + extension;
}

Result<PictureFiles> OpenSpotFiles(const KString& path, ByteSource* open) {
    const std::optional<std::wstring> dataPath = PathWithExtension(path, L".bil");
    const std::optional<std::wstring> headerPath = PathWithExtension(path, L".hdr");
    if (!dataPath || !headerPath) return std::unexpected(Failure::kCannotOpen);
    const bool isOpen = open != nullptr && *dataPath == path.ToChars();
    Result<ByteSource> data = isOpen ? Result<ByteSource>(open->Again()) : ByteSource::Open(KString(dataPath->c_str()));
    if (!data) return std::unexpected(data.error());
    Result<ByteSource> header = ByteSource::Open(KString(headerPath->c_str()));
    if (!header) return std::unexpected(header.error());
    return PictureFiles{path.ToChars(), *std::move(data), *std::move(header)};
}

Result<std::string> ReadWhole(ByteSource& file, std::uint64_t maxBytes) {
    if (file.Size() > maxBytes) return std::unexpected(Failure::kTooLarge);
    std::vector<unsigned char> bytes(static_cast<std::size_t>(file.Size()));
    return file.Seek(0).and_then([&] { return file.Read(bytes); }).transform([&] {
        return std::string(bytes.begin(), bytes.end());
    });
}

// --- The palette -----------------------------------------------------------------------------------------------------

namespace {

constexpr std::uint64_t kMaxPaletteBytes = 0x100000;

/// Takes the first line off `text`, its line feed included, and returns it without.
std::string_view TakeLine(std::string_view& text) {
    const std::size_t length = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    return line;
}

/// Sets the entry that a line gives; false when it gives none.
bool ApplyLine(std::string_view line, SpotPalette& palette) {
    if (line.starts_with('!')) return false;
    TextScanner scanner(line);
    std::array<std::int32_t, 4> numbers{};
    for (std::int32_t& number : numbers) {
        const std::optional<std::int32_t> scanned = scanner.Integer();
        if (!scanned) return false;
        number = *scanned;
    }
    const auto [index, red, green, blue] = numbers;
    if (index < 1 || index > 255) return false;
    palette[static_cast<std::size_t>(index)] = {static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green),
                                                static_cast<std::uint8_t>(blue)};
    return true;
}

}  // namespace

SpotPalette GreyRamp() {
    SpotPalette palette;
    for (std::size_t i = 0; i < palette.size(); ++i) {
        const auto grey = static_cast<std::uint8_t>(i);
        palette[i] = {grey, grey, grey};
    }
    return palette;
}

bool IsGrey(const SpotPalette& palette) {
    return std::ranges::all_of(
        palette, [](const SpotColour& colour) { return colour.red == colour.green && colour.green == colour.blue; });
}

Result<SpotPalette> ParseSpotPalette(std::string_view text) {
    text = text.substr(0, text.find('\0'));
    SpotPalette palette = GreyRamp();
    bool anySet = false;
    while (!text.empty())
        anySet |= ApplyLine(TakeLine(text), palette);
    if (!anySet) return std::unexpected(Failure::kMalformed);
    return palette;
}

Result<SpotPalette> ReadSpotPalette(const KString& path) {
    return ByteSource::Open(path)
        .and_then([](ByteSource&& file) { return ReadWhole(file, kMaxPaletteBytes); })
        .and_then([](const std::string& text) { return ParseSpotPalette(text); });
}

// --- The header's text -----------------------------------------------------------------------------------------------

namespace {

/// The text from the keyword on.
std::optional<std::string_view> Find(std::string_view text, std::string_view keyword) {
    for (;;) {
        if (EqualNoCase(text.substr(0, keyword.size()), keyword)) return text;
        const std::size_t feed = text.find('\n');
        if (feed == std::string_view::npos) break;
        text.remove_prefix(feed + 1);
    }
    const std::size_t inside = text.find(keyword);
    return inside == std::string_view::npos ? std::nullopt : std::optional(text.substr(inside));
}

}  // namespace

std::optional<TextScanner> HeaderText::After(std::string_view keyword) const {
    const std::optional<std::string_view> found = Find(mText, keyword);
    if (!found || found->size() == keyword.size()) return std::nullopt;
    const std::string_view value = found->substr(keyword.size() + 1);
    return TextScanner(value.substr(std::min(value.find_first_not_of(' '), value.size())));
}

std::optional<std::int32_t> HeaderText::Integer(std::string_view keyword) const {
    return After(keyword).and_then([](TextScanner scanner) { return scanner.Integer(); });
}

std::optional<double> HeaderText::Real(std::string_view keyword) const {
    return After(keyword).and_then([](TextScanner scanner) { return scanner.Real(); });
}

std::optional<std::string_view> HeaderText::Word(std::string_view keyword, std::size_t maximum) const {
    return After(keyword).and_then([maximum](TextScanner scanner) { return scanner.Word(maximum); });
}

std::optional<std::string_view> HeaderText::Line(std::string_view keyword, std::size_t maximum) const {
    return After(keyword).and_then([maximum](TextScanner scanner) { return scanner.Line(maximum); });
}

// --- The header ------------------------------------------------------------------------------------------------------

namespace {

constexpr std::uint64_t kMaxHeaderBytes = 20480;
constexpr std::size_t kMaxLayoutCharacters = 10;
constexpr std::size_t kMaxWordCharacters = 63;

/// A count of bytes; `fallback` may be larger than any that a header can give.
std::int64_t Bytes(const HeaderText& text, std::string_view keyword, std::int64_t fallback) {
    const std::optional<std::int32_t> bytes = text.Integer(keyword);
    return bytes ? *bytes : fallback;
}

/// Only the full word counts: headers of big-endian rasters that say "M" are taken as little-endian.
bool IsBigEndian(const HeaderText& text) {
    return EqualNoCase(text.Word("BYTEORDER", kMaxWordCharacters).value_or(""), "MOTOROLA");
}

SpotLayout LayoutOf(std::string_view name) {
    if (EqualNoCase(name, "bil")) return SpotLayout::kByLine;
    if (EqualNoCase(name, "bip")) return SpotLayout::kByPixel;
    if (EqualNoCase(name, "bsq")) return SpotLayout::kSequential;
    return SpotLayout::kUnknown;
}

/// `type` is a word of which the first letter counts.
SampleKind SampleKindOf(std::int32_t bits, std::string_view type) {
    const auto begins = [type](std::string_view letter) { return EqualNoCase(type.substr(0, 1), letter); };
    switch (bits) {
        case 8:
            return SampleKind::k8Bit;
        case 16:
            return begins("S") ? SampleKind::kSigned16 : SampleKind::kUnsigned16;
        case 32:
            return begins("S") ? SampleKind::kSigned32 : begins("F") ? SampleKind::kFloat : SampleKind::kUnsigned32;
        default:
            return SampleKind::kNone;
    }
}

/// Size and depth; false when they are not those of a raster.
bool ReadShape(const HeaderText& text, SpotHeader& header) {
    header.columns = text.Integer("NCOLS").value_or(0);
    header.rows = text.Integer("NROWS").value_or(0);
    header.bits = text.Integer("NBITS").value_or(8);
    header.bands = text.Integer("NBANDS").value_or(1);
    header.sampleKind = SampleKindOf(header.bits, text.Word("PIXELTYPE", kMaxWordCharacters).value_or("N"));
    const bool tooDeep = header.bands == 1 && header.bits > 32;
    return header.columns >= 1 && header.rows >= 1 && header.bits >= 1 && !tooDeep &&
           (header.bands == 1 || header.bands == 3);
}

/// Where the samples lie; false when a count is negative. The defaults of later counts depend on earlier ones.
bool ReadPlacement(const HeaderText& text, SpotHeader& header) {
    header.layout = LayoutOf(text.Word("LAYOUT", kMaxLayoutCharacters).value_or("bil"));
    header.skipBytes = Bytes(text, "SKIPBYTES", 0);
    header.recordSkipBytes = Bytes(text, "RECORDSKIPBYTES", 0);
    header.bandGapBytes = Bytes(text, "BANDGAPBYTES", 0);
    if (header.skipBytes < 0 || header.recordSkipBytes < 0 || header.bandGapBytes < 0) return false;

    const std::int64_t rowBits = Product(header.bits, header.columns);
    header.bandRowBytes = Bytes(text, "BANDROWBYTES", Sum(rowBits / 8, header.recordSkipBytes));
    if (header.bandRowBytes < 0) return false;

    const bool byPixel = header.layout == SpotLayout::kByPixel;
    header.totalRowBytes =
        Bytes(text, "TOTALROWBYTES",
              byPixel ? Sum(Product(header.bands, rowBits), 7) / 8 : Product(header.bandRowBytes, header.bands));
    return header.totalRowBytes >= 0;
}

/// False when three bands come in an order that is not known.
bool ReadBandOrder(const HeaderText& text, SpotHeader& header) {
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
    place.units = MapUnitsOf(text.Word("MAPUNITS", kMaxWordCharacters).value_or(""));
    place.projection = text.Line("Projection", kMaxWordCharacters).value_or("");
    place.datum = text.Line("Datum", kMaxWordCharacters).value_or("");
    place.zone = text.Line("Zone", kMaxWordCharacters).value_or("");
    return place;
}

/// A ".pal" file that is there and holds no palette still hides the ".clr" file.
Result<SpotPalette> FindPalette(const KString& beside) {
    Result<SpotPalette> palette = std::unexpected(Failure::kCannotOpen);
    for (const wchar_t* extension : {L".pal", L".clr"}) {
        const std::optional<std::wstring> path = PathWithExtension(beside, extension);
        if (path) palette = ReadSpotPalette(KString(path->c_str()));
        if (palette || palette.error() != Failure::kCannotOpen) break;
    }
    return palette;
}

/// A single band is coloured by a palette with colours in it; any other palette maps values.
void UsePalette(const SpotPalette& palette, SpotHeader& header) {
    const bool coloursBand = header.bands == 1 && !IsGrey(palette);
    constexpr auto kEntries = static_cast<std::int32_t>(std::tuple_size_v<SpotPalette>);
    header.palette = palette;
    header.colourEntries = coloursBand ? kEntries : 0;
    header.greyEntries = coloursBand ? 0 : kEntries;
}

}  // namespace

Result<SpotHeader> ParseSpotHeader(std::string_view whole, std::uint64_t dataBytes) {
    const HeaderText text(whole);
    SpotHeader header;
    header.headerBytes = whole.size();
    if (IsBigEndian(text)) return std::unexpected(Failure::kUnsupported);
    if (!ReadShape(text, header) || !ReadPlacement(text, header) || !ReadBandOrder(text, header)) {
        return std::unexpected(Failure::kMalformed);
    }
    const std::int64_t expected = Sum(Product(header.totalRowBytes, header.rows), header.skipBytes);
    if (dataBytes < static_cast<std::uint64_t>(expected)) return std::unexpected(Failure::kTruncated);
    header.georeference = ReadGeoreference(text, header.rows);
    return header;
}

Result<SpotHeader> ReadSpotHeader(ByteSource& file, std::uint64_t dataBytes) {
    return ReadWhole(file, kMaxHeaderBytes).and_then([&](const std::string& text) {
        return ParseSpotHeader(text, dataBytes);
    });
}

void AddSpotPalette(const KString& path, SpotHeader& header) {
    if (header.bits != 8) return;
    if (const Result<SpotPalette> palette = FindPalette(path)) UsePalette(*palette, header);
}

}  // namespace Kavra::Devices
