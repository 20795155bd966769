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

void Exposure::Add(const Exposure& other) {
    mBrightest = std::max(mBrightest, other.mBrightest);
    mLogarithms += other.mLogarithms;
    mCount += other.mCount;
}

double Exposure::Scale(double luminance) const {
    if (mCount == 0) return 1;
    const double exposure = mBrightness * kMiddleGrey / std::exp(mLogarithms / static_cast<double>(mCount));
    const double white = std::max(exposure * mBrightest, mLeastWhite);
    const double exposed = exposure * luminance;
    return exposure * (1 + exposed / (white * white)) / (1 + exposed);
}

namespace {

/// Shoulder 0.15, linear strength 0.5 and angle 0.1, toe strength 0.2, numerator 0.02 and denominator 0.3.
double FilmicFraction(double x) {
    return (x * (0.15 * x + 0.1 * 0.5) + 0.2 * 0.02) / (x * (0.15 * x + 0.5) + 0.2 * 0.3) - 0.02 / 0.3;
}

}  // namespace

float Filmic(float light) {
    constexpr double kBias = 2;
    constexpr double kWhite = 11.2;
    static const double scale = 1 / FilmicFraction(kWhite);
    const double x = std::min(kBias * static_cast<double>(light), kWhite);
    return static_cast<float>(FilmicFraction(x) * scale);
}

}  // namespace Kavra::App
