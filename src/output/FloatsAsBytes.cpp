#include "output/FloatsAsBytes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

#include "common/ParallelRange.h"
#include "common/PixelRun.h"

namespace Kavra::Devices {

namespace {

/// Values that are worked on at a time: whole pixels of every kind, and several vectors of any width.
constexpr std::size_t kGroup = 16;

using Group = std::array<float, kGroup>;

/// The least and greatest value at each place of a group; NaN is no value.
struct Extremes {
    Group least, greatest;
};

constexpr Extremes NoExtremes() {
    Extremes none{};
    none.least.fill(std::numeric_limits<float>::infinity());
    none.greatest.fill(-std::numeric_limits<float>::infinity());
    return none;
}

void Widen(Extremes& extremes, const Group& least, const Group& greatest) {
    for (std::size_t i = 0; i < kGroup; ++i) {
        extremes.least[i] = least[i] < extremes.least[i] ? least[i] : extremes.least[i];
        extremes.greatest[i] = greatest[i] > extremes.greatest[i] ? greatest[i] : extremes.greatest[i];
    }
}

/// `count` values of a row; the rest of the group is NaN, which no extreme takes and which shows as 0.
Group LoadPart(const unsigned char* values, std::size_t count) {
    Group group;
    group.fill(std::numeric_limits<float>::quiet_NaN());
    std::memcpy(group.data(), values, count * sizeof(float));
    return group;
}

/// Calls `body(group, first, count)` for the values of a row, `count` of them in each group.
template <class Body>
void ForEachGroup(const unsigned char* row, std::size_t values, const Body& body) {
    std::size_t done = 0;
    for (; done + kGroup <= values; done += kGroup) {
        Group group;
        std::memcpy(group.data(), row + done * sizeof(float), sizeof(group));
        body(group, done, kGroup);
    }
    if (done < values) body(LoadPart(row + done * sizeof(float), values - done), done, values - done);
}

std::size_t SerialRows(const FloatRows& rows) {
    return Common::kSerialBytes / std::max<std::size_t>(1, rows.width * rows.channels * sizeof(float));
}

Extremes FindExtremes(const FloatRows& rows) {
    const auto add = [&](std::size_t begin, std::size_t end, Extremes extremes) {
        for (std::size_t y = begin; y < end; ++y) {
            ForEachGroup(rows.first + y * rows.pitch, rows.width * rows.channels,
                         [&](const Group& group, std::size_t, std::size_t) { Widen(extremes, group, group); });
        }
        return extremes;
    };
    const auto join = [](Extremes a, const Extremes& b) {
        Widen(a, b.least, b.greatest);
        return a;
    };
    return Common::ReduceRange(rows.height, SerialRows(rows), NoExtremes(), add, join);
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

/// The range at each place of a group.
struct Ranges {
    std::array<double, kGroup> minimum, span;
};

Ranges FindRanges(const FloatRows& rows, bool stretch) {
    const Extremes extremes = FindExtremes(rows);
    Ranges ranges{};
    for (std::size_t channel = 0; channel < rows.channels; ++channel) {
        // Where the search starts: an infinity beyond it never becomes the minimum or the maximum on that side.
        double minimum = 1e50, maximum = -1e50;
        for (std::size_t i = channel; i < kGroup; i += rows.channels) {
            minimum = std::min(minimum, static_cast<double>(extremes.least[i]));
            maximum = std::max(maximum, static_cast<double>(extremes.greatest[i]));
        }
        const Range range = RangeOf(minimum, maximum, stretch);
        for (std::size_t i = channel; i < kGroup; i += rows.channels) {
            ranges.minimum[i] = range.minimum;
            ranges.span[i] = range.span;
        }
    }
    return ranges;
}

using Bytes = std::array<std::uint8_t, kGroup>;

Bytes Show(const Group& group, const Ranges& ranges) {
    Bytes bytes;
    for (std::size_t i = 0; i < kGroup; ++i) {
        const double scaled = (static_cast<double>(group[i]) - ranges.minimum[i]) * 255 / ranges.span[i];
        const double positive = scaled > 0 ? scaled : 0;  // NaN is not
        bytes[i] = static_cast<std::uint8_t>(static_cast<std::int32_t>(positive < 255 ? positive : 255));
    }
    return bytes;
}

void ShowRow(const unsigned char* row, std::size_t values, const Ranges& ranges, unsigned char* out) {
    ForEachGroup(row, values, [&](const Group& group, std::size_t first, std::size_t count) {
        const Bytes bytes = Show(group, ranges);
        std::memcpy(out + first, bytes.data(), count);
    });
}

/// Two channels as the first two of four.
void ShowRowOfPairs(const unsigned char* row, std::size_t values, const Ranges& ranges, unsigned char* out) {
    ForEachGroup(row, values, [&](const Group& group, std::size_t first, std::size_t count) {
        const Bytes bytes = Show(group, ranges);
        std::array<std::uint8_t, 2 * kGroup> pixels;
        for (std::size_t i = 0; i < kGroup / 2; ++i) {
            pixels[4 * i] = bytes[2 * i];
            pixels[4 * i + 1] = bytes[2 * i + 1];
            pixels[4 * i + 2] = 0;
            pixels[4 * i + 3] = 255;
        }
        std::memcpy(out + 2 * first, pixels.data(), 2 * count);
    });
}

}  // namespace

Common::PixelBlock FloatsAsBytes(const FloatRows& rows, bool stretch) {
    const std::size_t rowBytes = rows.width * ShownBytes(rows.channels);
    if (rowBytes != 0 && rows.height > std::numeric_limits<std::size_t>::max() / rowBytes) throw std::bad_alloc();
    Common::PixelBlock shown = Common::NewBlock(rowBytes * rows.height);
    const Ranges ranges = FindRanges(rows, stretch);
    const auto showRow = rows.channels == 2 ? ShowRowOfPairs : ShowRow;
    Common::ForEachRange(rows.height, SerialRows(rows), [&](std::size_t begin, std::size_t end) {
        for (std::size_t y = begin; y < end; ++y)
            showRow(rows.first + y * rows.pitch, rows.width * rows.channels, ranges, shown.get() + y * rowBytes);
    });
    return shown;
}

}  // namespace Kavra::Devices
