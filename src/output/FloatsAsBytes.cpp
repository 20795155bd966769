#include "output/FloatsAsBytes.h"

#include "common/PixelRun.h"
#include "common/WatchedRange.h"
#include "output/FloatKernels.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

namespace Kavra::Devices {

namespace {

constexpr FloatExtremes NoExtremes() {
    FloatExtremes none{};
    none.minimum.fill(std::numeric_limits<float>::infinity());
    none.maximum.fill(-std::numeric_limits<float>::infinity());
    return none;
}

FloatExtremes Joined(FloatExtremes a, const FloatExtremes& b) {
    for (std::size_t i = 0; i < kFloatGroup; ++i) {
        a.minimum[i] = std::min(a.minimum[i], b.minimum[i]);
        a.maximum[i] = std::max(a.maximum[i], b.maximum[i]);
    }
    return a;
}

std::size_t RowValues(const FloatRows& rows) {
    return rows.width * rows.channels;
}

std::size_t SerialRows(const FloatRows& rows) {
    return Common::kSerialBytes / std::max<std::size_t>(1, RowValues(rows) * sizeof(float));
}

FloatExtremes FindExtremes(const FloatRows& rows) {
    const auto widen = [&](std::size_t begin, std::size_t end, FloatExtremes extremes) {
        for (std::size_t y = begin; y < end; ++y)
            WidenExtremes(extremes, rows.first + y * rows.pitch, RowValues(rows));
        return extremes;
    };
    return Common::ReduceRangeOf(kProgressConverting, rows.height, SerialRows(rows), NoExtremes(), widen, Joined);
}

/// How a channel is mapped: `minimum` becomes 0, and `minimum + span` 255.
struct Range {
    double minimum, span;
};

Range RangeOf(double minimum, double maximum, bool stretch) {
    if (!stretch) {
        minimum = minimum > 0 ? 0 : minimum;
        maximum = maximum < 1 ? 1 : maximum;
        return {minimum, maximum - minimum};
    }
    const double span = maximum - minimum;
    if (span != 0) return {minimum, span};
    const bool isShown = minimum >= 0 && minimum <= 1;
    return {isShown ? 0 : minimum, 1};
}

FloatMapping FindMapping(const FloatRows& rows, bool stretch) {
    const FloatExtremes extremes = FindExtremes(rows);
    FloatMapping mapping{};
    for (std::size_t channel = 0; channel < rows.channels; ++channel) {
        // Where the search starts: an infinity beyond it never becomes the minimum or the maximum on that side.
        double minimum = 1e50, maximum = -1e50;
        for (std::size_t i = channel; i < kFloatGroup; i += rows.channels) {
            minimum = std::min(minimum, static_cast<double>(extremes.minimum[i]));
            maximum = std::max(maximum, static_cast<double>(extremes.maximum[i]));
        }
        const Range range = RangeOf(minimum, maximum, stretch);
        for (std::size_t i = channel; i < kFloatGroup; i += rows.channels) {
            mapping.minimum[i] = range.minimum;
            mapping.span[i] = range.span;
        }
    }
    return mapping;
}

/// Two channels as the first two of four: a part of the row at a time, which stays in the cache.
void ShowPairs(const FloatMapping& mapping, const unsigned char* row, std::size_t values, unsigned char* out) {
    constexpr std::size_t kPart = 4096;
    constexpr std::uint32_t kOpaque = 0xFF000000;
    std::array<unsigned char, kPart> bytes;
    for (std::size_t done = 0; done < values; done += kPart) {
        const std::size_t count = std::min(kPart, values - done);
        ShowFloats(mapping, row + done * sizeof(float), count, bytes.data());
        for (std::size_t i = 0; i < count; i += 2) {
            const std::uint32_t pixel = bytes[i] | std::uint32_t{bytes[i + 1]} << 8 | kOpaque;
            std::memcpy(out + 2 * (done + i), &pixel, sizeof(pixel));
        }
    }
}

}  // namespace

Common::PixelBlock FloatsAsBytes(const FloatRows& rows, bool stretch) {
    const std::size_t rowBytes = rows.width * ShownBytes(rows.channels);
    if (rowBytes != 0 && rows.height > std::numeric_limits<std::size_t>::max() / rowBytes) throw std::bad_alloc();
    Common::PixelBlock shown = Common::NewBlock(rowBytes * rows.height);
    const FloatMapping mapping = FindMapping(rows, stretch);
    const auto show = rows.channels == 2 ? ShowPairs : ShowFloats;
    Common::ForEachRangeOf(kProgressConverting, rows.height, SerialRows(rows), [&](std::size_t begin, std::size_t end) {
        for (std::size_t y = begin; y < end; ++y)
            show(mapping, rows.first + y * rows.pitch, RowValues(rows), shown.get() + y * rowBytes);
    });
    return shown;
}

}  // namespace Kavra::Devices
