#include "CubeProjection.h"

#include "Picture.h"
#include "Workers.h"

#include <kavra/devices/CubeFaces.h>
#include <kavra/devices/Resampler.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numbers>
#include <span>
#include <vector>

namespace Kavra::App {

using namespace Devices;

namespace {

using Pixel = std::array<float, 4>;
using Direction = vec3<float>;

constexpr int kSamples = 2;  // a side of a pixel
constexpr float kPi = std::numbers::pi_v<float>;

// --- Directions ------------------------------------------------------------------------------------------------------

/// Towards (u, v) of a map, each 0 to 1.
Direction TowardsMap(float u, float v) {
    const float azimuth = (2 * u - 1) * kPi, polar = v * kPi;
    return {std::sin(polar) * std::sin(azimuth), std::cos(polar), std::sin(polar) * std::cos(azimuth)};
}

// --- Looking up ------------------------------------------------------------------------------------------------------

Pixel Mix(const Pixel& a, const Pixel& b, float t) {
    Pixel mixed;
    for (std::size_t i = 0; i < mixed.size(); ++i)
        mixed[i] = a[i] + (b[i] - a[i]) * t;
    return mixed;
}

class CubePixels {
public:
    explicit CubePixels(const LoadedImage& cube)
        : mSide(cube.desc.width), mPixels(static_cast<const Pixel*>(cube.block->mData)) {}

    /// Linear interpolation, also between faces.
    Pixel At(const Direction& direction) const {
        const CubePlace at = CubePlaceOf(direction);
        const float half = static_cast<float>(mSide) / 2;
        const float x = (at.s + 1) * half - 0.5F, y = (at.t + 1) * half - 0.5F;
        const float left = std::floor(x), top = std::floor(y);
        const int column = static_cast<int>(left), row = static_cast<int>(top);
        const Pixel upper = Mix(Texel(at.face, column, row), Texel(at.face, column + 1, row), x - left);
        const Pixel lower = Mix(Texel(at.face, column, row + 1), Texel(at.face, column + 1, row + 1), x - left);
        return Mix(upper, lower, y - top);
    }

private:
    /// A pixel of a face, or of its neighbour where it lies one beyond the edge.
    Pixel Texel(int face, int x, int y) const {
        if (x < 0 || y < 0 || x >= mSide || y >= mSide) {
            const auto middle = [&](int i) { return (2 * static_cast<float>(i) + 1) / static_cast<float>(mSide) - 1; };
            const CubePlace beyond = CubePlaceOf(CubeDirection({face, middle(x), middle(y)}));
            const auto within = [&](float t) {
                return std::clamp(static_cast<int>((t + 1) / 2 * static_cast<float>(mSide)), 0, mSide - 1);
            };
            face = beyond.face;
            x = within(beyond.s);
            y = within(beyond.t);
        }
        const auto side = static_cast<std::size_t>(mSide);
        return mPixels[(static_cast<std::size_t>(face) * side + static_cast<std::size_t>(y)) * side +
                       static_cast<std::size_t>(x)];
    }

    int mSide;
    const Pixel* mPixels;
};

/// A map whose rows are as long as their circles on the sphere.
class MapPixels {
public:
    explicit MapPixels(const LoadedImage& map) : mRows(static_cast<std::size_t>(map.desc.height)) {
        const int width = map.desc.width, height = map.desc.height;
        const auto* const pixels = static_cast<const Pixel*>(map.block->mData);
        for (int y = 0; y < height; ++y) {
            const float polar = (static_cast<float>(y) + 0.5F) / static_cast<float>(height) * kPi;
            const int length = std::max(1, static_cast<int>(std::lround(static_cast<float>(width) * std::sin(polar))));
            mRows[static_cast<std::size_t>(y)] =
                Shortened({pixels + std::ptrdiff_t{y} * width, pixels + std::ptrdiff_t{y + 1} * width}, length);
        }
    }

    /// Linear interpolation; rows go on round the sphere, and end at the poles.
    Pixel At(const Direction& d) const {
        const float u = 0.5F + std::atan2(d.x, d.z) / (2 * kPi);
        const float v = std::atan2(std::hypot(d.x, d.z), d.y) / kPi;
        const float y = v * static_cast<float>(mRows.size()) - 0.5F, top = std::floor(y);
        const auto row = [&](float index) -> const std::vector<Pixel>& {
            return mRows[static_cast<std::size_t>(std::clamp(index, 0.0F, static_cast<float>(mRows.size() - 1)))];
        };
        return Mix(InRow(row(top), u), InRow(row(top + 1), u), y - top);
    }

private:
    /// The row goes round: it is shortened between itself and itself.
    static std::vector<Pixel> Shortened(std::span<const Pixel> row, int length) {
        const auto count = static_cast<std::size_t>(length);
        if (count >= row.size()) return {row.begin(), row.end()};
        std::vector<Pixel> round, shortened(3 * count);
        round.reserve(3 * row.size());
        for (int i = 0; i < 3; ++i)
            round.insert(round.end(), row.begin(), row.end());
        ResamplePicture({.element = ElementType::kFloat, .channels = 4, .alphaChannel = -1}, round.data(),
                        round.size() * sizeof(Pixel), static_cast<int>(round.size()), 1, shortened.data(),
                        shortened.size() * sizeof(Pixel), 3 * length, 1,
                        {.filter = kResampleMitchell, .bounded = true});
        return {shortened.begin() + length, shortened.begin() + 2 * std::ptrdiff_t{length}};
    }

