#include "readers/pcx/PcxCommonColours.h"

#include "readers/pcx/PcxCommonRows.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <span>

namespace Kavra::Devices {

using Common::ByteSource;

namespace {

using Pixels = Table256<std::uint32_t>;
using Entry = std::array<unsigned char, 3>;

constexpr std::size_t kTripleBytes = 3;
constexpr std::uint64_t kTrailingBytes = 256 * kTripleBytes;
constexpr unsigned char kMarker = 12;
constexpr std::uint16_t kGreyPalette = 2;

std::uint32_t PixelOf(const Entry& entry) {
    return PackedPixel(entry[0], entry[1], entry[2], 255);
}

Pixels Greys(std::size_t count) {
    Pixels pixels{};
    for (std::size_t i = 0; i < count; ++i) {
        const auto grey = static_cast<unsigned char>(i * 255 / (count - 1));
        pixels[i] = PixelOf({grey, grey, grey});
    }
    return pixels;
}

/// Colour `i` of the 16 that the CGA has and the EGA starts with.
Entry EgaColour(std::size_t i) {
    constexpr std::size_t kBrown = 6, kBright = 8;
    const auto bright = static_cast<unsigned char>((i & kBright) != 0 ? 0x55 : 0);
    const auto component = [&](std::size_t bit) {
        return static_cast<unsigned char>(((i & bit) != 0 ? 0xAA : 0) + bright);
    };
    if (i == kBrown) return {0xAA, 0x55, 0};
    return {component(4), component(2), component(1)};
}

// --- The header's palette --------------------------------------------------------------------------------------------

Entry HeaderEntry(const PcxHeader& header, std::size_t i) {
    return {header.palette[3 * i], header.palette[3 * i + 1], header.palette[3 * i + 2]};
}

bool AreAlike(const PcxHeader& header, std::size_t count) {
    for (std::size_t i = 1; i < count; ++i) {
        if (HeaderEntry(header, i) != HeaderEntry(header, 0)) return false;
    }
    return true;
}

/// PC Paintbrush 2.5 and what version 3 stands for kept no palette, whatever is in its place.
bool HasPalette(const PcxHeader& header, std::size_t count) {
    return header.version != 0 && header.version != 3 && !AreAlike(header, count);
}

/// Whether the first two entries are settings of a CGA: the background in the high four bits of the first byte, the
/// other colours in the high three of the fourth.
bool AreCgaSettings(const PcxHeader& header) {
    const Entry first = HeaderEntry(header, 0), second = HeaderEntry(header, 1);
    return (first[0] & 0x0F) == 0 && first[1] == 0 && first[2] == 0 && (second[0] & 0x1F) == 0 && second[1] == 0 &&
           second[2] == 0;
}

/// PC Paintbrush IV writes the second colour there, which on a CGA is green or cyan.
bool IsCgaColour(const PcxHeader& header) {
    const Entry second = HeaderEntry(header, 1);
    return header.paletteInfo != 0 && second[0] < std::max(second[1], second[2]);
}

/// Four colours of a CGA, if these are what the header has; else its third and fourth colour would hardly both be black.
std::optional<Pixels> CgaColours(const PcxHeader& header) {
    if (HeaderEntry(header, 2) != Entry{} || HeaderEntry(header, 3) != Entry{}) return std::nullopt;
    const bool isByColour = IsCgaColour(header);
    if (!isByColour && !AreCgaSettings(header)) return std::nullopt;
    const Entry second = HeaderEntry(header, 1);
    const bool hasBlue = isByColour ? second[1] <= second[2] : (second[0] & 0x40) != 0;  // cyan, magenta and white
    const bool isBright = isByColour ? std::max(second[1], second[2]) > 200 : (second[0] & 0x20) != 0;
    Pixels pixels{};
    pixels[0] = PixelOf(EgaColour(header.palette[0] >> 4));
    for (std::size_t i = 1; i < 4; ++i)
        pixels[i] = PixelOf(EgaColour(2 * i + (hasBlue ? 1 : 0) + (isBright ? 8 : 0)));
    return pixels;
}

/// Whether a file of two colours begins with those that every EGA starts with: nobody chose them.
bool AreFirstOfEga(const PcxHeader& header) {
    for (std::size_t i = 0; i < 4; ++i) {
        if (HeaderEntry(header, i) != EgaColour(i)) return false;
    }
    return true;
}

Pixels HeaderColours(const PcxHeader& header) {
    const std::size_t count = std::size_t{1} << header.Bits();
    const bool isPackedFour = header.bitsPerPlane == 2 && header.planes == 1;
    if (isPackedFour) {
        if (const auto cga = CgaColours(header)) return *cga;
    }
    Pixels pixels{};
    if (count == 2) {
        if (!HasPalette(header, 2) || AreCgaSettings(header) || AreFirstOfEga(header)) return Greys(2);
    } else if (AreAlike(header, count) || (!isPackedFour && !HasPalette(header, count))) {  // no EGA has four colours
        if (header.paletteInfo == kGreyPalette && AreAlike(header, count)) return Greys(count);
        for (std::size_t i = 0; i < count; ++i)
            pixels[i] = PixelOf(EgaColour(i));
        return pixels;
    }
    for (std::size_t i = 0; i < count; ++i)
        pixels[i] = PixelOf(HeaderEntry(header, i));
    return pixels;
}

// --- The palette at the end ------------------------------------------------------------------------------------------

std::optional<Pixels> TrailingColours(ByteSource& source, std::uint64_t start) {
    const auto triples = source.BytesAt<kTrailingBytes>(start);
    if (!triples) return std::nullopt;
    Pixels pixels{};
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = PixelOf({(*triples)[3 * i], (*triples)[3 * i + 1], (*triples)[3 * i + 2]});
    return pixels;
}

bool HasMarker(ByteSource& source, std::uint64_t at) {
    const auto byte = source.BytesAt<1>(at);
    return byte && byte->front() == kMarker;
}

/// What decoding all rows tells: where they end, and whether every index is one of the first 16.
struct Extent {
    std::uint64_t end;
    bool isDark = true;

