#include "common/mips/MipColours.h"

#include "common/mips/MipNormals.h"
#include "common/mips/SrgbRounding.h"
#include "common/resample/ResampleKernels.h"
#include "common/resample/WorkingColours.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <span>

namespace Kavra::Common {

using Devices::MipOptions;

// --- All -------------------------------------------------------------------------------------------------------------

MipColours::MipColours(const PixelFormat& format)
    : mElement(format.element),
      mStored(static_cast<std::size_t>(format.channels)),
      mPixelBytes(static_cast<std::size_t>(format.BytesPerPixel())),
      mFull(FullScale(format.element)),
      mIsInteger(IsInteger(format.element)),
      mHasAlpha(format.hasAlpha) {}

/// Integers are limited where they are rounded. Of others what was not above 1 stays that.
void MipColours::ScaleAlpha(float* values, std::size_t pixels, float scale) const {
    const auto channels = static_cast<std::size_t>(Channels());
    for (float* alpha = values + Alpha(); alpha < values + pixels * channels; alpha += channels) {
        const float scaled = *alpha * scale;
        *alpha = mIsInteger || !(scaled > 1) ? scaled : std::max(1.0F, std::min(*alpha, scaled));
    }
}

void MipColours::Encode(float* values, std::size_t pixels, float alphaScale, unsigned char* out) const {
    Straighten(values, pixels);
    if (mHasAlpha && alphaScale != 1) ScaleAlpha(values, pixels, alphaScale);
    Finish(values, pixels);
    if (!mIsInteger) {
        // Which of several a sum keeps, and its sign, is the machine's choice.
        for (float& value : std::span(values, pixels * mStored))
            if (std::isnan(value)) value = std::numeric_limits<float>::quiet_NaN();
    }
    GetResampleKernels().store(mElement, values, pixels * mStored, out);
}

// --- Colours ---------------------------------------------------------------------------------------------------------

namespace {

class PlainMipColours final : public MipColours {
public:
    PlainMipColours(const PixelFormat& format, const MipOptions& options)
        : PlainMipColours(format,
                          ResamplePixels{format.element, format.channels, format.hasAlpha ? format.channels - 1 : -1},
                          {.alphaWeighted = options.alphaWeighted, .linearLight = options.linearLight}) {}

    int Channels() const override { return static_cast<int>(mStored); }

    void Decode(const unsigned char* in, std::size_t pixels, float* out) const override {
        mWorking.Decode(in, pixels * mStored, out);
        if (mWorking.IsWeighted()) mWorking.Weight(out, pixels * mStored);
    }

protected:
    void Straighten(float* values, std::size_t pixels) const override {
        if (mWorking.IsWeighted()) mWorking.Unweight(values, pixels * mStored);
    }

    void Finish(float* values, std::size_t pixels) const override {
        if (!mCurve) return;
        const std::size_t colours = HasAlpha() ? mStored - 1 : mStored;
        for (float* pixel = values; pixel < values + pixels * mStored; pixel += mStored)
            for (std::size_t c = 0; c < colours; ++c)
                pixel[c] = mCurve->Nearest(pixel[c]);
    }

private:
    PlainMipColours(const PixelFormat& format, const ResamplePixels& pixels, const ResampleOptions& options)
        : MipColours(format), mWorking(pixels, options) {
        if (WorkingColours::UndoesCurve(pixels, options)) mCurve.emplace(Full());
    }

    WorkingColours mWorking;
    std::optional<SrgbRounding> mCurve;
};

}  // namespace

std::unique_ptr<MipColours> NewMipColours(const PixelFormat& format, const MipOptions& options) {
    if (options.content == Devices::kMipColours) return std::make_unique<PlainMipColours>(format, options);
    if (format.channels < 2) return nullptr;
    const bool derivesThird = options.content == Devices::kMipNormalsXY || format.channels == 2;
    return std::make_unique<MipNormals>(format, derivesThird);
}

}  // namespace Kavra::Common
