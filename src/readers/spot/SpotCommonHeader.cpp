#include "readers/spot/SpotCommonHeader.h"

#include "common/Limits.h"
#include "readers/SampleTables.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cwctype>
#include <limits>
#include <utility>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::Product;
using Common::Result;
using Common::Sum;

// --- Files -----------------------------------------------------------------------------------------------------------

namespace {

constexpr std::uint64_t kMaxTextBytes = 0x100000;

/// The file beside a path with the extension in small letters or in capitals.
Result<ByteSource> OpenBeside(const KString& path, const wchar_t* small, const wchar_t* capital) {
    Result<ByteSource> file = std::unexpected(Failure::kCannotOpen);
    for (const wchar_t* const extension : {small, capital}) {
        const std::optional<std::wstring> beside = PathWithExtension(path, extension);
        if (!file && beside) file = ByteSource::Open(KString(beside->c_str()));
    }
    return file;
}

}  // namespace

SpotName SpotNameOf(std::wstring_view path) {
    constexpr std::array<std::pair<std::wstring_view, SpotName>, 4> kNames = {{{L".bil", SpotName::kByLine},
                                                                               {L".bip", SpotName::kByPixel},
                                                                               {L".bsq", SpotName::kSequential},
                                                                               {L".flt", SpotName::kFloats}}};
    const auto lower = [](wchar_t letter) { return std::towlower(static_cast<wint_t>(letter)); };
    for (const auto& [extension, name] : kNames) {
        if (path.size() < extension.size()) continue;
        if (std::ranges::equal(path.substr(path.size() - extension.size()), extension, {}, lower, lower)) return name;
    }
    return SpotName::kOther;
}

Result<PictureFiles> OpenSpotCommonFiles(const KString& path, ByteSource* open) {
    Result<ByteSource> header = OpenBeside(path, L".hdr", L".HDR");
    if (!header) return std::unexpected(header.error());
    Result<ByteSource> data = open != nullptr ? Result<ByteSource>(open->Again()) : ByteSource::Open(path);
    if (!data) return std::unexpected(data.error());
    return PictureFiles{path.ToChars(), *std::move(data), *std::move(header)};
}

// --- The header's text -----------------------------------------------------------------------------------------------

namespace {

constexpr std::string_view kBlanks = " \t=";

std::string_view TakeWord(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(kBlanks));
    line.remove_prefix(word.size());
    return word;
}

/// Takes the first line off `text`, which ends with a line feed, a carriage return or both.
std::string_view TakeLine(std::string_view& text) {
    const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    return line;
}

/// Values by keyword.
class Lines {
public:
    explicit Lines(std::string_view text) : mText(text.substr(0, text.find('\0'))) {}

    /// The word behind a keyword; empty where there is none.
    std::string_view Word(std::string_view keyword) const {
        std::string_view found;
        for (std::string_view rest = mText; !rest.empty();) {
            std::string_view line = TakeLine(rest);
            if (!EqualNoCase(TakeWord(line), keyword)) continue;
            if (const std::string_view value = TakeWord(line); !value.empty()) found = value;
        }
        return found;
    }
    std::optional<std::int32_t> Integer(std::string_view keyword) const { return TextScanner(Word(keyword)).Integer(); }
    std::optional<double> Real(std::string_view keyword) const { return TextScanner(Word(keyword)).Real(); }

    /// A count of bytes, where it is at least so much.
    std::int64_t Bytes(std::string_view keyword, std::int64_t least) const {
        return std::max<std::int64_t>(Integer(keyword).value_or(0), least);
    }
    bool Begins(std::string_view keyword, std::string_view letter) const {
        return EqualNoCase(Word(keyword).substr(0, 1), letter);
    }

private:
    std::string_view mText;
};

// --- The header ------------------------------------------------------------------------------------------------------

constexpr std::int32_t kMaxBands = 65535;
constexpr int kMaxIndexBits = 16;

/// Whether samples are unsigned, signed or floats: U, S or F.
char TypeOf(const Lines& text, const SpotHeader& header, SpotName name) {
    for (const char type : {'U', 'S', 'F'}) {
        if (text.Begins("PIXELTYPE", {&type, 1})) return type;
    }
    if (name == SpotName::kFloats) return 'F';
    const double lowest = -std::ldexp(1.0, header.bits - 1);
    return header.noData && *header.noData < 0 && *header.noData >= lowest ? 'S' : 'U';
}

