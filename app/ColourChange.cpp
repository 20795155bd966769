#include "ColourChange.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Kavra::App {
namespace {

using namespace Devices;

constexpr float kMax = std::numeric_limits<float>::max();
constexpr float kSeen = 0.5F / 255;           // below it, alpha and light are nothing in 8 bits
constexpr float kAboveWhite = 1 + 1 / 256.F;  // what 8 bits would still take for white is not cut

/// What an alpha counts as; NaN is not above 0.
float Alpha(const Pixel& pixel) {
    return pixel[3] > 0 ? std::min(pixel[3], 1.0F) : 0.0F;
}

void Divide(std::span<Pixel> pixels) {
    for (Pixel& pixel : pixels) {
        const float alpha = Alpha(pixel);
        if (alpha == 0 || alpha == 1) continue;
        for (int i = 0; i < 3; ++i)
            pixel[i] = std::clamp(pixel[i] / alpha, -kMax, kMax);  // which leaves NaN
    }
}

/// Light that a screen can be reckoned for: NaN and negative light is none.
void Mend(Pixel& pixel) {
    for (int i = 0; i < 3; ++i)
        pixel[i] = pixel[i] > 0 ? std::min(pixel[i], kMax) : 0.0F;
}

/// ITU-R BT.709, whose primaries sRGB has.
double Luminance(const Pixel& pixel) {
    return 0.2126 * pixel[0] + 0.7152 * pixel[1] + 0.0722 * pixel[2];
}

/// 0 or more; NaN is left out.
float Brightest(const Pixel& pixel) {
    float brightest = 0;
    for (int i = 0; i < 3; ++i)
        brightest = pixel[i] > brightest ? pixel[i] : brightest;
    return brightest;
}

}  // namespace

bool ColourChange::ChangesValues() const {
    const bool isSame = from.kind == to.kind || (from.IsForDisplay() && to.IsForDisplay());
    return !isSame || brightness != 1 || tone != ToneMap::kNone;
}

bool ColourChange::IsNothing() const {
    return !PassesLight() && alphaFrom == alphaTo && !dropsAlpha;
}

void ColourFindings::Add(const ColourFindings& other) {
    pixels += other.pixels;
    bright += other.bright;
    glowing += other.glowing;
}

ColourSteps::ColourSteps(const ColourChange& change, unsigned sourceMax) : mChange(change) {
    if (sourceMax == 0 || change.from.IsLinear() || !change.PassesLight()) return;
    mDecoded.resize(std::size_t{sourceMax} + 1);
    for (std::size_t i = 0; i < mDecoded.size(); ++i)
        mDecoded[i] = Decode(change.from, static_cast<float>(i) / static_cast<float>(sourceMax));
}

bool ColourSteps::LooksFirst() const {
    return mChange.tone == ToneMap::kReinhard || mChange.tone == ToneMap::kReinhardIfBright;
}

void ColourSteps::DecodeAll(std::span<Pixel> pixels, bool isDivided) const {
    if (mChange.from.IsLinear()) return;
    if (mDecoded.empty() || isDivided) {
        for (Pixel& pixel : pixels) {
            for (int i = 0; i < 3; ++i)
                pixel[i] = Decode(mChange.from, pixel[i]);
        }
        return;
    }
    const auto max = static_cast<float>(mDecoded.size() - 1);
    constexpr float kHalf = 0.5F;  // values are integers over `max`: 0 and more, so this is the nearest
    for (Pixel& pixel : pixels) {
        for (int i = 0; i < 3; ++i)
            pixel[i] = mDecoded[static_cast<std::size_t>(pixel[i] * max + kHalf)];
    }
}

/// Of colours that came premultiplied those without alpha stay what they are.
void ColourSteps::Multiply(std::span<Pixel> pixels) const {
    const bool keepsGlow = mChange.alphaFrom == kAlphaPremultiplied;
    for (Pixel& pixel : pixels) {
        const float alpha = Alpha(pixel);
        if (alpha == 1 || (alpha == 0 && keepsGlow)) continue;
        for (int i = 0; i < 3; ++i)
            pixel[i] = alpha == 0 ? 0 : pixel[i] * alpha;  // also what is infinite
    }
}

