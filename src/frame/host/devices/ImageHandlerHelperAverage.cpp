#include <kavra/devices/ImageHandlerHelper.h>

#include "common/OrderedParts.h"
#include "frame/host/devices/PixelLayout.h"

#include <half.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace Kavra::Utilities {

using Devices::PixelElement;
using Devices::PixelLayout;

namespace {

using Sums = std::array<double, 4>;

/// Integers add up exactly; floats in double precision.
template <class T>
using Accumulator = std::conditional_t<std::is_integral_v<T>, std::uint64_t, double>;

/// The sum of each channel over one row.
template <class T, int kChannels>
Sums RowSums(const unsigned char* row, std::size_t width) {
    Accumulator<T> sums[kChannels] = {};
    for (std::size_t x = 0; x < width; ++x, row += kChannels * sizeof(T)) {
        T pixel[kChannels];
        std::memcpy(pixel, row, sizeof pixel);
        for (int c = 0; c < kChannels; ++c)
            sums[c] += static_cast<Accumulator<T>>(pixel[c]);
    }
    Sums result{};
    for (int c = 0; c < kChannels; ++c)
        result[c] = static_cast<double>(sums[c]);
    return result;
}

using RowFunction = Sums (*)(const unsigned char*, std::size_t);

template <class T>
RowFunction RowFunctionFor(int channels) {
    switch (channels) {
        case 1:
            return RowSums<T, 1>;
        case 2:
            return RowSums<T, 2>;
        case 3:
            return RowSums<T, 3>;
        default:
            return RowSums<T, 4>;
    }
}

RowFunction RowFunctionFor(const PixelLayout& layout) {
    switch (layout.element) {
        case PixelElement::kByte:
            return RowFunctionFor<std::uint8_t>(layout.channels);
        case PixelElement::kWord:
            return RowFunctionFor<std::uint16_t>(layout.channels);
        case PixelElement::kHalf:
            return RowFunctionFor<half>(layout.channels);
        case PixelElement::kFloat:
            return RowFunctionFor<float>(layout.channels);
    }
    std::unreachable();
}

double Maximum(PixelElement element) {
    switch (element) {
        case PixelElement::kByte:
            return 255.0;
        case PixelElement::kWord:
            return 65535.0;
        default:
            return 1.0;
    }
}

/// The sums of all rows, added up in their order, so that the result does not depend on the number of cores.
Sums PictureSums(const PixelLayout& layout, const unsigned char* pixels, std::size_t width, std::size_t height,
                 std::size_t pitch) {
    constexpr std::size_t kSerialPixels = 32768;
    const RowFunction rowSums = RowFunctionFor(layout);
    Sums total{};
    Common::ForEachInOrder<Sums>(
        height, kSerialPixels / width, [&](std::size_t y) { return rowSums(pixels + y * pitch, width); },
        [&total](const Sums& row) {
            for (std::size_t c = 0; c < total.size(); ++c)
                total[c] += row[c];
        });
    return total;
}

}  // namespace

vec4<float> ImageHandlerHelper::GetAverageColor2D(const ImageDescription& desc, const void* data, bool) {
    const PixelLayout layout = Devices::LayoutOf(desc.format);
    if (data == nullptr || layout.channels == 0 || desc.width <= 0 || desc.height <= 0) return {};
    const auto width = static_cast<std::size_t>(desc.width);
    const auto height = static_cast<std::size_t>(desc.height);
    const std::size_t rowBytes = width * static_cast<std::size_t>(layout.Bytes());
    const std::size_t pitch = desc.rowPitch == 0 ? rowBytes : static_cast<std::size_t>(desc.rowPitch);
    if (desc.rowPitch < 0 || pitch < rowBytes) return {};

    const Sums sums = PictureSums(layout, static_cast<const unsigned char*>(data), width, height, pitch);
    const double scale = static_cast<double>(width) * static_cast<double>(height) * Maximum(layout.element);
    std::array<float, 4> mean = {0.0f, 0.0f, 0.0f, 1.0f};
    const int channels = layout.channels == 4 && !layout.hasAlpha ? 3 : layout.channels;
    for (int c = 0; c < channels; ++c)
        mean[c] = static_cast<float>(sums[c] / scale);
    if (layout.blueFirst) std::swap(mean[0], mean[2]);
    return {mean[0], mean[1], mean[2], mean[3]};
}

}  // namespace Kavra::Utilities
