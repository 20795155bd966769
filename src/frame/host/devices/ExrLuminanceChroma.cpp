#include "frame/host/devices/ExrLuminanceChroma.h"

#include "common/Progress.h"

#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfRgbaYca.h>
#include <ImfStandardAttributes.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Kavra::Devices {

namespace {

using Imf::Rgba;
namespace Yca = Imf::RgbaYca;

/// The whole picture as the filters want it: chroma in r and b, luminance in g.
class YcaPicture {
public:
    YcaPicture(int width, int height)
        : mWidth(width),
          mHeight(height),
          mPixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)),
          mPadded(static_cast<std::size_t>(width) + Yca::N - 1),
          mAbove(static_cast<std::size_t>(width)),
          mRow(static_cast<std::size_t>(width)) {}

    void Read(Imf::InputPart& part);
    void SpreadChroma();
    void ToColours(const Imath::V3f& weights);
    /// Row `y` without colours more saturated than can be, valid until the next call.
    const std::vector<Rgba>& Row(int y, const Imath::V3f& weights);

private:
    Rgba* At(int y) { return mPixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(mWidth); }

    /// The row `y`; beyond the picture its first row and its last one with chroma stand for all others.
    Rgba* Clamped(int y) { return At(y < 0 ? 0 : y < mHeight ? y : (mHeight - 1) & ~1); }

    /// `out` gets the luminance of row `y` and chroma filtered from the rows around it.
    void FilterDown(int y, std::vector<Rgba>& out);

    int mWidth;
    int mHeight;
    std::vector<Rgba> mPixels;
    std::vector<Rgba> mPadded;
    std::vector<Rgba> mAbove;  ///< what is taken for the row above the first
    std::vector<Rgba> mRow;
};

void YcaPicture::Read(Imf::InputPart& part) {
    const Imath::Box2i window = part.header().dataWindow();
    const std::size_t pixel = sizeof(Rgba);
    const std::size_t row = pixel * static_cast<std::size_t>(mWidth);
    Imf::FrameBuffer buffer;
    const auto add = [&](const char* name, half Rgba::* element, std::size_t sampling, double fill) {
        const int step = static_cast<int>(sampling);
        buffer.insert(name, Imf::Slice::Make(Imf::HALF, &(mPixels.front().*element), window, pixel * sampling,
                                             row * sampling, step, step, fill));
    };
    add("Y", &Rgba::g, 1, 0);
    add("RY", &Rgba::r, 2, 0);
    add("BY", &Rgba::b, 2, 0);
    add("A", &Rgba::a, 1, 1);
    part.setFrameBuffer(buffer);
    ReadExrRows(part, window);
}

void YcaPicture::SpreadChroma() {
    Common::ProgressMeter meter(kProgressReading, static_cast<unsigned>(mHeight));
    for (int y = 0; y < mHeight; y += 2, meter.Advance(1)) {
        Rgba* const row = At(y);
        const auto middle = mPadded.begin() + Yca::N2;
        std::fill(mPadded.begin(), middle, row[0]);
        std::copy_n(row, mWidth, middle);
        // The last pixel that has chroma is the one before the last.
        std::fill(middle + mWidth, mPadded.end(), row[(mWidth - 1) & ~1]);
        Yca::reconstructChromaHoriz(mWidth, mPadded.data(), row);
    }
    FilterDown(-1, mAbove);
    for (int y = 1; y < mHeight; y += 2, meter.Advance(1)) {
        FilterDown(y, mRow);
        std::ranges::copy(mRow, At(y));
    }
}

void YcaPicture::FilterDown(int y, std::vector<Rgba>& out) {
    std::array<const Rgba*, Yca::N> rows;
    for (int i = 0; i < Yca::N; ++i)
        rows[static_cast<std::size_t>(i)] = Clamped(y - Yca::N2 + i);
    Yca::reconstructChromaVert(mWidth, rows.data(), out.data());
}

void YcaPicture::ToColours(const Imath::V3f& weights) {
    const auto convert = [&](Rgba* row) {
        std::copy_n(row, mWidth, mRow.begin());
        Yca::YCAtoRGBA(weights, mWidth, mRow.data(), row);
    };
    Common::ProgressMeter meter(kProgressReading, static_cast<unsigned>(mHeight));
    for (int y = 0; y < mHeight; ++y, meter.Advance(1))
        convert(At(y));
    convert(mAbove.data());
}

const std::vector<Rgba>& YcaPicture::Row(int y, const Imath::V3f& weights) {
    const std::array<const Rgba*, 3> rows = {y > 0 ? At(y - 1) : mAbove.data(), At(y), Clamped(y + 1)};
    Yca::fixSaturation(weights, mWidth, rows.data(), mRow.data());
    return mRow;
}

Imath::V3f LuminanceWeights(const Imf::Header& header) {
    return Yca::computeYw(Imf::hasChromaticities(header) ? Imf::chromaticities(header) : Imf::Chromaticities());
}

}  // namespace

void ReadLuminanceChroma(Imf::InputPart& part, ExrPicture& picture) {
    const Imath::V3f weights = LuminanceWeights(part.header());
    YcaPicture image(picture.width, picture.height);
    const auto height = static_cast<unsigned>(picture.height);
    Common::ProgressMeter meter(kProgressReading, std::uint64_t{4} * height);
    const auto pass = [&](const auto& work) {
        meter.Expect(height);
        work();
        meter.Advance(height);
    };
    pass([&] { image.Read(part); });
    pass([&] { image.SpreadChroma(); });
    pass([&] { image.ToColours(weights); });
    float* out = reinterpret_cast<float*>(picture.pixels.get());
    for (int y = 0; y < picture.height; ++y, meter.Advance(1)) {
        for (const Rgba& pixel : image.Row(y, weights)) {
            *out++ = pixel.r;
            *out++ = pixel.g;
            *out++ = pixel.b;
            if (picture.alpha) *out++ = pixel.a;
        }
    }
}

}  // namespace Kavra::Devices
