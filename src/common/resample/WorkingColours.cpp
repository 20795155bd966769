#include "common/resample/WorkingColours.h"

#include "common/SrgbCurve.h"
#include "common/resample/ResampleKernels.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace Kavra::Common {

namespace {

using Devices::ElementType;

/// Of the whole: small enough to be seen in no pixel that anything opaque lies near, and large enough to leave colours
/// their digits where nothing does.
constexpr float kTransparentWeight = 1.0F / (1 << 20);

}  // namespace

bool WorkingColours::Weights(const ResamplePixels& pixels, const ResampleOptions& options) {
    return options.alphaWeighted && pixels.alphaChannel >= 0 && pixels.channels > 1;
}

bool WorkingColours::UndoesCurve(const ResamplePixels& pixels, const ResampleOptions& options) {
    return options.linearLight && IsInteger(pixels.element);
}

WorkingColours::WorkingColours(const ResamplePixels& pixels, const ResampleOptions& options)
    : mElement(pixels.element),
      mChannels(static_cast<std::size_t>(pixels.channels)),
      mAlpha(pixels.alphaChannel < 0 ? mChannels : static_cast<std::size_t>(pixels.alphaChannel)),
      mIsWeighted(Weights(pixels, options)),
      mFull(FullScale(pixels.element)),
      mNothing(mFull * kTransparentWeight) {
    if (!UndoesCurve(pixels, options)) return;
    mDecoded.resize(static_cast<std::size_t>(mFull) + 1);
    for (std::size_t v = 0; v < mDecoded.size(); ++v)
        mDecoded[v] = LightOfSrgb(static_cast<float>(v) / mFull) * mFull;
}

template <class T>
void WorkingColours::DecodeCurve(const unsigned char* in, std::size_t count, float* out) const {
    const auto at = [in](std::size_t i) {
        T value;
        std::memcpy(&value, in + i * sizeof(T), sizeof(T));
        return value;
    };
    const float* const decoded = mDecoded.data();
    if (mChannels == 4 && mAlpha == 3) {  // the usual one, so that the compiler knows its shape
        for (std::size_t i = 0; i < count; i += 4) {
            out[i] = decoded[at(i)];
            out[i + 1] = decoded[at(i + 1)];
            out[i + 2] = decoded[at(i + 2)];
            out[i + 3] = static_cast<float>(at(i + 3));
        }
        return;
    }
    for (std::size_t pixel = 0; pixel < count; pixel += mChannels)
        for (std::size_t c = 0; c < mChannels; ++c)
            out[pixel + c] = c == mAlpha ? static_cast<float>(at(pixel + c)) : decoded[at(pixel + c)];
}

void WorkingColours::Decode(const unsigned char* in, std::size_t count, float* out) const {
    if (mDecoded.empty()) return GetResampleKernels().toFloats(mElement, in, count, out);
    if (mElement == ElementType::kUInt8) return DecodeCurve<std::uint8_t>(in, count, out);
    DecodeCurve<std::uint16_t>(in, count, out);
}

void WorkingColours::Weight(float* values, std::size_t count) const {
    if (mChannels == 4 && mAlpha == 3) {  // the usual one, so that the compiler knows its shape
        for (float* pixel = values; pixel < values + count; pixel += 4) {
            const float weight = pixel[3] + mNothing;
            pixel[0] *= weight;
            pixel[1] *= weight;
            pixel[2] *= weight;
        }
        return;
    }
    for (float* pixel = values; pixel < values + count; pixel += mChannels) {
        const float weight = pixel[mAlpha] + mNothing;
        for (std::size_t c = 0; c < mChannels; ++c)
            if (c != mAlpha) pixel[c] *= weight;
    }
}

void WorkingColours::Unweight(float* values, std::size_t count) const {
    for (float* pixel = values; pixel < values + count; pixel += mChannels) {
        const float weight = pixel[mAlpha] + mNothing;
        // Below nothing there is only overshoot, whose colours mean nothing.
        const bool hasColour = weight > mNothing / 4;
        for (std::size_t c = 0; c < mChannels; ++c)
            if (c != mAlpha) pixel[c] = hasColour ? pixel[c] / weight : 0.0F;
    }
}

float WorkingColours::EncodedColour(float value) const {
    return SrgbOfLight(std::clamp(value / mFull, 0.0F, 1.0F)) * mFull;
}

void WorkingColours::Encode(float* values, std::size_t count) const {
    if (mDecoded.empty()) return;
    for (std::size_t pixel = 0; pixel < count; pixel += mChannels) {
        for (std::size_t c = 0; c < mChannels; ++c)
            if (c != mAlpha) values[pixel + c] = EncodedColour(values[pixel + c]);
    }
}

}  // namespace Kavra::Common
