#include "common/resample/PointMethods.h"

#include "common/resample/ResampleKernels.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Kavra::Common {

// --- The nearest -----------------------------------------------------------------------------------------------------

namespace {

std::vector<int> NearestPixels(const ResampleAxis& axis) {
    std::vector<int> pixels(static_cast<std::size_t>(axis.toCount));
    for (int to = 0; to < axis.toCount; ++to) {
        const std::int64_t pixel = axis.At(to).pixel;
        pixels[static_cast<std::size_t>(to)] = pixel >= 0 && pixel < axis.fromCount ? static_cast<int>(pixel) : -1;
    }
    return pixels;
}

template <std::size_t kBytes>
void PickPixels(const unsigned char* row, const std::vector<int>& columns, unsigned char* out) {
    for (const int column : columns) {
        if (column < 0)
            std::memset(out, 0, kBytes);
        else
            std::memcpy(out, row + static_cast<std::size_t>(column) * kBytes, kBytes);
        out += kBytes;
    }
}

using PixelPicker = void (*)(const unsigned char*, const std::vector<int>&, unsigned char*);

PixelPicker PickerFor(std::size_t pixelBytes) {
    switch (pixelBytes) {
        case 1:
            return PickPixels<1>;
        case 2:
            return PickPixels<2>;
        case 3:
            return PickPixels<3>;
        case 4:
            return PickPixels<4>;
        case 6:
            return PickPixels<6>;
        case 8:
            return PickPixels<8>;
        case 12:
            return PickPixels<12>;
        default:
            return PickPixels<16>;
    }
}

}  // namespace

NearestMethod::NearestMethod(const Resampling& resampling)
    : mColumns(NearestPixels(resampling.x)),
      mRows(NearestPixels(resampling.y)),
      mPixelBytes(resampling.PixelBytes()),
      mFromRows(resampling.y.fromCount) {}

RowSpan NearestMethod::Needs(int y) const {
    const int row = mRows[static_cast<std::size_t>(y)];
    return row < 0 ? RowSpan{mFromRows, mFromRows} : RowSpan{row, row + 1};
}

void NearestMethod::Make(const SourceRows& source, int y, int count, unsigned char* out) const {
    const PixelPicker pick = PickerFor(mPixelBytes);
    const std::size_t rowBytes = mColumns.size() * mPixelBytes;
    for (int i = y; i < y + count; ++i, out += rowBytes) {
        const int row = mRows[static_cast<std::size_t>(i)];
        if (row < 0)
            std::memset(out, 0, rowBytes);
        else if (i > y && row == mRows[static_cast<std::size_t>(i - 1)])
            std::memcpy(out, out - rowBytes, rowBytes);
        else
            pick(source.Row(static_cast<std::size_t>(row)), mColumns, out);
    }
}

// --- Four ------------------------------------------------------------------------------------------------------------

std::vector<BilinearMethod::Pair> BilinearMethod::PairsOf(const ResampleAxis& axis) {
    std::vector<Pair> pairs(static_cast<std::size_t>(axis.toCount));
    const std::int64_t last = axis.fromCount - 1;
    for (int to = 0; to < axis.toCount; ++to) {
        const auto [pixel, fraction] = axis.BetweenCentres(to);
        pairs[static_cast<std::size_t>(to)] = {static_cast<int>(std::clamp<std::int64_t>(pixel, 0, last)),
                                               static_cast<int>(std::clamp<std::int64_t>(pixel + 1, 0, last)),
                                               fraction};
    }
    return pairs;
}

BilinearMethod::BilinearMethod(const Resampling& resampling)
    : mElement(resampling.pixels.element),
      mChannels(static_cast<std::size_t>(resampling.pixels.channels)),
      mPixelBytes(resampling.PixelBytes()),
      mFromElements(static_cast<std::size_t>(resampling.x.fromCount) * mChannels),
      mColumns(PairsOf(resampling.x)),
      mRows(PairsOf(resampling.y)) {}

RowSpan BilinearMethod::Needs(int y) const {
    const Pair& rows = mRows[static_cast<std::size_t>(y)];
    return {rows.first, rows.second + 1};
}

void BilinearMethod::Blend(const float* upper, const float* lower, float down, float* out) const {
    const float up = 1.0F - down;
    for (const Pair& pair : mColumns) {
        const float right = pair.fraction, left = 1.0F - right;
        const std::size_t first = static_cast<std::size_t>(pair.first) * mChannels;
        const std::size_t second = static_cast<std::size_t>(pair.second) * mChannels;
        for (std::size_t c = 0; c < mChannels; ++c) {
            *out++ = up * (upper[first + c] * left + upper[second + c] * right) +
                     down * (lower[first + c] * left + lower[second + c] * right);
        }
    }
}

void BilinearMethod::Make(const SourceRows& source, int y, int count, unsigned char* out) const {
    const ResampleKernels& kernels = GetResampleKernels();
    const std::size_t elements = mColumns.size() * mChannels;
    std::vector<float> upper(mFromElements + kSlack), lower(mFromElements + kSlack), blended(elements + kSlack);
    const float scale = FullScale(mElement);
    int inUpper = -1, inLower = -1;  // rows that the buffers hold
    const auto fetch = [&](int row, std::vector<float>& buffer, int& held) {
        if (held == row) return;
        kernels.toFloats(mElement, source.Row(static_cast<std::size_t>(row)), mFromElements, buffer.data());
        // As the library does: to the unit before blending, back afterwards.
        if (scale != 1.0F) {
            for (float& value : buffer)
                value *= 1.0F / scale;
        }
        held = row;
    };
    for (int i = y; i < y + count; ++i, out += mColumns.size() * mPixelBytes) {
        const Pair& rows = mRows[static_cast<std::size_t>(i)];
        if (inLower == rows.first && inUpper != rows.first) {
            std::swap(upper, lower);
            std::swap(inUpper, inLower);
        }
        fetch(rows.first, upper, inUpper);
        fetch(rows.second, lower, inLower);
        Blend(upper.data(), lower.data(), rows.fraction, blended.data());
        if (scale != 1.0F) {
            for (float& value : blended)
                value *= scale;
        }
        kernels.store(mElement, blended.data(), elements, out);
    }
}

}  // namespace Kavra::Common