SampleKind KindOf(std::int32_t bits, char type) {
    const bool isSigned = type == 'S';
    if (bits >= 1 && bits < 8) return SampleKind::kPacked;
    switch (bits) {
        case 8:
            return isSigned ? SampleKind::kSigned8 : SampleKind::k8Bit;
        case 16:
            return isSigned ? SampleKind::kSigned16 : SampleKind::kUnsigned16;
        case 32:
            if (type == 'F') return SampleKind::kFloat;
            return isSigned ? SampleKind::kSigned32 : SampleKind::kUnsigned32;
        case 64:
            return type == 'F' ? SampleKind::kDouble : SampleKind::kNone;
        default:
            return SampleKind::kNone;
    }
}

/// The bytes that each sample has where nothing but the length of the file tells; 0 where that says nothing.
std::int64_t BytesBySize(const Lines& text, const SpotHeader& header, std::uint64_t dataBytes) {
    for (const char* const keyword : {"BANDROWBYTES", "TOTALROWBYTES", "BANDGAPBYTES", "RECORDSKIPBYTES"}) {
        if (!text.Word(keyword).empty()) return 0;
    }
    const std::int64_t samples = Product(Product(header.columns, header.rows), header.bands);
    const auto bytes = static_cast<std::int64_t>(
        std::min<std::uint64_t>(dataBytes, static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())));
    return std::max<std::int64_t>(bytes - header.skipBytes, 0) / samples;
}

/// Whether a sample can be this number.
bool CanHave(const SpotHeader& header, double number) {
    switch (header.sampleKind) {
        case SampleKind::kFloat:
        case SampleKind::kDouble:
            return true;
        case SampleKind::kSigned8:
        case SampleKind::kSigned16:
        case SampleKind::kSigned32: {
            const double half = std::ldexp(1.0, header.bits - 1);
            return number == std::floor(number) && number >= -half && number < half;
        }
        default:
            return number == std::floor(number) && number >= 0 && number < std::ldexp(1.0, header.bits);
    }
}

void ReadSamples(const Lines& text, std::uint64_t dataBytes, SpotName name, SpotHeader& header) {
    header.noData = text.Real("NODATA");
    if (!header.noData) header.noData = text.Real("NODATA_VALUE");
    const std::int64_t bytes = BytesBySize(text, header, dataBytes);
    const bool isLong = bytes == 4 || bytes == 8;
    const bool isUntold = text.Word("NBITS").empty();
    const bool holdsFloats = name == SpotName::kFloats || text.Begins("PIXELTYPE", "F");
    std::int64_t bits = 8;
    if (holdsFloats) {
        bits = bytes == 8 ? 64 : 32;
    } else if (bytes == 2 || isLong) {
        bits = 8 * bytes;
    }
    header.bits = text.Integer("NBITS").value_or(static_cast<std::int32_t>(bits));
    const bool seemsFloat = isUntold && isLong && text.Word("PIXELTYPE").empty();
    header.sampleKind = KindOf(header.bits, seemsFloat ? 'F' : TypeOf(text, header, name));
    if (header.noData && !CanHave(header, *header.noData)) header.noData.reset();  // then it says nothing
    header.bigEndian =
        !text.Word("BYTEORDER").empty() && !text.Begins("BYTEORDER", "I") && !text.Begins("BYTEORDER", "L");
}

SpotLayout LayoutOf(std::string_view word, SpotName name) {
    if (EqualNoCase(word, "bip")) return SpotLayout::kByPixel;
    if (EqualNoCase(word, "bsq")) return SpotLayout::kSequential;
    if (word.empty() && name == SpotName::kByPixel) return SpotLayout::kByPixel;
    if (word.empty() && name == SpotName::kSequential) return SpotLayout::kSequential;
    return SpotLayout::kByLine;
}

