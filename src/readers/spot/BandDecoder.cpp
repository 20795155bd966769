#include "readers/spot/BandDecoder.h"

#include "readers/spot/BandKernels.h"
#include "readers/spot/BandRows.h"
#include "readers/spot/ByteCounts.h"

#include <cstddef>
#include <utility>

namespace Kavra::Devices {

namespace {

using Line = std::span<const unsigned char>;

/// Rows in which the samples of all bands stand together.
BandRows WholeRows(ByteSource& file, const BandHeader& header) {
    return BandRows(file, {header.skipBytes}, header.totalRowBytes);
}

/// Where a band begins that follows the band before it.
std::int64_t BandStart(const BandHeader& header, std::int64_t band) {
    const std::int64_t stride = Sum(Product(header.bandRowBytes, header.rows), header.bandGapBytes);
    return Sum(Product(stride, band), header.skipBytes);
}

/// Where in a row the samples of a band begin.
std::int64_t FirstByte(const BandHeader& header, std::int64_t band) {
    return Sum(Product(header.bandRowBytes, band), header.recordSkipBytes);
}

/// Calls `convert(rowOfOut, line)` for each row with the bytes from `first` on.
template <class Convert>
void ForEachLine(BandRows rows, std::int64_t first, std::size_t lineBytes, std::span<unsigned char> out, int count,
                 const Convert& convert) {
    BandLine line(rows, first, lineBytes);
    const std::size_t pitch = out.size() / static_cast<std::size_t>(count);
    for (int row = 0; row < count; ++row) {
        convert(out.subspan(static_cast<std::size_t>(row) * pitch, pitch), line.OfRow(row));
    }
}

std::size_t SampleBytes(PixelKind kind) {
    switch (kind) {
        case PixelKind::kUnsigned16:
        case PixelKind::kSigned16:
            return 2;
        case PixelKind::kUnsigned32:
        case PixelKind::kSigned32:
        case PixelKind::kFloat:
            return 4;
        default:
            return 0;
    }
}

/// One band of samples that are kept as they are.
bool DecodeSamples(ByteSource& file, const BandHeader& header, int band, std::span<unsigned char> out) {
    const std::size_t sampleBytes = SampleBytes(header.pixelKind);
    const std::size_t lineBytes = sampleBytes * static_cast<std::size_t>(header.columns);
    if (sampleBytes == 0) return false;
    if (header.layout == BandLayout::kByLine) {
        WholeRows(file, header).ReadAll(FirstByte(header, band), lineBytes, out);
        return true;
    }
    if (header.layout == BandLayout::kSequential) {
        BandRows(file, {BandStart(header, band)}, header.bandRowBytes).ReadAll(0, lineBytes, out);
        return true;
    }
    if (header.layout != BandLayout::kByPixel) return false;
    if (header.bands == 1) {
        WholeRows(file, header).ReadAll(0, lineBytes, out);
    } else {
        ForEachLine(
            WholeRows(file, header), 0, 3 * lineBytes, out, header.rows,
            [&](std::span<unsigned char> pixels, Line line) { SampleFromPixels(pixels, line, sampleBytes, band); });
    }
    return true;
}

/// One band of 8-bit samples, which any layout leaves together.
void DecodeBand(ByteSource& file, const BandHeader& header, std::span<unsigned char> out) {
    BandRows rows = WholeRows(file, header);
    const auto columns = static_cast<std::size_t>(header.columns);
    const auto decode = [&](const auto& convert) {
        ForEachLine(std::move(rows), header.recordSkipBytes, columns, out, header.rows, convert);
    };
    if (header.colourEntries > 0) {
        decode([table = ColourTable(header.palette)](std::span<unsigned char> pixels, Line line) {
            RgbaFromSamples(pixels, line, table);
        });
    } else if (header.greyEntries > 0) {
        decode([table = RedTable(header.palette)](std::span<unsigned char> pixels, Line line) {
            GreyFromSamples(pixels, line, table);
        });
    } else {
        rows.ReadAll(header.recordSkipBytes, columns, out);
    }
}

/// Three bands of 8-bit samples, the colours of a pixel side by side.
void DecodeColourPixels(ByteSource& file, const BandHeader& header, std::span<unsigned char> out) {
    const std::size_t lineBytes = 3 * static_cast<std::size_t>(header.columns);
    const auto decode = [&](const auto& convert) {
        ForEachLine(WholeRows(file, header), 0, lineBytes, out, header.rows, convert);
    };
    if (header.greyEntries > 0) {
        decode([&, tables = ComponentTables(header.palette)](std::span<unsigned char> pixels, Line line) {
            RgbaFromPixels(pixels, line, header.blueFirst, tables);
        });
    } else {
        decode([&](std::span<unsigned char> pixels, Line line) { RgbaFromPixels(pixels, line, header.blueFirst); });
    }
}

/// Three bands of 8-bit samples, a line of each colour.
void DecodeColourLines(BandRows rows, const BandHeader& header, std::span<unsigned char> out) {
    const auto line = [&](std::int64_t band) {
        return BandLine(rows, FirstByte(header, band), static_cast<std::size_t>(header.columns));
    };
    BandLine red = line(header.blueFirst ? 2 : 0);
    BandLine green = line(1);
    BandLine blue = line(header.blueFirst ? 0 : 2);
    const PixelTables tables = ComponentTables(header.palette);
    const std::size_t pitch = out.size() / static_cast<std::size_t>(header.rows);
    for (std::int32_t row = 0; row < header.rows; ++row) {
        const ColourRows colours{red.OfRow(row), green.OfRow(row), blue.OfRow(row)};
        const std::span<unsigned char> pixels = out.subspan(static_cast<std::size_t>(row) * pitch, pitch);
        header.greyEntries > 0 ? RgbaFromRows(pixels, colours, tables) : RgbaFromRows(pixels, colours);
    }
}

bool DecodeColours(ByteSource& file, const BandHeader& header, std::span<unsigned char> out) {
    switch (header.layout) {
        case BandLayout::kByLine:
            DecodeColourLines(WholeRows(file, header), header, out);
            return true;
        case BandLayout::kSequential:
            DecodeColourLines(
                BandRows(file, {BandStart(header, 0), BandStart(header, 1), BandStart(header, 2)}, header.bandRowBytes),
                header, out);
            return true;
        case BandLayout::kByPixel:
            DecodeColourPixels(file, header, out);
            return true;
        default:
            return false;
    }
}

}  // namespace

std::optional<EFormat> FormatOf(const BandHeader& header) {
    if (header.bits == 8) return header.bands == 3 || header.colourEntries > 0 ? kR8G8B8A8 : kL8;
    if (header.bits > 8 && header.bits <= 16) return kL16;
    if (header.pixelKind == PixelKind::kFloat) return kR32F;
    return std::nullopt;
}

int FrameCountOf(const BandHeader& header) {
    return header.bits == 8 ? 1 : header.bands;
}

bool DecodeBands(ByteSource& file, const BandHeader& header, int frame, std::span<unsigned char> out) {
    if (header.bits != 8) return DecodeSamples(file, header, frame, out);
    if (header.bands == 3) return DecodeColours(file, header, out);
    DecodeBand(file, header, out);
    return true;
}

}  // namespace Kavra::Devices