void ColourSteps::Compose(std::span<Pixel> pixels, bool isPremultiplied) const {
    if (!isPremultiplied && mChange.alphaFrom != kAlphaNone) Multiply(pixels);
    for (Pixel& pixel : pixels) {
        const float through = 1 - Alpha(pixel);
        for (int i = 0; i < 3; ++i)
            pixel[i] += (*mChange.background)[i] * through;
        pixel[3] = 1;
    }
}

/// As light, whether multiplied by alpha or not. Gives whether.
bool ColourSteps::ToLight(std::span<Pixel> pixels) const {
    bool isPremultiplied = mChange.alphaFrom == kAlphaPremultiplied;
    const bool isDivided = isPremultiplied && !mChange.from.IsLinear();
    if (isDivided) Divide(pixels);
    DecodeAll(pixels, isDivided);
    isPremultiplied = isPremultiplied && !isDivided;
    if (mChange.brightness != 1) {
        for (Pixel& pixel : pixels) {
            for (int i = 0; i < 3; ++i)
                pixel[i] *= mChange.brightness;
        }
    }
    if (mChange.background) {
        Compose(pixels, isPremultiplied);
        isPremultiplied = false;
    }
    return isPremultiplied;
}

void ColourSteps::Look(std::span<Pixel> pixels, Exposure& exposure, float& brightest) const {
    if (mChange.dropsAlpha) std::ranges::for_each(pixels, [](Pixel& pixel) { pixel[3] = 1; });
    if (ToLight(pixels)) Divide(pixels);
    for (Pixel& pixel : pixels) {
        Mend(pixel);
        exposure.Look(Luminance(pixel));
        brightest = std::max(brightest, Brightest(pixel));
    }
}

void ColourSteps::SetExposure(const Exposure& exposure, float brightest) {
    if (mChange.tone == ToneMap::kReinhard || brightest > 1) mExposure = exposure;
}

void ColourSteps::MapTones(std::span<Pixel> pixels) const {
    for (Pixel& pixel : pixels) {
        Mend(pixel);
        if (mChange.tone == ToneMap::kFilmic) {
            std::transform(pixel.begin(), pixel.begin() + 3, pixel.begin(), Filmic);
        } else if (mExposure) {
            const double scale = mExposure->Scale(Luminance(pixel));
            for (int i = 0; i < 3; ++i)
                pixel[i] = static_cast<float>(scale * pixel[i]);
        }
    }
}

void ColourSteps::Count(std::span<const Pixel> pixels, ColourFindings& findings) const {
    const bool isStraightNow = mChange.alphaFrom == kAlphaPremultiplied && mChange.alphaTo == kAlphaStraight;
    for (const Pixel& pixel : pixels) {
        const bool isSeen = mChange.alphaFrom == kAlphaNone || pixel[3] >= kSeen;
        const float brightest = Brightest(pixel);
        const float alpha = Alpha(pixel);
        const float light = alpha > 0 ? brightest * alpha : brightest;  // before the division
        findings.bright += isSeen && brightest > kAboveWhite ? 1 : 0;
        findings.glowing += isStraightNow && !isSeen && light > kSeen ? 1 : 0;
    }
}

void ColourSteps::Run(std::span<Pixel> pixels, ColourFindings& findings) const {
    findings.pixels += pixels.size();
    if (mChange.dropsAlpha) std::ranges::for_each(pixels, [](Pixel& pixel) { pixel[3] = 1; });
    bool isPremultiplied = mChange.alphaFrom == kAlphaPremultiplied;
    if (mChange.PassesLight()) isPremultiplied = ToLight(pixels);
    const bool isEncoded = mChange.PassesLight() && !mChange.to.IsLinear();
    const bool isBent = isEncoded || mChange.tone != ToneMap::kNone;
    if (isPremultiplied && (isBent || mChange.alphaTo != kAlphaPremultiplied)) {
        Divide(pixels);
        isPremultiplied = false;
    }
    if (mChange.tone != ToneMap::kNone) MapTones(pixels);
    Count(pixels, findings);
    if (isEncoded) {
        for (Pixel& pixel : pixels)
            std::transform(pixel.begin(), pixel.begin() + 3, pixel.begin(), EncodeSrgb);
    }
    if (mChange.alphaTo == kAlphaPremultiplied && !isPremultiplied && !mChange.background) Multiply(pixels);
}

}  // namespace Kavra::App
