#include "common/OrderedParts.h"
#include "common/PixelFormats.h"
#include "common/Reasons.h"

#include <kavra/devices/ImageHandlerHelper.h>

#include <Imath/half.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace Kavra::Utilities {

using Common::ElementType;
using Common::PixelFormat;

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

RowFunction RowFunctionFor(const PixelFormat& format) {
    switch (format.element) {
        case ElementType::kNone:
            break;
        case ElementType::kUInt8:
            return RowFunctionFor<std::uint8_t>(format.channels);
        case ElementType::kUInt16:
            return RowFunctionFor<std::uint16_t>(format.channels);
        case ElementType::kHalf:
            return RowFunctionFor<half>(format.channels);
        case ElementType::kFloat:
            return RowFunctionFor<float>(format.channels);
    }
    std::unreachable();
}

double Maximum(ElementType element) {
    switch (element) {
        case ElementType::kUInt8:
            return 255.0;
        case ElementType::kUInt16:
            return 65535.0;
        default:
            return 1.0;
    }
}

/// The sums of all rows, added up in their order, so that the result does not depend on the number of cores.
Sums PictureSums(const PixelFormat& format, const unsigned char* pixels, std::size_t width, std::size_t height,
                 std::size_t pitch) {
    constexpr std::size_t kSerialPixels = 32768;
    const RowFunction rowSums = RowFunctionFor(format);
    Sums total{};
    Common::ForEachInOrderOf<Sums>(
        Devices::kProgressAnalysing, height, kSerialPixels / width,
        [&](std::size_t y) { return rowSums(pixels + y * pitch, width); },
        [&total](const Sums& row) {
            for (std::size_t c = 0; c < total.size(); ++c)
                total[c] += row[c];
        });
    return total;
}

}  // namespace

vec4<float> ImageHandlerHelper::GetAverageColor2D(const ImageDescription& desc, const void* data, bool) try {
    const PixelFormat& format = Common::FactsOf(desc.format);
    if (data == nullptr || !format.HasPixels() || desc.width <= 0 || desc.height <= 0) return {};
    const auto width = static_cast<std::size_t>(desc.width);
    const auto height = static_cast<std::size_t>(desc.height);
    const std::size_t rowBytes = width * static_cast<std::size_t>(format.BytesPerPixel());
    const std::size_t pitch = desc.rowPitch == 0 ? rowBytes : static_cast<std::size_t>(desc.rowPitch);
    if (desc.rowPitch < 0 || pitch < rowBytes) return {};

    const Sums sums = PictureSums(format, static_cast<const unsigned char*>(data), width, height, pitch);
    const double scale = static_cast<double>(width) * static_cast<double>(height) * Maximum(format.element);
    std::array<float, 4> mean = {0.0F, 0.0F, 0.0F, 1.0F};
    const int channels = format.channels == 4 && !format.hasAlpha ? 3 : format.channels;
    for (int c = 0; c < channels; ++c)
        mean[c] = static_cast<float>(sums[c] / scale);
    if (format.blueFirst) std::swap(mean[0], mean[2]);
    return {mean[0], mean[1], mean[2], mean[3]};
} catch (const Common::Cancelled&) {
    Common::SayCaught();
    return {};
}

}  // namespace Kavra::Utilities