    static Pixel InRow(const std::vector<Pixel>& row, float u) {
        const auto length = static_cast<std::ptrdiff_t>(row.size());
        const float x = u * static_cast<float>(length) - 0.5F, left = std::floor(x);
        const auto at = [&](std::ptrdiff_t column) {
            return row[static_cast<std::size_t>((column % length + length) % length)];
        };
        const auto column = static_cast<std::ptrdiff_t>(left);
        return Mix(at(column), at(column + 1), x - left);
    }

    std::vector<std::vector<Pixel>> mRows;
};

// --- Sampling --------------------------------------------------------------------------------------------------------

/// Rows that `sample(x, y)` gives the pixels of, made on all cores.
template <class Sample>
class SampledRows final : public IRowSource {
public:
    SampledRows(int width, const Sample& sample) : mWidth(width), mSample(sample) {}

    bool ReadRows(void* rows, int count) override {
        auto* const pixels = static_cast<Pixel*>(rows);
        InParts(static_cast<std::size_t>(count), 1, [&](std::size_t first, std::size_t last) {
            for (std::size_t row = first; row < last; ++row) {
                for (int x = 0; x < mWidth; ++x)
                    pixels[static_cast<std::ptrdiff_t>(row) * mWidth + x] = mSample(x, mNext + static_cast<int>(row));
            }
        });
        mNext += count;
        return true;
    }

private:
    int mWidth;
    int mNext = 0;
    const Sample& mSample;
};

class RowsOf final : public IRowSink {
public:
    explicit RowsOf(LoadedImage& image, std::size_t first)
        : mNext(static_cast<unsigned char*>(image.block->mData) + first),
          mRowBytes(static_cast<std::size_t>(image.desc.rowPitch)) {}

    bool WriteRows(const void* rows, int count) override {
        std::memcpy(mNext, rows, mRowBytes * static_cast<std::size_t>(count));
        mNext += mRowBytes * static_cast<std::size_t>(count);
        return true;
    }

private:
    unsigned char* mNext;
    std::size_t mRowBytes;
};

/// Fills `height` rows of a picture from byte `first` on with what `sample` sees at a finer grid.
template <class Sample>
void Fill(LoadedImage& image, std::size_t first, int height, const Sample& sample) {
    const int width = image.desc.width;
    SampledRows<Sample> source(width * kSamples, sample);
    RowsOf sink(image, first);
    ResampleRows({.element = ElementType::kFloat, .channels = 4, .alphaChannel = -1}, source, width * kSamples,
                 height * kSamples, sink, width, height, {.filter = kResampleMitchell, .bounded = true});
}

/// The middle of a sample, 0 to 1.
float Middle(int sample, int pixels) {
    return (static_cast<float>(sample) + 0.5F) / static_cast<float>(pixels * kSamples);
}

}  // namespace

LoadedImage ToEquirect(const LoadedImage& cube) {
    const int side = cube.desc.width;
    const CubePixels pixels(cube);
    LoadedImage map = NewPicture(4 * side, 2 * side, kR32G32B32A32F);
    Fill(map, 0, 2 * side,
         [&](int x, int y) { return pixels.At(TowardsMap(Middle(x, 4 * side), Middle(y, 2 * side))); });
    return map;
}

LoadedImage FromEquirect(const LoadedImage& map) {
    const int side = std::max(map.desc.width / 4, 1);
    const MapPixels pixels(map);
    ImageDescription desc = FlatDescription(side, side, kR32G32B32A32F);
    desc.textureType = kTextureCube;
    LoadedImage cube = NewPictureLike(desc, side, side);
    for (int face = 0; face < kCubeFaces; ++face) {
        Fill(cube, static_cast<std::size_t>(face) * LayerBytes(cube.desc), side, [&](int x, int y) {
            return pixels.At(CubeDirection({face, 2 * Middle(x, side) - 1, 2 * Middle(y, side) - 1}));
        });
    }
    return cube;
}

}  // namespace Kavra::App
