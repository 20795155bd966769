/// Rows of a raster's samples into rows of pixels, many at the same time.
#pragma once

#include "common/Limits.h"
#include "common/ParallelRange.h"
#include "common/PixelRun.h"
#include "common/RowSink.h"
#include "readers/WriteRows.h"
#include "readers/spot/SpotHeader.h"
#include "readers/spot/SpotRows.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Kavra::Devices {

using Line = std::span<const unsigned char>;

/// Rows in which the samples of all bands stand together.
inline SpotRows WholeRows(Common::ByteSource& file, const SpotHeader& header) {
    return SpotRows(file, {header.skipBytes}, header.totalRowBytes);
}

/// Where a band begins that follows the band before it.
inline std::int64_t BandStart(const SpotHeader& header, std::int64_t band) {
    const std::int64_t stride = Common::Sum(Common::Product(header.bandRowBytes, header.rows), header.bandGapBytes);
    return Common::Sum(Common::Product(stride, band), header.skipBytes);
}

/// Where in a row the samples of a band begin.
inline std::int64_t FirstByte(const SpotHeader& header, std::int64_t band) {
    return Common::Sum(Common::Product(header.bandRowBytes, band), header.recordSkipBytes);
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

}  // namespace Kavra::Devices
