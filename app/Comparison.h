/// How far two pictures are apart.
#pragma once

#include "LoadOptions.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace Kavra::App {

/// Differences of values, of which integers count from 0 to 1.
class Difference {
public:
    /// Counts one, 0 or more and finite.
    void Add(double difference);
    void Add(const Difference& other);

    double Largest() const { return mLargest; }
    double Mean() const;
    /// The peak signal-to-noise ratio in dB, of values that go to 1: 10 log10(1 / mean square). Infinite where nothing
    /// differs.
    double Psnr() const;

private:
    double mLargest = 0;
    double mSum = 0;
    double mSquares = 0;
    std::size_t mCount = 0;
};

struct Comparison {
    std::vector<std::string> names;      ///< of the channels that one of the two has at least
    std::array<Difference, 4> channels;  ///< by name; what is beyond stays empty
    std::size_t pixels = 0;
    std::size_t differing = 0;  ///< pixels that are not the same
    std::size_t notFinite =
        0;  ///< those of them where a NaN or an infinity stands against something else; left out above

    Difference Together() const;
};

/// Compares numbers, whatever the formats: grey counts as three equal colours, a missing alpha as opaque. Equal
/// infinities are the same, and so are two NaN. Both have pixels, and the same size and count of faces or slices.
Comparison Compare(const LoadedImage& a, const LoadedImage& b);

/// The difference of each colour, with that of alpha added, times `gain`, as an opaque picture of four channels in
/// `format`. What is not finite is white.
LoadedImage DifferencePicture(const LoadedImage& a, const LoadedImage& b, float gain, Devices::EFormat format);

}  // namespace Kavra::App
