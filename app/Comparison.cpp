#include "Comparison.h"

#include "FormatNames.h"
#include "Picture.h"
#include "PixelConversion.h"
#include "Workers.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>
#include <optional>

namespace Kavra::App {
namespace {

using namespace Devices;

/// Two pictures row by row, on all cores.
template <class Begin, class Work, class End>
void ForRows(const LoadedImage& a, const LoadedImage& b, const Begin& begin, const Work& work, const End& end) {
    const auto width = static_cast<std::size_t>(a.desc.width);
    const std::size_t rows = LayerCount(a.desc) * static_cast<std::size_t>(a.desc.height);
    const auto read = [](const LoadedImage& image, std::size_t y, std::span<Pixel> pixels) {
        const auto* const data = static_cast<const unsigned char*>(image.block->mData);
        ReadPixels(Facts(image.desc.format), data + y * static_cast<std::size_t>(image.desc.rowPitch), pixels);
    };
    std::mutex mutex;
    InParts(rows, (std::size_t{1} << 16) / width + 1, [&](std::size_t first, std::size_t last) {
        auto state = begin();
        std::vector<Pixel> ours(width), theirs(width);
        for (std::size_t y = first; y < last; ++y) {
            read(a, y, ours);
            read(b, y, theirs);
            work(y, ours, theirs, state);
        }
        const std::lock_guard lock(mutex);
        end(state);
    });
}

/// 0 or more; nothing where one is not finite and the other is not the same.
std::optional<double> Distance(float a, float b) {
    if (a == b || (std::isnan(a) && std::isnan(b))) return 0;
    const double distance = std::abs(static_cast<double>(a) - static_cast<double>(b));
    return std::isfinite(distance) ? std::optional(distance) : std::nullopt;
}

void ComparePixels(const Pixel& a, const Pixel& b, Comparison& comparison) {
    bool differs = false, isFinite = true;
    for (std::size_t i = 0; i < comparison.names.size(); ++i) {
        const std::optional<double> distance = Distance(a[i], b[i]);
        differs = differs || distance != 0;
        isFinite = isFinite && distance;
        if (distance) comparison.channels[i].Add(*distance);
    }
    comparison.differing += differs ? 1 : 0;
    comparison.notFinite += isFinite ? 0 : 1;
}

std::vector<std::string> ChannelNames(const FormatFacts& a, const FormatFacts& b) {
    const int channels = std::max(a.channels, b.channels);
    if (channels == 1) return {a.hasAlpha && b.hasAlpha ? "alpha" : "grey"};
    std::vector<std::string> names = {"red", "green"};
    if (channels > 2) names.emplace_back("blue");
    if (a.hasAlpha || b.hasAlpha) names.emplace_back("alpha");
    return names;
}

}  // namespace

void Difference::Add(double difference) {
    mLargest = std::max(mLargest, difference);
    mSum += difference;
    mSquares += difference * difference;
    ++mCount;
}

void Difference::Add(const Difference& other) {
    mLargest = std::max(mLargest, other.mLargest);
    mSum += other.mSum;
    mSquares += other.mSquares;
    mCount += other.mCount;
}

double Difference::Mean() const {
    return mCount > 0 ? mSum / static_cast<double>(mCount) : 0;
}

double Difference::Psnr() const {
    if (mSquares == 0) return std::numeric_limits<double>::infinity();
    return 10 * std::log10(static_cast<double>(mCount) / mSquares);
}

Difference Comparison::Together() const {
    Difference together;
    for (const Difference& channel : channels)
        together.Add(channel);
    return together;
}

Comparison Compare(const LoadedImage& a, const LoadedImage& b) {
    Comparison whole;
    whole.names = ChannelNames(Facts(a.desc.format), Facts(b.desc.format));
    ForRows(
        a, b,
        [&] {
            Comparison part;
            part.names = whole.names;
            return part;
        },
        [](std::size_t, std::span<const Pixel> ours, std::span<const Pixel> theirs, Comparison& part) {
            part.pixels += ours.size();
            for (std::size_t x = 0; x < ours.size(); ++x)
                ComparePixels(ours[x], theirs[x], part);
        },
        [&](const Comparison& part) {
            for (std::size_t i = 0; i < whole.channels.size(); ++i)
                whole.channels[i].Add(part.channels[i]);
            whole.pixels += part.pixels;
            whole.differing += part.differing;
            whole.notFinite += part.notFinite;
        });
    return whole;
}

LoadedImage DifferencePicture(const LoadedImage& a, const LoadedImage& b, float gain, EFormat format) {
    ImageDescription desc = a.desc;
    desc.format = format;
    desc.hasAlpha = desc.hasTransparentPixels = desc.hasTranslucentPixels = false;
    LoadedImage picture = NewPictureLike(desc, desc.width, desc.height);
    auto* const out = static_cast<unsigned char*>(picture.block->mData);
    const auto pitch = static_cast<std::size_t>(picture.desc.rowPitch);
    ForRows(
        a, b, [] { return 0; },
        [&](std::size_t y, std::span<Pixel> ours, std::span<const Pixel> theirs, int) {
            for (std::size_t x = 0; x < ours.size(); ++x) {
                const std::optional<double> alpha = Distance(ours[x][3], theirs[x][3]);
                for (std::size_t i = 0; i < 3; ++i) {
                    const std::optional<double> colour = Distance(ours[x][i], theirs[x][i]);
                    ours[x][i] = colour && alpha ? static_cast<float>(*colour + *alpha) * gain : 1;
                }
                ours[x][3] = 1;
            }
            WritePixels(format, ours, out + y * pitch, pitch);
        },
        [](int) {});
    return picture;
}

}  // namespace Kavra::App
