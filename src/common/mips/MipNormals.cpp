#include "common/mips/MipNormals.h"

#include "common/resample/ResampleKernels.h"
#include "common/resample/ResampleMethod.h"

#include <algorithm>
#include <cmath>

namespace Kavra::Common {

namespace {

constexpr std::size_t kY = 1, kParts = 3;

/// Integers have no 0: the middle ones, as (128, 128, 128), are half a step away from it along each axis. That is a
/// length of the square root of 3 over the largest integer.
float ShortestLength(const MipColours& colours) {
    constexpr float kOfIntegers = 1.75F, kOfFloats = 1e-6F;
    return colours.IsOfIntegers() ? kOfIntegers / colours.Full() : kOfFloats;
}

}  // namespace

MipNormals::MipNormals(const PixelFormat& format, bool derivesThird)
    : MipColours(format),
      mDerivesThird(derivesThird),
      mX(format.blueFirst ? 2 : 0),
      mZ(format.blueFirst ? 0 : 2),
      mNothing(ShortestLength(*this)) {}

void MipNormals::ToVector(float* pixel) const {
    if (IsOfIntegers()) {
        for (std::size_t part = 0; part < kParts; ++part)
            pixel[part] = pixel[part] * 2 / Full() - 1;
    }
    if (!mDerivesThird) return;
    const float left = 1 - (pixel[mX] * pixel[mX] + pixel[kY] * pixel[kY]);
    pixel[mZ] = left > 0 ? std::sqrt(left) : 0.0F;
}

void MipNormals::Decode(const unsigned char* in, std::size_t pixels, float* out) const {
    GetResampleKernels().toFloats(mElement, in, pixels * mStored, out);
    if (mStored == 2) {
        // From the last pixel to the first, as they move up.
        for (std::size_t i = pixels; i-- > 0;) {
            const float x = out[2 * i], y = out[2 * i + 1];
            out[kParts * i] = x;
            out[kParts * i + 1] = y;
            out[kParts * i + 2] = 0;
        }
    }
    const auto channels = static_cast<std::size_t>(Channels());
    for (std::size_t i = 0; i < pixels; ++i)
        ToVector(out + i * channels);
}

void MipNormals::ToUnit(float* pixel) const {
    const float length = std::sqrt(pixel[0] * pixel[0] + pixel[1] * pixel[1] + pixel[2] * pixel[2]);
    if (!(length > mNothing) || std::isinf(length)) {
        pixel[mX] = pixel[kY] = 0;
        pixel[mZ] = 1;
        return;
    }
    for (std::size_t part = 0; part < kParts; ++part)
        pixel[part] /= length;
}

void MipNormals::Straighten(float* values, std::size_t pixels) const {
    const auto channels = static_cast<std::size_t>(Channels());
    for (std::size_t i = 0; i < pixels; ++i)
        ToUnit(values + i * channels);
}

void MipNormals::Finish(float* values, std::size_t pixels) const {
    const auto channels = static_cast<std::size_t>(Channels());
    const std::size_t parts = std::min(mStored, kParts);
    for (std::size_t i = 0; i < pixels; ++i) {
        const float* const vector = values + i * channels;
        float* const stored = values + i * mStored;
        for (std::size_t part = 0; part < parts; ++part)
            stored[part] = IsOfIntegers() ? (vector[part] + 1) * (Full() / 2) : vector[part];
    }
}

}  // namespace Kavra::Common
