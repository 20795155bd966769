/// Amounts of light on a screen.
#pragma once

#include <cstddef>

namespace Kavra::App {

/// The global operator of E. Reinhard, M. Stark, P. Shirley and J. Ferwerda, "Photographic Tone Reproduction for
/// Digital Images", 2002, equation 4: luminance L becomes l (1 + l / w^2) / (1 + l) with l = 0.18 L / (geometric mean
/// of all L above 0) and w the l of the brightest pixel. Colours keep their proportions.
class Exposure {
public:
    /// `leastWhite` is the smallest w: from 1 on, a picture of little contrast is not stretched to white. `brightness`
    /// multiplies the 0.18.
    explicit Exposure(double leastWhite = 0, double brightness = 1)
        : mLeastWhite(leastWhite), mBrightness(brightness) {}

    /// Counts the luminance of one pixel, 0 or more and finite. Every pixel is counted before the first is scaled.
    void Look(double luminance);
    /// Counts the pixels that another one has counted.
    void Add(const Exposure& other);

    /// What the colours of a pixel of this luminance are multiplied by.
    double Scale(double luminance) const;

private:
    double mLeastWhite;
    double mBrightness;
    double mBrightest = 0;
    double mLogarithms = 0;
    std::size_t mCount = 0;  // of pixels that are not black
};

/// The filmic curve of J. Hable, "Filmic Tonemapping Operators", 2010: f(2 l) / f(11.2) with
/// f(x) = (x (0.15 x + 0.05) + 0.004) / (x (0.15 x + 0.5) + 0.06) - 0.02 / 0.3, for each colour by itself. Light of 5.6
/// becomes 1; there it is cut. Light is 0 or more; the result is light again, before the curve of a screen.
float Filmic(float light);

}  // namespace Kavra::App
