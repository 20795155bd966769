#include "Exposure.h"

#include <algorithm>
#include <cmath>

namespace Kavra::App {

constexpr double kMiddleGrey = 0.18;

void Exposure::Look(double luminance) {
    mBrightest = std::max(mBrightest, luminance);
    if (luminance <= 0) return;
    mLogarithms += std::log(luminance);
    ++mCount;
}

double Exposure::Scale(double luminance) const {
    if (mCount == 0) return 1;
    const double exposure = kMiddleGrey / std::exp(mLogarithms / static_cast<double>(mCount));
    const double white = std::max(exposure * mBrightest, mLeastWhite);
    const double exposed = exposure * luminance;
    return exposure * (1 + exposed / (white * white)) / (1 + exposed);
}

float EncodeForScreen(float linear) {
    if (linear <= 0.0031308F) return 12.92F * linear;
    return 1.055F * std::pow(std::min(linear, 1.0F), 1 / 2.4F) - 0.055F;
}

}  // namespace Kavra::App
