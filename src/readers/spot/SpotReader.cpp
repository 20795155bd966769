#include "readers/spot/SpotReader.h"

#include "common/Limits.h"
#include "common/ParallelRange.h"
#include "common/PixelRun.h"
#include "readers/WriteRows.h"
#include "readers/spot/SpotKernels.h"
#include "readers/spot/SpotRows.h"

#include <kavra/devices/AFormatConvertor.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::Product;
using Common::Result;
using Common::Sum;

// --- Pixels ----------------------------------------------------------------------------------------------------------

namespace {

using Line = std::span<const unsigned char>;

/// Rows in which the samples of all bands stand together.
SpotRows WholeRows(ByteSource& file, const SpotHeader& header) {
    return SpotRows(file, {header.skipBytes}, header.totalRowBytes);
}

/// Where a band begins that follows the band before it.
std::int64_t BandStart(const SpotHeader& header, std::int64_t band) {
    const std::int64_t stride = Sum(Product(header.bandRowBytes, header.rows), header.bandGapBytes);
    return Sum(Product(stride, band), header.skipBytes);
}

/// Where in a row the samples of a band begin.
std::int64_t FirstByte(const SpotHeader& header, std::int64_t band) {
    return Sum(Product(header.bandRowBytes, band), header.recordSkipBytes);
}

/// Where the rows of pixels go.
struct PixelRows {
    Common::RowSink& sink;
    std::int64_t count;
    std::size_t pitch;
};

/// Where in a row the lines begin of which a row of pixels is made.
template <std::size_t Count>
using Firsts = std::array<std::int64_t, Count>;

/// Converts as many rows as can be gathered, many at the same time, and tells how many that were.
template <std::size_t Count, class Convert>
std::int64_t ConvertGathered(SpotRows& rows, const Firsts<Count>& firsts, std::size_t bytes, const PixelRows& out,
                             const Convert& convert) {
    const std::size_t serialRows = Common::kSerialBytes / (out.pitch + Count * bytes);
    if (!std::ranges::all_of(firsts, [&](std::int64_t first) { return rows.IsInOneSlot(first, bytes); })) return 0;
    std::int64_t row = 0, gathered = 0;  // as yet, and up to where rows are in memory
    while (row < out.count) {
        if (row == gathered) gathered = std::min(row + rows.Gather(row), out.count);
        if (row == gathered) break;
        const std::span<unsigned char> pixels = out.sink.NextRows(static_cast<std::size_t>(gathered - row));
        const std::size_t count = pixels.size() / out.pitch;
        Common::ForEachRange(count, serialRows, [&](std::size_t begin, std::size_t end) {
            for (std::size_t at = begin; at < end; ++at) {
                std::array<Line, Count> lines;
                for (std::size_t i = 0; i < Count; ++i)
                    lines[i] = rows.Gathered(row + static_cast<std::int64_t>(at), firsts[i], bytes);
                convert(pixels.subspan(at * out.pitch, out.pitch), lines);
            }
        });
        row += static_cast<std::int64_t>(count);
    }
    return row;
}

/// Calls `convert(rowOfOut, lines)` for each row, with the lines of `bytes` bytes that begin at `firsts`.
template <std::size_t Count, class Convert>
void ConvertRows(SpotRows rows, const Firsts<Count>& firsts, std::size_t bytes, const PixelRows& out,
                 const Convert& convert) {
    std::int64_t row = ConvertGathered(rows, firsts, bytes, out, convert);
    if (row == out.count) return;
    std::vector<SpotLine> sources;
    for (const std::int64_t first : firsts)
        sources.emplace_back(rows, first, bytes);
    WriteRows(out.sink, static_cast<std::size_t>(out.count - row), out.pitch, [&](std::span<unsigned char> pixels) {
        std::array<Line, Count> lines;
        for (std::size_t i = 0; i < Count; ++i)
            lines[i] = sources[i].Read(row);
        convert(pixels, lines);
        ++row;
    });
}

std::size_t SampleBytes(SampleKind kind) {
    switch (kind) {
        case SampleKind::kUnsigned16:
        case SampleKind::kSigned16:
            return 2;
        case SampleKind::kUnsigned32:
        case SampleKind::kSigned32:
        case SampleKind::kFloat:
            return 4;
        default:
            return 0;
    }
}

/// One band of samples that are kept as they are.
Result<> DecodeSamples(ByteSource& file, const SpotHeader& header, int band, const PixelRows& out) {
    const std::size_t sampleBytes = SampleBytes(header.sampleKind);
    const std::size_t lineBytes = sampleBytes * static_cast<std::size_t>(header.columns);
    if (sampleBytes == 0) return std::unexpected(Failure::kUnsupported);
    if (header.layout == SpotLayout::kByLine) {
        WholeRows(file, header).ReadAll(FirstByte(header, band), lineBytes, out.count, out.sink);
        return {};
    }
    if (header.layout == SpotLayout::kSequential) {
        SpotRows(file, {BandStart(header, band)}, header.bandRowBytes).ReadAll(0, lineBytes, out.count, out.sink);
        return {};
    }
    if (header.layout != SpotLayout::kByPixel) return std::unexpected(Failure::kUnsupported);
    if (header.bands == 1) {
        WholeRows(file, header).ReadAll(0, lineBytes, out.count, out.sink);
    } else {
        ConvertRows<1>(WholeRows(file, header), {0}, 3 * lineBytes, out,
                       [&](std::span<unsigned char> samples, const std::array<Line, 1>& pixels) {
                           SampleFromPixels(samples, pixels[0], sampleBytes, band);
                       });
    }
    return {};
}

/// One band of 8-bit samples, which any layout leaves together.
void DecodeBand(ByteSource& file, const SpotHeader& header, const PixelRows& out) {
    const auto columns = static_cast<std::size_t>(header.columns);
    const auto convertRows = [&](const auto& convert) {
        ConvertRows<1>(
            WholeRows(file, header), {header.recordSkipBytes}, columns, out,
            [&](std::span<unsigned char> pixels, const std::array<Line, 1>& samples) { convert(pixels, samples[0]); });
    };
    if (header.colourEntries > 0) {
        convertRows([table = ColourTable(header.palette)](std::span<unsigned char> pixels, Line samples) {
            LookUp(pixels, samples, table);
        });
    } else if (header.greyEntries > 0) {
        convertRows([table = RedTable(header.palette)](std::span<unsigned char> pixels, Line samples) {
            GreyFromSamples(pixels, samples, table);
        });
    } else {
        WholeRows(file, header).ReadAll(header.recordSkipBytes, columns, out.count, out.sink);
    }
}

/// Three bands of 8-bit samples, the colours of a pixel side by side.
void DecodeColourPixels(ByteSource& file, const SpotHeader& header, const PixelRows& out) {
    const bool throughTables = header.greyEntries > 0;
    const PixelTables tables = ComponentTables(header.palette);
    ConvertRows<1>(WholeRows(file, header), {0}, 3 * static_cast<std::size_t>(header.columns), out,
                   [&](std::span<unsigned char> pixels, const std::array<Line, 1>& samples) {
                       throughTables ? RgbaFromPixels(pixels, samples[0], header.blueFirst, tables)
                                     : RgbaFromPixels(pixels, samples[0], header.blueFirst);
                   });
}

/// Three bands of 8-bit samples, a line of each colour.
void DecodeColourLines(SpotRows rows, const SpotHeader& header, const PixelRows& out) {
    const bool throughTables = header.greyEntries > 0;
    const PixelTables tables = ComponentTables(header.palette);
    const Firsts<3> firsts{FirstByte(header, header.blueFirst ? 2 : 0), FirstByte(header, 1),
                           FirstByte(header, header.blueFirst ? 0 : 2)};
    ConvertRows(std::move(rows), firsts, static_cast<std::size_t>(header.columns), out,
                [&](std::span<unsigned char> pixels, const std::array<Line, 3>& lines) {
                    const ColourRows colours{lines[0], lines[1], lines[2]};
                    throughTables ? RgbaFromRows(pixels, colours, tables) : RgbaFromRows(pixels, colours);
                });
}

Result<> DecodeColours(ByteSource& file, const SpotHeader& header, const PixelRows& out) {
    switch (header.layout) {
        case SpotLayout::kByLine:
            DecodeColourLines(WholeRows(file, header), header, out);
            return {};
        case SpotLayout::kSequential:
            DecodeColourLines(
                SpotRows(file, {BandStart(header, 0), BandStart(header, 1), BandStart(header, 2)}, header.bandRowBytes),
                header, out);
            return {};
        case SpotLayout::kByPixel:
            DecodeColourPixels(file, header, out);
            return {};
        default:
            return std::unexpected(Failure::kUnsupported);
    }
}

/// The format in which a raster comes out.
Result<EFormat> FormatOf(const SpotHeader& header) {
    if (header.bits == 8) return header.bands == 3 || header.colourEntries > 0 ? kR8G8B8A8 : kL8;
    if (header.bits > 8 && header.bits <= 16) return kL16;
    if (header.sampleKind == SampleKind::kFloat) return kR32F;
    return std::unexpected(Failure::kUnsupported);
}

/// How many frames it has: the bands are one picture at 8 bits a sample, otherwise each is a picture of its own.
int FrameCountOf(const SpotHeader& header) {
    return header.bits == 8 ? 1 : header.bands;
}

/// Decodes frame `frame`, from 0 to `FrameCountOf` less 1, into `out`, rows of pixels in the format of the raster.
/// Writes nothing where it fails. The header was parsed for the length of `file`.
Result<> DecodeSpot(ByteSource& file, const SpotHeader& header, int frame, const PixelRows& out) {
    if (header.bits != 8) return DecodeSamples(file, header, frame, out);
    if (header.bands == 3) return DecodeColours(file, header, out);
    DecodeBand(file, header, out);
    return {};
}

}  // namespace