/// Some versions of GDAL say how few bits samples have and write a byte for each: the length tells.
bool AreBytes(const SpotHeader& header, std::uint64_t dataBytes) {
    const std::int64_t samples = Product(Product(header.columns, header.rows), header.bands);
    const std::int64_t lines = header.layout == SpotLayout::kByPixel ? 1 : header.bands;
    const std::int64_t packed = Product(Product(SpotLineBytes(header), header.rows), lines);
    const auto bytes = static_cast<std::uint64_t>(Sum(header.skipBytes, samples));
    return header.sampleKind == SampleKind::kPacked && dataBytes == bytes && samples > packed;
}

/// Where the samples lie.
void ReadPlaces(const Lines& text, SpotHeader& header) {
    header.bandGapBytes = text.Bytes("BANDGAPBYTES", 0);
    if (header.layout == SpotLayout::kByPixel) {
        header.bandRowBytes = header.totalRowBytes = text.Bytes("TOTALROWBYTES", SpotLineBytes(header));
        return;
    }
    header.recordSkipBytes = text.Bytes("RECORDSKIPBYTES", 0);
    header.bandRowBytes = text.Bytes("BANDROWBYTES", Sum(SpotLineBytes(header), header.recordSkipBytes));
    const std::int64_t all = Product(header.bandRowBytes, header.bands);
    header.totalRowBytes = text.Bytes("TOTALROWBYTES", all);
    if (header.layout != SpotLayout::kSequential) return;
    // Writers differ in whether the rows of all bands are meant.
    const std::int64_t given = text.Bytes("TOTALROWBYTES", header.bandRowBytes);
    header.bandRowBytes = given >= all ? given / header.bands : given;
    header.totalRowBytes = header.bandRowBytes;
}

}  // namespace

std::int64_t SpotLineBytes(const SpotHeader& header) {
    const std::int64_t rowBits = Product(header.inBytes ? 8 : header.bits, header.columns);
    return Sum(header.layout == SpotLayout::kByPixel ? Product(rowBits, header.bands) : rowBits, 7) / 8;
}

Result<SpotHeader> ParseSpotCommonHeader(std::string_view whole, std::uint64_t dataBytes, SpotName name) {
    const Lines text(whole);
    SpotHeader header;
    header.headerBytes = whole.size();
    header.columns = text.Integer("NCOLS").value_or(0);
    header.rows = text.Integer("NROWS").value_or(0);
    header.bands = text.Integer("NBANDS").value_or(1);
    if (header.columns < 1 || header.rows < 1 || header.bands < 1 || header.bands > kMaxBands) {
        return std::unexpected(Failure::kMalformed);
    }
    header.skipBytes = text.Bytes("SKIPBYTES", 0);
    ReadSamples(text, dataBytes, name, header);
    if (header.sampleKind == SampleKind::kNone) return std::unexpected(Failure::kUnsupported);
    // One band lies by line whatever the layout is called.
    header.layout = header.bands == 1 ? SpotLayout::kByLine : LayoutOf(text.Word("LAYOUT"), name);
    header.inBytes = AreBytes(header, dataBytes);
    ReadPlaces(text, header);
    const std::int32_t order = text.Integer("BAND_RGB").value_or(1);
    header.blueFirst = header.bands == 3 && (order == 3 || order == 321);
    return header;
}

Result<SpotHeader> ReadSpotCommonHeader(PictureFiles& files) {
    if (!files.header) return std::unexpected(Failure::kCannotOpen);
    return ReadWhole(*files.header, kMaxTextBytes).and_then([&](const std::string& text) {
        return ParseSpotCommonHeader(text, files.source.Size(), SpotNameOf(files.path));
    });
}

std::int64_t SpotRowsIn(const SpotHeader& header, std::uint64_t dataBytes) {
    const bool isSequential = header.layout == SpotLayout::kSequential;
    const std::int64_t row = isSequential ? header.bandRowBytes : header.totalRowBytes;
    const std::int64_t bandStride =
        isSequential ? Sum(Product(row, header.rows), header.bandGapBytes) : header.bandRowBytes;
    const std::int64_t before = header.layout == SpotLayout::kByPixel ? 0 : Product(bandStride, header.bands - 1);
    const std::int64_t first = Sum(Sum(header.skipBytes, before), Sum(header.recordSkipBytes, SpotLineBytes(header)));
    if (dataBytes < static_cast<std::uint64_t>(first)) return 0;
    const std::uint64_t others = (dataBytes - static_cast<std::uint64_t>(first)) / static_cast<std::uint64_t>(row);
    return static_cast<std::int64_t>(std::min<std::uint64_t>(others, static_cast<std::uint64_t>(header.rows - 1))) + 1;
}

