/// The inner loops of resampling, in the widest vectors that the machine has.
///
/// Values are floats in the units of the pixels: 0 to 255 for 8 bits, 0 to 65535 for 16. Buffers of floats have
/// `kSlack` more than is said, which may be read and written.
#pragma once

#include <kavra/devices/FormatFacts.h>

#include <cstddef>
#include <cstdint>

namespace Kavra::Common {

/// Floats of four of the widest vectors, which are worked on at once.
inline constexpr std::size_t kSlack = 64;

/// Rows of floats, `stride` floats apart.
struct FloatRows {
    float* first;
    std::size_t stride;

    float* Row(std::size_t y) const { return first + y * stride; }
};

/// Up to four rows that are filtered along, at once since they share their weights.
struct FilteredRows {
    FloatRows from;  ///< the first pixel of each row is the first one that `reaches` begins at
    FloatRows to;
    std::size_t count;  ///< 1 to 4
};

/// What each pixel of a row of the result is made of, in elements and not in pixels.
struct RowWeights {
    const std::uint32_t* begins;  ///< of a reach, in floats from the row's first
    const std::uint32_t* counts;  ///< in pixels
    const float* weights;         ///< `stride` a pixel of the result
    std::size_t stride;
    std::size_t size;  ///< pixels of the result
};

/// The pixels under the filter for one pixel of the result, to be summed in the library's order.
struct ExactSum {
    const unsigned char* const* rows;  ///< where the first pixel of the reach stands in each of its rows
    const float* rowWeights;
    std::size_t rowCount;
    const float* weights;
    std::size_t count;
};

struct ResampleKernels {
    /// `count` elements, tightly packed, as floats.
    void (*toFloats)(Devices::ElementType, const unsigned char* in, std::size_t count, float* out);

    /// Adds `count` rows of `width` floats, each times its weight, to `sums`, or sets it where `begins`. Rows that weigh
    /// 0 are left out.
    void (*addRows)(const FloatRows& rows, const float* weights, std::size_t count, std::size_t width, float* sums,
                    bool begins);

    /// Widens the ranges from `low` to `high` by rows that weigh anything.
    void (*rangeRows)(const FloatRows& rows, const float* weights, std::size_t count, std::size_t width, float* low,
                      float* high, bool begins);

    /// Each pixel of the result the weighted sum of those in its reach. For 1 to 4 channels.
    void (*filterRows)(int channels, const FilteredRows& rows, const RowWeights& weights);

    /// `addRows` and `filterRows` with each product rounded before it is added, so that sums are the same in vectors of any
    /// width.
    void (*addRowsUnfused)(const FloatRows& rows, const float* weights, std::size_t count, std::size_t width,
                           float* sums, bool begins);
    void (*filterRowsUnfused)(int channels, const FilteredRows& rows, const RowWeights& weights);

    /// Rounds to elements: half away from zero for integers, to nearest even for halves.
    void (*store)(Devices::ElementType, const float* in, std::size_t count, unsigned char* out);

    /// The pixels of which any of the `channels` values lies so near to a tie of rounding (a number and a half) that an
    /// error of `bound` could decide it. Writes their numbers, in order, to `pixels` and returns how many there are.
    std::size_t (*findTies)(const float* values, std::size_t count, int channels, float bound, std::uint32_t* pixels);

    /// Up to four pixels of four 8-bit channels, each summed as the library does: row by row, products of products in
    /// single precision, none fused. All four have the same row weights, `rowCount` and `count`.
    void (*exactFour)(const ExactSum* sums, std::size_t count, unsigned char* const* out);
};

/// The kernels for this machine.
const ResampleKernels& GetResampleKernels();

}  // namespace Kavra::Common
