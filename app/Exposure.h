/// Amounts of light on a screen.
#pragma once

#include <cstddef>

namespace Kavra::App {

/// The global operator of E. Reinhard, M. Stark, P. Shirley and J. Ferwerda, "Photographic Tone Reproduction for
/// Digital Images", 2002, equation 4: luminance L becomes l (1 + l / w^2) / (1 + l) with l = 0.18 L / (geometric mean
/// of all L above 0) and w the l of the brightest pixel. Colours keep their proportions.
class Exposure {
public:
    /// `leastWhite` is the smallest w: from 1 on, a picture of little contrast is not stretched to white.
    explicit Exposure(double leastWhite = 0) : mLeastWhite(leastWhite) {}

    /// Counts the luminance of one pixel, 0 or more and finite. Every pixel is counted before the first is scaled.
    void Look(double luminance);

    /// What the colours of a pixel of this luminance are multiplied by.
    double Scale(double luminance) const;

private:
    double mLeastWhite;
    double mBrightest = 0;
    double mLogarithms = 0;
    std::size_t mCount = 0;  // of pixels that are not black
};

/// A linear value of 0 and more, cut at 1, by the curve of sRGB (IEC 61966-2-1).
float EncodeForScreen(float linear);

}  // namespace Kavra::App