// --- Colours ---------------------------------------------------------------------------------------------------------

namespace {

/// Sets the pixel of the value that a line of a colour file is about; false where it is about none.
bool ApplyLine(std::string_view line, std::vector<std::uint32_t>& colours) {
    if (line.starts_with('#') || line.starts_with('!')) return false;
    TextScanner scanner(line);
    std::array<std::int32_t, 4> numbers{};
    for (std::int32_t& number : numbers) {
        const std::optional<std::int32_t> scanned = scanner.Integer();
        if (!scanned) return false;
        number = *scanned;
    }
    const auto component = [&](std::size_t i) { return static_cast<unsigned char>(std::clamp(numbers[i], 0, 255)); };
    const std::int32_t value = numbers[0];
    if (value < 0 || static_cast<std::size_t>(value) >= colours.size()) return false;
    colours[static_cast<std::size_t>(value)] = PackedPixel(component(1), component(2), component(3), 255);
    return true;
}

std::vector<std::uint32_t> ParseColours(std::string_view text, std::size_t values) {
    text = text.substr(0, text.find('\0'));
    std::vector<std::uint32_t> colours(values);
    bool anySet = false;
    while (!text.empty())
        anySet |= ApplyLine(TakeLine(text), colours);
    if (!anySet) colours.clear();
    return colours;
}

constexpr std::uint32_t kAlpha = PackedPixel(0, 0, 0, 255);

/// The grey of each value of up to 8 bits where all of them have one; nothing otherwise.
std::optional<SpotPalette> GreysOf(const std::vector<std::uint32_t>& colours) {
    SpotPalette greys{};
    if (colours.empty() || colours.size() > greys.size()) return std::nullopt;
    for (std::size_t value = 0; value < colours.size(); ++value) {
        const auto bytes = std::bit_cast<std::array<unsigned char, 4>>(colours[value]);
        if (bytes[3] != 255 || bytes[0] != bytes[1] || bytes[1] != bytes[2]) return std::nullopt;
        greys[value] = {bytes[0], bytes[1], bytes[2]};
    }
    return greys;
}

}  // namespace

void AddSpotColours(const KString& path, SpotHeader& header) {
    const bool isIndex = header.bits <= kMaxIndexBits && header.sampleKind != SampleKind::kSigned8;
    if (header.bands != 1 || !isIndex) return;
    const auto parse = [&](ByteSource&& file) {
        return ReadWhole(file, kMaxTextBytes).transform([&](const std::string& text) {
            return ParseColours(text, std::size_t{1} << header.bits);
        });
    };
    for (const auto& [small, capital] : {std::pair(L".clr", L".CLR"), std::pair(L".pal", L".PAL")}) {
        header.colours = OpenBeside(path, small, capital).and_then(parse).value_or(std::vector<std::uint32_t>());
        if (!header.colours.empty()) break;
    }
    if (header.noData && *header.noData >= 0 && *header.noData < static_cast<double>(header.colours.size())) {
        header.colours[static_cast<std::size_t>(*header.noData)] &= ~kAlpha;
    }
    if (const std::optional<SpotPalette> greys = GreysOf(header.colours)) {
        header.palette = *greys;
        header.greyEntries = static_cast<std::int32_t>(greys->size());
        header.colours.clear();
    }
}

std::vector<std::uint32_t> SpotValuePixels(const SpotHeader& header) {
    std::vector<std::uint32_t> pixels(header.colours);
    pixels.resize(256);
    if (!header.colours.empty()) return pixels;
    const unsigned white = (1U << header.bits) - 1;
    for (unsigned value = 0; value <= white; ++value) {
        const auto shade = static_cast<unsigned char>((value * 255 + white / 2) / white);
        const unsigned char grey = header.greyEntries > 0 ? header.palette[value].red : shade;
        pixels[value] = PackedPixel(grey, grey, grey, 255);
    }
    if (header.noData && *header.noData >= 0) pixels[static_cast<std::size_t>(*header.noData)] &= ~kAlpha;
    return pixels;
}

}  // namespace Kavra::Devices