    Extent(ByteSource& source, const PcxHeader& header) {
        constexpr unsigned char kHeaderColours = 16;
        PcxRowBytes rows(source, header, source.Size());
        for (int y = 0; y < header.Height() && !rows.IsOutOfData(); ++y) {
            const std::span<const unsigned char> row = rows.Next();
            isDark = isDark && std::ranges::all_of(row, [](unsigned char byte) { return byte < kHeaderColours; });
        }
        end = rows.Position();
    }
};

/// Behind the rows: at the next byte if that is a marker, else at the end of the file.
std::optional<Pixels> UnmarkedColours(ByteSource& source, std::uint64_t rowsEnd) {
    const std::uint64_t behind = source.Size() - rowsEnd;
    if (behind < kTrailingBytes) return std::nullopt;
    if (behind > kTrailingBytes && HasMarker(source, rowsEnd)) return TrailingColours(source, rowsEnd + 1);
    return TrailingColours(source, source.Size() - kTrailingBytes);
}

}  // namespace

PcxCommonColours FindCommonPcxColours(ByteSource& source, const PcxHeader& header) {
    PcxCommonColours colours{.dataEnd = source.Size()};
    if (header.Bits() > 8) return colours;
    if (header.Bits() <= 4) {
        colours.pixels = HeaderColours(header);
        return colours;
    }
    if (source.Size() > kPcxHeaderBytes + kTrailingBytes) {
        const std::uint64_t marker = source.Size() - kTrailingBytes - 1;
        const auto trailing = HasMarker(source, marker) ? TrailingColours(source, marker + 1) : std::nullopt;
        if (trailing) return {.pixels = *trailing, .dataEnd = marker};
    }
    const Extent extent(source, header);
    if (const auto unmarked = UnmarkedColours(source, extent.end)) {
        colours.pixels = *unmarked;
        return colours;
    }
    colours.pixels = Greys(256);
    if (extent.isDark && header.planes == 1 && HasPalette(header, 16)) {
        for (std::size_t i = 0; i < 16; ++i)
            colours.pixels[i] = PixelOf(HeaderEntry(header, i));
    }
    return colours;
}

}  // namespace Kavra::Devices