// --- The reader ------------------------------------------------------------------------------------------------------

namespace {

std::int64_t RowBytes(EFormat format, std::int32_t columns) {
    return std::int64_t{Utilities::AFormatConvertor::BytesPerPixel(format)} * columns;
}

}  // namespace

bool IsSpot(PictureFiles& files) {
    return files.header && files.source.Size() > 0 && ReadSpotHeader(*files.header, files.source.Size()).has_value();
}

Result<PictureFiles> SpotReader::FindFiles(const KString& path) {
    return OpenSpotFiles(path);
}

void SpotReader::Close() {
    mSource.reset();
    mHeader = {};
    mFormat = kUnknown;
    mFrameCount = 1;
}

Result<> SpotReader::OpenFiles(PictureFiles files) {
    if (!files.header) return std::unexpected(Failure::kCannotOpen);
    Result<SpotHeader> header = ReadSpotHeader(*files.header, files.source.Size());
    if (!header) return std::unexpected(header.error());
    const KString path(files.path.c_str());
    header->path = PathWithExtension(path, L".hdr").value_or(files.path);
    AddSpotPalette(path, *header);
    const Result<EFormat> format = FormatOf(*header);
    if (!format) return std::unexpected(format.error());
    mFormat = *format;
    mFrameCount = FrameCountOf(*header);
    mHeader = *std::move(header);
    mSource = std::move(files.source);
    return {};
}

int SpotReader::GetRowPitch() {
    return static_cast<int>(
        std::min<std::int64_t>(RowBytes(mFormat, mHeader.columns), std::numeric_limits<int>::max()));
}

Result<> SpotReader::ReadFrame(Common::RowSink& rows, int frame) {
    if (!mSource) return std::unexpected(Failure::kCannotOpen);
    // A row whose bytes an int cannot count is one that no caller has memory for.
    if (GetRowPitch() != RowBytes(mFormat, mHeader.columns)) return std::unexpected(Failure::kTooLarge);
    return DecodeSpot(*mSource, mHeader, std::clamp(frame, 0, mFrameCount - 1),
                      {.sink = rows, .count = mHeader.rows, .pitch = static_cast<std::size_t>(GetRowPitch())});
}

}  // namespace Kavra::Devices
