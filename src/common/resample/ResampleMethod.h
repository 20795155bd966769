/// How rows of the result are made of rows of the source: one class a kind of filter.
#pragma once

#include "common/resample/AxisPlan.h"

#include <kavra/devices/Resampler.h>

#include <cstddef>
#include <memory>

namespace Kavra::Common {

using Devices::ResampleOptions;
using Devices::ResamplePixels;

constexpr bool IsInteger(Devices::ElementType element) {
    return element == Devices::ElementType::kUInt8 || element == Devices::ElementType::kUInt16;
}

/// What is resampled: pixels, the two sides, and how.
struct Resampling {
    ResamplePixels pixels;
    ResampleAxis x, y;
    ResampleOptions options;

    std::size_t PixelBytes() const;
    std::size_t FromRowBytes() const { return static_cast<std::size_t>(x.fromCount) * PixelBytes(); }
    std::size_t ToRowBytes() const { return static_cast<std::size_t>(x.toCount) * PixelBytes(); }
    /// Whether there are pixels, on sides that can be computed with. A filter that widens as pictures shrink takes
    /// memory for what it reaches over; points do not.
    bool IsPossible() const;
    /// Whether the filter looks at points: at one pixel, or at the four around one.
    bool LooksAtPoints() const {
        return options.filter == Devices::kResampleNearest || options.filter == Devices::kResampleBilinear;
    }
    /// Floats of a row of the source.
    std::size_t FromRowFloats() const {
        return static_cast<std::size_t>(x.fromCount) * static_cast<std::size_t>(pixels.channels);
    }

    /// The filter along one of the two sides.
    ResampleFilter FilterAlong(const ResampleAxis& axis) const { return {options.filter, axis.Ratio()}; }
    bool IsOfIntegers() const { return IsInteger(pixels.element); }
    /// Whether values are kept in the range of those under the filter.
    bool KeepsRange() const { return options.bounded && !IsOfIntegers(); }
    /// Half of the width of the filter across, as far as the library looks in both directions.
    float Radius() const { return FilterAlong(x).width / 2.0F; }
};

/// The largest value of an integer; 1 of the others, which have none.
float FullScale(Devices::ElementType element);

/// Rows of the source in memory, `pitch` bytes apart: the picture, or a ring of `capacity` rows in which row y stands
/// in place y modulo capacity. Somebody else's.
struct SourceRows {
    const unsigned char* first;
    std::size_t pitch;
    std::size_t capacity;

    const unsigned char* Row(std::size_t y) const { return first + y % capacity * pitch; }
};

/// Rows of the source, from `first` to `end - 1`.
struct RowSpan {
    int first, end;
};

/// Rows of floats, `rowFloats` long, that a thread works on at a time: as many as the caches take, four at least where
/// they are not giants, and then one.
std::size_t RowsOfGroup(std::size_t rowFloats);

/// Bytes of the floats that `threads` threads work on at a time, at most, where each makes up to `rows` rows.
std::uint64_t BytesOfGroups(const Resampling& resampling, std::size_t threads, std::size_t rows);

/// The rows of a source of `rows` rows that a reach takes, where what lies beyond the ends is the last one again.
RowSpan ClampedSpan(const Reach& reach, int rows);

class ResampleMethod {
public:
    virtual ~ResampleMethod() = default;

    /// The rows of the source that row `y` of the result is made of; none where it is 0 whatever they are.
    virtual RowSpan Needs(int y) const = 0;

    /// Makes rows `y` to `y + count - 1` of the result, packed, at `out`, on the caller's thread. Any number of threads
    /// may do so side by side. Throws `std::bad_alloc`.
    virtual void Make(const SourceRows& source, int y, int count, unsigned char* out) const = 0;

    /// As many rows as `Make` does best at a time.
    virtual int GroupRows() const { return 1; }
};

/// Whether all is summed in the image library's own order (`OrderedMethod`).
bool IsOrdered(const Resampling& resampling);

/// `resampling` is possible. Throws `std::bad_alloc`.
std::unique_ptr<ResampleMethod> NewResampleMethod(const Resampling& resampling);

}  // namespace Kavra::Common
